#include "kalvo/task/environment.h"

#include "kalvo/model/text.h"
#include "kalvo/task/streams.h"

#include <mutex>
#include <system_error>

#include <dlfcn.h>
#include <link.h>

namespace klv::environment {

// Constants initialise these statics and none has a destructor, so the environment works as long as the library is loaded.
static constinit std::mutex mutex;
static constinit std::array<StreamFunction, stream_count> functions;
static constinit ExitFunction exit_function_;

std::string version ()
{
    return text (int{KLV_VERSION_MAJOR}, ".", int{KLV_VERSION_MINOR}, ".", int{KLV_VERSION_REVISION});
}

bool& alone ()
{
    static bool only = false;
    return only;
}

// For the main program the dynamic linker gives the name by which it was called. A worker is called by its whole name, and perhaps
// through the dynamic linker's own program.
std::filesystem::path folder ()
{
    Dl_info info{};
    link_map* file = nullptr;
    std::error_code ignored;
    if (dladdr1 (&mutex, &info, reinterpret_cast<void**> (&file), RTLD_DL_LINKMAP) != 0 && file != nullptr &&
        file->l_name[0] != '\0')
        return std::filesystem::absolute (file->l_name, ignored).parent_path ();
    const std::filesystem::path called = info.dli_fname != nullptr ? info.dli_fname : "";
    return (called.is_absolute () ? called : std::filesystem::read_symlink ("/proc/self/exe", ignored))
        .parent_path ();
}

void link_function (std::int32_t stream, void* handle, KLVstreamfunc func)
{
    const std::scoped_lock lock (mutex);
    functions[static_cast<std::size_t> (stream)] = {func, func != nullptr ? handle : nullptr};
}

void print (std::string_view line)
{
    std::array<StreamFunction, stream_count> receivers;
    {
        const std::scoped_lock lock (mutex);
        receivers = functions;
    }
    call_functions (receivers, 1u << KLV_STREAM_ALL | 1u << KLV_STREAM_MESSAGES, text (line, "\n").c_str ());
}

void set_exit_function (ExitFunction function)
{
    const std::scoped_lock lock (mutex);
    exit_function_ = function;
}

ExitFunction exit_function ()
{
    const std::scoped_lock lock (mutex);
    return exit_function_;
}

}
