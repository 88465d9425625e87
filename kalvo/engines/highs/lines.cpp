#include "kalvo/engines/highs/lines.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace klv::highs {

// Takes numbers and words from a line, one after another. A function whose item does not come next takes nothing.
class Words {
public:
    explicit Words (std::string_view line) : rest_ (line) {}

    template <class Number>
    bool number (Number& value)
    {
        skip_blanks ();
        const auto [end, error] = std::from_chars (rest_.data (), rest_.data () + rest_.size (), value);
        if (error != std::errc ())
            return false;
        rest_.remove_prefix (static_cast<std::size_t> (end - rest_.data ()));
        return true;
    }
    // A whole number, which narrow columns abbreviate: 12345k, 12345m.
    bool count (std::int64_t& value)
    {
        if (!number (value))
            return false;
        if (rest_.starts_with ('k') || rest_.starts_with ('m')) {
            value *= rest_.starts_with ('k') ? 1'000 : 1'000'000;
            rest_.remove_prefix (1);
        }
        return rest_.starts_with (' ');
    }
    bool word (std::string_view expected)
    {
        skip_blanks ();
        if (!rest_.starts_with (expected))
            return false;
        rest_.remove_prefix (expected.size ());
        return true;
    }
    // Any text up to the next blank.
    bool any ()
    {
        skip_blanks ();
        const std::size_t length = std::min (rest_.find (' '), rest_.size ());
        rest_.remove_prefix (length);
        return length > 0;
    }
    bool letter ()
    {
        skip_blanks ();
        const auto is_letter = [] (char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
        return rest_.size () > 1 && is_letter (rest_[0]) && rest_[1] == ' ' && any ();
    }

private:
    void skip_blanks () { rest_.remove_prefix (std::min (rest_.find_first_not_of (' '), rest_.size ())); }

    std::string_view rest_;
};

// "133 -8.9664482186e+05 Pr: 0(0); Du: 0(1.06581e-14) 0.0s"; in a first phase Ph1 stands for Pr.
std::optional<Iteration> read_simplex_iteration (std::string_view line)
{
    Words words (line);
    Iteration now;
    std::int64_t count = 0;
    if (!words.number (now.number) || !words.number (now.objective))
        return std::nullopt;
    now.first_phase = words.word ("Ph1:");
    if ((!now.first_phase && !words.word ("Pr:")) || !words.number (count) || !words.word ("(") ||
        !words.number (now.primal_violation))
        return std::nullopt;
    if (words.word ("); Du:") &&
        (!words.number (count) || !words.word ("(") || !words.number (now.dual_violation)))
        return std::nullopt;
    return now;
}

// "17 -8.96456999e+05 -8.96840531e+05 6.98e-16 6.35e-12 4.28e-04 0.0", or "17*": objectives, violations, gap, seconds.
std::optional<Iteration> read_interior_iteration (std::string_view line)
{
    Words words (line);
    Iteration now;
    double gap = 0;
    if (!words.number (now.number))
        return std::nullopt;
    words.word ("*");
    if (!words.number (now.objective) || !words.number (now.dual_objective) ||
        !words.number (now.primal_violation) || !words.number (now.dual_violation) || !words.number (gap))
        return std::nullopt;
    return now;
}

bool is_crossover_begin (std::string_view line)
{
    return line.starts_with ("Running crossover");
}

// "Presolve reductions: rows 163(-11); columns 141(-1); nonzeros 2256(-13)": sizes after presolve, and the differences.
std::optional<Sizes> read_presolved (std::string_view line)
{
    Words words (line);
    Sizes left;
    std::int64_t difference = 0;
    if (!words.word ("Presolve reductions: rows") || !words.number (left.rows) || !words.word ("(") ||
        !words.number (difference) || !words.word ("); columns") || !words.number (left.columns) ||
        !words.word ("(") || !words.number (difference) || !words.word ("); nonzeros") ||
        !words.number (left.entries) || !words.word ("("))
        return std::nullopt;
    return left;
}

// "173 cols (33 binary, 140 integer, 0 implied int., 0 continuous, 0 domain fixed)"
std::optional<std::int64_t> read_integers (std::string_view line)
{
    Words words (line);
    std::int64_t columns = 0, binary = 0, others = 0;
    if (!words.number (columns) || !words.word ("cols (") || !words.number (binary) ||
        !words.word ("binary,") || !words.number (others) || !words.word ("integer,"))
        return std::nullopt;
    return binary + others;
}

// "L 15 3 7 43.75% 3019.621849 3095 2.44% 202 20 30 41 0.1s": a letter for the heuristic that found a point (or none); nodes,
// open nodes, leaves, share of the tree searched; bound, incumbent, gap; cuts, cuts in the relaxation, conflicts; iterations,
// seconds.
static bool read_row (std::string_view line, Search& search)
{
    Words words (line);
    Search now = search;
    std::int64_t leaves = 0, iterations = 0;
    double searched = 0, seconds = 0;
    words.letter ();
    if (!words.count (now.nodes) || !words.count (now.open_nodes) || !words.count (leaves) ||
        !words.number (searched) || !words.word ("%") || !words.any () || !words.any () || !words.any () ||
        !words.count (now.cuts) || !words.count (now.cuts_in_use) || !words.count (now.conflicts) ||
        !words.count (iterations) || !words.number (seconds) || !words.word ("s"))
        return false;
    search = now;
    return true;
}

bool read_search (std::string_view line, Search& search)
{
    if (read_row (line, search))
        return true;
    Words words (line), others (line);
    std::int64_t count = 0;
    double part = 0;
    if (words.word ("Restarting search") ||
        (others.number (part) && others.word ("% inactive integer columns, restarting")))
        ++search.restarts;
    else if (words.word ("P-D integral"))
        words.number (search.integral);
    else if (words.number (count))
        for (const auto& [what, place] : {std::pair{"(strong br.)", &search.strong_branching},
                                          {"(separation)", &search.separation},
                                          {"(heuristics)", &search.heuristics}})
            if (words.word (what))
                *place = count;
    return false;
}

}
