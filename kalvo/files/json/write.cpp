#include "kalvo/files/json/json.h"

#include "kalvo/files/text/numbers.h"
#include "kalvo/tables/constants.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace klv {

// ---- Values

static void append_number (std::string& line, double value)
{
    if (!std::isfinite (value))
        line += std::isnan (value) ? "\"NaN\"" : value > 0 ? "\"Inf\"" : "\"-Inf\"";
    else if (value == 0 && std::signbit (value))
        line += "-0.0";    // readers take "-0" for the integer 0
    else
        line += NumberText (value);
}

static void append_name (std::string& line, const std::string& name)
{
    const auto is_plain = [] (char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (std::ranges::all_of (name, is_plain)) {
        line.append (1, '"').append (name).append (1, '"');
        return;
    }
    try {
        line += nlohmann::json (name).dump ();
    } catch (const nlohmann::json::type_error&) {    // not UTF-8
        char separator = '[';
        for (const char byte : name) {
            line += separator;
            append_number (line, static_cast<unsigned char> (byte));
            separator = ',';
        }
        line += ']';
    }
}

static void append_word (std::string& line, Group group, std::int32_t value)
{
    line.append (1, '"').append (short_name (*find_constant (group, value))).append (1, '"');
}

// ---- Fields

class JsonWriter {
public:
    explicit JsonWriter (OutputFile& file) : file_ (file) {}

    void open (std::string_view name)
    {
        field (name);
        line_ += '{';
        first_ = true;
    }
    void close ()
    {
        line_ += first_ ? "}" : "\n}";
        first_ = false;
    }
    void finish ()
    {
        line_ += '\n';
        file_.put (line_);
    }

    void number (std::string_view name, double value)
    {
        field (name);
        append_number (line_, value);
    }
    void name (std::string_view name, const std::string& value)
    {
        field (name);
        append_name (line_, value);
    }
    void word (std::string_view name, Group group, std::int32_t value)
    {
        field (name);
        append_word (line_, group, value);
    }

    // fill (next) calls next () before each entry, and appends the entry to the text that next () returns.
    void list (std::string_view name, const auto& fill);
    void numbers (std::string_view name, const std::vector<double>& values);
    void names (std::string_view name, const Names& names, std::int32_t count);
    void words (std::string_view name, Group group, const auto& values);

private:
    void field (std::string_view name)
    {
        if (!name.empty ()) {
            line_ += first_ ? "\n" : ",\n";
            line_.append (1, '"').append (name).append ("\": ");
        }
        first_ = false;
    }

    OutputFile& file_;
    std::string line_;
    bool first_ = true;
};

void JsonWriter::list (std::string_view name, const auto& fill)
{
    constexpr std::size_t wide = 100;
    field (name);
    line_ += '[';
    fill ([this, first = true] () mutable -> std::string& {
        if (!first)
            line_ += ',';
        first = false;
        if (line_.size () > wide) {
            line_ += '\n';
            file_.put (line_);
            line_.clear ();
        }
        return line_;
    });
    line_ += ']';
}

void JsonWriter::numbers (std::string_view name, const std::vector<double>& values)
{
    list (name, [&] (auto next) {
        for (const double value : values)
            append_number (next (), value);
    });
}

void JsonWriter::words (std::string_view name, Group group, const auto& values)
{
    list (name, [&] (auto next) {
        for (const std::int32_t value : values)
            append_word (next (), group, value);
    });
}

void JsonWriter::names (std::string_view name, const Names& names, std::int32_t count)
{
    list (name, [&] (auto next) {
        for (std::int32_t i = 0; names.any () && i < count; ++i)
            append_name (next (), names.get (i));
    });
}

// ---- The task

static void write_items (JsonWriter& json, const Bounds& bounds, const Names& names)
{
    json.words ("keys", Group::bound_key, bounds.key);
    json.numbers ("lower", bounds.lower);
    json.numbers ("upper", bounds.upper);
    json.names ("names", names, bounds.count ());
}

static void write_matrix (JsonWriter& json, const ColumnMatrix& matrix)
{
    const auto for_each_column = [&] (const auto& put) {
        for (std::int32_t j = 0; j < matrix.columns (); ++j)
            put (matrix.column (j));
    };
    json.list ("counts", [&] (auto next) {
        for_each_column ([&] (Column column) { append (next (), column.rows.size ()); });
    });
    json.list ("rows", [&] (auto next) {
        for_each_column ([&] (Column column) {
            for (const std::int32_t row : column.rows)
                append (next (), row);
        });
    });
    json.list ("values", [&] (auto next) {
        for_each_column ([&] (Column column) {
            for (const double value : column.values)
                append_number (next (), value);
        });
    });
}

static void write_problem (JsonWriter& json, const Problem& problem)
{
    json.open ("problem");
    json.name ("name", problem.name);
    json.open ("objective");
    json.name ("name", problem.objective_name);
    json.word ("sense", Group::sense, problem.sense);
    json.number ("constant", problem.constant);
    json.close ();
    json.open ("variables");
    write_items (json, problem.variable, problem.variable_name);
    json.numbers ("costs", problem.cost);
    json.list ("integers", [&] (auto next) {
        for (std::size_t j = 0; j < problem.integer.size (); ++j)
            if (problem.integer[j] == KLV_VAR_INTEGER)
                append (next (), j);
    });
    json.close ();
    json.open ("constraints");
    write_items (json, problem.constraint, problem.constraint_name);
    json.close ();
    json.open ("matrix");
    write_matrix (json, problem.matrix);
    json.close ();
    json.close ();
}

static void write_parameters (JsonWriter& json, const Parameters& parameters)
{
    json.open ("parameters");
    const auto write = [&] (const auto& rows, const auto& values) {
        for (std::size_t i = 0; i < rows.size (); ++i)
            if (is_kept_in_json (rows[i].drives) && values[i] != rows[i].fallback)
                json.number (rows[i].name, values[i]);
    };
    write (real_parameters, parameters.doubles);
    write (int_parameters, parameters.integers);
    json.close ();
}

// Leaves out arrays without a known value.
static void write_solution (JsonWriter& json, const Solution& solution)
{
    const std::int32_t status = solution.solution_status;
    json.words ("skc", Group::status_key, solution.skc);
    json.words ("skx", Group::status_key, solution.skx);
    if (status == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE ||
        status == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE)
        json.word ("certificate", Group::problem_status, solution.problem_status);
    if (solution.has_primal || status == KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE ||
        std::ranges::any_of (solution.xx, [] (double value) { return std::isnan (value); }))
        json.numbers ("xx", solution.xx);
    if (solution.has_dual || status == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE) {
        json.numbers ("y", solution.y);
        json.numbers ("slx", solution.slx);
        json.numbers ("sux", solution.sux);
    }
}

void write_json (Task& task, OutputFile& file)
{
    JsonWriter json (file);
    json.open ("");
    json.name ("format", std::string (json_format));
    json.number ("version", json_version);
    write_problem (json, task.problem ());
    write_parameters (json, task.parameters);
    json.open ("solutions");
    for (std::size_t which = 0; which < task.solutions.size (); ++which)
        if (task.solutions[which]) {
            json.open (json_solutions[which]);
            write_solution (json, *task.solutions[which]);
            json.close ();
        }
    json.close ();
    json.close ();
    json.finish ();
}

}
