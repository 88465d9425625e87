// The fields of one line of numbers and words.
#pragma once

#include <cstdint>
#include <string_view>

namespace klv {

class Fields {
public:
    Fields () = default;
    Fields (std::string_view line, std::string_view separators) : rest_ (line), separators_ (separators)
    {
        skip ();
    }

    bool empty () const { return rest_.empty (); }
    std::string_view rest () const { return rest_; }
    std::string_view word ();    // empty behind the last one

    // Throw FileFault when the next field is none. An index counts from `first`; `item` names what it is of.
    double number ();
    std::int32_t whole (std::int32_t smallest, std::int32_t largest);
    std::int32_t index (const char* item, std::int64_t count, std::int32_t first = 0);
    void end () const;

private:
    void skip ();

    std::string_view rest_, separators_;
};

}
