// Checks that the fields of affine conic constraints go together. Empty fields count as present.

#include "common/arrays.h"
#include "common/refuse.h"
#include "input/readers.h"

KLVrescode_t check_conic_fields (const ProblemFields& fields, std::int32_t numvar)
{
    KLVrescode_t code = KLV_RES_OK;
    const auto fail = [&] (const char* text) { code = refuse (KLV_RES_ARGUMENT, "%s", text); };

    std::uint64_t expressions = 0;
    if (fields.f) {
        if (!mxIsSparse (fields.f))
            fail ("prob.f must be a sparse matrix");
        if (fields.qoval || fields.qcval)
            fail ("prob.f cannot be specified together with prob.qoval or prob.qcval");
        if (!fields.cones && !fields.accs)
            fail ("prob.f specified but neither prob.accs nor prob.cones found");
        if (mxGetN (fields.f) != static_cast<std::uint64_t> (numvar))
            fail ("prob.f has wrong number of columns, should have size(prob.f,2) == size(prob.a,2)");
        expressions = mxGetM (fields.f);
    }
    if (fields.g) {
        if (!fields.f)
            fail ("prob.g cannot be specified without prob.f");
        if (!isvector (fields.g, expressions, 0))
            fail ("prob.g must be a dense vector with length(prob.g) == size(prob.f,1)");
    }
    if (fields.cones && fields.accs)
        fail ("prob.cones and prob.accs cannot be simultaneously specified");
    return code;
}
