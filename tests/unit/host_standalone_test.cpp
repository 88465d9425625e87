// The host that all other tests of the gateway trust: it must see what it is there to see.

#include <cstring>
#include <thread>

#include "host/holders.h"
#include "tests/support/host_test.h"

using namespace standalone;

namespace {

// Entries with one fault each, and the words of the report.
struct Misuse {
    const char* name;
    EntryPoint entry;
    const char* report;
};

class MisuseTest : public testing::TestWithParam<Misuse> {};

TEST_P (MisuseTest, IsReported)
{
    reset ();
    const Value input =
        record ({{"c", row ({1, 2})}, {"name", text ("x")}, {"flag", array (mxLOGICAL_CLASS, {1, 1})}});
    call (1, {input, column ({1, 2, 3})}, GetParam ().entry);
    ASSERT_EQ (session ().faults.size (), 1U);
    EXPECT_NE (session ().faults[0].find (GetParam ().report), std::string::npos) << session ().faults[0];
    EXPECT_EQ (live_arrays () + live_blocks (), 0U);
}

INSTANTIATE_TEST_SUITE_P (
    Entries, MisuseTest,
    testing::Values (
        Misuse{"BlockReleasedTwice",
               [] (int, mxArray**, int, const mxArray**) {
                   void* const block = mxCalloc (1, 1);
                   mxFree (block);
                   mxFree (block);
               },
               "mxFree: released before"},
        Misuse{"ArrayReleasedTwice",
               [] (int, mxArray**, int, const mxArray**) {
                   mxArray* const array = mxCreateDoubleScalar (1);
                   mxDestroyArray (array);
                   mxDestroyArray (array);
               },
               "mxDestroyArray: released before"},
        Misuse{"ReleasedArrayUsed",
               [] (int, mxArray**, int, const mxArray**) {
                   mxArray* const array = mxCreateDoubleScalar (1);
                   mxDestroyArray (array);
                   mxGetM (array);
               },
               "mxGetM: the array was released"},
        Misuse{"NoArray", [] (int, mxArray**, int, const mxArray**) { mxIsEmpty (nullptr); }, "no array"},
        Misuse{"LogicalReadAsDoubles",
               [] (int, mxArray**, int, const mxArray** in) { mxGetPr (mxGetField (in[0], 0, "flag")); },
               "not of class double"},
        Misuse{"RecordReadAsNumbers", [] (int, mxArray**, int, const mxArray** in) { mxGetData (in[0]); },
               "holds no numbers"},
        Misuse{"EmptyReadAsScalar",
               [] (int, mxArray**, int, const mxArray**) {
                   mxGetScalar (host::Array (mxCreateDoubleMatrix (0, 0, mxREAL)).get ());
               },
               "mxGetScalar"},
        Misuse{"InputChanged", [] (int, mxArray**, int, const mxArray** in) { mxGetPr (in[1])[2] = 7; },
               "input 2 was changed"},
        Misuse{"InputFieldChanged",
               [] (int, mxArray**, int, const mxArray** in) { mxGetPr (mxGetField (in[0], 0, "c"))[0] = 7; },
               "input 1 was changed"},
        Misuse{"InputReleased",
               [] (int, mxArray**, int, const mxArray** in) { mxDestroyArray (mxGetField (in[0], 0, "c")); },
               "releases an input"},
        Misuse{"InputReturned",
               [] (int, mxArray** out, int, const mxArray** in) { out[0] = const_cast<mxArray*> (in[1]); },
               "an input was returned"},
        Misuse{"InputMadePart",
               [] (int, mxArray** out, int, const mxArray** in) {
                   const mwSize sizes[] = {1, 1};
                   out[0] = mxCreateCellArray (2, sizes);
                   mxSetCell (out[0], 0, mxGetField (in[0], 0, "c"));
               },
               "an input becomes part"},
        Misuse{"OneArrayInTwoPlaces",
               [] (int, mxArray** out, int, const mxArray**) {
                   const mwSize sizes[] = {1, 2};
                   out[0] = mxCreateCellArray (2, sizes);
                   mxArray* const part = mxCreateDoubleScalar (1);
                   mxSetCell (out[0], 0, part);
                   mxSetCell (out[0], 1, part);
               },
               "part of another one already"},
        Misuse{"OutputNotRequested",
               [] (int, mxArray** out, int, const mxArray**) { out[1] = mxCreateDoubleScalar (1); },
               "not requested"},
        Misuse{"InterruptSettingLeft",
               [] (int, mxArray**, int, const mxArray**) { utSetInterruptEnabled (false); },
               "interrupt setting"},
        Misuse{"AnotherThread",
               [] (int, mxArray**, int, const mxArray**) { std::thread ([] { mexPrintf ("x"); }).join (); },
               "another thread"}),
    [] (const auto& row) { return row.param.name; });

class StandaloneHost : public HostTest {};

TEST_F (StandaloneHost, CountsAndReleasesWhatACallLeaves)
{
    const Call done = call (1, {}, [] (int, mxArray** out, int, const mxArray**) {
        mxCalloc (3, 8);
        mxCreateString ("left");
        const mwSize sizes[] = {1, 1};
        const char* names[] = {"a"};
        out[0] = mxCreateStructArray (2, sizes, 1, names);
        mxSetField (out[0], 0, "a", mxCreateDoubleScalar (4));
    });
    EXPECT_EQ (done.left_arrays, 1U);
    EXPECT_EQ (done.left_blocks, 1U);
    EXPECT_EQ (done[0]["a"].number (), 4);
}

TEST_F (StandaloneHost, AReplacedFieldIsTheGatewaysToRelease)
{
    const auto replace = [] (int, mxArray** out, int outputs, const mxArray**) {
        const mwSize sizes[] = {1, 1};
        const char* names[] = {"a"};
        out[0] = mxCreateStructArray (2, sizes, 1, names);
        mxSetField (out[0], 0, "a", mxCreateDoubleScalar (1));
        if (outputs > 0)
            mxDestroyArray (mxGetField (out[0], 0, "a"));
        mxSetField (out[0], 0, "a", mxCreateDoubleScalar (2));
    };
    EXPECT_EQ (call (1, {}, replace).left_arrays, 1U);
    const Call tidy = call (1, {scalar (0)}, replace);
    EXPECT_EQ (tidy.left_arrays, 0U);
    EXPECT_EQ (tidy[0]["a"].number (), 2);
}

TEST_F (StandaloneHost, FailsTheChosenAllocationOnly)
{
    session ().failing_allocation = 2;
    EXPECT_TRUE (host::allocate<double> (2));
    EXPECT_FALSE (host::Array (mxCreateDoubleMatrix (1, 1, mxREAL)));
    EXPECT_TRUE (host::Array (mxCreateString ("x")));
    EXPECT_EQ (session ().allocations, 3);
}

TEST_F (StandaloneHost, AbsurdSizesAreNullAndNotOverflowed)
{
    const std::size_t huge = std::size_t{1} << 40;
    EXPECT_EQ (mxCreateDoubleMatrix (huge, huge, mxREAL), nullptr);
    EXPECT_EQ (mxCreateSparse (1, huge, 1, mxREAL), nullptr);
    EXPECT_EQ (mxCreateSparse (1, 1, huge, mxREAL), nullptr);
    EXPECT_FALSE (host::allocate<double> (~std::size_t{0} / 4));
    EXPECT_TRUE (host::allocate<double> (0));
}

TEST_F (StandaloneHost, AnErrorEndsTheCallAndReleasesEverything)
{
    const Call failed = call (1, {}, [] (int, mxArray** out, int, const mxArray**) {
        const host::Memory<char> held = host::allocate<char> (10);
        out[0] = mxCreateDoubleScalar (1);
        utSetInterruptEnabled (false);
        mexErrMsgTxt ("broken");
    });
    EXPECT_EQ (failed.error, "broken");
    EXPECT_EQ (failed.left_blocks, 0U);
    EXPECT_FALSE (failed[0]);
    EXPECT_TRUE (session ().interrupt_enabled);
}

TEST_F (StandaloneHost, TextKeepsItsCharactersAndIsCutAsMatlabCutsIt)
{
    const Value greeting = text ("gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80");
    EXPECT_EQ (greeting.text (), "gr\xc3\xbc\xc3\x9f \xf0\x9f\x98\x80");
    EXPECT_EQ (greeting.count (), 7U);    // UTF-16 units
    char buffer[5];
    EXPECT_EQ (mxGetString (text ("abcd").get (), buffer, 5), 0);
    EXPECT_STREQ (buffer, "abcd");
    EXPECT_EQ (mxGetString (text ("abcdef").get (), buffer, 5), 1);
    EXPECT_STREQ (buffer, "abcd");
    EXPECT_EQ (mxGetString (scalar (65).get (), buffer, 5), 1);
    EXPECT_EQ (texts ({"ab", "c"}).text (), "acb ");
}

TEST_F (StandaloneHost, CallsFunctionsThatFailReturnOrCallBack)
{
    session ().define (
        "twice", [] (int, const std::vector<View>& in) { return std::vector{scalar (2 * in[0].number ())}; });
    session ().define (
        "fail", [] (int, const std::vector<View>&) -> std::vector<Value> { throw MatlabError ("no"); });
    session ().define ("nested", [] (int, const std::vector<View>&) {
        const Call inner = call (1, {scalar (5)}, [] (int, mxArray** out, int, const mxArray** in) {
            out[0] = mxDuplicateArray (in[0]);
            mxCalloc (1, 1);
        });
        EXPECT_EQ (inner.left_blocks, 1U);    // of the inner call alone
        return std::vector{inner.outputs[0]};
    });
    const Call outer = call (1, {scalar (21)}, [] (int, mxArray** out, int, const mxArray** in) {
        const auto block = host::allocate<char> (1);
        const mwSize sizes[] = {1, 2};
        out[0] = mxCreateCellArray (2, sizes);
        mxArray* argument[] = {const_cast<mxArray*> (in[0])};
        mxArray* result = nullptr;
        EXPECT_EQ (mexCallMATLABWithTrapWithObject (1, &result, 1, argument, "twice"), nullptr);
        mxSetCell (out[0], 0, result);
        EXPECT_EQ (mexCallMATLABWithTrapWithObject (1, &result, 0, nullptr, "nested"), nullptr);
        mxSetCell (out[0], 1, result);
        for (const char* name : {"fail", "missing"}) {
            const host::Array error (mexCallMATLABWithTrapWithObject (1, &result, 1, argument, name));
            EXPECT_TRUE (error);
            EXPECT_EQ (result, nullptr);
        }
    });
    EXPECT_EQ (outer[0].cell (0).number (), 42);
    EXPECT_EQ (outer[0].cell (1).number (), 5);
    EXPECT_EQ (outer.left_arrays + outer.left_blocks, 0U);
}

TEST_F (StandaloneHost, RaisesTheInterruptAtTheChosenPoll)
{
    session ().interrupt_at_poll = 3;
    EXPECT_FALSE (utIsInterruptPending () || utIsInterruptPending ());
    EXPECT_TRUE (utIsInterruptPending ());
    utSetInterruptPending (false);
    EXPECT_FALSE (utIsInterruptPending ());
}

TEST_F (StandaloneHost, SparseValuesHaveTheirClass)
{
    const Value flags = sparse (3, 2, {{2, 1, 1}, {0, 0, 1}}, mxLOGICAL_CLASS);
    EXPECT_EQ (flags.numbers (), (Numbers{1, 0, 0, 0, 0, 1}));
    EXPECT_EQ (static_cast<const mxLogical*> (mxGetData (flags.get ()))[1], true);
    EXPECT_EQ (mxGetJc (flags.get ())[2], 2U);
    EXPECT_EQ (mxGetIr (scalar (1).get ()), nullptr);
}

}
