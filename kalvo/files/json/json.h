// JSON files: a whole task. docs/json.md describes the format.
#pragma once

#include "kalvo/files/text/output_file.h"
#include "kalvo/verify/given.h"

#include <string_view>

namespace klv {

constexpr std::string_view json_format = "kalvo task";
constexpr double json_version = 2;    // the latest version that is known
constexpr std::array<const char*, KLV_SOL_COUNT> json_solutions{"itr", "bas", "int"};

// The content of a file, for a task to hold.
struct FileContent {
    std::shared_ptr<Problem> problem;
    Parameters parameters;
    Solutions solutions = {};
};

// Parameters that have their default in the task get the file's values; the others keep the task's. Prints warnings on
// the task.
FileContent read_json (Task& task, const std::string& path, Pacer& pacer);

void write_json (Task& task, OutputFile& file);

// Whether files hold a parameter. Those that name the file and its format are no part of the task.
constexpr bool is_kept_in_json (IntSetting setting)
{
    return setting != IntSetting::file_format && setting != IntSetting::count;
}
constexpr bool is_kept_in_json (RealSetting setting)
{
    return setting != RealSetting::count;
}

}
