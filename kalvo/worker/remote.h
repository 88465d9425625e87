// Plans that run in a worker process. Nothing that an engine does reaches the calling process but messages, which are checked.
#pragma once

#include "kalvo/report/log.h"
#include "kalvo/solve/solver.h"
#include "kalvo/worker/process.h"
#include "kalvo/worker/protocol.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv {

class Remote final : public Solver {
public:
    // `on_death` is called when a worker has died for the first time, while the task holds the solutions that it started from.
    Remote (Task& task, Call& call, std::function<void ()> on_death);

    Solved solve (const Solutions& earlier, bool integers) override;
    void no_run (const std::string& why) override { Log (task_).no_run (why); }

private:
    // How a conversation with a worker ended.
    enum class Ending { answered, died, ended_by_us };

    Solved solve_in_process (const std::string& why, const Solutions& earlier, bool integers);
    bool send (WorkerProcess& worker, const Solutions& earlier, bool integers);
    Ending converse (WorkerProcess& worker);
    std::optional<int> take_messages (WorkerProcess& worker);
    void ask (std::uint32_t caller);
    void take (const Information& told);
    void take (const Question& question);
    void take (News&& news);
    void take (Item&& item);
    void bury (WorkerProcess& worker, const Solutions& earlier, const std::string& fault);
    std::string name_runs () const;
    Solved finish (bool integers);
    Solved stopped (bool integers);

    Task& task_;
    Call& call_;
    std::function<void ()> on_death_;
    std::uint64_t run_ = 0;
    std::vector<BegunRun> under_way_;
    std::vector<Past> past_;
    std::vector<double> incumbent_;
    std::uint32_t phase_ = 0;    // that was asked for last
    std::optional<Result> result_;
    bool out_of_time_ = false;
    bool out_of_memory_ = false;
    bool has_new_incumbent_ = false;
    Clock::time_point asked_at_;
};

}
