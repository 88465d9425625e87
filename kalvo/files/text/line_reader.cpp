#include "kalvo/files/text/line_reader.h"

#include <cstring>

namespace klv {

LineReader::LineReader (const std::string& path, Pacer& pacer)
    : pacer_ (pacer), file_ (path), buffer_ (std::size_t{1} << 19)
{}

bool LineReader::next ()
{
    std::size_t searched = 0;
    for (;;) {
        const char* from = buffer_.data () + begin_;
        const std::size_t length = end_ - begin_;
        const void* newline = std::memchr (from + searched, '\n', length - searched);
        if (newline || (at_end_ && length > 0)) {
            std::size_t size =
                newline ? static_cast<std::size_t> (static_cast<const char*> (newline) - from) : length;
            begin_ += newline ? size + 1 : size;
            if (size > 0 && from[size - 1] == '\r')
                --size;
            ++number_;
            line_ = {from, size};
            return true;
        }
        if (at_end_)
            return false;
        if (length >= longest_line)
            throw FileFault{KLV_RES_FILE_SYNTAX,
                            "a line is longer than " + std::to_string (longest_line) + " bytes", number_ + 1};
        searched = length;
        refill ();
    }
}

void LineReader::refill ()
{
    pacer_.tick ();
    line_ = {};    // the buffer that it points into is about to change
    std::memmove (buffer_.data (), buffer_.data () + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    if (2 * end_ > buffer_.size ())
        buffer_.resize (2 * buffer_.size ());
    const std::size_t got = file_.read (buffer_.data () + end_, buffer_.size () - end_);
    at_end_ = got == 0;
    end_ += got;
    if (number_ == 0)
        skip_byte_order_mark ();
}

void LineReader::skip_byte_order_mark ()
{
    const std::string_view text (buffer_.data (), end_);
    if (text.starts_with ("\xEF\xBB\xBF"))
        begin_ = 3;
    else if (text.starts_with ("\xFF\xFE") || text.starts_with ("\xFE\xFF"))
        throw FileFault{KLV_RES_FILE_SYNTAX, "the file is UTF-16 text; UTF-8 or plain text is needed", 1};
}

}
