// What every operation owes its caller: null handles and pointers, callbacks that misbehave, internal failures.
#include "kalvo/task/task.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace {

// ---- Every operation of a task, with zeros and null pointers --------------------------------------------------------

struct Operation {
    const char* name;
    KLVrescode_t on_small_task;
    bool changes;
    std::function<KLVrescode_t (KLVtask_t)> call;
};

template <class... Rest>
Operation operation (const char* name, KLVrescode_t expected, bool changes,
                     KLVrescode_t (*function) (KLVtask_t, Rest...))
{
    return {name, expected, changes, [function] (KLVtask_t task) { return function (task, Rest{}...); }};
}

constexpr bool reads = false, changes = true;

std::vector<Operation> operations ()
{
#define KLV_OPERATION(name, expected, kind) operation (#name, expected, kind, name)
    return {
        KLV_OPERATION (KLV_linkfunctotaskstream, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_linkfiletotaskstream, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putcallbackfunc, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putoptserverhost, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_whichparam, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getparamname, KLV_RES_VALUE_UNKNOWN, reads),
        KLV_OPERATION (KLV_putdouparam, KLV_RES_PARAMETER_RANGE, changes),
        KLV_OPERATION (KLV_putintparam, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putstrparam, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_putnaintparam, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_getdouparam, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getintparam, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getstrparam, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getinfname, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getdouinf, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getintinf, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getsymbcon, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_appendvars, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_appendcons, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_appendafes, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putmaxnumanz, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putacol, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putvarboundslice, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putconboundslice, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putcslice, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putcfix, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putobjsense, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_putvartype, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_puttaskname, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_putobjname, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_putvarname, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_putconname, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_putconename, KLV_RES_INDEX_RANGE, changes),
        KLV_OPERATION (KLV_putbarvarname, KLV_RES_INDEX_RANGE, changes),
        KLV_OPERATION (KLV_putaccname, KLV_RES_INDEX_RANGE, changes),
        KLV_OPERATION (KLV_getnumvar, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumcon, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumcone, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumbarvar, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumintvar, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumanz, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumqobjnz, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumqconknz, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumacc, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getaccntot, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getnumdjc, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getlenbarvarj, KLV_RES_INDEX_RANGE, reads),
        KLV_OPERATION (KLV_getc, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getcfix, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getacol, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getqobj, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getqconk, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getvarbound, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getconbound, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getvartype, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getobjsense, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_gettasknamelen, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getobjnamelen, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getmaxnamelen, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_gettaskname, KLV_RES_BUFFER_TOO_SMALL, reads),
        KLV_OPERATION (KLV_getobjname, KLV_RES_BUFFER_TOO_SMALL, reads),
        KLV_OPERATION (KLV_getvarname, KLV_RES_BUFFER_TOO_SMALL, reads),
        KLV_OPERATION (KLV_getconname, KLV_RES_BUFFER_TOO_SMALL, reads),
        KLV_OPERATION (KLV_getconename, KLV_RES_INDEX_RANGE, reads),
        KLV_OPERATION (KLV_getbarvarname, KLV_RES_INDEX_RANGE, reads),
        KLV_OPERATION (KLV_getaccname, KLV_RES_INDEX_RANGE, reads),
        KLV_OPERATION (KLV_readdata, KLV_RES_FILE_NAME_MISSING, changes),
        KLV_OPERATION (KLV_writedata, KLV_RES_NULL_POINTER, changes),
        KLV_OPERATION (KLV_readsummary, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_analyzeproblem, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_optimize, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_toconic, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_primalrepair, KLV_RES_NOT_AVAILABLE, changes),
        KLV_OPERATION (KLV_solutionsummary, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_optimizersummary, KLV_RES_OK, changes),
        KLV_OPERATION (KLV_solutiondef, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getprosta, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getsolsta, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getprimalobj, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getdualobj, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_getskcslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getskxslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getxcslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getxxslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getyslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getslcslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getsucslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getslxslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getsuxslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getsnxslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getskn, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getbarxslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getbarsslice, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_getaccdotys, KLV_RES_OK, reads),
        KLV_OPERATION (KLV_prostatostr, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_solstatostr, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_sktostr, KLV_RES_NULL_POINTER, reads),
        KLV_OPERATION (KLV_strtosk, KLV_RES_NULL_POINTER, reads),
    };
#undef KLV_OPERATION
}

// A task with two variables, a constraint and an interior solution.
struct SmallTask : files::Task {
    SmallTask ()
    {
        KLV_appendvars (*this, 2);
        KLV_appendcons (*this, 1);
        static_cast<KLVtask_t> (*this)->solutions[KLV_SOL_ITR].emplace ();
    }
};

TEST (Guards, ZerosAndNullPointersGiveCodes)
{
    for (const Operation& operation : operations ()) {
        const SmallTask task;
        EXPECT_EQ (operation.call (task), operation.on_small_task) << operation.name;
        EXPECT_EQ (operation.call (nullptr), KLV_RES_NULL_HANDLE) << operation.name;
    }
    EXPECT_EQ (KLV_getversion (nullptr, nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_makeemptytask (nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_deletetask (nullptr), KLV_RES_NULL_POINTER);
    KLVtask_t none = nullptr;
    EXPECT_EQ (KLV_deletetask (&none), KLV_RES_OK);
    EXPECT_EQ (KLV_getlasterror (nullptr, nullptr, 0, nullptr, nullptr), KLV_RES_NULL_HANDLE);
    EXPECT_EQ (KLV_getsymbcondim (nullptr, nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_iparvaltosymnam (nullptr, 0, 0, nullptr), KLV_RES_NULL_POINTER);
    const auto environment = reinterpret_cast<KLVenv_t> (&none);
    EXPECT_EQ (KLV_echointro (environment, 0), KLV_RES_ARGUMENT) << "there is only the default environment";
}

// ---- While an operation runs ------------------------------------------------------------------------------------------

TEST (Guards, ACallbackMayReadButNotChange)
{
    struct Inside {
        KLVtask_t task;
        const Operation* operation;
        KLVrescode_t code = -1;
    };
    for (const Operation& operation : operations ()) {
        const SmallTask task;
        Inside inside{task, &operation};
        KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, &inside, [] (void* handle, const char*) {
            auto& self = *static_cast<Inside*> (handle);
            self.code = self.operation->call (self.task);
            KLVtask_t same = self.task;
            EXPECT_EQ (KLV_deletetask (&same), KLV_RES_TASK_BUSY);
        });
        EXPECT_EQ (KLV_readsummary (task, KLV_STREAM_MESSAGES), KLV_RES_OK);
        EXPECT_EQ (inside.code, operation.changes ? KLV_RES_TASK_BUSY : operation.on_small_task)
            << operation.name;
    }
}

// ---- Internal failures --------------------------------------------------------------------------------------------------

struct Exit {
    int calls = 0;
    std::string file, message;
};

void note_exit (void* handle, const char* file, std::int32_t line, const char* message)
{
    auto& exit = *static_cast<Exit*> (handle);
    ++exit.calls;
    exit.file = file;
    exit.message = message;
    EXPECT_GT (line, 0);
    EXPECT_EQ (KLV_putexitfunc (nullptr, nullptr, nullptr), KLV_RES_OK) << "a lock is held";
}

void fail_inside (KLVtask_t task)
{
    KLV_linkfunctotaskstream (task, KLV_STREAM_MESSAGES, nullptr,
                              [] (void*, const char*) { throw std::runtime_error ("the console is gone"); });
}

TEST (InternalFailure, MakesTheTaskUnusableAndCallsTheExitFunctionOnce)
{
    SmallTask task;
    Exit exit;
    KLV_putexitfunc (nullptr, note_exit, &exit);
    fail_inside (task);
    EXPECT_EQ (KLV_readsummary (task, KLV_STREAM_MESSAGES), KLV_RES_INTERNAL);
    EXPECT_EQ (exit.calls, 1);
    EXPECT_EQ (exit.message, "the console is gone");
    EXPECT_EQ (exit.file, "entry_operations.cpp");
    for (const Operation& operation : operations ())
        EXPECT_EQ (operation.call (task), KLV_RES_TASK_UNUSABLE) << operation.name;
    EXPECT_EQ (task.last_error (), "the console is gone");
    EXPECT_EQ (exit.calls, 1);
}

TEST (InternalFailure, LetsTheErrorOfTheExitFunctionThrough)
{
    KLVtask_t task = nullptr;
    ASSERT_EQ (KLV_makeemptytask (nullptr, &task), KLV_RES_OK);
    fail_inside (task);
    KLV_putexitfunc (nullptr, [] (void*, const char*, std::int32_t, const char*) { throw 7; }, nullptr);
    EXPECT_THROW (KLV_readsummary (task, KLV_STREAM_MESSAGES), int);
    KLV_putexitfunc (nullptr, nullptr, nullptr);
    EXPECT_EQ (KLV_deletetask (&task), KLV_RES_OK);
    EXPECT_EQ (task, nullptr);
}

// ---- The last error -----------------------------------------------------------------------------------------------------

TEST (LastError, LeavesTheTextAloneWhenThereIsNone)
{
    const files::Task task;
    std::int32_t code = -1, length = -1;
    char message[] = "untouched";
    EXPECT_EQ (KLV_getlasterror (task, &code, sizeof message, &length, message), KLV_RES_OK);
    EXPECT_EQ (code, 0);
    EXPECT_EQ (length, -1);
    EXPECT_STREQ (message, "untouched");
}

TEST (LastError, StaysAndIsCut)
{
    const files::Task task;
    KLV_putobjsense (task, 2);
    KLV_putobjsense (task, 1);
    std::int32_t code = -1, length = -1;
    char message[] = "0123456789";
    EXPECT_EQ (KLV_getlasterror (task, &code, 6, &length, message), KLV_RES_OK);
    EXPECT_EQ (code, KLV_RES_VALUE_UNKNOWN);
    EXPECT_STREQ (message, "The o");
    EXPECT_EQ (message[6], '6');
    EXPECT_EQ (length, static_cast<std::int32_t> (task.last_error ().size ()));
    EXPECT_EQ (KLV_getlasterror (task, &code, 0, nullptr, nullptr), KLV_RES_OK);
    EXPECT_EQ (KLV_getlasterror (task, &code, 5, nullptr, nullptr), KLV_RES_NULL_POINTER);
}

// The header in C: tests/library/entry_from_c_test.c.
extern "C" const char* fault_from_c (void);

TEST (Header, IsC)
{
    EXPECT_STREQ (fault_from_c (), "");
}

}
