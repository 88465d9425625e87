#include "kalvo/files/sdpa/sdpa.h"
#include "kalvo/files/text/draft.h"
#include "kalvo/files/text/entries.h"
#include "kalvo/files/text/fields.h"
#include "kalvo/files/text/words.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <cctype>
#include <limits>
#include <numbers>
#include <utility>

namespace klv {

constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max ();

class SdpaReader {
public:
    SdpaReader (Task& task, const std::string& path, Pacer& pacer)
        : lines_ (path, pacer), draft_ (task, path, lines_)
    {}

    Problem read ();

private:
    struct Block {
        std::int32_t order;
        bool diagonal;
        // Of the first row or variable, and of a matrix of a matrix variable.
        std::int32_t place = 0;
    };

    // An entry of F0 (matrix 0), F1, ...
    struct Entry {
        std::int32_t matrix, block, row, column;
        double value;
    };

    bool next_line ();
    void need_line (const char* what);
    std::int32_t count (const char* what);
    void list (const char* what, std::size_t length, const auto& take);
    void end_of_head ();
    void blocks ();
    void entries ();
    void marked_line (std::string_view line);

    void finish ();
    void number_blocks (std::int32_t& diagonal, std::int32_t& others, const auto& length);
    void finish_dual ();
    void finish_in_x ();

    LineReader lines_;
    Draft draft_;
    Fields fields_;
    std::vector<Block> blocks_;
    std::vector<double> c_;
    std::vector<Entry> entries_;
    bool integers_begun_ = false;
    std::vector<std::int32_t> integer_;
};

// ---- Lines

static bool is_comment (std::string_view line)
{
    return line.starts_with ('*') || line.starts_with ('"');
}

bool SdpaReader::next_line ()
{
    while (lines_.next ()) {
        fields_ = Fields (lines_.line (), " \t,(){}");
        if (!fields_.empty ())
            return true;
    }
    return false;
}

void SdpaReader::need_line (const char* what)
{
    do
        if (!next_line ())
            throw syntax (text ("the file ends before ", what));
    while (is_comment (fields_.rest ()));
}

// Remarks may stand behind the numbers of the first lines.
void SdpaReader::end_of_head ()
{
    const std::string_view rest = fields_.rest ();
    if (!rest.empty () && (std::isdigit (static_cast<unsigned char> (rest[0])) || rest[0] == '+' ||
                           rest[0] == '-' || rest[0] == '.'))
        throw syntax ("one number too many: " + quote (rest));
}

std::int32_t SdpaReader::count (const char* what)
{
    need_line (what);
    const std::int32_t number = fields_.whole (0, most);
    end_of_head ();
    return number;
}

void SdpaReader::list (const char* what, std::size_t length, const auto& take)
{
    for (std::size_t k = 0; k < length; ++k) {
        if (fields_.empty () || k == 0)
            need_line (what);
        take ();
    }
    if (length > 0)
        end_of_head ();
}

// ---- Parts of the file

Problem SdpaReader::read ()
{
    with_lines_of_faults (lines_, [&] {
        const std::int32_t constraints = count ("the number of matrices");
        const std::int32_t blocks = count ("the number of blocks");
        list ("the sizes of the blocks", static_cast<std::size_t> (blocks), [&] {
            const std::int32_t size = fields_.whole (-most, most);
            if (size == 0)
                throw syntax ("a block of size 0");
            blocks_.push_back ({.order = std::abs (size), .diagonal = size <= 1});
        });
        list ("the vector c", static_cast<std::size_t> (constraints), [&] {
            c_.push_back (fields_.number ());
            if (draft_.is_huge (c_.back ()))
                throw syntax ("an entry of c beyond the bound infinity threshold");
        });
        entries ();
        finish ();
    });
    return draft_.take ();
}

void SdpaReader::entries ()
{
    while (next_line ()) {
        if (is_comment (fields_.rest ())) {
            marked_line (fields_.rest ());
            continue;
        }
        if (integers_begun_)
            throw syntax ("an entry behind *INTEGER");
        do {
            Entry entry{};
            entry.matrix = fields_.index ("a matrix", std::ssize (c_) + 1);
            entry.block = fields_.index ("a block", std::ssize (blocks_), 1);
            const Block& block = blocks_[static_cast<std::size_t> (entry.block)];
            entry.row = fields_.index ("a row", block.order, 1);
            entry.column = fields_.index ("a column", block.order, 1);
            entry.value = fields_.number ();
            if (block.diagonal && entry.row != entry.column)
                throw syntax (text ("an entry off the diagonal of the diagonal block ", entry.block + 1));
            entries_.push_back (entry);
        } while (!fields_.empty () && !is_comment (fields_.rest ()));
    }
}

// A comment, or behind *INTEGER the number of a variable.
void SdpaReader::marked_line (std::string_view line)
{
    const std::string_view word = trim (line.substr (1));
    if (same_word (word, "INTEGER"))
        integers_begun_ = true;
    else if (same_word (word, "RANK1"))
        throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED, "section *RANK1 is not supported"};
    else if (integers_begun_ && !word.empty () && std::isdigit (static_cast<unsigned char> (word[0]))) {
        Fields fields (word, " \t");
        integer_.push_back (fields.index ("a variable", std::ssize (c_), 1));
        fields.end ();
    }
}

// ---- The problem

void SdpaReader::finish ()
{
    integer_.empty () ? finish_dual () : finish_in_x ();
}

// Numbers what diagonal blocks and others become; an other block becomes length (block) items.
void SdpaReader::number_blocks (std::int32_t& diagonal, std::int32_t& others, const auto& length)
{
    for (Block& block : blocks_) {
        std::int32_t& count = block.diagonal ? diagonal : others;
        const std::int64_t items = block.diagonal ? std::int64_t{block.order} : length (block);
        block.place = count;
        if (items > most - count)
            throw syntax ("more rows of blocks than a task can hold");
        count += static_cast<std::int32_t> (items);
    }
}

void SdpaReader::finish_dual ()
{
    Problem& problem = draft_.problem;
    const auto rows = static_cast<std::int32_t> (c_.size ());
    std::int32_t scalars = 0, matrices = 0;
    std::int64_t length = 0;
    std::vector<std::int32_t> orders;
    number_blocks (scalars, matrices, [&] (const Block& block) {
        orders.push_back (block.order);
        length += packed_length (block.order);
        return length > most ? std::int64_t{most} + 1 : std::int64_t{1};
    });
    check_declared (scalars, lines_.number ());

    VectorEntries cost;
    MatrixEntries matrix;
    TermEntries objective, constraint;
    for (const Entry& entry : std::exchange (entries_, {})) {
        const Block& block = blocks_[static_cast<std::size_t> (entry.block)];
        const std::int32_t row = entry.matrix - 1;
        if (block.diagonal && row < 0) {
            cost.add (block.place + entry.row, entry.value);
        } else if (block.diagonal) {
            matrix.add (row, block.place + entry.row, entry.value);
        } else {
            if (row >= 0)
                constraint.item.push_back (row);
            (row < 0 ? objective : constraint).add (block.place, entry.row, entry.column, entry.value);
        }
    }

    problem.sense = KLV_SENSE_MAXIMIZE;
    problem.append_variables (scalars);
    std::ranges::fill (problem.variable.key, std::uint8_t{KLV_BK_LO});
    std::ranges::fill (problem.variable.lower, 0.0);
    problem.append_constraints (rows);
    std::ranges::fill (problem.constraint.key, std::uint8_t{KLV_BK_FX});
    problem.constraint.lower = problem.constraint.upper = c_;
    cost.put (problem.cost, "F0");
    matrix.put (problem.matrix, rows, "a diagonal block");
    problem.semidefinite.append (orders);
    problem.semidefinite.objective = objective.terms ("F0");
    problem.semidefinite.constraint = constraint.terms ("a matrix");
}

void SdpaReader::finish_in_x ()
{
    Problem& problem = draft_.problem;
    const auto variables = static_cast<std::int32_t> (c_.size ());
    std::int32_t rows = 0, expressions = 0;
    number_blocks (rows, expressions, [] (const Block& block) { return packed_length (block.order); });
    check_declared (std::int64_t{rows} + expressions, lines_.number ());

    VectorEntries lower, constant;
    MatrixEntries matrix, affine;
    for (const Entry& entry : std::exchange (entries_, {})) {
        const Block& block = blocks_[static_cast<std::size_t> (entry.block)];
        const std::int32_t variable = entry.matrix - 1;
        const double value = entry.row == entry.column ? entry.value : entry.value * std::numbers::sqrt2;
        const std::int32_t place =
            block.place + (block.diagonal ? entry.row : packed_place (block.order, entry.row, entry.column));
        if (variable < 0 && block.diagonal)
            lower.add (place, draft_.lower_bound (value, text ("block ", entry.block + 1)));
        else if (variable < 0)
            constant.add (place, 0 - value);
        else
            (block.diagonal ? matrix : affine).add (place, variable, value);
    }

    problem.append_variables (variables);
    problem.cost = std::move (c_);
    for (const std::int32_t j : integer_)
        if (std::exchange (problem.integer[static_cast<std::size_t> (j)], KLV_VAR_INTEGER) == KLV_VAR_INTEGER)
            throw syntax (text ("*INTEGER has the variable ", j + 1, " twice"));
    problem.integers = static_cast<std::int32_t> (integer_.size ());
    problem.append_constraints (rows);
    std::ranges::fill (problem.constraint.lower, 0.0);
    lower.put (problem.constraint.lower, "F0");
    for (std::size_t i = 0; i < problem.constraint.key.size (); ++i)
        problem.constraint.key[i] = key_of (problem.constraint.lower[i], infinity);
    matrix.put (problem.matrix, rows, "a diagonal block");
    problem.affine.append (expressions, variables);
    constant.put (problem.affine.g, "F0");
    affine.put (problem.affine.f, expressions, "a matrix");
    for (const Block& block : blocks_) {
        if (block.diagonal)
            continue;
        const auto size = static_cast<std::int32_t> (packed_length (block.order));
        problem.domain.append (KLV_DOMAIN_SEMIDEFINITE_CONE, size, {});
        problem.affine_constraint.append (problem.domain.count () - 1, block.place, size, {});
    }
}

Problem read_sdpa (Task& task, const std::string& path, Pacer& pacer)
{
    return SdpaReader (task, path, pacer).read ();
}

}
