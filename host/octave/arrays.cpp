// libmx as the gateway expects it, where Octave's differs. The linker sends the gateway's calls of the
// functions in wrapped.txt to __wrap_…, and __real_… is Octave's own.
//
// - Where memory runs out Octave throws; here null is returned, also for sizes whose product Octave lets
// overflow.
// - Where an array is of a class that a function is not for, or an element does not exist, Octave throws,
//   aborts or follows a wild pointer; here it is null, 0 or nothing, as MATLAB documents it.

#include <octave/quit.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "host/holders.h"
#include "host/octave/values.h"

extern "C" {
void* __real_mxCalloc (std::size_t count, std::size_t size);
mxArray* __real_mxCreateDoubleMatrix (mwSize rows, mwSize columns, mxComplexity complexity);
mxArray* __real_mxCreateSparse (mwSize rows, mwSize columns, mwSize nzmax, mxComplexity complexity);
mxArray* __real_mxCreateCharArray (mwSize dimensions, const mwSize* sizes);
mxArray* __real_mxCreateStructArray (mwSize dimensions, const mwSize* sizes, int fields, const char** names);
mxArray* __real_mxCreateCellArray (mwSize dimensions, const mwSize* sizes);
mxArray* __real_mxDuplicateArray (const mxArray* array);
int __real_mxAddField (mxArray* array, const char* name);
double* __real_mxGetPr (const mxArray* array);
void* __real_mxGetData (const mxArray* array);
mwIndex* __real_mxGetIr (const mxArray* array);
mwIndex* __real_mxGetJc (const mxArray* array);
double __real_mxGetScalar (const mxArray* array);
int __real_mxGetString (const mxArray* array, char* text, mwSize size);
mxArray* __real_mxGetCell (const mxArray* array, mwIndex index);
void __real_mxSetCell (mxArray* array, mwIndex index, mxArray* value);
int __real_mxGetNumberOfFields (const mxArray* array);
const char* __real_mxGetFieldNameByNumber (const mxArray* array, int number);
mxArray* __real_mxGetField (const mxArray* array, mwIndex index, const char* name);
mxArray* __real_mxGetFieldByNumber (const mxArray* array, mwIndex index, int number);
void __real_mxSetField (mxArray* array, mwIndex index, const char* name, mxArray* value);
void __real_mxSetFieldByNumber (mxArray* array, mwIndex index, int number, mxArray* value);
}

namespace {

// The functions that are called through here run no user's code, so that an error can only mean that memory is short.
template <class Make>
auto null_without_memory (Make make) -> decltype (make ())
{
    try {
        return make ();
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const octave::execution_exception&) {
        return nullptr;
    }
}

// Whether the product is a size in bytes that memory can have.
bool can_exist (mwSize dimensions, const mwSize* sizes, std::size_t element_size)
{
    std::size_t product = element_size;
    constexpr std::size_t limit = std::size_t{1} << 47;
    return std::all_of (sizes, sizes + dimensions, [&product] (mwSize size) {
        const bool fits = size >= 0 && (size == 0 || product <= limit / static_cast<std::size_t> (size));
        product *= static_cast<std::size_t> (size);
        return fits;
    });
}

bool holds_numbers (const mxArray* array)
{
    return mxIsNumeric (array) || mxIsLogical (array) || mxIsChar (array);
}

bool has_element (const mxArray* array, mwIndex index)
{
    return index >= 0 && static_cast<std::size_t> (index) < mxGetNumberOfElements (array);
}

}

extern "C" {

void* __wrap_mxCalloc (std::size_t count, std::size_t size)
{
    if (size > 0 && count > std::numeric_limits<std::size_t>::max () / size)
        return nullptr;
    return null_without_memory ([=] { return __real_mxCalloc (count, size); });
}

mxArray* __wrap_mxCreateDoubleMatrix (mwSize rows, mwSize columns, mxComplexity complexity)
{
    const mwSize sizes[] = {rows, columns};
    if (!can_exist (2, sizes, sizeof (double)))
        return nullptr;
    return null_without_memory ([=] {
        return complexity == mxREAL ? static_cast<mxArray*> (make_zeros_value (rows, columns))
                                    : __real_mxCreateDoubleMatrix (rows, columns, complexity);
    });
}

mxArray* __wrap_mxCreateDoubleScalar (double value)
{
    return null_without_memory ([=] { return static_cast<mxArray*> (make_number_value (value)); });
}

mxArray* __wrap_mxCreateSparse (mwSize rows, mwSize columns, mwSize nzmax, mxComplexity complexity)
{
    if (rows < 0 || !can_exist (1, &columns, sizeof (mwIndex)) || !can_exist (1, &nzmax, sizeof (double)))
        return nullptr;
    return null_without_memory ([=] {
        if (complexity == mxREAL)
            return static_cast<mxArray*> (make_sparse_value (rows, columns, nzmax));
        return __real_mxCreateSparse (rows, columns, nzmax, complexity);
    });
}

mxArray* __wrap_mxCreateString (const char* text)
{
    return null_without_memory ([=] { return static_cast<mxArray*> (make_text_value (text)); });
}

mxArray* __wrap_mxCreateCharArray (mwSize dimensions, const mwSize* sizes)
{
    if (!can_exist (dimensions, sizes, sizeof (mxChar)))
        return nullptr;
    return null_without_memory ([=] {
        return dimensions == 2 ? static_cast<mxArray*> (make_characters_value (sizes[0], sizes[1]))
                               : __real_mxCreateCharArray (dimensions, sizes);
    });
}

mxArray* __wrap_mxCreateStructArray (mwSize dimensions, const mwSize* sizes, int fields, const char** names)
{
    if (!can_exist (dimensions, sizes, sizeof (mxArray*) * static_cast<std::size_t> (std::max (fields, 1))))
        return nullptr;
    return null_without_memory (
        [=] { return __real_mxCreateStructArray (dimensions, sizes, fields, names); });
}

mxArray* __wrap_mx_make_record (int count, const char** names, host::Array* values)
{
    return null_without_memory ([=] {
        std::vector<const void*> fields (static_cast<std::size_t> (count));
        std::transform (values, values + count, fields.begin (),
                        [] (const host::Array& value) { return value.get (); });
        auto* const record = static_cast<mxArray*> (make_record_value (count, names, fields.data ()));
        std::for_each (values, values + count, [] (host::Array& value) { value.reset (); });
        return record;
    });
}

mxArray* __wrap_mxCreateCellArray (mwSize dimensions, const mwSize* sizes)
{
    if (!can_exist (dimensions, sizes, sizeof (mxArray*)))
        return nullptr;
    return null_without_memory ([=] { return __real_mxCreateCellArray (dimensions, sizes); });
}

mxArray* __wrap_mxDuplicateArray (const mxArray* array)
{
    return null_without_memory ([=] { return __real_mxDuplicateArray (array); });
}

// Octave would add a second field of the same name.
int __wrap_mxAddField (mxArray* array, const char* name)
{
    if (!mxIsStruct (array))
        return -1;
    if (const int existing = mxGetFieldNumber (array, name); existing >= 0)
        return existing;
    try {
        return __real_mxAddField (array, name);
    } catch (const std::bad_alloc&) {
        return -1;
    } catch (const octave::execution_exception&) {
        return -1;
    }
}

// Octave copies data that it holds in another form (ranges, complex values) at the first access.
double* __wrap_mxGetPr (const mxArray* array)
{
    if (!holds_numbers (array))
        return nullptr;
    return null_without_memory ([=] { return __real_mxGetPr (array); });
}

void* __wrap_mxGetData (const mxArray* array)
{
    return mxGetPr (array);
}

mwIndex* __wrap_mxGetIr (const mxArray* array)
{
    return mxIsSparse (array) ? __real_mxGetIr (array) : nullptr;
}

mwIndex* __wrap_mxGetJc (const mxArray* array)
{
    return mxIsSparse (array) ? __real_mxGetJc (array) : nullptr;
}

// For a sparse array, the first stored value.
double __wrap_mxGetScalar (const mxArray* array)
{
    if (!holds_numbers (array) || mxIsEmpty (array))
        return 0;
    if (!mxIsSparse (array))
        return __real_mxGetScalar (array);
    const void* const values = mxGetData (array);
    if (values == nullptr || mxGetJc (array)[mxGetN (array)] == 0)
        return 0;
    return mxIsLogical (array) ? *static_cast<const mxLogical*> (values)
                               : *static_cast<const double*> (values);
}

// Octave leaves a buffer that is too short untouched.
int __wrap_mxGetString (const mxArray* array, char* text, mwSize size)
{
    if (!mxIsChar (array) || size <= 0)
        return 1;
    const std::size_t length = mxGetNumberOfElements (array);
    const std::size_t copied = std::min (length, static_cast<std::size_t> (size) - 1);
    if (copied > 0) {
        const void* const characters = mxGetData (array);
        if (characters == nullptr)
            return 1;
        std::memcpy (text, characters, copied);
    }
    text[copied] = '\0';
    return copied < length ? 1 : 0;
}

mxArray* __wrap_mxGetCell (const mxArray* array, mwIndex index)
{
    if (!mxIsCell (array) || !has_element (array, index))
        return nullptr;
    return null_without_memory ([=] { return __real_mxGetCell (array, index); });
}

void __wrap_mxSetCell (mxArray* array, mwIndex index, mxArray* value)
{
    if (mxIsCell (array) && has_element (array, index))
        __real_mxSetCell (array, index, value);
}

int __wrap_mxGetNumberOfFields (const mxArray* array)
{
    return mxIsStruct (array) ? __real_mxGetNumberOfFields (array) : 0;
}

const char* __wrap_mxGetFieldNameByNumber (const mxArray* array, int number)
{
    if (!mxIsStruct (array))
        return nullptr;
    return null_without_memory ([=] { return __real_mxGetFieldNameByNumber (array, number); });
}

mxArray* __wrap_mxGetField (const mxArray* array, mwIndex index, const char* name)
{
    if (!mxIsStruct (array) || !has_element (array, index))
        return nullptr;
    return null_without_memory ([=] { return __real_mxGetField (array, index, name); });
}

mxArray* __wrap_mxGetFieldByNumber (const mxArray* array, mwIndex index, int number)
{
    if (!mxIsStruct (array) || !has_element (array, index))
        return nullptr;
    return null_without_memory ([=] { return __real_mxGetFieldByNumber (array, index, number); });
}

void __wrap_mxSetField (mxArray* array, mwIndex index, const char* name, mxArray* value)
{
    if (mxIsStruct (array) && has_element (array, index))
        __real_mxSetField (array, index, name, value);
}

void __wrap_mxSetFieldByNumber (mxArray* array, mwIndex index, int number, mxArray* value)
{
    if (mxIsStruct (array) && has_element (array, index))
        __real_mxSetFieldByNumber (array, index, number, value);
}
}
