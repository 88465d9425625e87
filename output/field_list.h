// The list of a record's field names while it is made up.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>

#include "host/holders.h"

class FieldList {
public:
    // Adds copies of names; an overlong list ends the call with an error of the host.
    void add (std::initializer_list<const char*> names);

    // The record with these fields; null if it, or a copy of a name, could not be made.
    host::Array create_record () const;

private:
    static constexpr std::size_t capacity = 20;
    std::array<host::Memory<char>, capacity> names_;
    std::size_t count_ = 0;
};
