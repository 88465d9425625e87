// fuzz_files COUNT [FIRST]: reads COUNT mutated problem files. Each must give a fault that names its line, or
// a sound problem that is the same after it was written and read again. Case number i is the same in every
// run; a failing one is kept in the working folder and is run alone by `fuzz_files 1 i`.
#include "tests/support/problem_file.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <stdexcept>
#include <utility>
#include <vector>

using namespace std::string_view_literals;

namespace {

// ---- Files to begin with: published ones, and two that have a little of everything

const char* const everything_free = R"(* a comment
NAME little problem
OBJSENSE
    MAX
OBJNAME
    cost
ROWS
 N other
 N cost
 L limit
 G need
 E balance
 E window
COLUMNS
    x cost 1.5 limit 2
    x need -1e-3 balance +7
    M1 'MARKER' 'INTORG'
    n cost -2 window 1
    b limit .5 other 4D1
    M2 'MARKER' 'INTEND'
    y window 1 balance -1
    z need 1
    w limit 3
RHS
    RHS cost -12.5 limit 100
    RHS need 1 balance 0
    RHS window -4
RANGES
    RNG limit 40 need 7
    RNG window -2.5
BOUNDS
 UP BND x 40
 LO BND x -3
 LI BND n 2
 UI BND n 9
 BV BND b
 MI BND y
 UP BND y -1
 FR BND z
 FX BND w 2.25
ENDATA
)";

const char* const everything_fixed = R"(NAME          little problem
ROWS
 N  THE COST
 L  LIMIT 1
 G  NEED
 E  WINDOW
COLUMNS
    X 1       THE COST           1.5   LIMIT 1              2
    X 1       NEED            -0.001
    MARK 1    'MARKER'                 'INTORG'
    N         THE COST            -2   WINDOW               1
    MARK 2    'MARKER'                 'INTEND'
    Y         WINDOW    0.3333333333333333
RHS
    RHS       LIMIT 1            100   NEED                 1
    RHS       THE COST            12
RANGES
    RNG       LIMIT 1             40
BOUNDS
 UP BND       X 1                 40
 LO BND       N                   -3
 MI BND       Y
ENDATA
)";

std::vector<std::string> seeds ()
{
    constexpr std::uintmax_t largest = 12'000;
    std::vector<std::string> texts;
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator (KALVO_TEST_DATA))
        if (entry.path ().extension () == ".mps" && entry.file_size () <= largest)
            paths.push_back (entry.path ());
    std::sort (paths.begin (), paths.end ());
    for (const auto& path : paths)
        texts.push_back (files::load (path));
    if (texts.empty ())
        throw std::runtime_error ("no instances in " KALVO_TEST_DATA);
    for (std::size_t i = paths.size (); i > 0; --i)    // half of the cases begin with everything
        texts.push_back (i % 2 ? everything_free : everything_fixed);
    return texts;
}

// ---- Mutations

std::vector<std::string> lines_of (const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream (text);
    for (std::string line; std::getline (stream, line);)
        lines.push_back (line);
    return lines;
}

std::vector<std::string> words_of (const std::string& line)
{
    std::vector<std::string> found;
    std::istringstream stream (line);
    for (std::string word; stream >> word;)
        found.push_back (word);
    return found;
}

const std::vector<std::string> types = words_of ("N L G E UP LO FX FR MI PL BV");
const std::vector<std::string> good_numbers =
    words_of ("0 -0 1e19 -1 5e-324 inf -1e30 0.1 -0.3333333333333333 123456789.12345678 1d5 +2 "
              "3.00000000000000022204 1e300");
const std::vector<std::string> odd_names =
    words_of ("5 -1e5 RHS BND * $ 'INTORG' MAX ENDATA \xC3\xA9 \xFF C1 R1 OBJ M1 "
              "name_of_more_than_eight_bytes");
const std::vector<std::string> numbers =
    words_of ("0 -0 1e308 -1e308 1e309 5e-324 1e-330 inf -Infinity nan 1e20 -1e30 0.1 "
              "1.7976931348623157e308 12345678901234567890 3.00000000000000022204 1d5 +2 +-2 0x10 . "
              "- 1e 1,5 2147483648");
const std::vector<std::string> words =
    words_of ("N L G E X UP LO FX FR MI PL BV LI UI SC up 'MARKER' 'INTORG' 'INTEND' 'SOSORG' RHS "
              "ROWS COLUMNS RANGES BOUNDS ENDATA OBJSENSE MAX MIN QUADOBJ SOS INDICATORS BND $ * x "
              "cost");
const std::vector<std::string> endings{"x", "0", "9",        " ", "  x", "\t",
                                       "$", "'", "\xC3\xA9", "-", "e5",  "longer_than_eight"};
const std::vector<std::string> extra_lines = lines_of (
    "\n   \n* comment\nENDATA\nROWS\nRHS\nRANGES\nBOUNDS\n"
    "OBJSENSE MAX\nOBJSENSE\n    MAX\n    M 'MARKER' 'INTORG'\n    M 'MARKER' 'INTEND'\n N free\n E balance\n"
    " UP BND x -5\n FR BND y\n    RHS limit 7\n    RNG balance -3\nQSECTION\n\x1a\n    x cost 1\n BV b");

class Mutator {
public:
    explicit Mutator (std::uint64_t seed) : random_ (seed) {}

    std::size_t below (std::size_t count) { return static_cast<std::size_t> (random_ () % count); }

    std::string mutate (const std::string& text)
    {
        std::vector<std::string> lines = lines_of (text);
        for (std::size_t times = below (5); times > 0; --times)
            change_meaning (lines);
        for (std::size_t times = below (4) == 0 ? 0 : 1 + below (2); times > 0; --times)
            mutate (lines);
        std::string result;
        for (const std::string& line : lines)
            result += line + (below (2000) == 0 ? "\r\n" : "\n");
        if (below (8) == 0)
            mutate_bytes (result);
        return result;
    }

private:
    const std::string& any (const std::vector<std::string>& of) { return of[below (of.size ())]; }

    // A change after which most files can still be read: a name everywhere, a number, a type of row or bound.
    void change_meaning (std::vector<std::string>& lines)
    {
        const std::vector<std::string> found = words_of (any (lines));
        if (found.empty ())
            return;
        const std::string& old = any (found);
        if (std::isdigit (static_cast<unsigned char> (old.back ())) && below (3) != 0)
            return replace_word (any_line (lines), old, any (good_numbers));
        if (std::find (types.begin (), types.end (), old) != types.end ())
            return replace_word (any_line (lines), old, any (types));
        const std::string& name = any (odd_names);
        for (std::string& line : lines)
            if (line.starts_with (' '))
                replace_word (line, old, name);
    }

    std::string& any_line (std::vector<std::string>& lines) { return lines[below (lines.size ())]; }

    static void replace_word (std::string& line, const std::string& old, std::string word)
    {
        const std::size_t at = line.find (old);
        if (at == line.npos)
            return;
        word.resize (std::max (word.size (), old.size ()), ' ');
        line.replace (at, old.size (), word);
    }

    void mutate (std::vector<std::string>& lines)
    {
        if (lines.empty ())
            lines.emplace_back ("ROWS");
        const auto at = [&] { return lines.begin () + static_cast<std::ptrdiff_t> (below (lines.size ())); };
        switch (below (10)) {
        case 0:
            lines.erase (at ());
            return;
        case 1:
            lines.insert (at (), any (lines));
            return;
        case 2:
            std::swap (*at (), *at ());
            return;
        case 3:
            lines.resize (below (lines.size () + 1));
            return;
        case 4:
            move_section (lines);
            return;
        case 5:
            lines.insert (at (), any (extra_lines));
            return;
        default:
            mutate_line (*at (), lines);
        }
    }

    // A section goes to another place, with its lines or without.
    void move_section (std::vector<std::string>& lines)
    {
        const auto is_header = [] (const std::string& line) {
            return !line.empty () && line[0] != ' ' && line[0] != '*';
        };
        const auto begin = std::find_if (lines.begin () + static_cast<std::ptrdiff_t> (below (lines.size ())),
                                         lines.end (), is_header);
        if (begin == lines.end ())
            return;
        const auto end = below (3) == 0 ? begin + 1 : std::find_if (begin + 1, lines.end (), is_header);
        const std::vector<std::string> section (begin, end);
        lines.erase (begin, end);
        const auto place =
            std::find_if (lines.begin () + static_cast<std::ptrdiff_t> (below (lines.size () + 1)),
                          lines.end (), is_header);
        lines.insert (place, section.begin (), section.end ());
    }

    // Changes one word of a line, in its place: shorter words are filled up, so that columns hold.
    void mutate_line (std::string& line, const std::vector<std::string>& lines)
    {
        std::size_t begin = line.empty () ? 0 : below (line.size ());
        begin = line.find_first_not_of (" \t", begin);
        if (begin == line.npos) {
            line += any (numbers);
            return;
        }
        const std::size_t end = std::min (line.find_first_of (" \t", begin), line.size ());
        std::string word = line.substr (begin, end - begin);
        switch (below (6)) {
        case 0:
            word = any (numbers);
            break;
        case 1:
            word = any (words);
            break;
        case 2: {
            const std::vector<std::string> others = words_of (any (lines));
            word = others.empty () ? "" : any (others);
            break;
        }
        case 3:
            word += any (endings);
            break;
        case 4:
            word = any (endings) + word;
            break;
        default:
            line.insert (begin, 1 + below (4), " \t"[below (8) == 0]);
            return;
        }
        if (word.size () < end - begin)
            word.resize (end - begin, ' ');
        line.replace (begin, end - begin, word);
    }

    void mutate_bytes (std::string& text)
    {
        static constexpr std::string_view bytes = "\0\r\n\t\x1a\xEF\xBB\xBF\xFF$*'-+.eED 0"sv;
        for (std::size_t times = 1 + below (3); times > 0 && !text.empty (); --times) {
            const std::size_t at = below (text.size ());
            switch (below (4)) {
            case 0:
                text.resize (at);
                break;
            case 1:
                text[at] = bytes[below (bytes.size ())];
                break;
            case 2:
                text.insert (at, 1, bytes[below (bytes.size ())]);
                break;
            default:
                text.insert (at, below (200) == 0 ? 600'000 : 1 + below (40), bytes[below (bytes.size ())]);
            }
        }
    }

    std::mt19937_64 random_;
};

// ---- What must hold

void require (bool condition, const std::string& what)
{
    if (!condition)
        throw std::runtime_error (what);
}

void check_bounds (const klv::Bounds& bounds)
{
    for (std::size_t i = 0; i < bounds.key.size (); ++i) {
        const bool has_lower = std::isfinite (bounds.lower[i]), has_upper = std::isfinite (bounds.upper[i]);
        const std::uint8_t key = bounds.key[i];
        require (has_lower == (key == KLV_BK_LO || key == KLV_BK_FX || key == KLV_BK_RA),
                 "a lower bound against its key");
        require (has_upper == (key == KLV_BK_UP || key == KLV_BK_FX || key == KLV_BK_RA),
                 "an upper bound against its key");
        require (has_lower || bounds.lower[i] == -klv::infinity, "an absent lower bound");
        require (has_upper || bounds.upper[i] == klv::infinity, "an absent upper bound");
        require (key != KLV_BK_FX || bounds.lower[i] == bounds.upper[i], "a fixed bound");
    }
}

void check_names (const klv::Names& names, std::int32_t count, std::string also)
{
    std::set<std::string> seen{std::move (also)};
    for (std::int32_t i = 0; i < count; ++i)
        require (!names.get (i).empty () && seen.insert (names.get (i)).second,
                 "a name that is missing or double");
}

void check_sound (const klv::Problem& p)
{
    check_bounds (p.variable);
    check_bounds (p.constraint);
    check_names (p.variable_name, p.variables (), "");
    check_names (p.constraint_name, p.constraints (), p.objective_name);
    require (std::isfinite (p.constant), "the constant");
    require (std::all_of (p.cost.begin (), p.cost.end (), [] (double c) { return std::isfinite (c); }),
             "a cost");
    require (std::count (p.integer.begin (), p.integer.end (), KLV_VAR_INTEGER) == p.integers,
             "the number of integers");
    std::vector<std::int32_t> last (static_cast<std::size_t> (p.constraints ()), -1);
    for (std::int32_t j = 0; j < p.variables (); ++j) {
        const klv::Column column = p.matrix.column (j);
        for (std::size_t k = 0; k < column.rows.size (); ++k) {
            const std::int32_t i = column.rows[k];
            require (i >= 0 && i < p.constraints () && std::isfinite (column.values[k]), "an entry");
            require (std::exchange (last[static_cast<std::size_t> (i)], j) != j, "an entry twice");
        }
    }
}

void check_fault (const files::Task& task, KLVrescode_t code, const std::string& path,
                  const std::string& text)
{
    require (code == KLV_RES_FILE_SYNTAX || code == KLV_RES_FILE_SECTION_UNSUPPORTED,
             "code " + std::to_string (code));
    const std::string error = task.last_error ();
    require (error.starts_with (path + ":"), "a fault without the file: " + error);
    const long line = std::atol (error.c_str () + path.size () + 1);
    require (line >= 1 && line <= std::max<long> (1, std::count (text.begin (), text.end (), '\n') + 1),
             "a fault without its line: " + error);
    require (task.printed.ends_with (": " + error + "\n"), "a fault that was not printed");
    require (task.problem ().variables () == 0 && task.problem ().constraints () == 0,
             "a problem after a fault");
}

enum class Outcome { refused, same, not_written };

Outcome run (const std::string& text, const files::Folder& folder, Mutator& choice)
{
    const std::string path = folder / "f.mps";
    files::save (path, text);
    files::Task task;
    task.set_format (static_cast<std::int32_t> (std::min<std::size_t> (choice.below (6), 2)));
    if (const KLVrescode_t code = KLV_readdata (task, path.c_str ())) {
        check_fault (task, code, path, text);
        return Outcome::refused;
    }
    check_sound (task.problem ());

    const auto format = static_cast<std::int32_t> (choice.below (3));
    task.set_format (format);
    const std::string copy = folder / "copy.mps";
    if (const KLVrescode_t code = KLV_writedata (task, copy.c_str ())) {
        require (code == KLV_RES_FILE_CANNOT_HOLD && !task.last_error ().empty (),
                 "writing: " + task.last_error ());
        require (!std::filesystem::exists (copy), "a file that could not be written");
        return Outcome::not_written;
    }
    files::Task again;
    again.set_format (format);
    require (KLV_readdata (again, copy.c_str ()) == KLV_RES_OK,
             "reading what was written: " + again.last_error ());
    const auto difference = files::difference (task.problem (), again.problem ());
    require (!difference, "after writing and reading: " + difference.value_or (""));
    std::filesystem::remove (copy);
    return Outcome::same;
}

}

int main (int argc, char** argv)
{
    const long count = argc > 1 ? std::atol (argv[1]) : 10'000;
    const long first = argc > 2 ? std::atol (argv[2]) : 0;
    const std::vector<std::string> texts = seeds ();
    const files::Folder folder;
    long outcomes[3] = {}, failed = 0;
    for (long i = first; i < first + count; ++i) {
        Mutator mutator (static_cast<std::uint64_t> (i));
        const std::string text = mutator.mutate (texts[mutator.below (texts.size ())]);
        try {
            ++outcomes[static_cast<int> (run (text, folder, mutator))];
        } catch (const std::exception& fault) {
            ++failed;
            std::printf ("case %ld: %s\n", i, fault.what ());
            files::save ("fuzz_" + std::to_string (i) + ".mps", text);
        }
    }
    std::printf ("%ld files refused with their line, %ld the same after writing, %ld that the chosen form "
                 "cannot hold\n",
                 outcomes[0], outcomes[1], outcomes[2]);
    std::printf ("%ld passed, %ld failed\n", count - failed, failed);
    return failed == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
