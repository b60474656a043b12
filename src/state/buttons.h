// The 18 standard button labels, by row; windows are told which rows they bear and which answer each gives.
#pragma once

#include <string>

#include "platform/operator.h"

namespace orvane {

namespace button_row {
constexpr int ok = 2, cancel = 3, pass = 5, fail = 6, no = 7, enter = 8, terminate = 15, yes = 17,
              yes_all = 18;
}

/// The label of a row, 1 to 18. A label that the catalogue lacks is message 935 with the row, once, and the row's
/// number then stands for it.
std::string button_label(int row);

/// A button with the label of a row.
Button standard_button(int row, int code, bool is_default = false);

}  // namespace orvane
