// For tests of problem files: a folder for them, a task that remembers what was printed.
#pragma once

#include "kalvo/task/task.h"
#include "tests/support/problem_text.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>

namespace files {

class Folder {
public:
    Folder ()
    {
        std::string pattern = (std::filesystem::temp_directory_path () / "kalvo-files-XXXXXX").string ();
        if (::mkdtemp (pattern.data ()) == nullptr)
            throw std::runtime_error ("no temporary folder");
        path_ = pattern;
    }
    Folder (const Folder&) = delete;
    Folder& operator= (const Folder&) = delete;
    ~Folder () { std::filesystem::remove_all (path_); }

    std::string operator/ (const std::string& name) const { return path_ / name; }
    std::size_t count () const
    {
        const std::filesystem::directory_iterator entries (path_);
        return static_cast<std::size_t> (std::distance (begin (entries), end (entries)));
    }

private:
    std::filesystem::path path_;
};

// A text of several lines, written in one: "|" ends a line.
inline std::string lines (std::string text)
{
    std::replace (text.begin (), text.end (), '|', '\n');
    return text;
}

inline void save (const std::string& path, std::string_view text)
{
    std::ofstream (path, std::ios::binary) << text;
}

inline std::string load (const std::string& path)
{
    std::ifstream file (path, std::ios::binary);
    return {std::istreambuf_iterator<char> (file), {}};
}

// The JSON file that the manual shows.
inline std::string json_example ()
{
    const std::string manual = load (KALVO_TEST_DATA "/../../docs/json.md");
    const auto begin = manual.find ("```json\n") + 8;
    return manual.substr (begin, manual.find ("```", begin) - begin);
}

// Collects the lines of a stream in a text.
inline void collect (KLVtask_t task, std::int32_t stream, std::string& text)
{
    KLV_linkfunctotaskstream (task, stream, &text,
                              [] (void* to, const char* line) { *static_cast<std::string*> (to) += line; });
}

// A task whose warnings and errors are collected.
class Task {
public:
    Task ()
    {
        KLVtask_t task = nullptr;
        KLV_makeemptytask (nullptr, &task);
        task_.reset (task);
        collect (task, KLV_STREAM_WARNINGS, printed);
    }

    operator KLVtask_t () const { return task_.get (); }
    KLVtask_t operator->() const { return task_.get (); }
    const klv::Problem& problem () const { return task_->problem (); }
    void set_format (std::int32_t format) { KLV_putnaintparam (*this, "KLV_IPAR_FILE_FORMAT", format); }

    void on_progress (const std::function<std::int32_t (std::uint32_t caller)>& answer)
    {
        answer_ = answer;
        KLV_putcallbackfunc (
            *this,
            [] (KLVtask_t, void* handle, std::uint32_t caller, const double*, const std::int32_t*,
                const std::int64_t*) { return static_cast<Task*> (handle)->answer_ (caller); },
            this);
    }

    std::string last_error () const
    {
        std::int32_t code = 0;
        char message[KLV_MAX_TEXT] = "";
        KLV_getlasterror (*this, &code, sizeof message, nullptr, message);
        return message;
    }

    std::string printed;

private:
    struct Delete {
        void operator() (KLVtask_t task) const { KLV_deletetask (&task); }
    };
    std::unique_ptr<KLV_task, Delete> task_;
    std::function<std::int32_t (std::uint32_t)> answer_;
};

}
