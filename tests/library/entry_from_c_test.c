/* The header compiles as C11, and a problem is stated and solved from C: min x, x >= 3. */
#include "kalvo.h"

const char* fault_from_c (void);

const char* fault_from_c (void)
{
    const int32_t key = KLV_BK_LO;
    const double cost = 1, bound = 3;
    double optimum = 0;
    KLVtask_t task = NULL;
    const KLVrescode_t code = KLV_makeemptytask (NULL, &task) || KLV_appendvars (task, 1) ||
                              KLV_putcslice (task, 0, 1, &cost) ||
                              KLV_putvarboundslice (task, 0, 1, &key, &bound, &bound) ||
                              KLV_optimize (task) || KLV_getprimalobj (task, KLV_SOL_BAS, &optimum);
    KLV_deletetask (&task);
    return code == KLV_RES_OK && optimum > 2.999999 && optimum < 3.000001 ? "" : "not solved";
}
