// What every operation owes its caller: null handles and pointers, callbacks that misbehave, internal failures.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace {

// Every operation of a task, called with zeros and null pointers.
struct Operation {
    KLVrescode_t on_small_task;
    bool changes;
    std::function<KLVrescode_t (KLVtask_t)> call;
};

template <class... Rest>
std::function<KLVrescode_t (KLVtask_t)> with_zeros (KLVrescode_t (*function) (KLVtask_t, Rest...))
{
    return [function] (KLVtask_t task) { return function (task, Rest{}...); };
}

std::vector<Operation> operations ()
{
    constexpr bool reads = false, changes = true;
    std::vector<Operation> all;
    const auto add = [&] (KLVrescode_t expected, bool kind, auto... functions) {
        (all.push_back ({expected, kind, with_zeros (functions)}), ...);
    };
    add (KLV_RES_OK, changes, KLV_linkfunctotaskstream, KLV_linkfiletotaskstream, KLV_putcallbackfunc,
         KLV_putintparam, KLV_appendvars, KLV_appendcons, KLV_appendafes, KLV_putmaxnumanz, KLV_putacol,
         KLV_putvarboundslice, KLV_putconboundslice, KLV_putcslice, KLV_putcfix, KLV_putobjsense,
         KLV_putvartype, KLV_readsummary, KLV_analyzeproblem, KLV_optimize, KLV_toconic, KLV_solutionsummary,
         KLV_optimizersummary);
    add (KLV_RES_NULL_POINTER, changes, KLV_putoptserverhost, KLV_putstrparam, KLV_putnaintparam,
         KLV_puttaskname, KLV_putobjname, KLV_putvarname, KLV_putconname, KLV_writedata);
    add (KLV_RES_NULL_POINTER, reads, KLV_whichparam, KLV_getdouparam, KLV_getintparam, KLV_getstrparam,
         KLV_getinfname, KLV_getdouinf, KLV_getintinf, KLV_getsymbcon, KLV_getnumvar, KLV_getnumcon,
         KLV_getnumcone, KLV_getnumbarvar, KLV_getnumintvar, KLV_getnumanz, KLV_getnumqobjnz,
         KLV_getnumqconknz, KLV_getnumacc, KLV_getaccntot, KLV_getnumdjc, KLV_getc, KLV_getcfix, KLV_getacol,
         KLV_getqobj, KLV_getqconk, KLV_getvarbound, KLV_getconbound, KLV_getvartype, KLV_getobjsense,
         KLV_gettasknamelen, KLV_getobjnamelen, KLV_getmaxnamelen, KLV_solutiondef, KLV_getprosta,
         KLV_getsolsta, KLV_getprimalobj, KLV_getdualobj, KLV_prostatostr, KLV_solstatostr, KLV_sktostr,
         KLV_strtosk);
    add (KLV_RES_VALUE_UNKNOWN, reads, KLV_getparamname);
    add (KLV_RES_PARAMETER_RANGE, changes, KLV_putdouparam);
    add (KLV_RES_INDEX_RANGE, changes, KLV_putconename, KLV_putbarvarname, KLV_putaccname);
    add (KLV_RES_INDEX_RANGE, reads, KLV_getlenbarvarj, KLV_getconename, KLV_getbarvarname, KLV_getaccname);
    add (KLV_RES_BUFFER_TOO_SMALL, reads, KLV_gettaskname, KLV_getobjname, KLV_getvarname, KLV_getconname);
    add (KLV_RES_FILE_NAME_MISSING, changes, KLV_readdata);
    add (KLV_RES_NOT_AVAILABLE, changes, KLV_primalrepair);
    add (KLV_RES_OK, reads, KLV_getskcslice, KLV_getskxslice, KLV_getxcslice, KLV_getxxslice, KLV_getyslice,
         KLV_getslcslice, KLV_getsucslice, KLV_getslxslice, KLV_getsuxslice, KLV_getsnxslice, KLV_getskn,
         KLV_getbarxslice, KLV_getbarsslice, KLV_getaccdotys);
    return all;
}

// Two variables, a constraint and an interior solution.
struct SmallTask : files::Task {
    SmallTask ()
    {
        KLV_appendvars (*this, 2);
        KLV_appendcons (*this, 1);
        static_cast<KLVtask_t> (*this)->solutions[KLV_SOL_ITR].emplace ();
    }
};

TEST (Guards, ZerosAndNullPointersGiveCodesAndACallbackMayReadButNotChange)
{
    struct Inside {
        KLVtask_t task;
        const Operation& operation;
        KLVrescode_t code = -1;
    };
    int number = 0;
    for (const Operation& operation : operations ()) {
        SCOPED_TRACE (++number);
        EXPECT_EQ (operation.call (SmallTask ()), operation.on_small_task);
        EXPECT_EQ (operation.call (nullptr), KLV_RES_NULL_HANDLE);
        const SmallTask task;
        Inside inside{task, operation};
        KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, &inside, [] (void* handle, const char*) {
            auto& self = *static_cast<Inside*> (handle);
            self.code = self.operation.call (self.task);
            KLVtask_t same = self.task;
            EXPECT_EQ (KLV_deletetask (&same), KLV_RES_TASK_BUSY);
        });
        EXPECT_EQ (KLV_readsummary (task, KLV_STREAM_MESSAGES), KLV_RES_OK);
        EXPECT_EQ (inside.code, operation.changes ? KLV_RES_TASK_BUSY : operation.on_small_task);
    }
    KLVtask_t none = nullptr;
    EXPECT_EQ (KLV_deletetask (&none), KLV_RES_OK);
    EXPECT_EQ (KLV_deletetask (nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_makeemptytask (nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_getversion (nullptr, nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_getlasterror (nullptr, nullptr, 0, nullptr, nullptr), KLV_RES_NULL_HANDLE);
    EXPECT_EQ (KLV_getsymbcondim (nullptr, nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_iparvaltosymnam (nullptr, 0, 0, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_echointro (reinterpret_cast<KLVenv_t> (&none), 0), KLV_RES_ARGUMENT)
        << "only the default one";
}

TEST (InternalFailure, MakesTheTaskUnusableAndCallsTheExitFunctionOnce)
{
    const SmallTask task;
    std::string exits;
    KLV_putexitfunc (
        nullptr,
        [] (void* handle, const char* file, std::int32_t, const char* message) {
            *static_cast<std::string*> (handle) += file + std::string (": ") + message;
            EXPECT_EQ (KLV_putexitfunc (nullptr, nullptr, nullptr), KLV_RES_OK) << "a lock is held";
        },
        &exits);
    const auto fails = [] (void*, const char*) { throw std::runtime_error ("the console is gone"); };
    KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, nullptr, fails);
    EXPECT_EQ (KLV_readsummary (task, KLV_STREAM_MESSAGES), KLV_RES_INTERNAL);
    for (const Operation& operation : operations ())
        EXPECT_EQ (operation.call (task), KLV_RES_TASK_UNUSABLE);
    EXPECT_EQ (task.last_error (), "the console is gone");
    EXPECT_EQ (exits, "operations.cpp: the console is gone");

    const SmallTask another;
    KLV_linkfunctotaskstream (another, KLV_STREAM_MESSAGES, nullptr, fails);
    KLV_putexitfunc (nullptr, [] (void*, const char*, std::int32_t, const char*) { throw 7; }, nullptr);
    EXPECT_THROW (KLV_readsummary (another, KLV_STREAM_MESSAGES), int)
        << "the exit function may leave by throwing";
    KLV_putexitfunc (nullptr, nullptr, nullptr);
}

TEST (LastError, StaysAndIsCut)
{
    const files::Task task;
    std::int32_t code = -1, length = -1;
    char message[] = "0123456789";
    EXPECT_EQ (KLV_getlasterror (task, &code, sizeof message, &length, message), KLV_RES_OK);
    EXPECT_TRUE (code == 0 && length == -1) << "there was no error";
    EXPECT_STREQ (message, "0123456789");
    KLV_putobjsense (task, 2);
    KLV_putobjsense (task, 1);
    EXPECT_EQ (KLV_getlasterror (task, &code, 6, &length, message), KLV_RES_OK);
    EXPECT_TRUE (code == KLV_RES_VALUE_UNKNOWN && length == std::ssize (task.last_error ()));
    EXPECT_EQ (std::string (message, 10), (std::string{"The o\0"
                                                       "6789",
                                                       10}));
    EXPECT_EQ (KLV_getlasterror (task, &code, 5, nullptr, nullptr), KLV_RES_NULL_POINTER);
}

// The header in C: entry_from_c_test.c.
extern "C" const char* fault_from_c (void);

TEST (Header, IsC)
{
    EXPECT_STREQ (fault_from_c (), "");
}

}
