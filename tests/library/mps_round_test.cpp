// What is written is read back to the last bit and name, in both forms of MPS.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <random>

using files::Folder;

namespace {

constexpr std::array both_forms{KLV_FILE_FREE_MPS, KLV_FILE_FIXED_MPS};

void expect_same_after_round_trip (const klv::Problem& problem, std::int32_t format)
{
    const Folder folder;
    const std::string path = folder / "f.mps";
    files::Task written, read;
    for (const files::Task* task : {&written, &read})
        ASSERT_EQ (KLV_putdouparam (*task, KLV_DPAR_BOUND_INFINITY_NUMBER, DBL_MAX), KLV_RES_OK);
    static_cast<KLVtask_t> (written)->replace_problem (klv::Problem (problem));
    written.set_format (format);
    ASSERT_EQ (KLV_writedata (written, path.c_str ()), KLV_RES_OK) << written.last_error ();
    ASSERT_EQ (KLV_readdata (read, path.c_str ()), KLV_RES_OK) << read.last_error ();
    const auto difference = files::difference (problem, read.problem ());
    EXPECT_FALSE (difference) << *difference << "\n" << files::load (path).substr (0, 2000);
}

struct Pair {
    std::uint8_t key;
    double lower, upper;
};

void set (klv::Bounds& bounds, std::size_t i, const Pair& pair)
{
    bounds.key[i] = pair.key;
    bounds.lower[i] = pair.key == KLV_BK_UP || pair.key == KLV_BK_FR ? -klv::infinity : pair.lower;
    bounds.upper[i] = pair.key == KLV_BK_LO || pair.key == KLV_BK_FR ? klv::infinity : pair.upper;
}

constexpr std::array numbers{0.0,
                             -0.0,
                             1.0,
                             -1.0,
                             7.0,
                             1.0 / 3,
                             -2.0 / 3,
                             0.1,
                             1e19,
                             -1.5e300,
                             5e-324,
                             -2.2250738585072014e-308,
                             123456789.0625,
                             -1e-7};

std::vector<Pair> pairs_of_every_key ()
{
    std::vector<Pair> pairs{{KLV_BK_FR, 0, 0}};
    for (const double value : numbers)
        for (const std::uint8_t key : {KLV_BK_LO, KLV_BK_UP, KLV_BK_FX, KLV_BK_RA})
            pairs.push_back ({key, value, value});
    for (const double lower : numbers)
        for (const double upper : numbers)
            pairs.push_back ({KLV_BK_RA, lower, upper});
    return pairs;
}

// Zeros of both signs are one value, and MPS has no text for the range from 0 to -0.
bool rows_can_have (const Pair& pair)
{
    return pair.key != KLV_BK_RA || pair.lower < pair.upper || files::same_bits (pair.lower, pair.upper) ||
           (std::signbit (pair.lower) && pair.lower == pair.upper);
}

TEST (MpsRound, EveryBoundOfVariablesOfBothTypes)
{
    klv::Problem problem;
    for (const Pair& pair : pairs_of_every_key ())
        for (const std::uint8_t type : {KLV_VAR_CONTINUOUS, KLV_VAR_INTEGER}) {
            problem.append_variables (1);
            set (problem.variable, problem.variable.key.size () - 1, pair);
            problem.integer.back () = type;
            problem.integers += type;
        }
    for (const std::int32_t form : both_forms)
        expect_same_after_round_trip (problem, form);
}

TEST (MpsRound, EveryBoundOfConstraints)
{
    klv::Problem problem;
    for (const Pair& pair : pairs_of_every_key ())
        if (rows_can_have (pair)) {
            problem.append_constraints (1);
            set (problem.constraint, problem.constraint.key.size () - 1, pair);
        }
    for (const std::int32_t form : both_forms)
        expect_same_after_round_trip (problem, form);
}

// Bounds whose difference no double holds, so that neither bound follows from the other and the difference.
TEST (MpsRound, RangesOfAnyTwoNumbers)
{
    std::mt19937_64 random (7);
    const auto number = [&] {
        const double mantissa = std::ldexp (static_cast<double> (random () >> 11), -52);
        const int exponent = static_cast<int> (random () % 9) - 4;
        return (random () % 2 ? mantissa : -mantissa) *
               std::pow (10.0, random () % 50 == 0 ? 70 * exponent : exponent);
    };
    klv::Problem problem;
    problem.append_constraints (20'000);
    for (std::size_t i = 0; i < problem.constraint.key.size (); ++i) {
        const double a = number (), b = number ();
        set (problem.constraint, i, {KLV_BK_RA, std::min (a, b), std::max (a, b)});
    }
    expect_same_after_round_trip (problem, KLV_FILE_FREE_MPS);
}

TEST (MpsRound, ObjectiveAndEntries)
{
    for (const double constant : {0.0, -0.0, 1.0 / 3, -DBL_MAX}) {
        klv::Problem problem;
        problem.sense = std::signbit (constant) ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE;
        problem.constant = constant;
        problem.name = "a name\twith blanks";
        problem.append_constraints (5);
        for (const double number : numbers) {
            problem.append_variables (1);
            problem.cost.back () = number;
            const std::int32_t rows[] = {4, 0, 2};
            const double values[] = {number, 0.0, -DBL_MAX};
            problem.matrix.put (problem.variables () - 1, rows, values);
        }
        problem.append_variables (1);
        for (const std::int32_t form : both_forms)
            expect_same_after_round_trip (problem, form);
    }
}

TEST (MpsRound, NamesThatLookLikeSomethingElse)
{
    const std::array names{"RHS",      "BND",    "5",        "1e5",      "*", "MARKER",
                           "'INTORG'", "ENDATA", "\xC3\xBC", "\xFF\xFE", "N"};
    klv::Problem problem;
    problem.objective_name = "ROWS";
    problem.append_variables (names.size ());
    problem.append_constraints (names.size ());
    for (std::size_t i = 0; i < names.size (); ++i) {
        problem.variable_name.put (static_cast<std::int32_t> (i), problem.variables (), names[i]);
        problem.constraint_name.put (static_cast<std::int32_t> (i), problem.constraints (), names[i]);
    }
    for (const std::int32_t form : both_forms)
        expect_same_after_round_trip (problem, form);

    problem.variable_name.put (0, problem.variables (), "$" + std::string (65'000, 'x'));
    problem.constraint_name.put (0, problem.constraints (), std::string (65'000, 'y'));
    expect_same_after_round_trip (problem, KLV_FILE_FREE_MPS);
    problem.variable_name.put (0, problem.variables (), "x RHS 7");
    problem.constraint_name.put (0, problem.constraints (), "a  b");
    expect_same_after_round_trip (problem, KLV_FILE_FIXED_MPS);
    expect_same_after_round_trip (problem, KLV_FILE_BY_EXTENSION);
}

TEST (MpsRound, MissingNamesAreMadeWithoutAClash)
{
    const Folder folder;
    const std::string path = folder / "f.mps";
    klv::Problem problem;
    problem.append_variables (3);
    problem.append_constraints (2);
    problem.variable_name.put (0, 3, "C3");
    problem.variable_name.put (1, 3, "C_");
    problem.constraint_name.put (1, 2, "OBJ");
    files::Task task;
    static_cast<KLVtask_t> (task)->replace_problem (std::move (problem));
    ASSERT_EQ (KLV_writedata (task, path.c_str ()), KLV_RES_OK) << task.last_error ();
    ASSERT_EQ (KLV_readdata (task, path.c_str ()), KLV_RES_OK) << task.last_error ();
    const klv::Problem& read = task.problem ();
    EXPECT_EQ (read.variable_name.get (0), "C3");
    EXPECT_EQ (read.variable_name.get (2), "C__3");
    EXPECT_EQ (read.constraint_name.get (0), "R1");
    EXPECT_EQ (read.objective_name, "OBJ_");
}

TEST (MpsRound, PublishedInstances)
{
    int read = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator (KALVO_TEST_DATA)) {
        if (entry.path ().extension () != ".mps")
            continue;
        files::Task task;
        ASSERT_EQ (KLV_readdata (task, entry.path ().c_str ()), KLV_RES_OK) << task.last_error ();
        for (const std::int32_t form : both_forms)
            expect_same_after_round_trip (task.problem (), form);
        ++read;
    }
    EXPECT_GE (read, 10);
}

}
