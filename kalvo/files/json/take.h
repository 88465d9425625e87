// Fields of a JSON document that take their values into vectors and texts, and faults of values.
#pragma once

#include "kalvo/files/json/fields.h"
#include "kalvo/files/text/fault.h"
#include "kalvo/model/problem.h"
#include "kalvo/tables/constants.h"

#include <cstdint>
#include <string>
#include <vector>

namespace klv {

enum class Allowed { finite, finite_or_unknown, above_minus, below_plus };

// Throw syntax () with what is wrong with a value.
void check (Allowed allowed, double value);
std::int32_t whole (double value);
std::int32_t word_of (Group group, const std::string& word);

// Fields; what they take into must stay where it is.
JsonField object (std::string path, bool required = true);
JsonField numbers (std::string path, std::vector<double>& values, Allowed allowed, bool required = true);
JsonField indices (std::string path, std::vector<std::int32_t>& values);
JsonField name (std::string path, std::string& kept);
JsonField names (std::string path, std::vector<std::string>& kept);
template <class Key>
JsonField words (const std::string& path, Group group, std::vector<Key>& keys, bool required = true)
{
    return {.path = path,
            .kind = JsonKind::word,
            .list = true,
            .required = required,
            .take_text = [&keys, group] (std::string& word) {
                keys.push_back (static_cast<Key> (word_of (group, word)));
            }};
}

// Faults of lists that are read: of an entry, of a length, of more entries than can be counted.
FileFault fault_at (const std::string& path, std::size_t index, const std::string& text);
void check_length (const std::string& path, std::size_t length, std::size_t items, const char* kind);
void check_countable (const std::string& path, std::size_t length);

// Names of as many items, or none.
void take_names (const std::string& path, std::vector<std::string>&& given, std::int32_t count,
                 const char* kind, Names& kept);

}
