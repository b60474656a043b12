// What must never happen to a report: a test missing, a value lost or out of its line, a file half written, the run in
// hand forgotten.
#include <gtest/gtest.h>

#include <filesystem>

#include "config/startup_config.h"
#include "reports/column_run.h"
#include "reports/report.h"
#include "reports/saved_run.h"
#include "reports/template_engine.h"
#include "state/run_variables.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

// Both lines of a comparison with 10 V.
std::string test(const std::string& number, const std::string& actual) {
  std::string first(80, ' '), second(80, ' ');
  first.replace(14, 3, "10V").replace(29, actual.size(), actual);
  second.replace(73, 4, "PASS");
  return number + " M " + first + std::string(20, ' ') +
         "4023fae147ae147b4024051eb851eb853:D:1:2:3:4: ::::\n" + number + " M " + second + "\n";
}

class ReportFaultsTest : public EngineTest {
 protected:
  ReportFaultsTest() : before_(startup_config()) {
    StartupConfig& config = startup_config();
    config.workdir = folder.string();
    config.rslt_template = config.rslt_fl_template = write("first.txt", "of SER_NUM$\n");
    config.rslt_page = config.rslt_page_fl_template = write("page.txt", "heading\n");
    config.rslt_col_template = config.rslt_col_fl_template =
        write("lines.txt", "RSLT_TYPE$(INSTR)\nTN$     SA1$   SA2$\nRSLT_TYPE$(SEPARATOR)\n");
    run_variable_set(run, "SER_NUM$", "S1");
  }
  ~ReportFaultsTest() override { startup_config() = before_; }

  std::string path(const std::string& name) const { return (folder / name).string(); }
  std::string made(std::string_view text) {
    const auto file = template_open(write("t.txt", text));
    std::string out;
    if (file == nullptr || !template_run(run, *file, Section::top, false, state, source, out))
      out += "(fault)";
    return out;
  }

  TemplateState state;
  ReportSource source;

 private:
  StartupConfig before_;
};

TEST_F(ReportFaultsTest, NoValueIsLostOrBeginsALine) {
  run_variable_set(run, "LONG$", std::string(300, 'x'));
  EXPECT_EQ(made("LONG$ y\n"), std::string(256, 'x') + "\n" + std::string(44, 'x') + "y\n");
  run_variable_set(run, "BROKEN$", "a\r\nb\f");
  EXPECT_EQ(made("BROKEN$|\n"), "a  b |\n");
  run_variable_set(run, "DAY$", "2026-11-23");
  EXPECT_EQ(made("SPLIT$(DAY$, \\\n  Y$, \"-\", \\\r\n M$,\"-\",D$)\nD$.M$.Y$\n"), "23.11.2026\n");
  source.standards[0].resize(1);
  source.standards[0][0].text[0] = "METER";
  EXPECT_EQ(made("STD$(1)SUBST$(T_Instrument_Name$,\"ET\",\"o\")T_Instrument_Name$\n"), "MoER\n");
  startup_config().trace_template = write("each.txt", "- T_Instrument_Name$\n");
  EXPECT_EQ(made("head TRACE$() tail\n"), "head\n- METER\n              tail\n");
}

TEST_F(ReportFaultsTest, AFaultNamesTemplateAndLine) {
  for (const std::string_view text :
       {"# head\nfine\nLDIG$(0)\n", "\\\n\nSUBST$(\n", "a\r\nb\r\nTRACE1$()\n"}) {
    EXPECT_NE(made(text).find("(fault)"), std::string::npos);
    EXPECT_NE(desk.last_message().find("t.txt:3: "), std::string::npos) << desk.last_message();
  }
}

TEST_F(ReportFaultsTest, ADamagedLogGivesNoReportThatLacksATest) {
  const std::string whole = test("0001.001", "10.1V");
  const std::string second_of_another = test("0002.001", "10.2V");
  const std::size_t half = whole.find('\n') + 1;
  const struct {
    std::string log;
    int number;
  } cases[] = {{whole.substr(0, half), 4623},
               {"nonsense\n" + whole, 31246},
               {whole + "0001.001 x text\n", 31246},
               {whole.substr(0, half) + second_of_another, 31246},
               {whole.substr(0, half) + "0001.001 K         note\n", 31246}};
  for (const auto& c : cases) {
    std::string out;
    EXPECT_FALSE(column_run(run, c.log, startup_config().rslt_col_template, state, source, out)) << c.log;
    EXPECT_EQ(desk.message_numbers().back(), c.number) << c.log;
  }
  std::string out;
  EXPECT_TRUE(column_run(run, "\n" + whole + "0001.001 c \n", startup_config().rslt_col_template, state,
                         source, out));
}

TEST_F(ReportFaultsTest, AFileThatCannotBeReplacedStays) {
  write("rsltsort.tmp", test("0001.001", "10.1V"));
  ASSERT_TRUE(report_set_kind(run, 8) && report_build(run, path("rsltsort.tmp"), path("out")));
  ASSERT_TRUE(saved_run_write(run, path("run.raw")));
  const std::string report = contents(path("out")), saved = contents(path("run.raw"));
  for (const char* name : {"out.new", "run.raw.new"}) std::filesystem::create_directory(folder / name);
  EXPECT_FALSE(report_build(run, path("rsltsort.tmp"), path("out")));
  EXPECT_EQ(desk.message_numbers().back(), 4696);
  EXPECT_FALSE(saved_run_write(run, path("run.raw")));
  EXPECT_EQ(contents(path("out")), report);
  EXPECT_EQ(contents(path("run.raw")), saved);
}

TEST_F(ReportFaultsTest, TheRunInHandSurvivesAReportOfSavedRuns) {
  write("rsltsort.tmp", test("0001.001", "10.1V"));
  ASSERT_TRUE(saved_run_write(run, path("found.raw")));
  run_variable_set(run, "SER_NUM$", "in hand");
  run_variable_set(run, "OWN$", "own");
  ASSERT_TRUE(report_compare(run, path("found.raw"), path("found.raw"), path("rslt.raw")))
      << desk.last_message();
  EXPECT_NE(contents(path("rslt.raw")).find("of S1\n"), std::string::npos);
  ASSERT_TRUE(report_of_saved_run(run, path("found.raw"), path("out")));
  EXPECT_NE(contents(path("out")).find("of S1\n"), std::string::npos);
  for (const auto& [name, value] : {std::pair("SER_NUM$", "in hand"), {"OWN$", "own"}}) {
    ASSERT_NE(run_variable(run, name), nullptr);
    EXPECT_EQ(*run_variable(run, name), value);
  }
  EXPECT_EQ(run_variable(run, "SER_NUM1$"), nullptr);
}

}  // namespace
}  // namespace orvane::test
