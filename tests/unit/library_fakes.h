// Answers that the library itself does not give: quadratic terms, disjunctive constraints, a read that fails.
// The linker puts these functions in front of the library's (replaced.txt).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kalvo.h"

struct QuadraticTerms {
    std::vector<std::int32_t> rows, columns;
    std::vector<double> values;
};

struct LibraryFakes {
    QuadraticTerms objective;
    std::vector<QuadraticTerms> constraints;
    std::int64_t missing_terms = 0;    // counted, but not delivered
    std::int64_t disjunctive = 0;
    const char* failing_function = "";    // fails with `failure` from its call number `failing_call` on
    int failing_call = 0;
    KLVrescode_t failure = 3999;
};

// Null: the library answers itself.
inline LibraryFakes* library_fakes = nullptr;
