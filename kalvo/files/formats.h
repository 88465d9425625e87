// The formats of problem files: what each can hold, and what reads and writes it.
#pragma once

#include "kalvo/files/json/json.h"
#include "kalvo/model/features.h"

#include <string>
#include <string_view>

namespace klv {

struct Format {
    using Reader = FileContent (*) (Task& task, const std::string& path, Pacer& pacer);
    using Writer = void (*) (Task& task, OutputFile& file);

    const char* name;    // as messages call it
    std::string_view
        extension;          // formats that share one stand in the order in which they are tried for writing
    std::int32_t number;    // KLVfileformat
    Features holds = {};
    // The first item of a problem that the format has no way to say, as messages name it, or nothing.
    std::string (*unfit) (const Problem& problem) = nullptr;
    Reader read = nullptr;
    Writer write = nullptr;
    // Reads a file whose extension several formats share: the first of them has it.
    Reader read_any = nullptr;
};

// Why a format cannot hold a problem, and which one can; nothing when it can.
std::string why_not (const Format& format, const Problem& problem);

// What the parameter of the format says, or else the extension. Throw FileFault when neither names a format, and when
// the format cannot hold the problem.
Format::Reader reader_of (const Task& task, std::string_view path);
Format::Writer writer_of (const Task& task, std::string_view path);

// A file is written packed when its name says so, and read as its first bytes say.
bool is_packed (std::string_view path);

}
