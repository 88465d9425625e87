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

// Whether f, g, cones and accs go together, given the number of variables. Reports every fault.
KLVrescode_t check_conic_fields (const ProblemFields& fields, std::int32_t numvar);

// Whether the quadratic terms are vectors of one length each. Reports every fault.
KLVrescode_t check_quadratic_fields (const ProblemFields& fields);

// Turns two bound fields into keys and values of n items. The caller has zeroed the output arrays; after a failure they must not be
// used.
KLVrescode_t setbk (KLVtask_t task, std::int32_t n, const char* lowername, const mxArray* lower,
                    const char* uppername, const mxArray* upper, std::int32_t* boundkeys, double* lowervalues,
                    double* uppervalues);

// Marks the integer variables.
KLVrescode_t putints (KLVtask_t task, const mxArray* ints);

// Names the task and its items; all items must be in the task already.
KLVrescode_t putnames (KLVtask_t task, const mxArray* names);
