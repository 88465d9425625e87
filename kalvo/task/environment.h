// The process-wide default environment: banner stream and exit function. Safe to use from any thread.
#pragma once

#include "kalvo/include/kalvo.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace klv::environment {

struct ExitFunction {
    KLVexitfunc func = nullptr;
    void* handle = nullptr;
};

// "10.2.18", of kalvo.h.
std::string version ();

// Whether nothing but this library and its engines is in the process, as in a worker.
bool& alone ();

// Where this code's file lies, and beside it all that belongs to the library.
std::filesystem::path folder ();

void link_function (std::int32_t stream, void* handle, KLVstreamfunc func);
void print (std::string_view line);    // a message, without its newline

void set_exit_function (ExitFunction function);
ExitFunction exit_function ();

}
