// QUADOBJ, QMATRIX, QSECTION and QCMATRIX of an MPS file.
#include "kalvo/files/mps/reader.h"
#include "kalvo/files/text/numbers.h"

namespace klv {

void MpsReader::begin_quadratic (std::string_view row_name)
{
    const bool of_row = section_ == MpsSection::qcmatrix;
    if (of_row && row_name.empty ())
        throw syntax ("QCMATRIX without the row that it belongs to");
    const std::int32_t row = row_name.empty () ? objective_ : known_row (row_name);
    const bool of_objective = row == objective_;
    if (of_row && of_objective)
        throw syntax ("QCMATRIX of the objective " + quote (row_name));
    bool& seen = of_objective ? objective_is_quadratic_ : rows_[static_cast<std::size_t> (row)].is_quadratic;
    if (seen)
        throw syntax ("a second section of quadratic terms of " +
                      (of_objective ? "the objective" : "row " + quote (row_name)));
    seen = true;
    quadratic_item_ = of_objective ? QuadraticTerm::objective : static_cast<std::int32_t> (place_of (row));
    if (section_ == MpsSection::qsection)
        draft_.note (Tradition::quadratic_section, row_name);
}

void MpsReader::quadratic_line (const MpsFields& fields)
{
    const bool both_triangles = section_ == MpsSection::qmatrix || section_ == MpsSection::qcmatrix;
    const double factor = mps_factor (section_ != MpsSection::qcmatrix, {});
    const std::int32_t first = known_column (fields.name);
    for (int k = 0; k < 2 && !fields.item[k].empty (); ++k)
        (both_triangles ? both_triangles_ : triangles_)
            .push_back ({quadratic_item_, first, known_column (fields.item[k]),
                         entry_of (parse_finite (fields.number[k]), factor), lines_.number ()});
}

FileFault MpsReader::quadratic_fault (const char* what, const QuadraticTerm& term) const
{
    FileFault fault = syntax (what + (" of columns " + quote (draft_.column_names[term.first])) + " and " +
                              quote (draft_.column_names[term.second]));
    fault.line = term.line;
    return fault;
}

// Leaves one of the two equal entries of each pair of columns.
void MpsReader::merge_triangles ()
{
    sort (both_triangles_);
    for (auto at = both_triangles_.begin (), end = both_triangles_.end (); at != end;) {
        const QuadraticTerm& term = *at;
        triangles_.push_back (term);
        const auto other = ++at;
        if (term.first == term.second)
            continue;
        if (other == end || other->place () != term.place () || other->first == term.first)
            throw quadratic_fault ("a full matrix is symmetric, but there is no second entry", term);
        if (!same_bits (other->value, term.value))
            throw quadratic_fault ("a full matrix is symmetric, but there are two different entries", *other);
        ++at;
    }
    both_triangles_ = {};
}

void MpsReader::finish_quadratic ()
{
    merge_triangles ();
    sort (triangles_);
    const auto same_place = [] (const QuadraticTerm& a, const QuadraticTerm& b) {
        return a.place () == b.place ();
    };
    if (const auto twice = std::ranges::adjacent_find (triangles_, same_place); twice != triangles_.end ())
        throw quadratic_fault ("a second entry", *std::next (twice));
    store (draft_.problem, triangles_);
}

}
