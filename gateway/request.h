// The state of one call.
#pragma once

#include <memory>

#include "callbacks/chain.h"
#include "callbacks/handle.h"
#include "gateway/command.h"
#include "host/host.h"
#include "kalvo.h"

struct DeleteTask {
    void operator() (KLVtask_t task) const { KLV_deletetask (&task); }
};

using Task = std::unique_ptr<KLV_task, DeleteTask>;

// The task is the last member and destroyed first, since its streams and its callback refer to members above.
struct Request {
    int nlhs;
    mxArray** plhs;
    int nrhs;
    const mxArray** prhs;

    KLVrescode_t code = KLV_RES_OK;
    cmdoptions options = {};
    CallbackHandle log_handle = {};
    CallbackHandle iteration_handle = {};
    CallbackChain chain = {};
    Task task = nullptr;

    // Inputs are counted from 1; an input that the caller left off is null.
    const mxArray* input (int position) const { return position <= nrhs ? prhs[position - 1] : nullptr; }

    bool wants_result () const { return nlhs >= 2; }

    // Runs a step, unless an earlier one has failed.
    void then (KLVrescode_t (*step) (Request&))
    {
        if (code == KLV_RES_OK)
            code = step (*this);
    }

    bool is_finished () const { return code == KLV_RES_OK || code >= KLV_FIRST_TERMINATION; }
};
