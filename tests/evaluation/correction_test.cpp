// Correction files, and what a corrected statement leaves behind.
#include <gtest/gtest.h>

#include <cmath>

#include "config/startup_config.h"
#include "evaluation/correction.h"
#include "messages/catalogue.h"
#include "settings/vset.h"
#include "state/fsc.h"
#include "support/desk.h"
#include "values/units.h"

namespace orvane::test {
namespace {

using Numbers = std::vector<int>;

std::string the_path, the_asset;

class CorrectionTest : public EngineTest {
 protected:
  CorrectionTest() {
    startup_config() = StartupConfig();
    cor_install_source({[](RunState&, const FscRecord&, std::string& path, std::string& asset) {
      path = the_path;
      asset = the_asset;
      return true;
    }});
    the_path = (folder / "3458.cor").string();
    the_asset = "77";
  }
  ~CorrectionTest() override {
    cor_install_source({});
    startup_config() = StartupConfig();
  }

  // The whole correction of a value, "none", or the numbers of the reports.
  std::string correction(double nominal, double value, std::optional<double> modifier = {},
                         bool exact = false) {
    desk.shown.clear();
    Correction out;
    if (!cor_lookup(run, the_path, the_asset, {"volts", nominal, value, modifier, exact}, out)) {
      std::string numbers;
      for (const int number : desk.message_numbers()) numbers += std::to_string(number);
      return numbers;
    }
    return out.kinds == Correction::none ? "none" : formatted("%d: %.12g", out.kinds, out.first + out.second);
  }
};

TEST_F(CorrectionTest, PointsRangesAndModifiers) {
  write("3458.cor",
        "# certificate\nasset: 77\nMODE: Volts\nRANGE: -1 1.2\n-1 -0.002\n1 0.002\nMOD1: 10 1000\n100 "
        "1\n1000 3\n"
        "mod1: 1000 9000\n5000 10\nRANGE: -1 1.2\n-1 -0.002\n1 0.002\nRANGE: 1.2 12\n2 0.5\nMODE: "
        "Amps\nRANGE: 0 1\n0 1\n");
  constexpr double in = 0.9e-11, out = 1.1e-11;
  struct Case {
    double nominal, value;
    std::optional<double> modifier;
    bool exact;
    const char* correction;
  };
  const Case cases[] = {
      {1, 1, {}, false, "1: 0.002"},
      {1, 0.5, {}, false, "1: 0.001"},
      {1, -0.25, {}, false, "1: -0.0005"},
      {1, 1.1, {}, false, "1: 0.002"},
      {-1, -2, {}, false, "1: -0.002"},
      {1.2, 1.2, {}, false, "1: 0.002"},
      {1.2 * (1 + in), 2, {}, false, "1: 0.002"},
      {1.2 * (1 + out), 2, {}, false, "1: 0.5"},
      {12 * (1 + in), 2, {}, false, "1: 0.5"},
      {12 * (1 + out), 2, {}, false, "none"},
      {1, 1, 550, false, "2: 0.022"},
      {1, 1, 10, false, "2: 0.012"},
      {1, 1, 10 * (1 - in), false, "2: 0.012"},
      {1, 1, 10 * (1 - out), false, "none"},
      {1, 1, 1000, false, "2: 0.032"},
      {1, 1, 1000 * (1 + out), false, "2: 0.102"},
      {2, 3, 100, false, "none"},
      {1, 0.9, {}, true, "1: 0.002"},
      {1 + in, 0.9, {}, true, "1: 0.002"},
      {1 + out, 0.9, {}, true, "none"},
      {0.5, 0.5, {}, true, "none"},
      {1, 1, 100, true, "2: 0.012"},
      {1, 1, 101, true, "none"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(correction(c.nominal, c.value, c.modifier, c.exact), c.correction)
        << c.nominal << " " << c.value << " " << c.modifier.value_or(-1) << c.exact;
  the_asset = "78";
  EXPECT_EQ(correction(1, 1), "31022");
}

TEST_F(CorrectionTest, DamagedFiles) {
  struct Case {
    const char* text;
    int line;
    int reason;
  };
  for (const Case& c :
       {Case{"1 2\n", 1, 31019}, Case{"RANGE: 0 1\n", 1, 31019}, Case{"MODE: V\n1 2\n", 2, 31019},
        Case{"MODE: V\nMOD1: 0 1\n", 2, 31019}, Case{"MODE: V\nRANGE: 1 0\n", 2, 31026},
        Case{"MODE: V\nRANGE: 0\n", 2, 31026}, Case{"MODE: V\nRANGE: 0 1 2\n", 2, 31026},
        Case{"MODE: V\n\nRANGE: 0 1\nMODE: W\n", 3, 31029}, Case{"MODE: V\nRANGE: 0 1\n", 2, 31029},
        Case{"MODE: V\nRANGE: 0 1\n0 1 2\n", 3, 31027}, Case{"MODE: V\nRANGE: 0 1\n0 1e999\n", 3, 31027},
        Case{"MODE: V\nRANGE: 0 1\n0 1\n0 2\n", 4, 31028}, Case{"MODE: V v\n", 1, 31025},
        Case{"MODE:\n", 1, 31025}, Case{"ASSET:\n", 1, 31025}, Case{"ASSET: 1\nASSET: 1\n", 2, 31018}}) {
    write("3458.cor", c.text);
    EXPECT_EQ(correction(1, 1), "31021") << c.text;
    EXPECT_EQ(desk.last_message(), "E31021: " + the_path +
                                       formatted(", line %d: the correction file is damaged: ", c.line) +
                                       msg(c.reason) + ". Correct the line.");
  }
  std::filesystem::remove(the_path);
  EXPECT_EQ(correction(1, 1), "31020");
}

// --- Statements ----------------------------------------------------------------------------------------------------

class CorrectedStatementTest : public CorrectionTest {
 protected:
  CorrectedStatementTest() {
    write("3458.cor",
          "MODE: Volts\nRANGE: 0 1.2\n0 0\n1 0.002\nRANGE: 0 1.2\n0 0\n1 0.002\nMOD1: 10 1000\n10 1\n");
    nominal.unit = unit_code::volt;
    nominal.prefix = prefix_code::milli;
    nominal.value = 500;
    run.test = TestValues();
    run.test.actual = 500;
    run.registers.mem1() = 500;
    run.registers.mem = 400;
  }

  // What the step returns behind a statement, and its report.
  std::string check(std::uint8_t mod4 = mod4_code::none) {
    desk.shown.clear();
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::i3458);
    record.set(field::nominal, nominal);
    record.set(field::mod1, modifier);
    record.set(field::mod4, mod4);
    std::string result = cor_check(run, record) ? "yes" : "no";
    for (const int number : desk.message_numbers()) result += " " + std::to_string(number);
    return result;
  }
  void require_correction(const std::string& word) {
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::vset);
    EXPECT_TRUE(vset_add(run, record, "CORREQ", word));
  }

  QuantityField nominal;
  ModifierField modifier;
};

TEST_F(CorrectedStatementTest, ReadingsAreCorrectedInTheUnitOfTheStatement) {
  EXPECT_EQ(check(), "yes");
  EXPECT_DOUBLE_EQ(run.test.actual, 501);
  EXPECT_DOUBLE_EQ(run.registers.mem1(), 501);
  EXPECT_DOUBLE_EQ(run.registers.mem, 400);
  EXPECT_EQ(run.test.test_state, test_bit::corrected);
  EXPECT_DOUBLE_EQ(run.correction.amount(), 0.001);

  modifier.unit = unit_code::hertz;
  modifier.value = 100;
  run.test.actual = 500;
  run.registers.mem1() = 7;
  EXPECT_EQ(check(), "yes");
  EXPECT_DOUBLE_EQ(run.test.actual, 506);
  EXPECT_DOUBLE_EQ(run.registers.mem1(), 7) << "not the reading";
  EXPECT_EQ(run.test.test_state, test_bit::corrected | test_bit::corrected_twice);

  modifier = ModifierField();
  EXPECT_EQ(check(mod4_code::n), "yes");
  EXPECT_DOUBLE_EQ(run.registers.mem, 400.8);
  EXPECT_EQ(run.test.test_state, test_bit::corrected);
}

TEST_F(CorrectedStatementTest, WhereACorrectionIsMissing) {
  nominal.value = 1500;
  EXPECT_EQ(check(), "yes");
  EXPECT_EQ(run.test.test_state, 0);
  require_correction("YES");
  EXPECT_EQ(check(), "no 31024");
  nominal.value = 500;
  EXPECT_EQ(check(), "yes");
  require_correction("EXACT");
  EXPECT_EQ(check(), "no 31024");
  nominal.value = 1000;
  EXPECT_EQ(check(), "yes");
  std::filesystem::remove(the_path);
  EXPECT_EQ(check(), "no 31023");
  require_correction("NO");
  run.test.actual = 500;
  EXPECT_EQ(check(), "yes");
  write("3458.cor", "MODE: Volts\nRANGE: 0 1.2\n");
  EXPECT_EQ(check(), "no 31021");
  write("3458.cor", "MODE: Volts\nRANGE: 0 1.2\n0 1\n1 1\n");
  nominal.value = 500;
  EXPECT_EQ(check(), "yes");
  EXPECT_DOUBLE_EQ(run.test.actual, 1500);
  startup_config().cor_exact = 1;
  EXPECT_EQ(check(), "yes");
  EXPECT_DOUBLE_EQ(run.test.actual, 1500) << "no point at the nominal";
  nominal.unit = unit_code::dbm;
  nominal.prefix = 0;
  EXPECT_EQ(check(), "yes");
  EXPECT_DOUBLE_EQ(run.test.actual, 1500) << "a level";
}

}  // namespace
}  // namespace orvane::test
