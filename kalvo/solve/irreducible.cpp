#include "kalvo/solve/irreducible.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

namespace klv {

// Members as inequalities a x <= b, each divided by the norm of its a; y are their multipliers, with y'A = 0 and y'b < 0, of norm
// 1. When all members are needed y is the only such vector, so that AA' + yy' is positive definite, and for each i there are
// solutions of Ax = b + t e, e being the unit vector of i and t = -y'b / y_i: they violate nothing but inequality i.
class Inequalities {
public:
    Inequalities (const Problem& problem, std::span<const ConflictMember> members,
                  std::span<const double> multipliers);

    bool factor ();
    bool has_point_without (std::size_t i) const;
    std::size_t count () const { return b_.size (); }

private:
    struct Entry {
        std::size_t column;
        double value;
    };

    double& g (std::size_t i, std::size_t j) { return g_[i * count () + j]; }
    double g (std::size_t i, std::size_t j) const { return g_[i * count () + j]; }
    void solve (std::vector<double>& right) const;

    std::vector<std::vector<Entry>> rows_;
    std::vector<double> b_, y_, g_;    // g: AA' + yy', then its Cholesky factor
    std::size_t columns_ = 0;
};

Inequalities::Inequalities (const Problem& problem, std::span<const ConflictMember> members,
                            std::span<const double> multipliers)
    : rows_ (members.size ()), columns_ (static_cast<std::size_t> (problem.variables ()))
{
    std::vector<std::vector<std::size_t>> of_constraint (static_cast<std::size_t> (problem.constraints ()));
    for (std::size_t k = 0; k < members.size (); ++k) {
        if (members[k].is_variable ())
            rows_[k].push_back ({index (members[k].item), 1});
        else
            of_constraint[index (members[k].item)].push_back (k);
    }
    for (std::int32_t j = 0; j < problem.variables (); ++j) {
        const Column column = problem.matrix.column (j);
        for (std::size_t e = 0; e < column.rows.size (); ++e)
            for (const std::size_t k : of_constraint[index (column.rows[e])])
                rows_[k].push_back ({index (j), column.values[e]});
    }
    double length = 0;
    for (std::size_t k = 0; k < members.size (); ++k) {
        const Bounds& bounds = members[k].is_variable () ? problem.variable : problem.constraint;
        const bool upper = members[k].is_upper ();
        const double sign = upper ? 1 : -1;
        double norm = 0;
        for (const Entry& entry : rows_[k])
            norm = std::hypot (norm, entry.value);
        for (Entry& entry : rows_[k])
            entry.value *= sign / norm;
        b_.push_back (sign * (upper ? bounds.upper : bounds.lower)[index (members[k].item)] / norm);
        y_.push_back (multipliers[k] * norm);
        length = std::hypot (length, y_.back ());
    }
    for (double& y : y_)
        y /= length;
}

// False: not positive definite.
bool Inequalities::factor ()
{
    const std::size_t k = count ();
    g_.assign (k * k, 0);
    std::vector<double> dense (columns_);
    for (std::size_t i = 0; i < k; ++i) {
        for (const Entry& entry : rows_[i])
            dense[entry.column] = entry.value;
        for (std::size_t j = 0; j <= i; ++j) {
            double sum = y_[i] * y_[j];
            for (const Entry& entry : rows_[j])
                sum += dense[entry.column] * entry.value;
            g (i, j) = sum;
        }
        for (const Entry& entry : rows_[i])
            dense[entry.column] = 0;
    }
    for (std::size_t i = 0; i < k; ++i)
        for (std::size_t j = 0; j <= i; ++j) {
            const auto row_i = g_.begin () + static_cast<std::ptrdiff_t> (i * k),
                       row_j = g_.begin () + static_cast<std::ptrdiff_t> (j * k);
            const double rest =
                g (i, j) - std::inner_product (row_i, row_i + static_cast<std::ptrdiff_t> (j), row_j, 0.0);
            if (i == j && !(rest > 1e-14))
                return false;
            g (i, j) = i == j ? std::sqrt (rest) : rest / g (j, j);
        }
    return true;
}

void Inequalities::solve (std::vector<double>& right) const
{
    for (std::size_t i = 0; i < count (); ++i) {
        for (std::size_t j = 0; j < i; ++j)
            right[i] -= g (i, j) * right[j];
        right[i] /= g (i, i);
    }
    for (std::size_t i = count (); i-- > 0;) {
        right[i] /= g (i, i);
        for (std::size_t j = 0; j < i; ++j)
            right[j] -= g (i, j) * right[i];
    }
}

bool Inequalities::has_point_without (std::size_t i) const
{
    constexpr double tolerance = 1e-9;
    constexpr int most_refinements = 3;
    const double value = std::inner_product (y_.begin (), y_.end (), b_.begin (), 0.0);
    std::vector<double> target = b_, x (columns_), rest;
    target[i] -= value / y_[i];
    rest = target;
    for (int step = 0; step < most_refinements; ++step) {
        solve (rest);
        for (std::size_t k = 0; k < count (); ++k)
            for (const Entry& entry : rows_[k])
                x[entry.column] += entry.value * rest[k];
        bool holds = true;
        for (std::size_t k = 0; k < count (); ++k) {
            double activity = 0;
            for (const Entry& entry : rows_[k])
                activity += entry.value * x[entry.column];
            rest[k] = target[k] - activity;
            holds = holds && (k == i || activity - b_[k] <= tolerance * (1 + std::abs (b_[k])));
        }
        if (holds)
            return true;
    }
    return false;
}

bool has_point_without_each (const Problem& problem, std::span<const ConflictMember> members,
                             std::span<const double> multipliers)
{
    constexpr std::size_t most = 300;
    if (members.size () > most)
        return false;
    Inequalities inequalities (problem, members, multipliers);
    if (!inequalities.factor ())
        return false;
    for (std::size_t i = 0; i < members.size (); ++i)
        if (!inequalities.has_point_without (i))
            return false;
    return true;
}

}
