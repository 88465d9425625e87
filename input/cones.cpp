// Cones: of affine expressions in a vector, of variables in a record or in a cell of records.

#include <algorithm>
#include <cmath>

#include "common/arrays.h"
#include "common/console.h"
#include "common/number.h"
#include "common/refuse.h"
#include "common/text.h"
#include "host/holders.h"
#include "input/domains.h"
#include "input/readers.h"

// ---- The vector: cones of consecutive affine expressions -----------------------------------------------------

namespace {

// A reader of the vector, which counts positions from 0 and tells them from 1.
class ConeVector {
public:
    ConeVector (const double* numbers, std::uint64_t length) : numbers_ (numbers), length_ (length) {}

    bool at_end () const { return position_ >= length_; }
    // Both are told when both are wrong.
    KLVrescode_t read_type_and_size ();
    KLVrescode_t read_exponents ();
    KLVrescode_t make (KLVtask_t task, std::int64_t* domain) const
    {
        return make_domain (task, type_, size_, exponents_, domain);
    }
    std::int32_t size () const { return size_; }
    void go_on () { position_ += exponents_.empty () ? 2 : 5; }

private:
    KLVrescode_t fail (const char* format, std::uint64_t offset) const
    {
        // Each format has one number.
        return refuse (KLV_RES_ARGUMENT, format, static_cast<unsigned long long> (position_ + offset + 1));
    }

    const double* numbers_;
    std::uint64_t length_, position_ = 0;
    std::int32_t type_ = -1, size_ = 0;    // a KLVdomaintype
    std::span<const double> exponents_;
};

KLVrescode_t ConeVector::read_type_and_size ()
{
    // The types of the vector are those of cones of variables.
    static constexpr std::int32_t domains[] = {KLV_DOMAIN_QUADRATIC_CONE,
                                               KLV_DOMAIN_ROTATED_QUADRATIC_CONE,
                                               KLV_DOMAIN_PRIMAL_EXPONENTIAL_CONE,
                                               KLV_DOMAIN_DUAL_EXPONENTIAL_CONE,
                                               KLV_DOMAIN_PRIMAL_POWER_CONE,
                                               KLV_DOMAIN_DUAL_POWER_CONE,
                                               KLV_DOMAIN_ZERO};
    KLVrescode_t code = KLV_RES_OK;
    const std::int32_t type = truncate_to_int32 (numbers_[position_]).value_or (-1);
    if (type < 0 || type >= static_cast<std::int32_t> (std::size (domains)))
        code = fail ("prob.cones(%llu) is invalid cone-type\n", 0);
    else
        type_ = domains[type];
    if (position_ + 1 == length_)
        return fail ("prob.cones(%llu) is missing, must contain cone-length\n", 1);
    const auto size = truncate_to_int32 (numbers_[position_ + 1]);
    if (!size)
        return fail ("prob.cones(%llu)", 1);
    size_ = *size;
    return code;
}

KLVrescode_t ConeVector::read_exponents ()
{
    exponents_ = {};
    if (!is_power_domain (type_))
        return KLV_RES_OK;
    if (position_ + 2 == length_)
        return fail ("prob.cones(%llu) is missing, must contain number of exponents\n", 2);
    if (truncate_to_int32 (numbers_[position_ + 2]) != 2)
        return fail ("Power-cone exponents: expected value 2 at position %llu\n", 2);
    if (position_ + 4 >= length_)
        return fail ("prob.cones is too short. Power-cone parameters (2) expected at position %llu\n", 2);
    exponents_ = {numbers_ + position_ + 3, 2};
    for (std::uint64_t k = 0; k < 2; ++k)
        if (exponents_[k] <= 0.0)
            return fail ("prob.cones[%llu] must be positive (for powercones).\n", 3 + k);
    return KLV_RES_OK;
}

void tell_last_error (KLVtask_t task, KLVrescode_t code)
{
    std::int32_t last = 0, length = 0;
    char message[KLV_MAX_TEXT] = "";
    KLV_getlasterror (task, &last, sizeof message, &length, message);
    mx_error (code, message);
}

}

KLVrescode_t putconesnew (KLVtask_t task, const mxArray* cones, std::int64_t expressions)
{
    if (!is_given (cones) || !mxIsDouble (cones) || mxIsSparse (cones))
        return refuse (KLV_RES_ARGUMENT, "prob.cones");
    const double* numbers = mxGetPr (cones);
    if (!numbers)
        return KLV_RES_OUT_OF_MEMORY;
    ConeVector vector (numbers, mxGetNumberOfElements (cones));
    std::int64_t used = 0;
    for (; !vector.at_end (); vector.go_on ()) {
        KLVrescode_t code = vector.read_type_and_size ();
        if (code == KLV_RES_OK)
            code = vector.read_exponents ();
        if (code != KLV_RES_OK)
            return code;
        std::int64_t domain = -1;
        code = vector.make (task, &domain);
        if (code == KLV_RES_OK && used + vector.size () > expressions)
            code = refuse (KLV_RES_ARGUMENT, "Total dimension of cones exceeds size(prob.f, 1)\n");
        if (code == KLV_RES_OK)
            code = KLV_appendaccseq (task, domain, vector.size (), used, nullptr);
        if (code != KLV_RES_OK) {
            tell_last_error (task, code);
            return code;
        }
        used += vector.size ();
    }
    if (used != expressions)
        return refuse (KLV_RES_ARGUMENT, "Total dimension of cones does not match size(prob.f, 1)");
    return KLV_RES_OK;
}

// ---- A cell of records: one cone each ------------------------------------------------------------------------

namespace {

// One cell; its number counts from 1 in messages.
class CellCone {
public:
    CellCone (KLVtask_t task, std::int32_t numvar, const mxArray* record, std::uint64_t number)
        : task_ (task), numvar_ (numvar), record_ (record), number_ (number)
    {}

    // `members` has room for all variables.
    KLVrescode_t put (std::int32_t* members);

private:
    KLVrescode_t fail (const char* field) const
    {
        return refuse (KLV_RES_ARGUMENT, "prob.cones{%llu}.%s", static_cast<unsigned long long> (number_),
                       field);
    }
    KLVrescode_t read_named_type (const mxArray* type);
    KLVrescode_t read_type ();
    KLVrescode_t read_members (std::int32_t* members);
    KLVrescode_t read_parameter ();

    KLVtask_t task_;
    std::int32_t numvar_;
    const mxArray* record_;
    std::uint64_t number_;
    std::int32_t type_ = -1, count_ = 0;
    double parameter_ = 0;
};

KLVrescode_t CellCone::read_named_type (const mxArray* type)
{
    const host::Memory<char> name = copy_text (type);
    if (!name)
        return fail ("type");
    local_strupr (name.get ());
    strtrim (name.get (), ' ');
    char value[KLV_MAX_TEXT] = "";
    if (!KLV_symnamtovalue (name.get (), value) || *value == '\0' || !strtointeger (value, &type_))
        return refuse (KLV_RES_CONE_TYPE_UNKNOWN, "%s", name.get ());
    return KLV_RES_OK;
}

KLVrescode_t CellCone::read_type ()
{
    const mxArray* type = mxGetField (record_, 0, "type");
    if (!is_given (type))
        return fail ("type");
    if (mxIsChar (type))
        return read_named_type (type);
    if (!isvector (type, 1, 1))
        return fail ("type");
    double number = 0;
    if (mxIsSparse (type))
        for_each_entry (type, [&] (std::int32_t, double value) {
            number = value;
            return true;
        });
    else if (const double* values = mxGetPr (type))
        number = *values;
    else
        return KLV_RES_OUT_OF_MEMORY;
    const auto whole = truncate_to_int32 (number);
    type_ = whole.value_or (-1);
    return whole ? KLV_RES_OK : fail ("type");
}

// The library looks for indices below 1.
KLVrescode_t CellCone::read_members (std::int32_t* members)
{
    const mxArray* sub = mxGetField (record_, 0, "sub");
    const std::uint64_t count = vectorlen (sub);
    if (count == 0 || count > static_cast<std::uint64_t> (numvar_) || !isvector (sub, count, 0))
        return fail ("sub");
    const double* indices = mxGetPr (sub);
    if (!indices)
        return KLV_RES_OUT_OF_MEMORY;
    count_ = static_cast<std::int32_t> (count);
    for (std::uint64_t k = 0; k < count; ++k) {
        if (!(indices[k] < numvar_ + 1.0))    // NaN, too
            return refuse (KLV_RES_CONE_MEMBER, "%.0f %s", std::trunc (indices[k]), "prob.cones.sub");
        members[k] = std::max (truncate_to_int32 (indices[k]).value_or (0), 0) - 1;
    }
    return KLV_RES_OK;
}

KLVrescode_t CellCone::read_parameter ()
{
    const mxArray* conepar = mxGetField (record_, 0, "conepar");
    if (!is_given (conepar))
        return KLV_RES_OK;
    if (!mxIsDouble (conepar))
        return fail ("conepar");
    const auto number = first_number (conepar);
    parameter_ = number.value_or (0);
    return number ? KLV_RES_OK : KLV_RES_OUT_OF_MEMORY;
}

KLVrescode_t CellCone::put (std::int32_t* members)
{
    if (!is_given (record_) || !mxIsStruct (record_))
        return fail ("sub");
    KLVrescode_t code = read_type ();
    if (code == KLV_RES_OK)
        code = read_members (members);
    if (code == KLV_RES_OK)
        code = read_parameter ();
    return code == KLV_RES_OK ? KLV_appendcone (task_, type_, parameter_, count_, members) : code;
}

KLVrescode_t put_cell_of_cones (KLVtask_t task, const mxArray* cones)
{
    std::int32_t numvar = 0;
    KLVrescode_t code = KLV_getnumvar (task, &numvar);
    if (code != KLV_RES_OK)
        return code;
    const auto members = host::allocate<std::int32_t> (static_cast<std::size_t> (numvar));
    if (!members)
        return KLV_RES_OUT_OF_MEMORY;
    const std::uint64_t count = mxGetNumberOfElements (cones);
    for (std::uint64_t k = 0; k < count && code == KLV_RES_OK; ++k)
        code =
            CellCone (task, numvar, mxGetCell (cones, static_cast<mwIndex> (k)), k + 1).put (members.get ());
    return code;
}

// ---- A record of vectors: all cones one after another ------------------------------------------------------------

struct ConeRecord {
    const double *type = nullptr, *sub = nullptr, *subptr = nullptr, *conepar = nullptr;
    std::uint64_t cones = 0, members = 0;

    // Cone c has the next members of sub: only differences of subptr count.
    double count_of (std::uint64_t c) const
    {
        const double begin = std::trunc (subptr[c]);
        return c + 1 < cones ? std::trunc (subptr[c + 1]) - begin : static_cast<double> (members) - begin + 1;
    }
    bool fits () const
    {
        double used = 0;
        for (std::uint64_t c = 0; c < cones; ++c) {
            const double count = count_of (c);
            if (!(count >= 0))    // NaN, too
                return false;
            used += count;
        }
        return used <= static_cast<double> (members);
    }
};

// Every member that is out of range is told.
KLVrescode_t read_member (const ConeRecord& record, std::uint64_t k, std::int32_t numvar,
                          std::int32_t& member)
{
    const double index = std::trunc (record.sub[k]);
    const auto tell = [&] (const char* what) {
        return refuse (KLV_RES_ARGUMENT, "prob.cones.sub(%llu)=%.0f is too %s.",
                       static_cast<unsigned long long> (k) + 1, index, what);
    };
    if (!(index >= 1))    // NaN, too
        return tell ("small");
    if (index > numvar)
        return tell ("large");
    member = static_cast<std::int32_t> (index) - 1;
    return KLV_RES_OK;
}

KLVrescode_t put_cones_of_record (KLVtask_t task, const ConeRecord& record)
{
    std::int32_t numvar = 0;
    KLVrescode_t code = KLV_getnumvar (task, &numvar);
    if (code != KLV_RES_OK)
        return code;
    if (!record.fits ())
        return refuse (KLV_RES_ARGUMENT, "prob.cones");
    const auto members = host::allocate<std::int32_t> (static_cast<std::size_t> (record.members));
    if (!members)
        return KLV_RES_OUT_OF_MEMORY;
    std::uint64_t begin = 0;
    for (std::uint64_t c = 0; c < record.cones; ++c) {
        const auto count = static_cast<std::uint64_t> (record.count_of (c));
        for (std::uint64_t k = begin; k < begin + count; ++k)
            if (const KLVrescode_t fault = read_member (record, k, numvar, members[k]))
                code = fault;
        if (code == KLV_RES_OK)
            code = KLV_appendcone (task, truncate_to_int32 (record.type[c]).value_or (-1),
                                   record.conepar ? record.conepar[c] : 0.0,
                                   static_cast<std::int32_t> (count), members.get () + begin);
        begin += count;
    }
    return code;
}

KLVrescode_t put_record_of_cones (KLVtask_t task, const mxArray* cones)
{
    const mxArray *type = mxGetField (cones, 0, "type"), *sub = mxGetField (cones, 0, "sub"),
                  *subptr = mxGetField (cones, 0, "subptr"), *conepar = mxGetField (cones, 0, "conepar");
    if (!type || !sub || !subptr)
        return refuse (KLV_RES_ARGUMENT, "prob.cones");
    ConeRecord record{.cones = vectorlen (type), .members = vectorlen (sub)};
    if (record.cones == 0)
        return KLV_RES_OK;
    if (!isvector (type, record.cones, 0) || !isvector (sub, record.members, 0) ||
        !isvector (subptr, record.cones, 0) || (conepar && !isvector (conepar, record.cones, 0)) ||
        !is_countable (record.members))
        return refuse (KLV_RES_ARGUMENT, "prob.cones");
    record.type = mxGetPr (type);
    record.sub = record.members > 0 ? mxGetPr (sub) : nullptr;
    record.subptr = mxGetPr (subptr);
    record.conepar = conepar ? mxGetPr (conepar) : nullptr;
    if (!record.type || (!record.sub && record.members > 0) || !record.subptr || (conepar && !record.conepar))
        return KLV_RES_OUT_OF_MEMORY;
    return put_cones_of_record (task, record);
}

}

KLVrescode_t putcones (KLVtask_t task, const mxArray* cones)
{
    if (!is_given (cones))
        return KLV_RES_OK;
    if (mxIsCell (cones))
        return put_cell_of_cones (task, cones);
    if (mxIsStruct (cones))
        return put_record_of_cones (task, cones);
    return refuse (KLV_RES_ARGUMENT, "prob.cones");
}
