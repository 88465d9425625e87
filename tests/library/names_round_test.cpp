// Names: any text comes back as it is, and never overruns a buffer.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace {

TEST (Names, ComeBackAsTheyArePut)
{
    const files::Task task;
    KLV_appendvars (task, 1);
    KLV_appendcons (task, 2);
    for (const std::string& name :
         {std::string (" two words "), std::string ("100%d%s"), std::string ("Über, 東京"),
          std::string ("tab\tline\n"), std::string (5000, 'x'), std::string ("")}) {
        const auto size = static_cast<std::int32_t> (name.size ()) + 1;
        std::string back[4];
        for (std::string& text : back)
            text.assign (name.size () + 1, '?');
        EXPECT_EQ (KLV_putvarname (task, 0, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_putconname (task, 1, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_puttaskname (task, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_putobjname (task, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_getvarname (task, 0, size, back[0].data ()), KLV_RES_OK);
        EXPECT_EQ (KLV_getconname (task, 1, size, back[1].data ()), KLV_RES_OK);
        EXPECT_EQ (KLV_gettaskname (task, size, back[2].data ()), KLV_RES_OK);
        EXPECT_EQ (KLV_getobjname (task, size, back[3].data ()), KLV_RES_OK);
        for (const std::string& text : back)
            EXPECT_EQ (text.c_str (), name);
        for (const auto get : {KLV_gettasknamelen, KLV_getobjnamelen, KLV_getmaxnamelen}) {
            std::int32_t length = -1;
            EXPECT_EQ (get (task, &length), KLV_RES_OK);
            EXPECT_EQ (length, size - 1);
        }
    }
    char other[] = "?";
    KLV_appendvars (task, 1);
    EXPECT_EQ (KLV_getvarname (task, 1, sizeof other, other), KLV_RES_OK);
    EXPECT_EQ (KLV_getconname (task, 0, sizeof other, other), KLV_RES_OK);
    EXPECT_STREQ (other, "") << "an item that nobody named";
}

TEST (Names, AreCutBetweenCharactersWithAFault)
{
    static const struct {
        std::string text;
        std::int32_t capacity;
        std::string kept;
    } cases[] = {{"abc", 4, "abc"},
                 {"abc", 3, "ab"},
                 {"abc", 1, ""},
                 {"a\xC3\xBC", 3, "a"},
                 {"\xF0\x9F\x98\x80", 4, ""},
                 {"\x80\x80\x80\x80\x80\x80", 6, "\x80\x80"}};
    const files::Task task;
    for (const auto& [text, capacity, kept] : cases) {
        std::string buffer (10, '?');
        KLV_puttaskname (task, text.c_str ());
        const KLVrescode_t code = KLV_gettaskname (task, capacity, buffer.data ());
        EXPECT_EQ (code, kept == text ? KLV_RES_OK : KLV_RES_BUFFER_TOO_SMALL) << text;
        EXPECT_EQ (buffer.c_str (), kept);
        EXPECT_EQ (buffer[static_cast<std::size_t> (capacity)], '?') << "overrun: " << text;
    }
    std::string untouched = "?";
    for (const std::int32_t size : {0, -1})
        EXPECT_EQ (KLV_gettaskname (task, size, untouched.data ()), KLV_RES_BUFFER_TOO_SMALL);
    EXPECT_EQ (untouched, "?");
    EXPECT_EQ (KLV_gettaskname (task, 9, nullptr), KLV_RES_NULL_POINTER);
}

}
