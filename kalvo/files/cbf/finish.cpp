// The problem that a CBF file's sections make.
#include "kalvo/files/cbf/reader.h"
#include "kalvo/model/text.h"

#include <limits>
#include <numeric>
#include <optional>

namespace klv {

// The type of a cone that variables in a domain can be members of; a power cone's parameter is its first exponent.
static std::optional<std::int32_t> cone_of (KLVdomaintype domain, std::span<const double> exponents)
{
    const auto* found = std::ranges::find (domain_of_cone, domain);
    const bool weighted = !exponents.empty () &&
                          !(exponents.size () == 2 && exponents[0] < 1 && exponents[1] == 1 - exponents[0]);
    if (found == domain_of_cone.end () || weighted)
        return std::nullopt;
    return static_cast<std::int32_t> (found - domain_of_cone.begin ());
}

bool CbfReader::needs_expressions () const
{
    const auto is_conic = [] (const Part& part) { return !is_linear (part.domain); };
    return !matrix_rows_.empty () || std::ranges::any_of (row_.parts, is_conic) ||
           std::ranges::any_of (variable_.parts, [&] (const Part& part) {
               return is_conic (part) && !cone_of (part.domain, part.exponents);
           });
}

// Numbers linear constraints and expressions: those of VAR, of CON, of PSDCON.
void CbfReader::settle ()
{
    if (settled_)
        return;
    settled_ = true;
    expressions_needed_ = needs_expressions ();
    const auto number = [] (Part& part, std::int32_t& count) {
        part.place = count;
        if (part.size > std::numeric_limits<std::int32_t>::max () - count)
            throw syntax ("more rows of cones than a task can hold");
        count += part.size;
    };
    for (Part& part : variable_.parts)
        if (expressions_needed_ && !is_linear (part.domain))
            number (part, expressions_);
    for (Part& part : row_.parts)
        number (part, is_linear (part.domain) ? constraints_ : expressions_);
    for (Part& part : matrix_rows_)
        number (part, expressions_);
}

void CbfReader::finish ()
{
    if (!(seen_ & 1U))
        throw syntax ("the file has no section VER");
    settle ();
    check_declared (std::int64_t{variable_.size} + constraints_ + expressions_, lines_.number ());
    finish_variables ();
    finish_constraints ();
    finish_cones ();
}

// Bounds that say what a linear domain says of values whose distance from the domain's apex is given.
static void put_bounds (Bounds& bounds, std::size_t item, KLVdomaintype domain, double value)
{
    if (domain == KLV_DOMAIN_ZERO || domain == KLV_DOMAIN_NONNEGATIVE)
        bounds.lower[item] = value;
    if (domain == KLV_DOMAIN_ZERO || domain == KLV_DOMAIN_NONPOSITIVE)
        bounds.upper[item] = value;
    bounds.key[item] =
        domain == KLV_DOMAIN_ZERO ? std::uint8_t{KLV_BK_FX} : key_of (bounds.lower[item], bounds.upper[item]);
}

void CbfReader::finish_variables ()
{
    Problem& problem = draft_.problem;
    problem.append_variables (variable_.size);
    for (const Part& part : variable_.parts)
        for (std::int32_t i = 0; i < part.size && is_linear (part.domain); ++i)
            put_bounds (problem.variable, static_cast<std::size_t> (part.begin + i), part.domain, 0);
    cost_.put (problem.cost, "OBJACOORD");
    for (const std::int32_t j : integer_)
        if (std::exchange (problem.integer[static_cast<std::size_t> (j)], KLV_VAR_INTEGER) == KLV_VAR_INTEGER)
            throw syntax (text ("INT has the variable ", j, " twice"));
    problem.integers = static_cast<std::int32_t> (integer_.size ());
    problem.semidefinite.append (orders_);
    problem.semidefinite.objective = objective_terms_.terms ("OBJFCOORD");
    problem.semidefinite.constraint = constraint_terms_.terms ("FCOORD");
    problem.semidefinite.expression = expression_terms_.terms ("FCOORD");
}

void CbfReader::finish_constraints ()
{
    Problem& problem = draft_.problem;
    problem.append_constraints (constraints_);
    std::vector<double> value (static_cast<std::size_t> (constraints_), 0.0);
    bound_.put (value, "BCOORD");
    for (const Part& part : row_.parts)
        for (std::int32_t i = 0; i < part.size && is_linear (part.domain); ++i) {
            const auto item = static_cast<std::size_t> (part.place + i);
            put_bounds (problem.constraint, item, part.domain, value[item]);
        }
    linear_.put (problem.matrix, constraints_, "ACOORD");
}

void CbfReader::finish_cones ()
{
    Problem& problem = draft_.problem;
    AffineExpressions& affine = problem.affine;
    affine.append (expressions_, problem.variables ());
    const auto constrain = [&] (const Part& part) {
        problem.domain.append (part.domain, part.size, part.exponents);
        problem.affine_constraint.append (problem.domain.count () - 1, part.place, part.size, {});
    };
    for (const Part& part : variable_.parts) {
        if (is_linear (part.domain))
            continue;
        if (expressions_needed_) {
            for (std::int32_t i = 0; i < part.size; ++i)
                affine_.add (part.place + i, part.begin + i, 1);
            constrain (part);
        } else {
            std::vector<std::int32_t> members (static_cast<std::size_t> (part.size));
            std::iota (members.begin (), members.end (), part.begin);
            problem.cone.prepare (members, problem.variables ());
            problem.cone.append (*cone_of (part.domain, part.exponents),
                                 part.exponents.empty () ? 0 : part.exponents[0], members);
        }
    }
    for (const std::vector<Part>* parts : {&row_.parts, &matrix_rows_})
        for (const Part& part : *parts)
            if (!is_linear (part.domain))
                constrain (part);
    constant_.put (affine.g, "BCOORD or DCOORD");
    affine_.put (affine.f, expressions_, "ACOORD or HCOORD");
}

}
