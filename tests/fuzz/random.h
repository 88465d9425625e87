// What the fuzzers share: choices that are the same in every run, texts in pieces, a failure that is caught.
#pragma once

#include "tests/support/proof.h"

#include <cstdio>
#include <cstdlib>
#include <map>
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

template <class Items, class Text>
std::string join (const Items& items, const std::string& between, Text text_of)
{
    std::string text;
    for (const auto& item : items)
        text += (&item == &*std::begin (items) ? "" : between) + text_of (item);
    return text;
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

// Runs COUNT cases, from number FIRST, as the arguments say; `check` gives a case's outcome in words, or throws.
template <class Check>
int run_cases (int argc, char** argv, Check check)
{
    const long count = argc > 1 ? std::atol (argv[1]) : 1000, first = argc > 2 ? std::atol (argv[2]) : 0;
    std::setvbuf (stdout, nullptr, _IOLBF, BUFSIZ);
    std::map<std::string, long> outcomes;
    long failed = 0;
    for (long i = first; i < first + count; ++i)
        try {
            ++outcomes[check (i)];
        } catch (const std::exception& fault) {
            ++failed;
            std::printf ("case %ld: %s\n", i, fault.what ());
        }
    for (const auto& [outcome, times] : outcomes)
        std::printf ("%ld %s\n", times, outcome.c_str ());
    std::printf ("%ld passed, %ld failed\n", count - failed, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}
