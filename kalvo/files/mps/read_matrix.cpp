// ROWS and COLUMNS of an MPS file.
#include "kalvo/files/mps/reader.h"
#include "kalvo/files/text/numbers.h"
#include "kalvo/files/text/words.h"

#include <algorithm>

namespace klv {

// ---- ROWS

void MpsReader::row_line (const MpsFields& fields)
{
    constexpr std::string_view kinds = "NLGE";
    const auto kind = std::find_if (kinds.begin (), kinds.end (),
                                    [&] (const char& k) { return same_word (fields.key, {&k, 1}); });
    if (kind == kinds.end ())
        throw syntax (quote (fields.key) + " is no type of row: N, L, G or E is needed");
    if (row_names_.size () == std::numeric_limits<std::int32_t>::max ())
        throw syntax ("more rows than a task can hold");
    if (!row_names_.insert (fields.name))
        throw syntax ("a second row " + quote (fields.name) + " in ROWS");
    rows_.push_back ({.kind = *kind});

    if (*kind != 'N')
        return;
    const bool is_wanted =
        draft_.problem.objective_name.empty () || draft_.problem.objective_name == fields.name;
    if (!has_objective () && is_wanted) {
        objective_ = row_names_.size () - 1;
        draft_.problem.objective_name = fields.name;
    } else {
        draft_.note (Tradition::further_free_row, fields.name);
    }
}

// ---- COLUMNS

void MpsReader::column_line (const MpsFields& fields)
{
    if (fields.item[0] == mps_marker)
        return marker_line (fields.item[1]);
    if (column_ < 0 || draft_.column_names[column_] != fields.name)
        begin_column (fields.name);
    prefetch_row_ahead ();
    put_entry (fields.item[0], parse_finite (fields.number[0]));
    if (!fields.item[1].empty ())
        put_entry (fields.item[1], parse_finite (fields.number[1]));
}

// Large files name rows in any order, so that looking a row up waits for memory: the row of the next line is fetched while this
// line is read.
void MpsReader::prefetch_row_ahead () const
{
    const std::string_view text = lines_.ahead ().substr (0, 256);
    std::size_t at = 0;
    const auto skip = [&] (bool blanks) {
        while (at < text.size () && text[at] != '\n' && is_blank (text[at]) == blanks)
            ++at;
        return at;
    };
    skip (true);
    skip (false);
    const std::size_t begin = skip (true), end = skip (false);
    row_names_.prefetch (text.substr (begin, end - begin));
}

void MpsReader::marker_line (std::string_view kind)
{
    if (kind == "'SOSORG'" || kind == "'SOSEND'")
        throw unsupported ("special ordered sets", quote (kind));
    if (kind != "'INTORG'" && kind != "'INTEND'")
        throw syntax (quote (kind) + " is no marker: 'INTORG' or 'INTEND' is needed");
    const bool begins = kind == "'INTORG'";
    if (begins == integers_begun_)
        throw syntax (begins ? "a second 'INTORG' without an 'INTEND' between"
                             : "'INTEND' without 'INTORG' before it");
    integers_begun_ = begins;
}

void MpsReader::begin_column (std::string_view name)
{
    end_column ();
    if (!draft_.append_column (name))
        throw syntax ("column " + quote (name) + " goes on after other columns");
    ++column_;
    if (integers_begun_)
        draft_.make_integer (column_);
}

void MpsReader::end_column ()
{
    if (column_ >= 0)
        draft_.problem.matrix.put (column_, entry_rows_, entry_values_);
    entry_rows_.clear ();
    entry_values_.clear ();
}

void MpsReader::put_entry (std::string_view name, double value)
{
    const std::int32_t row = known_row (name);
    std::int32_t& last = last_column_[static_cast<std::size_t> (row)];
    if (last == column_)
        throw syntax ("a second entry of column " + quote (draft_.column_names[column_]) + " in row " +
                      quote (name));
    last = column_;
    if (row == objective_) {
        draft_.problem.cost.back () = value;
    } else {
        entry_rows_.push_back (row > objective_ ? row - 1 : row);
        entry_values_.push_back (value);
    }
}

}
