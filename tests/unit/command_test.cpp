// The command string: words, arguments, and where a fault is.

#include <gtest/gtest.h>

#include <sstream>

#include "gateway/command.h"

namespace {

// The settings that differ from the defaults, in the order of the words' table; then the file names.
std::string changed (const cmdoptions& options)
{
    using C = cmdoptions;
    constexpr std::int32_t C::*settings[] = {
        &C::statuskeys,        &C::echo,      &C::info,    &C::symbcon, &C::param,  &C::primalrepair,
        &C::cmdsense,          &C::read,      &C::write,   &C::log,     &C::anapro, &C::debug,
        &C::use_matlab_calloc, &C::nokeepenv, &C::version, &C::toconic, &C::prob};
    std::istringstream names (
        "statuskeys echo info symbcon param primalrepair cmdsense read write log anapro debug "
        "calloc nokeepenv version toconic prob");
    const cmdoptions defaults;
    std::string text, name;
    for (const auto setting : settings)
        if (names >> name; options.*setting != defaults.*setting)
            text += name + "=" + std::to_string (options.*setting) + ' ';
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
