#include "kalvo/task/operations.h"

namespace klv {

KLVrescode_t optimize (Task& task)
{
    return task.fail (KLV_RES_NOT_AVAILABLE, "There is no optimiser.");
}

KLVrescode_t solution_summary (Task& task, std::int32_t)
{
    return task.fail (KLV_RES_NOT_AVAILABLE, "There is no summary.");
}

KLVrescode_t optimizer_summary (Task& task, std::int32_t)
{
    return task.fail (KLV_RES_NOT_AVAILABLE, "There is no summary.");
}

}
