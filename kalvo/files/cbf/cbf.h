// CBF files, versions 1 to 4: conic problems without names.
#pragma once

#include "kalvo/files/text/output_file.h"
#include "kalvo/model/domain.h"

#include <array>
#include <string>
#include <string_view>

namespace klv {

// The problem of a CBF file; prints its warnings on the task. Linear cones become bounds of variables and linear constraints. Other
// cones of VAR become cones on variables when no others come beside them that a cone on variables cannot be; otherwise all become
// affine conic constraints. PSDCON becomes constraints in semidefinite cones: entries off the diagonal times the root of 2, rounded.
Problem read_cbf (Task& task, const std::string& path, Pacer& pacer);

// The first item that CBF cannot hold.
std::string unfit_for_cbf (const Problem& problem);

void write_cbf (Task& task, OutputFile& file);

struct CbfCone {
    std::string_view word;
    KLVdomaintype domain;
    int version = 1;
};

constexpr int cbf_version = 4;

// Indexed by domain. Words of power cones come behind "@" and the number of their exponents, and ":".
constexpr std::array cbf_cones{
    CbfCone{"F", KLV_DOMAIN_FREE},
    CbfCone{"L=", KLV_DOMAIN_ZERO},
    CbfCone{"L+", KLV_DOMAIN_NONNEGATIVE},
    CbfCone{"L-", KLV_DOMAIN_NONPOSITIVE},
    CbfCone{"Q", KLV_DOMAIN_QUADRATIC_CONE},
    CbfCone{"QR", KLV_DOMAIN_ROTATED_QUADRATIC_CONE},
    CbfCone{"EXP", KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, 2},
    CbfCone{"EXP*", KLV_DOMAIN_DUAL_EXPONENTIAL_CONE, 2},
    CbfCone{"POW", KLV_DOMAIN_PRIMAL_POWER_CONE, 3},
    CbfCone{"POW*", KLV_DOMAIN_DUAL_POWER_CONE, 3},
    CbfCone{"GMEANABS", KLV_DOMAIN_PRIMAL_GEOMETRIC_MEAN_CONE, 4},
    CbfCone{"GMEANABS*", KLV_DOMAIN_DUAL_GEOMETRIC_MEAN_CONE, 4},
    CbfCone{"SVECPSD", KLV_DOMAIN_SEMIDEFINITE_CONE, 4},
};
static_assert ([] {
    for (std::size_t i = 0; i < cbf_cones.size (); ++i)
        if (cbf_cones[i].domain != static_cast<KLVdomaintype> (i))
            return false;
    return cbf_cones.size () == KLV_DOMAIN_COUNT;
}());

// Free, zero, nonnegative and nonpositive.
constexpr bool is_linear (KLVdomaintype domain)
{
    return domain < KLV_DOMAIN_QUADRATIC_CONE;
}

}
