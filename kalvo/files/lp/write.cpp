// Writes LP files: every number to the last bit, every name as it is.
#include "kalvo/files/lp/lp.h"
#include "kalvo/files/lp/scan.h"
#include "kalvo/files/text/item_names.h"
#include "kalvo/files/text/numbers.h"

#include <cmath>
#include <numeric>

namespace klv {

class LpWriter {
public:
    LpWriter (const Problem& problem, OutputFile& file)
        : problem_ (problem),
          file_ (file),
          rows_ (constraint_names (problem)),
          columns_ (variable_names (problem)),
          objective_ (problem.objective_name.empty () ? unused_name ("OBJ", rows_) : problem.objective_name)
    {}

    void write ();

private:
    void objective ();
    void constraints ();
    void bounds ();
    void types ();

    void gather_rows ();
    void expression (std::size_t row);
    void term (double coefficient, std::string_view name);
    void bounds_of (std::int32_t j);
    bool is_binary (std::size_t j) const;

    void put (std::string_view text);
    void put (double number);
    void end_line ();

    const Problem& problem_;
    OutputFile& file_;
    ItemNames rows_, columns_;
    std::string objective_;
    std::size_t width_ = 0;    // of the line so far
    bool expression_begun_ = false;

    // The matrix by rows.
    std::vector<std::int64_t> row_begin_;
    std::vector<std::int32_t> entry_columns_;
    std::vector<double> entry_values_;
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

void LpWriter::put (std::string_view text)
{
    file_.put (text);
    width_ += text.size ();
}

void LpWriter::put (double number)
{
    char text[number_room];
    if (std::isinf (number))
        return put (number < 0 ? "-infinity" : "infinity");
    put ({text, static_cast<std::size_t> (put_number (text, number) - text)});
}

void LpWriter::end_line ()
{
    file_.put ("\n");
    width_ = 0;
}

// ---- Expressions

// A variable without a name stands for none: the term is a constant.
void LpWriter::term (double coefficient, std::string_view name)
{
    constexpr std::size_t widest = 100;
    if (width_ > widest) {
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
    end_line ();
}

// ---- Constraints

void LpWriter::gather_rows ()
{
    row_begin_.assign (static_cast<std::size_t> (problem_.constraints ()) + 1, 0);
    for (std::int32_t j = 0; j < problem_.variables (); ++j)
        for (const std::int32_t i : problem_.matrix.column (j).rows)
            ++row_begin_[static_cast<std::size_t> (i) + 1];
    std::partial_sum (row_begin_.begin (), row_begin_.end (), row_begin_.begin ());

    entry_columns_.resize (static_cast<std::size_t> (problem_.matrix.entries ()));
    entry_values_.resize (entry_columns_.size ());
    std::vector<std::int64_t> place (row_begin_.begin (), row_begin_.end () - 1);
    for (std::int32_t j = 0; j < problem_.variables (); ++j) {
        const Column column = problem_.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k) {
            const auto at = static_cast<std::size_t> (place[static_cast<std::size_t> (column.rows[k])]++);
            entry_columns_[at] = j;
            entry_values_[at] = column.values[k];
        }
    }
}

void LpWriter::expression (std::size_t row)
{
    const auto begin = static_cast<std::size_t> (row_begin_[row]),
               end = static_cast<std::size_t> (row_begin_[row + 1]);
    expression_begun_ = false;
    for (std::size_t k = begin; k < end; ++k)
        columns_.prefetch (entry_columns_[k]);
    for (std::size_t k = begin; k < end; ++k)
        term (entry_values_[k], columns_ (entry_columns_[k]));
    if (begin == end)
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
        expression (i);
        const bool is_upper = key == KLV_BK_UP || key == KLV_BK_RA;
        put (key == KLV_BK_FX ? " = " : is_upper ? " <= " : " >= ");
        put (is_upper ? problem_.constraint.upper[i] : problem_.constraint.lower[i]);
        end_line ();
    }
}

// ---- Bounds and types of variables

bool LpWriter::is_binary (std::size_t j) const
{
    return problem_.integer[j] == KLV_VAR_INTEGER && problem_.variable.key[j] == KLV_BK_RA &&
           is_plain_zero (problem_.variable.lower[j]) && problem_.variable.upper[j] == 1;
}

void LpWriter::bounds ()
{
    put ("Bounds");
    end_line ();
    for (std::int32_t j = 0; j < problem_.variables (); ++j)
        bounds_of (j);
}

// The bounds 0 and infinity go without saying, and so does a lower bound of 0 beside an upper one that is not
// negative.
void LpWriter::bounds_of (std::int32_t number)
{
    const auto j = static_cast<std::size_t> (number);
    const std::uint8_t key = problem_.variable.key[j];
    const double lower = problem_.variable.lower[j], upper = problem_.variable.upper[j];
    const bool lower_is_plain = is_plain_zero (lower) && !(upper < 0);
    if (is_binary (j) || (key == KLV_BK_LO && lower_is_plain))
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
            const auto at = static_cast<std::size_t> (j);
            if (problem_.integer[at] != KLV_VAR_INTEGER || is_binary (at) != binary)
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
}

}
