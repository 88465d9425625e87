// Tiny linear problems of odd shapes, made at random.
#pragma once

#include "tests/fuzz/random.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace fuzz {

constexpr double inf = std::numeric_limits<double>::infinity ();

struct Range {
    double lower = -inf, upper = inf;
};

using Values = std::vector<double>;

// Zeros of the rows are no entries.
struct Model {
    Values cost = {};
    std::vector<Values> rows = {};
    std::vector<Range> row_bounds = {}, bounds = {};
    bool maximize = false;
};

// Shortest text that reads back to the same bits.
inline std::string text_of (double value)
{
    char text[32];
    return {text, std::to_chars (text, std::end (text), value).ptr};
}

// As tests state problems: "min 3 2; 0.. =4; 1 1 in 1..".
inline std::string text_of (const Model& model)
{
    const auto range = [] (const Range& bounds) {
        return bounds.lower == bounds.upper
                   ? '=' + text_of (bounds.lower)
                   : (std::isinf (bounds.lower) ? "" : text_of (bounds.lower)) + ".." +
                         (std::isinf (bounds.upper) ? "" : text_of (bounds.upper));
    };
    std::string text = model.maximize ? "max" : "min";
    for (const double cost : model.cost)
        text += ' ' + text_of (cost);
    text += ';';
    for (const Range& bounds : model.bounds)
        text += ' ' + range (bounds);
    for (std::size_t i = 0; i < model.rows.size (); ++i) {
        text += ';';
        for (const double value : model.rows[i])
            text += ' ' + text_of (value);
        text += " in " + range (model.row_bounds[i]);
    }
    return text;
}

class OddProblem {
public:
    explicit OddProblem (Random& random) : random_ (random) {}

    Model make ()
    {
        m_ = below (6);
        n_ = 1 + below (7);
        for (std::size_t j = 0; j < n_; ++j)
            at_.push_back (whole (-3, 4));
        make_columns ();
        make_rows ();
        make_costs ();
        if (one_in (3))
            scale ();
        if (one_in (8))
            spoil_one_number ();
        made_.maximize = one_in (2);
        if (made_.maximize)
            for (double& cost : made_.cost)
                cost = -cost + 0.0;
        return std::move (made_);
    }

private:
    std::size_t below (std::size_t count) { return random_.below (count); }
    bool one_in (std::size_t count) { return random_.one_in (count); }
    double whole (int smallest, int largest)
    {
        return smallest + static_cast<double> (below (static_cast<std::size_t> (largest - smallest + 1)));
    }

    // Mostly one that holds `value`: often just so, sometimes not at all.
    Range range (double value)
    {
        if (one_in (15))
            value += whole (-9, 9);
        const double room = one_in (2) ? 0 : whole (0, 3);
        switch (below (7)) {
        case 0:
            return {};
        case 1:
            return {value, value};
        case 2:
            return {-inf, value + room};
        case 3:
        case 4:
            return {value - room, inf};
        default:
            return {value - room, value + whole (0, 4)};
        }
    }

    void make_columns ()
    {
        for (std::size_t j = 0; j < n_; ++j) {
            if (one_in (2))
                at_[j] = 0;
            made_.bounds.push_back (one_in (3) ? Range{std::min (at_[j], 0.0), inf} : range (at_[j]));
        }
    }

    void make_rows ()
    {
        made_.rows.assign (m_, Values (n_, 0));
        const std::size_t rarity = 1 + below (3);
        for (Values& row : made_.rows)
            for (double& value : row)
                value = one_in (rarity) ? whole (-3, 4) : 0;
        for (std::size_t times = below (3); times > 0 && m_ > 0; --times) {
            const double factor = one_in (2) ? 1 : whole (-2, 3);
            const std::size_t from = below (n_), to = below (n_), row = below (m_), other = below (m_);
            switch (below (4)) {
            case 0:    // a column that is a multiple of another one, or empty
                for (Values& values : made_.rows)
                    values[to] = factor * values[from] + 0.0;
                break;
            case 1:    // the same for rows
                for (std::size_t j = 0; j < n_; ++j)
                    made_.rows[row][j] = factor * made_.rows[other][j] + 0.0;
                break;
            case 2:
                made_.rows[row].assign (n_, 0);
                break;
            default:    // a row that is one variable's bound
                made_.rows[row].assign (n_, 0);
                made_.rows[row][to] = factor;
            }
        }
        for (const Values& row : made_.rows) {
            double activity = 0;
            for (std::size_t j = 0; j < n_; ++j)
                activity += row[j] * at_[j];
            made_.row_bounds.push_back (range (activity));
        }
    }

    // Those of a problem whose dual has a point, or any.
    void make_costs ()
    {
        made_.cost.assign (n_, 0);
        if (one_in (6))
            return;
        const bool any = one_in (3);
        const auto multiplier = [&] (const Range& bounds) {
            return any || one_in (2)
                       ? 0
                       : whole (std::isinf (bounds.upper) ? 0 : -2, std::isinf (bounds.lower) ? 0 : 2);
        };
        for (std::size_t j = 0; j < n_; ++j)
            made_.cost[j] = any ? whole (-3, 4) : multiplier (made_.bounds[j]);
        for (std::size_t i = 0; i < m_; ++i)
            if (const double y = multiplier (made_.row_bounds[i]); y != 0)
                for (std::size_t j = 0; j < n_; ++j)
                    made_.cost[j] += y * made_.rows[i][j];
    }

    static void multiply (Range& bounds, double factor)
    {
        bounds.lower *= factor;
        bounds.upper *= factor;
    }
    // By powers of 2, so that rows and columns that depend on each other do so to the last bit.
    void scale ()
    {
        const int widest = 1 + static_cast<int> (below (20));
        const auto power = [&] { return std::exp2 (whole (-widest, widest)); };
        for (std::size_t i = 0; i < m_; ++i) {
            if (one_in (2))
                continue;
            const double factor = power ();
            for (double& value : made_.rows[i])
                value *= factor;
            multiply (made_.row_bounds[i], factor);
        }
        for (std::size_t j = 0; j < n_; ++j) {
            if (one_in (2))
                continue;
            const double factor = power ();
            for (Values& row : made_.rows)
                row[j] *= factor;
            made_.cost[j] *= factor;
            multiply (made_.bounds[j], 1 / factor);
        }
    }

    // Made tiny or huge, or off by little.
    void spoil_one_number ()
    {
        static const std::vector<double> factors{1e-12, 1e-10, 1e-9,     1e-8,    1e-6,
                                                 1e6,   1e9,   1 + 1e-5, 1 + 1e-7};
        const double factor = factors[below (factors.size ())];
        const std::size_t j = below (n_);
        Range& column = made_.bounds[j];
        if (m_ == 0 || one_in (4))
            made_.cost[j] *= factor;
        else if (one_in (2))
            made_.rows[below (m_)][j] *= factor;
        else
            switch (below (5)) {
            case 0:
                made_.row_bounds[below (m_)].lower += whole (-1, 1) * 1e-7;
                break;
            case 1:
                column.lower += whole (-1, 1) * 1e-9;
                break;
            case 2:
                column.upper *= factor;
                break;
            case 3:
                column.upper = 9.9e19;
                break;
            default:
                column.lower = -1e20;
            }
    }

    Random& random_;
    std::size_t m_ = 0, n_ = 0;
    Values at_;    // a point that most bounds are made for
    Model made_;
};

}
