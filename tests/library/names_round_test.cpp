// Names: any text comes back as it is, and never overruns a buffer.
#include "kalvo/task/text.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace {

TEST (Names, ComeBackAsTheyArePut)
{
    const files::Task task;
    KLV_appendvars (task, 3);
    KLV_appendcons (task, 2);
    const std::string longest (5000, 'x');
    for (const std::string& name :
         {std::string ("x"), std::string (" two words "), std::string ("100%d%s"), std::string ("Über, 東京"),
          std::string ("tab\tline\n"), longest, std::string ("")}) {
        const auto size = static_cast<std::int32_t> (name.size ()) + 1;
        std::string back (name.size () + 1, '?');
        EXPECT_EQ (KLV_putvarname (task, 1, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_getvarname (task, 1, size, back.data ()), KLV_RES_OK);
        EXPECT_EQ (back.c_str (), name);
        EXPECT_EQ (KLV_putconname (task, 0, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_getconname (task, 0, size, back.data ()), KLV_RES_OK);
        EXPECT_EQ (back.c_str (), name);
        EXPECT_EQ (KLV_puttaskname (task, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_gettaskname (task, size, back.data ()), KLV_RES_OK);
        EXPECT_EQ (back.c_str (), name);
        EXPECT_EQ (KLV_putobjname (task, name.c_str ()), KLV_RES_OK);
        EXPECT_EQ (KLV_getobjname (task, size, back.data ()), KLV_RES_OK);
        EXPECT_EQ (back.c_str (), name);
        std::int32_t length = -1;
        for (const auto get : {KLV_gettasknamelen, KLV_getobjnamelen, KLV_getmaxnamelen}) {
            EXPECT_EQ (get (task, &length), KLV_RES_OK);
            EXPECT_EQ (length, size - 1);
        }
    }
    char other[] = "?";
    EXPECT_EQ (KLV_getvarname (task, 2, sizeof other, other), KLV_RES_OK);
    EXPECT_STREQ (other, "") << "a variable that nobody named";
}

TEST (Names, ItemsAppendedLaterHaveNone)
{
    const files::Task task;
    char name[8] = "?";
    KLV_appendvars (task, 1);
    KLV_putvarname (task, 0, "first");
    KLV_appendvars (task, 1);
    EXPECT_EQ (KLV_getvarname (task, 1, sizeof name, name), KLV_RES_OK);
    EXPECT_STREQ (name, "");
    KLV_putvarname (task, 1, "second");
    EXPECT_EQ (KLV_getvarname (task, 0, sizeof name, name), KLV_RES_OK);
    EXPECT_STREQ (name, "first");
}

struct Cut {
    const char* fault;
    std::string text;
    std::size_t capacity;
    std::string kept;
};

TEST (Texts, AreCutBetweenCharacters)
{
    for (const Cut& c :
         {Cut{"fits exactly", "abc", 4, "abc"}, Cut{"one byte short", "abc", 3, "ab"},
          Cut{"room for the terminator only", "abc", 1, ""}, Cut{"two-byte character", "a\xC3\xBC", 3, "a"},
          Cut{"four-byte character", "\xF0\x9F\x98\x80", 4, ""},
          Cut{"bytes that are no UTF-8", "\x80\x80\x80\x80\x80\x80", 6, "\x80\x80"}}) {
        std::string buffer (c.capacity + 1, '?');
        EXPECT_EQ (klv::copy_text (c.text, buffer.data (), c.capacity), c.kept == c.text) << c.fault;
        EXPECT_EQ (buffer.c_str (), c.kept) << c.fault;
        EXPECT_EQ (buffer.back (), '?') << "overrun: " << c.fault;
    }
}

TEST (Names, ABufferThatIsTooSmallIsAFault)
{
    const files::Task task;
    KLV_puttaskname (task, "four");
    char name[] = "????????";
    EXPECT_EQ (KLV_gettaskname (task, 4, name), KLV_RES_BUFFER_TOO_SMALL);
    EXPECT_STREQ (name, "fou");
    EXPECT_EQ (name[4], '?');
    for (const std::int32_t size : {0, -1}) {
        EXPECT_EQ (KLV_gettaskname (task, size, name), KLV_RES_BUFFER_TOO_SMALL);
        EXPECT_STREQ (name, "fou");
    }
    EXPECT_EQ (KLV_gettaskname (task, 9, nullptr), KLV_RES_NULL_POINTER);
}

}
