/* The header compiles as C11, and a problem is stated and solved from C. */
#include "kalvo.h"

const char* fault_from_c (void);

static int32_t go_on (KLVtask_t task, void* handle, uint32_t caller, const double* douinf,
                      const int32_t* intinf, const int64_t* lintinf)
{
    ++*(int*)handle;
    return task == NULL || caller == 0 || douinf != NULL || intinf != NULL || lintinf != NULL;
}

/* max 3 x + 2 y: x + y <= 4, 0 <= x <= 3, 0 <= y: the optimum is 3 * 3 + 2 * 1. */
const char* fault_from_c (void)
{
    const int32_t row = 0, below = KLV_BK_UP, above[] = {KLV_BK_RA, KLV_BK_LO};
    const double ones[] = {1}, zeros[] = {0, 0}, four = 4, largest[] = {3, 0}, costs[] = {3, 2};
    double optimum = 0, x[2] = {0, 0};
    int calls = 0;
    KLVtask_t task = NULL;
    const char* fault = "";
    if (KLV_makeemptytask (NULL, &task) || KLV_appendvars (task, 2) || KLV_appendcons (task, 1) ||
        KLV_putacol (task, 0, 1, &row, ones) || KLV_putacol (task, 1, 1, &row, ones) ||
        KLV_putconboundslice (task, 0, 1, &below, zeros, &four) || KLV_putcslice (task, 0, 2, costs) ||
        KLV_putvarboundslice (task, 0, 2, above, zeros, largest) ||
        KLV_putobjsense (task, KLV_SENSE_MAXIMIZE) || KLV_putcallbackfunc (task, go_on, &calls))
        fault = "the problem was not accepted";
    else if (KLV_optimize (task) != KLV_RES_OK || calls == 0)
        fault = "the problem was not solved";
    else if (KLV_getprimalobj (task, KLV_SOL_BAS, &optimum) || KLV_getxxslice (task, KLV_SOL_BAS, 0, 2, x) ||
             optimum < 10.999999 || optimum > 11.000001 || x[0] < 2.999999 || x[1] > 1.000001)
        fault = "the solution is wrong";
    KLV_deletetask (&task);
    return fault;
}
