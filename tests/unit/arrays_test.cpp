#include "input/arrays.h"

#include "tests/unit/gateway_function.h"

using namespace standalone;

namespace {

struct ShapeCase {
    const char* fault;
    std::function<Value ()> make;
    std::uint64_t length;
    int allow_sparse;
    int is_vector;
};

std::ostream& operator<< (std::ostream& out, const ShapeCase& shape)
{
    return out << shape.fault;
}

class VectorShape : public HostTest, public testing::WithParamInterface<ShapeCase> {};

TEST_P (VectorShape, IsDecidedByClassAndSize)
{
    const ShapeCase& shape = GetParam ();
    const Value value = shape.make ();
    EXPECT_EQ (isvector (value.get (), shape.length, shape.allow_sparse), shape.is_vector) << shape.fault;
}

const auto none = [] { return Value (); };
const auto row_of_5 = [] { return row ({1, 2, 3, 4, 5}); };
const auto column_of_5 = [] { return column ({1, 2, 3, 4, 5}); };
const auto sparse_column = [] { return sparse (5, 1, {{2, 0, 1.0}}); };

INSTANTIATE_TEST_SUITE_P (
    Arrays, VectorShape,
    testing::Values (
        ShapeCase{"absent is a vector of length 0", none, 0, 0, 1},
        ShapeCase{"empty is a vector of length 0", [] { return matrix (0, 0); }, 0, 0, 1},
        ShapeCase{"empty of any class is a vector of length 0", [] { return cell (Sizes{0, 3}); }, 0, 0, 1},
        ShapeCase{"absent is no vector of length 5", none, 5, 1, 0},
        ShapeCase{"empty is no vector of length 5", [] { return matrix (0, 5); }, 5, 1, 0},
        ShapeCase{"a number is no vector of length 0", [] { return scalar (1); }, 0, 0, 0},
        ShapeCase{"row", row_of_5, 5, 0, 1}, ShapeCase{"column", column_of_5, 5, 0, 1},
        ShapeCase{"too short", column_of_5, 6, 0, 0},
        ShapeCase{"a matrix is no vector of its rows", [] { return matrix (5, 5); }, 5, 0, 0},
        ShapeCase{"a matrix is no vector of its elements", [] { return matrix (5, 5); }, 25, 0, 0},
        ShapeCase{"length beyond 32 bits does not wrap", row_of_5, 5 + (1ULL << 32), 0, 0},
        ShapeCase{"sparse column, not allowed", sparse_column, 5, 0, 0},
        ShapeCase{"sparse column, allowed", sparse_column, 5, 1, 1},
        ShapeCase{"sparse row", [] { return sparse (1, 5, {{0, 2, 1.0}}); }, 5, 1, 0},
        ShapeCase{"sparse logical column", [] { return sparse (5, 1, {}, mxLOGICAL_CLASS); }, 5, 1, 1},
        ShapeCase{"integers", [] { return array (mxINT32_CLASS, {1, 5}); }, 5, 1, 0},
        ShapeCase{"single", [] { return array (mxSINGLE_CLASS, {1, 5}); }, 5, 1, 0},
        ShapeCase{"logical", [] { return array (mxLOGICAL_CLASS, {5, 1}); }, 5, 1, 0},
        ShapeCase{"text", [] { return text ("abcde"); }, 5, 1, 0},
        ShapeCase{"cell", [] { return cell (Sizes{1, 5}); }, 5, 1, 0},
        ShapeCase{"record", [] { return records ({1, 5}, {"x"}); }, 5, 1, 0},
        ShapeCase{"function handle", function_handle, 1, 1, 0}, ShapeCase{"object", object, 1, 1, 0},
        ShapeCase{"more dimensions, no row", [] { return array (mxDOUBLE_CLASS, {2, 1, 3}); }, 6, 0, 0}));

class Arrays : public HostTest {};

TEST_F (Arrays, LengthCountsElementsOfAnything)
{
    EXPECT_EQ (vectorlen (nullptr), 0U);
    EXPECT_EQ (vectorlen (matrix (0, 3).get ()), 0U);
    EXPECT_EQ (vectorlen (matrix (2, 3).get ()), 6U);
    EXPECT_EQ (vectorlen (array (mxCHAR_CLASS, {2, 3, 4}).get ()), 24U);
}

TEST_F (Arrays, OneDimensionalMeansOneRowOrColumn)
{
    EXPECT_TRUE (is1ddensevec (matrix (1, 0).get ()));
    EXPECT_FALSE (is1ddensevec (matrix (0, 0).get ()));
    EXPECT_FALSE (is1ddensevec (matrix (3, 3).get ()));
    EXPECT_TRUE (is1ddensevec (matrix (3, 1).get ()));
    EXPECT_FALSE (is1ddensevec (sparse (1, 5, {}).get ()));
}

TEST_F (Arrays, TextsAreChangedInPlace)
{
    char spaced[] = " a b ", plain[] = "ab", mixed[] = "quad_2 é";
    EXPECT_EQ (strtrim (spaced, ' '), 2);
    EXPECT_STREQ (spaced, "ab");
    EXPECT_EQ (strtrim (plain, ' '), 2);
    EXPECT_STREQ (plain, "ab");
    EXPECT_EQ (local_strupr (mixed), mixed);
    EXPECT_STREQ (mixed, "QUAD_2 é");
}

TEST_F (Arrays, NumbersThatDoNotFitHaveNoIndex)
{
    constexpr double infinity = std::numeric_limits<double>::infinity ();
    EXPECT_EQ (truncate_to_int32 (2.9), 2);
    EXPECT_EQ (truncate_to_int32 (-2.9), -2);
    EXPECT_EQ (truncate_to_int32 (2147483647.9), 2147483647);
    EXPECT_EQ (truncate_to_int32 (-2147483648.9), -2147483647 - 1);
    for (const double outside : {2147483648.0, -2147483649.0, 1e300, infinity, -infinity, std::nan ("")})
        EXPECT_FALSE (truncate_to_int32 (outside)) << outside;
}

}
