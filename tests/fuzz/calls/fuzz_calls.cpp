// fuzz_calls COUNT [FIRST [KILLS]]: makes COUNT random calls of kalvoopt. Each must end in time with outputs in order and nothing
// left over, answers that hold what they claim, and a session in which a good call works. Case number i makes the
// same call in every run; a failing one is printed, and run alone by `fuzz_calls 1 i`. In one of KILLS calls all workers are killed
// at some time.
#include <csignal>

#include "tests/fuzz/calls/check.h"
#include "tests/fuzz/calls/random_call.h"
#include "tests/support/problem_file.h"
#include "tests/support/processes.h"

namespace {

using namespace standalone;
using fuzz::CallMaker, fuzz::Random, fuzz::RandomCall, fuzz::require;

constexpr unsigned longest_call = 120;    // seconds
std::string running;

extern "C" void end_of_patience (int)
{
    std::fputs (running.c_str (), stderr);
    std::abort ();
}

void define_functions (Random& random)
{
    const auto odd = value (CallMaker (random).odd ());
    const auto inner = std::make_shared<std::vector<Value>> (values (CallMaker (random).call ().inputs));
    const std::pair<const char*, std::function<Value ()>> answers[] = {
        {"quiet", [] { return value ("0"); }},
        {"stopping", [] { return value ("1"); }},
        {"odd", [odd] { return odd; }},
        {"failing", [] () -> Value { throw MatlabError ("on purpose"); }},
        {"pressing",
         [] {
             session ().interrupt_pending = true;
             return value ("0");
         }},
        {"again", [inner] {
             if (const std::vector<Value> inputs = std::exchange (*inner, {}); !inputs.empty ())
                 standalone::call (2, inputs);
             return value ("0");
         }}};
    for (const auto& [name, answer] : answers)
        session ().define (
            name, [answer = answer] (int, const std::vector<View>&) { return std::vector{answer ()}; });
    session ().define ("nothing", [] (int, const std::vector<View>&) { return std::vector<Value>{}; });
}

// The code, or none where even that could not be made.
std::optional<int> check_outputs (const Call& result, int outputs)
{
    require (!result.error, "ended by an error: " + result.error.value_or (""));
    require (result.left_arrays + result.left_blocks == 0, "memory is left over");
    if (outputs < 1 || !result[0])
        return std::nullopt;
    const double code = result[0].number ();
    require (result[0].class_id () == mxDOUBLE_CLASS && code >= 0 && code == std::floor (code), "r");
    require (outputs < 2 || code != 0 || result[1], "success without a result");
    if (result[1] && result[1].class_id () == mxSTRUCT_CLASS && result[1]["rcode"]) {
        require (result[1]["rcode"].number () == code, "rcode is not r");
        require (code == 0 || !result[1]["rmsg"] || !result[1]["rmsg"].text ().empty (), "no message");
        show (result[1]);    // all of it can be read
    }
    return static_cast<int> (code);
}

// Answers that can be judged: by the problem as it was made, in texts, with parameters as they are read here.
void check_answers (const RandomCall& call, const Call& result)
{
    const View solutions = result[1] && result[1].class_id () == mxSTRUCT_CLASS ? result[1]["sol"] : View ();
    const std::string settings = call.inputs.size () > 2 ? call.inputs[2] : "";
    const auto has = [] (const std::string& text, const char* word) { return text.find (word) != text.npos; };
    if (!solutions || call.problem.empty () || has (call.inputs[0], "statuskeys") ||
        has (call.inputs[0], "read") || has (settings, "KLV_DPAR_BOUND") || has (settings, "KLV_DPAR_FIX") ||
        has (settings, "KLV_DPAR_MIP"))
        return;
    klv::Problem problem = model::parse (call.problem);
    problem.sense = has (call.inputs[0], "maximize") ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
    fuzz::check_solutions (problem, solutions, has (settings, "TOLERANCE") ? 0.1 : 1.001e-6);
}

// A problem that was returned is accepted, and returned the same. Not where a bound needs a parameter, or where a record can't
// state it: cones beside affine conic constraints.
void check_returned_problem (const RandomCall& call, const Call& result)
{
    const View res = result[1] && result[1].class_id () == mxSTRUCT_CLASS ? result[1] : View ();
    const View prob = res ? res["prob"] : View ();
    const std::string settings = call.inputs.size () > 2 ? call.inputs[2] : "";
    if (!prob || prob.class_id () != mxSTRUCT_CLASS || result[0].number () != 0 ||
        (prob["cones"] && prob["accs"]) ||
        session ().printed.find ("beyond the bound infinity") != std::string::npos ||
        settings.find ("KLV_DPAR_BOUND") != settings.npos || settings.find ("KLV_DPAR_FIX") != settings.npos)
        return;
    const std::string shown = show (prob);
    const bool maximized = prob["objsense"].text () == "maximize";
    const Value again (mxDuplicateArray (prob.get ()));
    const Call second = standalone::call (2, {text (maximized ? "max prob echo(0)" : "prob echo(0)"), again});
    require (show (second[0]) == "0" && show (second[1]["prob"]) == shown,
             "the returned problem is another one: " + show (second[1]["prob"]));
}

void check_good_call ()
{
    const Call good = standalone::call (
        2, values ({"'minimize echo(0)'", "(a=[1 2; 2 1], c=[2 3], blc=[3 3], blx=[0 0])"}));
    require (show (good[0]) == "0" && show (good[1]["sol"]["bas"], "xx pobjval") == "xx=[1;1], pobjval=5",
             "a good call afterwards: " + show (good[1]["sol"]));
}

const char* run (const RandomCall& call, Random& random)
{
    reset ();
    define_functions (random);
    const std::vector<Value> inputs = values (call.inputs);
    session ().failing_allocation = call.failing_allocation;
    session ().allocations = 0;
    session ().interrupting_poll = call.interrupting_poll;
    const Call result = standalone::call (call.outputs, inputs);
    const bool memory_failed =
        call.failing_allocation > 0 && session ().allocations >= call.failing_allocation;
    session ().failing_allocation = session ().interrupting_poll = 0;
    session ().interrupt_pending = false;

    const std::optional<int> code = check_outputs (result, call.outputs);
    if (!memory_failed) {    // else answers may be there in part
        check_answers (call, result);
        check_returned_problem (call, result);
    }
    check_good_call ();
    require (session ().faults.empty (), session ().faults.empty () ? "" : session ().faults[0]);
    require (live_arrays () + live_blocks () == 0, "something is still alive");
    return !code            ? "without a code"
           : *code == 0     ? "without a fault"
           : *code < 20'000 ? "refused"
                            : "ended early";
}

long open_files ()
{
    const std::filesystem::directory_iterator entries ("/proc/self/fd");
    return std::distance (begin (entries), end (entries));
}

}

int main (int argc, char** argv)
{
    const files::Folder folder;
    std::filesystem::current_path (folder / ".");
    files::save ("good.mps", files::lines ("ROWS| N o| L a|COLUMNS| x o -1 a 1|RHS| r a 2|ENDATA|"));
    files::save ("bad.mps", files::lines ("ROWS| N o|COLUMNS| x nowhere 1|ENDATA|"));
    std::signal (SIGALRM, end_of_patience);
    const long killing = argc > 3 ? std::atol (argv[3]) : 0;
    constexpr long files_of_workers = 12;    // of those that are kept
    long files_before = 0;
    const int status = fuzz::run_cases (argc, argv, [&] (long i) {
        Random random (static_cast<std::uint64_t> (i));
        const RandomCall call = CallMaker (random).call ();
        running = "in case " + std::to_string (i) + ": " + call.text () + "\n";
        alarm (longest_call);
        const char* outcome = "";
        std::optional<processes::Killer> killer;
        if (killing > 0 && i % killing == 0)
            killer.emplace (std::chrono::microseconds (std::hash<long> () (i) * 7919 % 3000));
        try {
            outcome = run (call, random);
        } catch (const std::exception& fault) {
            throw std::runtime_error (fault.what () + ("\n" + running));
        }
        alarm (0);
        files_before = files_before == 0 ? open_files () : files_before;
        require (open_files () <= files_before + files_of_workers, "a file is left open\n" + running);
        return outcome;
    });
    reset ();    // while the host's tables still exist
    return status;
}
