// The lines of a text file, numbered, read in large blocks; a line is copied only when it spans two blocks.
#pragma once

#include "kalvo/files/pacer.h"

#include <string_view>
#include <vector>

namespace klv {

// No line of a text problem file is longer, so that a file of another kind is refused before it fills the
// memory.
constexpr std::size_t longest_line = std::size_t{1} << 18;

class LineReader {
public:
    // Only regular files are read: a pipe or terminal without a writer would block for ever.
    LineReader (const std::string& path, Pacer& pacer);
    LineReader (const LineReader&) = delete;
    LineReader& operator= (const LineReader&) = delete;
    ~LineReader ();

    // Moves to the next line; false at the end of the file.
    bool next ();

    // The line without its end (LF or CR LF); valid until the next call of next ().
    std::string_view line () const { return line_; }
    std::int64_t number () const { return number_; }

    // What comes behind the line, as far as it is in memory.
    std::string_view ahead () const { return {buffer_.data () + begin_, end_ - begin_}; }

private:
    void refill ();
    void skip_byte_order_mark ();

    Pacer& pacer_;
    int file_ = -1;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;    // what is read and not yet handed out: buffer_[begin_, end_)
    std::size_t end_ = 0;
    bool at_end_ = false;
    std::string_view line_;
    std::int64_t number_ = 0;
};

}
