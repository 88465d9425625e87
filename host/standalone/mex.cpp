// libmex: the session, and calls in both directions.

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "host/standalone/array.h"

using namespace standalone;

int mexPrintf (const char* format, ...)
{
    book ().check_thread ("mexPrintf");
    std::va_list arguments, again;
    va_start (arguments, format);
    va_copy (again, arguments);
    const int length = std::vsnprintf (nullptr, 0, format, arguments);
    va_end (arguments);
    std::string text (static_cast<std::size_t> (std::max (length, 0)) + 1, '\0');
    std::vsnprintf (text.data (), text.size (), format, again);
    va_end (again);
    text.pop_back ();
    session ().printed += text;
    return length;
}

int mexEvalString (const char* command)
{
    book ().check_thread ("mexEvalString");
    session ().evaluated.emplace_back (command);
    return 0;
}

void mexErrMsgTxt (const char* message)
{
    book ().check_thread ("mexErrMsgTxt");
    throw MexError (message == nullptr ? "" : message);
}

void mexLock ()
{
    ++session ().lock_count;
}

static void mark_unread (mxArray& array)
{
    array.is_unread = array.class_id == mxDOUBLE_CLASS || array.class_id == mxCHAR_CLASS;
}

mxArray* mexCallMATLABWithTrapWithObject (int nlhs, mxArray* plhs[], int nrhs, mxArray* prhs[],
                                          const char* function_name)
{
    book ().check_thread ("mexCallMATLABWithTrapWithObject");
    std::fill (plhs, plhs + nlhs, nullptr);
    try {
        std::vector<View> inputs;
        for (int input = 0; input < nrhs; ++input)
            inputs.emplace_back (&book ().used (prhs[input], "mexCallMATLABWithTrapWithObject"));
        const auto& functions = session ().functions;
        const auto found = std::find_if (functions.begin (), functions.end (),
                                         [=] (const auto& entry) { return entry.first == function_name; });
        if (found == functions.end ())
            throw MatlabError ("undefined function");
        std::vector<Value> outputs = Function (found->second) (nlhs, inputs);
        if (outputs.size () < static_cast<std::size_t> (nlhs))
            throw MatlabError ("an output is not assigned");
        for (int output = 0; output < nlhs; ++output)
            if (plhs[output] = outputs[static_cast<std::size_t> (output)].release ();
                plhs[output] != nullptr) {
                plhs[output]->depth = book ().depth;
                mark_unread (*plhs[output]);
            }
        return nullptr;
    } catch (const std::exception&) {
        return book ().create (mxOBJECT_CLASS, {1, 1});
    }
}

namespace {

void mark_borrowed (mxArray& array, bool borrowed)
{
    array.is_borrowed = borrowed;
    mark_unread (array);
    for (mxArray* part : array.parts)
        if (part != nullptr)
            mark_borrowed (*part, borrowed);
}

std::size_t digest (const mxArray& array)
{
    std::string shape = std::to_string (array.class_id);
    for (const std::size_t size : array.sizes)
        shape += ' ' + std::to_string (size);
    for (const std::string& field : array.fields)
        shape += ' ' + field;
    std::size_t sum = std::hash<std::string> () (shape);
    const auto add = [&sum] (const void* data, std::size_t bytes) {
        if (data != nullptr)
            sum = sum * 31 + std::hash<std::string_view> () ({static_cast<const char*> (data), bytes});
    };
    const std::size_t bytes = array.stored () * element_size (array.class_id);
    add (array.real.get (), bytes);
    add (array.imaginary.get (), bytes);
    add (array.ir.data (), array.ir.size () * sizeof (mwIndex));
    add (array.jc.data (), array.jc.size () * sizeof (mwIndex));
    for (const mxArray* part : array.parts)
        sum = sum * 31 + (part == nullptr ? 0 : digest (*part));
    return sum;
}

// One running call. Its inputs are borrowed; arrays and blocks that it leaves behind are released at its end.
class Frame {
public:
    explicit Frame (const std::vector<Value>& inputs) : arguments_ (inputs)
    {
        ++book ().depth;
        for (Value& argument : arguments_) {
            mark_borrowed (*const_cast<mxArray*> (argument.get ()), true);
            digests_.push_back (digest (*argument.get ()));
            pointers_.push_back (argument.get ());
        }
    }
    Frame (const Frame&) = delete;
    Frame& operator= (const Frame&) = delete;

    ~Frame ()
    {
        for (std::size_t input = 0; input < arguments_.size (); ++input) {
            if (digest (*arguments_[input].get ()) != digests_[input])
                book ().fault ("input " + std::to_string (input + 1) + " was changed");
            mark_borrowed (*const_cast<mxArray*> (arguments_[input].get ()), false);
        }
        --book ().depth;
    }

    int count () const { return static_cast<int> (pointers_.size ()); }
    const mxArray** inputs () { return pointers_.data (); }

    // An output as a value for the test; null when the gateway assigned none, or one that it must not give away.
    static Value take (mxArray* output)
    {
        if (output == nullptr)
            return {};
        mxArray& array = book ().used (output, "output");
        if (array.is_borrowed || array.whole != nullptr || array.depth == owned_by_value) {
            book ().fault (array.is_borrowed ? "an input was returned as an output"
                                             : "an output is part of another array, or was returned twice");
            return Value (book ().duplicate (array));
        }
        return Value (&array);
    }

    static void release_rest (Call& call)
    {
        const auto of_this_call = [] (int depth) { return depth == book ().depth; };
        call.left_arrays = book ().release_arrays (of_this_call);
        call.left_blocks = book ().release_blocks (of_this_call);
    }

private:
    std::vector<Value> arguments_;
    std::vector<std::size_t> digests_;
    std::vector<const mxArray*> pointers_;
};

}

Call standalone::call (int outputs, const std::vector<Value>& inputs, EntryPoint entry)
{
    const bool interrupt_enabled = session ().interrupt_enabled;
    // A MEX entry may always assign its first output. The slots behind the requested ones reveal stray writes.
    const std::size_t slots = static_cast<std::size_t> (std::max (outputs, 1));
    std::vector<mxArray*> assigned (slots + 2, nullptr);
    Call result;
    Frame frame (inputs);
    try {
        entry (outputs, assigned.data (), frame.count (), frame.inputs ());
    } catch (const MexError& error) {
        result.error = error.what ();
    }
    if (std::exchange (session ().interrupt_enabled, interrupt_enabled) != interrupt_enabled)
        book ().fault ("the interrupt setting was not restored");
    if (std::any_of (assigned.begin () + static_cast<std::ptrdiff_t> (slots), assigned.end (),
                     [] (const mxArray* array) { return array != nullptr; }))
        book ().fault ("an output that was not requested was assigned");
    for (std::size_t output = 0; output < slots; ++output)
        result.outputs.push_back (Frame::take (assigned[output]));
    if (result.error)
        result.outputs.assign (slots, {});
    Frame::release_rest (result);
    return result;
}
