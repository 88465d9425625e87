#include "kalvo/solve/conflict.h"

#include "kalvo/model/describe.h"
#include "kalvo/model/text.h"
#include "kalvo/solve/irreducible.h"
#include "kalvo/sparse/index.h"
#include "kalvo/verify/certificate.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <utility>

namespace klv {

using Seconds = std::chrono::duration<double>;
using SteadyClock = std::chrono::steady_clock;

static bool is_infeasible (const Solution& solution)
{
    return solution.problem_status == KLV_PRO_PRIMAL_INFEASIBLE ||
           solution.problem_status == KLV_PRO_BOTH_INFEASIBLE ||
           solution.problem_status == KLV_PRO_INFEASIBLE_BY_SEARCH;
}

static bool has_feasible_point (const Solution& solution)
{
    constexpr KLVsolsta feasible[] = {KLV_SOLSTA_OPTIMAL, KLV_SOLSTA_FEASIBLE, KLV_SOLSTA_PRIMAL_FEASIBLE,
                                      KLV_SOLSTA_INTEGER_OPTIMAL};
    return std::ranges::count (feasible, solution.solution_status) > 0;
}

static const Solution* infeasible_slot (const Task& task)
{
    for (const KLVsoltype slot : {KLV_SOL_INT, KLV_SOL_BAS, KLV_SOL_ITR})
        if (const std::optional<Solution>& solution = task.solutions[slot];
            solution && is_infeasible (*solution))
            return &*solution;
    return nullptr;
}

// Bounds that a subset is made of. Cones, matrices and integrality hold throughout.
class ConflictSearch {
public:
    ConflictSearch (Task& task, const Optimizer& optimizer);

    void start_from (const Solution& infeasible);
    KLVrescode_t code () const { return code_; }    // of a stop
    Conflict run ();

private:
    enum class Verdict { contradictory, possible, unknown };

    bool has_certificate (const Solution& solution) const
    {
        return solution.solution_status == KLV_SOLSTA_PRIMAL_INFEASIBLE_CERTIFICATE;
    }
    bool has_integers () const
    {
        return problem_.integers > 0 && task_.parameters.get (IntSetting::relax_integers) == KLV_OFF;
    }
    double seconds_left () const { return limit_ - Seconds (SteadyClock::now () - began_).count (); }
    bool is_over ()
    {
        if (code_ == KLV_RES_OK)
            if (const std::int32_t answer = task_.ask_callback_in_time (KLV_CALLER_ANALYZE))
                code_ = stop_code (answer);
        return code_ != KLV_RES_OK || seconds_left () <= 0;
    }

    void collect (const Solution* certificate);
    Problem rows_of_members ();
    void load (bool relaxed);
    void put_bounds (const std::vector<bool>& kept);
    Verdict try_set (const std::vector<bool>& kept);
    void take_support (const Solution& certificate);
    template <class Function>
    void each_bound (const Function& function) const;
    bool keep_needed_members ();
    void reduce (std::size_t begin, std::size_t end);

    Task& task_;
    const Problem& problem_;
    const Optimizer& optimizer_;
    SteadyClock::time_point began_ = SteadyClock::now ();
    double limit_;
    InnerTask inner_;
    std::vector<std::int32_t> row_of_;    // of the inner problem, for each constraint; -1: none
    std::vector<ConflictMember> members_;
    std::vector<double> multipliers_;    // of the last certificate of the kept members
    std::vector<bool> kept_;
    bool all_needed_ = true;
    bool by_search_ = false;
    KLVrescode_t code_ = KLV_RES_OK;
};

ConflictSearch::ConflictSearch (Task& task, const Optimizer& optimizer)
    : task_ (task),
      problem_ (task.problem ()),
      optimizer_ (optimizer),
      limit_ (task.parameters.get (RealSetting::conflict_time_limit)),
      inner_ (task, InnerTask::Lines::dropped)
{
    const Parameters standard;
    Parameters& parameters = inner_->parameters;
    for (const IntSetting setting :
         {IntSetting::interior_point_basis, IntSetting::solution_limit, IntSetting::node_limit,
          IntSetting::simplex_iteration_limit, IntSetting::interior_iteration_limit})
        parameters.integers[parameter_number (setting)] = standard.integers[parameter_number (setting)];
    parameters.doubles[parameter_number (RealSetting::objective_limit)] = infinity;
    parameters.integers[parameter_number (IntSetting::log_level)] = 0;
    parameters.integers[parameter_number (IntSetting::optimizer)] = KLV_OPTIMIZER_DUAL_SIMPLEX;
    parameters.texts[parameter_number (TextSetting::replay_file)].clear ();
    if (const double most = task.parameters.get (RealSetting::time_limit); most >= 0)
        limit_ = std::min (limit_, most - task.information.get (RealItem::time_optimize));
}

// The multiplier of a member in a certificate.
static double multiplier (const Solution& certificate, const ConflictMember& member)
{
    const std::vector<double>& values = member.is_variable ()
                                            ? (member.is_upper () ? certificate.sux : certificate.slx)
                                            : (member.is_upper () ? certificate.suc : certificate.slc);
    return std::abs (values[index (member.item)]);
}

template <class Function>
void ConflictSearch::each_bound (const Function& function) const
{
    const auto look_at = [&] (const Bounds& bounds, KLVconflictkind lower, KLVconflictkind upper) {
        for (std::size_t i = 0; i < bounds.key.size (); ++i) {
            const auto item = static_cast<std::int32_t> (i);
            if (std::isfinite (bounds.lower[i]))
                function (ConflictMember{static_cast<std::uint8_t> (lower), item});
            if (std::isfinite (bounds.upper[i]))
                function (ConflictMember{static_cast<std::uint8_t> (upper), item});
        }
    };
    look_at (problem_.constraint, KLV_CONFLICT_CONSTRAINT_LOWER, KLV_CONFLICT_CONSTRAINT_UPPER);
    look_at (problem_.variable, KLV_CONFLICT_VARIABLE_LOWER, KLV_CONFLICT_VARIABLE_UPPER);
}

// All bounds that there are, or those that have a multiplier in a certificate. An interior point gives all some.
void ConflictSearch::collect (const Solution* certificate)
{
    members_.clear ();
    each_bound ([&] (const ConflictMember& member) {
        if (certificate == nullptr || multiplier (*certificate, member) > 0)
            members_.push_back (member);
    });
    kept_.assign (members_.size (), true);
    multipliers_.assign (members_.size (), 0);
    if (certificate != nullptr)
        take_support (*certificate);
}

static Problem without_objective (const Problem& problem)
{
    Problem part = problem;
    std::ranges::fill (part.cost, 0.0);
    part.constant = 0;
    part.quadratic_objective = {};
    part.semidefinite.objective = {};
    return part;
}

// Those rows of a linear problem that members belong to.
Problem ConflictSearch::rows_of_members ()
{
    Problem part;
    part.append_variables (problem_.variables ());
    part.integer = problem_.integer;
    part.integers = problem_.integers;
    row_of_.assign (static_cast<std::size_t> (problem_.constraints ()), -1);
    std::int32_t count = 0;
    for (const ConflictMember& member : members_)
        if (!member.is_variable () && row_of_[index (member.item)] < 0)
            row_of_[index (member.item)] = count++;
    part.append_constraints (count);
    std::vector<std::int32_t> rows;
    std::vector<double> values;
    for (std::int32_t j = 0; j < problem_.variables (); ++j) {
        const Column column = problem_.matrix.column (j);
        rows.clear ();
        values.clear ();
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            if (const std::int32_t row = row_of_[index (column.rows[k])]; row >= 0) {
                rows.push_back (row);
                values.push_back (column.values[k]);
            }
        part.matrix.put (j, rows, values);
    }
    return part;
}

void ConflictSearch::load (bool relaxed)
{
    Problem part;
    if (problem_.is_linear ())
        part = rows_of_members ();
    else {
        part = without_objective (problem_);
        row_of_.resize (static_cast<std::size_t> (problem_.constraints ()));
        std::iota (row_of_.begin (), row_of_.end (), 0);
    }
    inner_->parameters.integers[parameter_number (IntSetting::relax_integers)] = relaxed ? KLV_ON : KLV_OFF;
    inner_->replace_problem (std::move (part));
}

void ConflictSearch::put_bounds (const std::vector<bool>& kept)
{
    Problem& part = inner_->edit_problem ();
    for (Bounds* bounds : {&part.constraint, &part.variable}) {
        std::ranges::fill (bounds->lower, -infinity);
        std::ranges::fill (bounds->upper, infinity);
    }
    for (std::size_t k = 0; k < members_.size (); ++k) {
        if (!kept[k])
            continue;
        const ConflictMember& member = members_[k];
        const Bounds& stated = member.is_variable () ? problem_.variable : problem_.constraint;
        Bounds& bounds = member.is_variable () ? part.variable : part.constraint;
        const std::size_t from = index (member.item),
                          to = member.is_variable () ? from : index (row_of_[from]);
        (member.is_upper () ? bounds.upper : bounds.lower)[to] =
            (member.is_upper () ? stated.upper : stated.lower)[from];
    }
    for (Bounds* bounds : {&part.constraint, &part.variable})
        for (std::size_t i = 0; i < bounds->key.size (); ++i)
            bounds->key[i] = bounds->lower[i] == bounds->upper[i]
                                 ? static_cast<std::uint8_t> (KLV_BK_FX)
                                 : key_of (bounds->lower[i], bounds->upper[i]);
}

// Drops members without a multiplier that counts: a certificate of the inner problem, whose rows are fewer, or of the problem.
void ConflictSearch::take_support (const Solution& certificate)
{
    const bool is_inner = !row_of_.empty ();
    const auto value_of = [&] (ConflictMember member) {
        if (is_inner && !member.is_variable ())
            member.item = row_of_[index (member.item)];
        return multiplier (certificate, member);
    };
    for (std::size_t k = 0; k < members_.size (); ++k)
        if (kept_[k]) {
            multipliers_[k] = value_of (members_[k]);
            kept_[k] = multipliers_[k] > 0;
        }
}

ConflictSearch::Verdict ConflictSearch::try_set (const std::vector<bool>& kept)
{
    if (is_over ())
        return Verdict::unknown;
    put_bounds (kept);
    inner_->drop_solutions ();
    inner_->parameters.doubles[parameter_number (RealSetting::time_limit)] = seconds_left ();
    const KLVrescode_t code = inner_.optimize (optimizer_);
    if (code == KLV_RES_USER_STOP || code == KLV_RES_OUT_OF_MEMORY)
        code_ = code;
    const Solution* solution = inner_.answer ();
    if (code != KLV_RES_OK || solution == nullptr)
        return Verdict::unknown;
    if (!is_infeasible (*solution))
        return has_feasible_point (*solution) ? Verdict::possible : Verdict::unknown;
    kept_ = kept;
    if (has_certificate (*solution))
        take_support (*solution);
    return Verdict::contradictory;
}

// Finds out by linear algebra which members are needed. They must have a certificate of their own.
bool ConflictSearch::keep_needed_members ()
{
    WeightedMembers conflict;
    for (std::size_t k = 0; k < members_.size (); ++k)
        if (kept_[k]) {
            conflict.members.push_back (members_[k]);
            conflict.multipliers.push_back (multipliers_[k]);
        }
    if (!keep_needed (problem_, conflict, [this] { return is_over (); }))
        return false;
    std::vector<bool> needed (members_.size ());
    for (std::size_t k = 0; k < members_.size (); ++k)
        needed[k] = kept_[k] && std::ranges::count (conflict.members, members_[k]) > 0;
    put_bounds (needed);
    std::vector<double> y (static_cast<std::size_t> (inner_->problem ().constraints ()));
    for (std::size_t k = 0; k < conflict.members.size (); ++k)
        if (const ConflictMember& member = conflict.members[k]; !member.is_variable ())
            y[index (row_of_[index (member.item)])] +=
                (member.is_upper () ? -1 : 1) * conflict.multipliers[k];
    if (!certify_infeasible (inner_->problem (), {y}))
        return false;
    kept_ = std::move (needed);
    return true;
}

// Drops of the members begin ... end - 1 as many as it can: all at once, or each half for itself.
void ConflictSearch::reduce (std::size_t begin, std::size_t end)
{
    std::vector<bool> without = kept_;
    std::fill (without.begin () + static_cast<std::ptrdiff_t> (begin),
               without.begin () + static_cast<std::ptrdiff_t> (end), false);
    if (without == kept_)
        return;
    const bool is_one = std::count (without.begin (), without.end (), true) + 1 ==
                        std::count (kept_.begin (), kept_.end (), true);
    switch (try_set (without)) {
    case Verdict::contradictory:
        return;
    case Verdict::unknown:
        all_needed_ = all_needed_ && !is_one && !is_over ();
        break;
    case Verdict::possible:
        break;
    }
    if (is_one || is_over ())
        return;
    const std::size_t middle = begin + (end - begin) / 2;
    reduce (begin, middle);
    reduce (middle, end);
}

// A certificate's support for continuous problems. Whether a relaxation is infeasible is found out first: then its certificate
// does for the integers too.
void ConflictSearch::start_from (const Solution& infeasible)
{
    if (has_certificate (infeasible)) {
        collect (&infeasible);
        load (true);
        return;
    }
    collect (nullptr);
    load (true);
    if (problem_.is_linear () && try_set (std::vector<bool> (kept_)) == Verdict::contradictory)
        return;
    by_search_ = has_integers ();
    if (by_search_)
        load (false);
}

Conflict ConflictSearch::run ()
{
    bool proved = problem_.is_linear () && !by_search_ && keep_needed_members ();
    if (!proved) {
        if (members_.size () > 1)
            for (const auto& [begin, end] : {std::pair{std::size_t{0}, members_.size () / 2},
                                             std::pair{members_.size () / 2, members_.size ()}})
                reduce (begin, end);
        else
            reduce (0, members_.size ());
        proved = all_needed_ && !is_over ();
    }
    Conflict conflict;
    conflict.irreducible = proved;
    conflict.by_search = by_search_;
    conflict.relaxed = has_integers () && !by_search_;
    for (std::size_t k = 0; k < members_.size (); ++k)
        if (kept_[k])
            conflict.members.push_back (members_[k]);
    task_.information.set (RealItem::time_conflict, Seconds (SteadyClock::now () - began_).count ());
    return conflict;
}

static void print (Task& task, std::int32_t stream)
{
    constexpr std::size_t most_lines = 20;
    const Problem& problem = task.problem ();
    const Conflict& conflict = task.conflict;
    const std::size_t count = conflict.members.size ();
    const auto say = [&] (const std::string& line) { task.streams.print_on (stream, line); };
    const char* found = conflict.by_search ? " (by search, not certified)"
                        : conflict.relaxed ? ", integers or not"
                                           : "";
    if (count == 0)
        say (text ("Conflict: without any bound the problem is infeasible", found, "."));
    else
        say (text ("Conflict: ", count, count == 1 ? " bound can't hold" : " bounds can't hold together",
                   found,
                   !conflict.irreducible ? "; some may not be needed for that:"
                   : count == 1          ? ":"
                                         : ", but can without any one of them:"));
    for (std::size_t k = 0; k < std::min (count, most_lines); ++k) {
        const ConflictMember& member = conflict.members[k];
        const Bounds& bounds = member.is_variable () ? problem.variable : problem.constraint;
        say (text ("  ",
                   member.is_variable () ? describe_variable (problem, member.item)
                                         : describe_constraint (problem, member.item),
                   member.is_upper () ? " <= " : " >= ",
                   (member.is_upper () ? bounds.upper : bounds.lower)[index (member.item)]));
    }
    if (count > most_lines)
        say (text ("  and ", count - most_lines, " more"));
}

static void tell (Task& task, std::int32_t stream)
{
    task.information.set (IntItem::conflict_members, std::ssize (task.conflict.members));
    task.information.set (IntItem::conflict_irreducible, task.conflict.irreducible);
    if (task.parameters.get (IntSetting::log_level) >= 1)
        print (task, stream);
}

static KLVrescode_t search (Task& task, std::int32_t stream, const Solution& infeasible,
                            const Optimizer& optimizer)
{
    ConflictSearch search (task, optimizer);
    search.start_from (infeasible);
    task.conflict = search.run ();
    tell (task, stream);
    return search.code ();
}

KLVrescode_t find_conflict (Task& task, std::int32_t stream, const Optimizer& optimizer)
{
    const Solution* infeasible = infeasible_slot (task);
    const bool is_told =
        task.parameters.get (IntSetting::log_level) >= 1 && task.streams.anyone_listens_on (stream);
    if (infeasible == nullptr || !is_told || task.parameters.get (RealSetting::conflict_time_limit) <= 0)
        return KLV_RES_OK;
    // One without a search's word holds whatever the parameters are.
    if (task.conflict.members.empty () || task.conflict.by_search)
        return search (task, stream, *infeasible, optimizer);
    tell (task, stream);
    return KLV_RES_OK;
}

KLVrescode_t analyze_feasibility (Task& task, std::int32_t stream, const Optimizer& optimizer)
{
    task.conflict = {};
    const double limit = task.parameters.get (RealSetting::conflict_time_limit);
    if (limit <= 0)
        return KLV_RES_OK;
    InnerTask trial (task, InnerTask::Lines::dropped);
    trial->replace_problem (without_objective (task.problem ()));
    trial->parameters.integers[parameter_number (IntSetting::log_level)] = 0;
    trial->parameters.doubles[parameter_number (RealSetting::time_limit)] = limit;
    const KLVrescode_t code = trial.optimize (optimizer);
    if (code == KLV_RES_USER_STOP || code == KLV_RES_OUT_OF_MEMORY)
        return code;
    if (const Solution* infeasible = infeasible_slot (*trial))
        return search (task, stream, *infeasible, optimizer);
    const Solution* solution = trial.answer ();
    const bool has_point = solution != nullptr && has_feasible_point (*solution);
    task.streams.print_on (stream, has_point ? "The problem is feasible."
                                             : "Whether the problem is feasible was not found out.");
    return KLV_RES_OK;
}

}
