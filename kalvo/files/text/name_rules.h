// The forms of problem files, and which names each can hold.
#pragma once

#include "kalvo/files/text/fault.h"
#include "kalvo/model/problem.h"

namespace klv {

// Free MPS separates fields by blanks, so names have none. Fixed MPS has them in the columns 2-3 (key),
// 5-12 and 15-22 (names), 25-36 (number), 40-47 (name), 50-61 (number): names have up to 8 bytes and may have
// blanks inside. LP has no blanks, signs and words of its own in names.
enum class FileForm { free_mps, fixed_mps, lp };

// Whether all names of a problem's items have the length and the characters that a form can hold.
bool holds_names (FileForm form, const Problem& problem);

// Refuses names that the form cannot hold, of items and of the problem, and names that two items of a kind have.
void check_names (FileForm form, const Problem& problem);

// What a task holds and a form has no way to say.
FileFault cannot_hold (const std::string& text);

}
