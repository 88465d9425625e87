#include "kalvo/engines/highs/listener.h"

#include "kalvo/engines/highs/lines.h"
#include "kalvo/engines/highs/options.h"

#include <algorithm>
#include <cmath>

namespace klv::highs {

constexpr std::chrono::milliseconds between_reports{10};
constexpr int error_message = 5;

Listener::Listener (const Job& job, const StopFlag& stop, Events& events, const Search& search)
    : stop_ (stop),
      events_ (events),
      method_ (job.method),
      phase_of_method_ (about (job.method).phase),
      passes_text_on_ (job.settings->get (IntSetting::log_level) >= 3)
{
    now_.search = search;
    if (is_presolved (job) || job.goal == Goal::prove)
        return;
    const auto& form = std::get<LinearForm> (*job.form);
    now_.presolved = {form.row_count (), form.columns (), static_cast<std::int64_t> (form.entries.size ()),
                      job.method == Method::mixed_integer ? form.integers : 0};
}

// One interior-point method tells its iterations in callbacks only, the other in its log only.
void Listener::called (int type, const char* message, const HighsCallbackDataOut* out,
                       HighsCallbackDataIn* in, void* listener)
{
    Listener& self = *static_cast<Listener*> (listener);
    switch (type) {
    case kHighsCallbackLogging:
        self.take_message (message, out != nullptr ? out->log_type : 0);
        return;
    case kHighsCallbackMipImprovingSolution:
        self.take_solution_time ();
        if (out->mip_solution != nullptr)
            self.events_.incumbent (out->mip_solution, static_cast<std::size_t> (out->mip_solution_size));
        return;
    case kHighsCallbackMipLogging:
        self.take_integer_state (*out);
        self.take_row (*out);
        self.events_.step (self.now_);
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
    events_.progress (now_);
}

void Listener::end ()
{
    events_.progress (now_);
}

// Called in each iteration, so it must cost next to nothing. The first iteration ends presolve.
void Listener::take_iterations (std::int64_t iterations)
{
    if (now_.caller == KLV_CALLER_PRESOLVE)
        begin (phase_of_method_);
    now_.iterations = iterations;
    if (const Clock::time_point now = Clock::now (); now - reported_ >= between_reports) {
        reported_ = now;
        events_.progress (now_);
    }
}

void Listener::take_solution_time ()
{
    Search& search = now_.search;
    ++search.solutions;
    search.best_solution = Clock::now ();
    if (!search.first_solution)
        search.first_solution = search.best_solution;
}

void Listener::take_integer_state (const HighsCallbackDataOut& out)
{
    if (now_.caller == KLV_CALLER_PRESOLVE)
        begin (phase_of_method_);
    now_.search.nodes = out.mip_node_count;
    now_.iterations = out.mip_total_lp_iterations;
    now_.has_primal = std::isfinite (out.mip_primal_bound);
    now_.has_dual = std::isfinite (out.mip_dual_bound);
    now_.primal_objective = now_.has_primal ? out.mip_primal_bound : 0;
    now_.dual_objective = now_.has_dual ? out.mip_dual_bound : 0;
    if (const Clock::time_point now = Clock::now (); now - reported_ >= between_reports) {
        reported_ = now;
        events_.progress (now_);
    }
}

// ---- Lines of the log ---------------------------------------------------------------------------------------------------

// HiGHS prints a row of the integer search's table right before the callback with the bounds of that moment.
void Listener::take_row (const HighsCallbackDataOut& out)
{
    Search& search = now_.search;
    const bool is_relaxation = search.nodes == 0 && search.restarts == 0 && search.cuts == 0 &&
                               search.cuts_in_use == 0 && out.mip_total_lp_iterations > 0;
    if (is_relaxation && !search.root_bound && std::isfinite (out.mip_dual_bound))
        search.root_bound = out.mip_dual_bound;
}

bool Listener::read_iteration (std::string_view line)
{
    const bool interior = is_interior (method_), primal = method_ == Method::primal_simplex;
    const std::optional<Iteration> read =
        interior ? read_interior_iteration (line) : read_simplex_iteration (line);
    if (!read)
        return false;
    now_.iterations = read->number;
    now_.has_primal = interior || (primal && !read->first_phase);
    now_.has_dual = interior || (!primal && !read->first_phase);
    if (interior || primal)
        now_.primal_objective = read->objective;
    if (interior || !primal)
        now_.dual_objective = interior ? read->dual_objective : read->objective;
    now_.primal_violation = read->primal_violation;
    now_.dual_violation = read->dual_violation;
    return true;
}

void Listener::read_line (std::string_view line)
{
    if (const std::optional<Sizes> left = read_presolved (line); left && !now_.presolved) {
        now_.presolved = left;
        events_.step (now_);
    } else if (method_ == Method::mixed_integer) {
        if (const std::optional<std::int64_t> integers = read_integers (line); integers && now_.presolved)
            now_.presolved->integers = *integers;
        read_search (line, now_.search);
    } else if (method_ == Method::crossover && is_crossover_begin (line)) {
        now_.has_primal = now_.has_dual = false;
        begin (KLV_CALLER_CROSSOVER);
    } else if (read_iteration (line)) {
        now_.caller = phase_of_method_;
        events_.step (now_);
    }
}

// "ERROR:   Model is bad\n"
static std::string_view words_of_error (std::string_view message)
{
    message.remove_prefix (
        std::min (message.find_first_not_of (' ', message.find (':') + 1), message.size ()));
    return message.substr (0, message.find_last_not_of (" \n.") + 1);
}

void Listener::take_message (std::string_view message, int type)
{
    if (passes_text_on_)
        events_.text (message);
    if (type == error_message)
        last_error_ = words_of_error (message);
    if (now_.caller != KLV_CALLER_PRESOLVE && now_.caller != phase_of_method_)
        return;
    while (!message.empty ()) {
        const std::size_t end = std::min (message.find ('\n'), message.size ());
        read_line (message.substr (0, end));
        message.remove_prefix (std::min (end + 1, message.size ()));
    }
}

}
