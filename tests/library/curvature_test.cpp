// The proof of convexity: what is convex but for rounding passes, what truly bends is named.
#include "kalvo/forms/curvature.h"
#include "tests/library/model.h"

#include <random>

namespace {

using klv::Problem, klv::Refused;
using Ints = std::vector<std::int32_t>;

struct Case {
    const char* what;
    const char* text;
    Ints rows, columns;
    std::vector<double> values;
    Refused::Item refused = Refused::Item::none;
    bool constraint = false;
};

constexpr auto objective = Refused::Item::objective_curvature,
               constraint = Refused::Item::constraint_curvature, nothing = Refused::Item::none;

TEST (Curvature, IsFoundBeyondRounding)
{
    const Ints rows{0, 1, 1}, columns{0, 0, 1};
    const Case cases[] = {
        {"singular", "min 0 0; .. ..", rows, columns, {1, 1, 1}},
        {"singular but for rounding", "min 0 0; .. ..", rows, columns, {1, 1 + 4e-16, 1}},
        {"bent by little", "min 0 0; .. ..", rows, columns, {1e12, 1e12 * (1 + 9e-11), 1e12}, objective},
        {"bent by very little", "min 0 0; .. ..", rows, columns, {1, 1 + 1e-13, 1}, objective},
        {"a maximum", "max 0 0; .. ..", rows, columns, {-1, 1, -1}},
        {"a maximum the wrong way", "max 0 0; .. ..", rows, columns, {1, 0, 1}, objective},
        {"bent along a fixed variable", "min 0 0; .. =2", rows, columns, {1, 3, -1}},
        {"bent along a variable in a narrow box",
         "min 0 0; .. 2..2.001",
         rows,
         columns,
         {1, 3, -1},
         objective},
        {"an entry that adds up to 0", "min 0 0; .. ..", {0, 1, 0, 1}, {0, 0, 1, 0}, {1, 0.1, 0.2, -0.3}},
        {"a small entry that does not",
         "min 0 0; .. ..",
         {0, 1, 0},
         {0, 0, 1},
         {1, 1, -1 + 1e-15},
         objective},
        {"constraint", "min 0 0; .. ..; 0 in ..1", rows, columns, {1, 1, 1}, nothing, true},
        {"constraint below", "min 0 0; .. ..; 0 in 1..", rows, columns, {1, 1, 1}, constraint, true},
        {"constraint with two bounds",
         "min 0 0; .. ..; 0 in 0..1",
         rows,
         columns,
         {1, 1, 1},
         constraint,
         true},
        {"two bounds, all fixed", "min 0 0; =1 =2; 0 in 0..1", rows, columns, {1, 1, 1}, nothing, true},
        {"two bounds, linear once one is fixed", "min 0 0; .. =2; 0 in 0..1", {1}, {0}, {1}, nothing, true},
    };
    for (const Case& row : cases) {
        Problem problem = model::parse (row.text);
        const Ints items (row.values.size (), 0);
        (row.constraint ? problem.quadratic_constraint : problem.quadratic_objective) =
            klv::add_up ({.item = row.constraint ? std::span (items) : std::span<const std::int32_t> (),
                          .variable = {},
                          .row = row.rows,
                          .column = row.columns,
                          .value = row.values});
        EXPECT_EQ (klv::refuse_curvature (problem).item, row.refused) << row.what;
    }
}

// Products of matrices, as users compute them, lack what rounding takes: many of them are singular.
TEST (Curvature, IsNotFoundInProducts)
{
    std::mt19937 random (2);
    std::normal_distribution<double> normal;
    for (const std::int32_t size : {2, 3, 10, 60})
        for (const int terms : {1, 1000}) {
            Problem problem;
            problem.append_variables (size);
            const auto n = static_cast<std::size_t> (size);
            std::vector<double> sums (n * n);
            for (int k = 0; k < terms; ++k) {
                std::vector<double> x (n);
                for (double& value : x)
                    value = normal (random);
                x.back () = x.front () / 3;
                for (std::size_t i = 0; i < n * n; ++i)
                    sums[i] += x[i / n] * x[i % n];
            }
            klv::SymmetricTerms& q = problem.quadratic_objective;
            for (std::int32_t j = 0; j < size; ++j)
                for (std::int32_t i = j; i < size; ++i) {
                    q.row.push_back (i);
                    q.column.push_back (j);
                    q.value.push_back (sums[static_cast<std::size_t> (i * size + j)]);
                }
            EXPECT_EQ (klv::refuse_curvature (problem).item, nothing) << size << ' ' << terms;
        }
}

}
