// A problem that a task holds, as text that shows every bit of it.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "kalvo.h"

inline std::string task_text (KLVtask_t task)
{
    std::ostringstream text;
    text.precision (17);
    std::int32_t numvar = -1, numcon = -1, sense = -1;
    double constant = -1;
    char name[KLV_MAX_TEXT] = "";
    EXPECT_EQ (KLV_getnumvar (task, &numvar), 0);
    EXPECT_EQ (KLV_getnumcon (task, &numcon), 0);
    KLV_getobjsense (task, &sense);
    KLV_getcfix (task, &constant);
    KLV_gettaskname (task, sizeof name, name);
    text << numcon << " by " << numvar << ", sense " << sense << ", constant " << constant << ", name "
         << name;
    KLV_getobjname (task, sizeof name, name);
    text << ", objective " << name;

    std::vector<double> costs (static_cast<std::size_t> (numvar));
    std::vector<std::int32_t> rows (static_cast<std::size_t> (numcon));
    std::vector<double> values (rows.size ());
    EXPECT_EQ (KLV_getc (task, costs.data ()), 0);
    std::int32_t key = -1, type = -1, count = -1;
    double lower = 0, upper = 0;
    for (std::int32_t i = 0; i < numcon; ++i) {
        KLV_getconname (task, i, sizeof name, name);
        EXPECT_EQ (KLV_getconbound (task, i, &key, &lower, &upper), 0);
        text << "\nrow " << i << " '" << name << "' key " << key << ": " << lower << " " << upper;
    }
    for (std::int32_t j = 0; j < numvar; ++j) {
        KLV_getvarname (task, j, sizeof name, name);
        KLV_getvartype (task, j, &type);
        EXPECT_EQ (KLV_getvarbound (task, j, &key, &lower, &upper), 0);
        EXPECT_EQ (KLV_getacol (task, j, &count, rows.data (), values.data ()), 0);
        text << "\ncolumn " << j << " '" << name << "' type " << type << " cost "
             << costs[static_cast<std::size_t> (j)] << " key " << key << ": " << lower << " " << upper << ";";
        for (std::size_t k = 0; k < static_cast<std::size_t> (count); ++k)
            text << " " << rows[k] << ":" << values[k];
    }
    return text.str ();
}
