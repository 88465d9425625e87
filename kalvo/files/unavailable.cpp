#include "kalvo/task/operations.h"

namespace klv {

KLVrescode_t read_problem (Task& task, const char*)
{
    return task.fail (KLV_RES_NOT_AVAILABLE, "Problem files can't be read.");
}

KLVrescode_t write_problem (Task& task, const char*)
{
    return task.fail (KLV_RES_NOT_AVAILABLE, "Problem files can't be written.");
}

}
