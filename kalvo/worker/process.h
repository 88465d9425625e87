// Worker processes: started, kept for the next optimisation, and ended.
#pragma once

#include "kalvo/worker/socket.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include <sys/types.h>
#include <unistd.h>

namespace klv {

// No process can be started here, as in some containers and when a table of the system is full.
struct NoProcess : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The worker's file is missing or is not this library's.
struct NoWorker : std::runtime_error {
    using std::runtime_error::runtime_error;
    bool was_ended = false;    // by a signal before it was ready: another one may do better
};

// The caller does not want to wait for a worker any more.
struct NotWaitedFor {};

// The worker's file: beside the library, unless a test names another one. Empty: there is none to be used.
std::filesystem::path& worker_file ();

struct Conditions;    // what a worker was started and used with

class WorkerProcess {
public:
    // Starts a worker. Throws NoProcess, NoWorker and std::bad_alloc.
    explicit WorkerProcess (std::shared_ptr<const Conditions> conditions);
    WorkerProcess (const WorkerProcess&) = delete;
    WorkerProcess& operator= (const WorkerProcess&) = delete;
    ~WorkerProcess ();    // ends a process that still runs, without waiting

    // Waits for a new worker's first message; throws NoWorker, NoProcess and NotWaitedFor.
    void expect_hello (const std::function<bool ()>& goes_on);
    bool started_under (const Conditions& conditions) const;

    Socket& socket () { return socket_; }
    int process () const
    {
        return process_.number ();
    }    // a descriptor, readable when the process has ended
    int output () const { return output_.number (); }    // what the worker writes, for read_output
    void read_output ();
    void kill () noexcept;

    // How the process ended; waits for its end, which must be near.
    struct End {
        std::string how;    // "was ended by signal 11 (Segmentation fault)"
        int status = -1;    // of exit; -1: a signal, or unknown
        int signal = 0;
        std::string last_line;    // that it wrote
    };
    End end ();

    // Whether it belongs to this process, which may be a fork of the one that started it.
    bool is_ours () const;

private:
    void start (const std::string& file, int socket, int parent, int output);
    [[noreturn]] void throw_early_end (const std::string& file);

    // A place in the list of processes to be reaped.
    struct Place {
        Place ();
        Place (const Place&) = delete;
        Place& operator= (const Place&) = delete;
        ~Place ();

        pid_t owner = ::getpid ();
    };

    Place place_;
    std::shared_ptr<const Conditions> conditions_;
    Socket socket_;
    Descriptor process_, output_;
    std::string written_;
};

// Statuses with which workers end themselves.
constexpr int status_out_of_memory = 101, status_out_of_time = 102, status_left_alone = 103,
              status_without_threads = 104;

// Seconds that a run may go on after a number of seconds that is its limit.
constexpr double grace (double limit)
{
    return limit > 10 ? 0.02 * limit : 0.2;
}

// Descriptors that a worker starts with.
constexpr int worker_socket = 3, worker_parent = 4;

// A worker that is ready: used before with the same parameters, limits, environment and processors, or new. Throws NoProcess, NoWorker and std::bad_alloc.
// `goes_on` is asked every 25 ms whether to wait any longer; if not, NotWaitedFor is thrown.
std::unique_ptr<WorkerProcess> take_worker (int threads, double memory_limit,
                                            const std::function<bool ()>& goes_on);

// Keeps a worker whose run has ended normally.
void keep_worker (std::unique_ptr<WorkerProcess> worker) noexcept;

}
