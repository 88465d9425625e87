#include "kalvo/solve/correct.h"

#include "kalvo/sparse/index.h"
#include "kalvo/sparse/ldl.h"
#include "kalvo/task/memory.h"
#include "kalvo/verify/products.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace klv {

static void move_into_bounds (const Problem& problem, std::vector<double>& x)
{
    for (std::size_t j = 0; j < x.size (); ++j) {
        const Interval bounds = problem.variable.interval (j);
        x[j] = std::clamp (x[j], bounds.lower, bounds.upper);
    }
}

// The unit of each variable's moves: how far it is from its bounds, or its magnitude where it has none.
static std::vector<double> rooms (const Problem& problem, const std::vector<double>& x)
{
    constexpr double least = 1e-10;
    std::vector<double> rooms (x.size ());
    double largest = 0;
    for (const double value : x)
        largest = std::max (largest, std::abs (value));
    for (std::size_t j = 0; j < x.size (); ++j) {
        const Interval bounds = problem.variable.interval (j);
        if (bounds.lower < bounds.upper)
            rooms[j] = std::max (least * largest,
                                 std::min ({x[j] - bounds.lower, bounds.upper - x[j], 1 + std::abs (x[j])}));
    }
    return rooms;
}

// The number of each row to be satisfied, and -1 for the others.
static std::vector<std::int32_t> number_rows (const Problem& problem, std::span<const double> x,
                                              std::span<const double> activity)
{
    constexpr double near = 1e-7;
    std::vector<std::int32_t> number (activity.size (), -1);
    std::vector<double> magnitude (activity.size (), 1.0);
    for (std::size_t j = 0; j < x.size (); ++j) {
        const Column column = problem.matrix.column (static_cast<std::int32_t> (j));
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            magnitude[index (column.rows[k])] += std::abs (column.values[k] * x[j]);
    }
    std::vector<bool> is_quadratic (activity.size ());
    for (const std::int32_t item : problem.quadratic_constraint.item)
        is_quadratic[index (item)] = true;
    std::int32_t count = 0;
    for (std::size_t i = 0; i < number.size (); ++i) {
        const Interval bounds = problem.constraint.interval (i);
        const double distance = std::min (activity[i] - bounds.lower, bounds.upper - activity[i]);
        if (!is_quadratic[i] && distance <= near * magnitude[i])
            number[i] = count++;
    }
    return number;
}

// The upper triangle of [I, W A'; A W, -small I], each row of A W divided by its norm, which `norm` becomes.
static SparseColumns newton_matrix (const Problem& problem, std::span<const double> room,
                                    std::span<const std::int32_t> number, std::vector<double>& norm)
{
    constexpr double small = 1e-8;
    SparseColumns upper;
    std::vector<std::int32_t> entries (norm.size () + 1, 0);
    const auto each_entry = [&] (const auto& function) {
        for (std::size_t j = 0; j < room.size (); ++j) {
            const Column column = problem.matrix.column (static_cast<std::int32_t> (j));
            for (std::size_t k = 0; k < column.rows.size () && room[j] > 0; ++k)
                if (const std::int32_t row = number[index (column.rows[k])]; row >= 0)
                    function (index (row), static_cast<std::int32_t> (j), column.values[k] * room[j]);
        }
    };
    each_entry ([&] (std::size_t row, std::int32_t, double value) {
        ++entries[row];
        norm[row] = std::hypot (norm[row], value);
    });
    for (std::size_t j = 0; j < room.size (); ++j) {
        upper.rows.push_back (static_cast<std::int32_t> (j));
        upper.values.push_back (1);
        upper.starts.push_back (static_cast<std::int32_t> (upper.rows.size ()));
    }
    std::vector<std::size_t> next (norm.size ());
    for (std::size_t row = 0; row < norm.size (); ++row) {
        next[row] = index (upper.starts.back ());
        upper.starts.push_back (upper.starts.back () + entries[row] + 1);
    }
    upper.rows.resize (index (upper.starts.back ()));
    upper.values.resize (upper.rows.size ());
    each_entry ([&] (std::size_t row, std::int32_t variable, double value) {
        upper.rows[next[row]] = variable;
        upper.values[next[row]++] = value / norm[row];
    });
    for (std::size_t row = 0; row < norm.size (); ++row) {
        upper.rows[next[row]] = static_cast<std::int32_t> (room.size () + row);
        upper.values[next[row]] = -small;
    }
    return upper;
}

std::vector<double> corrected (const Problem& problem, const Solution& solution)
{
    constexpr int rounds = 12;
    constexpr double megabytes_of_entry = 12e-6;
    std::vector<double> x = solution.xx;
    move_into_bounds (problem, x);
    const auto activity = [&] { return activities (problem, {x, solution.barx}, true); };
    const std::vector<double> room = rooms (problem, x);
    const std::vector<std::int32_t> number = number_rows (problem, x, activity ());
    const auto rows = std::ranges::count_if (number, [] (std::int32_t row) { return row >= 0; });
    if (rows == 0)
        return {};
    std::vector<double> norm (static_cast<std::size_t> (rows), 0.0);
    const SparseColumns upper = newton_matrix (problem, room, number, norm);
    try {
        Ldl ldl (upper);
        if (!lack_of_memory (megabytes_of_entry * static_cast<double> (ldl.factor_entries ())).empty () ||
            !ldl.factor (upper.values))
            return {};
        std::vector<double> step (x.size () + norm.size ());
        for (int round = 0; round < rounds; ++round) {
            std::ranges::fill (step, 0.0);
            const std::vector<double> now = activity ();
            for (std::size_t i = 0; i < number.size (); ++i)
                if (const std::int32_t row = number[i]; row >= 0 && norm[index (row)] > 0) {
                    const Interval bounds = problem.constraint.interval (i);
                    const double missing = std::clamp (now[i], bounds.lower, bounds.upper) - now[i];
                    step[x.size () + index (row)] = missing / norm[index (row)];
                }
            ldl.solve (step);
            for (std::size_t j = 0; j < x.size (); ++j)
                x[j] += room[j] * step[j];
            move_into_bounds (problem, x);
        }
    } catch (const std::length_error&) {
        return {};
    }
    return x;
}

}
