// The formats of problem files: features, reader and writer of each.
#pragma once

#include "kalvo/files/json/json.h"
#include "kalvo/model/features.h"

#include <string>
#include <string_view>

namespace klv {

// Formats that share an extension stand in the order in which a writer tries them.
struct Format {
    using Reader = FileContent (*) (Task& task, const std::string& path, Pacer& pacer);
    using Writer = void (*) (Task& task, OutputFile& file);

    const char* name;    // in messages
    std::string_view extension;
    std::int32_t number;    // KLVfileformat
    Features holds = {};
    // The first item of a problem that the format has no way to say, in words; empty when there is none.
    std::string (*unfit) (const Problem& problem) = nullptr;
    Reader read = nullptr;
    Writer write = nullptr;
    // Reads a file that has any of the formats that share the extension; null but for the first of these.
    Reader read_any = nullptr;
    std::string_view older_extension = {};    // a second one, empty when there is none
};

// "LP cannot hold ...; JSON can", or nothing when the format can hold the problem.
std::string why_not (const Format& format, const Problem& problem);

// Choose a format by its parameter, else by the extension. Throw FileFault when neither names a format, or when the format cannot
// hold the problem.
Format::Reader reader_of (const Task& task, std::string_view path);
Format::Writer writer_of (const Task& task, std::string_view path);

// A file is written packed when its name says so, and read as its first bytes say.
bool is_packed (std::string_view path);

}
