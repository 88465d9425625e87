// The eyes of the test host.

#include <thread>

#include "tests/unit/gateway_test.h"

namespace {

using TestHost = GatewayTest;

// All tests of the gateway trust the host to see what it does wrong.
TEST_F (TestHost, SeesMisuse)
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
