#include "kalvo/files/lp/scan.h"

#include "kalvo/files/text/words.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace klv {

// ---- Characters

enum Class : std::uint8_t { other = 0, blank = 1, in_name = 2, digit = 4 };

static constexpr std::array<std::uint8_t, 256> classes = [] {
    std::array<std::uint8_t, 256> table{};
    for (std::size_t c = 0x80; c < table.size (); ++c)
        table[c] = in_name;
    for (const char c :
         std::string_view ("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_!\"#$%&(),.;?@'`{}~/|"))
        table[static_cast<unsigned char> (c)] = in_name;
    for (char c = '0'; c <= '9'; ++c)
        table[static_cast<unsigned char> (c)] = in_name | digit;
    table[' '] = table['\t'] = blank;
    return table;
}();

static bool is (char c, std::uint8_t which)
{
    return classes[static_cast<unsigned char> (c)] & which;
}

// ---- Words

struct LpWord {
    std::string_view text;    // in capitals, with one blank between words
    LpSection section;
    const char* unsupported = nullptr;    // content of the section that a task cannot hold, else null
};

// A longer word stands before the word that it begins with.
constexpr std::array section_words{
    LpWord{"MINIMIZE MULTI-OBJECTIVES", LpSection::none, "several objectives"},
    LpWord{"MAXIMIZE MULTI-OBJECTIVES", LpSection::none, "several objectives"},
    LpWord{"MINIMIZE", LpSection::minimize},
    LpWord{"MINIMISE", LpSection::minimize},
    LpWord{"MINIMUM", LpSection::minimize},
    LpWord{"MIN", LpSection::minimize},
    LpWord{"MAXIMIZE", LpSection::maximize},
    LpWord{"MAXIMISE", LpSection::maximize},
    LpWord{"MAXIMUM", LpSection::maximize},
    LpWord{"MAX", LpSection::maximize},
    LpWord{"SUBJECT TO", LpSection::constraints},
    LpWord{"SUCH THAT", LpSection::constraints},
    LpWord{"S.T.", LpSection::constraints},
    LpWord{"ST.", LpSection::constraints},
    LpWord{"ST", LpSection::constraints},
    LpWord{"BOUNDS", LpSection::bounds},
    LpWord{"BOUND", LpSection::bounds},
    LpWord{"GENERAL CONSTRAINTS", LpSection::none, "general constraints"},
    LpWord{"GENCONS", LpSection::none, "general constraints"},
    LpWord{"GENERALS", LpSection::integers},
    LpWord{"GENERAL", LpSection::integers},
    LpWord{"GEN", LpSection::integers},
    LpWord{"INTEGERS", LpSection::integers},
    LpWord{"INTEGER", LpSection::integers},
    LpWord{"INT", LpSection::integers},
    LpWord{"BINARIES", LpSection::binaries},
    LpWord{"BINARY", LpSection::binaries},
    LpWord{"BIN", LpSection::binaries},
    LpWord{"END", LpSection::end},
    LpWord{"SEMI-CONTINUOUS", LpSection::none, "semi-continuous variables"},
    LpWord{"SEMI-INTEGER", LpSection::none, "semi-continuous variables"},
    LpWord{"SEMIS", LpSection::none, "semi-continuous variables"},
    LpWord{"SEMI", LpSection::none, "semi-continuous variables"},
    LpWord{"SOS1", LpSection::none, "special ordered sets"},
    LpWord{"SOS2", LpSection::none, "special ordered sets"},
    LpWord{"SOS", LpSection::none, "special ordered sets"},
    LpWord{"LAZY CONSTRAINTS", LpSection::none, "lazy constraints"},
    LpWord{"USER CUTS", LpSection::none, "user cuts"},
    LpWord{"PWLOBJ", LpSection::none, "piecewise linear objectives"},
    LpWord{"SCENARIO", LpSection::none, "scenarios"},
};

constexpr std::array<std::string_view, 2> infinity_words{"INFINITY", "INF"};

// The length of a word at the begin of a text, 0 when the text begins otherwise. Several blanks may stand for one.
static std::size_t match (std::string_view text, std::string_view word)
{
    std::size_t at = 0;
    for (const char c : word) {
        if (at == text.size () || (c == ' ' ? !is (text[at], blank) : upper (text[at]) != c))
            return 0;
        ++at;
        while (c == ' ' && at < text.size () && is (text[at], blank))
            ++at;
    }
    return at < text.size () && is (text[at], in_name) ? 0 : at;
}

const char* why_not_in_lp (std::string_view name)
{
    if (name.empty ())
        return nullptr;
    if (!std::all_of (name.begin (), name.end (), [] (char c) { return is (c, in_name); }))
        return "has a blank or a sign that LP uses";
    if (is (name[0], digit) || name[0] == '.')
        return "begins like a number";
    const auto is_name = [&] (std::string_view word) { return same_word (name, word); };
    if (std::any_of (section_words.begin (), section_words.end (),
                     [&] (const LpWord& word) { return is_name (word.text); }) ||
        std::any_of (infinity_words.begin (), infinity_words.end (), is_name) || is_name ("FREE"))
        return "is a word of LP";
    return nullptr;
}

bool reads_like_exponent (std::string_view name)
{
    return !name.empty () && upper (name[0]) == 'E' && (name.size () == 1 || is (name[1], digit));
}

// ---- Tokens

bool LpScanner::next_line ()
{
    do {
        if (!lines_.next ())
            return false;
        rest_ = lines_.line ();
        if (!section_seen_ && problem_name_.empty () && rest_.starts_with (lp_name_comment)) {
            check_characters (rest_);
            problem_name_ = trim (rest_.substr (lp_name_comment.size ()));
        }
        rest_ = rest_.substr (0, rest_.find ('\\'));
        while (!rest_.empty () && is (rest_.front (), blank))
            rest_.remove_prefix (1);
    } while (rest_.empty ());
    prefetch_names ();
    return true;
}

void LpScanner::prefetch_names () const
{
    for (std::size_t at = 0; at < rest_.size ();) {
        const std::size_t begin = at;
        while (at < rest_.size () && is (rest_[at], in_name))
            ++at;
        if (at > begin && !is (rest_[begin], digit))
            names_.prefetch (rest_.substr (begin, at - begin));
        at += at == begin ? 1 : 0;
    }
}

const LpToken& LpScanner::token ()
{
    if (!taken_)
        take ();
    taken_ = true;
    return token_;
}

void LpScanner::take ()
{
    token_ = {};
    while (!rest_.empty () && is (rest_.front (), blank))
        rest_.remove_prefix (1);
    if (rest_.empty ()) {
        if (!next_line ())
            return;
        token_.begins_line = true;
        if (take_section ())
            return;
    }
    const char c = rest_.front ();
    if (is (c, digit) || c == '.')
        take_number ();
    else if (is (c, in_name))
        take_name ();
    else
        take_operator (c);
}

bool LpScanner::take_section ()
{
    for (const LpWord& word : section_words) {
        const std::size_t size = match (rest_, word.text);
        if (size == 0)
            continue;
        if (word.unsupported)
            throw unsupported (word.unsupported, quote (rest_.substr (0, size)));
        token_.kind = LpToken::section;
        token_.opened = word.section;
        token_.text = rest_.substr (0, size);
        rest_.remove_prefix (size);
        section_seen_ = true;
        return true;
    }
    return false;
}

void LpScanner::take_name ()
{
    std::size_t size = 1;
    while (size < rest_.size () && is (rest_[size], in_name))
        ++size;
    token_.text = rest_.substr (0, size);
    rest_.remove_prefix (size);
    std::size_t after = 0;
    while (after < rest_.size () && is (rest_[after], blank))
        ++after;
    token_.kind = LpToken::name;
    if (after < rest_.size () && rest_[after] == ':') {
        token_.kind = LpToken::label;
        rest_.remove_prefix (after + 1);
    } else if (upper (token_.text[0]) == 'I' &&
               (same_word (token_.text, infinity_words[0]) || same_word (token_.text, infinity_words[1]))) {
        token_.kind = LpToken::number;
        token_.value = std::numeric_limits<double>::infinity ();
    }
}

void LpScanner::take_number ()
{
    const auto [end, error] = std::from_chars (rest_.data (), rest_.data () + rest_.size (), token_.value);
    const std::size_t size = std::max<std::size_t> (static_cast<std::size_t> (end - rest_.data ()), 1);
    token_.kind = LpToken::number;
    token_.text = rest_.substr (0, size);
    if (error == std::errc::result_out_of_range)
        throw syntax (quote (token_.text) + " is beyond the numbers of double precision");
    if (error != std::errc ())
        throw syntax (quote (token_.text) + " is not a number");
    rest_.remove_prefix (size);
    if (!rest_.empty () && (rest_.front () == '.' || rest_.front () == ','))
        throw syntax (quote (token_.text) + " goes on with " + quote (rest_.substr (0, 1)));
}

void LpScanner::take_operator (char c)
{
    const char second = rest_.size () > 1 ? rest_[1] : ' ';
    std::size_t size = 1;
    if (c == '-' && second == '>')
        throw unsupported ("indicator constraints", quote ("->"));
    if (c == '+' || c == '-') {
        token_.kind = LpToken::sign;
        token_.value = c == '-' ? -1 : 1;
    } else if (c == '*') {
        token_.kind = LpToken::times;
    } else if (c == '^') {
        token_.kind = LpToken::power;
    } else if (c == '[') {
        token_.kind = LpToken::open;
    } else if (c == ']') {
        token_.kind = LpToken::close;
    } else if (c == '<' || c == '>' || c == '=') {
        token_.kind = LpToken::relation;
        const bool orders = second == '<' || second == '>';
        token_.relation_sign = c == '=' && orders ? second : c;
        size = (c == '=' && orders) || (c != '=' && second == '=') ? 2 : 1;
    } else {
        check_characters (rest_);
        throw syntax (quote (rest_.substr (0, 1)) + " is not expected here");
    }
    token_.text = rest_.substr (0, size);
    rest_.remove_prefix (size);
}

}
