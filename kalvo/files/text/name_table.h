// Names of a file with their numbers: a hash table, with all texts in one block. A name has no zero byte.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace klv {

class NameTable {
public:
    static constexpr std::int32_t none = -1;

    // The number of a name, or none.
    std::int32_t find (std::string_view name) const;

    // Starts to fetch from memory the slot that finding a name will look at.
    void prefetch (std::string_view name) const
    {
        if (!slots_.empty ())
            __builtin_prefetch (&slots_[first_place (key_of (name))]);
    }

    // Gives a new name the next number; false when the table has the name.
    bool insert (std::string_view name);

    std::int32_t size () const { return static_cast<std::int32_t> (end_.size ()); }
    std::string_view operator[] (std::int32_t number) const;

private:
    // The word of a name of up to 8 bytes is the name itself, so that finding it costs one access to memory. The word of a longer
    // name is its hash; names of equal hash are compared.
    struct Slot {
        std::uint64_t word = 0;
        std::uint32_t length = 0;
        std::int32_t number = none;
    };

    static Slot key_of (std::string_view name);
    std::size_t first_place (const Slot& key) const;
    std::size_t place (std::string_view name, const Slot& key) const;
    void grow ();

    std::vector<char> text_;
    std::vector<std::size_t> end_;    // ends of the names in text_, where the next one begins
    std::vector<Slot> slots_;         // their number is a power of two; at most four fifths are used
};

}
