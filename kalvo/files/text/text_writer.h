// Shared by writers of text formats: the problem, the names of its items in the file, and the current line.
#pragma once

#include "kalvo/files/text/item_names.h"
#include "kalvo/files/text/numbers.h"
#include "kalvo/files/text/output_file.h"

namespace klv {

class TextWriter {
protected:
    TextWriter (const Problem& problem, OutputFile& file)
        : problem_ (problem),
          rows_ (constraint_names (problem)),
          columns_ (variable_names (problem)),
          objective_ (problem.objective_name.empty () ? unused_name ("OBJ", rows_) : problem.objective_name),
          file_ (file)
    {}

    void put (std::string_view text)
    {
        file_.put (text);
        width_ += text.size ();
    }
    void end_line ()
    {
        file_.put ("\n");
        width_ = 0;
    }
    std::size_t width () const { return width_; }    // of the current line

    bool is_integer (std::int32_t j) const
    {
        return problem_.integer[static_cast<std::size_t> (j)] == KLV_VAR_INTEGER;
    }

    const Problem& problem_;
    const ItemNames rows_, columns_;
    const std::string objective_;

private:
    OutputFile& file_;
    std::size_t width_ = 0;
};

// In text formats only its size shows that a bound is absent.
void warn_of_huge_bounds (Task& task);

}
