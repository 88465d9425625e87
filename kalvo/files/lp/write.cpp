// Writes LP files: every number to the last bit, every name as it is.
#include "kalvo/files/lp/lp.h"
#include "kalvo/files/lp/scan.h"
#include "kalvo/files/text/grouped.h"
#include "kalvo/files/text/name_rules.h"
#include "kalvo/files/text/quadratic.h"
#include "kalvo/files/text/text_writer.h"

#include <cmath>

namespace klv {

// ---- What LP cannot hold

static const char* why_not_of_row (std::string_view name)
{
    constexpr std::size_t longest = 255;    // other programs read no longer names
    return name.size () > longest ? "is too long" : why_not_in_lp (name);
}

static const char* why_not_of_variable (std::string_view name)
{
    return reads_like_exponent (name) ? "reads like an exponent" : why_not_of_row (name);
}

std::string unfit_for_lp (const Problem& problem)
{
    const std::string name = unfit_name (problem, {why_not_of_row, why_not_of_variable});
    return name.empty () ? unfit_term (problem, lp_factor) : name;
}

// ---- The writer

class LpWriter : private TextWriter {
public:
    LpWriter (const Problem& problem, OutputFile& file) : TextWriter (problem, file) {}

    void write ();

private:
    void objective ();
    void constraints ();
    void bounds ();
    void types ();

    void gather_rows ();
    void expression (std::int32_t row);
    void term (double coefficient, std::string_view name, std::string_view factor = {});
    void bracket (const SymmetricTerms& terms, TermRange range, bool of_objective);
    void bounds_of (std::int32_t j);
    bool is_binary (std::int32_t j) const;

    using TextWriter::put;
    void put (double number);

    bool expression_begun_ = false;
    Grouped by_rows_;
};

void LpWriter::write ()
{
    if (!problem_.name.empty ()) {
        put (lp_name_comment);
        put (problem_.name);
        end_line ();
    }
    objective ();
    constraints ();
    bounds ();
    types ();
    put ("End");
    end_line ();
}

void LpWriter::put (double number)
{
    if (std::isinf (number))
        return put (number < 0 ? "-infinity" : "infinity");
    put (NumberText (number));
}

// ---- Expressions

// An empty name stands for no variable: the term is a constant.
void LpWriter::term (double coefficient, std::string_view name, std::string_view factor)
{
    constexpr std::size_t widest = 100;
    if (width () > widest) {
        end_line ();
        put (" ");
    }
    if (std::signbit (coefficient))
        put (" -");
    else if (expression_begun_)
        put (" +");
    expression_begun_ = true;
    if (std::fabs (coefficient) != 1 || name.empty ()) {
        put (" ");
        put (std::fabs (coefficient));
    }
    if (!name.empty ()) {
        put (" ");
        put (name);
    }
    put (factor);
}

void LpWriter::bracket (const SymmetricTerms& terms, TermRange range, bool of_objective)
{
    if (range.begin == range.end)
        return;
    put (expression_begun_ ? " + [" : " [");
    expression_begun_ = false;
    for (std::size_t k = range.begin; k < range.end; ++k) {
        const std::int32_t first = terms.column[k], second = terms.row[k];
        const std::string factor = first == second ? " ^ 2" : " * " + std::string (columns_ (second));
        term (terms.value[k] / lp_factor (of_objective, first == second), columns_ (first), factor);
    }
    put (of_objective ? " ] / 2" : " ]");
}

void LpWriter::objective ()
{
    put (problem_.sense == KLV_SENSE_MAXIMIZE ? "Maximize" : "Minimize");
    end_line ();
    put (" ");
    put (objective_);
    put (":");
    expression_begun_ = false;
    for (std::int32_t j = 0; j < problem_.variables (); ++j)
        term (problem_.cost[static_cast<std::size_t> (j)], columns_ (j));
    if (!is_plain_zero (problem_.constant))
        term (problem_.constant, {});
    const SymmetricTerms& terms = problem_.quadratic_objective;
    bracket (terms, {0, terms.value.size ()}, true);
    end_line ();
}

// ---- Constraints

void LpWriter::gather_rows ()
{
    const ColumnMatrix& matrix = problem_.matrix;
    by_rows_ = Grouped (problem_.constraints (), matrix.entries (), [&] (const auto& visit) {
        for (std::int32_t j = 0; j < matrix.columns (); ++j) {
            const Column column = matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                visit (column.rows[k], j, column.values[k]);
        }
    });
}

void LpWriter::expression (std::int32_t row)
{
    const auto columns = by_rows_.others (row);
    const auto values = by_rows_.values (row);
    expression_begun_ = false;
    for (const std::int32_t j : columns)
        columns_.prefetch (j);
    for (std::size_t k = 0; k < columns.size (); ++k)
        term (values[k], columns_ (columns[k]));
    const TermRange range = problem_.quadratic_constraint.of_item (row);
    bracket (problem_.quadratic_constraint, range, false);
    if (columns.empty () && range.begin == range.end)
        put (" 0");
}

void LpWriter::constraints ()
{
    gather_rows ();
    put ("Subject To");
    end_line ();
    for (std::int32_t number = 0; number < problem_.constraints (); ++number) {
        const auto i = static_cast<std::size_t> (number);
        const std::uint8_t key = problem_.constraint.key[i];
        put (" ");
        put (rows_ (number));
        put (":");
        if (key == KLV_BK_RA) {
            put (" ");
            put (problem_.constraint.lower[i]);
            put (" <=");
        }
        expression (number);
        const bool is_upper = key == KLV_BK_UP || key == KLV_BK_RA;
        put (key == KLV_BK_FX ? " = " : is_upper ? " <= " : " >= ");
        put (is_upper ? problem_.constraint.upper[i] : problem_.constraint.lower[i]);
        end_line ();
    }
}

// ---- Bounds and types of variables

bool LpWriter::is_binary (std::int32_t number) const
{
    const auto j = static_cast<std::size_t> (number);
    return is_integer (number) && problem_.variable.key[j] == KLV_BK_RA &&
           is_plain_zero (problem_.variable.lower[j]) && problem_.variable.upper[j] == 1;
}

void LpWriter::bounds ()
{
    put ("Bounds");
    end_line ();
    for (std::int32_t j = 0; j < problem_.variables (); ++j)
        bounds_of (j);
}

// The bounds 0 and infinity are the default, and a lower bound of 0 stays when a file gives an upper one that is not negative.
void LpWriter::bounds_of (std::int32_t number)
{
    const auto j = static_cast<std::size_t> (number);
    const std::uint8_t key = problem_.variable.key[j];
    const double lower = problem_.variable.lower[j], upper = problem_.variable.upper[j];
    const bool lower_is_plain = is_plain_zero (lower) && !(upper < 0);
    if (is_binary (number) || (key == KLV_BK_LO && lower_is_plain))
        return;
    put (" ");
    if (key == KLV_BK_UP || (key == KLV_BK_RA && !lower_is_plain)) {
        put (lower);
        put (" <= ");
    }
    put (columns_ (number));
    if (key == KLV_BK_FR) {
        put (" free");
    } else {
        const bool is_upper = key == KLV_BK_UP || key == KLV_BK_RA;
        put (key == KLV_BK_FX ? " = " : is_upper ? " <= " : " >= ");
        put (is_upper ? upper : lower);
    }
    end_line ();
}

void LpWriter::types ()
{
    for (const bool binary : {false, true}) {
        bool begun = false;
        for (std::int32_t j = 0; j < problem_.variables () && problem_.integers > 0; ++j) {
            if (!is_integer (j) || is_binary (j) != binary)
                continue;
            if (!begun) {
                put (binary ? "Binaries" : "Generals");
                end_line ();
            }
            begun = true;
            put (" ");
            put (columns_ (j));
            end_line ();
        }
    }
}

void write_lp (Task& task, OutputFile& file)
{
    LpWriter (task.problem (), file).write ();
    warn_of_huge_bounds (task);
}

}
