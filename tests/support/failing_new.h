// Lets one allocation of the calling thread fail.
#pragma once

#include "kalvo.h"

#include <gtest/gtest.h>

// While it lives, allocation number n (0: the next one) by operator new on this thread throws std::bad_alloc.
class FailingNew {
public:
    explicit FailingNew (std::size_t n);
    FailingNew (const FailingNew&) = delete;
    FailingNew& operator= (const FailingNew&) = delete;
    ~FailingNew ();

    bool has_failed () const;
};

// Lets allocation 0, 1, 2 ... of a call fail until it gets through with this code; `look` sees at what a failure left behind.
// Gives the number of failures.
template <class Call, class Look>
int fail_each (const Call& call, KLVrescode_t code, const Look& look)
{
    for (int n = 0;; ++n) {
        SCOPED_TRACE (n);
        const auto [found, failed] = [&] {
            const FailingNew failing (static_cast<std::size_t> (n));
            const KLVrescode_t answer = call ();
            return std::pair (answer, failing.has_failed ());
        }();
        EXPECT_EQ (found, failed ? KLV_RES_OUT_OF_MEMORY : code);
        if (!failed)
            return n;
        look ();
    }
}
