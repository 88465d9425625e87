// Names never overrun a buffer.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace {

TEST (Names, AreCutBetweenCharactersWithAFault)
{
    const files::Task task;
    for (const auto& [text, capacity, kept] : {std::tuple{"abc", 4, "abc"},
                                               {"abc", 3, "ab"},
                                               {"abc", 1, ""},
                                               {"a\xC3\xBC", 3, "a"},
                                               {"\xF0\x9F\x98\x80", 4, ""},
                                               {"\x80\x80\x80\x80\x80\x80", 6, "\x80\x80"},
                                               {"abc", 0, "????????"},
                                               {"abc", -1, "????????"}}) {
        std::string buffer (8, '?');
        KLV_puttaskname (task, text);
        const KLVrescode_t code = KLV_gettaskname (task, capacity, buffer.data ());
        EXPECT_EQ (code, kept == std::string (text) ? KLV_RES_OK : KLV_RES_BUFFER_TOO_SMALL) << text;
        EXPECT_STREQ (buffer.c_str (), kept);
        EXPECT_EQ (buffer[static_cast<std::size_t> (std::max (capacity, 0))], '?') << "overrun: " << text;
    }
}

}
