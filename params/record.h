// 1-by-1 records whose field names come from the library.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/holders.h"
#include "kalvo.h"

// Collects copies of the field names of a record. A lack of memory is reported when the record is made.
class FieldNames {
public:
    explicit FieldNames (std::size_t capacity) : names_ (host::allocate<char*> (capacity)) {}
    FieldNames (const FieldNames&) = delete;
    ~FieldNames ();

    // Appends a name; there is room for `capacity`.
    void add (const char* name);

    // Appends the library's names 0 ... count - 1 of one kind.
    void add_all (KLVtask_t task, std::int32_t kind, std::int32_t count,
                  KLVrescode_t (*get_name) (KLVtask_t task, std::int32_t kind, std::int32_t index,
                                            char* name));

    // Makes the record with empty fields.
    KLVrescode_t make_record (host::Array& record) const;

private:
    host::Memory<char*> names_;
    std::size_t count_ = 0;
    bool complete_ = true;
};

// Puts `value` into field number k of a record; KLV_RES_OUT_OF_MEMORY for null.
KLVrescode_t fill_field (const host::Array& record, int k, mxArray* value);
