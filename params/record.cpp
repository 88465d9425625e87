#include "params/record.h"

#include <cstdio>
#include <new>
#include <utility>

#include "common/records.h"

Fields::Fields (std::size_t capacity)
    : text_ (host::allocate<char> (capacity * longest_name)),
      names_ (host::allocate<const char*> (capacity)),
      values_ (new (std::nothrow) host::Array[capacity]),
      complete_ (text_ && names_ && values_)
{}

void Fields::add (const char* name, host::Array value)
{
    complete_ = complete_ && value;
    if (!complete_)
        return;
    char* const copy = text_.get () + count_ * longest_name;
    std::snprintf (copy, longest_name, "%s", name);
    names_[count_] = copy;
    values_[count_++] = std::move (value);
}

KLVrescode_t Fields::make_record (host::Array& record)
{
    if (complete_)
        record.reset (mx_make_record (static_cast<int> (count_), names_.get (), values_.get ()));
    return record ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}
