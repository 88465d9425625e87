// A task: the problem, its parameters, information, solutions, streams and callback.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/model/conflict.h"
#include "kalvo/model/problem.h"
#include "kalvo/model/solution.h"
#include "kalvo/task/streams.h"
#include "kalvo/task/values.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace klv {

enum class Access { read, change };

struct LastError {
    KLVrescode_t code = KLV_RES_OK;
    std::string message;
};

}

struct KLV_task {
    // Runs of engines share the problem and may outlive the call: a problem that is still shared is copied before it is changed.
    const klv::Problem& problem () const { return *problem_; }
    std::shared_ptr<const klv::Problem> share_problem () const;
    klv::Problem& edit_problem ();                    // throws std::bad_alloc, then nothing has changed
    void replace_problem (klv::Problem&& problem);    // solutions of the old problem are dropped
    void drop_solutions ();

    klv::Parameters parameters;
    klv::Information information;
    klv::Streams streams;
    klv::Solutions solutions;
    klv::Conflict conflict;    // of the problem as it is; without members: none is known
    klv::RepeatedRows repeated_rows;

    // Records an error, prints it on the error streams and returns its code: `return task.fail (code,
    // "...")`.
    KLVrescode_t fail (KLVrescode_t code, std::string message);
    void warn (std::string_view message);    // one line on the warning streams
    void say (std::string_view message);     // one line on the message streams
    const klv::LastError& last_error () const { return last_error_; }

    // Calls the progress callback and returns its answer; 0 without a callback.
    void set_callback (KLVcallbackfunc func, void* handle);
    std::int32_t ask_callback (std::uint32_t caller);
    // Asks the callback only when its last answer is older than 20 ms.
    std::int32_t ask_callback_in_time (std::uint32_t caller);
    // For many cheap operations in a row: the clock is read only after enough `work` (entries) has added up.
    std::int32_t ask_callback_while_loading (std::size_t work);
    void begin_timing () { began_ = Clock::now (); }    // progress_time counts from here

    // Kept by the guard of entry points: which operations run, and whether the task can still be used.
    KLVrescode_t refuses (klv::Access access) const;
    void enter () { ++running_; }
    void leave () { --running_; }
    void make_unusable (std::string_view message) noexcept;
    KLVrescode_t note_out_of_memory () noexcept;

private:
    using Clock = std::chrono::steady_clock;

    std::shared_ptr<klv::Problem> problem_ = std::make_shared<klv::Problem> ();
    mutable bool lent_ = false;    // a run was given the problem and may still hold it
    klv::LastError last_error_;
    KLVcallbackfunc callback_ = nullptr;
    void* callback_handle_ = nullptr;
    Clock::time_point began_ = Clock::now ();
    Clock::time_point asked_ = Clock::now ();
    std::size_t work_ = 0;
    int running_ = 0;
    bool unusable_ = false;
};

namespace klv {

using Task = KLV_task;

// A callback's answer other than 0 ends an operation.
KLVrescode_t stop_code (std::int32_t answer);

}
