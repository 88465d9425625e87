#include "host/standalone/array.h"

#include <algorithm>
#include <cstring>
#include <limits>

std::size_t mxArray_tag::count () const
{
    std::size_t product = 1;
    for (const std::size_t size : sizes)
        product *= size;
    return product;
}

std::size_t mxArray_tag::stored () const
{
    return is_sparse ? ir.size () : count ();
}

namespace standalone {

std::size_t element_size (mxClassID class_id)
{
    switch (class_id) {
    case mxLOGICAL_CLASS:
    case mxINT8_CLASS:
    case mxUINT8_CLASS:
        return 1;
    case mxCHAR_CLASS:
    case mxINT16_CLASS:
    case mxUINT16_CLASS:
        return 2;
    case mxSINGLE_CLASS:
    case mxINT32_CLASS:
    case mxUINT32_CLASS:
        return 4;
    case mxDOUBLE_CLASS:
    case mxINT64_CLASS:
    case mxUINT64_CLASS:
        return 8;
    default:
        return 0;
    }
}

Book& book ()
{
    static Book instance;
    return instance;
}

void Book::fault (std::string text)
{
    session.faults.push_back (std::move (text));
}

void Book::check_thread (const char* function)
{
    if (std::this_thread::get_id () != thread)
        fault (std::string (function) + ": called from another thread than the call's");
}

bool Book::refuses ()
{
    if (++session.allocations != session.failing_allocation)
        return false;
    if (session.failure_ends_call)
        throw MexError ("Out of memory.");
    return true;
}

void* Book::numbers (const mxArray* array, const char* function)
{
    mxArray& known = used (array, function);
    if (known.is_unread && refuses ())
        return nullptr;
    known.is_unread = false;
    return known.real.get ();
}

mxArray& Book::used (const mxArray* array, const char* function)
{
    check_thread (function);
    if (const auto known = arrays.find (array); known != arrays.end ())
        return *known->second;
    const bool was_released = std::any_of (released.begin (), released.end (),
                                           [array] (const auto& shell) { return shell.get () == array; });
    fault (std::string (function) + (array == nullptr ? ": no array"
                                     : was_released   ? ": the array was released"
                                                      : ": not an array of this host"));
    throw MexError (session.faults.back ());
}

mxArray& Book::changed (mxArray* array, const char* function)
{
    mxArray& target = used (array, function);
    if (target.is_borrowed)
        fault (std::string (function) + ": changes an input");
    return target;
}

// Memory for `count` elements; null also for more elements than any test needs.
static Data zeroed (std::size_t count, std::size_t size)
{
    constexpr std::size_t limit = std::size_t{1} << 36;
    if (size > 0 && count > limit / size)
        return nullptr;
    return Data (std::calloc (count, size));
}

static bool exceeds_address_space (const Sizes& sizes)
{
    constexpr std::size_t limit = (std::size_t{1} << 48) - 1;
    std::size_t product = 1;
    for (const std::size_t size : sizes) {
        if (size > 0 && product > limit / size)
            return true;
        product *= size;
    }
    return false;
}

static mxArray* enter (Book& book, std::unique_ptr<mxArray> array)
{
    array->depth = book.depth;
    mxArray* const key = array.get ();
    book.arrays.emplace (key, std::move (array));
    return key;
}

mxArray* Book::create (mxClassID class_id, Sizes sizes, bool is_complex)
{
    if (exceeds_address_space (sizes))
        return nullptr;
    auto array = std::make_unique<mxArray> ();
    array->class_id = class_id;
    array->is_complex = is_complex;
    array->sizes = std::move (sizes);
    const std::size_t count = array->count ();
    if (const std::size_t size = element_size (class_id); size > 0 && count > 0) {
        array->real = zeroed (count, size);
        if (is_complex)
            array->imaginary = zeroed (count, size);
        if (!array->real || (is_complex && !array->imaginary))
            return nullptr;
    }
    if (class_id == mxCELL_CLASS)
        array->parts.resize (count);
    return enter (*this, std::move (array));
}

mxArray* Book::create_sparse (mxClassID class_id, std::size_t rows, std::size_t columns, std::size_t nzmax,
                              bool is_complex)
{
    auto array = std::make_unique<mxArray> ();
    array->class_id = class_id;
    array->is_sparse = true;
    array->is_complex = is_complex;
    array->sizes = {rows, columns};
    const std::size_t places = std::max<std::size_t> (nzmax, 1);
    array->real = zeroed (places, element_size (class_id));
    if (is_complex)
        array->imaginary = zeroed (places, element_size (class_id));
    // Tries for the memory of the indices first, since a vector would throw.
    if (!array->real || (is_complex && !array->imaginary) || !zeroed (places, sizeof (mwIndex)) ||
        columns >= (std::size_t{1} << 33))
        return nullptr;
    array->ir.resize (places);
    array->jc.resize (columns + 1);
    return enter (*this, std::move (array));
}

mxArray* Book::create_text (std::string_view text)
{
    const std::u16string units = utf16 (text);
    mxArray* const array = create (mxCHAR_CLASS, {units.empty () ? 0U : 1U, units.size ()});
    if (array != nullptr && !units.empty ())
        std::memcpy (array->real.get (), units.data (), units.size () * sizeof (char16_t));
    return array;
}

mxArray* Book::duplicate (const mxArray& array)
{
    mxArray* const copy = array.is_sparse ? create_sparse (array.class_id, array.sizes[0], array.sizes[1],
                                                           array.ir.size (), array.is_complex)
                                          : create (array.class_id, array.sizes, array.is_complex);
    if (copy == nullptr)
        return nullptr;
    const std::size_t bytes = array.stored () * element_size (array.class_id);
    if (array.real)
        std::memcpy (copy->real.get (), array.real.get (), bytes);
    if (array.imaginary)
        std::memcpy (copy->imaginary.get (), array.imaginary.get (), bytes);
    copy->ir = array.ir;
    copy->jc = array.jc;
    copy->fields = array.fields;
    copy->parts.resize (array.parts.size ());
    for (std::size_t place = 0; place < array.parts.size (); ++place)
        if (array.parts[place] != nullptr)
            put (*copy, place, duplicate (*array.parts[place]), "mxDuplicateArray");
    return copy;
}

void Book::destroy (mxArray& array)
{
    if (array.whole != nullptr)
        std::replace (array.whole->parts.begin (), array.whole->parts.end (), &array,
                      static_cast<mxArray*> (nullptr));
    for (mxArray* part : std::exchange (array.parts, {}))
        if (part != nullptr) {
            part->whole = nullptr;
            destroy (*part);
        }
    array.real.reset ();
    array.imaginary.reset ();
    array.ir = {};
    array.jc = {};
    array.fields = {};
    constexpr std::size_t kept_shells = 10000;
    released.push_back (std::move (arrays.extract (&array).mapped ()));
    if (released.size () > kept_shells)
        released.pop_front ();
}

void Book::put (mxArray& whole, std::size_t place, mxArray* value, const char* function)
{
    if (value != nullptr) {
        mxArray& part = used (value, function);
        if (part.is_borrowed)
            return fault (std::string (function) + ": an input becomes part of another array");
        if (part.whole != nullptr)
            return fault (std::string (function) + ": the array is part of another one already");
        part.whole = &whole;
    }
    if (mxArray* const before = std::exchange (whole.parts[place], value); before != nullptr) {
        before->whole = nullptr;
        before->depth = whole.depth;
    }
}

std::size_t Book::release_arrays (bool (*belongs) (int depth))
{
    std::vector<mxArray*> leftover;
    for (const auto& [key, array] : arrays)
        if (array->whole == nullptr && belongs (array->depth))
            leftover.push_back (array.get ());
    for (mxArray* array : leftover)
        destroy (*array);
    return leftover.size ();
}

std::size_t Book::release_blocks (bool (*belongs) (int depth))
{
    return std::erase_if (blocks, [belongs] (const auto& block) {
        const bool leftover = belongs (block.second);
        if (leftover)
            std::free (block.first);
        return leftover;
    });
}

std::u16string utf16 (std::string_view text)
{
    std::u16string units;
    for (std::size_t at = 0; at < text.size ();) {
        const auto lead = static_cast<unsigned char> (text[at++]);
        const int trail = lead < 0x80 ? 0 : lead < 0xc0 ? -1 : lead < 0xe0 ? 1 : lead < 0xf0 ? 2 : 3;
        char32_t point = trail <= 0 ? lead : lead & (0x3fU >> trail);
        bool valid = trail >= 0;
        for (int more = 0; valid && more < trail; ++more) {
            valid = at < text.size () && (static_cast<unsigned char> (text[at]) & 0xc0U) == 0x80U;
            if (valid)
                point = (point << 6) | (static_cast<unsigned char> (text[at++]) & 0x3fU);
        }
        if (!valid || point > 0x10ffff)
            point = 0xfffd;
        if (point >= 0x10000) {
            units.push_back (static_cast<char16_t> (0xd800 + ((point - 0x10000) >> 10)));
            units.push_back (static_cast<char16_t> (0xdc00 + ((point - 0x10000) & 0x3ff)));
        } else {
            units.push_back (static_cast<char16_t> (point));
        }
    }
    return units;
}

std::string utf8 (std::u16string_view units)
{
    std::string text;
    for (std::size_t at = 0; at < units.size (); ++at) {
        char32_t point = units[at];
        if ((point & 0xfc00) == 0xd800 && at + 1 < units.size () && (units[at + 1] & 0xfc00) == 0xdc00)
            point = 0x10000 + ((point & 0x3ff) << 10) + (units[++at] & 0x3ffU);
        const int trail = point < 0x80 ? 0 : point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
        constexpr unsigned lead[] = {0, 0xc0, 0xe0, 0xf0};
        text.push_back (static_cast<char> (lead[trail] | (point >> (6 * trail))));
        for (int more = trail - 1; more >= 0; --more)
            text.push_back (static_cast<char> (0x80U | ((point >> (6 * more)) & 0x3fU)));
    }
    return text;
}

}
