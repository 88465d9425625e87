// fuzz_ways COUNT|PROBLEM|named [FIRST] [WORD ...]: solves COUNT random tiny linear problems, or the one given as text, or a fixed
// list, in every way that the parameters offer, and compares with the truth. WORDs choose ways by their names
// ("interior", "basis=0"); "show" tells good answers as well. Children solve, so that a call that crashes or does not end
// costs itself only.
#include "tests/fuzz/odd_problem.h"
#include "tests/library/model.h"
#include "tests/support/truth.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using fuzz::require;

constexpr double slow = 1, patience = 4;    // seconds
constexpr std::size_t most_ways = 200;

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
    std::string name, settings;
    bool interior, basic;    // the slots that it is to fill
};

std::vector<Way> make_ways (const std::vector<std::string>& words)
{
    std::vector<Way> ways;
    for (const auto& [optimizer, choice] : {std::pair ("primal", "0"),
                                            {"dual", "1"},
                                            {"automatic", "2"},
                                            {"interior iterative", "3 INTPNT_METHOD 1"},
                                            {"interior factorization", "3 INTPNT_METHOD 2"}})
        for (const auto& [presolve, on] : {std::pair ("off", "0"), {"on", "1"}, {"auto", "2"}})
            for (const char* basis : {"0", "1"})
                for (const char* threads : {"1", "2"}) {
                    const bool simplex = choice[0] < '2', with_basis = *basis == '1';
                    const std::string name = std::string (optimizer) + " presolve=" + presolve +
                                             " basis=" + basis + " threads=" + threads;
                    const bool chosen = std::ranges::all_of (
                        words, [&] (const std::string& word) { return name.find (word) != name.npos; });
                    if (chosen && !(simplex && with_basis))
                        ways.push_back ({name,
                                         std::string ("OPTIMIZER ") + choice + " PRESOLVE " + on +
                                             " INTPNT_BASIS " + basis + " MAX_THREADS " + threads,
                                         choice[0] == '3' || (choice[0] == '2' && with_basis),
                                         simplex || with_basis});
                }
    return ways;
}

// ---- Judging ---------------------------------------------------------------------------------------------

void check_slots (const model::Task& task, const Way& way, const truth::Truth& truth)
{
    std::string missing;
    int answered = 0;
    for (const auto& [which, wanted] : {std::pair (KLV_SOL_ITR, way.interior), {KLV_SOL_BAS, way.basic}}) {
        const proof::Slot slot = model::slot (task, which);
        if (slot.defined && slot.solution != KLV_SOLSTA_UNKNOWN) {
            try {
                proof::Judge (task.problem (), slot, 1.001e-6).judge ();
            } catch (const std::exception& fault) {
                throw std::runtime_error ("judge: " + std::string (fault.what ()));
            }
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
    const auto begin = Clock::now ();
    const KLVrescode_t code = KLV_optimize (task);
    const double seconds = std::chrono::duration<double> (Clock::now () - begin).count ();
    if (shown)
        std::printf ("%s: %s, code %d\n", way.name.c_str (), model::proved (task).c_str (), code);
    check_slots (task, way, truth);
    require (code == 0 || !truth.robust, "code " + std::to_string (code));
    require (seconds < slow, "slow: " + std::to_string (seconds) + " s");
}

std::string told (const truth::Truth& truth)
{
    const std::string edge = truth.robust ? "" : ", but for little";
    return (truth.optimal () ? "optimum " + std::to_string (truth.value)
            : truth.feasible ? "unbounded"
            : truth.bounded  ? "infeasible"
                             : "infeasible, its dual too") +
           edge;
}

// ---- Children --------------------------------------------------------------------------------------------

// Where the solving child is; in memory that its parent sees.
struct Place {
    volatile long problem = 0;
    volatile std::size_t way = 0;
    volatile double since = 0;    // seconds of the clock; 0: not in a call
    long passed = 0, failed = 0, counted = 0;
};

double now ()
{
    return std::chrono::duration<double> (Clock::now ().time_since_epoch ()).count ();
}

class Run {
public:
    Run (std::vector<Way> ways, std::function<std::string (long)> make, long first, long end, bool shown)
        : ways_ (std::move (ways)),
          make_ (std::move (make)),
          end_ (end),
          shown_ (shown),
          place_ (*new (::mmap (nullptr, sizeof (Place), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS,
                                -1, 0)) Place)
    {
        place_.problem = first;
        require (::pipe (pipe_) == 0, "no pipe");
    }

    bool all_pass ()
    {
        std::thread reader ([this] { count_failures (); });
        while (place_.problem < end_)
            if (const std::string death = solve_in_child (); !death.empty ()) {
                ++place_.failed;
                report (death);
                step ();
            }
        ::close (pipe_[1]);
        reader.join ();
        for (const auto& [kind, count] : kinds_)
            std::printf ("%6ld  %s\n", count, kind.c_str ());
        std::printf ("%ld passed, %ld failed\n", place_.passed, place_.failed);
        return place_.failed == 0;
    }

private:
    void step ()
    {
        place_.way = place_.way + 1;
        if (place_.way == ways_.size ()) {
            place_.way = 0;
            place_.problem = place_.problem + 1;
        }
    }

    // One line a failure, through the pipe to the parent.
    void report (const std::string& failure)
    {
        const std::string text = make_ (place_.problem);
        const std::string line = std::to_string (place_.problem) + '\t' + ways_[place_.way].name + '\t' +
                                 failure + "\t" + text + '\n';
        require (::write (pipe_[1], line.data (), line.size ()) > 0, "the parent has gone");
    }

    // Why the child died, if it did not end by itself.
    std::string solve_in_child ()
    {
        place_.since = 0;
        std::fflush (stdout);
        const pid_t child = ::fork ();
        if (child == 0) {
            solve_all ();
            ::_exit (EXIT_SUCCESS);
        }
        int status = 0;
        bool killed = false;
        while (::waitpid (child, &status, WNOHANG) == 0) {
            std::this_thread::sleep_for (std::chrono::milliseconds (5));
            const double since = place_.since;
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
        while (place_.problem < end_) {
            const std::string text = make_ (place_.problem);
            const truth::Truth truth = truth::truth (model::Task (text).problem ());
            for (const long problem = place_.problem; place_.problem == problem; step ()) {
                place_.since = now ();
                try {
                    check (text, ways_[place_.way], truth, shown_);
                    ++place_.passed;
                } catch (const std::exception& fault) {
                    ++place_.failed;
                    report (fault.what () + std::string (" (") + told (truth) + ')');
                }
                place_.since = 0;
            }
        }
    }

    // Prints them as they come: a problem's text once.
    void count_failures ()
    {
        ::FILE* lines = ::fdopen (pipe_[0], "r");
        char text[4096];
        std::string last;
        while (std::fgets (text, sizeof text, lines) != nullptr) {
            const std::vector<std::string> parts = fuzz::pieces_of (text, '\t');
            std::printf ("%s: %s: %s\n", parts.at (0).c_str (), parts.at (1).c_str (), parts.at (2).c_str ());
            if (std::exchange (last, parts.at (0)) != parts.at (0))
                std::printf ("    %s", parts.at (3).c_str ());
            // By kind and the way without its threads.
            const std::string kind = parts[2].substr (0, parts[2].find_first_of (":(0123456789"));
            ++kinds_[kind + " | " + parts[1].substr (0, parts[1].find (" threads"))];
        }
        std::fclose (lines);
    }

    std::vector<Way> ways_;
    std::function<std::string (long)> make_;
    long end_;
    bool shown_;
    Place& place_;
    int pipe_[2] = {};
    std::map<std::string, long> kinds_;
};

}

int main (int argc, char** argv)
{
    std::setvbuf (stdout, nullptr, _IOLBF, BUFSIZ);
    std::vector<std::string> words (argv + 1, argv + argc);
    const std::string what = words.empty () ? "100" : words[0];
    const auto is_number = [] (const std::string& text) {
        return !text.empty () && text.find_first_not_of ("0123456789") == text.npos;
    };
    long first = 0, count = 1;
    std::function<std::string (long)> make = [&] (long) { return what; };
    if (is_number (what)) {
        count = std::stol (what);
        make = [] (long i) {
            fuzz::Random random (static_cast<std::uint64_t> (i));
            return text_of (fuzz::OddProblem (random).make ());
        };
    } else if (what == "named") {
        count = std::ssize (named);
        make = [] (long i) { return std::string (named[static_cast<std::size_t> (i)]); };
    }
    if (!words.empty ())
        words.erase (words.begin ());
    if (!words.empty () && is_number (words[0])) {
        first = std::stol (words[0]);
        words.erase (words.begin ());
    }
    const bool shown = std::erase (words, "show") > 0;
    std::vector<Way> ways = make_ways (words);
    if (ways.empty ()) {
        std::printf ("no way has this name\n");
        return EXIT_FAILURE;
    }
    return Run (std::move (ways), make, first, first + count, shown).all_pass () ? EXIT_SUCCESS
                                                                                 : EXIT_FAILURE;
}
