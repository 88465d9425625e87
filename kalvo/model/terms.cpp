#include "kalvo/model/terms.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace klv {

struct Term {
    std::int32_t item, variable, column, row;
    std::size_t position;    // among the given ones

    auto place () const { return std::tie (item, variable, column, row); }
    bool operator< (const Term& other) const
    {
        return std::tuple_cat (place (), std::tie (position)) <
               std::tuple_cat (other.place (), std::tie (other.position));
    }
};

static Term term (const GivenTerms& given, std::size_t k)
{
    return {.item = given.item.empty () ? 0 : given.item[k],
            .variable = given.variable.empty () ? 0 : given.variable[k],
            .column = std::min (given.row[k], given.column[k]),
            .row = std::max (given.row[k], given.column[k]),
            .position = k};
}

static bool is_in_order (const GivenTerms& given)
{
    for (std::size_t k = 1; k < given.value.size (); ++k)
        if (!(term (given, k - 1).place () < term (given, k).place ()))
            return false;
    return true;
}

static SymmetricTerms with_room (const GivenTerms& given)
{
    const std::size_t count = given.value.size ();
    SymmetricTerms terms;
    terms.item.reserve (given.item.size ());
    terms.variable.reserve (given.variable.size ());
    terms.row.reserve (count);
    terms.column.reserve (count);
    terms.value.reserve (count);
    return terms;
}

static void append (SymmetricTerms& terms, const GivenTerms& given, const Term& next)
{
    if (!given.item.empty ())
        terms.item.push_back (next.item);
    if (!given.variable.empty ())
        terms.variable.push_back (next.variable);
    terms.row.push_back (next.row);
    terms.column.push_back (next.column);
    terms.value.push_back (given.value[next.position]);
}

SymmetricTerms add_up (const GivenTerms& given)
{
    SymmetricTerms terms = with_room (given);
    if (is_in_order (given)) {
        for (std::size_t k = 0; k < given.value.size (); ++k)
            append (terms, given, term (given, k));
        return terms;
    }
    std::vector<Term> order;
    order.reserve (given.value.size ());
    for (std::size_t k = 0; k < given.value.size (); ++k)
        order.push_back (term (given, k));
    std::ranges::sort (order, std::less{});
    for (std::size_t k = 0; k < order.size ();) {
        append (terms, given, order[k]);
        const std::size_t first = k++;
        double magnitude = std::abs (terms.value.back ());
        for (; k < order.size () && order[first].place () == order[k].place (); ++k) {
            terms.value.back () += given.value[order[k].position];
            magnitude += std::abs (given.value[order[k].position]);
        }
        // What rounding leaves of a sum that is 0 would be an entry where the matrix has none.
        const double rounding =
            static_cast<double> (k - first - 1) * std::numeric_limits<double>::epsilon () * magnitude;
        if (std::abs (terms.value.back ()) < rounding)
            terms.value.back () = 0;
    }
    return terms;
}

TermRange SymmetricTerms::of_item (std::int32_t which) const
{
    const auto [first, last] = std::ranges::equal_range (item, which);
    return {static_cast<std::size_t> (first - item.begin ()),
            static_cast<std::size_t> (last - item.begin ())};
}

}
