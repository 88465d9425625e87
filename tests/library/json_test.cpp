// JSON files: everything comes back to the last bit, and whatever is wrong is refused by name.
#include "tests/library/every_class.h"

#include <bit>

using testing::IsSubstring;

namespace {

std::string quoted (std::string text)
{
    std::ranges::replace (text, '\'', '"');
    return text;
}

// In `old` and `by` a ' stands for a quote.
std::string replaced (std::string text, const std::string& old, const std::string& by)
{
    const auto at = text.find (quoted (old));
    EXPECT_NE (at, text.npos) << old;
    return text.replace (at, old.size (), quoted (by));
}

// Two tasks, the second of which reads what the first one writes.
struct Copy {
    files::Folder folder;
    std::string path = folder / "f.json";
    files::Task task, again;

    KLVrescode_t read (const std::string& text)
    {
        files::save (path, text);
        return KLV_readdata (again, path.c_str ());
    }
    void make ()
    {
        ASSERT_EQ (KLV_writedata (task, path.c_str ()), KLV_RES_OK) << task.last_error ();
        ASSERT_EQ (KLV_readdata (again, path.c_str ()), KLV_RES_OK) << again.last_error ();
        ASSERT_EQ (model::difference (task.problem (), again.problem ()).value_or (""), "");
    }
};

// A slot to the last bit, without its statuses.
std::vector<std::uint64_t> bits (const auto& slot)
{
    std::vector<std::uint64_t> all;
    for (const auto* keys : {&slot.skc, &slot.skx})
        all.insert (all.end (), keys->begin (), keys->end ());
    for (const auto* values : {&slot.xc, &slot.xx, &slot.y, &slot.slc, &slot.suc, &slot.slx, &slot.sux})
        std::ranges::transform (*values, std::back_inserter (all), std::bit_cast<std::uint64_t, double>);
    return all;
}

TEST (Json, ExampleOfTheManualIsReadAndSolved)
{
    Copy copy;
    ASSERT_EQ (copy.read (files::json_example ()), KLV_RES_OK) << copy.again.last_error ();
    EXPECT_EQ (model::text_of (copy.again.problem ()),
               "min 2 3.5 +0.5; bread 0.. milk 0..10i; energy: 90 120 in 300..");
    EXPECT_EQ (copy.again->parameters.get (klv::RealSetting::time_limit), 60);
    EXPECT_EQ (model::proved (copy.again), "int PRIMAL_FEASIBLE");
    EXPECT_EQ (model::slot (copy.again, KLV_SOL_INT).xx, (model::Values{2, 1}));
    EXPECT_EQ (model::optimized (copy.again), "OK int INTEGER_OPTIMAL");
    EXPECT_NEAR (model::slot (copy.again, KLV_SOL_INT).primal, 0.5 + 2 * 300 / 90.0, 1e-9);
}

TEST (Json, InstancesComeBackWithParametersAndSolutions)
{
    int count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator (KALVO_TEST_DATA)) {
        if (entry.path ().extension () != ".mps")
            continue;
        SCOPED_TRACE (entry.path ().filename ());
        Copy copy;
        const KLVtask_t a = copy.task, b = copy.again;
        ASSERT_EQ (KLV_readdata (a, entry.path ().c_str ()), KLV_RES_OK);
        KLV_putnaintparam (a, "KLV_IPAR_RANDOM_SEED", ++count);
        KLV_putdouparam (a, 8, klv::infinity);
        KLV_putdouparam (a, 6, 100.0 / 3);
        KLV_optimize (a);
        copy.make ();
        EXPECT_EQ (a->parameters.doubles, b->parameters.doubles);
        EXPECT_EQ (a->parameters.integers, b->parameters.integers);
        for (std::int32_t which = 0; which < KLV_SOL_COUNT; ++which) {
            model::Slot before = model::slot (a, which);
            const model::Slot after = model::slot (b, which);
            if (before.solution == KLV_SOLSTA_INTEGER_OPTIMAL)    // which only a search proves
                before.solution = KLV_SOLSTA_PRIMAL_FEASIBLE;
            EXPECT_EQ (bits (before), bits (after)) << which;
            EXPECT_EQ (std::tuple (before.defined, before.solution, before.primal, before.dual),
                       std::tuple (after.defined, after.solution, after.primal, after.dual));
        }
    }
    EXPECT_GE (count, 15);
}

TEST (Json, CertificatesComeBackWhereTheyProve)
{
    for (const char* problem :
         {"max 1 3; 0.. 0..; 1 -1 in ..3", "min 7 1; 0.. 0..; 3 7 in ..-2; 1 -1 in 3..",
          "max 7 1; 0.. 0..; 3 7 in ..-2; 1 -1 in 3..", "max 1; 3..2; 1 in 0..", "min 1; 0..; 1 in 7..5"}) {
        SCOPED_TRACE (problem);
        Copy copy;
        copy.task->replace_problem (model::parse (problem));
        EXPECT_PRED_FORMAT2 (IsSubstring, "INFEASIBLE_CERTIFICATE", model::optimized (copy.task));
        copy.make ();
        EXPECT_EQ (model::proved (copy.again), model::proved (copy.task));
        for (const auto which : {KLV_SOL_BAS, KLV_SOL_ITR})
            EXPECT_EQ (bits (model::slot (copy.task, which)), bits (model::slot (copy.again, which)));
        if (const std::string text = files::load (copy.path); text.find ("[-2, ") != text.npos) {
            EXPECT_EQ (copy.read (replaced (text, "[-2, ", "[200, ")), KLV_RES_OK);
            EXPECT_EQ (model::proved (copy.again).find ("CERTIFICATE"), text.npos) << "a false one";
        }
    }
}

TEST (Json, NamesOfAnyBytesAndStartsInPartComeBack)
{
    Copy copy;
    KLV_appendcons (copy.task, 2);
    KLV_appendvars (copy.task, 5);
    const std::int32_t rows[] = {1, 0};
    const double entries[] = {0, -0.0};
    KLV_putacol (copy.task, 3, 2, rows, entries);
    const char* names[] = {"a \"quote\" and \\", "\xFF\xFE", "Über, 東京\x7F", "", "\x01\n\xC3"};
    for (std::int32_t j = 0; j < 5; ++j)
        KLV_putvarname (copy.task, j, names[j]);
    KLV_putobjname (copy.task, "\xED\xA0\x80");
    KLV_puttaskname (copy.task, "");
    const double nan = std::numeric_limits<double>::quiet_NaN ();
    const KLVtask_t before = copy.task, after = copy.again;
    EXPECT_EQ (model::put_start (before, KLV_SOL_INT, {}, {}, {nan, 1, nan, -0.0, 2}), 0);
    EXPECT_EQ (model::put_start (before, KLV_SOL_BAS, {}, {1, 1, 3, KLV_SK_INFEASIBLE, 4}, {}), 0);
    copy.make ();
    EXPECT_EQ (after->problem ().matrix.column (3).rows[0], 1) << "entries keep their order";
    for (std::int32_t j = 0; j < 5; ++j)
        EXPECT_EQ (after->problem ().variable_name.get (j), names[j]);
    for (const std::size_t which : {KLV_SOL_BAS, KLV_SOL_INT}) {
        EXPECT_EQ (bits (before->solutions[which].value ()), bits (after->solutions[which].value ()));
        EXPECT_FALSE (after->solutions[which]->has_primal) << "a point that nobody gave";
    }
}

TEST (Json, ParametersOfTheTaskGoBeforeThoseOfTheFile)
{
    Copy copy;
    KLV_putnaintparam (copy.task, "KLV_IPAR_RANDOM_SEED", 3);
    KLV_putnaintparam (copy.task, "KLV_IPAR_LOG", 1);
    copy.task.set_format (KLV_FILE_JSON);
    KLV_putstrparam (copy.task, KLV_SPAR_DATA_FILE_NUMBER, "private");
    KLV_putnaintparam (copy.again, "KLV_IPAR_RANDOM_SEED", 5);
    copy.make ();
    const klv::Parameters& parameters = copy.again->parameters;
    EXPECT_EQ (parameters.get (klv::IntSetting::random_seed), 5);
    EXPECT_EQ (parameters.get (klv::IntSetting::log_level), 1);
    EXPECT_EQ (parameters.get (klv::IntSetting::file_format), KLV_FILE_BY_EXTENSION);
    EXPECT_EQ (files::load (copy.path).find ("private"), std::string::npos);
}

TEST (Json, FieldsOfALaterVersionOutsideTheProblemAreSkipped)
{
    const std::string later = replaced (files::json_example (), "'version': 1", "'version': 3");
    for (const char* value :
         {"null", "1e-400", "'\\u0000'", "{}", "[[{'problem': [1, {'x': 'y'}]}, []], true]"})
        for (const auto& [place, field] : {std::pair{"\n'problem': ", "history"},
                                           {"'KLV_DPAR_TIME_LIMIT'", "parameters.history"},
                                           {"'skc'", "solutions.int.history"}}) {
            Copy copy;
            const std::string text =
                replaced (later, place, std::string ("'history': ") + value + ',' + place);
            ASSERT_EQ (copy.read (text), KLV_RES_OK) << copy.again.last_error ();
            EXPECT_PRED_FORMAT2 (IsSubstring, "skipped (\"" + std::string (field) + "\")",
                                 copy.again.printed);
            EXPECT_EQ (model::slot (copy.again, KLV_SOL_INT).xx, (model::Values{2, 1}));
        }
}

TEST (Json, EveryClassComesBackWithItsSolution)
{
    const model::EveryClass every;
    const model::Values xx (5, 1.0 / 3), snx{1, 2, 3, 4, 5}, doty{-0.0, 2, 3, 4}, matrix{1, 2, 0.1, 4, 5, 6};
    const model::Ints keys{3, 4};
    EXPECT_EQ (KLV_putsolutionnew (every, KLV_SOL_ITR, nullptr, nullptr, keys.data (), nullptr, xx.data (),
                                   nullptr, nullptr, nullptr, nullptr, nullptr, snx.data (), doty.data ()),
               0);
    EXPECT_EQ (KLV_putbarsj (every, KLV_SOL_ITR, 1, matrix.data ()), 0);
    Copy copy;
    EXPECT_EQ (KLV_writedata (every, copy.path.c_str ()), 0) << every.last_error ();
    std::string text = files::load (copy.path);
    std::erase (text, '\n');
    EXPECT_NE (text.find ("\"version\": 2"), text.npos);
    ASSERT_EQ (copy.read (text), 0) << copy.again.last_error ();
    EXPECT_EQ (model::difference (every.problem (), copy.again.problem ()).value_or (""), "");
    const klv::Solution &before = *static_cast<KLVtask_t> (every)->solutions[KLV_SOL_ITR],
                        &after = static_cast<KLVtask_t> (copy.again)->solutions[KLV_SOL_ITR].value ();
    EXPECT_EQ (std::tie (before.xx, before.skn, before.snx, before.doty, before.bars),
               std::tie (after.xx, after.skn, after.snx, after.doty, after.bars));
    EXPECT_TRUE (after.barx.empty ());
    for (const char* name : {"f.mps", "f.lp"}) {
        EXPECT_EQ (KLV_writedata (every, (copy.folder / name).c_str ()), KLV_RES_FILE_CANNOT_HOLD);
        EXPECT_PRED_FORMAT2 (IsSubstring, "cannot hold affine expressions; JSON can", every.last_error ());
    }

    const struct {
        std::string old, by, error;
    } cases[] = {
        {"'rows': [0,2,1]", "'rows': [0,2,5]",
         "problem.quadratic_objective.rows[2]: must be the index of a row"},
        {"'columns': [0,0,1]", "'columns': [0,0,2]",
         "problem.quadratic_objective.columns[2]: must be an index up to"},
        {"'values': [-2,", "'values': [-2,1,",
         "problem.quadratic_objective.rows: has 3 entries where there are 4"},
        {"'constraints': [0,1,1]", "'constraints': [0,1,2]",
         "problem.quadratic_constraints.constraints[2]: must be"},
        {"'counts': [0,3,0,0,1]", "'counts': [0,5,0,0,1]",
         "problem.affine_expressions.counts[1]: counts entries"},
        {"'expressions': [3,0,4,3]", "'expressions': [3,0,3,3]",
         "expressions[2]: the variable has this expression"},
        {"'QUADRATIC_CONE',", "'TREE',", "problem.domains.types[0]: 'TREE' is none of its words"},
        {"'exponent_counts': [0,2]", "'exponent_counts': [1,1]",
         "exponent_counts[0]: a quadratic cone has none"},
        {"'sizes': [1,3]", "'sizes': [1,1]", "sizes[1]: a primal power cone of this size"},
        {"'sizes': [1,3]", "'sizes': [1,4]", "problem.affine_constraints.domains[1]: has more rows than"},
        {"'domains': [1,0]", "'domains': [1]",
         "problem.affine_constraints.expressions: 1 entries belong to no"},
        {"'expressions': [0,1,2,3]", "'expressions': [0,1,2,5]",
         "expressions[3]: must be the index of an expression"},
        {"'parameters': [0.3,", "'parameters': [1,", "cones.types[0]: a primal power cone can"},
        {"'members': [4,0,1,2]", "'members': [4,0,1,4]",
         "problem.cones.members[3]: the variable is in a cone already"},
        {"'orders': [2,3]", "'orders': [2,-3]", "problem.semidefinite.orders[1]: must not be negative"},
        {"'orders': [2,3]", "'orders': [2,2]", "rows[1]: must be the index of a row"},
        {"'doty': [-0.0,", "'doty': [", "solutions.itr.doty: has 3 entries where there are 4 rows of affine"},
        {"'skn': ['LOWER','UPPER']", "'skn': ['LOWER']",
         "solutions.itr.skn: has 1 entries where there are 2 cones"},
    };
    for (const auto& [old, by, error] : cases) {
        SCOPED_TRACE (error);
        EXPECT_EQ (copy.read (replaced (text, old, by)), KLV_RES_FILE_SYNTAX);
        EXPECT_PRED_FORMAT2 (IsSubstring, quoted (error), copy.again.last_error ());
        EXPECT_EQ (copy.again.problem ().variables (), 0);
    }
}

TEST (Json, WhatIsWrongIsRefusedByName)
{
    const std::string text = files::json_example (), deep (1'000'000, '[');
    const struct {
        std::string old, by, error;    // in which ' stands for a quote
    } cases[] = {
        {"'version': 1", "'version': 0", "f.json:3: column 13: version: versions begin with 1"},
        {"1,\n'problem': {", "3,\n'problem': {'trees': [],",
         "f.json:4: column 19: problem: the field 'trees' belongs to version 3; version 2 is read"},
        {"'version': 1,", "'history': 0, 'version': 3,", "the field 'history' is unknown"},
        {"kalvo task", "other", "f.json:2: column 17: format: must be 'kalvo task'"},
        {"'version': 1,", "'version': 1, 'version': 1,", "the field 'version' is there twice"},
        {"'sense': 'MINIMIZE', ", "", "problem.objective: the field 'sense' is missing"},
        {"MINIMIZE", "minimize", "problem.objective.sense: 'minimize' is none of its words"},
        {"'name': 'diet'", "'title': 'diet'", "problem: the field 'title' is unknown"},
        {"'diet'", "'di\\u0000et'", "problem.name: a name has no zero byte"},
        {"'diet'", "[100, 256]", "problem.name: the bytes of a name must be numbers from 1 to 255"},
        {"'milk'", "{}", "problem.variables.names[1]: must be a name"},
        {"'milk'", "'\xFF'", "problem.variables.names[1]: syntax error while parsing value"},
        {"'constant': 0.5", "'constant': 'Inf'", "problem.objective.constant: must be finite"},
        {"[2, 3.5]", "[2, 'NaN']", "problem.variables.costs[1]: must be finite"},
        {"[2, 3.5]", "2", "problem.variables.costs: must be a list of numbers"},
        {"[2, 3.5]", "[2]", "f.json:12: problem.variables.costs: has 1 entries where there are 2 variables"},
        {"3.5]", "1e400]", "problem.variables.costs[1]: a number is beyond the numbers of double"},
        {"3.5]", "1e-400]", "problem.variables.costs[1]: '1e-400' is beyond the numbers of double"},
        {"3.5]", "0x3]", "problem.variables.costs[2]: syntax error while parsing array"},
        {"3.5]", deep, "problem.variables.costs[1]: must be a number"},
        {"[300]", "['Inf']", "problem.constraints.lower[0]: a lower bound is a number or -Inf"},
        {"['Inf', 10]", "[1, 10]", "problem.variables.keys[0]: the key does not agree with the bounds 0"},
        {"'LO', 'RA'", "'LO', 'BX'", "problem.variables.keys[1]: 'BX' is none of its words"},
        {"'integers': [1]", "'integers': [2]", "problem.variables.integers[0]: must be the index"},
        {"'integers': [1]", "'integers': [1, 1]", "problem.variables.integers[1]: must be the index"},
        {"'counts': [1, 1]", "'counts': [-1, 3]", "problem.matrix.counts[0]: counts entries that are"},
        {"'counts': [1, 1]", "'counts': [1, 0]", "f.json:21: problem.matrix.rows[1]: belongs to no column"},
        {"'counts': [1, 1]", "'counts': [0, 2]", "problem.matrix.rows[1]: the column has this row twice"},
        {"'rows': [0, 0]", "'rows': [0, 1]", "problem.matrix.rows[1]: must be the index"},
        {"'rows': [0, 0]", "'rows': [0, 0.5]", "problem.matrix.rows[1]: must be a whole number"},
        {"'rows': [0, 0]", "'rows': [0, 9e9]", "problem.matrix.rows[1]: must be a whole number"},
        {"KLV_DPAR_TIME_LIMIT", "KLV_DPAR_TIME", "parameters: the field 'KLV_DPAR_TIME' is unknown"},
        {": 60}", ": -2}", "parameters.KLV_DPAR_TIME_LIMIT: KLV_DPAR_TIME_LIMIT must be between"},
        {"'xx': [2, 1]", "'xx': [2, 'Inf']", "solutions.int.xx[1]: must be finite, or NaN"},
        {"'xx': [2, 1]", "'xx': []", "solutions.int.xx: has 0 entries where there are 2 variables"},
        {"'xx': [2, 1]", "'y': [1]", "solutions.int: the field 'y' is unknown"},
        {"'skc': ['UNKNOWN'], ", "", "solutions.int: the field 'skc' is missing"},
        {"1]}\n}\n}\n", "1]}\n}\n} more", "parsing value - invalid literal; expected end of input"},
        {text, "", "f.json:1: column 1: syntax error while parsing value - unexpected end of input"},
        {text, "[]", "f.json:1: column 1: must be an object"},
    };
    for (const auto& [old, by, error] : cases) {
        SCOPED_TRACE (error);
        Copy copy;
        KLV_appendvars (copy.again, 3);
        EXPECT_EQ (copy.read (replaced (text, old, by)), KLV_RES_FILE_SYNTAX);
        EXPECT_PRED_FORMAT2 (IsSubstring, quoted (error), copy.again.last_error ());
        EXPECT_EQ (copy.again->problem ().variables (), 0);
        EXPECT_EQ (copy.again->parameters.doubles, klv::Parameters ().doubles);
        EXPECT_FALSE (copy.again->solutions[KLV_SOL_INT]);
    }
}

}
