#include "input/problem.h"

#include "common/arrays.h"
#include "common/refuse.h"
#include "host/holders.h"
#include "input/readers.h"

namespace {

struct BoundArrays {
    explicit BoundArrays (std::int32_t count)
        : keys (host::allocate<std::int32_t> (static_cast<std::size_t> (count))),
          lower (host::allocate<double> (static_cast<std::size_t> (count))),
          upper (host::allocate<double> (static_cast<std::size_t> (count)))
    {}

    explicit operator bool () const { return keys && lower && upper; }

    host::Memory<std::int32_t> keys;
    host::Memory<double> lower, upper;
};

ProblemFields fetch_fields (const mxArray* prob)
{
    const auto field = [prob] (const char* name) -> const mxArray* { return mxGetField (prob, 0, name); };
    return {.qosubj = field ("qosubj"),
            .qosubi = field ("qosubi"),
            .qoval = field ("qoval"),
            .qcsubk = field ("qcsubk"),
            .qcsubi = field ("qcsubi"),
            .qcsubj = field ("qcsubj"),
            .qcval = field ("qcval"),
            .cfix = field ("cfix"),
            .c = field ("c"),
            .blc = field ("blc"),
            .buc = field ("buc"),
            .blx = field ("blx"),
            .bux = field ("bux"),
            .cones = field ("cones"),
            .ints = field ("ints"),
            .names = field ("names"),
            .a = field ("a"),
            .barf = field ("barf"),
            .bara = field ("bara"),
            .barc = field ("barc"),
            .bardim = field ("bardim"),
            .f = field ("f"),
            .g = field ("g"),
            .accs = field ("accs")};
}

// The size of `a` is the size of the problem: without a valid `a` nothing else can be checked.
KLVrescode_t check_matrix (const mxArray* a)
{
    if (a == nullptr)
        return refuse (KLV_RES_ARGUMENT, "prob.a not specified");
    if (!mxIsDouble (a))
        return refuse (KLV_RES_ARGUMENT, "prob.a is not a double matrix");
    if (mxIsComplex (a))
        return refuse (KLV_RES_ARGUMENT, "prob.a is complex");
    if (mxGetNumberOfDimensions (a) > 2)
        return refuse (KLV_RES_ARGUMENT, "prob.a has more than two dimensions");
    if (!is_countable (mxGetM (a)) || !is_countable (mxGetN (a)))
        return refuse (KLV_RES_ARGUMENT, "prob.a has more than 2147483647 rows or columns");
    return KLV_RES_OK;
}

// Refuses requests that the library can't answer.
KLVrescode_t refuse_unsupported_fields (const mxArray* prob)
{
    KLVrescode_t code = KLV_RES_OK;
    for (const char* name : {"prisen", "duasen"})
        if (is_given (mxGetField (prob, 0, name)))
            code = refuse (KLV_RES_ARGUMENT, "prob.%s is not supported yet", name);
    return code;
}

KLVrescode_t read_constant (const mxArray* cfix, double& constant)
{
    if (cfix == nullptr)
        return KLV_RES_OK;
    if (mxGetM (cfix) != 1 || mxGetN (cfix) != 1 || !mxIsDouble (cfix) || mxIsSparse (cfix))
        return refuse (KLV_RES_ARGUMENT, "prob.cfix");
    if (const KLVrescode_t code = check_values ("cfix", cfix))
        return code;
    constant = mxGetScalar (cfix);
    return KLV_RES_OK;
}

KLVrescode_t read_costs (const mxArray* c, std::int32_t numvar, double* costs)
{
    if (!is_given (c))
        return KLV_RES_OK;
    if (!isvector (c, static_cast<std::uint64_t> (numvar), 1))
        return refuse (KLV_RES_ARGUMENT, "prob.c has wrong length");
    if (const KLVrescode_t code = check_values ("c", c))
        return code;
    if (mxIsSparse (c))
        for_each_entry (c, [costs] (std::int32_t variable, double value) {
            costs[variable] = value;
            return true;
        });
    else
        rvec_copy (numvar, mxGetPr (c), costs);
    return KLV_RES_OK;
}

KLVrescode_t put_sparse_columns (KLVtask_t task, const mxArray* a)
{
    const mwIndex *starts = mxGetJc (a), *rows = mxGetIr (a);
    const double* values = mxGetPr (a);
    const auto numvar = static_cast<std::int32_t> (mxGetN (a));

    KLVrescode_t code = KLV_putmaxnumanz (task, static_cast<std::int64_t> (starts[numvar]));
    if (code != KLV_RES_OK)
        return code;
    const auto narrow_rows = host::allocate<std::int32_t> (mxGetM (a));
    if (!narrow_rows || (!values && starts[numvar] > 0))
        return KLV_RES_OUT_OF_MEMORY;
    for (std::int32_t j = 0; j < numvar && code == KLV_RES_OK; ++j) {
        const mwIndex start = starts[j], count = starts[j + 1] - start;
        mvItoklvI (rows + start, narrow_rows.get (), static_cast<std::uint64_t> (count));
        code = KLV_putacol (task, j, static_cast<std::int32_t> (count), narrow_rows.get (), values + start);
    }
    return code;
}

KLVrescode_t put_dense_columns (KLVtask_t task, const mxArray* a)
{
    const std::size_t numcon = mxGetM (a);
    const auto numvar = static_cast<std::int32_t> (mxGetN (a));
    const auto rows = host::allocate<std::int32_t> (numcon);
    const auto values = host::allocate<double> (numcon);
    const double* column = mxGetPr (a);
    if (!rows || !values || !column)
        return KLV_RES_OUT_OF_MEMORY;

    KLVrescode_t code = KLV_RES_OK;
    for (std::int32_t j = 0; j < numvar && code == KLV_RES_OK; ++j, column += numcon) {
        std::int32_t count = 0;
        for (std::size_t i = 0; i < numcon; ++i)
            if (column[i] != 0.0) {    // true for NaN
                rows[static_cast<std::size_t> (count)] = static_cast<std::int32_t> (i);
                values[static_cast<std::size_t> (count++)] = column[i];
            }
        code = KLV_putacol (task, j, count, rows.get (), values.get ());
    }
    return code;
}

KLVrescode_t put_matrix (KLVtask_t task, const mxArray* a)
{
    if (mxIsEmpty (a))
        return KLV_RES_OK;
    return mxIsSparse (a) ? put_sparse_columns (task, a) : put_dense_columns (task, a);
}

// Reads the items and their terms.
KLVrescode_t put_items (KLVtask_t task, const ProblemFields& fields, std::int32_t numcon, std::int32_t numvar)
{
    const auto costs = host::allocate<double> (static_cast<std::size_t> (numvar));
    if (!costs)
        return KLV_RES_OUT_OF_MEMORY;
    double constant = 0.0;
    if (const KLVrescode_t code = read_constant (fields.cfix, constant))
        return code;
    if (const KLVrescode_t code = read_costs (fields.c, numvar, costs.get ()))
        return code;
    if (const KLVrescode_t code = check_quadratic_fields (fields))
        return code;

    BoundArrays constraints (numcon), variables (numvar);
    if (!constraints || !variables)
        return KLV_RES_OUT_OF_MEMORY;
    if (const KLVrescode_t code =
            setbk (task, numcon, "blc", fields.blc, "buc", fields.buc, constraints.keys.get (),
                   constraints.lower.get (), constraints.upper.get ()))
        return code;
    if (const KLVrescode_t code =
            setbk (task, numvar, "blx", fields.blx, "bux", fields.bux, variables.keys.get (),
                   variables.lower.get (), variables.upper.get ()))
        return code;

    KLVrescode_t code = KLV_appendvars (task, numvar);
    if (code == KLV_RES_OK)
        code = KLV_appendcons (task, numcon);
    if (code == KLV_RES_OK)
        code = KLV_appendafes (task, count_expressions (fields));
    if (code == KLV_RES_OK)
        code = putaffine (task, fields);
    if (code == KLV_RES_OK)
        code = putsemidefinite (task, fields);
    if (code == KLV_RES_OK)
        code = put_matrix (task, fields.a);
    if (code == KLV_RES_OK)
        code = KLV_putvarboundslice (task, 0, numvar, variables.keys.get (), variables.lower.get (),
                                     variables.upper.get ());
    if (code == KLV_RES_OK)
        code = KLV_putconboundslice (task, 0, numcon, constraints.keys.get (), constraints.lower.get (),
                                     constraints.upper.get ());
    if (code == KLV_RES_OK)
        code = KLV_putcslice (task, 0, numvar, costs.get ());
    if (code == KLV_RES_OK)
        code = KLV_putcfix (task, constant);
    return code == KLV_RES_OK ? putquadratic (task, fields) : code;
}

KLVrescode_t put_cones (KLVtask_t task, const ProblemFields& fields)
{
    const std::int64_t expressions = count_expressions (fields);
    if (fields.accs)
        return putaccs (task, fields.accs, expressions);
    return expressions > 0 ? putconesnew (task, fields.cones, expressions) : putcones (task, fields.cones);
}

}

KLVrescode_t putproblem (KLVtask_t task, const mxArray* prob)
{
    if (!is_given (prob))
        return KLV_RES_OK;
    if (!mxIsStruct (prob) || mxGetM (prob) != 1 || mxGetN (prob) != 1)
        return refuse (KLV_RES_ARGUMENT, "prob");

    const ProblemFields fields = fetch_fields (prob);
    if (const KLVrescode_t code = check_matrix (fields.a))
        return code;
    const auto numcon = static_cast<std::int32_t> (mxGetM (fields.a));
    const auto numvar = static_cast<std::int32_t> (mxGetN (fields.a));

    const KLVrescode_t conic = check_conic_fields (fields);
    const KLVrescode_t unsupported = refuse_unsupported_fields (prob);
    if (conic != KLV_RES_OK || unsupported != KLV_RES_OK)
        return KLV_RES_ARGUMENT;

    KLVrescode_t code = check_semidefinite_fields (task, fields);
    if (code == KLV_RES_OK)
        code = put_items (task, fields, numcon, numvar);
    if (code == KLV_RES_OK)
        code = put_cones (task, fields);
    if (code == KLV_RES_OK)
        code = putints (task, fields.ints);
    if (code == KLV_RES_OK)
        code = putnames (task, fields.names);
    return code;
}
