#include "input/domains.h"

namespace {

using Make = KLVrescode_t (*) (KLVtask_t task, std::int64_t size, std::span<const double> exponents,
                               std::int64_t* domain);

template <auto append>
KLVrescode_t sized (KLVtask_t task, std::int64_t size, std::span<const double>, std::int64_t* domain)
{
    return append (task, size, domain);
}

template <auto append>
KLVrescode_t of_one_size (KLVtask_t task, std::int64_t, std::span<const double>, std::int64_t* domain)
{
    return append (task, domain);
}

template <auto append>
KLVrescode_t power (KLVtask_t task, std::int64_t size, std::span<const double> exponents,
                    std::int64_t* domain)
{
    return append (task, size, static_cast<std::int64_t> (exponents.size ()), exponents.data (), domain);
}

// By KLVdomaintype.
constexpr Make makers[] = {
    sized<KLV_appendrdomain>,
    sized<KLV_appendrzerodomain>,
    sized<KLV_appendrplusdomain>,
    sized<KLV_appendrminusdomain>,
    sized<KLV_appendquadraticconedomain>,
    sized<KLV_appendrquadraticconedomain>,
    of_one_size<KLV_appendprimalexpconedomain>,
    of_one_size<KLV_appenddualexpconedomain>,
    power<KLV_appendprimalpowerconedomain>,
    power<KLV_appenddualpowerconedomain>,
    sized<KLV_appendprimalgeomeanconedomain>,
    sized<KLV_appenddualgeomeanconedomain>,
    sized<KLV_appendsvecpsdconedomain>,
};
static_assert (std::size (makers) == KLV_DOMAIN_COUNT);

}

KLVrescode_t make_domain (KLVtask_t task, std::int32_t type, std::int64_t size,
                          std::span<const double> exponents, std::int64_t* domain)
{
    return makers[type](task, size, exponents, domain);
}
