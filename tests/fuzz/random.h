// What the fuzzers share: choices that are the same in every run, texts in pieces, a failure that is caught.
#pragma once

#include "tests/support/proof.h"

#include <cstdint>
#include <random>
#include <sstream>

namespace fuzz {

using proof::require;

inline std::vector<std::string> pieces_of (const std::string& text, char end)
{
    std::vector<std::string> pieces;
    std::istringstream stream (text);
    for (std::string piece; std::getline (stream, piece, end);)
        pieces.push_back (piece);
    return pieces;
}

class Random {
public:
    explicit Random (std::uint64_t seed) : random_ (seed) {}

    std::size_t below (std::size_t count) { return static_cast<std::size_t> (random_ () % count); }
    bool one_in (std::size_t count) { return below (count) == 0; }
    double whole (int smallest, int largest)
    {
        return smallest + static_cast<double> (below (static_cast<std::size_t> (largest - smallest + 1)));
    }
    const std::string& any (const std::vector<std::string>& of) { return of[below (of.size ())]; }

private:
    std::mt19937_64 random_;
};

}
