// What no call reaches by itself: status keys as input, texts in place, and the eyes of the test host.

#include <thread>

#include "input/arrays.h"
#include "output/solution.h"
#include "tests/unit/gateway_test.h"

namespace {

using Helpers = GatewayTest;

TEST_F (Helpers, StatusKeysAreReadInEitherForm)
{
    static std::vector<int> keys;
    const auto translate = [] (int, mxArray**, int, const mxArray** in) {
        KLVtask_t task = nullptr;
        KLV_makeemptytask (nullptr, &task);
        translatestatuskeys (task, 3, in[0], "skx", "itr", keys.data ());
        KLV_deletetask (&task);
    };
    const std::string all = "1200 prob.sol.itr.skx; ";
    const struct {
        const char* form;
        std::vector<int> keys;    // -1: as before the call
        std::string line = "";
    } cases[] = {
        {"[]", {0, 0, 0}},
        {"[1 2 3]", {1, 2, 3}},
        {"[2.9; 0; -0.5]", {2, 0, 0}},
        {"['BA'; 'UP'; 'FI']", {KLV_SK_BASIC, KLV_SK_UPPER, KLV_SK_FIXED}},
        {"[1 77 77]", {1, 77, -1}, "1200 prob.sol.itr.skx(2); "},
        {"[1 1 nan]", {1, 1, -1}, "1200 prob.sol.itr.skx(3); "},
        {"[4294967297 1 1]", {-1, -1, -1}, "1200 prob.sol.itr.skx(1); "},
        {"['BA'; '?!'; 'FI']", {KLV_SK_BASIC, -1, -1}, "1200 prob.sol.itr.skx(2); "},
        {"[1 2]", {-1, -1, -1}, all},
        {"sparse [1;2;3]", {-1, -1, -1}, all},
        {"complex [1 2 3]", {-1, -1, -1}, all},
        {"['BAS'; 'BAS'; 'BAS']", {-1, -1, -1}, all},
        {"int32 [1 2 3]", {-1, -1, -1}, all},
    };
    for (const auto& c : cases) {
        keys.assign (3, -1);
        session ().printed.clear ();
        call (0, {value (c.form)}, translate);
        EXPECT_EQ (keys, c.keys) << c.form;
        EXPECT_EQ (printed (), c.line) << c.form;
    }
}

TEST_F (Helpers, TextsAreChangedInPlace)
{
    char spaced[] = " a b ", mixed[] = "quad_2 é";
    EXPECT_EQ (strtrim (spaced, ' '), 2);
    EXPECT_STREQ (spaced, "ab");
    EXPECT_STREQ (local_strupr (mixed), "QUAD_2 é");
    EXPECT_TRUE (is1ddensevec (value ("1x0").get ()) && !is1ddensevec (value ("3x3").get ()) &&
                 !is1ddensevec (value ("sparse [1 2]").get ()));
    EXPECT_EQ (vectorlen (value ("2x3x4").get ()), 24U);
}

// All tests of the gateway trust the host to see what it does wrong.
TEST_F (Helpers, TheTestHostSeesMisuse)
{
    const std::pair<EntryPoint, const char*> cases[] = {
        {[] (int, mxArray**, int, const mxArray**) {
             mxArray* const array = mxCreateDoubleScalar (1);
             mxDestroyArray (array);
             mxDestroyArray (array);
         },
         "mxDestroyArray: released before"},
        {[] (int, mxArray**, int, const mxArray** in) { mxGetPr (mxGetField (in[0], 0, "flag")); },
         "not of class double"},
        {[] (int, mxArray**, int, const mxArray** in) { mxGetPr (in[1])[2] = 7; }, "input 2 was changed"},
        {[] (int, mxArray**, int, const mxArray** in) { mxDestroyArray (mxGetField (in[0], 0, "c")); },
         "releases an input"},
        {[] (int, mxArray** out, int, const mxArray** in) { out[0] = const_cast<mxArray*> (in[1]); },
         "an input was returned"},
        {[] (int, mxArray** out, int, const mxArray**) { out[1] = mxCreateDoubleScalar (1); },
         "not requested"},
        {[] (int, mxArray**, int, const mxArray**) { utSetInterruptEnabled (false); }, "interrupt setting"},
        {[] (int, mxArray**, int, const mxArray**) { std::thread ([] { mexPrintf ("x"); }).join (); },
         "another thread"},
    };
    for (const auto& [misuse, report] : cases) {
        reset ();
        call (1, {value ("(c=[1 2], flag=logical 1)"), value ("[1;2;3]")}, misuse);
        ASSERT_EQ (session ().faults.size (), 1U) << report;
        EXPECT_NE (session ().faults[0].find (report), std::string::npos) << session ().faults[0];
    }
    reset ();
    const Call left = call (0, {}, [] (int, mxArray**, int, const mxArray**) {
        mxCalloc (3, 8);
        mxCreateString ("left");
    });
    EXPECT_EQ (left.left_arrays, 1U);
    EXPECT_EQ (left.left_blocks, 1U);
}

}
