#include "common/records.h"

#include <utility>

host::Array create_record (std::span<const char* const> fields)
{
    const mwSize sizes[] = {1, 1};
    // The host only reads the names.
    return host::Array (mxCreateStructArray (2, sizes, static_cast<int> (fields.size ()),
                                             const_cast<const char**> (fields.data ())));
}

host::Array create_column (std::int64_t count)
{
    return host::Array (mxCreateDoubleMatrix (static_cast<mwSize> (count), 1, mxREAL));
}

mxArray* set_field (mxArray* record, const char* field, host::Array value)
{
    mxArray* view = value.get ();
    if (view)
        mxSetField (record, 0, field, value.release ());
    return view;
}

bool append_field (mxArray* record, const char* field, host::Array value)
{
    if (!value || mxAddField (record, field) < 0)
        return false;
    set_field (record, field, std::move (value));
    return true;
}

double* field_values (mxArray* record, const char* field)
{
    return mxGetPr (mxGetField (record, 0, field));
}

mxArray* mx_make_record (int count, const char** names, host::Array* values)
{
    const mwSize sizes[] = {1, 1};
    mxArray* const record = mxCreateStructArray (2, sizes, count, names);
    for (int k = 0; k < count && record != nullptr; ++k)
        if (values[k])
            mxSetFieldByNumber (record, 0, k, values[k].release ());
    return record;
}
