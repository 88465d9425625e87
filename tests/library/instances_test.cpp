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

// Every way to solve, and the slots that it fills.
struct Way {
    const char *settings, *slots;
};

const Way ways[] = {
    {"OPTIMIZER 2", "itr bas"},
    {"OPTIMIZER 1 PRESOLVE 1", "bas"},
    {"OPTIMIZER 1 PRESOLVE 0", "bas"},
    {"OPTIMIZER 0 PRESOLVE 1", "bas"},
    {"OPTIMIZER 3 PRESOLVE 1", "itr bas"},
    {"OPTIMIZER 3 PRESOLVE 0", "itr bas"},
};

// What an optimisation in this way is told as when each of its slots has this status.
std::string told (const Way& way, const std::string& status)
{
    const std::string basic = " bas " + status;
    return way.slots == std::string ("bas") ? "OK" + basic : "OK itr " + status + basic;
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
            const Task task (instance.file, way.settings);
            EXPECT_EQ (model::optimized (task), told (way, "OPTIMAL"));
            expect_basis (model::slot (task, KLV_SOL_BAS));
            const double optimum = std::stod (instance.optimum);
            EXPECT_NEAR (model::slot (task, KLV_SOL_BAS).primal, optimum, 1e-6 * (1 + std::abs (optimum)));
        }
}

TEST (Instances, InfeasibleOnesComeWithACertificate)
{
    for (const Instance& instance : instances ("lp_infeasible", 3))
        for (const Way& way : ways)
            for (const std::int32_t sense : {KLV_SENSE_MINIMIZE, KLV_SENSE_MAXIMIZE}) {
                SCOPED_TRACE (instance.name + ", " + way.settings + ", sense " + std::to_string (sense));
                const Task task (instance.file, way.settings);
                KLV_putobjsense (task, sense);
                EXPECT_EQ (model::optimized (task), told (way, "PRIMAL_INFEASIBLE_CERTIFICATE"));
            }
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

}
