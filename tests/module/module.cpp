// The gateway's tests through a module for MATLAB, as MATLAB loads it: the first argument.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "host/standalone/standalone.h"

namespace {

standalone::EntryPoint entry = nullptr;

bool load (const char* file)
{
    void* const module = dlopen (file, RTLD_NOW | RTLD_LOCAL);
    void* const function = module == nullptr ? nullptr : dlsym (module, "mexFunction");
    entry = reinterpret_cast<standalone::EntryPoint> (function);
    return entry != nullptr;
}

}

// What the tests call.
void mexFunction (int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[])
{
    entry (nlhs, plhs, nrhs, prhs);
}

int main (int count, char** arguments)
{
    testing::InitGoogleTest (&count, arguments);
    const char* const file = count == 2 ? arguments[1] : "";
    if (!load (file)) {
        std::fprintf (stderr, "module_tests: '%s': %s\n", file, dlerror ());
        return 1;
    }
    return RUN_ALL_TESTS ();
}
