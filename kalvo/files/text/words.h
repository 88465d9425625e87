// Characters and words of text problem files.
#pragma once

#include <string_view>

namespace klv {

struct FileFault;

inline bool is_blank (char c)
{
    return c == ' ' || c == '\t';
}

constexpr char upper (char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char> (c - 'a' + 'A') : c;
}

std::string_view trim (std::string_view text);

// Whether a text is the given word but for case; the word is in capitals.
bool same_word (std::string_view text, std::string_view word);

FileFault control_character (char c);

// Throws FileFault for control characters other than tabs.
void check_characters (std::string_view line);

}
