// Domains of affine conic constraints, and the cones among them that variables can lie in.
#pragma once

#include "kalvo/include/kalvo.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace klv {

struct DomainRow {
    KLVdomaintype type;
    const char* name;    // in messages
    std::int32_t smallest = 0;
    bool only_size = false;    // no other size than the smallest
    bool has_exponents = false;
};

constexpr std::array domain_rows{
    DomainRow{KLV_DOMAIN_FREE, "free domain"},
    DomainRow{KLV_DOMAIN_ZERO, "zero domain"},
    DomainRow{KLV_DOMAIN_NONNEGATIVE, "nonnegative domain"},
    DomainRow{KLV_DOMAIN_NONPOSITIVE, "nonpositive domain"},
    DomainRow{KLV_DOMAIN_QUADRATIC_CONE, "quadratic cone", 1},
    DomainRow{KLV_DOMAIN_ROTATED_QUADRATIC_CONE, "rotated quadratic cone", 2},
    DomainRow{KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, "primal exponential cone", 3, true},
    DomainRow{KLV_DOMAIN_DUAL_EXPONENTIAL_CONE, "dual exponential cone", 3, true},
    DomainRow{KLV_DOMAIN_PRIMAL_POWER_CONE, "primal power cone", 1, false, true},
    DomainRow{KLV_DOMAIN_DUAL_POWER_CONE, "dual power cone", 1, false, true},
    DomainRow{KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE, "primal geometric mean cone", 2},
    DomainRow{KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE, "dual geometric mean cone", 2},
    DomainRow{KLV_DOMAIN_SEMIDEFINITE_CONE, "semidefinite cone"},
};
static_assert ([] {
    for (std::size_t i = 0; i < domain_rows.size (); ++i)
        if (domain_rows[i].type != static_cast<KLVdomaintype> (i))
            return false;
    return domain_rows.size () == KLV_DOMAIN_COUNT;
}());

// The domain that each KLVconetype is.
constexpr std::array<KLVdomaintype, KLV_CONE_COUNT> domain_of_cone{KLV_DOMAIN_QUADRATIC_CONE,
                                                                   KLV_DOMAIN_ROTATED_QUADRATIC_CONE,
                                                                   KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE,
                                                                   KLV_DOMAIN_DUAL_EXPONENTIAL_CONE,
                                                                   KLV_DOMAIN_PRIMAL_POWER_CONE,
                                                                   KLV_DOMAIN_DUAL_POWER_CONE,
                                                                   KLV_DOMAIN_ZERO};

// What is wrong with such a domain, in words that go on "A quadratic cone of size 0 ..."; nothing when it is right. The type is
// one of KLVdomaintype.
std::optional<std::string> domain_fault (std::int32_t type, std::int64_t size,
                                         std::span<const double> exponents);

// The same for a cone of variables: "a quadratic cone can't have 0 members: ...".
std::optional<std::string> cone_fault (std::int32_t type, double parameter, std::int64_t members);

// The entries of the lower triangle of a symmetric matrix.
constexpr std::int64_t packed_length (std::int32_t order)
{
    return std::int64_t{order} * (order + std::int64_t{1}) / 2;
}

// Domains, in the order in which they were made.
struct Domains {
    std::vector<std::uint8_t> type;    // KLVdomaintype
    std::vector<std::int32_t> size;
    std::vector<std::int32_t> exponents_end;    // of each domain, in `exponent`
    std::vector<double> exponent;

    std::int32_t count () const { return static_cast<std::int32_t> (type.size ()); }
    std::span<const double> exponents (std::int32_t which) const;
    // The domain must be right. Either is done or, with std::bad_alloc, not begun.
    void append (std::int32_t new_type, std::int32_t new_size, std::span<const double> exponents);
};

}
