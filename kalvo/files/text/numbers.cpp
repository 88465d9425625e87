#include "kalvo/files/text/numbers.h"

#include "kalvo/files/text/fault.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace klv {

template <class Real>
static Real parse (std::string_view text)
{
    const bool plus = text.size () > 1 && text[0] == '+' && text[1] != '-';
    const char* const begin = text.data () + (plus ? 1 : 0);
    const char* const end = text.data () + text.size ();
    Real value = 0;
    auto [stopped, error] = std::from_chars (begin, end, value);
    if (error == std::errc () && stopped != end && (*stopped == 'D' || *stopped == 'd')) {
        std::string with_e (begin, end);
        with_e[static_cast<std::size_t> (stopped - begin)] = 'e';
        const char* const last = with_e.data () + with_e.size ();
        const auto again = std::from_chars (with_e.data (), last, value);
        error = again.ec;
        stopped = again.ptr == last ? end : begin;
    }
    if (error == std::errc::result_out_of_range)
        throw syntax (quote (text) + " is beyond the numbers of double precision");
    if (error != std::errc () || stopped != end || std::isnan (value))
        throw syntax (quote (text) + " is not a number");
    return value;
}

double parse_number (std::string_view text)
{
    return parse<double> (text);
}

double parse_finite (std::string_view text)
{
    const double value = parse<double> (text);
    if (std::isinf (value))
        throw syntax ("an infinite number is only possible as a bound");
    return value;
}

long double parse_range (std::string_view text)
{
    constexpr std::size_t digits_of_double = 17;
    std::string_view mantissa = text.substr (0, text.find_first_of ("EeDd"));
    mantissa.remove_prefix (std::min (mantissa.find_first_not_of ("+-0."), mantissa.size ()));
    const auto digits = mantissa.size () - (mantissa.find ('.') != mantissa.npos ? 1 : 0);
    return digits > digits_of_double ? parse<long double> (text)
                                     : static_cast<long double> (parse<double> (text));
}

NumberText::NumberText (long double range)
{
    constexpr int digits_after_point = 20;
    const double rounded = static_cast<double> (range);
    end_ = static_cast<long double> (rounded) == range
               ? put (rounded)
               : std::to_chars (std::begin (text_), std::end (text_), range, std::chars_format::scientific,
                                digits_after_point)
                     .ptr;
}

}
