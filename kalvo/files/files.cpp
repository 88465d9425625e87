#include "kalvo/files/files.h"

#include "kalvo/files/formats.h"
#include "kalvo/model/refusal.h"

namespace klv {

static KLVrescode_t report (Task& task, const std::string& path, const FileFault& fault)
{
    if (fault.text.empty ())
        return fault.code;
    const std::string line = fault.line > 0 ? ":" + std::to_string (fault.line) : "";
    return task.fail (fault.code, path + line + ": " + fault.text);
}

KLVrescode_t read_problem (Task& task, const char* path)
{
    task.replace_problem ({});
    try {
        Pacer pacer (task, KLV_CALLER_READ);
        pacer.ask (KLV_CALLER_BEGIN_READ);
        FileContent content = reader_of (task, path) (task, path, pacer);
        pacer.ask (KLV_CALLER_END_READ);
        task.replace_problem (std::move (*content.problem));
        task.parameters = std::move (content.parameters);
        task.solutions = std::move (content.solutions);
        task.information.set (RealItem::time_read, task.information.get (RealItem::progress_time));
        return KLV_RES_OK;
    } catch (const FileFault& fault) {
        return report (task, path, fault);
    } catch (const Refusal& refusal) {    // the file has more entries than a problem can hold
        return report (task, path, {refusal.code, refusal.message});
    }
}

KLVrescode_t write_problem (Task& task, const char* path)
{
    try {
        Pacer pacer (task, KLV_CALLER_WRITE);
        pacer.ask (KLV_CALLER_BEGIN_WRITE);
        const Format::Writer write = writer_of (task, path);
        OutputFile file (path, is_packed (path), pacer);
        write (task, file);
        pacer.ask (KLV_CALLER_END_WRITE);
        file.commit ();
        task.information.set (RealItem::time_write, task.information.get (RealItem::progress_time));
        return KLV_RES_OK;
    } catch (const FileFault& fault) {
        return report (task, path, fault);
    }
}

}
