// Calls of kalvoopt made at random, each input a text in the tests' notation.
#pragma once

#include "kalvo/tables/parameters.h"
#include "tests/fuzz/odd_problem.h"

#include <map>

namespace fuzz {

struct RandomCall {
    std::vector<std::string> inputs;
    std::string problem;    // the second one as tests state problems; nothing where it is another
    int outputs = 2;
    long failing_allocation = 0;    // the number of the piece of memory that is not to be had; 0: none
    long interrupting_poll = 0;     // when Ctrl-C is pressed

    std::string text () const
    {
        return std::to_string (outputs) + " outputs, memory fails at " + std::to_string (failing_allocation) +
               ", Ctrl-C at poll " + std::to_string (interrupting_poll) + "\n    " +
               join (inputs, "\n    ", [] (const std::string& input) { return input; });
    }
};

// The functions of the session that callback records name.
const auto functions = pieces_of ("quiet|nothing|stopping|failing|odd|pressing|again", '|');
const auto odd_numbers =
    pieces_of ("nan inf -inf 1e300 -1e300 1e-300 1e20 -1e20 1e21 2147483648 4294967297 0.5 "
               "1e-9 -0 1e9 123456789.123",
               ' ');
const auto odd_values = pieces_of (
    "[]|{}|()|''|@|object|0|1|-1|0.5|nan|inf|-inf|1e300|4294967297|[1 2 3]|[1;2]|[nan nan]|2x0|0x3|"
    "4x1x2|1000x0|0x1000|3000000000x0|0x3000000000|cell 1x3|cell 0x0|record 1x2|record 0x0|"
    "record 1x2 sub|record 1x1 a|int8 [1 2]|single 1|single [1 2;3 4]|uint64 [1 2]|logical 1|"
    "char [0 65535]|char [55296 97]|sparse [0;5]|sparse [0 5]|sparse 1|sparse logical [0 1]|"
    "sparse logical [0;1]|complex [1 2]|complex 1|'text'|'KLV_ON'|['ab'; 'cd']|['LO'; 'BA']|"
    "{1, 'x', {}}|(unset)|(sub=1)|(sub=[1 99])|(sub=nan)|2x2x0|\x27\xC3\xA9\xE2\x82\xAC\x27",
    '|');
const auto words =
    pieces_of ("prob|info|param|symbcon|version|statuskeys(1)|echo(3)|"
               "echo(11)|debug(1)|nokeepenv|use_matlab_calloc|anapro|write(w.mps)|log(log.txt)",
               '|');
const auto odd_words =
    pieces_of ("statuskeys|statuskeys(x)|echo|echo(|echo(99999999999)|echo(-1)|primalrepair|toconic|write()|"
               "write(w.xyz)|write(none/w.mps)|read|read(good.mps)|read(bad.mps)|read(none)|log()|"
               "log(none/x)|minimizex|)|minimize(|\xC3\xA9",
               '|');
const auto problem_fields = pieces_of (
    "a|c|cfix|blc|buc|blx|bux|ints|names|sol|qosubi|qosubj|qoval|qcsubk|qcsubi|qcsubj|qcval|cones|f|g|"
    "accs|bardim|bara|barc|barf|prisen|duasen|primalrepair|objsense|unknown",
    '|');
const auto odd_value_fields = pieces_of ("skc|skx|xx|snx|skn|barx|bars|doty|prosta|pobjval", '|');
const auto symbols =
    pieces_of ("KLV_ON|KLV_OFF|KLV_OPTIMIZER_PRIMAL_SIMPLEX|KLV_OPTIMIZER_DUAL_SIMPLEX|"
               "KLV_OPTIMIZER_INTERIOR_POINT|KLV_OPTIMIZER_MIXED_INTEGER|KLV_PRESOLVE_OFF|none",
               '|');

class CallMaker {
public:
    explicit CallMaker (Random& random) : random_ (random) {}

    RandomCall call ()
    {
        RandomCall made;
        std::string inputs[] = {odd_or (60, &CallMaker::command),
                                odd_or (60, &CallMaker::problem),
                                odd_or (20, &CallMaker::settings),
                                odd_or (20, &CallMaker::callback),
                                odd_or (8, &CallMaker::server),
                                odd (),
                                odd ()};
        if (has_classes_ && inputs[0].starts_with ("'"))
            inputs[0].insert (1, "prob ");
        made.inputs.assign (inputs, inputs + (one_in (8) ? below (8) : 2 + below (3)));
        made.problem = made.inputs.size () > 1 && made.inputs[1].starts_with ("(a=") ? stated_ : "";
        made.outputs = one_in (8) ? static_cast<int> (below (4)) : 2;
        made.failing_allocation = one_in (8) ? 1 + static_cast<long> (below (300)) : 0;
        made.interrupting_poll = one_in (15) ? 1 + static_cast<long> (below (6)) : 50;
        return made;
    }

    std::string odd (int depth = 2)
    {
        if (depth == 0 || !one_in (5))
            return random_.any (odd_values);
        const std::string first = odd (depth - 1), second = odd (depth - 1);
        return one_in (2) ? "{" + first + ", " + second + "}"
                          : record ({{random_.any (problem_fields), first}, {"sub", second}});
    }

private:
    // Fields in the order of their names, each once.
    using Fields = std::map<std::string, std::string>;

    static std::string record (const Fields& fields)
    {
        return "(" +
               join (fields, ", ", [] (const auto& field) { return field.first + "=" + field.second; }) + ")";
    }

    std::size_t below (std::size_t count) { return random_.below (count); }
    bool one_in (std::size_t count) { return random_.one_in (count); }
    std::string odd_or (std::size_t rarity, std::string (CallMaker::*make) ())
    {
        return one_in (rarity) ? odd () : (this->*make) ();
    }

    std::string list (const Values& values, const char* between)
    {
        return join (values, between, [&] (double value) {
            return odd_entries_ && one_in (15) ? random_.any (odd_numbers) : model::text_of (value);
        });
    }
    std::string vector (const Values& values)
    {
        const char* const start = one_in (12) ? "sparse [" : "[";
        return start + list (values, *start == 's' || one_in (3) ? "; " : " ") + "]";
    }
    std::string wholes (std::size_t count, int smallest, int largest)
    {
        Values values;
        while (values.size () < count)
            values.push_back (random_.whole (smallest, largest));
        return "[" + list (values, " ") + "]";
    }

    // Fields dropped, set to odd values, or of another class.
    void damage (Fields& fields, const std::vector<std::string>& known)
    {
        static const auto classes = pieces_of ("single |int32 |logical |sparse |complex |int8 |uint64 ", '|');
        for (std::size_t times = below (3); times > 0; --times) {
            const std::string& name = random_.any (known);
            const auto found = fields.find (name);
            const bool plain = found != fields.end () && found->second.starts_with ('[');
            if (one_in (3) && name != "a")
                fields.erase (name);
            else if (plain && one_in (2) && found->second.find_first_of ("nef") == std::string::npos)
                found->second.insert (0, random_.any (classes));
            else
                fields[name] = odd ();
        }
    }

    std::string names (std::size_t m, std::size_t n)
    {
        const auto some = [this] (std::size_t count) {
            const auto name = [this] (char) { return "'n" + std::to_string (below (9)) + "'"; };
            return "{" + join (std::string (count, ' '), ", ", name) + "}";
        };
        Fields fields{{"con", some (m)}, {"var", some (n)}, {"name", "'p'"}, {"obj", "'o'"}};
        damage (fields, pieces_of ("con|var|name|obj|cone|acc|barvar|x", '|'));
        return record (fields);
    }

    std::string solution (std::size_t m, std::size_t n)
    {
        Fields kinds;
        for (const char* kind : {"itr", "bas", "int"}) {
            if (one_in (2))
                continue;
            Fields fields;
            for (const std::string name : {"skc", "skx", "xc", "xx", "y", "slc", "suc", "slx", "sux"})
                if (one_in (2))
                    fields[name] = wholes (name.ends_with ('c') || name == "y" ? m : n, 0, 4);
            if (one_in (4))
                damage (fields, odd_value_fields);
            kinds[kind] = one_in (20) ? odd () : record (fields);
        }
        return record (kinds);
    }

    // A list of terms of semidefinite variables; items: of how many constraints or expressions, 0 for the objective.
    std::string matrix_terms (std::size_t items, const std::vector<int>& orders)
    {
        Values owners, variables, rows, columns, values;
        for (std::size_t k = below (4); k > 0; --k) {
            const std::size_t j = below (orders.size ());
            if (orders[j] == 0)
                continue;
            owners.push_back (1 + static_cast<double> (below (std::max<std::size_t> (items, 1))));
            variables.push_back (1 + static_cast<double> (j));
            rows.push_back (random_.whole (1, orders[j]));
            columns.push_back (random_.whole (1, static_cast<int> (rows.back ())));
            values.push_back (random_.whole (-3, 3));
        }
        Fields fields{{"subj", "[" + list (variables, " ") + "]"},
                      {"subk", "[" + list (rows, " ") + "]"},
                      {"subl", "[" + list (columns, " ") + "]"},
                      {"val", "[" + list (values, " ") + "]"}};
        if (items > 0)
            fields["subi"] = "[" + list (owners, " ") + "]";
        return record (fields);
    }

    void add_quadratic (Fields& fields, std::size_t m, std::size_t n)
    {
        const std::size_t p = 1 + below (4), q = m > 0 ? below (4) : 0;
        const int last = static_cast<int> (n);
        for (const char* name : {"qosubi", "qosubj"})
            fields[name] = wholes (p, 1, last);
        fields["qoval"] = wholes (p, -3, 3);
        fields["qcsubk"] = wholes (q, 1, static_cast<int> (m));
        for (const char* name : {"qcsubi", "qcsubj"})
            fields[name] = wholes (q, 1, last);
        fields["qcval"] = wholes (q, -3, 3);
    }

    // Members without repetition; the last cone may lack some that its type needs.
    void add_cones (Fields& fields, std::size_t n)
    {
        Values members, sizes, types;
        for (std::size_t j = below (n); j < n; ++j)
            members.push_back (1 + static_cast<double> (j));
        for (std::size_t used = 0; used < members.size (); used += 1 + below (3)) {
            sizes.push_back (1 + static_cast<double> (used));
            types.push_back (one_in (3) ? random_.whole (0, 6) : one_in (2) ? 0 : 6);
        }
        fields["cones"] = record ({{"type", "[" + list (types, " ") + "]"},
                                   {"sub", "[" + list (members, " ") + "]"},
                                   {"subptr", "[" + list (sizes, " ") + "]"},
                                   {"conepar", wholes (types.size (), 0, 1)}});
    }

    // Returns the number of expressions.
    std::size_t add_affine (Fields& fields, std::size_t n)
    {
        std::string domains;
        std::size_t rows = 0;
        const bool in_vector = one_in (3);
        for (std::size_t k = 1 + below (3); k > 0; --k) {
            const std::size_t type = below (in_vector ? 7 : 13), size = one_in (4) ? below (5) : 3;
            rows += size;
            const bool power = in_vector ? type == 4 || type == 5 : type == 8 || type == 9;
            domains += " " + std::to_string (type) + " " + std::to_string (size) + (power ? " 2 0.5 3" : "");
        }
        const auto row = [&] (char) { return list (Values (n, random_.whole (-2, 2)), " "); };
        fields["f"] = rows * n == 0 ? "sparse " + std::to_string (rows) + "x" + std::to_string (n)
                                    : "sparse [" + join (std::string (rows, ' '), "; ", row) + "]";
        if (one_in (2))
            fields["g"] = wholes (rows, -3, 3);
        fields[in_vector ? "cones" : "accs"] = "[" + domains + "]";
        return rows;
    }

    // Quadratic, conic and semidefinite fields, now and then.
    void add_classes (Fields& fields, std::size_t m, std::size_t n)
    {
        const std::size_t kind = n > 0 ? below (3) : 3;
        if (kind == 0)
            add_quadratic (fields, m, n);
        if (kind == 1 || one_in (3))
            add_cones (fields, std::max<std::size_t> (n, 1));
        const std::size_t rows = kind == 2 ? (fields.erase ("cones"), add_affine (fields, n)) : 0;
        if (one_in (2))
            return;
        const std::vector<int> orders{static_cast<int> (below (4)), 1 + static_cast<int> (below (3))};
        fields["bardim"] = "[" + std::to_string (orders[0]) + " " + std::to_string (orders[1]) + "]";
        fields["barc"] = matrix_terms (0, orders);
        if (m > 0)
            fields["bara"] = matrix_terms (m, orders);
        if (rows > 0)
            fields["barf"] = matrix_terms (rows, orders);
    }

    std::string problem ()
    {
        Model made = odd_problem (random_);
        if (one_in (20))
            made = {.rows = std::vector<Values> (made.rows.size ()), .row_bounds = made.row_bounds};
        const std::size_t m = made.rows.size (), n = made.cost.size ();
        odd_entries_ = one_in (4);
        Fields fields;
        if (n > 0 && one_in (4)) {
            Values sub (1 + below (3));
            for (double& number : sub) {
                number = random_.whole (1, static_cast<int> (n));
                made.bounds[static_cast<std::size_t> (number) - 1].integer = true;
            }
            fields["ints"] = "(sub=[" + list (sub, " ") + "])";
            for (Range& bounds : made.bounds) {    // few values, so that all can be tried
                bounds.lower = std::isinf (bounds.lower) ? random_.whole (-2, 1) : bounds.lower;
                bounds.upper = std::isinf (bounds.upper) ? bounds.lower + random_.whole (0, 4) : bounds.upper;
            }
        }
        const auto a = join (made.rows, "; ", [&] (const Values& row) { return list (row, " "); });
        fields["a"] = m * n == 0 ? std::to_string (m) + "x" + std::to_string (n)
                                 : (one_in (4) ? "sparse [" : "[") + a + "]";
        fields["c"] = vector (made.cost);
        const auto put = [&] (const char* name, std::vector<Range>& ranges, double Range::*end) {
            const bool absent = one_in (8);
            Values values;
            for (Range& range : ranges)
                values.push_back (absent ? range.*end = Range{}.*end : range.*end);
            if (!absent)
                fields[name] = vector (values);
        };
        put ("blc", made.row_bounds, &Range::lower);
        put ("buc", made.row_bounds, &Range::upper);
        put ("blx", made.bounds, &Range::lower);
        put ("bux", made.bounds, &Range::upper);
        if (one_in (5))
            fields["cfix"] = list ({made.constant = random_.whole (-3, 3)}, "");
        if (one_in (5))
            fields["names"] = names (m, n);
        if (one_in (4))
            fields["sol"] = solution (m, n);
        stated_ = odd_entries_ ? "" : text_of (made);
        if (has_classes_ = one_in (6); has_classes_) {
            add_classes (fields, m, n);
            stated_ = "";
        }
        if (one_in (4)) {
            damage (fields, problem_fields);
            stated_ = "";
        }
        return record (fields);
    }

    std::string command ()
    {
        std::string text = one_in (10) ? "" : one_in (2) ? "minimize" : "maximize";
        for (std::size_t times = below (4); times > 0; --times)
            text += " " + random_.any (one_in (10) ? odd_words : words);
        if (!one_in (4))
            text += " echo(0)";
        if (one_in (30))
            text.insert (below (text.size () + 1), one_in (4) ? 3000 : 1, "(x 0"[below (4)]);
        return "'" + text + "'";
    }

    template <class Table>
    const auto& live (const Table& table)
    {
        const auto* row = &table[below (table.size ())];
        while (row->reserved () && !one_in (300))
            row = &table[below (table.size ())];
        return *row;
    }

    // One of a parameter's limits, its default, a value near the smallest, or something odd.
    template <class Row>
    void set (Fields& fields, const Row& row)
    {
        const double near = row.smallest + static_cast<double> (below (5));
        const std::string values[] = {model::text_of (row.smallest), model::text_of (row.fallback),
                                      model::text_of (row.largest),  model::text_of (near),
                                      random_.any (odd_numbers),     "'" + random_.any (symbols) + "'"};
        fields[std::string (row.name)] = one_in (20) ? odd () : values[below (one_in (8) ? 6 : 4)];
    }

    std::string settings ()
    {
        Fields fields;
        if (one_in (2))
            fields = {{"KLV_IPAR_OPTIMIZER", model::text_of (random_.whole (0, 3))},
                      {"KLV_IPAR_INTPNT_METHOD", model::text_of (random_.whole (0, 2))},
                      {"KLV_IPAR_RELAX_INTEGERS", model::text_of (random_.whole (0, 1))}};
        for (std::size_t times = below (4); times > 0; --times)
            if (one_in (2))
                set (fields, live (klv::int_parameters));
            else
                set (fields, live (klv::real_parameters));
        if (one_in (20))
            fields[std::string (live (klv::text_parameters).name)] = one_in (2) ? "'good.mps'" : odd ();
        if (one_in (20))
            fields[random_.any (odd_value_fields)] = odd ();
        return record (fields);
    }

    std::string callback ()
    {
        Fields fields;
        for (const char* kind : {"log", "iter"})
            if (one_in (2)) {
                fields[kind] = one_in (15) ? odd () : "'" + random_.any (functions) + "'";
                if (!one_in (20))
                    fields[kind + std::string ("handle")] = odd ();
            }
        return record (fields);
    }

    std::string server () { return one_in (3) ? "[]" : "(host=" + (one_in (4) ? odd () : "''") + ")"; }

    Random& random_;
    bool odd_entries_ = false;
    std::string stated_;
    bool has_classes_ = false;
};

}
