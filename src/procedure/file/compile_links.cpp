// What a line says only together with others: statements of several records, adjustment blocks, branch targets.
#include <cstdlib>
#include <limits>
#include <map>
#include <unordered_map>

#include "procedure/file/ascii.h"
#include "procedure/file/columns.h"
#include "procedure/file/compile_parts.h"
#include "state/fsc.h"

namespace orvane::compiling {
namespace {

constexpr int highest_target = std::numeric_limits<std::int16_t>::max();

std::string label_of(const CompiledLine& line) {
  const std::string_view text =
      line.record.text(line.code() == fsc::label ? field::text_14 : field::jmpl_text);
  std::string label(text.substr(0, text.find(' ')));
  for (char& c : label) c = ascii_upper(c);
  return label;
}

class Linker {
 public:
  Linker(std::vector<CompiledLine>& lines, std::vector<CompileFault>& faults) : faults_(faults) {
    for (CompiledLine& line : lines) {
      if (line.executable()) lines_.push_back(&line);
    }
  }

  void run() {
    group_statements();
    mark_adjustments();
    note_targets();
    link_jumps();
    link_blocks();
  }

 private:
  void refuse(const CompiledLine& line, std::size_t column, std::string reason) {
    faults_.push_back({line.line, static_cast<int>(column) + 1, std::move(reason)});
  }
  static std::size_t name_column(const CompiledLine& line) {
    return line.has(line_flag::adjustment) ? column::adjustment_fsc : column::fsc;
  }

  // --- Statements --------------------------------------------------------------------------------------------

  static bool same_statement(const CompiledLine& a, const CompiledLine& b) {
    return a.code() == b.code() && a.record.get(field::test_major) == b.record.get(field::test_major) &&
           a.record.get(field::test_minor) == b.record.get(field::test_minor) &&
           a.has(line_flag::adjustment) == b.has(line_flag::adjustment);
  }

  void group_statements() {
    for (std::size_t first = 0; first < lines_.size();) {
      const auto limit = static_cast<std::size_t>(fsc_line_limit(lines_[first]->code()));
      std::size_t end = first + 1;
      while (limit > 1 && end < lines_.size() && same_statement(*lines_[first], *lines_[end])) ++end;
      if (end - first > limit)
        refuse(*lines_[first + limit], name_column(*lines_[first]),
               "the statement has more than its " + std::to_string(limit) + " lines");
      for (std::size_t i = first; i < end; ++i) flag_record(*lines_[i], i == first, i + 1 == end);
      first = end;
    }
  }

  static void flag_record(CompiledLine& line, bool first, bool last) {
    line.set(static_cast<std::uint16_t>((first ? line_flag::first : line_flag::continues) |
                                        (last ? line_flag::last : 0)));
    const std::uint16_t code = line.code();
    const bool setup =
        (code & code_class::instrument) != 0 && (is_setup_line(line.record) || is_reset_form(line.record));
    if ((code & code_class::test) != 0 && !setup) line.set(line_flag::result);
  }

  // An adjustment block stands directly behind the test whose result it adjusts.
  void mark_adjustments() {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      if (!lines_[i]->has(line_flag::adjustment)) continue;
      if (i > 0 && lines_[i - 1]->has(line_flag::adjustment)) continue;
      if (i == 0 || !lines_[i - 1]->has(line_flag::result)) {
        refuse(*lines_[i], column::adjustment_fsc, "an adjustment block stands behind a test");
        continue;
      }
      std::size_t test = i;
      do lines_[--test]->set(line_flag::adjust_follows);
      while (test > 0 && !lines_[test]->has(line_flag::first));
    }
  }

  // --- Targets by test number and label ----------------------------------------------------------------------

  static int test_key(std::int16_t major, std::int16_t minor) { return major * 65536 + minor; }

  void note_targets() {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      const CompiledLine& line = *lines_[i];
      if (const std::int16_t major = line.record.get(field::test_major); major > 0)
        tests_.emplace(test_key(major, line.record.get(field::test_minor)), i);
      if (line.code() != fsc::label) continue;
      const auto [there, added] = labels_.emplace(label_of(line), i);
      if (!added)
        refuse(line, column::text,
               "the label stands in line " + std::to_string(lines_[there->second]->line) + " already");
    }
  }

  void link_jumps() {
    for (CompiledLine* line : lines_) {
      switch (line->code()) {
        case fsc::jmp:
        case fsc::jmpf:
        case fsc::jmpt:
        case fsc::jmpz:
        case fsc::rpt: link_to_test(*line); break;
        case fsc::jmpl: link_to_label(*line); break;
        default: break;
      }
    }
  }

  void link_to_test(CompiledLine& line) {
    const auto found = tests_.find(
        test_key(line.record.get(field::jmp_target_major), line.record.get(field::jmp_target_minor)));
    if (found == tests_.end()) return refuse(line, column::jump_target, "no line has this test number");
    link(line, found->second);
  }

  void link_to_label(CompiledLine& line) {
    const auto found = labels_.find(label_of(line));
    if (found == labels_.end())
      return refuse(line, column::text, "there is no label \"" + label_of(line) + "\"");
    link(line, found->second);
  }

  void link(CompiledLine& from, std::size_t to) {
    if (to > static_cast<std::size_t>(highest_target))
      return refuse(from, column::text,
                    "the target in line " + std::to_string(lines_[to]->line) +
                        " lies behind the 32,768th statement line; branches reach no further");
    from.record.set(branch_index_field(from.code()), static_cast<std::int16_t>(to));
  }

  // --- Blocks ------------------------------------------------------------------------------------------------

  struct Block {
    std::size_t opening;  // IF, WHILE, DO
    std::size_t latest;   // the line whose link waits for the next part of the block
  };

  void link_blocks() {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      switch (lines_[i]->code()) {
        case fsc::if_:
        case fsc::while_:
        case fsc::do_: open_.push_back({i, i}); break;
        case fsc::elseif:
        case fsc::else_: next_part(i); break;
        case fsc::endif: close(i, fsc::if_, "IF"); break;
        case fsc::endw: close(i, fsc::while_, "WHILE"); break;
        case fsc::until: close(i, fsc::do_, "DO"); break;
        default: break;
      }
    }
    for (const Block& block : open_) {
      const CompiledLine& line = *lines_[block.opening];
      refuse(line, name_column(line),
             std::string("the block is not closed: ") + closing_name(line.code()) + " is missing");
    }
  }

  static const char* closing_name(std::uint16_t opening) {
    return opening == fsc::if_ ? "ENDIF" : opening == fsc::while_ ? "ENDW" : "UNTIL";
  }

  // The innermost block, if it was opened by this statement; otherwise the line is out of place.
  Block* innermost(std::size_t at, std::uint16_t opening, const char* opening_name) {
    const CompiledLine& line = *lines_[at];
    if (!open_.empty() && lines_[open_.back().opening]->code() == opening) return &open_.back();
    std::string reason = std::string("there is no ") + opening_name + " that this line belongs to";
    if (!open_.empty()) {
      const CompiledLine& other = *lines_[open_.back().opening];
      reason += ": the block of line " + std::to_string(other.line) + " waits for its " +
                closing_name(other.code());
    }
    refuse(line, name_column(line), std::move(reason));
    return nullptr;
  }

  void next_part(std::size_t at) {
    Block* block = innermost(at, fsc::if_, "IF");
    if (block == nullptr) return;
    if (lines_[block->latest]->code() == fsc::else_)
      refuse(*lines_[at], name_column(*lines_[at]),
             "the ELSE in line " + std::to_string(lines_[block->latest]->line) +
                 " is the last part of its block");
    link(*lines_[block->latest], at);
    block->latest = at;
  }

  void close(std::size_t at, std::uint16_t opening, const char* opening_name) {
    const Block* block = innermost(at, opening, opening_name);
    if (block == nullptr) return;
    if (opening != fsc::do_) link(*lines_[block->latest], at);
    if (opening != fsc::if_) link(*lines_[at], block->opening);
    open_.pop_back();
  }

  std::vector<CompileFault>& faults_;
  std::vector<CompiledLine*> lines_;
  std::unordered_map<int, std::size_t> tests_;
  std::map<std::string, std::size_t> labels_;
  std::vector<Block> open_;
};

}  // namespace

void link_lines(std::vector<CompiledLine>& lines, std::vector<CompileFault>& faults) {
  Linker(lines, faults).run();
}

}  // namespace orvane::compiling
