#include "kalvo/files/output_file.h"

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

// The file that a chain of links ends at, so that a link is not replaced by the file.
static std::string without_links (const std::string& path)
{
    const std::unique_ptr<char, decltype (&std::free)> real (::realpath (path.c_str (), nullptr), &std::free);
    return real ? real.get () : path;
}

OutputFile::OutputFile (const std::string& path, Pacer& pacer)
    : pacer_ (pacer), target_ (without_links (path))
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
    for (int attempt = 0; file_ < 0; ++attempt) {
        temporary_ = beside + std::to_string (::getpid ()) + "-" + std::to_string (attempt) + ".part";
        file_ = ::open (temporary_.c_str (), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file_ < 0 && errno != EEXIST)
            throw cannot_create (std::strerror (errno));
    }
    if (exists)
        ::fchmod (file_, status.st_mode & 07777);
}

OutputFile::~OutputFile ()
{
    if (file_ >= 0)
        ::close (file_);
    if (!temporary_.empty ())
        ::unlink (temporary_.c_str ());
}

void OutputFile::put (std::string_view text)
{
    while (!text.empty ()) {
        if (used_ == block)
            flush ();
        const std::size_t count = std::min (text.size (), block - used_);
        std::memcpy (buffer_.get () + used_, text.data (), count);
        used_ += count;
        text.remove_prefix (count);
    }
}

void OutputFile::flush ()
{
    for (std::size_t written = 0; written < used_;) {
        const ssize_t count = ::write (file_, buffer_.get () + written, used_ - written);
        if (count < 0 && errno != EINTR)
            fail (std::strerror (errno));
        written += count > 0 ? static_cast<std::size_t> (count) : 0;
    }
    used_ = 0;
    pacer_.tick ();
}

void OutputFile::commit ()
{
    flush ();
    const int closed = ::close (file_);
    file_ = -1;
    if (closed != 0 || std::rename (temporary_.c_str (), target_.c_str ()) != 0)
        fail (std::strerror (errno));
    temporary_.clear ();
}

void OutputFile::fail (const char* reason) const
{
    throw FileFault{KLV_RES_FILE_WRITE, std::string ("cannot be written: ") + reason};
}

}
