// A judge of answers of its own: what a solution's status claims, recomputed from the problem as stated. Of the library it uses
// nothing but the shape in which problems are held.
#pragma once

#include "kalvo/model/problem.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace proof {

using Values = std::vector<double>;

// A solution, read out. Of keys and the problem's status nothing is known where they are empty and negative.
struct Slot {
    bool defined = false;
    std::int32_t problem = -1, solution = -1;
    std::vector<std::int32_t> skc = {}, skx = {};
    Values xc = {}, xx = {}, y = {}, slc = {}, suc = {}, slx = {}, sux = {};
    double primal = 0, dual = 0;
};

template <class Text>
void require (bool condition, const Text& what)
{
    if (!condition)
        throw std::runtime_error (what);
}

inline bool is_zero (const Values& values)
{
    return std::ranges::count (values, 0) == std::ssize (values);
}

// A sum, and how much of it may be rounding.
struct Sum {
    long double value = 0, noise = 0;

    void add (long double a, long double b = 1)
    {
        value += a * b;
        noise += 1e-12L * std::abs (a * b);
    }
};

class Judge {
public:
    Judge (const klv::Problem& problem, const Slot& slot, double tolerance)
        : p_ (problem), s_ (slot), tolerance_ (tolerance)
    {
        activity_.resize (s_.xc.size ());
        for (std::size_t j = 0; j < s_.xx.size (); ++j) {
            cost_.add (p_.cost[j], s_.xx[j]);
            each_entry (j, [&] (std::size_t i, double value) { activity_[i].add (value, s_.xx[j]); });
        }
    }

    // Throws what is wrong.
    void judge () const
    {
        require (s_.xx.size () == p_.cost.size () && s_.xc.size () == p_.constraint.lower.size (), "sizes");
        switch (s_.solution) {
        case KLV_SOLSTA_OPTIMAL:
            same (s_.primal, s_.dual, 0, "gap");
            [[fallthrough]];
        case KLV_SOLSTA_FEASIBLE:
            problem_is (KLV_PRO_FEASIBLE);
            point ();
            return multipliers ();
        case KLV_SOLSTA_INTEGER_OPTIMAL:
            whole ();
            [[fallthrough]];
        case KLV_SOLSTA_PRIMAL_FEASIBLE:
            problem_is (KLV_PRO_PRIMAL_FEASIBLE);
            return point ();
        case KLV_SOLSTA_DUAL_FEASIBLE:
            problem_is (KLV_PRO_DUAL_FEASIBLE);
            return multipliers ();
        case KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE:
            if (s_.problem != KLV_PRO_BOTH_INFEASIBLE)
                problem_is (KLV_PRO_PRIMAL_INFEASIBLE);
            return dual_ray ();
        case KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE:
            problem_is (KLV_PRO_DUAL_INFEASIBLE);
            return primal_ray ();
        default:
            return;
        }
    }

private:
    void problem_is (std::int32_t status) const
    {
        require (s_.problem < 0 || s_.problem == status, "the problem's status");
    }
    void same (long double a, long double b, long double noise, const char* what) const
    {
        require (std::abs (a - b) <= tolerance_ * (1 + std::abs (a) + std::abs (b)) + noise, what);
    }
    static void exact (long double a, long double b, long double noise, const char* what)
    {
        // What is too large for a double is infinite.
        require (a == static_cast<double> (b) || std::abs (a - b) <= 1e-9 * (1 + std::abs (b)) + noise, what);
    }
    double sign () const { return p_.sense == KLV_SENSE_MAXIMIZE ? -1 : 1; }

    template <class Function>
    void each_entry (std::size_t j, const Function& function) const
    {
        const klv::Column column = p_.matrix.column (static_cast<std::int32_t> (j));
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            function (static_cast<std::size_t> (column.rows[k]), column.values[k]);
    }

    void inside (const klv::Bounds& bounds, std::size_t i, const Sum& at) const
    {
        for (const auto& [bound, side] : {std::pair (bounds.lower[i], 1), {bounds.upper[i], -1}})
            require (std::isinf (bound) ||
                         side * (bound - at.value) <= tolerance_ * (1 + std::abs (bound)) + at.noise,
                     "outside its bounds");
    }
    void point () const
    {
        for (std::size_t i = 0; i < activity_.size (); ++i) {
            inside (p_.constraint, i, activity_[i]);
            exact (s_.xc[i], activity_[i].value, activity_[i].noise, "xc");
        }
        for (std::size_t j = 0; j < s_.xx.size (); ++j)
            inside (p_.variable, j, {s_.xx[j], 0});
        exact (s_.primal, cost_.value + p_.constant, cost_.noise, "pobjval");
    }

    // Whole numbers come as such, unless a loose tolerance allows for others.
    void whole () const
    {
        const double room = tolerance_ > 1e-6 ? tolerance_ : 0;
        for (std::size_t j = 0; j < s_.xx.size (); ++j)
            require (!p_.integer[j] || std::abs (s_.xx[j] - std::nearbyint (s_.xx[j])) <= room, "not whole");
    }

    // Bounds times multipliers; signs and absent bounds are looked at on the way.
    void add_bounds (const klv::Bounds& bounds, const Values& lower, const Values& upper, const Values& scale,
                     double tolerance, Sum& sum) const
    {
        for (std::size_t i = 0; i < lower.size (); ++i) {
            require (sign () * lower[i] >= 0 && sign () * upper[i] >= 0, "a multiplier of the wrong sign");
            for (const auto& [bound, multiplier] :
                 {std::pair (bounds.lower[i], lower[i]), {bounds.upper[i], -upper[i]}})
                if (std::isfinite (bound))
                    sum.add (bound, multiplier);
                else
                    require (std::abs (multiplier) <=
                                 tolerance * (1 + std::abs (scale.empty () ? 0 : scale[i])),
                             "a multiplier of no bound");
        }
    }

    // c - A'y - (slx - sux), without c for a ray, and the value of the bounds.
    Sum balance (bool ray, double tolerance) const
    {
        const Values none;
        for (std::size_t i = 0; i < s_.y.size (); ++i)
            require (std::abs (s_.y[i] - s_.slc[i] + s_.suc[i]) <=
                         1e-12 * (std::abs (s_.slc[i]) + std::abs (s_.suc[i])),
                     "y");
        for (std::size_t j = 0; j < s_.slx.size (); ++j) {
            const double c = ray ? 0 : p_.cost[j];
            Sum residual;
            for (const double term : {c, -s_.slx[j], s_.sux[j]})
                residual.add (term);
            each_entry (j, [&] (std::size_t i, double value) { residual.add (-value, s_.y[i]); });
            require (std::abs (residual.value) <= tolerance * (ray ? 1 : 1 + std::abs (c)) + residual.noise,
                     "dual residual");
        }
        Sum value;
        add_bounds (p_.constraint, s_.slc, s_.suc, none, tolerance, value);
        add_bounds (p_.variable, s_.slx, s_.sux, ray ? none : p_.cost, tolerance, value);
        return value;
    }
    void multipliers () const
    {
        const Sum value = balance (false, tolerance_);
        exact (s_.dual, value.value + p_.constant, value.noise, "dobjval");
    }

    // What adds up to 0 does so up to 1e-12 of its terms; the value is well above what its terms can hide, but for that of a
    // pair of bounds that is crossed by little.
    void has_value (const Sum& sum, double value, const char* what) const
    {
        const bool crossed = s_.solution == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE && is_zero (s_.y);
        require ((sum.noise <= 1.001e-3L || crossed) && std::abs (sum.value - value) <= 1e-6 + sum.noise,
                 what);
    }

    void dual_ray () const
    {
        has_value (balance (true, 0), sign (), "the certificate's value");
        require (s_.dual == sign () && s_.primal == 0 && is_zero (s_.xx) && is_zero (s_.xc),
                 "what a certificate leaves at 0");
        for (const auto* keys : {&s_.skc, &s_.skx})
            require (std::ranges::count (*keys, KLV_SK_UNKNOWN) == std::ssize (*keys), "keys");
    }

    void primal_ray () const
    {
        const auto keep = [] (const klv::Bounds& bounds, const Values& moves) {
            for (std::size_t i = 0; i < moves.size (); ++i)
                require (moves[i] == 0 || std::isinf (moves[i] < 0 ? bounds.lower[i] : bounds.upper[i]),
                         "a direction out of its bounds");
        };
        keep (p_.constraint, s_.xc);
        keep (p_.variable, s_.xx);
        for (std::size_t i = 0; i < activity_.size (); ++i)
            require (std::abs (activity_[i].value - s_.xc[i]) <= activity_[i].noise, "xc of a direction");
        has_value (cost_, -sign (), "the direction's value");
        require (s_.primal == -sign () && s_.dual == 0, "the direction's objectives");
    }

    const klv::Problem& p_;
    const Slot& s_;
    double tolerance_;
    Sum cost_;
    std::vector<Sum> activity_;
};

}
