#include "kalvo/worker/process.h"

#include "kalvo/model/text.h"
#include "kalvo/task/environment.h"
#include "kalvo/worker/protocol.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <link.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h>    // lacks this linkage in some releases
}

namespace klv {

constexpr std::size_t kept_output = 4000;
constexpr std::size_t longest_hello = 1000;

std::filesystem::path& worker_file ()
{
    static std::filesystem::path& file = *new std::filesystem::path (environment::folder () / "kalvo-worker");
    return file;
}

// Limits that a worker takes over and that bear on an optimisation.
constexpr __rlimit_resource bearing_limits[] = {RLIMIT_CPU,   RLIMIT_FSIZE,  RLIMIT_DATA, RLIMIT_STACK,
                                                RLIMIT_NPROC, RLIMIT_NOFILE, RLIMIT_AS};

// What a worker takes over from the process that starts it, and what it was used with.
struct Conditions {
    int threads;
    double memory_limit;
    std::string variables;
    cpu_set_t processors{};
    std::array<rlimit, std::size (bearing_limits)> limits{};

    Conditions (int asked_threads, double asked_memory_limit)
        : threads (asked_threads), memory_limit (asked_memory_limit)
    {
        for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
            variables.append (*variable).push_back ('\0');
        ::sched_getaffinity (0, sizeof processors, &processors);
        for (std::size_t i = 0; i < limits.size (); ++i)
            ::getrlimit (bearing_limits[i], &limits[i]);
    }

    bool operator== (const Conditions& other) const
    {
        const auto same = [] (const rlimit& a, const rlimit& b) {
            return a.rlim_cur == b.rlim_cur && a.rlim_max == b.rlim_max;
        };
        return threads == other.threads && memory_limit == other.memory_limit &&
               variables == other.variables && CPU_EQUAL (&processors, &other.processors) &&
               std::ranges::equal (limits, other.limits, same);
    }
};

// ---- Start -------------------------------------------------------------------------------------------------------------------

[[noreturn]] static void no_process (int error, const char* what)
{
    throw NoProcess (text (what, ": ", std::strerror (error)));
}

// Away from the numbers that the worker's own descriptors get.
static Descriptor lifted (Descriptor low, const char* what)
{
    if (!low)
        no_process (errno, what);
    Descriptor high (::fcntl (low.number (), F_DUPFD_CLOEXEC, 10));
    if (!high)
        no_process (errno, what);
    return high;
}

// What a program of this system is loaded by, for a worker file that lost its right to be executed.
static std::string program_loader ()
{
    std::string found;
    ::dl_iterate_phdr (
        [] (dl_phdr_info* object, std::size_t, void* place) {
            const std::string_view name = object->dlpi_name;
            const std::size_t slash = name.rfind ('/');
            if (slash == name.npos || !name.substr (slash + 1).starts_with ("ld"))
                return 0;
            *static_cast<std::string*> (place) = name;
            return 1;
        },
        &found);
    return found;
}

// The environment without what would change which libraries the worker loads.
static std::vector<char*> worker_environment ()
{
    std::vector<char*> kept;
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        if (!std::string_view (*variable).starts_with ("LD_"))
            kept.push_back (*variable);
    kept.push_back (nullptr);
    return kept;
}

// What posix_spawn is to do in the child.
class SpawnPlan {
public:
    SpawnPlan (int socket, int parent, int output)
    {
        sigset_t all;    // the worker unblocks them when it has left the terminal's group
        ::sigfillset (&all);
        check (::posix_spawnattr_init (&attributes));
        check (::posix_spawn_file_actions_init (&actions));
        check (::posix_spawnattr_setsigmask (&attributes, &all));
        check (::posix_spawnattr_setsigdefault (&attributes, &all));
        check (::posix_spawnattr_setflags (&attributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK |
                                                            POSIX_SPAWN_SETSIGDEF));
        check (::posix_spawn_file_actions_addopen (&actions, 0, "/dev/null", O_RDONLY, 0));
        check (::posix_spawn_file_actions_adddup2 (&actions, output, 1));
        check (::posix_spawn_file_actions_adddup2 (&actions, output, 2));
        check (::posix_spawn_file_actions_adddup2 (&actions, socket, worker_socket));
        check (::posix_spawn_file_actions_adddup2 (&actions, parent, worker_parent));
        check (::posix_spawn_file_actions_addclosefrom_np (&actions, worker_parent + 1));
        check (::posix_spawn_file_actions_addchdir_np (&actions, "/"));
    }
    SpawnPlan (const SpawnPlan&) = delete;
    SpawnPlan& operator= (const SpawnPlan&) = delete;
    ~SpawnPlan ()
    {
        ::posix_spawn_file_actions_destroy (&actions);
        ::posix_spawnattr_destroy (&attributes);
    }

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t actions{};

private:
    static void check (int error)
    {
        if (error != 0)
            throw std::bad_alloc ();    // the only cause that these functions have
    }
};

void WorkerProcess::start (const std::string& file, int socket, int parent, int output)
{
    std::error_code ignored;
    if (!std::filesystem::is_regular_file (file, ignored))
        throw NoWorker (text ("The program '", file, "' is missing: No such file."));
    const SpawnPlan plan (socket, parent, output);
    std::vector<char*> variables = worker_environment ();
    std::string first = file;
    const std::string loader = program_loader ();
    std::string through = loader;
    char* const alone[] = {first.data (), nullptr};
    char* const loaded[] = {through.data (), first.data (), nullptr};
    pid_t number = 0;
    int error =
        ::posix_spawn (&number, file.c_str (), &plan.actions, &plan.attributes, alone, variables.data ());
    if (error == EACCES && ::access (file.c_str (), R_OK) == 0 && !loader.empty ())
        error = ::posix_spawn (&number, loader.c_str (), &plan.actions, &plan.attributes, loaded,
                               variables.data ());
    if (error == EAGAIN || error == ENOMEM || error == E2BIG || error == EPERM || error == ENOSYS ||
        error == EMFILE || error == ENFILE)
        no_process (error, "no process can be started");
    if (error == ENOENT && ::access ("/dev/null", R_OK) != 0)
        no_process (error, "/dev/null can't be opened");
    if (error != 0)
        throw NoWorker (text ("The program '", file, "' can't be started: ", std::strerror (error), "."));
    process_ = Descriptor (::pidfd_open (number, 0));
    if (!process_) {
        // Without a descriptor the process can't be watched. It ends by itself: nobody will hold the other end of its socket.
        const int cause = errno;
        no_process (cause, "a started process can't be watched");
    }
}

static std::array<Descriptor, 2> make_pair ()
{
    int ends[2];
    if (::socketpair (AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        no_process (errno, "no socket can be made");
    Descriptor one (ends[0]), other (ends[1]);
    return {lifted (std::move (one), "no socket can be made"),
            lifted (std::move (other), "no socket can be made")};
}

static std::array<Descriptor, 2> make_pipe ()
{
    int ends[2];
    if (::pipe2 (ends, O_CLOEXEC) != 0)
        no_process (errno, "no pipe can be made");
    Descriptor one (ends[0]), other (ends[1]);
    ::fcntl (one.number (), F_SETFL, O_NONBLOCK);
    return {lifted (std::move (one), "no pipe can be made"),
            lifted (std::move (other), "no pipe can be made")};
}

WorkerProcess::WorkerProcess (std::shared_ptr<const Conditions> conditions)
    : conditions_ (std::move (conditions)), socket_ (Descriptor (), Socket::Large::copied)
{
    const std::string file = worker_file ().string ();
    auto [ours, theirs] = make_pair ();
    auto [read_end, write_end] = make_pipe ();
    const Descriptor self =
        lifted (Descriptor (::pidfd_open (::getpid (), 0)), "this process can't be watched");
    socket_ = Socket (std::move (ours), Socket::Large::copied);
    socket_.accept_up_to (longest_hello);
    output_ = std::move (read_end);
    start (file, theirs.number (), self.number (), write_end.number ());
}

bool WorkerProcess::started_under (const Conditions& conditions) const
{
    return *conditions_ == conditions;
}

// Waits until the descriptors, of which the second may be -1, have something, or the time is over.
static void wait_for (int descriptor, int milliseconds, int other = -1)
{
    pollfd places[] = {{descriptor, POLLIN, 0}, {other, POLLIN, 0}};
    ::poll (places, std::size (places), milliseconds);
}

void WorkerProcess::expect_hello (const std::function<bool ()>& goes_on)
{
    constexpr auto patience = std::chrono::seconds (20);    // a machine may be slow, a disk asleep
    const std::string file = worker_file ().string ();
    const auto began = std::chrono::steady_clock::now ();
    try {
        for (Socket::Received received; !received.message;) {
            if (!goes_on ())
                throw NotWaitedFor ();
            if (std::chrono::steady_clock::now () - began > patience)
                throw NoWorker (
                    text ("The program '", file, "' did not answer within ", patience.count (), " s."));
            wait_for (socket_.number (), 25, process ());
            received = socket_.receive ();
            if (received.closed)
                throw_early_end (file);
            if (!received.message)
                continue;
            Reader hello (received.message->body);
            const std::string version =
                received.message->kind == MessageKind::hello ? hello.get_text () : "?";
            if (version != environment::version ())
                throw NoWorker (text ("The program '", file, "' is of version ", version,
                                      "; this library is ", environment::version (), "."));
        }
    } catch (const BrokenMessage&) {
        throw NoWorker (text ("The program '", file, "' is not this library's worker."));
    }
}

void WorkerProcess::throw_early_end (const std::string& file)
{
    const End ended = end ();
    if (ended.status == status_without_threads)
        throw NoProcess ("a process can't start a thread");
    NoWorker fault (text ("The program '", file, "' ", ended.how, " before it was ready",
                          ended.last_line.empty () ? "" : ": ", ended.last_line, "."));
    fault.was_ended = ended.signal != 0;
    throw fault;
}

// ---- End ---------------------------------------------------------------------------------------------------------------------

void WorkerProcess::read_output ()
{
    char piece[65536];
    const ssize_t count = ::read (output (), piece, sizeof piece);    // all that a pipe holds
    if (count <= 0)
        return;
    written_.append (piece, static_cast<std::size_t> (count));
    if (written_.size () > kept_output)
        written_.erase (0, written_.size () - kept_output);
}

void WorkerProcess::kill () noexcept
{
    if (is_ours () && process_)
        ::pidfd_send_signal (process (), SIGKILL, nullptr, 0);
}

bool WorkerProcess::is_ours () const
{
    return place_.owner == ::getpid ();
}

static std::string last_line_of (std::string_view written)
{
    while (written.ends_with ('\n'))
        written.remove_suffix (1);
    return std::string (written.substr (written.rfind ('\n') + 1));
}

WorkerProcess::End WorkerProcess::end ()
{
    constexpr int patience = 1000;
    End end;
    wait_for (process (), 200);
    kill ();    // it may have closed its socket and gone on
    wait_for (process (), patience);
    read_output ();
    end.last_line = last_line_of (written_);
    siginfo_t ended{};
    const int done = ::waitid (P_PIDFD, static_cast<id_t> (process ()), &ended, WEXITED | WNOHANG);
    if (done == 0 && ended.si_pid == 0) {    // the system is slow: it is reaped with others that end
        end.how = "does not end";
        return end;
    }
    process_.close ();
    if (done != 0) {
        end.how = "ended, it is not known how";
        return end;
    }
    if (ended.si_code == CLD_EXITED) {
        end.status = ended.si_status;
        end.how = text ("ended with status ", end.status);
    } else {
        end.signal = ended.si_status;
        end.how = text ("was ended by signal ", end.signal, " (", ::strsignal (end.signal), ")");
    }
    return end;
}

// ---- Workers that are kept -------------------------------------------------------------------------------------------------------

constexpr std::size_t most_idle = 2;

// Never destroyed: workers end by themselves with the process. Ended processes are reaped when there is time for it.
struct Pool {
    Pool () { idle.reserve (most_idle); }

    std::mutex mutex;
    pid_t owner = ::getpid ();
    std::vector<std::unique_ptr<WorkerProcess>> idle;
    std::vector<Descriptor> ending;
    std::size_t alive = 0;    // workers of this process

    // The workers of another process, of which this one is a fork, are not this one's.
    void check_owner ()
    {
        if (owner == ::getpid ())
            return;
        idle.clear ();
        ending.clear ();
        alive = 0;
        owner = ::getpid ();
    }
    void reap ()
    {
        std::erase_if (ending, [] (const Descriptor& process) {
            siginfo_t ended{};
            return ::waitid (P_PIDFD, static_cast<id_t> (process.number ()), &ended, WEXITED | WNOHANG) !=
                       0 ||
                   ended.si_pid != 0;
        });
    }
};

static Pool& pool ()
{
    static Pool& only = *new Pool;
    return only;
}

WorkerProcess::Place::Place ()
{
    const std::lock_guard lock (pool ().mutex);
    pool ().check_owner ();
    pool ().ending.reserve (pool ().ending.size () + pool ().alive + 1);
    ++pool ().alive;
}

WorkerProcess::Place::~Place ()
{
    if (owner != ::getpid ())
        return;    // in a fork, where the lock may be held
    const std::lock_guard lock (pool ().mutex);
    --pool ().alive;
}

WorkerProcess::~WorkerProcess ()
{
    if (!is_ours () || !process_)
        return;
    kill ();
    const std::lock_guard lock (pool ().mutex);
    pool ().ending.push_back (std::move (process_));    // for which there is a place
}

// Whether the worker has told that it can be used again.
static bool is_ready (WorkerProcess& worker)
{
    constexpr int patience = 5;    // milliseconds: a new worker is there as soon
    try {
        Socket::Received received = worker.socket ().receive ();
        if (!received.closed && !received.message) {
            wait_for (worker.socket ().number (), patience);
            received = worker.socket ().receive ();
        }
        return received.message && received.message->kind == MessageKind::ready;
    } catch (const BrokenMessage&) {
        return false;
    }
}

std::unique_ptr<WorkerProcess> take_worker (int threads, double memory_limit,
                                            const std::function<bool ()>& goes_on)
{
    const auto now = std::make_shared<Conditions> (threads, memory_limit);
    for (;;) {
        std::unique_ptr<WorkerProcess> found;
        {
            const std::lock_guard lock (pool ().mutex);
            pool ().check_owner ();
            pool ().reap ();
            auto& idle = pool ().idle;
            const auto fitting = std::ranges::find_if (
                idle, [&] (const auto& worker) { return worker->started_under (*now); });
            if (fitting == idle.end ())
                break;
            found = std::move (*fitting);
            idle.erase (fitting);
        }
        if (is_ready (*found))
            return found;
    }
    auto started = std::make_unique<WorkerProcess> (now);
    started->expect_hello (goes_on);
    return started;
}

void keep_worker (std::unique_ptr<WorkerProcess> worker) noexcept
{
    std::unique_ptr<WorkerProcess> oldest;    // ends outside the lock
    const std::lock_guard lock (pool ().mutex);
    pool ().check_owner ();
    if (!worker->is_ours ())
        return;
    auto& idle = pool ().idle;
    if (idle.size () == most_idle) {
        oldest = std::move (idle.front ());
        idle.erase (idle.begin ());
    }
    idle.push_back (std::move (worker));
}

}
