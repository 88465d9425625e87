#include "kalvo/files/text/name_table.h"

#include <cstring>

namespace klv {

static std::uint64_t mix (std::uint64_t a, std::uint64_t b)
{
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide> (a) * b;
    return static_cast<std::uint64_t> (product) ^ static_cast<std::uint64_t> (product >> 64);
}

constexpr std::uint64_t first_factor = 0x9E3779B97F4A7C15, second_factor = 0xD1B54A32D192ED03;

static std::uint64_t word_at (const char* text, std::size_t count)
{
    std::uint64_t word = 0;
    if (count > 0)
        std::memcpy (&word, text, count);
    return word;
}

NameTable::Slot NameTable::key_of (std::string_view name)
{
    constexpr std::size_t size = sizeof (std::uint64_t);
    Slot key{.length = static_cast<std::uint32_t> (name.size ())};
    while (name.size () > size) {
        key.word = mix (key.word ^ word_at (name.data (), size), first_factor);
        name.remove_prefix (size);
    }
    key.word ^= word_at (name.data (), name.size ());
    return key;
}

std::string_view NameTable::operator[] (std::int32_t number) const
{
    const std::size_t i = static_cast<std::size_t> (number);
    const std::size_t begin = i == 0 ? 0 : end_[i - 1];
    return {text_.data () + begin, end_[i] - begin};
}

std::size_t NameTable::first_place (const Slot& key) const
{
    return mix (key.word, second_factor) & (slots_.size () - 1);
}

// The slot that holds a name, or the free slot for it.
std::size_t NameTable::place (std::string_view name, const Slot& key) const
{
    const std::size_t mask = slots_.size () - 1;
    std::size_t at = first_place (key);
    for (; slots_[at].number != none; at = (at + 1) & mask)
        if (slots_[at].word == key.word && slots_[at].length == key.length &&
            (key.length <= sizeof key.word || (*this)[slots_[at].number] == name))
            break;
    return at;
}

std::int32_t NameTable::find (std::string_view name) const
{
    return slots_.empty () ? none : slots_[place (name, key_of (name))].number;
}

bool NameTable::insert (std::string_view name)
{
    if (5 * (end_.size () + 1) > 4 * slots_.size ())
        grow ();
    Slot key = key_of (name);
    Slot& slot = slots_[place (name, key)];
    if (slot.number != none)
        return false;
    text_.insert (text_.end (), name.begin (), name.end ());
    end_.push_back (text_.size ());
    key.number = size () - 1;
    slot = key;
    return true;
}

void NameTable::grow ()
{
    slots_.assign (slots_.empty () ? 64 : 2 * slots_.size (), Slot ());
    for (std::int32_t i = 0; i < size (); ++i) {
        Slot key = key_of ((*this)[i]);
        key.number = i;
        slots_[place ((*this)[i], key)] = key;
    }
}

}
