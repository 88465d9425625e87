// Bounds: two fields become one key and two values for each item.

#include <cmath>
#include <limits>

#include "common/arrays.h"
#include "common/refuse.h"
#include "input/readers.h"

namespace {

constexpr double no_lower_value = -1e30;
constexpr double infinity = std::numeric_limits<double>::infinity ();

class BoundReader {
public:
    BoundReader (KLVtask_t task, std::int32_t n, std::int32_t* keys, double* lower, double* upper)
        : n_ (n), keys_ (keys), lower_ (lower), upper_ (upper)
    {
        KLV_getdouparam (task, KLV_DPAR_BOUND_INFINITY_NUMBER, &threshold_);
        KLV_getdouparam (task, KLV_DPAR_FIXING_TOLERANCE_NUMBER, &tolerance_);
    }

    KLVrescode_t read_lower (const char* name, const mxArray* field);
    KLVrescode_t read_upper (const char* name, const mxArray* field);
    void fix_equal_bounds ();

private:
    KLVrescode_t take_lower (const char* name, std::int32_t item, double value);
    KLVrescode_t check_upper (const char* name, std::int32_t item, double value) const;

    void limit_above (std::int32_t item, double value)
    {
        std::int32_t& key = keys_[item];
        key = key == KLV_BK_LO ? KLV_BK_RA : key == KLV_BK_FR ? KLV_BK_UP : key;
        upper_[item] = value;
    }

    void lift_upper (std::int32_t item)
    {
        std::int32_t& key = keys_[item];
        key = key == KLV_BK_RA ? KLV_BK_LO : key == KLV_BK_UP ? KLV_BK_FR : key;
    }

    std::int32_t n_;
    std::int32_t* keys_;
    double *lower_, *upper_;
    double threshold_ = infinity, tolerance_ = 0;
};

// NaN and -Inf are no bound; a finite value is one, however far below the threshold.
KLVrescode_t BoundReader::take_lower (const char* name, std::int32_t item, double value)
{
    if (value >= threshold_)
        return refuse (KLV_RES_BOUND_BEYOND_INFINITY, "%s[%i] is too large", name, item + 1);
    keys_[item] = std::isfinite (value) ? KLV_BK_LO : KLV_BK_FR;
    lower_[item] = std::isfinite (value) ? value : no_lower_value;
    return KLV_RES_OK;
}

KLVrescode_t BoundReader::read_lower (const char* name, const mxArray* field)
{
    KLVrescode_t code = KLV_RES_OK;
    if (!is_given (field)) {
        for (std::int32_t item = 0; item < n_; ++item)
            take_lower (name, item, -infinity);
    } else if (mxIsSparse (field)) {    // the caller's zeros stand for entries that are not stored
        static_assert (KLV_BK_LO == 0);
        for_each_entry (field, [&] (std::int32_t item, double value) {
            if (const KLVrescode_t failure = take_lower (name, item, value))
                code = failure;
            return true;    // every fault is reported
        });
    } else {
        const double* values = mxGetPr (field);
        for (std::int32_t item = 0; item < n_ && code == KLV_RES_OK; ++item)
            code = take_lower (name, item, values[item]);
    }
    return code;
}

KLVrescode_t BoundReader::check_upper (const char* name, std::int32_t item, double value) const
{
    if (value <= -threshold_)
        return refuse (KLV_RES_BOUND_BEYOND_INFINITY, "%s[%i] is too small", name, item + 1);
    return KLV_RES_OK;
}

// A value above the threshold is a bound in a sparse vector, and no bound in a dense one, which must say "none" somehow.
KLVrescode_t BoundReader::read_upper (const char* name, const mxArray* field)
{
    KLVrescode_t code = KLV_RES_OK;
    if (!is_given (field))
        return code;
    if (mxIsSparse (field)) {
        for (std::int32_t item = 0; item < n_; ++item)
            limit_above (item, 0.0);
        for_each_entry (field, [&] (std::int32_t item, double value) {
            code = check_upper (name, item, value);
            if (std::isfinite (value))
                upper_[item] = value;
            else
                lift_upper (item);
            return code == KLV_RES_OK;
        });
    } else {
        const double* values = mxGetPr (field);
        for (std::int32_t item = 0; item < n_ && code == KLV_RES_OK; ++item) {
            code = check_upper (name, item, values[item]);
            if (std::isfinite (values[item]) && values[item] <= threshold_)
                limit_above (item, values[item]);
        }
    }
    return code;
}

void BoundReader::fix_equal_bounds ()
{
    for (std::int32_t item = 0; item < n_; ++item)
        if (keys_[item] == KLV_BK_RA && std::fabs (lower_[item] - upper_[item]) <= tolerance_) {
            keys_[item] = KLV_BK_FX;
            upper_[item] = lower_[item];
        }
}

KLVrescode_t check_field (const char* name, const mxArray* field, std::int32_t n)
{
    if (!is_given (field))
        return KLV_RES_OK;
    if (!isvector (field, static_cast<std::uint64_t> (n), 1))
        return refuse (KLV_RES_ARGUMENT_LENGTH, "prob.%s has invalid dimension", name);
    return check_values (name, field);
}

}

KLVrescode_t setbk (KLVtask_t task, std::int32_t n, const char* lowername, const mxArray* lower,
                    const char* uppername, const mxArray* upper, std::int32_t* boundkeys, double* lowervalues,
                    double* uppervalues)
{
    BoundReader bounds (task, n, boundkeys, lowervalues, uppervalues);
    KLVrescode_t code = check_field (lowername, lower, n);
    if (code == KLV_RES_OK)
        code = check_field (uppername, upper, n);
    if (code == KLV_RES_OK)
        code = bounds.read_lower (lowername, lower);
    if (code == KLV_RES_OK)
        code = bounds.read_upper (uppername, upper);
    if (code == KLV_RES_OK)
        bounds.fix_equal_bounds ();
    return code;
}
