#include "kalvo/files/text/output_file.h"

#include "kalvo/files/text/gzip.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

static FileFault cannot_create (const std::string& reason)
{
    return {KLV_RES_FILE_OPEN, "cannot be written: " + reason};
}

// The end of a chain of links, so that the file at the end is replaced and not a link.
static std::string without_links (const std::string& path)
{
    const std::unique_ptr<char, decltype (&std::free)> real (::realpath (path.c_str (), nullptr), &std::free);
    return real ? real.get () : path;
}

// ---- Packing

class OutputFile::Packer {
public:
    Packer ()
    {
        constexpr int level = 1,
                      memory = 8;    // a tenth larger than at slow levels, in a quarter of the time
        check_gzip (
            ::deflateInit2 (&stream_, level, Z_DEFLATED, gzip_window_bits, memory, Z_DEFAULT_STRATEGY));
    }
    Packer (const Packer&) = delete;
    Packer& operator= (const Packer&) = delete;
    ~Packer () { ::deflateEnd (&stream_); }

    // Packs a text; the last text ends the file.
    void put (const OutputFile& file, std::string_view text, bool last);

private:
    z_stream stream_ = gzip_stream ();
    std::unique_ptr<Bytef[]> packed_ = std::make_unique<Bytef[]> (block);
};

void OutputFile::Packer::put (const OutputFile& file, std::string_view text, bool last)
{
    stream_.next_in = reinterpret_cast<Bytef*> (const_cast<char*> (text.data ()));
    stream_.avail_in = static_cast<uInt> (text.size ());
    do {
        stream_.next_out = packed_.get ();
        stream_.avail_out = block;
        ::deflate (&stream_, last ? Z_FINISH : Z_NO_FLUSH);
        file.write (packed_.get (), block - stream_.avail_out);
    } while (stream_.avail_out == 0);
}

// ---- The file

OutputFile::OutputFile (const std::string& path, bool packed, Pacer& pacer)
    : pacer_ (pacer), target_ (without_links (path)), packer_ (packed ? std::make_unique<Packer> () : nullptr)
{
    struct stat status;
    const bool exists = ::stat (target_.c_str (), &status) == 0;
    if (exists && S_ISDIR (status.st_mode))
        throw cannot_create ("it is a directory");
    if (exists && !S_ISREG (status.st_mode))
        throw cannot_create ("it is not a regular file");
    if (exists && ::access (target_.c_str (), W_OK) != 0)
        throw cannot_create (std::strerror (errno));

    const std::string beside = target_.substr (0, target_.rfind ('/') + 1) + ".kalvo-";
    for (int attempt = 0; !file_.is_open (); ++attempt) {
        temporary_ = beside + std::to_string (::getpid ()) + "-" + std::to_string (attempt) + ".part";
        file_.open (::open (temporary_.c_str (), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (!file_.is_open () && errno != EEXIST)
            throw cannot_create (std::strerror (errno));
    }
    if (exists)
        ::fchmod (file_, status.st_mode & 07777);
}

OutputFile::~OutputFile ()
{
    if (!temporary_.empty ())
        ::unlink (temporary_.c_str ());
}

void OutputFile::put (std::string_view text)
{
    while (!text.empty ()) {
        if (used_ == block)
            flush (false);
        const std::size_t count = std::min (text.size (), block - used_);
        std::memcpy (buffer_.get () + used_, text.data (), count);
        used_ += count;
        text.remove_prefix (count);
    }
}

void OutputFile::flush (bool last)
{
    const std::string_view text (buffer_.get (), used_);
    if (packer_)
        packer_->put (*this, text, last);
    else
        write (text.data (), text.size ());
    used_ = 0;
    pacer_.tick ();
}

void OutputFile::write (const void* bytes, std::size_t size) const
{
    for (std::size_t written = 0; written < size;) {
        const ssize_t count = ::write (file_, static_cast<const char*> (bytes) + written, size - written);
        if (count < 0 && errno != EINTR)
            fail (std::strerror (errno));
        written += count > 0 ? static_cast<std::size_t> (count) : 0;
    }
}

void OutputFile::commit ()
{
    flush (true);
    if (file_.close () != 0 || std::rename (temporary_.c_str (), target_.c_str ()) != 0)
        fail (std::strerror (errno));
    temporary_.clear ();
}

void OutputFile::fail (const char* reason) const
{
    throw FileFault{KLV_RES_FILE_WRITE, std::string ("cannot be written: ") + reason};
}

}
