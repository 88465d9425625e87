// An engine that does what a test tells it, in front of the real ones for as long as it lives.
#pragma once

#include "kalvo/engines/engine.h"
#include "kalvo/engines/worker.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <utility>

namespace scripted {

using Script = std::function<klv::Claims (const klv::Job&, const klv::StopFlag&, klv::EventChannel&)>;

class Engine : public klv::Engine {
public:
    explicit Engine (Script script) : script_ (std::move (script)) {}

    const char* name () const override { return "scripted"; }
    bool can (klv::Method) const override { return true; }
    std::string load () override
    {
        klv::watch_process_end ();
        return why_not;
    }
    klv::Claims run (const klv::Job& job, const klv::StopFlag& stop, klv::EventChannel& channel) override
    {
        ++runs;
        return script_ (job, stop, channel);
    }

    std::atomic<int> runs = 0;
    std::string why_not;

private:
    Script script_;
};

class InFront {
public:
    explicit InFront (Script script) : engine_ (std::make_shared<Engine> (std::move (script)))
    {
        klv::engines ().insert (klv::engines ().begin (), engine_);
    }
    InFront (const InFront&) = delete;
    InFront& operator= (const InFront&) = delete;
    ~InFront () { std::erase (klv::engines (), std::static_pointer_cast<klv::Engine> (engine_)); }

    Engine& engine () { return *engine_; }

private:
    std::shared_ptr<Engine> engine_;
};

// What a run that ignores its stop flag waits for. Copies are one gate.
class Gate {
public:
    void open () const { *open_ = true; }
    void wait () const
    {
        while (!*open_)
            std::this_thread::sleep_for (std::chrono::milliseconds (1));
    }

private:
    std::shared_ptr<std::atomic<bool>> open_ = std::make_shared<std::atomic<bool>> (false);
};

inline void wait_for (const klv::StopFlag& stop)
{
    while (!stop)
        std::this_thread::sleep_for (std::chrono::milliseconds (1));
}

inline klv::Claims claims (klv::Outcome outcome)
{
    klv::Claims made;
    made.outcome = outcome;
    return made;
}

}
