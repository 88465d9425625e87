// A socket for messages between two processes of one machine. Large messages travel in memory files without names.
#pragma once

#include "kalvo/worker/message.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

namespace klv {

class Descriptor {
public:
    Descriptor () = default;
    explicit Descriptor (int number) : number_ (number) {}
    Descriptor (Descriptor&& other) noexcept : number_ (std::exchange (other.number_, -1)) {}
    Descriptor& operator= (Descriptor&& other) noexcept
    {
        std::swap (number_, other.number_);
        return *this;
    }
    ~Descriptor () { close (); }

    int number () const { return number_; }
    explicit operator bool () const { return number_ >= 0; }
    void close () noexcept;

private:
    int number_ = -1;
};

class Socket {
public:
    // How the content of memory files is read: in place, which the sender has to have sealed, or into own memory.
    enum class Large { mapped, copied };

    // The socket does not block. `longest`: bytes of the largest message that is accepted.
    Socket (Descriptor socket, Large large) : socket_ (std::move (socket)), large_ (large) {}

    int number () const { return socket_.number (); }
    void accept_up_to (std::size_t bytes) { longest_ = bytes; }

    enum class Sent {
        yes,
        full,
        closed
    };    // full: nothing was sent, try again when the socket can be written to
    // Throws std::system_error where no memory file can be made or filled.
    Sent send (MessageKind kind, std::uint64_t run, const Writer& body = {});

    struct Received {
        bool closed = false;
        std::optional<Message> message = {};    // none: nothing has come
    };
    // Throws BrokenMessage and std::bad_alloc.
    Received receive ();

private:
    Message open (const struct MessageHead& head, Descriptor file);

    Descriptor socket_;
    Large large_;
    std::size_t longest_ = SIZE_MAX;
    std::unique_ptr<std::byte[]> buffer_;
};

}
