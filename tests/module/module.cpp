// The gateway's tests through a module for MATLAB, as MATLAB loads it: the first argument.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "host/standalone/standalone.h"

namespace {

standalone::EntryPoint entry = nullptr;

void* load (const char* file)
{
    void* const module = dlopen (file, RTLD_NOW | RTLD_LOCAL);
    void* const function = module == nullptr ? nullptr : dlsym (module, "mexFunction");
    if (function == nullptr)
        return nullptr;
    entry = reinterpret_cast<standalone::EntryPoint> (function);
    return dlsym (module, "KLV_getversion");
}

// Whether a function of the solver library is that of the library beside the module.
bool is_beside (const char* file, const void* function)
{
    Dl_info place = {};
    return dladdr (function, &place) != 0 &&
           std::filesystem::equivalent (std::filesystem::path (file).parent_path (),
                                        std::filesystem::path (place.dli_fname).parent_path ());
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
    const void* const function = load (file);
    if (function == nullptr || !is_beside (file, function)) {
        const char* const reason = dlerror ();
        std::fprintf (stderr, "module_tests: '%s': %s\n", file,
                      reason != nullptr ? reason : "the solver library in use is not the one beside it");
        return 1;
    }
    return RUN_ALL_TESTS ();
}
