// Reads LP files: expressions, relations and lists of names, section by section.
#include "kalvo/files/draft.h"
#include "kalvo/files/lp.h"
#include "kalvo/files/lp_scan.h"
#include "kalvo/files/words.h"

#include <cmath>
#include <numeric>

namespace klv {

class LpReader {
public:
    LpReader (Task& task, const std::string& path, Pacer& pacer)
        : lines_ (path, pacer), pacer_ (pacer), draft_ (task, lines_), scanner_ (lines_, draft_.column_names)
    {}

    // Throws FileFault with the line of the fault.
    Problem read ();

    const Warnings& warnings () const { return draft_.warnings; }

private:
    // A side of a relation: terms are put behind the entries, numbers without a variable add up.
    struct Side {
        bool has_terms = false;
        bool has_constant = false;
        double constant = 0;
        std::int64_t line = 0;    // of the last number
    };

    bool at (LpToken::Kind kind) { return scanner_.token ().kind == kind; }
    // The bounds that the relations of a constraint have said.
    struct RowBounds {
        std::string label;
        double lower = -infinity;
        double upper = infinity;
        bool lower_said = false;
        bool upper_said = false;
        bool equal = false;
    };

    [[noreturn]] void refuse (const char* wanted);

    void section ();
    void objective ();
    void constraint ();
    void bound ();
    void type ();

    Side side (bool behind_number = false);
    void term (double coefficient);
    char relation ();
    double signed_number ();
    void begin_statement (const char* what);
    std::string take_label ();
    std::int32_t known_column ();
    std::int32_t column_of (std::string_view name);

    void say (RowBounds& row, char relation, double number);
    void put_row (const RowBounds& row);
    void put_bound (std::int32_t j, char relation, double number);
    void finish ();
    void finish_matrix ();

    LineReader lines_;
    Pacer& pacer_;
    Draft draft_;
    LpScanner scanner_;
    LpSection section_ = LpSection::none;
    bool constraints_seen_ = false;

    NameTable row_names_;                  // and the objective's
    std::vector<std::int64_t> row_end_;    // where each row ends in the entries
    std::vector<std::int32_t> entry_columns_;
    std::vector<double> entry_values_;
    std::vector<std::int64_t> last_entry_;    // of each column
    std::vector<std::int32_t> binaries_;
};

Problem LpReader::read ()
{
    try {
        while (section_ != LpSection::end)
            section ();
        if (!at (LpToken::end_of_file))
            throw syntax ("text after End");
        finish ();
    } catch (FileFault& fault) {
        if (fault.line == 0 && fault.code != KLV_RES_FILE_READ)
            fault.line = std::max<std::int64_t> (lines_.number (), 1);
        throw;
    }
    return std::move (draft_.problem);
}

void LpReader::refuse (const char* wanted)
{
    if (at (LpToken::end_of_file))
        throw syntax ("the file ends without End");
    throw syntax (std::string (wanted) + " is needed, not " + quote (scanner_.token ().text));
}

// ---- Sections

void LpReader::section ()
{
    if (!at (LpToken::section))
        refuse (section_ == LpSection::none ? "Minimize or Maximize" : "a section");
    const std::string word = quote (scanner_.token ().text);
    const LpSection opened = scanner_.token ().opened;
    const bool is_sense = opened == LpSection::minimize || opened == LpSection::maximize;
    if (is_sense != (section_ == LpSection::none))
        throw syntax (is_sense ? "a second objective: " + word : word + " before Minimize or Maximize");
    if (opened == LpSection::constraints && constraints_seen_)
        throw syntax ("section " + word + " comes twice");
    if (!is_sense && opened != LpSection::constraints && !constraints_seen_)
        throw syntax ("section " + word + " comes without Subject To before it");
    section_ = opened;
    scanner_.next ();

    if (is_sense)
        return objective ();
    constraints_seen_ = true;
    while (!at (LpToken::section) && !at (LpToken::end_of_file) && section_ != LpSection::end) {
        if (section_ == LpSection::constraints)
            constraint ();
        else if (section_ == LpSection::bounds)
            bound ();
        else
            type ();
    }
}

void LpReader::begin_statement (const char* what)
{
    if (!scanner_.token ().begins_line)
        throw syntax (quote (scanner_.token ().text) + " behind " + what);
}

// ---- Names

static void check_name (std::string_view name)
{
    if (const char* reason = why_not_in_lp (name))
        throw syntax ("the name " + quote (name) + " " + reason);
}

std::string LpReader::take_label ()
{
    const std::string label (scanner_.token ().text);
    check_name (label);
    if (!row_names_.insert (label))
        throw syntax ("a second row " + quote (label));
    scanner_.next ();
    return label;
}

std::int32_t LpReader::known_column ()
{
    if (!at (LpToken::name))
        refuse ("the name of a variable");
    const std::int32_t j = draft_.column_names.find (scanner_.token ().text);
    if (j == NameTable::none)
        throw syntax ("unknown variable " + quote (scanner_.token ().text) + ": no expression has it");
    scanner_.next ();
    return j;
}

std::int32_t LpReader::column_of (std::string_view name)
{
    const std::int32_t j = draft_.column_names.find (name);
    if (j != NameTable::none)
        return j;
    check_name (name);
    draft_.append_column (name);
    last_entry_.push_back (-1);
    return draft_.column_names.size () - 1;
}

// ---- Expressions

// Behind "0 <=", a number at the end of a line is the bound of a row without terms, unless what follows is its
// variable: then nobody can tell.
LpReader::Side LpReader::side (bool behind_number)
{
    Side side;
    for (bool first = true;; first = false) {
        double coefficient = 1;
        const bool has_sign = at (LpToken::sign);
        for (; at (LpToken::sign); scanner_.next ())
            coefficient *= scanner_.token ().value;
        const bool has_number = at (LpToken::number);
        if (!has_sign && !first && (has_number || at (LpToken::name)))
            return side;
        if (has_number) {
            coefficient *= scanner_.token ().value;
            side.line = lines_.number ();
            scanner_.next ();
        }
        const bool multiplies = has_number && at (LpToken::times);
        if (multiplies)
            scanner_.next ();
        if (at (LpToken::name)) {
            if (behind_number && has_number && first && scanner_.token ().begins_line)
                throw syntax ("the number before " + quote (scanner_.token ().text) +
                              " may be its coefficient or end a constraint");
            if (has_number && !multiplies && reads_like_exponent (scanner_.token ().text))
                throw syntax ("the variable " + quote (scanner_.token ().text) +
                              " behind a number reads like its exponent");
            term (coefficient);
            side.has_terms = true;
        } else if (has_number && !multiplies) {
            if (side.has_constant && !std::isfinite (side.constant + coefficient))
                throw syntax ("a sum of numbers that is infinite");
            side.constant = side.has_constant ? side.constant + coefficient : coefficient;
            side.has_constant = true;
        } else if (has_sign || multiplies) {
            refuse ("a number or the name of a variable");
        } else {
            return side;
        }
    }
}

void LpReader::term (double coefficient)
{
    const std::string_view name = scanner_.token ().text;
    if (!std::isfinite (coefficient))
        throw syntax ("an infinite coefficient of " + quote (name));
    const std::int32_t j = column_of (name);
    std::int64_t& last = last_entry_[static_cast<std::size_t> (j)];
    if (last >= (row_end_.empty () ? 0 : row_end_.back ())) {
        double& value = entry_values_[static_cast<std::size_t> (last)];
        value += coefficient;
        if (!std::isfinite (value))
            throw syntax ("an infinite coefficient of " + quote (name));
        draft_.note (Tradition::repeated_term, name);
    } else {
        last = static_cast<std::int64_t> (entry_columns_.size ());
        entry_columns_.push_back (j);
        entry_values_.push_back (coefficient);
    }
    scanner_.next ();
    if (at (LpToken::times))
        throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED, "quadratic terms are not supported: \"*\""};
}

char LpReader::relation ()
{
    if (!at (LpToken::relation))
        refuse ("a relation");
    const char sign = scanner_.token ().relation_sign;
    scanner_.next ();
    return sign;
}

double LpReader::signed_number ()
{
    double value = 1;
    for (; at (LpToken::sign); scanner_.next ())
        value *= scanner_.token ().value;
    if (!at (LpToken::number))
        refuse ("a number");
    value *= scanner_.token ().value;
    scanner_.next ();
    return value;
}

// ---- The objective and the constraints

void LpReader::objective ()
{
    Problem& problem = draft_.problem;
    problem.sense = section_ == LpSection::maximize ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
    if (at (LpToken::label))
        problem.objective_name = take_label ();
    const Side terms = side ();
    if (!std::isfinite (terms.constant))
        throw FileFault{KLV_RES_FILE_SYNTAX, "an infinite constant of the objective", terms.line};
    problem.constant = terms.constant;
    for (std::size_t k = 0; k < entry_columns_.size (); ++k)
        problem.cost[static_cast<std::size_t> (entry_columns_[k])] = entry_values_[k];
    entry_columns_.clear ();
    entry_values_.clear ();
    last_entry_.assign (last_entry_.size (), -1);
}

static char mirrored (char relation)
{
    return relation == '<' ? '>' : relation == '>' ? '<' : relation;
}

void LpReader::say (RowBounds& row, char relation, double number)
{
    if ((relation != '>' && row.upper_said) || (relation != '<' && row.lower_said))
        throw syntax ("two relations of a constraint that bound the same side");
    if (relation != '>')
        row.upper = draft_.upper_bound (number, row.label);
    if (relation != '<')
        row.lower = draft_.lower_bound (number, row.label);
    row.upper_said |= relation != '>';
    row.lower_said |= relation != '<';
    row.equal |= relation == '=';
}

// "expression <= number", "number <= expression", or both in one; an expression without terms is 0.
void LpReader::constraint ()
{
    begin_statement ("a constraint");
    RowBounds row;
    if (at (LpToken::label))
        row.label = take_label ();
    Side expression = side ();
    if (!expression.has_terms && !expression.has_constant)
        refuse ("an expression");
    char sign = relation ();
    if (!expression.has_terms) {
        if (row.label.empty () && at (LpToken::label))
            row.label = take_label ();
        const Side second = side (true);
        if (second.has_terms || at (LpToken::relation)) {
            say (row, mirrored (sign), expression.constant);
            expression = second;
            sign = at (LpToken::relation) ? relation () : '\0';
        } else {
            if (!second.has_constant)
                refuse ("a number");
            say (row, sign, second.constant);
            sign = '\0';
        }
    }
    if (sign)
        say (row, sign, signed_number ());
    if (expression.has_constant && (expression.has_terms || expression.constant != 0))
        throw syntax ("a constant among the terms of a constraint");
    put_row (row);
}

void LpReader::put_row (const RowBounds& row)
{
    Problem& problem = draft_.problem;
    if (problem.constraints () == std::numeric_limits<std::int32_t>::max ())
        throw syntax ("more rows than a task can hold");
    problem.append_constraints (1);
    problem.constraint.lower.back () = row.lower;
    problem.constraint.upper.back () = row.upper;
    problem.constraint.key.back () = row.equal ? std::uint8_t{KLV_BK_FX} : key_of (row.lower, row.upper);
    if (!row.label.empty ())
        problem.constraint_name.put (problem.constraints () - 1, problem.constraints (), row.label);
    row_end_.push_back (static_cast<std::int64_t> (entry_columns_.size ()));
}

// ---- Bounds and types of variables

void LpReader::put_bound (std::int32_t j, char relation, double number)
{
    if (relation == '=')
        draft_.fix (j, number);
    else if (relation == '<')
        draft_.set_upper (j, number);
    else
        draft_.set_lower (j, number);
}

// "x <= number", "number <= x", both in one, or "x free".
void LpReader::bound ()
{
    begin_statement ("a bound");
    if (!at (LpToken::name)) {
        const double number = signed_number ();
        const char sign = relation ();
        const std::int32_t j = known_column ();
        put_bound (j, mirrored (sign), number);
        if (at (LpToken::relation)) {
            const char second = relation ();
            put_bound (j, second, signed_number ());
        }
        return;
    }
    const std::int32_t j = known_column ();
    if (at (LpToken::name) && same_word (scanner_.token ().text, "FREE")) {
        draft_.set_lower (j, -infinity);
        draft_.set_upper (j, infinity);
        scanner_.next ();
    } else {
        const char sign = relation ();
        put_bound (j, sign, signed_number ());
    }
}

void LpReader::type ()
{
    const std::int32_t j = known_column ();
    draft_.make_integer (j);
    if (section_ == LpSection::binaries)
        binaries_.push_back (j);
}

// ---- The problem as a whole

void LpReader::finish ()
{
    for (const std::int32_t j : binaries_)
        draft_.limit_to_binary (j);
    draft_.finish_columns (pacer_);
    draft_.problem.name = scanner_.problem_name ();
    finish_matrix ();
}

// From rows to columns.
void LpReader::finish_matrix ()
{
    ColumnMatrix& matrix = draft_.problem.matrix;
    std::vector<std::int64_t> place (static_cast<std::size_t> (matrix.columns ()) + 1, 0);
    for (const std::int32_t j : entry_columns_)
        ++place[static_cast<std::size_t> (j) + 1];
    std::partial_sum (place.begin (), place.end (), place.begin ());

    std::vector<std::int32_t> rows (entry_columns_.size ());
    std::vector<double> values (entry_columns_.size ());
    for (std::size_t i = 0, k = 0; i < row_end_.size (); ++i)
        for (; k < static_cast<std::size_t> (row_end_[i]); ++k) {
            const auto at = static_cast<std::size_t> (place[static_cast<std::size_t> (entry_columns_[k])]++);
            rows[at] = static_cast<std::int32_t> (i);
            values[at] = entry_values_[k];
        }
    entry_columns_ = {};
    entry_values_ = {};

    matrix.reserve (static_cast<std::int64_t> (rows.size ()));
    std::size_t begin = 0;
    for (std::int32_t j = 0; j < matrix.columns (); ++j) {
        const auto end = static_cast<std::size_t> (place[static_cast<std::size_t> (j)]);
        matrix.put (j, std::span (rows).subspan (begin, end - begin),
                    std::span (values).subspan (begin, end - begin));
        begin = end;
    }
}

Problem read_lp (Task& task, const std::string& path, Pacer& pacer)
{
    LpReader reader (task, path, pacer);
    Problem problem = reader.read ();
    reader.warnings ().print (task, path);
    return problem;
}

}
