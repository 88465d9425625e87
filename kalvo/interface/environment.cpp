// The C interface: library, environment, names of constants and codes.

#include "kalvo/task/environment.h"
#include "kalvo/engines/engine.h"
#include "kalvo/interface/entry.h"
#include "kalvo/tables/constants.h"
#include "kalvo/tables/parameters.h"

using namespace klv;

KLVrescode_t KLV_getversion (int32_t* major, int32_t* minor, int32_t* revision)
{
    if (major == nullptr || minor == nullptr || revision == nullptr)
        return KLV_RES_NULL_POINTER;
    *major = KLV_VERSION_MAJOR;
    *minor = KLV_VERSION_MINOR;
    *revision = KLV_VERSION_REVISION;
    return KLV_RES_OK;
}

KLVrescode_t KLV_echointro (KLVenv_t env, int32_t longver)
{
    return enter_environment (env, [&] {
        environment::print (text ("Kalvo ", environment::version (),
                                  ", solver library for linear, convex and mixed-integer optimisation"));
        if (longver > 0)
            for (const std::shared_ptr<Engine>& engine : engines ())
                environment::print (text ("  engine ", std::string_view (engine->name ())));
    });
}

KLVrescode_t KLV_linkfunctoenvstream (KLVenv_t env, int32_t stream, void* handle, KLVstreamfunc func)
{
    return enter_environment (env, [&] {
        check_stream (stream);
        environment::link_function (stream, handle, func);
    });
}

KLVrescode_t KLV_putexitfunc (KLVenv_t env, KLVexitfunc func, void* handle)
{
    return enter_environment (env, [&] { environment::set_exit_function ({func, handle}); });
}

KLVrescode_t KLV_getcodedesc (int32_t code, char* symname, char* description)
{
    // Also called when memory has run out, so nothing is allocated here.
    const Constant* known = find_constant (Group::response, code);
    if (symname != nullptr)
        copy_text (known ? known->name : "UNKNOWN", symname, KLV_MAX_TEXT);
    if (description != nullptr)
        copy_text (known ? known->description : "This response code is not known to the library.",
                   description, KLV_MAX_TEXT);
    return known ? KLV_RES_OK : KLV_RES_VALUE_UNKNOWN;
}

KLVrescode_t KLV_getsymbcondim (KLVenv_t env, int32_t* count, size_t* longest)
{
    return enter_environment (env, [&] {
        std::size_t length = 0;
        for (const Constant& constant : constants ())
            length = std::max (length, constant.name.size ());
        std::size_t& longest_name = output (longest, "longest");
        output (count, "count") = static_cast<std::int32_t> (constants ().size ());
        longest_name = length;
    });
}

KLVrescode_t KLV_getsymbcon (KLVtask_t task, int32_t index, int32_t capacity, char* name, int32_t* value)
{
    return read (task, [&] (Task&) {
        check_index (index, static_cast<std::int64_t> (constants ().size ()), "symbolic constant");
        const Constant& constant = constants ()[static_cast<std::size_t> (index)];
        std::int32_t& place = output (value, "value");
        give_text (constant.name, capacity, name, "name");
        place = constant.value;
    });
}

int32_t KLV_symnamtovalue (const char* name, char* value)
{
    const Constant* constant = name != nullptr ? find_constant (std::string_view (name)) : nullptr;
    if (constant == nullptr || value == nullptr)
        return 0;
    *std::to_chars (value, value + KLV_MAX_TEXT - 1, constant->value).ptr = '\0';
    return 1;
}

KLVrescode_t KLV_iparvaltosymnam (KLVenv_t env, int32_t index, int32_t value, char* name)
{
    return enter_environment (env, [&] {
        check_index (index, KLV_INTEGER_PARAMETERS, "integer parameter");
        const Group symbols = int_parameters[static_cast<std::size_t> (index)].symbols;
        const Constant* constant = find_constant (symbols, value);
        copy_text (constant ? constant->name : "", &output (name, "name"), KLV_MAX_TEXT);
    });
}

// ---- Texts of statuses and keys --------------------------------------------------------------------------

static KLVrescode_t give_short_name (KLVtask_t task, Group group, const char* kind, int32_t value, char* name)
{
    return read (task, [&] (Task&) {
        const Constant* constant = find_constant (group, value);
        copy_text (constant ? short_name (*constant) : "", &output (name, "text"), KLV_MAX_TEXT);
        if (constant == nullptr)
            refuse (KLV_RES_VALUE_UNKNOWN, "There is no ", kind, " with number ", value, ".");
    });
}

KLVrescode_t KLV_prostatostr (KLVtask_t task, int32_t status, char* text)
{
    return give_short_name (task, Group::problem_status, "problem status", status, text);
}

KLVrescode_t KLV_solstatostr (KLVtask_t task, int32_t status, char* text)
{
    return give_short_name (task, Group::solution_status, "solution status", status, text);
}

KLVrescode_t KLV_sktostr (KLVtask_t task, int32_t key, char* text)
{
    return give_short_name (task, Group::status_key, "status key", key, text);
}

KLVrescode_t KLV_strtosk (KLVtask_t task, const char* text, int32_t* key)
{
    return read (task, [&] (Task&) {
        std::int32_t& place = output (key, "key");
        const std::string_view wanted = given_text (text, "text");
        for (const Constant& constant : constants (Group::status_key)) {
            const std::string_view name = short_name (constant);
            if (wanted == name || wanted == name.substr (0, 2)) {
                place = constant.value;
                return;
            }
        }
        refuse (KLV_RES_STATUS_KEY_UNKNOWN, "'", wanted, "' is not a status key.");
    });
}
