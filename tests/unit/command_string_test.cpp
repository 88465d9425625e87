// The command string: words, arguments, and where a fault is.

#include <gtest/gtest.h>

#include <string>

#include "gateway/command.h"
#include "tests/unit/gateway_call.h"

namespace {

struct Parsed {
    KLVrescode_t code;
    cmdoptions options;
    std::string message;
};

Parsed parse (const std::string& command)
{
    Parsed parsed = {};
    CommandText argument = "", message = "";
    parsed.code = executecmd (command.c_str (), parsed.options, argument, message);
    parsed.message = message;
    return parsed;
}

// The settings that differ from the defaults, in the order of the words' table.
std::string changed (const cmdoptions& options)
{
    const cmdoptions defaults;
    std::string text;
    const auto show = [&] (const char* name, std::int32_t value, std::int32_t standard) {
        if (value != standard)
            text += name + std::string ("=") + std::to_string (value) + ' ';
    };
    show ("statuskeys", options.statuskeys, defaults.statuskeys);
    show ("echo", options.echo, 3);
    show ("info", options.info, 0);
    show ("symbcon", options.symbcon, 0);
    show ("param", options.param, 0);
    show ("primalrepair", options.primalrepair, 0);
    show ("cmdsense", options.cmdsense, 0);
    show ("read", options.read, 0);
    show ("write", options.write, 0);
    show ("log", options.log, 0);
    show ("anapro", options.anapro, 0);
    show ("debug", options.debug, 0);
    show ("calloc", options.use_matlab_calloc, 0);
    show ("nokeepenv", options.nokeepenv, 0);
    show ("version", options.version, 0);
    show ("toconic", options.toconic, 0);
    show ("prob", options.prob, 0);
    for (const char* file : {options.readfile, options.writefile, options.logfile})
        if (*file)
            text += '<' + std::string (file) + "> ";
    return text.substr (0, text.size () - (text.empty () ? 0 : 1));
}

struct Row {
    const char* fault;
    std::string command;
    std::string settings;
    std::string rest = "";    // what the message quotes; empty: no fault
};

class CommandTest : public testing::TestWithParam<Row> {};

TEST_P (CommandTest, GivesSettings)
{
    const Row& row = GetParam ();
    const Parsed parsed = parse (row.command);
    EXPECT_EQ (parsed.code, row.rest.empty () ? 0 : 1200);
    EXPECT_EQ (changed (parsed.options), row.settings);
    EXPECT_EQ (parsed.message, row.rest.empty () ? "" : "cmd at -> " + row.rest + "\n");
}

const std::string longest (1023, 'f');

INSTANTIATE_TEST_SUITE_P (
    Words, CommandTest,
    testing::Values (
        Row{"blanks are a fault", "   ", ""},
        Row{"a word is mixed up with another",
            "info symbcon param primalrepair anapro use_matlab_calloc nokeepenv version toconic prob",
            "info=1 symbcon=1 param=1 primalrepair=1 anapro=1 calloc=1 nokeepenv=1 version=1 toconic=1 "
            "prob=1"},
        Row{"numbers go astray", "statuskeys(1) echo(12) debug(-3)", "statuskeys=1 echo=12 debug=-3"},
        Row{"files go astray", "read(a) write(b) log(c)", "read=1 write=1 log=1 <a> <b> <c>"},
        Row{"the long word is cut short", "minimize", "cmdsense=1"},
        Row{"the long word is cut short", "maximize", "cmdsense=-1"},
        Row{"the short word optimises", "min", "cmdsense=2"},
        Row{"the short word optimises", "max", "cmdsense=-2"},
        Row{"the first word wins", "minimize min", "cmdsense=2"},
        Row{"a blank ends a file name", "read( my file (2.mps)", "read=1 < my file (2.mps>"},
        Row{"parentheses are required", "read write(x)", "read=1 write=1 <x>"},
        Row{"a word without argument forgets the file", "read(a) read", "read=1 <a>"},
        Row{"a number without argument is an earlier one", "echo(2) debug", "echo=2"},
        Row{"an empty number is a fault", "echo()", "echo=0"},
        Row{"white space before a number is a fault", "echo( 7 )", "echo=7"},
        Row{"the longest file name is refused", "log(" + longest + ")", "log=1 <" + longest + ">"}),
    by_fault);

INSTANTIATE_TEST_SUITE_P (
    Faults, CommandTest,
    testing::Values (Row{"unknown words pass", "minimise", "cmdsense=2", "minimise"},
                     Row{"a longer word passes for a shorter one", "symbcons", "symbcon=1", "symbcons"},
                     Row{"case does not matter", "Echo(1)", "", "Echo(1)"},
                     Row{"a tab is a blank", "info\tparam", "info=1", "info\tparam"},
                     Row{"settings before the fault are lost", "debug(1) info bogus echo(0)",
                         "info=1 debug=1", "bogus echo(0)"},
                     Row{"a faulty number is stored", "echo(1x)", "", "echo(1x)"},
                     Row{"a text passes for a number", "echo(high)", "", "echo(high)"},
                     Row{"parentheses may stay open", "echo(1", "", "echo(1"},
                     Row{"words may touch", "read(a)b", "read=1 <a>", "read(a)b"}),
    by_fault);

// The message is cut to its buffer, and a file name that does not fit is refused whole.
TEST (CommandTest, QuotesNoMoreThanFits)
{
    const Parsed parsed = parse ("log(" + longest + "f)");
    EXPECT_EQ (parsed.code, 1200);
    EXPECT_EQ (parsed.message.size (), 1023U);
    EXPECT_TRUE (parsed.message.starts_with ("cmd at -> log(fff"));
}

}
