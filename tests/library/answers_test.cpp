// Answers: published instances with their optima, tiny problems with their ends, each proved with every method.
#include "tests/library/model.h"

using model::Slot;
using model::Task;

namespace {

struct Instance {
    std::string family, name, file, optimum;
};

std::vector<Instance> instances (const std::string& family, std::size_t count)
{
    std::vector<Instance> found;
    std::ifstream index (KALVO_TEST_DATA "/INDEX.tsv");
    for (std::string line; std::getline (index, line);) {
        Instance row;
        std::istringstream (line) >> row.family >> row.name >> row.file >> row.optimum;
        if (row.family == family && row.file.ends_with (".mps"))
            found.push_back (row);
    }
    EXPECT_EQ (found.size (), count) << family;
    return found;
}

// Solves an instance in every way, whose slots all have this status; `look` sees each basic solution.
void expect_everywhere (
    const Instance& instance, std::int32_t sense, const std::string& status,
    const std::function<void (const Slot&)>& look = [] (const Slot&) {})
{
    const std::string basic = "bas " + status, both = "itr " + status + ' ' + basic;
    for (const auto& [settings, slots] : {std::pair{"OPTIMIZER 2", both},
                                          {"OPTIMIZER 1 PRESOLVE 1", basic},
                                          {"OPTIMIZER 1 PRESOLVE 0", basic},
                                          {"OPTIMIZER 0 PRESOLVE 1", basic},
                                          {"OPTIMIZER 3 PRESOLVE 1", both},
                                          {"OPTIMIZER 3 PRESOLVE 0", both}}) {
        SCOPED_TRACE (instance.name + ", " + settings + ", sense " + std::to_string (sense));
        const Task task (instance.file, settings);
        KLV_putobjsense (task, sense);
        EXPECT_EQ (model::optimized (task), "OK " + slots);
        look (model::slot (task, KLV_SOL_BAS));
    }
}

// A basis: as many basic items as rows, none of them leaning on a bound with a multiplier.
void expect_basis (const Slot& found)
{
    std::size_t basics = 0;
    const auto look = [&] (const auto& keys, const auto& lower, const auto& upper) {
        for (std::size_t i = 0; i < keys.size (); ++i)
            if (keys[i] == KLV_SK_BASIC) {
                ++basics;
                EXPECT_NEAR (lower[i] - upper[i], 0, 1e-6) << "multiplier of a basic item";
            }
    };
    look (found.skc, found.slc, found.suc);
    look (found.skx, found.slx, found.sux);
    EXPECT_EQ (basics, found.skc.size ());
}

TEST (Instances, LinearOnesAreProvedByEveryMethod)
{
    for (const Instance& instance : instances ("lp", 6))
        expect_everywhere (instance, KLV_SENSE_MINIMIZE, "OPTIMAL", [&] (const Slot& found) {
            expect_basis (found);
            const double optimum = std::stod (instance.optimum);
            EXPECT_NEAR (found.primal, optimum, 1e-6 * (1 + std::abs (optimum)));
        });
    for (const Instance& instance : instances ("lp_infeasible", 3))
        for (const std::int32_t sense : {KLV_SENSE_MINIMIZE, KLV_SENSE_MAXIMIZE})
            expect_everywhere (instance, sense, "PRIMAL_INFEASIBLE_CERTIFICATE");
}

TEST (Instances, IntegerOptimaAreFeasibleAndWithinTheGap)
{
    for (const Instance& instance : instances ("milp", 6)) {
        SCOPED_TRACE (instance.name);
        const Task task (instance.file), relaxed (instance.file, "RELAX_INTEGERS 1");
        const std::string result = model::optimized (task);
        if (instance.optimum == "infeasible") {
            EXPECT_TRUE (result == "OK int INFEASIBLE_BY_SEARCH" || result == "OK int PRIMAL_INFEASIBLE");
            continue;
        }
        EXPECT_EQ (result, "OK int INTEGER_OPTIMAL");
        const double optimum = std::stod (instance.optimum), gap = 1.1e-4 * std::abs (optimum);
        const double found = model::slot (task, KLV_SOL_INT).primal;
        EXPECT_NEAR (found, optimum, gap);
        EXPECT_NEAR (found, task.information ("MIP_BOUND"), gap);

        EXPECT_EQ (model::optimized (relaxed), "OK itr OPTIMAL bas OPTIMAL");
        EXPECT_LE (model::slot (relaxed, KLV_SOL_BAS).dual, optimum + 1e-6);
    }
}

// ---- Tiny problems of shapes that random ones do not have

struct Shape {
    const char *what, *problem, *ends;
    double optimum = 0;
};

constexpr const char *optimal = "OPTIMAL", *infeasible = "PRIMAL_INFEASIBLE_CERTIFICATE",
                     *unbounded = "DUAL_INFEASIBLE_CERTIFICATE", *whole = "INTEGER_OPTIMAL";

const Shape shapes[] = {
    {"nothing but a constant", "min +-3.5", optimal, -3.5},
    {"constraints without variables that hold", "min;; in -1..1; in ..", optimal},
    {"one that can't hold, maximising", "max;; in ..-2", infeasible},
    {"one that holds but for less than the tolerances", "min 0; 0..1; 0 in 1e-300..0", optimal},
    {"unbounded without constraints, maximising", "max 0 3; .. 0..", unbounded, 1},
    {"equal rows that contradict each other", "min 2 3; 0.. 0..; 1 1 in =4; 1 1 in =5", infeasible},
    {"both infeasible and unbounded", "min -1 0; 0.. 0..1; 0 1 in 2..", infeasible},
    {"a bound so far away that it spoils an engine's numbers",
     "max 0 -1 3 0; 0.. ..9.9e+19 .. 0..2; 2 -3 4 0 in ..6; -1 -3 3 2 in ..; 0 -1 3 0 in 0..6", optimal, 6},
    {"maximising with a constant", "max 3 2 +1; 0.. 0..; 1 1 in 1..4; 1 0 in ..3", optimal, 12},
    {"crossed bounds of a variable", "min 1; 2..1; 1 in 0..1", infeasible},
    {"crossed bounds of a constraint, maximising", "max 1; 0..1; 1 in 3..1", infeasible},
    {"crossed within the tolerance", "min 1; 0..3; 1 in 1..0.99999999995", optimal, 1},
    {"a bound of 1e25 that does not matter", "min 1; -1e25..1e25; 1 in 2..1e25", optimal, 2},
    {"costs of 1e12", "min 1e12 2e12; 0.. 0..; 1 1 in 1..", optimal, 1e12},
};

const Shape integer_shapes[] = {
    {"bounds that are not whole, without a row", "min 1 -1; 0.2..9i 0..3.7i", whole, -2},
    {"no whole number between the bounds", "min 1; 0.2..0.8i", "INFEASIBLE_BY_SEARCH"},
    {"no whole solution of an equation", "min 1 1; 0..9i 0..9i; 2 4 in =7", "INFEASIBLE_BY_SEARCH"},
    {"an infeasible relaxation", "min 1 1; 0..9i 0..9i; 1 1 in 3..; 1 1 in ..2", "PRIMAL_INFEASIBLE"},
    {"crossed bounds", "min 1; 2..1i; 1 in 0..9", "PRIMAL_INFEASIBLE"},
    {"a bound between whole numbers that an engine's presolve takes for a value",
     "min -3 6 -128 393216; 0..4 0..4 0..4 -6.103515625e-05..1.99993896484375i; 1 -3 64 -196608 in 4..; 0 3 "
     "0 196608 in -1..",
     whole, -524},
    {"a bound so far away that an engine's search finds no point",
     "max -1 0 2 -1; -1..9.9e19 -2..0i 0..1 0..; -1 -3 0 3 in ..0", whole, 2},
    {"a far bound that is the answer", "max 1 1; 0..1e16i 0..3i; 0 1 in ..2", whole, 1e16},
    {"whole numbers that run away", "min -1 1; 0..i 0..3i; 1 -1 in 0.5..", unbounded, -1},
    {"only one of two is whole", "max 1 1 +0.5; 0..1.5i 0..9; 2 2 in ..7", whole, 4},
};

TEST (Shapes, EndRightWithEveryOptimizer)
{
    const auto expect_end = [] (const Shape& shape, const std::string& settings,
                                std::initializer_list<std::pair<std::int32_t, const char*>> slots) {
        SCOPED_TRACE (shape.what + (", " + settings));
        const Task task (shape.problem, settings);
        std::string expected = "OK";
        for (const auto& [which, name] : slots)
            expected += std::string (name) + shape.ends;
        EXPECT_EQ (model::optimized (task), expected) << task.last_error ();
        for (const auto& [which, name] : slots)
            EXPECT_NEAR (model::slot (task, which).primal, shape.optimum,
                         1e-6 * (1 + std::abs (shape.optimum)));
    };
    for (const Shape& shape : shapes) {
        for (const char* simplex : {"OPTIMIZER 0", "OPTIMIZER 1"})
            expect_end (shape, simplex, {{KLV_SOL_BAS, " bas "}});
        for (const char* other : {"OPTIMIZER 2", "OPTIMIZER 3", "OPTIMIZER 4", "OPTIMIZER 5"})
            expect_end (shape, other, {{KLV_SOL_ITR, " itr "}, {KLV_SOL_BAS, " bas "}});
    }
    for (const Shape& shape : integer_shapes)
        for (const char* settings : {"PRESOLVE 1", "PRESOLVE 0"})
            expect_end (shape, settings, {{KLV_SOL_INT, " int "}});
}

// What an engine would take for something else is refused by name.
TEST (Shapes, BeyondEveryOptimizerAreRefused)
{
    for (const auto& [problem, item] :
         {std::pair{"min 1 -1e20; 0..1 0..1; 1 1 in 1..", "the cost of variable 2"},
          {"min 1; 0..1; 1e15 in 1..", "entry of constraint 1"},
          {"min 1; 1e20..; 1 in 1..", "variable 1"},
          {"min 1; 0..; 1 in ..-1e20", "constraint 1"}}) {
        const model::Task task (problem);
        EXPECT_EQ (model::optimized (task), "TOO_LARGE");
        EXPECT_NE (task.last_error ().find (item), std::string::npos) << task.last_error ();
    }
}

}
