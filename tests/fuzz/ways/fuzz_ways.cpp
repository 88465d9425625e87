// fuzz_ways COUNT [FIRST [PROBLEM]]: solves COUNT tiny linear problems, a few odd ones, then random ones, or the one given as text,
// in every way that the parameters offer, and compares with the truth. A failing way is one line. Children solve, so that a call
// that crashes or does not end costs its own problem only.
#include "kalvo/engines/events.h"
#include "tests/fuzz/odd_problem.h"
#include "tests/library/model.h"
#include "tests/support/truth.h"

#include <csignal>
#include <sys/mman.h>
#include <sys/wait.h>

namespace {

using fuzz::require;

constexpr double slow = 1;    // seconds
constexpr unsigned patience = 4;

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

std::vector<Way> make_ways ()
{
    std::vector<Way> ways;
    for (const std::string optimizer : {"0", "1", "2", "3 INTPNT_METHOD 1", "3 INTPNT_METHOD 2"})
        for (const std::string presolve : {"0", "1", "2"})
            for (const std::string basis : {"0", "1"})
                for (const std::string threads : {"1", "2"}) {
                    const bool simplex = optimizer < "2", with_basis = basis == "1";
                    if (!simplex || !with_basis)
                        ways.push_back ({"OPTIMIZER " + optimizer + " PRESOLVE " + presolve +
                                             " INTPNT_BASIS " + basis + " MAX_THREADS " + threads,
                                         optimizer > "3" || (!simplex && with_basis), simplex || with_basis});
                }
    return ways;
}

void check_slots (const model::Task& task, const Way& way, const truth::Truth& truth)
{
    std::string missing;
    int answered = 0;
    for (const auto& [which, wanted] : {std::pair (KLV_SOL_ITR, way.interior), {KLV_SOL_BAS, way.basic}}) {
        const proof::Slot slot = model::slot (task, which);
        if (slot.defined && slot.solution != KLV_SOLSTA_UNKNOWN) {
            proof::Judge (task.problem (), slot, 1.001e-6).judge ();
            require (truth::check_claim (slot, truth) || !truth.robust, "no answer");
            ++answered;
        } else if (wanted)
            missing = which == KLV_SOL_ITR ? "itr" : "bas";
    }
    require (answered > 0 || !truth.robust, "no answer");
    require (answered == 0 || missing.empty (), "one slot only, not " + missing);
}

void check (const std::string& problem, const Way& way, const truth::Truth& truth)
{
    const model::Task task (problem, way.settings);
    const auto begin = klv::Clock::now ();
    const KLVrescode_t code = KLV_optimize (task);
    const double seconds = klv::seconds_between (begin, klv::Clock::now ());
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

// In a child: solves in all ways, tells those that fail and gives their number. `at`: where it is, for its parent.
int failing_ways (const std::string& problem, const std::vector<Way>& ways, std::size_t& at)
{
    const truth::Truth truth = truth::truth (model::parse (problem));
    int failed = 0;
    for (at = 0; at < ways.size (); ++at)
        try {
            ::alarm (patience);
            check (problem, ways[at], truth);
        } catch (const std::exception& fault) {
            ++failed;
            std::printf ("%s: %s (%s): %s\n", ways[at].settings.c_str (), fault.what (),
                         told (truth).c_str (), problem.c_str ());
        }
    return failed;
}

}

int main (int argc, char** argv)
{
    const std::vector<Way> ways = make_ways ();
    auto* const at = static_cast<std::size_t*> (
        ::mmap (nullptr, sizeof (std::size_t), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    ::setenv ("OPENBLAS_NUM_THREADS", "1", 0);    // else threads spin at the end of each child
    return fuzz::run_cases (argc, argv, [&] (long i) {
        fuzz::Random random (static_cast<std::uint64_t> (i));
        const std::string problem = argc > 3                 ? argv[3]
                                    : i < std::ssize (named) ? named[static_cast<std::size_t> (i)]
                                                             : text_of (fuzz::odd_problem (random));
        const pid_t child = ::fork ();
        if (child == 0) {
            const int failed = failing_ways (problem, ways, *at);
            std::fflush (stdout);
            ::_exit (failed);
        }
        int status = 0;
        ::waitpid (child, &status, 0);
        require (!WIFSIGNALED (status),
                 ways[*at].settings + ": " + ::strsignal (WTERMSIG (status)) + ": " + problem);
        require (status == 0, std::to_string (WEXITSTATUS (status)) + " ways fail");
        return "solved in " + std::to_string (ways.size ()) + " ways";
    });
}
