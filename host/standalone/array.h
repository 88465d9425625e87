// The standalone host's arrays, and its book of live arrays and blocks.
#pragma once

#include <cstdlib>
#include <deque>
#include <memory>
#include <thread>
#include <unordered_map>

#include "host/standalone/standalone.h"

namespace standalone {

struct FreeData {
    void operator() (void* data) const { std::free (data); }
};

// Memory without slack, so that AddressSanitizer sees any access beyond the contents.
using Data = std::unique_ptr<void, FreeData>;

// Owner of an array or block: the running call of this depth, which releases it at its end, or a Value.
enum Depth : int { owned_by_value = -1, outside_any_call = 0 };

}

struct mxArray_tag {
    mxClassID class_id = mxUNKNOWN_CLASS;
    bool is_sparse = false;
    bool is_complex = false;
    bool is_borrowed = false;    // an input of a running call
    bool is_unread = false;      // the first access may need memory, as for Octave's ranges
    standalone::Sizes sizes;     // two or more
    standalone::Data real, imaginary;
    std::vector<mwIndex> ir, jc;
    std::vector<std::string> fields;
    std::vector<mxArray*> parts;    // elements of a cell; fields of a record, element by element
    mxArray* whole = nullptr;       // the cell or record that has this array as a part
    int depth = standalone::outside_any_call;

    std::size_t count () const;
    std::size_t stored () const;    // number of values in `real`
};

namespace standalone {

std::size_t element_size (mxClassID class_id);    // 0 for classes without numbers

struct Book {
    Session session;
    std::unordered_map<const mxArray*, std::unique_ptr<mxArray>> arrays;
    std::deque<std::unique_ptr<mxArray>> released;    // shells of the latest, to recognise later uses
    std::unordered_map<void*, int> blocks;            // live blocks, each with the depth that owns it
    int depth = outside_any_call;
    std::thread::id thread = std::this_thread::get_id ();

    void fault (std::string text);
    void check_thread (const char* function);

    // Counts a request for memory; true when this request must fail.
    bool refuses ();

    // The numbers of an array; null if the first access (is_unread) fails for lack of memory.
    void* numbers (const mxArray* array, const char* function);

    // The array, if it may be read; otherwise the call ends.
    mxArray& used (const mxArray* array, const char* function);
    // The array, if it may be changed; otherwise the call ends.
    mxArray& changed (mxArray* array, const char* function);

    // A new array; null when memory for the elements is short.
    mxArray* create (mxClassID class_id, Sizes sizes, bool is_complex = false);
    mxArray* create_sparse (mxClassID class_id, std::size_t rows, std::size_t columns, std::size_t nzmax,
                            bool is_complex);
    mxArray* create_text (std::string_view utf8);
    mxArray* duplicate (const mxArray& array);
    void destroy (mxArray& array);

    // Makes `value`, which may be null, a part. The part that it replaces is not released.
    void put (mxArray& whole, std::size_t place, mxArray* value, const char* function);

    // Releases arrays and blocks that belong to a depth, except parts of values. Returns how many there were.
    std::size_t release_arrays (bool (*belongs) (int depth));
    std::size_t release_blocks (bool (*belongs) (int depth));
};

Book& book ();

// Calls `visit` with the array's data in its own type; false for classes without numbers.
template <class Visit>
bool with_elements (const mxArray& array, Visit visit)
{
    void* const data = array.real.get ();
    switch (array.class_id) {
    case mxLOGICAL_CLASS:
        return visit (static_cast<mxLogical*> (data)), true;
    case mxCHAR_CLASS:
        return visit (static_cast<char16_t*> (data)), true;
    case mxDOUBLE_CLASS:
        return visit (static_cast<double*> (data)), true;
    case mxSINGLE_CLASS:
        return visit (static_cast<float*> (data)), true;
    case mxINT8_CLASS:
        return visit (static_cast<std::int8_t*> (data)), true;
    case mxUINT8_CLASS:
        return visit (static_cast<std::uint8_t*> (data)), true;
    case mxINT16_CLASS:
        return visit (static_cast<std::int16_t*> (data)), true;
    case mxUINT16_CLASS:
        return visit (static_cast<std::uint16_t*> (data)), true;
    case mxINT32_CLASS:
        return visit (static_cast<std::int32_t*> (data)), true;
    case mxUINT32_CLASS:
        return visit (static_cast<std::uint32_t*> (data)), true;
    case mxINT64_CLASS:
        return visit (static_cast<std::int64_t*> (data)), true;
    case mxUINT64_CLASS:
        return visit (static_cast<std::uint64_t*> (data)), true;
    default:
        return false;
    }
}

std::u16string utf16 (std::string_view utf8);
std::string utf8 (std::u16string_view utf16);

}
