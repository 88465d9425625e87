#include "kalvo/files/text/words.h"

#include "kalvo/files/text/fault.h"

#include <algorithm>

namespace klv {

std::string_view trim (std::string_view text)
{
    while (!text.empty () && is_blank (text.front ()))
        text.remove_prefix (1);
    while (!text.empty () && is_blank (text.back ()))
        text.remove_suffix (1);
    return text;
}

bool same_word (std::string_view text, std::string_view word)
{
    return std::equal (text.begin (), text.end (), word.begin (), word.end (),
                       [] (char a, char b) { return upper (a) == b; });
}

FileFault control_character (char c)
{
    if (c == '\0')
        return syntax ("a zero byte: this is no text file");
    return syntax ("a control character, of code " + std::to_string (static_cast<int> (c)));
}

void check_characters (std::string_view line)
{
    for (const char c : line)
        if (static_cast<unsigned char> (c) < ' ' && c != '\t')
            throw control_character (c);
}

}
