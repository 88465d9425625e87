// Names of a file with their numbers: looked up by hash, their texts one after another in one block.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace klv {

class NameTable {
public:
    static constexpr std::int32_t none = -1;

    // The number of a name, none when it is not there.
    std::int32_t find (std::string_view name) const;

    // Gives a new name the next number, and false when it was there before.
    bool insert (std::string_view name);

    std::int32_t size () const { return static_cast<std::int32_t> (end_.size ()); }
    std::string_view operator[] (std::int32_t number) const;

private:
    struct Slot {
        std::uint32_t hash = 0;
        std::int32_t number = none;
    };

    std::size_t place (std::string_view name, std::uint64_t hash) const;
    void grow ();

    std::vector<char> text_;
    std::vector<std::size_t> end_;    // name i ends here in text_, and begins where its predecessor ends
    std::vector<Slot> slots_;         // a power of two, at most half full
};

}
