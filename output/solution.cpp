#include "output/solution.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <variant>

#include "common/records.h"
#include "common/solution_sizes.h"

namespace {

// Sources of a field's value: operations of the library.
template <class Value>
using Fetch = KLVrescode_t (*) (KLVtask_t, std::int32_t which, const SolutionSizes&, Value*);

struct Status {
    KLVrescode_t (*get) (KLVtask_t, std::int32_t which, std::int32_t*);
    KLVrescode_t (*to_text) (KLVtask_t, std::int32_t, char*);
};
struct Keys {
    Fetch<std::int32_t> get;
};
struct Values {
    Fetch<double> get;
};
struct Objective {
    KLVrescode_t (*get) (KLVtask_t, std::int32_t which, double*);
};

template <auto get, auto count, class Value>
KLVrescode_t slice (KLVtask_t task, std::int32_t which, const SolutionSizes& sizes, Value* values)
{
    return get (task, which, 0, static_cast<std::int32_t> (sizes.*count), values);
}

template <auto get>
KLVrescode_t packed_slice (KLVtask_t task, std::int32_t which, const SolutionSizes& sizes, double* values)
{
    return get (task, which, 0, static_cast<std::int32_t> (sizes.semidefinite), sizes.packed_entries, values);
}

template <auto get, class Value>
KLVrescode_t whole (KLVtask_t task, std::int32_t which, const SolutionSizes&, Value* values)
{
    return get (task, which, values);
}

enum : unsigned {
    itr = 1u << KLV_SOL_ITR,
    bas = 1u << KLV_SOL_BAS,
    all = itr | bas | 1u << KLV_SOL_INT,
};

struct Field {
    const char* name;
    unsigned solutions;    // bits of the solutions that have the field
    std::int64_t SolutionSizes::*count;
    std::variant<Status, Keys, Values, Objective> source;
    int round = 0;    // fields are fetched in rounds, each in the order of the table
};

constexpr int last_round = 2;
constexpr auto m = &SolutionSizes::constraints, n = &SolutionSizes::variables, k = &SolutionSizes::cones;

// Fields in the order of the solution's record.
constexpr Field fields[] = {
    {"prosta", all, &SolutionSizes::one, Status{KLV_getprosta, KLV_prostatostr}},
    {"solsta", all, &SolutionSizes::one, Status{KLV_getsolsta, KLV_solstatostr}},
    {"skc", all, m, Keys{slice<KLV_getskcslice, m>}},
    {"skx", all, n, Keys{slice<KLV_getskxslice, n>}},
    {"skn", itr, k, Keys{whole<KLV_getskn>}, 1},
    {"xc", all, m, Values{slice<KLV_getxcslice, m>}},
    {"xx", all, n, Values{slice<KLV_getxxslice, n>}},
    {"barx", itr, &SolutionSizes::packed_entries, Values{packed_slice<KLV_getbarxslice>}, 2},
    {"y", itr | bas, m, Values{slice<KLV_getyslice, m>}},
    {"slc", itr | bas, m, Values{slice<KLV_getslcslice, m>}},
    {"suc", itr | bas, m, Values{slice<KLV_getsucslice, m>}},
    {"slx", itr | bas, n, Values{slice<KLV_getslxslice, n>}},
    {"sux", itr | bas, n, Values{slice<KLV_getsuxslice, n>}},
    {"snx", itr, n, Values{slice<KLV_getsnxslice, n>}, 1},
    {"bars", itr, &SolutionSizes::packed_entries, Values{packed_slice<KLV_getbarsslice>}, 2},
    {"doty", itr, &SolutionSizes::affine_entries, Values{whole<KLV_getaccdotys>}, 2},
    {"pobjval", all, &SolutionSizes::one, Objective{KLV_getprimalobj}},
    {"dobjval", itr | bas, &SolutionSizes::one, Objective{KLV_getdualobj}},
};

// The first two characters of each key's text. Keys are few and items many: the library is asked once for each key.
class KeyTexts {
public:
    using Text = std::array<mxChar, 2>;

    explicit KeyTexts (KLVtask_t task) : task_ (task) {}

    Text operator() (std::int32_t key)
    {
        if (key < 0 || key >= static_cast<std::int32_t> (known_.size ()))
            return ask (key);
        std::optional<Text>& known = known_[static_cast<std::size_t> (key)];
        if (!known)
            known = ask (key);
        return *known;
    }

private:
    Text ask (std::int32_t key) const
    {
        char text[KLV_MAX_TEXT] = {};
        KLV_sktostr (task_, key, text);
        const auto widen = [] (char c) { return static_cast<mxChar> (static_cast<unsigned char> (c)); };
        return {widen (text[0]), widen (text[1])};
    }

    KLVtask_t task_;
    std::array<std::optional<Text>, 16> known_;
};

// Shared by all solutions of a call.
struct Common {
    KLVtask_t task;
    bool as_text;
    SolutionSizes sizes;
    host::Memory<std::int32_t> keys;    // room for the keys of all constraints, variables and cones
    KeyTexts texts;
};

struct Output {
    const Field* field = nullptr;
    std::int64_t count = 0;
    std::int32_t* codes = nullptr;    // the library's numbers of statuses and keys
    host::Array array;
};

// The fields of one solution, in the order of its record.
class Outputs {
public:
    Outputs (Common& common, std::int32_t which)
    {
        std::int32_t *status = statuses_.data (), *keys = common.keys.get ();
        for (const Field& field : fields)
            if (field.solutions & 1u << which) {
                Output& output = outputs_[count_++];
                output.field = &field;
                output.count = common.sizes.*field.count;
                if (std::holds_alternative<Status> (field.source))
                    output.codes = status++;
                if (std::holds_alternative<Keys> (field.source))
                    output.codes = std::exchange (keys, keys + output.count);
            }
    }

    Output* begin () { return outputs_.data (); }
    Output* end () { return outputs_.data () + count_; }

    host::Array make_record ()
    {
        std::array<const char*, std::size (fields)> names;
        std::array<host::Array, std::size (fields)> values;
        std::transform (begin (), end (), names.begin (),
                        [] (const Output& output) { return output.field->name; });
        std::transform (begin (), end (), values.begin (),
                        [] (Output& output) { return std::move (output.array); });
        return host::Array (mx_make_record (static_cast<int> (count_), names.data (), values.data ()));
    }

    bool are_complete ()
    {
        return std::all_of (begin (), end (), [] (const Output& output) { return output.array != nullptr; });
    }

private:
    std::array<Output, std::size (fields)> outputs_;
    std::size_t count_ = 0;
    std::array<std::int32_t, 2> statuses_{};
};

// An array for a field's value. Texts of statuses are of unknown length: convert_codes replaces the array.
host::Array create_array (const Output& output, bool as_text)
{
    if (!as_text || !std::holds_alternative<Keys> (output.field->source))
        return create_column (output.count);
    const mwSize sizes[] = {static_cast<mwSize> (output.count), 2};
    return host::Array (mxCreateCharArray (2, sizes));
}

KLVrescode_t fetch (const Common& common, std::int32_t which, const Output& output)
{
    const auto& source = output.field->source;
    if (const auto* status = std::get_if<Status> (&source))
        return status->get (common.task, which, output.codes);
    if (const auto* keys = std::get_if<Keys> (&source))
        return keys->get (common.task, which, common.sizes, output.codes);
    if (const auto* values = std::get_if<Values> (&source))
        return values->get (common.task, which, common.sizes, mxGetPr (output.array.get ()));
    return KLV_RES_OK;
}

// Writes statuses and keys into their arrays, as texts or numbers.
void convert_codes (Common& common, Output& output)
{
    if (!common.as_text) {
        std::copy_n (output.codes, output.count, mxGetPr (output.array.get ()));
    } else if (const auto* status = std::get_if<Status> (&output.field->source)) {
        char text[KLV_MAX_TEXT] = {};
        status->to_text (common.task, *output.codes, text);
        output.array.reset (mxCreateString (text));
    } else {
        auto* characters = static_cast<mxChar*> (mxGetData (output.array.get ()));
        for (std::int64_t i = 0; i < output.count; ++i) {
            const KeyTexts::Text text = common.texts (output.codes[i]);
            characters[i] = text[0];
            characters[i + output.count] = text[1];
        }
    }
}

KLVrescode_t fill (Common& common, std::int32_t which, Outputs& outputs)
{
    for (Output& output : outputs)
        output.array = create_array (output, common.as_text);
    if (!outputs.are_complete ())
        return KLV_RES_OUT_OF_MEMORY;

    for (const Output& output : outputs)
        if (const auto* objective = std::get_if<Objective> (&output.field->source))
            objective->get (common.task, which, mxGetPr (output.array.get ()));
    KLVrescode_t code = KLV_RES_OK;
    for (int round = 0; round <= last_round; ++round)
        for (const Output& output : outputs)
            if (output.field->round == round && code == KLV_RES_OK)
                code = fetch (common, which, output);

    for (Output& output : outputs)
        if (output.codes)
            convert_codes (common, output);
    return outputs.are_complete () ? code : KLV_RES_OUT_OF_MEMORY;
}

// After a failure in the library the record keeps the values that were fetched before; without memory it has none.
KLVrescode_t get_slot (Common& common, std::int32_t which, host::Array& record)
{
    Outputs outputs (common, which);
    const KLVrescode_t code = fill (common, which, outputs);
    if (!outputs.are_complete ())
        for (Output& output : outputs)
            output.array.reset ();
    record = outputs.make_record ();
    return record ? code : KLV_RES_OUT_OF_MEMORY;
}

}

KLVrescode_t getsolution (KLVtask_t task, int statuskeys, mxArray* res)
{
    constexpr const char* names[KLV_SOL_COUNT] = {"itr", "bas", "int"};
    std::array<std::int32_t, KLV_SOL_COUNT> defined;
    std::array<const char*, KLV_SOL_COUNT> defined_names;
    std::array<host::Array, KLV_SOL_COUNT> records;
    std::size_t count = 0;
    for (std::int32_t which = 0; which < KLV_SOL_COUNT; ++which) {
        std::int32_t is_defined = 0;
        KLV_solutiondef (task, which, &is_defined);
        if (is_defined) {
            defined[count] = which;
            defined_names[count++] = names[which];
        }
    }
    if (count == 0)
        return KLV_RES_OK;

    Common common{task, statuskeys == 0, read_solution_sizes (task), nullptr, KeyTexts (task)};
    common.keys = host::allocate<std::int32_t> (
        static_cast<std::size_t> (common.sizes.constraints + common.sizes.variables + common.sizes.cones));
    if (!common.keys)
        return KLV_RES_OUT_OF_MEMORY;
    KLVrescode_t code = KLV_RES_OK;
    for (std::size_t i = 0; i < count && code == KLV_RES_OK; ++i)
        code = get_slot (common, defined[i], records[i]);
    host::Array all (mx_make_record (static_cast<int> (count), defined_names.data (), records.data ()));
    return set_field (res, "sol", std::move (all)) ? code : KLV_RES_OUT_OF_MEMORY;
}
