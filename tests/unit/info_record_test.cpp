// The records of information items and symbolic constants.

#include "tests/unit/gateway_call.h"

namespace {

using InformationTest = HostTest;

TEST_F (InformationTest, EveryItemIsANumberUnderItsName)
{
    const Call result = call (2, {text ("minimize info echo(0)"), small_problem ()});
    const View info = result[1]["info"];
    const std::vector<std::string> names = info.field_names ();
    ASSERT_EQ (names.size (), 228U);
    for (const std::string& name : names) {
        EXPECT_EQ (info[name.c_str ()].class_id (), mxDOUBLE_CLASS) << name;
        EXPECT_EQ (info[name.c_str ()].count (), 1U) << name;
    }
    char first_integer[KLV_MAX_TEXT];
    KLVtask_t task = nullptr;
    ASSERT_EQ (KLV_makeemptytask (nullptr, &task), 0);
    KLV_getinfname (task, KLV_INF_INTEGER, 0, first_integer);
    KLV_deletetask (&task);
    EXPECT_EQ (names[KLV_DOUBLE_INFORMATION], first_integer);
}

TEST_F (InformationTest, EveryConstantHasItsValue)
{
    const Call result = call (2, {text ("symbcon echo(0)")});
    const View constants = result[1]["symbcon"];
    const std::vector<std::string> names = constants.field_names ();
    ASSERT_FALSE (names.empty ());
    for (const std::string& name : names) {
        char value[KLV_MAX_TEXT] = "";
        ASSERT_EQ (KLV_symnamtovalue (name.c_str (), value), 1) << name;
        EXPECT_EQ (constants[name.c_str ()].number (), std::stod (value)) << name;
    }
}

}
