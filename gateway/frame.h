// The frame of a call: the module's state, the interrupt setting, the streams of the library's text.
#pragma once

#include "gateway/request.h"
#include "host/host.h"

// In the first call refuses to run with a library of another version, and keeps the module in memory for good.
void enter_module ();

// During the lifetime of such an object Ctrl-C only raises a flag.
class InterruptsOff {
public:
    InterruptsOff () : setting_ (utSetInterruptEnabled (false)) {}
    InterruptsOff (const InterruptsOff&) = delete;
    ~InterruptsOff () { utSetInterruptEnabled (setting_); }

private:
    bool setting_;
};

void print_diagnostics (const cmdoptions& options);
void print_banner (const cmdoptions& options);

KLVrescode_t link_environment_stream (Request& request);
KLVrescode_t install_exit_function (Request& request);

// While the task is set up, all of the library's text goes to the console or to the log function.
KLVrescode_t link_first_stream (Request& request);

// After the set-up, text goes there by echo level, and to the log file.
KLVrescode_t link_streams (Request& request);
void detach_log_file (const Request& request);

void unlink_environment_stream ();

extern "C" {

// Receives a fatal error of the library and raises it in the session.
void mx_exitfunc (void* handle, const char* file, std::int32_t line, const char* message);
}
