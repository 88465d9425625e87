#include "gateway/command.h"

#include <cstdio>
#include <string_view>

#include "common/text.h"

namespace {

struct Keyword {
    std::string_view word;
    std::int32_t cmdoptions::*setting;
    enum { plain, number, file } argument = plain;
    std::int32_t value = 1;
    CommandText cmdoptions::*filename = nullptr;
};

// Tested in this order: a longer word stands before the word that it begins with.
constexpr Keyword keywords[] = {
    {"statuskeys", &cmdoptions::statuskeys, Keyword::number},
    {"echo", &cmdoptions::echo, Keyword::number},
    {"info", &cmdoptions::info},
    {"symbcon", &cmdoptions::symbcon},
    {"param", &cmdoptions::param},
    {"primalrepair", &cmdoptions::primalrepair},
    {"minimize", &cmdoptions::cmdsense, Keyword::plain, 1},
    {"maximize", &cmdoptions::cmdsense, Keyword::plain, -1},
    {"min", &cmdoptions::cmdsense, Keyword::plain, 2},
    {"max", &cmdoptions::cmdsense, Keyword::plain, -2},
    {"read", &cmdoptions::read, Keyword::file, 1, &cmdoptions::readfile},
    {"write", &cmdoptions::write, Keyword::file, 1, &cmdoptions::writefile},
    {"log", &cmdoptions::log, Keyword::file, 1, &cmdoptions::logfile},
    {"anapro", &cmdoptions::anapro},
    {"debug", &cmdoptions::debug, Keyword::number},
    {"use_matlab_calloc", &cmdoptions::use_matlab_calloc},
    {"nokeepenv", &cmdoptions::nokeepenv},
    {"version", &cmdoptions::version},
    {"toconic", &cmdoptions::toconic},
    {"prob", &cmdoptions::prob},
};

const Keyword* find_keyword (std::string_view rest)
{
    for (const Keyword& keyword : keywords)
        if (rest.starts_with (keyword.word))
            return &keyword;
    return nullptr;
}

bool at_word_end (char c)
{
    return c == ' ' || c == '\0';
}

bool take_word (const char* command, std::size_t& position, cmdoptions& options, CommandText& argument)
{
    const Keyword* keyword = find_keyword (command + position);
    if (keyword == nullptr)
        return false;
    position += keyword->word.size ();

    std::int32_t& setting = options.*keyword->setting;
    if (keyword->argument == Keyword::number) {
        // Without parentheses the argument of an earlier word counts, or 0. Of a faulty argument the number at its start is set.
        if (!getarg (command, position, argument) || !strtointeger (argument, &setting))
            return false;
    } else {
        setting = keyword->value;
        if (keyword->argument == Keyword::file && !getarg (command, position, options.*keyword->filename))
            return false;
    }
    return at_word_end (command[position]);
}

}

KLVrescode_t executecmd (const char* command, cmdoptions& options, CommandText& argument,
                         CommandText& message)
{
    std::size_t position = 0;
    for (;;) {
        while (command[position] == ' ')
            ++position;
        if (command[position] == '\0')
            return KLV_RES_OK;
        const std::size_t word = position;
        if (!take_word (command, position, options, argument)) {
            constexpr int room = command_text_size - sizeof "cmd at -> \n";
            std::snprintf (message, sizeof message, "cmd at -> %.*s\n", room, command + word);
            return KLV_RES_ARGUMENT;
        }
    }
}

int getarg (const char* command, std::size_t& position, CommandText& argument)
{
    if (command[position] != '(')
        return 1;
    ++position;
    std::size_t length = 0;
    while (length < command_text_size - 1 && command[position] != '\0' && command[position] != ')')
        argument[length++] = command[position++];
    argument[length] = '\0';
    if (command[position] != ')')
        return 0;
    ++position;
    return 1;
}
