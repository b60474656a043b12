#include "evaluation/correction_file.h"

#include <algorithm>
#include <cmath>

#include "config/line_reader.h"
#include "config/value_grammar.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t line_limit = 128, asset_limit = 63;

namespace reason {
// Catalogue numbers of what message 31021 tells.
constexpr int too_long = 31017, bad_words = 31025, bad_limits = 31026, bad_point = 31027, not_rising = 31028,
              no_points = 31029, no_place = 31019, asset_again = 31018;
}  // namespace reason

bool take_number(std::string_view text, double& value) {
  return !text.empty() && scan_number(text, value) == text.size() && std::isfinite(value);
}

class Reader {
 public:
  explicit Reader(CorrectionFile& file) : file_(file) {}

  std::optional<CorrectionFault> read(std::string_view text) {
    LineReader lines(text, line_limit, LineReader::Skip::blank_and_comments);
    std::string line;
    for (;;) {
      const LineReader::Result result = lines.next(line);
      if (result == LineReader::Result::end) break;
      line_ = lines.number();
      const int wrong = result == LineReader::Result::too_long ? reason::too_long : one(trim(line));
      if (wrong != 0) return CorrectionFault{line_, wrong};
    }
    if (const int wrong = close()) return CorrectionFault{table_->line, wrong};
    return std::nullopt;
  }

 private:
  // A reason, 0 for a sound line.
  int one(std::string_view text) {
    struct KeyRow {
      std::string_view key;
      int (Reader::*take)(std::string_view text);
    };
    static constexpr KeyRow rows[] = {{"asset:", &Reader::asset},
                                      {"mode:", &Reader::mode},
                                      {"range:", &Reader::range},
                                      {"mod1:", &Reader::mod1}};
    for (const KeyRow& row : rows) {
      if (!folded_starts(text, row.key)) continue;
      if (const int wrong = close()) {
        line_ = table_->line;
        return wrong;
      }
      return (this->*row.take)(trim(text.substr(row.key.size())));
    }
    return point(text);
  }

  int asset(std::string_view text) {
    if (text.empty() || text.size() > asset_limit) return reason::bad_words;
    if (!file_.asset.empty()) return reason::asset_again;
    file_.asset = text;
    table_ = nullptr;
    return 0;
  }

  int mode(std::string_view text) {
    if (!split_words(text, mode_word_limit, words_) || !repeated_word(words_).empty())
      return reason::bad_words;
    file_.modes.push_back({mode_words(words_), {}});
    table_ = nullptr;
    return 0;
  }

  int range(std::string_view text) {
    if (file_.modes.empty()) return reason::no_place;
    CorrectionRange made;
    if (const int wrong = limits(text, made.values)) return wrong;
    file_.modes.back().ranges.push_back(std::move(made));
    table_ = &file_.modes.back().ranges.back().values;
    return 0;
  }

  int mod1(std::string_view text) {
    if (file_.modes.empty() || file_.modes.back().ranges.empty()) return reason::no_place;
    CorrectionTable made;
    if (const int wrong = limits(text, made)) return wrong;
    std::vector<CorrectionTable>& modifiers = file_.modes.back().ranges.back().modifiers;
    modifiers.push_back(std::move(made));
    table_ = &modifiers.back();
    return 0;
  }

  int limits(std::string_view text, CorrectionTable& table) {
    table.line = line_;
    const bool two = split_words(text, 2, words_) && words_.size() == 2;
    return two && take_number(words_[0], table.low) && take_number(words_[1], table.high) &&
                   table.low <= table.high
               ? 0
               : reason::bad_limits;
  }

  int point(std::string_view text) {
    if (table_ == nullptr) return reason::no_place;
    CorrectionPoint made;
    if (!split_words(text, 2, words_) || words_.size() != 2 || !take_number(words_[0], made.at) ||
        !take_number(words_[1], made.correction))
      return reason::bad_point;
    if (!table_->points.empty() && made.at <= table_->points.back().at) return reason::not_rising;
    table_->points.push_back(made);
    return 0;
  }

  // The table in hand ends.
  int close() const { return table_ != nullptr && table_->points.empty() ? reason::no_points : 0; }

  CorrectionFile& file_;
  CorrectionTable* table_ = nullptr;  // that takes points
  std::vector<std::string_view> words_;
  int line_ = 0;
};

}  // namespace

std::optional<CorrectionFault> parse_corrections(std::string_view text, CorrectionFile& file) {
  file = CorrectionFile();
  return Reader(file).read(text);
}

std::optional<double> correction_at(const CorrectionTable& table, double value, std::optional<double> exact) {
  const std::vector<CorrectionPoint>& points = table.points;
  if (points.empty() || std::isnan(value)) return std::nullopt;
  if (exact) {
    for (const CorrectionPoint& point : points) {
      if (num_eq(*exact, point.at)) return point.correction;
    }
    return std::nullopt;
  }
  const auto above =
      std::find_if(points.begin(), points.end(), [value](const auto& p) { return value < p.at; });
  if (above == points.begin()) return points.front().correction;
  if (above == points.end()) return points.back().correction;
  const CorrectionPoint& low = above[-1];
  const double share = (value - low.at) / (above->at - low.at);
  return low.correction + share * (above->correction - low.correction);
}

}  // namespace orvane
