#include "output/field_list.h"

#include <algorithm>

#include "output/records.h"

void FieldList::add (std::initializer_list<const char*> names)
{
    for (const char* name : names) {
        if (count_ == capacity)
            mexErrMsgTxt ("Fatal error: Too many probnames");
        names_[count_++].reset (mx_strdup (name));
    }
}

host::Array FieldList::create_record () const
{
    std::array<const char*, capacity> names;
    std::transform (names_.begin (), names_.begin () + count_, names.begin (),
                    [] (const auto& name) { return name.get (); });
    if (std::find (names.begin (), names.begin () + count_, nullptr) != names.begin () + count_)
        return nullptr;
    return ::create_record ({names.data (), count_});
}
