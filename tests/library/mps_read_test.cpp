// Reading MPS files: what is understood, what is refused and where, what is warned of.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <vector>

using files::describe;
using files::Folder;
using testing::TestWithParam;

namespace {

// A small file; a case replaces sections of it.
struct Sections {
    std::string before = "NAME T\n";
    std::string rows = " N c\n L r1\n G r2\n E r3\n";
    std::string columns = "    x c 1 r1 2\n    y r2 3 r3 4\n";
    std::string rhs = "    RHS r1 10 r2 20\n    RHS r3 30\n";
    std::string after = {};    // RANGES and BOUNDS with their headers
    std::string end = "ENDATA\n";

    std::string text () const
    {
        return before + "ROWS\n" + rows + "COLUMNS\n" + columns + "RHS\n" + rhs + after + end;
    }
};

std::string bounds (const std::string& lines)
{
    return "BOUNDS\n" + lines;
}

std::string integer (const std::string& lines)
{
    return "    M1 'MARKER' 'INTORG'\n" + lines + "    M2 'MARKER' 'INTEND'\n";
}

struct Reading {
    Folder folder;
    std::string path = folder / "f.mps";
    files::Task task;
    KLVrescode_t code;

    explicit Reading (const std::string& text, std::int32_t format = KLV_FILE_BY_EXTENSION)
    {
        files::save (path, text);
        task.set_format (format);
        code = KLV_readdata (task, path.c_str ());
    }
};

template <class Case>
concept Named = requires (const Case& c) { c.what; };

template <Named Case>
std::ostream& operator<< (std::ostream& stream, const Case& c)
{
    return stream << c.what;
}

// ---- What is understood

struct Meaning {
    const char* what;
    std::string text;
    std::string problem;    // of it, as describe () has it
    std::int32_t format = KLV_FILE_BY_EXTENSION;
};

class MpsMeaning : public TestWithParam<Meaning> {};

TEST_P (MpsMeaning, IsRead)
{
    const Reading reading (GetParam ().text, GetParam ().format);
    ASSERT_EQ (reading.code, KLV_RES_OK) << reading.task.last_error ();
    EXPECT_EQ (describe (reading.task.problem ()), GetParam ().problem);
}

const char* const plain = "min 0: x LO 0, 1, r1 2; y LO 0, 0, r2 3, r3 4; r1 UP 10; r2 LO 20; r3 FX 30;";

std::string with_crlf (std::string text)
{
    for (std::size_t at = 0; (at = text.find ('\n', at)) != text.npos; at += 2)
        text.replace (at, 1, "\r\n");
    return text;
}

INSTANTIATE_TEST_SUITE_P (
    Lines, MpsMeaning,
    testing::Values (
        Meaning{"plain", Sections{}.text (), plain},
        Meaning{"carriage returns", with_crlf (Sections{}.text ()), plain},
        Meaning{"no newline at the end", Sections{.end = "ENDATA"}.text (), plain},
        Meaning{"tabs between fields", Sections{.columns = "\tx\tc\t1\tr1\t2\n \ty r2\t3  r3 4\t\n"}.text (),
                plain},
        Meaning{"byte order mark", "\xEF\xBB\xBF" + Sections{}.text (), plain},
        Meaning{"comments and empty lines",
                "* first\n\n" +
                    Sections{.columns = "*x c 5\n    x c 1 r1 2\n   \t\n* y\n    y r2 3 r3 4\n"}.text (),
                plain},
        Meaning{"text after the end that says nothing", Sections{}.text () + "\n* the end\n  \n", plain},
        Meaning{"no NAME", Sections{.before = ""}.text (), plain},
        Meaning{"keywords in small letters",
                "name t\nrows\n n c\n l r1\ncolumns\n    x c 1 r1 2\nbounds\n up b x 4\nendata\n",
                "min 0: x RA 0 4, 1, r1 2; r1 UP 0;"},
        Meaning{"columns without entries in the matrix", "ROWS\n N c\nCOLUMNS\n    x c 0\nENDATA\n",
                "min 0: x LO 0, 0;"},
        Meaning{"no columns", "ROWS\n N c\n E r\nCOLUMNS\nENDATA\n", "min 0: r FX 0;"},
        Meaning{"zeros stay entries", Sections{.columns = "    x r1 0 r2 -0\n"}.text (),
                "min 0: x LO 0, 0, r1 0, r2 -0; r1 UP 10; r2 LO 20; r3 FX 30;"},
        Meaning{
            "numbers of every form",
            Sections{.columns = "    x c +1 r1 .5\n    x r2 1D+02 r3 -5.\n    y r1 1.5e-3 r2 2d0\n"}.text (),
            "min 0: x LO 0, 1, r1 0.5, r2 100, r3 -5; y LO 0, 0, r1 0.0015, r2 2; r1 UP 10; r2 LO 20; r3 FX "
            "30;"},
        Meaning{"names that look like numbers or words",
                "ROWS\n N 1\n E ROWS\nCOLUMNS\n    RHS 1 2 ROWS 3\nRHS\n    RHS ROWS 4\nBOUNDS\n UP 5 RHS "
                "6\nENDATA\n",
                "min 0: RHS RA 0 6, 2, ROWS 3; ROWS FX 4;"}));

INSTANTIATE_TEST_SUITE_P (
    Objective, MpsMeaning,
    testing::Values (
        Meaning{"sense on the next line", "OBJSENSE\n    MAX\n" + Sections{}.text (),
                "max" + std::string (plain + 3)},
        Meaning{"sense on the same line", "OBJSENSE MAXIMIZE\n" + Sections{}.text (),
                "max" + std::string (plain + 3)},
        Meaning{"minimise said", Sections{.end = "OBJSENSE\n  min\nENDATA\n"}.text (), plain},
        Meaning{"constant", Sections{.rhs = "    RHS c -5 r1 1\n"}.text (),
                "min 5: x LO 0, 1, r1 2; y LO 0, 0, r2 3, r3 4; r1 UP 1; r2 LO 0; r3 FX 0;"},
        Meaning{"objective named",
                "OBJNAME\n    d\n" + Sections{.rows = " N c\n N d\n L r1\n",
                                              .columns = "    x c 1 r1 2\n    x d 7\n",
                                              .rhs = ""}
                                         .text (),
                "min 0: x LO 0, 7, c 1, r1 2; c FR; r1 UP 0;"},
        Meaning{"free row kept",
                Sections{.rows = " L r1\n N c\n N f\n", .columns = "    x c 1 r1 2\n    x f 7\n", .rhs = ""}
                    .text (),
                "min 0: x LO 0, 1, r1 2, f 7; r1 UP 0; f FR;"},
        Meaning{"no objective", Sections{.rows = " L r1\n", .columns = "    x r1 2\n", .rhs = ""}.text (),
                "min 0: x LO 0, 0, r1 2; r1 UP 0;"}));

const std::string sides = "    RHS r1 10 r2 20\n    RHS r3 30\n";

std::string ranged (const std::string& r1, const std::string& r2, const std::string& r3)
{
    return "min 0: x LO 0, 1, r1 2; y LO 0, 0, r2 3, r3 4; r1 " + r1 + "; r2 " + r2 + "; r3 " + r3 + ";";
}

INSTANTIATE_TEST_SUITE_P (
    RangesAndSides, MpsMeaning,
    testing::Values (
        Meaning{"no set names", Sections{.rhs = "    r1 10 r2 20\n    r3 30\n"}.text (), plain},
        Meaning{"a line without set name belongs to the set",
                Sections{.rhs = "    r1 10\n    RHS r2 20 r3 30\n"}.text (), plain},
        Meaning{"second set", Sections{.rhs = sides + "    B r1 99 r1 98\n"}.text (), plain},
        Meaning{"positive ranges", Sections{.after = "RANGES\n    R r1 4 r2 5\n    R r3 6\n"}.text (),
                ranged ("RA 6 10", "RA 20 25", "RA 30 36")},
        Meaning{"negative ranges", Sections{.after = "RANGES\n    R r1 -4 r2 -5\n    R r3 -6\n"}.text (),
                ranged ("RA 6 10", "RA 20 25", "RA 24 30")},
        Meaning{"zero ranges", Sections{.after = "RANGES\n    R r1 0 r2 0\n    R r3 0\n"}.text (),
                ranged ("RA 10 10", "RA 20 20", "FX 30")},
        Meaning{"infinite range", Sections{.after = "RANGES\n    R r1 1e30 r2 inf\n"}.text (),
                ranged ("UP 10", "LO 20", "FX 30")},
        Meaning{"ranges before sides",
                "ROWS\n N c\n L r1\nRANGES\n    R r1 4\nRHS\n    RHS r1 10\nCOLUMNS\n    x r1 1\nENDATA\n",
                "min 0: x LO 0, 0, r1 1; r1 RA 6 10;"},
        Meaning{"infinite sides", Sections{.rhs = "    RHS r1 inf r2 -1e30\n"}.text (),
                ranged ("FR", "FR", "FX 0")}));

std::string bounded (const std::string& x)
{
    return "min 0: x " + x + ", 1, r1 2; y LO 0, 0, r2 3, r3 4; r1 UP 10; r2 LO 20; r3 FX 30;";
}

Meaning bound (const char* what, const std::string& lines, const std::string& x)
{
    return {what, Sections{.after = bounds (lines)}.text (), bounded (x)};
}

Meaning integer_bound (const char* what, const std::string& lines, const std::string& x)
{
    const std::string columns = integer ("    x c 1 r1 2\n") + "    y r2 3 r3 4\n";
    return {what, Sections{.columns = columns, .after = lines.empty () ? "" : bounds (lines)}.text (),
            bounded (x)};
}

INSTANTIATE_TEST_SUITE_P (
    Bounds, MpsMeaning,
    testing::Values (
        bound ("upper", " UP B x 4\n", "RA 0 4"), bound ("lower", " LO B x -4\n", "LO -4"),
        bound ("both", " UP B x 4\n LO B x 2\n", "RA 2 4"), bound ("fixed", " FX B x 4\n", "FX 4"),
        bound ("equal is not fixed", " LO B x 4\n UP B x 4\n", "RA 4 4"), bound ("free", " FR B x\n", "FR"),
        bound ("free with a number", " FR B x 0\n", "FR"), bound ("minus infinity", " MI B x\n", "FR"),
        bound ("minus infinity and upper", " MI B x\n UP B x 4\n", "UP 4"),
        bound ("plus infinity", " PL B x\n", "LO 0"), bound ("negative upper alone", " UP B x -4\n", "UP -4"),
        bound ("negative upper with lower after it", " UP B x -4\n LO B x 0\n", "RA 0 -4"),
        bound ("upper of zero alone", " UP B x 0\n", "RA 0 0"), bound ("binary", " BV B x\n", "int RA 0 1"),
        bound ("integer bounds", " LI B x 2\n UI B x 7\n", "int RA 2 7"),
        bound ("integer upper alone", " UI B x 7\n", "int RA 0 7"),
        bound ("no set name", " UP x 4\n", "RA 0 4"), bound ("no set name and no number", " FR x\n", "FR"),
        bound ("no set name but a number", " FR x 0\n", "FR"),
        bound ("second set", " UP B x 4\n UP C x 5\n FX C x 6\n", "RA 0 4"),
        bound ("infinite", " LO B x -Inf\n UP B x 1e30\n", "FR"),
        integer_bound ("integer without bounds", "", "int RA 0 1"),
        integer_bound ("integer with a lower bound", " LO B x 0\n", "int LO 0"),
        integer_bound ("integer with plus infinity", " PL B x\n", "int LO 0"),
        integer_bound ("integer and free", " FR B x\n", "int FR"),
        integer_bound ("integer and negative upper", " UP B x -1\n", "int UP -1")));

INSTANTIATE_TEST_SUITE_P (
    FixedForm, MpsMeaning,
    testing::Values (Meaning{"names with blanks",
                             "NAME          MY PROBLEM\n"
                             "ROWS\n"
                             " N  THE COST\n"
                             " L  ROW 1\n"
                             "COLUMNS\n"
                             "    A B       THE COST           1.5   ROW 1               -2\n"
                             "    MARK 1    'MARKER'                 'INTORG'\n"
                             "    Y         ROW 1                3   $ a comment\n"
                             "    MARK 2    'MARKER'                 'INTEND'\n"
                             "RHS\n"
                             "              ROW 1               10\n"
                             "BOUNDS\n"
                             " UP MY BND    Y                   4\n"
                             " FR MY BND    A B\n"
                             "ENDATA\n",
                             "min 0: A B FR, 1.5, ROW 1 -2; Y int RA 0 4, 0, ROW 1 3; ROW 1 UP 10;"},
                     Meaning{"names with blanks found late",
                             "ROWS\n N  c\n L  r\nCOLUMNS\n    x         c                    1\n"
                             "RHS\n    MY SET    r                    5\nENDATA\n",
                             "min 0: x LO 0, 1; r UP 5;"},
                     Meaning{"three words in a name, forced",
                             "ROWS\n N  c\n L  r\nCOLUMNS\n    x r 7     c                    1\nENDATA\n",
                             "min 0: x r 7 LO 0, 1; r UP 0;", KLV_FILE_FIXED_MPS},
                     Meaning{
                         "a number longer than its field",
                         "ROWS\n N  A C\nCOLUMNS\n    x         A C       0.3333333333333333148\nENDATA\n",
                         "min 0: x LO 0, 0.333333;"}));

TEST (MpsMeaningOfNames, BytesAreKept)
{
    const Reading reading ("NAME  a b\tc \nROWS\n N c\n L r\xFF\nCOLUMNS\n    \xC3\xBC* c 1\nENDATA\n");
    ASSERT_EQ (reading.code, KLV_RES_OK) << reading.task.last_error ();
    EXPECT_EQ (reading.task.problem ().name, "a b\tc");
    EXPECT_EQ (reading.task.problem ().objective_name, "c");
    EXPECT_EQ (reading.task.problem ().constraint_name.get (0), "r\xFF");
    EXPECT_EQ (reading.task.problem ().variable_name.get (0), "\xC3\xBC*");
}

// ---- What is refused, with line and cause

struct Refusal {
    const char* what;
    std::string text;
    int line;
    const char* cause;
    KLVrescode_t code = KLV_RES_FILE_SYNTAX;
    std::int32_t format = KLV_FILE_BY_EXTENSION;
};

class MpsRefusal : public TestWithParam<Refusal> {};

TEST_P (MpsRefusal, NamesLineAndCause)
{
    Reading reading (GetParam ().text, GetParam ().format);
    EXPECT_EQ (reading.code, GetParam ().code);
    const std::string error = reading.task.last_error ();
    const std::string where = "f.mps:" + std::to_string (GetParam ().line) + ": ";
    EXPECT_PRED_FORMAT2 (testing::IsSubstring, where, error);
    EXPECT_PRED_FORMAT2 (testing::IsSubstring, std::string (GetParam ().cause), error);
    EXPECT_PRED_FORMAT2 (testing::IsSubstring, std::string (GetParam ().cause), reading.task.printed);
    EXPECT_EQ (describe (reading.task.problem ()), "min 0:");
    EXPECT_TRUE (reading.task.problem ().name.empty ());
}

INSTANTIATE_TEST_SUITE_P (
    Frame, MpsRefusal,
    testing::Values (
        Refusal{"empty file", "", 1, "ends without ENDATA"},
        Refusal{"cut file", Sections{.end = ""}.text (), 12, "ends without ENDATA"},
        Refusal{"text after the end", Sections{}.text () + " x", 14, "text after ENDATA"},
        Refusal{"unknown section", "NAME T\nROWZ\n", 2, "unknown section \"ROWZ\""},
        Refusal{"data before sections", "    x c 1\n", 1, "data before the first section"},
        Refusal{"text behind a section", "ROWS junk\n", 1, "text after the section name ROWS"},
        Refusal{"section twice", "ROWS\n N c\nROWS\n", 3, "section ROWS comes twice"},
        Refusal{"no ROWS", "NAME\nCOLUMNS\n", 2, "COLUMNS comes without ROWS"},
        Refusal{"no COLUMNS", "ROWS\n N c\nENDATA\n", 3, "ENDATA comes without COLUMNS"},
        Refusal{"BOUNDS before COLUMNS", "ROWS\n N c\nBOUNDS\n", 3, "BOUNDS comes without COLUMNS"},
        Refusal{"NAME late", "ROWS\n N c\nNAME x\n", 3, "NAME belongs before ROWS"},
        Refusal{"no sense", "OBJSENSE\nROWS\n", 2, "OBJSENSE without MIN or MAX"},
        Refusal{"wrong sense", "OBJSENSE\n    UPWARDS\n", 2, "\"UPWARDS\" is no objective sense"},
        Refusal{"two senses", "OBJSENSE MAX\n    MIN\n", 2, "second objective sense"},
        Refusal{"unknown objective", "OBJNAME d\nROWS\n N c\nCOLUMNS\n", 4, "no N row has the name \"d\""},
        Refusal{"quadratic objective", Sections{.end = "QUADOBJ\n    x x 1\nENDATA\n"}.text (), 13,
                "section QUADOBJ is not supported", KLV_RES_FILE_SECTION_UNSUPPORTED},
        Refusal{"special ordered sets", Sections{.end = "SOS\nENDATA\n"}.text (), 13,
                "section SOS is not supported", KLV_RES_FILE_SECTION_UNSUPPORTED},
        Refusal{"zero byte", std::string ("ROWS\n N c\0d\n", 12), 2, "zero byte"},
        Refusal{"zero byte in a section", std::string ("NAME a\0b\n", 9), 1, "zero byte"},
        Refusal{"control character", "ROWS\n N c\a\n", 2, "control character"},
        Refusal{"carriage returns alone", "ROWS\r N c\rCOLUMNS\r", 1, "control character, of code 13"},
        Refusal{"UTF-16", "\xFF\xFEN", 1, "UTF-16"},
        Refusal{"line without end", "NAME\n*" + std::string (600000, 'x'), 2, "line is longer"}));

Refusal column_fault (const char* what, const std::string& lines, int line, const char* cause)
{
    return {what, Sections{.columns = lines}.text (), 7 + line, cause};
}

INSTANTIATE_TEST_SUITE_P (
    RowsAndColumns, MpsRefusal,
    testing::Values (
        Refusal{"type of row", "ROWS\n N c\n X r\n", 3, "\"X\" is no type of row"},
        Refusal{"row without a name", "ROWS\n N\n", 2, "a type and a name"},
        Refusal{"row twice", "ROWS\n N c\n L c\n", 3, "a second row \"c\""},
        column_fault ("unknown row", "    x c 1 r1 2\n    y r9 3\n", 2, "unknown row \"r9\" in COLUMNS"),
        column_fault ("column split in two", "    x c 1\n    y c 2\n    x r1 3\n", 3,
                      "column \"x\" goes on after other columns"),
        column_fault ("entry twice in a line", "    x r1 1 r1 2\n", 1,
                      "a second entry of column \"x\" in row \"r1\""),
        column_fault ("entry twice in a column", "    x r1 1 r2 2\n    x c 1 r1 0\n", 2,
                      "a second entry of column \"x\" in row \"r1\""),
        column_fault ("cost twice", "    x c 1 r2 2\n    x c 1\n", 2,
                      "a second entry of column \"x\" in row \"c\""),
        column_fault ("words for numbers", "    x r1 abc\n", 1, "\"abc\" is not a number"),
        column_fault ("rest behind a number", "    x r1 1.5x\n", 1, "\"1.5x\" is not a number"),
        column_fault ("hexadecimal", "    x r1 0x1p3\n", 1, "\"0x1p3\" is not a number"),
        column_fault ("two signs", "    x r1 +-1\n", 1, "\"+-1\" is not a number"),
        column_fault ("comma", "    x r1 1,5\n", 1, "\"1,5\" is not a number"),
        column_fault ("exponent without digits", "    x r1 1e\n", 1, "\"1e\" is not a number"),
        column_fault ("NaN", "    x r1 nan\n", 1, "\"nan\" is not a number"),
        column_fault ("infinite", "    x r1 -inf\n", 1, "infinite number"),
        column_fault ("too large", "    x r1 1e400\n", 1, "beyond the numbers of double precision"),
        column_fault ("too small", "    x r1 1e-400\n", 1, "beyond the numbers of double precision"),
        column_fault ("row without number", "    x r1\n", 1, "one or two pairs"),
        column_fault ("half a pair", "    x r1 1 r2\n", 1, "one or two pairs"),
        column_fault ("too many fields", "    x r1 1 r2 2 r3 3\n", 1, "one or two pairs"),
        column_fault ("unknown marker", "    M 'MARKER' 'INT'\n", 1, "\"'INT'\" is no marker"),
        column_fault ("end of nothing", "    M 'MARKER' 'INTEND'\n", 1, "'INTEND' without 'INTORG'"),
        column_fault ("begun twice", "    M 'MARKER' 'INTORG'\n    M 'MARKER' 'INTORG'\n", 2,
                      "a second 'INTORG'")));

Refusal side_fault (const char* what, const std::string& lines, int line, const char* cause)
{
    return {what, Sections{.rhs = lines}.text (), 10 + line, cause};
}

Refusal range_fault (const char* what, const std::string& lines, int line, const char* cause)
{
    return {what, Sections{.after = "RANGES\n" + lines}.text (), 13 + line, cause};
}

Refusal bound_fault (const char* what, const std::string& lines, int line, const char* cause,
                     KLVrescode_t code = KLV_RES_FILE_SYNTAX)
{
    return {what, Sections{.after = bounds (lines)}.text (), 13 + line, cause, code};
}

INSTANTIATE_TEST_SUITE_P (
    SidesAndBounds, MpsRefusal,
    testing::Values (
        side_fault ("unknown row", "    RHS r1 1 r9 2\n", 1, "unknown row \"r9\" in RHS"),
        side_fault ("unknown row in another set", "    RHS r1 1\n    B r9 2\n", 2,
                    "unknown row \"r9\" in RHS"),
        side_fault ("side twice", "    RHS r1 1\n    RHS r1 1\n", 2,
                    "a second right-hand side of row \"r1\""),
        side_fault ("NaN", "    RHS r1 NaN\n", 1, "is not a number"),
        side_fault ("infinite on the wrong side", "    RHS r1 -inf\n", 1,
                    "upper bound that is minus infinity"),
        side_fault ("infinite equation", "    RHS r3 inf\n", 1, "bound that is infinite"),
        side_fault ("infinite constant", "    RHS c inf\n", 1,
                    "infinite right-hand side of the free row \"c\""),
        side_fault ("number missing", "    RHS r1\n", 1, "unknown row \"RHS\""),
        side_fault ("reads differently in fixed form", "    S r1 7    r2             5\n", 1,
                    "differently in free and in fixed form"),
        range_fault ("unknown row", "    R r9 2\n", 1, "unknown row \"r9\" in RANGES"),
        range_fault ("range twice", "    R r1 2\n    R r1 2\n", 2, "a second range of row \"r1\""),
        range_fault ("NaN", "    R r1 2 r2 nan\n", 1, "is not a number"),
        bound_fault ("unknown column", " UP B z 1\n", 1, "unknown column \"z\" in BOUNDS"),
        bound_fault ("unknown type", " UB B x 1\n", 1, "\"UB\" is no type of bound"),
        bound_fault ("semi-continuous", " SC B x 1\n", 1, "semi-continuous",
                     KLV_RES_FILE_SECTION_UNSUPPORTED),
        bound_fault ("no number", " UP x\n", 1, "needs a number"),
        bound_fault ("fraction for an integer", " UI B x 1.5\n", 1, "needs an integer"),
        bound_fault ("upper twice", " UP B x 1\n UP B x 1\n", 2, "a second upper bound of column \"x\""),
        bound_fault ("free and lower", " FR B x\n LO B x 1\n", 2, "a second lower bound of column \"x\""),
        bound_fault ("lower of infinity", " LO B x inf\n", 1, "lower bound that is infinite"),
        bound_fault ("fixed at infinity", " FX B x -inf\n", 1, "fixed at a value beyond"),
        bound_fault ("which is the set", " FR x y\n", 1, "which is the set of bounds"),
        bound_fault ("garbage behind a free bound", " FR B x z\n", 1, "\"z\" is not a number"),
        bound_fault ("too many fields", " UP B x 1 2\n", 1, "a type, a set, a column and a number")));

Refusal fixed_fault (const char* what, const std::string& line, const char* cause)
{
    return {what,
            "ROWS\n N  c\n L  r 1\nCOLUMNS\n" + line + "\nENDATA\n",
            5,
            cause,
            KLV_RES_FILE_SYNTAX,
            KLV_FILE_FIXED_MPS};
}

INSTANTIATE_TEST_SUITE_P (
    FixedForm, MpsRefusal,
    testing::Values (
        fixed_fault ("tab", "    x\t        r 1                  1", "a tab has no place"),
        fixed_fault ("name too long", "    longlonglong r 1               1",
                     "\"lo\" is outside of the fixed columns"),
        fixed_fault ("name shifted", "     x        r 1                  1",
                     "does not begin in the first column"),
        fixed_fault ("number missing", "    x         r 1", "the number in the columns 25 to 36 is missing"),
        fixed_fault ("second number missing", "    x         r 1                  1   c", "belong together"),
        fixed_fault ("text behind the columns",
                     "    x         r 1                  1   c                    1      2",
                     "outside of the fixed columns"),
        fixed_fault ("long number before a name",
                     "    x         r 1       1.23456789012345  c                1",
                     "outside of the fixed columns"),
        fixed_fault ("unknown row", "    x         r  1                 1", "unknown row \"r  1\""),
        Refusal{"free form with one bad line is no fixed form",
                "ROWS\n N cost_of_all\n L r\nCOLUMNS\n    a b       r                  1\nENDATA\n", 5,
                "one or two pairs"},
        Refusal{"fixed form, then a fault",
                "ROWS\n N  c\n L  r 1\nCOLUMNS\n    a b       r 2                1\nENDATA\n", 5,
                "unknown row \"r 2\""}));

// ---- What is warned of: each kind once, with its first line and its count

struct Caution {
    const char* what;
    std::string text;
    int line;
    const char* warning;
};

class MpsWarning : public TestWithParam<Caution> {};

TEST_P (MpsWarning, IsPrintedOnce)
{
    const Reading reading (GetParam ().text);
    ASSERT_EQ (reading.code, KLV_RES_OK) << reading.task.last_error ();
    const std::string& printed = reading.task.printed;
    EXPECT_PRED_FORMAT2 (testing::IsSubstring,
                         "f.mps:" + std::to_string (GetParam ().line) + ": " + GetParam ().warning, printed);
    EXPECT_EQ (std::count (printed.begin (), printed.end (), '\n'), 1) << printed;
}

const std::string three_integers = integer ("    x c 1\n    y c 1\n    z c 1\n");

INSTANTIATE_TEST_SUITE_P (
    Traditions, MpsWarning,
    testing::Values (
        Caution{
            "integers without bounds", Sections{.columns = three_integers}.text (), 9,
            "an integer column between markers without any bound gets the bounds 0 and 1 (\"x\" and 2 more)"},
        Caution{"negative upper bound", Sections{.after = bounds (" LO B y 1\n UP B x -1\n")}.text (), 15,
                "a negative upper bound without a lower bound takes the lower bound 0 away (\"x\")"},
        Caution{"minus infinity alone", Sections{.after = bounds (" MI B x\n")}.text (), 14,
                "MI without an upper bound"},
        Caution{"constant", Sections{.rhs = "    RHS c 1\n"}.text (), 11,
                "the right-hand side of the objective is minus its constant"},
        Caution{"negative ranges", Sections{.after = "RANGES\n    R r1 -1 r2 -1\n"}.text (), 14,
                "the sign of a range of an L or G row is not looked at (\"r1\" and 1 more)"},
        Caution{"further free row", Sections{.rows = " N c\n L r1\n G r2\n E r3\n N f\n"}.text (), 7,
                "an N row after the objective is kept as a free constraint (\"f\")"},
        Caution{"open marker",
                Sections{.columns = "    x c 1\n    M 'MARKER' 'INTORG'\n    y c 1\n",
                         .after = bounds (" UP B y 1\n")}
                    .text (),
                11, "an INTORG marker that no INTEND follows"},
        Caution{"second set", Sections{.after = bounds (" UP B x 1\n UP C x 2\n UP D x 3\n")}.text (), 15,
                "only the first set of RHS, RANGES or BOUNDS is used (\"C\" and 1 more)"},
        Caution{"huge bounds",
                Sections{.rhs = "    RHS r1 1e20\n", .after = bounds (" UP B x 1e30\n")}.text (), 11,
                "a bound at or beyond the bound infinity threshold is no bound (\"r1\" and 1 more)"},
        Caution{"no objective", Sections{.rows = " L r1\n G r2\n E r3\n", .columns = "    x r1 1\n"}.text (),
                6, "without an N row"}));

// ---- Files

TEST (MpsFile, ThatCannotBeOpenedSaysWhy)
{
    const Folder folder;
    ASSERT_EQ (::mkfifo ((folder / "pipe.mps").c_str (), 0600), 0);
    files::save (folder / "data.txt", Sections{}.text ());
    struct {
        std::string path;
        KLVrescode_t code;
        const char* cause;
    } const cases[] = {
        {folder / "none.mps", KLV_RES_FILE_OPEN, "none.mps: cannot be opened: No such file"},
        {folder / "pipe.mps", KLV_RES_FILE_OPEN, "not a regular file"},
        {folder / ".", KLV_RES_FILE_FORMAT_UNKNOWN, "the extension .mps is known"},
        {"/dev/null", KLV_RES_FILE_FORMAT_UNKNOWN, "the extension .mps is known"},
        {folder / "data.txt", KLV_RES_FILE_FORMAT_UNKNOWN, "the extension .mps is known"},
        {"", KLV_RES_FILE_NAME_MISSING, ""},
    };
    for (const auto& [path, code, cause] : cases) {
        files::Task task;
        EXPECT_EQ (KLV_readdata (task, path.c_str ()), code) << path;
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, std::string (cause), task.last_error ());
    }
    files::Task task;
    task.set_format (KLV_FILE_FREE_MPS);
    EXPECT_EQ (KLV_readdata (task, (folder / "data.txt").c_str ()), KLV_RES_OK)
        << "a format that is named holds for any file";
    EXPECT_EQ (KLV_readdata (task, (folder / ".").c_str ()), KLV_RES_FILE_OPEN);
    EXPECT_PRED_FORMAT2 (testing::IsSubstring, std::string ("it is a directory"), task.last_error ());
    EXPECT_EQ (task.problem ().variables (), 0) << "of the file that was read before";
}

TEST (MpsFile, PublishedInstancesHaveTheirSizes)
{
    std::istringstream index (files::load (KALVO_TEST_DATA "/INDEX.tsv"));
    int read = 0;
    for (std::string line; std::getline (index, line);) {
        std::istringstream fields (line);
        std::string family, name, file, optimum, sizes;
        for (std::string* field : {&family, &name, &file, &optimum, &sizes})
            std::getline (fields, *field, '\t');
        if (!file.ends_with (".mps"))
            continue;
        int rows = 0, columns = 0, entries = 0, integers = 0;
        ASSERT_GE (std::sscanf (sizes.c_str (), "%dx%d nnz %d int %d", &rows, &columns, &entries, &integers),
                   3)
            << line;
        files::Task task;
        ASSERT_EQ (KLV_readdata (task, (std::string (KALVO_TEST_DATA "/") + file).c_str ()), KLV_RES_OK)
            << task.last_error ();
        const klv::Problem& problem = task.problem ();
        EXPECT_EQ (problem.constraints (), rows) << file;
        EXPECT_EQ (problem.variables (), columns) << file;
        EXPECT_EQ (problem.matrix.entries (), entries) << file;
        EXPECT_EQ (problem.integers, integers) << file;
        ++read;
    }
    EXPECT_GE (read, 10);
}

// ---- The progress callback

struct Calls {
    std::vector<std::uint32_t> callers = {};
    std::uint32_t stop_at = 0;
    std::int32_t answer = 0;

    static std::int32_t note (KLVtask_t, void* handle, std::uint32_t caller, const double*,
                              const std::int32_t*, const std::int64_t*)
    {
        Calls& calls = *static_cast<Calls*> (handle);
        calls.callers.push_back (caller);
        return caller == calls.stop_at ? calls.answer : 0;
    }
};

std::string large_file ()
{
    std::string text = "ROWS\n N c\n";
    for (int i = 0; i < 20'000; ++i)
        text += " L r" + std::to_string (i) + "\n";
    text += "COLUMNS\n";
    for (int i = 0; i < 20'000; ++i)
        text += "    x" + std::to_string (i / 4) + " r" + std::to_string (i) + " 1.25\n";
    return text + "ENDATA\n";
}

TEST (MpsProgress, CallbackIsAskedAllAlongAndStops)
{
    const Folder folder;
    const std::string path = folder / "large.mps";
    files::save (path, large_file ());
    {
        files::Task task;
        Calls calls;
        KLV_putcallbackfunc (task, Calls::note, &calls);
        ASSERT_EQ (KLV_readdata (task, path.c_str ()), KLV_RES_OK);
        EXPECT_EQ (calls.callers.front (), KLV_CALLER_BEGIN_READ);
        EXPECT_EQ (calls.callers.back (), KLV_CALLER_END_READ);
    }
    struct {
        std::uint32_t stop_at;
        std::int32_t answer;
        KLVrescode_t code;
    } const cases[] = {
        {KLV_CALLER_BEGIN_READ, 1, KLV_RES_USER_STOP},
        {KLV_CALLER_END_READ, 1, KLV_RES_USER_STOP},
        {KLV_CALLER_END_READ, KLV_RES_OUT_OF_MEMORY, KLV_RES_OUT_OF_MEMORY},
    };
    for (const auto& [stop_at, answer, code] : cases) {
        files::Task task;
        Calls calls{.stop_at = stop_at, .answer = answer};
        KLV_putcallbackfunc (task, Calls::note, &calls);
        EXPECT_EQ (KLV_readdata (task, path.c_str ()), code);
        EXPECT_EQ (task.problem ().variables (), 0);
        EXPECT_EQ (task.problem ().constraints (), 0);
        EXPECT_EQ (task.printed, "") << "a stop is no error";
    }
}

}
