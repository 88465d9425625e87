// Semidefinite variables and their terms: lists of entries of symmetric matrices.

#include <algorithm>

#include "common/arrays.h"
#include "common/refuse.h"
#include "host/holders.h"
#include "input/readers.h"

namespace {

enum Field : std::size_t { subi, subj, subk, subl, val, field_count };
constexpr const char* field_names[field_count] = {"subi", "subj", "subk", "subl", "val"};

// A list of terms; barc has no subi.
struct TermList {
    const char* path;
    const mxArray* record;
    Field first;

    const mxArray* field (std::size_t which) const { return mxGetField (record, 0, field_names[which]); }
    KLVrescode_t fail () const { return refuse (KLV_RES_ARGUMENT, "%s", path); }
};

bool is_good (const TermList& list)
{
    if (!list.record)
        return true;
    if (!is_given (list.record) || !mxIsStruct (list.record))
        return false;
    for (std::size_t which = list.first; which < field_count; ++which) {
        const mxArray* field = list.field (which);
        if (!field || !isvector (field, vectorlen (field), 0))
            return false;
    }
    return true;
}

// Null also for a field that is empty, of whatever class.
const double* numbers_of (const mxArray* field)
{
    return is_given (field) ? mxGetPr (field) : nullptr;
}

// Makes indices from 1 indices from 0. False when one is below 1 or does not fit.
template <class Index>
bool convert (const double* indices, std::size_t count, Index* converted)
{
    for (std::size_t k = 0; k < count; ++k) {
        const Index index = truncate_to<Index> (indices[k]).value_or (0);
        if (index < 1)
            return false;
        converted[k] = index - 1;
    }
    return true;
}

template <class Index>
KLVrescode_t read_indices (const TermList& list, Field which, std::size_t count,
                           host::Memory<Index>& converted)
{
    converted = host::allocate<Index> (count);
    const double* indices = numbers_of (list.field (which));
    if (!converted || (!indices && count > 0))
        return KLV_RES_OUT_OF_MEMORY;
    return convert (indices, count, converted.get ()) ? KLV_RES_OK : list.fail ();
}

// put (count, subj, subk, subl, values), behind subi where the list has one.
template <class Item, class Put>
KLVrescode_t put_list (const TermList& list, const Put& put)
{
    if (!list.record)
        return KLV_RES_OK;
    const std::uint64_t count = vectorlen (list.field (list.first));
    for (std::size_t which = list.first; which < field_count; ++which)
        if (vectorlen (list.field (which)) != count)
            return list.fail ();
    host::Memory<Item> items;
    host::Memory<std::int32_t> variables, rows, columns;
    KLVrescode_t code = KLV_RES_OK;
    if (list.first == subi)
        code = read_indices (list, subi, count, items);
    if (code == KLV_RES_OK)
        code = read_indices (list, subj, count, variables);
    if (code == KLV_RES_OK)
        code = read_indices (list, subk, count, rows);
    if (code == KLV_RES_OK)
        code = read_indices (list, subl, count, columns);
    const double* values = numbers_of (list.field (val));
    if (code == KLV_RES_OK && !values && count > 0)
        code = KLV_RES_OUT_OF_MEMORY;
    if (code == KLV_RES_OK)
        code = put (static_cast<std::int64_t> (count), items.get (), variables.get (), rows.get (),
                    columns.get (), values);
    return code;
}

}

KLVrescode_t check_semidefinite_fields (KLVtask_t task, const ProblemFields& fields)
{
    if (!fields.bardim)
        return KLV_RES_OK;
    const std::uint64_t count = vectorlen (fields.bardim);
    const auto bad_orders = [] { return refuse (KLV_RES_ARGUMENT, "prob.bardim"); };
    if (!is_countable (count))
        return bad_orders ();
    if (const KLVrescode_t code = KLV_putmaxnumbarvar (task, static_cast<std::int32_t> (count)))
        return code;
    if (!isvector (fields.bardim, count, 0))
        return bad_orders ();
    for (const TermList& list : {TermList{"prob.barc", fields.barc, subj},
                                 {"prob.bara", fields.bara, subi},
                                 {"prob.barf", fields.barf, subi}})
        if (!is_good (list))
            return list.fail ();
    const double* orders = numbers_of (fields.bardim);
    if (!orders && count > 0)
        return KLV_RES_OUT_OF_MEMORY;
    for (std::uint64_t j = 0; j < count; ++j)
        if (truncate_to_int32 (orders[j]).value_or (-1) < 0)
            return bad_orders ();
    return KLV_RES_OK;
}

KLVrescode_t putsemidefinite (KLVtask_t task, const ProblemFields& fields)
{
    const std::uint64_t count = vectorlen (fields.bardim);
    if (count == 0)
        return KLV_RES_OK;
    const auto orders = host::allocate<std::int32_t> (count);
    const double* numbers = mxGetPr (fields.bardim);
    if (!orders || !numbers)
        return KLV_RES_OUT_OF_MEMORY;
    std::transform (numbers, numbers + count, orders.get (),
                    [] (double order) { return static_cast<std::int32_t> (order); });
    KLVrescode_t code = KLV_appendbarvars (task, static_cast<std::int32_t> (count), orders.get ());
    if (code == KLV_RES_OK)
        code = put_list<std::int32_t> ({"prob.barc", fields.barc, subj},
                                       [&] (std::int64_t terms, const std::int32_t*, const auto*... lists) {
                                           return KLV_putbarcblocktriplet (task, terms, lists...);
                                       });
    if (code == KLV_RES_OK)
        code = put_list<std::int32_t> ({"prob.bara", fields.bara, subi},
                                       [&] (std::int64_t terms, const auto*... lists) {
                                           return KLV_putbarablocktriplet (task, terms, lists...);
                                       });
    if (code == KLV_RES_OK)
        code = put_list<std::int64_t> ({"prob.barf", fields.barf, subi},
                                       [&] (std::int64_t terms, const auto*... lists) {
                                           return KLV_putafebarfblocktriplet (task, terms, lists...);
                                       });
    return code;
}
