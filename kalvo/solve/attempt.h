// Attempts to solve: runs on the problem's form, whose claims are taken back to the problem as stated and checked on it.
#pragma once

#include "kalvo/forms/linear.h"
#include "kalvo/solve/runs.h"
#include "kalvo/solve/stagnation.h"
#include "kalvo/task/task.h"
#include "kalvo/verify/check.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace klv {

struct Attempt {
    Method method = Method::dual_simplex;
    bool reformulate = true;    // false: without presolve and scaling

    bool operator== (const Attempt&) const = default;
};

struct Tried {
    Attempt attempt;
    Answer answer = {};
};

class Attempts {
public:
    // `integers`: whether integer variables must be whole.
    Attempts (Task& task, Runs& runs, bool integers);

    // Finds an engine for the method and makes the engine's form of the problem. Runs need a prepared engine.
    KLVrescode_t prepare (Method method);

    // Lowers the problem once more, bounds so far away that they spoil an engine's numbers left out; answers are checked with them
    // all the same. False: there are none.
    bool leave_out_far_bounds ();

    // Begins an attempt beside those that are under way; `why` is for the log. Throws std::system_error when no thread can be
    // started.
    void start (const Attempt& attempt, const std::shared_ptr<const Start>& start, const std::string& why);

    // The next answer, checked, or nothing when none came in `seconds`. An interior-point run that stagnates is given up.
    std::optional<Tried> next (double seconds = infinity);

    Tried run (const Attempt& attempt, const std::shared_ptr<const Start>& start, const std::string& why);
    std::size_t under_way () const { return running_.size (); }
    void drop_all ();

    // Whether no further attempt is to be made after this answer.
    bool settles (const Answer& answer) const;

    // Checks claims that no run has made.
    Answer judge (Point&& claimed);

    int threads_to_be_had () const;
    std::size_t size () const;    // entries, rows and columns of the form
    bool has_entries () const;    // whether the form's matrix has any
    const Check& check () const { return check_; }
    const Problem& problem () const { return *problem_; }
    const Parameters& settings () const { return *settings_; }
    bool stopped () const { return runs_.answer () != 0; }
    Runs& runs () { return runs_; }
    Task& task () { return task_; }

private:
    struct Running {
        Runs::Id id;
        Attempt attempt;
        Stagnation stagnation;
    };

    KLVrescode_t lower ();
    int threads (Method method) const;
    void count (Method method, const Claims& claims);
    std::optional<Tried> give_up_one ();
    Tried take (Runs::Ended&& ended);

    Task& task_;
    Runs& runs_;
    std::shared_ptr<const Parameters> settings_;
    std::shared_ptr<const Problem> problem_;
    bool integers_;
    Check check_;
    std::shared_ptr<Engine> engine_;
    Lowered lowered_;
    std::vector<Running> running_;
};

// The number of items in one pass over the problem.
std::size_t work_of (const Problem& problem);

void add_one (Task& task, IntItem item);

}
