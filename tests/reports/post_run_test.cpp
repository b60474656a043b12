// Reports from their templates to the results folder, and the window behind a run.
#include "reports/post_run.h"

#include <gtest/gtest.h>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "messages/catalogue.h"
#include "platform/files.h"
#include "reports/export.h"
#include "reports/report.h"
#include "reports/report_actions.h"
#include "reports/result_directory.h"
#include "reports/saved_results.h"
#include "reports/saved_run.h"
#include "state/run_variables.h"
#include "support/desk.h"
#include "support/recording_printer.h"

namespace orvane::test {
namespace {

constexpr int macro_button = 1031;

std::string test_lines(int test, std::string_view verdict, std::string_view actual = "10.001mV") {
  std::string line = formatted(
      "%04d.001 I %3d           10mV           %-15s                -100     ppm  71 ", test, test, actual);
  line.resize(91, ' ');
  line += "10                  4023fae147ae147b40240a3d70a3d70a3::::::::::\n";
  return line + formatted("%04d.001 I         SYSTEM TOL:%-54s%s\n", test, "", verdict);
}

class PostRunTest : public EngineTest {
 protected:
  PostRunTest() {
    StartupConfig& config = startup_config();
    config = {};
    config.workdir = config.rsltdir = config.user_data_dir = folder.string();
    config.rslt_template = write("results.txt", "RPT_TYPE$: RPT_CODE$: SER_NUM$\n");
    config.rslt_page = write("page.txt", "HEAD\n");
    config.rslt_col_template =
        write("lines.txt",
              "RSLT_TYPE$(INSTR)\nTN$     TR$\nRSLT_TYPE$(SEPARATOR)\nRSLT_TYPE$(END_SUMMARY)\nsummed\n");
    config.cal_cert_template = write("certificate.txt", "CERTIFICATE SER_NUM$\n");
    config.rslt_fl_template = write("fl.txt", "BOTH SER_NUM$ DATE1$     DATE2$\n");
    config.rslt_page_fl_template = write("fl-page.txt", "FLHEAD\n");
    config.rslt_col_fl_template =
        write("fl-lines.txt", "RSLT_TYPE$(INSTR)\nTN$     SA1$ | SA2$ | TR1$ TR2$\nRSLT_TYPE$(SEPARATOR)\n");
    config.calhist_template = write("history.txt", "SER_NUM$;OVERALL_RESULT$\n");
    config.calhist_results = (folder / "history").string();
    use_user_settings(write("settings.ini", "[Page Margin]\npage=0\n"));
    begin_run("4711", "2026-11-23", "PASS");
    write("rsltsort.tmp", "0000.000 C           2 ENTER main\n" + test_lines(1, "PASS") +
                              test_lines(2, "FAIL") + "0000.000 L             LEAVE main\n");
    platform().printers = &printers;
  }
  ~PostRunTest() override {
    platform().printers = nullptr;
    startup_config() = {};
  }

  void begin_run(const char* serial, const char* date, const char* result) {
    run_entries_clear(run);
    for (const auto& [name, value] : {std::pair<const char*, const char*>{"SER_NUM$", serial},
                                      {"DATE$", date},
                                      {"TIME$", "10:00"},
                                      {"PROC_NAME$", "P"},
                                      {"OVERALL_RESULT$", result}})
      run_variable_set(run, name, value);
  }
  static void set(std::string_view key, int value) {
    ASSERT_TRUE(put_user_setting("Configuration", key, std::to_string(value)));
  }
  std::string file(const std::string& name) const { return contents((folder / name).string()); }
  std::string marks(const std::string& first, const std::string& head, const std::string& rest) const {
    return first + msg(4624) + "\n" + head + msg(4625) + "\n" + rest;
  }
  // The first line of the template for results and others.
  static std::string head(const std::string& type, int code) {
    std::string line = type + ":";
    line.resize(11, ' ');
    line += std::to_string(code) + ":";
    line.resize(22, ' ');
    return line + "4711\n";
  }
  void choose(const char* action, const char* report) {
    desk.replies.push_back({answer::ok, {}, 0, {{"Action", action}, {"Report", report}}});
  }

  RecordingPrinters printers;
};

TEST_F(PostRunTest, EveryKindOfReport) {
  const std::string lines = "  1     PASS\n  2     FAIL\n";
  const std::pair<int, std::string> cases[] = {
      {report_command::results, marks(head("RESULTS", 2), "HEAD\n", lines)},
      {report_command::summary, marks(head("SUMMARY", 3) + "summed\n", "", "")},
      {report_command::certificate, marks("CERTIFICATE 4711\n", "", "")},
      {report_command::as_found, marks(head("AS FOUND", 4), "HEAD\n", lines)},
      {report_command::as_left, marks(head("AS LEFT", 5), "HEAD\n", lines)}};
  const std::string out = (folder / "out").string(), log = (folder / "rsltsort.tmp").string();
  for (const auto& [command, text] : cases) {
    ASSERT_TRUE(report_set_kind(run, command));
    ASSERT_TRUE(report_build(run, log, out)) << desk.last_message();
    EXPECT_EQ(contents(out), text);
  }
  EXPECT_FALSE(report_set_kind(run, 10));
  EXPECT_EQ(desk.message_numbers().back(), 4615);
  startup_config().rslt_col_template.clear();
  ASSERT_TRUE(report_set_kind(run, report_command::summary));
  ASSERT_TRUE(report_build(run, log, out));
  EXPECT_NE(contents(out).find(msg(31245, "?")), std::string::npos);
}

TEST_F(PostRunTest, FaultsOfAReportHaveTheirNumbers) {
  using Text = std::string StartupConfig::*;
  struct Case {
    Text key;
    const char* value;
    int command;
    std::vector<int> numbers;
  };
  const Case cases[] = {
      {&StartupConfig::rslt_template, "", report_command::results, {4628}},
      {&StartupConfig::cal_cert_template, "", report_command::certificate, {4627}},
      {&StartupConfig::rslt_template, "/none", report_command::results, {4635}},
      {&StartupConfig::cal_cert_template, "/none", report_command::certificate, {4634}},
      {&StartupConfig::rslt_page, "", report_command::results, {4626}},
      {&StartupConfig::rslt_page, "/none", report_command::results, {4626}},
      {&StartupConfig::rslt_col_template, "/none", report_command::results, {4636, 4618}},
  };
  const std::string out = (folder / "out").string(), log = (folder / "rsltsort.tmp").string();
  for (const Case& c : cases) {
    const std::string kept = startup_config().*c.key;
    startup_config().*c.key = c.value;
    desk.shown.clear();
    ASSERT_TRUE(report_set_kind(run, c.command));
    EXPECT_FALSE(report_build(run, log, out));
    EXPECT_EQ(desk.message_numbers(), c.numbers);
    startup_config().*c.key = kept;
  }
  write("results.txt", "made\nLDIG$(0)\n");
  desk.shown.clear();
  ASSERT_TRUE(report_set_kind(run, report_command::results));
  EXPECT_FALSE(report_build(run, log, out));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4946, 4606}));
  EXPECT_EQ(contents(out), "made\n");  // what was made stays

  desk.shown.clear();
  write("results.txt", "x\n");
  EXPECT_FALSE(report_build(run, log, (folder / "no/such/folder").string()));
  EXPECT_EQ(desk.message_numbers().back(), 4696);
  EXPECT_FALSE(report_build(run, (folder / "nothing").string(), out));
  EXPECT_EQ(desk.message_numbers().back(), 4952);
}

TEST_F(PostRunTest, ASavedRunComesBackWhole) {
  run_variable_set(run, "NOTE$", "two\nlines = one");
  const std::string path = (folder / "saved").string();
  ASSERT_TRUE(saved_run_write(run, path));
  SavedRun saved;
  ASSERT_TRUE(saved_run_read(path, saved)) << desk.last_message();
  EXPECT_EQ(saved.log, file("rsltsort.tmp"));
  EXPECT_NE(std::find(saved.variables.begin(), saved.variables.end(),
                      std::pair<std::string, std::string>("NOTE$", "two lines = one")),
            saved.variables.end());
  begin_run("other", "2020-01-01", "FAIL");
  const std::string out = (folder / "out").string();
  ASSERT_TRUE(report_of_saved_run(run, path, out));
  EXPECT_TRUE(contents(out).starts_with(head("RESULTS", 2)));

  // Every piece that is missing is told, and nothing is taken from it.
  const std::string whole = contents(path);
  for (std::size_t cut = 0; cut + 1 < whole.size(); cut += 7) {
    desk.shown.clear();
    if (saved_run_parse(std::string_view(whole).substr(0, cut), "cut", saved)) {
      ADD_FAILURE() << cut;
    } else {
      EXPECT_EQ(desk.message_numbers(), std::vector<int>{31243}) << cut;
    }
  }
  for (const char* trailer :
       {"-1 -1 -1", "99999999 99999999 99999999", "1 2 3", "a b c", "300 200 100", "73 73"}) {
    const std::string damaged = whole.substr(0, whole.size() - 73) + formatted("%-72s\n", trailer);
    EXPECT_FALSE(saved_run_parse(damaged, "damaged", saved)) << trailer;
  }
}

TEST_F(PostRunTest, TwoRunsBesideEachOther) {
  const std::string found = (folder / "found").string(), left = (folder / "left").string();
  write("rsltsort.tmp",
        test_lines(1, "FAIL", "11mV") + test_lines(2, "PASS", "12mV") + test_lines(4, "PASS", "14mV"));
  ASSERT_TRUE(saved_run_write(run, found));
  begin_run("4711", "2026-11-24", "PASS");
  write("rsltsort.tmp",
        test_lines(1, "PASS", "21mV") + test_lines(3, "PASS", "23mV") + test_lines(4, "PASS", "24mV"));
  ASSERT_TRUE(saved_run_write(run, left));
  const std::string out = (folder / "out").string();
  ASSERT_TRUE(report_compare(run, found, left, out)) << desk.last_message();
  EXPECT_EQ(contents(out), marks("BOTH 4711     2026-11-23 2026-11-24\n", "FLHEAD\n",
                                 "  1     11mV | 21mV | FAIL PASS\n"
                                 "  2     12mV |      | PASS\n"
                                 "  3          | 23mV |      PASS\n"
                                 "  4     14mV | 24mV | PASS PASS\n"));
  startup_config().rslt_page_fl_template.clear();
  EXPECT_FALSE(report_compare(run, found, left, out));
  EXPECT_EQ(desk.message_numbers().back(), 4642);
}

TEST_F(PostRunTest, ExportsAndTheHistory) {
  const std::string text = "4711;PASS\n", history = startup_config().calhist_template;
  ASSERT_TRUE(export_summary(run));
  ASSERT_TRUE(export_summary(run));
  EXPECT_EQ(file("history"), text + text);

  run_variable_set(run, "EXPORT_RESULT_FN$", "NONE");
  ASSERT_TRUE(export_results(run, history));
  run_variable_set(run, "EXPORT_RESULT_FN$", "mine.txt");
  ASSERT_TRUE(export_results(run, history));
  EXPECT_EQ(file("mine.txt"), text);
  run_variable_set(run, "EXPORT_RESULT_FN$", "mine.txt");
  ASSERT_TRUE(export_results(run, history));
  EXPECT_EQ(file("mine.001"), text);
  run_variable_set(run, "EXPORT_RESULT_FN$", "");
  ASSERT_TRUE(export_results(run, history));
  const std::string own = std::filesystem::path(*run_variable(run, "EXPORT_RESULT_FN$")).filename().string();
  EXPECT_EQ(own.size(), 8U);
  EXPECT_TRUE(own.starts_with("MR"));

  struct Case {
    std::string name, text;
    int number;
  };
  write("faulty", "LDIG$(0)\n");
  std::filesystem::create_directory(folder / "taken");
  const Case cases[] = {{"x", "", 960},
                        {"x", "/none", 961},
                        {"a\nb", history, 962},
                        {"no/folder/x", history, 963},
                        {"x", (folder / "faulty").string(), 967}};
  for (const Case& c : cases) {
    run_variable_set(run, "EXPORT_RESULT_FN$", c.name);
    EXPECT_FALSE(export_results(run, c.text));
    EXPECT_EQ(desk.message_numbers().back(), c.number);
  }
  for (int i = 1; i <= 999; ++i) write(formatted("mine.%03d", i), "");
  run_variable_set(run, "EXPORT_RESULT_FN$", "mine.txt");
  EXPECT_FALSE(export_results(run, history));
  EXPECT_EQ(desk.message_numbers().back(), 965);
  startup_config().calhist_results = folder.string();
  EXPECT_FALSE(export_summary(run));
  EXPECT_EQ(desk.message_numbers().back(), 968);
  startup_config().calhist_results.clear();
  EXPECT_FALSE(export_summary(run));
  EXPECT_EQ(desk.message_numbers().back(), 31244);
}

// --- Behind a run ---

TEST_F(PostRunTest, NothingIsAskedWhereNothingIsConfigured) {
  EXPECT_TRUE(post_run(run));
  EXPECT_TRUE(desk.shown.empty());
  startup_config().export_results = 1;
  run_variable_set(run, "EXPORT_RESULT_FN$", "each.txt");
  EXPECT_TRUE(post_run(run));
  EXPECT_EQ(file("each.txt"), "4711;PASS\n");
  startup_config().calhist_template.clear();
  EXPECT_FALSE(post_run(run));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{960});
  EXPECT_FALSE(file_exists((folder / "rslt.dir").string()));
}

TEST_F(PostRunTest, TheMacroOfTheResultRunsWithoutAWindow) {
  set("pass_save",
      report_bit::results | report_bit::certificate | report_bit::summary | report_bit::sdf_summary);
  set("pass_print", report_bit::results);
  set("fail_save", report_bit::ask_as_found);
  EXPECT_TRUE(post_run(run)) << desk.last_message();
  std::vector<SavedResult> saved;
  ASSERT_TRUE(saved_results(saved));
  std::string kinds;
  for (const SavedResult& one : saved) kinds += one.kind;
  EXPECT_EQ(kinds, "RSC");
  EXPECT_EQ(file("history"), "4711;PASS\n");
  EXPECT_EQ(printers.last.title, msg(31287));
  EXPECT_EQ(printers.uses, std::vector<PrintUse>{PrintUse::results});
  EXPECT_TRUE(desk.of_kind("form").empty());
  EXPECT_EQ(*run_variable(run, "RESULTS_FILE_NAME$"), (folder / "3.res").string());

  // A run that failed, or has no verdict: the question is asked once.
  for (const auto& [result, reply, kind] : {std::tuple{"FAIL", answer::yes, 'F'}, {"", answer::no, 'L'}}) {
    begin_run(result, "2026-11-23", result);
    desk.shown.clear();
    desk.reply(reply);
    EXPECT_TRUE(post_run(run));
    ASSERT_EQ(desk.of_kind("lines").size(), 1U);
    EXPECT_EQ(desk.of_kind("lines")[0].lines, std::vector<std::string>{"Is this an As Found Result?"});
    ASSERT_TRUE(saved_results(saved));
    EXPECT_EQ(saved.back().kind, kind);
  }
}

TEST_F(PostRunTest, TheWindowAsksAgainWhileNothingIsSaved) {
  set("postmenu", post_menu::save | post_menu::view);
  desk.reply(answer::terminate);  // Done
  desk.reply(answer::no);         // not without saving
  choose("Save", "Certificate");
  desk.reply(answer::terminate);
  EXPECT_TRUE(post_run(run));
  EXPECT_TRUE(desk.replies.empty());
  EXPECT_EQ(file("1.res"), marks("CERTIFICATE 4711\n", "", ""));
  const auto question = desk.of_kind("lines").front();
  EXPECT_EQ(question.title, "Results Not Saved");
  EXPECT_EQ(question.lines, std::vector<std::string>{"Do you really want to exit with out saving results?"});
  const auto forms = desk.of_kind("form");
  ASSERT_EQ(forms.size(), 3U);
  EXPECT_EQ(forms[0].form.fields[0].choices, (std::vector<std::string>{"Save", "View"}));
  EXPECT_TRUE(forms[0].form.buttons[0].is_default);
  EXPECT_TRUE(forms[2].form.buttons.back().is_default);  // Done, once something is saved
}

TEST_F(PostRunTest, WhatOnlySaveTakesGoesBackToTheResults) {
  set("postmenu", 15);
  desk.reply(answer::terminate);
  desk.reply(answer::yes);
  EXPECT_TRUE(post_run(run));
  FormWindow form = desk.of_kind("form").front().form;
  form.fields[1].text = "As found";
  form.changed(form);
  EXPECT_EQ(form.fields[1].text, "As found");
  EXPECT_EQ(form.fields[1].choices.size(), 6U);
  form.fields[0].text = "Print";
  form.changed(form);
  EXPECT_EQ(form.fields[1].text, "Results");
  EXPECT_EQ(form.fields[1].choices.size(), 3U);
  form.fields[1].text = "SDF summary";
  EXPECT_NE(form.fault(form.fields[1]), "");
}

TEST_F(PostRunTest, TheButtonMacroAloneOpensTheWindow) {
  set("macro_save", report_bit::results);
  desk.reply(macro_button);
  desk.reply(answer::terminate);
  EXPECT_TRUE(post_run(run));
  EXPECT_TRUE(file_exists((folder / "1.res").string()));
  EXPECT_EQ(desk.of_kind("form").front().form.buttons.size(), 2U);
}

// A script that takes the default of every window comes to an end, also where saving fails.
TEST_F(PostRunTest, AScriptComesToAnEnd) {
  desk.watched = false;
  set("postmenu", post_menu::save);
  EXPECT_TRUE(post_run(run));
  startup_config().rsltdir.clear();
  EXPECT_FALSE(post_run(run));
  EXPECT_EQ(desk.message_numbers().back(), 31281);
}

TEST_F(PostRunTest, WithoutAPrinterTheReportIsNotLost) {
  printers.none = true;
  set("postmenu", 15);
  choose("Print", "Results");
  choose("Save", "Results");
  desk.reply(answer::terminate);
  EXPECT_TRUE(post_run(run));
  EXPECT_TRUE(file_exists((folder / "1.res").string()));
  platform().printers = nullptr;
  EXPECT_FALSE(report_action(run, report_command::results, report_do::print));
  EXPECT_EQ(desk.message_numbers().back(), 4856);
}

TEST_F(PostRunTest, SaveAsAsksBeforeItReplaces) {
  const std::string target = write("mine.txt", "old");
  desk.reply(answer::ok, target);
  desk.reply(answer::no);
  desk.reply(answer::terminate);
  EXPECT_FALSE(report_action(run, report_command::certificate, report_do::save_as));
  EXPECT_EQ(file("mine.txt"), "old");
  desk.reply(answer::ok, target);
  desk.reply(answer::yes);
  EXPECT_TRUE(report_action(run, report_command::certificate, report_do::save_as));
  EXPECT_EQ(file("mine.txt"), "CERTIFICATE 4711\n");  // without the marks
  desk.reply(answer::ok, (folder / "mine.PDF").string());
  EXPECT_FALSE(report_action(run, report_command::certificate, report_do::save_as));
  EXPECT_EQ(desk.message_numbers().back(), 31292);  // these printers make no pages
}

TEST_F(PostRunTest, SavedResultsAreOpenedAndDeleted) {
  ASSERT_TRUE(report_save(run, report_command::results, save_kind::report));
  ASSERT_TRUE(report_save(run, report_command::as_found, report_command::as_found));
  desk.shown.clear();
  desk.reply(answer::ok, {}, 0);  // the newest: the run
  desk.reply(answer::ok);         // the viewer
  desk.reply(answer::terminate);
  EXPECT_TRUE(open_saved_results(run));
  const auto list = desk.of_kind("choose").front();
  ASSERT_EQ(list.lines.size(), 2U);
  EXPECT_EQ(list.lines[0], "2\tAs found\t2026-11-23 10:00\t\t4711\tP");
  EXPECT_EQ(desk.of_kind("lines").front().lines.front() + "\n", head("RESULTS", 2));
  desk.reply(answer::ok, {}, 1);
  desk.reply(answer::yes);
  desk.reply(answer::terminate);
  EXPECT_TRUE(delete_saved_results());
  EXPECT_FALSE(file_exists((folder / "1.res").string()));
  EXPECT_TRUE(file_exists((folder / "2.raw").string()));
}

TEST_F(PostRunTest, WithADatabaseTheWindowMayBeLeftOut) {
  for (const auto& [menu, view, outcome] :
       std::vector<std::tuple<int, int, PostOutcome>>{{0, 0, PostOutcome::save},
                                                      {0x2, 0, PostOutcome::ask},
                                                      {0x10, 0, PostOutcome::ask},
                                                      {0, 4, PostOutcome::ask},
                                                      {0x80000, 0, PostOutcome::save},
                                                      {0xA0020, 0, PostOutcome::save},
                                                      {0x20, 0, PostOutcome::discard},
                                                      {0x20000, 0, PostOutcome::discard_all}})
    EXPECT_EQ(post_outcome_without_window(menu, {.view = view}), outcome) << menu;
}

}  // namespace
}  // namespace orvane::test
