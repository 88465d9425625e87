// Calls of kalvoopt as a session makes them, and the texts that a call is expected to print.
#pragma once

#include <cctype>
#include <string>
#include <vector>

#include "kalvo.h"
#include "tests/support/host_test.h"

using namespace standalone;

// Names a row of a table after the fault that it would catch, "zero stops" as ZeroStops_3.
inline constexpr auto by_fault = [] (const auto& row) {
    std::string name;
    bool starts_word = true;
    for (const char* c = row.param.fault; *c != '\0'; ++c) {
        if (std::isalnum (static_cast<unsigned char> (*c)))
            name += starts_word ? static_cast<char> (std::toupper (*c)) : *c;
        starts_word = *c == ' ';
    }
    return name + '_' + std::to_string (row.index);
};

using Inputs = std::vector<Value>;

inline Value absent ()
{
    return matrix (0, 0);
}

// Two constraints and two variables; the smallest value is 3 at (1, 1).
inline Value small_problem ()
{
    return record ({{"a", matrix (2, 2, {1, 2, 2, 1})},
                    {"c", row ({1, 2})},
                    {"blc", row ({3, 3})},
                    {"blx", row ({0, 0})}});
}

inline std::string description (KLVrescode_t code, const char* format)
{
    char name[KLV_MAX_TEXT] = "", text[KLV_MAX_TEXT] = "", line[3 * KLV_MAX_TEXT];
    KLV_getcodedesc (code, name, text);
    if (std::string (format).starts_with ("Return"))
        std::snprintf (line, sizeof line, format, code, name, text);
    else
        std::snprintf (line, sizeof line, format, name, text);
    return line;
}

inline std::string set_up_line (KLVrescode_t code)
{
    return description (code, "Return code - %d [%s] [%s]\n");
}
inline std::string failure_line (KLVrescode_t code)
{
    return description (code, "Kalvo error: %s (%s)\n");
}

inline std::string banner (int debug = 0)
{
    std::string text;
    KLV_linkfunctoenvstream (nullptr, KLV_STREAM_ALL, &text, [] (void* handle, const char* line) {
        *static_cast<std::string*> (handle) += line;
    });
    KLV_echointro (nullptr, debug);
    KLV_linkfunctoenvstream (nullptr, KLV_STREAM_ALL, nullptr, nullptr);
    return text;
}

// What a call with two outputs prints.
inline std::string printed_by (const Inputs& inputs, int outputs = 2)
{
    session ().printed.clear ();
    call (outputs, inputs);
    return session ().printed;
}
