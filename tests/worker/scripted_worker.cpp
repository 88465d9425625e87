// A worker whose engine does what the environment variable KALVO_TEST_SCRIPT says: an action, and perhaps the only method that it is for.
// All other runs answer rightly.
#include "kalvo/worker/process.h"
#include "kalvo/worker/service.h"
#include "tests/library/scripted_engine.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using scripted::claims;

[[noreturn]] void never_stop ()
{
    sigset_t all;
    sigfillset (&all);
    pthread_sigmask (SIG_SETMASK, &all, nullptr);
    for (std::atomic<int> count = 0;; ++count) {
    }
}

[[noreturn]] void take_all_memory ()
{
    for (std::vector<std::vector<char>> taken;;)
        taken.emplace_back (1 << 22, 'x');
}

// A message's head as the protocol has it, with what is wrong put in by the caller.
struct Head {
    std::uint32_t mark = 0x4b6c7731;
    std::uint16_t kind = 4, in_file = 0;
    std::uint64_t run = 1, length = 0;
};

void send (const Head& head, std::string_view body = "", int file = -1)
{
    std::string bytes (reinterpret_cast<const char*> (&head), sizeof head);
    bytes += body;
    iovec piece{bytes.data (), bytes.size ()};
    alignas (cmsghdr) char control[CMSG_SPACE (sizeof (int))]{};
    msghdr message{};
    message.msg_iov = &piece;
    message.msg_iovlen = 1;
    if (file >= 0) {
        message.msg_control = control;
        message.msg_controllen = sizeof control;
        cmsghdr* const with = CMSG_FIRSTHDR (&message);
        with->cmsg_level = SOL_SOCKET;
        with->cmsg_type = SCM_RIGHTS;
        with->cmsg_len = CMSG_LEN (sizeof (int));
        std::memcpy (CMSG_DATA (with), &file, sizeof file);
    }
    ::sendmsg (klv::worker_socket, &message, MSG_NOSIGNAL);
}

// The number of the run in each message: the worker's thread can't know it, so all small ones are tried.
void send_for_each_run (Head head, std::string_view body = "", int file = -1)
{
    for (head.run = 1; head.run < 20'000; ++head.run)
        send (head, body, file);
}

int file_of (std::size_t size)
{
    const int file = ::memfd_create ("test", 0);
    return ::ftruncate (file, static_cast<off_t> (size)) == 0 ? file : -1;
}

void do_action (const std::string& action, const klv::StopFlag& stop, klv::Events& events)
{
    events.progress ({.caller = KLV_CALLER_DUAL_SIMPLEX});
    if (action == "segv")
        *static_cast<volatile int*> (nullptr) = 0;
    else if (action == "abort") {
        std::fputs ("free(): corrupted\n", stderr);
        std::abort ();
    } else if (action == "exit")
        std::exit (0);
    else if (action == "throw")
        throw std::runtime_error ("thrown");
    else if (action == "memory")
        take_all_memory ();
    else if (action == "loop")
        never_stop ();
    else if (action == "incumbent") {
        const double poor[] = {9, 9}, better[] = {3, 0};
        events.progress ({.caller = KLV_CALLER_MIXED_INTEGER});
        events.incumbent (poor, 2);
        events.incumbent (better, 2);
        never_stop ();
    } else if (action == "close") {
        ::shutdown (klv::worker_socket, SHUT_RDWR);
        never_stop ();
    } else if (action == "garbage")
        send ({.mark = 7}, "garbage");
    else if (action == "cut")
        ::send (klv::worker_socket, "abc", 3, 0);
    else if (action == "kind")
        send ({.kind = 77});
    else if (action == "length")
        send ({.length = 1'000'000});
    else if (action == "news")
        send_for_each_run ({.length = 16}, std::string (16, '\xff'));
    else if (action == "result")
        send_for_each_run ({.kind = 5, .length = 8}, std::string (8, '\0'));
    else if (action == "huge")
        send ({.in_file = 1, .length = std::uint64_t{1} << 40}, "", file_of (std::size_t{1} << 40));
    else if (action == "shorter")
        send ({.in_file = 1, .length = 1 << 20}, "", file_of (100));
    else if (action == "flood")
        for (int i = 0; i < 200'000; ++i) {
            events.text ("a line of the engine\n");
            events.step ({.caller = KLV_CALLER_DUAL_SIMPLEX, .iterations = i});
        }
    else if (action == "output")
        for (int i = 0; i < 20'000; ++i)
            std::puts ("what a library prints");
    else if (action == "slow")
        scripted::Gate::wait_for (stop);
}

}

int main ()
{
    const char* const variable = std::getenv ("KALVO_TEST_SCRIPT");
    const std::string script = variable != nullptr ? variable : "";
    const std::size_t end = script.find (':');
    const std::string action = script.substr (0, end);
    const std::string only = end != script.npos ? script.substr (end + 1) : "";
    if (action == "version") {
        klv::Writer hello;
        hello.put_text ("9.9.9");
        klv::Socket (klv::Descriptor (klv::worker_socket), klv::Socket::Large::copied)
            .send (klv::MessageKind::hello, 0, hello);
        return 0;
    }
    klv::engines ().insert (klv::engines ().begin (),
                            std::make_shared<scripted::Engine> (
                                [&] (const klv::Job& job, const klv::StopFlag& stop, klv::Events& events) {
                                    if (only.empty () || only == klv::about (job.method).name)
                                        do_action (action, stop, events);
                                    return claims (scripted::right);
                                }));
    return klv::run_worker ();
}
