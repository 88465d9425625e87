// libmex and libut as the gateway expects them, where Octave's differ: calls of MATLAB functions that return
// their errors, the interrupt flag, and a call frame through which nothing but Octave's own errors is thrown.
//
// Octave ends a user's code by exceptions also for Ctrl-C and for `exit`. None of them may cross the gateway,
// the library or an engine: each is caught where Octave was called and becomes a request to stop, which the
// gateway finds at its next poll. `exit` is thrown on when the call has ended.

#include <octave/quit.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "host/holders.h"
#include "host/octave/values.h"

// The build renames the gateway's mexFunction to gateway_function (so mex.h declares that name). Octave calls the mexFunction of
// this file.
#undef mexFunction

extern "C" {
int __real_mexPrintf (const char* format, ...);
int __real_mexEvalString (const char* command);
__attribute__ ((visibility ("default"))) void mexFunction (int nlhs, mxArray* plhs[], int nrhs,
                                                           const mxArray* prhs[]);
}

namespace {

using SignalHook = void (*) ();

// One call of the gateway. A MATLAB function that it calls may call the gateway again.
class Frame {
public:
    Frame () : outer_ (std::exchange (current_, this)) {}
    Frame (const Frame&) = delete;
    Frame& operator= (const Frame&) = delete;

    // A press of Ctrl-C on which nothing was done is given back to Octave.
    ~Frame ()
    {
        enable_interrupts ();
        current_ = outer_;
        if (pending_ && !acted_on_ && octave_interrupt_state == 0) {
            octave_interrupt_state = 1;
            octave_signal_caught = 1;
        }
    }

    static Frame& current () { return *current_; }

    bool interrupts_enabled () const { return octave_signal_hook != &quiet_hook; }

    void enable_interrupts ()
    {
        if (!interrupts_enabled ())
            octave_signal_hook = octaves_hook_;
    }

    void disable_interrupts ()
    {
        if (interrupts_enabled ())
            octaves_hook_ = std::exchange (octave_signal_hook, &quiet_hook);
    }

    // A request to end the session counts as an interrupt.
    bool interrupt_pending ()
    {
        handle_signals ();
        take_press ();
        return pending_ || exit_request_;
    }

    void set_interrupt_pending (bool pending)
    {
        octave_interrupt_state = 0;
        pending_ = pending;
        acted_on_ = false;
    }

    const std::exception_ptr& exit_request () const { return exit_request_; }

    // For catch clauses: message and identifier of Octave's exception. Interrupts and exits are noted as requests to stop.
    // `acted_on`: an interrupt has ended code that the user saw running.
    std::pair<std::string, std::string> contain_exception (bool acted_on)
    {
        try {
            throw;
        } catch (const octave::execution_exception& error) {
            return {error.message (), error.identifier ()};
        } catch (const octave::interrupt_exception&) {
            set_interrupt_pending (true);
            acted_on_ = acted_on;
            return {"interrupted", "Octave:interrupt"};
        } catch (const octave::exit_exception&) {
            set_interrupt_pending (true);
            acted_on_ = true;
            exit_request_ = std::current_exception ();
            return {"the session ends", "Octave:exit"};
        } catch (const std::exception& error) {
            return {error.what (), ""};
        } catch (...) {
            return {"unknown exception", ""};
        }
    }

private:
    // Octave notes signals in a flag and handles them between two statements of a user's code; here the gateway has them handled,
    // since a batch system's SIGTERM must not wait for the end of a run. Octave throws for signals that end the session.
    void handle_signals ()
    {
        if (octave_signal_caught == 0 || octave_signal_hook == nullptr)
            return;
        octave_signal_caught = 0;
        try {
            octave_signal_hook ();
        } catch (...) {
            contain_exception (false);
        }
    }

    // Octave calls this hook just before it would throw for a press of Ctrl-C.
    static void quiet_hook ()
    {
        if (current_->octaves_hook_ != nullptr)
            current_->octaves_hook_ ();
        current_->take_press ();
    }

    void take_press ()
    {
        if (octave_interrupt_state > 0) {
            octave_interrupt_state = 0;
            pending_ = true;
            acted_on_ = false;
        }
    }

    static inline Frame* current_ = nullptr;

    Frame* const outer_;
    SignalHook octaves_hook_ = nullptr;
    bool pending_ = false;
    bool acted_on_ = false;
    std::exception_ptr exit_request_;
};

// During the lifetime of such an object, in which Octave runs a user's code, Ctrl-C ends that code.
class UserCode {
public:
    UserCode () : was_enabled_ (Frame::current ().interrupts_enabled ())
    {
        Frame::current ().enable_interrupts ();
    }
    UserCode (const UserCode&) = delete;
    UserCode& operator= (const UserCode&) = delete;

    ~UserCode ()
    {
        if (!was_enabled_)
            Frame::current ().disable_interrupts ();
    }

private:
    const bool was_enabled_;
};

// Without memory for the error object the run is stopped.
mxArray* error_object (const std::pair<std::string, std::string>& error)
{
    const mwSize sizes[] = {1, 1};
    const char* names[] = {"message", "identifier"};
    mxArray* const object = mxCreateStructArray (2, sizes, 2, names);
    if (object == nullptr) {
        Frame::current ().set_interrupt_pending (true);
        return nullptr;
    }
    mxSetField (object, 0, "message", mxCreateString (error.first.c_str ()));
    mxSetField (object, 0, "identifier", mxCreateString (error.second.c_str ()));
    return object;
}

// Octave frees the outputs that its own functions have made: copies of numbers, and the result's record, in which other records
// become values.
void hand_over (mxArray*& output)
{
    if (output == nullptr)
        return;
    if (!mxIsStruct (output)) {
        const host::Array made (std::exchange (output, nullptr));
        output = mxDuplicateArray (made.get ());
        return;
    }
    for (int k = 0; k < mxGetNumberOfFields (output); ++k) {
        mxArray* const field = mxGetFieldByNumber (output, 0, k);
        if (auto* const value = static_cast<mxArray*> (make_value_of_record (field))) {
            mxDestroyArray (field);
            mxSetFieldByNumber (output, 0, k, value);
        }
    }
}

}

extern "C" {

void mexFunction (int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[])
{
    std::exception_ptr exit_request;
    {
        const Frame frame;
        gateway_function (nlhs, plhs, nrhs, prhs);
        exit_request = frame.exit_request ();
    }
    if (exit_request)
        std::rethrow_exception (exit_request);
    for (int k = 0; k < nlhs; ++k)
        hand_over (plhs[k]);
}

mxArray* mexCallMATLABWithTrapWithObject (int nlhs, mxArray* plhs[], int nrhs, mxArray* prhs[],
                                          const char* function_name)
{
    std::fill (plhs, plhs + nlhs, nullptr);
    if (Frame::current ().exit_request ())
        return error_object ({"the session ends", "Octave:exit"});
    try {
        std::vector<mxArray*> inputs (prhs, prhs + nrhs);
        std::vector<host::Array> values;
        for (mxArray*& input : inputs)
            if (host::Array value (make_value_of_record (input)); value)
                input = values.emplace_back (std::move (value)).get ();
        const UserCode running;
        mexCallMATLAB (nlhs, plhs, nrhs, inputs.data (), function_name);
    } catch (...) {
        return error_object (Frame::current ().contain_exception (true));
    }
    if (nlhs > 0 && plhs[nlhs - 1] == nullptr)
        return error_object ({std::string (function_name) + ": value on the right hand side is undefined",
                              "Octave:undefined-function"});
    return nullptr;
}

int __wrap_mexEvalString (const char* command)
{
    if (Frame::current ().exit_request ())
        return 1;
    try {
        const UserCode running;
        return __real_mexEvalString (command);
    } catch (...) {
        Frame::current ().contain_exception (false);
        return 1;
    }
}

int __wrap_mexPrintf (const char* format, ...)
{
    std::va_list arguments, again;
    va_start (arguments, format);
    va_copy (again, arguments);
    const int length = std::vsnprintf (nullptr, 0, format, arguments);
    va_end (arguments);
    try {
        std::string text (static_cast<std::size_t> (std::max (length, 0)) + 1, '\0');
        std::vsnprintf (text.data (), text.size (), format, again);
        __real_mexPrintf ("%s", text.c_str ());
    } catch (...) {
        Frame::current ().contain_exception (false);
    }
    va_end (again);
    return length;
}

bool utSetInterruptEnabled (bool enabled)
{
    Frame& frame = Frame::current ();
    const bool before = frame.interrupts_enabled ();
    enabled ? frame.enable_interrupts () : frame.disable_interrupts ();
    return before;
}

bool utIsInterruptPending ()
{
    return Frame::current ().interrupt_pending ();
}

void utSetInterruptPending (bool pending)
{
    Frame::current ().set_interrupt_pending (pending);
}
}
