// The standalone host's arrays, and its book of what is alive.
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

// Exactly as long as its contents, so that AddressSanitizer sees an access beyond them.
using Data = std::unique_ptr<void, FreeData>;

// Who releases an array or a block that the gateway does not: the call of this depth, or a Value.
enum Depth : int { owned_by_value = -1, outside_any_call = 0 };

}

struct mxArray_tag {
    mxClassID class_id = mxUNKNOWN_CLASS;
    bool is_sparse = false;
    bool is_complex = false;
    bool is_borrowed = false;    // an input of a running call
    bool is_unread = false;      // numbers that a host may have to spell out at the first look
    standalone::Sizes sizes;     // two or more
    standalone::Data real, imaginary;
    std::vector<mwIndex> ir, jc;
    std::vector<std::string> fields;
    std::vector<mxArray*> parts;    // of a cell or a record, all fields of one element after another
    mxArray* whole = nullptr;       // what this is part of
    int depth = standalone::outside_any_call;

    std::size_t count () const;
    std::size_t stored () const;    // values that `real` holds
};

namespace standalone {

std::size_t element_size (mxClassID class_id);    // 0 for classes without numbers

struct Book {
    Session session;
    std::unordered_map<const mxArray*, std::unique_ptr<mxArray>> arrays;
    std::deque<std::unique_ptr<mxArray>> released;    // shells of the latest, so that a later use is seen
    std::unordered_map<void*, int> blocks;            // and the depth that owns each
    int depth = outside_any_call;
    std::thread::id thread = std::this_thread::get_id ();

    void fault (std::string text);
    void check_thread (const char* function);

    // Counts one request for memory; true when it is the one that gives null.
    bool refuses ();

    // The numbers of an array; the first look at those of another's may need memory.
    void* numbers (const mxArray* array, const char* function);

    // The array, once it is sure that it may be used. Anything else ends the call.
    mxArray& used (const mxArray* array, const char* function);
    // The same for a change.
    mxArray& changed (mxArray* array, const char* function);

    // Null when there is no room for the elements.
    mxArray* create (mxClassID class_id, Sizes sizes, bool is_complex = false);
    mxArray* create_sparse (mxClassID class_id, std::size_t rows, std::size_t columns, std::size_t nzmax,
                            bool is_complex);
    mxArray* create_text (std::string_view utf8);
    mxArray* duplicate (const mxArray& array);
    void destroy (mxArray& array);

    // Makes `value`, which may be null, a part. What was there before is left alone.
    void put (mxArray& whole, std::size_t place, mxArray* value, const char* function);

    // Releases what belongs to a depth, parts of values excepted; the counts of what there was.
    std::size_t release_arrays (bool (*belongs) (int depth));
    std::size_t release_blocks (bool (*belongs) (int depth));
};

Book& book ();

// Calls `visit` with the array's data as what it is; false for classes without numbers.
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
