#include "kalvo/files/text/fields.h"

#include "kalvo/files/text/fault.h"
#include "kalvo/files/text/numbers.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <optional>

namespace klv {

void Fields::skip ()
{
    rest_.remove_prefix (std::min (rest_.find_first_not_of (separators_), rest_.size ()));
}

std::string_view Fields::word ()
{
    const std::string_view found = rest_.substr (0, rest_.find_first_of (separators_));
    rest_.remove_prefix (found.size ());
    skip ();
    return found;
}

double Fields::number ()
{
    if (empty ())
        throw syntax ("a number is missing at the end of the line");
    return parse_finite (word ());
}

// Nothing when the text is no whole number of 64 bits.
static std::optional<std::int64_t> parse_whole (std::string_view text)
{
    if (text.size () > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix (1);
    std::int64_t value = 0;
    const char* const end = text.data () + text.size ();
    const auto [stopped, error] = std::from_chars (text.data (), end, value);
    return error == std::errc () && stopped == end ? std::optional (value) : std::nullopt;
}

std::int32_t Fields::whole (std::int32_t smallest, std::int32_t largest)
{
    if (empty ())
        throw syntax ("a whole number is missing at the end of the line");
    const std::string_view given = word ();
    const auto value = parse_whole (given);
    if (!value || *value < smallest || *value > largest)
        throw syntax (text (quote (given), " is no whole number from ", smallest, " to ", largest));
    return static_cast<std::int32_t> (*value);
}

std::int32_t Fields::index (const char* item, std::int64_t count, std::int32_t first)
{
    if (empty ())
        throw syntax (text ("the index of ", item, " is missing at the end of the line"));
    const std::string_view given = word ();
    const auto value = parse_whole (given);
    if (!value || *value < first || *value - first >= count)
        throw syntax (text (quote (given), " is not the index of ", item, ": there are ", count,
                            ", the first has the index ", first));
    return static_cast<std::int32_t> (*value - first);
}

void Fields::end () const
{
    if (!empty ())
        throw syntax ("text behind the last field of the line: " + quote (rest_));
}

}
