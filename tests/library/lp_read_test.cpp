// Reading LP files: what is understood, what is refused and where, what is warned of.
#include "tests/library/reading.h"

namespace {

// In texts "|" ends a line. A case that begins with a blank stands behind "st" of a small problem.
struct Case {
    std::string text;
    std::string expected;
    KLVrescode_t code = KLV_RES_FILE_SYNTAX;
};

files::Reading read (const std::string& text)
{
    return {"f.lp", text.starts_with (' ') ? "min c: x + 2 y|st|" + text + "|end|" : text};
}

TEST (LpRead, Meaning)
{
    static const Case cases[] = {
        {"Maximize|Subject To|End", "max"},
        {"MINIMISE|obj:|  2x + 3.5 y|  - z|SUBJECT   to|r:|x + y|>=|2\\ two|Bounds|End|| \\ done",
         "min 2 3.5 -1; x 0.. y 0.. z 0..; r: 1 1 in 2.."},
        {"max - x + 3 + 2.5e1 y - 1.5|such that|x - - 2 * y >= 1|bound|x<=4|gen|y|end",
         "max -1 25 +1.5; x 0..4 y 0..i; R1: 1 2 in 1.."},
        {"min|x|s.t.|e1: x = 1|-1 <= r: x <= 1|3 >= x >= 2|x + 0 z => -1e30|End",
         "min 1 0; x 0.. z 0..; e1: 1 in =1; r: 1 in -1..1; R3: 1 in 2..3; R4: 1 +0 in .."},
        {" r: -2 <= x|s: 0 >= 3|t: 1 <= 0 <= 2|u: 4 <= x + y <= 4|v: y >= -Inf",
         "min 1 2; x 0.. y 0..; r: 1 in -2..; s: in 3..; t: in 1..2; u: 1 1 in 4..4; v: 0 1 in .."},
        {" r: x + 3 y - x - -0.5 y =< 1", "min 1 2; x 0.. y 0..; r: +0 3.5 in ..1"},
        {" a!\"#$%&(),.;?@_'`{}~/\xC3\xBC: x < 1",
         "min 1 2; x 0.. y 0..; a!\"#$%&(),.;?@_'`{}~/\xC3\xBC: 1 in ..1"},
        {" Bounds|x free|y = -2", "min 1 2; x .. y =-2"},
        {" Bounds|-infinity <= x <= 4|2 >= y|y >= 2", "min 1 2; x ..4 y 2..2"},
        {" Bounds|-2 <= x|y <= -3", "min 1 2; x -2.. y ..-3"},
        {" Bounds|1 <= x <= 0|inf >= y >= -1e20|Generals|y x", "min 1 2; x 1..0i y ..i"},
        {" Binary|x|Bounds|y = 1|Binaries|y y", "min 1 2; x 0..1i y =1i"},
        {" Bounds|y = -3|Bin|y", "min 1 2; x 0.. y 0..-3i"},
        {" Bounds|x <= -1|-5 <= y <= 0.5|Bin|x|y", "min 1 2; x 0..-1i y 0..0.5i"},
    };
    for (const Case& c : cases)
        EXPECT_EQ (read (c.text).problem (), c.expected) << c.text;
    EXPECT_EQ (read ("\\ comment|\\ Problem name: no  name |min|st|end").task.problem ().name, "no  name");
    EXPECT_EQ (read ("min|\\ Problem name: none|c:|st|end").task.problem ().name, "");
}

TEST (LpRead, FaultsHaveLineAndCause)
{
    constexpr KLVrescode_t unsupported = KLV_RES_FILE_SECTION_UNSUPPORTED;
    static const Case cases[] = {
        {"", "1: the file ends without End"},
        {"max: 2x+3y;", "1: \":\" is not expected here"},
        {"min x|st|x >= 1", "3: the file ends without End"},
        {"min x|st|end|x", "4: text after End"},
        {"min x|max x|st|end", "2: a second objective: \"max\""},
        {"st|x >= 1", "1: \"st\" before Minimize or Maximize"},
        {"min x|bounds|end", "2: section \"bounds\" comes without Subject To"},
        {"min x|st|st|end", "3: section \"st\" comes twice"},
        {"min x st x >= 1|end", "1: a section is needed, not \"st\""},
        {"min x + inf|st|end", "1: an infinite constant of the objective"},
        {"min 1e200 x + 1e308 x + 1e308 x|st|end", "1: an infinite coefficient of \"x\""},
        {"min 1e400 x|st|end", "1: \"1e400\" is beyond the numbers"},
        {"min 1.5.2 x|st|end", "1: \"1.5\" goes on with \".\""},
        {"min x y|st|end", "1: a section is needed, not \"y\""},
        {"min x +|st|end", "2: a number or the name of a variable is needed, not \"st\""},
        {"min 2 e1|st|end", "1: the variable \"e1\" behind a number reads like its exponent"},
        {"min x + free|st|end", "1: the name \"free\" is a word of LP"},
        {"min x\a|st|end", "1: a control character, of code 7"},
        {"min x \x60 : y|st|end", "1: a section is needed"},
        {std::string ("min x\0|st", 9), "1: a zero byte"},
        {"min [ x ^ 2 ] / 2|st|end", "1: quadratic terms are not supported", unsupported},
        {"min x * y|st|end", "1: quadratic terms are not supported", unsupported},
        {"minimize multi-objectives|st|end", "1: several objectives are not supported", unsupported},
        {" r: x >= 1|r: x >= 2", "4: a second row \"r\""},
        {" c: x >= 1", "3: a second row \"c\""},
        {" inf: x >= 1", "3: the name \"inf\" is a word of LP"},
        {" r: >= 1", "3: an expression is needed, not \">=\""},
        {" r: x + y|s: x >= 1", "4: a relation is needed, not \"s\""},
        {" r: x >= y", "3: a number is needed, not \"y\""},
        {" r: x >= 1 y", "3: \"y\" behind a constraint"},
        {" r: x + 1 >= 2", "3: a constant among the terms of a constraint"},
        {" r: 1 <= x >= 3", "3: two relations of a constraint that bound the same side"},
        {" r: x <= -inf", "3: an upper bound that is minus infinity"},
        {" r: x <= 1 <= 2", "3: \"<=\" behind a constraint"},
        {" r: z = 1 -> x <= 1", "3: indicator constraints are not supported", unsupported},
        {" r: 0 <= 3|x + y <= 4", "4: the number before \"x\" may be its coefficient"},
        {" lazy constraints|x <= 1", "3: lazy constraints are not supported", unsupported},
        {" Bounds|z <= 1", "4: unknown variable \"z\""},
        {" Generals|x z", "4: unknown variable \"z\""},
        {" Generals|x <= 1", "4: the name of a variable is needed, not \"<=\""},
        {" Bounds|x <= 1|x <= 2", "5: a second upper bound of column \"x\""},
        {" Bounds|x free y free", "4: \"y\" behind a bound"},
        {" Bounds|x = inf", "4: column \"x\" is fixed at a value beyond"},
        {" Semi-Continuous|x", "3: semi-continuous variables are not supported", unsupported},
        {" SOS1|s: x:1 y:2", "3: special ordered sets are not supported", unsupported},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE (c.text);
        read (c.text).expect_fault (c.expected, c.code);
    }
}

TEST (LpRead, WarnsOnceOfEachTraditionWithItsFirstLine)
{
    static const Case cases[] = {
        {" r: x + y|+ x >= 1|s: y + y + y <= 2",
         "4: terms of a variable that comes twice in an expression are added (\"x\" and 2 more)"},
        {" Bounds|x <= 3|-1 <= y|Binaries|x y",
         "4: a binary variable has no bound beyond 0 and 1 (\"x\" and 1 more)"},
        {" r: x <= 1e21|Bounds|x <= 1e20",
         "3: a bound at or beyond the bound infinity threshold is no bound (\"r\" and 1 more)"},
        {" Bounds|x <= -3",
         "4: a negative upper bound without a lower bound takes the lower bound 0 away (\"x\")"},
    };
    for (const Case& c : cases)
        read (c.text).expect_one_warning (c.expected);
}

}
