#include "kalvo/forms/sizes.h"

#include "kalvo/model/text.h"

#include <algorithm>
#include <variant>

namespace klv {

static FormSizes measure (const LinearForm& form)
{
    return {.columns = form.columns (), .rows = form.row_count (), .entries = std::ssize (form.entries)};
}

static FormSizes measure (const QuadraticForm& form)
{
    return {.columns = form.columns (),
            .rows = form.row_count (),
            .entries = std::ssize (form.equality.values) + std::ssize (form.range.values),
            .quadratic_entries = std::ssize (form.quadratic.values)};
}

static FormSizes measure (const ConicForm& form)
{
    FormSizes sizes{.columns = form.columns (),
                    .rows = form.row_count (),
                    .entries = std::ssize (form.matrix.values),
                    .quadratic_entries = std::ssize (form.quadratic.values)};
    for (const ElementaryCone& cone : form.cones) {
        sizes.second_order += cone.kind == ConeKind::second_order;
        sizes.exponential += cone.kind == ConeKind::exponential;
        sizes.power += cone.kind == ConeKind::power;
        sizes.matrices += cone.kind == ConeKind::semidefinite;
        if (cone.kind == ConeKind::second_order)
            sizes.largest_second_order = std::max (sizes.largest_second_order, cone.rows);
        sizes.largest_matrix = std::max (sizes.largest_matrix, cone.order);
    }
    return sizes;
}

FormSizes sizes_of (const Form& form)
{
    return std::visit ([] (const auto& some) { return measure (some); }, form);
}

std::string describe (const FormSizes& sizes)
{
    std::string words;
    const auto add = [&] (std::int64_t count, const char* one, const char* many, std::int32_t largest = 0) {
        if (count == 0)
            return;
        words += text (words.empty () ? "" : ", ", count, " ", count == 1 ? one : many);
        if (largest > 0)
            words += text (" (", count == 1 ? "" : "largest ", largest, ")");
    };
    add (sizes.columns, "column", "columns");
    add (sizes.rows, "row", "rows");
    add (sizes.entries, "entry", "entries");
    add (sizes.quadratic_entries, "quadratic entry", "quadratic entries");
    add (sizes.second_order, "second-order cone", "second-order cones", sizes.largest_second_order);
    add (sizes.exponential, "exponential cone", "exponential cones");
    add (sizes.power, "power cone", "power cones");
    add (sizes.matrices, "matrix", "matrices", sizes.largest_matrix);
    return words.empty () ? "empty" : words;
}

}
