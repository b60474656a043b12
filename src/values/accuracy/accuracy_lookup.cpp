#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "config/line_reader.h"
#include "config/value_grammar.h"
#include "state/report.h"
#include "values/accuracy/accuracy_file.h"
#include "values/accuracy/accuracy_text.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t body_line_limit = 128, column_count = 7;
constexpr std::size_t files_kept = 64;
constexpr std::string_view mode_key = "mode:";

// Why a line is no range line, as the words of message 127 tell.
enum class RowFault : std::uint8_t { none, too_long, columns, no_number, second_range };

struct Row {
  std::array<double, column_count> columns{};
  std::uint16_t flags = 0;
  RowFault fault = RowFault::none;
  std::uint8_t fault_column = 0;  // with `columns` their count, capped
  int line = 0;
};

struct Block {
  ModeWords mode;
  std::size_t first = 0, count = 0;
  // The upper limits never fall, no row has a second range and none is at fault: the row for one value can be found
  // by halving.
  bool rising = true;
};

// A mode line that cannot be used: look-ups that come to it end there, so that nothing behind it counts.
struct BadMode {
  int number = 0;
  int line = 0;
  std::string text, word;
};

struct AccIndex {
  std::string path;
  ReadStamp read;
  double confidence = 0;
  std::vector<Row> rows;
  std::vector<Block> blocks;  // in the order of the file
  std::vector<std::pair<std::uint64_t, std::size_t>>
      by_hash;                 // sorted; blocks of one hash in the order of the file
  std::optional<BadMode> bad;  // the first one
};

bool is_na(std::string_view text) { return same_word(text, "na"); }

bool take_number(std::string_view text, double& value) {
  return !text.empty() && scan_number(text, value) == text.size() &&
         std::isfinite(value);
}

constexpr std::uint16_t na_flags[column_count] = {0,
                                                  0,
                                                  acc_flag::second_low,
                                                  acc_flag::second_high,
                                                  acc_flag::no_gain,
                                                  acc_flag::no_floor,
                                                  acc_flag::no_extra};

// One column. Where "na" may stand it sets its flag.
bool take_column(std::string_view text, std::size_t column, Row& row) {
  if (is_na(text) && na_flags[column] != 0) {
    row.flags |= na_flags[column];
    return true;
  }
  if (column + 1 == column_count && text.ends_with('%')) {
    row.flags |= acc_flag::extra_percent;
    text.remove_suffix(1);
  }
  return take_number(text, row.columns[column]);
}

void parse_row(std::string_view line, std::vector<std::string_view>& words, Row& row) {
  const auto refuse = [&row](RowFault fault, std::size_t column) {
    row.fault = fault;
    row.fault_column = static_cast<std::uint8_t>(column);
  };
  const bool split = split_words(line, body_line_limit, words);
  if (!split || words.size() != column_count) return refuse(RowFault::columns, words.size());
  for (std::size_t i = 0; i < column_count; ++i) {
    if (!take_column(words[i], i, row)) return refuse(RowFault::no_number, i + 1);
  }
  const bool low_na = (row.flags & acc_flag::second_low) != 0,
             high_na = (row.flags & acc_flag::second_high) != 0;
  if (low_na != high_na) refuse(RowFault::second_range, 4);
}

// Reads the body once. A line that begins with M or m ends a block, also where it is no mode line.
class BodyReader {
 public:
  explicit BodyReader(AccIndex& index) : index_(index) {}

  void read(std::string_view text) {
    LineReader lines(text, body_line_limit, LineReader::Skip::blank_and_comments);
    std::string line;
    for (;;) {
      const LineReader::Result result = lines.next(line);
      if (result == LineReader::Result::end) break;
      const bool too_long = result == LineReader::Result::too_long;
      const std::string_view words = trim(line);
      if (!words.empty() && (words.front() == 'M' || words.front() == 'm')) {
        open_ = false;
        if (folded_starts(words, mode_key))
          mode_line(words.substr(mode_key.size()), lines.number(), too_long);
      } else if (open_) {
        range_line(words, lines.number(), too_long);
      }
    }
    for (std::size_t i = 0; i < index_.blocks.size(); ++i)
      index_.by_hash.emplace_back(index_.blocks[i].mode.hash, i);
    std::sort(index_.by_hash.begin(), index_.by_hash.end());
  }

 private:
  void mode_line(std::string_view text, int number, bool too_long) {
    if (index_.bad) return;
    const auto refuse = [&](int message, std::string_view word) {
      index_.bad = BadMode{message, number, std::string(trim(text)), std::string(word)};
    };
    if (too_long || !split_words(text, mode_word_limit, words_)) return refuse(124, {});
    if (const std::string_view word = repeated_word(words_); !word.empty()) return refuse(123, word);
    index_.blocks.push_back({.mode = mode_words(words_), .first = index_.rows.size()});
    open_ = true;
  }

  void range_line(std::string_view line, int number, bool too_long) {
    Row row;
    row.line = number;
    if (too_long) {
      row.fault = RowFault::too_long;
    } else {
      parse_row(line, words_, row);
    }
    Block& block = index_.blocks.back();
    const bool one_range = row.fault == RowFault::none && (row.flags & acc_flag::second_low) != 0;
    const bool rises = block.count == 0 || row.columns[1] >= index_.rows.back().columns[1];
    block.rising = block.rising && one_range && rises;
    ++block.count;
    index_.rows.push_back(row);
  }

  AccIndex& index_;
  std::vector<std::string_view> words_;
  bool open_ = false;
};

bool read_index(const std::string& path, AccIndex& index) {
  RunState& run = run_state();
  index = AccIndex();
  const std::optional<ReadStamp> stamp = read_stamp(path);
  if (!stamp) return run_error(run, 121, path);
  std::string text;
  switch (acc_read(path, text)) {
    case AccRead::ok: break;
    case AccRead::not_found: return run_error(run, 121, path);
    case AccRead::broken: return run_error(run, 125, path);
    case AccRead::not_closed: return run_error(run, 126, path);
  }
  index.path = path;
  index.read = *stamp;
  AccFileInfo header;
  // A header at fault is the scan's to report; its confidence is not taken.
  if (acc_header_of(path, text, false, header)) index.confidence = header.confidence;
  BodyReader(index).read(text);
  return true;
}

// The files that have been read, the one used last in front.
std::vector<std::unique_ptr<AccIndex>>& kept_files() {
  static std::vector<std::unique_ptr<AccIndex>> files;
  return files;
}

// The index of a file as it stands now; null after a report.
const AccIndex* index_of(const std::string& path) {
  auto& files = kept_files();
  const auto at =
      std::find_if(files.begin(), files.end(), [&](const auto& file) { return file->path == path; });
  if (at != files.end()) {
    std::rotate(files.begin(), at, at + 1);
    const std::optional<FileStamp> now = file_stamp(path);
    if (now && still_same(files.front()->read, *now)) return files.front().get();
    if (read_index(path, *files.front())) return files.front().get();
    files.erase(files.begin());
    return nullptr;
  }
  auto fresh = std::make_unique<AccIndex>();
  if (!read_index(path, *fresh)) return nullptr;
  if (files.size() == files_kept) files.pop_back();
  files.insert(files.begin(), std::move(fresh));
  return files.front().get();
}

const Block* find_block(const AccIndex& index, const std::vector<std::string_view>& words) {
  const std::uint64_t hash = mode_hash(words);
  auto at = std::lower_bound(index.by_hash.begin(), index.by_hash.end(), std::pair{hash, std::size_t{0}});
  for (; at != index.by_hash.end() && at->first == hash; ++at) {
    if (same_mode(index.blocks[at->second].mode, words)) return &index.blocks[at->second];
  }
  return nullptr;
}

bool report_bad_mode(const AccIndex& index) {
  const BadMode& bad = *index.bad;
  if (bad.number == 123)
    return run_error(run_state(), 123, formatted("%s, line %d", index.path, bad.line), bad.text, bad.word);
  return run_error(run_state(), 124, index.path, bad.line, body_line_limit);
}

bool report_bad_row(const AccIndex& index, const Row& row) {
  std::string reason;
  switch (row.fault) {
    case RowFault::too_long: reason = msg(31000, body_line_limit); break;
    case RowFault::columns: reason = msg(31001, row.fault_column); break;
    case RowFault::no_number: reason = msg(31002, row.fault_column); break;
    default: reason = msg(31003); break;
  }
  return run_error(run_state(), 127, index.path, row.line, reason);
}

bool fits(const Row& row, double x, std::optional<double> y) {
  const bool two = (row.flags & (acc_flag::second_low | acc_flag::second_high)) == 0;
  if (two != y.has_value()) return false;
  if (!num_ge(x, row.columns[0]) || !num_le(x, row.columns[1])) return false;
  return !y || (num_ge(*y, row.columns[2]) && num_le(*y, row.columns[3]));
}

// Rows in front of this one cannot have x: their upper limits are below it.
std::size_t first_candidate(const AccIndex& index, const Block& block, double x, bool two_value) {
  if (!block.rising || two_value) return 0;
  const auto begin = index.rows.begin() + static_cast<std::ptrdiff_t>(block.first);
  const auto end = begin + static_cast<std::ptrdiff_t>(block.count);
  const auto at =
      std::partition_point(begin, end, [x](const Row& row) { return !num_le(x, row.columns[1]); });
  return static_cast<std::size_t>(at - begin);
}

void give(const AccIndex& index, const Row& row, AccRow& out) {
  out.flags = row.flags | acc_flag::hit;
  out.columns = row.columns;
  out.path = index.path;
  out.line = row.line;
  out.confidence = index.confidence;
}

}  // namespace

bool acc_lookup(const std::string& path, std::string_view mode, double x, std::optional<double> y,
                AccRow& row) {
  row = AccRow();
  const AccIndex* index = index_of(path);
  if (index == nullptr) return false;
  std::vector<std::string_view> words;
  words.reserve(8);
  if (!split_words(mode, mode_word_limit, words)) return run_error(run_state(), 122, path, mode);
  if (const std::string_view word = repeated_word(words); !word.empty())
    return run_error(run_state(), 123, path, mode, word);
  const Block* block = find_block(*index, words);
  // Mode lines are read from the top: one at fault is reached before the blocks behind it.
  if (block == nullptr) return !index->bad || report_bad_mode(*index);
  for (std::size_t i = first_candidate(*index, *block, x, y.has_value()); i < block->count; ++i) {
    const Row& candidate = index->rows[block->first + i];
    if (candidate.fault != RowFault::none) return report_bad_row(*index, candidate);
    if (!fits(candidate, x, y)) continue;
    give(*index, candidate, row);
    return true;
  }
  return true;
}

}  // namespace orvane
