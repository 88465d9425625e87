#include "output/problem.h"

#include <algorithm>

#include "common/console.h"
#include "common/records.h"
#include "output/extracts.h"

namespace {

ProblemCounts read_counts (KLVtask_t task)
{
    ProblemCounts counts;
    KLV_getnumcon (task, &counts.constraints);
    KLV_getnumvar (task, &counts.variables);
    KLV_getnumcone (task, &counts.cones);
    KLV_getnumintvar (task, &counts.integers);
    KLV_getnumanz (task, &counts.matrix);
    KLV_getnumqobjnz (task, &counts.quadratic_objective);
    KLV_getnumbarvar (task, &counts.semidefinite);
    KLV_getnumacc (task, &counts.affine);
    KLV_getaccntot (task, &counts.affine_rows);
    KLV_getnumdjc (task, &counts.disjunctive);
    counts.most_quadratic = counts.quadratic_objective;
    for (std::int32_t i = 0; i < counts.constraints; ++i) {
        std::int64_t terms = 0;
        KLV_getnumqconknz (task, i, &terms);
        counts.quadratic_constraints += terms;
        counts.most_quadratic = std::max (counts.most_quadratic, terms);
    }
    return counts;
}

KLVrescode_t count_cone_members (KLVtask_t task, ProblemCounts& counts)
{
    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t k = 0; k < counts.cones && code == KLV_RES_OK; ++k) {
        std::int32_t members = 0;
        code = KLV_getnumconemem (task, k, &members);
        counts.cone_members += members;
        counts.largest_cone = std::max (counts.largest_cone, members);
    }
    return code;
}

host::Array create_problem_record (const ProblemCounts& counts)
{
    FieldList<20> fields;
    fields.add_if (counts.quadratic_objective > 0, {"qosubi", "qosubj", "qoval"});
    fields.add ({"c", "cfix", "a"});
    fields.add_if (counts.quadratic_constraints > 0, {"qcsubk", "qcsubi", "qcsubj", "qcval"});
    fields.add ({"blc", "buc", "blx", "bux"});
    fields.add_if (counts.integers > 0, {"ints"});
    fields.add_if (counts.cones > 0, {"cones"});
    fields.add_if (counts.affine > 0, {"f", "g", "accs"});
    fields.add ({"names"});
    return create_record (fields.all ());
}

// Creates the values of all fields, so that later steps can only fail in the library or for names.
KLVrescode_t create_values (const ProblemCounts& counts, mxArray* record)
{
    bool complete = true;
    const auto set = [&] (const char* field, host::Array value) {
        complete &= set_field (record, field, std::move (value)) != nullptr;
    };
    set ("cfix", create_column (1));
    if (counts.quadratic_objective > 0)
        for (const char* field : {"qosubi", "qosubj", "qoval"})
            set (field, create_column (counts.quadratic_objective));
    if (counts.quadratic_constraints > 0)
        for (const char* field : {"qcsubk", "qcsubi", "qcsubj", "qcval"})
            set (field, create_column (counts.quadratic_constraints));
    set ("c", create_column (counts.variables));
    for (const char* field : {"blc", "buc"})
        set (field, create_column (counts.constraints));
    for (const char* field : {"blx", "bux"})
        set (field, create_column (counts.variables));
    if (counts.integers > 0)
        set ("ints", create_record ({{"sub"}}));
    if (counts.cones > 0)
        set ("cones", create_record ({{"sub", "subptr", "conepar", "type"}}));
    const char* const names[] = {"name", "obj", "con", "var", "barvar", "acc", "cone"};
    set ("names", create_record (std::span (names).first (counts.cones > 0 ? 7 : 6)));
    if (complete)
        set ("a", host::Array (mxCreateSparse (static_cast<mwSize> (counts.constraints),
                                               static_cast<mwSize> (counts.variables),
                                               static_cast<mwSize> (counts.matrix), mxREAL)));
    return complete ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}

KLVrescode_t fill_items (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    const auto room = static_cast<std::size_t> (counts.most_quadratic);
    const auto rows = host::allocate<std::int32_t> (room), columns = host::allocate<std::int32_t> (room);
    if (!rows || !columns) {
        mx_error (KLV_RES_OUT_OF_MEMORY, "");
        return KLV_RES_OUT_OF_MEMORY;
    }
    KLV_getcfix (task, field_values (record, "cfix"));
    KLVrescode_t code = KLV_RES_OK;
    if (counts.variables > 0) {
        code = get_costs (task, record);
        if (code == KLV_RES_OK && counts.constraints > 0)
            code = get_matrix (task, counts, record);
        if (code == KLV_RES_OK)
            code = get_quadratic_terms (task, counts, rows.get (), columns.get (), record);
        if (code == KLV_RES_OK && counts.integers > 0)
            code = get_integers (task, counts, record);
        if (code == KLV_RES_OK && counts.cones > 0)
            code = get_cones (task, counts, record);
    }
    return code == KLV_RES_OK ? get_bounds (task, counts, record) : code;
}

KLVrescode_t fill (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    KLVrescode_t code = create_values (counts, record);
    if (code == KLV_RES_OK)
        code = fill_items (task, counts, record);
    if (code == KLV_RES_OK && counts.affine > 0)
        code = get_affine_constraints (task, counts, record);
    if (code == KLV_RES_OK)
        code = get_names (task, counts, record);
    if (code == KLV_RES_OK && counts.semidefinite > 0)
        code = get_semidefinite_terms (task, counts, record);
    if (code == KLV_RES_OK)
        code = get_sense (task, record);
    return code;
}

}

KLVrescode_t getprob ([[maybe_unused]] int statuskeys, KLVtask_t task, mxArray* res)
{
    ProblemCounts counts = read_counts (task);
    mexPrintf ("%ld\n", static_cast<long> (counts.disjunctive));
    if (counts.disjunctive > 0) {
        mx_error (KLV_RES_ARGUMENT,
                  "Problems with disjunctive constraints are not supported by this interface.");
        return KLV_RES_ARGUMENT;
    }
    if (const KLVrescode_t code = count_cone_members (task, counts))
        return code;
    mxArray* record = set_field (res, "prob", create_problem_record (counts));
    return record ? fill (task, counts, record) : KLV_RES_OUT_OF_MEMORY;
}
