// libmx: arrays and memory.

#include <cstring>
#include <limits>

#include "host/standalone/array.h"

using standalone::book;

void* mxCalloc (std::size_t count, std::size_t size)
{
    book ().check_thread ("mxCalloc");
    if (book ().refuses () || (size > 0 && count > (std::size_t{1} << 36) / size))
        return nullptr;
    void* const block = std::calloc (count > 0 ? count : 1, size > 0 ? size : 1);
    if (block != nullptr)
        book ().blocks.emplace (block, book ().depth);
    return block;
}

void mxFree (void* memory)
{
    book ().check_thread ("mxFree");
    if (memory == nullptr)
        return;
    if (book ().blocks.erase (memory) == 0)
        return book ().fault ("mxFree: released before, or no block of this host");
    std::free (memory);
}

mxArray* mxCreateDoubleMatrix (mwSize rows, mwSize columns, mxComplexity complexity)
{
    book ().check_thread ("mxCreateDoubleMatrix");
    return book ().refuses () ? nullptr
                              : book ().create (mxDOUBLE_CLASS, {rows, columns}, complexity == mxCOMPLEX);
}

mxArray* mxCreateDoubleScalar (double value)
{
    mxArray* const array = mxCreateDoubleMatrix (1, 1, mxREAL);
    if (array != nullptr)
        *mxGetPr (array) = value;
    return array;
}

mxArray* mxCreateSparse (mwSize rows, mwSize columns, mwSize nzmax, mxComplexity complexity)
{
    book ().check_thread ("mxCreateSparse");
    return book ().refuses ()
               ? nullptr
               : book ().create_sparse (mxDOUBLE_CLASS, rows, columns, nzmax, complexity == mxCOMPLEX);
}

mxArray* mxCreateString (const char* text)
{
    book ().check_thread ("mxCreateString");
    return book ().refuses () ? nullptr : book ().create_text (text == nullptr ? "" : text);
}

mxArray* mxCreateCharArray (mwSize dimensions, const mwSize* sizes)
{
    book ().check_thread ("mxCreateCharArray");
    return book ().refuses () ? nullptr : book ().create (mxCHAR_CLASS, {sizes, sizes + dimensions});
}

mxArray* mxCreateStructArray (mwSize dimensions, const mwSize* sizes, int fields, const char** names)
{
    book ().check_thread ("mxCreateStructArray");
    if (book ().refuses ())
        return nullptr;
    mxArray* const array = book ().create (mxSTRUCT_CLASS, {sizes, sizes + dimensions});
    if (array != nullptr) {
        array->fields.assign (names, names + fields);
        array->parts.resize (array->count () * array->fields.size ());
    }
    return array;
}

mxArray* mxCreateCellArray (mwSize dimensions, const mwSize* sizes)
{
    book ().check_thread ("mxCreateCellArray");
    return book ().refuses () ? nullptr : book ().create (mxCELL_CLASS, {sizes, sizes + dimensions});
}

mxArray* mxDuplicateArray (const mxArray* array)
{
    const mxArray& original = book ().used (array, "mxDuplicateArray");
    return book ().refuses () ? nullptr : book ().duplicate (original);
}

void mxDestroyArray (mxArray* array)
{
    book ().check_thread ("mxDestroyArray");
    if (array == nullptr)
        return;
    if (!book ().arrays.contains (array))
        return book ().fault ("mxDestroyArray: released before, or no array of this host");
    if (array->is_borrowed)
        return book ().fault ("mxDestroyArray: releases an input");
    book ().destroy (*array);
}

std::size_t mxGetM (const mxArray* array)
{
    return book ().used (array, "mxGetM").sizes[0];
}

std::size_t mxGetN (const mxArray* array)
{
    const mxArray& known = book ().used (array, "mxGetN");
    std::size_t product = 1;
    for (std::size_t dimension = 1; dimension < known.sizes.size (); ++dimension)
        product *= known.sizes[dimension];
    return product;
}

std::size_t mxGetNumberOfElements (const mxArray* array)
{
    return book ().used (array, "mxGetNumberOfElements").count ();
}

mwSize mxGetNumberOfDimensions (const mxArray* array)
{
    return book ().used (array, "mxGetNumberOfDimensions").sizes.size ();
}

mxClassID mxGetClassID (const mxArray* array)
{
    return book ().used (array, "mxGetClassID").class_id;
}

bool mxIsEmpty (const mxArray* array)
{
    return book ().used (array, "mxIsEmpty").count () == 0;
}

bool mxIsChar (const mxArray* array)
{
    return book ().used (array, "mxIsChar").class_id == mxCHAR_CLASS;
}

bool mxIsStruct (const mxArray* array)
{
    return book ().used (array, "mxIsStruct").class_id == mxSTRUCT_CLASS;
}

bool mxIsCell (const mxArray* array)
{
    return book ().used (array, "mxIsCell").class_id == mxCELL_CLASS;
}

bool mxIsDouble (const mxArray* array)
{
    return book ().used (array, "mxIsDouble").class_id == mxDOUBLE_CLASS;
}

bool mxIsSparse (const mxArray* array)
{
    return book ().used (array, "mxIsSparse").is_sparse;
}

bool mxIsComplex (const mxArray* array)
{
    return book ().used (array, "mxIsComplex").is_complex;
}

double* mxGetPr (const mxArray* array)
{
    const mxArray& known = book ().used (array, "mxGetPr");
    if (known.class_id != mxDOUBLE_CLASS)
        book ().fault ("mxGetPr: the array is not of class double");
    return static_cast<double*> (book ().numbers (array, "mxGetPr"));
}

void* mxGetData (const mxArray* array)
{
    const mxArray& known = book ().used (array, "mxGetData");
    if (standalone::element_size (known.class_id) == 0)
        book ().fault ("mxGetData: the array's class holds no numbers");
    return book ().numbers (array, "mxGetData");
}

mwIndex* mxGetIr (const mxArray* array)
{
    mxArray& known = book ().used (array, "mxGetIr");
    return known.is_sparse ? known.ir.data () : nullptr;
}

mwIndex* mxGetJc (const mxArray* array)
{
    mxArray& known = book ().used (array, "mxGetJc");
    return known.is_sparse ? known.jc.data () : nullptr;
}

double mxGetScalar (const mxArray* array)
{
    const mxArray& known = book ().used (array, "mxGetScalar");
    if (known.count () == 0 || standalone::element_size (known.class_id) == 0) {
        book ().fault ("mxGetScalar: the array holds no number");
        return 0;
    }
    if (known.is_sparse && known.jc.back () == 0)
        return 0;
    double first = 0;
    standalone::with_elements (known, [&first] (const auto* data) { first = static_cast<double> (data[0]); });
    return first;
}

int mxGetString (const mxArray* array, char* text, mwSize size)
{
    const mxArray& known = book ().used (array, "mxGetString");
    if (known.class_id != mxCHAR_CLASS || size == 0)
        return 1;
    const std::string whole = standalone::View (array).text ();
    const std::size_t copied = std::min (whole.size (), size - 1);
    std::memcpy (text, whole.data (), copied);
    text[copied] = '\0';
    return copied < whole.size () ? 1 : 0;
}

mxArray* mxGetCell (const mxArray* array, mwIndex index)
{
    const mxArray& known = book ().used (array, "mxGetCell");
    return known.class_id == mxCELL_CLASS && index < known.parts.size () ? known.parts[index] : nullptr;
}

void mxSetCell (mxArray* array, mwIndex index, mxArray* value)
{
    mxArray& known = book ().changed (array, "mxSetCell");
    if (known.class_id != mxCELL_CLASS || index >= known.parts.size ())
        return book ().fault ("mxSetCell: no such element");
    book ().put (known, index, value, "mxSetCell");
}

int mxGetNumberOfFields (const mxArray* array)
{
    return static_cast<int> (book ().used (array, "mxGetNumberOfFields").fields.size ());
}

static bool has_field (const mxArray& record, int number)
{
    return number >= 0 && static_cast<std::size_t> (number) < record.fields.size ();
}

static int field_number (const mxArray& record, const char* name)
{
    for (std::size_t number = 0; number < record.fields.size (); ++number)
        if (record.fields[number] == name)
            return static_cast<int> (number);
    return -1;
}

const char* mxGetFieldNameByNumber (const mxArray* array, int number)
{
    const mxArray& known = book ().used (array, "mxGetFieldNameByNumber");
    return has_field (known, number) ? known.fields[static_cast<std::size_t> (number)].c_str () : nullptr;
}

mxArray* mxGetFieldByNumber (const mxArray* array, mwIndex index, int number)
{
    const mxArray& known = book ().used (array, "mxGetFieldByNumber");
    if (!has_field (known, number) || index >= known.count ())
        return nullptr;
    return known.parts[index * known.fields.size () + static_cast<std::size_t> (number)];
}

mxArray* mxGetField (const mxArray* array, mwIndex index, const char* name)
{
    return mxGetFieldByNumber (array, index, field_number (book ().used (array, "mxGetField"), name));
}

void mxSetFieldByNumber (mxArray* array, mwIndex index, int number, mxArray* value)
{
    mxArray& known = book ().changed (array, "mxSetFieldByNumber");
    if (!has_field (known, number) || index >= known.count ())
        return book ().fault ("mxSetFieldByNumber: no such field");
    book ().put (known, index * known.fields.size () + static_cast<std::size_t> (number), value,
                 "mxSetFieldByNumber");
}

void mxSetField (mxArray* array, mwIndex index, const char* name, mxArray* value)
{
    mxSetFieldByNumber (array, index, field_number (book ().changed (array, "mxSetField"), name), value);
}

int mxAddField (mxArray* array, const char* name)
{
    mxArray& known = book ().changed (array, "mxAddField");
    if (known.class_id != mxSTRUCT_CLASS || book ().refuses ())
        return -1;
    if (const int existing = field_number (known, name); existing >= 0)
        return existing;
    const std::size_t before = known.fields.size ();
    known.fields.emplace_back (name);
    std::vector<mxArray*> parts;
    for (std::size_t element = 0; element < known.count (); ++element) {
        for (std::size_t number = 0; number < before; ++number)
            parts.push_back (known.parts[element * before + number]);
        parts.push_back (nullptr);
    }
    known.parts = std::move (parts);
    return static_cast<int> (before);
}

double mxGetInf ()
{
    return std::numeric_limits<double>::infinity ();
}
