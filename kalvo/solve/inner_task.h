// A problem of the library's own, optimised on behalf of a task as any other problem is.
#pragma once

#include "kalvo/task/task.h"

#include <functional>

namespace klv {

// Optimises a task's problem.
using Optimizer = std::function<KLVrescode_t (Task& task)>;

// A task with the parameters of the outer one, whose progress callback is asked. What is printed goes to the outer task's streams,
// but for errors, which its last error tells.
class InnerTask {
public:
    enum class Lines { printed, dropped };

    InnerTask (Task& outer, Lines lines);
    InnerTask (const InnerTask&) = delete;
    InnerTask& operator= (const InnerTask&) = delete;

    Task& operator* () { return task_; }
    Task* operator->() { return &task_; }

    KLVrescode_t optimize (const Optimizer& optimizer);
    // The slot that answers the problem, or null.
    const Solution* answer () const;

private:
    static std::int32_t ask (KLVtask_t task, void* self, std::uint32_t caller, const double*,
                             const std::int32_t*, const std::int64_t*);
    static void print_message (void* self, const char* line);
    static void print_warning (void* self, const char* line);

    Task& outer_;
    Task task_;
};

}
