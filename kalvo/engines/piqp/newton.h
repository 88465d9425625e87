// The linear systems of the engine's iterations, and how they are best solved.
#pragma once

#include "kalvo/forms/form.h"
#include "kalvo/sparse/ldl.h"

#include <cstdint>

namespace klv::piqp {

// What is wrong with a form, or an empty text. The library checks nothing.
std::string fault_of (const QuadraticForm& form);

// Either dense, or [P + . E' R'; E . 0; R 0 .] with full diagonals, of which `sparse` knows the order and the size of the factor.
// Throws std::length_error when the matrix or its factor has too many entries.
class NewtonSystem {
public:
    explicit NewtonSystem (const QuadraticForm& form,
                           KLVfactorization factorization = KLV_FACTORIZATION_AUTOMATIC);

    bool dense () const;
    double megabytes () const;    // that a solve takes
    static double megabytes_of_factor (double entries) { return 24e-6 * entries; }
    Ldl& sparse () { return sparse_; }
    std::int32_t entries () const { return entries_; }    // of the sparse matrix's upper triangle

private:
    NewtonSystem (const QuadraticForm& form, const SparseColumns& upper, KLVfactorization factorization);

    double columns_, rows_, size_;
    bool dense_may_pay_;
    std::int32_t entries_;
    Ldl sparse_;
};

}
