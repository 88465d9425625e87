// A task: the problem, its parameters, information, solutions, streams and callback.
#pragma once

#include "kalvo.h"
#include "kalvo/tables/items.h"
#include "kalvo/tables/settings.h"
#include "kalvo/task/problem.h"
#include "kalvo/task/solution.h"
#include "kalvo/task/streams.h"
#include "kalvo/task/values.h"

#include <array>
#include <memory>
#include <optional>
#include <string>

struct KLV_task {
    // The problem is shared with runs of engines that may outlive the call, so it is copied before it is changed
    // while someone else still holds it.
    const klv::Problem& problem () const { return *problem_; }
    std::shared_ptr<const klv::Problem> share_problem () const { return problem_; }
    klv::Problem& edit_problem ();                      // throws std::bad_alloc
    void replace_problem (klv::Problem&& problem);      // names, data and solutions of the old one are gone

    klv::Parameters parameters;
    klv::Information information;
    klv::Streams streams;
    std::array<std::optional<klv::Solution>, KLV_SOL_COUNT> solutions;

    // Records an error, prints it on the error streams and returns its code: `return task.fail (code, "...")`.
    KLVrescode_t fail (KLVrescode_t code, std::string message);
    void warn (std::string message);                    // one line on the warning streams
    void say (std::string message);                     // one line on the message streams

    // Runs the progress callback; its answer. 0 when there is none.
    std::int32_t ask_callback (std::uint32_t caller);

private:
    std::shared_ptr<klv::Problem> problem_ = std::make_shared<klv::Problem> ();
    // callback, last error, busy and unusable flags: the store's business
};

namespace klv {
using Task = KLV_task;
}
