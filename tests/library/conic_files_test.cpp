// CBF and sparse SDPA files: what is understood, what is refused and where, and that what is written is read back.
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace {

constexpr double root = std::numbers::sqrt2;

struct Reading {
    files::Folder folder;
    std::string path;
    files::Task task;
    KLVrescode_t code;

    Reading (const char* name, const std::string& lines) : path (folder / name)
    {
        files::save (path, files::lines (lines));
        code = KLV_readdata (task, path.c_str ());
    }
    const klv::Problem& problem () const
    {
        EXPECT_EQ (code, KLV_RES_OK) << task.last_error ();
        return task.problem ();
    }
};

TEST (CbfRead, CoordinatesGoToBoundsRowsExpressionsAndMatrices)
{
    const Reading reading ("f.cbf", "# a comment|VER|4||POWCONES|1 2|2|1|3|OBJSENSE|MAX|PSDVAR|1|2|"
                                    "VAR|7 5|L+ 1|F 1|L- 1|L= 1|Q 3|INT|1|1|"
                                    "CON|9 5|L- 1|@0:POW 3|L= 1|F 1|EXP 3|PSDCON|1|2|"
                                    "OBJFCOORD|1|0 1 0 4|OBJACOORD|2|1 2.5|0 -1 # behind|OBJBCOORD|7|"
                                    "FCOORD|2|0 0 1 1 3|2 0 0 1 5|"
                                    "ACOORD|3|4 1 6|8 0 2|0 6 9|BCOORD|3|0 4|4 -2|5 8|"
                                    "HCOORD|2|0 2 0 1 3|0 2 1 1 11|DCOORD|1|0 1 0 -1|");
    const klv::Problem& p = reading.problem ();
    EXPECT_EQ (model::text_of (p),
               model::text_of (
                   model::parse ("max -1 2.5 0 0 0 0 0 +7; 0.. ..i ..0 =0 .. .. ..; 0 0 0 0 0 0 9 in ..-4; "
                                 "0 6 in =2; in ..")));
    // Expressions: the cone of VAR, POW, EXP, PSDCON.
    const klv::AffineConstraints& rows = p.affine_constraint;
    EXPECT_EQ (rows.end, (std::vector<std::int32_t>{3, 6, 9, 12}));
    EXPECT_EQ (p.domain.type,
               (std::vector<std::uint8_t>{KLV_DOMAIN_QUADRATIC_CONE, KLV_DOMAIN_PRIMAL_POWER_CONE,
                                          KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE, KLV_DOMAIN_SEMIDEFINITE_CONE}));
    EXPECT_EQ (p.domain.exponent, (std::vector<double>{1, 3}));
    EXPECT_EQ (p.cone.count (), 0);
    EXPECT_EQ (p.affine.g, (std::vector<double>{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1 * root, 0}));
    const auto entry = [&] (std::int32_t j, std::size_t k) {
        const klv::Column column = p.affine.f.column (j);
        return std::pair (column.rows[k], column.values[k]);
    };
    EXPECT_EQ (entry (0, 0), std::pair (8, 2.0));
    EXPECT_EQ (entry (2, 0), std::pair (10, 3 * root));
    EXPECT_EQ (entry (2, 1), std::pair (11, 11.0));
    EXPECT_EQ (entry (5, 0), std::pair (1, 1.0));
    EXPECT_EQ (p.semidefinite.constraint.item, (std::vector<std::int32_t>{0}));
    EXPECT_EQ (p.semidefinite.expression.item, (std::vector<std::int32_t>{4}));
    EXPECT_EQ (p.semidefinite.expression.row, (std::vector<std::int32_t>{1}));
    EXPECT_EQ (p.semidefinite.objective.value, (std::vector<double>{4}));
}

TEST (CbfRead, ConesOfVariablesStayWhenNoOthersCome)
{
    const Reading reading ("f.cbf",
                           "VER|3|POWCONES|1 2|2|.25|.75|OBJSENSE|MIN|VAR|8 4|QR 2|F 1|EXP* 3|@0:POW 2|"
                           "CON|1 1|L+ 1|ACOORD|1|0 7 1|");
    const klv::Problem& p = reading.problem ();
    EXPECT_EQ (p.cone.type, (std::vector<std::uint8_t>{KLV_CONE_ROTATED_QUADRATIC, KLV_CONE_DUAL_EXPONENTIAL,
                                                       KLV_CONE_PRIMAL_POWER}));
    EXPECT_EQ (p.cone.parameter[2], 0.25);
    EXPECT_EQ (p.cone.member, (std::vector<std::int32_t>{0, 1, 3, 4, 5, 6, 7}));
    EXPECT_EQ (p.affine.count (), 0);
}

TEST (SdpaRead, TheDualUnlessVariablesAreInteger)
{
    const std::string data =
        "\"a title|* more|2 = m|3 = blocks|(2, 1, -2)|{1.5,|+2}|0 1 1 2 3|1 1 2 1 4 1 2 1 1 6|"
        "2,3,2,2,7|0 3 1 1 -5 * behind|0 2 1 1 8|";
    {
        const Reading reading ("f.dat-s", data);
        const klv::Problem& p = reading.problem ();
        EXPECT_EQ (model::text_of (p),
                   model::text_of (model::parse ("max 8 -5 0; 0.. 0.. 0..; 6 in =1.5; 0 0 7 in =2")));
        EXPECT_EQ (p.semidefinite.order, (std::vector<std::int32_t>{2}));
        EXPECT_EQ (p.semidefinite.objective.value, (std::vector<double>{3}));
        EXPECT_EQ (p.semidefinite.constraint.row, (std::vector<std::int32_t>{1}));
        EXPECT_EQ (p.semidefinite.constraint.value, (std::vector<double>{4}));
    }
    const Reading reading ("f.dat-s", data + "*INTEGER|*2|");
    const klv::Problem& p = reading.problem ();
    EXPECT_EQ (model::text_of (p),
               model::text_of (model::parse ("min 1.5 2; .. ..i; 6 in 8..; in -5..; 0 7 in 0..")));
    EXPECT_EQ (p.affine.g, (std::vector<double>{0, 0 - 3 * root, 0}));
    EXPECT_EQ (p.affine.f.column (0).values[0], 4 * root);
    EXPECT_EQ (p.affine_constraint.end, (std::vector<std::int32_t>{3}));
}

TEST (ConicFiles, FaultsNameTheirLine)
{
    constexpr KLVrescode_t syntax = KLV_RES_FILE_SYNTAX, unsupported = KLV_RES_FILE_SECTION_UNSUPPORTED;
    const std::string head = "VER|1|OBJSENSE|MIN|VAR|2 1|F 2|CON|3 1|Q 3|";    // lines 1 to 10
    const std::string sdpa = "1|1|2|4|";
    static const struct {
        const char* name;
        std::string lines;
        int line;
        const char* fault;
        KLVrescode_t code = syntax;
    } cases[] = {
        {"f.cbf", "", 1, "no section VER"},
        {"f.cbf", "OBJSENSE|MIN|", 1, "without VER"},
        {"f.cbf", "VER|5|", 2, "version 5", unsupported},
        {"f.cbf", head + "CHANGE|", 11, "CHANGE", unsupported},
        {"f.cbf", head + "FOO|", 11, "unknown section \"FOO\""},
        {"f.cbf", head + "VAR|1 1|F 1|", 11, "VAR comes twice"},
        {"f.cbf", head + "ACOORD|0|INT|0|", 13, "INT belongs before"},
        {"f.cbf", head + "ACOORD|2|0 0 1|", 13, "ends within section ACOORD"},
        {"f.cbf", head + "ACOORD|1|3 0 1|", 13, "\"3\" is not the index of a row of CON: there are 3"},
        {"f.cbf", head + "ACOORD|1|0 2 1|", 13, "a variable"},
        {"f.cbf", head + "ACOORD|1|0 0 1e999|", 13, "beyond the numbers"},
        {"f.cbf", head + "ACOORD|1|0 0 1 5|", 13, "behind the last field"},
        {"f.cbf", head + "ACOORD|1|0 0|", 13, "a number is missing"},
        {"f.cbf", head + "ACOORD|2|0 0 1|0 0 1|", 14, "comes twice"},
        {"f.cbf", head + "OBJACOORD|2|0 1|0 2|", 14, "comes twice"},
        {"f.cbf", head + "FCOORD|1|0 0 0 0 1|", 13, "a semidefinite variable: there are 0"},
        {"f.cbf", "VER|1|PSDVAR|1|2|OBJFCOORD|2|0 0 1 1|0 1 0 1|", 9, "both triangles"},
        {"f.cbf", "VER|1|VAR|2 1|F 3|", 5, "more than its 2"},
        {"f.cbf", "VER|1|VAR|2 1|F 1|", 5, "have 1 members, not 2"},
        {"f.cbf", "VER|1|VAR|2 1|EXP 2|", 5, "size 2"},
        {"f.cbf", "VER|1|VAR|2 1|@0:POW 2|", 5, "POWCONES"},
        {"f.cbf", "VER|1|VAR|2 1|@0:Q 2|", 5, "unknown cone \"@0:Q\""},
        {"f.cbf", "VER|1|VAR|1 1|F 1|INT|2|0|0|", 9, "twice"},
        {"f.cbf", "VER|1|VAR|2000000000 1|F 2000000000|", 5, "2000000000 variables and rows"},
        {"f.cbf", "VER|1|PSDCON|1|60000|", 5, "1800030000 variables and rows"},
        {"f.cbf", "VER|1|PSDVAR|2|60000|60000|", 6, "more entries of matrices"},
        {"f.cbf", "VER|1|VAR|1 1|F 1|CON|1 1|L+ 1|BCOORD|1|0 -1e20|", 11, "bound infinity threshold"},
        {"f.dat-s", "", 1, "ends before"},
        {"f.dat-s", "1|1|0|4|", 3, "a block of size 0"},
        {"f.dat-s", "1|1|2 3|4|", 3, "one number too many"},
        {"f.dat-s", sdpa + "2 1 1 1 1|", 5, "the index of a matrix"},
        {"f.dat-s", sdpa + "1 1 3 1 1|", 5, "the index of a row"},
        {"f.dat-s", sdpa + "1 1 1 1|", 5, "a number is missing"},
        {"f.dat-s", sdpa + "1 1 1 2 1|1 1 2 1 1|", 6, "comes twice"},
        {"f.dat-s", "1|1|-2|4|1 1 1 2 1|", 5, "off the diagonal"},
        {"f.dat-s", "1|1|-2000000000|4|", 4, "2000000000 variables and rows"},
        {"f.dat-s", sdpa + "*INTEGER|*2|", 6, "the index of a variable"},
        {"f.dat-s", sdpa + "*INTEGER|*1|1 1 1 1 1|", 7, "behind *INTEGER"},
        {"f.dat-s", sdpa + "*RANK1|", 5, "RANK1", unsupported},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE (c.lines);
        const Reading reading (c.name, c.lines);
        EXPECT_EQ (reading.code, c.code);
        const std::string start = reading.path + ":" + std::to_string (c.line) + ": ";
        EXPECT_TRUE (reading.task.last_error ().starts_with (start)) << reading.task.last_error ();
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, c.fault, reading.task.last_error ());
    }
}

// ---- Writing

TEST (CbfWrite, OtherBoundsAndConesWithBoundsBecomeRows)
{
    klv::Problem problem = model::parse ("max 1 0 2 +5; 0..4 ..0 2..; 1 -1 in 1..3; 0 7 in =2; 0 0 1 in ..");
    const std::int32_t members[] = {0, 2};
    problem.cone.prepare (members, 3);
    problem.cone.append (KLV_CONE_QUADRATIC, 0, members);
    files::Folder folder;
    files::Task task;
    task->replace_problem (std::move (problem));
    ASSERT_EQ (KLV_writedata (task, (folder / "f.cbf").c_str ()), KLV_RES_OK) << task.last_error ();
    EXPECT_EQ (
        files::load (folder / "f.cbf"),
        files::lines ("VER|1||OBJSENSE|MAX||VAR|3 3|L+ 1|L- 1|F 1||CON|8 6|L+ 1|L= 1|F 1|L- 2|L+ 1|Q 2||"
                      "OBJACOORD|2|0 1|2 2||OBJBCOORD|5||ACOORD|10|0 0 1|3 0 1|0 1 -1|3 1 -1|1 1 7|2 2 1|"
                      "4 0 1|5 2 1|6 0 1|7 2 1||BCOORD|5|0 -1|1 -2|3 -3|4 -4|5 -2||"));
}

TEST (ConicFiles, WrittenAndReadAgainTheSame)
{
    static const struct {
        const char* name;
        std::vector<const char*> extensions;
    } cases[] = {
        {"socp/sambal.cbf", {".cbf", ".cbf.gz"}},
        {"exp/demb782.cbf", {".cbf"}},
        {"sdp/truss1.dat-s", {".dat-s", ".dat-s.gz"}},
        {"micp/example_small.dat-s", {".cbf"}},
    };
    for (const auto& c : cases)
        for (const char* extension : c.extensions) {
            SCOPED_TRACE (c.name);
            const files::Folder folder;
            const std::string copy = folder / (std::string ("copy") + extension);
            files::Task task, again;
            ASSERT_EQ (KLV_readdata (task, (std::string (KALVO_TEST_DATA "/") + c.name).c_str ()),
                       KLV_RES_OK);
            ASSERT_EQ (KLV_writedata (task, copy.c_str ()), KLV_RES_OK) << task.last_error ();
            ASSERT_EQ (KLV_readdata (again, copy.c_str ()), KLV_RES_OK) << again.last_error ();
            EXPECT_EQ (model::difference (task.problem (), again.problem ()), std::nullopt);
        }
}

TEST (ConicFiles, WhatCannotBeHeldIsRefused)
{
    static const struct {
        const char* problem;
        const char* extension;
        const char* fault;
    } cases[] = {
        {"min 1; x 0..", ".cbf", "CBF cannot hold names, as of variable 1 \"x\"; "},
        {"min 1; 0..", ".dat-s", "an objective that is minimised"},
        {"max 1 +2; 0..", ".dat-s", "a constant"},
        {"max 1; 0..3", ".dat-s", "variable 1"},
        {"max 1; 0..; 1 in ..3", ".dat-s", "constraint 1"},
        {"max 1; 0..i", ".dat-s", "integer variables"},
    };
    for (const auto& c : cases) {
        const files::Folder folder;
        files::Task task;
        task->replace_problem (model::parse (c.problem));
        EXPECT_EQ (KLV_writedata (task, (folder / (std::string ("f") + c.extension)).c_str ()),
                   KLV_RES_FILE_CANNOT_HOLD);
        EXPECT_PRED_FORMAT2 (testing::IsSubstring, c.fault, task.last_error ());
    }
}

}
