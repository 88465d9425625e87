// Proofs that rays are what they are claimed to be.
#pragma once

#include "kalvo/verify/rays.h"

#include <optional>
#include <span>
#include <vector>

namespace klv {

// A ray with its products, noise taken out of them, and what they add up to.
struct Proof {
    std::vector<double> ray = {}, products = {};
    long double value = 0, terms = 0;
    std::vector<bool> noisy = {};    // products that hold but for noise
    double noise_share = 0, noise_sum = 0;
};

void append (std::span<const double> values, std::vector<double>& ray);

// What follows knows rays of both kinds, Multipliers and Direction.

template <class Kind>
std::vector<double> products_of (const Kind& kind, std::span<const double> ray);

// The sum of the magnitudes of each product's terms.
template <class Kind>
std::vector<double> own_terms (const Kind& kind, std::span<const double> ray);

// Whether a product should be 0: it has the wrong sign, or comes near to 0 and may have one sign at most.
template <class Kind>
bool should_be_zero (const Kind& kind, std::size_t i, double product, double terms);

// A proof from a claimed ray, up to its sign, cleaned or refined where that is needed: engines do not agree on signs.
template <class Kind>
std::optional<Proof> prove (const Kind& kind, std::span<const double> claimed);

}
