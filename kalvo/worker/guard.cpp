#include "kalvo/worker/guard.h"

#include "kalvo/worker/process.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace klv {

constexpr std::int64_t never = std::numeric_limits<std::int64_t>::max ();
constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t most_idle = 300 * second;
constexpr int between_looks = 20;    // milliseconds, while there is a limit

static std::int64_t now ()
{
    return std::chrono::duration_cast<std::chrono::nanoseconds> (Clock::now ().time_since_epoch ()).count ();
}

Guard::Guard (int socket, int parent)
    : socket_ (socket),
      parent_ (parent),
      memory_ (::open ("/proc/self/statm", O_RDONLY | O_CLOEXEC)),
      kilobytes_a_page_ (::sysconf (_SC_PAGESIZE) / 1024),
      wake_ (::eventfd (0, EFD_CLOEXEC | EFD_NONBLOCK)),
      deadline_ (never),
      idle_since_ (now ()),
      most_kilobytes_ (never)
{
    thread_ = std::thread ([this] { watch (); });
}

void Guard::limit (double seconds, double megabytes)
{
    const auto scaled = [] (double value, double unit) {
        return value * unit < 9e18 ? static_cast<std::int64_t> (value * unit) : never;
    };
    const std::int64_t left = scaled (seconds, second);
    deadline_ = left == never ? never : now () + std::min (left, never - now ());
    most_kilobytes_ = scaled (megabytes, 1024);
    if (deadline_ != never || most_kilobytes_ != never)
        ::eventfd_write (wake_.number (), 1);
}

void Guard::end_work ()
{
    deadline_ = most_kilobytes_ = never;
    idle_since_ = now ();
    working_ = false;
}

// The second number of the file: resident pages.
static std::int64_t resident_kilobytes (int file, std::int64_t kilobytes_a_page)
{
    char content[100];
    const ssize_t length = ::pread (file, content, sizeof content - 1, 0);
    if (length <= 0)
        return 0;
    content[length] = '\0';
    const char* place = content;
    while (*place != '\0' && *place != ' ')
        ++place;
    std::int64_t pages = 0;
    for (++place; *place >= '0' && *place <= '9'; ++place)
        pages = 10 * pages + (*place - '0');
    return pages * kilobytes_a_page;
}

double Guard::resident_megabytes () const
{
    return static_cast<double> (resident_kilobytes (memory_, kilobytes_a_page_)) / 1024;
}

void Guard::watch ()
{
    for (;;) {
        const bool limited = deadline_ != never || most_kilobytes_ != never;
        pollfd places[] = {{socket_, POLLRDHUP, 0}, {parent_, POLLIN, 0}, {wake_.number (), POLLIN, 0}};
        ::poll (places, std::size (places), limited ? between_looks : 60'000);
        if (places[0].revents != 0 || places[1].revents != 0)
            ::_exit (status_left_alone);
        if (places[2].revents != 0) {
            eventfd_t ignored = 0;
            ::eventfd_read (wake_.number (), &ignored);
        }
        if (now () > deadline_)
            ::_exit (status_out_of_time);
        if (most_kilobytes_ != never && resident_kilobytes (memory_, kilobytes_a_page_) > most_kilobytes_)
            ::_exit (status_out_of_memory);
        if (!working_ && now () - idle_since_ > most_idle)
            ::_exit (0);
    }
}

}
