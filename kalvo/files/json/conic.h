// The part of a JSON document that states quadratic terms, affine conic constraints, cones and semidefinite variables.
#pragma once

#include "kalvo/files/json/fields.h"
#include "kalvo/files/json/writer.h"
#include "kalvo/model/problem.h"

#include <string>
#include <vector>

namespace klv {

bool has_conic_fields (const Problem& problem);
// Only objects that say something.
void write_conic (JsonWriter& json, const Problem& problem);

class JsonConic {
public:
    // The problem stays where it is.
    explicit JsonConic (Problem& problem) : problem_ (problem) {}

    void add_to (std::vector<JsonField>& fields);
    // Once variables and constraints are complete: checks what was read, and puts it into the problem.
    void finish ();

private:
    // Lists of terms. Those of the objective have no items, quadratic ones no variables.
    struct Terms {
        std::string path;
        const char* items_field = nullptr;
        std::vector<std::int32_t> items = {}, variables = {}, rows = {}, columns = {};
        std::vector<double> values = {};
    };

    static void add_terms (Terms& terms, bool semidefinite, std::vector<JsonField>& fields);
    SymmetricTerms take_terms (const Terms& terms, std::int32_t items, bool semidefinite) const;
    void finish_expressions ();
    void finish_domains ();
    void finish_constraints ();
    void finish_cones ();
    void finish_matrices ();

    Problem& problem_;
    Terms quadratic_objective_{.path = "problem.quadratic_objective"};
    Terms quadratic_constraints_{.path = "problem.quadratic_constraints", .items_field = ".constraints"};
    std::vector<std::int32_t> counts_, expressions_;
    std::vector<double> coefficients_, constants_;
    std::vector<std::int32_t> domain_types_, domain_sizes_, exponent_counts_;
    std::vector<double> exponents_;
    std::vector<std::int32_t> constraint_domains_, constraint_expressions_;
    std::vector<double> b_;
    std::vector<std::int32_t> cone_types_, cone_counts_, members_;
    std::vector<double> parameters_;
    std::vector<std::int32_t> orders_;
    Terms objective_{.path = "problem.semidefinite.objective"};
    Terms constraints_{.path = "problem.semidefinite.constraints", .items_field = ".constraints"};
    Terms rows_{.path = "problem.semidefinite.expressions", .items_field = ".expressions"};
    std::vector<std::string> constraint_names_, cone_names_, matrix_names_;
};

}
