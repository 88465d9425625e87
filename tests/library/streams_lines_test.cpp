// Which functions and files receive a line.
#include "kalvo/task/streams.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using klv::Kind;

namespace {

void receive (void* handle, const char* line)
{
    *static_cast<std::string*> (handle) += line;
}

TEST (Streams, CarryTheirKindsAndALineOnceToOneReceiver)
{
    using Numbers = std::vector<std::int32_t>;
    for (const auto& [linked, expected] : {std::pair{Numbers{KLV_STREAM_ALL}, "mwes"},
                                           {{KLV_STREAM_MESSAGES}, "ms"},
                                           {{KLV_STREAM_ERRORS}, "e"},
                                           {{KLV_STREAM_WARNINGS}, "we"},
                                           {{KLV_STREAM_WARNINGS, KLV_STREAM_MESSAGES}, "mwes"},
                                           {{KLV_STREAM_ALL, KLV_STREAM_WARNINGS}, "mwes"},
                                           {{0, 1, 2, 3}, "mwes"}}) {
        klv::Streams streams;
        std::string text;
        for (const std::int32_t stream : linked)
            streams.link_function (stream, &text, receive);
        for (const auto& [kind, line] :
             {std::pair{Kind::message, "m"}, {Kind::warning, "w"}, {Kind::error, "e"}}) {
            EXPECT_EQ (streams.anyone_listens (kind), std::string (expected).find (line) != text.npos);
            streams.print (kind, line);
        }
        streams.print_on (KLV_STREAM_MESSAGES, "s");
        std::erase (text, '\n');
        EXPECT_EQ (text, expected);
    }
}

// A log function that makes a mistake of its own must not be told of it for ever.
TEST (Streams, AFunctionDoesNotReceiveWhatItCauses)
{
    const files::Task task;
    const files::Folder folder;
    KLV_linkfunctotaskstream (task, KLV_STREAM_ALL, task, [] (void* handle, const char*) {
        EXPECT_EQ (KLV_getdouparam (static_cast<KLVtask_t> (handle), -1, nullptr), KLV_RES_INDEX_RANGE);
    });
    KLV_linkfiletotaskstream (task, KLV_STREAM_ERRORS, (folder / "log").c_str (), 0);
    EXPECT_EQ (KLV_putobjsense (task, 2), KLV_RES_VALUE_UNKNOWN);
    const std::string log = files::load (folder / "log");
    EXPECT_EQ (std::ranges::count (log, '\n'), 2) << log;
}

TEST (StreamFiles, GrowLineByLineBesideTheFunctionAndMayBeShared)
{
    const files::Folder folder;
    const std::string path = folder / "log";
    klv::Streams streams;
    std::string text;
    const auto link = [&] (std::int32_t stream, bool append) {
        EXPECT_TRUE (streams.link_file (stream, path.c_str (), append));
    };
    streams.link_function (KLV_STREAM_ALL, &text, receive);
    link (KLV_STREAM_ALL, false);
    streams.print (Kind::message, "one");
    EXPECT_EQ (files::load (path), "one\n") << "a line must not wait in a buffer";
    streams.close_file (KLV_STREAM_ALL);
    streams.print (Kind::message, "two");
    EXPECT_EQ (text, "one\ntwo\n");
    link (KLV_STREAM_MESSAGES, true);
    link (KLV_STREAM_ERRORS, true);
    streams.print (Kind::message, "long message");
    streams.print (Kind::error, "e");
    EXPECT_EQ (files::load (path), "one\nlong message\ne\n");
    link (KLV_STREAM_ALL, false);
    EXPECT_EQ (files::load (path), "");
}

TEST (StreamFiles, WhatCannotBeUsedIsNamedAndTheOldOneStays)
{
    const files::Folder folder;
    const std::string log = folder / "log", pipe = folder / "pipe";
    ASSERT_EQ (::mkfifo (pipe.c_str (), 0600), 0);
    files::Task task;
    const auto link = [&] (const std::string& path, std::int32_t stream = KLV_STREAM_ALL) {
        return KLV_linkfiletotaskstream (task, stream, path.c_str (), 0);
    };
    ASSERT_EQ (link (log), KLV_RES_OK);
    for (const std::string& path : {folder / "no folder/log", folder / ".", pipe}) {
        EXPECT_EQ (link (path), KLV_RES_FILE_OPEN) << path;
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, path, task.last_error ());
    }
    EXPECT_EQ (link (""), KLV_RES_FILE_NAME_MISSING);
    EXPECT_EQ (link (log, 9), KLV_RES_STREAM_UNKNOWN);
    task->say ("still here");
    EXPECT_TRUE (files::load (log).ends_with ("still here\n")) << files::load (log);

    task.printed.clear ();
    ASSERT_EQ (link ("/dev/full"), KLV_RES_OK);
    task->say ("first");
    task->say ("second");
    EXPECT_TRUE (task.printed.starts_with ("Warning: the file '/dev/full' can't be written and was closed"));
    EXPECT_EQ (std::ranges::count (task.printed, '\n'), 1) << "talked of once: " << task.printed;
}

}
