#include "kalvo/engines/highs/api.h"

#include "kalvo/model/text.h"
#include "kalvo/task/environment.h"

#include <filesystem>
#include <mutex>
#include <system_error>
#include <thread>

#include <dlfcn.h>
#include <sys/mman.h>

namespace klv::highs {

constexpr const char* wanted_version = "1.15.1";
constexpr const char* library_file = "libhighs.so";
constexpr const char* extras_file = "libhighs_extras.so";
constexpr const char* no_memory = "there is not enough memory for the engine";

// A host may have loaded other copies of the engine's library: LOCAL and DEEPBIND keep the symbols of our copy apart. Sanitizers do
// not work with DEEPBIND.
static int load_flags ()
{
#ifdef KALVO_SANITIZED
    return RTLD_NOW | RTLD_LOCAL;
#else
    return RTLD_NOW | RTLD_LOCAL | (environment::alone () ? 0 : RTLD_DEEPBIND);
#endif
}

static Api table;

static std::string last_problem ()
{
    const char* message = dlerror ();
    return message != nullptr ? message : "no reason given";
}

template <class Function>
static bool find (void* library, const char* name, Function& function)
{
    function = reinterpret_cast<Function> (dlsym (library, name));
    return function != nullptr;
}

// Makes the library load its extras now, so that a lack of memory for them is known before a problem is passed.
static bool take_hold_of_extras (const Api& found)
{
    void* const handle = found.create ();
    if (handle == nullptr)
        return false;
    found.setBoolOptionValue (handle, "log_to_console", 0);
    found.setStringOptionValue (handle, "solver", "hipo");
    found.destroy (handle);
    return true;
}

// The extras' linear algebra takes this much address space for each processor when it is loaded, and retries for ever
// while there is none.
static bool has_space_for_extras ()
{
    constexpr std::size_t space = std::size_t{136} << 20;
    const std::size_t size = space * (1 + std::thread::hardware_concurrency ());
    void* const place =
        mmap (nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (place == MAP_FAILED)
        return false;
    munmap (place, size);
    return true;
}

static std::string load_once ()
{
    const std::string folder = environment::folder ();
    std::error_code ignored;
    if (std::filesystem::exists (text (folder, "/", extras_file), ignored) && !has_space_for_extras ())
        return no_memory;
    // The library opens its extras by name on the system's search path: a copy that is already loaded is what it then gets.
    // Without extras the library lacks one interior-point method.
    dlopen (text (folder, "/", extras_file).c_str (), load_flags ());
    void* const library = dlopen (text (folder, "/", library_file).c_str (), load_flags ());
    if (library == nullptr)
        return text ("the engine's file can't be loaded: ", last_problem ());

    Api found;
    const bool complete =
        find (library, "Highs_create", found.create) && find (library, "Highs_destroy", found.destroy) &&
        find (library, "Highs_version", found.version) &&
        find (library, "Highs_passModel", found.passModel) && find (library, "Highs_run", found.run) &&
        find (library, "Highs_clearSolver", found.clearSolver) &&
        find (library, "Highs_resetOptions", found.resetOptions) &&
        find (library, "Highs_zeroAllClocks", found.zeroAllClocks) &&
        find (library, "Highs_clear", found.clear) &&
        find (library, "Highs_setBoolOptionValue", found.setBoolOptionValue) &&
        find (library, "Highs_setIntOptionValue", found.setIntOptionValue) &&
        find (library, "Highs_setDoubleOptionValue", found.setDoubleOptionValue) &&
        find (library, "Highs_setStringOptionValue", found.setStringOptionValue) &&
        find (library, "Highs_setCallback", found.setCallback) &&
        find (library, "Highs_startCallback", found.startCallback) &&
        find (library, "Highs_getModelStatus", found.getModelStatus) &&
        find (library, "Highs_getIntInfoValue", found.getIntInfoValue) &&
        find (library, "Highs_getInt64InfoValue", found.getInt64InfoValue) &&
        find (library, "Highs_getDoubleInfoValue", found.getDoubleInfoValue) &&
        find (library, "Highs_getSolution", found.getSolution) &&
        find (library, "Highs_setSolution", found.setSolution) &&
        find (library, "Highs_setSparseSolution", found.setSparseSolution) &&
        find (library, "Highs_getBasis", found.getBasis) &&
        find (library, "Highs_setBasis", found.setBasis) &&
        find (library, "Highs_getDualRay", found.getDualRay) &&
        find (library, "Highs_getPrimalRay", found.getPrimalRay);
    if (!complete)
        return text ("the engine's file ", folder, "/", library_file, " lacks a function: ", last_problem ());
    if (found.version () != std::string_view (wanted_version))
        return text ("the engine's file ", folder, "/", library_file, " has version ", found.version (),
                     ", needed is ", wanted_version);
    if (!take_hold_of_extras (found))
        return no_memory;
    table = found;
    return {};
}

std::string load_api ()
{
    static std::mutex mutex;
    static bool loaded = false;
    const std::lock_guard lock (mutex);
    if (loaded)
        return {};
    std::string problem = load_once ();
    loaded = problem.empty ();
    return problem;
}

const Api& api ()
{
    return table;
}

}
