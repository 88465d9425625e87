// The fixture of every test on the standalone host: a new session, and no fault or leak at its end.
#pragma once

#include <gtest/gtest.h>

#include "host/standalone/standalone.h"

class HostTest : public testing::Test {
protected:
    void SetUp () override { standalone::reset (); }

    void TearDown () override
    {
        for (const std::string& fault : standalone::session ().faults)
            ADD_FAILURE () << fault;
        EXPECT_EQ (standalone::live_arrays (), 0U);
        EXPECT_EQ (standalone::live_blocks (), 0U);
    }
};
