// The semidefinite variables of a task's problem, and their terms. Fields are appended to the record.

#include <algorithm>

#include "common/records.h"
#include "output/extracts.h"

namespace {

// Room for terms; what is not used of it stays.
template <class Item>
struct Terms {
    explicit Terms (std::int64_t count)
        : items (host::allocate<Item> (static_cast<std::size_t> (count))),
          variables (host::allocate<std::int32_t> (static_cast<std::size_t> (count))),
          rows (host::allocate<std::int32_t> (static_cast<std::size_t> (count))),
          columns (host::allocate<std::int32_t> (static_cast<std::size_t> (count))),
          values (host::allocate<double> (static_cast<std::size_t> (count)))
    {}

    explicit operator bool () const { return items && variables && rows && columns && values; }

    host::Memory<Item> items;
    host::Memory<std::int32_t> variables, rows, columns;
    host::Memory<double> values;
};

template <class Index>
bool set_indices (mxArray* list, const char* field, const Index* indices, std::int64_t count)
{
    mxArray* column = set_field (list, field, create_column (count));
    if (column)
        std::transform (indices, indices + count, mxGetPr (column),
                        [] (Index index) { return static_cast<double> (index) + 1.0; });
    return column != nullptr;
}

template <class Item>
KLVrescode_t append_list (const Terms<Item>& terms, std::int64_t count, bool has_items, const char* field,
                          mxArray* record)
{
    static constexpr const char* names[] = {"subi", "subj", "subk", "subl", "val"};
    host::Array list = create_record (std::span (names).subspan (has_items ? 0 : 1));
    if (!list)
        return KLV_RES_OUT_OF_MEMORY;
    mxArray* const fields = list.get ();
    bool complete = !has_items || set_indices (fields, "subi", terms.items.get (), count);
    complete = complete && set_indices (fields, "subj", terms.variables.get (), count);
    complete = complete && set_indices (fields, "subk", terms.rows.get (), count);
    complete = complete && set_indices (fields, "subl", terms.columns.get (), count);
    mxArray* values = complete ? set_field (fields, "val", create_column (count)) : nullptr;
    if (!values)
        return KLV_RES_OUT_OF_MEMORY;
    std::copy_n (terms.values.get (), count, mxGetPr (values));
    return append_field (record, field, std::move (list)) ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}

KLVrescode_t get_orders (KLVtask_t task, std::int32_t count, double* orders)
{
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t j = 0; j < count && code == KLV_RES_OK; ++j) {
        std::int32_t order = 0;
        code = KLV_getdimbarvarj (task, j, &order);
        orders[j] = order;
    }
    return code;
}

KLVrescode_t get_linear_terms (KLVtask_t task, std::int64_t objective, std::int64_t constraints,
                               std::int32_t numbarvar, mxArray* record)
{
    const std::int64_t room = std::max (objective, constraints);
    const Terms<std::int32_t> terms (room);
    host::Array orders = create_column (numbarvar);
    double* const order = orders ? mxGetPr (orders.get ()) : nullptr;
    if (!append_field (record, "bardim", std::move (orders)) || !terms)
        return KLV_RES_OUT_OF_MEMORY;
    KLVrescode_t code = get_orders (task, numbarvar, order);
    if (code == KLV_RES_OK)
        code = KLV_getbarcblocktriplet (task, objective, &objective, terms.variables.get (),
                                        terms.rows.get (), terms.columns.get (), terms.values.get ());
    if (code == KLV_RES_OK)
        code = append_list (terms, objective, false, "barc", record);
    if (code == KLV_RES_OK)
        code = KLV_getbarablocktriplet (task, constraints, &constraints, terms.items.get (),
                                        terms.variables.get (), terms.rows.get (), terms.columns.get (),
                                        terms.values.get ());
    return code == KLV_RES_OK ? append_list (terms, constraints, true, "bara", record) : code;
}

KLVrescode_t get_terms_of_rows (KLVtask_t task, std::int64_t count, mxArray* record)
{
    const Terms<std::int64_t> terms (count);
    if (!terms)
        return KLV_RES_OUT_OF_MEMORY;
    const KLVrescode_t code =
        KLV_getaccbarfblocktriplet (task, count, &count, terms.items.get (), terms.variables.get (),
                                    terms.rows.get (), terms.columns.get (), terms.values.get ());
    return code == KLV_RES_OK ? append_list (terms, count, true, "barf", record) : code;
}

}

KLVrescode_t get_semidefinite_terms (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    std::int64_t objective = 0, constraints = 0, rows = 0;
    KLVrescode_t code = KLV_getnumbarcblocktriplets (task, &objective);
    if (code == KLV_RES_OK)
        code = KLV_getnumbarablocktriplets (task, &constraints);
    if (code == KLV_RES_OK)
        code = KLV_getaccbarfnumblocktriplets (task, &rows);
    if (code == KLV_RES_OK)
        code = get_linear_terms (task, objective, constraints, counts.semidefinite, record);
    return code == KLV_RES_OK && rows > 0 ? get_terms_of_rows (task, rows, record) : code;
}
