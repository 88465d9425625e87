// Forms by their columns, and one run of an engine on a form.
#pragma once

#include "kalvo/engines/engine.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace engine_run {

using klv::Claims;
using klv::ConeKind;
using klv::ConicForm;
using klv::ElementaryCone;
using klv::IntSetting;
using klv::Outcome;
using klv::SparseColumns;
using Values = std::vector<double>;

inline void append (SparseColumns& matrix, const Values& column)    // zeros are left out
{
    for (std::size_t i = 0; i < column.size (); ++i)
        if (column[i] != 0) {
            matrix.rows.push_back (static_cast<std::int32_t> (i));
            matrix.values.push_back (column[i]);
        }
    matrix.starts.push_back (static_cast<std::int32_t> (matrix.rows.size ()));
}

inline SparseColumns sparse (const std::vector<Values>& columns)
{
    SparseColumns matrix;
    for (const Values& column : columns)
        append (matrix, column);
    return matrix;
}

inline ConicForm form (const Values& cost, const std::vector<Values>& columns, const Values& right,
                       const std::vector<ElementaryCone>& cones, const std::vector<Values>& quadratic = {})
{
    return {.constant = 7,
            .cost = cost,
            .quadratic = sparse (quadratic.empty () ? std::vector<Values> (cost.size ()) : quadratic),
            .matrix = sparse (columns),
            .right = right,
            .cones = cones};
}

// What an engine tells; it is stopped at an iteration.
struct Heard : klv::Events {
    void text (std::string_view piece) noexcept override { log += piece; }
    void progress (const klv::Progress&) noexcept override {}
    void step (const klv::Progress& now) noexcept override
    {
        last = now;
        stop = now.iterations == stop_at;
    }
    void incumbent (const double*, std::size_t) noexcept override {}

    std::string log;
    klv::Progress last;
    std::int64_t stop_at = -1;
    klv::StopFlag stop = false;
};

using Set = std::vector<std::pair<IntSetting, int>>;

inline Claims run_engine (klv::Engine& engine, klv::Method method, const klv::Form& given, Heard& heard,
                          const Set& set = {}, bool reformulate = true, const klv::Budget& budget = {})
{
    auto settings = std::make_shared<klv::Parameters> ();
    for (const auto& [setting, value] : set)
        settings->integers[klv::parameter_number (setting)] = value;
    const auto shared = std::make_shared<const klv::Form> (given);
    return engine.begin (shared)->run ({.form = shared,
                                        .settings = settings,
                                        .method = method,
                                        .reformulate = reformulate,
                                        .budget = budget},
                                       heard.stop, heard);
}

inline void expect_near (const Values& found, const Values& expected, double tolerance = 1e-6)
{
    ASSERT_EQ (found.size (), expected.size ());
    for (std::size_t i = 0; i < found.size (); ++i)
        EXPECT_NEAR (found[i], expected[i], tolerance) << i;
}

}
