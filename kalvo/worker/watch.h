// Runs engines on workers while the calling thread passes their reports on and asks the progress callback.
#pragma once

#include "kalvo/report/log.h"
#include "kalvo/solve/runs.h"
#include "kalvo/task/task.h"
#include "kalvo/worker/worker.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv {

class Watch final : public Runs {
public:
    explicit Watch (Task& task);

    Id start (const std::shared_ptr<Engine>& engine, Job job, const std::string& why) override;
    std::optional<Ended> wait (double seconds) override;
    void drop (Id run) override;
    bool running () const override { return !runs_.empty (); }
    const Progress& newest (Id run) const override;
    double seconds (Id run) const override;
    void enter (std::uint32_t phase) override;
    void no_run (const std::string& why) override { log_.no_run (why); }
    std::int32_t answer () const override { return answer_; }
    double seconds_left () const override;

    // Since the optimisation began.
    double seconds () const { return seconds_between (began_, Clock::now ()); }

private:
    // Between two questions to the callback lie at least 20 and at most 50 ms, changes of phase aside.
    static constexpr std::chrono::duration<double> between_questions{0.025};

    // A phase of a run, or of the calling thread.
    struct Phase {
        std::uint32_t caller;
        Clock::time_point since;
    };
    struct Run {
        Id id;
        Method method;
        double sign;    // -1: the form's objective is the negative of the stated one
        Clock::time_point began;
        double late;
        Phase phase;
        std::unique_ptr<Worker> worker = nullptr;
        Progress progress = {};    // the newest state
        bool finished = false;
    };

    void compute_beside (const std::function<void ()>& function) override;
    void ask (std::uint32_t caller);
    void change_phase (Phase& phase, std::uint32_t caller, Clock::time_point since);
    void note (const Sizes& presolved);
    void note (const Search& search);
    void note (const Run& run);
    void tell (const Run& run, const EventChannel::News& news);
    bool take_news (Run& run);
    void take_all_news ();
    bool wait_for_room ();
    std::optional<Ended> take_ended ();
    Ended stop ();
    const Run& find (Id run) const;

    Task& task_;
    Log log_;
    Clock::time_point began_ = Clock::now ();
    double time_limit_;
    Phase phase_{KLV_CALLER_BEGIN_OPTIMIZE, began_};
    std::shared_ptr<Bell> bell_ = std::make_shared<Bell> ();
    std::vector<Run> runs_;
    std::int32_t answer_ = 0;
    bool out_of_time_ = false;
};

}
