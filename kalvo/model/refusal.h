// Thrown by operations of the library that can't be done.
#pragma once

#include "kalvo/include/kalvo.h"
#include "kalvo/model/text.h"

#include <string>

namespace klv {

// Thrown before anything was changed.
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
