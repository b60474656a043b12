#include "evaluation/result_log.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "config/startup_config.h"
#include "evaluation/judgement.h"
#include "evaluation/memc.h"
#include "messages/catalogue.h"
#include "settings/settings.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t line1_width = 80, value_width = 20;
// The first columns of a line without a test are those of the test's number in a report.
constexpr int number_columns = 8;

// One line whatever the text holds: a line break inside would forge a line of its own.
void append_line(std::string& out, std::string_view text) {
  const std::size_t begin = out.size();
  out += text.substr(0, log_line_limit);
  std::replace_if(
      out.begin() + static_cast<std::ptrdiff_t>(begin), out.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  out += '\n';
}

// The lines reach the file at once and together: what a killed program has judged stands there whole.
bool write(RunState& run, std::initializer_list<std::string_view> lines) {
  ResultLog& log = run.log;
  if (log.broken || !log.file.is_open()) return true;
  std::string out;
  for (const std::string_view line : lines) append_line(out, line);
  log.file << out << std::flush;
  if (log.file.good()) return true;
  log.broken = true;
  return errp(4623, log.path);
}

std::string head(int test, int step, char letter) {
  return formatted("%04d.%03d ", test, step) + letter + ' ';
}

std::string padded(std::string text, std::size_t width) {
  text.resize(std::max(width, text.size()), ' ');
  return text.substr(0, width);
}

// ---- Test lines ----

bool is_memc(const FscRecord& record) { return record.code() == fsc::memc || record.code() == fsc::memcx; }

std::string twelve_digits(double value) { return print_number(value, 'g', 12); }

std::string value_text(const RunState& run, const FscRecord& record) {
  const double mem = run.registers.mem;
  if (is_memc(record)) {
    return memc_number(record) ? std::string(record.text(field::memc_nominal)) : twelve_digits(mem);
  }
  if (brings_outcome(record)) return twelve_digits(mem);
  const QuantityField nominal = record.get(field::nominal);
  return twelve_digits((nominal.flags & QuantityField::from_mem) != 0 ? mem : nominal.value);
}

std::string hexadecimal(double value) { return formatted("%016lx", std::bit_cast<std::uint64_t>(value)); }

// What was indicated may lie as far below as the tolerance above what was applied allows, and the other way round;
// a judgement is about what was applied.
std::pair<double, double> limits(const TestValues& test) {
  if ((test.test_state & test_bit::go_no_go) != 0)
    return {test.actual - test.neg_tol, test.actual + test.pos_tol};
  return {test.indicated - test.pos_tol, test.indicated + test.neg_tol};
}

int resolution(const FscRecord& record) {
  if (brings_outcome(record)) return 0;
  if (!is_memc(record)) return digits_after_point(record.get(field::nominal).digits);
  const std::string_view nominal = record.text(field::memc_nominal);
  std::uint8_t digits = 0;
  const std::size_t length = number_length(nominal);
  if (length != 0) number_digits(nominal.substr(0, length), digits);
  return digits_after_point(digits);
}

// Each closed by ":", which within a text becomes ";". Where they do not fit in `room`, the longest are cut: a reader
// finds all nine.
std::string closed_texts(const LogTexts& texts, std::size_t room) {
  std::array all = {texts.description,
                    texts.value,
                    texts.result,
                    texts.lower_limit,
                    texts.upper_limit,
                    texts.accredited,
                    texts.standard_uncertainty,
                    texts.expanded_uncertainty,
                    texts.coverage_factor};
  std::size_t length = 1;
  for (std::string& text : all) {
    std::replace(text.begin(), text.end(), ':', ';');
    length += text.size() + 1;
  }
  const auto shorter = [](const std::string& a, const std::string& b) { return a.size() < b.size(); };
  for (; length > room; --length) std::max_element(all.begin(), all.end(), shorter)->pop_back();
  std::string out = ":";
  for (const std::string& text : all) out += text + ":";
  return out;
}

// ---- Notes ----

char letter_of_note(int kind) {
  switch (kind) {
    case PendingNote::brace: return log_letter::brace;
    case PendingNote::rslt: return log_letter::rslt;
    default: return log_letter::comment;
  }
}

bool share_a_line(const PendingNote& a, const PendingNote& b) {
  return a.test_major == b.test_major && a.test_minor == b.test_minor &&
         (a.mask | b.mask) == (PendingNote::brace | PendingNote::rslt) && a.mask != b.mask;
}

// Takes the notes of these kinds out of the list.
std::vector<PendingNote> take_notes(RunState& run, int kinds) {
  std::vector<PendingNote>& notes = run.log.notes;
  const auto stays = [kinds](const PendingNote& note) { return (note.mask & kinds) == 0; };
  const auto taken = std::stable_partition(notes.begin(), notes.end(), stays);
  std::vector<PendingNote> out(std::make_move_iterator(taken), std::make_move_iterator(notes.end()));
  notes.erase(taken, notes.end());
  return out;
}

std::pair<int, int> calling_test(const RunState& run) {
  if (run.calls.empty()) return {0, 0};
  return {run.calls.back().test_major, run.calls.back().test_minor};
}

}  // namespace

bool log_open(RunState& run) {
  ResultLog& log = run.log;
  log.notes.clear();
  log.adjusted = -1;
  log.broken = false;
  log.path = work_file("rslt.tmp");
  log.file = std::ofstream(log.path, std::ios::binary | std::ios::trunc);
  if (log.file) return true;
  log.broken = true;
  return errp(4623, log.path);
}

void log_close(RunState& run) {
  // What was noted behind the last test is a result all the same.
  static_cast<void>(notes_write(run, PendingNote::brace | PendingNote::rslt | PendingNote::comment));
  run.log.file.close();
}

bool log_line(RunState& run, int test, int step, char letter, std::string_view text) {
  return write(run, {head(test, step, letter).append(text)});
}

bool log_note(RunState& run, int test, int step, char letter, std::string_view text) {
  return log_line(run, test, step, letter, std::string(number_columns, ' ').append(text));
}

char log_test_letter(RunState& run, const FscRecord& record) {
  if (is_memc(record)) {
    if (!run.accuracy.statement.has(AccStatement::met)) return log_letter::memc;
    return run.accuracy.statement.has(AccStatement::unit_known) ? log_letter::acc_unit : log_letter::acc;
  }
  if (record.code() == fsc::eval || record.code() == fsc::pice) return log_letter::evaluation;
  if (record.code() == fsc::dose)
    return has_program_percent(run, record) ? log_letter::program_number : log_letter::program_word;
  return (run.test.test_state & test_bit::go_no_go) != 0 ? log_letter::go_no_go : log_letter::instrument;
}

bool log_test(RunState& run, const FscRecord& record, const LogTexts& texts) {
  const auto [lower, upper] = limits(run.test);
  const char letter = log_test_letter(run, record);
  const std::string beginning = head(record.test_major(), record.test_minor(), letter);
  std::string line = beginning;
  line += padded(run.decision.line1, line1_width);
  line += padded(value_text(run, record), value_width);
  line += hexadecimal(lower) + hexadecimal(upper);
  // Behind an ACC with a unit of the table its prefix stands in the place of the digits.
  const int digits = letter == log_letter::acc_unit ? run.accuracy.statement.prefix : resolution(record);
  line += static_cast<char>('0' + digits);
  line += closed_texts(texts, log_line_limit - line.size());
  return write(run, {line, beginning + run.decision.line2});
}

bool log_enter(RunState& run, int tests, std::string_view procedure) {
  run.log.adjusted = -1;
  const auto [test, step] = calling_test(run);
  return log_line(run, test, step, log_letter::enter,
                  formatted("%*s%3d ENTER %s", number_columns, "", tests, procedure));
}

bool log_leave(RunState& run, std::string_view procedure) {
  run.log.adjusted = -1;
  const auto [test, step] = calling_test(run);
  return log_line(run, test, step, log_letter::leave,
                  formatted("%*s    LEAVE %s", number_columns, "", procedure));
}

bool log_adjust(RunState& run, int test, int step) {
  if (run.log.adjusted == test) return true;
  run.log.adjusted = test;
  ++run.pipeline.adjustments;
  return log_line(run, test, step, log_letter::adjust, formatted("%*sADJUST PERFORMED", number_columns, ""));
}

void note_add(RunState& run, int kind, int test, int step, std::string_view text) {
  do {
    const std::string_view piece = text.substr(0, PendingNote::text_limit);
    run.log.notes.push_back(
        {.mask = kind, .test_major = test, .test_minor = step, .text = std::string(piece)});
    text.remove_prefix(piece.size());
  } while (!text.empty());
}

bool notes_write(RunState& run, int kinds) {
  const std::vector<PendingNote> notes = take_notes(run, kinds);
  for (std::size_t i = 0; i < notes.size(); ++i) {
    const PendingNote& note = notes[i];
    std::string text = note.text;
    char letter = letter_of_note(note.mask);
    if (i + 1 < notes.size() && share_a_line(note, notes[i + 1])) {
      text += ' ' + notes[++i].text;
      letter = log_letter::rslt;
    }
    if (!log_note(run, note.test_major, note.test_minor, letter, text)) return false;
  }
  return true;
}

void notes_drop(RunState& run, int kinds) { (void)take_notes(run, kinds); }

}  // namespace orvane
