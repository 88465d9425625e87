// The guard of every operation of the C interface: checks the handle, and turns exceptions into response codes.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/model/describe.h"
#include "kalvo/model/refusal.h"
#include "kalvo/model/text.h"
#include "kalvo/task/task.h"

#include <cstdint>
#include <exception>
#include <new>
#include <optional>
#include <source_location>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace klv {

// The last act of an operation that failed inside: calls the exit function, which may leave by throwing.
KLVrescode_t end_with_internal_failure (const std::source_location& where, const char* message);

template <class Operation>
KLVrescode_t result_of (const Operation& operation)
{
    if constexpr (std::is_void_v<std::invoke_result_t<const Operation&>>) {
        operation ();
        return KLV_RES_OK;
    } else
        return operation ();
}

template <class Operation>
KLVrescode_t enter (KLVtask_t task, Access access, const std::source_location& where,
                    const Operation& operation)
{
    if (task == nullptr)
        return KLV_RES_NULL_HANDLE;
    if (const KLVrescode_t refused = task->refuses (access))
        return refused;
    char failure[KLV_MAX_TEXT];
    {
        struct Visit {
            Task& task;
            explicit Visit (Task& visited) : task (visited) { task.enter (); }
            ~Visit () { task.leave (); }
        } visit (*task);
        try {
            try {
                return result_of ([&] { return operation (*task); });
            } catch (Refusal& refusal) {
                return task->fail (refusal.code, std::move (refusal.message));
            }
        } catch (const std::bad_alloc&) {
            return task->note_out_of_memory ();
        } catch (const std::length_error&) {    // more than a vector can ever hold
            return task->note_out_of_memory ();
        } catch (const std::exception& exception) {
            copy_text (exception.what (), failure, sizeof failure);
        } catch (...) {
            copy_text ("an unknown exception", failure, sizeof failure);
        }
        task->make_unusable (failure);
    }
    return end_with_internal_failure (where, failure);
}

template <class Operation>
KLVrescode_t read (KLVtask_t task, const Operation& operation,
                   const std::source_location& where = std::source_location::current ())
{
    return enter (task, Access::read, where, operation);
}

template <class Operation>
KLVrescode_t change (KLVtask_t task, const Operation& operation,
                     const std::source_location& where = std::source_location::current ())
{
    return enter (task, Access::change, where, operation);
}

// Makes a change to the problem that handles `work` entries. Now and then the progress callback is asked first.
template <class Operation>
KLVrescode_t load (KLVtask_t task, std::int64_t work, const Operation& operation,
                   const std::source_location& where = std::source_location::current ())
{
    return change (
        task,
        [&] (Task& t) -> KLVrescode_t {
            if (const std::int32_t answer =
                    t.ask_callback_while_loading (work > 0 ? static_cast<std::size_t> (work) : 0))
                return stop_code (answer);
            return result_of ([&] { return operation (t); });
        },
        where);
}

// Operations of the environment. There is only the default one, whose handle is null.
template <class Operation>
KLVrescode_t enter_environment (KLVenv_t env, const Operation& operation)
{
    if (env != nullptr)
        return KLV_RES_ARGUMENT;
    try {
        return result_of (operation);
    } catch (const Refusal& refusal) {
        return refusal.code;
    } catch (const std::bad_alloc&) {
        return KLV_RES_OUT_OF_MEMORY;
    } catch (...) {
        return KLV_RES_INTERNAL;
    }
}

// ---- Checks of arguments; `name` is the argument's name in kalvo.h ----

// A pointer to where a result goes.
template <class Value>
Value& output (Value* place, const char* name)
{
    if (place == nullptr)
        refuse (KLV_RES_NULL_POINTER, "The argument '", name, "' is a null pointer.");
    return *place;
}

// An array of `count` entries; may be null when there are none.
template <class Value>
std::span<Value> array (Value* entries, std::int64_t count, const char* name)
{
    if (count > 0)
        output (entries, name);
    return {entries, static_cast<std::size_t> (count)};
}

std::string_view given_text (const char* text, const char* name);

// Writes the number that `value_of` takes from the problem.
template <class Value, class Getter>
KLVrescode_t give (KLVtask_t task, Value* place, const char* name, const Getter& value_of,
                   const std::source_location& where = std::source_location::current ())
{
    return read (
        task, [&] (Task& t) { output (place, name) = static_cast<Value> (value_of (t.problem ())); }, where);
}

// "variable", "constraint" ...: index is 0 ... count - 1.
void check_index (std::int64_t index, std::int64_t count, const char* item);
void check_slice (std::int64_t first, std::int64_t last, std::int64_t count, const char* item);
void check_stream (std::int32_t stream);
// The number of items that are to be appended, of which `present` are there.
void check_append (std::int64_t count, std::int64_t present, const char* item);
void check_count (std::int64_t count, const char* items);
// Room for `count` results.
void check_room (std::int64_t room, std::int64_t count, const char* items);
std::string checked_name (const char* name);
// Names item `index` of `count` items.
void put_name (Task& task, Names Problem::*names, std::int64_t index, std::int32_t count, const char* item,
               const char* name);

// The place of the first value that is not finite.
std::optional<std::size_t> not_finite (std::span<const double> values);

// A text into a buffer of `size` bytes: KLV_RES_BUFFER_TOO_SMALL, with the buffer cut, when it does not fit.
KLVrescode_t give_text (std::string_view source, std::int32_t size, char* buffer, const char* name);

}
