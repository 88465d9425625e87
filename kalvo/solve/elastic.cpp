#include "kalvo/solve/elastic.h"

#include "kalvo/sparse/index.h"

#include <utility>

namespace klv {

class ElasticBuilder {
public:
    ElasticBuilder (const Problem& stated, double tolerance) : stated_ (stated), tolerance_ (tolerance) {}

    void add_constraints (const Movable& constraints);
    void add_variables (const Movable& variables);
    Problem finish ();

private:
    // A column that is not negative, with one or two entries.
    struct Column {
        double cost;
        std::int32_t row;
        double value;
        std::int32_t second_row = -1;
        double second_value = 0;
    };

    std::int32_t add_row (Interval bounds)
    {
        rows_.push_back (bounds);
        return static_cast<std::int32_t> (rows_.size ()) - 1;
    }
    void soften (std::int32_t row, Interval bounds, double lower_weight, double upper_weight);
    void soften_crossed (std::int32_t row, Interval bounds, double lower_weight, double upper_weight);
    bool is_crossed (Interval bounds) const { return bounds.lower - bounds.upper > tolerance_; }
    Interval stated_interval (const Bounds& bounds, std::size_t item) const
    {
        const Interval as_stated{bounds.lower[item], bounds.upper[item]};
        return is_crossed (as_stated) ? as_stated : bounds.interval (item);
    }
    void put_bounds (Bounds& bounds, const std::vector<Interval>& intervals) const;
    void fill_matrix (Problem& problem) const;

    const Problem& stated_;
    double tolerance_;
    std::vector<Interval> rows_, variables_;
    std::vector<std::int32_t> row_of_variable_;    // -1: none
    std::vector<Column> columns_;
};

// a + p - q within the bounds, of which those without a price go.
void ElasticBuilder::soften (std::int32_t row, Interval bounds, double lower_weight, double upper_weight)
{
    if (lower_weight == 0)
        bounds.lower = -infinity;
    if (upper_weight == 0)
        bounds.upper = infinity;
    if (is_crossed (bounds) && (lower_weight > 0 || upper_weight > 0)) {
        soften_crossed (row, bounds, lower_weight, upper_weight);
        return;
    }
    rows_[index (row)] = bounds;
    if (bounds.lower > -infinity && lower_weight > 0)
        columns_.push_back ({lower_weight, row, 1});
    if (bounds.upper < infinity && upper_weight > 0)
        columns_.push_back ({upper_weight, row, -1});
}

// a + p - r = lower and p + q - r >= lower - upper: what the first bound leaves is the slack of the second one.
void ElasticBuilder::soften_crossed (std::int32_t row, Interval bounds, double lower_weight,
                                     double upper_weight)
{
    rows_[index (row)] = {bounds.lower, bounds.lower};
    const std::int32_t distance = add_row ({bounds.lower - bounds.upper, infinity});
    columns_.push_back ({0, row, -1, distance, -1});
    if (lower_weight > 0)
        columns_.push_back ({lower_weight, row, 1, distance, 1});
    if (upper_weight > 0)
        columns_.push_back ({upper_weight, distance, 1});
}

void ElasticBuilder::add_constraints (const Movable& constraints)
{
    const auto count = static_cast<std::size_t> (stated_.constraints ());
    rows_.assign (count, {-infinity, infinity});
    for (std::size_t i = 0; i < count; ++i)
        soften (static_cast<std::int32_t> (i), stated_interval (constraints.bounds, i),
                constraints.weights.of_lower (i), constraints.weights.of_upper (i));
}

// A variable keeps the bounds that may not move. The others become a row.
void ElasticBuilder::add_variables (const Movable& variables)
{
    const auto count = static_cast<std::size_t> (stated_.variables ());
    row_of_variable_.assign (count, -1);
    variables_.assign (count, {-infinity, infinity});
    for (std::size_t j = 0; j < count; ++j) {
        Interval soft = stated_interval (variables.bounds, j);
        const double lower_weight = variables.weights.of_lower (j),
                     upper_weight = variables.weights.of_upper (j);
        if (lower_weight < 0)
            variables_[j].lower = std::exchange (soft.lower, -infinity);
        if (upper_weight < 0)
            variables_[j].upper = std::exchange (soft.upper, infinity);
        const bool has_price =
            (soft.lower > -infinity && lower_weight > 0) || (soft.upper < infinity && upper_weight > 0);
        if (has_price) {
            row_of_variable_[j] = add_row ({-infinity, infinity});
            soften (row_of_variable_[j], soft, lower_weight, upper_weight);
        }
    }
}

void ElasticBuilder::put_bounds (Bounds& bounds, const std::vector<Interval>& intervals) const
{
    for (std::size_t i = 0; i < intervals.size (); ++i) {
        bounds.lower[i] = intervals[i].lower;
        bounds.upper[i] = intervals[i].upper;
        bounds.key[i] = key_of (intervals[i].lower, intervals[i].upper);
    }
}

void ElasticBuilder::fill_matrix (Problem& problem) const
{
    problem.matrix.reserve (stated_.matrix.entries () + stated_.variables () +
                            2 * static_cast<std::int64_t> (columns_.size ()));
    std::vector<std::int32_t> rows;
    std::vector<double> values;
    for (std::int32_t j = 0; j < stated_.variables (); ++j) {
        const klv::Column column = stated_.matrix.column (j);
        if (row_of_variable_[index (j)] < 0) {
            problem.matrix.put (j, column.rows, column.values);
            continue;
        }
        rows.assign (column.rows.begin (), column.rows.end ());
        values.assign (column.values.begin (), column.values.end ());
        rows.push_back (row_of_variable_[index (j)]);
        values.push_back (1);
        problem.matrix.put (j, rows, values);
    }
    for (std::int32_t j = stated_.variables (); const Column& column : columns_) {
        const std::int32_t places[] = {column.row, column.second_row};
        const double numbers[] = {column.value, column.second_value};
        const std::size_t count = column.second_row < 0 ? 1 : 2;
        problem.cost[index (j)] = column.cost;
        problem.variable.lower[index (j)] = 0;
        problem.variable.key[index (j)] = KLV_BK_LO;
        problem.matrix.put (j++, std::span (places).first (count), std::span (numbers).first (count));
    }
}

Problem ElasticBuilder::finish ()
{
    Problem problem;
    problem.append_variables (stated_.variables () + static_cast<std::int32_t> (columns_.size ()));
    problem.append_constraints (static_cast<std::int32_t> (rows_.size ()));
    put_bounds (problem.constraint, rows_);
    put_bounds (problem.variable, variables_);
    fill_matrix (problem);
    std::ranges::copy (stated_.integer, problem.integer.begin ());
    problem.integers = stated_.integers;
    problem.quadratic_constraint = stated_.quadratic_constraint;
    problem.affine = stated_.affine;
    problem.affine.cover (problem.variables ());
    problem.domain = stated_.domain;
    problem.affine_constraint = stated_.affine_constraint;
    problem.cone = stated_.cone;
    problem.semidefinite = stated_.semidefinite;
    problem.semidefinite.objective = {};
    problem.name = stated_.name;
    problem.variable_name = stated_.variable_name;
    problem.constraint_name = stated_.constraint_name;
    return problem;
}

Problem make_elastic (const Problem& stated, const Movable& constraints, const Movable& variables,
                      double tolerance)
{
    ElasticBuilder builder (stated, tolerance);
    builder.add_constraints (constraints);
    builder.add_variables (variables);
    return builder.finish ();
}

}
