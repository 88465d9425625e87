// Attempts to solve: runs on the problem's form, whose claims are taken back to the problem as stated and checked on it.
#pragma once

#include "kalvo/forms/conic.h"
#include "kalvo/forms/linear.h"
#include "kalvo/forms/quadratic.h"
#include "kalvo/solve/call.h"
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
    bool patient = false;       // with steps however short

    bool operator== (const Attempt&) const = default;
};

struct Tried {
    Attempt attempt;
    Answer answer = {};
};

// An attempt as it was begun, which tells it from all others of an optimisation.
struct Begun {
    Attempt attempt;
    bool from_start = false;
    bool without_far_bounds = false;
    bool scaled = true;
    std::int32_t centred = 0;    // how often the form was made anew about a point

    bool operator== (const Begun&) const = default;
};

// An attempt that came to its end, or took its process with it: the claim then says so.
struct Past {
    Begun begun;
    Point claim;
};

// Takes down what attempts begin and what they leave, so that another process can go on where this one ends.
class Journal {
public:
    Journal () = default;
    Journal (const Journal&) = delete;
    Journal& operator= (const Journal&) = delete;
    virtual ~Journal () = default;

    virtual void begun (const Begun& begun, const char* engine) = 0;
    virtual void ended (const Past& past) = 0;
    virtual void incumbent (std::vector<double>&& x) = 0;    // a point of the problem as stated
};

// Why there is nothing to run. A refused item is named by who knows the problem's names.
struct Failure {
    KLVrescode_t code = KLV_RES_OK;
    std::string message = {};
    Refused refused = {};
};

class Attempts {
public:
    // `integers`: whether integer variables must be whole. With a journal, attempts of the past are not made again, and answers keep
    // their claims.
    Attempts (Task& task, Call& call, Runs& runs, bool integers, Journal* journal = nullptr,
              std::vector<Past> past = {});

    // Finds an engine for the method and makes the engine's form of the problem; runs then use that form. Bounds from `far` on are
    // left out, but answers are checked with them. Quadratic and conic forms are scaled, unless told otherwise.
    std::optional<Failure> prepare (Method method, double far = infinity, bool scaled = true);

    // Makes the conic form that was prepared anew about a point that an attempt has left. False: it would be the same.
    bool centre (const Solution& about);

    // Lowers the problem once more, bounds so far away that they spoil an engine's numbers left out. False: there are none.
    bool leave_out_far_bounds (double far = 1e15);
    void take_back_far_bounds ();
    bool is_without_far_bounds () const { return without_far_bounds_; }

    // Begins an attempt beside those that are under way; `why` is for the log. Throws std::system_error when no thread can be
    // started.
    void start (const Attempt& attempt, const std::shared_ptr<const Start>& start, const std::string& why);

    // The next answer, checked, or nothing when none came in `seconds`. An interior-point run that stagnates is given up.
    std::optional<Tried> next (double seconds = infinity);

    Tried run (const Attempt& attempt, const std::shared_ptr<const Start>& start, const std::string& why);
    std::size_t under_way () const { return running_.size () + recalled_.size (); }
    void drop_all ();

    // Whether no further attempt is to be made after this answer.
    bool settles (const Answer& answer) const;

    // Checks claims that no run has made.
    Answer judge (Point&& claimed);

    int threads_to_be_had () const;
    std::size_t size () const;    // entries, rows and columns of the form
    bool has_entries () const;    // whether the form's matrix has any
    bool has_asymmetric_cones () const;
    const Problem& problem () const { return *problem_; }
    const Parameters& settings () const { return *settings_; }
    bool stopped () const { return call_.answer () != 0; }
    Task& task () { return task_; }
    Runs& runs () { return runs_; }

private:
    struct Running {
        Runs::Id id;
        Begun begun;
        Stagnation stagnation;
    };

    Lowered make_form (double far) const;
    void lower (double far);
    void tell_form ();
    int threads (Method method) const;
    void count (Method method, const Claims& claims);
    bool recall (const Begun& begun);
    void note_end (const Begun& begun, const Answer& answer);
    void tell_ends ();
    std::optional<Tried> take_recalled ();
    std::optional<Tried> give_up_one ();
    Tried take (Runs::Ended&& ended);

    Task& task_;
    Call& call_;
    Runs& runs_;
    std::shared_ptr<const Parameters> settings_;
    std::shared_ptr<const Problem> problem_;
    bool integers_;
    Check check_;
    std::shared_ptr<Engine> engine_;
    Method method_ = Method::dual_simplex;    // for which the form was made
    Lowered lowered_;
    bool without_far_bounds_ = false, scaled_ = true;
    double far_ = infinity;
    std::optional<Centre> centre_;
    std::int32_t centred_ = 0;
    std::vector<Running> running_;

    Journal* journal_;
    std::vector<Past> past_;
    std::vector<Past> recalled_;    // attempts of the past that were started again
    std::vector<Past> untold_;      // ends that the journal does not know yet
};

// Checks claims in a phase of its own.
Answer judge (Call& call, const Check& check, const Problem& problem, Point&& claimed);

// The number of items in one pass over the problem.
std::size_t work_of (const Problem& problem);

void add_one (Task& task, IntItem item);

}
