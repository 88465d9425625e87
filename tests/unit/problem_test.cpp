#include "input/problem.h"

#include <limits>

#include "tests/unit/gateway_function.h"
#include "tests/unit/task_text.h"

using namespace standalone;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity (),
                 nan = std::numeric_limits<double>::quiet_NaN ();

using Fields = std::vector<std::pair<std::string, Value>>;

class Problem : public GatewayFunctionTest {
protected:
    KLVrescode_t put (const Value& prob)
    {
        KLV_deletetask (&task);
        KLV_makeemptytask (nullptr, &task);
        return run ({prob}, [this] (mxArray**, const mxArray** in) { return putproblem (task, in[0]); });
    }
};

// Two constraints and three variables.
Value good_a ()
{
    return matrix (2, 3, {1, 0, 0, 0, 5, 6});
}

Fields everything_but_a ()
{
    return {{"c", column ({1, -2, 0})},
            {"cfix", scalar (7)},
            {"blc", row ({-inf, 1})},
            {"buc", row ({4, 1})},
            {"blx", sparse (3, 1, {{1, 0, 2}})},
            {"ints", record ({{"sub", row ({3, 1, 3})}})},
            {"names", record ({{"con", cell ({text ("r1"), text ("r2")})},
                               {"name", text ("tiny")},
                               {"var", cell ({text ("x"), text (""), text ("zé")})},
                               {"obj", text ("cost")}})},
            {"objsense", text ("maximize")},
            {"unknown", function_handle ()}};
}

Value with (Fields fields, const std::string& name, Value value)
{
    fields.emplace_back (name, std::move (value));
    return record (fields);
}

TEST_F (Problem, DenseAndSparseAreLoadedAlike)
{
    for (const Value& a : {good_a (), sparse (2, 3, {{0, 0, 1}, {0, 2, 5}, {1, 2, 6}})}) {
        EXPECT_EQ (put (with (everything_but_a (), "a", a)), 0);
        EXPECT_EQ (printed (), "");
        EXPECT_EQ (task_text (task), "2 by 3, sense 0, constant 7, name tiny, objective cost\n"
                                     "row 0 'r1' key 1: -1e+30 4\n"
                                     "row 1 'r2' key 2: 1 1\n"
                                     "column 0 'x' type 1 cost 1 key 0: 0 0; 0:1\n"
                                     "column 1 '' type 0 cost -2 key 0: 2 0;\n"
                                     "column 2 'zé' type 1 cost 0 key 0: 0 0; 0:5 1:6");
    }
}

TEST_F (Problem, SizesFollowFromTheMatrix)
{
    EXPECT_EQ (put (record ({{"a", matrix (0, 2)}, {"c", row ({1, 2})}})), 0);
    EXPECT_EQ (task_text (task), "0 by 2, sense 0, constant 0, name , objective \n"
                                 "column 0 '' type 0 cost 1 key 3: -1e+30 0;\n"
                                 "column 1 '' type 0 cost 2 key 3: -1e+30 0;");
    EXPECT_EQ (put (record ({{"a", sparse (1, 0, {})}})), 0);
    EXPECT_EQ (task_text (task), "1 by 0, sense 0, constant 0, name , objective \nrow 0 '' key 3: -1e+30 0");
    EXPECT_EQ (put (record ({{"a", sparse (1, 2, {{0, 0, 0.0}, {0, 1, 3}})}})), 0);
    EXPECT_EQ (task_text (task), "1 by 2, sense 0, constant 0, name , objective \nrow 0 '' key 3: -1e+30 0\n"
                                 "column 0 '' type 0 cost 0 key 3: -1e+30 0; 0:0\n"
                                 "column 1 '' type 0 cost 0 key 3: -1e+30 0; 0:3");
    for (const Value& nothing : {matrix (0, 0), records ({0, 0}, {"a"}), text ("")}) {
        EXPECT_EQ (put (nothing), 0);
        EXPECT_EQ (task_text (task), "0 by 0, sense 0, constant 0, name , objective ");
    }
}

// A value that is no number is the library's to refuse; the gateway must bring it there.
TEST_F (Problem, ValuesThatAreNoNumbersReachTheLibrary)
{
    for (const double value : {nan, inf, -inf}) {
        for (const Value& a : {matrix (1, 2, {1, value}), sparse (1, 2, {{0, 0, 1}, {0, 1, value}})})
            EXPECT_EQ (put (record ({{"a", a}})), KLV_RES_VALUE_NOT_FINITE);
        EXPECT_EQ (put (record ({{"a", matrix (1, 2)}, {"c", row ({0, value})}})), KLV_RES_VALUE_NOT_FINITE);
        EXPECT_EQ (put (record ({{"a", matrix (1, 2)}, {"cfix", scalar (value)}})), KLV_RES_VALUE_NOT_FINITE);
    }
}

// Records with faults, and the lines that are printed, in their order.
struct FaultCase {
    const char* fault;
    std::function<Fields ()> fields;    // beside a good `a`
    std::vector<std::string> texts;
    KLVrescode_t code = 1200;
};

std::ostream& operator<< (std::ostream& out, const FaultCase& c)
{
    return out << c.fault;
}

class ProblemFaults : public Problem, public testing::WithParamInterface<FaultCase> {};

TEST_P (ProblemFaults, AreReported)
{
    std::string expected;
    for (const std::string& text : GetParam ().texts)
        expected += error_line (text.ends_with ("dimension") ? 1201 : 1200, text);
    EXPECT_EQ (put (with (GetParam ().fields (), "a", good_a ())), GetParam ().code);
    EXPECT_EQ (printed (), expected);
}

const char* const columns =
    "prob.f has wrong number of columns, should have size(prob.f,2) == size(prob.a,2)";
const char* const dense_g = "prob.g must be a dense vector with length(prob.g) == size(prob.f,1)";

INSTANTIATE_TEST_SUITE_P (
    Conic, ProblemFaults,
    testing::Values (FaultCase{"every check of f, g, cones and accs is made, in order",
                               [] {
                                   return Fields{{"f", matrix (2, 4)},     {"g", row ({1})},
                                                 {"qcval", matrix (0, 0)}, {"cones", matrix (0, 0)},
                                                 {"accs", matrix (0, 0)},  {"cfix", text ("x")}};
                               },
                               {"prob.f must be a sparse matrix",
                                "prob.f cannot be specified together with prob.qoval or prob.qcval", columns,
                                dense_g, "prob.cones and prob.accs cannot be simultaneously specified",
                                "prob.f is not supported yet"}},
                     FaultCase{"f alone",
                               [] { return Fields{{"f", sparse (0, 3, {})}}; },
                               {"prob.f specified but neither prob.accs nor prob.cones found"}},
                     FaultCase{"g without f",
                               [] { return Fields{{"g", row ({1})}}; },
                               {"prob.g cannot be specified without prob.f", dense_g}},
                     FaultCase{"empty g without f",
                               [] { return Fields{{"g", matrix (0, 0)}}; },
                               {"prob.g cannot be specified without prob.f"}},
                     FaultCase{"what can't be held is refused field by field",
                               [] {
                                   Fields fields;
                                   for (const char* name : {"duasen", "prisen", "bardim", "cones", "qcval",
                                                            "qoval", "barc", "primalrepair"})
                                       fields.emplace_back (name, cell ({text ("anything")}));
                                   return fields;
                               },
                               {"prob.qoval is not supported yet", "prob.qcval is not supported yet",
                                "prob.cones is not supported yet", "prob.bardim is not supported yet",
                                "prob.prisen is not supported yet", "prob.duasen is not supported yet"}},
                     FaultCase{"accs is refused too",
                               [] { return Fields{{"f", sparse (1, 3, {})}, {"accs", row ({0, 1})}}; },
                               {"prob.f is not supported yet", "prob.accs is not supported yet"}},
                     FaultCase{"empty means absent",
                               [] {
                                   Fields fields;
                                   for (const char* name :
                                        {"duasen", "prisen", "bardim", "cones", "qcval", "qoval", "qosubi",
                                         "qcsubk", "c", "blx", "ints", "names"})
                                       fields.emplace_back (name, cell (Sizes{0, 0}));
                                   return fields;
                               },
                               {},
                               0}));

INSTANTIATE_TEST_SUITE_P (
    Linear, ProblemFaults,
    testing::Values (
        FaultCase{
            "cfix before c", [] { return Fields{{"c", row ({1})}, {"cfix", row ({1, 2})}}; }, {"prob.cfix"}},
        FaultCase{"empty cfix is no number", [] { return Fields{{"cfix", matrix (0, 0)}}; }, {"prob.cfix"}},
        FaultCase{"sparse cfix", [] { return Fields{{"cfix", sparse (1, 1, {})}}; }, {"prob.cfix"}},
        FaultCase{"complex cfix",
                  [] { return Fields{{"cfix", complex (1, 1, {1}, {1})}}; },
                  {"prob.cfix is complex"}},
        FaultCase{"c before the quadratic terms, all of which print",
                  [] { return Fields{{"c", row ({1})}, {"qosubi", row ({1})}, {"qcsubj", row ({1})}}; },
                  {"prob.c has wrong length"}},
        FaultCase{
            "sparse row c", [] { return Fields{{"c", sparse (1, 3, {})}}; }, {"prob.c has wrong length"}},
        FaultCase{"complex c",
                  [] { return Fields{{"c", complex (1, 3, {1, 2, 3}, {0, 0, 0})}}; },
                  {"prob.c is complex"}},
        FaultCase{"quadratic indices without values, before bounds",
                  [] {
                      return Fields{{"qosubi", row ({1})}, {"qosubj", row ({1})}, {"qcsubk", text ("k")},
                                    {"qcsubi", row ({1})}, {"qcsubj", row ({1})}, {"blc", row ({1})}};
                  },
                  {"prob.qosubj", "prob.qosubi", "prob.qcsubk", "prob.qcsubi", "prob.qcsubj"},
                  1201},
        FaultCase{"constraints before variables",
                  [] { return Fields{{"blx", row ({1})}, {"buc", row ({1})}}; },
                  {"prob.buc has invalid dimension"},
                  1201},
        FaultCase{"bounds before integers and names",
                  [] {
                      return Fields{
                          {"names", record ({{"x", text ("x")}})}, {"ints", row ({1})}, {"blx", row ({1})}};
                  },
                  {"prob.blx has invalid dimension"},
                  1201},
        FaultCase{"integers before names",
                  [] { return Fields{{"names", record ({{"x", text ("x")}})}, {"ints", row ({1})}}; },
                  {"prob.ints"}}));

TEST_F (Problem, NothingIsLookedAtWithoutAGoodRecordAndMatrix)
{
    const struct {
        const char* fault;
        Value prob;
        const char* text;
    } cases[] = {
        {"number", scalar (1), "prob"},
        {"text", text ("lp.mps"), "prob"},
        {"cell", cell ({good_a ()}), "prob"},
        {"function handle", function_handle (), "prob"},
        {"object", object (), "prob"},
        {"several records", records ({1, 2}, {"a"}), "prob"},
        {"records in three dimensions", records ({1, 1, 2}, {"a"}), "prob"},
        {"no a", record ({{"c", text ("x")}, {"f", scalar (1)}}), "prob.a not specified"},
        {"unset a", records ({1, 1}, {"a"}), "prob.a not specified"},
        {"names count exactly", record ({{"A", good_a ()}}), "prob.a not specified"},
        {"single", record ({{"a", array (mxSINGLE_CLASS, {2, 3})}}), "prob.a is not a double matrix"},
        {"integers", record ({{"a", array (mxINT32_CLASS, {2, 3})}}), "prob.a is not a double matrix"},
        {"logical", record ({{"a", array (mxLOGICAL_CLASS, {2, 3})}}), "prob.a is not a double matrix"},
        {"sparse logical", record ({{"a", sparse (2, 3, {{0, 0, 1}}, mxLOGICAL_CLASS)}}),
         "prob.a is not a double matrix"},
        {"text", record ({{"a", text ("abc")}}), "prob.a is not a double matrix"},
        {"cell", record ({{"a", cell ({scalar (1)})}}), "prob.a is not a double matrix"},
        {"record", record ({{"a", record ({{"a", scalar (1)}})}}), "prob.a is not a double matrix"},
        {"function handle", record ({{"a", function_handle ()}}), "prob.a is not a double matrix"},
        {"object", record ({{"a", object ()}}), "prob.a is not a double matrix"},
        {"complex", record ({{"a", complex (1, 1, {1}, {0})}}), "prob.a is complex"},
        {"three dimensions", record ({{"a", array (mxDOUBLE_CLASS, {2, 3, 2})}}),
         "prob.a has more than two dimensions"},
        {"more variables than 32 bits count", record ({{"a", matrix (0, 1ULL << 31)}}),
         "prob.a has more than 2147483647 rows or columns"},
        {"more constraints than 32 bits count", record ({{"a", matrix (1ULL << 32, 0)}}),
         "prob.a has more than 2147483647 rows or columns"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.fault);
        EXPECT_EQ (put (c.prob), 1200);
        EXPECT_EQ (printed (), error_line (1200, c.text));
    }
}

// Every class of value in every field that is read: taken as its meaning says, or refused by name.
TEST_F (Problem, OddValuesAreTakenOrRefusedByName)
{
    const struct {
        const char* name;
        Value value;
    } odd[] = {
        {"empty", matrix (0, 0)},
        {"empty row", matrix (1, 0)},
        {"empty text", text ("")},
        {"empty cell", cell (Sizes{0, 0})},
        {"empty records", records ({0, 1}, {"sub"})},
        {"sparse empty", sparse (0, 0, {})},
        {"number", scalar (1)},
        {"row", row ({1, 1, 1})},
        {"pair", column ({1, 1})},
        {"matrix", matrix (3, 3)},
        {"three dimensions", array (mxDOUBLE_CLASS, {3, 1, 2})},
        {"complex", complex (1, 3, {1, 2, 3}, {0, 1, 0})},
        {"complex number", complex (1, 1, {1}, {1})},
        {"nan", row ({nan, nan, nan})},
        {"sparse", sparse (3, 1, {{0, 0, 1}})},
        {"sparse pair", sparse (2, 1, {{0, 0, 1}})},
        {"sparse row", sparse (1, 3, {{0, 0, 1}})},
        {"sparse logical", sparse (3, 1, {{0, 0, 1}}, mxLOGICAL_CLASS)},
        {"sparse single", sparse (3, 1, {{0, 0, 1}}, mxSINGLE_CLASS)},
        {"logical", array (mxLOGICAL_CLASS, {3, 1})},
        {"single", array (mxSINGLE_CLASS, {3, 1})},
        {"int8", array (mxINT8_CLASS, {3, 1})},
        {"uint64", array (mxUINT64_CLASS, {3, 1})},
        {"text", text ("abc")},
        {"texts", texts ({"ab", "cd", "ef"})},
        {"cell", cell ({scalar (1), scalar (2), scalar (3)})},
        {"cell of texts", cell ({text ("a"), text ("b"), text ("c")})},
        {"unset cell", cell (Sizes{1, 3})},
        {"record", record ({{"sub", row ({1, 1, 1})}})},
        {"unset record", records ({1, 1}, {"sub"})},
        {"records", records ({1, 3}, {"sub"})},
        {"function handle", function_handle ()},
        {"object", object ()},
    };
    const std::string empties = "empty|empty row|empty text|empty cell|empty records|sparse empty|";
    const std::string triples = empties + "row|sparse|sparse logical|";
    const std::string pairs = empties + "pair|sparse pair|";
    const struct {
        const char* path;
        std::string accepted;
    } fields[] = {
        {"c", triples},
        {"blx", triples + "nan|"},
        {"bux", triples + "nan|"},
        {"blc", pairs},
        {"buc", pairs},
        {"cfix", "number|"},
        {"ints", empties + "record|unset record|"},
        {"names", ""},    // what is no record names nothing
        {"qosubi", empties},
        {"qcsubk", empties},
        {"qoval", empties},
        {"cones", empties},
        {"accs", empties},
        {"bardim", empties},
        {"prisen", empties},
        {"duasen", empties},
        {"g", ""},
        {"f", ""},
    };
    for (const auto& field : fields)
        for (const auto& [name, value] : odd) {
            SCOPED_TRACE (std::string (field.path) + ": " + name);
            const KLVrescode_t code = put (record ({{"a", good_a ()}, {field.path, value}}));
            const bool is_names = std::string (field.path) == "names";
            const bool accepted =
                is_names ? std::string (name).find ("record") == std::string::npos ||
                               std::string (name) == "empty records"
                         : ("|" + field.accepted).find ("|" + std::string (name) + "|") != std::string::npos;
            const bool by_library = std::string (field.path) == "c" && std::string (name) == "nan";
            EXPECT_EQ (code == 0, accepted) << code << printed ();
            EXPECT_EQ (printed ().find ("prob." + std::string (field.path)) != std::string::npos,
                       !accepted && !by_library)
                << printed ();
        }
}

TEST_F (Problem, EveryFailingAllocationIsReportedAndLeavesNothing)
{
    for (const Value& a : {good_a (), sparse (2, 3, {{0, 0, 1}})}) {
        KLVrescode_t code = 0;
        int failures = 0;
        fail_each_allocation ([&] {
            code = put (with (everything_but_a (), "a", a));
            if (code != 0) {
                EXPECT_EQ (code, KLV_RES_OUT_OF_MEMORY);
                EXPECT_EQ (printed (), "");
                ++failures;
            }
        });
        EXPECT_EQ (code, 0);
        EXPECT_GE (failures, 15);    // costs, six arrays of bounds, the matrix, seven names
    }
}

}
