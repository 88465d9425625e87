#include "kalvo/task/environment.h"

#include "kalvo/model/text.h"
#include "kalvo/task/streams.h"

#include <mutex>

namespace klv::environment {

// Constants initialise these statics and none has a destructor, so the environment works as long as the library is loaded.
static constinit std::mutex mutex;
static constinit std::array<StreamFunction, stream_count> functions;
static constinit ExitFunction exit_function_;

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
