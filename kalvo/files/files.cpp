#include "kalvo/files/files.h"

#include "kalvo/files/json/json.h"
#include "kalvo/files/lp/lp.h"
#include "kalvo/files/mps/mps.h"

#include <algorithm>
#include <cmath>

namespace klv {

// ---- Formats

// A format as an extension or a parameter names it. By extension, an MPS file has the form that its lines show,
// and is written in free form unless only fixed form can hold the names.
enum class FileFormat { mps, free_mps, fixed_mps, lp, json };

static bool has_extension (std::string_view path, std::string_view extension)
{
    const auto lower = [] (char c) { return c >= 'A' && c <= 'Z' ? static_cast<char> (c - 'A' + 'a') : c; };
    return path.size () > extension.size () &&
           std::equal (extension.rbegin (), extension.rend (), path.rbegin (),
                       [&] (char a, char b) { return a == lower (b); });
}

// A file is written packed when its name says so, and read as its first bytes say.
constexpr std::string_view packed_extension = ".gz";

static bool is_packed (std::string_view path)
{
    return has_extension (path, packed_extension);
}

static FileFormat format_of (const Task& task, std::string_view path)
{
    switch (task.parameters.get (IntSetting::file_format)) {
    case KLV_FILE_FREE_MPS:
        return FileFormat::free_mps;
    case KLV_FILE_FIXED_MPS:
        return FileFormat::fixed_mps;
    case KLV_FILE_LP:
        return FileFormat::lp;
    case KLV_FILE_JSON:
        return FileFormat::json;
    default:
        break;
    }
    if (is_packed (path))
        path.remove_suffix (packed_extension.size ());
    if (has_extension (path, ".mps"))
        return FileFormat::mps;
    if (has_extension (path, ".lp"))
        return FileFormat::lp;
    if (has_extension (path, ".json"))
        return FileFormat::json;
    throw FileFault{
        KLV_RES_FILE_FORMAT_UNKNOWN,
        "the file's extension names no known format: the extensions .mps, .lp and .json are known, all also "
        "with .gz behind, and the parameter KLV_IPAR_FILE_FORMAT names a format for any file"};
}

// ---- Faults

static KLVrescode_t report (Task& task, const std::string& path, const FileFault& fault)
{
    if (fault.text.empty ())
        return fault.code;
    const std::string line = fault.line > 0 ? ":" + std::to_string (fault.line) : "";
    return task.fail (fault.code, path + line + ": " + fault.text);
}

// ---- Reading and writing

static Problem read_problem (Task& task, const std::string& path, FileFormat format, Pacer& pacer)
{
    switch (format) {
    case FileFormat::free_mps:
        return read_mps (task, path, FileForm::free_mps, pacer);
    case FileFormat::fixed_mps:
        return read_mps (task, path, FileForm::fixed_mps, pacer);
    case FileFormat::lp:
        return read_lp (task, path, pacer);
    default:
        return read_mps_of_any_form (task, path, pacer);
    }
}

static FileContent read_content (Task& task, const std::string& path, Pacer& pacer)
{
    const FileFormat format = format_of (task, path);
    if (format == FileFormat::json)
        return read_json (task, path, pacer);
    return {std::make_shared<Problem> (read_problem (task, path, format, pacer)), task.parameters};
}

KLVrescode_t read_problem (Task& task, const char* path)
{
    task.replace_problem ({});
    try {
        Pacer pacer (task, KLV_CALLER_READ);
        pacer.ask (KLV_CALLER_BEGIN_READ);
        FileContent content = read_content (task, path, pacer);
        pacer.ask (KLV_CALLER_END_READ);
        task.replace_problem (std::move (*content.problem));
        task.parameters = std::move (content.parameters);
        task.solutions = std::move (content.solutions);
        task.information.set (RealItem::time_read, task.information.get (RealItem::progress_time));
        return KLV_RES_OK;
    } catch (const FileFault& fault) {
        return report (task, path, fault);
    }
}

static FileForm form_to_write (const Problem& problem, FileFormat format)
{
    switch (format) {
    case FileFormat::free_mps:
        return FileForm::free_mps;
    case FileFormat::fixed_mps:
        return FileForm::fixed_mps;
    case FileFormat::lp:
        return FileForm::lp;
    default:
        return !holds_names (FileForm::free_mps, problem) && holds_names (FileForm::fixed_mps, problem)
                   ? FileForm::fixed_mps
                   : FileForm::free_mps;
    }
}

static void warn_of_huge_bounds (Task& task)
{
    const double huge = task.parameters.get (RealSetting::bound_infinity);
    std::int64_t count = 0;
    for (const Bounds* bounds : {&task.problem ().constraint, &task.problem ().variable})
        for (const std::vector<double>* values : {&bounds->lower, &bounds->upper})
            count += std::count_if (values->begin (), values->end (), [=] (double value) {
                return std::isfinite (value) && std::fabs (value) >= huge;
            });
    if (count > 0)
        task.warn (std::to_string (count) +
                   " bounds are written as numbers, and are read as no bounds while they "
                   "are beyond the bound infinity threshold");
}

static void write_format (Task& task, FileFormat format, OutputFile& file)
{
    if (format == FileFormat::json)
        return write_json (task, file);
    const FileForm form = form_to_write (task.problem (), format);
    check_names (form, task.problem ());
    if (form == FileForm::lp)
        write_lp (task, file);
    else
        write_mps (task, form, file);
}

KLVrescode_t write_problem (Task& task, const char* path)
{
    try {
        Pacer pacer (task, KLV_CALLER_WRITE);
        pacer.ask (KLV_CALLER_BEGIN_WRITE);
        const FileFormat format = format_of (task, path);
        OutputFile file (path, is_packed (path), pacer);
        write_format (task, format, file);
        pacer.ask (KLV_CALLER_END_WRITE);
        file.commit ();
        if (format != FileFormat::json)
            warn_of_huge_bounds (task);
        task.information.set (RealItem::time_write, task.information.get (RealItem::progress_time));
        return KLV_RES_OK;
    } catch (const FileFault& fault) {
        return report (task, path, fault);
    }
}

}
