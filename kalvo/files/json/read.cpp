#include "kalvo/files/json/json.h"

#include "kalvo/files/json/conic.h"
#include "kalvo/files/json/fields.h"
#include "kalvo/files/json/take.h"
#include "kalvo/files/text/draft.h"
#include "kalvo/model/refusal.h"
#include "kalvo/model/text.h"
#include "kalvo/tables/constants.h"

#include <algorithm>
#include <cmath>

namespace klv {

// ---- The document

class JsonTask {
public:
    explicit JsonTask (Task& task)
        : task_ (task), problem_ (std::make_shared<Problem> ()), parameters_ (task.parameters)
    {}

    // Prints the warnings. Throws FileFault with line and field of the fault.
    FileContent read (const std::string& path, Pacer& pacer);

private:
    struct Items {
        const char* kind;
        Bounds& bounds;
        std::vector<std::string> names = {};
    };

    void add (JsonField field) { fields_.push_back (std::move (field)); }
    bool has (std::string_view path) const;
    void add_head ();
    void meet_unknown (const std::string& object, const std::string& name, std::int64_t line);
    void add_problem ();
    void add_items (Items& items);
    template <class Rows, class Values>
    void add_parameters (const Rows& rows, Values& values);
    void add_solution (std::size_t which);

    void finish_items (Items& items, Names& names) const;
    void finish_integers ();
    void finish_matrix ();
    GivenSolution finish_solution (std::size_t which);
    FileContent finish ();

    Task& task_;
    Warnings warnings_;
    std::vector<JsonField> fields_;
    double version_ = 0;
    std::shared_ptr<Problem> problem_;
    Parameters parameters_;
    Items variables_{"variables", problem_->variable};
    Items constraints_{"constraints", problem_->constraint};
    std::vector<std::int32_t> integers_, counts_, rows_;
    std::vector<double> values_;
    JsonConic conic_{*problem_};
    std::array<GivenSolution, KLV_SOL_COUNT> given_;
};

bool JsonTask::has (std::string_view path) const
{
    const auto field = std::ranges::find (fields_, path, &JsonField::path);
    return field != fields_.end () && field->line > 0;
}

// ---- Fields of the document

void JsonTask::add_head ()
{
    add ({.path = "format", .kind = JsonKind::word, .take_text = [] (const std::string& word) {
              if (word != json_format)
                  throw syntax ("must be " + quote (json_format));
          }});
    add ({.path = "version", .kind = JsonKind::number, .take_number = [this] (double value) {
              if (whole (value) < 1)
                  throw syntax ("versions begin with 1");
              version_ = value;
          }});
}

// Later versions may state more of a problem inside the object "problem" only. Without such a field the problem would be another
// one, so unknown fields can be skipped anywhere else only.
void JsonTask::meet_unknown (const std::string& object, const std::string& name, std::int64_t line)
{
    if (version_ <= json_version)
        throw syntax ("the field " + quote (name) + " is unknown");
    if (object == "problem" || object.starts_with ("problem."))
        throw syntax (text ("the field ", quote (name), " belongs to version ", version_, "; version ",
                            json_version, " is read"));
    warnings_.note (Tradition::later_field, line, object.empty () ? name : object + "." + name);
}

void JsonTask::add_items (Items& items)
{
    const std::string path = std::string ("problem.") + items.kind;
    add (object (path));
    add (words (path + ".keys", Group::bound_key, items.bounds.key));
    add (numbers (path + ".lower", items.bounds.lower, Allowed::below_plus));
    add (numbers (path + ".upper", items.bounds.upper, Allowed::above_minus));
    add (names (path + ".names", items.names));
}

void JsonTask::add_problem ()
{
    Problem& problem = *problem_;
    add (object ("problem"));
    add (name ("problem.name", problem.name));
    add (object ("problem.objective"));
    add (name ("problem.objective.name", problem.objective_name));
    add ({.path = "problem.objective.sense",
          .kind = JsonKind::word,
          .take_text = [&] (const std::string& word) { problem.sense = word_of (Group::sense, word); }});
    add ({.path = "problem.objective.constant", .kind = JsonKind::number, .take_number = [&] (double value) {
              check (Allowed::finite, value);
              problem.constant = value;
          }});
    add_items (variables_);
    add (numbers ("problem.variables.costs", problem.cost, Allowed::finite));
    add (indices ("problem.variables.integers", integers_));
    add_items (constraints_);
    add (object ("problem.matrix"));
    add (indices ("problem.matrix.counts", counts_));
    add (indices ("problem.matrix.rows", rows_));
    add (numbers ("problem.matrix.values", values_, Allowed::finite));
    conic_.add_to (fields_);
}

template <class Rows, class Values>
void JsonTask::add_parameters (const Rows& rows, Values& values)
{
    for (std::size_t i = 0; i < rows.size (); ++i) {
        if (!is_kept_in_json (rows[i].drives))
            continue;
        add ({.path = "parameters." + std::string (rows[i].name),
              .kind = JsonKind::number,
              .required = false,
              .take_number = [&row = rows[i], &kept = values[i]] (double number) {
                  using Value = std::remove_cvref_t<decltype (kept)>;
                  Value value;
                  if constexpr (std::is_same_v<Value, double>)
                      value = number;
                  else
                      value = whole (number);
                  try {
                      check_value (row, value);
                  } catch (const Refusal& refusal) {
                      throw syntax (refusal.message);
                  }
                  if (kept == row.fallback)
                      kept = value;
              }});
    }
}

void JsonTask::add_solution (std::size_t which)
{
    const std::string path = std::string ("solutions.") + json_solutions[which];
    GivenSolution& given = given_[which];
    const auto add_values = [&] (const char* field, std::vector<double>& values) {
        add (numbers (path + field, values, Allowed::finite_or_unknown, false));
    };
    add (object (path, false));
    add (words (path + ".skc", Group::status_key, given.skc));
    add (words (path + ".skx", Group::status_key, given.skx));
    add_values (".xx", given.xx);
    add ({.path = path + ".certificate",
          .kind = JsonKind::word,
          .required = false,
          .take_text = [&] (const std::string& word) {
              const std::int32_t status = word_of (Group::problem_status, word);
              if (status != KLV_PRO_PRIMAL_INFEASIBLE && status != KLV_PRO_DUAL_INFEASIBLE)
                  throw syntax ("must be PRIMAL_INFEASIBLE or DUAL_INFEASIBLE");
              given.certificate = true;
          }});
    if (which == KLV_SOL_INT)
        return;
    add_values (".y", given.y);
    add_values (".slx", given.slx);
    add_values (".sux", given.sux);
    if (which != KLV_SOL_ITR)
        return;
    add (words (path + ".skn", Group::status_key, given.skn, false));
    add_values (".snx", given.snx);
    add_values (".barx", given.barx);
    add_values (".bars", given.bars);
    add_values (".doty", given.doty);
}

// ---- Consistency of fields

void JsonTask::finish_items (Items& items, Names& kept) const
{
    const std::string path = std::string ("problem.") + items.kind;
    const Bounds& bounds = items.bounds;
    const std::size_t count = bounds.key.size ();
    check_countable (path + ".keys", count);
    check_length (path + ".lower", bounds.lower.size (), count, items.kind);
    check_length (path + ".upper", bounds.upper.size (), count, items.kind);
    for (std::size_t i = 0; i < count; ++i) {
        const double lower = bounds.lower[i], upper = bounds.upper[i];
        const bool fixed = bounds.key[i] == KLV_BK_FX;
        if (fixed ? !(lower == upper && std::isfinite (lower)) : bounds.key[i] != key_of (lower, upper))
            throw fault_at (path + ".keys", i,
                            text ("the key does not agree with the bounds ", lower, " and ", upper));
    }
    take_names (path + ".names", std::move (items.names), bounds.count (), items.kind, kept);
}

void JsonTask::finish_integers ()
{
    Problem& problem = *problem_;
    problem.integer.assign (problem.variable.key.size (), KLV_VAR_CONTINUOUS);
    problem.integers = static_cast<std::int32_t> (integers_.size ());
    std::int32_t before = -1;
    for (std::size_t i = 0; i < integers_.size (); ++i) {
        if (integers_[i] <= before || integers_[i] >= problem.variables ())
            throw fault_at ("problem.variables.integers", i,
                            "must be the index of a variable, in increasing order");
        before = integers_[i];
        problem.integer[static_cast<std::size_t> (before)] = KLV_VAR_INTEGER;
    }
}

void JsonTask::finish_matrix ()
{
    Problem& problem = *problem_;
    ColumnMatrix& matrix = problem.matrix;
    check_length ("problem.matrix.counts", counts_.size (), problem.variable.key.size (), "variables");
    check_length ("problem.matrix.values", values_.size (), rows_.size (), "rows");
    matrix.append_columns (problem.variables ());
    matrix.reserve (static_cast<std::int64_t> (rows_.size ()));
    RepeatedRows repeated_rows;
    std::size_t begin = 0;
    for (std::size_t j = 0; j < counts_.size (); ++j) {
        const auto count = static_cast<std::size_t> (counts_[j]);
        if (counts_[j] < 0 || count > rows_.size () - begin)
            throw fault_at ("problem.matrix.counts", j, "counts entries that are not there");
        const std::span<const std::int32_t> rows (rows_.data () + begin, count);
        for (std::size_t k = 0; k < count; ++k)
            if (rows[k] < 0 || rows[k] >= problem.constraints ())
                throw fault_at ("problem.matrix.rows", begin + k, "must be the index of a constraint");
        if (const std::int64_t again = repeated_rows.find (rows, problem.constraints ()); again >= 0)
            throw fault_at ("problem.matrix.rows", begin + static_cast<std::size_t> (again),
                            "the column has this row twice");
        matrix.put (static_cast<std::int32_t> (j), rows, {values_.data () + begin, count});
        begin += count;
    }
    if (begin != rows_.size ())
        throw fault_at ("problem.matrix.rows", begin, "belongs to no column");
}

GivenSolution JsonTask::finish_solution (std::size_t which)
{
    const std::string path = std::string ("solutions.") + json_solutions[which];
    GivenSolution& given = given_[which];
    const auto check_field = [&] (const char* field, const auto& values, const Items& items) {
        if (has (path + field))
            check_length (path + field, values.size (), items.bounds.key.size (), items.kind);
    };
    check_field (".skc", given.skc, constraints_);
    check_field (".skx", given.skx, variables_);
    check_field (".xx", given.xx, variables_);
    check_field (".y", given.y, constraints_);
    check_field (".slx", given.slx, variables_);
    check_field (".sux", given.sux, variables_);
    const auto check_conic = [&] (const char* field, const auto& values, std::int32_t count,
                                  const char* kind) {
        if (has (path + field))
            check_length (path + field, values.size (), static_cast<std::size_t> (count), kind);
    };
    check_conic (".skn", given.skn, problem_->cone.count (), "cones");
    check_conic (".snx", given.snx, problem_->variables (), "variables");
    check_conic (".barx", given.barx, problem_->semidefinite.length (), "entries of semidefinite variables");
    check_conic (".bars", given.bars, problem_->semidefinite.length (), "entries of semidefinite variables");
    check_conic (".doty", given.doty, problem_->affine_constraint.rows (),
                 "rows of affine conic constraints");
    return std::move (given);
}

FileContent JsonTask::finish ()
{
    finish_items (variables_, problem_->variable_name);
    check_length ("problem.variables.costs", problem_->cost.size (), problem_->variable.key.size (),
                  "variables");
    finish_integers ();
    finish_items (constraints_, problem_->constraint_name);
    finish_matrix ();
    conic_.finish ();
    FileContent content{problem_, std::move (parameters_)};
    for (std::size_t which = 0; which < KLV_SOL_COUNT; ++which)
        if (has (std::string ("solutions.") + json_solutions[which]))
            content.solutions[which] = complete (finish_solution (which), content.problem, content.parameters,
                                                 static_cast<KLVsoltype> (which));
    return content;
}

// ---- Reading

// The text of a fault between fields begins with a field's path: that field's line is the fault's.
FileContent JsonTask::read (const std::string& path, Pacer& pacer)
{
    add_head ();
    add_problem ();
    add (object ("parameters"));
    add_parameters (real_parameters, parameters_.doubles);
    add_parameters (int_parameters, parameters_.integers);
    add (object ("solutions"));
    for (std::size_t which = 0; which < KLV_SOL_COUNT; ++which)
        add_solution (which);
    const auto unknown = [this] (const auto&... field) { meet_unknown (field...); };
    read_json_fields (path, fields_, unknown, pacer);

    try {
        FileContent content = finish ();
        warnings_.print (task_, path);
        return content;
    } catch (FileFault& fault) {
        for (const JsonField& field : fields_)
            if (fault.text.starts_with (field.path) && field.kind != JsonKind::object)
                fault.line = field.line;
        throw;
    }
}

FileContent read_json (Task& task, const std::string& path, Pacer& pacer)
{
    return JsonTask (task).read (path, pacer);
}

}
