// What every operation owes its caller: null handles and pointers, callbacks that misbehave, internal failures.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace {

// Every operation of a task that kalvo.h declares, called with zeros and null pointers.
struct Operation {
    std::string name;
    std::function<KLVrescode_t (KLVtask_t)> call;

    bool is_among (const std::string& names) const
    {
        return (' ' + names + ' ').find (' ' + name + ' ') != names.npos;
    }
    bool changes () const
    {
        return !name.starts_with ("get") &&
               !is_among ("whichparam solutiondef prostatostr solstatostr sktostr strtosk");
    }
    KLVrescode_t on_small_task () const
    {
        for (const auto& [code, names] :
             {std::pair{
                  +KLV_RES_OK,
                  "linkfunctotaskstream linkfiletotaskstream putcallbackfunc putintparam appendvars "
                  "appendcons appendafes putmaxnumanz putmaxnumqnz putmaxnumbarvar putqobj putqcon putacol "
                  "putafefcol "
                  "putafegslice appendbarvars putbarcblocktriplet putbarablocktriplet putafebarfblocktriplet "
                  "getaccs getaccgvector getaccftrip putacol putvarboundslice putconboundslice putcslice "
                  "putcfix putobjsense putvartype readsummary analyzeproblem optimize toconic "
                  "solutionsummary optimizersummary getskcslice getskxslice getxcslice getxxslice "
                  "getyslice getslcslice getsucslice getslxslice getsuxslice getsnxslice getskn "
                  "getbarxslice getbarsslice getaccdotys putsolutionnew primalrepair getconflict"},
              {KLV_RES_ARGUMENT, "appendcone"},
              {KLV_RES_VALUE_UNKNOWN, "getparamname"},
              {KLV_RES_PARAMETER_RANGE, "putdouparam"},
              {KLV_RES_INDEX_RANGE,
               "putconename putbarvarname putaccname getdimbarvarj getlenbarvarj "
               "getconename getbarvarname getaccname putbarxj putbarsj appendaccseq getnumconemem "
               "getcone getdomaintype getdomainn getpowerdomaininfo getpowerdomainalpha"},
              {KLV_RES_BUFFER_TOO_SMALL, "gettaskname getobjname getvarname getconname"},
              {KLV_RES_FILE_NAME_MISSING, "readdata"}})
            if (is_among (names))
                return code;
        return KLV_RES_NULL_POINTER;
    }
};

template <class... Rest>
std::function<KLVrescode_t (KLVtask_t)> with_zeros (KLVrescode_t (*function) (KLVtask_t, Rest...))
{
    return [function] (KLVtask_t task) { return function (task, Rest{}...); };
}

const Operation operations[] = {
#define OPERATION(name) {#name, with_zeros (KLV_##name)},
#include "operations.inc"
#undef OPERATION
};

// Two variables, a constraint and an interior solution.
struct SmallTask : files::Task {
    SmallTask ()
    {
        KLV_appendvars (*this, 2);
        KLV_appendcons (*this, 1);
        (*this)->solutions[KLV_SOL_ITR].emplace ();
    }
};

TEST (Guards, ZerosAndNullPointersGiveCodesAndACallbackMayReadButNotChange)
{
    struct Inside {
        KLVtask_t task;
        const Operation& operation;
        KLVrescode_t code = -1;
    };
    for (const Operation& operation : operations) {
        SCOPED_TRACE (operation.name);
        EXPECT_EQ (operation.call (SmallTask ()), operation.on_small_task ());
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
        EXPECT_EQ (inside.code, operation.changes () ? KLV_RES_TASK_BUSY : operation.on_small_task ());
    }
    KLVtask_t none = nullptr;
    EXPECT_EQ (KLV_deletetask (&none), KLV_RES_OK);
    EXPECT_EQ (KLV_deletetask (nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_makeemptytask (nullptr, nullptr), KLV_RES_NULL_POINTER);
    EXPECT_EQ (KLV_getversion (nullptr, nullptr, nullptr), KLV_RES_NULL_POINTER);
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
    for (const auto& [name, call] : operations)
        EXPECT_EQ (call (task), name == "getlasterror" ? KLV_RES_NULL_POINTER : KLV_RES_TASK_UNUSABLE)
            << name;
    EXPECT_EQ (task.last_error (), "the console is gone");
    EXPECT_EQ (exits, "operations.cpp: the console is gone");

    const SmallTask another;
    KLV_linkfunctotaskstream (another, KLV_STREAM_MESSAGES, nullptr, fails);
    KLV_putexitfunc (nullptr, [] (void*, const char*, std::int32_t, const char*) { throw 7; }, nullptr);
    EXPECT_THROW (KLV_readsummary (another, KLV_STREAM_MESSAGES), int) << "it may leave by throwing";
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
    EXPECT_EQ (message, std::string ("The o"));
    EXPECT_EQ (message[6], '6') << "overrun";
    EXPECT_EQ (KLV_getlasterror (task, &code, 5, nullptr, nullptr), KLV_RES_NULL_POINTER);
}

}
