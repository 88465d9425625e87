// Writes MPS files: every number to the last bit, every name as it is, or nothing at all.
#include "kalvo/files/mps/mps.h"
#include "kalvo/files/text/item_names.h"
#include "kalvo/files/text/numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace klv {

// ---- Ranges: one bound as the right-hand side, the other by their difference

struct Ranged {
    char kind;    // G or L; 0 when no difference gives both bounds back
    double side;
    long double range;
};

static Ranged ranged_row (double lower, double upper)
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
    return {0, 0, 0};
}

// ---- The writer

class MpsWriter {
public:
    MpsWriter (const Problem& problem, FileForm form, OutputFile& file)
        : problem_ (problem),
          form_ (form),
          file_ (file),
          rows_ (constraint_names (problem)),
          columns_ (variable_names (problem)),
          objective_ (problem.objective_name.empty () ? unused_name ("OBJ", rows_) : problem.objective_name),
          bound_set_ (unused_name ("BND", columns_))
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

    void bounds_of (std::int32_t j);
    char kind_of_row (std::int32_t i) const;
    double side_of_row (std::int32_t i) const;

    // A line of two or three names and a number, in the form of the file. A number of no text stands for
    // none.
    void line (std::string_view key, std::string_view name, std::string_view item, std::string_view number);
    void line (std::string_view key, std::string_view name, std::string_view item, double value);
    void bound (std::string_view key, std::int32_t j, double value);
    void pad_to (std::size_t column);
    void put (std::string_view text);

    const Problem& problem_;
    FileForm form_;
    OutputFile& file_;
    ItemNames rows_, columns_;
    std::string objective_, bound_set_;
    std::int64_t long_numbers_ = 0;
    std::size_t width_ = 0;    // of the line so far
};

void MpsWriter::write ()
{
    heading ();
    rows ();
    columns ();
    right_hand_sides ();
    ranges ();
    bounds ();
    file_.put ("ENDATA\n");
}

void MpsWriter::put (std::string_view text)
{
    file_.put (text);
    width_ += text.size ();
}

void MpsWriter::pad_to (std::size_t column)
{
    constexpr std::string_view blanks = "                                        ";
    put (blanks.substr (0, column > width_ ? column - width_ : 0));
}

void MpsWriter::line (std::string_view key, std::string_view name, std::string_view item,
                      std::string_view number)
{
    constexpr std::size_t key_column = 1, name_column = 4, item_column = 14, number_column = 24,
                          number_width = 12;
    width_ = 0;
    pad_to (key_column);
    put (key);
    pad_to (name_column);
    put (name);
    if (form_ == FileForm::fixed_mps) {
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
    put ("\n");
}

void MpsWriter::line (std::string_view key, std::string_view name, std::string_view item, double value)
{
    char text[number_room];
    line (key, name, item, {text, static_cast<std::size_t> (put_number (text, value) - text)});
}

void MpsWriter::heading ()
{
    file_.put (problem_.name.empty () ? "NAME" : "NAME          ");
    file_.put (problem_.name);
    file_.put (problem_.sense == KLV_SENSE_MAXIMIZE ? "\nOBJSENSE\n    MAX\n" : "\n");
}

char MpsWriter::kind_of_row (std::int32_t number) const
{
    const std::size_t i = static_cast<std::size_t> (number);
    const Bounds& bounds = problem_.constraint;
    switch (bounds.key[i]) {
    case KLV_BK_LO:
        return 'G';
    case KLV_BK_UP:
        return 'L';
    case KLV_BK_FX:
        return 'E';
    case KLV_BK_FR:
        return 'N';
    default:
        return ranged_row (bounds.lower[i], bounds.upper[i]).kind;
    }
}

void MpsWriter::rows ()
{
    const auto row = [this] (char kind, std::string_view name) {
        const char key[] = {' ', kind, ' ', ' '};
        file_.put ({key, sizeof key});
        file_.put (name);
        file_.put ("\n");
    };
    file_.put ("ROWS\n");
    row ('N', objective_);
    for (std::int32_t i = 0; i < problem_.constraints (); ++i) {
        const char kind = kind_of_row (i);
        if (kind == 0)
            throw cannot_hold ("MPS cannot hold constraint " + std::to_string (i + 1) + " " +
                               quote (rows_ (i)) +
                               ", whose bounds are crossed or differ in the sign of zero alone");
        row (kind, rows_ (i));
    }
}

void MpsWriter::columns ()
{
    file_.put ("COLUMNS\n");
    bool integers = false;
    std::int32_t markers = 0;
    const auto mark = [&] (const char* kind) {
        const std::string name = "M" + std::to_string (++markers);
        file_.put (form_ == FileForm::free_mps
                       ? "    " + name + " 'MARKER' " + kind + "\n"
                       : "    " + name + std::string (10 - std::min<std::size_t> (9, name.size ()), ' ') +
                             "'MARKER'                 " + kind + "\n");
    };
    for (std::int32_t number = 0; number < problem_.variables (); ++number) {
        const std::size_t j = static_cast<std::size_t> (number);
        if ((problem_.integer[j] == KLV_VAR_INTEGER) != integers) {
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

double MpsWriter::side_of_row (std::int32_t number) const
{
    const std::size_t i = static_cast<std::size_t> (number);
    const Bounds& bounds = problem_.constraint;
    switch (bounds.key[i]) {
    case KLV_BK_LO:
    case KLV_BK_FX:
        return bounds.lower[i];
    case KLV_BK_UP:
        return bounds.upper[i];
    case KLV_BK_RA:
        return ranged_row (bounds.lower[i], bounds.upper[i]).side;
    default:
        return 0;
    }
}

void MpsWriter::right_hand_sides ()
{
    file_.put ("RHS\n");
    if (!is_plain_zero (problem_.constant))
        line ({}, "RHS", objective_, -problem_.constant);
    for (std::int32_t i = 0; i < problem_.constraints (); ++i) {
        const double side = side_of_row (i);
        if (!is_plain_zero (side))
            line ({}, "RHS", rows_ (i), side);
    }
}

void MpsWriter::ranges ()
{
    bool begun = false;
    const Bounds& bounds = problem_.constraint;
    for (std::int32_t i = 0; i < problem_.constraints (); ++i) {
        const std::size_t at = static_cast<std::size_t> (i);
        if (bounds.key[at] != KLV_BK_RA)
            continue;
        if (!begun)
            file_.put ("RANGES\n");
        begun = true;
        char text[number_room];
        const char* const end = put_range (text, ranged_row (bounds.lower[at], bounds.upper[at]).range);
        line ({}, "RNG", rows_ (i), std::string_view (text, static_cast<std::size_t> (end - text)));
    }
}

void MpsWriter::bounds ()
{
    file_.put ("BOUNDS\n");
    for (std::int32_t j = 0; j < problem_.variables (); ++j)
        bounds_of (j);
}

void MpsWriter::bound (std::string_view key, std::int32_t j, double value)
{
    line (key, bound_set_, columns_ (j), value);
}

// The bounds 0 and infinity of a continuous column go without saying; so do a lower bound of 0 beside an
// upper one that is not negative, and nothing of an integer column, for which programs assume different
// bounds.
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
        else if (problem_.integer[j] == KLV_VAR_INTEGER)
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

void write_mps (Task& task, FileForm form, OutputFile& file)
{
    MpsWriter writer (task.problem (), form, file);
    writer.write ();
    if (writer.long_numbers () > 0)
        task.warn (std::to_string (writer.long_numbers ()) +
                   " numbers are longer than their 12 columns of fixed MPS; programs that cut there cannot "
                   "read them");
}

}
