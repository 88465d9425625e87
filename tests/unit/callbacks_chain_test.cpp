// The chain of progress callbacks, and the release of handles.

#include "callbacks/chain.h"

#include "callbacks/handle.h"
#include "callbacks/log.h"
#include "tests/unit/gateway_call.h"

namespace {

using ChainTest = HostTest;

// A member that counts its calls and answers the first.
std::int32_t member (KLVtask_t, void* handle, std::uint32_t caller, const double*, const std::int32_t*,
                     const std::int64_t*)
{
    auto& [answer, calls] = *static_cast<std::pair<std::int32_t, std::uint32_t>*> (handle);
    calls += caller;
    return answer;
}

TEST_F (ChainTest, AnswersTheFirstThatStops)
{
    for (const auto& [first, second, expected, second_calls] :
         {std::tuple (0, 0, 0, 7), std::tuple (0, 5, 5, 7), std::tuple (3, 5, 3, 0)}) {
        CallbackChain chain;
        EXPECT_EQ (multicallbackfunc (nullptr, &chain, 7, nullptr, nullptr, nullptr), 0);
        std::pair<std::int32_t, std::uint32_t> members[] = {{first, 0}, {second, 0}};
        addcbfunc (chain, member, &members[0]);
        addcbfunc (chain, member, &members[1]);
        EXPECT_EQ (multicallbackfunc (nullptr, &chain, 7, nullptr, nullptr, nullptr), expected);
        EXPECT_EQ (members[0].second, 7U);
        EXPECT_EQ (members[1].second, static_cast<std::uint32_t> (second_calls));
    }
}

TEST_F (ChainTest, OneInterruptStopsOnce)
{
    session ().interrupt_pending = true;
    EXPECT_EQ (ctrlccb (nullptr, nullptr, 0, nullptr, nullptr, nullptr), 1);
    EXPECT_FALSE (session ().interrupt_pending);
    EXPECT_EQ (ctrlccb (nullptr, nullptr, 0, nullptr, nullptr, nullptr), 0);
}

TEST_F (ChainTest, ReleasedHandleIsEmptyAndSafe)
{
    CallbackHandle handle;
    EXPECT_EQ (delete_cb_handle (nullptr), 0);
    EXPECT_EQ (delete_cb_handle (&handle), 0);
    const Value callback = record ({{"log", text ("nowhere")}, {"loghandle", scalar (1)}});
    EXPECT_EQ (makehandle (nullptr, callback.get (), handle, CallbackKind::log), 0);
    EXPECT_EQ (delete_cb_handle (&handle), 0);
    logprint (&handle, "after %d\n");
    EXPECT_EQ (session ().printed, "after %d\n");
    EXPECT_EQ (session ().evaluated, std::vector<std::string>{"drawnow"});
}

}
