// Builds records and columns for results.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "host/holders.h"

// Field names of a record that is to be made, at most `room`, in their order.
template <std::size_t room>
class FieldList {
public:
    void add (std::initializer_list<const char*> names)
    {
        if (names.size () > room - count_)
            mexErrMsgTxt ("Fatal error: Too many probnames");
        std::copy (names.begin (), names.end (), names_.begin () + count_);
        count_ += names.size ();
    }
    void add_if (bool wanted, std::initializer_list<const char*> names)
    {
        if (wanted)
            add (names);
    }
    std::span<const char* const> all () const { return {names_.data (), count_}; }

private:
    std::array<const char*, room> names_ = {};
    std::size_t count_ = 0;
};

// A 1-by-1 record with these fields, all without a value.
host::Array create_record (std::span<const char* const> fields);

// A real double column, zeroed.
host::Array create_column (std::int64_t count);

// Puts a value into a field of a 1-by-1 record, and returns a view of the value. Null, and nothing done, for a null value.
mxArray* set_field (mxArray* record, const char* field, host::Array value);

// Appends a field with a value to a 1-by-1 record that does not have such a field. False: no memory.
bool append_field (mxArray* record, const char* field, host::Array value);

// The values of a field that holds a double array.
double* field_values (mxArray* record, const char* field);

extern "C" {

// A 1-by-1 record that takes its values; null ones leave their fields empty. Null, and nothing taken, if there is no memory.
mxArray* mx_make_record (int count, const char** names, host::Array* values);
}
