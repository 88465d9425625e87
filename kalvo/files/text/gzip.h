// Shared by packing and unpacking of gzip data: zlib's streams with memory from operator new, and zlib's answers.
#pragma once

#include <new>
#include <zlib.h>

namespace klv {

constexpr int gzip_window_bits = MAX_WBITS + 16;    // the 16 asks zlib for gzip's header and check sum

inline z_stream gzip_stream ()
{
    z_stream stream{};
    stream.zalloc = [] (void*, uInt count, uInt size) {
        return ::operator new (static_cast<std::size_t> (count) * size, std::nothrow);
    };
    stream.zfree = [] (void*, void* memory) { ::operator delete (memory); };
    return stream;
}

// Throws std::bad_alloc when the set-up of a stream failed: lack of memory is the only possible cause.
inline void check_gzip (int answer)
{
    if (answer != Z_OK)
        throw std::bad_alloc ();
}

}
