// Problem files: which format, and what a task gets to hold or to say of a fault.
#include "kalvo/files/mps.h"
#include "kalvo/task/operations.h"

#include <algorithm>

namespace klv {

// ---- Formats

enum class FileFormat { mps, free_mps, fixed_mps };

static bool has_extension (const std::string& path, std::string_view extension)
{
    const auto lower = [] (char c) { return c >= 'A' && c <= 'Z' ? static_cast<char> (c - 'A' + 'a') : c; };
    return path.size () > extension.size () &&
           std::equal (extension.rbegin (), extension.rend (), path.rbegin (),
                       [&] (char a, char b) { return a == lower (b); });
}

static FileFormat format_of (const Task& task, const std::string& path)
{
    switch (task.parameters.get (IntSetting::file_format)) {
    case KLV_FILE_FREE_MPS:
        return FileFormat::free_mps;
    case KLV_FILE_FIXED_MPS:
        return FileFormat::fixed_mps;
    default:
        break;
    }
    if (has_extension (path, ".mps"))
        return FileFormat::mps;
    throw FileFault{KLV_RES_FILE_FORMAT_UNKNOWN,
                    "the file's extension names no known format: the extension .mps is known, "
                    "and the parameter KLV_IPAR_FILE_FORMAT names a format for any file"};
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

static Problem read_format (Task& task, const std::string& path, Pacer& pacer)
{
    switch (format_of (task, path)) {
    case FileFormat::free_mps:
        return read_mps (task, path, FileForm::free_mps, pacer);
    case FileFormat::fixed_mps:
        return read_mps (task, path, FileForm::fixed_mps, pacer);
    default:
        return read_mps_of_any_form (task, path, pacer);
    }
}

KLVrescode_t read_problem (Task& task, const char* path)
{
    task.replace_problem ({});
    try {
        Pacer pacer (task, KLV_CALLER_READ);
        pacer.ask (KLV_CALLER_BEGIN_READ);
        Problem problem = read_format (task, path, pacer);
        pacer.ask (KLV_CALLER_END_READ);
        task.replace_problem (std::move (problem));
        task.information.set (RealItem::time_read, task.information.get (RealItem::progress_time));
        return KLV_RES_OK;
    } catch (const FileFault& fault) {
        return report (task, path, fault);
    }
}

// By extension, MPS is written in free form unless only fixed form can hold the names.
static FileForm form_to_write (const Task& task, const std::string& path)
{
    const Problem& problem = task.problem ();
    const FileFormat format = format_of (task, path);
    if (format == FileFormat::mps && !holds_names (FileForm::free_mps, problem) &&
        holds_names (FileForm::fixed_mps, problem))
        return FileForm::fixed_mps;
    return format == FileFormat::fixed_mps ? FileForm::fixed_mps : FileForm::free_mps;
}

KLVrescode_t write_problem (Task& task, const char* path)
{
    try {
        Pacer pacer (task, KLV_CALLER_WRITE);
        pacer.ask (KLV_CALLER_BEGIN_WRITE);
        const FileForm form = form_to_write (task, path);
        check_mps_holds (task.problem (), form);
        OutputFile file (path, pacer);
        write_mps (task, form, file);
        pacer.ask (KLV_CALLER_END_WRITE);
        file.commit ();
        task.information.set (RealItem::time_write, task.information.get (RealItem::progress_time));
        return KLV_RES_OK;
    } catch (const FileFault& fault) {
        return report (task, path, fault);
    }
}

}
