// Threads that are started during the lifetime of such an object have all signals blocked, so that the host's thread gets them.
#pragma once

#include <csignal>
#include <pthread.h>

namespace klv {

class BlockedSignals {
public:
    BlockedSignals ()
    {
        sigset_t all;
        sigfillset (&all);
        pthread_sigmask (SIG_SETMASK, &all, &before_);
    }
    BlockedSignals (const BlockedSignals&) = delete;
    BlockedSignals& operator= (const BlockedSignals&) = delete;
    ~BlockedSignals () { pthread_sigmask (SIG_SETMASK, &before_, nullptr); }

private:
    sigset_t before_;
};

}
