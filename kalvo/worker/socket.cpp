#include "kalvo/worker/socket.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

namespace klv {

constexpr std::uint32_t protocol_mark = 0x4b6c7731;    // also the version of the protocol
constexpr std::size_t most_inline = 48 << 10;          // bytes of a body that travels in the socket itself
constexpr unsigned seals = F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE;

struct MessageHead {
    std::uint32_t mark = protocol_mark;
    MessageKind kind{};
    std::uint16_t in_file = 0;    // 1: the body is in the memory file that comes with the head
    std::uint64_t run = 0;
    std::uint64_t length = 0;    // of the body
};
static_assert (sizeof (MessageHead) == 24);

void Descriptor::close () noexcept
{
    if (number_ >= 0)
        ::close (std::exchange (number_, -1));
}

// ---- Sending -----------------------------------------------------------------------------------------------------------------

[[noreturn]] static void fail (const char* what)
{
    throw std::system_error (errno, std::generic_category (), what);
}

static void write_all (int file, std::vector<iovec> pieces)
{
    for (std::size_t next = 0; next < pieces.size ();) {
        const auto count = std::min<std::size_t> (pieces.size () - next, IOV_MAX);
        ssize_t written = ::writev (file, &pieces[next], static_cast<int> (count));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            fail ("memory to share can't be filled");
        while (next < pieces.size () && static_cast<std::size_t> (written) >= pieces[next].iov_len)
            written -= static_cast<ssize_t> (pieces[next++].iov_len);
        if (written > 0) {
            pieces[next].iov_base = static_cast<char*> (pieces[next].iov_base) + written;
            pieces[next].iov_len -= static_cast<std::size_t> (written);
        }
    }
}

static Descriptor make_file (const Writer& body)
{
    // Beyond the limit on files a write would end the process.
    rlimit limit{};
    if (::getrlimit (RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur < body.size ()) {
        errno = EFBIG;
        fail ("memory to share can't be made");
    }
    Descriptor file (::memfd_create ("kalvo", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    if (!file)
        fail ("memory to share can't be made");
    write_all (file.number (), body.pieces ());
    if (::fcntl (file.number (), F_ADD_SEALS, seals) != 0)
        fail ("memory to share can't be sealed");
    return file;
}

// Room for one descriptor beside a message.
union Control {
    cmsghdr aligned;
    char bytes[CMSG_SPACE (sizeof (int))];
};

Socket::Sent Socket::send (MessageKind kind, std::uint64_t run, const Writer& body)
{
    MessageHead head{.kind = kind, .run = run, .length = body.size ()};
    std::vector<iovec> pieces{{&head, sizeof head}};
    Descriptor file;
    msghdr message{};
    Control control{};
    if (body.size () > most_inline) {
        file = make_file (body);
        head.in_file = 1;
        message.msg_control = control.bytes;
        message.msg_controllen = sizeof control.bytes;
        cmsghdr* const with = CMSG_FIRSTHDR (&message);
        with->cmsg_level = SOL_SOCKET;
        with->cmsg_type = SCM_RIGHTS;
        with->cmsg_len = CMSG_LEN (sizeof (int));
        const int number = file.number ();
        std::memcpy (CMSG_DATA (with), &number, sizeof number);
    } else {
        const std::vector<iovec> inside = body.pieces ();
        pieces.insert (pieces.end (), inside.begin (), inside.end ());
    }
    message.msg_iov = pieces.data ();
    message.msg_iovlen = pieces.size ();
    for (;;) {
        if (::sendmsg (socket_.number (), &message, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0)
            return Sent::yes;
        if (errno == EAGAIN || errno == EWOULDBLOCK || errno == ENOBUFS)
            return Sent::full;
        if (errno != EINTR)
            return Sent::closed;
    }
}

// ---- Receiving -----------------------------------------------------------------------------------------------------------------

// The content of a memory file that cannot change any more.
static std::shared_ptr<const void> map (int file, std::size_t length)
{
    if ((static_cast<unsigned> (std::max (::fcntl (file, F_GET_SEALS), 0)) & seals) != seals)
        throw BrokenMessage ("shared memory is not sealed");
    void* const place = ::mmap (nullptr, length, PROT_READ, MAP_PRIVATE | MAP_POPULATE, file, 0);
    if (place == MAP_FAILED)
        throw std::bad_alloc ();
    return {place, [length] (const void* mapped) { ::munmap (const_cast<void*> (mapped), length); }};
}

static std::shared_ptr<const void> copy (int file, std::size_t length)
{
    std::shared_ptr<std::byte[]> bytes (new std::byte[length]);
    for (std::size_t done = 0; done < length;) {
        const ssize_t count = ::pread (file, bytes.get () + done, length - done, static_cast<off_t> (done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            throw BrokenMessage ("shared memory can't be read");
        done += static_cast<std::size_t> (count);
    }
    return bytes;
}

Message Socket::open (const MessageHead& head, Descriptor file)
{
    struct stat status {};
    if (!file || ::fstat (file.number (), &status) != 0 || !S_ISREG (status.st_mode) || head.length == 0 ||
        static_cast<std::uint64_t> (status.st_size) != head.length)
        throw BrokenMessage ("shared memory is missing or has a wrong length");
    if (head.length > longest_)
        throw BrokenMessage ("a message is longer than any should be");
    std::shared_ptr<const void> owner =
        large_ == Large::mapped ? map (file.number (), head.length) : copy (file.number (), head.length);
    return {head.kind, head.run, {static_cast<const std::byte*> (owner.get ()), head.length}, owner};
}

Socket::Received Socket::receive ()
{
    constexpr std::size_t size = sizeof (MessageHead) + most_inline;
    if (!buffer_)
        buffer_ = std::make_unique<std::byte[]> (size);
    iovec piece{buffer_.get (), size};
    Control control{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    message.msg_control = control.bytes;
    message.msg_controllen = sizeof control.bytes;
    ssize_t count = 0;
    while ((count = ::recvmsg (socket_.number (), &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT)) < 0)
        if (errno == EAGAIN || errno == EWOULDBLOCK)
            return {};
        else if (errno != EINTR)
            return {.closed = true};
    Descriptor file;
    const cmsghdr* const with = CMSG_FIRSTHDR (&message);
    if (with != nullptr && with->cmsg_level == SOL_SOCKET && with->cmsg_type == SCM_RIGHTS)
        for (std::size_t place = CMSG_LEN (0); place + sizeof (int) <= with->cmsg_len;
             place += sizeof (int)) {
            int number = -1;
            std::memcpy (&number, CMSG_DATA (with) + place - CMSG_LEN (0), sizeof number);
            file = Descriptor (number);    // one at most is sent; any others are closed
        }
    if (count == 0)
        return {.closed = true};
    MessageHead head;
    if (static_cast<std::size_t> (count) < sizeof head || (message.msg_flags & (MSG_TRUNC | MSG_CTRUNC)) != 0)
        throw BrokenMessage ("a message is cut");
    std::memcpy (&head, buffer_.get (), sizeof head);
    if (head.mark != protocol_mark || head.kind < MessageKind::hello || head.kind > MessageKind::ready)
        throw BrokenMessage ("a message has an unknown kind or version");
    if (head.in_file == 1)
        return {.message = open (head, std::move (file))};
    if (head.in_file != 0 || file || head.length != static_cast<std::size_t> (count) - sizeof head)
        throw BrokenMessage ("a message has a wrong length");
    // The head is as long as three units: the body is aligned as in a file of its own.
    return {.message = Message{head.kind, head.run, {buffer_.get () + sizeof head, head.length}, nullptr}};
}

}
