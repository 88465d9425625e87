// The frame of an MPS file: its sections, its heading, and which form it is in.
#include "kalvo/files/mps/reader.h"
#include "kalvo/files/text/words.h"

#include <algorithm>

namespace klv {

// ---- Sections

struct MpsHeader {
    std::string_view word;
    MpsSection section;
    MpsSection after;    // the section that must precede
    bool may_have_text;
};

constexpr std::array headers{
    MpsHeader{"NAME", MpsSection::name, MpsSection::none, true},
    MpsHeader{"OBJSENSE", MpsSection::objsense, MpsSection::none, true},
    MpsHeader{"OBJNAME", MpsSection::objname, MpsSection::none, true},
    MpsHeader{"ROWS", MpsSection::rows, MpsSection::none, false},
    MpsHeader{"COLUMNS", MpsSection::columns, MpsSection::rows, false},
    MpsHeader{"RHS", MpsSection::rhs, MpsSection::rows, false},
    MpsHeader{"RANGES", MpsSection::ranges, MpsSection::rows, false},
    MpsHeader{"BOUNDS", MpsSection::bounds, MpsSection::columns, false},
    MpsHeader{"QUADOBJ", MpsSection::quadobj, MpsSection::columns, false},
    MpsHeader{"QMATRIX", MpsSection::qmatrix, MpsSection::columns, false},
    MpsHeader{"QSECTION", MpsSection::qsection, MpsSection::columns, true},
    MpsHeader{"QCMATRIX", MpsSection::qcmatrix, MpsSection::columns, true},
    MpsHeader{"ENDATA", MpsSection::endata, MpsSection::columns, false},
};

// Sections that hold what a task cannot hold.
constexpr std::array<std::string_view, 10> unsupported_sections{
    "CSECTION", "SOS", "SOS1", "SOS2", "SETS", "INDICATORS", "LAZYCONS", "USERCUTS", "GENCONS", "PWLOBJ"};

static std::string_view name_of (MpsSection section)
{
    const auto* header = std::find_if (headers.begin (), headers.end (),
                                       [=] (const MpsHeader& h) { return h.section == section; });
    return header == headers.end () ? "" : header->word;
}

// ---- Lines

Problem MpsReader::read ()
{
    with_lines_of_faults (lines_, [&] {
        while (lines_.next ()) {
            const std::string_view line = lines_.line ();
            if (line.empty () || line.front () == '*' || trim (line).empty ())
                continue;
            if (section_ == MpsSection::endata)
                throw syntax ("text after ENDATA");
            if (is_blank (line.front ()))
                data_line ();
            else
                header_line ();
        }
        if (section_ != MpsSection::endata)
            throw syntax ("the file ends without ENDATA");
        finish ();
    });
    return draft_.take ();
}

void MpsReader::header_line ()
{
    const std::string_view line = lines_.line ();
    check_characters (line);
    const std::string_view word = line.substr (0, line.find_first_of (" \t"));
    const std::string_view text = trim (line.substr (word.size ()));

    for (const std::string_view unsupported : unsupported_sections)
        if (same_word (word, unsupported))
            throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED,
                            "section " + std::string (unsupported) + " is not supported"};
    const auto* header = std::find_if (headers.begin (), headers.end (),
                                       [=] (const MpsHeader& h) { return same_word (word, h.word); });
    if (header == headers.end ())
        throw syntax ("unknown section " + quote (word) + " (lines of data begin with a blank)");
    if (!text.empty () && !header->may_have_text)
        throw syntax ("text after the section name " + std::string (header->word) + ": " + quote (text));
    leave_section ();
    enter (*header);

    switch (section_) {
    case MpsSection::name:
        draft_.problem.name = text;
        break;
    case MpsSection::objsense:
        if (!text.empty ())
            sense_line (text);
        break;
    case MpsSection::objname:
        if (!text.empty ())
            objective_name_line (text);
        break;
    default:
        if (is_quadratic (section_))
            begin_quadratic (text);
        break;
    }
}

void MpsReader::enter (const MpsHeader& header)
{
    const auto bit = [] (MpsSection section) { return 1U << static_cast<unsigned> (section); };
    const std::string word (header.word);
    const bool is_for_one_row =
        header.section == MpsSection::qsection || header.section == MpsSection::qcmatrix;
    if (!is_for_one_row && (seen_ & bit (header.section)))
        throw syntax ("section " + word + " comes twice");
    if (header.after != MpsSection::none && !(seen_ & bit (header.after)))
        throw syntax ("section " + word + " comes without " + std::string (name_of (header.after)) +
                      " before it");
    const bool names_something = header.section == MpsSection::name || header.section == MpsSection::objname;
    if (names_something && (seen_ & bit (MpsSection::rows)))
        throw syntax ("section " + word + " belongs before ROWS");
    seen_ |= bit (header.section);
    section_ = header.section;
}

void MpsReader::leave_section ()
{
    switch (section_) {
    case MpsSection::objsense:
        if (!sense_given_)
            throw syntax ("OBJSENSE without MIN or MAX");
        break;
    case MpsSection::objname:
        if (draft_.problem.objective_name.empty ())
            throw syntax ("OBJNAME without a name");
        break;
    case MpsSection::rows:
        if (!has_objective ()) {
            if (!draft_.problem.objective_name.empty ())
                throw syntax ("no N row has the name " + quote (draft_.problem.objective_name) +
                              " of OBJNAME");
            draft_.note (Tradition::no_objective, "ROWS");
        }
        last_column_.assign (rows_.size (), -1);
        break;
    case MpsSection::columns:
        end_column ();
        if (integers_begun_)
            draft_.note (Tradition::open_marker, column_ < 0 ? "COLUMNS" : draft_.column_names[column_]);
        break;
    default:
        break;
    }
}

void MpsReader::data_line ()
{
    const std::string_view line = lines_.line ();
    switch (section_) {
    case MpsSection::none:
    case MpsSection::name:
        throw syntax ("data before the first section that has any: " + quote (trim (line)));
    case MpsSection::objsense:
        check_characters (line);
        return sense_line (trim (line));
    case MpsSection::objname:
        check_characters (line);
        return objective_name_line (trim (line));
    default:
        break;
    }

    const MpsFields fields = split (form_, section_, line);
    if (guessed_ && section_ != MpsSection::rows && section_ != MpsSection::bounds &&
        free_and_fixed_differ (section_, line))
        throw syntax ("the line reads differently in free and in fixed form; "
                      "the parameter KLV_IPAR_FILE_FORMAT says which it is");
    switch (section_) {
    case MpsSection::rows:
        return row_line (fields);
    case MpsSection::columns:
        return column_line (fields);
    case MpsSection::rhs:
        return side_line (fields);
    case MpsSection::ranges:
        return range_line (fields);
    case MpsSection::bounds:
        return bound_line (fields);
    default:
        return quadratic_line (fields);
    }
}

void MpsReader::sense_line (std::string_view word)
{
    if (sense_given_)
        throw syntax ("a second objective sense: " + quote (word));
    if (same_word (word, "MAX") || same_word (word, "MAXIMIZE") || same_word (word, "MAXIMISE"))
        draft_.problem.sense = KLV_SENSE_MAXIMIZE;
    else if (!same_word (word, "MIN") && !same_word (word, "MINIMIZE") && !same_word (word, "MINIMISE"))
        throw syntax (quote (word) + " is no objective sense: MIN or MAX is needed");
    sense_given_ = true;
}

void MpsReader::objective_name_line (std::string_view name)
{
    if (!draft_.problem.objective_name.empty ())
        throw syntax ("a second objective name: " + quote (name));
    draft_.problem.objective_name = name;
}
std::int32_t MpsReader::known_row (std::string_view name) const
{
    const std::int32_t row = row_names_.find (name);
    if (row == NameTable::none)
        throw syntax ("unknown row " + quote (name) + " in " + std::string (name_of (section_)));
    return row;
}

std::int32_t MpsReader::known_column (std::string_view name) const
{
    const std::int32_t column = draft_.column_names.find (name);
    if (column == NameTable::none)
        throw syntax ("unknown column " + quote (name) + " in " + std::string (name_of (section_)));
    return column;
}

// ---- Forms

Problem read_free_mps (Task& task, const std::string& path, Pacer& pacer)
{
    return MpsReader (task, path, MpsForm::free, false, pacer).read ();
}

Problem read_fixed_mps (Task& task, const std::string& path, Pacer& pacer)
{
    return MpsReader (task, path, MpsForm::fixed, false, pacer).read ();
}

Problem read_mps_of_any_form (Task& task, const std::string& path, Pacer& pacer)
{
    FileFault free_fault;
    {
        MpsReader reader (task, path, MpsForm::free, true, pacer);
        try {
            return reader.read ();
        } catch (const FileFault& fault) {
            if (fault.code != KLV_RES_FILE_SYNTAX || !reader.fault_shows_fixed_form ())
                throw;
            free_fault = fault;
        }
    }
    try {
        return read_fixed_mps (task, path, pacer);
    } catch (const FileFault& fault) {
        // The file is not in fixed form either, up to the line at fault: the fault in free form is reported.
        if (fault.code == KLV_RES_FILE_SYNTAX && fault.line <= free_fault.line)
            throw free_fault;
        throw;
    }
}

}
