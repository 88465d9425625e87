// Message streams: which functions and files receive a line of text.
#pragma once

#include "kalvo.h"

#include <array>
#include <string_view>

namespace klv {

enum class Kind { message, warning, error };

// Stream 0 carries everything; 1 messages; 2 errors; 3 warnings and errors. A linked function and a linked file live
// on one stream together. A receiver that is linked to several streams which carry a line receives it from each.
class Streams {
public:
    Streams () = default;
    Streams (const Streams&) = delete;
    Streams& operator= (const Streams&) = delete;
    ~Streams ();

    void link_function (std::int32_t stream, void *handle, KLVstreamfunc func);
    KLVrescode_t link_file (std::int32_t stream, const char *filename, bool append);   // null: close
    void print (Kind kind, std::string_view line);       // adds the newline
    void print_on (std::int32_t stream, std::string_view line);  // that stream's receivers, and those of stream 0
    bool anyone_listens (Kind kind) const;

private:
    struct Receiver {
        KLVstreamfunc func = nullptr;
        void *handle = nullptr;
        void *file = nullptr;
    };
    std::array<Receiver, 4> receivers_;
};

}
