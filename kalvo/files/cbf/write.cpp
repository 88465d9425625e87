// Writes CBF files: bounds other than 0, and second bounds, become rows; cones of variables that do not stand one after another, or
// have bounds, become rows too.
#include "kalvo/files/cbf/cbf.h"
#include "kalvo/files/text/numbers.h"
#include "kalvo/files/text/text_writer.h"
#include "kalvo/model/text.h"

#include <algorithm>
#include <concepts>
#include <limits>
#include <span>
#include <vector>

namespace klv {

// ---- What CBF cannot hold

static std::string named_item (const char* kind, const Names& names, std::int32_t count)
{
    for (std::int32_t i = 0; i < count && names.any (); ++i)
        if (!names.get (i).empty ())
            return text ("names, as of ", kind, " ", i + 1, " ", quote (names.get (i)));
    return {};
}

std::string unfit_for_cbf (const Problem& problem)
{
    for (const std::string* name : {&problem.name, &problem.objective_name})
        if (!name->empty ())
            return "names, as " + quote (*name);
    for (const std::string& item :
         {named_item ("variable", problem.variable_name, problem.variables ()),
          named_item ("constraint", problem.constraint_name, problem.constraints ()),
          named_item ("affine conic constraint", problem.affine_constraint_name,
                      problem.affine_constraint.count ()),
          named_item ("cone", problem.cone_name, problem.cone.count ()),
          named_item ("semidefinite variable", problem.semidefinite_name, problem.semidefinite.count ())})
        if (!item.empty ())
            return item;
    const AffineConstraints& constraints = problem.affine_constraint;
    for (std::size_t row = 0; row < constraints.expression.size (); ++row) {
        const double g = problem.affine.g[static_cast<std::size_t> (constraints.expression[row])],
                     b = constraints.b[row];
        if (static_cast<long double> (g) - b != static_cast<long double> (g - b))
            return text ("row ", row + 1, " of the affine conic constraints, where ", g, " - ", b,
                         " is no number of double precision");
    }
    return {};
}

// ---- The writer

class CbfWriter {
public:
    CbfWriter (const Problem& problem, OutputFile& file)
        : problem_ (problem),
          file_ (file),
          rows_of_expression_ (problem.affine_constraint, problem.affine.count ())
    {}

    void write ();

private:
    // Variables or rows in one domain; the members of a linear domain may grow.
    struct Part {
        KLVdomaintype domain;
        std::int32_t size;
        std::size_t exponents = 0;    // which ones of its kind
    };

    // A row that is a constraint's or a variable's terms minus one of their bounds.
    struct BoundRow {
        std::int32_t item;
        double bound;
    };

    void lay_out_variables ();
    void lay_out_rows ();
    bool can_stand (std::int32_t cone) const;
    Part part_of_cone (std::int32_t cone);
    Part conic_part (KLVdomaintype domain, std::int32_t size, std::span<const double> exponents);
    void add_row (KLVdomaintype domain);

    void put (std::string_view text) { file_.put (text); }
    void put (double number) { file_.put (NumberText (number)); }
    void put (std::integral auto number) { file_.put (text (number)); }
    void line (const auto& first, const auto&... more)
    {
        put (first);
        ((file_.put (" "), put (more)), ...);
        file_.put ("\n");
    }
    void exponents (std::string_view word, const std::vector<std::vector<double>>& lists);
    void parts (std::string_view word, const std::vector<Part>& parts);
    void coordinates (std::string_view word, const auto& for_each);
    void terms ();

    // Calls visit (row) for each row of the file that has the terms of a constraint or an expression.
    void rows_of_constraint (std::int32_t i, const auto& visit) const;
    void rows_of_expression (std::int32_t expression, const auto& visit) const;

    const Problem& problem_;
    OutputFile& file_;
    const RowsOfExpressions rows_of_expression_;
    int version_ = 1;
    std::vector<std::vector<double>> primal_exponents_, dual_exponents_;
    std::vector<Part> variable_parts_, row_parts_;
    std::int32_t rows_ = 0;
    std::vector<BoundRow> sides_;    // rows 0 ...: the first bounds of constraints
    std::vector<std::int32_t>
        second_;    // of each constraint: the row of its upper bound beside a lower one, or -1
    std::vector<BoundRow> second_sides_;    // the rows behind
    std::vector<BoundRow> bounds_;          // the rows behind: bounds of variables
    std::vector<std::int32_t> members_;     // the rows behind: members of cones
    std::int32_t first_bound_ = 0, first_member_ = 0, first_affine_ = 0;
};

// ---- Variables and rows of the file

CbfWriter::Part CbfWriter::conic_part (KLVdomaintype domain, std::int32_t size,
                                       std::span<const double> exponents)
{
    version_ = std::max (version_, cbf_cones[static_cast<std::size_t> (domain)].version);
    Part part{domain, size};
    if (!exponents.empty ()) {
        auto& lists = domain == KLV_DOMAIN_PRIMAL_POWER_CONE ? primal_exponents_ : dual_exponents_;
        part.exponents = lists.size ();
        lists.emplace_back (exponents.begin (), exponents.end ());
    }
    return part;
}

CbfWriter::Part CbfWriter::part_of_cone (std::int32_t cone)
{
    const auto k = static_cast<std::size_t> (cone);
    const KLVdomaintype domain = domain_of_cone[problem_.cone.type[k]];
    const double exponents[] = {problem_.cone.parameter[k], 1 - problem_.cone.parameter[k]};
    const bool weighted = domain_rows[static_cast<std::size_t> (domain)].has_exponents;
    return conic_part (domain, static_cast<std::int32_t> (problem_.cone.members (cone).size ()),
                       std::span (exponents).first (weighted ? 2 : 0));
}

// Whether a cone can stand in VAR.
bool CbfWriter::can_stand (std::int32_t cone) const
{
    const auto members = problem_.cone.members (cone);
    for (std::size_t k = 0; k < members.size (); ++k)
        if (members[k] != members[0] + static_cast<std::int32_t> (k) ||
            problem_.variable.key[static_cast<std::size_t> (members[k])] != KLV_BK_FR)
            return false;
    return !members.empty ();
}

static void grow (auto& parts, const auto& part)
{
    if (!parts.empty () && parts.back ().domain == part.domain && is_linear (part.domain))
        parts.back ().size += part.size;
    else
        parts.push_back (part);
}

void CbfWriter::lay_out_variables ()
{
    const Bounds& bounds = problem_.variable;
    const auto cone_of = [&] (std::int32_t j) {
        const auto& cones = problem_.cone.cone_of;
        return static_cast<std::size_t> (j) < cones.size () ? cones[static_cast<std::size_t> (j)] : -1;
    };
    for (std::int32_t j = 0; j < problem_.variables ();) {
        if (const std::int32_t cone = cone_of (j); cone >= 0 && can_stand (cone)) {
            const Part part = part_of_cone (cone);
            grow (variable_parts_, part);
            j += part.size;
            continue;
        }
        const auto item = static_cast<std::size_t> (j++);
        const bool lower = is_plain_zero (bounds.lower[item]), upper = is_plain_zero (bounds.upper[item]);
        const std::uint8_t key = bounds.key[item];
        const bool stands = key == KLV_BK_UP ? upper : lower;
        const KLVdomaintype domain = !stands            ? KLV_DOMAIN_FREE
                                     : key == KLV_BK_FX ? KLV_DOMAIN_ZERO
                                     : key == KLV_BK_UP ? KLV_DOMAIN_NONPOSITIVE
                                                        : KLV_DOMAIN_NONNEGATIVE;
        grow (variable_parts_, Part{domain, 1});
    }
}

void CbfWriter::add_row (KLVdomaintype domain)
{
    grow (row_parts_, Part{domain, 1});
    ++rows_;
}

void CbfWriter::lay_out_rows ()
{
    const auto domain_of = [] (std::uint8_t key) {
        return key == KLV_BK_FR   ? KLV_DOMAIN_FREE
               : key == KLV_BK_FX ? KLV_DOMAIN_ZERO
               : key == KLV_BK_UP ? KLV_DOMAIN_NONPOSITIVE
                                  : KLV_DOMAIN_NONNEGATIVE;
    };
    const Bounds &sides = problem_.constraint, &bounds = problem_.variable;
    for (std::int32_t i = 0; i < sides.count (); ++i) {
        const auto item = static_cast<std::size_t> (i);
        const std::uint8_t key = sides.key[item];
        sides_.push_back ({i, key == KLV_BK_FR   ? 0
                              : key == KLV_BK_UP ? sides.upper[item]
                                                 : sides.lower[item]});
        add_row (domain_of (key));
    }
    second_.assign (sides.key.size (), -1);
    for (std::int32_t i = 0; i < sides.count (); ++i)
        if (const auto item = static_cast<std::size_t> (i); sides.key[item] == KLV_BK_RA) {
            second_[item] = rows_;
            second_sides_.push_back ({i, sides.upper[item]});
            add_row (KLV_DOMAIN_NONPOSITIVE);
        }
    first_bound_ = rows_;
    for (std::int32_t j = 0; j < bounds.count (); ++j) {
        const auto item = static_cast<std::size_t> (j);
        const std::uint8_t key = bounds.key[item];
        if (key != KLV_BK_FR && key != KLV_BK_UP && !is_plain_zero (bounds.lower[item])) {
            bounds_.push_back ({j, bounds.lower[item]});
            add_row (domain_of (key));
        }
        if (key == KLV_BK_RA || (key == KLV_BK_UP && !is_plain_zero (bounds.upper[item]))) {
            bounds_.push_back ({j, bounds.upper[item]});
            add_row (KLV_DOMAIN_NONPOSITIVE);
        }
    }
    first_member_ = rows_;
    for (std::int32_t cone = 0; cone < problem_.cone.count (); ++cone)
        if (!can_stand (cone)) {
            const auto members = problem_.cone.members (cone);
            members_.insert (members_.end (), members.begin (), members.end ());
            grow (row_parts_, part_of_cone (cone));
            rows_ += static_cast<std::int32_t> (members.size ());
        }
    first_affine_ = rows_;
    for (const std::int32_t which : problem_.affine_constraint.domain) {
        const auto domain = static_cast<std::size_t> (which);
        const auto type = static_cast<KLVdomaintype> (problem_.domain.type[domain]);
        grow (row_parts_, conic_part (type, problem_.domain.size[domain], problem_.domain.exponents (which)));
        rows_ += problem_.domain.size[domain];
    }
}

void CbfWriter::rows_of_constraint (std::int32_t i, const auto& visit) const
{
    visit (i);
    if (const std::int32_t second = second_[static_cast<std::size_t> (i)]; second >= 0)
        visit (second);
}

void CbfWriter::rows_of_expression (std::int32_t expression, const auto& visit) const
{
    for (const std::int32_t row : rows_of_expression_ (expression))
        visit (first_affine_ + row);
}

// ---- Sections

void CbfWriter::exponents (std::string_view word, const std::vector<std::vector<double>>& lists)
{
    std::size_t total = 0;
    for (const std::vector<double>& list : lists)
        total += list.size ();
    if (lists.empty ())
        return;
    line (word);
    line (lists.size (), total);
    for (const std::vector<double>& list : lists) {
        line (list.size ());
        for (const double exponent : list)
            line (exponent);
    }
    line ("");
}

void CbfWriter::parts (std::string_view word, const std::vector<Part>& parts)
{
    if (parts.empty ())
        return;
    std::int64_t size = 0;
    for (const Part& part : parts)
        size += part.size;
    line (word);
    line (size, parts.size ());
    for (const Part& part : parts) {
        const std::string_view cone = cbf_cones[static_cast<std::size_t> (part.domain)].word;
        if (domain_rows[static_cast<std::size_t> (part.domain)].has_exponents)
            line (text ("@", part.exponents, ":", cone), part.size);
        else
            line (cone, part.size);
    }
    line ("");
}

// for_each (visit) is called twice: to count the entries, and to write them.
void CbfWriter::coordinates (std::string_view word, const auto& for_each)
{
    std::int64_t count = 0;
    for_each ([&] (const auto&...) { ++count; });
    if (count == 0)
        return;
    line (word);
    line (count);
    for_each ([&] (const auto&... fields) { line (fields...); });
    line ("");
}

void CbfWriter::terms ()
{
    const SemidefiniteVariables& matrices = problem_.semidefinite;
    coordinates ("FCOORD", [&] (const auto& visit) {
        const auto visit_terms = [&] (const SymmetricTerms& terms, const auto& for_each_row) {
            for (std::size_t k = 0; k < terms.value.size (); ++k)
                for_each_row (terms.item[k], [&] (std::int32_t row) {
                    visit (row, terms.variable[k], terms.row[k], terms.column[k], terms.value[k]);
                });
        };
        visit_terms (matrices.constraint, [&] (auto i, const auto& each) { rows_of_constraint (i, each); });
        visit_terms (matrices.expression, [&] (auto i, const auto& each) { rows_of_expression (i, each); });
    });
}

void CbfWriter::write ()
{
    lay_out_variables ();
    lay_out_rows ();
    const SemidefiniteVariables& matrices = problem_.semidefinite;
    const AffineConstraints& constraints = problem_.affine_constraint;
    const auto one_each = [] (const auto& list) {
        return [&] (const auto& visit) { std::ranges::for_each (list, visit); };
    };
    line ("VER");
    line (version_);
    line ("");
    exponents ("POWCONES", primal_exponents_);
    exponents ("POW*CONES", dual_exponents_);
    line ("OBJSENSE");
    line (problem_.sense == KLV_SENSE_MAXIMIZE ? "MAX" : "MIN");
    line ("");
    coordinates ("PSDVAR", one_each (matrices.order));
    parts ("VAR", variable_parts_);
    coordinates ("INT", [&] (const auto& visit) {
        for (std::int32_t j = 0; j < problem_.variables (); ++j)
            if (problem_.integer[static_cast<std::size_t> (j)] == KLV_VAR_INTEGER)
                visit (j);
    });
    parts ("CON", row_parts_);
    coordinates ("OBJFCOORD", [&] (const auto& visit) {
        const SymmetricTerms& terms = matrices.objective;
        for (std::size_t k = 0; k < terms.value.size (); ++k)
            visit (terms.variable[k], terms.row[k], terms.column[k], terms.value[k]);
    });
    coordinates ("OBJACOORD", [&] (const auto& visit) {
        for (std::size_t j = 0; j < problem_.cost.size (); ++j)
            if (!is_plain_zero (problem_.cost[j]))
                visit (j, problem_.cost[j]);
    });
    if (!is_plain_zero (problem_.constant)) {
        line ("OBJBCOORD");
        line (problem_.constant);
        line ("");
    }
    terms ();
    coordinates ("ACOORD", [&] (const auto& visit) {
        for (std::int32_t j = 0; j < problem_.variables (); ++j) {
            const Column column = problem_.matrix.column (j);
            for (std::size_t k = 0; k < column.rows.size (); ++k)
                rows_of_constraint (column.rows[k], [&] (auto row) { visit (row, j, column.values[k]); });
            if (problem_.affine.count () == 0)
                continue;
            const Column affine = problem_.affine.f.column (j);
            for (std::size_t k = 0; k < affine.rows.size (); ++k)
                rows_of_expression (affine.rows[k], [&] (auto row) { visit (row, j, affine.values[k]); });
        }
        for (std::size_t k = 0; k < bounds_.size (); ++k)
            visit (first_bound_ + static_cast<std::int32_t> (k), bounds_[k].item, 1);
        for (std::size_t k = 0; k < members_.size (); ++k)
            visit (first_member_ + static_cast<std::int32_t> (k), members_[k], 1);
    });
    coordinates ("BCOORD", [&] (const auto& visit) {
        std::int32_t row = 0;
        for (const auto* list : {&sides_, &second_sides_, &bounds_})
            for (const BoundRow& side : *list) {
                if (!is_plain_zero (side.bound))
                    visit (row, -side.bound);
                ++row;
            }
        for (std::size_t k = 0; k < constraints.expression.size (); ++k) {
            const double g = problem_.affine.g[static_cast<std::size_t> (constraints.expression[k])];
            if (const double constant = g - constraints.b[k]; !is_plain_zero (constant))
                visit (first_affine_ + static_cast<std::int32_t> (k), constant);
        }
    });
}

void write_cbf (Task& task, OutputFile& file)
{
    CbfWriter (task.problem (), file).write ();
    warn_of_huge_bounds (task);
}

}
