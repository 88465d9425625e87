// The C interface: tasks, their streams, callback and last error, parameters and information.

#include "kalvo/interface/entry.h"
#include "kalvo/tables/constants.h"

#include <cerrno>
#include <cstring>

using namespace klv;

KLVrescode_t KLV_makeemptytask (KLVenv_t env, KLVtask_t* task)
{
    return enter_environment (env, [&] {
        output (task, "task") = nullptr;
        *task = new Task;
    });
}

KLVrescode_t KLV_deletetask (KLVtask_t* task)
{
    if (task == nullptr)
        return KLV_RES_NULL_POINTER;
    if (*task == nullptr)
        return KLV_RES_OK;
    if ((*task)->refuses (Access::change) == KLV_RES_TASK_BUSY)
        return KLV_RES_TASK_BUSY;
    delete *task;
    *task = nullptr;
    return KLV_RES_OK;
}

KLVrescode_t KLV_linkfunctotaskstream (KLVtask_t task, int32_t stream, void* handle, KLVstreamfunc func)
{
    return change (task, [&] (Task& t) {
        check_stream (stream);
        t.streams.link_function (stream, handle, func);
    });
}

KLVrescode_t KLV_linkfiletotaskstream (KLVtask_t task, int32_t stream, const char* filename, int32_t append)
{
    return change (task, [&] (Task& t) {
        check_stream (stream);
        if (filename == nullptr)
            t.streams.close_file (stream);
        else if (*filename == '\0')
            refuse (KLV_RES_FILE_NAME_MISSING, "The file for stream ", stream, " has an empty name.");
        else if (!t.streams.link_file (stream, filename, append != 0)) {
            const int cause = errno;
            refuse (KLV_RES_FILE_OPEN, "The file '", std::string_view (filename),
                    "' can't be opened for writing: ", std::strerror (cause), ".");
        }
    });
}

KLVrescode_t KLV_putcallbackfunc (KLVtask_t task, KLVcallbackfunc func, void* handle)
{
    return change (task, [&] (Task& t) { t.set_callback (func, handle); });
}

KLVrescode_t KLV_getlasterror (KLVtask_t task, int32_t* code, int32_t capacity, int32_t* length,
                               char* message)
{
    if (task == nullptr)
        return KLV_RES_NULL_HANDLE;
    if (code == nullptr || (message == nullptr && capacity > 0))
        return KLV_RES_NULL_POINTER;
    const LastError& error = task->last_error ();
    *code = error.code;
    if (error.code == KLV_RES_OK)
        return KLV_RES_OK;
    std::string_view words = error.message;
    if (words.empty ())    // no memory was left to store the message
        if (const Constant* known = find_constant (Group::response, error.code))
            words = known->description;
    if (length != nullptr)
        *length = static_cast<std::int32_t> (words.size ());
    copy_text (words, message, capacity > 0 ? static_cast<std::size_t> (capacity) : 0);
    return KLV_RES_OK;
}

KLVrescode_t KLV_putoptserverhost (KLVtask_t task, const char* host)
{
    return change (task, [&] (Task&) {
        if (!given_text (host, "host").empty ())
            refuse (KLV_RES_NOT_AVAILABLE, "This version can't solve on a server; '", std::string_view (host),
                    "' was named.");
    });
}

// Copies the name of a table's row; `item` is the word for a row in messages.
template <class Rows>
static void give_row_name (const Rows& rows, const char* item, std::int32_t index, char* name)
{
    check_index (index, static_cast<std::int64_t> (rows.size ()), item);
    copy_text (rows[static_cast<std::size_t> (index)].name, &output (name, "name"), KLV_MAX_TEXT);
}

// ---- Parameters ------------------------------------------------------------------------------------------

KLVrescode_t KLV_whichparam (KLVtask_t task, const char* name, int32_t* kind, int32_t* index)
{
    return read (task, [&] (Task&) {
        std::int32_t& kind_place = output (kind, "kind");
        std::int32_t& index_place = output (index, "index");
        const ParameterPlace place = find_parameter (given_text (name, "name"));
        kind_place = place.kind;
        index_place = place.number;
    });
}

KLVrescode_t KLV_getparamname (KLVtask_t task, int32_t kind, int32_t index, char* name)
{
    return read (task, [&] (Task&) {
        switch (kind) {
        case KLV_PAR_DOUBLE:
            return give_row_name (real_parameters, "double parameter", index, name);
        case KLV_PAR_INTEGER:
            return give_row_name (int_parameters, "integer parameter", index, name);
        case KLV_PAR_STRING:
            return give_row_name (text_parameters, "string parameter", index, name);
        default:
            refuse (KLV_RES_VALUE_UNKNOWN, "There is no kind ", kind, " of parameters.");
        }
    });
}

static void put_integer (Task& task, std::int32_t index, std::int32_t value)
{
    check_index (index, KLV_INTEGER_PARAMETERS, "integer parameter");
    const auto place = static_cast<std::size_t> (index);
    check_value (int_parameters[place], value);
    task.parameters.integers[place] = value;
}

KLVrescode_t KLV_putdouparam (KLVtask_t task, int32_t index, double value)
{
    return change (task, [&] (Task& t) {
        check_index (index, KLV_DOUBLE_PARAMETERS, "double parameter");
        const auto place = static_cast<std::size_t> (index);
        check_value (real_parameters[place], value);
        t.parameters.doubles[place] = value;
    });
}

KLVrescode_t KLV_putintparam (KLVtask_t task, int32_t index, int32_t value)
{
    return change (task, [&] (Task& t) { put_integer (t, index, value); });
}

KLVrescode_t KLV_putnaintparam (KLVtask_t task, const char* name, int32_t value)
{
    return change (task, [&] (Task& t) {
        const ParameterPlace place = find_parameter (given_text (name, "name"));
        if (place.kind != KLV_PAR_INTEGER)
            refuse (KLV_RES_PARAMETER_UNKNOWN, "There is no integer parameter '", std::string_view (name),
                    "'.");
        put_integer (t, place.number, value);
    });
}

KLVrescode_t KLV_putstrparam (KLVtask_t task, int32_t index, const char* value)
{
    return change (task, [&] (Task& t) {
        check_index (index, KLV_STRING_PARAMETERS, "string parameter");
        const auto place = static_cast<std::size_t> (index);
        std::string words (given_text (value, "value"));
        const TextParameter& row = text_parameters[place];
        if (row.reserved () && words != row.fallback)
            refuse (KLV_RES_PARAMETER_RESERVED, row.name,
                    " is reserved: it accepts an empty text only, not '", words, "'.");
        t.parameters.texts[place] = std::move (words);
    });
}

KLVrescode_t KLV_getdouparam (KLVtask_t task, int32_t index, double* value)
{
    return read (task, [&] (Task& t) {
        check_index (index, KLV_DOUBLE_PARAMETERS, "double parameter");
        output (value, "value") = t.parameters.doubles[static_cast<std::size_t> (index)];
    });
}

KLVrescode_t KLV_getintparam (KLVtask_t task, int32_t index, int32_t* value)
{
    return read (task, [&] (Task& t) {
        check_index (index, KLV_INTEGER_PARAMETERS, "integer parameter");
        output (value, "value") = t.parameters.integers[static_cast<std::size_t> (index)];
    });
}

KLVrescode_t KLV_getstrparam (KLVtask_t task, int32_t index, int32_t capacity, int32_t* length, char* value)
{
    return read (task, [&] (Task& t) {
        check_index (index, KLV_STRING_PARAMETERS, "string parameter");
        const std::string& words = t.parameters.texts[static_cast<std::size_t> (index)];
        std::int32_t& length_place = output (length, "length");
        if (capacity > 0)
            copy_text (words, &output (value, "value"), static_cast<std::size_t> (capacity));
        length_place = static_cast<std::int32_t> (words.size ());
    });
}

// ---- Information -----------------------------------------------------------------------------------------

KLVrescode_t KLV_getinfname (KLVtask_t task, int32_t kind, int32_t index, char* name)
{
    return read (task, [&] (Task&) {
        switch (kind) {
        case KLV_INF_DOUBLE:
            return give_row_name (real_information, "double information item", index, name);
        case KLV_INF_INTEGER:
            return give_row_name (int_information, "integer information item", index, name);
        default:
            refuse (KLV_RES_VALUE_UNKNOWN, "There is no kind ", kind, " of information items.");
        }
    });
}

KLVrescode_t KLV_getdouinf (KLVtask_t task, int32_t index, double* value)
{
    return read (task, [&] (Task& t) {
        check_index (index, KLV_DOUBLE_INFORMATION, "double information item");
        output (value, "value") = t.information.doubles[static_cast<std::size_t> (index)];
    });
}

KLVrescode_t KLV_getintinf (KLVtask_t task, int32_t index, int32_t* value)
{
    return read (task, [&] (Task& t) {
        check_index (index, KLV_INTEGER_INFORMATION, "integer information item");
        // Sizes are computed when they are asked for, so that no change of the problem need update them.
        t.information.set (IntItem::variables, t.problem ().variables ());
        t.information.set (IntItem::constraints, t.problem ().constraints ());
        t.information.set (IntItem::integers, t.problem ().integers);
        t.information.set (IntItem::matrix_entries, t.problem ().matrix.entries ());
        output (value, "value") = t.information.integers[static_cast<std::size_t> (index)];
    });
}
