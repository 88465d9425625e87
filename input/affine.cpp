// Affine expressions, and the constraints that put consecutive ones into domains.

#include <algorithm>
#include <optional>

#include "common/arrays.h"
#include "common/refuse.h"
#include "host/holders.h"
#include "input/domains.h"
#include "input/readers.h"

// Empty fields count as present. Every fault is reported.
KLVrescode_t check_conic_fields (const ProblemFields& fields)
{
    KLVrescode_t code = KLV_RES_OK;
    const auto fail = [&] (const char* text) { code = refuse (KLV_RES_ARGUMENT, "%s", text); };

    std::uint64_t expressions = 0;
    if (fields.f) {
        if (!mxIsSparse (fields.f))
            fail ("prob.f must be a sparse matrix");
        else if (!mxIsDouble (fields.f))
            fail ("prob.f is not a double matrix");
        else if (mxIsComplex (fields.f))
            fail ("prob.f is complex");
        if (fields.qoval || fields.qcval)
            fail ("prob.f cannot be specified together with prob.qoval or prob.qcval");
        if (!fields.cones && !fields.accs)
            fail ("prob.f specified but neither prob.accs nor prob.cones found");
        if (mxGetN (fields.f) != mxGetN (fields.a))
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

std::int64_t count_expressions (const ProblemFields& fields)
{
    return fields.f ? static_cast<std::int64_t> (mxGetM (fields.f)) : 0;
}

static KLVrescode_t put_coefficients (KLVtask_t task, const mxArray* f)
{
    const mwIndex *starts = mxGetJc (f), *rows = mxGetIr (f);
    const double* values = mxGetPr (f);
    const auto numvar = static_cast<std::int32_t> (mxGetN (f));
    mwIndex most = 0;
    for (std::int32_t j = 0; j < numvar; ++j)
        most = std::max (most, starts[j + 1] - starts[j]);
    if (most == 0)
        return KLV_RES_OK;
    const auto indices = host::allocate<std::int64_t> (most);
    if (!indices || !values)
        return KLV_RES_OUT_OF_MEMORY;
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t j = 0; j < numvar && code == KLV_RES_OK; ++j) {
        const mwIndex start = starts[j], count = starts[j + 1] - start;
        std::copy_n (rows + start, count, indices.get ());
        code = KLV_putafefcol (task, j, static_cast<std::int64_t> (count), indices.get (), values + start);
    }
    return code;
}

KLVrescode_t putaffine (KLVtask_t task, const ProblemFields& fields)
{
    const std::int64_t count = count_expressions (fields);
    if (count == 0)
        return KLV_RES_OK;
    const KLVrescode_t code = put_coefficients (task, fields.f);
    if (code != KLV_RES_OK || !fields.g)
        return code;
    const double* constants = mxGetPr (fields.g);
    return constants ? KLV_putafegslice (task, 0, count, constants) : KLV_RES_OUT_OF_MEMORY;
}

// ---- The list of domains ---------------------------------------------------------------------------------

namespace {

struct Domain {
    std::int64_t index = -1;
    std::int64_t size = 0;
    std::int32_t taken = 2;    // numbers of the list
};

// A number of the list that is to be whole; `position` counts from 0.
KLVrescode_t read_whole (const double* list, std::int32_t position, std::int64_t& number)
{
    const auto whole = truncate_to_int64 (list[position]);
    number = whole.value_or (0);
    return whole ? KLV_RES_OK
                 : refuse (KLV_RES_ARGUMENT, "prob.accs(%lld)", static_cast<long long> (position) + 1);
}

// Reads the entry at `position` of a list of `length` numbers and makes its domain.
KLVrescode_t accs_read_domain (KLVtask_t task, const double* list, std::int32_t position, std::int32_t length,
                               Domain& domain)
{
    const std::int32_t remaining = length - position;
    if (remaining < 2)
        return refuse (KLV_RES_ARGUMENT, "Premature end of prob.acc: expected domain type and dimension\n");
    const std::int32_t type = truncate_to_int32 (list[position]).value_or (-1);
    if (type < 0 || type >= KLV_DOMAIN_COUNT)
        return refuse (KLV_RES_ARGUMENT, "prob.accs(%lld) is invalid domain-type\n",
                       static_cast<long long> (position) + 1);
    if (const KLVrescode_t code = read_whole (list, position + 1, domain.size))
        return code;
    std::int64_t exponents = 0;
    if (is_power_domain (type)) {
        if (remaining < 3)
            return refuse (KLV_RES_ARGUMENT,
                           "Premature end of prob.acc: expected nleft for the power cone\n");
        if (const KLVrescode_t code = read_whole (list, position + 2, exponents))
            return code;
        if (exponents < 0)
            return refuse (KLV_RES_ARGUMENT, "prob.accs(%lld)", static_cast<long long> (position) + 3);
        if (exponents > remaining - 3)
            return refuse (KLV_RES_ARGUMENT, "Premature end of prob.acc: not enough power cone alphas\n");
        domain.taken = static_cast<std::int32_t> (exponents + 3);
    }
    return make_domain (task, type, domain.size,
                        {list + position + domain.taken - exponents, static_cast<std::size_t> (exponents)},
                        &domain.index);
}

}

KLVrescode_t putaccs (KLVtask_t task, const mxArray* accs, std::int64_t expressions)
{
    if (!is_given (accs))
        return KLV_RES_OK;
    if (!mxIsDouble (accs) || mxIsSparse (accs) || !is_countable (mxGetNumberOfElements (accs)))
        return refuse (KLV_RES_ARGUMENT, "prob.accs");
    const double* list = mxGetPr (accs);
    if (!list)
        return KLV_RES_OUT_OF_MEMORY;
    const auto length = static_cast<std::int32_t> (mxGetNumberOfElements (accs));
    std::int64_t used = 0;
    for (std::int32_t position = 0; position < length;) {
        Domain domain;
        if (const KLVrescode_t code = accs_read_domain (task, list, position, length, domain))
            return code;
        if (domain.size > expressions - used)
            return refuse (
                KLV_RES_ARGUMENT,
                "Acc number %lld of dimension %lld is too long. Must be at most %lld long to match prob.f",
                static_cast<long long> (position) + 1, static_cast<long long> (domain.size),
                static_cast<long long> (expressions - used));
        if (const KLVrescode_t code = KLV_appendaccseq (task, domain.index, domain.size, used, nullptr))
            return code;
        position += domain.taken;
        used += domain.size;
    }
    if (used != expressions)
        return refuse (KLV_RES_ARGUMENT,
                       "Total dimension of cones in prob.accs does not match size(prob.f, 1)");
    return KLV_RES_OK;
}
