#include "state/buttons.h"

#include <iterator>

#include "messages/catalogue.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr int label_messages[] = {940, 941, 942, 939, 943, 944, 945, 946, 959,
                                  813, 947, 814, 815, 948, 949, 816, 950, 951};

}  // namespace

std::string button_label(int row) {
  if (row >= 1 && row <= static_cast<int>(std::size(label_messages))) {
    const std::string_view text = catalogue_text(label_messages[row - 1]);
    if (!text.empty()) return std::string(text);
  }
  static bool reported = false;
  if (!reported) errp(935, row);
  reported = true;
  return std::to_string(row);
}

Button standard_button(int row, int code, bool is_default) { return {code, button_label(row), is_default}; }

}  // namespace orvane
