#include "results/log_sort.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <string_view>
#include <vector>

#include "evaluation/result_lines.h"
#include "evaluation/result_log.h"
#include "platform/files.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr std::size_t log_limit = std::size_t{1} << 31;
constexpr int test_limit = 32767;
constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

namespace slot_flag {
[[maybe_unused]] constexpr std::uint8_t seen = 1, seen_twice = 2, adjusted = 4, failed = 8, marginal = 16,
                                        notify_user = 32, dropped = 64;
constexpr std::uint8_t verdict = failed | marginal | notify_user;
}  // namespace slot_flag

enum class Kind : std::uint8_t { unknown, enter, leave, adjust, note, comment, cancelled, test };

constexpr std::array<Kind, 256> kinds_by_letter() {
  std::array<Kind, 256> kinds{};
  const auto set = [&](std::string_view letters, Kind kind) {
    for (const char letter : letters) kinds[static_cast<unsigned char>(letter)] = kind;
  };
  set("C", Kind::enter);
  set("L", Kind::leave);
  set("A", Kind::adjust);
  set("BR", Kind::note);
  set("K", Kind::comment);
  set("c", Kind::cancelled);
  set(log_letter::tests, Kind::test);
  return kinds;
}
constexpr std::array<Kind, 256> kind_of_letter = kinds_by_letter();

// ---- Lines ----

struct Line {
  std::string_view text;  // without its line break
  int test = 0, step = 0;
  Kind kind = Kind::unknown;
  std::size_t printed = 0;  // where the text begins
};

bool take_number(std::string_view text, std::size_t& at, int& value) {
  constexpr std::size_t longest = 5;
  const std::size_t begin = at;
  for (value = 0; at < text.size() && text[at] >= '0' && text[at] <= '9' && at - begin < longest; ++at)
    value = value * 10 + (text[at] - '0');
  return at > begin;
}

// "%04d.%03d %c %s"
bool parse(std::string_view text, Line& line) {
  line.text = text;
  std::size_t at = 0;
  if (!take_number(text, at, line.test) || at >= text.size() || text[at] != '.') return false;
  if (!take_number(text, ++at, line.step) || at + 2 >= text.size() || text[at] != ' ' || text[at + 2] != ' ')
    return false;
  line.kind = kind_of_letter[static_cast<unsigned char>(text[at + 1])];
  line.printed = at + 3;
  return true;
}

std::string_view column(const Line& line, std::size_t at, std::size_t width) {
  const std::size_t begin = line.printed + at;
  return begin < line.text.size() ? line.text.substr(begin, width) : std::string_view();
}

// Both lines of a run bear its number and its letter.
bool are_one_test(const Line& first, const Line& second) {
  return first.text.substr(0, first.printed) == second.text.substr(0, second.printed);
}

std::uint8_t verdict_of(const Line& first, const Line& second) {
  constexpr std::string_view fail = "FAIL", notify = "NOTIFY USER", marginal = "MARGINAL";
  std::uint8_t flags = 0;
  if (column(first, result_column::percent, fail.size()) == fail ||
      column(second, result_column::verdict, fail.size()) == fail)
    flags |= slot_flag::failed;
  if (column(second, result_column::condition, notify.size()) == notify) flags |= slot_flag::notify_user;
  if (column(second, result_column::condition, marginal.size()) == marginal) flags |= slot_flag::marginal;
  return flags;
}

// ---- The two passes ----

// What the first pass keeps of a line, or of the two of a test, for the second.
struct Piece {
  std::uint32_t begin = 0, length = 0;
  std::uint16_t printed = 0;  // of a test: where its text begins
  std::uint8_t flags = 0;     // of a run of a test; slot_flag
  Kind kind = Kind::unknown;
  std::uint32_t run = none;  // of a note: the piece of the run that it stands behind
};

// One test of one procedure as it is called.
struct Slot {
  int step = 0;
  std::uint8_t flags = 0;
  std::uint32_t next = none;                          // slot of another step of the same test number
  std::uint32_t first_run = none, latest_run = none;  // pieces
};

struct Test {
  std::uint32_t slots = none;
  bool adjusted = false;
  std::uint32_t latest_run = none;  // of whatever step
};

struct Nest {
  std::vector<Test> tests;
  std::vector<Slot> slots;
};

class LogSort {
 public:
  explicit LogSort(std::string_view log) : log_(log) {}

  // A number of a message, 0 if it went well; where() tells what the message is about.
  int first_pass() {
    while (at_ < log_.size()) {
      Line line;
      const std::uint32_t begin = static_cast<std::uint32_t>(at_);
      if (!next(line)) return at_fault("dosub()", 4622);
      if (const int fault = take(line, begin); fault != 0) return fault;
    }
    return nests_.empty() ? 0 : at_fault("", 4650);
  }

  int second_pass(std::string& out) const {
    out.reserve(log_.size());
    for (const Piece& piece : pieces_) {
      switch (piece.kind) {
        case Kind::unknown: return 4622;
        case Kind::cancelled: break;
        case Kind::test:
          if ((piece.flags & slot_flag::dropped) == 0) put_test(piece, out);
          break;
        case Kind::note:
          if (piece.run != none && (pieces_[piece.run].flags & slot_flag::dropped) != 0) break;
          [[fallthrough]];
        default: out.append(log_.substr(piece.begin, piece.length)); break;
      }
    }
    return 0;
  }

  int line_number() const { return line_number_; }
  const char* pass() const { return pass_; }

  std::size_t marginal = 0, notify_user = 0, adjusted = 0, failed = 0;

 private:
  int at_fault(const char* pass, int message) {
    pass_ = pass;
    return message;
  }

  bool next(Line& line) {
    const std::size_t end = std::min(log_.find('\n', at_), log_.size());
    const std::string_view text = log_.substr(at_, end - at_);
    at_ = std::min(end + 1, log_.size());
    ++line_number_;
    return parse(text, line);
  }

  std::uint32_t add(std::uint32_t begin, Kind kind) {
    pieces_.push_back({.begin = begin, .length = static_cast<std::uint32_t>(at_ - begin), .kind = kind});
    return static_cast<std::uint32_t>(pieces_.size() - 1);
  }

  int take(const Line& line, std::uint32_t begin) {
    if (line.kind == Kind::unknown) return at_fault("dosub()", 4622);
    if (line.kind == Kind::enter) {
      nests_.emplace_back();
      add(begin, line.kind);
      return 0;
    }
    if (nests_.empty()) return outside(line, begin);
    if (line.kind == Kind::leave) {
      add(begin, line.kind);
      close_nest();
      return 0;
    }
    if (line.test < 1 || line.test > test_limit) return at_fault("", 4621);
    Nest& nest = nests_.back();
    const auto number = static_cast<std::size_t>(line.test);
    if (nest.tests.size() <= number) nest.tests.resize(number + 1);
    Test& test = nest.tests[number];
    switch (line.kind) {
      case Kind::adjust: adjust(test, begin); return 0;
      case Kind::cancelled: cancel(nest, test, begin); return 0;
      case Kind::note: pieces_[add(begin, line.kind)].run = test.latest_run; return 0;
      case Kind::comment: add(begin, line.kind); return 0;
      default: return run(nest, test, line, begin);
    }
  }

  // What was noted behind the last test of a run is written when the run has left its procedure.
  int outside(const Line& line, std::uint32_t begin) {
    if (line.kind != Kind::note && line.kind != Kind::comment) return at_fault("", 4650);
    add(begin, line.kind);
    return 0;
  }

  void adjust(Test& test, std::uint32_t begin) {
    if (!test.adjusted) add(begin, Kind::adjust);
    test.adjusted = true;
  }

  // Both lines of a test.
  int run(Nest& nest, Test& test, const Line& first, std::uint32_t begin) {
    Line second;
    if (at_ >= log_.size() || !next(second) || !are_one_test(first, second)) return at_fault("dosub()", 4622);
    const std::uint32_t piece = add(begin, Kind::test);
    pieces_[piece].printed = static_cast<std::uint16_t>(first.printed);
    pieces_[piece].flags = verdict_of(first, second);
    test.latest_run = piece;
    Slot& slot = slot_of(nest, test, first.step);
    if (slot.first_run == none) {
      slot.first_run = piece;
    } else if (slot.latest_run != slot.first_run) {
      drop(slot.latest_run);
    }
    pieces_[piece].run = slot.latest_run;  // the run before, for a cancel
    slot.latest_run = piece;
    mark(slot);
    return 0;
  }

  Slot& slot_of(Nest& nest, Test& test, int step) {
    for (std::uint32_t at = test.slots; at != none; at = nest.slots[at].next) {
      if (nest.slots[at].step == step) return nest.slots[at];
    }
    nest.slots.push_back({.step = step, .next = test.slots});
    test.slots = static_cast<std::uint32_t>(nest.slots.size() - 1);
    return nest.slots.back();
  }

  void drop(std::uint32_t piece) { pieces_[piece].flags |= slot_flag::dropped; }

  void mark(Slot& slot) const {
    slot.flags = 0;
    if (slot.latest_run == none) return;
    slot.flags = slot_flag::seen | (pieces_[slot.latest_run].flags & slot_flag::verdict);
    if (slot.first_run != slot.latest_run) slot.flags |= slot_flag::seen_twice;
  }

  // The latest run of the test goes; the one before is the latest again, with its verdict.
  void cancel(Nest& nest, Test& test, std::uint32_t begin) {
    add(begin, Kind::cancelled);
    for (std::uint32_t at = test.slots; at != none; at = nest.slots[at].next) {
      Slot& slot = nest.slots[at];
      if (slot.latest_run != test.latest_run || slot.latest_run == none) continue;
      drop(slot.latest_run);
      slot.latest_run = pieces_[slot.latest_run].run;
      if (slot.latest_run == none) slot.first_run = none;
      if (slot.latest_run != none)
        pieces_[slot.latest_run].flags &= static_cast<std::uint8_t>(~slot_flag::dropped);
      mark(slot);
      break;
    }
  }

  void close_nest() {
    for (const Test& test : nests_.back().tests) adjusted += test.adjusted ? 1 : 0;
    for (const Slot& slot : nests_.back().slots) {
      marginal += (slot.flags & slot_flag::marginal) != 0 ? 1 : 0;
      notify_user += (slot.flags & slot_flag::notify_user) != 0 ? 1 : 0;
      failed += (slot.flags & slot_flag::failed) != 0 ? 1 : 0;
    }
    nests_.pop_back();
  }

  // Into the line that begins at `line`; a line that ends before the column is made longer.
  static void write_word(std::string& out, std::size_t line, std::size_t at, std::string_view word) {
    const std::size_t end = std::min(out.find('\n', line), out.size()), needed = line + at + word.size();
    if (end < needed) out.insert(end, needed - end, ' ');
    out.replace(line + at, word.size(), word);
  }

  void put_test(const Piece& piece, std::string& out) const {
    const std::size_t first = out.size();
    out.append(log_.substr(piece.begin, piece.length));
    if ((piece.flags & slot_flag::failed) == 0) return;
    write_word(out, first, piece.printed + result_column::percent, "FAIL");
    write_word(out, out.find('\n', first) + 1, piece.printed + result_column::verdict, "FAIL");
  }

  std::string_view log_;
  std::size_t at_ = 0;
  int line_number_ = 0;
  const char* pass_ = "";
  std::vector<Piece> pieces_;
  std::vector<Nest> nests_;
};

bool write_whole(const std::string& path, const std::string& text) {
  // Beside it first: a full disk leaves the sorted log of an earlier run rather than half of this one's.
  const std::string beside = path + ".new";
  std::ofstream file(beside, std::ios::binary | std::ios::trunc);
  file.write(text.data(), static_cast<std::streamsize>(text.size()));
  file.close();
  std::error_code error;
  if (file) std::filesystem::rename(beside, path, error);
  if (file && !error) return true;
  std::filesystem::remove(beside, error);
  return false;
}

void set_counts(RunState& run, const LogSort& sorted) {
  run_variable_set(run, "MARGINAL$", std::to_string(sorted.marginal));
  run_variable_set(run, "NOTIFY_USER$", std::to_string(sorted.notify_user));
  run_variable_set(run, "NUM_ADJ$", std::to_string(sorted.adjusted));
  run_variable_set(run, "NUM_FAILED$", std::to_string(sorted.failed));
}

}  // namespace

bool log_sort(RunState& run, const std::string& input, const std::string& output) {
  try {
    std::string log, text;
    if (read_file(input, log_limit, log) != ReadResult::ok) return errp(4623, input);
    LogSort sort(log);
    switch (sort.first_pass()) {
      case 0: break;
      case 4621: return errp(4621, input, sort.line_number());
      case 4622: return errp(4622, input, sort.line_number(), sort.pass());
      default: return errp(4650, input, sort.line_number());
    }
    if (sort.second_pass(text) != 0) return errp(4622, input, sort.line_number(), "pass 2");
    if (!write_whole(output, text)) return errp(4623, output);
    set_counts(run, sort);
    return true;
  } catch (const std::bad_alloc&) {
    return errp(4620, input);
  }
}

}  // namespace orvane
