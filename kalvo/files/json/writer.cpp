#include "kalvo/files/json/writer.h"

#include "kalvo/files/text/numbers.h"
#include "kalvo/model/text.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace klv {

void append_number (std::string& line, double value)
{
    if (!std::isfinite (value))
        line += std::isnan (value) ? "\"NaN\"" : value > 0 ? "\"Inf\"" : "\"-Inf\"";
    else if (value == 0 && std::signbit (value))
        line += "-0.0";    // readers take "-0" for the integer 0
    else
        line += NumberText (value);
}

void append_name (std::string& line, const std::string& name)
{
    const auto is_plain = [] (char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (std::ranges::all_of (name, is_plain)) {
        line.append (1, '"').append (name).append (1, '"');
        return;
    }
    try {
        line += nlohmann::json (name).dump ();
    } catch (const nlohmann::json::type_error&) {    // not UTF-8
        char separator = '[';
        for (const char byte : name) {
            line += separator;
            append_number (line, static_cast<unsigned char> (byte));
            separator = ',';
        }
        line += ']';
    }
}

void append_word (std::string& line, Group group, std::int32_t value)
{
    line.append (1, '"').append (short_name (*find_constant (group, value))).append (1, '"');
}

void JsonWriter::numbers (std::string_view name, const std::vector<double>& values)
{
    list (name, [&] (auto next) {
        for (const double value : values)
            append_number (next (), value);
    });
}

void JsonWriter::integers (std::string_view name, const std::vector<std::int32_t>& values)
{
    list (name, [&] (auto next) {
        for (const std::int32_t value : values)
            append (next (), value);
    });
}

void JsonWriter::names (std::string_view name, const Names& names, std::int32_t count)
{
    list (name, [&] (auto next) {
        for (std::int32_t i = 0; names.any () && i < count; ++i)
            append_name (next (), names.get (i));
    });
}

}
