// A problem's features beyond continuous variables, linear terms and bounds, to compare with those that file formats can hold.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>

namespace klv {

enum class Feature : std::uint8_t {
    integers,
    quadratic_objective,
    quadratic_constraints,
    affine_expressions,
    affine_constraints,
    cones,
    semidefinite_variables,
    count
};

// In messages: "LP cannot hold ...".
constexpr std::array<const char*, static_cast<std::size_t> (Feature::count)> feature_names{
    "integer variables",      "quadratic terms of the objective", "quadratic terms of constraints",
    "affine expressions",     "affine conic constraints",         "cones",
    "semidefinite variables",
};

class Features {
public:
    constexpr Features () = default;
    constexpr Features (std::initializer_list<Feature> features)
    {
        for (const Feature feature : features)
            add (feature);
    }

    constexpr void add (Feature feature) { bits_ |= bit (feature); }
    constexpr bool has (Feature feature) const { return (bits_ & bit (feature)) != 0; }

    // The name of a feature that is not among `others`, or null when all are.
    constexpr const char* missing_in (Features others) const
    {
        for (std::size_t i = 0; i < feature_names.size (); ++i)
            if (const auto feature = static_cast<Feature> (i); has (feature) && !others.has (feature))
                return feature_names[i];
        return nullptr;
    }

private:
    static constexpr std::uint32_t bit (Feature feature) { return 1U << static_cast<unsigned> (feature); }

    std::uint32_t bits_ = 0;
};

// Of problems that are linear programmes, mixed-integer ones too: expressions alone constrain nothing.
constexpr Features linear_features{Feature::integers, Feature::affine_expressions};

constexpr Features all_features ()
{
    Features all;
    for (std::size_t i = 0; i < feature_names.size (); ++i)
        all.add (static_cast<Feature> (i));
    return all;
}

}
