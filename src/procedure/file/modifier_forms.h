// The modifier statements of the instrument models: each stores settings for the next statement of its model, in
// columns of its own. One table tells for each model which field stands where in the record and in the line; the
// renderer shows by it and the compiler reads by it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "procedure/file/field_text.h"
#include "state/fsc_record.h"

namespace orvane {

/// What a field of a modifier statement is.
enum class ModifierKind : std::uint8_t {
  word8,          // u8, one of `words`
  word16,         // u16, one of `words`
  nominal,        // QuantityField
  modifier,       // ModifierField
  tagged,         // u16 that is 1 where a QuantityField follows it
  plain,          // u8 unit, u8 prefix, f64 value: a quantity as it is, without its digits
  plain_or_star,  // the same at 2 bytes behind a u8 with bit 0x01 for "*"; other bits stand
  percent,        // the same, a percent where bit 0x02 of the u8 at offset 12 is set
  count16,        // u16, 0 for none, written before or behind the one word of `words`
  real,           // f64, 0 for none, with the one word of `words` behind it
  special,        // two u8: "12.3SP", a first of 0 for none
  mod2,           // u16 code and i16 value, as in the standard record
  mod3,           // u8
  mod4,           // u16
  con,            // u16
  impedance,      // f64 in ohms: 50, 75, 300, 600
  text,           // `size` bytes
  quoted          // the same between double quotes
};

struct ModifierColumn {
  ModifierKind kind;
  std::uint8_t offset;
  std::uint8_t column;
  std::span<const std::string_view> words =
      {};                 // the first one stands for 1; "#" in a word is the u8 behind it
  std::uint8_t size = 0;  // of a text, its NUL included
};

/// The fields of a modifier statement in the order of their columns; empty for another statement.
std::span<const ModifierColumn> modifier_columns(std::uint16_t code);

/// The text of a field; empty where it is unset.
std::string modifier_column_text(const FscRecord& record, const ModifierColumn& field);

/// Reads the text of a field into the record; an empty text leaves it unset. False with the fault.
[[nodiscard]] bool modifier_column_from_text(std::string_view text, const ModifierColumn& field,
                                             FscRecord& record, FieldFault& fault);

}  // namespace orvane
