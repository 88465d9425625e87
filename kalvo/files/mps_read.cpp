// Reads MPS files: one pass over the lines, each section's lines by a function of its own.
#include "kalvo/files/line_reader.h"
#include "kalvo/files/mps.h"
#include "kalvo/files/mps_line.h"
#include "kalvo/files/name_table.h"
#include "kalvo/files/numbers.h"

#include <algorithm>
#include <cmath>

namespace klv {

static bool same_word (std::string_view text, std::string_view word)
{
    const auto upper = [] (char c) { return c >= 'a' && c <= 'z' ? static_cast<char> (c - 'a' + 'A') : c; };
    return std::equal (text.begin (), text.end (), word.begin (), word.end (),
                       [&] (char a, char b) { return upper (a) == b; });
}

// ---- What is differently understood elsewhere: collected, each kind with its first line

class Warnings {
public:
    void note (Tradition kind, std::int64_t line, std::string_view item)
    {
        Note& note = notes_[static_cast<std::size_t> (kind)];
        if (note.count++ == 0) {
            note.line = line;
            note.item = quote (item);
        }
    }

    void print (Task& task, const std::string& path) const
    {
        for (std::size_t kind = 0; kind < notes_.size (); ++kind) {
            const Note& note = notes_[kind];
            if (note.count == 0)
                continue;
            std::string text = path + ":" + std::to_string (note.line) + ": ";
            text += tradition_texts[kind];
            text += " (" + note.item;
            if (note.count > 1)
                text += " and " + std::to_string (note.count - 1) + " more";
            task.warn (text + ")");
        }
    }

private:
    struct Note {
        std::int64_t count = 0;
        std::int64_t line = 0;
        std::string item;
    };
    std::array<Note, tradition_texts.size ()> notes_;
};

// ---- Sections

struct Header {
    std::string_view word;
    MpsSection section;
    MpsSection after;    // a section that must have come before
    bool may_have_text;
};

constexpr std::array headers{
    Header{"NAME", MpsSection::name, MpsSection::none, true},
    Header{"OBJSENSE", MpsSection::objsense, MpsSection::none, true},
    Header{"OBJNAME", MpsSection::objname, MpsSection::none, true},
    Header{"ROWS", MpsSection::rows, MpsSection::none, false},
    Header{"COLUMNS", MpsSection::columns, MpsSection::rows, false},
    Header{"RHS", MpsSection::rhs, MpsSection::rows, false},
    Header{"RANGES", MpsSection::ranges, MpsSection::rows, false},
    Header{"BOUNDS", MpsSection::bounds, MpsSection::columns, false},
    Header{"ENDATA", MpsSection::endata, MpsSection::columns, false},
};

// Known elsewhere, for problems that a task cannot hold.
constexpr std::array<std::string_view, 14> unsupported_sections{
    "QUADOBJ", "QMATRIX", "QSECTION",   "QCMATRIX", "CSECTION", "SOS",     "SOS1",
    "SOS2",    "SETS",    "INDICATORS", "LAZYCONS", "USERCUTS", "GENCONS", "PWLOBJ"};

static std::string_view name_of (MpsSection section)
{
    const auto* header = std::find_if (headers.begin (), headers.end (),
                                       [=] (const Header& h) { return h.section == section; });
    return header == headers.end () ? "" : header->word;
}

// ---- The reader

class MpsReader {
public:
    MpsReader (Task& task, const std::string& path, MpsForm form, bool guessed, Pacer& pacer)
        : lines_ (path, pacer),
          pacer_ (pacer),
          form_ (form),
          guessed_ (guessed),
          huge_ (task.parameters.get (RealSetting::bound_infinity))
    {}

    // Throws FileFault with the line of the fault.
    Problem read ();

    const Warnings& warnings () const { return warnings_; }

    // After a fault in free form: whether the line is meant for fixed form.
    bool fault_shows_fixed_form () const
    {
        return lines_.line ().starts_with (' ') && only_fixed (section_, lines_.line ());
    }

private:
    struct Row {
        char kind;
        bool has_side = false;
        bool has_range = false;
        double side = 0;
    };

    struct Range {
        std::int32_t row;
        long double value;
        std::int64_t line;
    };

    // What a column's lines of BOUNDS have said.
    enum Said : std::uint8_t { lower_said = 1, upper_said = 2, fixed_said = 4, minus_infinity_said = 8 };

    struct Column {
        std::uint8_t said = 0;
        std::int64_t line;    // of its last bound, else of its first entry
    };

    // A name of RHS, RANGES or BOUNDS. Lines without one belong to the first that is named.
    class Set {
    public:
        bool uses (std::string_view name)
        {
            if (name_.empty ())
                name_ = name;
            return name.empty () || name == name_;
        }

    private:
        std::string name_;
    };

    void header_line ();
    void data_line ();
    void enter (const Header& header);
    void leave_section ();

    void sense_line (std::string_view word);
    void objective_name_line (std::string_view name);
    void row_line (const MpsFields& fields);
    void column_line (const MpsFields& fields);
    void side_line (const MpsFields& fields);
    void range_line (const MpsFields& fields);
    void bound_line (const MpsFields& fields);

    void marker_line (std::string_view kind);
    void begin_column (std::string_view name);
    void end_column ();
    void put_entry (std::string_view row, double value);
    void put_side (std::int32_t row, double value);
    void put_range (std::int32_t row, long double value);
    void put_bound (std::string_view key, std::int32_t j, double value);
    void set_lower (std::int32_t j, double value);
    void set_upper (std::int32_t j, double value);
    void make_integer (std::int32_t j);

    void finish ();
    void finish_rows ();
    void finish_columns ();
    void finish_names ();

    std::int32_t known_row (std::string_view name) const;
    double lower_side (double value);
    double upper_side (double value);
    void note (Tradition kind, std::string_view item) { warnings_.note (kind, lines_.number (), item); }

    LineReader lines_;
    Pacer& pacer_;
    MpsForm form_;
    bool guessed_;
    double huge_;
    Warnings warnings_;
    Problem problem_;

    MpsSection section_ = MpsSection::none;
    std::uint32_t seen_ = 0;    // a bit for each section
    bool sense_given_ = false;

    NameTable row_names_, column_names_;
    std::vector<Row> rows_;
    std::vector<Range> ranges_;
    std::int32_t objective_ =
        std::numeric_limits<std::int32_t>::max ();    // its row; beyond all when there is none
    Set sides_, range_set_, bound_set_;

    std::vector<Column> columns_;
    std::int32_t column_ = -1;
    bool integers_begun_ = false;
    std::vector<std::int32_t> last_column_;    // in which each row had an entry
    std::vector<std::int32_t> entry_rows_;
    std::vector<double> entry_values_;
};

Problem MpsReader::read ()
{
    try {
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
    } catch (FileFault& fault) {
        if (fault.line == 0 && fault.code != KLV_RES_FILE_READ)
            fault.line = std::max<std::int64_t> (lines_.number (), 1);
        throw;
    }
    return std::move (problem_);
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
                                       [=] (const Header& h) { return same_word (word, h.word); });
    if (header == headers.end ())
        throw syntax ("unknown section " + quote (word) + " (lines of data begin with a blank)");
    if (!text.empty () && !header->may_have_text)
        throw syntax ("text after the section name " + std::string (header->word) + ": " + quote (text));
    leave_section ();
    enter (*header);

    switch (section_) {
    case MpsSection::name:
        problem_.name = text;
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
        break;
    }
}

void MpsReader::enter (const Header& header)
{
    const auto bit = [] (MpsSection section) { return 1U << static_cast<unsigned> (section); };
    const std::string word (header.word);
    if (seen_ & bit (header.section))
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
        if (problem_.objective_name.empty ())
            throw syntax ("OBJNAME without a name");
        break;
    case MpsSection::rows:
        if (objective_ >= row_names_.size ()) {
            if (!problem_.objective_name.empty ())
                throw syntax ("no N row has the name " + quote (problem_.objective_name) + " of OBJNAME");
            note (Tradition::no_objective, "ROWS");
        }
        last_column_.assign (rows_.size (), -1);
        break;
    case MpsSection::columns:
        end_column ();
        if (integers_begun_)
            note (Tradition::open_marker, column_ < 0 ? "COLUMNS" : column_names_[column_]);
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

    const MpsFields fields =
        form_ == MpsForm::free ? split_free (section_, line) : split_fixed (section_, line);
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
    default:
        return bound_line (fields);
    }
}

void MpsReader::sense_line (std::string_view word)
{
    if (sense_given_)
        throw syntax ("a second objective sense: " + quote (word));
    if (same_word (word, "MAX") || same_word (word, "MAXIMIZE") || same_word (word, "MAXIMISE"))
        problem_.sense = KLV_SENSE_MAXIMIZE;
    else if (!same_word (word, "MIN") && !same_word (word, "MINIMIZE") && !same_word (word, "MINIMISE"))
        throw syntax (quote (word) + " is no objective sense: MIN or MAX is needed");
    sense_given_ = true;
}

void MpsReader::objective_name_line (std::string_view name)
{
    if (!problem_.objective_name.empty ())
        throw syntax ("a second objective name: " + quote (name));
    problem_.objective_name = name;
}

// ---- ROWS

void MpsReader::row_line (const MpsFields& fields)
{
    constexpr std::string_view kinds = "NLGE";
    const auto kind = std::find_if (kinds.begin (), kinds.end (),
                                    [&] (const char& k) { return same_word (fields.key, {&k, 1}); });
    if (kind == kinds.end ())
        throw syntax (quote (fields.key) + " is no type of row: N, L, G or E is needed");
    if (row_names_.size () == std::numeric_limits<std::int32_t>::max ())
        throw syntax ("more rows than a task can hold");
    if (!row_names_.insert (fields.name))
        throw syntax ("a second row " + quote (fields.name) + " in ROWS");
    rows_.push_back ({.kind = *kind});

    if (*kind != 'N')
        return;
    const bool has_objective = objective_ < row_names_.size ();
    const bool is_wanted = problem_.objective_name.empty () || problem_.objective_name == fields.name;
    if (!has_objective && is_wanted) {
        objective_ = row_names_.size () - 1;
        problem_.objective_name = fields.name;
    } else {
        note (Tradition::further_free_row, fields.name);
    }
}

std::int32_t MpsReader::known_row (std::string_view name) const
{
    const std::int32_t row = row_names_.find (name);
    if (row == NameTable::none)
        throw syntax ("unknown row " + quote (name) + " in " + std::string (name_of (section_)));
    return row;
}

// ---- COLUMNS

void MpsReader::column_line (const MpsFields& fields)
{
    if (fields.item[0] == "'MARKER'")
        return marker_line (fields.item[1]);
    if (column_ < 0 || column_names_[column_] != fields.name)
        begin_column (fields.name);
    row_names_.prefetch (fields.item[0]);
    row_names_.prefetch (fields.item[1]);
    put_entry (fields.item[0], parse_finite (fields.number[0]));
    if (!fields.item[1].empty ())
        put_entry (fields.item[1], parse_finite (fields.number[1]));
}

void MpsReader::marker_line (std::string_view kind)
{
    if (kind == "'SOSORG'" || kind == "'SOSEND'")
        throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED,
                        "special ordered sets are not supported: " + quote (kind)};
    if (kind != "'INTORG'" && kind != "'INTEND'")
        throw syntax (quote (kind) + " is no marker: 'INTORG' or 'INTEND' is needed");
    const bool begins = kind == "'INTORG'";
    if (begins == integers_begun_)
        throw syntax (begins ? "a second 'INTORG' without an 'INTEND' between"
                             : "'INTEND' without 'INTORG' before it");
    integers_begun_ = begins;
}

void MpsReader::begin_column (std::string_view name)
{
    end_column ();
    if (column_names_.size () == std::numeric_limits<std::int32_t>::max ())
        throw syntax ("more columns than a task can hold");
    if (!column_names_.insert (name))
        throw syntax ("column " + quote (name) + " goes on after other columns");
    ++column_;
    columns_.push_back ({.line = lines_.number ()});
    problem_.append_variables (1);
    problem_.variable.lower.back () = 0;
    if (integers_begun_)
        make_integer (column_);
}

void MpsReader::end_column ()
{
    if (column_ >= 0)
        problem_.matrix.put (column_, entry_rows_, entry_values_);
    entry_rows_.clear ();
    entry_values_.clear ();
}

void MpsReader::put_entry (std::string_view name, double value)
{
    const std::int32_t row = known_row (name);
    std::int32_t& last = last_column_[static_cast<std::size_t> (row)];
    if (last == column_)
        throw syntax ("a second entry of column " + quote (column_names_[column_]) + " in row " +
                      quote (name));
    last = column_;
    if (row == objective_) {
        problem_.cost.back () = value;
    } else {
        entry_rows_.push_back (row > objective_ ? row - 1 : row);
        entry_values_.push_back (value);
    }
}

void MpsReader::make_integer (std::int32_t j)
{
    std::uint8_t& type = problem_.integer[static_cast<std::size_t> (j)];
    problem_.integers += type == KLV_VAR_INTEGER ? 0 : 1;
    type = KLV_VAR_INTEGER;
}

// ---- RHS and RANGES

// A bound on its own side and beyond the threshold is no bound; on the other side nothing could meet it.
double MpsReader::lower_side (double value)
{
    if (value >= huge_)
        throw syntax ("a lower bound that is infinite or beyond the bound infinity threshold");
    return value > -huge_ ? value : -infinity;
}

double MpsReader::upper_side (double value)
{
    if (value <= -huge_)
        throw syntax ("an upper bound that is minus infinity or beyond the bound infinity threshold");
    return value < huge_ ? value : infinity;
}

void MpsReader::side_line (const MpsFields& fields)
{
    const bool used = sides_.uses (fields.name);
    for (int k = 0; k < 2 && !fields.item[k].empty (); ++k) {
        const std::int32_t row = known_row (fields.item[k]);
        const double value = parse_number (fields.number[k]);
        if (used)
            put_side (row, value);
        else
            note (Tradition::further_set, fields.name);
    }
}

void MpsReader::put_side (std::int32_t i, double value)
{
    Row& row = rows_[static_cast<std::size_t> (i)];
    if (row.has_side)
        throw syntax ("a second right-hand side of row " + quote (row_names_[i]));
    row.has_side = true;
    switch (row.kind) {
    case 'G':
        row.side = lower_side (value);
        break;
    case 'L':
        row.side = upper_side (value);
        break;
    case 'E':
        row.side = lower_side (upper_side (value));
        break;
    default:
        if (std::isinf (value))
            throw syntax ("an infinite right-hand side of the free row " + quote (row_names_[i]));
        row.side = value;
        note (i == objective_ ? Tradition::objective_right_hand_side : Tradition::free_row_side,
              row_names_[i]);
        break;
    }
    if (std::isinf (row.side) && std::isfinite (value))
        note (Tradition::huge_bound, row_names_[i]);
}

void MpsReader::range_line (const MpsFields& fields)
{
    const bool used = range_set_.uses (fields.name);
    for (int k = 0; k < 2 && !fields.item[k].empty (); ++k) {
        const std::int32_t row = known_row (fields.item[k]);
        const long double value = parse_range (fields.number[k]);
        if (used)
            put_range (row, value);
        else
            note (Tradition::further_set, fields.name);
    }
}

void MpsReader::put_range (std::int32_t i, long double value)
{
    Row& row = rows_[static_cast<std::size_t> (i)];
    if (row.has_range)
        throw syntax ("a second range of row " + quote (row_names_[i]));
    row.has_range = true;
    if (row.kind == 'N')
        note (Tradition::free_row_side, row_names_[i]);
    else if (row.kind != 'E' && value < 0)
        note (Tradition::negative_range, row_names_[i]);
    ranges_.push_back ({i, value, lines_.number ()});
}

// ---- BOUNDS

enum class Value { none, real, integer };

struct BoundType {
    std::string_view key;
    Value value;
};

constexpr std::array bound_types{
    BoundType{"LO", Value::real}, BoundType{"UP", Value::real},    BoundType{"FX", Value::real},
    BoundType{"FR", Value::none}, BoundType{"MI", Value::none},    BoundType{"PL", Value::none},
    BoundType{"BV", Value::none}, BoundType{"LI", Value::integer}, BoundType{"UI", Value::integer},
};

void MpsReader::bound_line (const MpsFields& fields)
{
    const auto* type = std::find_if (bound_types.begin (), bound_types.end (),
                                     [&] (const BoundType& t) { return same_word (fields.key, t.key); });
    if (type == bound_types.end ()) {
        if (same_word (fields.key, "SC") || same_word (fields.key, "SI"))
            throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED,
                            "semi-continuous variables are not supported: bound type " + quote (fields.key)};
        throw syntax (quote (fields.key) + " is no type of bound");
    }

    // Free form may leave the name of the set out: three fields are then type, column and number.
    std::string_view set = fields.name, name = fields.item[0], number = fields.number[0];
    const bool needs_value = type->value != Value::none;
    if (form_ == MpsForm::free && number.empty () && !set.empty ()) {
        const bool named = column_names_.find (name) != NameTable::none;
        const bool unnamed = column_names_.find (set) != NameTable::none;
        if (!needs_value && named && unnamed)
            throw syntax (quote (set) + " and " + quote (name) +
                          " are both columns: which is the set of bounds?");
        if (needs_value || unnamed) {
            number = name;
            name = set;
            set = {};
        }
    }
    const std::int32_t j = column_names_.find (name);
    if (j == NameTable::none)
        throw syntax ("unknown column " + quote (name) + " in BOUNDS");
    if (needs_value && number.empty ())
        throw syntax ("a bound of type " + std::string (type->key) + " needs a number");
    const double value = number.empty () ? 0 : parse_number (number);
    if (type->value == Value::integer && std::isfinite (value) && value != std::floor (value))
        throw syntax ("a bound of type " + std::string (type->key) + " needs an integer, not " +
                      quote (number));

    if (bound_set_.uses (set))
        put_bound (type->key, j, value);
    else
        note (Tradition::further_set, set);
}

void MpsReader::put_bound (std::string_view key, std::int32_t j, double value)
{
    if (key == "LO" || key == "LI")
        set_lower (j, value);
    if (key == "UP" || key == "UI")
        set_upper (j, value);
    if (key == "MI" || key == "FR")
        set_lower (j, -infinity);
    if (key == "PL" || key == "FR")
        set_upper (j, infinity);
    if (key == "BV") {
        set_lower (j, 0);
        set_upper (j, 1);
    }
    if (key == "FX") {
        if (std::isinf (value) || std::fabs (value) >= huge_)
            throw syntax ("column " + quote (column_names_[j]) +
                          " is fixed at a value beyond the bound infinity threshold");
        set_lower (j, value);
        set_upper (j, value);
        columns_[static_cast<std::size_t> (j)].said |= fixed_said;
    }
    if (key == "MI")
        columns_[static_cast<std::size_t> (j)].said |= minus_infinity_said;
    if (key == "BV" || key == "LI" || key == "UI")
        make_integer (j);
}

void MpsReader::set_lower (std::int32_t j, double value)
{
    Column& column = columns_[static_cast<std::size_t> (j)];
    if (column.said & lower_said)
        throw syntax ("a second lower bound of column " + quote (column_names_[j]));
    column.said |= lower_said;
    column.line = lines_.number ();
    const double lower = lower_side (value);
    if (std::isinf (lower) && std::isfinite (value))
        note (Tradition::huge_bound, column_names_[j]);
    problem_.variable.lower[static_cast<std::size_t> (j)] = lower;
}

void MpsReader::set_upper (std::int32_t j, double value)
{
    Column& column = columns_[static_cast<std::size_t> (j)];
    if (column.said & upper_said)
        throw syntax ("a second upper bound of column " + quote (column_names_[j]));
    column.said |= upper_said;
    column.line = lines_.number ();
    const double upper = upper_side (value);
    if (std::isinf (upper) && std::isfinite (value))
        note (Tradition::huge_bound, column_names_[j]);
    problem_.variable.upper[static_cast<std::size_t> (j)] = upper;
}

// ---- The problem as a whole

static std::uint8_t key_of (double lower, double upper)
{
    if (std::isinf (lower))
        return std::isinf (upper) ? KLV_BK_FR : KLV_BK_UP;
    return std::isinf (upper) ? KLV_BK_LO : KLV_BK_RA;
}

void MpsReader::finish ()
{
    finish_rows ();
    finish_columns ();
    finish_names ();
}

void MpsReader::finish_rows ()
{
    const bool has_objective = objective_ < row_names_.size ();
    problem_.append_constraints (row_names_.size () - (has_objective ? 1 : 0));
    if (has_objective && rows_[static_cast<std::size_t> (objective_)].has_side)
        problem_.constant = -rows_[static_cast<std::size_t> (objective_)].side;

    Bounds& bounds = problem_.constraint;
    const auto place = [&] (std::int32_t row) {
        return static_cast<std::size_t> (row > objective_ ? row - 1 : row);
    };
    for (std::int32_t row = 0; row < row_names_.size (); ++row) {
        const auto [kind, has_side, has_range, side] = rows_[static_cast<std::size_t> (row)];
        if (kind == 'N')
            continue;
        const std::size_t i = place (row);
        bounds.lower[i] = kind == 'L' ? -infinity : side;
        bounds.upper[i] = kind == 'G' ? infinity : side;
        bounds.key[i] = kind == 'E' ? std::uint8_t{KLV_BK_FX} : key_of (bounds.lower[i], bounds.upper[i]);
    }

    for (const auto& [row, value, line] : ranges_) {
        const char kind = rows_[static_cast<std::size_t> (row)].kind;
        const std::size_t i = place (row);
        if (kind == 'N' || (kind == 'E' && value == 0))
            continue;
        const double side = kind == 'L' ? bounds.upper[i] : bounds.lower[i];
        if (std::isinf (side))
            throw FileFault{
                KLV_RES_FILE_SYNTAX,
                "a range of row " + quote (row_names_[row]) + ", whose right-hand side is infinite", line};
        const bool down = kind == 'L' || (kind == 'E' && value < 0);
        const double other = static_cast<double> (down ? side - std::fabs (value) : side + std::fabs (value));
        const bool no_bound = std::fabs (other) >= huge_;
        if (no_bound && !std::isinf (value))
            warnings_.note (Tradition::huge_bound, line, row_names_[row]);
        if (down)
            bounds.lower[i] = no_bound ? -infinity : other;
        else
            bounds.upper[i] = no_bound ? infinity : other;
        bounds.key[i] = key_of (bounds.lower[i], bounds.upper[i]);
    }
}

void MpsReader::finish_columns ()
{
    Bounds& bounds = problem_.variable;
    for (std::int32_t number = 0; number < problem_.variables (); ++number) {
        const std::size_t j = static_cast<std::size_t> (number);
        const auto [said, line] = columns_[j];
        const auto decide = [&] (Tradition kind) { warnings_.note (kind, line, column_names_[number]); };
        if (said == 0 && problem_.integer[j] == KLV_VAR_INTEGER) {
            bounds.upper[j] = 1;
            decide (Tradition::integer_without_bounds);
        }
        if (!(said & lower_said) && bounds.upper[j] < 0) {
            bounds.lower[j] = -infinity;
            decide (Tradition::negative_upper_alone);
        }
        if ((said & minus_infinity_said) && !(said & upper_said))
            decide (Tradition::minus_infinity_alone);
        bounds.key[j] =
            said & fixed_said ? std::uint8_t{KLV_BK_FX} : key_of (bounds.lower[j], bounds.upper[j]);
    }
}

void MpsReader::finish_names ()
{
    constexpr std::int32_t stretch = 4096;
    std::int32_t i = 0;
    for (std::int32_t row = 0; row < row_names_.size (); ++row) {
        if (row % stretch == 0)
            pacer_.tick ();
        if (row != objective_)
            problem_.constraint_name.put (i++, problem_.constraints (), std::string (row_names_[row]));
    }
    for (std::int32_t j = 0; j < column_names_.size (); ++j) {
        if (j % stretch == 0)
            pacer_.tick ();
        problem_.variable_name.put (j, problem_.variables (), std::string (column_names_[j]));
    }
}

// ---- Forms

Problem read_mps (Task& task, const std::string& path, MpsForm form, Pacer& pacer)
{
    MpsReader reader (task, path, form, false, pacer);
    Problem problem = reader.read ();
    reader.warnings ().print (task, path);
    return problem;
}

Problem read_mps_of_any_form (Task& task, const std::string& path, Pacer& pacer)
{
    FileFault free_fault;
    {
        MpsReader reader (task, path, MpsForm::free, true, pacer);
        try {
            Problem problem = reader.read ();
            reader.warnings ().print (task, path);
            return problem;
        } catch (const FileFault& fault) {
            if (fault.code != KLV_RES_FILE_SYNTAX || !reader.fault_shows_fixed_form ())
                throw;
            free_fault = fault;
        }
    }
    try {
        return read_mps (task, path, MpsForm::fixed, pacer);
    } catch (const FileFault& fault) {
        // What is no fixed form up to the line in question was meant as free form.
        if (fault.code == KLV_RES_FILE_SYNTAX && fault.line <= free_fault.line)
            throw free_fault;
        throw;
    }
}

}
