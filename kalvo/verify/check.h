// Checks claims on the problem as stated.
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

// The distance of an integer solution's objective from the bound that the engine claims; absolute, and relative to the objective.
struct IntegerGap {
    double bound = 0;
    double absolute = 0, relative = 0;
};

// The checked result of one run. Conclusive: nothing is left to find out. An optimum of a continuous problem and a ray are
// proved then; for the bound of an integer problem, and for a search without a point, there is only the engine's word.
struct Answer {
    Outcome outcome = Outcome::unknown;
    bool conclusive = false;
    std::optional<Solution> solution = {};
    bool has_basis = false;    // the solution's keys are those of a basis
    std::optional<IntegerGap> integer_gap = {};
    std::string message = {};    // plain words for a run without a result
    std::string failure = {};    // of a point: the check that it fails most
    Point claim = {};            // where claims are kept: from it the same answer follows anew
};

// Depends on nothing but its arguments, so that any thread may check.
class Check {
public:
    enum class Claims { dropped, kept };

    // `integers`: whether integer variables must be whole.
    Check (std::shared_ptr<const Problem> problem, const Parameters& settings, bool integers,
           Claims claims = Claims::dropped);

    Answer operator() (Point&& claimed) const;
    Solution unknown_solution () const;    // zeros, with unknown statuses

private:
    Answer judged (Point&& claimed) const;
    Solution measured (Point&& claimed, bool& has_basis) const;
    std::optional<Answer> find_proof (const Solution& solution) const;
    Answer check_continuous (Point&& claimed) const;
    Answer check_integer (Point&& claimed) const;
    Answer check_infeasible (const Point& claimed) const;
    Answer check_unbounded (const Point& claimed) const;
    void hand_out_whole_numbers (Solution& solution) const;

    std::shared_ptr<const Problem> problem_;
    Tolerances tolerances_;
    double absolute_gap_, relative_gap_;
    bool integers_;
    bool keeps_claims_;
};

}
