#include "procedure/operator/prompts.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "evaluation/result_log.h"
#include "platform/platform.h"
#include "procedure/file/procedure.h"
#include "procedure/operator/lines.h"
#include "state/buttons.h"
#include "state/fsc.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t number_entry_limit = 15;

Entry ask(std::string_view title, std::string_view text, std::size_t limit, int first_row,
          std::string& entry) {
  AskWindow window;
  window.title = title;
  window.lines = wrap_lines(text);
  window.buttons = {standard_button(first_row, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  window.length = limit;
  entry.clear();
  const int code = platform().desk != nullptr ? platform().desk->ask(window, entry) : answer::failed;
  if (code == answer::failed) return Entry::failed;
  return code == answer::ok ? Entry::given : Entry::cancelled;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The statement's lines joined with `separator`, expanded. False after a report.
bool joined_text(Statement& s, std::string_view separator, std::size_t skip, std::string& out) {
  std::vector<std::string_view> texts;
  if (!gather_statement(*s.node, texts))
    return run_error(s.run, 10338, fsc_name(fsc_ordinal(s.record.code())));
  std::size_t size = 0;
  for (const std::string_view text : texts) size += text.size() + separator.size();
  try {
    std::string joined;
    joined.reserve(size);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (i > 0) joined += separator;
      joined += texts[i];
    }
    return expand_text(s.run, s.record, std::string_view(joined).substr(std::min(skip, joined.size())), out);
  } catch (const std::bad_alloc&) {
    return run_error(s.run, 10337, size, fsc_name(fsc_ordinal(s.record.code())));
  }
}

bool store_number(RunState& run, std::string_view entry) {
  std::string text(trimmed(entry));
  all_commas_to_points(text);
  const std::optional<double> value = whole_number(text);
  if (!value || !std::isfinite(*value)) return false;
  run.registers.mem = *value;
  return true;
}

// A text that is assigned, without a prompt.
bool assign_mem2(Statement& s) {
  std::string text;
  if (!joined_text(s, "", 1, text)) return false;
  if (text.size() > RegisterFile::mem2_limit)
    return run_error(s.run, 1809, text.size(), RegisterFile::mem2_limit);
  s.run.registers.mem2 = std::move(text);
  return true;
}

bool assigns(const Statement& s) {
  std::vector<std::string_view> texts;
  return gather_statement(*s.node, texts) && texts.front().starts_with('=');
}

void add_to_results(RunState& run, const FscRecord& record, std::string_view text) {
  note_add(run, PendingNote::rslt, record.test_major(), record.test_minor(), text);
  if (Operator* desk = platform().desk) desk->result_note(text, result_colour::comment);
}

}  // namespace

Entry prompt_text(std::string_view text, std::size_t limit, std::string& entry) {
  return ask("Operator Prompt", text, limit, button_row::ok, entry);
}

Entry prompt_text(std::string_view title, std::string_view text, std::size_t limit, std::string& entry) {
  return ask(title, text, limit, button_row::enter, entry);
}

bool run_memi(Statement& s) {
  if (!is_last_record(s)) return true;
  std::string text;
  if (!joined_text(s, "\n", 0, text)) return false;
  for (;;) {
    std::string entry;
    switch (prompt_text(text, number_entry_limit, entry)) {
      case Entry::failed: return run_error(s.run, 374);
      case Entry::cancelled: s.run.set(run_flag::skip_test); return true;
      case Entry::given: break;
    }
    if (store_number(s.run, entry)) return true;
    errp(10336, entry);
  }
}

bool run_mem2(Statement& s) {
  if (!is_last_record(s)) return true;
  if (assigns(s)) return assign_mem2(s);
  std::string text;
  if (!joined_text(s, "\n", 0, text)) return false;
  std::string entry;
  switch (prompt_text(text, RegisterFile::mem2_limit, entry)) {
    case Entry::failed: return run_error(s.run, 374);
    case Entry::cancelled: s.run.set(run_flag::skip_test); return true;
    case Entry::given: break;
  }
  s.run.registers.mem2 = trimmed(entry);
  return true;
}

bool run_rslt(Statement& s) {
  std::string text;
  if (!expand_text(s.run, s.record, s.record.text(field::text), text)) return false;
  if (text.size() > result_text_limit) return run_error(s.run, 1811, text.size(), result_text_limit);
  if (text.starts_with('=')) {
    add_to_results(s.run, s.record, std::string_view(text).substr(1));
    return true;
  }
  std::string entry;
  switch (prompt_text(text, result_text_limit, entry)) {
    case Entry::failed: return run_error(s.run, 374);
    case Entry::cancelled: s.run.set(run_flag::skip_test); return true;
    case Entry::given: break;
  }
  add_to_results(s.run, s.record, entry);
  return true;
}

}  // namespace orvane
