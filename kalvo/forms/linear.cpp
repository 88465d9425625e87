#include "kalvo/forms/linear.h"

#include "kalvo/model/describe.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace klv {

// ---- What an engine does not take ----------------------------------------------------------------------------------

static Refused refused_cost (const Problem& problem, const Limits& limits)
{
    for (std::int32_t j = 0; j < problem.variables (); ++j)
        if (const double cost = problem.cost[static_cast<std::size_t> (j)];
            std::abs (cost) >= limits.infinite_cost)
            return {.item = Refused::Item::cost, .variable = j, .value = cost, .limit = limits.infinite_cost};
    return {};
}

static Refused refused_entry (const Problem& problem, const Limits& limits)
{
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Column column = problem.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            if (std::abs (column.values[k]) >= limits.largest_entry)
                return {Refused::Item::entry, j, column.rows[k], column.values[k], limits.largest_entry};
    }
    return {};
}

// The first item that must lie beyond the infinite bound, or -1.
static std::int32_t find_beyond (const Bounds& bounds, const Limits& limits)
{
    for (std::size_t i = 0; i < bounds.key.size (); ++i)
        if (bounds.lower[i] >= limits.infinite_bound || bounds.upper[i] <= -limits.infinite_bound)
            return static_cast<std::int32_t> (i);
    return -1;
}

static Refused refused_bound (const Problem& problem, const Limits& limits)
{
    if (const std::int32_t i = find_beyond (problem.constraint, limits); i >= 0)
        return {.item = Refused::Item::constraint_bound, .constraint = i, .limit = limits.infinite_bound};
    if (const std::int32_t j = find_beyond (problem.variable, limits); j >= 0)
        return {.item = Refused::Item::variable_bound, .variable = j, .limit = limits.infinite_bound};
    return {};
}

std::string describe (const Problem& problem, const Refused& refused)
{
    const auto beyond = [&] (const std::string& item) {
        return text (item, " must lie beyond ", refused.limit,
                     ", where no optimiser can tell a number from infinity");
    };
    const auto bending = [&] (const Refused& item) {
        return text (": their curvature is ", item.value, " along a direction in which ",
                     describe_variable (problem, item.variable), " moves most");
    };
    switch (refused.item) {
    case Refused::Item::cost:
        return text ("the cost of ", describe_variable (problem, refused.variable), " is ", refused.value,
                     "; it must be below ", refused.limit, " in magnitude");
    case Refused::Item::entry:
        return text ("the matrix entry of ", describe_constraint (problem, refused.constraint), " and ",
                     describe_variable (problem, refused.variable), " is ", refused.value,
                     "; it must be below ", refused.limit, " in magnitude");
    case Refused::Item::variable_bound:
        return beyond (describe_variable (problem, refused.variable));
    case Refused::Item::constraint_bound:
        return beyond (describe_constraint (problem, refused.constraint));
    case Refused::Item::objective_curvature:
        return text ("the quadratic terms of the objective are not ",
                     problem.sense == KLV_SENSE_MAXIMIZE ? "concave" : "convex", bending (refused));
    case Refused::Item::constraint_curvature:
        return text ("the quadratic terms of ", describe_constraint (problem, refused.constraint),
                     " do not make it convex", bending (refused));
    case Refused::Item::none:
        break;
    }
    return {};
}

// Magnitudes of matrix entries, and how many of them the engine drops.
struct Entries {
    double smallest = infinity, largest = 0;
    std::int64_t dropped = 0;
};

static Entries look_at (std::span<const double> values, const Limits& limits)
{
    Entries entries;
    for (const double value : values) {
        const double magnitude = std::abs (value);
        entries.largest = std::max (entries.largest, magnitude);
        entries.dropped += magnitude <= limits.smallest_entry && magnitude > 0;
        if (magnitude > 0)
            entries.smallest = std::min (entries.smallest, magnitude);
    }
    return entries;
}

// ---- Bounds and rows -----------------------------------------------------------------------------------------------

static void lower_bounds (const Bounds& stated, const Limits& limits, Values& lower, Values& upper,
                          std::int64_t& taken_as_infinite)
{
    lower = Values (stated.lower);
    upper = Values (stated.upper);
    for (std::size_t i = 0; i < stated.key.size (); ++i) {
        Interval here = stated.interval (i);
        if (here.lower > -infinity && here.lower <= -limits.infinite_bound) {
            here.lower = -infinity;
            ++taken_as_infinite;
        }
        if (here.upper < infinity && here.upper >= limits.infinite_bound) {
            here.upper = infinity;
            ++taken_as_infinite;
        }
        if (here.lower != stated.lower[i])
            lower.change ()[i] = here.lower;
        if (here.upper != stated.upper[i])
            upper.change ()[i] = here.upper;
    }
}

// Makes bounds of integer columns whole: optimisers have been seen to take the values between them for possible ones. A bound that is
// whole but for rounding errors stays at its value; so do bounds with no whole number between them.
static void round_bounds_of_integers (std::span<const std::uint8_t> integer, Values& lower, Values& upper)
{
    constexpr double rounding = 1e-9;
    for (std::size_t j = 0; j < integer.size (); ++j) {
        if (integer[j] != KLV_VAR_INTEGER)
            continue;
        const double from = lower.get ()[j], to = upper.get ()[j];
        const double first = std::ceil (from - rounding * (1 + std::abs (from)));
        const double last = std::floor (to + rounding * (1 + std::abs (to)));
        if (!(first <= last))
            continue;
        if (std::isfinite (from) && first > from)
            lower.change ()[j] = first;
        if (std::isfinite (to) && last < to)
            upper.change ()[j] = last;
    }
}

// The number in the form of each stated row, -1 for a row without bounds. Empty: all rows have bounds, and keep their numbers.
static std::vector<std::int32_t> numbers_of_bound_rows (const LinearForm& form)
{
    const std::span<const double> lower = form.row_lower.get (), upper = form.row_upper.get ();
    const auto is_free = [&] (std::size_t i) { return lower[i] == -infinity && upper[i] == infinity; };
    std::size_t first = 0;
    while (first < lower.size () && !is_free (first))
        ++first;
    if (first == lower.size ())
        return {};
    std::vector<std::int32_t> number (lower.size ());
    std::int32_t next = 0;
    for (std::size_t i = 0; i < number.size (); ++i)
        number[i] = is_free (i) ? -1 : next++;
    return number;
}

static void leave_out_free_rows (const std::vector<std::int32_t>& number, LinearForm& form)
{
    const auto keep = [&] (Values& values) {
        std::vector<double>& all = values.change ();
        std::size_t kept = 0;
        for (std::size_t i = 0; i < number.size (); ++i)
            if (number[i] >= 0)
                all[kept++] = all[i];
        all.resize (kept);
        if (kept == 0)
            values = {};
    };
    keep (form.row_lower);
    keep (form.row_upper);

    form.own_starts.reserve (form.starts.size ());
    form.own_starts.push_back (0);
    for (std::size_t j = 0; j + 1 < form.starts.size (); ++j) {
        for (auto k = static_cast<std::size_t> (form.starts[j]);
             k < static_cast<std::size_t> (form.starts[j + 1]); ++k)
            if (const std::int32_t row = number[static_cast<std::size_t> (form.rows[k])]; row >= 0) {
                form.own_rows.push_back (row);
                form.own_entries.push_back (form.entries[k]);
            }
        form.own_starts.push_back (static_cast<std::int32_t> (form.own_rows.size ()));
    }
    form.starts = form.own_starts;
    form.rows = form.own_rows;
    form.entries = form.own_entries;
}

// ---- Recovery --------------------------------------------------------------------------------------------------------

class LinearRecovery final : public Recovery {
public:
    LinearRecovery (double sign, std::vector<std::int32_t> number)
        : sign_ (sign),
          number_ (std::move (number)),
          kept_ (std::ranges::count_if (number_, [] (std::int32_t row) { return row >= 0; }))
    {}

    Point back (Point&& claimed) const override
    {
        Point stated = std::move (claimed);
        for (std::vector<double>* values : {&stated.y, &stated.reduced_cost, &stated.dual_ray})
            turn (*values);
        if (stated.bound)
            *stated.bound *= sign_;
        spread (stated.y, 0.0, !stated.reduced_cost.empty ());
        spread (stated.dual_ray, 0.0, false);
        spread (stated.row_key, std::int32_t{KLV_SK_BASIC}, !stated.column_key.empty ());
        return stated;
    }

    std::shared_ptr<const Start> forth (std::shared_ptr<const Start> stated) const override
    {
        if (!stated || (sign_ > 0 && number_.empty ()))
            return stated;
        auto start = std::make_shared<Start> (*stated);
        turn (start->y);
        turn (start->reduced_cost);
        gather (start->y);
        gather (start->activity);
        gather (start->row_key);
        return start;
    }

private:
    void turn (std::vector<double>& values) const
    {
        if (sign_ < 0)
            for (double& value : values)
                value = 0.0 - value;
    }

    // From rows of the form to stated rows. An array of another length stays as it is, for the check to reject. With no rows in
    // the form an array that was claimed is empty too: only `claimed` tells.
    template <class Value>
    void spread (std::vector<Value>& values, Value of_free_rows, bool claimed) const
    {
        if (number_.empty () || std::ssize (values) != kept_ || (values.empty () && !claimed))
            return;
        std::vector<Value> all (number_.size (), of_free_rows);
        for (std::size_t i = 0; i < all.size (); ++i)
            if (number_[i] >= 0)
                all[i] = values[static_cast<std::size_t> (number_[i])];
        values = std::move (all);
    }

    template <class Value>
    void gather (std::vector<Value>& values) const
    {
        if (values.size () != number_.size ())
            return;
        std::size_t kept = 0;
        for (std::size_t i = 0; i < number_.size (); ++i)
            if (number_[i] >= 0)
                values[kept++] = values[i];
        values.resize (kept);
    }

    double sign_;
    std::vector<std::int32_t> number_;    // numbers_of_bound_rows
    std::ptrdiff_t kept_;
};

// ---- The form -------------------------------------------------------------------------------------------------------

Lowered lower_linear (std::shared_ptr<const Problem> stated, const Limits& limits, bool integers)
{
    Lowered lowered;
    const Entries entries = look_at (stated->matrix.values (), limits);
    lowered.dropped_entries = entries.dropped;
    lowered.refused = refused_cost (*stated, limits);
    if (lowered.refused.item == Refused::Item::none && entries.largest >= limits.largest_entry)
        lowered.refused = refused_entry (*stated, limits);
    if (lowered.refused.item == Refused::Item::none)
        lowered.refused = refused_bound (*stated, limits);
    if (lowered.refused.item != Refused::Item::none)
        return lowered;

    const auto whole = std::make_shared<Form> (LinearForm ());
    auto& form = std::get<LinearForm> (*whole);
    form.sign = stated->sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    form.constant = form.sign * stated->constant;
    form.cost = Values (stated->cost);
    if (form.sign < 0)
        for (double& cost : form.cost.change ())
            cost = -cost;
    lower_bounds (stated->variable, limits, form.column_lower, form.column_upper, lowered.infinite_bounds);
    lower_bounds (stated->constraint, limits, form.row_lower, form.row_upper, lowered.infinite_bounds);
    form.starts = stated->matrix.starts ();
    form.rows = stated->matrix.rows ();
    form.entries = stated->matrix.values ();
    form.smallest_entry = entries.smallest;
    if (integers) {
        form.integer = stated->integer;
        form.integers = stated->integers;
        round_bounds_of_integers (form.integer, form.column_lower, form.column_upper);
    }
    std::vector<std::int32_t> number = numbers_of_bound_rows (form);
    if (!number.empty ())
        leave_out_free_rows (number, form);
    lowered.recovery = std::make_shared<LinearRecovery> (form.sign, std::move (number));
    form.stated = std::move (stated);
    lowered.form = whole;
    return lowered;
}

}
