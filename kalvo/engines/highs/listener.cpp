#include "kalvo/engines/highs/listener.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace klv::highs {

constexpr std::chrono::milliseconds between_reports{10};
constexpr int error_message = 5;

static std::uint32_t phase_of (const Job& job)
{
    switch (job.method) {
    case Method::primal_simplex:
        return job.finishes () ? KLV_CALLER_SIMPLEX_FINISH : KLV_CALLER_PRIMAL_SIMPLEX;
    case Method::dual_simplex:
        return job.finishes () ? KLV_CALLER_SIMPLEX_FINISH : KLV_CALLER_DUAL_SIMPLEX;
    case Method::interior_point:
        return KLV_CALLER_INTERIOR_POINT;
    case Method::mixed_integer:
        return KLV_CALLER_MIXED_INTEGER;
    }
    return KLV_CALLER_PRESOLVE;
}

static bool is_maximized (const Job& job)
{
    return job.problem->stated->sense == KLV_SENSE_MAXIMIZE;
}

bool is_mirrored (const Job& job)
{
    return is_maximized (job) && job.method != Method::mixed_integer &&
           std::isfinite (job.settings->get (RealSetting::objective_limit));
}

Listener::Listener (const Job& job, const StopFlag& stop, EventChannel& channel)
    : stop_ (stop),
      channel_ (channel),
      method_ (job.method),
      phase_of_method_ (phase_of (job)),
      simplex_sign_ (is_mirrored (job) ? -1 : 1),
      interior_sign_ (is_maximized (job) ? -1 : 1),
      passes_text_on_ (job.settings->get (IntSetting::log_level) >= 3)
{}

// The counts of an interior-point run come in its log only, or only not there, as its method is.
void Listener::called (int type, const char* message, const HighsCallbackDataOut* out,
                       HighsCallbackDataIn* in, void* listener)
{
    Listener& self = *static_cast<Listener*> (listener);
    switch (type) {
    case kHighsCallbackLogging:
        self.take_message (message, out != nullptr ? out->log_type : 0);
        return;
    case kHighsCallbackMipImprovingSolution:
        ++self.now_.solutions;
        if (out->mip_solution != nullptr)
            self.channel_.incumbent (out->mip_solution, static_cast<std::size_t> (out->mip_solution_size));
        return;
    case kHighsCallbackMipLogging:
        self.take_integer_state (*out);
        self.channel_.step (self.now_);
        return;
    case kHighsCallbackSimplexInterrupt:
        self.take_iterations (out->simplex_iteration_count);
        break;
    case kHighsCallbackIpmInterrupt:
        self.take_iterations (std::max<std::int64_t> (self.now_.iterations, out->ipm_iteration_count));
        break;
    case kHighsCallbackMipInterrupt:
        self.take_integer_state (*out);
        break;
    default:
        return;
    }
    if (in != nullptr)
        in->user_interrupt = self.stopped ();
}

void Listener::begin (std::uint32_t phase)
{
    now_.caller = phase;
    now_.iterations = 0;
    channel_.progress (now_);
}

// Comes with each iteration and must cost next to nothing. The first one ends presolve.
void Listener::take_iterations (std::int64_t iterations)
{
    if (now_.caller == KLV_CALLER_PRESOLVE)
        begin (phase_of_method_);
    now_.iterations = iterations;
    if (const Clock::time_point now = Clock::now (); now - reported_ >= between_reports) {
        reported_ = now;
        channel_.progress (now_);
    }
}

void Listener::take_integer_state (const HighsCallbackDataOut& out)
{
    if (now_.caller == KLV_CALLER_PRESOLVE)
        begin (phase_of_method_);
    now_.nodes = out.mip_node_count;
    now_.has_primal = std::isfinite (out.mip_primal_bound);
    now_.has_dual = std::isfinite (out.mip_dual_bound);
    now_.primal_objective = now_.has_primal ? out.mip_primal_bound : 0;
    now_.dual_objective = now_.has_dual ? out.mip_dual_bound : 0;
    if (const Clock::time_point now = Clock::now (); now - reported_ >= between_reports) {
        reported_ = now;
        channel_.progress (now_);
    }
}

// ---- Lines of the log ---------------------------------------------------------------------------------------------------
// Objectives and violations of linear methods come in the lines of their iterations only. Other lines say nothing here.

// Takes numbers and words from a line, one after another; what is not there is not taken.
class Words {
public:
    explicit Words (std::string_view line) : rest_ (line) {}

    template <class Number>
    bool number (Number& value)
    {
        skip_blanks ();
        const auto [end, error] = std::from_chars (rest_.data (), rest_.data () + rest_.size (), value);
        if (error != std::errc ())
            return false;
        rest_.remove_prefix (static_cast<std::size_t> (end - rest_.data ()));
        return true;
    }
    bool word (std::string_view expected)
    {
        skip_blanks ();
        if (!rest_.starts_with (expected))
            return false;
        rest_.remove_prefix (expected.size ());
        return true;
    }

private:
    void skip_blanks () { rest_.remove_prefix (std::min (rest_.find_first_not_of (' '), rest_.size ())); }

    std::string_view rest_;
};

// "133 -8.9664482186e+05 Pr: 0(0); Du: 0(1.06581e-14) 0.0s"; in a first phase Ph1 stands for Pr, and the objective is not
// the problem's.
bool Listener::read_simplex_line (std::string_view line)
{
    Words words (line);
    std::int64_t iterations = 0, count = 0;
    double objective = 0, primal = 0, dual = 0;
    if (!words.number (iterations) || !words.number (objective))
        return false;
    const bool first_phase = words.word ("Ph1:");
    if ((!first_phase && !words.word ("Pr:")) || !words.number (count) || !words.word ("(") ||
        !words.number (primal))
        return false;
    if (words.word ("); Du:") && (!words.number (count) || !words.word ("(") || !words.number (dual)))
        return false;
    const bool primal_method = method_ == Method::primal_simplex;
    now_.iterations = iterations;
    now_.has_primal = primal_method && !first_phase;
    now_.has_dual = !primal_method && !first_phase;
    (primal_method ? now_.primal_objective : now_.dual_objective) = simplex_sign_ * objective;
    now_.primal_violation = primal;
    now_.dual_violation = dual;
    return true;
}

// "17 -8.96456999e+05 -8.96840531e+05 6.98e-16 6.35e-12 4.28e-04 0.0", or "17*": objectives, violations, gap, seconds.
// What is maximised is minimised with its sign changed.
bool Listener::read_interior_line (std::string_view line)
{
    Words words (line);
    std::int64_t iterations = 0;
    double primal_objective = 0, dual_objective = 0, primal = 0, dual = 0, gap = 0;
    if (!words.number (iterations))
        return false;
    words.word ("*");
    if (!words.number (primal_objective) || !words.number (dual_objective) || !words.number (primal) ||
        !words.number (dual) || !words.number (gap))
        return false;
    now_.iterations = iterations;
    now_.has_primal = now_.has_dual = true;
    now_.primal_objective = interior_sign_ * primal_objective;
    now_.dual_objective = interior_sign_ * dual_objective;
    now_.primal_violation = primal;
    now_.dual_violation = dual;
    return true;
}

void Listener::take_message (const char* message, int type)
{
    if (passes_text_on_)
        channel_.text (message);
    if (type == error_message)
        last_error_ = message;
    const bool reads = now_.caller == KLV_CALLER_PRESOLVE || now_.caller == phase_of_method_;
    if (!reads || method_ == Method::mixed_integer)
        return;
    if (method_ == Method::interior_point ? !read_interior_line (message) : !read_simplex_line (message))
        return;
    now_.caller = phase_of_method_;
    channel_.step (now_);
}

}
