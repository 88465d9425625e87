// Which functions and files receive a line.
#include "kalvo/task/streams.h"
#include "kalvo/task/task.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

using klv::Kind;

namespace {

struct Receiver {
    std::string text;

    static void receive (void* handle, const char* line) { static_cast<Receiver*> (handle)->text += line; }
};

TEST (Streams, CarryTheirKinds)
{
    const std::map<std::int32_t, std::string> expected = {
        {KLV_STREAM_ALL, "message\nwarning\nerror\n"},
        {KLV_STREAM_MESSAGES, "message\n"},
        {KLV_STREAM_ERRORS, "error\n"},
        {KLV_STREAM_WARNINGS, "warning\nerror\n"},
    };
    for (const auto& [stream, text] : expected) {
        klv::Streams streams;
        Receiver receiver;
        streams.link_function (stream, &receiver, Receiver::receive);
        for (const Kind kind : {Kind::message, Kind::warning, Kind::error})
            EXPECT_EQ (streams.anyone_listens (kind),
                       text.find (kind == Kind::message   ? "mes"
                                  : kind == Kind::warning ? "war"
                                                          : "err") != text.npos);
        streams.print (Kind::message, "message");
        streams.print (Kind::warning, "warning");
        streams.print (Kind::error, "error");
        EXPECT_EQ (receiver.text, text) << stream;
    }
}

TEST (Streams, OneConsoleOnSeveralStreamsReceivesALineOnce)
{
    for (const std::vector<std::int32_t>& linked :
         {std::vector{3, 1}, std::vector{0, 3}, std::vector{0, 1, 2, 3}}) {
        klv::Streams streams;
        Receiver receiver;
        for (const std::int32_t stream : linked)
            streams.link_function (stream, &receiver, Receiver::receive);
        streams.print (Kind::message, "m");
        streams.print (Kind::warning, "w");
        streams.print (Kind::error, "e");
        streams.print_on (KLV_STREAM_MESSAGES, "s");
        EXPECT_EQ (receiver.text, "m\nw\ne\ns\n");
    }
}

TEST (Streams, DifferentReceiversReceiveALineEach)
{
    klv::Streams streams;
    Receiver all, errors;
    streams.link_function (KLV_STREAM_ALL, &all, Receiver::receive);
    streams.link_function (KLV_STREAM_ERRORS, &errors, Receiver::receive);
    streams.print (Kind::error, "e");
    streams.print_on (KLV_STREAM_ERRORS, "s");
    EXPECT_EQ (all.text, "e\ns\n");
    EXPECT_EQ (errors.text, "e\ns\n");
    streams.link_function (KLV_STREAM_ERRORS, nullptr, nullptr);
    streams.print (Kind::error, "x");
    EXPECT_EQ (errors.text, "e\ns\n");
}

// A log function that makes a mistake of its own must not be told of it for ever.
TEST (Streams, AFunctionDoesNotReceiveWhatItCauses)
{
    struct Clumsy {
        KLVtask_t task;
        int lines = 0;
        static void receive (void* handle, const char*)
        {
            auto& self = *static_cast<Clumsy*> (handle);
            ++self.lines;
            double value = 0;
            EXPECT_EQ (KLV_getdouparam (self.task, -1, &value), KLV_RES_INDEX_RANGE);
        }
    };
    const files::Task task;
    const files::Folder folder;
    Clumsy clumsy{task};
    KLV_linkfunctotaskstream (task, KLV_STREAM_ALL, &clumsy, Clumsy::receive);
    KLV_linkfiletotaskstream (task, KLV_STREAM_ERRORS, (folder / "log").c_str (), 0);
    EXPECT_EQ (KLV_putcfix (task, std::numeric_limits<double>::infinity ()), KLV_RES_VALUE_NOT_FINITE);
    EXPECT_EQ (clumsy.lines, 1);
    EXPECT_NE (files::load (folder / "log").find ("double parameter"), std::string::npos);
}

// ---- Files ----------------------------------------------------------------------------------------------------------

TEST (StreamFiles, StandBesideTheFunctionAndGrowLineByLine)
{
    const files::Folder folder;
    const std::string path = folder / "log";
    klv::Streams streams;
    Receiver receiver;
    streams.link_function (KLV_STREAM_ALL, &receiver, Receiver::receive);
    ASSERT_TRUE (streams.link_file (KLV_STREAM_ALL, path.c_str (), false));
    streams.print (Kind::message, "one");
    EXPECT_EQ (files::load (path), "one\n") << "a line must not wait in a buffer";
    streams.close_file (KLV_STREAM_ALL);
    streams.print (Kind::message, "two");
    EXPECT_EQ (files::load (path), "one\n");
    EXPECT_EQ (receiver.text, "one\ntwo\n");
    ASSERT_TRUE (streams.link_file (KLV_STREAM_ALL, path.c_str (), true));
    streams.print (Kind::message, "three");
    EXPECT_EQ (files::load (path), "one\nthree\n");
    ASSERT_TRUE (streams.link_file (KLV_STREAM_ALL, path.c_str (), false));
    EXPECT_EQ (files::load (path), "");
}

TEST (StreamFiles, TwoStreamsMayShareOne)
{
    const files::Folder folder;
    const std::string path = folder / "log";
    klv::Streams streams;
    ASSERT_TRUE (streams.link_file (KLV_STREAM_MESSAGES, path.c_str (), false));
    ASSERT_TRUE (streams.link_file (KLV_STREAM_ERRORS, path.c_str (), true));
    streams.print (Kind::message, "long message");
    streams.print (Kind::error, "e");
    streams.print (Kind::message, "m");
    EXPECT_EQ (files::load (path), "long message\ne\nm\n");
}

TEST (StreamFiles, AFullDiskIsTalkedOfOnce)
{
    const files::Task task;
    ASSERT_EQ (KLV_linkfiletotaskstream (task, KLV_STREAM_ALL, "/dev/full", 0), KLV_RES_OK);
    KLVtask_t handle = task;
    handle->say ("first");
    EXPECT_NE (task.printed.find ("Warning: the file '/dev/full' can't be written and was closed"),
               std::string::npos)
        << task.printed;
    const std::string printed = task.printed;
    handle->say ("second");
    EXPECT_EQ (task.printed, printed);
}

TEST (StreamFiles, WhatCannotBeOpenedIsNamedAndTheOldOneStays)
{
    const files::Folder folder;
    const std::string log = folder / "log", pipe = folder / "pipe";
    ASSERT_EQ (::mkfifo (pipe.c_str (), 0600), 0);
    const files::Task task;
    ASSERT_EQ (KLV_linkfiletotaskstream (task, KLV_STREAM_ALL, log.c_str (), 0), KLV_RES_OK);
    for (const std::string& path : {folder / "no folder/log", folder / ".", pipe}) {
        EXPECT_EQ (KLV_linkfiletotaskstream (task, KLV_STREAM_ALL, path.c_str (), 0), KLV_RES_FILE_OPEN)
            << path;
        EXPECT_NE (task.last_error ().find (path), std::string::npos) << task.last_error ();
    }
    EXPECT_EQ (KLV_linkfiletotaskstream (task, KLV_STREAM_ALL, "", 0), KLV_RES_FILE_NAME_MISSING);
    static_cast<KLVtask_t> (task)->say ("still here");
    EXPECT_TRUE (files::load (log).ends_with ("still here\n")) << files::load (log);
    EXPECT_EQ (KLV_linkfiletotaskstream (task, 9, log.c_str (), 0), KLV_RES_STREAM_UNKNOWN);
}

// ---- Environment ------------------------------------------------------------------------------------------------------

TEST (Banner, IsOneLineAndMoreOnDemand)
{
    Receiver receiver;
    ASSERT_EQ (KLV_linkfunctoenvstream (nullptr, KLV_STREAM_ALL, &receiver, Receiver::receive), KLV_RES_OK);
    EXPECT_EQ (KLV_echointro (nullptr, 0), KLV_RES_OK);
    EXPECT_EQ (std::ranges::count (receiver.text, '\n'), 1);
    EXPECT_NE (receiver.text.find ("10.2.18"), std::string::npos);
    const std::size_t length = receiver.text.size ();
    EXPECT_EQ (KLV_echointro (nullptr, 1), KLV_RES_OK);
    EXPECT_GT (receiver.text.size (), 2 * length);
    EXPECT_EQ (KLV_linkfunctoenvstream (nullptr, KLV_STREAM_ALL, nullptr, nullptr), KLV_RES_OK);
    receiver.text.clear ();
    EXPECT_EQ (KLV_echointro (nullptr, 0), KLV_RES_OK);
    EXPECT_EQ (receiver.text, "");
}

}
