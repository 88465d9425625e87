#include "gateway/result.h"

#include <utility>

#include "common/arrays.h"
#include "common/records.h"
#include "output/problem.h"
#include "output/solution.h"
#include "params/constants.h"
#include "params/information.h"
#include "params/parameters.h"
#include "params/record.h"

namespace {

bool has_solution (KLVtask_t task)
{
    for (std::int32_t which = 0; which < KLV_SOL_COUNT; ++which) {
        std::int32_t defined = 0;
        if (KLV_solutiondef (task, which, &defined) == KLV_RES_OK && defined)
            return true;
    }
    return false;
}

bool wants_problem (const cmdoptions& options)
{
    return options.read || options.prob;
}

// Whether the problem record has a field, even an empty one. A file that is read takes the record's place.
bool problem_has (const Request& request, const char* field)
{
    const mxArray* prob = request.options.read ? nullptr : request.input (2);
    return is_given (prob) && mxGetField (prob, 0, field) != nullptr;
}

constexpr std::int32_t first_warning_level = 2;

using ResultFields = FieldList<11>;

ResultFields list_fields (const Request& request)
{
    const cmdoptions& options = request.options;
    ResultFields fields;
    fields.add_if (request.is_finished () && has_solution (request.task.get ()), {"sol"});
    for (const char* analysis : {"prisen", "duasen"})
        fields.add_if (request.is_finished () && problem_has (request, analysis), {analysis});
    if (request.code != KLV_RES_OUT_OF_MEMORY) {
        fields.add_if (wants_problem (options), {"prob"});
        fields.add_if (options.param, {"param"});
        fields.add_if (options.info, {"info"});
        fields.add_if (options.version, {"version"});
        fields.add_if (options.symbcon, {"symbcon"});
    }
    fields.add ({"rcode", "rmsg", "rcodestr"});
    return fields;
}

mxArray* create_result (Request& request)
{
    const ResultFields fields = list_fields (request);
    mxArray*& result = request.plhs[1];
    mxDestroyArray (result);
    result = nullptr;    // not dangling if there is no memory for the record
    result = create_record (fields.all ()).release ();
    if (result == nullptr)
        request.code = KLV_RES_OUT_OF_MEMORY;
    return result;
}

// Fills a field with the record that `get` makes; after a failure the field stays empty.
KLVrescode_t fill (mxArray* result, const char* field, KLVtask_t task,
                   KLVrescode_t (*get) (KLVtask_t, host::Array&))
{
    host::Array record;
    const KLVrescode_t code = get (task, record);
    if (code == KLV_RES_OK)
        set_field (result, field, std::move (record));
    return code;
}

KLVrescode_t getversion (KLVtask_t, host::Array& version)
{
    Fields fields (3);
    for (const auto& [name, number] : {std::pair{"major", KLV_VERSION_MAJOR},
                                       {"minor", KLV_VERSION_MINOR},
                                       {"revision", KLV_VERSION_REVISION}})
        fields.add (name, host::Array (mxCreateDoubleScalar (number)));
    return fields.make_record (version);
}

// Fills the fields that the command string asks for. After a failure the remaining ones stay empty.
KLVrescode_t fill_requested (const Request& request, mxArray* result)
{
    const cmdoptions& options = request.options;
    const KLVtask_t task = request.task.get ();
    KLVrescode_t code = KLV_RES_OK;
    if (wants_problem (options)) {
        code = getprob (options.statuskeys, task, result);
        if (code == KLV_RES_OK && options.echo >= first_warning_level)
            warn_of_large_bounds (task, mxGetField (result, 0, "prob"));
    }
    if (code == KLV_RES_OK && options.param)
        code = fill (result, "param", task, getparams);
    if (code == KLV_RES_OK && options.info)
        code = fill (result, "info", task, getinfo);
    if (code == KLV_RES_OK && options.version)
        code = fill (result, "version", task, getversion);
    if (code == KLV_RES_OK && options.symbcon)
        code = fill (result, "symbcon", task, getsymbcon);
    return code;
}

// The message is the library's last one, or the description of the code.
void fill_codes (const Request& request, mxArray* result)
{
    char name[KLV_MAX_TEXT] = "", message[KLV_MAX_TEXT] = "";
    KLV_getcodedesc (request.code, name, message);
    std::int32_t last = 0, length = 0;
    KLV_getlasterror (request.task.get (), &last, sizeof message, &length, message);
    set_field (result, "rcode", host::Array (mxCreateDoubleScalar (request.code)));
    set_field (result, "rmsg", host::Array (mxCreateString (message)));
    set_field (result, "rcodestr", host::Array (mxCreateString (name)));
}

}

void make_result (Request& request)
{
    mxArray* result = create_result (request);
    if (result == nullptr)
        return;
    if (request.is_finished ()) {
        const KLVrescode_t code = getsolution (request.task.get (), request.options.statuskeys, result);
        if (request.code == KLV_RES_OK)
            request.code = code;
    }
    if (request.code != KLV_RES_OUT_OF_MEMORY)
        if (const KLVrescode_t code = fill_requested (request, result); code != KLV_RES_OK)
            request.code = code;
    fill_codes (request, result);
}
