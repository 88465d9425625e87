// fuzz_files COUNT [FIRST]: reads COUNT mutated problem files. Each must give a fault that names its line, or
// a sound problem that is the same after it was written and read again. Case number i is the same in every
// run; a failing one is kept in the working folder and is run alone by `fuzz_files 1 i`.
#include "tests/fuzz/random.h"
#include "tests/support/problem_file.h"

#include <set>

namespace {

using fuzz::pieces_of, fuzz::require;

// ---- Files to begin with: a little of everything in free MPS, LP, CBF, SDPA and JSON, and small published ones in fixed MPS

const std::string everything = files::lines (
    "* a comment|NAME little problem|OBJSENSE|    MAX|OBJNAME|    cost|ROWS| N other| N cost| L limit|"
    " G need| E balance| E window|COLUMNS|    x cost 1.5 limit 2|    x need -1e-3 balance +7|"
    "    M1 'MARKER' 'INTORG'|    n cost -2 window 1|    b limit .5 other 4D1|    M2 'MARKER' 'INTEND'|"
    "    y window 1 balance -1|    z need 1|    w limit 3|RHS|    RHS cost -12.5 limit 100|"
    "    RHS need 1 balance 0|    RHS window -4|RANGES|    RNG limit 40 need 7|    RNG window -2.5|BOUNDS|"
    " UP BND x 40| LO BND x -3| LI BND n 2| UI BND n 9| BV BND b| MI BND y| UP BND y -1| FR BND z|"
    " FX BND w 2.25|QUADOBJ|    x x 2 n -1|    y y 5e-324|QCMATRIX  limit|    x x .5|    w x 1e-3|    x w "
    "1e-3|"
    "QSECTION other|    x y 3 z 0|ENDATA|");

const std::string everything_in_lp = files::lines (
    "\\ Problem name: little|Maximize| cost: 1.5 x - 2 n + 0 b|"
    "  + [ -2 x ^ 2 + n * b|  - 0 b*b ] / 2 + 12.5|Subject To| limit: -40 <= 2 x + .5 b|"
    "  + 3 w + [ .1 x ^ 2 + 2e-3 w * x ] <= 100| need: -1e-3 x + z >= 1| balance: 7 x - y = 0| 3 >= x - n >= "
    "-4| none: 0 >= -3|"
    " sum: n + x + 2 x <= 9|Bounds| -3 <= x <= 40| n >= 2| -inf <= y <= -1| z free| w = 2.25|Generals| n x|"
    "Binaries| b|End|");

const std::string everything_in_cbf = files::lines (
    "VER|4|POWCONES|1 2|2|1|3|OBJSENSE|MAX|PSDVAR|1|2|VAR|7 5|L+ 1|F 1|L- 1|L= 1|Q 3|INT|1|1|CON|9 5|L- 1|"
    "@0:POW 3|L= 1|F 1|EXP 3|PSDCON|1|2|OBJFCOORD|1|0 1 0 4|OBJACOORD|2|1 2.5|0 -1|OBJBCOORD|7|FCOORD|2|"
    "0 0 1 1 3|2 0 0 1 5|ACOORD|3|4 1 6|8 0 2|0 6 9|BCOORD|3|0 4|4 -2|5 8|HCOORD|2|0 2 0 1 3|0 2 1 1 11|"
    "DCOORD|1|0 1 0 -1|");

const std::string everything_in_sdpa =
    files::lines ("\"a title|2 = m|3 = blocks|(2, 1, -2)|{1.5,|+2}|0 1 1 2 3|1 1 2 1 4 1 2 1 1 6|2,3,2,2,7|"
                  "0 3 1 1 -5 * behind|0 2 1 1 8|");

std::vector<std::string> seeds ()
{
    constexpr std::uintmax_t largest = 12'000;
    std::set<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::recursive_directory_iterator (KALVO_TEST_DATA))
        if (entry.path ().extension () == ".mps" && entry.file_size () <= largest)
            paths.insert (entry.path ());
    require (!paths.empty (), "no instances in " KALVO_TEST_DATA);
    std::vector<std::string> texts;
    for (const auto& path : paths)
        texts.insert (texts.end (),
                      {files::load (path), everything, everything_in_lp, everything_in_cbf,
                       everything_in_sdpa, everything_in_sdpa + "*INTEGER\n*2\n", files::json_example ()});
    return texts;
}

// ---- Mutations

const auto types = pieces_of ("N L G E UP LO FX FR MI PL BV", ' ');
const auto numbers =
    pieces_of ("0 -0 1e19 -1 5e-324 inf -1e30 0.1 -0.3333333333333333 1d5 +2 3.000000000000000222", ' ');
const auto odd_words = pieces_of (
    "<= >= = : [ ] ^ ^2 / /2 * free st Bounds End Generals -> 1e309 1e-330 nan 12345678901234567890 +-2 0x10 "
    ". "
    "- 1e 1,5 X LI UI SC up 'MARKER' 'INTORG' 'INTEND' 'SOSORG' RHS ROWS COLUMNS RANGES BOUNDS ENDATA "
    "OBJSENSE MAX QUADOBJ QMATRIX QCMATRIX $ * x cost 5 -1e5 C1 R1 OBJ M1 \xC3\xA9 \xFF longer_than_eight",
    ' ');
const auto extra_lines = pieces_of (
    "|   |* comment|ENDATA|ROWS|RHS|RANGES|BOUNDS|OBJSENSE MAX|OBJSENSE|    "
    "MAX|QSECTION|QUADOBJ|QMATRIX|QCMATRIX limit|    x y 2|    y x 2|"
    "    M 'MARKER' 'INTORG'|    M 'MARKER' 'INTEND'| N free| UP BND x -5| FR BND y| BV b|    RHS limit 7|"
    "    RNG balance -3|\x1a|    x cost 1",
    '|');

class Mutator : public fuzz::Random {
public:
    using Random::Random;

    std::string mutate (const std::string& text)
    {
        std::vector<std::string> lines = pieces_of (text, '\n');
        for (std::size_t times = below (5); times > 0; --times)
            change_meaning (lines);
        for (std::size_t times = below (3); times > 0; --times)
            damage (lines);
        std::string result;
        for (const std::string& line : lines)
            result += line + (one_in (2000) ? "\r\n" : "\n");
        if (one_in (8))
            damage_bytes (result);
        return result;
    }

private:
    void damage_bytes (std::string& text)
    {
        static constexpr std::string_view bytes ("\0\r\n\t\x1a\xEF\xBB\xBF\xFF$*'-+.eED 0", 19);
        for (std::size_t times = 1 + below (3); times > 0 && !text.empty (); --times) {
            const std::size_t at = below (text.size ()), kind = below (4);
            const char byte = bytes[below (bytes.size ())];
            if (kind == 0)
                text.resize (at);
            else if (kind == 1)
                text[at] = byte;
            else
                text.insert (at, one_in (2000) ? 20'000'000 : 1 + below (20), byte);
        }
    }

    std::string any_word (const std::string& line)
    {
        std::vector<std::string> found = pieces_of (line, ' ');
        std::erase (found, "");
        return found.empty () ? "x" : any (found);
    }

    // In its place: shorter words are filled up, so that columns hold.
    static void replace (std::string& line, const std::string& old, std::string word)
    {
        word.resize (std::max (word.size (), old.size ()), ' ');
        if (const std::size_t at = line.find (old); at != line.npos)
            line.replace (at, old.size (), word);
    }

    // A change after which most files can still be read: a number, a type of row or bound, a name everywhere.
    void change_meaning (std::vector<std::string>& lines)
    {
        const std::string old = any_word (any (lines)), &word = any (odd_words);
        const bool is_type = std::ranges::count (types, old) > 0;
        if (is_type || (std::isdigit (static_cast<unsigned char> (old.back ())) && !one_in (3)))
            return replace (lines[below (lines.size ())], old, any (is_type ? types : numbers));
        for (std::string& line : lines)
            if (line.starts_with (' '))
                replace (line, old, word);
    }

    void damage (std::vector<std::string>& lines)
    {
        lines.emplace_back ();
        const std::size_t kind = below (8), other = below (lines.size ());
        std::string& line = lines[below (lines.size ())];
        const std::string word = any_word (line), copy = lines[other];
        const auto place = lines.begin () + static_cast<std::ptrdiff_t> (other);
        if (kind == 0)
            lines.erase (place);
        else if (kind == 1)
            lines.insert (place, one_in (2) ? std::string (line) : any (extra_lines));
        else if (kind == 2)
            std::swap (line, *place);
        else if (kind == 3 && one_in (2))
            lines.erase (place, lines.end ());
        else if (kind < 7)
            replace (line, word,
                     std::vector{any_word (copy), any (odd_words), any (odd_words) + word,
                                 word + any (odd_words)}[below (4)]);
        else
            line.insert (below (line.size () + 1), 1 + below (4), " \t+:"[one_in (8) ? below (4) : 0]);
    }
};

// ---- What must hold

void check_fault (const files::Task& task, KLVrescode_t code, const std::string& path)
{
    const std::string error = task.last_error ();
    require (code == KLV_RES_FILE_SYNTAX || code == KLV_RES_FILE_SECTION_UNSUPPORTED, "code of " + error);
    require (error.starts_with (path + ":"), "a fault without the file: " + error);
    const long line = std::atol (error.c_str () + path.size () + 1);
    const std::string text = files::load (path);
    const auto lines = std::count (text.begin (), text.end (), '\n') + 1;
    require (line >= 1 && line <= lines, "a line of none: " + error);
    require (task.printed.ends_with (": " + error + "\n"), "a fault that was not printed");
    require (task.problem ().variables () == 0 && task.problem ().constraints () == 0,
             "a problem after a fault");
}

const char* run (const std::string& text, const files::Folder& folder, Mutator& choice)
{
    const bool json = text.starts_with ('{');
    const bool cbf = text.starts_with ("VER"), sdpa = text.starts_with ('"');
    const std::string path = folder / (json                      ? "f.json"
                                       : text.starts_with ('\\') ? "f.lp"
                                       : cbf                     ? "f.cbf"
                                       : sdpa                    ? "f.dat-s"
                                                                 : "f.mps");
    const std::string copy = folder / (choice.below (4) == 0 ? "copy.mps.gz" : "copy.mps");
    files::save (path, text);
    files::Task task, again;
    if (path.ends_with (".mps"))
        task.set_format (static_cast<std::int32_t> (std::min<std::size_t> (choice.below (6), 2)));
    if (const KLVrescode_t code = KLV_readdata (task, path.c_str ())) {
        check_fault (task, code, path);
        return "refused with their line";
    }
    const klv::Problem& problem = task.problem ();
    require (std::ranges::count (problem.integer, KLV_VAR_INTEGER) == problem.integers,
             "the number of integers");

    // JSON alone holds bounds beyond the threshold.
    const bool either = choice.below (2) == 0;
    const auto format = cbf && either         ? std::int32_t{KLV_FILE_CBF}
                        : sdpa && either      ? std::int32_t{KLV_FILE_SDPA}
                        : json || cbf || sdpa ? std::int32_t{KLV_FILE_JSON}
                                              : static_cast<std::int32_t> (choice.below (5));
    task.set_format (format);
    again.set_format (format);
    if (const KLVrescode_t code = KLV_writedata (task, copy.c_str ())) {
        require (code == KLV_RES_FILE_CANNOT_HOLD, "writing: " + task.last_error ());
        require (task.last_error ().find ("of the same name") == std::string::npos, "two items of one name");
        require (!std::filesystem::exists (copy), "a file that could not be written");
        return "that the chosen form cannot hold";
    }
    require (KLV_readdata (again, copy.c_str ()) == KLV_RES_OK, "what was written: " + again.last_error ());
    const auto difference = model::difference (problem, again.problem ());
    require (!difference, "after writing and reading: " + difference.value_or (""));
    std::filesystem::remove (copy);
    return "the same after writing and reading";
}

}

int main (int argc, char** argv)
{
    const std::vector<std::string> texts = seeds ();
    const files::Folder folder;
    return fuzz::run_cases (argc, argv, [&] (long i) {
        Mutator mutator (static_cast<std::uint64_t> (i));
        const std::string text = mutator.mutate (texts[mutator.below (texts.size ())]);
        try {
            return run (text, folder, mutator);
        } catch (const std::exception&) {
            files::save ("fuzz_" + std::to_string (i), text);
            throw;
        }
    });
}
