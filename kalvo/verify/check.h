// What holds of an engine's claims.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/verify/quality.h"

#include <optional>
#include <string>
#include <vector>

namespace klv {

// How far an integer solution is from the bound that the engine proved; absolute, and relative to the solution.
struct IntegerGap {
    double bound = 0;
    double absolute = 0, relative = 0;
};

// What one run led to, once it was checked.
struct Answer {
    Outcome outcome = Outcome::unknown;
    Method method = Method::dual_simplex;    // that it came from
    bool proved = false;                     // optimal, infeasible or unbounded beyond doubt
    std::optional<Solution> solution = {};
    std::optional<IntegerGap> integer_gap = {};
    std::string message = {};    // of an engine that failed
};

// Checks claims on the problem as stated. Depends on nothing else, so that any thread may do it.
class Check {
public:
    // `integers`: whether integer variables are to be whole.
    Check (std::shared_ptr<const Problem> problem, const Parameters& settings, bool integers);

    Answer operator() (Claims&& claims) const;
    Solution unknown_solution () const;    // zeros of which nothing is known

private:
    Solution point (Claims&& claims) const;
    Answer check_continuous (Claims&& claims) const;
    Answer check_integer (Claims&& claims) const;
    Answer check_infeasible (const Claims& claims) const;
    Answer check_unbounded (const Claims& claims) const;
    void hand_out_whole_numbers (Solution& solution) const;

    std::shared_ptr<const Problem> problem_;
    Tolerances tolerances_;
    double absolute_gap_, relative_gap_;
    bool integers_;
};

}
