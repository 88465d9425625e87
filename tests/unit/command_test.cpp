// The command string: words, arguments, and where a fault is.

#include <gtest/gtest.h>

#include "gateway/command.h"

namespace {

// The settings that differ from the defaults, in the order of the words' table; then the file names.
std::string changed (const cmdoptions& options)
{
    using Options = cmdoptions;
    constexpr std::pair<const char*, std::int32_t Options::*> settings[] = {
        {"statuskeys", &Options::statuskeys},
        {"echo", &Options::echo},
        {"info", &Options::info},
        {"symbcon", &Options::symbcon},
        {"param", &Options::param},
        {"primalrepair", &Options::primalrepair},
        {"cmdsense", &Options::cmdsense},
        {"read", &Options::read},
        {"write", &Options::write},
        {"log", &Options::log},
        {"anapro", &Options::anapro},
        {"debug", &Options::debug},
        {"calloc", &Options::use_matlab_calloc},
        {"nokeepenv", &Options::nokeepenv},
        {"version", &Options::version},
        {"toconic", &Options::toconic},
        {"prob", &Options::prob}};
    const cmdoptions defaults;
    std::string text;
    for (const auto& [name, setting] : settings)
        if (options.*setting != defaults.*setting)
            text += name + std::string ("=") + std::to_string (options.*setting) + ' ';
    for (const char* file : {options.readfile, options.writefile, options.logfile})
        if (*file)
            text += '<' + std::string (file) + "> ";
    return text;
}

TEST (Command, GivesSettings)
{
    const std::string longest (1023, 'f');
    const struct {
        std::string command, settings, rest = "";    // where the message says that the fault is
    } cases[] = {
        {"   ", ""},
        {"info symbcon param primalrepair anapro use_matlab_calloc nokeepenv version toconic prob",
         "info=1 symbcon=1 param=1 primalrepair=1 anapro=1 calloc=1 nokeepenv=1 version=1 toconic=1 prob=1 "},
        {"statuskeys(1) echo(12) debug(-3)", "statuskeys=1 echo=12 debug=-3 "},
        {"read(a) write(b) log(c)", "read=1 write=1 log=1 <a> <b> <c> "},
        {"minimize", "cmdsense=1 "},
        {"max", "cmdsense=-2 "},
        {"minimize min", "cmdsense=2 "},
        {"read( my file (2.mps)", "read=1 < my file (2.mps> "},
        {"read write(x)", "read=1 write=1 <x> "},
        {"echo(2) debug", "echo=2 debug=2 "},
        {"echo( 7 )", "echo=7 "},
        {"log(" + longest + ")", "log=1 <" + longest + "> "},
        {"minimise", "cmdsense=2 ", "minimise"},
        {"symbcons", "symbcon=1 ", "symbcons"},
        {"Echo(1)", "", "Echo(1)"},
        {"debug(1) info bogus echo(0)", "info=1 debug=1 ", "bogus echo(0)"},
        {"debug(2x)", "debug=2 ", "debug(2x)"},
        {"echo(1", "", "echo(1"},
        {"read(a)b", "read=1 <a> ", "read(a)b"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.command);
        cmdoptions options;
        CommandText argument = "", message = "";
        EXPECT_EQ (executecmd (c.command.c_str (), options, argument, message), c.rest.empty () ? 0 : 1200);
        EXPECT_EQ (changed (options), c.settings);
        EXPECT_EQ (message, c.rest.empty () ? "" : "cmd at -> " + c.rest + "\n");
    }
    // A file name that does not fit is refused whole; the message is cut to its buffer, its line ends.
    cmdoptions options;
    CommandText argument = "", message = "";
    EXPECT_EQ (executecmd (("log(" + longest + "f)").c_str (), options, argument, message), 1200);
    EXPECT_EQ (std::string (message), ("cmd at -> log(" + longest).substr (0, 1022) + "\n");
}

}
