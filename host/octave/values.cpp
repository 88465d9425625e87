#include "host/octave/values.h"

#include <octave/dNDArray.h>
#include <octave/dSparse.h>
#include <octave/mxarray.h>
#include <octave/oct-map.h>
#include <octave/ov.h>

#include <string>

namespace {

bool is_number (const mxArray* array)
{
    return array != nullptr && array->is_double () && !array->is_complex () && !array->is_sparse () &&
           array->get_number_of_elements () == 1;
}

}

void* make_record_value (const void* record)
{
    const mxArray& fields = *static_cast<const mxArray*> (record);
    // Values that are Octave's own already are handed over as they are.
    if (fields.is_octave_value () || !fields.is_struct () || fields.get_number_of_elements () != 1)
        return nullptr;
    octave_scalar_map map;
    for (int k = 0; k < fields.get_number_of_fields (); ++k) {
        const mxArray* const field = fields.get_field_by_number (0, k);
        if (!is_number (field))
            return nullptr;
        map.setfield (fields.get_field_name_by_number (k), field->get_scalar ());
    }
    return new mxArray (false, octave_value (map));
}

// Values are counted references: all empty texts are one.
void* make_empty_text_value ()
{
    static const octave_value empty{std::string ()};
    return new mxArray (false, empty);
}

void* make_zeros_value (std::ptrdiff_t rows, std::ptrdiff_t columns)
{
    return new mxArray (false, octave_value (NDArray (dim_vector (rows, columns), 0.0)));
}

void* make_sparse_value (std::ptrdiff_t rows, std::ptrdiff_t columns, std::ptrdiff_t room)
{
    return new mxArray (false, octave_value (SparseMatrix (rows, columns, room)));
}
