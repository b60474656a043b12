// What whole runs leave: the fields of each test, the sorted log, the measurement file.
#include <cstdlib>
#include <filesystem>

#include "config/startup_config.h"
#include "evaluation/result_store.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/run_test.h"
#include "results/result_fields.h"
#include "results/result_list.h"
#include "state/run_variables.h"
#include "support/procedures.h"

// The C library keeps the parts of LOCPATH for the life of the process.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {  // NOLINT
  return "leak:__argz_add_sep\n";
}

namespace orvane {
namespace {

using F = ResultField;

class RunResults : public test::RunTest {
 protected:
  // Statements with their texts from column 10 on, in the numbering of test 1; no window opens.
  void run_lines(const std::vector<std::string>& body) {
    const std::string name = "P" + std::to_string(++procedures_);
    std::string text = test::header(name) + columns(1, "ASK-", {{66, "F"}}) + "\n";
    int step = 1;
    for (const std::string& one : body) text += formatted("%3d.%03d  ", 1, ++step) + one + "\n";
    desk.shown.clear();
    source(text);
    EXPECT_EQ(go(name), run_result::finished) << desk.last_message();
  }
  static std::string columns(int step, std::string_view statement,
                             std::initializer_list<std::pair<std::size_t, std::string_view>> fields) {
    std::string out = formatted("%3d.%03d  ", 1, step) + std::string(statement);
    for (const auto& [column, field] : fields) {
      out.resize(column, ' ');
      out += field;
    }
    return out;
  }
  static std::string memc(std::string_view range, std::string_view nominal, std::string_view tolerance,
                          std::string_view mod1 = "") {
    return columns(1, "MEMC", {{16, range}, {22, nominal}, {37, tolerance}, {51, mod1}}).substr(9);
  }
  static std::string text(std::string_view statement, std::string_view words) {
    return columns(1, statement, {{22, words}}).substr(9);
  }
  std::string field(F which) const { return quantity_text(*run.results.records.back(), which); }
  std::string word(F which) const { return r_text(*run.results.records.back(), which); }
  std::string file(const std::string& name) const { return contents((folder / name).string()); }

  int procedures_ = 0;
};

TEST_F(RunResults, EveryFieldOfAComparison) {
  run_lines({text("MATH", "MEM = 10.0123456"), memc("20", "10.00mV", "1%", "1.0kH")});
  const std::pair<F, const char*> quantities[] = {{F::nominal, "10.00 mV"},
                                                  {F::cardinal_point, "10.00 mV"},
                                                  {F::uut_indicated, "10.00 mV"},
                                                  {F::system_actual, "10.0123 mV"},
                                                  {F::measurement, "10.0123 mV"},
                                                  {F::fixed_quantity, "10.00 mV"},
                                                  {F::variable_quantity, "10.0123 mV"},
                                                  {F::expected_value, "10 mV"},
                                                  {F::error, "-0.0123456 mV"},
                                                  {F::deviation, "0.0123456 mV"},
                                                  {F::lower_limit, "9.900 mV"},
                                                  {F::upper_limit, "10.100 mV"},
                                                  {F::test_tolerance, "0.10 mV"},
                                                  {F::positive_test_tolerance, "0.10 mV"},
                                                  {F::uut_range, "20 mV"},
                                                  {F::uut_resolution, "0.01 mV"},
                                                  {F::mod1, "1.0 kHz"},
                                                  {F::relative_error, "-0.123456 %"},
                                                  {F::tolerance_error, "-12.35 %"},
                                                  {F::guardbanded_lower_limit, ""}};
  for (const auto& [which, text] : quantities) EXPECT_EQ(field(which), text) << result_field_row(which).name;
  const std::pair<F, const char*> words[] = {{F::test_step, "0001M003"},
                                             {F::test_step_2, "0001"},
                                             {F::test_description, "10.00 mV @ 1.0 kHz"},
                                             {F::test_status, "Pass"},
                                             {F::test_status_2, "Pass"},
                                             {F::result_type, "Numeric"},
                                             {F::tolerance_reference, "Procedure"},
                                             {F::condition, ""},
                                             {F::remark, ""},
                                             {F::measured_by_uut, "0"},
                                             {F::cardinal_is_fixed, "1"},
                                             {F::correction_flag, "0"},
                                             {F::accreditation_flag, "0"},
                                             {F::rsm, "2"},
                                             {F::row, "1"}};
  for (const auto& [which, text] : words) EXPECT_EQ(word(which), text) << result_field_row(which).name;
  EXPECT_LE(run.results.records.back()->memory(), ResultRecord::size_limit);
  EXPECT_NE(file("rslt.tmp").find("2:10.00 mV @ 1.0 kHz:10.00 mV:10.0123 mV:9.900 mV:10.100 mV: ::::\n"),
            std::string::npos)
      << file("rslt.tmp");
  EXPECT_EQ(file("rslt.tmp"), file("rsltsort.tmp"));
}

TEST_F(RunResults, FormatsDescriptionsAndWhatIsMeasured) {
  struct Case {
    std::vector<std::string> body;
    F field;
    const char* text;
  };
  startup_config().ExtendedUnits = 0;
  const std::string mem = text("MATH", "MEM = 9.9876543; MEM1 = 10.02"),
                    comparison = memc("", "10.00V", "1%");
  const Case cases[] = {
      {{text("FMT", "SA = %.6f V"), mem, comparison}, F::system_actual, "9.987654 V V"},
      {{text("FMT", "SA = %d"), mem, comparison}, F::system_actual, "9 V"},
      {{text("FMT", "SA = %.6f"), text("FMT", "SA = *"), mem, comparison}, F::system_actual, "9.9877 V"},
      {{text("MATH", "M[1] = 2"), text("FMT", "LL=%.[M1]e"), mem, comparison}, F::lower_limit, "9.90e+00 V"},
      {{mem, memc("", "10V", "1%")}, F::measurement, "9.99 V"},
      {{mem, memc("", "V", "1%")}, F::measurement, "10.02 V"},  // MEAS UI: the unit has measured
      {{text("TSET", "MEAS = SA"), mem, memc("", "V", "1%")}, F::measurement, "9.9876543 V"},
      {{text("TSET", "CPT = 10.000 V"), mem, memc("", "V", "1%")}, F::cardinal_point, "10.000 V"},
      {{text("TSET", "CPT = 10.000 V"), mem, memc("", "V", "1%")}, F::test_description, "10.000 V"},
      {{text("TSET", "TDESC = Ten: volts"), mem, comparison}, F::test_description, "Ten: volts"},
      {{mem, memc("1000", "10.00V", "1%")}, F::test_description, "  10.00 V"},
      {{mem, memc("1000", "-10.00V", "1%")}, F::test_description, " -10.00 V"},
      {{mem, memc("1.5E3", "1.0E-3A", "1%")}, F::uut_range, "1.5e+03 A"},
      {{mem, memc("", "10.0widgets", "1%")}, F::nominal, "10.0 widgets"},
      {{mem, memc("", "0.00V", "0.1U")}, F::relative_error, ""},
      {{text("VSET", "TOL_REF = UUT_INDICATED"), mem, memc("", "V", "1%")},
       F::tolerance_reference,
       "UUT_Indicated"}};
  for (const Case& c : cases) {
    run_lines(c.body);
    ASSERT_FALSE(run.results.records.empty());
    EXPECT_EQ(field(c.field), c.text) << c.body.front() << c.body.back();
    EXPECT_TRUE(run.formats.empty());
  }
  startup_config().tdesc_DecimalSymbol = ",";
  run_lines({mem, comparison});
  EXPECT_EQ(word(F::test_description), "10,00 V");
  // A text that is too long is no description; a colon in one does not part the log's line.
  run_lines({text("MATH", "MEM2 = \"" + std::string(40, 'x') + "\""), text("TSET", "TDESC = a:b[MEM2][MEM2]"),
             mem, comparison});
  EXPECT_EQ(word(F::test_description), "");
  run_lines({text("TSET", "TDESC = a:b"), mem, comparison});
  EXPECT_NE(file("rslt.tmp").find("2:a;b:10.00 V:"), std::string::npos) << file("rslt.tmp");
  // A field that cannot be filled is told by its title, and the others go on.
  run.registers.mem2.clear();
  run_lines({text("MEM2", "=" + std::string(40, '8')),
             text("FMT", "UL = [MEM2][MEM2][MEM2][MEM2][MEM2]%120f"), mem, comparison});
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2306, 2305}));
  EXPECT_EQ(field(F::upper_limit), "");
  EXPECT_EQ(field(F::measurement), "9.9877 V");
}

TEST_F(RunResults, JudgementsHaveWordsAndNoNumbers) {
  desk.reply(answer::no);
  run_lines({"EVAL   Is it lit?"});
  EXPECT_EQ(word(F::remark), "Is it lit?");
  EXPECT_EQ(word(F::result_type), "Eval");
  EXPECT_EQ(word(F::test_status), "Fail");
  EXPECT_EQ(word(F::condition), "NOTIFY USER");
  EXPECT_EQ(run.results.records.back()->find(F::measurement), nullptr);
  EXPECT_EQ(r_overall(run.results), overall_value::failed);
  EXPECT_EQ(*run_variable(run, "OVERALL_RESULT$"), "FAIL");
  EXPECT_EQ(*run_variable(run, "NUM_FAILED$"), "1");
}

TEST_F(RunResults, TheUncertaintyIsPrintedByItsSettings) {
  const std::vector<std::string> head = {text("VSET", "NMEAS = 3"), text("VSET", "SYS_ACC = 0.012345"),
                                         text("VSET", "CONF = 2"), text("VSET", "CS2 = 5"),
                                         text("VSET", "C10 = 3")};
  struct Case {
    const char* form;
    const char* text;
  };
  const Case cases[] = {{"ENGR", "6.2e-003"}, {"NOM", "0.01"}, {"PREFIX", "6.2"}, {"SCI", "6.2e-03"}};
  for (const Case& c : cases) {
    std::vector<std::string> body = head;
    body.push_back(text("VSET", std::string("UFMT = ") + c.form));
    body.push_back(text("VSET", "NSD = 2"));
    body.push_back(text("MATH", "MEM = 10.01"));
    body.push_back(memc("", "10.000V", "1%"));
    run.flags2 |= run_flag2::uncertainty;
    run_lines(body);
    EXPECT_EQ(word(F::uncertainty_component_1), c.text) << c.form;
  }
  EXPECT_EQ(word(F::sensitivity_coefficient_10), "5.0e+00");
  EXPECT_EQ(word(F::cs2), "");
  EXPECT_EQ(run.results.records.back()->readings.size(), 3u);
  EXPECT_LE(run.results.records.back()->memory(), ResultRecord::size_limit);
}

// ---- The measurement file ----

class MeasurementFile : public RunResults {
 protected:
  MeasurementFile() { startup_config().user_data_dir = folder.string(); }
  ~MeasurementFile() override {
    ::unsetenv("LC_ALL");
    ::unsetenv("LOCPATH");
  }
  void measure(const char* format, const char* file = "m.txt") {
    run.flags2 |= run_flag2::uncertainty;
    run_entry_set(run, "UUT_CODE$", "A, \"7\"\r\nb");
    run_lines({text("VSET", "NMEAS = 2"), text("VSET", "SYS_ACC = 0.01"), text("VSET", "CONF = 2"),
               text("VSET", std::string("MFILE = ") + file),
               text("VSET", std::string("MFILE_FORMAT = ") + format), text("MATH", "MEM = 10.5"),
               memc("", "10.000V", "10%")});
  }
};

TEST_F(MeasurementFile, ItsForms) {
  startup_config().user_data_dir = folder.string();
  measure("DELIM-STD");
  measure("DELIM-STD");
  const std::string standard = file("m.txt");
  EXPECT_TRUE(standard.starts_with(
      "Step Number, Welch-Satterthwaite Flag, Asset, Start Date, Start Time, UUT Indicated, System Actual, "
      "Expanded Uncertainty, Standard Uncertainty, Confidence, Coverage, F, System Accuracy, S1, S2, "
      "Standard Deviation, RSS, U1, U2, U3, U4, U5, U6, U7, U8, U9, U10, C1,"))
      << standard;
  const std::size_t first = standard.find("\r\n") + 2;
  EXPECT_NE(
      standard.find(
          "CS1, CS2, DF, DF1, DF2, DF3, DF4, DF5, DF6, DF7, DF8, DF9, DF10, DFS1, DFS2, UUT Resolution, "
          "NThrow, Number of Measurements, Value 1, Value 2\r\n"),
      std::string::npos);
  EXPECT_EQ(standard.find("Step Number", first), std::string::npos) << "one head";
  EXPECT_TRUE(standard.substr(first).starts_with("1.008, 0, , ")) << standard.substr(first);
  EXPECT_NE(standard.find(", 10, 10.5, "), std::string::npos);
  EXPECT_TRUE(standard.ends_with(", 0, 2, 10.5, 10.5\r\n")) << standard;

  measure("VERBOSE", "v.txt");
  const std::string verbose = file("v.txt");
  EXPECT_TRUE(verbose.starts_with("Time                   = 2023-11-14 ")) << verbose;
  EXPECT_NE(verbose.find("\r\nStep Number            = 1.008\r\nWelch-Satterthwaite Flag = 0\r\nAsset        "
                         "          = N/A\r\n"),
            std::string::npos)
      << verbose;
  EXPECT_NE(verbose.find("\r\nValue 2                = 10.5\r\n"), std::string::npos);
  measure("DELIM-Q", "q.txt");
  EXPECT_NE(file("q.txt").find("\"Step Number\",\"Welch-Satterthwaite Flag\""), std::string::npos);
  EXPECT_NE(file("q.txt").find("\r\n\"1.008\",0,\"\",\""), std::string::npos) << file("q.txt");
}

TEST_F(MeasurementFile, TheUsersSigns) {
  const std::string made = "localedef -i de_DE -f UTF-8 " + folder.string() + "/de_DE.UTF-8 >/dev/null 2>&1";
  if (std::system(made.c_str()) != 0) GTEST_SKIP() << "no locale with a decimal comma can be made";
  ::setenv("LOCPATH", folder.c_str(), 1);
  ::setenv("LC_ALL", "de_DE.UTF-8", 1);
  measure("DELIM");
  EXPECT_NE(file("m.txt").find("Step Number;Welch-Satterthwaite Flag;Asset;"), std::string::npos);
  EXPECT_NE(file("m.txt").find("\r\n1.008;0;"), std::string::npos) << file("m.txt");
  EXPECT_NE(file("m.txt").find(";10;10,5;"), std::string::npos) << file("m.txt");
  measure("DELIM-STD", "s.txt");
  EXPECT_NE(file("s.txt").find(", 10, 10.5, "), std::string::npos);
  startup_config().tdesc_DecimalSymbol = "system";
  run_lines({text("MATH", "MEM = 10"), memc("", "10.00V", "1%")});
  EXPECT_EQ(word(F::test_description), "10,00 V");
}

TEST_F(MeasurementFile, FaultsAreToldAndTheRunGoesOn) {
  measure("DELIM", "absent/m.txt");
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{297});
  if (std::filesystem::exists("/dev/full")) {
    measure("DELIM", "/dev/full");
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{298});
  }
  startup_config().user_data_dir = (folder / std::string(250, 'x')).string();
  measure("DELIM");
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{299});
  EXPECT_EQ(word(F::test_status), "Pass");
}

}  // namespace
}  // namespace orvane
