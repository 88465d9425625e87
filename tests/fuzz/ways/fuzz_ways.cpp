// fuzz_ways COUNT|PROBLEM|named [FIRST] [WORD ...]: solves COUNT random tiny linear problems, or the one given as text, or a fixed
// list, in every way that the parameters offer, and compares with the truth. WORDs choose ways by their
// settings ("OPTIMIZER 3", "INTPNT_BASIS 0"); "show" tells good answers as well. Children solve, so that a call that crashes or does not end
// costs itself only.
#include "tests/fuzz/odd_problem.h"
#include "tests/library/model.h"
#include "tests/support/truth.h"

#include <chrono>
#include <csignal>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>

namespace {

using fuzz::require;

constexpr double slow = 1, patience = 4;    // seconds

const std::vector<std::string> named{
    "min 0 0; ..1 0..; 1 1e-10 in 3..",                 // feasible: x2 is large
    "min 0 0; ..0.9999999 ..; 1 1e-8 in 1..",           // feasible
    "max 1; ..; 5e-9 in ..1",                           // bounded
    "min 1 1; 0.. 0..; 1 1 in ..; 1 -1 in 1..2",        // a row without bounds first
    "min 1; 0..1; 1 in 1.0000001..",                    // infeasible by less than the tolerances
    "min -1 -1; 0.. 0..; 1 -1 in 1..; 1 -1 in ..-1",    // neither the problem nor its dual has a point
    "min 1; 0..; 0 in 1..",                             // an empty row that contradicts
};

struct Way {
    std::string settings;
    bool interior, basic;    // the slots that it is to fill
};

std::vector<Way> make_ways (const std::vector<std::string>& words)
{
    std::vector<Way> ways;
    for (const std::string optimizer : {"0", "1", "2", "3 INTPNT_METHOD 1", "3 INTPNT_METHOD 2"})
        for (const char presolve : {'0', '1', '2'})
            for (const char basis : {'0', '1'})
                for (const char threads : {'1', '2'}) {
                    const bool simplex = optimizer < "2", interior = optimizer > "3",
                               with_basis = basis == '1';
                    const std::string settings = "OPTIMIZER " + optimizer + " PRESOLVE " + presolve +
                                                 " INTPNT_BASIS " + basis + " MAX_THREADS " + threads;
                    const bool chosen = std::ranges::all_of (
                        words, [&] (const std::string& word) { return settings.find (word) != word.npos; });
                    if (chosen && !(simplex && with_basis))
                        ways.push_back (
                            {settings, interior || (!simplex && with_basis), simplex || with_basis});
                }
    return ways;
}

double now ()
{
    return std::chrono::duration<double> (std::chrono::steady_clock::now ().time_since_epoch ()).count ();
}

// ---- Judging ---------------------------------------------------------------------------------------------

void check_slots (const model::Task& task, const Way& way, const truth::Truth& truth)
{
    std::string missing;
    int answered = 0;
    for (const auto& [which, wanted] : {std::pair (KLV_SOL_ITR, way.interior), {KLV_SOL_BAS, way.basic}}) {
        const proof::Slot slot = model::slot (task, which);
        if (slot.defined && slot.solution != KLV_SOLSTA_UNKNOWN) {
            proof::Judge (task.problem (), slot, 1.001e-6).judge ();
            truth::check_claim (slot, truth);
            require (truth::is_answer (slot) || !truth.robust, "no answer");
            ++answered;
        } else if (wanted)
            missing = which == KLV_SOL_ITR ? "itr" : "bas";
    }
    require (answered > 0 || !truth.robust, "no answer");
    require (answered == 0 || missing.empty (), "one slot only, not " + missing);
}

void check (const std::string& problem, const Way& way, const truth::Truth& truth, bool shown)
{
    const model::Task task (problem, way.settings);
    const double begin = now ();
    const KLVrescode_t code = KLV_optimize (task);
    const double seconds = now () - begin;
    if (shown)
        std::printf ("%s: %s, code %d\n", way.settings.c_str (), model::proved (task).c_str (), code);
    check_slots (task, way, truth);
    require (code == 0 || !truth.robust, "code " + std::to_string (code));
    require (seconds < slow, "slow: " + std::to_string (seconds) + " s");
}

std::string told (const truth::Truth& truth)
{
    return (truth.optimal () ? "optimum " + std::to_string (truth.value)
            : truth.feasible ? "unbounded"
            : truth.bounded  ? "infeasible"
                             : "infeasible, its dual too") +
           (truth.robust ? "" : ", but for little");
}

// ---- Children --------------------------------------------------------------------------------------------

// Where the solving child is; in memory that its parent sees.
struct Place {
    volatile long problem = 0, passed = 0, failed = 0;
    volatile std::size_t way = 0;
    volatile double since = 0;    // seconds of the clock; 0: not in a call
};

class Run {
public:
    Run (std::vector<Way> ways, std::vector<std::string> given, long first, long count, bool shown)
        : ways_ (std::move (ways)), given_ (std::move (given)), end_ (first + count), shown_ (shown)
    {
        constexpr int access = PROT_READ | PROT_WRITE, kind = MAP_SHARED | MAP_ANONYMOUS;
        place_ = new (::mmap (nullptr, sizeof (Place), access, kind, -1, 0)) Place;
        place_->problem = first;
    }

    bool all_pass ()
    {
        while (place_->problem < end_)
            if (const std::string death = solve_in_child (); !death.empty ())
                step (death);
        std::printf ("%ld passed, %ld failed\n", place_->passed, place_->failed);
        return place_->failed == 0;
    }

private:
    std::string text () const
    {
        fuzz::Random random (static_cast<std::uint64_t> (place_->problem));
        return given_.empty () ? text_of (fuzz::odd_problem (random))
                               : given_[static_cast<std::size_t> (place_->problem)];
    }

    // To the next way. A failure is one line, so that they can be sorted and counted.
    void step (const std::string& failure)
    {
        volatile long& count = failure.empty () ? place_->passed : place_->failed;
        count = count + 1;
        if (!failure.empty ())
            std::printf ("%ld: %s: %s: %s\n", place_->problem, ways_[place_->way].settings.c_str (),
                         failure.c_str (), text ().c_str ());
        place_->way = (place_->way + 1) % ways_.size ();
        place_->problem = place_->problem + (place_->way == 0);
    }

    // Why the child died, if it did not end by itself.
    std::string solve_in_child ()
    {
        place_->since = 0;
        const pid_t child = ::fork ();
        if (child == 0) {
            solve_all ();
            ::_exit (EXIT_SUCCESS);
        }
        int status = 0;
        bool killed = false;
        while (::waitpid (child, &status, WNOHANG) == 0) {
            std::this_thread::sleep_for (std::chrono::milliseconds (5));
            const double since = place_->since;
            if (since > 0 && now () - since > patience && !killed)
                killed = ::kill (child, SIGKILL) == 0;
        }
        return killed                 ? "does not end"
               : WIFSIGNALED (status) ? "crash: " + std::string (::strsignal (WTERMSIG (status)))
               : status != 0          ? "crash: an exit"
                                      : "";
    }

    void solve_all ()
    {
        while (place_->problem < end_) {
            const std::string problem = text ();
            const truth::Truth truth = truth::truth (model::parse (problem));
            for (const long number = place_->problem; place_->problem == number;) {
                place_->since = now ();
                std::string failure;
                try {
                    check (problem, ways_[place_->way], truth, shown_);
                } catch (const std::exception& fault) {
                    failure = fault.what () + std::string (" (") + told (truth) + ')';
                }
                place_->since = 0;
                step (failure);
            }
        }
    }

    std::vector<Way> ways_;
    std::vector<std::string> given_;
    long end_;
    bool shown_;
    Place* place_;
};

// Takes the first word if it is a number.
std::optional<long> take_number (std::vector<std::string>& words)
{
    if (words.empty () || words[0].find_first_not_of ("0123456789") != std::string::npos)
        return {};
    const long number = std::stol (words[0]);
    words.erase (words.begin ());
    return number;
}

}

int main (int argc, char** argv)
{
    std::setvbuf (stdout, nullptr, _IOLBF, BUFSIZ);
    std::vector<std::string> words (argv + 1, argv + argc), given;
    std::optional<long> count = take_number (words);
    if (!count && !words.empty ()) {
        given = words[0] == "named" ? named : std::vector{words[0]};
        words.erase (words.begin ());
    }
    const long first = take_number (words).value_or (0);
    const bool shown = std::erase (words, "show") > 0;
    const std::vector<Way> ways = make_ways (words);
    if (ways.empty ()) {
        std::printf ("no way has these settings\n");
        return EXIT_FAILURE;
    }
    const long all = given.empty () ? count.value_or (100) : std::ssize (given) - first;
    return Run (ways, given, first, all, shown).all_pass () ? EXIT_SUCCESS : EXIT_FAILURE;
}
