#include "gateway/driver.h"

#include "callbacks/progress.h"
#include "common/arrays.h"
#include "common/console.h"
#include "common/refuse.h"
#include "common/text.h"
#include "gateway/frame.h"
#include "gateway/request.h"
#include "gateway/result.h"
#include "input/initial_solution.h"
#include "input/problem.h"
#include "params/parameters.h"
#include "sensitivity/primal_repair.h"

namespace {

// ---- Set-up ----

KLVrescode_t create_return_code (Request& request)
{
    if (request.nlhs < 1)
        return KLV_RES_OK;
    request.plhs[0] = mxCreateDoubleMatrix (1, 1, mxREAL);
    return request.plhs[0] ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}

KLVrescode_t read_command (Request& request)
{
    const mxArray* input = request.input (1);
    if (!is_given (input))
        return KLV_RES_OK;
    if (!mxIsChar (input))
        return KLV_RES_ARGUMENT;
    const host::Memory<char> command = copy_text (input);
    if (!command)
        return KLV_RES_OUT_OF_MEMORY;
    CommandText argument = "", message = "";
    const KLVrescode_t code = executecmd (command.get (), request.options, argument, message);
    if (code != KLV_RES_OK)
        mx_printf ("Error in KALVO command argument. %s", message);
    return code;
}

KLVrescode_t watch_interrupts (Request& request)
{
    addcbfunc (request.chain, ctrlccb, nullptr);
    return KLV_RES_OK;
}

KLVrescode_t make_task (Request& request)
{
    KLVtask_t task = nullptr;
    const KLVrescode_t code = KLV_makeemptytask (nullptr, &task);
    request.task.reset (task);
    return code;
}

KLVrescode_t bind_progress_function (Request& request)
{
    const mxArray* callback = request.input (4);
    if (!is_given (callback) || !mxIsStruct (callback) || mxGetField (callback, 0, "iter") == nullptr)
        return KLV_RES_OK;
    const KLVrescode_t code =
        makehandle (request.task.get (), callback, request.iteration_handle, CallbackKind::iteration);
    if (code == KLV_RES_OK)
        addcbfunc (request.chain, iterlog, &request.iteration_handle);
    return code;
}

// The user's parameters are set later and override these.
void put_default_parameters (const Request& request)
{
    KLV_putnaintparam (request.task.get (), "KLV_IPAR_OPTIMIZER", KLV_OPTIMIZER_AUTOMATIC);
    KLV_putnaintparam (request.task.get (), "KLV_IPAR_INTPNT_BASIS", 1);
    KLV_putnaintparam (request.task.get (), "KLV_IPAR_LOG_INTPNT", 1);
}

KLVrescode_t prepare_task (Request& request)
{
    request.then (link_first_stream);
    request.then (bind_progress_function);
    put_default_parameters (request);
    return request.code;
}

KLVrescode_t put_server (Request& request)
{
    const mxArray* server = request.input (5);
    if (!is_given (server))
        return KLV_RES_OK;
    if (!mxIsStruct (server))
        return refuse (KLV_RES_ARGUMENT, "optserver");
    const mxArray* field = mxGetField (server, 0, "host");
    if (field == nullptr || !mxIsChar (field))
        return refuse (KLV_RES_ARGUMENT, "optserver.host");
    const host::Memory<char> host = copy_text (field);
    return host ? KLV_putoptserverhost (request.task.get (), host.get ()) : KLV_RES_OK;
}

KLVrescode_t install_callbacks (Request& request)
{
    KLV_putcallbackfunc (request.task.get (), multicallbackfunc, &request.chain);
    return KLV_RES_OK;
}

KLVrescode_t put_parameters (Request& request)
{
    return setparams (request.options.echo, request.task.get (), request.input (3));
}

KLVrescode_t start_console (Request& request)
{
    print_banner (request.options);
    if (request.options.read)
        KLV_putstrparam (request.task.get (), KLV_SPAR_DATA_FILE_NUMBER, request.options.readfile);
    return link_streams (request);
}

KLVrescode_t hold_result_place (Request& request)
{
    if (request.wants_result ())
        request.plhs[1] = mxCreateDoubleMatrix (0, 0, mxREAL);
    return KLV_RES_OK;
}

void set_up (Request& request)
{
    request.then (create_return_code);
    request.then (read_command);
    print_diagnostics (request.options);
    request.then (link_environment_stream);
    request.then (watch_interrupts);
    request.then (install_exit_function);
    request.then (make_task);
    request.then (prepare_task);
    request.then (put_server);
    request.then (install_callbacks);
    request.then (put_parameters);
    request.then (start_console);
    request.then (hold_result_place);
}

// ---- Work ----

KLVrescode_t load_problem (Request& request)
{
    const KLVtask_t task = request.task.get ();
    if (request.options.read) {
        const KLVrescode_t code = KLV_readdata (task, nullptr);
        if (code == KLV_RES_OK)
            KLV_readsummary (task, KLV_STREAM_ALL);
        return code;
    }
    return putproblem (task, request.input (2));
}

KLVrescode_t put_sense (Request& request)
{
    if (request.options.cmdsense == 0)
        return KLV_RES_OK;
    return KLV_putobjsense (request.task.get (),
                            request.options.cmdsense < 0 ? KLV_SENSE_MAXIMIZE : KLV_SENSE_MINIMIZE);
}

KLVrescode_t convert_to_conic (Request& request)
{
    return request.options.toconic ? KLV_toconic (request.task.get ()) : KLV_RES_OK;
}

KLVrescode_t put_solution (Request& request)
{
    return putsolution (request.task.get (), request.input (2));
}

KLVrescode_t write_problem (Request& request)
{
    return request.options.write ? KLV_writedata (request.task.get (), request.options.writefile)
                                 : KLV_RES_OK;
}

KLVrescode_t analyze_problem (Request& request)
{
    return request.options.anapro ? KLV_analyzeproblem (request.task.get (), KLV_STREAM_MESSAGES)
                                  : KLV_RES_OK;
}

KLVrescode_t repair_problem (Request& request)
{
    if (!request.options.primalrepair)
        return KLV_RES_OK;
    return primalrepair (request.task.get (), request.input (2), request.options.read != 0);
}

KLVrescode_t optimize (Request& request)
{
    if (request.options.cmdsense != 1 && request.options.cmdsense != -1)
        return KLV_RES_OK;
    const KLVtask_t task = request.task.get ();
    const KLVrescode_t code = KLV_optimize (task);
    KLV_solutionsummary (task, KLV_STREAM_MESSAGES);
    KLV_optimizersummary (task, KLV_STREAM_MESSAGES);
    detach_log_file (request);
    return code;
}

void work (Request& request)
{
    request.then (load_problem);
    request.then (put_sense);
    request.then (convert_to_conic);
    request.then (put_solution);
    request.then (write_problem);
    request.then (analyze_problem);
    request.then (repair_problem);
    request.then (optimize);
}

// ---- End ----

struct CodeTexts {
    explicit CodeTexts (KLVrescode_t code) { KLV_getcodedesc (code, name, description); }

    char name[KLV_MAX_TEXT] = "";
    char description[KLV_MAX_TEXT] = "";
};

void report_failure (const Request& request)
{
    if (request.is_finished () || request.options.echo <= 0)
        return;
    const CodeTexts texts (request.code);
    mx_printf ("Kalvo error: %s (%s)\n", texts.name, texts.description);
}

void report_set_up_failure (const Request& request)
{
    const CodeTexts texts (request.code);
    mx_printf ("Return code - %d [%s] [%s]\n", request.code, texts.name, texts.description);
}

void clean_up (Request& request)
{
    request.task.reset ();
    if (request.options.nokeepenv)
        unlink_environment_stream ();
    if (request.nrhs == 0)
        mx_printf ("\nFor help type: help kalvoopt.\n");
    if (request.nlhs >= 1 && request.plhs[0])
        *mxGetPr (request.plhs[0]) = request.code;
}

}

void KLV_kalvomx (int nlhs, mxArray* plhs[], int nrhs, const mxArray* prhs[])
{
    enter_module ();
    const InterruptsOff interrupts_off;
    Request request{.nlhs = nlhs, .plhs = plhs, .nrhs = nrhs, .prhs = prhs};

    set_up (request);
    if (request.code == KLV_RES_OK) {
        work (request);
        if (request.wants_result ())
            make_result (request);
        delete_cb_handle (&request.iteration_handle);
        delete_cb_handle (&request.log_handle);
        report_failure (request);
    } else {
        report_set_up_failure (request);
    }
    clean_up (request);
}
