// Values and views for tests, and the session.

#include <algorithm>
#include <cstring>
#include <new>

#include "host/standalone/array.h"

namespace standalone {

static const mxArray& seen (const mxArray* array)
{
    if (array == nullptr)
        throw std::logic_error ("there is no array");
    return book ().used (array, "View");
}

mxClassID View::class_id () const
{
    return seen (array_).class_id;
}

bool View::is_sparse () const
{
    return seen (array_).is_sparse;
}

std::vector<std::size_t> View::sizes () const
{
    return seen (array_).sizes;
}

std::size_t View::count () const
{
    return seen (array_).count ();
}

std::vector<double> View::numbers () const
{
    const mxArray& array = seen (array_);
    std::vector<double> result (array.count ());
    const bool known = with_elements (array, [&] (const auto* data) {
        if (!array.is_sparse) {
            for (std::size_t element = 0; element < result.size (); ++element)
                result[element] = static_cast<double> (data[element]);
            return;
        }
        for (std::size_t column = 0; column < array.sizes[1]; ++column)
            for (std::size_t k = array.jc[column]; k < array.jc[column + 1]; ++k)
                result[column * array.sizes[0] + array.ir[k]] = static_cast<double> (data[k]);
    });
    if (!known)
        throw std::logic_error ("the array holds no numbers");
    return result;
}

double View::number () const
{
    const std::vector<double> all = numbers ();
    if (all.size () != 1)
        throw std::logic_error ("the array holds " + std::to_string (all.size ()) + " numbers");
    return all[0];
}

std::string View::text () const
{
    const mxArray& array = seen (array_);
    if (array.class_id != mxCHAR_CLASS)
        throw std::logic_error ("the array is not a text");
    return utf8 ({static_cast<const char16_t*> (array.real.get ()), array.count ()});
}

std::vector<std::string> View::field_names () const
{
    return seen (array_).fields;
}

View View::operator[] (const char* field) const
{
    return array_ == nullptr ? nullptr : mxGetField (array_, 0, field);
}

View View::cell (std::size_t index) const
{
    return array_ == nullptr ? nullptr : mxGetCell (array_, index);
}

// Gives an array to a Value: no call releases it then.
static Value owned (mxArray* array)
{
    if (array == nullptr)
        throw std::bad_alloc ();
    return Value (array);
}

Value::Value (mxArray* array) : View (array)
{
    if (array != nullptr)
        array->depth = owned_by_value;
}

Value::Value (const Value& other)
    : Value (other.array_ == nullptr ? nullptr : book ().duplicate (*other.array_))
{}

Value& Value::operator= (Value other) noexcept
{
    std::swap (array_, other.array_);
    return *this;
}

Value::~Value ()
{
    if (array_ != nullptr)
        book ().destroy (const_cast<mxArray&> (*array_));
}

mxArray* Value::release ()
{
    return const_cast<mxArray*> (std::exchange (array_, nullptr));
}

Value array (mxClassID class_id, const Sizes& sizes, const Numbers& values)
{
    mxArray* const made = book ().create (class_id, sizes);
    Value value = owned (made);
    with_elements (*made, [&] (auto* data) {
        using Element = std::remove_pointer_t<decltype (data)>;
        for (std::size_t element = 0; element < std::min (values.size (), made->count ()); ++element)
            data[element] = static_cast<Element> (values[element]);
    });
    return value;
}

Value scalar (double value)
{
    return matrix (1, 1, {value});
}

Value matrix (std::size_t rows, std::size_t columns, const Numbers& values)
{
    return array (mxDOUBLE_CLASS, {rows, columns}, values);
}

Value complex (std::size_t rows, std::size_t columns, const Numbers& real, const Numbers& imaginary)
{
    mxArray* const made = book ().create (mxDOUBLE_CLASS, {rows, columns}, true);
    Value value = owned (made);
    std::copy (real.begin (), real.end (), static_cast<double*> (made->real.get ()));
    std::copy (imaginary.begin (), imaginary.end (), static_cast<double*> (made->imaginary.get ()));
    return value;
}

Value sparse (std::size_t rows, std::size_t columns, std::vector<Entry> entries, mxClassID class_id)
{
    std::stable_sort (entries.begin (), entries.end (), [] (const Entry& a, const Entry& b) {
        return std::pair (a.column, a.row) < std::pair (b.column, b.row);
    });
    mxArray* const made = book ().create_sparse (class_id, rows, columns, entries.size (), false);
    Value value = owned (made);
    with_elements (*made, [&] (auto* data) {
        using Element = std::remove_pointer_t<decltype (data)>;
        for (std::size_t k = 0; k < entries.size (); ++k) {
            data[k] = static_cast<Element> (entries[k].value);
            made->ir[k] = entries[k].row;
            ++made->jc[entries[k].column + 1];
        }
    });
    for (std::size_t next = 1; next <= columns; ++next)
        made->jc[next] += made->jc[next - 1];
    return value;
}

Value text (std::string_view utf8)
{
    return owned (book ().create_text (utf8));
}

Value texts (const std::vector<std::string>& rows)
{
    std::size_t width = 0;
    for (const std::string& line : rows)
        width = std::max (width, line.size ());
    Numbers characters;
    for (std::size_t place = 0; place < width; ++place)
        for (const std::string& line : rows)
            characters.push_back (place < line.size () ? line[place] : ' ');
    return array (mxCHAR_CLASS, {rows.size (), width}, characters);
}

Value cell (const Sizes& sizes)
{
    return array (mxCELL_CLASS, sizes);
}

Value cell (const std::vector<Value>& elements)
{
    Value value = cell (Sizes{1, elements.size ()});
    for (std::size_t place = 0; place < elements.size (); ++place)
        book ().put (*const_cast<mxArray*> (value.get ()), place, Value (elements[place]).release (), "cell");
    return value;
}

Value records (const Sizes& sizes, const std::vector<std::string>& fields)
{
    mxArray* const made = book ().create (mxSTRUCT_CLASS, sizes);
    Value value = owned (made);
    made->fields = fields;
    made->parts.resize (made->count () * fields.size ());
    return value;
}

Value record (const std::vector<std::pair<std::string, Value>>& fields)
{
    std::vector<std::string> names;
    for (const auto& field : fields)
        names.push_back (field.first);
    Value value = records ({1, 1}, names);
    for (std::size_t place = 0; place < fields.size (); ++place)
        book ().put (*const_cast<mxArray*> (value.get ()), place, Value (fields[place].second).release (),
                     "record");
    return value;
}

Value function_handle ()
{
    return array (mxFUNCTION_CLASS, {1, 1});
}

Value object ()
{
    return array (mxOBJECT_CLASS, {1, 1});
}

void Session::define (std::string name, Function function)
{
    std::erase_if (functions, [&] (const auto& entry) { return entry.first == name; });
    functions.emplace_back (std::move (name), std::move (function));
}

Session& session ()
{
    return book ().session;
}

std::size_t live_arrays ()
{
    const auto& arrays = book ().arrays;
    return static_cast<std::size_t> (std::count_if (arrays.begin (), arrays.end (), [] (const auto& entry) {
        return entry.second->depth != owned_by_value && entry.second->whole == nullptr;
    }));
}

std::size_t live_blocks ()
{
    return book ().blocks.size ();
}

void reset ()
{
    book ().release_arrays ([] (int depth) { return depth != owned_by_value; });
    book ().release_blocks ([] (int) { return true; });
    session () = Session ();
}

}
