// 1-by-1 records that are made field by field.
#pragma once

#include <cstddef>
#include <memory>

#include "host/holders.h"
#include "kalvo.h"

// Collects the fields of a record. A lack of memory is reported when the record is made.
class Fields {
public:
    explicit Fields (std::size_t capacity);
    Fields (const Fields&) = delete;

    // Appends a field; there is room for `capacity`.
    void add (const char* name, host::Array value);

    // Makes the record of all fields.
    KLVrescode_t make_record (host::Array& record);

private:
    static constexpr std::size_t longest_name = 64;    // with its end, as the host's limit is

    host::Memory<char> text_;
    host::Memory<const char*> names_;
    std::unique_ptr<host::Array[]> values_;
    std::size_t count_ = 0;
    bool complete_;
};
