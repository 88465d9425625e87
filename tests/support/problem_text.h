// Problems as texts, one form to state them and to see what a task holds:
//
//   "max 3 2 +1; x 0.. y 0..9i; r1: 1 1 in 1..4; 0 1 =3"
//
// Costs and a constant; the variables' bounds (=3: fixed, i: integer), then the constraints, with their entries up to the last.
// Names may be left out. 0 is no entry, +0 and -0 are entries.
#pragma once

#include "kalvo/model/problem.h"

#include <optional>
#include <string>

namespace model {

constexpr double inf = klv::infinity;

klv::Problem parse (const std::string& text);

// Numbers are the shortest texts that read back to the same bits; items without a name are called as writers call them.
std::string text_of (double value);
std::string text_of (const klv::Problem& problem);

// Where two problems begin to differ, to the last bit and name; nothing when they are the same.
std::optional<std::string> difference (const klv::Problem& a, const klv::Problem& b);

}
