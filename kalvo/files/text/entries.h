// Entries of vectors, matrices and symmetric matrices as formats of numbered items list them. No entry may be listed twice:
// programs differ in what that means.
#pragma once

#include "kalvo/model/matrix.h"
#include "kalvo/model/terms.h"

#include <cstdint>
#include <span>
#include <vector>

namespace klv {

struct VectorEntries {
    std::vector<std::int32_t> item;
    std::vector<double> value;

    void add (std::int32_t new_item, double new_value)
    {
        item.push_back (new_item);
        value.push_back (new_value);
    }
    // Puts the values where they belong. Throws FileFault.
    void put (std::span<double> values, const char* section) const;
};

struct MatrixEntries {
    std::vector<std::int32_t> row, column;
    std::vector<double> value;

    void add (std::int32_t new_row, std::int32_t new_column, double new_value)
    {
        row.push_back (new_row);
        column.push_back (new_column);
        value.push_back (new_value);
    }
    // Puts the entries into the columns of a matrix that has none yet. Throws FileFault.
    void put (ColumnMatrix& matrix, std::int32_t rows, const char* section) const;
};

// In either triangle. The objective's have no item.
struct TermEntries {
    std::vector<std::int32_t> item, variable, row, column;
    std::vector<double> value;

    void add (std::int32_t new_variable, std::int32_t new_row, std::int32_t new_column, double new_value)
    {
        variable.push_back (new_variable);
        row.push_back (new_row);
        column.push_back (new_column);
        value.push_back (new_value);
    }
    // Throws FileFault.
    SymmetricTerms terms (const char* section) const;
};

// Items cost memory although a file need not say anything of them: a number of items far beyond the file's lines is refused.
void check_declared (std::int64_t items, std::int64_t lines);

// The place of an entry in the lower triangle, column by column, whichever triangle it is given in.
std::int32_t packed_place (std::int32_t order, std::int32_t row, std::int32_t column);

}
