#include "kalvo/solve/correct.h"

#include "kalvo/sparse/index.h"
#include "kalvo/sparse/ldl.h"
#include "kalvo/task/memory.h"
#include "kalvo/verify/products.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <tuple>

namespace klv {

// What may move towards a bound, and the multiplier there.
struct Slack {
    double distance = infinity;
    double multiplier = 0;
};

// `multiplier` is positive at the lower bound, negative at the upper one; both distances are kept above zero.
static Slack slack_of (double value, Interval bounds, double multiplier)
{
    constexpr double least = 1e-14;
    const double distance = multiplier > 0 ? value - bounds.lower : bounds.upper - value;
    return {std::max (distance, least * (1 + std::abs (value))), std::abs (multiplier)};
}

class Correction {
public:
    Correction (const Problem& problem, const Solution& solution)
        : problem_ (problem),
          sign_ (problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1),
          x_ (solution.xx),
          y_ (solution.y),
          variables_ (x_.size ())
    {}

    std::optional<Point> run ();

private:
    struct Entry {
        std::int32_t column, row;
        double value;
    };

    void add (std::size_t one, std::size_t other, double value);
    void add_curvature ();
    void add_rows ();
    void gather ();
    bool step ();

    const Problem& problem_;
    const double sign_;
    std::vector<double> x_, y_;
    const std::size_t variables_;
    std::vector<Entry> entries_;    // of [H + D, J'; J, -E], its upper triangle
    SparseColumns upper_;
    std::optional<Ldl> ldl_;
};

void Correction::add (std::size_t one, std::size_t other, double value)
{
    entries_.push_back ({static_cast<std::int32_t> (std::max (one, other)),
                         static_cast<std::int32_t> (std::min (one, other)), value});
}

// Of the Lagrangian, as a minimum.
void Correction::add_curvature ()
{
    const SymmetricTerms& objective = problem_.quadratic_objective;
    for (std::size_t k = 0; k < objective.value.size (); ++k)
        add (index (objective.row[k]), index (objective.column[k]), sign_ * objective.value[k]);
    const SymmetricTerms& constraint = problem_.quadratic_constraint;
    for (std::size_t k = 0; k < constraint.value.size (); ++k)
        add (index (constraint.row[k]), index (constraint.column[k]),
             -sign_ * y_[index (constraint.item[k])] * constraint.value[k]);
}

void Correction::add_rows ()
{
    for (std::size_t j = 0; j < variables_; ++j) {
        const Column column = problem_.matrix.column (static_cast<std::int32_t> (j));
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            add (variables_ + index (column.rows[k]), j, column.values[k]);
    }
    const SymmetricTerms& terms = problem_.quadratic_constraint;
    for (std::size_t k = 0; k < terms.value.size (); ++k) {
        const std::size_t row = variables_ + index (terms.item[k]), i = index (terms.row[k]),
                          j = index (terms.column[k]);
        add (row, i, terms.value[k] * x_[j]);
        if (i != j)
            add (row, j, terms.value[k] * x_[i]);
    }
}

// Sorts the entries and adds up those of one place. The pattern is the same in every step.
void Correction::gather ()
{
    std::ranges::sort (entries_, {},
                       [] (const Entry& entry) { return std::tuple (entry.column, entry.row); });
    upper_ = {};
    std::int32_t last = -1;
    for (const Entry& entry : entries_) {
        while (upper_.columns () <= entry.column) {
            upper_.starts.push_back (static_cast<std::int32_t> (upper_.rows.size ()));
            last = -1;
        }
        if (entry.row == last)
            upper_.values.back () += entry.value;
        else {
            upper_.rows.push_back (last = entry.row);
            upper_.values.push_back (entry.value);
        }
        upper_.starts.back () = static_cast<std::int32_t> (upper_.rows.size ());
    }
}

bool Correction::step ()
{
    constexpr double small = 1e-12, most = 1e20;
    std::vector<double> right (variables_ + y_.size ());
    const std::vector<double> activity = activities (problem_, {x_, {}}, true),
                              reduced = reduced_costs (problem_, {y_, {}}, x_, true);
    entries_.clear ();
    add_curvature ();
    add_rows ();
    for (std::size_t j = 0; j < variables_; ++j) {
        const double multiplier = sign_ * reduced[j];
        const Interval bounds = problem_.variable.interval (j);
        const Slack slack = slack_of (x_[j], bounds, multiplier);
        const bool is_fixed = bounds.lower == bounds.upper;
        right[j] = is_fixed ? 0 : -multiplier;
        add (j, j, small + (is_fixed ? most : std::min (most, slack.multiplier / slack.distance)));
    }
    for (std::size_t i = 0; i < y_.size (); ++i) {
        const double multiplier = sign_ * y_[i];
        const Interval bounds = problem_.constraint.interval (i);
        const std::size_t row = variables_ + i;
        if (bounds.lower == bounds.upper) {
            right[row] = bounds.lower - activity[i];
            add (row, row, -small);
            continue;
        }
        const double target = multiplier > 0 ? bounds.lower : bounds.upper;
        if (multiplier == 0 || std::isinf (target)) {
            add (row, row, -most);
            continue;
        }
        right[row] = target - activity[i];
        const Slack slack = slack_of (activity[i], bounds, multiplier);
        add (row, row, -small - std::min (most, slack.distance / slack.multiplier));
    }
    gather ();
    if (!ldl_) {
        constexpr double megabytes_of_entry = 12e-6;
        ldl_.emplace (upper_);
        if (!lack_of_memory (megabytes_of_entry * static_cast<double> (ldl_->factor_entries ())).empty ())
            return false;
    }
    if (!ldl_->factor (upper_.values))
        return false;
    ldl_->solve (right);
    for (std::size_t j = 0; j < variables_; ++j) {
        const Interval bounds = problem_.variable.interval (j);
        x_[j] = std::clamp (x_[j] + right[j], bounds.lower, bounds.upper);
    }
    for (std::size_t i = 0; i < y_.size (); ++i)
        y_[i] -= sign_ * right[variables_ + i];
    return true;
}

std::optional<Point> Correction::run ()
{
    constexpr int steps = 4;
    try {
        for (int k = 0; k < steps; ++k)
            if (!step ())
                return std::nullopt;
    } catch (const std::length_error&) {    // too many entries
        return std::nullopt;
    }
    return Point{.outcome = Outcome::optimal, .x = std::move (x_), .y = std::move (y_)};
}

std::optional<Point> corrected (const Problem& problem, const Solution& solution)
{
    constexpr Features without_cones{Feature::integers, Feature::affine_expressions,
                                     Feature::quadratic_objective, Feature::quadratic_constraints};
    if (problem.features ().missing_in (without_cones) != nullptr)
        return std::nullopt;
    return Correction (problem, solution).run ();
}

}
