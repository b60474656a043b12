// The fields of a record as the texts of their columns, and back. Units are the listing's tokens ("10.0mV", "3kH",
// "100Z"); numbers are shown as they were typed, by their digits byte.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "state/fsc_record.h"

namespace orvane {

/// Why a text is no field, and where in it.
struct FieldFault {
  std::size_t offset = 0;
  std::string reason;
};

// --- To text. An empty field is an empty text ------------------------------------------------------------------

std::string range_text(const RangeField& range);
std::string nominal_text(const QuantityField& nominal);
std::string modifier_text(const ModifierField& modifier);
std::string tolerance_text(const ToleranceField& tolerance);
/// "%.12g" without the zeros of its exponent.
std::string free_number_text(double value);
/// Prefix and unit; a code without a token shows nothing.
std::string unit_text(std::uint8_t prefix, std::uint8_t unit);

// --- From text. False with the fault; an empty text is an empty field -----------------------------------------

[[nodiscard]] bool range_from_text(std::string_view text, RangeField& range, FieldFault& fault);
[[nodiscard]] bool nominal_from_text(std::string_view text, QuantityField& nominal, FieldFault& fault);
[[nodiscard]] bool modifier_from_text(std::string_view text, ModifierField& modifier, FieldFault& fault);
[[nodiscard]] bool tolerance_from_text(std::string_view text, ToleranceField& tolerance, FieldFault& fault);
/// A prefix letter, or none, and a unit token; in any case but for "pA", which is picoamps, and the prefix letter.
[[nodiscard]] bool unit_from_text(std::string_view text, std::uint8_t& prefix, std::uint8_t& unit);

}  // namespace orvane
