#include "callbacks/handle.h"

#include "common/refuse.h"
#include "common/text.h"
#include "params/information.h"

namespace {

// The fields of the callback record for one kind of callback, and their paths in messages.
struct CallbackFields {
    const char *function, *function_path;
    const char *object, *object_path;
};

constexpr CallbackFields iteration_fields = {"iter", "callback.iter", "iterhandle", "callback.iterhandle"};
constexpr CallbackFields log_fields = {"log", "callback.log", "loghandle", "callback.loghandle"};

KLVrescode_t bind (const mxArray* record, const CallbackFields& fields, CallbackHandle& handle)
{
    const mxArray* function = mxGetField (record, 0, fields.function);
    if (function == nullptr || !mxIsChar (function) || mxIsEmpty (function))
        return KLV_RES_OK;
    handle.function = copy_text (function);
    const KLVrescode_t code =
        handle.function ? KLV_RES_OK : refuse (KLV_RES_ARGUMENT, "%s", fields.function_path);

    const mxArray* object = mxGetField (record, 0, fields.object);
    if (object == nullptr)
        return refuse (KLV_RES_ARGUMENT, "%s", fields.object_path);
    handle.object.reset (mxDuplicateArray (object));
    if (code == KLV_RES_OK && !handle.object)
        return KLV_RES_OUT_OF_MEMORY;
    return code;
}

}

KLVrescode_t makehandle (KLVtask_t task, const mxArray* record, CallbackHandle& handle, CallbackKind kind)
{
    handle.info.reset ();
    if (record == nullptr || mxIsEmpty (record))
        return KLV_RES_OK;
    if (!mxIsStruct (record))
        return refuse (KLV_RES_ARGUMENT, "callback");
    if (kind == CallbackKind::log)
        return bind (record, log_fields, handle);
    const KLVrescode_t code = getinfo (task, handle.info);
    const KLVrescode_t bound = bind (record, iteration_fields, handle);
    return bound != KLV_RES_OK ? bound : code;
}

int delete_cb_handle (CallbackHandle* handle)
{
    if (handle) {
        handle->function.reset ();
        handle->info.reset ();
        handle->object.reset ();
    }
    return 0;
}
