#include <cmath>

#include "config/line_reader.h"
#include "config/value_grammar.h"
#include "platform/input_file.h"
#include "state/report.h"
#include "values/accuracy/accuracy_file.h"
#include "values/accuracy/accuracy_text.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t header_line_limit = 256, key_limit = 63, value_limit = 127, asset_limit = 63;
constexpr std::size_t file_limit = 64U << 20;
constexpr double days_per_month = 30.4375, days_per_week = 7;

struct UnitWord {
  std::string_view word;
  std::uint16_t units;
};
constexpr UnitWord unit_words[] = {
    {"d", acc_interval::days},       {"da", acc_interval::days},     {"day", acc_interval::days},
    {"days", acc_interval::days},    {"w", acc_interval::weeks},     {"wk", acc_interval::weeks},
    {"week", acc_interval::weeks},   {"weeks", acc_interval::weeks}, {"m", acc_interval::months},
    {"mo", acc_interval::months},    {"mon", acc_interval::months},  {"month", acc_interval::months},
    {"months", acc_interval::months}};

// A number at the start of `text`, taken off it. Nothing for one that is negative or infinite.
std::optional<double> take_number(std::string_view& text) {
  double value = 0;
  const std::size_t length = scan_number(text, value);
  if (length == 0 || !std::isfinite(value) || value < 0) return std::nullopt;
  text = trim(text.substr(length));
  return value;
}

// One header, line by line.
class HeaderReader {
 public:
  HeaderReader(const std::string& path, AccFileInfo& out, bool report)
      : path_(path), out_(out), report_(report) {}

  bool read(std::string_view text) {
    LineReader lines(text, header_line_limit, LineReader::Skip::blank_and_comments);
    std::string line;
    for (;;) {
      const LineReader::Result result = lines.next(line);
      if (result == LineReader::Result::end) break;
      line_ = lines.number();
      if (result == LineReader::Result::too_long)
        return report_ && errp(189, path_, line_, header_line_limit);
      const std::string_view words = trim(line);
      if (!inside_) {
        if (folded_starts(words, "mode:")) return true;
        inside_ = folded_starts(words, "begin header");
        continue;
      }
      if (!key_line(words)) return false;
      if (closed_) break;
    }
    if (closed_ && instrument_ && confidence_ && interval_) out_.flags |= AccFileInfo::complete;
    return true;
  }

 private:
  bool fault(int number, std::string_view what) { return report_ && errp(number, path_, line_, what); }

  bool key_line(std::string_view text) {
    constexpr std::string_view first_letters = "aceiACEI";
    if (first_letters.find(text.front()) == std::string_view::npos) return true;
    struct KeyRow {
      std::string_view key;
      bool (HeaderReader::*take)(const std::string& value);
    };
    static constexpr KeyRow rows[] = {{"instrument", &HeaderReader::instrument},
                                      {"asset", &HeaderReader::asset},
                                      {"confidence", &HeaderReader::confidence},
                                      {"interval", &HeaderReader::interval},
                                      {"end header", &HeaderReader::end}};
    std::string key, value;
    if (!key_value_split(text, key, key_limit, value, value_limit)) return fault(179, text);
    for (const KeyRow& row : rows) {
      if (same_word(row.key, key)) return (this->*row.take)(value);
    }
    return fault(179, text);
  }

  bool instrument(const std::string& value) {
    if (instrument_) return fault(186, value);
    instrument_ = true;
    out_.instrument = value;
    return true;
  }

  bool asset(const std::string& value) {
    if (asset_) return fault(180, value);
    if (value.size() > asset_limit) return fault(179, value);
    asset_ = true;
    out_.asset = value;
    return true;
  }

  bool confidence(const std::string& value) {
    if (confidence_) return fault(185, value);
    std::string_view text = value;
    const std::optional<double> number = take_number(text);
    if (!number || *number == 0) return fault(197, value);
    if (!text.empty() && !same_word(text, "sigma")) return fault(198, text);
    confidence_ = true;
    out_.confidence = *number;
    return true;
  }

  bool interval(const std::string& value) {
    if (interval_) return fault(187, value);
    if (!read_interval(value)) return fault(10339, value);
    interval_ = true;
    return true;
  }

  bool read_interval(std::string_view text) {
    const std::string_view whole = text;
    const std::optional<double> low = take_number(text);
    if (!low) return fault(199, whole);
    double high = *low;
    if (text.starts_with('-')) {
      text = trim(text.substr(1));
      const std::optional<double> second = take_number(text);
      if (!second) return fault(449, whole);
      high = *second;
    }
    const std::uint16_t units = acc_interval::units_of(text);
    if (units == 0) return fault(200, text);
    store_interval(*low, high, units);
    return true;
  }

  void store_interval(double low, double high, std::uint16_t units) {
    if (high < low) std::swap(low, high);
    out_.interval_lo = low;
    out_.interval_hi = high;
    out_.interval_units = units;
    out_.days_lo = acc_interval::in_days(low, units);
    out_.days_hi = acc_interval::in_days(high, units);
  }

  bool end(const std::string&) {
    closed_ = true;
    return true;
  }

  const std::string& path_;
  AccFileInfo& out_;
  const bool report_;
  int line_ = 0;
  bool inside_ = false, closed_ = false;
  bool instrument_ = false, asset_ = false, confidence_ = false, interval_ = false;
};

}  // namespace

double acc_interval::in_days(double value, std::uint16_t units) {
  switch (units) {
    case months: return value * days_per_month;
    case weeks: return value * days_per_week;
    default: return value;
  }
}

std::uint16_t acc_interval::units_of(std::string_view word) {
  for (const UnitWord& row : unit_words) {
    if (same_word(row.word, word)) return row.units;
  }
  return 0;
}

const char* acc_interval::letter_of(std::string_view word) {
  switch (units_of(word)) {
    case days: return "D";
    case months: return "M";
    case weeks: return "W";
    default: return nullptr;
  }
}

AccRead acc_read(const std::string& path, std::string& text) {
  InputFile file;
  text.clear();
  if (!file.open(path)) return AccRead::not_found;
  const std::optional<std::uint64_t> size = file.size();
  if (!size || *size > file_limit) return AccRead::broken;
  text.resize(static_cast<std::size_t>(*size));
  const bool whole = file.read(text.data(), text.size()) == text.size();
  if (!file.close()) return AccRead::not_closed;
  return whole ? AccRead::ok : AccRead::broken;
}

bool acc_header_of(const std::string& path, std::string_view text, bool report, AccFileInfo& out) {
  out = AccFileInfo();
  out.path = path;
  return HeaderReader(path, out, report).read(text);
}

bool acch_header(const std::string& path, AccFileInfo& out) {
  std::string text;
  switch (acc_read(path, text)) {
    case AccRead::ok: return acc_header_of(path, text, true, out);
    case AccRead::not_found: return errp(178, path);
    case AccRead::not_closed: return errp(196, path);
    case AccRead::broken: break;
  }
  return errp(188, path);
}

}  // namespace orvane
