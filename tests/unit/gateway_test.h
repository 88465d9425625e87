// What the tests of the gateway share: a fresh session for each test, calls of kalvoopt, the texts they print.
#pragma once

#include <gtest/gtest.h>

#include <regex>

#include "kalvo.h"
#include "tests/unit/notation.h"

using namespace standalone;

// No fault and no leak at the end.
class GatewayTest : public testing::Test {
protected:
    void SetUp () override { reset (); }
    void TearDown () override
    {
        for (const std::string& fault : session ().faults)
            ADD_FAILURE () << fault;
        EXPECT_EQ (live_arrays () + live_blocks (), 0U);
    }
};

// A call of kalvoopt with inputs in our notation. Nothing may be left over.
inline Call ask_with (const std::vector<std::string>& inputs, int outputs = 2)
{
    const std::vector<Value> arrays = values (inputs);
    session ().printed.clear ();
    Call result = call (outputs, arrays);
    EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
    EXPECT_FALSE (result.error) << *result.error;
    return result;
}

// [r, res] = kalvoopt (command, ...)
inline Call ask (const std::string& command, std::vector<std::string> rest = {}, int outputs = 2)
{
    rest.insert (rest.begin (), "'" + command + "'");
    return ask_with (rest, outputs);
}

inline KLVrescode_t code_of (const Call& result)
{
    return static_cast<KLVrescode_t> (result[0].number ());
}

// The smallest value is 3, at (1, 1).
constexpr const char* small_problem = "(a=[1 2; 2 1], c=[1 2], blc=[3 3], blx=[0 0])";

// What was printed, with each error line in short: "1200 prob.a; ".
inline std::string printed ()
{
    static const std::regex error (R"(\*\*\* Error\((\d+)\): ([^\n]*)\n)");
    return std::regex_replace (session ().printed, error, "$1 $2; ");
}

// What such a call prints, and its code: "1200 prob.a; 1200".
inline std::string outcome (const std::string& command, const std::vector<std::string>& rest)
{
    const KLVrescode_t code = code_of (ask (command, rest));
    return printed () + std::to_string (code);
}

inline std::string described (KLVrescode_t code, const char* before, const char* between, const char* after)
{
    char name[KLV_MAX_TEXT] = "", text[KLV_MAX_TEXT] = "";
    KLV_getcodedesc (code, name, text);
    return std::string (before) + name + between + text + after;
}

// The last line of a call that failed: while it was set up, or later.
inline std::string set_up_line (KLVrescode_t code)
{
    return described (code, ("Return code - " + std::to_string (code) + " [").c_str (), "] [", "]\n");
}
inline std::string failure_line (KLVrescode_t code)
{
    return described (code, "Kalvo error: ", " (", ")\n");
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
