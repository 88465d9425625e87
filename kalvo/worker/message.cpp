#include "kalvo/worker/message.h"

namespace klv {

constexpr std::size_t unit = 8;
constexpr std::size_t copied_up_to = 4096;

static std::size_t filling (std::size_t size)
{
    return (unit - size % unit) % unit;
}

void Writer::append (const void* bytes, std::size_t size)
{
    if (size == 0)
        return;
    const std::size_t place = own_.size ();
    own_.resize (place + size);
    std::memcpy (own_.data () + place, bytes, size);
    if (!pieces_.empty () && pieces_.back ().outside == nullptr)
        pieces_.back ().size += size;
    else
        pieces_.push_back ({nullptr, place, size});
    size_ += size;
}

void Writer::put_bytes (const void* items, std::size_t count, std::size_t size)
{
    put_bits (count);
    if (size <= copied_up_to)
        append (items, size);
    else {
        pieces_.push_back ({items, 0, size});
        size_ += size;
    }
    constexpr std::byte zeros[unit]{};
    append (zeros, filling (size));
}

std::vector<iovec> Writer::pieces () const
{
    std::vector<iovec> found;
    found.reserve (pieces_.size ());
    for (const Piece& piece : pieces_) {
        const void* const start = piece.outside != nullptr ? piece.outside : own_.data () + piece.place;
        found.push_back ({const_cast<void*> (start), piece.size});    // iovec serves reading, too
    }
    return found;
}

std::uint64_t Reader::get_bits ()
{
    std::uint64_t bits = 0;
    if (rest_.size () < sizeof bits)
        throw BrokenMessage ("a message ends too early");
    std::memcpy (&bits, rest_.data (), sizeof bits);
    rest_ = rest_.subspan (sizeof bits);
    return bits;
}

std::span<const std::byte> Reader::take (std::int64_t count, std::size_t item_size)
{
    if (count < 0 || static_cast<std::size_t> (count) > rest_.size () / item_size)
        throw BrokenMessage ("an array is longer than its message");
    const std::size_t size = static_cast<std::size_t> (count) * item_size;
    const std::span<const std::byte> bytes = rest_.first (size);
    if (rest_.size () - size < filling (size))
        throw BrokenMessage ("a message ends too early");
    rest_ = rest_.subspan (size + filling (size));
    return bytes;
}

std::size_t Reader::get_below (std::size_t limit)
{
    const std::uint64_t number = get_bits ();
    if (number >= limit)
        throw BrokenMessage ("a number is out of range");
    return number;
}

std::string Reader::get_text ()
{
    const std::span<const char> found = get_array<char> ();
    return {found.begin (), found.end ()};
}

void Reader::end () const
{
    if (!rest_.empty ())
        throw BrokenMessage ("a message is longer than it should be");
}

}
