#include "output/solution.h"

#include "kalvo/task/task.h"
#include "output/records.h"
#include "tests/unit/gateway_function.h"

using namespace standalone;

namespace {

using Names = std::vector<std::string>;

const Names itr_fields = {"prosta", "solsta", "skc", "skx", "skn", "xc",   "xx",   "barx",    "y",
                          "slc",    "suc",    "slx", "sux", "snx", "bars", "doty", "pobjval", "dobjval"};
const Names bas_fields = {"prosta", "solsta", "skc", "skx", "xc",      "xx",     "y",
                          "slc",    "suc",    "slx", "sux", "pobjval", "dobjval"};
const Names int_fields = {"prosta", "solsta", "skc", "skx", "xc", "xx", "pobjval"};

// Two constraints and three variables by default.
class SolutionOutput : public GatewayFunctionTest {
protected:
    void size_task (std::int32_t constraints, std::int32_t variables)
    {
        KLV_appendcons (task, constraints);
        KLV_appendvars (task, variables);
    }

    // Values that tell fields and items apart.
    void define (int which)
    {
        std::int32_t constraints = 0, variables = 0;
        KLV_getnumcon (task, &constraints);
        KLV_getnumvar (task, &variables);
        double next = 100.0 * (which + 1);
        const auto values = [&next] (std::int32_t count) {
            std::vector<double> made;
            for (std::int32_t i = 0; i < count; ++i)
                made.push_back (++next);
            return made;
        };
        klv::Solution solution;
        solution.problem_status = KLV_PRO_FEASIBLE;
        solution.solution_status = KLV_SOLSTA_OPTIMAL;
        for (std::int32_t i = 0; i < constraints; ++i)
            solution.skc.push_back (KLV_SK_BASIC + i);
        for (std::int32_t j = 0; j < variables; ++j)
            solution.skx.push_back (KLV_SK_LOWER + j);
        solution.xc = values (constraints);
        solution.xx = values (variables);
        if (which != KLV_SOL_INT) {
            for (auto member : {&klv::Solution::y, &klv::Solution::slc, &klv::Solution::suc})
                solution.*member = values (constraints);
            for (auto member : {&klv::Solution::slx, &klv::Solution::sux})
                solution.*member = values (variables);
        }
        solution.primal_objective = ++next;
        solution.dual_objective = ++next;
        task->solutions[static_cast<std::size_t> (which)] = solution;
    }

    // The result record has the field `sol`, as the driver makes it.
    KLVrescode_t get (int statuskeys)
    {
        return run ({}, [&] (mxArray** out, const mxArray**) {
            const char* const names[] = {"sol"};
            host::Array res = create_record (names);
            const KLVrescode_t code =
                res ? getsolution (task, statuskeys, res.get ()) : KLV_RES_OUT_OF_MEMORY;
            out[0] = res.release ();
            return code;
        });
    }

    View sol () { return result[0]["sol"]; }

    std::string text_of_key (std::int32_t key)
    {
        char text[KLV_MAX_TEXT] = "";
        EXPECT_EQ (KLV_sktostr (task, key, text), 0);
        return std::string (text, 2);
    }
};

TEST_F (SolutionOutput, HasTheDefinedSolutionsAndTheirFieldsInOrder)
{
    size_task (2, 3);
    EXPECT_EQ (get (0), 0);
    EXPECT_FALSE (sol ());

    const Names fields[] = {itr_fields, bas_fields, int_fields};
    const Names names = {"itr", "bas", "int"};
    for (unsigned chosen = 1; chosen < 8; ++chosen) {
        Names expected;
        for (std::size_t which = 0; which < 3; ++which) {
            task->solutions[which].reset ();
            if (chosen & 1u << which) {
                define (static_cast<int> (which));
                expected.push_back (names[which]);
            }
        }
        EXPECT_EQ (get (0), 0);
        EXPECT_EQ (sol ().field_names (), expected);
        for (std::size_t which = 0; which < 3; ++which)
            if (const View solution = sol ()[names[which].c_str ()]) {
                EXPECT_EQ (solution.field_names (), fields[which]);
            }
    }
}

TEST_F (SolutionOutput, HoldsEachValueInItsField)
{
    size_task (2, 3);
    define (KLV_SOL_ITR);
    define (KLV_SOL_INT);
    ASSERT_EQ (get (1), 0);
    const struct {
        const char* field;
        Numbers values;
    } itr[] = {{"skc", {1, 2}},
               {"skx", {3, 4, 5}},
               {"xc", {101, 102}},
               {"xx", {103, 104, 105}},
               {"y", {106, 107}},
               {"slc", {108, 109}},
               {"suc", {110, 111}},
               {"slx", {112, 113, 114}},
               {"sux", {115, 116, 117}},
               {"snx", {0, 0, 0}},
               {"pobjval", {118}},
               {"dobjval", {119}},
               {"prosta", {KLV_PRO_FEASIBLE}},
               {"solsta", {KLV_SOLSTA_OPTIMAL}},
               {"skn", {}},
               {"barx", {}},
               {"bars", {}},
               {"doty", {}}};
    for (const auto& [field, values] : itr) {
        const View value = sol ()["itr"][field];
        EXPECT_EQ (value.numbers (), values) << field;
        EXPECT_EQ (value.sizes (), (Sizes{values.size (), 1})) << field;
    }
    EXPECT_EQ (sol ()["int"]["xx"].numbers (), (Numbers{303, 304, 305}));
    EXPECT_EQ (sol ()["int"]["pobjval"].number (), 306);
}

TEST_F (SolutionOutput, GivesStatusesAsTextsAndKeysAsTwoCharacters)
{
    size_task (2, 3);
    define (KLV_SOL_ITR);
    ASSERT_EQ (get (0), 0);
    const View itr = sol ()["itr"];
    char text[KLV_MAX_TEXT] = "";
    KLV_prostatostr (task, KLV_PRO_FEASIBLE, text);
    EXPECT_EQ (itr["prosta"].text (), text);
    KLV_solstatostr (task, KLV_SOLSTA_OPTIMAL, text);
    EXPECT_EQ (itr["solsta"].text (), text);
    const std::string first = text_of_key (3), second = text_of_key (4), third = text_of_key (5);
    EXPECT_EQ (itr["skx"].sizes (), (Sizes{3, 2}));
    EXPECT_EQ (itr["skx"].text (),
               (std::string{first[0], second[0], third[0], first[1], second[1], third[1]}));
    EXPECT_EQ (itr["skn"].sizes (), (Sizes{0, 2}));
    EXPECT_EQ (itr["skn"].class_id (), mxCHAR_CLASS);
}

TEST_F (SolutionOutput, OfAProblemWithoutConstraintsHasEmptyColumns)
{
    size_task (0, 1);
    define (KLV_SOL_BAS);
    ASSERT_EQ (get (0), 0);
    EXPECT_EQ (sol ()["bas"]["skc"].sizes (), (Sizes{0, 2}));
    for (const char* field : {"xc", "y", "slc", "suc"})
        EXPECT_EQ (sol ()["bas"][field].sizes (), (Sizes{0, 1})) << field;
    ASSERT_EQ (get (7), 0);
    EXPECT_EQ (sol ()["bas"]["skc"].sizes (), (Sizes{0, 1}));
}

TEST_F (SolutionOutput, KeepsWhatWasObtainedBeforeALibraryFailure)
{
    size_task (2, 3);
    define (KLV_SOL_BAS);
    define (KLV_SOL_INT);
    task->solutions[KLV_SOL_BAS]->slc.clear ();    // can't be read
    EXPECT_EQ (get (1), KLV_RES_INDEX_RANGE);
    const View bas = sol ()["bas"];
    EXPECT_EQ (bas.field_names (), bas_fields);
    EXPECT_EQ (bas["skc"].numbers (), (Numbers{1, 2}));
    EXPECT_EQ (bas["y"].numbers (), (Numbers{206, 207}));
    EXPECT_EQ (bas["slc"].numbers (), (Numbers{0, 0}));
    EXPECT_EQ (bas["suc"].numbers (), (Numbers{0, 0}));
    EXPECT_NE (bas["dobjval"].number (), 0);
    EXPECT_FALSE (sol ()["int"]);
    EXPECT_EQ (printed (), "");
}

TEST_F (SolutionOutput, LeavesEmptyFieldsWhereMemoryRanOut)
{
    size_task (2, 3);
    for (const int which : {KLV_SOL_ITR, KLV_SOL_BAS, KLV_SOL_INT})
        define (which);
    for (const int statuskeys : {0, 1}) {
        KLVrescode_t code = -1;
        fail_each_allocation ([&] {
            code = get (statuskeys);
            if (session ().allocations < session ().failing_allocation)
                return;
            EXPECT_EQ (code, KLV_RES_OUT_OF_MEMORY);
            bool complete = true;    // solutions before the failure are whole, those after it empty
            for (const char* name : {"itr", "bas", "int"}) {
                const View solution = sol () ? sol ()[name] : View ();
                const bool whole = solution && solution["xx"];
                EXPECT_TRUE (complete || !whole);
                for (const std::string& field : solution ? solution.field_names () : Names ())
                    EXPECT_EQ (bool (solution[field.c_str ()]), whole);
                complete = whole;
            }
        });
        EXPECT_EQ (code, 0);
    }
}

TEST_F (SolutionOutput, AnInitialSolutionIsRefused)
{
    const auto put = [this] (const Value& prob) {
        return run ({prob}, [this] (mxArray**, const mxArray** in) { return putsolution (task, in[0]); });
    };
    for (const Value& prob : {matrix (0, 0), scalar (1), function_handle (), records ({0, 0}, {"sol"}),
                              record ({{"sol", matrix (0, 0)}}), record ({{"a", scalar (1)}})}) {
        EXPECT_EQ (put (prob), 0);
        EXPECT_EQ (printed (), "");
    }
    EXPECT_EQ (putsolution (task, nullptr), 0);
    for (const Value& sol : {record ({{"bas", matrix (0, 0)}}), scalar (1), function_handle ()}) {
        EXPECT_EQ (put (record ({{"sol", sol}})), 1200);
        EXPECT_EQ (printed (), error_line (1200, "prob.sol is not supported yet"));
    }
}

}
