// The tokens of an LP file: numbers, names, signs and relations over lines, and the words that begin sections.
#pragma once

#include "kalvo/files/text/line_reader.h"
#include "kalvo/files/text/name_table.h"

namespace klv {

enum class LpSection { none, minimize, maximize, constraints, bounds, integers, binaries, end };

// Why a name cannot stand in an LP file, or null.
const char* why_not_in_lp (std::string_view name);

// Whether programs could take a name for the exponent of the number before it.
bool reads_like_exponent (std::string_view name);

struct LpToken {
    enum Kind : std::uint8_t {
        end_of_file,
        section,
        label,
        name,
        number,
        sign,
        relation,
        times,
        power,
        open,
        close
    };

    Kind kind = end_of_file;
    bool begins_line = false;
    LpSection opened = LpSection::none;
    char relation_sign = 0;     // '<', '=' or '>'
    double value = 0;           // of a number; 1 or -1 of a sign
    std::string_view text{};    // from the file; a label without its colon
};

class LpScanner {
public:
    // `names`: the table in which names will be looked up. Its places for all names of a line are fetched from memory at once.
    LpScanner (LineReader& lines, const NameTable& names) : lines_ (lines), names_ (names) {}

    // The current token, valid until the next one is asked for. The reader moves to a token's line only when that token is asked
    // for, so that a fault of the token before names the right line. Throws FileFault for text that is no token or begins
    // something that a task cannot hold.
    const LpToken& token ();
    void next () { taken_ = false; }

    // The problem's name, from a comment before the first section.
    const std::string& problem_name () const { return problem_name_; }

private:
    void take ();
    bool next_line ();
    void prefetch_names () const;
    bool take_section ();
    void take_name ();
    void take_number ();
    void take_operator (char c);

    LineReader& lines_;
    const NameTable& names_;
    std::string_view rest_;    // of the line
    LpToken token_;
    bool taken_ = false;
    bool section_seen_ = false;
    std::string problem_name_;
};

// The comment that gives the problem's name.
constexpr std::string_view lp_name_comment = "\\ Problem name: ";

}
