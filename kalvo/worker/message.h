// The bytes of messages between a calling process and a worker (docs/worker.md). Numbers take 8 bytes each, arrays their count and
// then their items, filled up to 8 bytes.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include <sys/uio.h>

namespace klv {

static_assert (std::endian::native == std::endian::little);

// A message that is not what the protocol allows.
struct BrokenMessage : std::runtime_error {
    using std::runtime_error::runtime_error;
};

enum class MessageKind : std::uint16_t {
    hello = 1,    // the worker's first message: its version
    solve,        // to the worker: a problem, parameters, and what is known already
    stop,         // to the worker
    news,         // log lines, questions to the callback, attempts, incumbents, information
    result,       // the last one of a run
    ready         // the worker can be used again
};

class Writer {
public:
    template <class Number>
        requires std::is_arithmetic_v<Number> || std::is_enum_v<Number>
    void put (Number number)
    {
        if constexpr (std::is_floating_point_v<Number>)
            put_bits (std::bit_cast<std::uint64_t> (double{number}));
        else
            put_bits (static_cast<std::uint64_t> (static_cast<std::int64_t> (number)));
    }
    // A large array is not copied: it must live until the message is sent.
    template <class Item>
    void put_array (std::span<const Item> items)
    {
        static_assert (std::is_arithmetic_v<Item>);
        put_bytes (items.data (), items.size (), items.size_bytes ());
    }
    template <class Item>
    void put_array (const std::vector<Item>& items)
    {
        put_array (std::span (items));
    }
    void put_text (std::string_view text) { put_bytes (text.data (), text.size (), text.size ()); }

    std::size_t size () const { return size_; }
    std::vector<iovec> pieces () const;    // valid as long as nothing more is put

private:
    struct Piece {
        const void* outside;    // null: of own_
        std::size_t place, size;
    };

    void put_bits (std::uint64_t bits) { append (&bits, sizeof bits); }
    void put_bytes (const void* items, std::size_t count, std::size_t size);
    void append (const void* bytes, std::size_t size);

    std::vector<std::byte> own_;
    std::vector<Piece> pieces_;
    std::size_t size_ = 0;
};

// Throws BrokenMessage where the bytes end too early, or hold a number that does not fit.
class Reader {
public:
    explicit Reader (std::span<const std::byte> bytes) : rest_ (bytes) {}

    template <class Number>
    Number get ()
    {
        const std::uint64_t bits = get_bits ();
        if constexpr (std::is_floating_point_v<Number>)
            return std::bit_cast<double> (bits);
        else {
            const auto value = static_cast<std::int64_t> (bits);
            if (value < std::numeric_limits<Number>::min () || value > std::numeric_limits<Number>::max ())
                throw BrokenMessage ("a number is out of range");
            return static_cast<Number> (value);
        }
    }
    bool get_bool () { return get_below (2) != 0; }
    std::size_t get_below (std::size_t limit);    // a number from 0 on
    template <class Enumeration>
    Enumeration get_enumeration (Enumeration last)
    {
        return static_cast<Enumeration> (get_below (static_cast<std::size_t> (last) + 1));
    }

    // A part of the message.
    template <class Item>
    std::span<const Item> get_array ()
    {
        const auto count = get<std::int64_t> ();
        const std::span<const std::byte> bytes = take (count, sizeof (Item));
        return {reinterpret_cast<const Item*> (bytes.data ()), static_cast<std::size_t> (count)};
    }
    template <class Item>
    void get_into (std::vector<Item>& items)
    {
        const std::span<const Item> found = get_array<Item> ();
        items.assign (found.begin (), found.end ());
    }
    // An array whose length is fixed.
    template <class Array>
    void get_exactly (Array& items)
    {
        const auto found = get_array<typename Array::value_type> ();
        if (found.size () != items.size ())
            throw BrokenMessage ("an array has a wrong length");
        std::memcpy (items.data (), found.data (), found.size_bytes ());
    }
    std::string get_text ();
    void end () const;    // nothing may be left

private:
    std::uint64_t get_bits ();
    std::span<const std::byte> take (std::int64_t count, std::size_t item_size);

    std::span<const std::byte> rest_;
};

// A message as it was received. The owner keeps its bytes.
struct Message {
    MessageKind kind{};
    std::uint64_t run = 0;
    std::span<const std::byte> body;
    std::shared_ptr<const void> owner;
};

}
