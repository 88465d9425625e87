// Writing MPS files: what they look like, what is refused, and that a failure changes no file.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>

using files::Folder;
using testing::IsSubstring;

namespace {

// min x + 2 y + 5: 1 <= row one <= 3, ...; the names are given by each case.
klv::Problem small_problem ()
{
    klv::Problem p;
    p.name = "small";
    p.objective_name = "cost";
    p.constant = 5;
    p.append_variables (3);
    p.append_constraints (4);
    p.cost = {1, 0.1, 0};
    const std::int32_t rows[] = {0, 2};
    const double values[] = {-1.5, 1e-7};
    p.matrix.put (0, rows, values);
    p.variable.key = {KLV_BK_LO, KLV_BK_RA, KLV_BK_UP};
    p.variable.lower = {0, 0, -klv::infinity};
    p.variable.upper = {klv::infinity, 4, 7};
    p.integer = {0, 1, 0};
    p.integers = 1;
    p.constraint.key = {KLV_BK_RA, KLV_BK_FR, KLV_BK_FX, KLV_BK_UP};
    p.constraint.lower = {1, -klv::infinity, 2, -klv::infinity};
    p.constraint.upper = {3, klv::infinity, 2, 6};
    return p;
}

struct Writing {
    Folder folder;
    std::string path = folder / "f.mps";
    files::Task task;

    explicit Writing (klv::Problem problem = small_problem ())
    {
        static_cast<KLVtask_t> (task)->replace_problem (std::move (problem));
    }

    KLVrescode_t write () { return KLV_writedata (task, path.c_str ()); }
};

TEST (MpsWrite, FreeForm)
{
    Writing writing;
    ASSERT_EQ (writing.write (), KLV_RES_OK) << writing.task.last_error ();
    EXPECT_EQ (files::load (writing.path), "NAME          small\n"
                                           "ROWS\n"
                                           " N  cost\n"
                                           " G  R1\n"
                                           " N  R2\n"
                                           " E  R3\n"
                                           " L  R4\n"
                                           "COLUMNS\n"
                                           "    C1 cost 1\n"
                                           "    C1 R1 -1.5\n"
                                           "    C1 R3 1e-07\n"
                                           "    M1 'MARKER' 'INTORG'\n"
                                           "    C2 cost 0.1\n"
                                           "    M2 'MARKER' 'INTEND'\n"
                                           "    C3 cost 0\n"
                                           "RHS\n"
                                           "    RHS cost -5\n"
                                           "    RHS R1 1\n"
                                           "    RHS R3 2\n"
                                           "    RHS R4 6\n"
                                           "RANGES\n"
                                           "    RNG R1 2\n"
                                           "BOUNDS\n"
                                           " UP BND C2 4\n"
                                           " MI BND C3\n"
                                           " UP BND C3 7\n"
                                           "ENDATA\n");
    EXPECT_EQ (writing.task.printed, "");
}

TEST (MpsWrite, FixedFormIsTakenForNamesWithBlanks)
{
    klv::Problem problem = small_problem ();
    problem.sense = KLV_SENSE_MAXIMIZE;
    problem.cost[1] = -1.0 / 3;
    problem.variable_name.put (1, 3, "the y");
    Writing writing (std::move (problem));
    ASSERT_EQ (writing.write (), KLV_RES_OK) << writing.task.last_error ();
    EXPECT_EQ (files::load (writing.path), "NAME          small\n"
                                           "OBJSENSE\n"
                                           "    MAX\n"
                                           "ROWS\n"
                                           " N  cost\n"
                                           " G  R1\n"
                                           " N  R2\n"
                                           " E  R3\n"
                                           " L  R4\n"
                                           "COLUMNS\n"
                                           "    C1        cost                 1\n"
                                           "    C1        R1                -1.5\n"
                                           "    C1        R3               1e-07\n"
                                           "    M1        'MARKER'                 'INTORG'\n"
                                           "    the y     cost      -0.3333333333333333\n"
                                           "    M2        'MARKER'                 'INTEND'\n"
                                           "    C3        cost                 0\n"
                                           "RHS\n"
                                           "    RHS       cost                -5\n"
                                           "    RHS       R1                   1\n"
                                           "    RHS       R3                   2\n"
                                           "    RHS       R4                   6\n"
                                           "RANGES\n"
                                           "    RNG       R1                   2\n"
                                           "BOUNDS\n"
                                           " UP BND       the y                4\n"
                                           " MI BND       C3\n"
                                           " UP BND       C3                   7\n"
                                           "ENDATA\n");
    EXPECT_PRED_FORMAT2 (IsSubstring, "1 numbers are longer than their 12 columns", writing.task.printed);
}

TEST (MpsWrite, BoundsBeyondTheThresholdAreNumbers)
{
    klv::Problem problem = small_problem ();
    problem.variable.upper[1] = 1e25;
    Writing writing (std::move (problem));
    ASSERT_EQ (writing.write (), KLV_RES_OK);
    EXPECT_PRED_FORMAT2 (IsSubstring, " UP BND C2 1e+25\n", files::load (writing.path));
    EXPECT_PRED_FORMAT2 (IsSubstring, "1 bounds are written as numbers", writing.task.printed);
}

// ---- What MPS cannot hold

struct Refusal {
    const char* what;
    std::function<void (klv::Problem&)> change;
    const char* cause;
    std::int32_t format = KLV_FILE_BY_EXTENSION;
};

std::ostream& operator<< (std::ostream& stream, const Refusal& refusal)
{
    return stream << refusal.what;
}

class MpsWriteRefusal : public testing::TestWithParam<Refusal> {};

TEST_P (MpsWriteRefusal, NamesTheItem)
{
    klv::Problem problem = small_problem ();
    GetParam ().change (problem);
    Writing writing (std::move (problem));
    writing.task.set_format (GetParam ().format);
    files::save (writing.path, "old");
    EXPECT_EQ (writing.write (), KLV_RES_FILE_CANNOT_HOLD);
    EXPECT_PRED_FORMAT2 (IsSubstring, std::string (GetParam ().cause), writing.task.last_error ());
    EXPECT_EQ (files::load (writing.path), "old");
    EXPECT_EQ (writing.folder.count (), 1U);
}

Refusal row (const char* what, const std::string& name, const char* cause,
             std::int32_t format = KLV_FILE_BY_EXTENSION)
{
    return {what, [name] (klv::Problem& p) { p.constraint_name.put (2, 4, name); }, cause, format};
}

INSTANTIATE_TEST_SUITE_P (
    Items, MpsWriteRefusal,
    testing::Values (
        row ("tab", "a\tb",
             "constraint 3 \"a?b\", whose name has a control character; no format that is known can"),
        row ("newline", "a\nb", "control character"),
        row ("blank in a long name", "a long name",
             "constraint 3 \"a long name\", whose name has a blank; no format"),
        row ("blank in free form", "a b", "has a blank; the fixed form can", KLV_FILE_FREE_MPS),
        row ("blank before", " ab", "has a blank; no format"),
        row ("blank behind", "ab ", "begins or ends with a blank; no format", KLV_FILE_FIXED_MPS),
        row ("too long for fixed form", "ninechars", "is too long; the free form can", KLV_FILE_FIXED_MPS),
        row ("too long for a line", std::string (65537, 'x'), "is too long; no format"),
        row ("comment sign in fixed form", "$a", "begins with the sign of comments; the free form can",
             KLV_FILE_FIXED_MPS),
        row ("marker", "'MARKER'", "is the word of markers"),
        row ("like the objective", "cost", "two items of the same name: constraint 3 \"cost\""),
        Refusal{"two variables",
                [] (klv::Problem& p) {
                    p.variable_name.put (0, 3, "x");
                    p.variable_name.put (2, 3, "x");
                },
                "two items of the same name: variable 3 \"x\""},
        Refusal{"blank in the objective", [] (klv::Problem& p) { p.objective_name = "the whole cost"; },
                "objective \"the whole cost\""},
        Refusal{"newline in the problem's name", [] (klv::Problem& p) { p.name = "a\nb"; },
                "the problem's name \"a?b\""},
        Refusal{"blank before the problem's name", [] (klv::Problem& p) { p.name = " a"; },
                "begins or ends with a blank"},
        Refusal{"crossed constraint", [] (klv::Problem& p) { p.constraint.lower[0] = 4; },
                "constraint 1 \"R1\", whose bounds are crossed"}));

// ---- Failures leave the folder as it was

TEST (MpsWriteFile, ThatCannotBeMadeSaysWhy)
{
    Writing writing;
    ::symlink ((writing.folder / "loop.mps").c_str (), (writing.folder / "loop.mps").c_str ());
    std::filesystem::create_directory (writing.folder / "folder.mps");
    ::symlink ("/dev/full", (writing.folder / "full.mps").c_str ());
    const struct {
        std::string path;
        KLVrescode_t code;
        const char* cause;
    } cases[] = {
        {writing.folder / "none/f.mps", KLV_RES_FILE_OPEN,
         "none/f.mps: cannot be written: No such file or directory"},
        {writing.folder / "folder.mps", KLV_RES_FILE_OPEN, "it is a directory"},
        {writing.folder / "full.mps", KLV_RES_FILE_OPEN, "it is not a regular file"},
        {"/proc/none.mps", KLV_RES_FILE_OPEN, "cannot be written"},
        {writing.folder / "f.txt", KLV_RES_FILE_FORMAT_UNKNOWN, "the extension .mps is known"},
        {"", KLV_RES_FILE_NAME_MISSING, ""},
    };
    for (const auto& [path, code, cause] : cases) {
        EXPECT_EQ (KLV_writedata (writing.task, path.c_str ()), code) << path;
        EXPECT_PRED_FORMAT2 (IsSubstring, std::string (cause), writing.task.last_error ());
    }
    EXPECT_EQ (writing.folder.count (), 3U);
}

TEST (MpsWriteFile, FullDiskLeavesTheOldFile)
{
    klv::Problem problem = small_problem ();
    problem.append_variables (100'000);
    Writing writing (std::move (problem));
    files::save (writing.path, "old");

    struct sigaction ignore {
    }, before{};
    ignore.sa_handler = SIG_IGN;
    rlimit limit{};
    ::sigaction (SIGXFSZ, &ignore, &before);
    ::getrlimit (RLIMIT_FSIZE, &limit);
    rlimit small = limit;
    small.rlim_cur = 300'000;
    ::setrlimit (RLIMIT_FSIZE, &small);
    const KLVrescode_t code = writing.write ();
    ::setrlimit (RLIMIT_FSIZE, &limit);
    ::sigaction (SIGXFSZ, &before, nullptr);

    EXPECT_EQ (code, KLV_RES_FILE_WRITE);
    EXPECT_PRED_FORMAT2 (IsSubstring, "f.mps: cannot be written: File too large", writing.task.last_error ());
    EXPECT_EQ (files::load (writing.path), "old");
    EXPECT_EQ (writing.folder.count (), 1U);
}

TEST (MpsWriteFile, StopLeavesTheOldFile)
{
    struct Stop {
        std::uint32_t at;
        static std::int32_t answer (KLVtask_t, void* handle, std::uint32_t caller, const double*,
                                    const std::int32_t*, const std::int64_t*)
        {
            return static_cast<Stop*> (handle)->at == caller ? 1 : 0;
        }
    };
    for (const std::uint32_t at : {KLV_CALLER_BEGIN_WRITE, KLV_CALLER_END_WRITE}) {
        Writing writing;
        files::save (writing.path, "old");
        Stop stop{at};
        KLV_putcallbackfunc (writing.task, Stop::answer, &stop);
        EXPECT_EQ (writing.write (), KLV_RES_USER_STOP);
        EXPECT_EQ (files::load (writing.path), "old");
        EXPECT_EQ (writing.folder.count (), 1U);
        EXPECT_EQ (writing.task.printed, "") << "a stop is no error";
    }
}

TEST (MpsWriteFile, KeepsLinkAndPermissions)
{
    Writing writing;
    const std::string target = writing.folder / "target.txt";
    files::save (target, "old");
    ::chmod (target.c_str (), 0640);
    ASSERT_EQ (::symlink ("target.txt", writing.path.c_str ()), 0);
    ASSERT_EQ (writing.write (), KLV_RES_OK);
    EXPECT_TRUE (std::filesystem::is_symlink (writing.path));
    EXPECT_TRUE (files::load (target).ends_with ("ENDATA\n"));
    struct stat status {};
    ::stat (target.c_str (), &status);
    EXPECT_EQ (status.st_mode & 07777, 0640U);
}

}
