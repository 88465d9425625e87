// Owners of the host's memory, and of arrays that are not yet part of a result; release () hands over.
#pragma once

#include <cstddef>
#include <limits>
#include <memory>
#include <type_traits>

#include "host/host.h"

namespace host {

struct DestroyArray {
    void operator() (mxArray* array) const { mxDestroyArray (array); }
};

struct FreeMemory {
    void operator() (void* memory) const { mxFree (memory); }
};

using Array = std::unique_ptr<mxArray, DestroyArray>;

template <class T>
using Memory = std::unique_ptr<T[], FreeMemory>;

// Zeroed memory for `count` items; null only when memory is short, also for a count of 0.
template <class T>
Memory<T> allocate (std::size_t count)
{
    static_assert (std::is_trivially_copyable_v<T>);
    const std::size_t items = count > 0 ? count : 1;
    if (items > static_cast<std::size_t> (std::numeric_limits<std::ptrdiff_t>::max ()) / sizeof (T))
        return nullptr;
    return Memory<T> (static_cast<T*> (mxCalloc (items, sizeof (T))));
}

}
