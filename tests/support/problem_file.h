// For tests of problem files: a folder for them, a task that remembers what was printed, problems as texts.
#pragma once

#include "kalvo/files/text/item_names.h"
#include "kalvo/task/task.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <optional>
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

// Problems as texts: "min 5: x int LO 0, 2, r1 3; r1 UP 7;" has every variable with its bounds, its cost and its
// entries by row, and every constraint with its bounds. Numbers are the shortest texts that read back to the
// same bits. Items without a name are called as writers call them.
inline std::string describe (double value)
{
    char text[32];
    return {text, std::to_chars (text, std::end (text), value).ptr};
}

inline std::string describe (const klv::Bounds& bounds, std::size_t i)
{
    static constexpr const char* keys[] = {"LO", "UP", "FX", "FR", "RA"};
    std::string text = keys[bounds.key[i]];
    if (bounds.lower[i] != -klv::infinity)
        text += ' ' + describe (bounds.lower[i]);
    if (bounds.upper[i] != klv::infinity &&
        (bounds.key[i] != KLV_BK_FX || bounds.upper[i] != bounds.lower[i]))
        text += ' ' + describe (bounds.upper[i]);
    return text;
}

inline std::string describe (const klv::Problem& p)
{
    const klv::ItemNames rows = klv::constraint_names (p), columns = klv::variable_names (p);
    std::string text = (p.sense == KLV_SENSE_MAXIMIZE ? "max " : "min ") + describe (p.constant) + ":";
    for (std::int32_t j = 0; j < p.variables (); ++j) {
        const auto at = static_cast<std::size_t> (j);
        text += ' ' + std::string (columns (j)) + (p.integer[at] == KLV_VAR_INTEGER ? " int " : " ") +
                describe (p.variable, at) + ", " + describe (p.cost[at]);
        const klv::Column column = p.matrix.column (j);
        std::map<std::int32_t, double> entries;
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            entries[column.rows[k]] = column.values[k];
        for (const auto& [row, value] : entries)
            text += ", " + std::string (rows (row)) + ' ' + describe (value);
        text += ';';
    }
    for (std::int32_t i = 0; i < p.constraints (); ++i)
        text +=
            ' ' + std::string (rows (i)) + ' ' + describe (p.constraint, static_cast<std::size_t> (i)) + ';';
    return text;
}

// Where two problems begin to differ, to the last bit and name; nothing when they are the same.
inline std::optional<std::string> difference (const klv::Problem& a, const klv::Problem& b)
{
    const auto all = [] (const klv::Problem& p) {
        const std::string objective = klv::unused_name ("OBJ", klv::constraint_names (p));
        return p.name + " / " + (p.objective_name.empty () ? objective : p.objective_name) + " / " +
               describe (p);
    };
    const std::string x = all (a), y = all (b);
    if (x == y)
        return {};
    const auto at = std::mismatch (x.begin (), x.end (), y.begin (), y.end ()).first - x.begin ();
    const std::size_t from = at < 40 ? 0 : static_cast<std::size_t> (at) - 40;
    return x.substr (from, 100) + "\nand not\n" + y.substr (from, 100);
}

}
