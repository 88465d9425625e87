#include "kalvo/model/affine.h"

#include "kalvo/model/room.h"

#include <numeric>

namespace klv {

void AffineExpressions::append (std::int32_t more, std::int32_t variables)
{
    make_room (g, static_cast<std::size_t> (more));
    if (more > 0 && f.columns () < variables)
        f.append_columns (variables - f.columns ());
    g.resize (g.size () + static_cast<std::size_t> (more), 0.0);
}

void AffineExpressions::cover (std::int32_t variables)
{
    if (count () > 0 && f.columns () < variables)
        f.append_columns (variables - f.columns ());
}

void AffineConstraints::append (std::int32_t new_domain, std::int32_t first, std::int32_t size,
                                std::span<const double> new_b)
{
    const auto before = expression.size (), more = static_cast<std::size_t> (size);
    make_room (domain, 1);
    make_room (end, 1);
    make_room (expression, more);
    make_room (b, more);
    domain.push_back (new_domain);
    expression.resize (before + more);
    std::iota (expression.begin () + static_cast<std::ptrdiff_t> (before), expression.end (), first);
    b.insert (b.end (), new_b.begin (), new_b.end ());
    b.resize (before + more, 0.0);
    end.push_back (rows ());
}

RowsOfExpressions::RowsOfExpressions (const AffineConstraints& constraints, std::int32_t expressions)
    : start_ (static_cast<std::size_t> (expressions) + 1, 0), row_ (constraints.expression.size ())
{
    for (const std::int32_t expression : constraints.expression)
        ++start_[static_cast<std::size_t> (expression)];
    std::inclusive_scan (start_.begin (), start_.end (), start_.begin ());
    for (std::int32_t row = constraints.rows (); row-- > 0;)    // each start moves from its end to its begin
    {
        const auto expression =
            static_cast<std::size_t> (constraints.expression[static_cast<std::size_t> (row)]);
        row_[static_cast<std::size_t> (--start_[expression])] = row;
    }
}

std::span<const std::int32_t> RowsOfExpressions::operator() (std::int32_t expression) const
{
    const auto place = static_cast<std::size_t> (expression);
    return std::span (row_).subspan (static_cast<std::size_t> (start_[place]),
                                     static_cast<std::size_t> (start_[place + 1] - start_[place]));
}

}
