// Quadratic, affine conic, conic and semidefinite parts: what is put comes back, what is wrong is refused by name.
#include "tests/library/every_class.h"
#include "tests/support/failing_new.h"

namespace {

using model::append_cone, model::EveryClass, model::Ints, model::Longs, model::put_bara,
    model::put_constraints, model::put_objective, model::Values;
constexpr double nan = std::numeric_limits<double>::quiet_NaN ();
constexpr double inf = klv::infinity;
using T = KLVtask_t;

TEST (Conic, TermsAddUpInTheirLowerTriangleInOrder)
{
    const EveryClass task;
    std::int64_t count = 0;
    Ints rows (9), columns (9), items (9), variables (9);
    Longs owners (9);
    Values values (9);
    const auto cut = [&] (auto list) { return (list.resize (static_cast<std::size_t> (count)), list); };
    EXPECT_EQ (KLV_getqobj (task, 2, &count, rows.data (), columns.data (), values.data ()),
               KLV_RES_BUFFER_TOO_SMALL);
    EXPECT_EQ (KLV_getqobj (task, 3, &count, rows.data (), columns.data (), values.data ()), 0);
    EXPECT_EQ (std::tuple (cut (rows), cut (columns), cut (values)),
               std::tuple (Ints{0, 2, 1}, Ints{0, 0, 1}, Values{-2, 0.75, 0}));
    EXPECT_EQ (KLV_getqconk (task, 1, 2, &count, rows.data (), columns.data (), values.data ()), 0);
    EXPECT_EQ (std::tuple (cut (rows), cut (columns), cut (values)),
               std::tuple (Ints{1, 1}, Ints{0, 1}, Values{3, 1}));
    EXPECT_EQ (KLV_getbarcblocktriplet (task, 9, &count, variables.data (), rows.data (), columns.data (),
                                        values.data ()),
               0);
    EXPECT_EQ (std::tuple (cut (variables), cut (rows), cut (columns), cut (values)),
               std::tuple (Ints{0, 1}, Ints{1, 2}, Ints{1, 0}, Values{2, 5}));
    EXPECT_EQ (KLV_getbarablocktriplet (task, 9, &count, items.data (), variables.data (), rows.data (),
                                        columns.data (), values.data ()),
               0);
    EXPECT_EQ (std::tuple (cut (items), cut (variables), cut (rows), cut (columns), cut (values)),
               std::tuple (Ints{0, 1}, Ints{1, 0}, Ints{2, 1}, Ints{2, 0}, Values{7, -1}));
    EXPECT_EQ (KLV_getaccbarfblocktriplet (task, 9, &count, owners.data (), variables.data (), rows.data (),
                                           columns.data (), values.data ()),
               0);
    EXPECT_EQ (std::tuple (cut (owners), cut (variables), cut (values)),
               std::tuple (Longs{0, 3}, Ints{1, 1}, Values{4, 1}))
        << "a term of an expression in no constraint is told";
}

TEST (Conic, RowsOfConstraintsAreTheirExpressions)
{
    const EveryClass task;
    // Expression 3 in a second constraint, and a variable that comes after all expressions.
    KLV_appendvars (task, 1);
    const std::int64_t two = model::domain (task, KLV_appendrplusdomain, 2);
    EXPECT_EQ (KLV_appendaccseq (task, two, 2, 2, nullptr), 0);
    std::int64_t rows = 0, entries = 0, size = 0, exponents = 0;
    KLV_getaccntot (task, &rows);
    KLV_getaccfnumnz (task, &entries);
    EXPECT_TRUE (rows == 6 && entries == 5) << rows << ' ' << entries;
    Longs domains (3), expressions (6), row (5);
    Values b (6), g (6), value (5), alpha (2);
    Ints column (5);
    EXPECT_EQ (KLV_getaccs (task, domains.data (), expressions.data (), b.data ()), 0);
    EXPECT_EQ (std::tuple (domains, expressions, b),
               std::tuple (Longs{1, 0, 2}, Longs{0, 1, 2, 3, 2, 3}, Values{0.1, 0.2, 0.3, 0, 0, 0}));
    EXPECT_EQ (KLV_getaccgvector (task, g.data ()), 0);
    EXPECT_EQ (g, (Values{0.5, 0, 1e300, 3, 1e300, 3}));
    EXPECT_EQ (KLV_getaccftrip (task, row.data (), column.data (), value.data ()), 0);
    EXPECT_EQ (std::tuple (row, column, value),
               std::tuple (Longs{3, 5, 0, 3, 5}, Ints{1, 1, 1, 4, 4}, Values{1, 1, -1, 1, 1}));
    EXPECT_EQ (KLV_getpowerdomaininfo (task, 1, &size, &exponents), 0);
    EXPECT_EQ (KLV_getpowerdomainalpha (task, 1, alpha.data ()), 0);
    EXPECT_TRUE (size == 3 && exponents == 2 && alpha == (Values{1.0 / 3, 2}));
    EXPECT_EQ (KLV_getpowerdomaininfo (task, 2, &size, &exponents), 0);
    EXPECT_TRUE (size == 2 && exponents == 0);
}

TEST (Conic, NamesAndConesComeBack)
{
    const EveryClass task;
    std::int32_t length = 0, type = -1, count = 0, order = 0;
    double parameter = 0;
    Ints members (3);
    char name[100];
    KLV_getmaxnamelen (task, &length);
    EXPECT_EQ (length, 41);
    EXPECT_EQ (KLV_getaccname (task, 0, length + 1, name), 0);
    EXPECT_STREQ (name, "a long name of an affine conic constraint");
    EXPECT_EQ (KLV_getconename (task, 1, 100, name), 0);
    EXPECT_STREQ (name, "ice");
    EXPECT_EQ (KLV_getbarvarname (task, 0, 100, name), 0);
    EXPECT_STREQ (name, "");
    EXPECT_EQ (KLV_getcone (task, 0, &type, &parameter, &count, members.data ()), 0);
    EXPECT_TRUE (type == KLV_CONE_PRIMAL_POWER && parameter == 0.3 && count == 2);
    EXPECT_EQ (members, (Ints{4, 0, 0}));
    std::int64_t packed = 0;
    KLV_getdimbarvarj (task, 1, &order);
    KLV_getlenbarvarj (task, 1, &packed);
    EXPECT_TRUE (order == 3 && packed == 6);
}

TEST (Conic, SolutionsKeepTheirConicValues)
{
    const EveryClass task;
    const Values xx (5, 1), snx{1, 2, 3, 4, 5}, doty{1, 2, 3, 4}, matrix{1, 2, 3, 4, 5, 6};
    const Ints keys{3, 4};
    EXPECT_EQ (KLV_putbarxj (task, KLV_SOL_ITR, 0, matrix.data ()), KLV_RES_SOLUTION_UNDEFINED);
    EXPECT_EQ (KLV_putsolutionnew (task, KLV_SOL_ITR, nullptr, nullptr, keys.data (), nullptr, xx.data (),
                                   nullptr, nullptr, nullptr, nullptr, nullptr, snx.data (), doty.data ()),
               0);
    EXPECT_EQ (KLV_putbarxj (task, KLV_SOL_ITR, 1, matrix.data ()), 0);
    Ints found_keys (2), status (1);
    Values found (9), rows (4), some (2);
    KLV_getsolsta (task, KLV_SOL_ITR, status.data ());
    EXPECT_EQ (status[0], KLV_SOLSTA_UNKNOWN) << "nothing was measured";
    KLV_getskn (task, KLV_SOL_ITR, found_keys.data ());
    EXPECT_EQ (found_keys, keys);
    KLV_getaccdotys (task, KLV_SOL_ITR, rows.data ());
    EXPECT_EQ (rows, doty);
    KLV_getsnxslice (task, KLV_SOL_ITR, 3, 5, some.data ());
    EXPECT_EQ (some, (Values{4, 5}));
    EXPECT_EQ (KLV_getbarxslice (task, KLV_SOL_ITR, 0, 2, 8, found.data ()), KLV_RES_BUFFER_TOO_SMALL);
    EXPECT_EQ (KLV_getbarxslice (task, KLV_SOL_ITR, 0, 2, 9, found.data ()), 0);
    EXPECT_EQ (found, (Values{0, 0, 0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ (KLV_getbarsslice (task, KLV_SOL_ITR, 1, 2, 6, found.data ()), 0);
    EXPECT_EQ (found[0], 0);
    for (const auto append : {+[] (T t) { return append_cone (t, KLV_CONE_ZERO, 0, {}); },
                              +[] (T t) {
                                  const std::int32_t order = 0;
                                  return KLV_appendbarvars (t, 1, &order);
                              },
                              +[] (T t) { return KLV_appendaccseq (t, 0, 1, 0, nullptr); }}) {
        EXPECT_EQ (model::put_start (task, KLV_SOL_INT, {}, {}, xx), 0);
        EXPECT_EQ (append (task), 0);
        EXPECT_FALSE (static_cast<T> (task)->solutions[KLV_SOL_INT]) << "a solution of other sizes";
    }
}

// ---- What is refused ---------------------------------------------------------------------------------------

KLVrescode_t column (T task, std::int32_t j, const Longs& expressions, double value)
{
    const Values values (expressions.size (), value);
    return KLV_putafefcol (task, j, std::ssize (expressions), expressions.data (), values.data ());
}

KLVrescode_t size (T task, KLVrescode_t (*make) (T, std::int64_t, std::int64_t*), std::int64_t entries)
{
    std::int64_t made = -1;
    return make (task, entries, &made);
}

KLVrescode_t power (T task, std::int64_t entries, const Values& exponents)
{
    std::int64_t made = -1;
    return KLV_appenddualpowerconedomain (task, entries, std::ssize (exponents), exponents.data (), &made);
}

KLVrescode_t orders (T task, const Ints& given)
{
    return KLV_appendbarvars (task, static_cast<std::int32_t> (given.size ()), given.data ());
}

TEST (Conic, FaultsAreNamedAndChangeNothing)
{
    const struct {
        KLVrescode_t code;
        const char* message;
        KLVrescode_t (*call) (T task);
    } cases[] = {
        {KLV_RES_QOBJ_COLUMN_RANGE, "term 2 of the objective has the column 5, but there are 5 variables",
         [] (T t) { return put_objective (t, {0, -1}, {0, 5}, {1, 1}); }},
        {KLV_RES_QOBJ_ROW_RANGE, "the row -1", [] (T t) { return put_objective (t, {-1}, {0}, {1}); }},
        {KLV_RES_VALUE_NOT_FINITE, "variable 2 (index 1) and variable 1 (index 0) is NaN",
         [] (T t) { return put_objective (t, {0}, {1}, {nan}); }},
        {KLV_RES_VALUE_NOT_FINITE, "is Inf",
         [] (T t) { return put_objective (t, {0, 0}, {0, 0}, {1e308, 1e308}); }},
        {KLV_RES_INDEX_RANGE, "-1", [] (T t) { return KLV_putqobj (t, -1, nullptr, nullptr, nullptr); }},
        {KLV_RES_QCON_CONSTRAINT_RANGE, "term 1 belongs to the constraint 2",
         [] (T t) { return put_constraints (t, {2}, {9}, {9}, {1}); }},
        {KLV_RES_QCON_ROW_RANGE, "the row 9", [] (T t) { return put_constraints (t, {0}, {9}, {9}, {1}); }},
        {KLV_RES_QCON_COLUMN_RANGE, "the column 9",
         [] (T t) { return put_constraints (t, {0}, {0}, {9}, {1}); }},
        {KLV_RES_VALUE_NOT_FINITE, "constraint 2 (index 1) for",
         [] (T t) { return put_constraints (t, {1}, {0}, {0}, {-inf}); }},
        {KLV_RES_INDEX_RANGE, "negative: -1", [] (T t) { return KLV_putmaxnumqnz (t, -1); }},
        {KLV_RES_TOO_LARGE, "5 affine expressions and 2147483643 more",
         [] (T t) { return KLV_appendafes (t, 2147483643); }},
        {KLV_RES_INDEX_RANGE, "affine expression 5, but there are 5",
         [] (T t) { return column (t, 0, {0, 5}, 1); }},
        {KLV_RES_INDEX_RANGE, "affine expression 4294967296",
         [] (T t) { return column (t, 0, {1LL << 32}, 1); }},
        {KLV_RES_DUPLICATE_ENTRY, "affine expression 3 (index 2) twice",
         [] (T t) { return column (t, 0, {2, 2}, 1); }},
        {KLV_RES_VALUE_NOT_FINITE, "in affine expression 2 (index 1) is Inf",
         [] (T t) { return column (t, 0, {1}, inf); }},
        {KLV_RES_VALUE_NOT_FINITE, "constant of affine expression 5",
         [] (T t) { return KLV_putafegslice (t, 4, 5, &nan); }},
        {KLV_RES_INDEX_RANGE, "from 4 to 6", [] (T t) { return KLV_putafegslice (t, 4, 6, &nan); }},
        {KLV_RES_ARGUMENT, "a quadratic cone of size 0, can't be: its size is at least 1",
         [] (T t) { return size (t, KLV_appendquadraticconedomain, 0); }},
        {KLV_RES_ARGUMENT, "at least 2", [] (T t) { return size (t, KLV_appendrquadraticconedomain, 1); }},
        {KLV_RES_ARGUMENT, "at least 2", [] (T t) { return size (t, KLV_appendprimalgeomeanconedomain, 1); }},
        {KLV_RES_ARGUMENT, "free domain of size -1", [] (T t) { return size (t, KLV_appendrdomain, -1); }},
        {KLV_RES_ARGUMENT, "more entries than",
         [] (T t) { return size (t, KLV_appendrplusdomain, 1LL << 31); }},
        {KLV_RES_ARGUMENT, "n (n + 1) / 2", [] (T t) { return size (t, KLV_appendsvecpsdconedomain, 5); }},
        {KLV_RES_ARGUMENT, "needs an exponent", [] (T t) { return power (t, 3, {}); }},
        {KLV_RES_ARGUMENT, "2 exponents", [] (T t) { return power (t, 1, {1, 1}); }},
        {KLV_RES_ARGUMENT, "exponent 0 (number 2)", [] (T t) { return power (t, 3, {1, 0}); }},
        {KLV_RES_ARGUMENT, "exponent NaN", [] (T t) { return power (t, 3, {nan}); }},
        {KLV_RES_ARGUMENT, "exponent Inf", [] (T t) { return power (t, 3, {inf}); }},
        {KLV_RES_NULL_POINTER, "'domain'", [] (T t) { return KLV_appendprimalexpconedomain (t, nullptr); }},
        {KLV_RES_INDEX_RANGE, "no domain with index 2",
         [] (T t) { return KLV_appendaccseq (t, 2, 1, 0, nullptr); }},
        {KLV_RES_ARGUMENT,
         "constraint 3 (index 2) has 2 rows, but its domain, a quadratic cone, has the size 1",
         [] (T t) { return KLV_appendaccseq (t, 0, 2, 0, nullptr); }},
        {KLV_RES_INDEX_RANGE, "1 affine expressions from index 5 on, but there are 5",
         [] (T t) { return KLV_appendaccseq (t, 0, 1, 5, nullptr); }},
        {KLV_RES_INDEX_RANGE, "from index -1", [] (T t) { return KLV_appendaccseq (t, 0, 1, -1, nullptr); }},
        {KLV_RES_VALUE_NOT_FINITE, "Entry 1 of b", [] (T t) { return KLV_appendaccseq (t, 0, 1, 0, &nan); }},
        {KLV_RES_CONE_TYPE_UNKNOWN, "type 7", [] (T t) { return append_cone (t, 7, 0, {0}); }},
        {KLV_RES_ARGUMENT,
         "Cone 3 (index 2): a rotated quadratic cone of 1 members can't be: its size is at least 2",
         [] (T t) { return append_cone (t, KLV_CONE_ROTATED_QUADRATIC, 0, {0}); }},
        {KLV_RES_ARGUMENT, "its size is 3",
         [] (T t) { return append_cone (t, KLV_CONE_DUAL_EXPONENTIAL, 0, {0, 1}); }},
        {KLV_RES_ARGUMENT, "2 exponents",
         [] (T t) { return append_cone (t, KLV_CONE_DUAL_POWER, 0.5, {0}); }},
        {KLV_RES_ARGUMENT, "parameter 1: it",
         [] (T t) { return append_cone (t, KLV_CONE_DUAL_POWER, 1, {0, 1}); }},
        {KLV_RES_ARGUMENT, "parameter NaN", [] (T t) { return append_cone (t, KLV_CONE_ZERO, nan, {0}); }},
        {KLV_RES_CONE_MEMBER, "Member 2 of cone 3 (index 2) has the index 5",
         [] (T t) { return append_cone (t, KLV_CONE_ZERO, 0, {0, 5}); }},
        {KLV_RES_CONE_MEMBER, "has the index -1",
         [] (T t) { return append_cone (t, KLV_CONE_ZERO, 0, {-1}); }},
        {KLV_RES_DUPLICATE_ENTRY, "variable 2 (index 1), is in cone 2 (index 1, 'ice') already",
         [] (T t) { return append_cone (t, KLV_CONE_ZERO, 0, {1}); }},
        {KLV_RES_DUPLICATE_ENTRY, "Member 2 of cone 3 (index 2), variable 4 (index 3), is in the cone twice",
         [] (T t) { return append_cone (t, KLV_CONE_ZERO, 0, {3, 3}); }},
        {KLV_RES_ARGUMENT, "semidefinite variable 4 (index 3) is -1",
         [] (T t) { return orders (t, {1, -1}); }},
        {KLV_RES_TOO_LARGE, "more than can be counted", [] (T t) { return orders (t, {40000, 60000}); }},
        {KLV_RES_INDEX_RANGE, "-1", [] (T t) { return KLV_putmaxnumbarvar (t, -1); }},
        {KLV_RES_INDEX_RANGE, "term 1 of the constraints belongs to index 2, but there are 2",
         [] (T t) { return put_bara (t, {2}, {0}, {0}, {0}, {1}); }},
        {KLV_RES_INDEX_RANGE, "variable index 2, but there are 2",
         [] (T t) { return put_bara (t, {0}, {2}, {0}, {0}, {1}); }},
        {KLV_RES_INDEX_RANGE,
         "has the row index 3 and the column index 0, but semidefinite variable 2 (index 1, 'X') has the "
         "order 3",
         [] (T t) { return put_bara (t, {0}, {1}, {3}, {0}, {1}); }},
        {KLV_RES_INDEX_RANGE, "the column index -1",
         [] (T t) { return put_bara (t, {0}, {1}, {2}, {-1}, {1}); }},
        {KLV_RES_ARGUMENT, "lower triangle", [] (T t) { return put_bara (t, {0}, {1}, {0}, {1}, {1}); }},
        {KLV_RES_VALUE_NOT_FINITE, "for row index 1 and column index 0",
         [] (T t) { return put_bara (t, {0}, {1}, {1}, {0}, {nan}); }},
        {KLV_RES_INDEX_RANGE, "belongs to index 8589934592",
         [] (T t) {
             const std::int64_t owner = 1LL << 33;
             const std::int32_t zero = 0;
             return KLV_putafebarfblocktriplet (t, 1, &owner, &zero, &zero, &zero, &nan);
         }},
        {KLV_RES_NOT_AVAILABLE, "quadratic terms of the objective", [] (T t) { return KLV_optimize (t); }},
        {KLV_RES_NOT_CONVEX, "no conic form: the quadratic terms of the objective are not concave",
         [] (T t) { return KLV_toconic (t); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.message);
        const EveryClass task;
        const auto before = std::make_unique<klv::Problem> (task.problem ());
        EXPECT_EQ (c.call (task), c.code);
        EXPECT_NE (task.last_error ().find (c.message), std::string::npos) << task.last_error ();
        EXPECT_EQ (model::difference (*before, task.problem ()), std::nullopt);
        EXPECT_EQ (append_cone (task, KLV_CONE_ZERO, 0, {}), 0) << "the task goes on";
    }
}

TEST (Conic, MemoryMayRunOutInEachOperation)
{
    // Made before: the test's own memory must not be what runs out.
    static const Ints falling{4, 0}, zeros{0, 0}, rising{0, 1}, ones{1, 1}, twos{2, 2}, threes{3, 3},
        free{100, 101}, small{2, 3, 4, 5, 6};
    static const Longs expressions{200, 100, 300};
    static const Values values{1, 2, 3, 4, 5, 6, 7, 8, 9};
    const std::pair<const char*, KLVrescode_t (*) (T)> steps[] = {
        {"terms out of order", [] (T t) { return put_objective (t, falling, zeros, values); }},
        {"terms in order", [] (T t) { return put_constraints (t, rising, zeros, zeros, values); }},
        {"expressions", [] (T t) { return KLV_appendafes (t, 400); }},
        {"a column", [] (T t) { return KLV_putafefcol (t, 3, 3, expressions.data (), values.data ()); }},
        {"variables", [] (T t) { return KLV_appendvars (t, 300); }},
        {"a domain", [] (T t) { return power (t, 9, values); }},
        {"a constraint", [] (T t) { return KLV_appendaccseq (t, 2, 9, 3, nullptr); }},
        {"a cone", [] (T t) { return append_cone (t, KLV_CONE_ZERO, 0, free); }},
        {"matrices", [] (T t) { return orders (t, small); }},
        {"their terms", [] (T t) { return put_bara (t, rising, threes, twos, ones, values); }},
        {"a name",
         [] (T t) { return KLV_putbarvarname (t, 6, "a name that does not fit into a text's own room"); }},
        {"output",
         [] (T t) {
             std::int64_t count = 0;
             return KLV_getaccfnumnz (t, &count);
         }},
    };
    const EveryClass task;
    KLV_linkfunctotaskstream (task, KLV_STREAM_WARNINGS, nullptr, nullptr);
    for (const auto& [what, call] : steps) {
        SCOPED_TRACE (what);
        const klv::Problem before = task.problem ();
        for (std::size_t n = 0;; ++n) {
            const auto [code, failed] = [&, call = call] {
                const FailingNew failing (n);
                const KLVrescode_t answer = call (task);
                return std::pair (answer, failing.has_failed ());
            }();
            EXPECT_EQ (code, failed ? KLV_RES_OUT_OF_MEMORY : KLV_RES_OK);
            if (!failed) {
                EXPECT_GT (n, 0u);
                break;
            }
            EXPECT_EQ (model::difference (before, task.problem ()), std::nullopt) << n;
        }
    }
}

}
