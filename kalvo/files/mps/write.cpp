// Writes MPS files: every number to the last bit, every name as it is, or nothing at all.
#include "kalvo/files/mps/line.h"
#include "kalvo/files/mps/mps.h"
#include "kalvo/files/text/name_rules.h"
#include "kalvo/files/text/quadratic.h"
#include "kalvo/files/text/text_writer.h"

#include <cmath>
#include <optional>

namespace klv {

// ---- Rows: one bound is the right-hand side, the other is stated by the range

struct MpsRow {
    char kind;    // 0 when no range gives both bounds back
    double side = 0;
    std::optional<long double> range = {};
};

static MpsRow ranged_row (double lower, double upper)
{
    const long double l = lower, u = upper;
    for (const long double range : {static_cast<long double> (upper - lower), u - l}) {
        if (!std::isfinite (range) || range < 0)
            continue;
        if (same_bits (static_cast<double> (l + range), upper))
            return {'G', lower, range};
        if (same_bits (static_cast<double> (u - range), lower))
            return {'L', upper, range};
    }
    return {0};
}

static MpsRow mps_row (const Problem& problem, std::int32_t number)
{
    const auto i = static_cast<std::size_t> (number);
    const double lower = problem.constraint.lower[i], upper = problem.constraint.upper[i];
    switch (problem.constraint.key[i]) {
    case KLV_BK_LO:
        return {'G', lower};
    case KLV_BK_UP:
        return {'L', upper};
    case KLV_BK_FX:
        return {'E', lower};
    case KLV_BK_FR:
        return {'N'};
    default:
        return ranged_row (lower, upper);
    }
}

// ---- Limits of a form

static const char* why_not_in_any_form (std::string_view name)
{
    if (has_control_character (name))
        return "has a control character";
    return name == mps_marker ? "is the word of markers" : nullptr;
}

static const char* why_not_in_free_form (std::string_view name)
{
    if (name.find (' ') != name.npos)
        return "has a blank";
    return name.size () > longest_name ? "is too long" : why_not_in_any_form (name);
}

static const char* why_not_in_fixed_form (std::string_view name)
{
    constexpr std::size_t longest = 8;
    if (name.starts_with (' ') || name.ends_with (' '))
        return "begins or ends with a blank";
    if (name.starts_with ('$'))
        return "begins with the sign of comments";
    return name.size () > longest ? "is too long" : why_not_in_any_form (name);
}

static std::string unfit (const Problem& problem, WhyNot why_not)
{
    if (const std::string item = unfit_name (problem, {why_not, why_not}); !item.empty ())
        return item;
    for (std::int32_t i = 0; i < problem.constraints (); ++i)
        if (mps_row (problem, i).kind == 0)
            return describe_item ("constraint", constraint_names (problem), i) +
                   ", whose bounds are crossed or differ in the sign of zero alone";
    return unfit_term (problem, mps_factor);
}

std::string unfit_for_free_mps (const Problem& problem)
{
    return unfit (problem, why_not_in_free_form);
}

std::string unfit_for_fixed_mps (const Problem& problem)
{
    return unfit (problem, why_not_in_fixed_form);
}

// ---- The writer

class MpsWriter : private TextWriter {
public:
    MpsWriter (const Problem& problem, MpsForm form, OutputFile& file)
        : TextWriter (problem, file), form_ (form), bound_set_ (unused_name ("BND", columns_))
    {}

    void write ();

    std::int64_t long_numbers () const { return long_numbers_; }

private:
    void heading ();
    void rows ();
    void columns ();
    void right_hand_sides ();
    void ranges ();
    void bounds ();
    void quadratic_objective ();
    void quadratic_constraints ();

    void bounds_of (std::int32_t j);
    void quadratic_line (std::int32_t first, std::int32_t second, double number);

    // Writes a line of two or three names and a number, in the form of the file. An empty text means no number.
    void line (std::string_view key, std::string_view name, std::string_view item, std::string_view number);
    void line (std::string_view key, std::string_view name, std::string_view item, double value);
    void bound (std::string_view key, std::int32_t j, double value);
    void section (std::string_view word);
    void pad_to (std::size_t column);

    static constexpr std::size_t name_column = 4, item_column = 14;

    const MpsForm form_;
    const std::string bound_set_;
    std::int64_t long_numbers_ = 0;
};

void MpsWriter::write ()
{
    heading ();
    rows ();
    columns ();
    right_hand_sides ();
    ranges ();
    bounds ();
    quadratic_objective ();
    quadratic_constraints ();
    put ("ENDATA");
    end_line ();
}

void MpsWriter::section (std::string_view word)
{
    put (word);
    end_line ();
}

void MpsWriter::pad_to (std::size_t column)
{
    constexpr std::string_view blanks = "                                        ";
    put (blanks.substr (0, column > width () ? column - width () : 0));
}

void MpsWriter::line (std::string_view key, std::string_view name, std::string_view item,
                      std::string_view number)
{
    constexpr std::size_t key_column = 1, number_column = 24, number_width = 12;
    pad_to (key_column);
    put (key);
    pad_to (name_column);
    put (name);
    if (form_ == MpsForm::fixed) {
        pad_to (item_column);
        put (item);
        if (!number.empty ())
            pad_to (number_column + (number.size () < number_width ? number_width - number.size () : 0));
        long_numbers_ += number.size () > number_width ? 1 : 0;
    } else {
        put (" ");
        put (item);
        if (!number.empty ())
            put (" ");
    }
    put (number);
    end_line ();
}

void MpsWriter::line (std::string_view key, std::string_view name, std::string_view item, double value)
{
    line (key, name, item, NumberText (value));
}

void MpsWriter::heading ()
{
    put (problem_.name.empty () ? "NAME" : "NAME          ");
    put (problem_.name);
    end_line ();
    if (problem_.sense == KLV_SENSE_MAXIMIZE) {
        section ("OBJSENSE");
        put ("    MAX");
        end_line ();
    }
}

void MpsWriter::rows ()
{
    const auto row = [this] (char kind, std::string_view name) {
        const char key[] = {' ', kind, ' ', ' '};
        put ({key, sizeof key});
        put (name);
        end_line ();
    };
    section ("ROWS");
    row ('N', objective_);
    for (std::int32_t i = 0; i < problem_.constraints (); ++i)
        row (mps_row (problem_, i).kind, rows_ (i));
}

void MpsWriter::columns ()
{
    section ("COLUMNS");
    bool integers = false;
    std::int32_t markers = 0;
    const auto mark = [&] (std::string_view kind) {
        constexpr std::size_t kind_column = 39;
        pad_to (name_column);
        put ("M" + std::to_string (++markers) + " ");
        if (form_ == MpsForm::fixed)
            pad_to (item_column);
        put (mps_marker);
        put (" ");
        if (form_ == MpsForm::fixed)
            pad_to (kind_column);
        put (kind);
        end_line ();
    };
    for (std::int32_t number = 0; number < problem_.variables (); ++number) {
        const std::size_t j = static_cast<std::size_t> (number);
        if (is_integer (number) != integers) {
            integers = !integers;
            mark (integers ? "'INTORG'" : "'INTEND'");
        }
        const std::string_view name = columns_ (number);
        const Column column = problem_.matrix.column (number);
        if (!is_plain_zero (problem_.cost[j]) || column.rows.empty ())
            line ({}, name, objective_, problem_.cost[j]);
        for (const std::int32_t row : column.rows)
            rows_.prefetch (row);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            line ({}, name, rows_ (column.rows[k]), column.values[k]);
    }
    if (integers)
        mark ("'INTEND'");
}

void MpsWriter::right_hand_sides ()
{
    section ("RHS");
    if (!is_plain_zero (problem_.constant))
        line ({}, "RHS", objective_, -problem_.constant);
    for (std::int32_t i = 0; i < problem_.constraints (); ++i) {
        const double side = mps_row (problem_, i).side;
        if (!is_plain_zero (side))
            line ({}, "RHS", rows_ (i), side);
    }
}

void MpsWriter::ranges ()
{
    bool begun = false;
    for (std::int32_t i = 0; i < problem_.constraints (); ++i) {
        const MpsRow row = mps_row (problem_, i);
        if (!row.range)
            continue;
        if (!begun)
            section ("RANGES");
        begun = true;
        line ({}, "RNG", rows_ (i), NumberText (*row.range));
    }
}

void MpsWriter::bounds ()
{
    section ("BOUNDS");
    for (std::int32_t j = 0; j < problem_.variables (); ++j)
        bounds_of (j);
}

void MpsWriter::bound (std::string_view key, std::int32_t j, double value)
{
    line (key, bound_set_, columns_ (j), value);
}

// The bounds 0 and infinity of a continuous column are the default, and a lower bound of 0 stays beside an upper one that is not
// negative. Bounds of integer columns are always written, since programs differ in their defaults.
void MpsWriter::bounds_of (std::int32_t number)
{
    const std::size_t j = static_cast<std::size_t> (number);
    const double lower = problem_.variable.lower[j], upper = problem_.variable.upper[j];
    const auto without_value = [&] (std::string_view key) {
        line (key, bound_set_, columns_ (number), std::string_view ());
    };
    switch (problem_.variable.key[j]) {
    case KLV_BK_LO:
        if (!is_plain_zero (lower))
            bound ("LO", number, lower);
        else if (is_integer (number))
            without_value ("PL");
        break;
    case KLV_BK_UP:
        without_value ("MI");
        bound ("UP", number, upper);
        break;
    case KLV_BK_FX:
        bound ("FX", number, lower);
        break;
    case KLV_BK_FR:
        without_value ("FR");
        break;
    default:
        if (!is_plain_zero (lower) || upper < 0)
            bound ("LO", number, lower);
        bound ("UP", number, upper);
        break;
    }
}

void MpsWriter::quadratic_objective ()
{
    const SymmetricTerms& terms = problem_.quadratic_objective;
    if (terms.count () > 0)
        section ("QUADOBJ");
    for (std::size_t k = 0; k < terms.value.size (); ++k)
        quadratic_line (terms.column[k], terms.row[k], terms.value[k]);
}

void MpsWriter::quadratic_constraints ()
{
    const SymmetricTerms& terms = problem_.quadratic_constraint;
    for (std::size_t k = 0; k < terms.value.size (); ++k) {
        if (k == 0 || terms.item[k] != terms.item[k - 1]) {
            put ("QCMATRIX  ");
            section (rows_ (terms.item[k]));
        }
        const std::int32_t row = terms.row[k], column = terms.column[k];
        const double number = terms.value[k] / mps_factor (false, row == column);
        quadratic_line (column, row, number);
        if (row != column)
            quadratic_line (row, column, number);
    }
}

// Two names without a name may share their memory.
void MpsWriter::quadratic_line (std::int32_t first, std::int32_t second, double number)
{
    const std::string name (columns_ (first));
    line ({}, name, columns_ (second), number);
}

static void write_mps (Task& task, MpsForm form, OutputFile& file)
{
    MpsWriter writer (task.problem (), form, file);
    writer.write ();
    if (writer.long_numbers () > 0)
        task.warn (std::to_string (writer.long_numbers ()) +
                   " numbers are longer than their 12 columns of fixed MPS; programs that cut there cannot "
                   "read them");
    warn_of_huge_bounds (task);
}

void write_free_mps (Task& task, OutputFile& file)
{
    write_mps (task, MpsForm::free, file);
}

void write_fixed_mps (Task& task, OutputFile& file)
{
    write_mps (task, MpsForm::fixed, file);
}

}
