#include "tests/unit/notation.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>

using namespace standalone;

namespace {

constexpr std::pair<std::string_view, mxClassID> classes[] = {
    {"logical", mxLOGICAL_CLASS}, {"char", mxCHAR_CLASS},   {"single", mxSINGLE_CLASS},
    {"int8", mxINT8_CLASS},       {"int32", mxINT32_CLASS}, {"uint64", mxUINT64_CLASS}};

class Reader {
public:
    explicit Reader (std::string_view text) : rest_ (text) {}

    Value read ()
    {
        if (take ('@'))
            return function_handle ();
        if (take ('\''))
            return text (quoted ());
        if (take ('['))
            return matrix_of_rows ();
        if (take ('{'))
            return cell (list ('}', &Reader::read));
        if (take ('('))
            return record (list (')', &Reader::field));
        return named (word ());
    }

    bool at_end () { return peek () == '\0'; }

private:
    char peek ()
    {
        rest_.remove_prefix (std::min (rest_.find_first_not_of (' '), rest_.size ()));
        return rest_.empty () ? '\0' : rest_.front ();
    }

    bool take (char c)
    {
        if (peek () != c)
            return false;
        rest_.remove_prefix (1);
        return true;
    }

    std::string until (std::string_view ends)
    {
        peek ();
        const std::string found (rest_.substr (0, rest_.find_first_of (ends)));
        rest_.remove_prefix (found.size ());
        return found;
    }

    std::string word () { return until (" ,;=)]}"); }
    std::string quoted ()
    {
        std::string found = until ("'");
        rest_.remove_prefix (1);
        return found;
    }

    template <class Element>
    std::vector<Element> list (char end, Element (Reader::*element) ())
    {
        std::vector<Element> elements;
        while (!take (end)) {
            elements.push_back ((this->*element) ());
            take (',');
        }
        return elements;
    }

    std::pair<std::string, Value> field ()
    {
        std::string name = word ();
        return {name, take ('=') ? read () : Value ()};
    }

    Value matrix_of_rows ()
    {
        std::vector<std::string> lines;
        std::vector<Numbers> rows;
        while (!take (']')) {
            if (take ('\''))
                lines.push_back (quoted ());
            else
                for (rows.emplace_back (); peek () != ';' && peek () != ']';)
                    rows.back ().push_back (std::stod (word ()));
            take (';');
        }
        if (!lines.empty ())
            return texts (lines);
        Numbers values;
        const std::size_t columns = rows.empty () ? 0 : rows[0].size ();
        for (std::size_t j = 0; j < columns; ++j)
            for (const Numbers& row : rows)
                values.push_back (row.at (j));
        return matrix (rows.size (), columns, values);
    }

    static Sizes sizes (const std::string& text)
    {
        Sizes found;
        for (std::size_t at = 0; at <= text.size (); at = std::min (text.find ('x', at), text.size ()) + 1)
            found.push_back (std::stoul (text.substr (at)));
        return found;
    }

    Value named (const std::string& name)
    {
        for (const auto& [known, class_id] : classes)
            if (name == known) {
                const Value same = read ();
                return array (class_id, same.sizes (), same.numbers ());
            }
        if (name == "object")
            return object ();
        if (name == "string")
            return array (mxUNKNOWN_CLASS, {1, 1});
        if (name == "cell")
            return cell (sizes (word ()));
        if (name == "record") {
            const Sizes size = sizes (word ());
            const std::string field = word ();
            return records (size, std::vector<std::string> (!field.empty (), field));
        }
        if (name == "complex" || name == "sparse") {
            const Value same = read ();
            const std::size_t rows = same.sizes ()[0], columns = same.sizes ()[1];
            if (name == "complex")
                return complex (rows, columns, same.numbers (), same.numbers ());
            std::vector<Entry> entries;
            for (std::size_t k = 0; k < same.count (); ++k)
                if (const double number = same.numbers ()[k]; number != 0)
                    entries.push_back ({k % rows, k / rows, number});
            return sparse (rows, columns, entries, same.class_id ());
        }
        return name.find ('x') < name.size () ? array (mxDOUBLE_CLASS, sizes (name))
                                              : scalar (std::stod (name));
    }

    std::string_view rest_;
};

// Items of a matrix, given by row and column.
template <class Item>
std::string grid (const Sizes& sizes, Item item)
{
    std::string text;
    for (std::size_t i = 0; i < sizes[0]; ++i)
        for (std::size_t j = 0; j < sizes[1]; ++j)
            text += (j > 0 ? " " : i > 0 ? ";" : "") + item (i, j);
    return sizes[0] * sizes[1] == 1 ? text : "[" + text + "]";
}

std::string number (double value)
{
    char text[32];
    std::snprintf (text, sizeof text, "%.12g", value == 0 || std::isnan (value) ? std::abs (value) : value);
    return text;
}

std::string show_sparse (const mxArray* a)
{
    std::string text = "sparse " + std::to_string (mxGetM (a)) + 'x' + std::to_string (mxGetN (a));
    for (std::size_t j = 0; j < mxGetN (a); ++j)
        for (std::size_t k = mxGetJc (a)[j]; k < mxGetJc (a)[j + 1]; ++k)
            text += " (" + std::to_string (mxGetIr (a)[k] + 1) + ',' + std::to_string (j + 1) +
                    ")=" + number (mxGetPr (a)[k]);
    return text;
}

std::string join (const std::vector<std::string>& names, View record)
{
    std::string text;
    for (const std::string& name : names)
        text += (text.empty () ? "" : ", ") + name + '=' + show (record[name.c_str ()]);
    return text;
}

}

Value value (std::string_view text)
{
    Reader reader (text);
    Value read = reader.read ();
    if (!reader.at_end ())
        throw std::invalid_argument ("no value: " + std::string (text));
    return read;
}

std::vector<Value> values (const std::vector<std::string>& texts)
{
    std::vector<Value> read;
    for (const std::string& text : texts)
        read.push_back (value (text));
    return read;
}

std::string show (View view, std::string_view names)
{
    std::istringstream words{std::string (names)};
    return view ? join ({std::istream_iterator<std::string> (words), {}}, view) : "-";
}

std::string show (View view)
{
    if (!view)
        return "-";
    const Sizes sizes = view.sizes ();
    const auto at = [&] (std::size_t i, std::size_t j) { return i + j * sizes[0]; };
    if (view.is_sparse ())
        return show_sparse (view.get ());
    if (view.class_id () == mxSTRUCT_CLASS)
        return "(" + join (view.field_names (), view) + ")";
    if (view.class_id () == mxCHAR_CLASS && (sizes[0] == 1 || sizes == Sizes{0, 0}))
        return "'" + view.text () + "'";
    if (view.count () == 0)
        return std::to_string (sizes[0]) + 'x' + std::to_string (sizes[1]);
    if (view.class_id () == mxCELL_CLASS)
        return grid (sizes, [&] (std::size_t i, std::size_t j) { return show (view.cell (at (i, j))); });
    if (view.class_id () == mxCHAR_CLASS)
        return grid ({sizes[0], 1}, [&, characters = view.text ()] (std::size_t i, std::size_t) {
            std::string row;
            for (std::size_t j = 0; j < sizes[1]; ++j)
                row += characters[at (i, j)];
            return row;
        });
    return grid (sizes, [&, numbers = view.numbers ()] (std::size_t i, std::size_t j) {
        return number (numbers[at (i, j)]);
    });
}
