// Names never overrun a buffer.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace {

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
