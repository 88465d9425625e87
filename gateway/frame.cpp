#include "gateway/frame.h"

#include <cstdio>
#include <cstring>

#include "callbacks/log.h"
#include "common/arrays.h"
#include "common/console.h"
#include "common/refuse.h"
#include "host/holders.h"

namespace {

std::int32_t firsttime = 1;

void check_library_version ()
{
    std::int32_t major = 0, minor = 0, revision = 0;
    KLV_getversion (&major, &minor, &revision);
    if (major == KLV_VERSION_MAJOR && minor == KLV_VERSION_MINOR && revision == KLV_VERSION_REVISION)
        return;
    char text[256];
    std::snprintf (text, sizeof text,
                   "kalvoopt %d.%d.%d does not work with version %d.%d.%d of the library libkalvo64",
                   KLV_VERSION_MAJOR, KLV_VERSION_MINOR, KLV_VERSION_REVISION, major, minor, revision);
    mexErrMsgTxt (text);
}

}

void enter_module ()
{
    if (firsttime == 0)
        return;
    check_library_version ();
    mexLock ();
    firsttime = 0;
}

void print_diagnostics (const cmdoptions& options)
{
    if (options.debug < 1)
        return;
    mx_printf ("Kalvo: Open\n");
    mx_printf ("Kalvo: Using matlab (1) or system calloc (0) ? %d\n", options.use_matlab_calloc);
}

void print_banner (const cmdoptions& options)
{
    if (options.debug >= 1)
        mx_printf ("Kalvo: Echo intro\n");
    if (options.echo > 0 || options.debug != 0)
        KLV_echointro (nullptr, options.debug);
}

KLVrescode_t link_environment_stream (Request&)
{
    return KLV_linkfunctoenvstream (nullptr, KLV_STREAM_ALL, nullptr, logprint);
}

void unlink_environment_stream ()
{
    KLV_linkfunctoenvstream (nullptr, KLV_STREAM_ALL, nullptr, nullptr);
}

KLVrescode_t install_exit_function (Request&)
{
    return KLV_putexitfunc (nullptr, mx_exitfunc, nullptr);
}

KLVrescode_t link_first_stream (Request& request)
{
    const mxArray* callback = request.input (4);
    if (!is_given (callback))
        return KLV_linkfunctotaskstream (request.task.get (), KLV_STREAM_ALL, nullptr, logprint);
    if (!mxIsStruct (callback))
        return refuse (KLV_RES_ARGUMENT, "callback");
    if (mxGetField (callback, 0, "log") == nullptr)
        return KLV_RES_OK;
    const KLVrescode_t code = makehandle (nullptr, callback, request.log_handle, CallbackKind::log);
    if (code != KLV_RES_OK)
        return code;
    return KLV_linkfunctotaskstream (request.task.get (), KLV_STREAM_ALL, &request.log_handle, logprint);
}

KLVrescode_t link_streams (Request& request)
{
    const std::int32_t echo = request.options.echo;
    const auto link = [&request] (KLVstreamtype stream, KLVstreamfunc function) {
        KLV_linkfunctotaskstream (request.task.get (), stream, function ? &request.log_handle : nullptr,
                                  function);
    };
    link (KLV_STREAM_ALL, echo >= 4 ? logprint : nullptr);
    if (echo == 2 || echo == 3)
        link (KLV_STREAM_WARNINGS, logprint);
    if (echo == 3)
        link (KLV_STREAM_MESSAGES, logprint);
    if (!request.options.log)
        return KLV_RES_OK;
    return KLV_linkfiletotaskstream (request.task.get (), KLV_STREAM_ALL, request.options.logfile, 0);
}

void detach_log_file (const Request& request)
{
    if (request.options.log)
        KLV_linkfiletotaskstream (request.task.get (), KLV_STREAM_ALL, nullptr, 0);
}

void mx_exitfunc (void*, const char* file, std::int32_t line, const char*)
{
    const std::size_t size = std::strlen (file) + 255;
    const auto text = host::allocate<char> (size);
    if (text)
        std::snprintf (text.get (), size, "Fatal KALVO error in %s line %d.\n", file, line);
    mexErrMsgTxt (text ? text.get () : "Fatal KALVO error.");
}
