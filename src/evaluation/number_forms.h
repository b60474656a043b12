// The forms in which numbers of results are printed where no FMT says otherwise.
#pragma once

#include <cstdint>
#include <string>

#include "state/result_record.h"

namespace orvane {

/// Forms of format_number(); `n` are its digits.
namespace number_form {
constexpr int engineering = 1;  // n decimals of a mantissa below 10, one and two fewer above; "12.35e-003"
constexpr int exponent = 2;     // "%.*e"
constexpr int fixed = 3;        // "%.*f"
constexpr int significant = 4;  // rounded to n significant digits
constexpr int at_least = 5;     // "%.12g", with zeros up to n decimals
constexpr int general = 6;      // "%.*g"; so is every other form
constexpr int mantissa = 7;     // the decimals of `engineering`, without an exponent
}  // namespace number_form

/// Forms 3, 5 and 7 turn to "%.*e" where the text would be longer than 32 characters.
std::string format_number(double x, int n, int form);

/// The decimals that "UUT Resolution" of the record gives a number with this prefix, `step` more than the resolution
/// itself has: 0 to 15. 0 where the record has no resolution.
int digits_for(const ResultRecord& record, int step, std::uint8_t prefix);

}  // namespace orvane
