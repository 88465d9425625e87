// Message streams: which functions and files receive a line of text.
#pragma once

#include "kalvo/include/kalvo.h"

#include <array>
#include <string>
#include <string_view>

namespace klv {

enum class Kind { message, warning, error };

constexpr std::int32_t stream_count = 4;

struct StreamFunction {
    KLVstreamfunc func = nullptr;
    void* handle = nullptr;

    bool operator== (const StreamFunction&) const = default;
};

// A file that lines are appended to.
class StreamFile {
public:
    StreamFile () = default;
    StreamFile (StreamFile&& other) noexcept;
    StreamFile& operator= (StreamFile&& other) noexcept;
    ~StreamFile () { close (); }

    bool open (const char* filename, bool append);    // false: errno says why
    bool is_open () const { return descriptor_ >= 0; }
    bool write (std::string_view line) noexcept;    // false: errno says why
    void close () noexcept;

private:
    int descriptor_ = -1;
};

// Stream 0 carries everything; 1 messages; 2 errors; 3 warnings and errors. A stream can have a function and a file. A function
// that is linked with one handle to several streams of a line receives the line once. Lines that are printed while a function
// receives one go to files only.
class Streams {
public:
    void link_function (std::int32_t stream, void* handle, KLVstreamfunc func);
    bool link_file (std::int32_t stream, const char* filename, bool append);    // false: errno says why
    void close_file (std::int32_t stream);

    void print (Kind kind, std::string_view line);    // adds the newline
    void print_on (std::int32_t stream,
                   std::string_view line);    // to receivers of that stream and of stream 0
    bool anyone_listens (Kind kind) const;
    bool anyone_listens_on (std::int32_t stream) const;    // to what print_on would print

private:
    bool has_receiver (unsigned carriers) const;
    void deliver (unsigned carriers, std::string_view line);

    std::array<StreamFunction, stream_count> functions_;
    std::array<StreamFile, stream_count> files_;
    std::array<std::string, stream_count> file_names_;
    bool delivering_ = false;
};

// Calls each different function of the streams whose bit is set in `carriers` once.
void call_functions (const std::array<StreamFunction, stream_count>& functions, unsigned carriers,
                     const char* text);

}
