#include "procedure/file/required_text.h"

#include <algorithm>

#include "instruments/instrument_names.h"
#include "procedure/file/ascii.h"

namespace orvane {
namespace {

constexpr int options_limit = 16;

class Reader {
 public:
  Reader(std::string_view text, FieldFault& fault) : text_(text), fault_(fault) {}

  bool table(RequiredInstruments& table) {
    for (skip_blanks(); at_ < text_.size(); skip_blanks()) {
      if (take(';') || take(',')) continue;
      if (!instrument(table)) return false;
      skip_blanks();
      if (at_ < text_.size() && text_[at_] != ';' && text_[at_] != ',')
        return refuse(at_, "a \";\" stands between two instruments");
    }
    return true;
  }

 private:
  bool refuse(std::size_t at, std::string reason) {
    fault_ = {at, std::move(reason)};
    return false;
  }
  void skip_blanks() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
  }
  bool take(char c) {
    skip_blanks();
    if (at_ >= text_.size() || text_[at_] != c) return false;
    ++at_;
    return true;
  }

  bool instrument(RequiredInstruments& table) {
    const std::size_t start = at_;
    std::uint16_t code = 0, mask = 0;
    if (!model(code, mask)) return false;
    const auto end = table.entries.begin() + table.count;
    auto entry =
        std::find_if(table.entries.begin(), end, [&](const auto& one) { return one.instrument == code; });
    if (entry == end) {
      if (table.count == RequiredInstruments::max_entries) return refuse(start, "more than 64 instruments");
      ++table.count;
      entry->instrument = code;
    }
    entry->option_mask |= mask;
    return !take('(') || alternatives(*entry);
  }

  bool alternatives(RequiredInstruments::Entry& entry) {
    std::size_t used = 0;
    while (used < entry.alternatives.size() && entry.alternatives[used].option != 0) ++used;
    do {
      skip_blanks();
      if (used == entry.alternatives.size()) return refuse(at_, "more than 8 alternatives");
      RequiredInstruments::Alternative& one = entry.alternatives[used++];
      if (!model(one.option, one.option_mask)) return false;
    } while (take('|'));
    return take(')') || refuse(at_, "\")\" is missing");
  }

  bool model(std::uint16_t& code, std::uint16_t& mask) {
    const std::size_t start = at_;
    const std::size_t end = std::min(text_.find_first_of(";,/()|", at_), text_.size());
    const std::string_view name = without_trailing_blanks(text_.substr(at_, end - at_));
    at_ = end;
    int number = 0;
    if (name.starts_with('#')) {
      if (!decimal(name.substr(1), number)) number = 0;
    } else {
      number = instrument_code(name);
    }
    if (number < 1 || number > highest_instrument_code)
      return refuse(start, "\"" + std::string(name) + "\" is no instrument");
    code = static_cast<std::uint16_t>(number);
    return options(mask);
  }

  bool options(std::uint16_t& mask) {
    while (take('/')) {
      const std::size_t start = at_;
      while (at_ < text_.size() && ascii_digit(text_[at_])) ++at_;
      int option = 0;
      if (!decimal(text_.substr(start, at_ - start), option) || option < 1 || option > options_limit)
        return refuse(start, "an option is a number of 1 to 16");
      mask = static_cast<std::uint16_t>(mask | 1U << (option - 1));
    }
    return true;
  }

  static bool decimal(std::string_view digits, int& value) {
    if (digits.empty() || digits.size() > 5) return false;
    value = 0;
    for (const char c : digits) {
      if (!ascii_digit(c)) return false;
      value = value * 10 + (c - '0');
    }
    return true;
  }

  std::string_view text_;
  FieldFault& fault_;
  std::size_t at_ = 0;
};

}  // namespace

bool required_from_text(std::string_view text, RequiredInstruments& table, FieldFault& fault) {
  return Reader(text, fault).table(table);
}

}  // namespace orvane
