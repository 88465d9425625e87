// The lines of a text file, numbered, read in large blocks; a line is copied only when it spans two blocks.
#pragma once

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/input_file.h"
#include "kalvo/files/text/pacer.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace klv {

// No line of a text problem file is longer, so that a file of another kind is refused before it fills the
// memory.
constexpr std::size_t longest_line = std::size_t{1} << 24;

class LineReader {
public:
    LineReader (const std::string& path, Pacer& pacer);

    // Moves to the next line; false at the end of the file.
    bool next ();

    // The line without its end (LF or CR LF); valid until the next call of next ().
    std::string_view line () const { return line_; }
    std::int64_t number () const { return number_; }

    // The text behind the line, as far as it is in the buffer.
    std::string_view ahead () const { return {buffer_.data () + begin_, end_ - begin_}; }

private:
    void refill ();
    void skip_byte_order_mark ();

    Pacer& pacer_;
    InputFile file_;
    std::vector<char> buffer_;    // at least twice as long as the longest line so far
    std::size_t begin_ = 0;       // buffer_[begin_, end_) is the text not yet handed out
    std::size_t end_ = 0;
    bool at_end_ = false;
    std::string_view line_;
    std::int64_t number_ = 0;
};

// Calls a reader of lines. A fault that names no line, unless it is a fault of the file itself, gets the current line.
template <class Reading>
void with_lines_of_faults (const LineReader& lines, const Reading& reading)
{
    try {
        reading ();
    } catch (FileFault& fault) {
        if (fault.line == 0 && fault.code != KLV_RES_FILE_READ)
            fault.line = std::max<std::int64_t> (lines.number (), 1);
        throw;
    }
}

}
