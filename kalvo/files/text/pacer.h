// Asks the progress callback while a file is read or written. A block of a file, or some thousand items, take a few milliseconds:
// tick () after each keeps the callback's pace.
#pragma once

#include "kalvo/files/text/fault.h"
#include "kalvo/task/task.h"

namespace klv {

class Pacer {
public:
    Pacer (Task& task, std::uint32_t caller) : task_ (task), caller_ (caller) {}

    // Throw FileFault without a text when the callback wants the operation to end.
    void tick () { check (task_.ask_callback_in_time (caller_)); }
    void ask (std::uint32_t caller) { check (task_.ask_callback (caller)); }

private:
    static void check (std::int32_t answer)
    {
        if (const KLVrescode_t code = stop_code (answer))
            throw FileFault{code, {}};
    }

    Task& task_;
    std::uint32_t caller_;
};

}
