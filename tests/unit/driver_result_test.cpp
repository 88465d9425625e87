// The result record: which fields it has, in which order, and what the codes say.

#include <fstream>
#include <iterator>

#include "tests/support/problem_file.h"
#include "tests/unit/gateway_call.h"

namespace {

using Names = std::vector<std::string>;

struct Row {
    const char* fault;
    const char* command;
    Names fields;    // before rcode, rmsg and rcodestr
    double code = 0;
    Value (*problem) () = small_problem;
};

class ResultFieldsTest : public HostTest, public testing::WithParamInterface<Row> {};

TEST_P (ResultFieldsTest, AreWhatTheRequestNeeds)
{
    const Row& row = GetParam ();
    const Call result = call (2, {text (row.command), row.problem ()});
    Names expected = row.fields;
    expected.insert (expected.end (), {"rcode", "rmsg", "rcodestr"});
    ASSERT_TRUE (result[1]);
    EXPECT_EQ (result[1].field_names (), expected);
    EXPECT_EQ (result[0].number (), row.code);
    EXPECT_EQ (result[1]["rcode"].number (), row.code);
    char name[KLV_MAX_TEXT];
    KLV_getcodedesc (static_cast<KLVrescode_t> (row.code), name, nullptr);
    EXPECT_EQ (result[1]["rcodestr"].text (), name);
    EXPECT_NE (result[1]["rmsg"].text (), "");
    for (const std::string& field : row.fields)
        EXPECT_TRUE (result[1][field.c_str ()] && result[1][field.c_str ()].count () > 0) << field;
}

Value nothing ()
{
    return absent ();
}
Value number ()
{
    return scalar (5);
}

INSTANTIATE_TEST_SUITE_P (Requests, ResultFieldsTest,
                          testing::Values (Row{"an empty request returns more", "echo(0)", {}, 0, nothing},
                                           Row{"the sense alone solves", "echo(0) min", {}},
                                           Row{"no solution comes back", "echo(0) minimize", {"sol"}},
                                           Row{"the order of the words shows",
                                               "echo(0) symbcon version info param prob minimize",
                                               {"sol", "prob", "param", "info", "version", "symbcon"}},
                                           Row{"a failure hides what was asked for",
                                               "echo(0) param info version minimize",
                                               {"param", "info", "version"},
                                               1200,
                                               number},
                                           Row{"a problem that was not read is left out",
                                               "echo(0) read",
                                               {"prob"},
                                               KLV_RES_FILE_NAME_MISSING,
                                               nothing}),
                          by_fault);

using ResultTest = HostTest;

TEST_F (ResultTest, GivesTheVersionByParts)
{
    const Call result = call (2, {text ("version echo(0)")});
    const View version = result[1]["version"];
    EXPECT_EQ (version.field_names (), (Names{"major", "minor", "revision"}));
    EXPECT_EQ (version["major"].number (), 10);
    EXPECT_EQ (version["minor"].number (), 2);
    EXPECT_EQ (version["revision"].number (), 18);
}

// Without a message of the library, the description of the code stands in for it.
TEST_F (ResultTest, DescribesTheCodeWhereTheLibraryHasNoMessage)
{
    char description[KLV_MAX_TEXT];
    KLV_getcodedesc (0, nullptr, description);
    EXPECT_EQ (call (2, {text ("echo(0)")})[1]["rmsg"].text (), description);
}

struct Outputs {
    const char* fault;
    int requested;
    const char* command;
    bool has_code, has_result;
};

class OutputsTest : public HostTest, public testing::WithParamInterface<Outputs> {};

TEST_P (OutputsTest, AreMadeOnlyWhenAskedFor)
{
    const Outputs& row = GetParam ();
    const Call result = call (row.requested, {text (row.command), small_problem ()});
    EXPECT_EQ (bool (result[0]), row.has_code);
    EXPECT_EQ (bool (result[1]), row.has_result);
    EXPECT_EQ (result.left_arrays + result.left_blocks, 0U);
}

INSTANTIATE_TEST_SUITE_P (
    Calls, OutputsTest,
    testing::Values (Outputs{"a code that nobody asked for", 0, "minimize", false, false},
                     Outputs{"a record that nobody asked for", 1, "minimize", true, false},
                     Outputs{"a missing record", 2, "minimize", true, true},
                     Outputs{"a record after a failed set-up", 2, "bogus", true, false}),
    by_fault);

// ---- Files, senses and servers reach the library ----

TEST_F (ResultTest, SenseIsWhatTheCommandSays)
{
    for (const auto& [command, sense] :
         {std::pair ("prob", "minimize"), std::pair ("prob min", "minimize"),
          std::pair ("prob max", "maximize"), std::pair ("prob minimize", "minimize")}) {
        const Call result = call (2, {text (std::string ("echo(0) ") + command), small_problem ()});
        EXPECT_EQ (result[1]["prob"]["objsense"].text (), sense) << command;
    }
}

TEST_F (ResultTest, ProblemThatWasWrittenIsReadBack)
{
    const files::Folder folder;
    const std::string file = "(" + (folder / "small problem.mps") + ")";
    EXPECT_EQ (call (1, {text ("echo(0) max write" + file), small_problem ()})[0].number (), 0);
    // What is read counts, not the record; its sense stays unless the command has another.
    const Call kept = call (2, {text ("echo(0) read" + file), scalar (5)});
    EXPECT_EQ (kept[0].number (), 0);
    EXPECT_EQ (kept[1]["prob"]["objsense"].text (), "maximize");
    const Call solved = call (2, {text ("echo(0) minimize read" + file)});
    EXPECT_NEAR (solved[1]["sol"]["bas"]["pobjval"].number (), 3, 1e-6);
}

TEST_F (ResultTest, LogFileReceivesEverythingAtAnyLevel)
{
    const files::Folder folder;
    const std::string path = folder / "kalvo.log";
    EXPECT_EQ (call (1, {text ("echo(0) minimize log(" + path + ")"), small_problem ()})[0].number (), 0);
    EXPECT_EQ (session ().printed, "");
    std::ifstream log (path);
    const std::string content{std::istreambuf_iterator<char> (log), {}};
    EXPECT_NE (content.find ("primal objective"), std::string::npos) << content;

    const Call refused = call (2, {text ("echo(0) log(/no/such/folder/kalvo.log)"), small_problem ()});
    EXPECT_EQ (refused[0].number (), KLV_RES_FILE_OPEN);
    EXPECT_FALSE (refused[1]);
    EXPECT_TRUE (session ().printed.ends_with (set_up_line (KLV_RES_FILE_OPEN))) << session ().printed;
}

TEST_F (ResultTest, ServerIsAskedOfTheLibrary)
{
    const auto code = [] (const char* host) {
        return call (1, {absent (), absent (), absent (), absent (), record ({{"host", text (host)}})})[0]
            .number ();
    };
    EXPECT_EQ (code (""), 0);
    EXPECT_EQ (code ("solver.example"), KLV_RES_NOT_AVAILABLE);
}

}
