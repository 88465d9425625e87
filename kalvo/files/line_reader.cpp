#include "kalvo/files/line_reader.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

static FileFault cannot_open (const char* reason)
{
    return {KLV_RES_FILE_OPEN, std::string ("cannot be opened: ") + reason};
}

LineReader::LineReader (const std::string& path, Pacer& pacer) : pacer_ (pacer), buffer_ (2 * longest_line)
{
    file_ = ::open (path.c_str (), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
    if (file_ < 0)
        throw cannot_open (std::strerror (errno));
    struct stat status;
    const char* refused = nullptr;
    if (::fstat (file_, &status) != 0)
        refused = std::strerror (errno);
    else if (S_ISDIR (status.st_mode))
        refused = "it is a directory";
    else if (!S_ISREG (status.st_mode))
        refused = "it is not a regular file";
    if (refused) {
        ::close (file_);
        throw cannot_open (refused);
    }
}

LineReader::~LineReader ()
{
    ::close (file_);
}

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
    std::memmove (buffer_.data (), buffer_.data () + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
    ssize_t got;
    do
        got = ::read (file_, buffer_.data () + end_, buffer_.size () - end_);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        throw FileFault{KLV_RES_FILE_READ, std::string ("cannot be read: ") + std::strerror (errno)};
    at_end_ = got == 0;
    end_ += static_cast<std::size_t> (got);
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
