#include "kalvo/files/json/take.h"

#include "kalvo/files/text/words.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace klv {

void check (Allowed allowed, double value)
{
    switch (allowed) {
    case Allowed::finite:
        if (!std::isfinite (value))
            throw syntax ("must be finite");
        break;
    case Allowed::finite_or_unknown:
        if (std::isinf (value))
            throw syntax ("must be finite, or NaN where it is unknown");
        break;
    case Allowed::above_minus:
        if (!(value > -infinity))
            throw syntax ("an upper bound is a number or Inf");
        break;
    case Allowed::below_plus:
        if (!(value < infinity))
            throw syntax ("a lower bound is a number or -Inf");
        break;
    }
}

std::int32_t whole (double value)
{
    if (!(value >= std::numeric_limits<std::int32_t>::min () &&
          value <= std::numeric_limits<std::int32_t>::max () && value == std::nearbyint (value)))
        throw syntax ("must be a whole number of 32 bits");
    return static_cast<std::int32_t> (value);
}

std::int32_t word_of (Group group, const std::string& word)
{
    const auto words = constants (group);
    const auto found = std::ranges::find (words, std::string_view (word), short_name);
    if (found == words.end ())
        throw syntax (quote (word) + " is none of its words");
    return found->value;
}

JsonField object (std::string path, bool required)
{
    return {.path = std::move (path), .required = required};
}

JsonField numbers (std::string path, std::vector<double>& values, Allowed allowed, bool required)
{
    return {.path = std::move (path),
            .kind = JsonKind::number,
            .list = true,
            .required = required,
            .take_number = [&values, allowed] (double value) {
                check (allowed, value);
                values.push_back (value);
            }};
}

JsonField indices (std::string path, std::vector<std::int32_t>& values)
{
    return {.path = std::move (path),
            .kind = JsonKind::number,
            .list = true,
            .take_number = [&values] (double value) { values.push_back (whole (value)); }};
}

JsonField name (std::string path, std::string& kept)
{
    return {.path = std::move (path), .kind = JsonKind::name, .take_text = [&kept] (std::string& text) {
                kept = text;
            }};
}

JsonField names (std::string path, std::vector<std::string>& kept)
{
    return {.path = std::move (path),
            .kind = JsonKind::name,
            .list = true,
            .take_text = [&kept] (std::string& text) { kept.push_back (text); }};
}

FileFault fault_at (const std::string& path, std::size_t index, const std::string& text)
{
    return syntax (path + "[" + std::to_string (index) + "]: " + text);
}

void check_length (const std::string& path, std::size_t length, std::size_t items, const char* kind)
{
    if (length != items)
        throw syntax (text (path, ": has ", length, " entries where there are ", items, " ", kind));
}

void check_countable (const std::string& path, std::size_t length)
{
    if (length > static_cast<std::size_t> (std::numeric_limits<std::int32_t>::max ()))
        throw syntax (path + ": more than a task can hold");
}

void take_names (const std::string& path, std::vector<std::string>&& given, std::int32_t count,
                 const char* kind, Names& kept)
{
    if (!given.empty ())
        check_length (path, given.size (), static_cast<std::size_t> (count), kind);
    for (std::size_t i = 0; i < given.size (); ++i)
        kept.put (static_cast<std::int32_t> (i), count, std::move (given[i]));
}

}
