#include "tests/support/failing_new.h"

#include <cstdlib>
#include <new>

enum class State { quiet, counting, failed };

static thread_local State state = State::quiet;
static thread_local std::size_t left = 0;

FailingNew::FailingNew (std::size_t n)
{
    left = n;
    state = State::counting;
}

FailingNew::~FailingNew ()
{
    state = State::quiet;
}

bool FailingNew::has_failed () const
{
    return state == State::failed;
}

static void* allocate (std::size_t size, std::size_t alignment)
{
    if (state == State::counting && left-- == 0) {
        state = State::failed;
        throw std::bad_alloc ();
    }
    if (size > std::size_t{1} << 40)    // a sanitizer ends the program instead
        throw std::bad_alloc ();
    const std::size_t whole = (size + alignment - 1) / alignment * alignment;
    if (void* memory = std::aligned_alloc (alignment, whole > 0 ? whole : alignment))
        return memory;
    throw std::bad_alloc ();
}

static void* allocate_or_null (std::size_t size, std::size_t alignment) noexcept
{
    try {
        return allocate (size, alignment);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

// The forms for arrays call these. A sanitizer has all forms of its own, and none may be mixed with ours.

void* operator new (std::size_t size)
{
    return allocate (size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}

void* operator new (std::size_t size, std::align_val_t alignment)
{
    return allocate (size, static_cast<std::size_t> (alignment));
}

void* operator new (std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate_or_null (size, __STDCPP_DEFAULT_NEW_ALIGNMENT__);
}

void* operator new (std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return allocate_or_null (size, static_cast<std::size_t> (alignment));
}

void operator delete (void* memory) noexcept
{
    std::free (memory);
}

void operator delete (void* memory, std::size_t) noexcept
{
    std::free (memory);
}

void operator delete (void* memory, std::align_val_t) noexcept
{
    std::free (memory);
}

void operator delete (void* memory, std::size_t, std::align_val_t) noexcept
{
    std::free (memory);
}
