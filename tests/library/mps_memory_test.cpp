// Every allocation of reading and writing fails once: the code says so, no half problem and no half file is left.
#include "tests/support/failing_new.h"
#include "tests/support/problem_file.h"

#include <gtest/gtest.h>

namespace {

// Names that need memory of their own, every section, and warnings.
const char* const text = R"(NAME a problem of some length
OBJSENSE
    MAX
ROWS
 N the_cost_of_everything
 L the_first_of_the_limits
 E the_only_equation
 N another_free_row
COLUMNS
    M1 'MARKER' 'INTORG'
    the_first_of_the_columns the_cost_of_everything 1 the_only_equation 2
    M2 'MARKER' 'INTEND'
    the_second_of_the_columns the_first_of_the_limits 3
RHS
    RHS the_cost_of_everything 5 the_first_of_the_limits 7
RANGES
    RNG the_first_of_the_limits -2
BOUNDS
 UP BND the_second_of_the_columns -1
ENDATA
)";

TEST (MpsMemory, ReadingLeavesAnEmptyProblem)
{
    const files::Folder folder;
    const std::string path = folder / "f.mps", faulty = folder / "faulty.mps";
    files::save (path, text);
    files::save (faulty, std::string (text) + "more");
    for (const std::string* file : {&path, &faulty}) {
        bool failed = true;
        for (std::size_t n = 0; failed; ++n) {
            const files::Task task;
            KLVrescode_t code = KLV_RES_OK;
            {
                const FailingNew fault (n);
                code = KLV_readdata (task, file->c_str ());
                failed = fault.has_failed ();
            }
            ASSERT_EQ (code, failed          ? KLV_RES_OUT_OF_MEMORY
                             : file == &path ? KLV_RES_OK
                                             : KLV_RES_FILE_SYNTAX)
                << "allocation " << n;
            ASSERT_EQ (task.problem ().variables (), code == KLV_RES_OK ? 2 : 0) << "allocation " << n;
        }
    }
}

TEST (MpsMemory, WritingLeavesTheOldFile)
{
    const files::Folder folder;
    const std::string path = folder / "f.mps";
    files::save (path, text);
    const files::Task task;
    ASSERT_EQ (KLV_readdata (task, path.c_str ()), KLV_RES_OK);
    bool failed = true;
    for (std::size_t n = 0; failed; ++n) {
        KLVrescode_t code = KLV_RES_OK;
        {
            const FailingNew fault (n);
            code = KLV_writedata (task, path.c_str ());
            failed = fault.has_failed ();
        }
        ASSERT_EQ (code, failed ? KLV_RES_OUT_OF_MEMORY : KLV_RES_OK) << "allocation " << n;
        ASSERT_EQ (files::load (path) == text, failed) << "allocation " << n;
        ASSERT_EQ (folder.count (), 1U) << "allocation " << n;
    }
}

}
