// Reading MPS and LP files: what is understood, what is refused and where, what is warned of.
#include "kalvo/files/text/traditions.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <ranges>
#include <regex>
#include <sstream>

namespace {

constexpr std::int32_t fixed = KLV_FILE_FIXED_MPS;
constexpr KLVrescode_t syntax = KLV_RES_FILE_SYNTAX, unsupported = KLV_RES_FILE_SECTION_UNSUPPORTED;
constexpr const char* lp = "LP";

// Lines, in which "|" ends one, instead of those of a section of a plain MPS file (no section: a whole file); of LP a whole
// file or, beginning with a blank, what stands behind "st" of a small one.
struct Case {
    const char* section;
    std::string lines;
    std::string expected;
    KLVrescode_t code = syntax;
    std::int32_t format = KLV_FILE_BY_EXTENSION;
};

const std::string plain = "min 1 0; x 0.. y 0..; r1: 2 in ..10; r2: 0 3 in 20..; r3: 0 4 in =30";

std::string text_of (const Case& c)
{
    static constexpr std::pair<const char*, const char*> frame[] = {
        {"NAME T", ""},                                    // lines 1
        {"ROWS", " N  c| L  r1| G  r2| E  r3|"},           // 2 to 6
        {"COLUMNS", "    x c 1 r1 2|    y r2 3 r3 4|"},    // 7 to 9
        {"RHS", "    RHS r1 10 r2 20|    RHS r3 30|"},     // 10 to 12, other sections from 13
    };
    const std::string section = c.section;
    if (section == lp && c.lines.starts_with (' '))
        return "min c: x + 2 y|st|" + c.lines + "|end|";
    if (section.empty () || section == lp)
        return c.lines;
    std::string text;
    bool is_new = true;
    for (const auto& [header, lines] : frame) {
        text += std::string (header) + "|" + (header == section ? c.lines : lines);
        is_new &= header != section;
    }
    return text + (is_new ? section + "|" + c.lines : "") + "ENDATA|";
}

struct Reading {
    files::Folder folder;
    std::string name;
    files::Task task;
    KLVrescode_t code;

    explicit Reading (const Case& c) : name (c.section == lp ? "f.lp" : "f.mps")
    {
        files::save (folder / name, files::lines (text_of (c)));
        task.set_format (c.format);
        code = KLV_readdata (task, (folder / name).c_str ());
    }

    std::string problem () const
    {
        EXPECT_EQ (code, KLV_RES_OK) << task.last_error ();
        return model::text_of (task.problem ());
    }
};

// The parts in which a problem is another than the plain one.
std::string changed (const std::string& problem)
{
    std::string told;
    std::istringstream parts (problem);
    for (std::string part; std::getline (parts, part, ';');) {
        part.erase (0, part.find_first_not_of (' '));
        if ((plain + ";").find (part + ";") == plain.npos)
            told += (told.empty () ? "" : "; ") + part;
    }
    return told;
}

TEST (Read, Meaning)
{
    static const Case cases[] = {
        {"", "ROWS\r| N c\r|COLUMNS\r|    x c 1\r|ENDATA", "min 1; x 0.."},
        {"", "\xEF\xBB\xBFNAME|ROWS| N c|COLUMNS|    x c 0|ENDATA||* the end|  ", "min 0; x 0.."},
        {"", "rows| n c| l r1|columns|    x c 1 r1 2|bounds| up b x 4|endata|",
         "min 1; x 0..4; r1: 2 in ..0"},
        {"", "ROWS| N 1| E ROWS|COLUMNS|    RHS 1 2 ROWS 3|RHS|    RHS ROWS 4|BOUNDS| UP 5 RHS 6|ENDATA|",
         "min 2; RHS 0..6; ROWS: 3 in =4"},
        {"", "ROWS| N c| L r1|RANGES|    R r1 4|RHS|    RHS r1 10|COLUMNS|    x r1 1|ENDATA|",
         "min 0; x 0..; r1: 1 in 6..10"},
        {"", "OBJNAME|    d|ROWS| N c| N d|COLUMNS|    x c 1 d 7|ENDATA|", "min 7; x 0..; c: 1 in .."},
        {"COLUMNS", "*x c 5|\tx\tc\t1\tr1\t2|   \t||* y| \ty r2\t3  r3 4\t|", ""},
        {"COLUMNS", "    x c +1 r1 .5|    x r2 1D+02 r3 -5.|    y r1 1.5e-3 r2 -0|",
         "r1: 0.5 0.0015 in ..10; r2: 100 -0 in 20..; r3: -5 in =30"},
        {"OBJSENSE", "    MAX|", "max 1 0"},
        {"RHS", "    r1 10|    RHS r2 20 r3 30|    B r1 99|", ""},
        {"RANGES", "    R r1 4 r2 5|    R r3 6|", "r1: 2 in 6..10; r2: 0 3 in 20..25; r3: 0 4 in 30..36"},
        {"RANGES", "    R r1 -4 r2 -5|    R r3 -6|", "r1: 2 in 6..10; r2: 0 3 in 20..25; r3: 0 4 in 24..30"},
        {"RANGES", "    R r1 0 r2 0|    R r3 0|", "r1: 2 in 10..10; r2: 0 3 in 20..20"},
        {"RANGES", "    R r1 1e30 r2 inf|", ""},
        {"RHS", "    RHS r1 inf r2 -1e30|    RHS r3 30|", "r1: 2 in ..; r2: 0 3 in .."},
        {"BOUNDS", " LO B x 4| UP B x 4|", "x 4..4 y 0.."},
        {"BOUNDS", " FR B x| MI B y| UP B y 4|", "x .. y ..4"},
        {"BOUNDS", " UP B x -4| UP B y 0|", "x ..-4 y 0..0"},
        {"BOUNDS", " UP B x -4| LO B x 0| PL B y|", "x 0..-4 y 0.."},
        {"BOUNDS", " BV B x| UI B y 7|", "x 0..1i y 0..7i"},
        {"BOUNDS", " LI B x 2| UI B x 7|", "x 2..7i y 0.."},
        {"BOUNDS", " UP x 4| FR y|", "x 0..4 y .."},
        {"BOUNDS", " FR x 0| UP B y 4| UP C y 5| FX C x 6|", "x .. y 0..4"},
        {"BOUNDS", " LO B x -Inf| UP B x 1e30|", "x .. y 0.."},
        {"COLUMNS", "    M 'MARKER' 'INTORG'|    x c 1 r1 2|    M 'MARKER' 'INTEND'|    y r2 3 r3 4|",
         "x 0..1i y 0.."},
        {"",
         "ROWS| N c|COLUMNS| M 'MARKER' 'INTORG'| u c 0| v c 0| w c 0| z c 0|BOUNDS| LO u 0| PL v| FR w| UP "
         "z -1|"
         "ENDATA|",
         "min 0 0 0 0; u 0..i v 0..i w ..i z ..-1i"},
        {"",
         "ROWS| N  THE COST| L  ROW 1|COLUMNS|"
         "    A B       THE COST           1.5   ROW 1               -2|"
         "    MARK 1    'MARKER'                 'INTORG'|"
         "    Y         ROW 1                3   $ a comment|"
         "RHS|              ROW 1               10|"
         "BOUNDS| UP MY BND    Y                   4| FR MY BND    A B|ENDATA|",
         "min 1.5 0; A B .. Y 0..4i; ROW 1: -2 3 in ..10"},
        {"",
         "ROWS| N  c| L  r|COLUMNS|    x         c                    1|RHS|    MY SET    r                  "
         "  5|"
         "ENDATA|",
         "min 1; x 0..; r: in ..5"},
        {"", "ROWS| N  c|COLUMNS|    x r 7     c         0.33333333333333331|ENDATA|",
         "min 0.3333333333333333; x r 7 0..", syntax, fixed},
        {lp, "Maximize|Subject To|End", "max"},
        {lp, "MINIMISE|obj:|  2x + 3.5 y|  - z|SUBJECT   to|r:|x + y|>=|2\\ two|Bounds|End|| \\ done",
         "min 2 3.5 -1; x 0.. y 0.. z 0..; r: 1 1 in 2.."},
        {lp, "max - x + 3 + 2.5e1 y - 1.5|such that|x - - 2 * y >= 1|bound|x<=4|gen|y|end",
         "max -1 25 +1.5; x 0..4 y 0..i; R1: 1 2 in 1.."},
        {lp, "min|x|s.t.|e1: x = 1|-1 <= r: x <= 1|3 >= x >= 2|x + 0 z => -1e30|End",
         "min 1 0; x 0.. z 0..; e1: 1 in =1; r: 1 in -1..1; R3: 1 in 2..3; R4: 1 +0 in .."},
        {lp, " r: -2 <= x|s: 0 >= 3|t: 1 <= 0 <= 2|u: 4 <= x + y <= 4|v: y >= -Inf",
         "min 1 2; x 0.. y 0..; r: 1 in -2..; s: in 3..; t: in 1..2; u: 1 1 in 4..4; v: 0 1 in .."},
        {lp, " r: x + 3 y - x - -0.5 y =< 1", "min 1 2; x 0.. y 0..; r: +0 3.5 in ..1"},
        {lp, " a!\"#$%&(),.;?@_'`{}~/\xC3\xBC: x < 1",
         "min 1 2; x 0.. y 0..; a!\"#$%&(),.;?@_'`{}~/\xC3\xBC: 1 in ..1"},
        {lp, " Bounds|x free|y = -2", "min 1 2; x .. y =-2"},
        {lp, " Bounds|-infinity <= x <= 4|2 >= y|y >= 2", "min 1 2; x ..4 y 2..2"},
        {lp, " Bounds|-2 <= x|y <= -3", "min 1 2; x -2.. y ..-3"},
        {lp, " Bounds|1 <= x <= 0|inf >= y >= -1e20|Generals|y x", "min 1 2; x 1..0i y ..i"},
        {lp, " Binary|x|Bounds|y = 1|Binaries|y y", "min 1 2; x 0..1i y =1i"},
        {lp, " Bounds|y = -3|Bin|y", "min 1 2; x 0.. y 0..-3i"},
        {lp, " Bounds|x <= -1|-5 <= y <= 0.5|Bin|x|y", "min 1 2; x 0..-1i y 0..0.5i"},
        {"", "NAME  a b\tc |ROWS| N c| L r\xFF|COLUMNS|    \xC3\xBC* c 1|ENDATA|",
         "min 1; \xC3\xBC* 0..; r\xFF: in ..0"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE (c.section + (" " + c.lines));
        const std::string found = Reading (c).problem ();
        EXPECT_EQ (*c.section == 0 || c.section == lp ? found : changed (found), c.expected);
    }
    for (const auto& [c, name] : {
             std::pair{Case{"", "NAME  a b\tc |ROWS| N c|COLUMNS|ENDATA|", ""}, "a b\tc"},
             {{lp, "\\ comment|\\ Problem name: no  name |min|st|end", ""}, "no  name"},
             {{lp, "min|\\ Problem name: none|c:|st|end", ""}, ""},
         })
        EXPECT_EQ (Reading (c).task.problem ().name, name);
}

// The entries of Q in 1/2 x'Qx: "value at row column, ...", then of the constraints "constraint: ...".
std::string quadratic_text (const klv::Problem& problem)
{
    std::string text;
    const klv::SymmetricTerms *objective = &problem.quadratic_objective,
                              *rows = &problem.quadratic_constraint;
    for (const klv::SymmetricTerms* terms : {objective, rows})
        for (std::size_t k = 0; k < terms->value.size (); ++k)
            text += (text.empty () ? "" : ", ") +
                    (terms == rows ? std::to_string (terms->item[k]) + ": " : std::string ()) +
                    model::text_of (terms->value[k]) + " at " + std::to_string (terms->row[k]) +
                    std::to_string (terms->column[k]);
    return text;
}

// Each tradition's factor 1/2: all rows mean x^2 + 3 x y + 2.5 y^2.
TEST (Read, QuadraticTermsAreHalfXQX)
{
    static const Case cases[] = {
        {"QUADOBJ", "    y x 3 y 5|    x x 2|", "2 at 00, 3 at 10, 5 at 11"},
        {"QMATRIX", "    x x 2 y 3|    y y 5 x 3|", "2 at 00, 3 at 10, 5 at 11"},
        {"QSECTION", "    x x 2 y 3|    y y 5|", "2 at 00, 3 at 10, 5 at 11"},
        {"QSECTION c", "    x x 2 y 3|    y y 5|", "2 at 00, 3 at 10, 5 at 11"},
        {"QSECTION r2", "    x x 2 y 3|    y y 5|", "1: 2 at 00, 1: 3 at 10, 1: 5 at 11"},
        {"QCMATRIX r3", "    x x 1 y 1.5|    y y 2.5 x 1.5|", "2: 2 at 00, 2: 3 at 10, 2: 5 at 11"},
        {"QCMATRIX r3", "    x x 1|QUADOBJ|    y x 3|QSECTION r1|    y y 0|BOUNDS|",
         "3 at 10, 0: 0 at 11, 2: 2 at 00"},
        {"",
         "ROWS| N  c|COLUMNS|    A B       c                    1|QUADOBJ|    A B       A B                  "
         "2|ENDATA|",
         "2 at 00"},
        {lp, "min x + [ 2 x ^ 2 + 6 y * x + 5y^2 ] / 2|st|end", "2 at 00, 3 at 10, 5 at 11"},
        {lp, "max - [ -2 x * x - 6 x * y - 5 y ^ 2|]|/2 - 3|st|end", "2 at 00, 3 at 10, 5 at 11"},
        {lp, " 1 <= r: x + [ x ^ 2 + 3 x * y + 2.5 * y^2 ] <= 2", "0: 2 at 00, 0: 3 at 10, 0: 5 at 11"},
        {lp, " r: x <= 1|s: [ x^2 + x * y + 2 y * x ] + [ 2.5 y^2 ] <= 2",
         "1: 2 at 00, 1: 3 at 10, 1: 5 at 11"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE (c.section + (" " + c.lines));
        const Reading reading (c);
        EXPECT_EQ (reading.code, KLV_RES_OK) << reading.task.last_error ();
        EXPECT_EQ (quadratic_text (reading.task.problem ()), c.expected);
    }
}

// Published problems at a point: 1/2 x'Qx of the objective and of the last constraint.
TEST (Read, PublishedQuadraticProblems)
{
    static const struct {
        const char* file;
        std::vector<double> at;
        double objective, constraint;
    } cases[] = {
        // The optimum 1/9 of HS35: 9 - 8 x - 6 y - 4 z + 2 x^2 + 2 y^2 + z^2 + 2 x y + 2 x z.
        {"/qp/HS35.QPS", {4.0 / 3, 7.0 / 9, 4.0 / 9}, 1.0 / 9 - 9 + 32.0 / 3 + 14.0 / 3 + 16.0 / 9, 0},
        {"/qcqp/circle.lp", {2, 3, 5}, 0, 30},    // a^2 + b^2 - r^2 at r, a, b
    };
    for (const auto& [file, at, objective, constraint] : cases) {
        const files::Task task;
        ASSERT_EQ (KLV_readdata (task, (KALVO_TEST_DATA + std::string (file)).c_str ()), KLV_RES_OK)
            << task.last_error ();
        const auto value = [&] (const klv::SymmetricTerms& terms, std::size_t from) {
            double sum = 0;
            for (std::size_t k = from; k < terms.value.size (); ++k)
                sum += terms.value[k] * at[static_cast<std::size_t> (terms.row[k])] *
                       at[static_cast<std::size_t> (terms.column[k])] *
                       (terms.row[k] == terms.column[k] ? 0.5 : 1);
            return sum;
        };
        const klv::Problem& problem = task.problem ();
        EXPECT_NEAR (value (problem.quadratic_objective, 0), objective, 1e-14) << file;
        const auto of_last = problem.quadratic_constraint.of_item (problem.constraints () - 1);
        EXPECT_EQ (value (problem.quadratic_constraint, of_last.begin), constraint) << file;
    }
}

TEST (Read, FaultsHaveLineAndCauseAndLeaveNothing)
{
    static const Case cases[] = {
        {"", "", "1: the file ends without ENDATA"},
        {"", "ROWS| N c|COLUMNS|ENDATA| x", "5: text after ENDATA"},
        {"", "NAME T|ROWZ|", "2: unknown section \"ROWZ\""},
        {"", "    x c 1|", "1: data before the first section"},
        {"", "NAME|COLUMNS|", "2: section COLUMNS comes without ROWS"},
        {"", "OBJSENSE|ROWS|", "2: OBJSENSE without MIN or MAX"},
        {"ROWS", "ROWS|", "3: section ROWS comes twice"},
        {"", "ROWS|NAME x|", "2: section NAME belongs before ROWS"},
        {"", "OBJSENSE|    UPWARDS|", "2: \"UPWARDS\" is no objective sense"},
        {"", "OBJSENSE MAX|    MIN|", "2: a second objective sense"},
        {"", "OBJNAME d|ROWS| N c|COLUMNS|", "4: no N row has the name \"d\""},
        {"CSECTION", "    x x 1|", "13: section CSECTION is not supported", unsupported},
        {"QUADOBJ", "    x z 1|", "14: unknown column \"z\" in QUADOBJ"},
        {"QUADOBJ", "    x y|", "14: a line of quadratic terms has a column"},
        {"QUADOBJ", "    x y 1|    y y 1|    y x 1|", "16: a second entry of columns \"y\" and \"x\""},
        {"QMATRIX", "    x y 1|    y y 1|",
         "14: a full matrix is symmetric, but there is no second entry of"},
        {"QMATRIX", "    x y 1|    x y 1|",
         "14: a full matrix is symmetric, but there is no second entry of"},
        {"QMATRIX", "    x y 1|    y x 2|", "15: a full matrix is symmetric, but there are two different"},
        {"QMATRIX", "    x x 1|    x x 1|", "15: a second entry of columns \"x\" and \"x\""},
        {"QUADOBJ", "    x x 1|QMATRIX|    x x 1|",
         "15: a second section of quadratic terms of the objective"},
        {"QUADOBJ", "    x x 1|QUADOBJ|", "15: section QUADOBJ comes twice"},
        {"QSECTION r1", "    x x 1|QCMATRIX r1|", "15: a second section of quadratic terms of row \"r1\""},
        {"QCMATRIX", "    x x 1|", "13: QCMATRIX without the row"},
        {"QCMATRIX c", "    x x 1|", "13: QCMATRIX of the objective \"c\""},
        {"QCMATRIX r9", "    x x 1|", "13: unknown row \"r9\" in QCMATRIX"},
        {"QCMATRIX r1", "    x x 1e308|", "14: a quadratic term whose double is beyond"},
        {"", "ROWS| N c|QUADOBJ|", "3: section QUADOBJ comes without COLUMNS"},
        {"", std::string ("ROWS| N c\0d|", 12), "2: a zero byte"},
        {"", "ROWS\r N c\rCOLUMNS\r", "1: a control character, of code 13"},
        {"", "\xFF\xFEN", "1: the file is UTF-16"},
        {"ROWS", " N c| X r|", "4: \"X\" is no type of row"},
        {"ROWS", " N c| L c|", "4: a second row \"c\""},
        {"COLUMNS", "    x c 1 r1 2|    y r9 3|", "9: unknown row \"r9\" in COLUMNS"},
        {"COLUMNS", "    x c 1|    y c 2|    x r1 3|", "10: column \"x\" goes on after other columns"},
        {"COLUMNS", "    x r1 1 r2 2|    x c 1 r1 0|", "9: a second entry of column \"x\" in row \"r1\""},
        {"COLUMNS", "    x c 1 r2 2|    x c 1|", "9: a second entry of column \"x\" in row \"c\""},
        {"COLUMNS", "    x r1 +-1|", "8: \"+-1\" is not a number"},
        {"COLUMNS", "    M 'MARKER' 'INTEND'|", "8: 'INTEND' without 'INTORG'"},
        {"COLUMNS", "    x r1 -inf|", "8: an infinite number"},
        {"COLUMNS", "    x r1 1e400|", "8: \"1e400\" is beyond the numbers of double precision"},
        {"COLUMNS", "    x r1 1 r2|", "8: a line of COLUMNS has a column and one or two pairs"},
        {"COLUMNS", "    M 'MARKER' 'INT'|", "8: \"'INT'\" is no marker"},
        {"COLUMNS", "    M 'MARKER' 'INTORG'|    M 'MARKER' 'INTORG'|", "9: a second 'INTORG'"},
        {"RHS", "    RHS r1 1|    RHS r1 1|", "12: a second right-hand side of row \"r1\""},
        {"RHS", "    RHS r1 -inf|", "11: an upper bound that is minus infinity"},
        {"RHS", "    RHS r3 inf|", "11: a lower bound that is infinite"},
        {"RHS", "    RHS c inf|", "11: an infinite right-hand side of the free row \"c\""},
        {"RHS", "    S r1 7    r2             5|",
         "11: the line reads differently in free and in fixed form"},
        {"RANGES", "    R r1 2|    R r1 2|", "15: a second range of row \"r1\""},
        {"", "ROWS| N c| L r|COLUMNS|RHS| B r inf|RANGES| B r 3|ENDATA|", "8: a range of row \"r\", whose"},
        {"BOUNDS", " UB B x 1|", "14: \"UB\" is no type of bound"},
        {"BOUNDS", " UP B z 1|", "14: unknown column \"z\" in BOUNDS"},
        {"BOUNDS", " UP x|", "14: a bound of type UP needs a number"},
        {"BOUNDS", " SC B x 1|", "14: semi-continuous variables are not supported", unsupported},
        {"BOUNDS", " UI B x 1.5|", "14: a bound of type UI needs an integer"},
        {"BOUNDS", " UP B x 1| UP B x 1|", "15: a second upper bound of column \"x\""},
        {"BOUNDS", " FR B x| LO B x 1|", "15: a second lower bound of column \"x\""},
        {"BOUNDS", " FX B x -inf|", "14: column \"x\" is fixed at a value beyond"},
        {"BOUNDS", " FR x y|", "14: \"x\" and \"y\" are both columns"},
        {"BOUNDS", " UP B x 1 2|", "14: a line of BOUNDS has"},
        {"COLUMNS", "    x\t        r1                   1|", "8: a tab has no place", syntax, fixed},
        {"COLUMNS", "    longlonglong r1                1|", "8: \"lo\" is outside of the fixed columns",
         syntax, fixed},
        {"COLUMNS", "     x        r1                   1|", "8: the name \" x\" does not begin", syntax,
         fixed},
        {"COLUMNS", "    x         r1|", "8: the number in the columns 25 to 36 is missing", syntax, fixed},
        {"COLUMNS", "    x         r1                   1   c|", "8: a name in the columns 40 to 47", syntax,
         fixed},
        {"COLUMNS", "    x         r1          1.23456789012345  c     1|", "8: \"012\" is outside", syntax,
         fixed},
        {"", "ROWS| N cost_of_all| L r|COLUMNS|    a b       r                  1|",
         "5: a line of COLUMNS has"},
        {"", "ROWS| N  c| L  r 1|COLUMNS|    a b       r 2                1|", "5: unknown row \"r 2\""},
        {lp, "", "1: the file ends without End"},
        {lp, "max: 2x+3y;", "1: \":\" is not expected here"},
        {lp, "min x|st|x >= 1", "3: the file ends without End"},
        {lp, "min x|st|end|x", "4: text after End"},
        {lp, "min x|max x|st|end", "2: a second objective: \"max\""},
        {lp, "st|x >= 1", "1: \"st\" before Minimize or Maximize"},
        {lp, "min x|bounds|end", "2: section \"bounds\" comes without Subject To"},
        {lp, "min x|st|st|end", "3: section \"st\" comes twice"},
        {lp, "min x st x >= 1|end", "1: a section is needed, not \"st\""},
        {lp, "min x + inf|st|end", "1: an infinite constant of the objective"},
        {lp, "min 1e200 x + 1e308 x + 1e308 x|st|end", "1: an infinite coefficient of \"x\""},
        {lp, "min 1e400 x|st|end", "1: \"1e400\" is beyond the numbers"},
        {lp, "min 1.5.2 x|st|end", "1: \"1.5\" goes on with \".\""},
        {lp, "min x y|st|end", "1: a section is needed, not \"y\""},
        {lp, "min x +|st|end", "2: a number or the name of a variable is needed, not \"st\""},
        {lp, "min 2 e1|st|end", "1: the variable \"e1\" behind a number reads like its exponent"},
        {lp, "min x + free|st|end", "1: the name \"free\" is a word of LP"},
        {lp, "min x\a|st|end", "1: a control character, of code 7"},
        {lp, "min x \x60 : y|st|end", "1: a section is needed"},
        {lp, "min [ x ^ 2 ]|st|end", "2: \"/ 2\" behind the brackets of the objective is needed"},
        {lp, "min [ x ^ 2 ] / 3|st|end", "1: \"/ 2\" behind the brackets of the objective is needed"},
        {lp, "min x * y|st|end", "1: a quadratic term stands in brackets, [ and ], but here is \"*\""},
        {lp, "min x ^ 2|st|end", "1: a quadratic term stands in brackets, [ and ], but here is \"^\""},
        {lp, "min [ x ^ 3 ] / 2|st|end", "1: the exponent 2 is needed, not \"3\""},
        {lp, "min [ x ] / 2|st|end", "1: \"^ 2\" or \"*\" is needed, not \"]\""},
        {lp, "min [ 5e-324 x * y ] / 2|st|end", "1: a quadratic term whose half is beyond"},
        {lp, " r: [ x ^ 2 ] / 2 <= 1", "3: a relation is needed, not \"/\""},
        {lp, " r: [ x ^ 2 + ] <= 1", "3: the name of a variable is needed, not \"]\""},
        {lp, " r: [ ] <= 1", "3: the name of a variable is needed, not \"]\""},
        {lp, " r: [ x ^ 2 y ^ 2 ] <= 1", "3: \"]\", \"+\" or \"-\" is needed, not \"y\""},
        {lp, " r: 2 [ x ^ 2 ] <= 1", "3: a relation is needed, not \"[\""},
        {lp, " r: [ 1e308 x ^ 2 ] <= 1", "3: a quadratic term whose double is beyond"},
        {lp, " r: [ 1e308 x * y + x * x|+ 1e308 y * x ] <= 1", "4: an infinite coefficient of a product"},
        {lp, "minimize multi-objectives|st|end", "1: several objectives are not supported", unsupported},
        {lp, " r: x >= 1|r: x >= 2", "4: a second row \"r\""},
        {lp, " c: x >= 1", "3: a second row \"c\""},
        {lp, " inf: x >= 1", "3: the name \"inf\" is a word of LP"},
        {lp, " r: >= 1", "3: an expression is needed, not \">=\""},
        {lp, " r: x + y|s: x >= 1", "4: a relation is needed, not \"s\""},
        {lp, " r: x >= y", "3: a number is needed, not \"y\""},
        {lp, " r: x >= 1 y", "3: \"y\" behind a constraint"},
        {lp, " r: x + 1 >= 2", "3: a constant among the terms of a constraint"},
        {lp, " r: 1 <= x >= 3", "3: two relations of a constraint that bound the same side"},
        {lp, " r: x <= -inf", "3: an upper bound that is minus infinity"},
        {lp, " r: x <= 1 <= 2", "3: \"<=\" behind a constraint"},
        {lp, " r: z = 1 -> x <= 1", "3: indicator constraints are not supported", unsupported},
        {lp, " r: 0 <= 3|x + y <= 4", "4: the number before \"x\" may be its coefficient"},
        {lp, " lazy constraints|x <= 1", "3: lazy constraints are not supported", unsupported},
        {lp, " Bounds|z <= 1", "4: unknown variable \"z\""},
        {lp, " Generals|x z", "4: unknown variable \"z\""},
        {lp, " Generals|x <= 1", "4: the name of a variable is needed, not \"<=\""},
        {lp, " Bounds|x free y free", "4: \"y\" behind a bound"},
        {lp, " Semi-Continuous|x", "3: semi-continuous variables are not supported", unsupported},
        {lp, " SOS1|s: x:1 y:2", "3: special ordered sets are not supported", unsupported},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE (c.section + (" " + c.lines.substr (0, 99)));
        const Reading reading (c);
        EXPECT_EQ (reading.code, c.code);
        for (const std::string& told : {reading.task.last_error (), reading.task.printed})
            EXPECT_PRED_FORMAT2 (testing::IsSubstring, reading.name + ":" + c.expected, told);
        EXPECT_EQ (model::text_of (reading.task.problem ()), "min");
    }
}

TEST (Read, WarnsOnceOfEachTraditionWithItsFirstLine)
{
    static const Case cases[] = {
        {"COLUMNS", "    M 'MARKER' 'INTORG'|    x c 1|    y c 1|    z c 1|    M 'MARKER' 'INTEND'|",
         "9: an integer column between markers without any bound gets the bounds 0 and 1 (\"x\" and 2 more)"},
        {"BOUNDS", " LO B y 1| UP B x -1|",
         "15: a negative upper bound without a lower bound takes the lower"},
        {"BOUNDS", " MI B x|", "14: MI without an upper bound"},
        {"RHS", "    RHS c 1|", "11: the right-hand side of the objective is minus its constant"},
        {"RANGES", "    R r1 -1 r2 -1|",
         "14: the sign of a range of an L or G row is not looked at (\"r1\" and 1 more)"},
        {"ROWS", " N c| L r1| G r2| E r3| N f|",
         "7: an N row after the objective is kept as a free constraint"},
        {"RANGES", "    R c 1|", "14: a right-hand side or range of a free row has no effect"},
        {"", "ROWS| N c|COLUMNS| M 'MARKER' 'INTORG'| y c 1|BOUNDS| UP B y 1|ENDATA|", "6: an INTORG marker"},
        {"BOUNDS", " UP B x 1| UP C x 2| UP D x 3|",
         "15: only the first set of RHS, RANGES or BOUNDS is used"},
        {"BOUNDS", " UP B x 1e30| LO B y -1e20|",
         "14: a bound at or beyond the bound infinity threshold is no bound (\"x\" and 1 more)"},
        {"", "ROWS| L r1|COLUMNS| x r1 1|ENDATA|", "3: without an N row the objective is zero"},
        {lp, " r: x + y|+ x >= 1|s: y + y + y <= 2",
         "4: terms of a variable that comes twice in an expression are added (\"x\" and 2 more)"},
        {lp, " Bounds|x <= 3|-1 <= y|Binaries|x y",
         "4: a binary variable has no bound beyond 0 and 1 (\"x\" and 1 more)"},
        {"QSECTION r1", "    x x 1|", "13: QSECTION is one triangle of Q in 1/2 x'Qx"},
        {lp, " r: [ x ^ 2 + x * y|+ y * x ] <= 1", "4: terms of a variable that comes twice"},
        {lp, " r: x <= 1e21|Bounds|x <= 1e20",
         "3: a bound at or beyond the bound infinity threshold is no bound (\"r\" and 1 more)"},
    };
    for (const Case& c : cases) {
        const Reading reading (c);
        EXPECT_EQ (reading.code, KLV_RES_OK) << reading.task.last_error ();
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, reading.name + ":" + c.expected, reading.task.printed);
        EXPECT_EQ (std::ranges::count (reading.task.printed, '\n'), 1) << reading.task.printed;
    }
    const std::string help = std::regex_replace (files::load (KALVO_TEST_DATA "/../../toolbox/kalvoopt.m"),
                                                 std::regex ("[%\\s]+"), " ");
    for (const std::string_view text : klv::tradition_texts | std::views::take (14))    // but for JSON's
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, std::string (text), help);
}

}
