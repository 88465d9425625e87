#include "kalvo/verify/certificate.h"

#include "kalvo/verify/distance.h"
#include "kalvo/verify/products.h"
#include "kalvo/verify/quality.h"
#include "kalvo/verify/sum.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <utility>

namespace klv {

// Noise is at most this part of the terms that it is left of; the value must exceed what its terms can hide.
constexpr double noise_tolerance = 1e-12;
constexpr double value_tolerance = 1e-9;
// A bound this large gives noise a value, so that noise there is none either.
constexpr double far_bound = 1e15;

static Solution zero_solution (const Problem& problem)
{
    const std::size_t m = static_cast<std::size_t> (problem.constraints ());
    const std::size_t n = static_cast<std::size_t> (problem.variables ());
    Solution zero;
    zero.skc.assign (m, KLV_SK_UNKNOWN);
    zero.skx.assign (n, KLV_SK_UNKNOWN);
    zero.xc.assign (m, 0);
    zero.xx.assign (n, 0);
    for (std::vector<double>* values : {&zero.y, &zero.slc, &zero.suc})
        values->assign (m, 0);
    for (std::vector<double>* values : {&zero.slx, &zero.sux})
        values->assign (n, 0);
    return zero;
}

static Solution infeasible_solution (const Problem& problem)
{
    Solution certificate = zero_solution (problem);
    certificate.problem_status = KLV_PRO_PRIMAL_INFEASIBLE;
    certificate.solution_status = KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE;
    certificate.dual_objective = problem.sense == KLV_SENSE_MAXIMIZE ? -1 : 1;
    return certificate;
}

// ---- Rays ------------------------------------------------------------------------------------------------

// A ray has an entry for each item of one kind, and a product for each item of the other kind: a row or column of the matrix
// times the ray. Each of them may have to be 0, or have one sign only, by the bounds that its item has; some together lie in a
// cone.

// Entries and products that lie in a cone, by their places: products stand after all entries.
struct Part {
    KLVdomaintype type = KLV_DOMAIN_SEMIDEFINITE_CONE;
    std::vector<double> exponents = {};
    std::int32_t order = -1;    // of the matrix whose packed triangle this is
    std::vector<std::size_t> places = {};

    Part (const Shape& shape, std::vector<std::size_t> where)
        : type (shape.type),
          exponents (shape.exponents.begin (), shape.exponents.end ()),
          places (std::move (where))
    {}
    Part (std::int32_t matrix_order, std::vector<std::size_t> where)
        : order (matrix_order), places (std::move (where))
    {}
    Shape shape () const { return {type, exponents}; }
    double distance_of (std::span<const double> block) const
    {
        return order < 0 ? distance (shape (), 1, block) : matrix_distance (order, 1, block);
    }
    std::vector<double> direction_of () const
    {
        return order < 0 ? direction (shape (), places.size ()) : identity (places.size ());
    }
};

static std::vector<std::size_t> consecutive (std::size_t first, std::size_t count)
{
    std::vector<std::size_t> places (count);
    std::iota (places.begin (), places.end (), first);
    return places;
}

static std::vector<Part> affine_parts (const Problem& problem, std::size_t first, bool duals)
{
    std::vector<Part> parts;
    std::size_t begin = 0;
    for (std::int32_t k = 0; k < problem.affine_constraint.count (); ++k) {
        const auto end =
            static_cast<std::size_t> (problem.affine_constraint.end[static_cast<std::size_t> (k)]);
        const Shape shape = shape_of (problem, k);
        parts.emplace_back (duals ? dual (shape) : shape, consecutive (first + begin, end - begin));
        begin = end;
    }
    return parts;
}

static void add_matrix_parts (const SemidefiniteVariables& matrices, std::size_t first,
                              std::vector<Part>& parts)
{
    for (std::int32_t j = 0; j < matrices.count (); ++j) {
        const auto begin = static_cast<std::size_t> (matrices.begin_of (j));
        parts.emplace_back (
            matrices.order[static_cast<std::size_t> (j)],
            consecutive (first + begin, static_cast<std::size_t> (matrices.begin_of (j + 1)) - begin));
    }
}

// Function: of the row, its column and the value of each entry of F, by rows of affine conic constraints.
template <class Function>
static void each_affine_value (const Problem& problem, const Function& function)
{
    if (problem.affine_constraint.rows () == 0)
        return;
    const RowsOfExpressions rows_of (problem.affine_constraint, problem.affine.count ());
    for (std::int32_t j = 0; j < problem.affine.f.columns (); ++j) {
        const Column column = problem.affine.f.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            for (const std::int32_t row : rows_of (column.rows[k]))
                function (static_cast<std::size_t> (row), static_cast<std::size_t> (j), column.values[k]);
    }
}

// Function: of the constraint, or m + the row, the packed place and the value of each entry of matrices that they have.
template <class Function>
static void each_matrix_value (const Problem& problem, const Function& function)
{
    const SemidefiniteVariables& matrices = problem.semidefinite;
    const auto m = static_cast<std::size_t> (problem.constraints ());
    for (std::size_t k = 0; k < matrices.constraint.value.size (); ++k)
        function (static_cast<std::size_t> (matrices.constraint.item[k]),
                  place_of (matrices, matrices.constraint, k), matrices.constraint.value[k],
                  matrices.constraint.row[k] != matrices.constraint.column[k]);
    const SymmetricTerms& terms = matrices.expression;
    if (terms.count () == 0 || problem.affine_constraint.rows () == 0)
        return;
    const RowsOfExpressions rows_of (problem.affine_constraint, problem.affine.count ());
    for (std::size_t k = 0; k < terms.value.size (); ++k)
        for (const std::int32_t row : rows_of (terms.item[k]))
            function (m + static_cast<std::size_t> (row), place_of (matrices, terms, k), terms.value[k],
                      terms.row[k] != terms.column[k]);
}

// Function: of the item, a variable and what its entry is times, of each entry of Q and its mirror image.
template <class Function>
static void each_quadratic_value (const SymmetricTerms& terms, const Function& function)
{
    for (std::size_t k = 0; k < terms.value.size (); ++k) {
        const std::size_t item = terms.item.empty () ? 0 : static_cast<std::size_t> (terms.item[k]);
        const auto row = static_cast<std::size_t> (terms.row[k]),
                   column = static_cast<std::size_t> (terms.column[k]);
        function (item, row, column, terms.value[k]);
        if (row != column)
            function (item, column, row, terms.value[k]);
    }
}

// Multipliers of the constraints, positive at lower bounds, then of rows of affine conic constraints, then of the cones of bounded
// variables. Their products are those of the variables, then of the entries of matrices. Gradients of quadratic constraints are
// taken at x.
class Multipliers {
public:
    explicit Multipliers (const Problem& stated, std::span<const double> x = {}) : problem (stated), x_ (x)
    {
        const std::size_t affine = static_cast<std::size_t> (problem.affine_constraint.rows ());
        const std::size_t n = variables ();
        std::vector<std::size_t> own (problem.cone.count () > 0 ? n : 0);    // of members with bounds
        in_cone_.resize (own.size ());
        for (const std::int32_t member : problem.cone.member) {
            const auto j = static_cast<std::size_t> (member);
            in_cone_[j] = true;
            if (std::isfinite (problem.variable.lower[j]) || std::isfinite (problem.variable.upper[j])) {
                own[j] = constraints () + affine + bounded_.size ();
                bounded_.push_back (member);
                in_cone_[j] = false;
            }
        }
        entries_ = constraints () + affine + bounded_.size ();
        parts = affine_parts (problem, constraints (), true);
        for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
            const ConeOfVariables here (problem, k);
            std::vector<std::size_t> places;
            for (const std::int32_t member : here.members ()) {
                const auto j = static_cast<std::size_t> (member);
                places.push_back (own[j] > 0 || !in_cone_[j] ? own[j] : entries_ + j);
            }
            parts.emplace_back (dual (here.shape ()), std::move (places));
        }
        add_matrix_parts (problem.semidefinite, entries_ + n, parts);
    }

    const Problem& problem;
    std::vector<Part> parts;
    static constexpr double sign = -1;    // of products

    std::size_t constraints () const { return static_cast<std::size_t> (problem.constraints ()); }
    std::size_t variables () const { return static_cast<std::size_t> (problem.variables ()); }
    std::size_t entries () const { return entries_; }
    std::size_t products () const
    {
        return variables () + static_cast<std::size_t> (problem.semidefinite.length ());
    }
    std::span<const std::int32_t> bounded_members () const { return bounded_; }

    static double size_of_bound (const Bounds& bounds, std::size_t i, double multiplier)
    {
        const Interval here = bounds.interval (i);
        return multiplier == 0 ? 0 : std::abs (multiplier > 0 ? here.lower : here.upper);
    }
    bool allows_entry (std::size_t i, double y) const
    {
        return i >= constraints () || size_of_bound (problem.constraint, i, y) < infinity;
    }
    bool allows_product (std::size_t j, double z) const
    {
        return is_in_cone (j) || size_of_bound (problem.variable, j, z) < infinity;
    }
    bool trusts_product (std::size_t j, double z) const
    {
        return is_in_cone (j) || size_of_bound (problem.variable, j, z) < far_bound;
    }

    template <class Function>
    void each_value (const Function& function) const
    {
        for (std::int32_t j = 0; j < problem.variables (); ++j) {
            const Column column = problem.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                function (static_cast<std::size_t> (j), static_cast<std::size_t> (column.rows[k]),
                          column.values[k]);
        }
        const std::size_t m = constraints (), n = variables ();
        each_affine_value (
            problem, [&] (std::size_t row, std::size_t j, double value) { function (j, m + row, value); });
        each_matrix_value (problem, [&] (std::size_t i, std::size_t place, double value, bool) {
            function (n + place, i, value);
        });
        if (!x_.empty ())
            each_quadratic_value (problem.quadratic_constraint,
                                  [&] (std::size_t i, std::size_t j, std::size_t of, double value) {
                                      function (j, i, value * x_[of]);
                                  });
        for (std::size_t k = 0; k < bounded_.size (); ++k)
            function (static_cast<std::size_t> (bounded_[k]), entries_ - bounded_.size () + k, 1.0);
    }
    template <class Function>
    void each_term (std::span<const double> ray, std::span<const double> z, const Function& function) const
    {
        const auto add = [&] (const Bounds& bounds, std::span<const double> multipliers,
                              bool variables_of_cones) {
            for (std::size_t i = 0; i < multipliers.size (); ++i)
                if (const Interval here = bounds.interval (i);
                    multipliers[i] != 0 && !(variables_of_cones && is_in_cone (i)))
                    function (multipliers[i] > 0 ? here.lower : here.upper, multipliers[i]);
        };
        const std::size_t m = constraints ();
        const Dual duals{ray.first (m), ray.subspan (m, entries_ - m - bounded_.size ())};
        add (problem.constraint, duals.y, false);
        add (problem.variable, z.first (variables ()), true);
        each_dual_term (problem, duals, x_, false, function);
    }

private:
    // Whether a product lies in a cone alone.
    bool is_in_cone (std::size_t j) const { return j >= variables () || (!in_cone_.empty () && in_cone_[j]); }

    std::span<const double> x_;
    std::vector<bool> in_cone_;
    std::vector<std::int32_t> bounded_;
    std::size_t entries_ = 0;
};

// A direction of the variables, then of the entries of matrices. Its products are the moves of the constraints, of the rows of affine
// conic constraints, and of the gradients of quadratic terms.
class Direction {
public:
    explicit Direction (const Problem& stated) : problem (stated)
    {
        parts = affine_parts (problem, entries () + constraints (), false);
        for (std::int32_t k = 0; k < problem.cone.count (); ++k) {
            const ConeOfVariables here (problem, k);
            parts.emplace_back (here.shape (),
                                std::vector<std::size_t> (here.members ().begin (), here.members ().end ()));
        }
        add_matrix_parts (problem.semidefinite, variables (), parts);
        products_ = constraints () + static_cast<std::size_t> (problem.affine_constraint.rows ());
        zero_.assign (products_, false);
        for (const Part& part : parts)
            for (const std::size_t place : part.places)
                if (part.type == KLV_DOMAIN_ZERO && place >= entries ())
                    zero_[place - entries ()] = true;
        each_gradient ([&] (std::int64_t item, std::size_t j, std::size_t, double) {
            products_ += gradient_.try_emplace ({item, j}, products_).second ? 1 : 0;
        });
    }

    const Problem& problem;
    std::vector<Part> parts;
    static constexpr double sign = 1;

    std::size_t constraints () const { return static_cast<std::size_t> (problem.constraints ()); }
    std::size_t variables () const { return static_cast<std::size_t> (problem.variables ()); }
    std::size_t entries () const
    {
        return variables () + static_cast<std::size_t> (problem.semidefinite.length ());
    }
    std::size_t products () const { return products_; }

    static bool keeps (const Bounds& bounds, std::size_t i, double move)
    {
        return move == 0 || std::isinf (move < 0 ? bounds.lower[i] : bounds.upper[i]);
    }
    bool allows_entry (std::size_t j, double d) const
    {
        return j >= variables () || keeps (problem.variable, j, d);
    }
    bool allows_product (std::size_t i, double move) const
    {
        return i < constraints () ? keeps (problem.constraint, i, move) : move == 0 || !must_be_zero (i);
    }
    bool trusts_product (std::size_t i, double move) const { return allows_product (i, move); }

    template <class Function>
    void each_value (const Function& function) const
    {
        for (std::int32_t j = 0; j < problem.variables (); ++j) {
            const Column column = problem.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                function (static_cast<std::size_t> (column.rows[k]), static_cast<std::size_t> (j),
                          column.values[k]);
        }
        const std::size_t m = constraints (), n = variables ();
        each_affine_value (
            problem, [&] (std::size_t row, std::size_t j, double value) { function (m + row, j, value); });
        each_matrix_value (problem, [&] (std::size_t i, std::size_t place, double value, bool twice) {
            function (i, n + place, twice ? 2 * value : value);
        });
        each_gradient ([&] (std::int64_t item, std::size_t j, std::size_t of, double value) {
            function (gradient_.at ({item, j}), of, value);
        });
    }
    template <class Function>
    void each_term (std::span<const double> d, std::span<const double>, const Function& function) const
    {
        const double better = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
        for (std::size_t j = 0; j < variables (); ++j)
            function (better * problem.cost[j], d[j]);
        const SymmetricTerms& terms = problem.semidefinite.objective;
        for (std::size_t k = 0; k < terms.value.size (); ++k)
            function (better * (terms.row[k] == terms.column[k] ? 1 : 2) * terms.value[k],
                      d[variables () + place_of (problem.semidefinite, terms, k)]);
    }

private:
    // Of the objective, item -1, and of the constraints that have a bound.
    template <class Function>
    void each_gradient (const Function& function) const
    {
        each_quadratic_value (problem.quadratic_objective,
                              [&] (std::size_t, std::size_t j, std::size_t of, double value) {
                                  function (std::int64_t{-1}, j, of, value);
                              });
        each_quadratic_value (problem.quadratic_constraint, [&] (std::size_t i, std::size_t j, std::size_t of,
                                                                 double value) {
            if (std::isfinite (problem.constraint.lower[i]) || std::isfinite (problem.constraint.upper[i]))
                function (static_cast<std::int64_t> (i), j, of, value);
        });
    }

    // Rows of zero domains, and gradients, which stand last.
    bool must_be_zero (std::size_t i) const { return i >= zero_.size () || zero_[i]; }

    std::size_t products_ = 0;
    std::vector<bool> zero_;
    std::map<std::pair<std::int64_t, std::size_t>, std::size_t> gradient_;
};

// A ray with its products, noise taken out of them, and what they add up to.
struct Proof {
    std::vector<double> ray = {}, products = {};
    long double value = 0, terms = 0;
    double noise_share = 0, noise_sum = 0;
};

template <class Kind>
static std::vector<double> products_of (const Kind& kind, std::span<const double> ray)
{
    std::vector<Sum> sums (kind.products ());
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        if (ray[from] != 0)
            sums[to].add_product (kind.sign * value, ray[from]);
    });
    std::vector<double> products (sums.size ());
    std::ranges::transform (sums, products.begin (), &Sum::value);
    return products;
}

template <class Kind>
static std::vector<double> own_terms (const Kind& kind, std::span<const double> ray)
{
    std::vector<double> terms (kind.products ());
    kind.each_value (
        [&] (std::size_t to, std::size_t from, double value) { terms[to] += std::abs (value * ray[from]); });
    return terms;
}

// Moves the parts that are entries alone into their cones, and no less: a member that is small beside the others may be what a proof
// needs.
static void move_inside (const std::vector<Part>& parts, std::vector<double>& ray)
{
    for (const Part& part : parts) {
        if (std::ranges::any_of (part.places, [&] (std::size_t place) { return place >= ray.size (); }))
            continue;
        std::vector<double> block;
        for (const std::size_t place : part.places)
            block.push_back (ray[place]);
        const double outside = part.distance_of (block);
        if (part.type == KLV_DOMAIN_ZERO)
            for (const std::size_t place : part.places)
                ray[place] = 0;
        else if (outside > 0 && std::isfinite (outside)) {
            const std::vector<double> towards = part.direction_of ();
            std::vector<double> moved (block);
            for (double by = outside; std::isfinite (by) && part.distance_of (moved) > 0; by *= 2)
                for (std::size_t i = 0; i < block.size (); ++i)
                    moved[i] = block[i] + by * towards[i];
            for (std::size_t i = 0; i < block.size (); ++i)
                ray[part.places[i]] = moved[i];
        }
    }
}

// How far a positive semidefinite part is outside, each diagonal entry relative to its terms. Rows without such terms must be 0, but
// for the noise of their entries, and are left out.
static double relative_distance (const Part& part, std::span<const double> block,
                                 std::span<const double> terms)
{
    const auto n = static_cast<std::size_t> (part.order);
    std::vector<double> scale (n), scaled (block.size ());
    for (std::size_t j = 0, k = 0; j < n; k += n - j++)
        scale[j] = terms[k] > 0 ? 1 / std::sqrt (terms[k]) : 0;
    for (std::size_t j = 0, k = 0; j < n; ++j)
        for (std::size_t i = j; i < n; ++i, ++k) {
            scaled[k] = block[k] * scale[i] * scale[j];
            if ((scale[i] == 0 || scale[j] == 0) && !(std::abs (block[k]) <= noise_tolerance * terms[k]))
                return infinity;
        }
    return matrix_distance (part.order, 1, scaled);
}

// Whether the part is in its cone, but for noise of its products, which is noted.
static bool is_inside (const Part& part, std::span<const double> terms, Proof& proof)
{
    const std::size_t entries = proof.ray.size ();
    std::vector<double> block, own;
    for (const std::size_t place : part.places) {
        block.push_back (place < entries ? proof.ray[place] : proof.products[place - entries]);
        own.push_back (place < entries ? 0 : terms[place - entries]);
    }
    const bool products =
        std::ranges::all_of (part.places, [&] (std::size_t place) { return place >= entries; });
    if (part.order >= 0 && products) {
        const double share = relative_distance (part, block, own);
        proof.noise_share = std::max (proof.noise_share, share);
        const std::vector<double> towards = part.direction_of ();
        for (std::size_t i = 0; i < block.size () && share > 0; ++i)
            proof.noise_sum += share * own[i] * towards[i];
        return share <= noise_tolerance;
    }
    const double outside = part.distance_of (block);
    if (outside <= 0)
        return true;
    const std::vector<double> towards = part.direction_of ();
    for (std::size_t i = 0; i < block.size (); ++i) {
        const double noise =
            part.type == KLV_DOMAIN_ZERO ? std::abs (block[i]) : outside * std::abs (towards[i]);
        if (!(noise <= noise_tolerance * own[i]))
            return false;
        if (noise > 0) {
            proof.noise_sum += noise;
            proof.noise_share = std::max (proof.noise_share, noise / own[i]);
        }
    }
    return true;
}

// Written so that a NaN proves nothing.
template <class Kind>
static std::optional<Proof> verify (const Kind& kind, std::vector<double> ray)
{
    if (!std::ranges::all_of (ray, [] (double entry) { return std::isfinite (entry); }))
        return std::nullopt;
    move_inside (kind.parts, ray);
    for (std::size_t i = 0; i < ray.size (); ++i)
        if (!std::isfinite (ray[i]) || !kind.allows_entry (i, ray[i]))
            return std::nullopt;
    Proof proof{.ray = std::move (ray)};
    proof.products = products_of (kind, proof.ray);
    std::vector<double> terms;
    if (!kind.parts.empty ())
        terms = own_terms (kind, proof.ray);
    for (std::size_t i = 0; i < proof.products.size (); ++i) {
        if (kind.trusts_product (i, proof.products[i]))
            continue;
        if (terms.empty ())
            terms = own_terms (kind, proof.ray);
        const double noise = std::abs (proof.products[i]);
        if (!(noise <= noise_tolerance * terms[i])) {
            if (kind.allows_product (i, proof.products[i]))
                continue;
            return std::nullopt;
        }
        proof.products[i] = 0;
        proof.noise_sum += noise;
        proof.noise_share = std::max (proof.noise_share, noise / terms[i]);
    }
    for (const Part& part : kind.parts)
        if (!is_inside (part, terms, proof))
            return std::nullopt;
    kind.each_term (proof.ray, proof.products, [&] (long double a, long double b) {
        proof.value += a * b;
        proof.terms += std::abs (a * b);
    });
    return proof.value > value_tolerance * proof.terms ? std::optional (std::move (proof)) : std::nullopt;
}

// The numbers that are handed out are those that were verified. A ray with its right value stays as it is.
template <class Kind>
static std::optional<Proof> verify_scaled (const Kind& kind, std::vector<double> ray)
{
    std::optional<Proof> proof = verify (kind, std::move (ray));
    if (!proof || std::abs (proof->value - 1) <= value_tolerance)
        return proof;
    for (double& entry : proof->ray)
        entry = static_cast<double> (entry / proof->value);
    return verify (kind, std::move (proof->ray));
}

// Without entries that are not allowed, and those that are small beside the largest.
template <class Kind>
static std::vector<double> cleaned (const Kind& kind, std::vector<double> ray, double small)
{
    const auto smaller = [] (double a, double b) { return std::abs (a) < std::abs (b); };
    const double least =
        ray.empty () ? 0 : small * std::abs (*std::max_element (ray.begin (), ray.end (), smaller));
    for (std::size_t i = 0; i < ray.size (); ++i)
        if (std::abs (ray[i]) < least || !kind.allows_entry (i, ray[i]))
            ray[i] = 0;
    return ray;
}

// Makes products smaller that should be 0 (those of the wrong sign, and those that come near to 0 and may have one sign at
// most) by the least relative change of the ray's entries: conjugate gradients on the least squares, each product taken
// relative to its terms. What is wrong by more than noise stays as it is. The rounds are limited by the size of the matrix,
// which keeps the time below a second.
template <class Kind>
static std::vector<double> refined (const Kind& kind, std::vector<double> ray)
{
    using Vector = std::vector<long double>;
    const std::vector<double> products = products_of (kind, ray);
    const std::vector<double> terms = own_terms (kind, ray);
    Vector weights (products.size ());    // 0 where a product may be what it is
    Vector residual (products.size ());
    constexpr double far = 0.01, near_zero = 1e-6;
    for (std::size_t i = 0; i < products.size (); ++i) {
        const bool allowed = kind.allows_product (i, products[i]);
        if (!allowed && std::abs (products[i]) > far * terms[i])
            return ray;
        const bool near = std::abs (products[i]) <= near_zero * terms[i] &&
                          !(kind.trusts_product (i, 1) && kind.trusts_product (i, -1));
        if (terms[i] > 0 && (!allowed || near))
            weights[i] = 1 / static_cast<long double> (terms[i]);
    }
    std::int64_t values = 1;
    kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
        residual[to] -= weights[to] * value * ray[from];
        ++values;
    });

    Vector change (ray.size ());
    const auto gradient = [&] {
        Vector sums (ray.size ());
        kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
            sums[from] += weights[to] * value * ray[from] * residual[to];
        });
        return sums;
    };
    const auto square = [] (const Vector& vector) {
        long double sum = 0;
        for (const long double value : vector)
            sum += value * value;
        return sum;
    };
    Vector slope = gradient (), step = slope;
    long double steepness = square (slope);
    const std::int64_t rounds = std::clamp<std::int64_t> (50'000'000 / values, 3, 500);
    for (std::int64_t round = 0; round < rounds && steepness > 1e-34L; ++round) {
        Vector effect (products.size ());
        kind.each_value ([&] (std::size_t to, std::size_t from, double value) {
            effect[to] += weights[to] * value * ray[from] * step[from];
        });
        const long double length = steepness / square (effect);
        for (std::size_t i = 0; i < change.size (); ++i)
            change[i] += length * step[i];
        for (std::size_t i = 0; i < residual.size (); ++i)
            residual[i] -= length * effect[i];
        slope = gradient ();
        const long double before = std::exchange (steepness, square (slope));
        for (std::size_t i = 0; i < step.size (); ++i)
            step[i] = slope[i] + steepness / before * step[i];
    }
    for (std::size_t i = 0; i < ray.size (); ++i)
        ray[i] = static_cast<double> (ray[i] * (1 + change[i]));
    return ray;
}

// A ray is one up to its sign, and engines do not agree on it.
template <class Kind>
static std::optional<Proof> prove (const Kind& kind, std::span<const double> claimed)
{
    if (claimed.size () != kind.entries () ||
        !std::ranges::all_of (claimed, [] (double entry) { return std::isfinite (entry); }))
        return std::nullopt;
    const std::vector<double> ray (claimed.begin (), claimed.end ());
    std::vector<double> reversed (ray);
    for (double& entry : reversed)
        entry = -entry;
    const std::vector<double>* ways[] = {&ray, &reversed};
    for (const auto* way : ways)
        if (std::optional<Proof> proof = verify_scaled (kind, *way))
            return proof;
    constexpr double simplex = 1e-12, interior = 1e-7;
    for (const double small : {simplex, interior})
        for (const auto* way : ways) {
            const std::vector<double> clean = cleaned (kind, *way, small);
            if (std::optional<Proof> proof = verify_scaled (kind, clean))
                return proof;
            if (std::optional<Proof> proof = verify_scaled (kind, cleaned (kind, refined (kind, clean), 0)))
                return proof;
        }
    return std::nullopt;
}

static std::vector<double> times (double factor, std::vector<double> values)
{
    for (double& value : values)
        value = factor * value + 0.0;
    return values;
}

static void append (std::span<const double> values, std::vector<double>& ray)
{
    ray.insert (ray.end (), values.begin (), values.end ());
}

std::optional<Solution> certify_infeasible (const Problem& problem, const ClaimedRay& claimed)
{
    const auto n = static_cast<std::size_t> (problem.variables ());
    const bool curved = problem.quadratic_constraint.count () > 0;
    const bool has_x = curved && claimed.x.size () == n;
    if (curved &&
        (!std::ranges::all_of (claimed.x, [] (double value) { return std::isfinite (value); }) || !has_x))
        return std::nullopt;
    const Multipliers kind (problem, has_x ? claimed.x : std::span<const double> ());
    const auto m = static_cast<std::size_t> (problem.constraints ()),
               rows = static_cast<std::size_t> (problem.affine_constraint.rows ());
    if (claimed.y.size () != m || claimed.doty.size () != rows ||
        (!claimed.snx.empty () && claimed.snx.size () != n))
        return std::nullopt;
    std::vector<double> ray;
    ray.reserve (kind.entries ());
    append (claimed.y, ray);
    append (claimed.doty, ray);
    const std::vector<double> all =
        claimed.snx.empty () && !kind.bounded_members ().empty ()
            ? reduced_costs (problem, {claimed.y, claimed.doty},
                             claimed.x.size () == n ? claimed.x : Numbers (), false)
            : std::vector<double> ();
    for (const std::int32_t member : kind.bounded_members ())
        ray.push_back (
            (claimed.snx.empty () ? Numbers (all) : claimed.snx)[static_cast<std::size_t> (member)]);

    std::optional<Proof> proof = prove (kind, ray);
    if (!proof)
        return std::nullopt;
    Solution certificate = infeasible_solution (problem);
    const double sign = certificate.dual_objective;
    const std::vector<double> multipliers = times (sign, std::move (proof->ray));
    const std::vector<double> products = times (sign, std::move (proof->products));
    const auto part = [] (const std::vector<double>& all_of, std::size_t first, std::size_t count) {
        const auto begin = all_of.begin () + static_cast<std::ptrdiff_t> (first);
        return std::vector<double> (begin, begin + static_cast<std::ptrdiff_t> (count));
    };
    certificate.y = part (multipliers, 0, m);
    certificate.doty = part (multipliers, m, rows);
    certificate.bars = part (products, n, products.size () - n);
    split (certificate.y, sign, certificate.slc, certificate.suc);
    std::vector<double> of_bounds = part (products, 0, n);
    if (problem.cone.count () > 0) {
        certificate.snx.assign (n, 0);
        for (const std::int32_t member : problem.cone.member)
            std::swap (certificate.snx[static_cast<std::size_t> (member)],
                       of_bounds[static_cast<std::size_t> (member)]);
        for (std::size_t k = 0; k < kind.bounded_members ().size (); ++k) {
            const auto j = static_cast<std::size_t> (kind.bounded_members ()[k]);
            of_bounds[j] = std::exchange (certificate.snx[j], multipliers[m + rows + k]);
        }
    }
    split (of_bounds, sign, certificate.slx, certificate.sux);
    if (has_x)
        certificate.xx.assign (claimed.x.begin (), claimed.x.end ());
    certificate.violations.dual = proof->noise_share;
    certificate.violations.dual_absolute = proof->noise_sum;
    return certificate;
}

std::optional<Solution> certify_unbounded (const Problem& problem, std::span<const double> direction,
                                           std::span<const double> barx)
{
    const auto n = static_cast<std::size_t> (problem.variables ());
    std::vector<double> ray;
    ray.reserve (direction.size () + barx.size ());
    append (direction, ray);
    append (barx, ray);
    if (direction.size () != n)
        return std::nullopt;
    std::optional<Proof> proof = prove (Direction (problem), ray);
    if (!proof)
        return std::nullopt;
    Solution certificate = zero_solution (problem);
    certificate.problem_status = KLV_PRO_DUAL_INFEASIBLE;
    certificate.solution_status = KLV_SOLSTA_DUAL_INFEASIBLE_CERTIFICATE;
    certificate.primal_objective = problem.sense == KLV_SENSE_MAXIMIZE ? 1 : -1;
    certificate.xx = times (1, std::move (proof->ray));
    certificate.barx.assign (certificate.xx.begin () + static_cast<std::ptrdiff_t> (n),
                             certificate.xx.end ());
    certificate.xx.resize (n);
    certificate.xc = times (1, std::move (proof->products));
    certificate.xc.resize (static_cast<std::size_t> (problem.constraints ()));
    certificate.violations.primal = proof->noise_share;
    certificate.violations.primal_absolute = proof->noise_sum;
    return certificate;
}

// ---- Bounds that contradict each other -------------------------------------------------------------------

CrossedBounds find_crossed (const Problem& problem, double tolerance)
{
    CrossedBounds crossed;
    const auto look = [&] (const Bounds& bounds, bool variable) {
        for (std::size_t i = 0; i < bounds.key.size (); ++i)
            if (bounds.lower[i] - bounds.upper[i] > tolerance && crossed.count++ == 0) {
                crossed.variable = variable;
                crossed.item = static_cast<std::int32_t> (i);
            }
    };
    look (problem.constraint, false);
    look (problem.variable, true);
    return crossed;
}

Solution certify_crossed (const Problem& problem, const CrossedBounds& crossed)
{
    Solution certificate = infeasible_solution (problem);
    const std::size_t item = static_cast<std::size_t> (crossed.item);
    const Bounds& bounds = crossed.variable ? problem.variable : problem.constraint;
    const double multiplier = certificate.dual_objective / (bounds.lower[item] - bounds.upper[item]);
    (crossed.variable ? certificate.slx : certificate.slc)[item] = multiplier;
    (crossed.variable ? certificate.sux : certificate.suc)[item] = multiplier;
    return certificate;
}

// ---- A certificate that was stored ----------------------------------------------------------------------------

std::optional<Solution> certify_again (const Problem& problem, const GivenSolution& stored, double tolerance)
{
    const auto is_some = [] (const std::vector<double>& values) {
        return std::ranges::any_of (values, [] (double value) { return value != 0; });
    };
    const bool multipliers = is_some (stored.y) || is_some (stored.doty);
    const bool at_point = multipliers && problem.quadratic_constraint.count () > 0;
    if ((!stored.xx.empty () || is_some (stored.barx)) && !at_point)
        return certify_unbounded (problem, stored.xx, stored.barx);
    if (multipliers)
        return certify_infeasible (problem, {stored.y, stored.doty, stored.snx, stored.xx});
    if (const CrossedBounds crossed = find_crossed (problem, tolerance); crossed.count > 0)
        return certify_crossed (problem, crossed);
    return std::nullopt;
}

}
