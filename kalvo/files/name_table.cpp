#include "kalvo/files/name_table.h"

#include <cstring>

namespace klv {

static std::uint64_t mix (std::uint64_t a, std::uint64_t b)
{
    __extension__ using Wide = unsigned __int128;
    const Wide product = static_cast<Wide> (a) * b;
    return static_cast<std::uint64_t> (product) ^ static_cast<std::uint64_t> (product >> 64);
}

static std::uint64_t hash_of (std::string_view name)
{
    constexpr std::uint64_t first = 0x9E3779B97F4A7C15, second = 0xD1B54A32D192ED03;
    std::uint64_t hash = name.size () ^ second;
    std::uint64_t word = 0;
    for (; name.size () > sizeof word; name.remove_prefix (sizeof word)) {
        std::memcpy (&word, name.data (), sizeof word);
        hash = mix (hash ^ word, first);
    }
    word = 0;
    if (!name.empty ())
        std::memcpy (&word, name.data (), name.size ());
    return mix (hash ^ word, first);
}

std::string_view NameTable::operator[] (std::int32_t number) const
{
    const std::size_t i = static_cast<std::size_t> (number);
    const std::size_t begin = i == 0 ? 0 : end_[i - 1];
    return {text_.data () + begin, end_[i] - begin};
}

// The slot that holds a name, or the free one where it belongs. The slots are chosen by the lower bits of the
// hash; the upper ones, kept in them, spare most comparisons of texts.
std::size_t NameTable::place (std::string_view name, std::uint64_t hash) const
{
    const std::size_t mask = slots_.size () - 1;
    std::size_t at = hash & mask;
    for (; slots_[at].number != none; at = (at + 1) & mask)
        if (slots_[at].hash == hash >> 32 && (*this)[slots_[at].number] == name)
            break;
    return at;
}

std::int32_t NameTable::find (std::string_view name) const
{
    return slots_.empty () ? none : slots_[place (name, hash_of (name))].number;
}

bool NameTable::insert (std::string_view name)
{
    if (2 * (end_.size () + 1) > slots_.size ())
        grow ();
    const std::uint64_t hash = hash_of (name);
    Slot& slot = slots_[place (name, hash)];
    if (slot.number != none)
        return false;
    text_.insert (text_.end (), name.begin (), name.end ());
    end_.push_back (text_.size ());
    slot = {static_cast<std::uint32_t> (hash >> 32), size () - 1};
    return true;
}

void NameTable::grow ()
{
    slots_.assign (slots_.empty () ? 64 : 2 * slots_.size (), Slot ());
    for (std::int32_t i = 0; i < size (); ++i) {
        const std::uint64_t hash = hash_of ((*this)[i]);
        slots_[place ((*this)[i], hash)] = {static_cast<std::uint32_t> (hash >> 32), i};
    }
}

}
