#include "output/problem.h"

#include <limits>

#include "input/problem.h"
#include "output/records.h"
#include "output/sparse_columns.h"
#include "tests/unit/gateway_function.h"
#include "tests/unit/library_fakes.h"
#include "tests/unit/task_text.h"

using namespace standalone;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity ();

class ProblemOutput : public GatewayFunctionTest {
protected:
    KLVrescode_t get ()
    {
        return run ({}, [&] (mxArray** out, const mxArray**) {
            const char* const names[] = {"prob"};
            host::Array res = create_record (names);
            const KLVrescode_t code = res ? getprob (0, task, res.get ()) : KLV_RES_OUT_OF_MEMORY;
            out[0] = res.release ();
            return code;
        });
    }

    KLVrescode_t put (const Value& prob)
    {
        KLV_deletetask (&task);
        KLV_makeemptytask (nullptr, &task);
        return run ({prob}, [this] (mxArray**, const mxArray** in) { return putproblem (task, in[0]); });
    }

    View prob () { return result[0]["prob"]; }
};

// Every kind of bound, a column out of order, an empty column, integers, some names, a constant, maximising.
void fill (KLVtask_t task)
{
    KLV_appendcons (task, 10);
    KLV_appendvars (task, 6);
    const std::int32_t rows[] = {5, 2, 9};
    const double values[] = {50, 20, 90}, costs[] = {1, 0, -2.5, 0, 0, 1e-300};
    KLV_putacol (task, 1, 3, rows, values);
    KLV_putacol (task, 4, 1, rows, values);
    KLV_putcslice (task, 0, 6, costs);
    KLV_putcfix (task, -3.25);
    const std::int32_t keys[] = {KLV_BK_LO, KLV_BK_UP, KLV_BK_FX, KLV_BK_FR, KLV_BK_RA, KLV_BK_UP};
    const double lower[] = {0, -1e30, 2, -1e30, -1, -1e30}, upper[] = {0, 5, 2, 0, 1, -4};
    KLV_putvarboundslice (task, 0, 6, keys, lower, upper);
    KLV_putconboundslice (task, 2, 8, keys, lower, upper);
    KLV_putvartype (task, 5, KLV_VAR_INTEGER);
    KLV_putvartype (task, 2, KLV_VAR_INTEGER);
    KLV_putvarname (task, 3, "x3");
    KLV_putconname (task, 0, "r€0");
    KLV_putobjname (task, "profit");
    KLV_putobjsense (task, KLV_SENSE_MAXIMIZE);
}

TEST_F (ProblemOutput, IsTheProblemOfTheTask)
{
    fill (task);
    ASSERT_EQ (get (), 0);
    EXPECT_EQ (printed (), "0\n");
    EXPECT_EQ (prob ().field_names (), (std::vector<std::string>{"c", "cfix", "a", "blc", "buc", "blx", "bux",
                                                                 "ints", "names", "objsense"}));
    EXPECT_EQ (prob ()["c"].sizes (), (Sizes{6, 1}));
    EXPECT_EQ (prob ()["c"].numbers (), (Numbers{1, 0, -2.5, 0, 0, 1e-300}));
    EXPECT_EQ (prob ()["cfix"].number (), -3.25);
    EXPECT_EQ (prob ()["blx"].numbers (), (Numbers{0, -inf, 2, -inf, -1, -inf}));
    EXPECT_EQ (prob ()["bux"].numbers (), (Numbers{inf, 5, 2, inf, 1, -4}));
    EXPECT_EQ (prob ()["blc"].numbers (), (Numbers{-inf, -inf, 0, -inf, 2, -inf, -1, -inf, -inf, -inf}));
    EXPECT_EQ (prob ()["ints"]["sub"].numbers (), (Numbers{3, 6}));
    EXPECT_EQ (prob ()["ints"]["sub"].sizes (), (Sizes{2, 1}));
    EXPECT_EQ (prob ()["objsense"].text (), "maximize");

    const View a = prob ()["a"];
    ASSERT_TRUE (a.is_sparse ());
    EXPECT_EQ (a.sizes (), (Sizes{10, 6}));
    const std::vector<mwIndex> starts (mxGetJc (a.get ()), mxGetJc (a.get ()) + 7);
    EXPECT_EQ (starts, (std::vector<mwIndex>{0, 0, 3, 3, 3, 4, 4}));
    const std::vector<mwIndex> rows (mxGetIr (a.get ()), mxGetIr (a.get ()) + 4);
    EXPECT_EQ (rows, (std::vector<mwIndex>{2, 5, 9, 5}));
    EXPECT_EQ (Numbers (mxGetPr (a.get ()), mxGetPr (a.get ()) + 4), (Numbers{20, 50, 90, 50}));

    const View names = prob ()["names"];
    EXPECT_EQ (names.field_names (),
               (std::vector<std::string>{"name", "obj", "con", "var", "barvar", "acc"}));
    EXPECT_EQ (names["name"].text (), "");
    EXPECT_EQ (names["obj"].text (), "profit");
    EXPECT_EQ (names["var"].sizes (), (Sizes{6, 1}));
    EXPECT_EQ (names["var"].cell (3).text (), "x3");
    EXPECT_EQ (names["con"].cell (0).text (), "r€0");
    EXPECT_EQ (names["con"].cell (9).text (), "");
    EXPECT_FALSE (names["barvar"]);
    EXPECT_FALSE (names["acc"]);
}

TEST_F (ProblemOutput, GivenBackIsTheSameProblem)
{
    fill (task);
    KLV_putobjsense (task, KLV_SENSE_MINIMIZE);    // on input the sense is the command's business
    ASSERT_EQ (get (), 0);
    // A column comes back sorted; everything else is as it was.
    const std::int32_t rows[] = {2, 5, 9};
    const double values[] = {20, 50, 90};
    KLV_putacol (task, 1, 3, rows, values);
    const std::string before = task_text (task);
    const Value record = result.outputs[0];
    EXPECT_EQ (put (Value (mxDuplicateArray (record["prob"].get ()))), 0);
    EXPECT_EQ (task_text (task), before);
}

TEST_F (ProblemOutput, OfAnEmptyTaskCanBeGivenBack)
{
    ASSERT_EQ (get (), 0);
    EXPECT_EQ (prob ()["a"].sizes (), (Sizes{0, 0}));
    for (const char* field : {"c", "blc", "buc", "blx", "bux"})
        EXPECT_EQ (prob ()[field].sizes (), (Sizes{0, 1})) << field;
    EXPECT_FALSE (prob ()["ints"]);
    EXPECT_FALSE (prob ()["names"]["var"]);
    EXPECT_EQ (prob ()["objsense"].text (), "minimize");
    const std::string before = task_text (task);
    EXPECT_EQ (put (Value (mxDuplicateArray (prob ().get ()))), 0);
    EXPECT_EQ (task_text (task), before);
}

TEST_F (ProblemOutput, IsAValidPartWhereMemoryRanOut)
{
    fill (task);
    KLVrescode_t code = -1;
    fail_each_allocation ([&] {
        code = get ();
        if (session ().allocations < session ().failing_allocation)
            return;
        EXPECT_EQ (code, KLV_RES_OUT_OF_MEMORY);
        if (prob () && prob ()["a"]) {
            const mwIndex* starts = mxGetJc (prob ()["a"].get ());
            EXPECT_TRUE (std::is_sorted (starts, starts + 7));
            EXPECT_EQ (prob ()["bux"].count (), 6U);
        }
        EXPECT_FALSE (prob ()["objsense"]);
    });
    EXPECT_EQ (code, 0);
}

// The task's problem, seen through a library that answers otherwise.
class FakedOutput : public ProblemOutput {
protected:
    FakedOutput ()
    {
        fill (task);
        library_fakes = &fakes;
    }
    ~FakedOutput () override { library_fakes = nullptr; }

    LibraryFakes fakes;
};

TEST_F (FakedOutput, HasQuadraticTermsInTheirFields)
{
    fakes.objective = {{2, 1}, {0, 1}, {4.5, -1}};
    fakes.constraints.resize (10);
    fakes.constraints[0] = {{1}, {0}, {3}};
    fakes.constraints[7] = {{5, 2}, {2, 2}, {0.5, 8}};
    ASSERT_EQ (get (), 0);
    EXPECT_EQ (
        prob ().field_names (),
        (std::vector<std::string>{"qosubi", "qosubj", "qoval", "c", "cfix", "a", "qcsubk", "qcsubi", "qcsubj",
                                  "qcval", "blc", "buc", "blx", "bux", "ints", "names", "objsense"}));
    const struct {
        const char* field;
        Numbers values;
    } expected[] = {{"qosubi", {3, 2}},    {"qosubj", {1, 2}},    {"qoval", {4.5, -1}},
                    {"qcsubk", {1, 8, 8}}, {"qcsubi", {2, 6, 3}}, {"qcsubj", {1, 3, 3}},
                    {"qcval", {3, 0.5, 8}}};
    for (const auto& [field, values] : expected) {
        EXPECT_EQ (prob ()[field].numbers (), values) << field;
        EXPECT_EQ (prob ()[field].sizes (), (Sizes{values.size (), 1})) << field;
    }
}

TEST_F (FakedOutput, EndsTheCallWhenCountedTermsAreMissing)
{
    fakes.constraints.resize (10);
    fakes.constraints[3] = {{1}, {0}, {3}};
    fakes.missing_terms = 2;
    get ();
    EXPECT_EQ (result.error, "qcnz!=cur");
    EXPECT_EQ (printed (), "0\nqcnz=3  cur=1\n");
    EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
}

TEST_F (FakedOutput, RefusesDisjunctiveConstraints)
{
    fakes.disjunctive = 12;
    EXPECT_EQ (get (), 1200);
    EXPECT_EQ (
        printed (),
        "12\n" +
            error_line (1200, "Problems with disjunctive constraints are not supported by this interface."));
    EXPECT_FALSE (prob ());
}

TEST_F (FakedOutput, KeepsWhatWasObtainedBeforeALibraryFailure)
{
    fakes.failing_function = "KLV_getacol";
    fakes.failing_call = 2;
    EXPECT_EQ (get (), fakes.failure);
    EXPECT_EQ (prob ()["c"].numbers ()[2], -2.5);
    const mwIndex* starts = mxGetJc (prob ()["a"].get ());
    EXPECT_EQ (std::vector<mwIndex> (starts, starts + 7), (std::vector<mwIndex>{0, 0, 3, 3, 3, 3, 3}));
    EXPECT_EQ (prob ()["bux"].numbers (), Numbers (6));
    EXPECT_FALSE (prob ()["names"]["name"]);

    fakes.failing_function = "KLV_getvarname";
    fakes.failing_call = 4;
    EXPECT_EQ (get (), fakes.failure);
    EXPECT_EQ (prob ()["names"]["var"].cell (3).text (), "x3");
    EXPECT_FALSE (prob ()["names"]["var"].cell (4));
    EXPECT_FALSE (prob ()["names"]["con"]);
    EXPECT_FALSE (prob ()["objsense"]);
}

class SparseColumns : public GatewayFunctionTest {};

TEST_F (SparseColumns, AreSortedWithTheirValues)
{
    const struct {
        const char* fault;
        std::vector<mwIndex> rows, sorted;
        Numbers moved;    // values are 10, 20, ...
        long allocations;
    } cases[] = {
        {"empty", {}, {}, {}, 0},
        {"one entry", {7}, {7}, {10}, 0},
        {"sorted costs nothing", {1, 2, 9}, {1, 2, 9}, {10, 20, 30}, 0},
        {"reversed", {9, 5, 2}, {2, 5, 9}, {30, 20, 10}, 1},
        {"only the last is out of order", {1, 2, 3, 0}, {0, 1, 2, 3}, {40, 10, 20, 30}, 1},
        {"beyond 32 bits", {1ULL << 33, 5, 1ULL << 32}, {5, 1ULL << 32, 1ULL << 33}, {20, 30, 10}, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.fault);
        std::vector<mwIndex> rows = c.rows;
        Numbers values;
        for (std::size_t k = 0; k < rows.size (); ++k)
            values.push_back (10.0 * static_cast<double> (k + 1));
        session ().allocations = 0;
        EXPECT_EQ (sort_mat_column (rows.size (), rows.data (), values.data ()), 0);
        EXPECT_EQ (rows, c.sorted);
        EXPECT_EQ (values, c.moved);
        EXPECT_EQ (session ().allocations, c.allocations);
    }
}

TEST_F (SparseColumns, StayAsTheyAreWithoutMemory)
{
    mwIndex rows[] = {2, 1};
    double values[] = {20, 10};
    session ().failing_allocation = 1;
    EXPECT_EQ (sort_mat_column (2, rows, values), KLV_RES_OUT_OF_MEMORY);
    EXPECT_EQ (rows[0], 2U);
    EXPECT_EQ (values[0], 20);
}

}
