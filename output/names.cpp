// The names of a task and its items. One buffer serves for all names.

#include <algorithm>

#include "common/records.h"
#include "host/holders.h"
#include "output/extracts.h"

namespace {

class NameReader {
public:
    explicit NameReader (KLVtask_t task) : task_ (task)
    {
        std::int32_t name = 0, objective = 0, longest_item = 0;
        KLV_gettasknamelen (task, &name);
        KLV_getobjnamelen (task, &objective);
        KLV_getmaxnamelen (task, &longest_item);
        size_ = std::max ({name, objective, longest_item}) + 1;
        buffer_ = host::allocate<char> (static_cast<std::size_t> (size_) + 100);
    }

    explicit operator bool () const { return buffer_ != nullptr; }

    KLVrescode_t single (KLVrescode_t (*get) (KLVtask_t, std::int32_t, char*), const char* field,
                         mxArray* names)
    {
        buffer_[0] = '\0';
        get (task_, size_, buffer_.get ());
        return set_field (names, field, text ()) ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
    }

    // A kind without items keeps an empty field.
    template <class Index>
    KLVrescode_t list (KLVrescode_t (*get) (KLVtask_t, Index, std::int32_t, char*), std::int64_t count,
                       const char* field, mxArray* names)
    {
        const mwSize sizes[] = {static_cast<mwSize> (count), 1};
        host::Array cells (mxCreateCellArray (2, sizes));
        if (!cells)
            return KLV_RES_OUT_OF_MEMORY;
        KLVrescode_t code = KLV_RES_OK;
        std::int64_t stored = 0;
        while (stored < count && code == KLV_RES_OK) {
            buffer_[0] = '\0';
            code = get (task_, static_cast<Index> (stored), size_, buffer_.get ());
            host::Array name = code == KLV_RES_OK ? text () : nullptr;
            if (name)
                mxSetCell (cells.get (), static_cast<mwIndex> (stored++), name.release ());
            else if (code == KLV_RES_OK)
                code = KLV_RES_OUT_OF_MEMORY;
        }
        if (stored > 0)
            set_field (names, field, std::move (cells));
        return code;
    }

private:
    host::Array text () const { return host::Array (mxCreateString (buffer_.get ())); }

    KLVtask_t task_;
    std::int32_t size_ = 0;
    host::Memory<char> buffer_;
};

}

KLVrescode_t get_names (KLVtask_t task, const ProblemCounts& counts, mxArray* record)
{
    mxArray* names = mxGetField (record, 0, "names");
    NameReader reader (task);
    if (!reader)
        return KLV_RES_OUT_OF_MEMORY;
    KLVrescode_t code = reader.single (KLV_gettaskname, "name", names);
    if (code == KLV_RES_OK)
        code = reader.single (KLV_getobjname, "obj", names);
    if (code == KLV_RES_OK)
        code = reader.list (KLV_getvarname, counts.variables, "var", names);
    if (code == KLV_RES_OK)
        code = reader.list (KLV_getbarvarname, counts.semidefinite, "barvar", names);
    if (code == KLV_RES_OK)
        code = reader.list (KLV_getconname, counts.constraints, "con", names);
    if (code == KLV_RES_OK && counts.cones > 0)
        code = reader.list (KLV_getconename, counts.cones, "cone", names);
    if (code == KLV_RES_OK)
        code = reader.list (KLV_getaccname, counts.affine, "acc", names);
    return code;
}
