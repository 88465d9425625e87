#include "kalvo/files/cbf/cbf.h"

namespace klv {

std::string unfit_for_cbf (const Problem&)
{
    return "what is to be written: files are read only,";
}

void write_cbf (Task&, OutputFile&) {}

}
