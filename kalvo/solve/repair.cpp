#include "kalvo/solve/repair.h"

#include "kalvo/model/describe.h"
#include "kalvo/model/text.h"
#include "kalvo/sparse/index.h"
#include "kalvo/tables/constants.h"
#include "kalvo/verify/products.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

// A bound that moves.
struct Move {
    bool is_variable, is_upper;
    std::int32_t item;
    double from, to, weight;

    double amount () const { return std::abs (to - from); }
};

// How far a point that solves an elastic problem may be outside a bound that does not move, and how far beyond the point moved
// bounds are put; both relative. Interior points are inexact, and a problem that is feasible at one point only is hard for them.
struct Precision {
    double noise, margin;
};
constexpr Precision exact{1e-9, 0}, searched{1e-6, 0}, interior{1e-6, 1e-6};

// The value, or one that is beyond it by little and has fewer digits. Numbers that differ by rounding errors are one.
static double round_outwards (double value, bool upwards, double margin)
{
    const double size = std::max (1.0, std::abs (value));
    const double direction = upwards ? 1 : -1;
    const double step_size = margin > 0 ? margin : 1e-11;
    const int digits = -static_cast<int> (std::floor (std::log10 (step_size * size)));
    const double scale = std::pow (10.0, std::abs (digits));
    const double outside = direction * (value + direction * margin * size);
    const auto round = [] (double steps) { return std::ceil (steps - 0.1); };
    return direction * (digits >= 0 ? round (outside * scale) / scale : round (outside / scale) * scale);
}

class Repair {
public:
    Repair (Task& task, Weights&& constraints, Weights&& variables, const Optimizer& optimizer)
        : task_ (task),
          problem_ (task.problem ()),
          optimizer_ (optimizer),
          constraints_{problem_.constraint, std::move (constraints)},
          variables_{problem_.variable, std::move (variables)}
    {}

    KLVrescode_t run ();

private:
    bool is_relaxed () const { return task_.parameters.get (IntSetting::relax_integers) != KLV_OFF; }
    bool says (int level) const { return task_.parameters.get (IntSetting::log_level) >= level; }
    KLVrescode_t solve ();
    void gather (const Solution& solution);
    void gather (const Movable& items, std::span<const double> values, bool is_variable,
                 const Precision& precision);
    void apply (bool with_free);
    bool make_the_free_dear ();
    void tell () const;

    Task& task_;
    const Problem& problem_;
    const Optimizer& optimizer_;
    Movable constraints_, variables_;
    std::vector<Move> moves_, found_;
    double bound_ = 0;
};

// Bounds that are outside of what the point needs.
void Repair::gather (const Movable& items, std::span<const double> values, bool is_variable,
                     const Precision& precision)
{
    const auto look_at = [&] (std::size_t k, bool is_upper, double bound, double weight) {
        const double amount = is_upper ? values[k] - bound : bound - values[k];
        if (weight < 0 || std::isinf (bound) || amount <= precision.noise * (1 + std::abs (bound)))
            return;
        const bool is_whole = is_variable && problem_.integer[k] == KLV_VAR_INTEGER && !is_relaxed ();
        const double to =
            is_whole ? std::nearbyint (values[k]) : round_outwards (values[k], is_upper, precision.margin);
        found_.push_back ({is_variable, is_upper, static_cast<std::int32_t> (k), bound, to, weight});
    };
    for (std::size_t k = 0; k < values.size (); ++k) {
        look_at (k, false, items.bounds.lower[k], items.weights.of_lower (k));
        look_at (k, true, items.bounds.upper[k], items.weights.of_upper (k));
    }
}

void Repair::gather (const Solution& solution)
{
    const bool has_integers = problem_.integers > 0 && !is_relaxed ();
    const Precision& precision = has_integers ? searched : problem_.is_linear () ? exact : interior;
    const std::span<const double> x =
        std::span (solution.xx).first (static_cast<std::size_t> (problem_.variables ()));
    found_.clear ();
    gather (constraints_, activities (problem_, {x, solution.barx}, true), false, precision);
    gather (variables_, x, true, precision);
}

KLVrescode_t Repair::solve ()
{
    InnerTask elastic (task_, InnerTask::Lines::printed);
    elastic->replace_problem (make_elastic (problem_, constraints_, variables_,
                                            task_.parameters.get (RealSetting::fixing_tolerance)));
    // The smallest sum is wanted, whatever the parameters say of the problem's own optimum.
    const Parameters standard;
    Parameters& parameters = elastic->parameters;
    const auto reset = [&] (auto& values, std::size_t number, const auto& defaults) {
        values[number] = defaults[number];
    };
    for (const IntSetting setting :
         {IntSetting::optimizer, IntSetting::interior_point_basis, IntSetting::solution_limit})
        reset (parameters.integers, parameter_number (setting), standard.integers);
    reset (parameters.doubles, parameter_number (RealSetting::objective_limit), standard.doubles);
    double& gap = parameters.doubles[parameter_number (RealSetting::integer_relative_gap)];
    gap = std::min (gap, parameters.get (RealSetting::gap_tolerance));
    if (const KLVrescode_t code = elastic.optimize (optimizer_); code != KLV_RES_OK) {
        if (code >= KLV_FIRST_TERMINATION)
            return code;
        refuse (code, "The problem can't be repaired: ", elastic->last_error ().message);
    }
    const Solution* solution = elastic.answer ();
    switch (solution->solution_status) {
    case KLV_SOLSTA_OPTIMAL:
        bound_ = solution->dual_objective;
        break;
    case KLV_SOLSTA_INTEGER_OPTIMAL:
        bound_ = elastic->information.get (RealItem::mip_bound);
        break;
    default:
        refuse (
            KLV_RES_REPAIR_IMPOSSIBLE, "No movement of the bounds that may move makes the problem feasible",
            solution->problem_status == KLV_PRO_INFEASIBLE_BY_SEARCH ? " (by search, not certified)." : ".");
    }
    gather (*solution);
    return KLV_RES_OK;
}

// Makes the moves that were found, all or those that have a price.
void Repair::apply (bool with_free)
{
    for (const Move& move : found_) {
        if (move.weight == 0 && !with_free)
            continue;
        Bounds& bounds = (move.is_variable ? variables_ : constraints_).bounds;
        const std::size_t k = index (move.item);
        (move.is_upper ? bounds.upper : bounds.lower)[k] = move.to;
        bounds.key[k] = key_of (bounds.lower[k], bounds.upper[k]);
        moves_.push_back (move);
    }
}

// Bounds that move at no cost shall move no further than they have to, once the others stay.
bool Repair::make_the_free_dear ()
{
    const auto is_free = [] (const Move& move) { return move.weight == 0; };
    if (std::ranges::none_of (found_, is_free))
        return false;
    for (Movable* items : {&constraints_, &variables_})
        for (std::vector<double>* weights : {&items->weights.lower, &items->weights.upper}) {
            weights->resize (items->bounds.key.size (), weights->empty () ? 1.0 : 0.0);
            for (double& weight : *weights)
                weight = weight == 0 ? 1 : -1;
        }
    return true;
}

void Repair::tell () const
{
    constexpr std::size_t most_lines = 20;
    double sum = 0, rest = 0;
    for (const Move& move : moves_)
        sum += move.weight * move.amount ();
    Information& information = task_.information;
    information.set (RealItem::repair_sum, sum);
    information.set (RealItem::repair_bound, bound_);
    information.set (IntItem::repaired_bounds, std::ssize (moves_));
    if (!says (1))
        return;
    if (moves_.empty ()) {
        task_.say ("Repair: nothing to repair, the problem is feasible.");
        return;
    }
    task_.say (text ("Repair: ", moves_.size (), moves_.size () == 1 ? " bound moves" : " bounds move",
                     ", weighted sum ", sum, " (proved: at least ", bound_, ")"));
    std::vector<Move> sorted = moves_;
    std::ranges::stable_sort (sorted, std::ranges::greater{}, &Move::amount);
    for (std::size_t k = 0; k < sorted.size (); ++k) {
        const Move& move = sorted[k];
        if (k >= most_lines)
            rest += move.amount ();
        else
            task_.say (text ("  ", move.is_upper ? "upper" : "lower", " bound of ",
                             move.is_variable ? describe_variable (problem_, move.item)
                                              : describe_constraint (problem_, move.item),
                             ": from ", move.from, " to ", move.to, ", by ", move.amount ()));
    }
    if (sorted.size () > most_lines)
        task_.say (text ("  and ", sorted.size () - most_lines, " more, by ", rest, " together"));
}

KLVrescode_t Repair::run ()
{
    if (says (1))
        task_.say ("Repair: looking for the smallest weighted sum of movements of bounds");
    if (const KLVrescode_t code = solve (); code != KLV_RES_OK)
        return code;
    const double bound = bound_;
    apply (false);
    if (make_the_free_dear ()) {
        if (const KLVrescode_t code = solve (); code != KLV_RES_OK)
            return code;
        for (Move& move : found_)
            move.weight = 0;
        apply (true);
    }
    bound_ = bound;
    tell ();
    if (!moves_.empty ()) {
        Problem& problem = task_.edit_problem ();
        problem.constraint = std::move (constraints_.bounds);
        problem.variable = std::move (variables_.bounds);
    }
    return KLV_RES_OK;
}

KLVrescode_t repair_problem (Task& task, Weights&& constraints, Weights&& variables,
                             const Optimizer& optimizer)
{
    return Repair (task, std::move (constraints), std::move (variables), optimizer).run ();
}

}
