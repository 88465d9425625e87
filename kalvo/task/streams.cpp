#include "kalvo/task/streams.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

namespace klv {

StreamFile::StreamFile (StreamFile&& other) noexcept : descriptor_ (std::exchange (other.descriptor_, -1)) {}

StreamFile& StreamFile::operator= (StreamFile&& other) noexcept
{
    std::swap (descriptor_, other.descriptor_);
    return *this;
}

// O_APPEND lets two streams share one file. O_NONBLOCK refuses a pipe that nobody reads, which would block otherwise.
bool StreamFile::open (const char* filename, bool append)
{
    close ();
    const int kind = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    descriptor_ = ::open (filename, kind | (append ? 0 : O_TRUNC), 0666);
    if (descriptor_ < 0)
        return false;
    return ::fcntl (descriptor_, F_SETFL, O_APPEND) == 0;
}

bool StreamFile::write (std::string_view line) noexcept
{
    while (!line.empty ()) {
        const ssize_t written = ::write (descriptor_, line.data (), line.size ());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        line.remove_prefix (static_cast<std::size_t> (written));
    }
    return true;
}

void StreamFile::close () noexcept
{
    if (is_open ())
        ::close (std::exchange (descriptor_, -1));
}

static unsigned bit (std::int32_t stream)
{
    return 1u << stream;
}

static unsigned carriers_of (Kind kind)
{
    switch (kind) {
    case Kind::message:
        return bit (KLV_STREAM_ALL) | bit (KLV_STREAM_MESSAGES);
    case Kind::warning:
        return bit (KLV_STREAM_ALL) | bit (KLV_STREAM_WARNINGS);
    case Kind::error:
        return bit (KLV_STREAM_ALL) | bit (KLV_STREAM_ERRORS) | bit (KLV_STREAM_WARNINGS);
    }
    return bit (KLV_STREAM_ALL);
}

void Streams::link_function (std::int32_t stream, void* handle, KLVstreamfunc func)
{
    functions_[static_cast<std::size_t> (stream)] = {func, func != nullptr ? handle : nullptr};
}

bool Streams::link_file (std::int32_t stream, const char* filename, bool append)
{
    std::string name = filename;
    StreamFile file;
    if (!file.open (filename, append))
        return false;
    files_[static_cast<std::size_t> (stream)] = std::move (file);
    file_names_[static_cast<std::size_t> (stream)] = std::move (name);
    return true;
}

void Streams::close_file (std::int32_t stream)
{
    files_[static_cast<std::size_t> (stream)].close ();
}

void Streams::print (Kind kind, std::string_view line)
{
    deliver (carriers_of (kind), line);
}

static unsigned carriers_on (std::int32_t stream)
{
    return bit (stream) | bit (KLV_STREAM_ALL);
}

void Streams::print_on (std::int32_t stream, std::string_view line)
{
    deliver (carriers_on (stream), line);
}

bool Streams::has_receiver (unsigned carriers) const
{
    for (std::int32_t stream = 0; stream < stream_count; ++stream) {
        const auto place = static_cast<std::size_t> (stream);
        if ((carriers & bit (stream)) && (functions_[place].func != nullptr || files_[place].is_open ()))
            return true;
    }
    return false;
}

bool Streams::anyone_listens (Kind kind) const
{
    return has_receiver (carriers_of (kind));
}

bool Streams::anyone_listens_on (std::int32_t stream) const
{
    return has_receiver (carriers_on (stream));
}

void Streams::deliver (unsigned carriers, std::string_view line)
{
    const std::string whole = text (line, "\n");
    std::array<std::string, stream_count> lost;
    for (std::int32_t stream = 0; stream < stream_count; ++stream) {
        StreamFile& file = files_[static_cast<std::size_t> (stream)];
        if (!(carriers & bit (stream)) || !file.is_open () || file.write (whole))
            continue;
        const int cause = errno;
        file.close ();
        lost[static_cast<std::size_t> (stream)] =
            text ("Warning: the file '", file_names_[static_cast<std::size_t> (stream)],
                  "' can't be written and was closed: ", std::strerror (cause));
    }
    if (!delivering_) {
        struct Delivery {
            bool& running;
            ~Delivery () { running = false; }
        } delivery{delivering_ = true};
        const auto functions = functions_;    // a copy, since a function may link others while it is called
        call_functions (functions, carriers, whole.c_str ());
    }
    for (const std::string& warning : lost)
        if (!warning.empty ())
            deliver (carriers_of (Kind::warning), warning);
}

void call_functions (const std::array<StreamFunction, stream_count>& functions, unsigned carriers,
                     const char* text)
{
    for (std::size_t stream = 0; stream < functions.size (); ++stream) {
        const StreamFunction& receiver = functions[stream];
        const auto before = functions.begin () + static_cast<std::ptrdiff_t> (stream);
        const bool has_received = [&] {
            for (auto other = functions.begin (); other != before; ++other)
                if ((carriers & bit (static_cast<std::int32_t> (other - functions.begin ()))) &&
                    *other == receiver)
                    return true;
            return false;
        }();
        if ((carriers & bit (static_cast<std::int32_t> (stream))) && receiver.func != nullptr &&
            !has_received)
            receiver.func (receiver.handle, text);
    }
}

}
