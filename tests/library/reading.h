// A text that is read as a problem file, and what comes of it.
#pragma once

#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace files {

// The name says the format, unless one is named; in the text "|" ends a line.
struct Reading {
    Folder folder;
    std::string name;
    Task task;
    KLVrescode_t code;

    Reading (const char* file, const std::string& text, std::int32_t format = KLV_FILE_BY_EXTENSION)
        : name (file)
    {
        save (folder / name, lines (text));
        task.set_format (format);
        code = KLV_readdata (task, (folder / name).c_str ());
    }

    std::string problem () const
    {
        EXPECT_EQ (code, KLV_RES_OK) << task.last_error ();
        return model::text_of (task.problem ());
    }

    // With its line, and nothing of the file is left.
    void expect_fault (const std::string& fault, KLVrescode_t refusal) const
    {
        EXPECT_EQ (code, refusal);
        for (const std::string& told : {task.last_error (), task.printed})
            EXPECT_PRED_FORMAT2 (testing::IsSubstring, name + ":" + fault, told);
        EXPECT_EQ (model::text_of (task.problem ()), "min");
    }

    void expect_one_warning (const std::string& warning) const
    {
        EXPECT_EQ (code, KLV_RES_OK) << task.last_error ();
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, name + ":" + warning, task.printed);
        EXPECT_EQ (std::count (task.printed.begin (), task.printed.end (), '\n'), 1) << task.printed;
    }
};

}
