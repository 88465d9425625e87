// The fault with which readers and writers of files give up. Thrown inside kalvo/files only: read_problem and write_problem turn a
// fault into the task's last error.
#pragma once

#include "kalvo/include/kalvo.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace klv {

struct FileFault {
    KLVrescode_t code;
    std::string text;         // empty: the user stopped the operation, or memory ran out
    std::int64_t line = 0;    // 0: no line is at fault
};

inline FileFault syntax (std::string text)
{
    return {KLV_RES_FILE_SYNTAX, std::move (text)};
}

// A name or number from a file as messages show it: in quotes, without control characters, long ones cut.
inline std::string quote (std::string_view text)
{
    constexpr std::size_t most = 60;
    std::string quoted = "\"";
    for (const char c : text.substr (0, most))
        quoted += static_cast<unsigned char> (c) < ' ' ? '?' : c;
    return quoted + (text.size () > most ? "...\"" : "\"");
}

// Parts of problem files that a task cannot hold, with the text that begins each.
inline FileFault unsupported (const char* things, const std::string& text)
{
    return {KLV_RES_FILE_SECTION_UNSUPPORTED, std::string (things) + " are not supported: " + text};
}

}
