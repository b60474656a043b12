// Hostile texts for the operator's statements: what a program leaves in its data file, commands, EVAL texts, the
// bracket language, settings, and the answers of a script.
#include <cstdlib>
#include <string>

#include "procedure/operator/data_file.h"
#include "procedure/operator/judgement.h"
#include "procedure/operator/lines.h"
#include "procedure/operator/programs.h"
#include "procedure/operator/statements.h"
#include "procedure/operator/uut_settings.h"
#include "text/expand.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

// What can be read is read back from what is written of it.
void data_file(const std::string& text) {
  ProgramData data;
  int line = 0;
  if (!read_program_data(text, data, line)) return;
  require(data.mem2.size() <= RegisterFile::mem2_limit && data.status >= 0 &&
          data.status <= program_status::number);
  ProgramData back;
  require(read_program_data(write_program_data(data), back, line));
  require(back.mem2 == data.mem2 && back.text == data.text && back.status == data.status);
}

void command(const std::string& text) {
  std::vector<std::string> words;
  std::size_t size = 0;
  if (command_words(text, words)) {
    for (const std::string& word : words) size += word.size();
  }
  require(size <= text.size());
}

void evaluation(const std::string& text) {
  const EvalText parts = eval_text(text);
  require(parts.expression.size() + parts.shown.size() <= text.size());
  require(parts.mode != EvalMode::ask || parts.expression.empty());
}

void brackets(const std::string& text) {
  RunState& run = run_state();
  FscRecord record = fsc_record_new();
  record.set(field::code, text.size() % 2 == 0 ? fsc::disp : fsc::ieee);
  std::string out;
  bool goes_on = false;
  if (expand_line(run, record, text, out, goes_on)) {
    for (const std::string& line : wrap_lines(out)) require(line.size() <= operator_line_limit);
  }
  require(run.draw.x >= 0 && run.draw.x <= 99 && run.draw.y >= 0 && run.draw.y <= 99);
  run.log.notes.clear();
}

void setting(const std::string& text) {
  RunState& run = run_state();
  const std::size_t before = run.uut_settings.size();
  (void)apply_setting(run, text);
  require(run.uut_settings.size() <= before + 1);
  if (before > 20) run.uut_settings.clear();
  (void)wait_time(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  switch (data[0] % 5) {
    case 0: data_file(text); break;
    case 1: command(text); break;
    case 2: evaluation(text); break;
    case 3: brackets(text); break;
    default: setting(text); break;
  }
  return 0;
}
