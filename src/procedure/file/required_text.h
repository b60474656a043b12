// The table of required instruments as the text of the "CONFIGURATION:" line.
//
//   instrument; instrument; ...        also with commas
//   instrument = model { "/" option } [ "(" alternative { "|" alternative } ")" ]
//   alternative = model { "/" option }
//   model = display name ("HP 3458A") or "#" and the instrument code ("#24"); option = 1 to 16, a bit of the mask
//
//   HP 3458A; HP 8902A/1/3; Agilent E4418B (Agilent E4412A | Agilent E4413A/2)
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "procedure/file/field_text.h"
#include "procedure/file/procedure.h"

namespace orvane {

/// Adds what the text names to the table. A model that is there already gets the options as well. False with the
/// fault.
[[nodiscard]] bool required_from_text(std::string_view text, RequiredInstruments& table, FieldFault& fault);

}  // namespace orvane
