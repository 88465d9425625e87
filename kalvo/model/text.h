// Texts of messages: text ("row ", 3, " holds ", 2.5). Numbers are written so that they read back exactly.
#pragma once

#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace klv {

inline void append (std::string& whole, std::string_view piece)
{
    whole += piece;
}

void append (std::string& whole, std::integral auto number)
{
    char digits[32];
    whole.append (digits, std::to_chars (digits, digits + sizeof digits, number).ptr);
}

inline void append (std::string& whole, double number)
{
    char digits[32];
    if (std::isfinite (number))
        whole.append (digits, std::to_chars (digits, digits + sizeof digits, number).ptr);
    else
        whole += std::isnan (number) ? "NaN" : number > 0 ? "Inf" : "-Inf";
}

template <class... Pieces>
std::string text (const Pieces&... pieces)
{
    std::string whole;
    (append (whole, pieces), ...);
    return whole;
}

// Copies a text with a terminating 0 into a buffer of `capacity` bytes, cut between two UTF-8 characters when it is too long;
// then false is returned.
inline bool copy_text (std::string_view source, char* buffer, std::size_t capacity) noexcept
{
    if (capacity == 0)
        return false;
    std::size_t length = source.size ();
    if (length >= capacity) {
        length = capacity - 1;
        for (int step = 0;
             step < 3 && length > 0 && (static_cast<unsigned char> (source[length]) & 0xC0) == 0x80; ++step)
            --length;
    }
    source.copy (buffer, length);
    buffer[length] = '\0';
    return length == source.size ();
}

}
