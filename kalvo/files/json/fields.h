// The fields that a JSON document may have, and a reader that gives each value to its field. The document itself is
// never held in memory.
#pragma once

#include "kalvo/files/text/pacer.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace klv {

enum class JsonKind { object, number, word, name };

struct JsonField {
    std::string path;    // "problem.matrix.rows"
    JsonKind kind = JsonKind::object;
    bool list = false;
    bool required = true;    // in its object
    // Take a value, or throw syntax () with what is wrong with the value. "Inf", "-Inf" and "NaN" are numbers; a name may also be
    // given as the list of its bytes.
    std::function<void (double)> take_number = {};
    std::function<void (std::string&)> take_text = {};
    std::int64_t line = 0;    // of the field in the document; 0: not there
};

// Called for an unknown field before its value is read: throws FileFault, or returns to have the value skipped.
using UnknownField =
    std::function<void (const std::string& object, const std::string& name, std::int64_t line)>;

// Throws FileFault, with line and field, unless the document is one object with these fields.
void read_json_fields (const std::string& path, std::vector<JsonField>& fields, const UnknownField& unknown,
                       Pacer& pacer);

}
