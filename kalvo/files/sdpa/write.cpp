#include "kalvo/files/sdpa/sdpa.h"

namespace klv {

std::string unfit_for_sdpa (const Problem&)
{
    return "what is to be written: files are read only,";
}

void write_sdpa (Task&, OutputFile&) {}

}
