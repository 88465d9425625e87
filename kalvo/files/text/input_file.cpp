#include "kalvo/files/text/input_file.h"

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/gzip.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>

namespace klv {

static FileFault cannot_open (const char* reason)
{
    return {KLV_RES_FILE_OPEN, std::string ("cannot be opened: ") + reason};
}

// ---- Unpacking

class InputFile::Unpacker {
public:
    Unpacker () { check_gzip (::inflateInit2 (&stream_, gzip_window_bits)); }
    Unpacker (const Unpacker&) = delete;
    Unpacker& operator= (const Unpacker&) = delete;
    ~Unpacker () { ::inflateEnd (&stream_); }

    std::size_t read (const InputFile& file, char* at, std::size_t size);

private:
    bool refill (const InputFile& file);
    void step ();

    static constexpr std::size_t block = std::size_t{1} << 16;

    z_stream stream_ = gzip_stream ();
    std::unique_ptr<Bytef[]> packed_ = std::make_unique<Bytef[]> (block);
    bool member_ended_ = false;
};

// A gzip file may have several members, as after joining files.
std::size_t InputFile::Unpacker::read (const InputFile& file, char* at, std::size_t size)
{
    const auto room = static_cast<uInt> (size);
    stream_.next_out = reinterpret_cast<Bytef*> (at);
    stream_.avail_out = room;
    while (stream_.avail_out == room) {
        if (stream_.avail_in == 0 && !refill (file)) {
            if (member_ended_)
                return 0;
            throw syntax ("the packed data end too early");
        }
        step ();
    }
    return room - stream_.avail_out;
}

bool InputFile::Unpacker::refill (const InputFile& file)
{
    stream_.next_in = packed_.get ();
    stream_.avail_in = static_cast<uInt> (file.read_raw (packed_.get (), block));
    return stream_.avail_in > 0;
}

void InputFile::Unpacker::step ()
{
    if (member_ended_)
        ::inflateReset (&stream_);
    const bool follows = member_ended_;
    member_ended_ = false;
    switch (::inflate (&stream_, Z_NO_FLUSH)) {
    case Z_STREAM_END:
        member_ended_ = true;
        break;
    case Z_OK:
    case Z_BUF_ERROR:
        break;
    case Z_MEM_ERROR:
        throw std::bad_alloc ();
    default:
        throw syntax (follows ? "the packed data are followed by something else"
                              : "the packed data are damaged");
    }
}

// ---- The file

InputFile::InputFile (const std::string& path)
    : file_ (::open (path.c_str (), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY))
{
    struct stat status;
    if (!file_.is_open () || ::fstat (file_, &status) != 0)
        throw cannot_open (std::strerror (errno));
    if (S_ISDIR (status.st_mode))
        throw cannot_open ("it is a directory");
    if (!S_ISREG (status.st_mode))
        throw cannot_open ("it is not a regular file");
    if (begins_packed ())
        unpacker_ = std::make_unique<Unpacker> ();
}

InputFile::~InputFile () = default;

bool InputFile::begins_packed () const
{
    unsigned char first[2] = {};
    return ::pread (file_, first, sizeof first, 0) == sizeof first && first[0] == 0x1F && first[1] == 0x8B;
}

std::size_t InputFile::read (char* at, std::size_t size)
{
    return unpacker_ ? unpacker_->read (*this, at, size) : read_raw (at, size);
}

std::size_t InputFile::read_raw (void* at, std::size_t size) const
{
    ssize_t got;
    do
        got = ::read (file_, at, size);
    while (got < 0 && errno == EINTR);
    if (got < 0)
        throw FileFault{KLV_RES_FILE_READ, std::string ("cannot be read: ") + std::strerror (errno)};
    return static_cast<std::size_t> (got);
}

}
