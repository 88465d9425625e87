// A task that holds every class of convex problems.
#pragma once

#include "tests/library/model.h"

#include <array>

namespace model {

using Ints = std::vector<std::int32_t>;
using Longs = std::vector<std::int64_t>;

inline std::int64_t domain (KLVtask_t task, KLVrescode_t (*make) (KLVtask_t, std::int64_t, std::int64_t*),
                            std::int64_t size)
{
    std::int64_t made = -1;
    EXPECT_EQ (make (task, size, &made), 0);
    return made;
}

inline std::int64_t power_domain (KLVtask_t task, std::int64_t size, const Values& exponents)
{
    std::int64_t made = -1;
    EXPECT_EQ (KLV_appendprimalpowerconedomain (task, size, std::ssize (exponents), exponents.data (), &made),
               0);
    return made;
}

inline KLVrescode_t put_objective (KLVtask_t task, const Ints& rows, const Ints& columns,
                                   const Values& values)
{
    return KLV_putqobj (task, static_cast<std::int32_t> (rows.size ()), rows.data (), columns.data (),
                        values.data ());
}

inline KLVrescode_t put_constraints (KLVtask_t task, const Ints& items, const Ints& rows, const Ints& columns,
                                     const Values& values)
{
    return KLV_putqcon (task, static_cast<std::int32_t> (items.size ()), items.data (), rows.data (),
                        columns.data (), values.data ());
}

inline KLVrescode_t append_cone (KLVtask_t task, std::int32_t type, double parameter, const Ints& members)
{
    return KLV_appendcone (task, type, parameter, static_cast<std::int32_t> (members.size ()),
                           members.data ());
}

inline KLVrescode_t put_bara (KLVtask_t task, const Ints& items, const Ints& variables, const Ints& rows,
                              const Ints& columns, const Values& values)
{
    return KLV_putbarablocktriplet (task, std::ssize (items), items.data (), variables.data (), rows.data (),
                                    columns.data (), values.data ());
}

// Five variables, two constraints, five affine expressions (the last in no constraint), two constraints of them (four rows), two
// cones, and semidefinite variables of the orders 2 and 3.
struct EveryClass : Task {
    explicit EveryClass () : Task ("max 1 2 3 4 5; .. 0.. 0..i .. ..; 1 1 in ..4; 0 1 1 in 1..", "")
    {
        EXPECT_EQ (put_objective (*this, {0, 2, 0, 1}, {0, 0, 2, 1}, {-2, 0.5, 0.25, -0.0}), 0);
        EXPECT_EQ (put_constraints (*this, {1, 0, 1}, {1, 4, 0}, {1, 3, 1}, {1, 2, 3}), 0);

        EXPECT_EQ (KLV_appendafes (*this, 5), 0);
        const Longs expressions{3, 0, 4};
        const Values coefficients{1, -1, 9}, constants{0.5, -0.0, 1e300, 3, 4};
        EXPECT_EQ (KLV_putafefcol (*this, 1, 3, expressions.data (), coefficients.data ()), 0);
        EXPECT_EQ (KLV_putafefcol (*this, 4, 1, expressions.data (), coefficients.data ()), 0);
        EXPECT_EQ (KLV_putafegslice (*this, 0, 5, constants.data ()), 0);
        const std::int64_t cone = domain (*this, KLV_appendquadraticconedomain, 1);
        const std::int64_t power = power_domain (*this, 3, {1.0 / 3, 2});
        const Values b{0.1, 0.2, 0.3};
        EXPECT_EQ (KLV_appendaccseq (*this, power, 3, 0, b.data ()), 0);
        EXPECT_EQ (KLV_appendaccseq (*this, cone, 1, 3, nullptr), 0);

        EXPECT_EQ (append_cone (*this, KLV_CONE_PRIMAL_POWER, 0.3, {4, 0}), 0);
        EXPECT_EQ (append_cone (*this, KLV_CONE_QUADRATIC, 0, {1, 2}), 0);

        const Ints orders{2, 3}, first{1, 0, 1}, rows{2, 1, 2}, columns{0, 1, 0};
        const Values values{1, 2, 4};
        const Longs owners{3, 4, 0};
        EXPECT_EQ (KLV_appendbarvars (*this, 2, orders.data ()), 0);
        EXPECT_EQ (
            KLV_putbarcblocktriplet (*this, 3, first.data (), rows.data (), columns.data (), values.data ()),
            0);
        EXPECT_EQ (put_bara (*this, {1, 0}, {0, 1}, {1, 2}, {0, 2}, {-1, 7}), 0);
        EXPECT_EQ (KLV_putafebarfblocktriplet (*this, 3, owners.data (), first.data (), rows.data (),
                                               columns.data (), values.data ()),
                   0);
        EXPECT_EQ (KLV_putconename (*this, 1, "ice"), 0);
        EXPECT_EQ (KLV_putaccname (*this, 0, "a long name of an affine conic constraint"), 0);
        EXPECT_EQ (KLV_putbarvarname (*this, 1, "X"), 0);
    }
};

}
