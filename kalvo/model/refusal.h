// How an operation of the library is refused.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/model/text.h"

#include <string>

namespace klv {

// An operation that can't be done, thrown before anything was changed.
struct Refusal {
    KLVrescode_t code;
    std::string message;
};

template <class... Pieces>
[[noreturn]] void refuse (KLVrescode_t code, const Pieces&... pieces)
{
    throw Refusal{code, text (pieces...)};
}

}
