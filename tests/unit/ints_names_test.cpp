#include <limits>

#include "input/readers.h"
#include "tests/unit/gateway_function.h"

using namespace standalone;

namespace {

constexpr double inf = std::numeric_limits<double>::infinity (),
                 nan = std::numeric_limits<double>::quiet_NaN ();

struct ReadCase {
    const char* fault;
    std::function<Value ()> value;
    std::string outcome;    // what the task holds afterwards
    KLVrescode_t code = 0;
    std::string text = "";
};

std::ostream& operator<< (std::ostream& out, const ReadCase& c)
{
    return out << c.fault;
}

// Three constraints and five variables.
class Reading : public GatewayFunctionTest, public testing::WithParamInterface<ReadCase> {
protected:
    Reading ()
    {
        KLV_appendcons (task, 3);
        KLV_appendvars (task, 5);
    }

    void expect_code (KLVrescode_t code) const
    {
        EXPECT_EQ (code, GetParam ().code);
        EXPECT_EQ (printed (), GetParam ().text.empty () ? "" : error_line (code, GetParam ().text));
    }
};

class Integers : public Reading {};

TEST_P (Integers, AreMarked)
{
    expect_code (
        run ({GetParam ().value ()}, [&] (mxArray**, const mxArray** in) { return putints (task, in[0]); }));
    std::string marked;
    for (int j = 0; j < 5; ++j) {
        std::int32_t type = 0;
        KLV_getvartype (task, j, &type);
        marked += type == KLV_VAR_INTEGER ? std::to_string (j) : "";
    }
    EXPECT_EQ (marked, GetParam ().outcome);
}

Value sub (Value indices)
{
    return record ({{"sub", std::move (indices)}});
}

INSTANTIATE_TEST_SUITE_P (
    Sub, Integers,
    testing::Values (
        ReadCase{"repeated", [] { return sub (row ({2, 2, 5})); }, "14"},
        ReadCase{"truncated", [] { return sub (column ({1.9, 3})); }, "02"},
        ReadCase{"below 1", [] { return sub (row ({0.9})); }, "", 1200, "prob.ints.sub(1)"},
        ReadCase{"beyond the variables, after a good one", [] { return sub (row ({1, 6, 2})); }, "0", 1200,
                 "prob.ints.sub(2)"},
        ReadCase{"NaN", [] { return sub (row ({nan})); }, "", 1200, "prob.ints.sub(1)"},
        ReadCase{"infinite", [] { return sub (row ({3, -inf})); }, "2", 1200, "prob.ints.sub(2)"},
        ReadCase{"wraps to 1 in 32 bits", [] { return sub (row ({4294967297.0})); }, "", 1200,
                 "prob.ints.sub(1)"},
        ReadCase{"complex", [] { return sub (complex (1, 1, {1}, {1})); }, "", 1200,
                 "prob.ints.sub is complex"},
        ReadCase{"empty", [] { return sub (matrix (0, 0)); }, ""},
        ReadCase{"unset", [] { return records ({1, 1}, {"sub"}); }, ""},
        ReadCase{"absent", [] { return record ({{"sum", row ({1})}}); }, ""},
        ReadCase{"sparse is ignored", [] { return sub (sparse (1, 1, {{0, 0, 1}})); }, ""},
        ReadCase{"a matrix is ignored", [] { return sub (matrix (2, 2, {1, 2, 3, 4})); }, ""},
        ReadCase{"another class is ignored", [] { return sub (array (mxINT32_CLASS, {1, 1}, {1})); }, ""},
        ReadCase{"a vector instead of a record", [] { return row ({1, 2}); }, "", 1200, "prob.ints"},
        ReadCase{"several records", [] { return records ({1, 2}, {"sub"}); }, "", 1200,
                 "prob.ints must be a 1-by-1 structure"},
        ReadCase{"no records", [] { return records ({0, 0}, {"sub"}); }, ""},
        ReadCase{"a function", function_handle, "", 1200, "prob.ints"},
        ReadCase{"an empty text", [] { return text (""); }, ""}));

class Names : public Reading {};

TEST_P (Names, AreGiven)
{
    expect_code (
        run ({GetParam ().value ()}, [&] (mxArray**, const mxArray** in) { return putnames (task, in[0]); }));
    std::string names;
    char name[KLV_MAX_TEXT] = "";
    const auto add = [&] (const char* kind) {
        if (*name != '\0')
            names += std::string (kind) + name + " ";
    };
    KLV_gettaskname (task, sizeof name, name);
    add ("task:");
    KLV_getobjname (task, sizeof name, name);
    add ("obj:");
    for (int i = 0; i < 3; ++i) {
        KLV_getconname (task, i, sizeof name, name);
        add ("con:");
    }
    for (int j = 0; j < 5; ++j) {
        KLV_getvarname (task, j, sizeof name, name);
        add ("var:");
    }
    EXPECT_EQ (names, GetParam ().outcome);
}

Value three (const Value& second)
{
    return cell ({text ("a"), second, text ("c")});
}

INSTANTIATE_TEST_SUITE_P (
    Fields, Names,
    testing::Values (
        ReadCase{
            "single names and a list with an empty one",
            [] { return record ({{"obj", text ("o")}, {"name", text ("t")}, {"con", three (text (""))}}); },
            "task:t obj:o con:a con:c "},
        ReadCase{"several rows are read by columns", [] { return record ({{"name", texts ({"ab", "cd"})}}); },
                 "task:acbd "},
        ReadCase{"more than one byte a character", [] { return record ({{"name", text ("€€€")}}); },
                 "task:€€€ "},
        ReadCase{
            "lists without items are not looked at",
            [] { return record ({{"cone", scalar (1)}, {"acc", text ("x")}, {"barvar", matrix (0, 0)}}); },
            ""},
        ReadCase{"no text", [] { return record ({{"name", scalar (1)}, {"obj", text ("o")}}); }, "", 1200,
                 "prob.names.name"},
        ReadCase{"unset", [] { return records ({1, 1}, {"obj"}); }, "", 1200, "prob.names.obj"},
        ReadCase{"a zero character would cut it",
                 [] { return record ({{"name", array (mxCHAR_CLASS, {1, 3}, {97, 0, 98})}}); }, "", 1200,
                 "prob.names.name"},
        ReadCase{"unknown field ends it in the record's order",
                 [] { return record ({{"name", text ("t")}, {"vars", text ("x")}, {"obj", text ("o")}}); },
                 "task:t ", 1200, "prob.names.vars"},
        ReadCase{"field names count exactly", [] { return record ({{"Name", text ("t")}}); }, "", 1200,
                 "prob.names.Name"},
        ReadCase{"list too short",
                 [] { return record ({{"con", cell ({text ("a")})}, {"name", text ("t")}}); }, "", 1201,
                 "prob.names.con"},
        ReadCase{"list unset", [] { return records ({1, 1}, {"var"}); }, "", 1201, "prob.names.var"},
        ReadCase{"entry no text, after a good one", [] { return record ({{"con", three (scalar (2))}}); },
                 "con:a ", 1200, "prob.names.con{2}"},
        ReadCase{"entry unset", [] { return record ({{"con", cell (Sizes{3, 1})}}); }, "", 1200,
                 "prob.names.con{1}"},
        ReadCase{"entry a cell", [] { return record ({{"con", three (cell ({text ("b")}))}}); }, "con:a ",
                 1200, "prob.names.con{2}"},
        ReadCase{"list of the right length but no cell", [] { return record ({{"con", text ("abc")}}); }, "",
                 1200, "prob.names.con{1}"},
        ReadCase{"list of records", [] { return record ({{"con", records ({1, 3}, {"x"})}}); }, "", 1200,
                 "prob.names.con{1}"},
        ReadCase{"several records", [] { return records ({1, 2}, {"name"}); }, "", 1200,
                 "prob.names must be a 1-by-1 structure"},
        ReadCase{"no records", [] { return records ({0, 0}, {"name"}); }, ""},
        ReadCase{"text instead of a record names nothing", [] { return text ("x"); }, ""},
        ReadCase{"a function names nothing", function_handle, ""}));

}
