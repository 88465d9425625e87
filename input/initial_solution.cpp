#include "input/initial_solution.h"
#include "common/arrays.h"
#include "common/refuse.h"
#include "common/solution_sizes.h"
#include "host/holders.h"

namespace {

struct Kind {
    KLVsoltype which;
    const char* name;
};
constexpr Kind kinds[] = {{KLV_SOL_ITR, "itr"}, {KLV_SOL_BAS, "bas"}, {KLV_SOL_INT, "int"}};

// A field with values, for kinds of solution below `last`.
struct ValueField {
    const char* name;
    std::int64_t SolutionSizes::*count;
    KLVsoltype last;
};

enum : std::size_t { xc, xx, y, slc, suc, slx, sux, snx, barx, bars, doty, value_fields };
constexpr auto m = &SolutionSizes::constraints, n = &SolutionSizes::variables;
constexpr auto packed = &SolutionSizes::packed_entries;
constexpr ValueField fields[value_fields] = {
    {"xc", m, KLV_SOL_INT},
    {"xx", n, KLV_SOL_INT},
    {"y", m, KLV_SOL_BAS},
    {"slc", m, KLV_SOL_BAS},
    {"suc", m, KLV_SOL_BAS},
    {"slx", n, KLV_SOL_BAS},
    {"sux", n, KLV_SOL_BAS},
    {"snx", n, KLV_SOL_ITR},
    {"barx", packed, KLV_SOL_ITR},
    {"bars", packed, KLV_SOL_ITR},
    {"doty", &SolutionSizes::affine_entries, KLV_SOL_ITR},
};

// Keys of one kind of item; the memory serves one solution after the other.
struct Keys {
    explicit Keys (std::int64_t items)
        : count (static_cast<int> (items)),
          keys (host::allocate<std::int32_t> (static_cast<std::size_t> (items)))
    {}

    bool missing () const { return count > 0 && !keys; }

    int count;
    host::Memory<std::int32_t> keys;
};

class InitialSolutions {
public:
    explicit InitialSolutions (KLVtask_t task) : task_ (task) {}

    KLVrescode_t put (const mxArray* solutions);

private:
    KLVrescode_t put_one (const Kind& kind, const mxArray* solution);
    KLVrescode_t read_keys (const Kind& kind, const mxArray* solution);
    KLVrescode_t read_values (const Kind& kind, const mxArray* solution);
    KLVrescode_t put_matrices ();

    KLVtask_t task_;
    SolutionSizes sizes_ = read_solution_sizes (task_);
    Keys constraints_{sizes_.constraints}, variables_{sizes_.variables}, cones_{sizes_.cones};
    const double* values_[value_fields] = {};    // of the current solution; null where none are given
};

const mxArray* field_of (const mxArray* solution, const char* name)
{
    return is_given (solution) && mxIsStruct (solution) ? mxGetField (solution, 0, name) : nullptr;
}

KLVrescode_t InitialSolutions::read_keys (const Kind& kind, const mxArray* solution)
{
    const auto read = [&] (const Keys& keys, const char* name) {
        return translatestatuskeys (task_, keys.count, field_of (solution, name), name, kind.name,
                                    keys.keys.get ());
    };
    KLVrescode_t code = read (constraints_, "skc");
    if (code == KLV_RES_OK)
        code = read (variables_, "skx");
    if (code == KLV_RES_OK && kind.which == KLV_SOL_ITR && cones_.count > 0)
        code = read (cones_, "skn");
    return code;
}

KLVrescode_t InitialSolutions::read_values (const Kind& kind, const mxArray* solution)
{
    KLVrescode_t code = KLV_RES_OK;
    for (std::size_t k = 0; k < value_fields; ++k) {
        const ValueField& field = fields[k];
        const mxArray* array = kind.which <= field.last ? field_of (solution, field.name) : nullptr;
        values_[k] = nullptr;
        if (!is_given (array))
            continue;
        if (!isvector (array, static_cast<std::uint64_t> (sizes_.*field.count), 0))
            code = refuse (KLV_RES_ARGUMENT, "prob.sol.%s.%s", kind.name, field.name);
        else if (values_[k] = mxGetPr (array); values_[k] == nullptr)
            code = KLV_RES_OUT_OF_MEMORY;
    }
    return code;
}

KLVrescode_t InitialSolutions::put_matrices ()
{
    KLVrescode_t code = KLV_RES_OK;
    std::int64_t start = 0;
    for (std::int32_t j = 0; j < sizes_.semidefinite && code == KLV_RES_OK; ++j) {
        if (values_[barx] != nullptr)
            code = KLV_putbarxj (task_, KLV_SOL_ITR, j, values_[barx] + start);
        if (code == KLV_RES_OK && values_[bars] != nullptr)
            code = KLV_putbarsj (task_, KLV_SOL_ITR, j, values_[bars] + start);
        std::int32_t order = 0;
        if (code == KLV_RES_OK)
            code = KLV_getdimbarvarj (task_, j, &order);
        start += std::int64_t (order) * (order + 1) / 2;
    }
    return code;
}

KLVrescode_t InitialSolutions::put_one (const Kind& kind, const mxArray* solution)
{
    KLVrescode_t code = read_keys (kind, solution);
    if (code == KLV_RES_OK)
        code = read_values (kind, solution);
    if (code == KLV_RES_OK)
        code = KLV_putsolutionnew (task_, kind.which, constraints_.keys.get (), variables_.keys.get (),
                                   cones_.keys.get (), values_[xc], values_[xx], values_[y], values_[slc],
                                   values_[suc], values_[slx], values_[sux], values_[snx], values_[doty]);
    if (code == KLV_RES_OK && kind.which == KLV_SOL_ITR)
        code = put_matrices ();
    return code;
}

KLVrescode_t InitialSolutions::put (const mxArray* solutions)
{
    if (constraints_.missing () || variables_.missing () || cones_.missing ())
        return KLV_RES_OUT_OF_MEMORY;
    KLVrescode_t code = KLV_RES_OK;
    for (const Kind& kind : kinds)
        if (const mxArray* solution = mxGetField (solutions, 0, kind.name);
            solution != nullptr && code == KLV_RES_OK)
            code = put_one (kind, solution);
    return code;
}

}

KLVrescode_t putsolution (KLVtask_t task, const mxArray* prob)
{
    const mxArray* solutions = field_of (prob, "sol");
    if (!is_given (solutions))
        return KLV_RES_OK;
    if (!mxIsStruct (solutions))
        return refuse (KLV_RES_ARGUMENT, "prob.sol");
    return InitialSolutions (task).put (solutions);
}
