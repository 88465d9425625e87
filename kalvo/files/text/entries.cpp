#include "kalvo/files/text/entries.h"

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/grouped.h"
#include "kalvo/model/domain.h"
#include "kalvo/model/text.h"

#include <algorithm>

namespace klv {

void VectorEntries::put (std::span<double> values, const char* section) const
{
    std::vector<bool> seen (values.size (), false);
    for (std::size_t k = 0; k < item.size (); ++k) {
        const auto place = static_cast<std::size_t> (item[k]);
        if (seen[place])
            throw syntax (text ("an entry of ", section, " comes twice, with the values ", values[place],
                                " and ", value[k]));
        seen[place] = true;
        values[place] = value[k];
    }
}

void MatrixEntries::put (ColumnMatrix& matrix, std::int32_t rows, const char* section) const
{
    const Grouped by_columns (matrix.columns (), std::ssize (value), [&] (const auto& visit) {
        for (std::size_t k = 0; k < value.size (); ++k)
            visit (column[k], row[k], value[k]);
    });
    matrix.reserve (std::ssize (value));
    RepeatedRows repeated;
    for (std::int32_t j = 0; j < matrix.columns (); ++j) {
        const auto in_rows = by_columns.others (j);
        const auto values = by_columns.values (j);
        if (const std::int64_t again = repeated.find (in_rows, rows); again >= 0)
            throw syntax (text ("an entry of ", section, " comes twice, the second time with the value ",
                                values[static_cast<std::size_t> (again)]));
        if (!in_rows.empty ())
            matrix.put (j, in_rows, values);
    }
}

SymmetricTerms TermEntries::terms (const char* section) const
{
    SymmetricTerms terms = add_up ({item, variable, row, column, value});
    if (terms.value.size () < value.size ())
        throw syntax (text ("an entry of ", section, " comes twice, maybe in both triangles of its matrix"));
    return terms;
}

void check_declared (std::int64_t items, std::int64_t lines)
{
    constexpr std::int64_t always = 1 << 22, a_line = 64;
    if (items > always + a_line * lines)
        throw syntax (text ("the file says that it has ", items, " variables and rows, but has only ", lines,
                            " lines"));
}

std::int32_t packed_place (std::int32_t order, std::int32_t row, std::int32_t column)
{
    const auto [first, last] = std::minmax (row, column);
    return static_cast<std::int32_t> (packed_length (order) - packed_length (order - first)) + last - first;
}

}
