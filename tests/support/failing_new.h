// Lets one allocation of the calling thread fail.
#pragma once

#include <cstddef>

// While it lives, allocation number n (0: the next one) by operator new on this thread throws std::bad_alloc.
class FailingNew {
public:
    explicit FailingNew (std::size_t n);
    FailingNew (const FailingNew&) = delete;
    FailingNew& operator= (const FailingNew&) = delete;
    ~FailingNew ();

    bool has_failed () const;
};
