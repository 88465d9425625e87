#include "tests/fuzz/calls/random_call.h"

#include <algorithm>
#include <cstdio>
#include <map>

#include "kalvo/tables/parameters.h"
#include "tests/fuzz/odd_problem.h"

namespace fuzz {

namespace {

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
    pieces_of ("min|max|minimize|maximize|prob|info|param|symbcon|version|statuskeys(1)|echo(3)|"
               "echo(11)|debug(1)|nokeepenv|use_matlab_calloc|anapro|write(w.mps)|log(log.txt)",
               '|');
const auto odd_words =
    pieces_of ("statuskeys|statuskeys(x)|echo|echo(|echo(99999999999)|echo(-1)|primalrepair|toconic|write()|"
               "write(w.xyz)|"
               "write(none/w.mps)|read|read(good.mps)|read(bad.mps)|read(none)|log()|log(none/"
               "x)|minimizex|)|minimize(|\xC3\xA9",
               '|');
const auto problem_fields = pieces_of (
    "a|c|cfix|blc|buc|blx|bux|ints|names|sol|qosubi|qosubj|qoval|qcsubk|qcsubi|qcsubj|qcval|cones|f|g|"
    "accs|bardim|bara|barc|barf|prisen|duasen|primalrepair|objsense|unknown",
    '|');
const auto value_fields = pieces_of ("skc|skx|xc|xx|y|slc|suc|slx|sux", '|');
const auto odd_value_fields = pieces_of ("skc|skx|xx|snx|skn|barx|bars|doty|prosta|pobjval", '|');
const auto symbols =
    pieces_of ("KLV_ON|KLV_OFF|KLV_OPTIMIZER_PRIMAL_SIMPLEX|KLV_OPTIMIZER_DUAL_SIMPLEX|"
               "KLV_OPTIMIZER_INTERIOR_POINT|KLV_OPTIMIZER_MIXED_INTEGER|KLV_PRESOLVE_OFF|none",
               '|');

// Fields in the order of their names, each once.
using Fields = std::map<std::string, std::string>;

std::string record (const Fields& fields)
{
    std::string text;
    for (const auto& [name, value] : fields)
        text += (text.empty () ? "" : ", ") + name + (value.empty () ? "" : "=" + value);
    return "(" + text + ")";
}

class Maker {
public:
    explicit Maker (Random& random) : random_ (random) {}

    RandomCall call ()
    {
        RandomCall made;
        const std::string inputs[] = {odd_or (60, &Maker::command),
                                      odd_or (60, &Maker::problem),
                                      odd_or (20, &Maker::settings),
                                      odd_or (20, &Maker::callback),
                                      odd_or (8, &Maker::server),
                                      odd (),
                                      odd ()};
        const std::size_t count = one_in (8) ? below (8) : 2 + below (3);
        made.inputs.assign (inputs, inputs + count);
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
    std::size_t below (std::size_t count) { return random_.below (count); }
    bool one_in (std::size_t count) { return random_.one_in (count); }

    std::string odd_or (std::size_t rarity, std::string (Maker::*make) ())
    {
        return one_in (rarity) ? odd () : (this->*make) ();
    }

    std::string entry (int smallest, int largest)
    {
        if (odd_entries_ && one_in (15))
            return random_.any (odd_numbers);
        return std::to_string (smallest +
                               static_cast<int> (below (static_cast<std::size_t> (largest - smallest + 1))));
    }

    std::string matrix (std::size_t rows, std::size_t columns, int smallest, int largest)
    {
        if (rows * columns == 0)
            return std::to_string (rows) + "x" + std::to_string (columns);
        std::string text;
        for (std::size_t i = 0; i < rows; ++i)
            for (std::size_t j = 0; j < columns; ++j)
                text += (j > 0 ? " " : i > 0 ? "; " : "") + entry (smallest, largest);
        return (one_in (4) ? "sparse [" : "[") + text + "]";
    }

    std::string column (std::size_t count, int smallest, int largest)
    {
        return one_in (3) && count > 0 ? matrix (count, 1, smallest, largest)
                                       : row (count, smallest, largest);
    }
    std::string row (std::size_t count, int smallest, int largest)
    {
        const std::string text = matrix (1, count, smallest, largest);
        return text.starts_with ("sparse ") ? text.substr (7) : text;
    }

    std::string names ()
    {
        const auto list = [this] (std::size_t count) {
            std::string text;
            for (std::size_t k = 0; k < count; ++k)
                text += (k > 0 ? ", 'n" : "'n") + std::to_string (below (9)) + "'";
            return "{" + text + "}";
        };
        Fields fields{{"con", list (m_)}, {"var", list (n_)}, {"name", "'p'"}, {"obj", "'o'"}};
        damage (fields, pieces_of ("con|var|name|obj|cone|acc|barvar|x", '|'));
        return record (fields);
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

    std::string solution ()
    {
        Fields kinds;
        for (const char* kind : {"itr", "bas", "int"}) {
            if (one_in (2))
                continue;
            Fields fields;
            for (const std::string& name : value_fields)
                if (one_in (2))
                    fields[name] = row (name.ends_with ('c') || name == "y" ? m_ : n_, 0, 4);
            if (one_in (4))
                damage (fields, odd_value_fields);
            kinds[kind] = one_in (20) ? odd () : record (fields);
        }
        return record (kinds);
    }

    // One of odd shape, whose numbers are in order.
    std::string odd_problem ()
    {
        const Model made = OddProblem (random_).make ();
        m_ = made.rows.size ();
        n_ = made.cost.size ();
        const auto list = [] (std::size_t count, const auto& entry) {
            std::string text = "[";
            for (std::size_t k = 0; k < count; ++k)
                text += (k > 0 ? "; " : "") + entry (k);
            return text + "]";
        };
        const auto row = [&] (std::size_t i) {
            std::string text;
            for (const double entry : made.rows[i])
                text += text_of (entry) + " ";
            return text;
        };
        const auto lower = [&] (const auto& of) {
            return [&] (std::size_t k) { return text_of (of[k].lower); };
        };
        const auto upper = [&] (const auto& of) {
            return [&] (std::size_t k) { return text_of (of[k].upper); };
        };
        Fields fields{{"a", m_ == 0 ? "0x" + std::to_string (n_) : list (m_, row)},
                      {"c", list (n_, [&] (std::size_t j) { return text_of (made.cost[j]); })},
                      {"blc", list (m_, lower (made.row_bounds))},
                      {"buc", list (m_, upper (made.row_bounds))},
                      {"blx", list (n_, lower (made.bounds))},
                      {"bux", list (n_, upper (made.bounds))}};
        if (one_in (6))
            fields["ints"] = "(sub=" + std::to_string (1 + below (n_)) + ")";
        return record (fields);
    }

    std::string problem ()
    {
        if (one_in (3))
            return odd_problem ();
        odd_entries_ = one_in (3);
        m_ = below (5);
        n_ = one_in (20) ? 0 : 1 + below (5);
        Fields fields{{"a", matrix (m_, n_, -3, 5)}, {"c", column (n_, -4, 6)},   {"blc", column (m_, -5, 3)},
                      {"buc", column (m_, 1, 12)},   {"blx", column (n_, -2, 1)}, {"bux", column (n_, 0, 4)}};
        for (const char* name : {"blc", "buc", "blx", "bux"})
            if (one_in (3))
                fields.erase (name);
        if (one_in (3))
            fields["ints"] = "(sub=" + row (1 + below (3), 1, std::max (1, static_cast<int> (n_))) + ")";
        if (one_in (5))
            fields["cfix"] = entry (-3, 3);
        if (one_in (5))
            fields["names"] = names ();
        if (one_in (4))
            fields["sol"] = solution ();
        if (one_in (3))
            damage (fields, problem_fields);
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
    std::string setting (double smallest, double fallback, double largest)
    {
        const std::string values[] = {
            text_of (smallest),        text_of (fallback),
            text_of (largest),         text_of (smallest + static_cast<double> (below (5))),
            random_.any (odd_numbers), "'" + random_.any (symbols) + "'"};
        return one_in (20) ? odd () : values[below (one_in (8) ? 6 : 4)];
    }

    std::string settings ()
    {
        Fields fields;
        if (one_in (2))
            for (const auto& [name, values] : {std::pair ("OPTIMIZER", 4),
                                               {"PRESOLVE", 3},
                                               {"INTPNT_METHOD", 3},
                                               {"INTPNT_BASIS", 2},
                                               {"RELAX_INTEGERS", 2}})
                fields[std::string ("KLV_IPAR_") + name] =
                    std::to_string (below (static_cast<std::size_t> (values)));
        for (std::size_t times = below (4); times > 0; --times) {
            const auto& integer = live (klv::int_parameters);
            const auto& real = live (klv::real_parameters);
            if (one_in (2))
                fields[std::string (integer.name)] =
                    setting (integer.smallest, integer.fallback, integer.largest);
            else
                fields[std::string (real.name)] = setting (real.smallest, real.fallback, real.largest);
        }
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
    std::size_t m_ = 0, n_ = 0;
    bool odd_entries_ = false;
};

}

std::string RandomCall::text () const
{
    std::string text = std::to_string (outputs) + " outputs, memory fails at " +
                       std::to_string (failing_allocation) + ", Ctrl-C at poll " +
                       std::to_string (interrupting_poll) + "\n";
    for (const std::string& input : inputs)
        text += "    " + input + "\n";
    return text;
}

RandomCall random_call (Random& random)
{
    return Maker (random).call ();
}

std::string odd_value (Random& random)
{
    return Maker (random).odd ();
}

}
