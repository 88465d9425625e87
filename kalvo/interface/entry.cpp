#include "kalvo/interface/entry.h"

#include "kalvo/task/environment.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

namespace klv {

KLVrescode_t end_with_internal_failure (const std::source_location& where, const char* message)
{
    // The file's name alone: messages do not show the folder that the library was built in.
    std::string_view file = where.file_name ();
    if (const std::size_t slash = file.rfind ('/'); slash != file.npos)
        file.remove_prefix (slash + 1);
    if (const environment::ExitFunction exit = environment::exit_function (); exit.func != nullptr)
        exit.func (exit.handle, file.data (), static_cast<std::int32_t> (where.line ()), message);
    return KLV_RES_INTERNAL;
}

std::string_view given_text (const char* text, const char* name)
{
    return &output (text, name);
}

void check_index (std::int64_t index, std::int64_t count, const char* item)
{
    if (index >= 0 && index < count)
        return;
    if (count == 0)
        refuse (KLV_RES_INDEX_RANGE, "There is no ", item, " with index ", index, ": there is none at all.");
    refuse (KLV_RES_INDEX_RANGE, "There is no ", item, " with index ", index, ": indices are 0 to ",
            count - 1, ".");
}

void check_slice (std::int64_t first, std::int64_t last, std::int64_t count, const char* item)
{
    if (first < 0 || last < first || last > count)
        refuse (KLV_RES_INDEX_RANGE, "The slice from ", first, " to ", last, " is not part of the ", count,
                " ", item, "s.");
}

void check_stream (std::int32_t stream)
{
    if (stream < 0 || stream >= stream_count)
        refuse (KLV_RES_STREAM_UNKNOWN, "There is no stream ", stream, ": streams are 0 to ",
                stream_count - 1, ".");
}

void check_append (std::int64_t count, std::int64_t present, const char* item)
{
    if (count < 0)
        refuse (KLV_RES_INDEX_RANGE, "The number of ", item, "s to append is negative: ", count, ".");
    if (count > std::numeric_limits<std::int32_t>::max () - present)
        refuse (KLV_RES_TOO_LARGE, present, " ", item, "s and ", count,
                " more are more than can be counted.");
}

void check_count (std::int64_t count, const char* items)
{
    if (count < 0)
        refuse (KLV_RES_INDEX_RANGE, "The number of ", items, " is negative: ", count, ".");
    if (count > std::numeric_limits<std::int32_t>::max ())
        refuse (KLV_RES_TOO_LARGE, count, " ", items, " are more than can be counted.");
}

void check_room (std::int64_t room, std::int64_t count, const char* items)
{
    if (room < count)
        refuse (KLV_RES_BUFFER_TOO_SMALL, "There are ", count, " ", items, ", but room for ", room, ".");
}

std::string checked_name (const char* name)
{
    const std::string_view words = given_text (name, "name");
    if (words.size () >= std::numeric_limits<std::int32_t>::max ())    // the length of a buffer counts a 0
        refuse (KLV_RES_TOO_LARGE, "A name of ", words.size (), " bytes is too long.");
    return std::string (words);
}

void put_name (Task& task, Names Problem::*names, std::int64_t index, std::int32_t count, const char* item,
               const char* name)
{
    check_index (index, count, item);
    std::string words = checked_name (name);
    (task.edit_problem ().*names).put (static_cast<std::int32_t> (index), count, std::move (words));
}

std::optional<std::size_t> not_finite (std::span<const double> values)
{
    const auto found = std::ranges::find_if_not (values, [] (double value) { return std::isfinite (value); });
    return found == values.end () ? std::nullopt : std::optional<std::size_t> (found - values.begin ());
}

KLVrescode_t give_text (std::string_view source, std::int32_t size, char* buffer, const char* name)
{
    if (size > 0)
        output (buffer, name);
    if (copy_text (source, buffer, size > 0 ? static_cast<std::size_t> (size) : 0))
        return KLV_RES_OK;
    refuse (KLV_RES_BUFFER_TOO_SMALL, "The argument '", name, "' has ", size, " bytes; the text needs ",
            source.size () + 1, ".");
}

}
