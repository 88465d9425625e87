#include "kalvo/solve/irreducible.h"

#include "kalvo/sparse/index.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

namespace klv {

// Members as inequalities a x <= b, each divided by the norm of its a; y are their multipliers, with y'A = 0 and y'b < 0, of norm
// 1. When all members are needed y is the only such vector, so that AA' + yy' is positive definite, and for each i there are
// solutions of Ax = b + t e, e being the unit vector of i and t = -y'b / y_i: they violate nothing but inequality i.
class Inequalities {
public:
    Inequalities (const Problem& problem, std::span<const ConflictMember> members,
                  std::span<const double> multipliers);

    // Where the factorisation ended: count () when all vectors are independent but for y.
    std::size_t factor ();
    // Takes other multipliers, which the first members up to `end` have, where the factorisation ended, and drops those members that
    // have none then. False: there is none to drop.
    bool drop (std::size_t end);
    bool has_point_without (std::size_t i) const;
    std::size_t count () const { return b_.size (); }
    WeightedMembers members () const;

private:
    struct Entry {
        std::size_t column;
        double value;
    };

    double& g (std::size_t i, std::size_t j) { return g_[i * count () + j]; }
    double g (std::size_t i, std::size_t j) const { return g_[i * count () + j]; }
    std::vector<double> fewer_multipliers (std::size_t end) const;
    void normalise ();
    void solve (std::vector<double>& right) const;

    std::vector<ConflictMember> members_;
    std::vector<std::vector<Entry>> rows_;
    std::vector<double> b_, y_, norm_, g_;    // g: AA' + yy', then its Cholesky factor
    std::size_t columns_ = 0;
};

Inequalities::Inequalities (const Problem& problem, std::span<const ConflictMember> members,
                            std::span<const double> multipliers)
    : members_ (members.begin (), members.end ()),
      rows_ (members.size ()),
      columns_ (static_cast<std::size_t> (problem.variables ()))
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
    for (std::size_t k = 0; k < members.size (); ++k) {
        const Bounds& bounds = members[k].is_variable () ? problem.variable : problem.constraint;
        const bool upper = members[k].is_upper ();
        const double sign = upper ? 1 : -1;
        double norm = 0;
        for (const Entry& entry : rows_[k])
            norm = std::hypot (norm, entry.value);
        if (norm == 0)    // a row that contradicts itself
            norm = 1;
        for (Entry& entry : rows_[k])
            entry.value *= sign / norm;
        b_.push_back (sign * (upper ? bounds.upper : bounds.lower)[index (members[k].item)] / norm);
        norm_.push_back (norm);
        y_.push_back (multipliers[k] * norm);
    }
    normalise ();
}

void Inequalities::normalise ()
{
    const double length = std::sqrt (std::inner_product (y_.begin (), y_.end (), y_.begin (), 0.0));
    for (double& y : y_)
        y /= length;
}

WeightedMembers Inequalities::members () const
{
    WeightedMembers all{members_, y_};
    for (std::size_t k = 0; k < count (); ++k)
        all.multipliers[k] /= norm_[k];
    return all;
}

std::size_t Inequalities::factor ()
{
    constexpr double dependent = 1e-12;
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
            if (i == j && !(rest > dependent))
                return i;
            g (i, j) = i == j ? std::sqrt (rest) : rest / g (j, j);
        }
    return k;
}

// Member `end` depends on those before it: w'A = 0 and w'y = 0. From y the way goes along w, in the direction in which y'b does not
// grow, as far as y remains positive.
std::vector<double> Inequalities::fewer_multipliers (std::size_t end) const
{
    std::vector<double> w (count (), 0);
    w[end] = 1;
    for (std::size_t i = end; i-- > 0;) {
        w[i] = -g (end, i);
        for (std::size_t j = i + 1; j < end; ++j)
            w[i] -= g (j, i) * w[j];
        w[i] /= g (i, i);
    }
    if (std::inner_product (w.begin (), w.end (), b_.begin (), 0.0) > 0)
        for (double& each : w)
            each = -each;
    double step = infinity;
    std::size_t first = end;
    for (std::size_t i = 0; i <= end; ++i)
        if (w[i] < 0 && -y_[i] / w[i] < step) {
            step = -y_[i] / w[i];
            first = i;
        }
    std::vector<double> fewer = y_;
    for (std::size_t i = 0; i <= end; ++i)
        fewer[i] = std::isfinite (step) ? fewer[i] + step * w[i] : w[i];
    if (std::isfinite (step))
        fewer[first] = 0;
    else    // w is a certificate by itself
        std::fill (fewer.begin () + static_cast<std::ptrdiff_t> (end) + 1, fewer.end (), 0.0);
    constexpr double noise = 1e-12;
    const double largest = *std::ranges::max_element (fewer);
    for (double& each : fewer)
        if (!(each > noise * largest))
            each = 0;
    return fewer;
}

bool Inequalities::drop (std::size_t end)
{
    const std::vector<double> fewer = fewer_multipliers (end);
    std::size_t left = 0;
    for (std::size_t k = 0; k < fewer.size (); ++k)
        if (fewer[k] > 0) {
            members_[left] = members_[k];
            if (left != k)
                rows_[left] = std::move (rows_[k]);
            b_[left] = b_[k];
            norm_[left] = norm_[k];
            y_[left++] = fewer[k];
        }
    if (left == fewer.size ())
        return false;
    members_.resize (left);
    rows_.resize (left);
    for (std::vector<double>* values : {&b_, &norm_, &y_})
        values->resize (left);
    normalise ();
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

bool keep_needed (const Problem& problem, WeightedMembers& conflict, const std::function<bool ()>& is_over)
{
    constexpr std::size_t most = 300;
    if (conflict.members.size () > most)
        return false;
    Inequalities inequalities (problem, conflict.members, conflict.multipliers);
    while (inequalities.count () > 0 && !is_over ()) {
        const std::size_t end = inequalities.factor ();
        if (end < inequalities.count ()) {
            if (!inequalities.drop (end))
                return false;
            continue;
        }
        for (std::size_t i = 0; i < end; ++i)
            if (!inequalities.has_point_without (i))
                return false;
        conflict = inequalities.members ();
        return true;
    }
    return false;
}

}
