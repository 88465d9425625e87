// 1-by-1 records whose fields bear the library's names.
#pragma once

#include <cstddef>
#include <cstdint>

#include "host/holders.h"
#include "kalvo.h"

// The names of a record that is to be made, each a copy. What has no memory shows as a code at the end.
class FieldNames {
public:
    explicit FieldNames (std::size_t capacity) : names_ (host::allocate<char*> (capacity)) {}
    FieldNames (const FieldNames&) = delete;
    ~FieldNames ();

    // Appends a name; there is room for `capacity`.
    void add (const char* name);

    // Appends the names 0 ... count - 1 of one kind, as the library tells them.
    void add_all (KLVtask_t task, std::int32_t kind, std::int32_t count,
                  KLVrescode_t (*get_name) (KLVtask_t task, std::int32_t kind, std::int32_t index,
                                            char* name));

    // Makes the record, its fields empty.
    KLVrescode_t make_record (host::Array& record) const;

private:
    host::Memory<char*> names_;
    std::size_t count_ = 0;
    bool complete_ = true;
};

// Makes `value` field number k of a record; null is KLV_RES_OUT_OF_MEMORY.
KLVrescode_t fill_field (const host::Array& record, int k, mxArray* value);
