#include "kalvo/worker/service.h"

#include "kalvo/model/text.h"
#include "kalvo/task/environment.h"
#include "kalvo/worker/guard.h"
#include "kalvo/worker/process.h"
#include "kalvo/worker/protocol.h"
#include "kalvo/worker/watch.h"

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <new>
#include <string>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace klv {

static bool wait_for (const Socket& socket, short events, int milliseconds)
{
    pollfd place{socket.number (), events, 0};
    return ::poll (&place, 1, milliseconds) > 0;
}

// What is to be told to the caller, which may be slow to listen: then lines are counted and dropped, and of information and incumbents
// the newest counts.
class Outbox final : public Journal {
public:
    Outbox (Socket& socket, const Guard& guard, std::uint64_t run, Task& task)
        : socket_ (socket), guard_ (guard), run_ (run), task_ (task)
    {}

    void begun (const Begun& begun, const char* engine) override
    {
        add (BegunRun{begun, engine});
        flush ();
    }
    void ended (const Past& past) override
    {
        add (past);
        flush ();
    }
    void incumbent (std::vector<double>&& x) override
    {
        std::erase_if (news_.items,
                       [] (const Item& item) { return std::holds_alternative<NewIncumbent> (item); });
        add (NewIncumbent{std::move (x)});
        flush ();
    }
    void line (Kind kind, std::string_view text)
    {
        if (news_.items.size () < most_items)
            add (Line{kind, std::string (text)});
        else
            ++lost_lines_;
    }
    // Returns the caller's answer as far as it is known.
    std::int32_t ask (std::uint32_t caller)
    {
        const auto* last = news_.items.empty () ? nullptr : std::get_if<Question> (&news_.items.back ());
        if (news_.items.size () < most_items && (last == nullptr || last->caller != caller))
            add (Question{caller});
        if (Clock::now () - flushed_ >= between_flushes)
            flush ();
        return stopped () ? 1 : 0;
    }

    // The last message. Waits for room, for as long as that takes: limits are the guard's.
    void finish (Solved&& solved)
    {
        complete_news ();
        const Result result{std::move (news_), std::move (solved)};
        Writer body;
        write (body, result);
        while (socket_.send (MessageKind::result, run_, body) == Socket::Sent::full)
            wait_for (socket_, POLLOUT, -1);
    }

    void note_memory (double megabytes)
    {
        Information& information = task_.information;
        information.set (RealItem::worker_memory,
                         std::max (information.get (RealItem::worker_memory), megabytes));
    }

private:
    static constexpr std::size_t most_items = 2000;
    static constexpr std::chrono::milliseconds between_flushes{10};

    void add (Item item) { news_.items.push_back (std::move (item)); }

    void complete_news ()
    {
        if (lost_lines_ > 0)
            add (Line{Kind::message, text ("(", std::exchange (lost_lines_, 0), " lines were lost)")});
        note_memory (guard_.resident_megabytes ());
        news_.information = task_.information;
    }

    // When the socket is full all is kept.
    void flush ()
    {
        flushed_ = Clock::now ();
        if (!wait_for (socket_, POLLOUT, 0))
            return;
        complete_news ();
        Writer body;
        write (body, news_);
        if (socket_.send (MessageKind::news, run_, body) == Socket::Sent::yes)
            news_.items.clear ();
    }

    bool stopped ()
    {
        while (!stopped_) {
            const Socket::Received received = socket_.receive ();
            if (!received.closed && !received.message)
                break;
            stopped_ = received.closed ||
                       (received.message->kind == MessageKind::stop && received.message->run == run_);
        }
        return stopped_;
    }

    Socket& socket_;
    const Guard& guard_;
    std::uint64_t run_;
    Task& task_;
    News news_;
    std::int64_t lost_lines_ = 0;
    Clock::time_point flushed_ = Clock::now ();
    bool stopped_ = false;
};

// ---- Memory ------------------------------------------------------------------------------------------------------------------

// "VmHWM": a line of the system's file about this process, in megabytes.
static double megabytes_of (const std::string& name)
{
    std::ifstream status ("/proc/self/status");
    for (std::string word; status >> word;)
        if (double kilobytes = 0; word == name + ":" && status >> kilobytes)
            return kilobytes / 1024;
    return 0;
}

// The most that is resident counts from now on.
static void forget_most_memory ()
{
    std::ofstream ("/proc/self/clear_refs") << "5";
}

// Limits what is allocated beyond what there is. What is resident is watched by the guard.
class MemoryLimit {
public:
    explicit MemoryLimit (double megabytes)
    {
        if (!std::isfinite (megabytes) || ::getrlimit (RLIMIT_DATA, &before_) != 0)
            return;
        // Engines take address space that they do not use when they are loaded.
        for (const std::shared_ptr<Engine>& engine : engines ())
            engine->load ();
        const double bytes = (megabytes_of ("VmData") + megabytes) * 1048576;
        rlimit limit = before_;
        if (bytes < static_cast<double> (before_.rlim_cur))
            limit.rlim_cur = static_cast<rlim_t> (bytes);
        is_set_ = ::setrlimit (RLIMIT_DATA, &limit) == 0;
    }
    MemoryLimit (const MemoryLimit&) = delete;
    MemoryLimit& operator= (const MemoryLimit&) = delete;
    ~MemoryLimit ()
    {
        if (is_set_)
            ::setrlimit (RLIMIT_DATA, &before_);
    }

private:
    rlimit before_{};
    bool is_set_ = false;
};

// ---- One problem -----------------------------------------------------------------------------------------------------------------

static void print_message (void* outbox, const char* line)
{
    const std::string_view whole = line;
    static_cast<Outbox*> (outbox)->line (Kind::message, whole.substr (0, whole.size () - 1));
}

static void print_warning (void* outbox, const char* line)
{
    const std::string_view whole = line;
    static_cast<Outbox*> (outbox)->line (Kind::warning, whole.substr (0, whole.size () - 1));
}

static std::int32_t ask (KLVtask_t, void* outbox, std::uint32_t caller, const double*, const std::int32_t*,
                         const std::int64_t*)
{
    return static_cast<Outbox*> (outbox)->ask (caller);
}

// False: an engine has failed, and the process is not used again.
static bool solve (Socket& socket, Guard& guard, const Message& message)
{
    constexpr double long_enough = 0.02;    // seconds
    Task task;
    Outbox outbox (socket, guard, message.run, task);
    try {
        Problem problem;
        Request request = read_request (message, problem);
        task.parameters = request.parameters;
        task.information = request.information;
        task.replace_problem (std::move (problem));
        task.streams.link_function (KLV_STREAM_MESSAGES, &outbox, print_message);
        task.streams.link_function (KLV_STREAM_WARNINGS, &outbox, print_warning);
        task.set_callback (ask, &outbox);
        Call call (task, request.elapsed);
        guard.limit (call.seconds_left () + grace (call.seconds_left ()), request.most_megabytes);
        const MemoryLimit limited (request.most_megabytes);
        Watch watch (task, call);
        Attempts attempts (task, call, watch, request.integers, &outbox, std::move (request.past));
        Solved solved = solve_by_plan (attempts, request.earlier, request.integers);
        // To ask the system takes as long as a tenth of a tiny problem.
        if (call.seconds () > long_enough) {
            outbox.note_memory (megabytes_of ("VmHWM"));
            forget_most_memory ();
        }
        outbox.finish (std::move (solved));
        if (watch.leaves_runs ())
            guard.limit (grace (0), infinity);
        return !watch.has_seen_failure ();
    } catch (const std::bad_alloc&) {
        outbox.finish (
            {.failure = Failure{KLV_RES_OUT_OF_MEMORY, "There is not enough memory for the optimiser.", {}}});
        return false;
    }
}

static void serve (Socket& socket, Guard& guard)
{
    constexpr double most_kept_megabytes = 256;    // a larger process is not kept for the next problem
    Writer hello;
    hello.put_text (environment::version ());
    socket.send (MessageKind::hello, 0, hello);
    for (;;) {
        wait_for (socket, POLLIN, -1);
        Socket::Received received = socket.receive ();
        if (received.closed)
            return;
        if (!received.message || received.message->kind != MessageKind::solve)
            continue;    // a stop that came after the end of its run
        guard.begin_work ();
        const std::uint64_t run = received.message->run;
        const bool well = solve (socket, guard, *received.message);
        received.message.reset ();
        guard.end_work ();
        if (!well || guard.resident_megabytes () > most_kept_megabytes)
            return;
        socket.send (MessageKind::ready, run);
    }
}

// ---- The program -------------------------------------------------------------------------------------------------------------------

// The system ends workers first when memory runs out, never the caller. No memory is dumped when an engine crashes.
// A signal of the terminal that the process got before it left the terminal's group is forgotten. Memory of middle size is used again
// and not given back page by page: a fifth of the time of runs of some milliseconds.
static void prepare_process ()
{
    ::mallopt (M_MMAP_THRESHOLD, 4 << 20);
    ::mallopt (M_TRIM_THRESHOLD, 32 << 20);
    for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTSTP}) {
        std::signal (number, SIG_IGN);
        std::signal (number, SIG_DFL);
    }
    sigset_t none;
    ::sigemptyset (&none);
    ::pthread_sigmask (SIG_SETMASK, &none, nullptr);
    const rlimit no_dump{1, 1};
    ::setrlimit (RLIMIT_CORE, &no_dump);
    const Descriptor score (::open ("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    if (score && ::write (score.number (), "1000", 4) != 4)
        std::fputs ("the order of processes to be ended can't be set\n", stderr);
}

int run_worker ()
{
    int type = 0;
    socklen_t length = sizeof type;
    if (::getsockopt (worker_socket, SOL_SOCKET, SO_TYPE, &type, &length) != 0 || type != SOCK_SEQPACKET) {
        std::fputs ("kalvo-worker is started by libkalvo64, for each optimisation that needs one.\n", stderr);
        return 2;
    }
    prepare_process ();
    environment::alone () = true;
    Socket socket (Descriptor (worker_socket), Socket::Large::mapped);
    try {
        serve (socket, *new Guard (worker_socket, worker_parent));
    } catch (const std::system_error&) {
        std::_Exit (status_without_threads);
    } catch (const std::exception& exception) {
        std::fprintf (stderr, "%s\n", exception.what ());
        std::_Exit (1);
    }
    std::_Exit (0);
}

}
