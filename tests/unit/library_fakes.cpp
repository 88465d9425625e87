#include "tests/unit/library_fakes.h"

#include <algorithm>

namespace {

// Whether this call of a function is to fail.
bool fails (const char* function, int call)
{
    return library_fakes && library_fakes->failing_function == std::string (function) &&
           call >= library_fakes->failing_call;
}

KLVrescode_t give (const QuadraticTerms& terms, std::int64_t* count, std::int32_t* rows,
                   std::int32_t* columns, double* values)
{
    *count = static_cast<std::int64_t> (terms.values.size ());
    std::ranges::copy (terms.rows, rows);
    std::ranges::copy (terms.columns, columns);
    std::ranges::copy (terms.values, values);
    return KLV_RES_OK;
}

}

extern "C" {

KLVrescode_t __real_KLV_getnumqobjnz (KLVtask_t, std::int64_t*);
KLVrescode_t __real_KLV_getnumqconknz (KLVtask_t, std::int32_t, std::int64_t*);
KLVrescode_t __real_KLV_getqobj (KLVtask_t, std::int64_t, std::int64_t*, std::int32_t*, std::int32_t*,
                                 double*);
KLVrescode_t __real_KLV_getqconk (KLVtask_t, std::int32_t, std::int64_t, std::int64_t*, std::int32_t*,
                                  std::int32_t*, double*);
KLVrescode_t __real_KLV_getnumdjc (KLVtask_t, std::int64_t*);
KLVrescode_t __real_KLV_getacol (KLVtask_t, std::int32_t, std::int32_t*, std::int32_t*, double*);
KLVrescode_t __real_KLV_getvarname (KLVtask_t, std::int32_t, std::int32_t, char*);

KLVrescode_t __wrap_KLV_getnumqobjnz (KLVtask_t task, std::int64_t* count)
{
    if (!library_fakes)
        return __real_KLV_getnumqobjnz (task, count);
    *count = static_cast<std::int64_t> (library_fakes->objective.values.size ());
    return KLV_RES_OK;
}

KLVrescode_t __wrap_KLV_getnumqconknz (KLVtask_t task, std::int32_t i, std::int64_t* count)
{
    if (!library_fakes || library_fakes->constraints.empty ())
        return __real_KLV_getnumqconknz (task, i, count);
    *count =
        static_cast<std::int64_t> (library_fakes->constraints[static_cast<std::size_t> (i)].values.size ()) +
        (i == 0 ? library_fakes->missing_terms : 0);
    return KLV_RES_OK;
}

KLVrescode_t __wrap_KLV_getqobj (KLVtask_t task, std::int64_t room, std::int64_t* count, std::int32_t* rows,
                                 std::int32_t* columns, double* values)
{
    if (!library_fakes)
        return __real_KLV_getqobj (task, room, count, rows, columns, values);
    return give (library_fakes->objective, count, rows, columns, values);
}

KLVrescode_t __wrap_KLV_getqconk (KLVtask_t task, std::int32_t i, std::int64_t room, std::int64_t* count,
                                  std::int32_t* rows, std::int32_t* columns, double* values)
{
    if (!library_fakes)
        return __real_KLV_getqconk (task, i, room, count, rows, columns, values);
    if (fails ("KLV_getqconk", i))
        return library_fakes->failure;
    return give (library_fakes->constraints[static_cast<std::size_t> (i)], count, rows, columns, values);
}

KLVrescode_t __wrap_KLV_getnumdjc (KLVtask_t task, std::int64_t* count)
{
    if (!library_fakes)
        return __real_KLV_getnumdjc (task, count);
    *count = library_fakes->disjunctive;
    return KLV_RES_OK;
}

KLVrescode_t __wrap_KLV_getacol (KLVtask_t task, std::int32_t j, std::int32_t* count, std::int32_t* rows,
                                 double* values)
{
    return fails ("KLV_getacol", j) ? library_fakes->failure
                                    : __real_KLV_getacol (task, j, count, rows, values);
}

KLVrescode_t __wrap_KLV_getvarname (KLVtask_t task, std::int32_t j, std::int32_t size, char* name)
{
    return fails ("KLV_getvarname", j) ? library_fakes->failure : __real_KLV_getvarname (task, j, size, name);
}
}
