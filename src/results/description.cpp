#include <algorithm>

#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "evaluation/result_store.h"
#include "platform/locale_signs.h"
#include "results/result_fields.h"
#include "settings/settings.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t description_limit = 64;

// Digits before the point of a printed number.
int places_of(const ResultRecord& record, ResultField field) {
  const std::string text = r_text(record, field);
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  const auto first = std::find_if(text.begin(), text.end(), is_digit);
  return static_cast<int>(std::find_if_not(first, text.end(), is_digit) - first);
}

// Blanks in front of the point, so that the digits of all points of a range stand one below the other.
std::size_t leading_blanks(const ResultRecord& record) {
  const ResultValue* cardinal = record.find(ResultField::cardinal_point);
  if (startup_config().tdesc_LeadingSpaces == 0 || cardinal == nullptr ||
      record.find(ResultField::uut_range) == nullptr)
    return 0;
  const int blanks = places_of(record, ResultField::uut_range) -
                     places_of(record, ResultField::cardinal_point) - (cardinal->raw < 0 ? 1 : 0);
  return static_cast<std::size_t>(std::max(blanks, 0));
}

void set_decimal_sign(std::string& text) {
  const std::string& key = startup_config().tdesc_DecimalSymbol;
  if (key.empty()) return;
  const char sign = same_word(key, "system") ? user_number_signs().decimal : key.front();
  std::replace(text.begin(), text.end(), '.', sign);
}

}  // namespace

std::string test_description(RunState& run, const FscRecord&, const ResultRecord& record) {
  std::string text = setting_text(run, Setting::TDESC);
  if (text.empty() && record.find(ResultField::cardinal_point) != nullptr) {
    text = std::string(leading_blanks(record), ' ') + quantity_text(record, ResultField::cardinal_point);
    if (record.find(ResultField::mod1) != nullptr) text += " @ " + quantity_text(record, ResultField::mod1);
  }
  set_decimal_sign(text);
  return text.size() < description_limit ? text : std::string();
}

}  // namespace orvane
