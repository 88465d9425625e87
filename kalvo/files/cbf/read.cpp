// The sections of a CBF file.
#include "kalvo/files/cbf/reader.h"
#include "kalvo/files/text/words.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <limits>
#include <numbers>

namespace klv {

constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max ();

struct CbfSection {
    std::string_view word;
    bool coordinates;
    void (CbfReader::*read) ();

    static const std::array<CbfSection, 17> all;
};

constexpr std::array<CbfSection, 17> CbfSection::all{{
    {"VER", false, &CbfReader::version},
    {"OBJSENSE", false, &CbfReader::sense},
    {"POWCONES", false, &CbfReader::primal_power_cones},
    {"POW*CONES", false, &CbfReader::dual_power_cones},
    {"VAR", false, &CbfReader::variables},
    {"INT", false, &CbfReader::integers},
    {"PSDVAR", false, &CbfReader::matrix_variables},
    {"CON", false, &CbfReader::rows},
    {"PSDCON", false, &CbfReader::matrix_rows},
    {"OBJFCOORD", true, &CbfReader::objective_matrices},
    {"OBJACOORD", true, &CbfReader::objective_costs},
    {"OBJBCOORD", true, &CbfReader::objective_constant},
    {"FCOORD", true, &CbfReader::row_matrices},
    {"ACOORD", true, &CbfReader::row_entries},
    {"BCOORD", true, &CbfReader::row_constants},
    {"HCOORD", true, &CbfReader::matrix_row_entries},
    {"DCOORD", true, &CbfReader::matrix_row_constants},
}};

// ---- Lines

bool CbfReader::next_line ()
{
    while (lines_.next ()) {
        const std::string_view line = lines_.line ();
        fields_ = Fields (line.substr (0, line.find ('#')), " \t");
        if (!fields_.empty ())
            return true;
    }
    return false;
}

void CbfReader::need_line ()
{
    if (!next_line ())
        throw syntax (text ("the file ends within section ", section_));
}

std::int32_t CbfReader::count_line ()
{
    need_line ();
    const std::int32_t count = fields_.whole (0, most);
    fields_.end ();
    return count;
}

// ---- Sections

Problem CbfReader::read ()
{
    with_lines_of_faults (lines_, [&] {
        while (next_line ())
            section ();
        finish ();
    });
    return draft_.take ();
}

void CbfReader::section ()
{
    const std::string_view word = fields_.word ();
    if (word == "CHANGE")
        throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED,
                        "section CHANGE is not supported: the file holds several problems"};
    const auto* section = std::ranges::find (CbfSection::all, word, &CbfSection::word);
    if (section == CbfSection::all.end ())
        throw syntax ("unknown section " + quote (word));
    fields_.end ();
    section_ = section->word;
    const auto bit = 1U << static_cast<unsigned> (section - CbfSection::all.begin ());
    if (seen_ & bit)
        throw syntax (text ("section ", section_, " comes twice"));
    if (!(seen_ & 1U) && bit != 1)
        throw syntax (text ("section ", section_, " comes without VER before it"));
    seen_ |= bit;
    if (section->coordinates)
        settle ();
    else if (settled_)
        throw syntax (text ("section ", section_, " belongs before the sections of coordinates"));
    (this->*section->read) ();
}

void CbfReader::version ()
{
    const std::int32_t version = count_line ();
    if (version < 1 || version > cbf_version)
        throw FileFault{KLV_RES_FILE_SECTION_UNSUPPORTED,
                        text ("version ", version, " of CBF is not supported: 1 to ", cbf_version, " are")};
}

void CbfReader::sense ()
{
    need_line ();
    const std::string_view word = fields_.word ();
    if (word != "MIN" && word != "MAX")
        throw syntax (quote (word) + " is no objective sense: MIN or MAX is needed");
    draft_.problem.sense = word == "MAX" ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
    fields_.end ();
}

// ---- Cones

void CbfReader::power_cones (Exponents& exponents)
{
    need_line ();
    const std::int32_t cones = fields_.whole (0, most), total = fields_.whole (0, most);
    fields_.end ();
    std::int32_t left = total;
    for (std::int32_t k = 0; k < cones; ++k) {
        const std::int32_t count = count_line ();
        if (count > left)
            throw syntax (text ("more exponents than the ", total, " of ", section_));
        left -= count;
        exponents.emplace_back ();
        for (std::int32_t i = 0; i < count; ++i) {
            need_line ();
            exponents.back ().push_back (fields_.number ());
            fields_.end ();
        }
    }
    if (left > 0)
        throw syntax (text ("the cones of ", section_, " have ", total - left, " exponents, not ", total));
}

CbfReader::Part CbfReader::cone (std::int32_t begin)
{
    const std::string_view given = fields_.word ();
    std::string_view word = given;
    std::int32_t power = -1;
    if (given.starts_with ('@')) {
        Fields parts (given.substr (1), ":");
        power = parts.whole (0, most);
        word = parts.rest ();
    }
    const auto* cone = std::ranges::find (cbf_cones, word, &CbfCone::word);
    const bool known = cone != cbf_cones.end ();
    if (!known || domain_rows[static_cast<std::size_t> (cone->domain)].has_exponents != (power >= 0))
        throw syntax ("unknown cone " + quote (given));
    Part part{.domain = cone->domain, .begin = begin, .size = fields_.whole (0, most)};
    fields_.end ();
    if (power >= 0) {
        const bool primal = part.domain == KLV_DOMAIN_PRIMAL_POWER_CONE;
        const Exponents& exponents = primal ? primal_exponents_ : dual_exponents_;
        if (static_cast<std::size_t> (power) >= exponents.size ())
            throw syntax (
                text (primal ? "POWCONES" : "POW*CONES", " before it has no exponents for ", given));
        part.exponents = exponents[static_cast<std::size_t> (power)];
    }
    if (const auto fault = domain_fault (part.domain, part.size, part.exponents))
        throw syntax (text ("a cone ", given, " of size ", part.size, " ", *fault));
    return part;
}

void CbfReader::vector (Vector& items)
{
    need_line ();
    items.size = fields_.whole (0, most);
    const std::int32_t cones = fields_.whole (0, most);
    fields_.end ();
    std::int32_t begin = 0;
    for (std::int32_t k = 0; k < cones; ++k) {
        need_line ();
        const Part part = cone (begin);
        if (part.size > items.size - begin)
            throw syntax (text ("the cones of ", section_, " have more than its ", items.size, " members"));
        begin += part.size;
        if (part.size > 0 || !is_linear (part.domain))
            items.parts.push_back (part);
    }
    if (begin < items.size)
        throw syntax (text ("the cones of ", section_, " have ", begin, " members, not ", items.size));
}

void CbfReader::integers ()
{
    for (std::int32_t left = count_line (); left > 0; --left) {
        need_line ();
        integer_.push_back (variable_index ());
        fields_.end ();
    }
}

// ---- Matrices

void CbfReader::matrix_variables ()
{
    std::int64_t entries = 0;
    for (std::int32_t left = count_line (); left > 0; --left) {
        orders_.push_back (count_line ());
        entries += packed_length (orders_.back ());
        if (entries > most)
            throw syntax ("more entries of matrices than a task can hold");
    }
}

void CbfReader::matrix_rows ()
{
    for (std::int32_t left = count_line (); left > 0; --left) {
        const std::int32_t order = count_line ();
        if (packed_length (order) > most)
            throw syntax ("more entries of a matrix than a task can hold");
        matrix_rows_.push_back ({.domain = KLV_DOMAIN_SEMIDEFINITE_CONE,
                                 .begin = 0,
                                 .size = static_cast<std::int32_t> (packed_length (order)),
                                 .order = order});
    }
}

// ---- Coordinates

void CbfReader::coordinates (const auto& line)
{
    for (std::int32_t left = count_line (); left > 0; --left) {
        need_line ();
        line ();
        fields_.end ();
    }
}

const CbfReader::Part& CbfReader::part_of_row (std::int32_t row)
{
    const auto holds = [=] (const Part& part) { return row >= part.begin && row - part.begin < part.size; };
    if (!holds (row_.parts[last_part_])) {
        const auto behind = std::ranges::upper_bound (row_.parts, row, {}, &Part::begin);
        last_part_ = static_cast<std::size_t> (behind - row_.parts.begin ()) - 1;
    }
    return row_.parts[last_part_];
}

const CbfReader::Part& CbfReader::matrix_row ()
{
    const std::int32_t which = fields_.index ("a matrix of PSDCON", std::ssize (matrix_rows_));
    return matrix_rows_[static_cast<std::size_t> (which)];
}

void CbfReader::matrix_entry (TermEntries& to)
{
    const std::int32_t variable = fields_.index ("a semidefinite variable", std::ssize (orders_));
    const std::int32_t order = orders_[static_cast<std::size_t> (variable)];
    const std::int32_t row = fields_.index ("a row", order), column = fields_.index ("a column", order);
    to.add (variable, row, column, fields_.number ());
}

void CbfReader::matrix_row_entry (const Part& part, const auto& put)
{
    const std::int32_t row = fields_.index ("a row", part.order),
                       column = fields_.index ("a column", part.order);
    const double value = fields_.number ();
    put (part.place + packed_place (part.order, row, column),
         row == column ? value : value * std::numbers::sqrt2);
}

void CbfReader::objective_matrices ()
{
    coordinates ([&] { matrix_entry (objective_terms_); });
}

void CbfReader::objective_costs ()
{
    coordinates ([&] {
        const std::int32_t variable = variable_index ();
        cost_.add (variable, fields_.number ());
    });
}

void CbfReader::objective_constant ()
{
    need_line ();
    draft_.problem.constant = fields_.number ();
    fields_.end ();
}

void CbfReader::row_matrices ()
{
    coordinates ([&] {
        const std::int32_t row = fields_.index ("a row of CON", row_.size);
        const Part& part = part_of_row (row);
        TermEntries& terms = is_linear (part.domain) ? constraint_terms_ : expression_terms_;
        terms.item.push_back (part.place + row - part.begin);
        matrix_entry (terms);
    });
}

void CbfReader::row_entries ()
{
    coordinates ([&] {
        const std::int32_t row = fields_.index ("a row of CON", row_.size), variable = variable_index ();
        const Part& part = part_of_row (row);
        (is_linear (part.domain) ? linear_ : affine_)
            .add (part.place + row - part.begin, variable, fields_.number ());
    });
}

// The bound that a constant gives to the terms of its row.
double CbfReader::bound (KLVdomaintype domain, std::int32_t row, double constant)
{
    const double value = 0 - constant;
    const std::string name = text ("row ", row);
    if (domain == KLV_DOMAIN_NONNEGATIVE)
        return draft_.lower_bound (value, name);
    if (domain == KLV_DOMAIN_NONPOSITIVE)
        return draft_.upper_bound (value, name);
    if (domain == KLV_DOMAIN_ZERO && draft_.is_huge (value))
        throw syntax (name + " is fixed at a value beyond the bound infinity threshold");
    return value;
}

void CbfReader::row_constants ()
{
    coordinates ([&] {
        const std::int32_t row = fields_.index ("a row of CON", row_.size);
        const double constant = fields_.number ();
        const Part& part = part_of_row (row);
        const std::int32_t place = part.place + row - part.begin;
        if (is_linear (part.domain))
            bound_.add (place, bound (part.domain, row, constant));
        else
            constant_.add (place, constant);
    });
}

void CbfReader::matrix_row_entries ()
{
    coordinates ([&] {
        const Part& part = matrix_row ();
        const std::int32_t variable = variable_index ();
        matrix_row_entry (part,
                          [&] (std::int32_t place, double value) { affine_.add (place, variable, value); });
    });
}

void CbfReader::matrix_row_constants ()
{
    coordinates ([&] {
        matrix_row_entry (matrix_row (),
                          [&] (std::int32_t place, double value) { constant_.add (place, value); });
    });
}

Problem read_cbf (Task& task, const std::string& path, Pacer& pacer)
{
    return CbfReader (task, path, pacer).read ();
}

}
