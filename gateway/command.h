// The command string: what a request does, and how much it prints.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kalvo.h"

constexpr std::size_t command_text_size = 1024;
using CommandText = char[command_text_size];

struct cmdoptions {
    std::int32_t statuskeys = 0;    // other than 0: status keys as numbers
    std::int32_t echo = 3;
    std::int32_t info = 0;
    std::int32_t symbcon = 0;
    std::int32_t param = 0;
    std::int32_t primalrepair = 0;
    std::int32_t cmdsense = 0;    // 1, -1: minimise, maximise; 2, -2: set the sense only
    std::int32_t read = 0;
    std::int32_t write = 0;
    std::int32_t log = 0;
    std::int32_t anapro = 0;
    std::int32_t debug = 0;
    std::int32_t use_matlab_calloc = 0;
    std::int32_t nokeepenv = 0;
    std::int32_t version = 0;
    std::int32_t toconic = 0;
    std::int32_t prob = 0;
    CommandText readfile = "";
    CommandText writefile = "";
    CommandText logfile = "";
};

// Reads a command string into options that hold the defaults. At the first fault: KLV_RES_ARGUMENT, with the fault's place in
// `message`; earlier words have been set.
KLVrescode_t executecmd (const char* command, cmdoptions& options, CommandText& argument,
                         CommandText& message);

// Reads an argument in parentheses, if there is one at the position, and moves the position behind it. Returns 0 when the
// parentheses are not closed, or hold 1024 characters or more.
int getarg (const char* command, std::size_t& position, CommandText& argument);
