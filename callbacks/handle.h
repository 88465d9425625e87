// The function of the session that a callback calls, and its arguments.
#pragma once

#include "host/holders.h"
#include "kalvo.h"

// A handle without function stands for the console (log) or for nothing (iteration).
struct CallbackHandle {
    host::Array object;             // the user's own value, a private copy
    host::Memory<char> function;    // the function's name
    host::Array info;               // iteration only: the information record
};

enum class CallbackKind { iteration, log };

// Fills a handle from the callback record. The task is needed for the iteration kind only.
KLVrescode_t makehandle (KLVtask_t task, const mxArray* record, CallbackHandle& handle, CallbackKind kind);

// Releases a handle's content and leaves it empty: text and progress that still arrive find no function. Null is no error. Always
// returns 0.
int delete_cb_handle (CallbackHandle* handle);
