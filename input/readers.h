// The readers of the problem record's fields. A field that the record lacks is null.
#pragma once

#include <cstdint>

#include "host/host.h"
#include "kalvo.h"

struct ProblemFields {
    const mxArray *qosubj, *qosubi, *qoval;
    const mxArray *qcsubk, *qcsubi, *qcsubj, *qcval;
    const mxArray *cfix, *c, *blc, *buc, *blx, *bux;
    const mxArray *cones, *ints, *names, *a;
    const mxArray *barf, *bara, *barc, *bardim;
    const mxArray *f, *g, *accs;
};

// Whether f, g, cones and accs go together. Reports every fault.
KLVrescode_t check_conic_fields (const ProblemFields& fields);

// Whether semidefinite variables and their lists of terms have good shapes. Without bardim nothing is looked at.
KLVrescode_t check_semidefinite_fields (KLVtask_t task, const ProblemFields& fields);

// Whether the quadratic terms are vectors of one length each. Reports every fault.
KLVrescode_t check_quadratic_fields (const ProblemFields& fields);

// The number of affine expressions.
std::int64_t count_expressions (const ProblemFields& fields);

// Put fields that were checked; the items that terms belong to must be in the task.
KLVrescode_t putaffine (KLVtask_t task, const ProblemFields& fields);
KLVrescode_t putsemidefinite (KLVtask_t task, const ProblemFields& fields);
KLVrescode_t putquadratic (KLVtask_t task, const ProblemFields& fields);

// Constrain the affine expressions: by the list of domains, or by the vector of cones.
KLVrescode_t putaccs (KLVtask_t task, const mxArray* accs, std::int64_t expressions);
KLVrescode_t putconesnew (KLVtask_t task, const mxArray* cones, std::int64_t expressions);

// Put cones of variables: a record, or a cell of records.
KLVrescode_t putcones (KLVtask_t task, const mxArray* cones);

// Turns two bound fields into keys and values of n items. The caller has zeroed the output arrays; after a failure they must not be
// used.
KLVrescode_t setbk (KLVtask_t task, std::int32_t n, const char* lowername, const mxArray* lower,
                    const char* uppername, const mxArray* upper, std::int32_t* boundkeys, double* lowervalues,
                    double* uppervalues);

// Marks the integer variables.
KLVrescode_t putints (KLVtask_t task, const mxArray* ints);

// Names the task and its items; all items must be in the task already.
KLVrescode_t putnames (KLVtask_t task, const mxArray* names);
