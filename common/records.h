// Building what is returned: records, columns, and their parts.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

#include "host/holders.h"

// The fields that a record is to have, in their order: at most `room`.
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

// Gives a value to a field of a 1-by-1 record; a view of the value, null where there was none to give.
mxArray* set_field (mxArray* record, const char* field, host::Array value);

// The same for a field that the record does not have yet, at its end. False: no memory.
bool append_field (mxArray* record, const char* field, host::Array value);

// The values of a field that holds a double array.
double* field_values (mxArray* record, const char* field);

// A copy of a text in memory of the host; null if there is none to be had.
char* mx_strdup (const char* text);
