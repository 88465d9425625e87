// For tests of problem files: a folder for them, a task that remembers what was printed, problems as texts.
#pragma once

#include "kalvo/task/task.h"

#include <bit>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
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

inline void save (const std::string& path, std::string_view text)
{
    std::ofstream (path, std::ios::binary) << text;
}

inline std::string load (const std::string& path)
{
    std::ifstream file (path, std::ios::binary);
    return {std::istreambuf_iterator<char> (file), {}};
}

// A task whose warnings and errors are collected.
class Task {
public:
    Task ()
    {
        KLVtask_t task = nullptr;
        KLV_makeemptytask (nullptr, &task);
        task_.reset (task);
        KLV_linkfunctotaskstream (task, KLV_STREAM_WARNINGS, &printed, [] (void* handle, const char* text) {
            *static_cast<std::string*> (handle) += text;
        });
    }

    operator KLVtask_t () const { return task_.get (); }
    const klv::Problem& problem () const { return task_->problem (); }
    void set_format (std::int32_t format) { KLV_putnaintparam (*this, "KLV_IPAR_FILE_FORMAT", format); }

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
};

// Bounds as a text: the key and the values that it says exist.
inline std::string describe (const klv::Bounds& bounds, std::size_t i)
{
    static constexpr const char* keys[] = {"LO", "UP", "FX", "FR", "RA"};
    std::ostringstream text;
    text << keys[bounds.key[i]];
    if (bounds.key[i] != KLV_BK_UP && bounds.key[i] != KLV_BK_FR)
        text << ' ' << bounds.lower[i];
    if (bounds.key[i] == KLV_BK_UP || bounds.key[i] == KLV_BK_RA)
        text << ' ' << bounds.upper[i];
    return text.str ();
}

// "min 5: x LO 0, 2 x, r1 3 x; ...": every variable with bounds, cost and entries, every constraint with
// bounds.
inline std::string describe (const klv::Problem& p)
{
    std::ostringstream text;
    text << (p.sense == KLV_SENSE_MAXIMIZE ? "max " : "min ") << p.constant << ":";
    for (std::int32_t j = 0; j < p.variables (); ++j) {
        const auto at = static_cast<std::size_t> (j);
        text << ' ' << p.variable_name.get (j) << (p.integer[at] == KLV_VAR_INTEGER ? " int " : " ")
             << describe (p.variable, at) << ", " << p.cost[at];
        const klv::Column column = p.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k)
            text << ", " << p.constraint_name.get (column.rows[k]) << ' ' << column.values[k];
        text << ';';
    }
    for (std::int32_t i = 0; i < p.constraints (); ++i)
        text << ' ' << p.constraint_name.get (i) << ' '
             << describe (p.constraint, static_cast<std::size_t> (i)) << ';';
    return text.str ();
}

inline bool same_bits (double a, double b)
{
    return std::bit_cast<std::uint64_t> (a) == std::bit_cast<std::uint64_t> (b);
}

// What differs between two problems, to the last bit and name; nothing when they are the same.
inline std::optional<std::string> difference (const klv::Problem& a, const klv::Problem& b)
{
    if (a.variables () != b.variables () || a.constraints () != b.constraints ())
        return "sizes";
    if (a.name != b.name || a.sense != b.sense || !same_bits (a.constant, b.constant))
        return "name, sense or constant";
    if (!a.objective_name.empty () && a.objective_name != b.objective_name)
        return "name of the objective";
    const auto same_bounds = [] (const klv::Bounds& x, const klv::Bounds& y, std::size_t i) {
        return x.key[i] == y.key[i] && same_bits (x.lower[i], y.lower[i]) &&
               same_bits (x.upper[i], y.upper[i]);
    };
    for (std::int32_t i = 0; i < a.constraints (); ++i) {
        if (!same_bounds (a.constraint, b.constraint, static_cast<std::size_t> (i)))
            return "bounds of constraint " + std::to_string (i);
        if (a.constraint_name.any () && a.constraint_name.get (i) != b.constraint_name.get (i))
            return "name of constraint " + std::to_string (i);
    }
    for (std::int32_t j = 0; j < a.variables (); ++j) {
        const auto at = static_cast<std::size_t> (j);
        const std::string item = " of variable " + std::to_string (j);
        if (!same_bounds (a.variable, b.variable, at))
            return "bounds" + item;
        if (!same_bits (a.cost[at], b.cost[at]) || a.integer[at] != b.integer[at])
            return "cost or type" + item;
        if (a.variable_name.any () && a.variable_name.get (j) != b.variable_name.get (j))
            return "name" + item;
        const klv::Column x = a.matrix.column (j), y = b.matrix.column (j);
        if (!std::equal (x.rows.begin (), x.rows.end (), y.rows.begin (), y.rows.end ()) ||
            !std::equal (x.values.begin (), x.values.end (), y.values.begin (), y.values.end (), same_bits))
            return "entries" + item;
    }
    return {};
}

}
