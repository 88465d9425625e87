// Published instances: the published optimum, and proofs of each answer, with every method.
#include "tests/library/model.h"

#include <fstream>

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
        std::istringstream fields (line);
        fields >> row.family >> row.name >> row.file >> row.optimum;
        if (row.family == family && row.file.ends_with (".mps"))
            found.push_back (row);
    }
    EXPECT_EQ (found.size (), count) << family;
    return found;
}

struct Way {
    const char* settings;
    std::vector<std::int32_t> slots;
};

const Way ways[] = {
    {"OPTIMIZER 2", {KLV_SOL_ITR, KLV_SOL_BAS}},    // the library chooses
    {"OPTIMIZER 1 PRESOLVE 1", {KLV_SOL_BAS}},      // dual simplex
    {"OPTIMIZER 1 PRESOLVE 0", {KLV_SOL_BAS}},
    {"OPTIMIZER 0 PRESOLVE 1", {KLV_SOL_BAS}},                 // primal simplex
    {"OPTIMIZER 3 PRESOLVE 1", {KLV_SOL_ITR, KLV_SOL_BAS}},    // interior point
    {"OPTIMIZER 3 PRESOLVE 0", {KLV_SOL_ITR, KLV_SOL_BAS}},
};

void read (Task& task, const Instance& instance, const std::string& settings)
{
    ASSERT_EQ (KLV_readdata (task, (KALVO_TEST_DATA "/" + instance.file).c_str ()), KLV_RES_OK);
    task.set (settings);
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

TEST (Instances, LinearOptimaAreProvedByEveryMethod)
{
    for (const Instance& instance : instances ("lp", 6))
        for (const Way& way : ways) {
            SCOPED_TRACE (instance.name + ", " + way.settings);
            Task task;
            read (task, instance, way.settings);
            EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
            const double optimum = std::stod (instance.optimum);
            for (const std::int32_t slot : way.slots) {
                model::expect_optimal (task, slot);
                EXPECT_NEAR (model::slot (task, slot).primal, optimum, 1e-6 * (1 + std::abs (optimum)));
            }
            expect_basis (model::slot (task, KLV_SOL_BAS));
            EXPECT_EQ (model::slot (task, KLV_SOL_ITR).defined, way.slots.size () == 2);
            EXPECT_FALSE (model::slot (task, KLV_SOL_INT).defined);
        }
}

TEST (Instances, InfeasibleOnesComeWithACertificate)
{
    for (const Instance& instance : instances ("lp_infeasible", 3))
        for (const Way& way : ways)
            for (const std::int32_t sense : {KLV_SENSE_MINIMIZE, KLV_SENSE_MAXIMIZE}) {
                SCOPED_TRACE (instance.name + ", " + way.settings + ", sense " + std::to_string (sense));
                Task task;
                read (task, instance, way.settings);
                KLV_putobjsense (task, sense);
                EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
                for (const std::int32_t slot : way.slots)
                    model::expect_infeasible (task, slot);
            }
}

TEST (Instances, IntegerOptimaAreFeasibleAndWithinTheGap)
{
    for (const Instance& instance : instances ("milp", 6)) {
        SCOPED_TRACE (instance.name);
        Task task, relaxed;
        read (task, instance, "");
        EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
        const Slot point = model::slot (task, KLV_SOL_INT);
        ASSERT_TRUE (point.defined);
        if (instance.optimum == "infeasible") {
            EXPECT_EQ (point.solution, KLV_SOLSTA_UNKNOWN);
            EXPECT_TRUE (point.problem == KLV_PRO_INFEASIBLE_BY_SEARCH ||
                         point.problem == KLV_PRO_PRIMAL_INFEASIBLE);
            continue;
        }
        EXPECT_EQ (point.solution, KLV_SOLSTA_INTEGER_OPTIMAL);
        model::expect_feasible (model::stated (task), point);
        const double optimum = std::stod (instance.optimum), gap = 1.1e-4 * std::abs (optimum);
        EXPECT_NEAR (point.primal, optimum, gap);
        EXPECT_NEAR (point.primal, task.information ("MIP_BOUND"), gap);

        read (relaxed, instance, "RELAX_INTEGERS 1");
        EXPECT_EQ (KLV_optimize (relaxed), KLV_RES_OK);
        EXPECT_FALSE (model::slot (relaxed, KLV_SOL_INT).defined);
        model::expect_optimal (relaxed, KLV_SOL_BAS);
        EXPECT_LE (model::slot (relaxed, KLV_SOL_BAS).dual, optimum + 1e-6);
    }
}

}
