// What holds of claims on the problem as stated.
#pragma once

#include "kalvo/model/point.h"
#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"
#include "kalvo/task/values.h"
#include "kalvo/verify/quality.h"

#include <memory>
#include <optional>
#include <string>

namespace klv {

// How far an integer solution is from the bound that the engine claims; absolute, and relative to the solution.
struct IntegerGap {
    double bound = 0;
    double absolute = 0, relative = 0;
};

// What one run led to, once it was checked. Conclusive: nothing is left to find out. An optimum of a continuous problem, a ray,
// are proved then; of an integer problem the bound, and that a search found no point, are the engine's word.
struct Answer {
    Outcome outcome = Outcome::unknown;
    bool conclusive = false;
    std::optional<Solution> solution = {};
    bool has_basis = false;    // the solution's keys are those of a basis
    std::optional<IntegerGap> integer_gap = {};
    std::string message = {};    // why there is none, in plain words
};

// Depends on nothing but what it is given, so that any thread may check.
class Check {
public:
    // `integers`: whether integer variables are to be whole.
    Check (std::shared_ptr<const Problem> problem, const Parameters& settings, bool integers);

    Answer operator() (Point&& claimed) const;
    Solution unknown_solution () const;    // zeros of which nothing is known

private:
    Solution measured (Point&& claimed, bool& has_basis) const;
    Answer check_continuous (Point&& claimed) const;
    Answer check_integer (Point&& claimed) const;
    Answer check_infeasible (const Point& claimed) const;
    Answer check_unbounded (const Point& claimed) const;
    void hand_out_whole_numbers (Solution& solution) const;

    std::shared_ptr<const Problem> problem_;
    Tolerances tolerances_;
    double absolute_gap_, relative_gap_;
    bool integers_;
};

}
