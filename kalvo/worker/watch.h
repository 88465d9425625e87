// Runs engines on threads, while the calling thread passes their reports on and asks the progress callback.
#pragma once

#include "kalvo/report/log.h"
#include "kalvo/solve/call.h"
#include "kalvo/solve/runs.h"
#include "kalvo/task/task.h"
#include "kalvo/worker/thread.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv {

class Watch final : public Runs {
public:
    Watch (Task& task, Call& call) : task_ (task), call_ (call), log_ (task) {}

    Id start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why,
              OnIncumbent on_incumbent) override;
    std::optional<Ended> wait (double seconds) override;
    void drop (Id run) override;
    const Progress& newest (Id run) const override;
    double seconds (Id run) const override;
    void no_run (const std::string& why) override { log_.no_run (why); }
    bool leaves_runs () const { return !dropped_.empty (); }        // which the destructor waits for
    bool has_seen_failure () const { return has_seen_failure_; }    // of an engine

private:
    struct Run {
        Id id;
        Method method;
        double sign;    // -1: the form's objective is the negative of the stated one
        Clock::time_point began;
        double late;
        Phase phase;
        OnIncumbent on_incumbent;
        std::unique_ptr<RunThread> thread = nullptr;
        Progress progress = {};    // the newest state
        bool finished = false;
    };

    void note (const Sizes& presolved);
    void note (const Search& search);
    void note (const Run& run);
    void tell (const Run& run, const EventChannel::News& news);
    bool take_news (Run& run);
    void take_all_news ();
    std::optional<Ended> take_ended ();
    Ended stop ();
    const Run& find (Id run) const;

    Task& task_;
    Call& call_;
    Log log_;
    std::shared_ptr<Bell> bell_ = std::make_shared<Bell> ();
    std::vector<Run> runs_;
    std::vector<Run> dropped_;    // which may go on for a while: they are waited for at the end
    bool out_of_time_ = false;
    bool has_seen_failure_ = false;
};

}
