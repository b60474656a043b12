#include "text/expand.h"

#include <algorithm>
#include <charconv>

#include "config/startup_config.h"
#include "state/fsc.h"
#include "state/pump.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/math/variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int register_digits = 12;  // significant digits of an inserted register
constexpr std::uint32_t frame_limit = 100, frame_highest = 99;

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
bool is_letter(char c) { return upper(c) >= 'A' && upper(c) <= 'Z'; }
bool is_digit(char c) { return c >= '0' && c <= '9'; }

std::string_view name_of(const FscRecord& record) { return fsc_name(fsc_ordinal(record.code())); }

// Letters in capitals, with "$" and "!" behind them, or "@" alone.
ElementParts take_apart(std::string_view content) {
  ElementParts element;
  content = trim_blanks(content);
  std::size_t i = 0;
  if (content.starts_with('@')) {
    element.word = "@";
    i = 1;
  } else {
    while (i < content.size() && is_letter(content[i])) element.word += upper(content[i++]);
    while (i < content.size() && i > 0 && (content[i] == '$' || content[i] == '!'))
      element.word += content[i++];
  }
  element.argument = trim_blanks(content.substr(i));
  return element;
}

void insert_number(std::string& out, double value) {
  char text[general_limit];
  out.append(text, print_general(value, register_digits, text));
}

bool insert_mem(RunState& run, std::string_view argument, std::string& out) {
  const RegisterFile& registers = run.registers;
  if (argument.empty()) {
    insert_number(out, registers.mem);
  } else if (argument == "1") {
    insert_number(out, registers.mem1());
  } else if (argument == "2") {
    out += registers.mem2;
  } else {
    return false;
  }
  return true;
}

bool insert_m(RunState& run, std::string_view argument, std::string& out) {
  const auto index = element_number(argument, 1, RegisterFile::m_limit);
  if (index) insert_number(out, run.registers.m[*index]);
  return index.has_value();
}

bool insert_l(RunState& run, std::string_view argument, std::string& out) {
  const auto index = element_number(argument, 1, RegisterFile::l_limit);
  if (index) insert_number(out, run.registers.l[*index]);
  return index.has_value();
}

bool insert_byte(RunState&, std::string_view argument, std::string& out) {
  const auto value = element_number(argument, 0, 255);
  if (value) out += static_cast<char>(static_cast<unsigned char>(*value));
  return value.has_value();
}

std::optional<int> hex_digit(char c) {
  if (is_digit(c)) return c - '0';
  const char letter = upper(c);
  if (letter >= 'A' && letter <= 'F') return letter - 'A' + 10;
  return std::nullopt;
}

// Pairs of digits, blanks between the pairs allowed.
bool insert_hex(RunState&, std::string_view argument, std::string& out) {
  std::string bytes;
  while (!argument.empty()) {
    if (argument.size() < 2) return false;
    const auto high = hex_digit(argument[0]);
    const auto low = hex_digit(argument[1]);
    if (!high || !low) return false;
    bytes += static_cast<char>(static_cast<unsigned char>(*high * 16 + *low));
    argument = trim_blanks(argument.substr(2));
  }
  out += bytes;
  return !bytes.empty();
}

// A register that was never set inserts nothing.
bool insert_s(RunState& run, std::string_view argument, std::string& out) {
  const auto index = element_number(argument, 1, RegisterFile::s_limit);
  if (index) out += run.registers.s[*index].value_or("");
  return index.has_value();
}

bool insert_variable(RunState& run, std::string_view name, std::string& out) {
  if (name.empty()) return run_error(run, 4511);
  if (name.ends_with('$')) {
    const std::string* text = run_variable(run, name);
    if (text == nullptr) return run_error(run, 4517, name);
    out += *text;
    return true;
  }
  std::string_view value;
  if (!mvar_Exists(run, name) || !mvar_Get(run, fsc_record_new(), name, value))
    return run_error(run, 4516, name);
  out += value;
  return true;
}

bool insert_new_line(RunState&, std::string_view argument, std::string& out) {
  out += '\n';
  return argument.empty();
}

// What it says is about the end of the text, see Expansion.
bool insert_goes_on(RunState&, std::string_view argument, std::string&) { return argument.empty(); }

// "l,r,c": left and top in percent, a letter.
bool insert_frame(RunState& run, std::string_view argument, std::string&) {
  std::vector<std::string_view> parts;
  if (!split_on(argument, ',', parts) || parts.size() != 3 || parts[2].size() != 1 || !is_letter(parts[2][0]))
    return false;
  const auto left = element_number(parts[0], 0, frame_limit), top = element_number(parts[1], 0, frame_limit);
  if (!left || !top) return false;
  run.draw.x = static_cast<int>(std::min(*left, frame_highest));
  run.draw.y = static_cast<int>(std::min(*top, frame_highest));
  run.draw.style.back() = static_cast<std::uint8_t>(upper(parts[2][0]));
  return true;
}

bool is_shown(std::uint16_t code) {
  switch (code) {
    case fsc::disp:
    case fsc::head:
    case fsc::mess:
    case fsc::opbr:
    case fsc::memi:
    case fsc::mem2:
    case fsc::rslt:
    case fsc::set:
    case fsc::pic:
    case fsc::pice:
    case fsc::eval:
    case fsc::wait: return true;
    default: return false;
  }
}

bool has_gap_element(std::uint16_t code) {
  return code == fsc::ieee || code == fsc::ieee2 || code == fsc::scpi || code == fsc::reset;
}

bool anywhere(std::uint16_t) { return true; }
bool but_on_the_bus(std::uint16_t code) { return !has_gap_element(code); }

// Elements that insert, by their word, and the statements that have them.
struct InsertRow {
  std::string_view word;
  bool (*insert)(RunState& run, std::string_view argument, std::string& out);
  bool (*offered)(std::uint16_t code) = anywhere;
  bool reports = false;   // tells by itself why it failed
  bool is_value = false;  // stands for a value of the run
};
constexpr InsertRow insert_rows[] = {
    {"MEM", insert_mem, anywhere, false, true},
    {"M", insert_m, anywhere, false, true},
    {"L", insert_l, anywhere, false, true},
    {"", insert_byte},
    {"X", insert_hex},
    {"V", insert_variable, anywhere, true, true},
    {"SREG", insert_s, anywhere, false, true},
    {"S", insert_s, but_on_the_bus, false, true},
    {"N", insert_new_line, is_shown},
    {"NO", insert_goes_on, is_shown},
    {"DRAW", insert_frame, is_shown},
};

bool must_stop(const RunState& run) { return run.stopped() || abort_requested(); }

const InsertRow* insert_row(std::string_view word, std::uint16_t code) {
  for (const InsertRow& row : insert_rows) {
    if (row.word == word && row.offered(code)) return &row;
  }
  return nullptr;
}

// As an element of its own, what would begin one or end the text.
void append_escaped(std::string& out, std::string_view value) {
  for (const char c : value) {
    if (c == '[' || c == '{' || c == '}' || c == '\0') {
      out += '[' + std::to_string(static_cast<int>(c)) + ']';
    } else {
      out += c;
    }
  }
}

class Expansion {
 public:
  Expansion(RunState& run, const FscRecord& record, TextCursor& cursor,
            std::span<const ElementAction> actions, std::string& out)
      : run_(run), record_(record), cursor_(cursor), actions_(actions), out_(out) {}

  bool work() {
    out_.clear();
    while (!cursor_.done() && !ends_here_) {
      const char c = cursor_.text[cursor_.at];
      bool ok = true;
      if (c == '[') {
        ok = element(out_, true);
      } else if (c == '{') {
        ok = braces();
      } else {
        out_ += c;
        ++cursor_.at;
      }
      if (!ok) return false;
      if (out_.size() > expansion_limit) return run_error(run_, 1901, name_of(record_), expansion_limit);
    }
    return true;
  }

  bool goes_on() const { return goes_on_; }

 private:
  bool refuse(std::string_view content) { return run_error(run_, 30401, content, name_of(record_)); }

  // The content of the element at the cursor, which is moved behind it. False after a report.
  bool content(std::string_view& inside, std::size_t& behind) {
    const std::size_t end = element_end(cursor_.text, cursor_.at);
    if (end == std::string_view::npos) return run_error(run_, 30400, cursor_.text.substr(cursor_.at));
    inside = cursor_.text.substr(cursor_.at + 1, end - cursor_.at - 1);
    behind = end + 1;
    return true;
  }

  bool element(std::string& out, bool may_act) {
    std::string_view inside;
    std::size_t behind = 0;
    if (!content(inside, behind)) return false;
    const ElementParts found = element_parts(inside);
    if (const InsertRow* row = insert_row(found.word, record_.code()); row != nullptr) {
      cursor_.at = behind;
      goes_on_ = row->insert == insert_goes_on && cursor_.done();
      return row->insert(run_, found.argument, out) || (!row->reports && refuse(inside));
    }
    for (const ElementAction& action : actions_) {
      if (action.word != found.word || !may_act) continue;
      ends_here_ = !out.empty();
      if (ends_here_) return true;
      cursor_.at = behind;
      const bool done = action.act(run_, record_, found.argument);
      ends_here_ = must_stop(run_);
      return done;
    }
    return run_error(run_, 1935, name_of(record_), inside);
  }

  // Text in braces is noted for the results of this test. "BraceEval" says whether elements in it are replaced,
  // "BraceEmpty" whether an empty pair counts.
  bool braces() {
    std::string kept;
    ++cursor_.at;
    while (!cursor_.done() && cursor_.text[cursor_.at] != '}') {
      if (cursor_.text[cursor_.at] == '[' && startup_config().BraceEval != 0) {
        if (!element(kept, false)) return false;
      } else {
        kept += cursor_.text[cursor_.at++];
      }
    }
    if (cursor_.done()) return run_error(run_, 30402, cursor_.text);
    ++cursor_.at;
    if (kept.empty() && startup_config().BraceEmpty == 0) return true;
    // A text longer than a note holds becomes several.
    std::string_view rest = kept;
    do {
      run_.log.notes.push_back({PendingNote::brace, record_.test_major(), record_.test_minor(),
                                std::string(rest.substr(0, PendingNote::text_limit))});
      rest.remove_prefix(std::min(rest.size(), PendingNote::text_limit));
    } while (!rest.empty());
    return true;
  }

  RunState& run_;
  const FscRecord& record_;
  TextCursor& cursor_;
  std::span<const ElementAction> actions_;
  std::string& out_;
  bool ends_here_ = false;  // in front of an action, or behind one with which the run stops
  bool goes_on_ = false;    // the text ended in [NO]
};

}  // namespace

bool expand(RunState& run, const FscRecord& record, TextCursor& cursor,
            std::span<const ElementAction> actions, std::string& out) {
  return Expansion(run, record, cursor, actions, out).work();
}

bool expand_line(RunState& run, const FscRecord& record, std::string_view text, std::string& out,
                 bool& goes_on) {
  TextCursor cursor{text, 0};
  Expansion expansion(run, record, cursor, {}, out);
  const bool ok = expansion.work();
  goes_on = expansion.goes_on();
  return ok;
}

bool expand_text(RunState& run, const FscRecord& record, std::string_view text, std::string& out) {
  bool goes_on = false;
  return expand_line(run, record, text, out, goes_on);
}

// Hexadecimal digits behind "X" may be letters: they belong to the argument.
ElementParts element_parts(std::string_view content) {
  ElementParts element = take_apart(content);
  if (element.word.size() > 1 && element.word[0] == 'X') {
    const std::string_view trimmed = trim_blanks(content);
    element = {"X", trim_blanks(trimmed.substr(1))};
  }
  return element;
}

std::size_t element_end(std::string_view text, std::size_t at) {
  constexpr std::string_view quoted = "']'";
  for (std::size_t i = at; i < text.size(); ++i) {
    if (text[i] == ']') return i;
    if (text.substr(i).starts_with(quoted)) i += quoted.size() - 1;
  }
  return std::string_view::npos;
}

bool for_each_element(std::string_view text, const std::function<bool(std::string_view)>& found) {
  for (std::size_t at = text.find('['); at != std::string_view::npos; at = text.find('[', at)) {
    const std::size_t end = element_end(text, at);
    if (end == std::string_view::npos) return true;
    if (!found(text.substr(at + 1, end - at - 1))) return false;
    at = end;
  }
  return true;
}

bool insert_values(RunState& run, const FscRecord& record, std::string_view text, std::string& out) {
  out.clear();
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t open = std::min(text.find('[', at), text.size());
    out += text.substr(at, open - at);
    if (open == text.size()) break;
    const std::size_t end = element_end(text, open);
    if (end == std::string_view::npos) return run_error(run, 30400, text.substr(open));
    const std::string_view inside = text.substr(open + 1, end - open - 1);
    const ElementParts found = element_parts(inside);
    const InsertRow* row = insert_row(found.word, record.code());
    if (row != nullptr && row->is_value) {
      std::string value;
      if (!row->insert(run, found.argument, value))
        return !row->reports && run_error(run, 30401, inside, name_of(record));
      append_escaped(out, value);
    } else {
      out += text.substr(open, end + 1 - open);
    }
    at = end + 1;
    if (out.size() > expansion_limit) return run_error(run, 1901, name_of(record), expansion_limit);
  }
  return out.size() <= expansion_limit || run_error(run, 1901, name_of(record), expansion_limit);
}

std::optional<std::uint32_t> element_number(std::string_view text, std::uint32_t low, std::uint32_t high) {
  std::uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (value < low || value > high) return std::nullopt;
  return value;
}

}  // namespace orvane
