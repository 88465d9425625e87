#include "kalvo/worker/service.h"

#include "kalvo/model/text.h"
#include "kalvo/task/environment.h"
#include "kalvo/worker/guard.h"
#include "kalvo/worker/process.h"
#include "kalvo/worker/protocol.h"
#include "kalvo/worker/watch.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace klv {

static void wait_for (const Socket& socket, short events)
{
    pollfd place{socket.number (), events, 0};
    ::poll (&place, 1, -1);
}

// What is to be told to the caller, which may be slow to listen: then lines are counted and dropped, and of all else the newest counts.
class Outbox final : public Journal {
public:
    Outbox (Socket& socket, std::uint64_t run, Task& task) : socket_ (socket), run_ (run), task_ (task) {}

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
        if (news_.items.size () < most_items)
            add (Question{caller});
        if (Clock::now () - flushed_ >= between_flushes)
            flush ();
        return stopped () ? 1 : 0;
    }

    // False: the socket is full, and all is kept.
    bool flush ()
    {
        flushed_ = Clock::now ();
        if (lost_lines_ > 0)
            add (Line{Kind::message, text ("(", std::exchange (lost_lines_, 0), " lines were lost)")});
        news_.information = task_.information;
        Writer body;
        write (body, news_);
        const Socket::Sent sent = socket_.send (MessageKind::news, run_, body);
        if (sent == Socket::Sent::yes)
            news_.items.clear ();
        return sent != Socket::Sent::full;
    }

    // Waits for room, for as long as that takes: limits are the guard's.
    void finish (const Result& result)
    {
        while (!news_.items.empty () && !flush ())
            wait_for (socket_, POLLOUT);
        Writer body;
        write (body, result);
        while (socket_.send (MessageKind::result, run_, body) == Socket::Sent::full)
            wait_for (socket_, POLLOUT);
    }

private:
    static constexpr std::size_t most_items = 2000;
    static constexpr std::chrono::milliseconds between_flushes{10};

    void add (Item item) { news_.items.push_back (std::move (item)); }

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
    std::uint64_t run_;
    Task& task_;
    News news_;
    std::int64_t lost_lines_ = 0;
    Clock::time_point flushed_ = Clock::now ();
    bool stopped_ = false;
};

// ---- Memory ------------------------------------------------------------------------------------------------------------------

static double most_megabytes ()
{
    rusage used{};
    ::getrusage (RUSAGE_SELF, &used);
    return static_cast<double> (used.ru_maxrss) / 1024;
}

// Allocations beyond the limit fail; what is resident is watched by the guard.
static void limit_memory (double megabytes)
{
    rlimit limit{};
    if (::getrlimit (RLIMIT_DATA, &limit) != 0)
        return;
    const double bytes = megabytes * 1048576;
    limit.rlim_cur = bytes < 9e18 ? std::min (static_cast<rlim_t> (bytes), limit.rlim_max) : limit.rlim_max;
    ::setrlimit (RLIMIT_DATA, &limit);
}

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

static double grace (double seconds)
{
    return std::max (0.2, 0.02 * seconds);
}

static void solve (Socket& socket, Guard& guard, const Message& message)
{
    Task task;
    Outbox outbox (socket, message.run, task);
    Result result;
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
        limit_memory (request.most_megabytes);
        Watch watch (task, call);
        Attempts attempts (task, call, watch, request.integers, &outbox, std::move (request.past));
        result.solved = solve_by_plan (attempts, request.earlier, request.integers);
        result.information = task.information;
        result.megabytes = most_megabytes ();
        outbox.finish (result);
        if (watch.leaves_runs ())
            guard.limit (grace (0), infinity);
    } catch (const std::bad_alloc&) {
        result.solved = {.failure = Failure{.code = KLV_RES_OUT_OF_MEMORY}};
        result.information = task.information;
        outbox.finish (result);
    }
}

static void serve (Socket& socket, Guard& guard)
{
    constexpr double most_kept_megabytes = 256;    // a larger process is not kept for the next problem
    Writer hello;
    hello.put_text (environment::version ());
    socket.send (MessageKind::hello, 0, hello);
    for (;;) {
        wait_for (socket, POLLIN);
        Socket::Received received = socket.receive ();
        if (received.closed)
            return;
        if (!received.message || received.message->kind != MessageKind::solve)
            continue;    // a stop that came after the end of its run
        guard.begin_work ();
        const std::uint64_t run = received.message->run;
        solve (socket, guard, *received.message);
        received.message.reset ();
        limit_memory (infinity);
        guard.end_work ();
        if (guard.resident_megabytes () > most_kept_megabytes)
            return;
        socket.send (MessageKind::ready, run);
    }
}

// ---- The program -------------------------------------------------------------------------------------------------------------------

// The system ends workers first when memory runs out, never the caller. No memory is dumped when an engine crashes.
static void prepare_process ()
{
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
    Guard& guard = *new Guard (worker_socket, worker_parent);
    try {
        serve (socket, guard);
    } catch (const std::exception& exception) {
        std::fprintf (stderr, "%s\n", exception.what ());
        std::_Exit (1);
    }
    std::_Exit (0);
}

}
