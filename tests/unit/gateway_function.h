// Functions of the gateway on a task of the library, each run within one call of the host.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "kalvo.h"
#include "tests/support/host_test.h"

class GatewayFunctionTest : public HostTest {
protected:
    using Value = standalone::Value;
    using Act = std::function<KLVrescode_t (mxArray* outputs[], const mxArray* inputs[])>;

    GatewayFunctionTest () { KLV_makeemptytask (nullptr, &task); }
    ~GatewayFunctionTest () override { KLV_deletetask (&task); }

    // Runs `act` in a call with these inputs and one output; its code. What is left over when it returns is a
    // fault, unless it threw.
    KLVrescode_t run (const std::vector<Value>& inputs, Act act)
    {
        standalone::session ().printed.clear ();
        KLVrescode_t code = -1;
        running () = [&] (mxArray* outputs[], const mxArray* in[]) { code = act (outputs, in); };
        result = standalone::call (
            1, inputs, [] (int, mxArray* outputs[], int, const mxArray* in[]) { running () (outputs, in); });
        if (!result.error) {
            EXPECT_EQ (result.left_arrays, 0U);
            EXPECT_EQ (result.left_blocks, 0U);
        }
        return code;
    }

    static const std::string& printed () { return standalone::session ().printed; }

    KLVtask_t task = nullptr;
    standalone::Call result;

private:
    static std::function<void (mxArray*[], const mxArray*[])>& running ()
    {
        static std::function<void (mxArray*[], const mxArray*[])> function;
        return function;
    }
};

inline std::string error_line (KLVrescode_t code, const std::string& text)
{
    return "*** Error(" + std::to_string (code) + "): " + text + "\n";
}

// For tests of what a failing allocation leaves: runs `attempt` with the first allocation failing, then the
// second, until none fails.
template <class Attempt>
void fail_each_allocation (Attempt attempt)
{
    using standalone::session;
    for (long failing = 1;; ++failing) {
        SCOPED_TRACE ("allocation " + std::to_string (failing));
        session ().allocations = 0;
        session ().failing_allocation = failing;
        attempt ();
        session ().failing_allocation = 0;
        if (session ().allocations < failing)
            return;
        ASSERT_LT (failing, 1000);
    }
}
