// Published instances: the published optimum, and proofs of each answer, with every method.
#include "tests/library/model.h"

#include <fstream>
#include <sstream>

using model::Slot;
using model::Task;

namespace {

struct Instance {
    std::string family, name, file, optimum;
};

std::vector<Instance> instances (const std::string& family)
{
    std::vector<Instance> found;
    std::ifstream index (KALVO_TEST_DATA "/INDEX.tsv");
    std::string line;
    while (std::getline (index, line)) {
        Instance row;
        std::istringstream fields (line);
        for (std::string* field : {&row.family, &row.name, &row.file, &row.optimum})
            std::getline (fields, *field, '\t');
        if (row.family == family && row.file.ends_with (".mps"))
            found.push_back (row);
    }
    return found;
}

struct Way {
    const char* name;
    std::int32_t optimizer;
    std::int32_t presolve;
    std::vector<std::int32_t> slots;
};

const std::vector<Way> ways = {
    {"automatic", KLV_OPTIMIZER_AUTOMATIC, KLV_PRESOLVE_AUTOMATIC, {KLV_SOL_ITR, KLV_SOL_BAS}},
    {"dual simplex", KLV_OPTIMIZER_DUAL_SIMPLEX, KLV_PRESOLVE_ON, {KLV_SOL_BAS}},
    {"dual simplex, no presolve", KLV_OPTIMIZER_DUAL_SIMPLEX, KLV_PRESOLVE_OFF, {KLV_SOL_BAS}},
    {"primal simplex", KLV_OPTIMIZER_PRIMAL_SIMPLEX, KLV_PRESOLVE_ON, {KLV_SOL_BAS}},
    {"interior point", KLV_OPTIMIZER_INTERIOR_POINT, KLV_PRESOLVE_ON, {KLV_SOL_ITR, KLV_SOL_BAS}},
    {"interior point, no presolve",
     KLV_OPTIMIZER_INTERIOR_POINT,
     KLV_PRESOLVE_OFF,
     {KLV_SOL_ITR, KLV_SOL_BAS}},
};

void set_way (Task& task, const Way& way)
{
    task.set ("KLV_IPAR_OPTIMIZER", way.optimizer);
    task.set ("KLV_IPAR_PRESOLVE", way.presolve);
}

void read (Task& task, const Instance& instance)
{
    ASSERT_EQ (KLV_readdata (task, (KALVO_TEST_DATA "/" + instance.file).c_str ()), KLV_RES_OK);
}

// A basis: as many basic items as rows, none of them leaning on a bound with a multiplier.
void expect_basis (const Slot& found)
{
    std::size_t basics = 0;
    const auto look = [&] (const std::vector<std::int32_t>& keys, const std::vector<double>& lower,
                           const std::vector<double>& upper) {
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
    ASSERT_EQ (instances ("lp").size (), 6u);
    for (const Instance& instance : instances ("lp"))
        for (const Way& way : ways) {
            SCOPED_TRACE (instance.name + ", " + way.name);
            Task task;
            read (task, instance);
            set_way (task, way);
            EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
            const double optimum = std::stod (instance.optimum);
            for (const std::int32_t slot : way.slots) {
                model::expect_optimal (task, slot);
                EXPECT_NEAR (model::slot (task, slot).primal, optimum, 1e-6 * (1 + std::abs (optimum)));
            }
            expect_basis (model::slot (task, KLV_SOL_BAS));
            std::size_t slots = 0;
            for (std::int32_t slot = 0; slot < KLV_SOL_COUNT; ++slot)
                slots += model::slot (task, slot).defined;
            EXPECT_EQ (slots, way.slots.size ());
        }
}

TEST (Instances, InfeasibleOnesComeWithACertificate)
{
    ASSERT_EQ (instances ("lp_infeasible").size (), 3u);
    for (const Instance& instance : instances ("lp_infeasible"))
        for (const Way& way : ways)
            for (const std::int32_t sense : {KLV_SENSE_MINIMIZE, KLV_SENSE_MAXIMIZE}) {
                SCOPED_TRACE (instance.name + ", " + way.name +
                              (sense == KLV_SENSE_MINIMIZE ? ", min" : ", max"));
                Task task;
                read (task, instance);
                set_way (task, way);
                KLV_putobjsense (task, sense);
                EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
                for (const std::int32_t slot : way.slots)
                    model::expect_infeasible (task, slot);
            }
}

TEST (Instances, IntegerOptimaAreFeasibleAndWithinTheGap)
{
    ASSERT_EQ (instances ("milp").size (), 6u);
    for (const Instance& instance : instances ("milp")) {
        SCOPED_TRACE (instance.name);
        Task task;
        read (task, instance);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
        const Slot point = model::slot (task, KLV_SOL_INT);
        ASSERT_TRUE (point.defined);
        if (instance.optimum == "infeasible") {
            EXPECT_EQ (point.solution, KLV_SOLSTA_UNKNOWN);
            EXPECT_TRUE (point.problem == KLV_PRO_INFEASIBLE_BY_SEARCH ||
                         point.problem == KLV_PRO_PRIMAL_INFEASIBLE);
            continue;
        }
        const double optimum = std::stod (instance.optimum);
        EXPECT_EQ (point.solution, KLV_SOLSTA_INTEGER_OPTIMAL);
        const model::Stated stated = model::stated (task);
        model::expect_feasible (stated, point, 1e-6);
        for (std::size_t j = 0; j < stated.integer.size (); ++j)
            if (stated.integer[j]) {
                EXPECT_EQ (point.xx[j], std::nearbyint (point.xx[j])) << "integer variable " << j;
            }
        EXPECT_NEAR (point.primal, optimum, 1.1e-4 * std::abs (optimum));
        EXPECT_LE (std::abs (point.primal - task.real_information ("KLV_DINF_MIP_BOUND")),
                   1.1e-4 * std::abs (optimum));
    }
}

TEST (Instances, ARelaxationBoundsTheIntegerOptimum)
{
    for (const Instance& instance : instances ("milp")) {
        if (instance.optimum == "infeasible")
            continue;
        SCOPED_TRACE (instance.name);
        Task task;
        read (task, instance);
        task.set ("KLV_IPAR_RELAX_INTEGERS", KLV_ON);
        EXPECT_EQ (KLV_optimize (task), KLV_RES_OK);
        EXPECT_FALSE (model::slot (task, KLV_SOL_INT).defined);
        model::expect_optimal (task, KLV_SOL_BAS);
        EXPECT_LE (model::slot (task, KLV_SOL_BAS).dual, std::stod (instance.optimum) + 1e-6);
    }
}

}
