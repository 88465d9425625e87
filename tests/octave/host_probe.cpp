// A MEX module that uses the functions of Octave's host layer one by one, for host.m.
//
//   host_probe ("read", value)             what each accessor says of the value
//   host_probe ("text", value, size)       [status, buffer] of mxGetString
//   host_probe ("create", kind)            whether an array of an absurd size is refused
//   host_probe ("call", function, value)   {its output, the error's message}
//   host_probe ("poll", function, count)   calls the function between polls, interrupts off; polls until one
//   is seen host_probe ("press", command)          a press of Ctrl-C, then the command; whether the flag is
//   up afterwards host_probe ("late")                    a press that nobody polls host_probe ("fail") an
//   error with interrupts off

#include <unistd.h>

#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "host/holders.h"

namespace {

std::string text_of (const mxArray* array)
{
    const auto buffer = host::allocate<char> (mxGetNumberOfElements (array) + 1);
    mxGetString (array, buffer.get (), static_cast<mwSize> (mxGetNumberOfElements (array) + 1));
    return buffer.get ();
}

mxArray* read (const mxArray* value)
{
    const char* names[] = {"pr", "data", "ir", "jc", "scalar", "cell", "fields", "field", "beyond", "text"};
    const mwSize sizes[] = {1, 1};
    mxArray* const record = mxCreateStructArray (2, sizes, 10, names);
    char buffer[4] = "";
    const double answers[] = {
        mxGetPr (value) != nullptr ? 1. : 0.,
        mxGetData (value) != nullptr ? 1. : 0.,
        mxGetIr (value) != nullptr ? 1. : 0.,
        mxGetJc (value) != nullptr ? 1. : 0.,
        mxGetScalar (value),
        mxGetCell (value, 0) != nullptr ? 1. : 0.,
        static_cast<double> (mxGetNumberOfFields (value)),
        mxGetField (value, 0, "a") != nullptr ? 1. : 0.,
        mxGetField (value, 1000, "a") != nullptr || mxGetFieldByNumber (value, 1000, 0) != nullptr ||
                mxGetCell (value, 1000) != nullptr || mxGetFieldNameByNumber (value, 1000) != nullptr
            ? 1.
            : 0.,
        static_cast<double> (mxGetString (value, buffer, sizeof buffer)),
    };
    for (int number = 0; number < 10; ++number)
        mxSetFieldByNumber (record, 0, number, mxCreateDoubleScalar (answers[number]));
    mxSetField (record, 9, "text", nullptr);
    return record;
}

bool is_refused (const std::string& kind)
{
    const mwSize huge = mwSize{1} << 40;
    const mwSize sizes[] = {huge, huge};
    if (kind == "matrix")
        return mxCreateDoubleMatrix (huge, huge, mxREAL) == nullptr;
    if (kind == "large matrix")
        return mxCreateDoubleMatrix (huge, 8, mxREAL) == nullptr;
    if (kind == "negative")
        return mxCreateDoubleMatrix (-1, 1, mxREAL) == nullptr;
    if (kind == "sparse")
        return mxCreateSparse (1, 1, huge << 20, mxREAL) == nullptr &&
               mxCreateSparse (1, huge, 1, mxREAL) == nullptr;
    if (kind == "cell")
        return mxCreateCellArray (2, sizes) == nullptr;
    if (kind == "char")
        return mxCreateCharArray (2, sizes) == nullptr;
    if (kind == "memory")
        return !host::allocate<double> (std::size_t{1} << 62) &&
               mxCalloc (std::size_t{1} << 33, std::size_t{1} << 33) == nullptr &&
               mxCalloc (std::size_t{1} << 46, 1) == nullptr && mxMalloc (std::size_t{1} << 46) == nullptr;
    return false;
}

mxArray* call (const std::string& function, const mxArray* value)
{
    mxArray* input[] = {const_cast<mxArray*> (value)};
    mxArray* output = nullptr;
    mxArray* const error = mexCallMATLABWithTrapWithObject (1, &output, 1, input, function.c_str ());
    const mwSize sizes[] = {1, 2};
    mxArray* const both = mxCreateCellArray (2, sizes);
    mxSetCell (both, 0, output);
    if (error != nullptr)
        mxSetCell (both, 1, mxDuplicateArray (mxGetField (error, 0, "message")));
    mxDestroyArray (error);
    return both;
}

// As the terminal does it; Octave takes the signal in a thread of its own.
void press ()
{
    kill (getpid (), SIGINT);
    std::this_thread::sleep_for (std::chrono::milliseconds (100));
}

double poll (const std::string& function, double count)
{
    double calls = 0;
    for (; calls < count && !utIsInterruptPending (); ++calls)
        mxDestroyArray (mexCallMATLABWithTrapWithObject (0, nullptr, 0, nullptr, function.c_str ()));
    return calls;
}

}

extern "C" void mexFunction (int, mxArray* plhs[], int nrhs, const mxArray* prhs[])
{
    const std::string command = nrhs > 0 ? text_of (prhs[0]) : "";
    const std::string name = nrhs > 1 && mxIsChar (prhs[1]) ? text_of (prhs[1]) : "";
    const bool interrupts_enabled = utSetInterruptEnabled (false);
    if (command == "read") {
        plhs[0] = read (prhs[1]);
    } else if (command == "text") {
        char buffer[] = "~~~~~~~~";
        const int status = mxGetString (prhs[1], buffer, static_cast<mwSize> (mxGetScalar (prhs[2])));
        plhs[0] = mxCreateString ((std::to_string (status) + buffer).c_str ());
    } else if (command == "create") {
        plhs[0] = mxCreateDoubleScalar (is_refused (name) ? 1 : 0);
    } else if (command == "call") {
        plhs[0] = call (name, prhs[2]);
    } else if (command == "poll") {
        plhs[0] = mxCreateDoubleScalar (poll (name, mxGetScalar (prhs[2])));
    } else if (command == "press") {
        press ();
        mexEvalString (name.c_str ());
        mexPrintf ("%s", "");
        plhs[0] = mxCreateDoubleScalar (utIsInterruptPending () ? 1 : 0);
        utSetInterruptPending (false);
    } else if (command == "late") {
        plhs[0] = mxCreateDoubleScalar (1);
        press ();
    } else if (command == "fail") {
        mexErrMsgTxt ("on purpose");
    }
    utSetInterruptEnabled (interrupts_enabled);
}
