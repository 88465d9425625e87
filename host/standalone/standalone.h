// Control of the standalone host by tests: values to pass in, views of results, calls of the MEX entry, faults to inject, and a
// record of the gateway's errors.
//
// A call ends as in MATLAB: the host releases arrays and blocks that the gateway did not release, and counts them in
// Call::left_arrays and Call::left_blocks. Recorded as faults, which fail a test:
//   - an array or block released twice, or never given out;
//   - data read as another class than its own (mxGetPr on anything but double, mxGetData on records);
//   - an input changed, released, or made part of an output;
//   - an array put into two places;
//   - any function of the host called from another thread than the one that makes the call.
#pragma once

#include <functional>
#include <initializer_list>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/host.h"

namespace standalone {

// Reads an array without owning it. A null view stands for an absent array.
class View {
public:
    View (const mxArray* array = nullptr) : array_ (array) {}

    explicit operator bool () const { return array_ != nullptr; }
    const mxArray* get () const { return array_; }

    mxClassID class_id () const;
    bool is_sparse () const;
    std::vector<std::size_t> sizes () const;
    std::size_t count () const;

    std::vector<double> numbers () const;    // all elements, column by column, whatever the numeric class
    double number () const;                  // the only element
    std::string text () const;               // a char array, column by column, as UTF-8
    std::vector<std::string> field_names () const;
    View operator[] (const char* field) const;    // of the first element; null when absent or unset
    View cell (std::size_t index) const;

protected:
    const mxArray* array_;
};

// An array outside of any call, with its owner. Copies are deep.
class Value : public View {
public:
    Value () = default;
    explicit Value (mxArray* array);
    Value (const Value& other);
    Value (Value&& other) noexcept : View (std::exchange (other.array_, nullptr)) {}
    Value& operator= (Value other) noexcept;
    ~Value ();

    mxArray* release ();
};

// Values. Elements are given column by column.
using Numbers = std::vector<double>;
using Sizes = std::vector<std::size_t>;

struct Entry {
    std::size_t row, column;    // 0-based
    double value;
};

Value scalar (double value);
Value matrix (std::size_t rows, std::size_t columns, const Numbers& values = {});    // zeros by default
Value array (mxClassID class_id, const Sizes& sizes,
             const Numbers& values = {});    // any numeric class, logical
Value complex (std::size_t rows, std::size_t columns, const Numbers& real, const Numbers& imaginary);
Value sparse (std::size_t rows, std::size_t columns, std::vector<Entry> entries,
              mxClassID class_id = mxDOUBLE_CLASS);
Value text (std::string_view utf8);
Value texts (const std::vector<std::string>& rows);    // one char row each, padded with blanks
Value cell (const std::vector<Value>& elements);       // a row
Value cell (const Sizes& sizes);
Value record (const std::vector<std::pair<std::string, Value>>& fields);
Value records (const Sizes& sizes, const std::vector<std::string>& fields);
Value function_handle ();
Value object ();

// The exception of mexErrMsgTxt, which passes through the gateway.
struct MexError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A registered function throws this to fail as a MATLAB function does.
struct MatlabError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

using Function = std::function<std::vector<Value> (int outputs, const std::vector<View>& inputs)>;
using EntryPoint = void (*) (int, mxArray*[], int, const mxArray*[]);

struct Call {
    std::vector<Value> outputs;          // null where the entry assigned none
    std::optional<std::string> error;    // text of mexErrMsgTxt
    std::size_t left_arrays = 0, left_blocks = 0;

    View operator[] (std::size_t output) const
    {
        return output < outputs.size () ? outputs[output].get () : nullptr;
    }
};

// Calls the MEX entry as the host does; also from within a registered function.
Call call (int outputs, const std::vector<Value>& inputs, EntryPoint entry = mexFunction);

// The session's state. Everything but the faults may be set at any time.
struct Session {
    std::string printed;
    std::vector<std::string> evaluated;
    std::vector<std::pair<std::string, Function>> functions;

    long allocations = 0;              // requests for blocks and arrays
    long failing_allocation = 0;       // number of the request that fails; 0: none
    bool failure_ends_call = false;    // as in MATLAB; false: a failing request gives null

    bool interrupt_enabled = true;
    bool interrupt_pending = false;
    long interrupt_polls = 0;      // calls of utIsInterruptPending
    long interrupting_poll = 0;    // number of the call that finds an interrupt; 0: none

    int lock_count = 0;
    std::vector<std::string> faults;

    void define (std::string name, Function function);    // a MATLAB function, replacing one of the same name
};

Session& session ();

// Arrays and blocks that mex.h's functions gave out and nobody released. Outputs of calls are values, and not counted.
std::size_t live_arrays ();
std::size_t live_blocks ();

// Begins a new session, as each test does. Values stay.
void reset ();

}
