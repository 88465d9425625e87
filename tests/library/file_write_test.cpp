// Writing MPS and LP files: what they look like, and that what is written is read back to the last bit and name.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <random>

using model::text_of;
using testing::IsSubstring;

namespace {

constexpr std::array forms{KLV_FILE_FREE_MPS, KLV_FILE_FIXED_MPS, KLV_FILE_LP, KLV_FILE_JSON};

struct Writing {
    files::Folder folder;
    std::string path = folder / "f.mps";
    files::Task task;
    bool path_decides;    // forms of MPS are told apart by themselves

    explicit Writing (const klv::Problem& problem, std::int32_t format = KLV_FILE_BY_EXTENSION)
        : path_decides (format < KLV_FILE_LP)
    {
        KLV_putdouparam (task, KLV_DPAR_BOUND_INFINITY_NUMBER, DBL_MAX);
        task->replace_problem (klv::Problem (problem));
        task.set_format (format);
    }

    KLVrescode_t write () { return KLV_writedata (task, path.c_str ()); }
    std::string written ()
    {
        EXPECT_EQ (write (), KLV_RES_OK) << task.last_error ();
        return files::load (path);
    }
    const klv::Problem& written_and_read ()
    {
        written ();
        if (path_decides)
            task.set_format (KLV_FILE_BY_EXTENSION);
        EXPECT_EQ (KLV_readdata (task, path.c_str ()), KLV_RES_OK) << task.last_error ();
        return task.problem ();
    }
};

void expect_same_after_writing (const klv::Problem& problem, std::int32_t format)
{
    EXPECT_EQ (model::difference (problem, Writing (problem, format).written_and_read ()), std::nullopt);
}

klv::Problem small_problem ()
{
    klv::Problem problem =
        model::parse ("min 1 0.1 +0 +5; 0.. 0..4i ..7; -1.5 in 1..3; in ..; 1e-07 in =2; in ..6");
    problem.name = "small";
    problem.objective_name = "cost";
    return problem;
}

TEST (MpsWrite, FreeForm)
{
    Writing writing (small_problem ());
    EXPECT_EQ (writing.written (),
               files::lines (
                   "NAME          small|ROWS| N  cost| G  R1| N  R2| E  R3| L  R4|COLUMNS|    C1 cost 1|"
                   "    C1 R1 -1.5|    C1 R3 1e-07|    M1 'MARKER' 'INTORG'|    C2 cost 0.1|"
                   "    M2 'MARKER' 'INTEND'|    C3 cost 0|RHS|    RHS cost -5|    RHS R1 1|    RHS R3 2|"
                   "    RHS R4 6|RANGES|    RNG R1 2|BOUNDS| UP BND C2 4| MI BND C3| UP BND C3 7|ENDATA|"));
    EXPECT_EQ (writing.task.printed, "");
}

TEST (MpsWrite, FixedFormIsTakenForNamesWithBlanks)
{
    klv::Problem problem = small_problem ();
    problem.sense = KLV_SENSE_MAXIMIZE;
    problem.cost[1] = -1.0 / 3;
    problem.variable_name.put (1, 3, "the y");
    problem.variable.upper[1] = 1e25;
    Writing writing (problem);
    KLV_putdouparam (writing.task, KLV_DPAR_BOUND_INFINITY_NUMBER, 1e20);
    const std::string text = writing.written ();
    for (const char* lines : {"NAME          small\nOBJSENSE\n    MAX\nROWS\n N  cost\n",
                              "\n    C1        R1                -1.5\n",
                              "\n    M1        'MARKER'                 'INTORG'\n"
                              "    the y     cost      -0.3333333333333333\n",
                              "\n UP BND       the y            1e+25\n MI BND       C3\n"})
        EXPECT_PRED_FORMAT2 (IsSubstring, lines, text);
    EXPECT_PRED_FORMAT2 (IsSubstring, "1 numbers are longer than their 12 columns", writing.task.printed);
    EXPECT_PRED_FORMAT2 (IsSubstring, "1 bounds are written as numbers", writing.task.printed);
}

TEST (MpsWrite, WhatNoFormHoldsIsRefusedByName)
{
    constexpr std::int32_t free = KLV_FILE_FREE_MPS, fixed = KLV_FILE_FIXED_MPS, lp = KLV_FILE_LP;
    static const struct {
        char item;    // the third row or variable (the first is an "x"), the objective, the problem
        std::string name;
        const char* cause;
        std::int32_t format = KLV_FILE_BY_EXTENSION;
    } cases[] = {
        {'r', "a\tb", "constraint 3 \"a?b\", whose name has a control character; JSON can"},
        {'r', "a long name", "constraint 3 \"a long name\", whose name has a blank; JSON can"},
        {'r', "a b", "free MPS cannot hold constraint 3 \"a b\", whose name has a blank; fixed", free},
        {'r', "ab ", "begins or ends with a blank; JSON can", fixed},
        {'r', "ninechars", "is too long; free MPS can", fixed},
        {'r', std::string (65'537, 'x'), "is too long; JSON can"},
        {'r', "$a", "begins with the sign of comments; free MPS can", fixed},
        {'r', "'MARKER'", "is the word of markers; LP can"},
        {'r', "cost", "two items of the same name: constraint 3 \"cost\"; JSON can"},
        {'r', "x-1", "whose name has a blank or a sign that LP uses; free MPS can", lp},
        {'r', ".x", "begins like a number; free MPS can", lp},
        {'r', "Bounds", "is a word of LP; free MPS can", lp},
        {'r', std::string (256, 'x'), "is too long; free MPS can", lp},
        {'v', "E5", "variable 3 \"E5\", whose name reads like an exponent; free MPS can", lp},
        {'v', "x", "two items of the same name: variable 3 \"x\""},
        {'o', "the whole cost", "objective \"the whole cost\""},
        {'p', "a\nb", "the problem's name \"a?b\", which has a control character"},
        {'p', " a", "begins or ends with a blank"},
        {'b', "", "\"R1\", whose bounds are crossed or differ in the sign of zero alone; LP can"},
    };
    for (const auto& [item, name, cause, format] : cases) {
        SCOPED_TRACE (cause);
        klv::Problem problem = small_problem ();
        problem.variable_name.put (0, 3, "x");
        if (item == 'r')
            problem.constraint_name.put (2, 4, name);
        else if (item == 'v')
            problem.variable_name.put (2, 3, name);
        else if (item == 'b')
            problem.constraint.lower[0] = 4;
        else
            (item == 'o' ? problem.objective_name : problem.name) = name;
        Writing writing (problem, format);
        EXPECT_EQ (writing.write (), KLV_RES_FILE_CANNOT_HOLD);
        EXPECT_PRED_FORMAT2 (IsSubstring, std::string (cause), writing.task.last_error ());
        EXPECT_EQ (writing.folder.count (), 0U);
    }
}

klv::Problem quadratic_problem ()
{
    klv::Problem problem = small_problem ();
    problem.quadratic_objective = {{}, {}, {0, 1, 2}, {0, 0, 2}, {2, 3, -0.0}};
    problem.quadratic_constraint = {{0, 2, 2}, {}, {1, 2, 2}, {0, 1, 2}, {0.1, -1, 0}};
    return problem;
}

TEST (MpsWrite, QuadraticTerms)
{
    const klv::Problem problem = quadratic_problem ();
    EXPECT_PRED_FORMAT2 (
        IsSubstring,
        files::lines ("QUADOBJ|    C1 C1 2|    C1 C2 3|    C3 C3 -0|QCMATRIX  R1|    C1 C2 0.05|"
                      "    C2 C1 0.05|QCMATRIX  R3|    C2 C3 -0.5|    C3 C2 -0.5|    C3 C3 0|"
                      "ENDATA|"),
        Writing (problem).written ());
    const std::string text = Writing (problem, KLV_FILE_LP).written ();
    for (const char* part : {" + 5 + [ 2 C1 ^ 2 + 6 C1 * C2 - 0 C3 ^ 2 ] / 2\n",
                             "C1 + [ 0.1 C1 * C2 ] <= 3\n", "C1 + [ - C2 * C3 + 0 C3 ^ 2 ] = 2\n"})
        EXPECT_PRED_FORMAT2 (IsSubstring, part, text);
    for (const std::int32_t form : forms)
        expect_same_after_writing (problem, form);
}

TEST (MpsWrite, QuadraticTermsWithoutAnExactNumberAreRefused)
{
    constexpr double odd = 5e-324;
    static const struct {
        bool of_objective;
        std::int32_t row;
        double value;
        std::int32_t format;
        const char* cause;
    } cases[] = {
        {false, 1, odd, KLV_FILE_FREE_MPS, "term of \"C1\" and \"C2\" in constraint 2 \"R2\", whose half"},
        {false, 0, odd, KLV_FILE_LP, "term of \"C1\" and \"C1\" in constraint 2 \"R2\", whose half"},
        {true, 1, DBL_MAX, KLV_FILE_LP, "term of \"C1\" and \"C2\" in the objective, whose double"},
    };
    for (const auto& [of_objective, row, value, format, cause] : cases) {
        klv::Problem problem = small_problem ();
        if (of_objective)
            problem.quadratic_objective = {{}, {}, {row}, {0}, {value}};
        else
            problem.quadratic_constraint = {{1}, {}, {row}, {0}, {value}};
        Writing writing (problem, format);
        EXPECT_EQ (writing.write (), KLV_RES_FILE_CANNOT_HOLD);
        EXPECT_PRED_FORMAT2 (IsSubstring, std::string (cause), writing.task.last_error ());
        expect_same_after_writing (problem, KLV_FILE_JSON);
    }
}

// ---- Read back

const double numbers[] = {
    0.0, -0.0, 1.0, -1.0, 1.0 / 3, 1e19, -1.5e300, 5e-324, -2.2250738585072014e-308, 123456789.0625};

// Every kind of bounds, and pairs whose difference no double holds, so that neither bound follows from the other
// and the difference. Rows of MPS have neither crossed bounds nor the range from 0 to -0.
klv::Bounds bounds_of_every_kind (bool of_mps_rows)
{
    klv::Bounds bounds{{KLV_BK_FR}, {-klv::infinity}, {klv::infinity}};
    const auto append = [&] (std::uint8_t key, double lower, double upper) {
        const bool crossed = lower > upper || (lower == upper && std::signbit (lower) < std::signbit (upper));
        if (!of_mps_rows || !crossed) {
            bounds.key.push_back (key);
            bounds.lower.push_back (lower);
            bounds.upper.push_back (upper);
        }
    };
    for (const double number : numbers) {
        append (KLV_BK_LO, number, klv::infinity);
        append (KLV_BK_UP, -klv::infinity, number);
        append (KLV_BK_FX, number, number);
        for (const double upper : numbers)
            append (KLV_BK_RA, number, upper);
    }
    std::mt19937_64 random (7);
    std::normal_distribution<double> normal;
    const auto any = [&] (double spread) {
        return normal (random) * std::pow (10, spread * normal (random));
    };
    for (int i = 0; i < 20'000; ++i)
        append (KLV_BK_RA, any (i % 50 == 0 ? 90 : 3), any (3));
    return bounds;
}

TEST (MpsRound, EveryBound)
{
    for (const std::uint8_t type : {KLV_VAR_CONTINUOUS, KLV_VAR_INTEGER}) {
        klv::Problem problem;
        klv::Bounds bounds = bounds_of_every_kind (false);
        problem.append_variables (bounds.count ());
        problem.variable = std::move (bounds);
        problem.integers = type * problem.variables ();
        problem.integer.assign (problem.integer.size (), type);
        for (const std::int32_t form : forms) {
            problem.constraint = bounds_of_every_kind (form < KLV_FILE_LP);
            expect_same_after_writing (problem, form);
        }
    }
}

TEST (MpsRound, EveryNumberAndNamesThatLookLikeSomethingElse)
{
    const char* const names[] = {"RHS",    "BND",      "5",      "1e5",      "*",
                                 "MARKER", "'INTORG'", "ENDATA", "\xC3\xBC", "\xFF\xFE"};
    for (const double constant : {0.0, -0.0, 1.0 / 3, -DBL_MAX}) {
        klv::Problem problem;
        problem.sense = std::signbit (constant) ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
        problem.constant = constant;
        problem.name = "a name\twith blanks";
        problem.append_constraints (std::size (names));
        problem.append_variables (std::size (numbers));
        problem.cost.assign (std::begin (numbers), std::end (numbers));
        for (std::int32_t j = 0; j < problem.variables (); ++j)
            problem.matrix.put (j, std::array{4, 0, 2}, std::array{numbers[j], 0.0, -DBL_MAX});
        for (const std::int32_t form : forms)
            expect_same_after_writing (problem, form);
        const auto rename = [&] (std::int32_t item, const std::string& name) {
            problem.variable_name.put (item, problem.variables (), name);
            problem.constraint_name.put (item, problem.constraints (), name);
        };
        problem.objective_name = "ROWS";
        for (std::int32_t j = 0; j < problem.variables (); ++j)
            rename (j, names[j]);
        expect_same_after_writing (problem, KLV_FILE_FREE_MPS);
        expect_same_after_writing (problem, KLV_FILE_FIXED_MPS);
        rename (0, "$" + std::string (65'000, 'x'));
        expect_same_after_writing (problem, KLV_FILE_FREE_MPS);
        rename (0, "x RHS  7");
        expect_same_after_writing (problem, KLV_FILE_BY_EXTENSION);
    }
}

TEST (MpsRound, MissingNamesAreMadeWithoutAClash)
{
    klv::Problem problem = small_problem ();
    problem.objective_name.clear ();
    problem.variable_name.put (0, 3, "C3");
    problem.variable_name.put (1, 3, "C_");
    problem.constraint_name.put (1, 4, "OBJ");
    Writing writing (problem);
    EXPECT_EQ (text_of (writing.written_and_read ()), "min 1 0.1 0 +5; C3 0.. C_ 0..4i C__3 ..7; R1: -1.5 in "
                                                      "1..3; OBJ: in ..; R3: 1e-07 in =2; R4: in ..6");
    EXPECT_EQ (writing.task.problem ().objective_name, "OBJ_");
}

}
