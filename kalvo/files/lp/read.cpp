// The statements of an LP file: its sections, objective, constraints, bounds and types.
#include "kalvo/files/lp/lp.h"
#include "kalvo/files/lp/reader.h"
#include "kalvo/files/text/grouped.h"
#include "kalvo/files/text/words.h"

#include <cmath>

namespace klv {

Problem LpReader::read ()
{
    with_lines_of_faults (lines_, [&] {
        while (section_ != LpSection::end)
            section ();
        if (!at (LpToken::end_of_file))
            throw syntax ("text after End");
        finish ();
    });
    return draft_.take ();
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
    finish_quadratic ();
}

// Terms of the same variables in an expression are added.
void LpReader::finish_quadratic ()
{
    sort (quadratic_);
    auto last = quadratic_.begin ();
    for (auto at = last; at != quadratic_.end (); ++at) {
        if (at == last)
            continue;
        if (at->place () != last->place ()) {
            *++last = *at;
            continue;
        }
        last->value += at->value;
        const std::string_view name = draft_.column_names[at->second];
        if (!std::isfinite (last->value))
            throw FileFault{KLV_RES_FILE_SYNTAX, "an infinite coefficient of a product with " + quote (name),
                            at->line};
        draft_.warnings.note (Tradition::repeated_term, at->line, name);
    }
    store (draft_.problem,
           std::span (quadratic_)
               .first (quadratic_.empty () ? 0 : static_cast<std::size_t> (last - quadratic_.begin ()) + 1));
}

void LpReader::finish_matrix ()
{
    ColumnMatrix& matrix = draft_.problem.matrix;
    const Grouped by_columns (matrix.columns (), std::ssize (entry_columns_), [this] (const auto& visit) {
        std::size_t k = 0;
        for (std::int32_t i = 0; i < draft_.problem.constraints (); ++i)
            for (; k < static_cast<std::size_t> (row_end_[static_cast<std::size_t> (i)]); ++k)
                visit (entry_columns_[k], i, entry_values_[k]);
    });
    entry_columns_ = {};
    entry_values_ = {};
    matrix.reserve (row_end_.empty () ? 0 : row_end_.back ());
    for (std::int32_t j = 0; j < matrix.columns (); ++j)
        matrix.put (j, by_columns.others (j), by_columns.values (j));
}

Problem read_lp (Task& task, const std::string& path, Pacer& pacer)
{
    return LpReader (task, path, pacer).read ();
}

}
