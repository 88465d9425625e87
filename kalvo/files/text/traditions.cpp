#include "kalvo/files/text/traditions.h"

#include "kalvo/files/text/fault.h"

namespace klv {

void Warnings::note (Tradition kind, std::int64_t line, std::string_view item)
{
    Note& note = notes_[static_cast<std::size_t> (kind)];
    if (note.count++ == 0) {
        note.line = line;
        note.item = quote (item);
    }
}

void Warnings::print (Task& task, const std::string& path) const
{
    for (std::size_t kind = 0; kind < notes_.size (); ++kind) {
        const Note& note = notes_[kind];
        if (note.count == 0)
            continue;
        std::string text = path + ":" + std::to_string (note.line) + ": ";
        text += tradition_texts[kind];
        text += " (" + note.item;
        if (note.count > 1)
            text += " and " + std::to_string (note.count - 1) + " more";
        task.warn (text + ")");
    }
}

}
