#include "reports/report.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "reports/export.h"
#include "reports/saved_run.h"
#include "state/run_variables.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

std::string log_text(std::string_view number, char letter, const std::string& text) {
  return std::string(number) + ' ' + letter + ' ' + text + '\n';
}

// Both lines of a comparison of a nominal with what was applied.
std::string test(std::string_view number, std::string_view actual, std::string_view verdict) {
  std::string first(80, ' '), second(80, ' ');
  first.replace(14, 3, "10V").replace(29, actual.size(), actual);
  second.replace(73, verdict.size(), verdict);
  return log_text(number, 'M',
                  first + std::string(20, ' ') + "4023fae147ae147b4024051eb851eb853:D:1:2:3:4: :::" + ":") +
         log_text(number, 'M', second);
}

class ReportTest : public EngineTest {
 protected:
  ReportTest() : before_(startup_config()) {
    config.workdir = folder.string();
    config.rslt_template = write("first.txt", "RPT_TYPE$  RPT_CODE$ of SER_NUM$\n");
    config.cal_cert_template = write("cert.txt", "certificate of SER_NUM$\n");
    config.rslt_page = write("page.txt", "heading\n");
    config.rslt_col_template =
        write("lines.txt",
              "RSLT_TYPE$(INSTR)\nTN$     SA$   TR$\nRSLT_TYPE$(REMARK)\n* RM$\nRSLT_TYPE$(SEPARATOR)\n--\n"
              "RSLT_TYPE$(END)\nend\nRSLT_TYPE$(END_SUMMARY)\nsummary NUM_FAILED$\n");
    write("rsltsort.tmp", log);
    run_variable_set(run, "SER_NUM$", "S1");
    run_variable_set(run, "NUM_FAILED$", "0");
  }
  ~ReportTest() override { startup_config() = before_; }

  std::string path(const std::string& name) const { return (folder / name).string(); }
  // The report of a command, or nothing after a fault.
  std::string report(int command) {
    desk.shown.clear();
    if (!report_set_kind(run, command) || !report_build(run, path("rsltsort.tmp"), path("out"))) return {};
    return contents(path("out"));
  }
  int fault(int command) {
    EXPECT_EQ(report(command), "");
    return desk.shown.empty() ? 0 : desk.shown.back().number;
  }

  StartupConfig& config = startup_config();
  const std::string marks[2] = {msg(4624) + "\n", msg(4625) + "\n"};
  const std::string log =
      log_text("0000.000", 'C', "          2 ENTER MAIN") + test("0001.001", "10.1V", "PASS") +
      log_text("0001.001", 'K', "        well") + log_text("0002.001", 'C', "          1 ENTER SUB") +
      test("0001.002", "10.2V", "FAIL") + log_text("0002.001", 'L', "            LEAVE SUB") +
      test("0003.001", "10.3V", "PASS") + log_text("0000.000", 'L', "            LEAVE MAIN");

 private:
  StartupConfig before_;
};

TEST_F(ReportTest, EachKindHasItsParts) {
  const std::string lines =
      "  1     10.1V PASS\n* well\n--\n  2-1   10.2V FAIL\n--\n  3     10.3V PASS\nend\n";
  EXPECT_EQ(report(8), "RESULTS    2         of S1\n" + marks[0] + "heading\n" + marks[1] + lines);
  EXPECT_EQ(report(121), "AS FOUND   4         of S1\n" + marks[0] + "heading\n" + marks[1] + lines);
  EXPECT_EQ(report(122), "AS LEFT    5         of S1\n" + marks[0] + "heading\n" + marks[1] + lines);
  EXPECT_EQ(report(107), "certificate of S1\n" + marks[0] + marks[1]);
  EXPECT_EQ(report(9), "SUMMARY    3         of S1\nsummary 0\n" + marks[0] + marks[1]);
  EXPECT_EQ(fault(10), 4615);
  // Without a template of the lines: the printed ones, with numbers that tell where a test stands.
  config.rslt_col_template.clear();
  const std::string plain = report(8);
  EXPECT_NE(plain.find("\n  2-1         10V            10.2V\n"), std::string::npos) << plain;
  EXPECT_NE(report(9).find(msg(31245, "0")), std::string::npos);
}

TEST_F(ReportTest, EachFaultHasItsNumberAndLeavesWhatWasMade) {
  const StartupConfig sound = config;
  const std::string missing = path("none.txt");
  const struct {
    std::string StartupConfig::*key;
    std::string value;
    int command, number;
  } cases[] = {{&StartupConfig::rslt_template, "", 8, 4628},
               {&StartupConfig::rslt_template, missing, 8, 4635},
               {&StartupConfig::cal_cert_template, "", 107, 4627},
               {&StartupConfig::cal_cert_template, missing, 107, 4634},
               {&StartupConfig::rslt_page, "", 8, 4626},
               {&StartupConfig::rslt_page, missing, 8, 4626},
               {&StartupConfig::rslt_col_template, missing, 8, 4618},
               {&StartupConfig::rslt_col_template, missing, 9, 4636},
               {&StartupConfig::rslt_template, write("bad.txt", "made\nLDIG$(0)\n"), 8, 4606},
               {&StartupConfig::rslt_col_template,
                write("no-sep.txt", "RSLT_TYPE$(INSTR)\nx\nRSLT_TYPE$(REMARK)\n"), 8, 4618}};
  for (const auto& c : cases) {
    config = sound;
    config.*c.key = c.value;
    EXPECT_EQ(fault(c.command), c.number) << c.value;
  }
  EXPECT_NE(contents(path("out")).find("heading"), std::string::npos);
  config = sound;
  // A log that was cut off or damaged gives no report that merely lacks a test.
  for (const std::string& damaged :
       {log.substr(0, log.find("0001.001 M", 60)), "nonsense\n" + log, log_text("0001.001", 'x', "") + log}) {
    write("rsltsort.tmp", damaged);
    EXPECT_EQ(fault(8), 4618) << damaged.substr(0, 20);
  }
  // A report that cannot be written leaves the one that stands there.
  write("rsltsort.tmp", log);
  EXPECT_NE(report(8), "");
  fs::create_directory(folder / "out.new");
  const std::string before = contents(path("out"));
  EXPECT_FALSE(report_build(run, path("rsltsort.tmp"), path("out")));
  EXPECT_EQ(desk.shown.back().number, 4696);
  EXPECT_EQ(contents(path("out")), before);
}

TEST_F(ReportTest, ASavedRunComesBackWholeOrNotAtAll) {
  run_variable_set(run, "REMARKS$", "two\nlines=$");
  ASSERT_TRUE(saved_run_write(run, path("run.raw")));
  const std::string whole = contents(path("run.raw"));
  SavedRun saved;
  ASSERT_TRUE(saved_run_read(path("run.raw"), saved));
  EXPECT_EQ(saved.log, log);
  const auto has = [&](const std::string& name, const std::string& value) {
    return std::find(saved.variables.begin(), saved.variables.end(), std::pair(name, value)) !=
           saved.variables.end();
  };
  EXPECT_TRUE(has("SER_NUM$", "S1"));
  EXPECT_TRUE(has("REMARKS$", "two lines=$"));
  EXPECT_EQ(whole.substr(whole.size() - 73).find_first_not_of("0123456789 \n"), std::string::npos);
  for (std::size_t size = 0; size + 1 < whole.size(); size += 7)
    EXPECT_FALSE(saved_run_parse(whole.substr(0, size), "cut", saved)) << size;
  for (const std::string_view trailer : {"       0        0        0", "      99       98       97", "1 2",
                                         "99999999 99999999 99999999", "-1 -1 -1", "a b c"}) {
    std::string other = whole.substr(0, whole.size() - 73) + std::string(trailer);
    other.resize(whole.size() - 1, ' ');
    desk.shown.clear();
    EXPECT_FALSE(saved_run_parse(other + "\n", "damaged", saved)) << trailer;
    EXPECT_EQ(desk.message_numbers(), std::vector{31243}) << trailer;
  }
  EXPECT_FALSE(saved_run_read(path("none.raw"), saved));
  fs::remove(path("rsltsort.tmp"));
  EXPECT_FALSE(saved_run_write(run, path("run.raw")));
  EXPECT_EQ(contents(path("run.raw")), whole);
}

TEST_F(ReportTest, TwoRunsBesideEachOther) {
  config.rslt_fl_template = write("fl.txt", "SER_NUM1$ SER_NUM2$ SER_NUM$ RPT_TYPE$\n");
  config.rslt_page_fl_template = write("page-fl.txt", "both\n");
  config.rslt_col_fl_template =
      write("lines-fl.txt",
            "RSLT_TYPE$(INSTR)\nTN$     SA1$  | SA2$  | TR1$ TR2$\nRSLT_TYPE$(REMARK)\n* RM$\n"
            "RSLT_TYPE$(SEPARATOR)\n");
  ASSERT_TRUE(saved_run_write(run, path("found.raw")));
  write("rsltsort.tmp", log_text("0000.000", 'C', "          2 ENTER MAIN") +
                            test("0001.001", "9.9V", "PASS") + test("0004.001", "9.8V", "PASS"));
  run_variable_set(run, "SER_NUM$", "S2");
  ASSERT_TRUE(saved_run_write(run, path("left.raw")));
  run_variable_set(run, "SER_NUM$", "in hand");
  ASSERT_TRUE(report_compare(run, path("found.raw"), path("left.raw"), path("rslt.raw")))
      << desk.last_message();
  EXPECT_EQ(contents(path("rslt.raw")), "S1        S2        S2       RESULTS\n" + marks[0] + "both\n" +
                                            marks[1] +
                                            "  1     10.1V | 9.9V  | PASS PASS\n"
                                            "* well\n"
                                            "  2-1   10.2V |       | FAIL\n"
                                            "  3     10.3V |       | PASS\n"
                                            "  4           | 9.8V  |      PASS\n");
  EXPECT_EQ(report_kind(run), ReportKind::results);
  // The run in hand may still be saved itself.
  ASSERT_NE(run_variable(run, "SER_NUM$"), nullptr);
  EXPECT_EQ(*run_variable(run, "SER_NUM$"), "in hand");
  EXPECT_EQ(run_variable(run, "SER_NUM1$"), nullptr);
  config.rslt_col_fl_template.clear();
  EXPECT_FALSE(report_compare(run, path("found.raw"), path("left.raw"), path("rslt.raw")));
  EXPECT_EQ(desk.shown.back().number, 4642);
}

TEST_F(ReportTest, AnExportNeverReplacesAFile) {
  config.user_data_dir.clear();
  const std::string form = write("export.txt", "SER_NUM$;EXPORT_RESULT_FN$\n");
  run_variable_set(run, "EXPORT_RESULT_FN$", "NONE");
  EXPECT_TRUE(export_results(run, form));
  for (const char* name : {"data", "data.001", "data.002"}) {
    run_variable_set(run, "EXPORT_RESULT_FN$", "data");
    ASSERT_TRUE(export_results(run, form)) << desk.last_message();
    EXPECT_EQ(contents(path(name)), "S1;data\n");
    EXPECT_EQ(*run_variable(run, "EXPORT_RESULT_FN$"), path(name));
  }
  run_variable_set(run, "EXPORT_RESULT_FN$", "");
  ASSERT_TRUE(export_results(run, form));
  const std::string own = fs::path(*run_variable(run, "EXPORT_RESULT_FN$")).filename().string();
  EXPECT_EQ(own.size(), 8U);
  EXPECT_EQ(own.substr(0, 2), "MR");
  const auto fails = [&](const std::string& name, const std::string& file) {
    run_variable_set(run, "EXPORT_RESULT_FN$", name);
    desk.shown.clear();
    EXPECT_FALSE(export_results(run, file));
    return desk.shown.back().number;
  };
  EXPECT_EQ(fails("x", ""), 960);
  EXPECT_EQ(fails("x", path("none.txt")), 961);
  EXPECT_EQ(fails("a\nb", form), 962);
  EXPECT_EQ(fails("none/x", form), 963);
  EXPECT_EQ(fails("x", write("bad.txt", "LDIG$(0)")), 967);
  for (int i = 1; i <= 999; ++i) write(formatted("data.%03d", i), "");
  EXPECT_EQ(fails("data", form), 965);
  // The summary goes to the end of its file.
  config.calhist_template = form;
  EXPECT_FALSE(export_summary(run));
  config.calhist_results = write("history.txt", "before\n");
  EXPECT_TRUE(export_summary(run));
  EXPECT_EQ(contents(path("history.txt")), "before\nS1;data\n");
}

}  // namespace
}  // namespace orvane::test
