#include "kalvo/files/formats.h"

#include "kalvo/files/cbf/cbf.h"
#include "kalvo/files/lp/lp.h"
#include "kalvo/files/mps/mps.h"
#include "kalvo/files/sdpa/sdpa.h"
#include "kalvo/files/text/words.h"

#include <algorithm>
#include <array>
#include <vector>

namespace klv {

// ---- The formats

// Reads a file of a format that holds a problem and nothing else.
template <Problem (*read) (Task&, const std::string&, Pacer&)>
static FileContent read_alone (Task& task, const std::string& path, Pacer& pacer)
{
    return {std::make_shared<Problem> (read (task, path, pacer)), task.parameters};
}

constexpr Features quadratic_features{Feature::integers, Feature::quadratic_objective,
                                      Feature::quadratic_constraints};

constexpr std::array formats{
    Format{"free MPS", ".mps", KLV_FILE_FREE_MPS, quadratic_features, unfit_for_free_mps,
           read_alone<read_free_mps>, write_free_mps, read_alone<read_mps_of_any_form>, ".qps"},
    Format{"fixed MPS", ".mps", KLV_FILE_FIXED_MPS, quadratic_features, unfit_for_fixed_mps,
           read_alone<read_fixed_mps>, write_fixed_mps, nullptr, ".qps"},
    Format{"LP", ".lp", KLV_FILE_LP, quadratic_features, unfit_for_lp, read_alone<read_lp>, write_lp},
    Format{"CBF",
           ".cbf",
           KLV_FILE_CBF,
           {Feature::integers, Feature::affine_expressions, Feature::affine_constraints, Feature::cones,
            Feature::semidefinite_variables},
           unfit_for_cbf,
           read_alone<read_cbf>,
           write_cbf},
    Format{"sparse SDPA",
           ".dat-s",
           KLV_FILE_SDPA,
           {Feature::semidefinite_variables},
           unfit_for_sdpa,
           read_alone<read_sdpa>,
           write_sdpa},
    Format{"JSON", ".json", KLV_FILE_JSON, all_features (), nullptr, read_json, write_json},
};

// ---- What a format can hold

static std::string obstacle (const Format& format, const Problem& problem)
{
    if (const char* feature = problem.features ().missing_in (format.holds))
        return feature;
    return format.unfit ? format.unfit (problem) : "";
}

std::string why_not (const Format& format, const Problem& problem)
{
    const std::string item = obstacle (format, problem);
    if (item.empty ())
        return {};
    const auto other = std::ranges::find_if (
        formats, [&] (const Format& candidate) { return obstacle (candidate, problem).empty (); });
    return std::string (format.name) + " cannot hold " + item + "; " +
           (other == formats.end () ? "no format that is known" : other->name) + " can";
}

// ---- Which format a file has

constexpr std::string_view packed_extension = ".gz";

static bool has_extension (std::string_view path, std::string_view extension)
{
    return path.size () > extension.size () &&
           std::equal (extension.rbegin (), extension.rend (), path.rbegin (),
                       [] (char a, char b) { return upper (a) == upper (b); });
}

static bool has_extension_of (const Format& format, std::string_view path)
{
    return has_extension (path, format.extension) ||
           (!format.older_extension.empty () && has_extension (path, format.older_extension));
}

bool is_packed (std::string_view path)
{
    return has_extension (path, packed_extension);
}

static FileFault unknown_format ()
{
    std::vector<std::string_view> extensions;
    for (const Format& format : formats)
        for (const std::string_view extension : {format.extension, format.older_extension})
            if (!extension.empty () && std::ranges::find (extensions, extension) == extensions.end ())
                extensions.push_back (extension);
    std::string list (extensions.front ());
    for (std::size_t i = 1; i < extensions.size (); ++i)
        list.append (i + 1 < extensions.size () ? ", " : " and ").append (extensions[i]);
    return {
        KLV_RES_FILE_FORMAT_UNKNOWN,
        "the file's extension names no known format: the extensions " + list +
            " are known, all also with .gz behind, and the parameter KLV_IPAR_FILE_FORMAT names a format for "
            "any file"};
}

// The formats that a file may have: the one that the parameter names, or all with the file's extension.
static std::vector<const Format*> candidates (const Task& task, std::string_view path)
{
    const std::int32_t number = task.parameters.get (IntSetting::file_format);
    if (is_packed (path))
        path.remove_suffix (packed_extension.size ());
    std::vector<const Format*> found;
    for (const Format& format : formats)
        if (number == KLV_FILE_BY_EXTENSION ? has_extension_of (format, path) : format.number == number)
            found.push_back (&format);
    if (found.empty ())
        throw unknown_format ();
    return found;
}

Format::Reader reader_of (const Task& task, std::string_view path)
{
    const std::vector<const Format*> found = candidates (task, path);
    return found.size () > 1 ? found.front ()->read_any : found.front ()->read;
}

Format::Writer writer_of (const Task& task, std::string_view path)
{
    const std::vector<const Format*> found = candidates (task, path);
    const auto format = std::ranges::find_if (
        found, [&] (const Format* candidate) { return obstacle (*candidate, task.problem ()).empty (); });
    if (format == found.end ())
        throw FileFault{KLV_RES_FILE_CANNOT_HOLD, why_not (*found.front (), task.problem ())};
    return (*format)->write;
}

}
