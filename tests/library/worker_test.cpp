// Workers that crash, hang, lie in their messages or are killed: each call ends with the right code in time, the next one is right, and
// nothing is left.
#include "kalvo/worker/process.h"
#include "kalvo/worker/protocol.h"
#include "tests/library/model.h"
#include "tests/library/scripted_engine.h"
#include "tests/support/processes.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using klv::Clock;
using klv::seconds_between;
using model::Task;
using processes::all_end, processes::children, processes::is_alive;
using scripted::small;

int open_descriptors ()
{
    return static_cast<int> (std::distance (std::filesystem::directory_iterator ("/proc/self/fd"), {}));
}

class Worker : public testing::Test {
protected:
    void SetUp () override
    {
#ifdef KALVO_SANITIZED
        GTEST_SKIP () << "sanitizers see nothing of another process";
#endif
    }
    void TearDown () override
    {
        ::unsetenv ("KALVO_TEST_SCRIPT");
        klv::worker_file () = real_;
    }
    // Workers from now on do what the script says.
    void script (const std::string& text)
    {
        klv::worker_file () = real_.parent_path () / "scripted-worker";
        ::setenv ("KALVO_TEST_SCRIPT", text.c_str (), 1);
    }

    std::filesystem::path real_ = klv::worker_file ();
};

TEST_F (Worker, FaultsOfAnEngineEndItsProcessOnly)
{
    const struct {
        const char *script, *settings;
        const char* outcome = "OK bas OPTIMAL";    // by another method, where the fault is one method's
        int deaths = 1;
        const char* problem = small;
    } cases[] = {
        {"segv:dual simplex", "OPTIMIZER 1"},
        {"abort:dual simplex", "OPTIMIZER 1"},
        {"exit:dual simplex", "OPTIMIZER 1"},
        {"garbage:dual simplex", "OPTIMIZER 1"},
        {"cut:dual simplex", "OPTIMIZER 1"},
        {"kind:dual simplex", "OPTIMIZER 1"},
        {"length:dual simplex", "OPTIMIZER 1"},
        {"news:dual simplex", "OPTIMIZER 1"},
        {"result:dual simplex", "OPTIMIZER 1"},
        {"huge:dual simplex", "OPTIMIZER 1"},
        {"shorter:dual simplex", "OPTIMIZER 1"},
        {"close:dual simplex", "OPTIMIZER 1"},
        {"throw:dual simplex", "OPTIMIZER 1", "OK bas OPTIMAL", 0},
        {"flood", "OPTIMIZER 1 LOG 3", "OK bas OPTIMAL", 0},
        {"output", "OPTIMIZER 1", "OK bas OPTIMAL", 0},
        {"loop:dual simplex", "OPTIMIZER 1 TIME_LIMIT 0.2", "TIME_LIMIT", 0},
        {"memory:dual simplex", "OPTIMIZER 1 MEMORY_LIMIT 300", "OUT_OF_MEMORY", 0},
        {"segv", "OPTIMIZER 1", "ENGINE_FAILED", 7},
        {"abort", "", "ENGINE_FAILED", 2, scripted::small_integers},
        {"segv:dual simplex", "RACE_SIZE 0 MAX_THREADS 2", "OK itr OPTIMAL bas OPTIMAL", 0},
    };
    const int descriptors = open_descriptors ();
    for (const auto& c : cases) {
        SCOPED_TRACE (testing::Message () << c.script << ' ' << c.settings);
        script (c.script);
        Task task (c.problem, c.settings);
        const auto began = Clock::now ();
        const std::string outcome = model::optimized (task);
        EXPECT_EQ (outcome.substr (0, std::strlen (c.outcome)), c.outcome) << task.last_error ();
        EXPECT_LE (seconds_between (began, Clock::now ()), 5);
        EXPECT_LE (task.information ("WORKER_DEATHS"), c.deaths + 1);
        EXPECT_GE (task.information ("WORKER_DEATHS"), std::min (c.deaths, 1));
        script ("");
        EXPECT_EQ (model::optimized (task).substr (0, 2), "OK") << "the next call";
    }
    const auto alive = [] { return std::ranges::count_if (children (), is_alive); };
    for (int i = 0; i < 200 && alive () > 2; ++i)    // a killed process takes a moment to end
        std::this_thread::sleep_for (std::chrono::milliseconds (5));
    EXPECT_LE (alive (), 2);
    script ("");
    EXPECT_EQ (model::optimized (Task (small)).substr (0, 2), "OK") << "which reaps them";
    EXPECT_LE (open_descriptors (), descriptors + 2 * 4) << "those of two workers that are kept";
}

TEST_F (Worker, ADeathIsToldWithItsCauseAndTheReplayIsKept)
{
    script ("abort:dual simplex");
    const std::string path = testing::TempDir () + "replay.json";
    Task task (small, "OPTIMIZER 1");
    KLV_putstrparam (task, 2, path.c_str ());
    std::string printed;
    KLV_linkfunctotaskstream (task, KLV_STREAM_ALL, &printed, [] (void* place, const char* line) {
        *static_cast<std::string*> (place) += line;
    });
    EXPECT_EQ (model::optimized (task), "OK bas OPTIMAL");
    for (const char* part : {"signal 6", "dual simplex (scripted)", "MB", "free(): corrupted", path.c_str ()})
        EXPECT_NE (printed.find (part), std::string::npos) << part << '\n' << printed;
    Task again;
    EXPECT_EQ (KLV_readdata (again, path.c_str ()), 0);
    EXPECT_EQ (model::optimized (again), "OK bas OPTIMAL");
    std::filesystem::remove (path);
}

// An engine that does not stop is ended, with the better of two incumbents kept, and computes no more.
TEST_F (Worker, StopsAndLimitsHoldForAnEngineThatDoesNotStop)
{
    for (const bool limited : {false, true}) {
        SCOPED_TRACE (limited);
        script ("incumbent");
        const std::vector<pid_t> kept = children ();
        Task task (scripted::small_integers, limited ? "TIME_LIMIT 0.1" : "");
        auto since = Clock::now ();
        task.on_progress ([&, stopped = false] (std::uint32_t caller) mutable {
            if (limited || caller != KLV_CALLER_NEW_INCUMBENT || std::exchange (stopped, true))
                return 0;
            since = Clock::now ();
            return 1;
        });
        EXPECT_EQ (KLV_optimize (task), limited ? KLV_RES_TIME_LIMIT : KLV_RES_USER_STOP);
        EXPECT_LT (seconds_between (since, Clock::now ()), limited ? 0.8 : 0.35);
        EXPECT_EQ (model::proved (task), "int PRIMAL_FEASIBLE");
        EXPECT_EQ (model::slot (task, KLV_SOL_INT).xx, (model::Values{3, 0}));
        std::vector<pid_t> new_ones = children ();
        std::erase_if (new_ones, [&] (pid_t child) { return std::ranges::count (kept, child) > 0; });
        EXPECT_TRUE (all_end (new_ones, 0.5));
    }
}

// A callback that takes long is not asked what the worker asked meanwhile, and holds no limit up.
TEST_F (Worker, ASlowCallbackIsAskedNoMoreThanItCanAnswer)
{
    script ("slow");
    Task task (small, "OPTIMIZER 1 TIME_LIMIT 1");
    int asked = 0;
    task.on_progress ([&] (std::uint32_t) {
        ++asked;
        std::this_thread::sleep_for (std::chrono::milliseconds (150));
        return 0;
    });
    const auto began = Clock::now ();
    EXPECT_EQ (KLV_optimize (task), 0) << "the optimiser has an answer when its time is over";
    EXPECT_LT (seconds_between (began, Clock::now ()), 2.5);
    EXPECT_LE (asked, 14);
}

// A program that never says that it is ready holds nobody who does not want to wait.
TEST_F (Worker, ThatIsNeverReadyIsNotWaitedForAfterAStopOrALimit)
{
    const std::filesystem::path file = std::filesystem::path (testing::TempDir ()) / "silent-worker";
    std::ofstream (file) << "#!/bin/sh\nexec sleep 30\n";
    std::filesystem::permissions (file, std::filesystem::perms::owner_all);
    klv::worker_file () = file;
    for (const bool limited : {false, true}) {
        Task task (small, limited ? "TIME_LIMIT 0.2" : "");
        ::setenv ("KALVO_TEST_OTHER", limited ? "limited" : "stopped", 1);
        task.on_progress ([&, calls = 0] (std::uint32_t) mutable { return !limited && ++calls > 3; });
        const auto began = Clock::now ();
        EXPECT_EQ (KLV_optimize (task), limited ? KLV_RES_TIME_LIMIT : KLV_RES_USER_STOP);
        EXPECT_LT (seconds_between (began, Clock::now ()), 1.5);
    }
    ::unsetenv ("KALVO_TEST_OTHER");
    std::filesystem::remove (file);
}

TEST_F (Worker, AnswersAreEqualFromAWorkerUsedBeforeAndAFreshOne)
{
    const std::string problems[] = {model::dense (20, 30), model::knapsack (4, 15), "lp/afiro.mps"};
    std::vector<model::Values> fresh;
    for (const bool again : {false, true})
        for (std::size_t i = 0; i < std::size (problems); ++i) {
            if (!again)
                ::setenv ("KALVO_TEST_OTHER", std::to_string (i).c_str (), 1);    // retires workers
            Task task (problems[i]);
            ASSERT_EQ (KLV_optimize (task), 0);
            const model::Values found = model::slot (task, i == 1 ? KLV_SOL_INT : KLV_SOL_BAS).xx;
            if (!again)
                fresh.push_back (found);
            else
                EXPECT_EQ (found, fresh[i]) << problems[i];
        }
    ::unsetenv ("KALVO_TEST_OTHER");
}

TEST_F (Worker, KilledAtAnyTimeLeavesTheAnswerRight)
{
    std::mt19937 random (3);
    const char* const count = std::getenv ("KALVO_TEST_KILLS");
    const std::string problem = model::dense (60, 90);
    Task task (problem);
    const std::string right = model::optimized (task);
    const int descriptors = open_descriptors ();
    int kills = 0;
    for (int i = 0; i < (count != nullptr ? std::atoi (count) : 100); ++i) {
        processes::Killer killer (std::chrono::microseconds (random () % 12'000));
        ASSERT_EQ (model::optimized (task), right) << task.last_error ();
        kills += killer.kills ();
    }
    EXPECT_GT (kills, 0);
    EXPECT_EQ (model::optimized (task), right);
    EXPECT_LE (open_descriptors (), descriptors);
    EXPECT_LE (children ().size (), 4u);
}

// Forks of the host: workers stay the parent's, and each process has its own.
TEST_F (Worker, AForkOfTheHostHasWorkersOfItsOwn)
{
    Task task (small);
    const std::string right = model::optimized (task);
    const std::vector<pid_t> before = children ();
    bool forked = false;
    task.on_progress ([&] (std::uint32_t caller) {
        if (std::exchange (forked, true) || caller == KLV_CALLER_END_OPTIMIZE)
            return 0;
        if (const pid_t child = ::fork (); child == 0) {
            Task own (small);
            ::_exit (KLV_optimize (own) == 0 ? 7 : 8);
        } else {
            int status = 0;
            ::waitpid (child, &status, 0);
            EXPECT_EQ (WEXITSTATUS (status), 7);
        }
        return 0;
    });
    EXPECT_EQ (model::optimized (task), right);
    EXPECT_TRUE (forked);
    EXPECT_EQ (model::optimized (task), right);
    EXPECT_EQ (children (), before) << "the parent's worker is still its own";
}

// Hosts that have their children reaped by the system, or reap any child themselves.
TEST_F (Worker, AHostMayReapItsChildren)
{
    script ("segv:dual simplex");
    for (const auto handler : {SIG_IGN, SIG_DFL}) {
        const auto old = std::signal (SIGCHLD, handler);
        Task task (small, "OPTIMIZER 1");
        task.on_progress ([&] (std::uint32_t) {
            while (handler == SIG_DFL && ::waitpid (-1, nullptr, WNOHANG) > 0) {
            }
            return 0;
        });
        EXPECT_EQ (model::optimized (task), "OK bas OPTIMAL") << task.last_error ();
        std::signal (SIGCHLD, old);
    }
}

// The host is killed while a run is under way, or with a worker that has nothing to do.
TEST_F (Worker, NothingComputesWhenTheHostHasGone)
{
    for (const char* const at : {"loop", "slow", "", "flood"}) {
        SCOPED_TRACE (at);
        script (at);
        int ends[2];
        ASSERT_EQ (::pipe (ends), 0);
        const pid_t host = ::fork ();
        if (host == 0) {
            Task task (small);
            task.on_progress ([&] (std::uint32_t caller) {
                if (caller != KLV_CALLER_BEGIN_OPTIMIZE)
                    for (const pid_t child : children ())
                        if (::write (ends[1], &child, sizeof child) < 0)
                            return 1;
                return 0;
            });
            KLV_optimize (task);
            const std::vector<pid_t> mine = children ();
            if (!mine.empty () && ::write (ends[1], mine.data (), sizeof (pid_t)) > 0)
                ::pause ();
            ::_exit (0);
        }
        pid_t worker = 0;
        ASSERT_EQ (::read (ends[0], &worker, sizeof worker), static_cast<ssize_t> (sizeof worker));
        ::kill (host, SIGKILL);
        EXPECT_TRUE (all_end ({worker}, 1));
        ::waitpid (host, nullptr, 0);
        ::close (ends[0]);
        ::close (ends[1]);
    }
}

TEST_F (Worker, WithoutItsProgramIsAClearError)
{
    const std::filesystem::path folder = std::filesystem::path (testing::TempDir ()) / "workers";
    std::filesystem::create_directories (folder);
    const auto write = [&] (const char* name, const std::string& content) {
        std::ofstream (folder / name) << content;
        std::filesystem::permissions (folder / name, std::filesystem::perms::owner_all);
        return folder / name;
    };
    const std::filesystem::path without_right = folder / "without_right";
    std::filesystem::copy_file (real_, without_right, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::copy_file (real_.parent_path () / "libhighs.so", folder / "libhighs.so",
                                std::filesystem::copy_options::overwrite_existing);
    std::filesystem::permissions (without_right, std::filesystem::perms::owner_read);
    const struct {
        std::filesystem::path file;
        KLVrescode_t code;
        const char* message;
    } cases[] = {
        {folder / "missing", KLV_RES_WORKER_MISSING, "No such file"},
        {write ("no_program", "nothing"), KLV_RES_WORKER_MISSING, "can't be started"},
        {write ("ends", "#!/bin/sh\necho other words\nexit 3\n"), KLV_RES_WORKER_MISSING, "other words"},
        {without_right, KLV_RES_OK, ""},
        {real_.parent_path () / "scripted-worker", KLV_RES_WORKER_MISSING, "is of version 9.9.9"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.file);
        ::setenv ("KALVO_TEST_OTHER", c.file.c_str (), 1);
        ::setenv ("KALVO_TEST_SCRIPT", "version", 1);
        klv::worker_file () = c.file;
        Task task (small);
        EXPECT_EQ (KLV_optimize (task), c.code);
        EXPECT_TRUE (c.code == 0 || task.last_error ().find (c.message) != std::string::npos)
            << task.last_error ();
    }
    ::unsetenv ("KALVO_TEST_OTHER");
    std::filesystem::remove_all (folder);
}

// Where no process or no shared memory can be had, the same is done in this process, which the log tells.
TEST_F (Worker, WhereThereCanBeNoneTheOptimiserRunsInThisProcess)
{
    for (const auto& [kind, value, told] :
         {std::tuple{RLIMIT_NOFILE, static_cast<rlim_t> (open_descriptors ()), "in this process"},
          {RLIMIT_FSIZE, rlim_t{1000}, "in this process"}}) {
        SCOPED_TRACE (kind);
        ::setenv ("KALVO_TEST_OTHER", std::to_string (kind).c_str (), 1);
        Task task (model::dense (60, 90));
        std::string printed;
        KLV_linkfunctotaskstream (task, KLV_STREAM_ALL, &printed, [] (void* place, const char* line) {
            *static_cast<std::string*> (place) += line;
        });
        rlimit before{};
        ::getrlimit (kind, &before);
        const rlimit tight{value, before.rlim_max};
        ::setrlimit (kind, &tight);
        EXPECT_EQ (KLV_optimize (task), 0);
        ::setrlimit (kind, &before);
        EXPECT_NE (printed.find (told), std::string::npos) << printed;
        EXPECT_EQ (model::proved (task), "itr OPTIMAL bas OPTIMAL");
    }
    ::unsetenv ("KALVO_TEST_OTHER");
}

// Mutated and cut messages are refused, or read as what they say: never beyond their end.
TEST (Messages, AreReadWithinTheirBounds)
{
    klv::Result result;
    result.news.items = {klv::Line{klv::Kind::warning, "a line"}, klv::Question{KLV_CALLER_CHECK}};
    result.solved.found.basic = klv::Tried{{klv::Method::dual_simplex, true}, {}};
    result.solved.found.basic->answer.claim = static_cast<const klv::Point&> (
        scripted::claims ("optimal x 1 2 y 3 d 4 5 ray 6 way 7 8 bound 9 basis"));
    const auto bytes_of = [] (const auto& content) {
        klv::Writer writer;
        klv::write (writer, content);
        std::vector<std::byte> bytes;
        for (const iovec& piece : writer.pieces ()) {
            const auto* start = static_cast<const std::byte*> (piece.iov_base);
            bytes.insert (bytes.end (), start, start + piece.iov_len);
        }
        return bytes;
    };
    const std::vector<std::byte> whole = bytes_of (result);
    const auto read = [] (const std::vector<std::byte>& bytes) {
        try {
            klv::read_result ({klv::MessageKind::result, 1, bytes, nullptr});
            return true;
        } catch (const klv::BrokenMessage&) {
            return false;
        }
    };
    EXPECT_TRUE (read (whole));
    klv::Result failed;
    for (const KLVrescode_t code : {0, 25000, -5, int{KLV_RES_USER_STOP}}) {
        failed.solved.failure = klv::Failure{code, "", {}};
        EXPECT_FALSE (read (bytes_of (failed))) << code;
    }
    for (std::size_t length = 0; length < whole.size (); length += 8)
        EXPECT_FALSE (read ({whole.begin (), whole.begin () + static_cast<std::ptrdiff_t> (length)}))
            << length;
    std::mt19937 random (1);
    int refused = 0;
    for (int i = 0; i < 20'000; ++i) {
        std::vector<std::byte> other = whole;
        for (int k = 0; k < 3; ++k)
            other[random () % other.size ()] = static_cast<std::byte> (random ());
        refused += !read (other);
    }
    EXPECT_GT (refused, 0);
}

}
