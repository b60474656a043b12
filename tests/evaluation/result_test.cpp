#include <gtest/gtest.h>

#include <bit>
#include <filesystem>

#include "config/startup_config.h"
#include "evaluation/decision.h"
#include "evaluation/result_lines.h"
#include "evaluation/result_log.h"
#include "evaluation/tolerance.h"
#include "support/desk.h"
#include "values/units.h"

namespace orvane {
namespace {

class Results : public test::EngineTest {
 protected:
  Results() {
    startup_config() = StartupConfig();
    startup_config().pass100 = 1;
    startup_config().oot_lim = 200;
    startup_config().ExtendedUnits = 0;
    startup_config().workdir = folder.string();
    run.adjust_threshold = 70;
  }
  ~Results() override { startup_config() = StartupConfig(); }

  FscRecord record = fsc_record_new();

  void memc(std::string_view nominal, double indicated, double actual) {
    record = fsc_record_new();
    record.set(field::code, fsc::memc);
    record.set(field::test_major, 7);
    record.set(field::test_minor, 2);
    EXPECT_TRUE(record.set_text(field::memc_nominal, nominal));
    run.test.indicated = indicated;
    run.test.actual = actual;
  }
  void columns(double nominal, UnitCode unit, PrefixCode prefix, std::uint8_t digits) {
    record = fsc_record_new();
    record.set(field::code, fsc::i3458);
    record.set(field::test_major, 12);
    record.set(field::test_minor, 1);
    record.set(field::nominal,
               QuantityField{.unit = unit, .prefix = prefix, .flags = 0, .digits = digits, .value = nominal});
    run.test.indicated = nominal;
    run.test.actual = nominal;
  }
  void show(double percent, double reference) { format_result(run, record, percent, reference); }
  std::string text_at(std::size_t column, std::size_t width) const {
    return run.decision.line1.substr(column, width);
  }
};

TEST_F(Results, Headings) {
  EXPECT_EQ(result_headings()[0],
            "TEST    RANGE INDICATED      ACTUAL         MODIFIER        ERROR        %TOL  ");
  EXPECT_EQ(result_headings()[1],
            "              UUT            SYSTEM                                      ERROR ");
}

TEST_F(Results, LinesOfEachOutcome) {
  struct Case {
    double percent;
    const char *line2, *status;
    int status_bits, colour;
    bool failed;
    std::uint32_t flags;
  };
  const std::string blanks(60, ' ');
  const Case cases[] = {{50, "             PASS  ", "PASS", 1, 1, false, 0x02},
                        {71, "MARGINAL     PASS  ", "MARGINAL PASS", 2, 3, false, 0x0A},
                        {150, "             FAIL  ", "FAIL", 4, 2, true, 0},
                        {250, "NOTIFY USER  FAIL  ", "FAIL NOTIFY USER", 8, 2, true, 4}};
  for (const Case& c : cases) {
    memc("10.000V", 10, 10.001);
    record.set(field::memc_range, RangeField{.flags = 3, .digits = 0, .value = 20});
    ASSERT_TRUE(record.set_text(field::memc_modifier, "1kHz"));
    run.test.test_state = c.failed ? 0 : test_bit::failed;
    show(c.percent, 10);
    char percent[8];
    std::snprintf(percent, sizeof percent, "%3.0f", c.percent);
    EXPECT_EQ(run.decision.line1,
              "  7     20    10V            10.001V        1kHz            -100     ppm " +
                  std::string(percent) + "   ");
    EXPECT_EQ(run.decision.line2, blanks + c.line2);
    EXPECT_EQ(run.decision.status_text, c.status);
    EXPECT_EQ(run.decision.status_bits, c.status_bits);
    EXPECT_EQ(run.decision.colour, c.colour);
    EXPECT_EQ(run.decision.result_flags, c.flags);
    EXPECT_EQ((run.test.test_state & test_bit::failed) != 0, c.failed);
    const ResultLine line = board_line(run.decision);
    EXPECT_EQ(line.line1, run.decision.line1);
    EXPECT_EQ(line.status_text, c.status);
  }
  EXPECT_EQ(run.decision.title, "Test   7");
  EXPECT_EQ(run.decision.tur_text, "(not calculated)");
  EXPECT_EQ(run.decision.pct_value, 250);
}

TEST_F(Results, PercentAboveTheCap) {
  memc("10V", 10, 10);
  show(percent_without_tolerance, 10);
  EXPECT_EQ(text_at(73, 6), ">500  ");
  EXPECT_EQ(run.decision.pct_flags, DecisionBlock::percent_capped);
  EXPECT_EQ(run.decision.pct_value, 500);
  EXPECT_EQ(run.decision.status_text, "FAIL NOTIFY USER");
}

TEST_F(Results, NumberColumnsOfMemc) {
  struct Case {
    const char* nominal;
    double indicated, actual;
    const char *indicated_text, *actual_text;
  };
  const Case cases[] = {
      {"10.000V", 10, 1.23456789012, "10V           ", "1.23456789V   "},
      {"10 mV", 10, -0.5, "10 mV         ", "-0.5 mV       "},
      {"Ohms/square", 1.23456789, 1.23456789, "1.2Ohms/square", "1.23456789    "},
      {"0.1234567kHz", -0.123456789, -0.123456789, "-0.12345679kHz", "-0.123456789  "},
      {"V", 1.23456789e-100, 1.23456789e-100, "1.234568e-100V", "?             "},
      {"mV", -1.23456789e-7, -1.23456789e-7, "-1.23457e-07mV", "?             "},
      {"fifteen letters", 2, 2, "2             ", "2             "},
      {"", 3, 4, "3             ", "4             "},
  };
  for (const Case& c : cases) {
    memc(c.nominal, c.indicated, c.actual);
    show(1, 1);
    const std::string line = run.decision.line1;
    EXPECT_EQ(line.size(), result_columns);
    EXPECT_EQ(line[28], ' ') << line;
    EXPECT_EQ(text_at(14, 14), c.indicated_text) << c.nominal;
    EXPECT_EQ(text_at(29, 14), c.actual_text) << c.nominal;
  }
  // The unit of an ACC in front: in its own words, or by its code without the prefix.
  AccStatement& stated = run.accuracy.statement;
  stated.flags = AccStatement::met;
  stated.units = "millivolt";
  memc("20.0 mV", 20, 20.5);
  show(1, 1);
  EXPECT_EQ(text_at(14, 14) + text_at(29, 14), "20millivolt   20.5millivolt ");
  stated = AccStatement();
  stated.flags = AccStatement::met | AccStatement::unit_known;
  stated.unit = unit_code::volt;
  stated.prefix = prefix_code::milli;
  show(1, 1);
  EXPECT_EQ(text_at(14, 14) + text_at(29, 14), "0.02V         0.0205V       ");
}

TEST_F(Results, ErrorColumn) {
  struct Case {
    const char* nominal;
    double indicated, actual, reference;
    const char* text;
  };
  const Case cases[] = {
      {"10V", 10, 10.001, 10, "-100     ppm "},     {"10V", 10.1, 10, 10, "   1.00  %   "},
      {"10V", 10, 9.99, 10, "   0.100 %   "},       {"10V", 10.0099998, 10, 10, " 999     ppm "},
      {"10V", 10.0099999, 10, 10, "   0.100 %   "}, {"10V", 10, 10.5, -10, "   5.00  %   "},
      {"10V", 60, 10, 10, ">500     %   "},         {"10V", 59.9, 10, 10, " 499     %   "},
      {"10V", -59.9, -10, 10, "-499     %   "},     {"0V", 0, 0.001, 10, "  -0.00100   "},
      {"10V", 10, 0, 10, "  10.0       "},          {"10V", 10, 11, 0, "  -1.00      "},
      {"10V", 1000, 0, 10, ">500         "},        {"10V", 499.9, 0, 10, " 499         "},
      {"-10dBm", -10, -10.5, -10, "   0.500     "}, {"-10D", -10, -10.5, -10, "   0.500     "},
      {"-10ppm", -10, -10.5, -10, "  -5.00  %   "}};
  for (const Case& c : cases) {
    memc(c.nominal, c.indicated, c.actual);
    show(1, c.reference);
    EXPECT_EQ(text_at(60, 13), c.text) << c.nominal << " " << c.indicated;
    EXPECT_EQ(run.decision.error_valid, 1);
  }
}

TEST_F(Results, FixedColumns) {
  columns(10, 6, 5, 0x23);
  record.set(field::range, RangeField{.flags = RangeField::filled | RangeField::automatic});
  record.set(field::mod1, ModifierField{.unit = 3, .prefix = 6, .flags = 0, .digits = 0x11, .value = 1});
  run.test.actual = 10.00123456;
  run.test.test_state = test_bit::corrected;
  show(12, 10);
  EXPECT_EQ(run.decision.line1,
            " 12 c   A     10.000mV       10.0012346mV   1.0kHz          -123     ppm  12   ");
  EXPECT_EQ(run.decision.act_text, "10.0012346mV (corrected)");
  EXPECT_EQ(run.decision.act_flags, DecisionBlock::actual_corrected);

  run.test.test_state = test_bit::indicated_text;
  run.test.indicated_text = "9.9990";
  run.test.indicated = 9.999;
  show(12, 10);
  EXPECT_EQ(text_at(14, 14), "9.9990mV      ");
  run.test.test_state |= test_bit::mean;  // a mean goes before what was typed
  show(12, 10);
  EXPECT_EQ(text_at(14, 14), "9.999mV       ");

  // A measured value is not cut to the digits of the nominal.
  columns(10, 6, 1, 0x20);
  run.test.indicated = 9.95;
  show(12, 10);
  EXPECT_EQ(text_at(14, 14), "9.95V         ");
  EXPECT_EQ(text_at(8, 5), "     ");

  const std::pair<double, const char*> ranges[] = {
      {20, "20   "},     {0.2, "0.2  "},    {1234567, "123e4"}, {-1234567, "-12e5"}, {12345, "12345"},
      {123456, "123e3"}, {-12345, "-12e3"}, {0.00012, ".0001"}, {1e-300, "?    "}};
  for (const auto& [range, text] : ranges) {
    record.set(field::range, RangeField{.flags = 3, .digits = 0, .value = range});
    show(12, 10);
    EXPECT_EQ(text_at(8, 5), text) << range;
    EXPECT_EQ(run.decision.line1[13], ' ');
  }
}

TEST_F(Results, JudgementsHaveNoNumber) {
  columns(10, 6, 1, 0);
  for (const bool failed : {false, true}) {
    run.test.test_state = static_cast<std::uint16_t>(test_bit::go_no_go | (failed ? test_bit::failed : 0));
    show(0, 10);
    EXPECT_EQ(run.decision.line1,
              " 12           OPER-EVAL      10V" + std::string(41, ' ') + (failed ? "FAIL  " : "PASS  "));
    EXPECT_EQ(run.decision.line2,
              std::string(60, ' ') + (failed ? "NOTIFY USER        " : std::string(19, ' ')));
    EXPECT_EQ(run.decision.status_text, failed ? "FAIL NOTIFY USER" : "PASS");
    EXPECT_EQ(run.decision.status_bits, failed ? 0x08 : 0x01);
    EXPECT_EQ(run.decision.colour, failed ? 2 : 1);
    EXPECT_EQ(run.decision.result_flags, failed ? 4u : 2u);
    EXPECT_EQ(run.decision.ind_flags, DecisionBlock::indicated_word);
    EXPECT_EQ(run.decision.error_text + run.decision.pct_text, "");
    EXPECT_EQ((run.test.test_state & test_bit::failed) != 0, failed);
  }
  for (const auto& [word, shown] : {std::pair<const char*, const char*>{"thirteen cols", "thirteen cols "},
                                    {"fourteen cols.", "OPER-EVAL     "}}) {
    startup_config().GoNoGo = word;
    show(0, 10);
    EXPECT_EQ(text_at(14, 14), shown);
  }
}

// Whatever the numbers are, the lines have 79 columns and no field reaches into the next.
TEST_F(Results, NothingMovesAColumn) {
  for (const double value : {0.0, -1e-300, 1.23456789e300, -9.87654321e-5, 123456789.123}) {
    for (const char* unit : {"", "V", "mV", "a long unit"}) {
      memc(unit, value, -value);
      record.set(field::memc_range, RangeField{.flags = 3, .digits = 0, .value = value});
      show(1000, value);
      EXPECT_EQ(run.decision.line1.size(), result_columns);
      EXPECT_EQ(run.decision.line2.size(), result_columns);
      for (const int gap : {7, 13, 28, 43, 59, 72})
        EXPECT_EQ(run.decision.line1[static_cast<std::size_t>(gap)], ' ') << run.decision.line1;
    }
  }
}

// ---- The running log ----

class Log : public Results {
 protected:
  std::string text() const { return contents((folder / "rslt.tmp").string()); }
};

TEST_F(Log, LinesByteForByte) {
  ASSERT_TRUE(log_open(run));
  EXPECT_TRUE(log_enter(run, 12, "DMM VOLTS"));
  memc("10.000V", 10, 10.2);
  run.registers.mem = 10.2;
  run.test.pos_tol = 1;
  run.test.neg_tol = 0.5;
  run.decision.line1 = std::string(78, '1') + "|";
  run.decision.line2 = std::string(78, '2') + "|";
  EXPECT_TRUE(log_test(run, record));
  run.calls.push_back({7, 3});
  EXPECT_TRUE(log_enter(run, 3, "SUB"));
  EXPECT_TRUE(log_leave(run, "SUB"));
  run.calls.pop_back();
  EXPECT_TRUE(log_adjust(run, 7, 2));
  EXPECT_TRUE(log_adjust(run, 7, 3));
  EXPECT_TRUE(log_adjust(run, 8, 1));
  EXPECT_TRUE(log_line(run, 7, 2, log_letter::comment, "two\nlines"));
  EXPECT_TRUE(log_leave(run, "DMM VOLTS"));
  // On disk without closing.
  EXPECT_EQ(text(),
            "0000.000 C          12 ENTER DMM VOLTS\n"
            "0007.002 M " +
                std::string(78, '1') +
                "| 10.000V             "
                "4022000000000000"
                "4025000000000000"
                "3:::::: ::::\n"
                "0007.002 M " +
                std::string(78, '2') +
                "|\n"
                "0007.003 C           3 ENTER SUB\n"
                "0007.003 L             LEAVE SUB\n"
                "0007.002 A         ADJUST PERFORMED\n"
                "0008.001 A         ADJUST PERFORMED\n"
                "0007.002 K two lines\n"
                "0000.000 L             LEAVE DMM VOLTS\n");
  log_close(run);
}

TEST_F(Log, ColumnsOfTestLines) {
  struct Case {
    std::uint16_t code, state;
    const char* nominal;
    char letter;
    const char* value;
    double lower, upper;
    char resolution;
  };
  const Case cases[] = {{fsc::memc, 0, "10.00V", 'M', "10.00V", 9, 10.5, '2'},
                        {fsc::memcx, 0, "V", 'M', "1.25", 9, 10.5, '0'},
                        {fsc::i3458, 0, "", 'I', "-30", 9, 10.5, '3'},
                        {fsc::i3458, test_bit::go_no_go, "", 'G', "-30", 19.5, 21, '3'},
                        {fsc::eval, 0, "", 'E', "1.25", 9, 10.5, '0'},  // has no nominal
                        {fsc::pice, 0, "", 'E', "1.25", 9, 10.5, '0'},
                        {fsc::dose, 0, "", 'd', "1.25", 9, 10.5, '0'}};
  for (const Case& c : cases) {
    ASSERT_TRUE(log_open(run));
    memc(c.nominal, 10, 20);
    if (c.code == fsc::i3458) columns(-30, 6, 1, 0x23);
    if (c.code == fsc::eval || c.code == fsc::pice || c.code == fsc::dose) {
      ASSERT_TRUE(record.set_text(field::text, std::string(70, 'q')));
    }
    record.set(field::code, c.code);
    run.test = {.test_state = c.state,
                .neg_tol = 0.5,
                .pos_tol = 1,
                .indicated = 10,
                .indicated_text = {},
                .actual = 20,
                .tol_units = {}};
    run.registers.mem = 1.25;
    run.decision.line1 = std::string(79, 'x');
    EXPECT_TRUE(log_test(run, record,
                         {.description = "d",
                          .value = "v",
                          .result = "r",
                          .lower_limit = "l",
                          .upper_limit = "u",
                          .accredited = "*",
                          .standard_uncertainty = "1E-3",
                          .expanded_uncertainty = "2E-3",
                          .coverage_factor = "2"}));
    const std::string line = text().substr(0, text().find('\n'));
    char limits[40];
    const auto lower = std::bit_cast<std::uint64_t>(c.lower), upper = std::bit_cast<std::uint64_t>(c.upper);
    std::snprintf(limits, sizeof limits, "%016lx%016lx", static_cast<unsigned long>(lower),
                  static_cast<unsigned long>(upper));
    EXPECT_EQ(line[9], c.letter);
    EXPECT_EQ(line.substr(11, 80), std::string(79, 'x') + " ");
    EXPECT_EQ(line.substr(91, 20), std::string(c.value) + std::string(20 - std::string(c.value).size(), ' '));
    EXPECT_EQ(line.substr(111, 32), limits);
    EXPECT_EQ(line[143], c.resolution);
    EXPECT_EQ(line.substr(144), ":d:v:r:l:u:*:1E-3:2E-3:2:");
  }
}

TEST_F(Log, NotesFollowTheirTestInOrder) {
  ASSERT_TRUE(log_open(run));
  const std::string long_text(70, 'r');
  note_add(run, PendingNote::brace, 1, 1, "b1");
  note_add(run, PendingNote::brace, 1, 1, "b2");
  note_add(run, PendingNote::rslt, 1, 1, "r1");
  note_add(run, PendingNote::comment, 1, 1, "c1");
  note_add(run, PendingNote::rslt, 1, 2, long_text);
  note_add(run, PendingNote::brace, 1, 3, "b3");
  note_add(run, PendingNote::rslt, 1, 4, "");
  EXPECT_TRUE(notes_write(run, PendingNote::brace | PendingNote::rslt));
  EXPECT_EQ(text(),
            "0001.001 B         b1\n"
            "0001.001 R         b2 r1\n"
            "0001.002 R         " +
                long_text.substr(0, 65) +
                "\n"
                "0001.002 R         rrrrr\n"
                "0001.003 B         b3\n"
                "0001.004 R         \n");
  ASSERT_EQ(run.log.notes.size(), 1u);
  EXPECT_TRUE(notes_write(run, PendingNote::comment));
  EXPECT_TRUE(text().ends_with("0001.001 K         c1\n"));
  note_add(run, PendingNote::brace, 1, 1, "b");
  note_add(run, PendingNote::comment, 1, 1, "c");
  notes_drop(run, PendingNote::brace);
  EXPECT_EQ(run.log.notes.at(0).text, "c");
  EXPECT_EQ(run.log.notes.size(), 1u);
}

TEST_F(Log, ALineIsCutAtItsLimit) {
  ASSERT_TRUE(log_open(run));
  EXPECT_TRUE(log_line(run, 1, 1, 'K', std::string(400, 'k')));
  EXPECT_EQ(text().size(), log_line_limit + 1);
}

TEST_F(Log, AFailedWriteIsToldOnceAndTheRunGoesOn) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is full";
  std::filesystem::create_symlink("/dev/full", folder / "rslt.tmp");
  ASSERT_TRUE(log_open(run));
  EXPECT_FALSE(log_line(run, 1, 1, 'K', "lost"));
  EXPECT_TRUE(log_line(run, 1, 1, 'K', "lost as well"));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4623});
  EXPECT_FALSE(run.stopped());
  // The next run tries again.
  std::filesystem::remove(folder / "rslt.tmp");
  ASSERT_TRUE(log_open(run));
  EXPECT_TRUE(log_line(run, 1, 1, 'K', "kept"));
  EXPECT_EQ(text(), "0001.001 K kept\n");

  startup_config().workdir = (folder / "absent").string();
  EXPECT_FALSE(log_open(run));
  EXPECT_TRUE(log_line(run, 1, 1, 'K', "lost"));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4623, 4623}));
}

}  // namespace
}  // namespace orvane
