// Tiny linear problems of odd shapes, made at random.
#pragma once

#include "tests/fuzz/random.h"
#include "tests/support/problem_text.h"

#include <numeric>

namespace fuzz {

using model::inf;
using proof::Values;

struct Range {
    double lower = -inf, upper = inf;
    bool integer = false;
};

// Zeros of the rows are no entries.
struct Model {
    Values cost = {};
    std::vector<Values> rows = {};
    std::vector<Range> row_bounds = {}, bounds = {};
    double constant = 0;
    bool maximize = false;
};

inline std::string text_of (const Range& of)
{
    const auto bound = [] (double value) { return std::isinf (value) ? "" : model::text_of (value); };
    const std::string range =
        of.lower == of.upper ? '=' + bound (of.lower) : bound (of.lower) + ".." + bound (of.upper);
    return range + (of.integer ? "i" : "");
}

// As tests state problems: "min 3 2; 0.. =4; 1 1 in 1..".
inline std::string text_of (const Model& made)
{
    const auto number = [] (double value) { return model::text_of (value); };
    std::string text = (made.maximize ? "max " : "min ") + join (made.cost, " ", number) + " +" +
                       number (made.constant) + "; " +
                       join (made.bounds, " ", [] (const Range& of) { return text_of (of); });
    for (std::size_t i = 0; i < made.rows.size (); ++i)
        text += "; " + join (made.rows[i], " ", number) + " in " + text_of (made.row_bounds[i]);
    return text;
}

// Mostly one that holds `value`: often just so, sometimes not at all.
inline Range odd_range (Random& random, double value)
{
    if (random.one_in (15))
        value += random.whole (-9, 9);
    const double room = random.one_in (2) ? 0 : random.whole (0, 3);
    const Range below{-inf, value + room}, above{value - room, inf},
        box{value - room, value + random.whole (0, 4)};
    const Range kinds[] = {{}, {value, value}, below, above, above, box, box};
    return kinds[random.below (std::size (kinds))];
}

inline void make_rows (Random& random, std::vector<Values>& rows, std::size_t columns)
{
    const std::size_t rarity = 1 + random.below (3);
    for (Values& row : rows)
        for (std::size_t j = 0; j < columns; ++j)
            row.push_back (random.one_in (rarity) ? random.whole (-3, 4) : 0);
    for (std::size_t times = rows.empty () ? 0 : random.below (3); times > 0; --times) {
        const double factor = random.one_in (2) ? 1 : random.whole (-2, 3);
        const std::size_t from = random.below (columns), to = random.below (columns);
        Values &row = rows[random.below (rows.size ())], &other = rows[random.below (rows.size ())];
        const auto multiple = [&] (double of) { return factor * of + 0.0; };
        switch (random.below (4)) {
        case 0:    // a column that is a multiple of another one, or empty
            for (Values& values : rows)
                values[to] = multiple (values[from]);
            break;
        case 1:    // the same for rows
            std::ranges::transform (other, row.begin (), multiple);
            break;
        case 2:
            row.assign (columns, 0);
            break;
        default:    // a row that is one variable's bound
            row.assign (columns, 0);
            row[to] = factor;
        }
    }
}

// None, any, or those of a problem whose dual has a point.
inline void make_costs (Random& random, Model& made)
{
    const std::size_t kind = random.below (6);
    const auto multiplier = [&] (const Range& of) {
        return random.one_in (2)
                   ? 0
                   : random.whole (std::isinf (of.upper) ? 0 : -2, std::isinf (of.lower) ? 0 : 2);
    };
    for (const Range& bounds : made.bounds)
        made.cost.push_back (kind == 0 ? 0 : kind < 3 ? random.whole (-3, 4) : multiplier (bounds));
    for (std::size_t i = 0; kind >= 3 && i < made.rows.size (); ++i)
        if (const double y = multiplier (made.row_bounds[i]); y != 0)
            for (std::size_t j = 0; j < made.cost.size (); ++j)
                made.cost[j] += y * made.rows[i][j];
}

// By powers of 2, so that rows and columns that depend on each other do so to the last bit.
inline void scale (Random& random, Model& made)
{
    const int widest = static_cast<int> (random.whole (1, 20));
    const auto power = [&] { return random.one_in (2) ? 1 : std::exp2 (random.whole (-widest, widest)); };
    for (std::size_t i = 0; i < made.rows.size (); ++i) {
        const double factor = power ();
        for (double& value : made.rows[i])
            value *= factor;
        made.row_bounds[i] = {factor * made.row_bounds[i].lower, factor * made.row_bounds[i].upper, false};
    }
    for (std::size_t j = 0; j < made.cost.size (); ++j) {
        const double factor = power ();
        for (Values& row : made.rows)
            row[j] *= factor;
        made.cost[j] *= factor;
        made.bounds[j] = {made.bounds[j].lower / factor, made.bounds[j].upper / factor, false};
    }
}

// One number made tiny or huge, or off by little.
inline void spoil (Random& random, Model& made)
{
    static const Values factors{1e-12, 1e-10, 1e-9, 1e-8, 1e-6, 1e6, 1e9, 1 + 1e-5, 1 + 1e-7};
    const double factor = factors[random.below (factors.size ())];
    const std::size_t j = random.below (made.cost.size ()), m = made.rows.size ();
    const std::size_t kind = m == 0 ? 0 : random.below (10);
    Range& column = made.bounds[j];
    if (kind < 3)
        made.cost[j] *= factor;
    else if (kind < 6)
        made.rows[random.below (m)][j] *= factor;
    else if (kind == 6) {
        made.row_bounds[random.below (m)].lower += random.whole (-1, 1) * 1e-7;
        column.lower += random.whole (-1, 1) * 1e-9;
    } else if (kind == 7)
        column.upper *= factor;
    else
        (kind == 8 ? column.lower : column.upper) = kind == 8 ? -1e20 : 9.9e19;
}

inline Model odd_problem (Random& random)
{
    Model made;
    made.rows.resize (random.below (6));
    Values at;    // a point that most bounds are made for
    for (std::size_t n = random.below (7) + 1; n > 0; --n) {
        at.push_back (random.one_in (2) ? 0 : random.whole (-3, 4));
        made.bounds.push_back (random.one_in (3) ? Range{std::min (at.back (), 0.0), inf}
                                                 : odd_range (random, at.back ()));
    }
    make_rows (random, made.rows, at.size ());
    for (const Values& row : made.rows)
        made.row_bounds.push_back (
            odd_range (random, std::inner_product (row.begin (), row.end (), at.begin (), 0.0)));
    make_costs (random, made);
    if (random.one_in (3))
        scale (random, made);
    if (random.one_in (8))
        spoil (random, made);
    made.maximize = random.one_in (2);
    if (made.maximize)
        for (double& cost : made.cost)
            cost = 0.0 - cost;
    return made;
}

}
