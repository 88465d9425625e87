#include "kalvo/files/text/item_names.h"

#include <algorithm>

namespace klv {

// Adds "_" to a wanted name until no name to avoid equals it, or equals it with a number behind.
class Distinct {
public:
    explicit Distinct (std::string wanted) : wanted_ (std::move (wanted)) {}

    void avoid (std::string_view name)
    {
        if (!name.starts_with (wanted_))
            return;
        const std::size_t tail = std::min (name.find_first_not_of ('_', wanted_.size ()), name.size ());
        if (name.find_first_not_of ("0123456789", tail) == name.npos)
            added_ = std::max (added_, tail - wanted_.size () + 1);
    }

    std::string name () const { return wanted_ + std::string (added_, '_'); }

private:
    std::string wanted_;
    std::size_t added_ = 0;
};

ItemNames::ItemNames (const Names& names, std::int32_t count, const char* prefix)
    : names_ (names), count_ (count)
{
    Distinct distinct (prefix);
    for (std::int32_t i = 0; i < count && names.any (); ++i)
        distinct.avoid (names.get (i));
    prefix_ = distinct.name ();
}

std::string_view ItemNames::operator() (std::int32_t item) const
{
    const std::string_view name = names_.any () ? std::string_view (names_.get (item)) : std::string_view ();
    if (!name.empty ())
        return name;
    made_ = prefix_ + std::to_string (item + 1);
    return made_;
}

std::string unused_name (const char* wanted, const ItemNames& others)
{
    Distinct distinct (wanted);
    for (std::int32_t i = 0; i < others.count (); ++i)
        distinct.avoid (others (i));
    return distinct.name ();
}

}
