#include "host/octave/values.h"

#include <octave/chNDArray.h>
#include <octave/dNDArray.h>
#include <octave/dSparse.h>
#include <octave/mxarray.h>
#include <octave/oct-map.h>
#include <octave/ov.h>

#include <string>

namespace {

bool is_record (const mxArray& array)
{
    return array.is_struct () && !array.is_octave_value () && array.get_number_of_elements () == 1;
}

// Octave's own conversion makes a cell of each field, and an array of the record.
octave_value record_value (const mxArray& record)
{
    octave_scalar_map map;
    for (int k = 0; k < record.get_number_of_fields (); ++k) {
        const mxArray* const field = record.get_field_by_number (0, k);
        map.setfield (record.get_field_name_by_number (k), field != nullptr && is_record (*field)
                                                               ? record_value (*field)
                                                               : mxArray::as_octave_value (field));
    }
    return octave_value (map);
}

}

void* make_value_of_record (const void* record)
{
    const auto* const array = static_cast<const mxArray*> (record);
    if (array == nullptr || !is_record (*array))
        return nullptr;
    return new mxArray (false, record_value (*array));
}

void* make_record_value (int count, const char* const* names, const void* const* values)
{
    octave_scalar_map map;
    for (int k = 0; k < count; ++k)
        map.setfield (names[k], mxArray::as_octave_value (static_cast<const mxArray*> (values[k])));
    return new mxArray (false, octave_value (map));
}

// Values are counted references: all empty texts are one.
void* make_text_value (const char* text)
{
    static const octave_value empty{std::string ()};
    return new mxArray (false, *text == '\0' ? empty : octave_value (std::string (text)));
}

void* make_characters_value (std::ptrdiff_t rows, std::ptrdiff_t columns)
{
    return new mxArray (false, octave_value (charNDArray (dim_vector (rows, columns), '\0')));
}

void* make_number_value (double number)
{
    return new mxArray (false, octave_value (number));
}

void* make_zeros_value (std::ptrdiff_t rows, std::ptrdiff_t columns)
{
    return new mxArray (false, octave_value (NDArray (dim_vector (rows, columns), 0.0)));
}

void* make_sparse_value (std::ptrdiff_t rows, std::ptrdiff_t columns, std::ptrdiff_t room)
{
    return new mxArray (false, octave_value (SparseMatrix (rows, columns, room)));
}
