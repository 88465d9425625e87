// Reading and writing that fail for reasons outside of the problem: no half problem and no half file is left.
#include "tests/library/model.h"
#include "tests/support/failing_new.h"

#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>

using testing::IsSubstring;

namespace {

// Names that need memory of their own, one that is no text, every section, and warnings.
const std::string small = files::lines (
    "NAME a problem of some length|ROWS| N the_cost_of_everything| L the_first_of_the_limits| E only\xFF|"
    " N another_free_row|COLUMNS| M1 'MARKER' 'INTORG'| the_first_of_the_columns the_cost_of_everything 1|"
    " M2 'MARKER' 'INTEND'| the_second_of_the_columns the_first_of_the_limits 3|RHS|"
    " R the_cost_of_everything 5| R the_first_of_the_limits 7|RANGES| R the_first_of_the_limits -2|"
    "BOUNDS| UP B the_second_of_the_columns -1|ENDATA|");

std::string large ()
{
    std::string text = "ROWS\n N c\nCOLUMNS\n";
    for (int i = 0; i < 50'000; ++i)
        text += " x" + std::to_string (i) + " c 1.25\n";
    return text + "ENDATA\n";
}

// A file in a folder of its own, and a task with its problem and a start.
struct Failure {
    files::Folder folder;
    std::string path;
    files::Task task;
    std::string old;    // what the file holds

    explicit Failure (const std::string& text = small, const std::string& name = "f.mps")
        : path (folder / name)
    {
        const std::string source = folder / "source.mps";
        files::save (source, text);
        EXPECT_EQ (KLV_readdata (task, source.c_str ()), KLV_RES_OK) << task.last_error ();
        EXPECT_EQ (
            model::put_start (task, KLV_SOL_INT, {}, {}, model::Values (task.problem ().cost.size (), 1)), 0);
        EXPECT_EQ (KLV_writedata (task, path.c_str ()), KLV_RES_OK) << task.last_error ();
        std::filesystem::remove (source);
        old = files::load (path);
        task.printed.clear ();
    }

    // After writing that failed: the folder has the file that was there and no other.
    void expect_old_file () const
    {
        EXPECT_EQ (files::load (path), old);
        EXPECT_EQ (folder.count (), 1U);
    }
};

TEST (MpsFailure, OpeningSaysWhy)
{
    const Failure failure;
    const files::Folder& folder = failure.folder;
    ASSERT_EQ (::mkfifo ((folder / "pipe.mps").c_str (), 0600), 0);
    ASSERT_EQ (::symlink ("/dev/full", (folder / "full.mps").c_str ()), 0);
    std::filesystem::create_directory (folder / "folder.mps");
    files::save (folder / "endless.mps", "NAME\n*");
    std::filesystem::resize_file (folder / "endless.mps", 20'000'000);
    constexpr const char* extension = "the extensions .mps, .qps, .lp, .cbf, .dat-s and .json are known";
    constexpr KLVrescode_t open = KLV_RES_FILE_OPEN, format = KLV_RES_FILE_FORMAT_UNKNOWN;
    const struct {
        decltype (&KLV_readdata) operation;
        std::string path;
        KLVrescode_t code;
        const char* cause;
    } cases[] = {
        {KLV_readdata, folder / "none.mps", open, "none.mps: cannot be opened: No such file"},
        {KLV_readdata, folder / "pipe.mps", open, "not a regular file"},
        {KLV_readdata, folder / "folder.mps", open, "it is a directory"},
        {KLV_readdata, folder / "f.gz", format, extension},
        {KLV_readdata, folder / "endless.mps", KLV_RES_FILE_SYNTAX, "endless.mps:2: a line is longer than"},
        {KLV_readdata, "", KLV_RES_FILE_NAME_MISSING, ""},
        {KLV_writedata, folder / "none/f.mps", open, "none/f.mps: cannot be written: No such file"},
        {KLV_writedata, folder / "folder.mps", open, "it is a directory"},
        {KLV_writedata, folder / "full.mps", open, "it is not a regular file"},
        {KLV_writedata, folder / "f.txt", format, extension},
        {KLV_writedata, "", KLV_RES_FILE_NAME_MISSING, ""},
    };
    for (const auto& [operation, path, code, cause] : cases) {
        const files::Task task;
        EXPECT_EQ (operation (task, path.c_str ()), code) << path;
        EXPECT_PRED_FORMAT2 (IsSubstring, std::string (cause), task.last_error ());
    }
    EXPECT_EQ (folder.count (), 5U);
    files::Task task;
    task.set_format (KLV_FILE_FREE_MPS);
    files::save (folder / "f.txt", small);
    EXPECT_EQ (KLV_readdata (task, (folder / "f.txt").c_str ()), KLV_RES_OK)
        << "a named format holds for any file";
    EXPECT_EQ (KLV_readdata (task, (folder / "none").c_str ()), KLV_RES_FILE_OPEN);
    EXPECT_EQ (task.problem ().variables (), 0) << "of the file that was read before";
}

TEST (MpsFailure, FullDiskLeavesTheOldFile)
{
    Failure failure (large ());
    KLV_putobjsense (failure.task, KLV_SENSE_MAXIMIZE);
    rlimit limit{};
    const auto before = ::signal (SIGXFSZ, SIG_IGN);
    ::getrlimit (RLIMIT_FSIZE, &limit);
    const rlimit less{300'000, limit.rlim_max};
    ::setrlimit (RLIMIT_FSIZE, &less);
    const KLVrescode_t code = KLV_writedata (failure.task, failure.path.c_str ());
    ::setrlimit (RLIMIT_FSIZE, &limit);
    ::signal (SIGXFSZ, before);
    EXPECT_EQ (code, KLV_RES_FILE_WRITE);
    EXPECT_PRED_FORMAT2 (IsSubstring, "f.mps: cannot be written: File too large", failure.task.last_error ());
    failure.expect_old_file ();
}

TEST (MpsFailure, LinkAndPermissionsOfATargetAreKept)
{
    const Failure failure;
    const std::string link = failure.folder / "link.mps";
    ::chmod (failure.path.c_str (), 0640);
    ASSERT_EQ (::symlink ("f.mps", link.c_str ()), 0);
    KLV_putobjsense (failure.task, KLV_SENSE_MAXIMIZE);
    ASSERT_EQ (KLV_writedata (failure.task, link.c_str ()), KLV_RES_OK);
    EXPECT_NE (files::load (failure.path), failure.old);
    EXPECT_TRUE (std::filesystem::is_symlink (link));
    struct stat status {};
    ::stat (failure.path.c_str (), &status);
    EXPECT_EQ (status.st_mode & 07777, 0640U);
}

TEST (MpsFailure, CallbackIsAskedAndStops)
{
    for (const auto& [operation, begin, end] :
         {std::tuple{&KLV_readdata, KLV_CALLER_BEGIN_READ, KLV_CALLER_END_READ},
          {&KLV_writedata, KLV_CALLER_BEGIN_WRITE, KLV_CALLER_END_WRITE}})
        for (const std::uint32_t stop_at : {begin, end}) {
            Failure failure;
            std::vector<std::uint32_t> callers;
            failure.task.on_progress ([&] (std::uint32_t caller) {
                callers.push_back (caller);
                return caller == stop_at;
            });
            EXPECT_EQ (operation (failure.task, failure.path.c_str ()), KLV_RES_USER_STOP);
            EXPECT_EQ (callers.front (), begin);
            EXPECT_EQ (callers.back (), stop_at);
            EXPECT_EQ (failure.task.problem ().variables (), operation == KLV_readdata ? 0 : 2);
            EXPECT_EQ (failure.task.printed.find ("rror"), std::string::npos) << "a stop is no error";
            failure.expect_old_file ();
        }
}

TEST (MpsFailure, EveryAllocationFailsOnce)
{
    for (const std::string name : {"f.mps", "f.lp", "f.lp.gz", "f.json"}) {
        SCOPED_TRACE (name);
        const Failure failure (small, name);
        const KLVtask_t writer = failure.task;
        const char* const path = failure.path.c_str ();
        KLV_putobjsense (writer, KLV_SENSE_MAXIMIZE);
        EXPECT_GT (fail_each ([&] { return KLV_writedata (writer, path); }, KLV_RES_OK,
                              [&] { failure.expect_old_file (); }),
                   9);
        EXPECT_NE (files::load (path), failure.old);
        const files::Task reader;
        const auto expect = [&] (bool there) {
            EXPECT_EQ (reader.problem ().variables (), there ? 2 : 0);
            EXPECT_EQ (reader->solutions[KLV_SOL_INT].has_value (), there && name == "f.json");
        };
        EXPECT_GT (
            fail_each ([&] { return KLV_readdata (reader, path); }, KLV_RES_OK, [&] { expect (false); }), 9);
        expect (true);
        EXPECT_EQ (failure.folder.count (), 1U);
    }
}

// ---- Packed files

TEST (PackedFile, FaultsOfThePackingHaveTheirLine)
{
    const std::string nothing ("\x1F\x8B\x08\0\0\0\0\0\0\x03\x03\0\0\0\0\0\0\0\0\0", 20);
    const Failure failure (large (), "f.mps.gz");
    const std::string& packed = failure.old;
    ASSERT_TRUE (packed.starts_with ("\x1F\x8B"));
    std::string damaged = packed, checked = packed;
    damaged[packed.size () / 2] ^= 1;
    checked[packed.size () - 8] ^= 1;
    for (const auto& [bytes, cause] : std::initializer_list<std::pair<std::string, const char*>>{
             {packed, ""},
             {nothing + packed + nothing, ""},
             {packed + packed, ":50008: text after ENDATA"},
             {packed.substr (0, packed.size () / 2), "the packed data end too early"},
             {packed + nothing.substr (0, 9), ":50007: the packed data end too early"},
             {packed.substr (0, 2), ":1: the packed data end too early"},
             {packed + "end", ":50007: the packed data are followed by something else"},
             {damaged, ": "},
             {checked, ": the packed data are damaged"},
         }) {
        SCOPED_TRACE (cause);
        files::save (failure.path, bytes);
        const files::Task task;
        ASSERT_EQ (KLV_readdata (task, failure.path.c_str ()), *cause ? KLV_RES_FILE_SYNTAX : KLV_RES_OK);
        EXPECT_PRED_FORMAT2 (IsSubstring, std::string (cause), task.last_error ());
        EXPECT_EQ (task.problem ().variables (), *cause ? 0 : 50'000);
    }
}

}
