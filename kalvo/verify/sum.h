// Sums whose own errors do not count.
#pragma once

#include <cmath>

namespace klv {

// A running sum that adds up its rounding errors separately (Neumaier).
class Sum {
public:
    void add (double term)
    {
        const double next = sum_ + term;
        error_ += std::abs (sum_) >= std::abs (term) ? (sum_ - next) + term : (term - next) + sum_;
        sum_ = next;
    }
    void add_product (double a, double b)
    {
        const double product = a * b;
        add (product);
        error_ += std::fma (a, b, -product);
    }
    void add_product (double a, double b, double c)
    {
        const double product = a * b;
        add_product (product, c);
        error_ += std::fma (a, b, -product) * c;
    }
    // With infinite terms the errors add up to NaN: the sum alone is right then.
    double value () const { return std::isfinite (error_) ? sum_ + error_ : sum_; }

private:
    double sum_ = 0;
    double error_ = 0;
};

}
