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

}
