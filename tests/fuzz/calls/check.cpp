#include "tests/fuzz/calls/check.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalvo.h"
#include "tests/fuzz/random.h"
#include "tests/unit/notation.h"

namespace fuzz {

using standalone::Numbers, standalone::View;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity ();
constexpr double noise = 1e-12;    // of a sum, relative to the sizes of its terms

struct Sum {
    long double value = 0, size = 0;

    void add (long double term)
    {
        value += term;
        size += std::abs (term);
    }
};

struct Items {
    Numbers lower, upper;

    std::size_t count () const { return lower.size (); }
};

double largest (const Numbers& values)
{
    double most = 0;
    for (const double value : values)
        most = std::max (most, std::abs (value));
    return most;
}

bool is_given (View field)
{
    return field && field.count () > 0;
}

Numbers numbers_or (View field, std::size_t count, double absent)
{
    return is_given (field) ? field.numbers () : Numbers (count, absent);
}

// Everything as in minimisation.
struct Problem {
    Problem (View prob, bool maximize) : sign (maximize ? -1 : 1)
    {
        const auto sizes = prob["a"].sizes ();
        a = prob["a"].numbers ();
        constraints = items (prob["blc"], prob["buc"], sizes[0]);
        variables = items (prob["blx"], prob["bux"], sizes[1]);
        c = numbers_or (prob["c"], sizes[1], 0);
        for (double& cost : c)
            cost *= sign;
        constant = sign * numbers_or (prob["cfix"], 1, 0)[0];
        integer.assign (sizes[1], false);
        if (const View ints = prob["ints"]; ints && ints.class_id () == mxSTRUCT_CLASS)
            if (const View sub = ints["sub"]; is_given (sub) && sub.class_id () == mxDOUBLE_CLASS &&
                                              !sub.is_sparse () &&
                                              sub.count () == std::max (sub.sizes ()[0], sub.sizes ()[1]))
                for (const double variable : sub.numbers ())
                    integer.at (static_cast<std::size_t> (variable) - 1) = true;
    }

    static Items items (View lower, View upper, std::size_t count)
    {
        Items read{numbers_or (lower, count, -inf), numbers_or (upper, count, inf)};
        for (double& bound : read.lower)
            bound = std::isnan (bound) ? -inf : bound;
        for (double& bound : read.upper)
            bound = std::isnan (bound) || bound > 1e20 ? inf : bound;
        return read;
    }

    Sum activity (std::size_t i, const Numbers& x) const
    {
        Sum sum;
        for (std::size_t j = 0; j < x.size (); ++j)
            sum.add (static_cast<long double> (a[i + j * constraints.count ()]) * x[j]);
        return sum;
    }
    Sum objective (const Numbers& x) const
    {
        Sum sum;
        for (std::size_t j = 0; j < x.size (); ++j)
            sum.add (static_cast<long double> (c[j]) * x[j]);
        return sum;
    }

    double sign, constant;
    Numbers a, c;
    Items constraints, variables;
    std::vector<bool> integer;
};

class Judge {
public:
    Judge (const Problem& problem, View slot, double tolerance)
        : p_ (problem), slot_ (slot), tolerance_ (tolerance), x_ (slot["xx"].numbers ())
    {
        require (x_.size () == p_.variables.count () && slot["xc"].count () == p_.constraints.count (),
                 "sizes");
        if (slot["y"])
            for (const auto& [name, values] :
                 {std::pair ("y", &y_), {"slc", &slc_}, {"suc", &suc_}, {"slx", &slx_}, {"sux", &sux_}})
                for (const double value : slot[name].numbers ())
                    values->push_back (p_.sign * value);
    }

    // `direction`: a ray, from which bounds are seen as 0 or absent.
    void primal (bool direction) const
    {
        for (std::size_t i = 0; i < p_.constraints.count (); ++i)
            inside (p_.constraints, i, p_.activity (i, x_), direction);
        for (std::size_t j = 0; j < x_.size (); ++j)
            inside (p_.variables, j, {x_[j], 0}, direction);
        const Sum value = p_.objective (x_);
        if (direction)
            require (value.value < -0.5, "the ray does not improve");
        else
            same (value.value + p_.constant, p_.sign * slot_["pobjval"].number (), value.size, "pobjval");
    }

    void integers () const
    {
        for (std::size_t j = 0; j < x_.size (); ++j)
            require (!p_.integer[j] || std::abs (x_[j] - std::nearbyint (x_[j])) <= tolerance_, "not whole");
    }

    // `ray`: a proof that no point is feasible, without costs.
    void dual (bool ray) const
    {
        const double size = std::max ({largest (y_), largest (slx_), largest (sux_)});
        Sum value;
        value.add (ray ? 0 : p_.constant);
        for (std::size_t i = 0; i < p_.constraints.count (); ++i) {
            same (y_[i], slc_[i] - suc_[i], 0, "y");
            multipliers (p_.constraints, i, slc_[i], suc_[i], ray ? size : 1, value);
        }
        for (std::size_t j = 0; j < x_.size (); ++j) {
            const double cost = ray ? 0 : p_.c[j];
            Sum residual;
            residual.add (cost);
            residual.add (-slx_[j]);
            residual.add (sux_[j]);
            for (std::size_t i = 0; i < y_.size (); ++i)
                residual.add (-static_cast<long double> (p_.a[i + j * y_.size ()]) * y_[i]);
            const double scale = ray ? size : 1 + std::abs (cost);
            require (std::abs (residual.value) <= tolerance_ * scale + noise * residual.size,
                     "dual residual");
            multipliers (p_.variables, j, slx_[j], sux_[j], scale, value);
        }
        if (ray)
            require (value.value > 0.5, "the certificate proves nothing");
        else
            same (value.value, p_.sign * slot_["dobjval"].number (), value.size, "dobjval");
    }

    void gap () const { same (slot_["pobjval"].number (), slot_["dobjval"].number (), 0, "gap"); }

private:
    void same (long double a, long double b, long double size, const char* what) const
    {
        require (std::abs (a - b) <= tolerance_ * (1 + std::abs (a) + std::abs (b)) + noise * size, what);
    }

    void inside (const Items& items, std::size_t i, const Sum& at, bool direction) const
    {
        const auto below = [&] (double bound, long double sign) {
            if (!std::isfinite (bound))
                return;
            const long double distance = sign * ((direction ? 0 : bound) - at.value);
            const long double scale = direction ? 1 + largest (x_) : 1 + std::abs (bound);
            require (distance <= tolerance_ * scale + noise * at.size, "outside its bounds");
        };
        below (items.lower[i], 1);
        below (items.upper[i], -1);
    }

    void multipliers (const Items& items, std::size_t i, double lower, double upper, double scale,
                      Sum& value) const
    {
        require (lower >= 0 && upper >= 0, "a multiplier of the wrong sign");
        for (const auto& [bound, multiplier] : {std::pair (items.lower[i], lower), {items.upper[i], -upper}})
            if (std::isfinite (bound))
                value.add (static_cast<long double> (bound) * multiplier);
            else
                require (std::abs (multiplier) <= tolerance_ * scale, "a multiplier of no bound");
    }

    const Problem& p_;
    View slot_;
    double tolerance_;
    Numbers x_, y_, slc_, suc_, slx_, sux_;
};

// The best value of a purely integer problem with few points; infinite when none is feasible.
std::optional<double> best_by_enumeration (const Problem& p)
{
    constexpr double most_points = 3000;
    double points = 1;
    for (std::size_t j = 0; j < p.integer.size (); ++j) {
        const double first = std::ceil (p.variables.lower[j]), last = std::floor (p.variables.upper[j]);
        points *= p.integer[j] ? std::max (0.0, last - first + 1) : inf;
        if (!(points <= most_points && std::abs (first) < 1e6))
            return std::nullopt;
    }
    double best = inf;
    Numbers x;
    for (const double lower : p.variables.lower)
        x.push_back (std::ceil (lower));
    for (long left = static_cast<long> (points); left > 0; --left) {
        bool feasible = true;
        for (std::size_t i = 0; i < p.constraints.count () && feasible; ++i) {
            const long double value = p.activity (i, x).value;
            feasible = value >= p.constraints.lower[i] && value <= p.constraints.upper[i];
        }
        if (feasible)
            best = std::min (best, static_cast<double> (p.objective (x).value) + p.constant);
        for (std::size_t j = 0; j < x.size () && ++x[j] > p.variables.upper[j]; ++j)
            x[j] = std::ceil (p.variables.lower[j]);
    }
    return best;
}

void check_integer (const Problem& problem, const Judge& judge, View slot, bool optimal)
{
    if (optimal) {
        judge.primal (false);
        judge.integers ();
    }
    const bool infeasible = slot["prosta"].text ().find ("INFEASIBLE") != std::string::npos;
    const auto best = optimal || infeasible ? best_by_enumeration (problem) : std::nullopt;
    if (!best)
        return;
    const double found = optimal ? problem.sign * slot["pobjval"].number () : inf;
    require (found == *best || std::abs (found - *best) <= 1e-5 + 1.1e-4 * std::abs (*best),
             "integer optimum " + std::to_string (*best));
}

int status_of (View slot)
{
    static const auto names =
        pieces_of ("UNKNOWN|OPTIMAL|FEASIBLE|PRIMAL_FEASIBLE|DUAL_FEASIBLE|PRIMAL_INFEASIBLE_"
                   "CERTIFICATE|DUAL_INFEASIBLE_CERTIFICATE|INTEGER_OPTIMAL",
                   '|');
    const auto found = std::find (names.begin (), names.end (), slot["solsta"].text ());
    require (found != names.end (), "solsta " + slot["solsta"].text ());
    return static_cast<int> (found - names.begin ());
}

void check_slot (const Problem& problem, View slot, double tolerance)
{
    const Judge judge (problem, slot, tolerance);
    const int status = status_of (slot);
    switch (status) {
    case KLV_SOLSTA_OPTIMAL:
    case KLV_SOLSTA_FEASIBLE:
        judge.primal (false);
        judge.dual (false);
        if (status == KLV_SOLSTA_OPTIMAL)
            judge.gap ();
        break;
    case KLV_SOLSTA_PRIMAL_FEASIBLE:
        judge.primal (false);
        break;
    case KLV_SOLSTA_DUAL_FEASIBLE:
        judge.dual (false);
        break;
    case KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE:
        judge.dual (true);
        break;
    case KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE:
        judge.primal (true);
        break;
    default:
        check_integer (problem, judge, slot, status == KLV_SOLSTA_INTEGER_OPTIMAL);
    }
}

}

void check_solutions (View prob, View solutions, bool maximize, double tolerance)
{
    const Problem problem (prob, maximize);
    for (const char* kind : {"itr", "bas", "int"})
        if (const View slot = solutions[kind])
            try {
                check_slot (problem, slot, tolerance);
            } catch (const std::exception& fault) {
                throw std::runtime_error (kind + std::string (": ") + fault.what () + "\n  " + show (slot));
            }
}

}
