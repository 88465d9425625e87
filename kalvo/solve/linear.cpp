// Linear problems: simplex and interior point side by side where that pays, and a ladder of further attempts where an engine
// fails or claims what does not hold.

#include "kalvo/solve/plain_rays.h"
#include "kalvo/solve/plans.h"
#include "kalvo/solve/start.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace klv {

// Seconds: with a given basis simplex mostly ends sooner.
constexpr double head_start = 0.1;

// Seconds for an entry, row or column: from a point the engine may make an almost singular basis, with which simplex never ends.
constexpr double seconds_an_item = 1e-5;

class LinearPlan {
public:
    LinearPlan (Attempts& attempts, const Solutions& earlier) : attempts_ (attempts), earlier_ (earlier) {}

    Found run ();

private:
    int setting (IntSetting which) const { return attempts_.settings ().get (which); }
    bool asks (std::int32_t optimizer) const { return setting (IntSetting::optimizer) == optimizer; }
    bool is_automatic () const;
    bool wants_interior () const { return asks (KLV_OPTIMIZER_INTERIOR_POINT) || asks (KLV_OPTIMIZER_CONIC); }
    bool may_race () const;
    double patience () const
    {
        return head_start + seconds_an_item * static_cast<double> (attempts_.size ());
    }
    std::string why (const Start* start) const;

    Method method_from (const Start& start);
    std::optional<Answer> again (KLVsoltype which);
    std::optional<Tried> from_start ();
    Tried cold ();
    void join (const std::string& why);
    void look_for_basis (std::optional<Tried>& best);
    Tried race (Method simplex, const std::shared_ptr<const Start>& start, double delay);
    Tried basic ();
    void climb_down (Tried& best);

    Found interior ();
    void gather_interior (Found& found);

    Attempts& attempts_;
    const Solutions& earlier_;
    std::vector<Attempt> tried_;
};

static bool is_certificate (const Answer& answer)
{
    return answer.conclusive && answer.outcome != Outcome::optimal;
}

// An optimum that crossover left without a basis is an interior one.
static bool is_basic (const Tried& tried)
{
    return tried.answer.conclusive &&
           (is_certificate (tried.answer) || tried.answer.has_basis || is_simplex (tried.attempt.method));
}

// ---- What is asked for -------------------------------------------------------------------------------------------------

bool LinearPlan::is_automatic () const
{
    return asks (KLV_OPTIMIZER_AUTOMATIC) || asks (KLV_OPTIMIZER_MIXED_INTEGER);
}

// Interior-point methods know no objective limit.
bool LinearPlan::may_race () const
{
    return is_automatic () && attempts_.threads_to_be_had () > 1 &&
           attempts_.size () >= static_cast<std::size_t> (setting (IntSetting::race_size)) &&
           attempts_.settings ().get (RealSetting::race_delay) < infinity &&
           !std::isfinite (attempts_.settings ().get (RealSetting::objective_limit));
}

std::string LinearPlan::why (const Start* start) const
{
    const std::int32_t integers = attempts_.problem ().integers;
    const char* from = start == nullptr             ? is_automatic () ? ", no start" : ""
                       : start->column_key.empty () ? ", from the given point"
                                                    : ", from the given basis";
    return text (is_automatic () ? "automatic: continuous variables" : "asked for",
                 integers > 0 ? ", integer ones taken as such" : "", from);
}

// ---- A basic solution --------------------------------------------------------------------------------------------------

// Checks an earlier solution on the problem as it is now.
std::optional<Answer> LinearPlan::again (KLVsoltype which)
{
    std::optional<Point> claim = claim_again (earlier_[which]);
    return claim ? std::optional (attempts_.judge (std::move (*claim))) : std::nullopt;
}

// From a basis that is feasible, but not optimal any more, the primal method has less to do.
Method LinearPlan::method_from (const Start& start)
{
    const Method method = first_method (attempts_.problem (), attempts_.settings (), false);
    if (method != Method::dual_simplex || asks (KLV_OPTIMIZER_DUAL_SIMPLEX) || start.column_key.empty ())
        return is_simplex (method) ? method : Method::dual_simplex;
    const std::optional<Answer> earlier = again (KLV_SOL_BAS);
    const bool feasible =
        earlier && earlier->solution && earlier->solution->solution_status == KLV_SOLSTA_PRIMAL_FEASIBLE;
    return feasible ? Method::primal_simplex : method;
}

// Begins a crossover beside the run that is under way, which goes on alone when no thread can be started.
void LinearPlan::join (const std::string& why)
{
    try {
        attempts_.start ({Method::crossover}, nullptr, why);
        tried_.push_back ({Method::crossover});
    } catch (const std::system_error&) {
    }
}

// Runs simplex and interior point side by side, the latter after a delay. The first conclusive answer wins; the other run is not
// waited for.
Tried LinearPlan::race (Method simplex, const std::shared_ptr<const Start>& start, double delay)
{
    attempts_.start ({simplex}, start, why (start.get ()));
    std::optional<Tried> best = delay > 0 ? attempts_.next (delay) : std::nullopt;
    if (!best) {
        join ("the first answer that holds wins");
        attempts_.task ().information.set (IntItem::race, attempts_.under_way () > 1);
        best = attempts_.next ();
    }
    while (attempts_.under_way () > 0 && !best->answer.conclusive)
        keep_better (best, std::move (*attempts_.next ()));
    look_for_basis (best);
    attempts_.drop_all ();
    return std::move (*best);
}

// An optimum without a basis: simplex gets a short time to find one.
void LinearPlan::look_for_basis (std::optional<Tried>& best)
{
    if (!best->answer.conclusive || is_basic (*best) || attempts_.stopped ())
        return;
    if (attempts_.under_way () == 0)
        attempts_.start ({Method::dual_simplex}, nullptr, "for a basis");
    if (std::optional<Tried> tried = attempts_.next (patience ()))
        keep_better (best, std::move (*tried));
    attempts_.drop_all ();
}

// A bad start can mislead an optimiser: an answer from a start counts only when it settles the problem.
std::optional<Tried> LinearPlan::from_start ()
{
    const std::shared_ptr<const Start> start = find_start (earlier_, false);
    if (!start)
        return std::nullopt;
    Information& information = attempts_.task ().information;
    information.set (IntItem::start, start->column_key.empty () ? 2 : 1);
    const Method method = method_from (*start);
    std::optional<Tried> tried;
    if (may_race ())
        tried =
            race (method, start, std::max (attempts_.settings ().get (RealSetting::race_delay), head_start));
    else {
        attempts_.start ({method}, start,
                         method == Method::primal_simplex && is_automatic ()
                             ? "automatic: the given basis is feasible, but not optimal"
                             : why (start.get ()));
        tried = attempts_.next (start->column_key.empty () ? patience () : infinity);
        attempts_.drop_all ();
    }
    if (tried && attempts_.settles (tried->answer))
        return tried;
    attempts_.task ().warn (
        "From the solution that was given no answer was found that passes the check; trying without it.");
    information.set (IntItem::start, 0);
    tried_.clear ();
    return std::nullopt;
}

Tried LinearPlan::cold ()
{
    Method method = first_method (attempts_.problem (), attempts_.settings (), false);
    if (wants_interior ())
        method = Method::crossover;
    tried_.push_back ({method});
    if (may_race ())
        return race (method, nullptr, attempts_.settings ().get (RealSetting::race_delay));
    return attempts_.run ({method}, nullptr, why (nullptr));
}

Tried LinearPlan::basic ()
{
    std::optional<Tried> tried = from_start ();
    if (!tried)
        tried = cold ();
    climb_down (*tried);
    return std::move (*tried);
}

// The same method without presolve and scaling, then the others with both, then without; then without bounds far away.
void LinearPlan::climb_down (Tried& best)
{
    std::vector<Attempt> ladder{{best.attempt.method, false}};
    for (const bool reformulate : {true, false})
        for (const Method method : {Method::dual_simplex, Method::primal_simplex, Method::crossover})
            ladder.push_back ({method, reformulate});
    std::optional<Tried> kept = std::move (best);
    for (const Attempt& attempt : ladder) {
        if (attempts_.settles (kept->answer))
            break;
        if (std::ranges::count (tried_, attempt) > 0)
            continue;
        tried_.push_back (attempt);
        keep_better (kept, try_again (attempts_, kept->answer, attempt));
    }
    if (!attempts_.settles (kept->answer) && attempts_.leave_out_far_bounds ())
        for (const Method method : {Method::dual_simplex, Method::crossover})
            if (!attempts_.settles (kept->answer))
                keep_better (kept, try_again (attempts_, kept->answer, {method}));
    look_for_basis (kept);
    best = std::move (*kept);
}

// ---- An interior solution ----------------------------------------------------------------------------------------------

// Takes answers while runs are under way. A certificate ends all runs: it is the answer of every slot.
void LinearPlan::gather_interior (Found& found)
{
    while (attempts_.under_way () > 0) {
        Tried tried = std::move (*attempts_.next ());
        const bool ends = is_certificate (tried.answer) || attempts_.stopped ();
        keep_better (tried.attempt.method == Method::interior_point ? found.interior : found.basic,
                     std::move (tried));
        if (ends)
            attempts_.drop_all ();
    }
}

// The interior solution comes from a run without crossover, the basic one from a run with crossover: beside the first run where
// there is a second thread, else after it.
Found LinearPlan::interior ()
{
    Found found;
    const bool wants_basis = setting (IntSetting::interior_point_basis) != 0;
    constexpr Attempt first{Method::interior_point}, plain{Method::interior_point, false};
    std::optional<Answer> earlier = again (KLV_SOL_ITR);
    if (earlier && earlier->conclusive) {
        attempts_.task ().information.set (IntItem::start, 2);
        attempts_.runs ().no_run ("the given interior solution is an answer");
        found.interior = Tried{first, std::move (*earlier)};
    } else {
        attempts_.start (first, nullptr, why (nullptr));
        if (wants_basis && attempts_.threads_to_be_had () > 1)
            join ("for a basic solution");
        gather_interior (found);
    }
    // A certificate, a limit or a stop leaves nothing to do for either solution.
    const auto is_over = [&] {
        const auto ends = [] (const std::optional<Tried>& tried) {
            return tried && (is_certificate (tried->answer) || ended_early (tried->answer.outcome) ||
                             tried->answer.outcome == Outcome::out_of_memory);
        };
        return attempts_.stopped () || ends (found.interior) || ends (found.basic);
    };
    if (!is_over () && !found.interior->answer.conclusive)
        keep_better (found.interior, try_again (attempts_, found.interior->answer, plain));
    if (is_over () || (found.interior->answer.conclusive && !wants_basis))
        return found;
    if (!found.basic)
        found.basic = basic ();
    else
        climb_down (*found.basic);
    return found;
}

Found LinearPlan::run ()
{
    if (wants_interior ())
        return interior ();
    return {.basic = basic ()};
}

Found solve_linear (Attempts& attempts, const Solutions& earlier)
{
    Found found = LinearPlan (attempts, earlier).run ();
    std::optional<Tried>& last = found.basic ? found.basic : found.interior;
    const bool answered = (found.interior && found.interior->answer.conclusive) || last->answer.conclusive;
    if (answered || attempts.settles (last->answer))
        return found;
    // What optimisers come to no end with may have a plain ray, or their last multipliers may be one.
    std::vector<Point> rays;
    if (std::optional<Point> plain = find_plain_ray (attempts.problem ()))
        rays.push_back (std::move (*plain));
    if (last->answer.solution) {
        rays.push_back ({.outcome = Outcome::infeasible, .dual_ray = last->answer.solution->y});
        rays.push_back ({.outcome = Outcome::unbounded, .primal_ray = last->answer.solution->xx});
    }
    for (Point& ray : rays)
        if (Answer answer = attempts.judge (std::move (ray)); answer.conclusive) {
            last->answer = std::move (answer);
            break;
        }
    return found;
}

}
