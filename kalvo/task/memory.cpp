#include "kalvo/task/memory.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <string>

namespace klv {

static constexpr double unlimited = std::numeric_limits<double>::infinity ();

// The number after a word of a file, or the number that the file is; `otherwise` if there is none.
static double number_in (const std::string& file, const char* word, double otherwise)
{
    std::ifstream content (file);
    double number = 0;
    for (std::string read; *word != '\0' && content >> read && read != word;)
        ;
    return content >> number ? number : otherwise;
}

// Pages of files that nobody uses count as used, yet are given back when memory is short.
static double room_of_group (const std::string& folder, const char* limit, const char* usage,
                             const char* idle)
{
    return number_in (folder + limit, "", unlimited) - number_in (folder + usage, "", 0) +
           number_in (folder + "/memory.stat", idle, 0);
}

// The groups of this process, by lines like "0::/user/session" or, in the older version of control groups, "4:memory:/user".
static double room_of_groups ()
{
    double room = unlimited;
    std::ifstream groups ("/proc/self/cgroup");
    for (std::string line; std::getline (groups, line);) {
        const std::size_t first = line.find (':'), second = line.find (':', first + 1);
        if (second == std::string::npos)
            continue;
        const std::string controllers = line.substr (first + 1, second - first - 1);
        const bool old = controllers == "memory";
        if (!old && !controllers.empty ())
            continue;
        const std::string root = old ? "/sys/fs/cgroup/memory" : "/sys/fs/cgroup";
        for (std::string path = line.substr (second + 1);; path.resize (path.rfind ('/'))) {
            room = std::min (
                room, old ? room_of_group (root + path, "/memory.limit_in_bytes", "/memory.usage_in_bytes",
                                           "total_inactive_file")
                          : room_of_group (root + path, "/memory.max", "/memory.current", "inactive_file"));
            if (path.rfind ('/') == std::string::npos)
                break;
        }
    }
    return room / 1e6;
}

double free_megabytes ()
{
    const double of_machine = 1024 * number_in ("/proc/meminfo", "MemAvailable:", unlimited) / 1e6;
    return std::max (0.0, std::min (of_machine, room_of_groups ()));
}

std::string lack_of_memory (double megabytes)
{
    const double free = free_megabytes ();
    if (megabytes <= 0.5 * free)
        return {};
    return text ("it needs about ", std::llround (megabytes), " MB of memory, more than half of the ",
                 std::llround (free), " MB that are free");
}

}
