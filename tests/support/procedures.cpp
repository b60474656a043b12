#include "support/procedures.h"

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "messages/catalogue.h"
#include "procedure/file/compile.h"
#include "procedure/file/load.h"
#include "procedure/file/memory.h"
#include "procedure/file/proc_dir.h"
#include "procedure/pipeline/engine.h"
#include "procedure/pipeline/run_test.h"

namespace orvane::test {

RunTest::RunTest() {
  startup_config() = StartupConfig();
  StartupConfig& config = startup_config();
  config.procdir = folder.string();
  config.workdir = folder.string();
  config.oot_lim = 200;
  config.rt_demo_prompt = 0;
  config.database = 0;
  use_user_settings((folder / "settings.ini").string());
  engine_install();
  free_all_procedures();
  run.demo_mode = true;
}

std::string header(const std::string& name, const std::string& configuration) {
  return "INSTRUMENT:            " + name +
         "\n"
         "DATE:                  2026-11-22\n"
         "AUTHOR:                Tests\n"
         "REVISION:              1.0\n"
         "ADJUSTMENT THRESHOLD:  70%\n"
         "NUMBER OF TESTS:       1\n"
         "NUMBER OF LINES:       1\n"
         "CONFIGURATION:" +
         (configuration.empty() ? "" : "         " + configuration) +
         "\n"
         "==============================================================================\n"
         " STEP    FSC    RANGE NOMINAL        TOLERANCE     MOD1        MOD2  3  4  CON\n";
}

std::string source_line(int test, int step, std::string_view fsc, std::string_view text) {
  std::string out = formatted("%3d.%03d", test, step);
  out.resize(9, ' ');
  out += fsc;
  out.resize(22, ' ');
  return out + std::string(text);
}

void RunTest::source(const std::string& text) {
  Procedure procedure;
  std::vector<CompileFault> faults;
  const bool compiled = compile_procedure(text, procedure, faults);
  for (const CompileFault& fault : faults)
    ADD_FAILURE() << "source line " << fault.line << ", column " << fault.column << ": " << fault.reason;
  if (!compiled) return;
  std::vector<PdAddition> additions(1);
  additions[0].name = procedure.name;
  const std::string directory = folder.string();
  ASSERT_TRUE(pd_choose_file_names(directory, additions));
  ASSERT_TRUE(write_procedure(procedure, (folder / additions[0].file_name).string()));
  ASSERT_TRUE(pd_add(directory, additions)) << desk.last_message();
}

void RunTest::procedure(const std::string& name, const std::vector<std::string>& lines) {
  std::string text = header(name);
  int step = 0;
  for (const std::string& one : lines) {
    const std::size_t blank = std::min(one.find(' '), one.size());
    const std::string_view rest = std::string_view(one).substr(std::min(blank + 1, one.size()));
    text += line(1, ++step, one.substr(0, blank), rest) + "\n";
  }
  source(text);
}

int RunTest::go(const std::string& name) {
  const int result = run_test(run, name);
  closing_note = 0;
  std::erase_if(desk.shown, [this](const Shown& one) {
    const bool is_note = one.number == 5019 || one.number == 5020;
    if (is_note) closing_note = one.number;
    return is_note;
  });
  return result;
}

}  // namespace orvane::test
