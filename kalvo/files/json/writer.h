// Writes the fields of a JSON document, a line at a time.
#pragma once

#include "kalvo/files/text/output_file.h"
#include "kalvo/model/problem.h"
#include "kalvo/tables/constants.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace klv {

// A value behind the others of a line: a number, infinite ones as texts; a name, as bytes where it is not UTF-8; a constant's
// short name.
void append_number (std::string& line, double value);
void append_name (std::string& line, const std::string& name);
void append_word (std::string& line, Group group, std::int32_t value);

class JsonWriter {
public:
    explicit JsonWriter (OutputFile& file) : file_ (file) {}

    void open (std::string_view name)
    {
        field (name);
        line_ += '{';
        first_ = true;
    }
    void close ()
    {
        line_ += first_ ? "}" : "\n}";
        first_ = false;
    }
    void finish ()
    {
        line_ += '\n';
        file_.put (line_);
    }

    void number (std::string_view name, double value)
    {
        field (name);
        append_number (line_, value);
    }
    void name (std::string_view name, const std::string& value)
    {
        field (name);
        append_name (line_, value);
    }
    void word (std::string_view name, Group group, std::int32_t value)
    {
        field (name);
        append_word (line_, group, value);
    }

    // fill (next) calls next () before each entry, and appends the entry to the text that next () returns.
    void list (std::string_view name, const auto& fill);
    void numbers (std::string_view name, const std::vector<double>& values);
    void integers (std::string_view name, const std::vector<std::int32_t>& values);
    void names (std::string_view name, const Names& names, std::int32_t count);
    void words (std::string_view name, Group group, const auto& values);

private:
    void field (std::string_view name)
    {
        if (!name.empty ()) {
            line_ += first_ ? "\n" : ",\n";
            line_.append (1, '"').append (name).append ("\": ");
        }
        first_ = false;
    }

    OutputFile& file_;
    std::string line_;
    bool first_ = true;
};

inline void JsonWriter::list (std::string_view name, const auto& fill)
{
    constexpr std::size_t wide = 100;
    field (name);
    line_ += '[';
    fill ([this, first = true] () mutable -> std::string& {
        if (!first)
            line_ += ',';
        first = false;
        if (line_.size () > wide) {
            line_ += '\n';
            file_.put (line_);
            line_.clear ();
        }
        return line_;
    });
    line_ += ']';
}

inline void JsonWriter::words (std::string_view name, Group group, const auto& values)
{
    list (name, [&] (auto next) {
        for (const std::int32_t value : values)
            append_word (next (), group, value);
    });
}

}
