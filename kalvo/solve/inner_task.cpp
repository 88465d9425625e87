#include "kalvo/solve/inner_task.h"

#include "kalvo/model/refusal.h"

#include <string_view>
#include <utility>

namespace klv {

InnerTask::InnerTask (Task& outer, Lines lines) : outer_ (outer)
{
    task_.parameters = outer.parameters;
    task_.set_callback (ask, this);
    if (lines == Lines::dropped)
        return;
    task_.streams.link_function (KLV_STREAM_MESSAGES, this, print_message);
    task_.streams.link_function (KLV_STREAM_WARNINGS, this, print_warning);
}

// A progress function reads the information of the task that it knows.
std::int32_t InnerTask::ask (KLVtask_t task, void* self, std::uint32_t caller, const double*,
                             const std::int32_t*, const std::int64_t*)
{
    Task& outer = static_cast<InnerTask*> (self)->outer_;
    const Information before = outer.information;
    outer.information = task->information;
    const std::int32_t answer = outer.ask_callback (caller);
    outer.information = before;
    return answer;
}

void InnerTask::print_message (void* self, const char* line)
{
    const std::string_view whole = line;
    static_cast<InnerTask*> (self)->outer_.streams.print (Kind::message, whole.substr (0, whole.size () - 1));
}

void InnerTask::print_warning (void* self, const char* line)
{
    const std::string_view whole = line;
    if (!whole.starts_with ("Error "))
        static_cast<InnerTask*> (self)->outer_.streams.print (Kind::warning,
                                                              whole.substr (0, whole.size () - 1));
}

KLVrescode_t InnerTask::optimize (const Optimizer& optimizer)
{
    try {
        return optimizer (task_);
    } catch (Refusal& refusal) {
        return task_.fail (refusal.code, std::move (refusal.message));
    }
}

const Solution* InnerTask::answer () const
{
    for (const KLVsoltype slot : {KLV_SOL_INT, KLV_SOL_BAS, KLV_SOL_ITR})
        if (const std::optional<Solution>& solution = task_.solutions[slot])
            return &*solution;
    return nullptr;
}

}
