#include "values/registers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "support/desk.h"

namespace orvane {
namespace {

constexpr double smallest = std::numeric_limits<double>::min(), largest = std::numeric_limits<double>::max();

class Registers : public test::EngineTest {
 protected:
  Registers() { run.set(run_flag::run_active); }

  bool run_statement(const FscRecord& record) {
    Statement statement{.run = run, .record = record};
    for (const HandlerRow& row : register_handlers()) {
      if (row.code == record.code()) return row.handler(statement);
    }
    ADD_FAILURE() << "no handler";
    return false;
  }

  static FscRecord record_of(std::uint16_t code, std::optional<double> value = {}) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    record.set(field::mem_present, value ? 1 : 0);
    record.set(field::mem_operand, value.value_or(99));
    return record;
  }
};

TEST_F(Registers, Arithmetic) {
  struct Case {
    std::uint16_t code;
    double mem, operand, result;
    int message;  // 0 none, -1 floating-point reason
  };
  const Case cases[] = {
      {fsc::mem_plus, 2, 3, 5, 0},
      {fsc::mem_minus, 2, 3, -1, 0},
      {fsc::mem_times, 2, 3, 6, 0},
      {fsc::mem_divide, 3, 2, 1.5, 0},
      {fsc::mem_plus, 2, -2, 0, 0},
      {fsc::mem_times, 0, 5, 0, 0},
      {fsc::mem_divide, 0, 5, 0, 0},
      {fsc::mem_times, 1e300, 1e300, 1e300, 1770},
      {fsc::mem_plus, largest, largest, largest, 1770},
      {fsc::mem_minus, -largest, largest, -largest, 1770},
      {fsc::mem_divide, 1e300, 1e-300, 1e300, 1770},
      {fsc::mem_times, 1e-300, 1e-300, 1e-300, 1769},  // exactly 0
      {fsc::mem_divide, 1e-300, 1e300, 1e-300, 1769},
      {fsc::mem_times, smallest, 0.5, smallest, 1769},
      {fsc::mem_minus, smallest * 1.5, smallest, smallest * 1.5, 1769},
      {fsc::mem_times, smallest * 2, -0.5, -smallest, 0},
      {fsc::mem_divide, 1, 0, 1, -1},
      {fsc::mem_divide, 0, 0, 0, -1},
      {fsc::mem_divide, -1, -0.0, -1, -1},
  };
  for (const Case& c : cases) {
    for (const bool given : {true, false}) {
      run.stop_reason = 0;
      run.clear(run_flag::stop_test);
      desk.shown.clear();
      run.registers.mem = c.mem;
      run.registers.mem1() = given ? 1234 : c.operand;
      const bool done = run_statement(given ? record_of(c.code, c.operand) : record_of(c.code));
      EXPECT_EQ(done, c.message == 0);
      EXPECT_EQ(run.has(run_flag::stop_test), c.message != 0);
      EXPECT_EQ(run.registers.mem, c.result) << c.mem << " " << c.operand;
      EXPECT_EQ(run.stop_reason, c.message == -1 ? stop_reason_bit::floating_point : 0);
      EXPECT_EQ(desk.message_numbers(), c.message > 0 ? std::vector<int>{c.message} : std::vector<int>());
    }
  }
}

TEST_F(Registers, Meme) {
  EXPECT_TRUE(run_statement(record_of(fsc::meme, 12.5)));
  EXPECT_EQ(mem_value(run), 12.5);

  FscRecord record = record_of(fsc::meme);
  run.registers.mem1() = 3;
  EXPECT_TRUE(run_statement(record));
  EXPECT_EQ(mem_value(run), 3);
  EXPECT_EQ(mem1_value(run), 12.5);
  EXPECT_TRUE(run_statement(record));
  EXPECT_EQ(mem_value(run), 12.5);

  record.set(field::meme_register, 255);
  record.set(field::meme_operation, meme_operation::store);
  EXPECT_TRUE(run_statement(record));
  EXPECT_EQ(run.registers.m[255], 12.5);
  run.registers.m[255] = 8;
  record.set(field::meme_operation, meme_operation::load);
  EXPECT_TRUE(run_statement(record));
  EXPECT_EQ(mem_value(run), 8);
  record.set(field::meme_register, 0);  // the slot before M[1] is MEM1
  EXPECT_TRUE(run_statement(record));
  EXPECT_EQ(mem_value(run), 3);
  record.set(field::meme_operation, 7);  // any other operation exchanges
  run.registers.mem = 4;
  EXPECT_TRUE(run_statement(record));
  EXPECT_EQ(mem1_value(run), 4);
}

TEST_F(Registers, AccLoadsMem1) {
  const std::pair<const char*, double> cases[] = {
      {"10.0mV", 10}, {"-.5e1", -5}, {"V", 7}, {"", 7}, {"12", 12}};
  for (const auto& [text, value] : cases) {
    FscRecord record = record_of(fsc::acc);
    ASSERT_TRUE(record.set_text(field::memc_nominal, text));
    run.registers.mem = 7;
    EXPECT_TRUE(run_statement(record)) << text;
    EXPECT_EQ(mem1_value(run), value) << text;
  }
  FscRecord record = record_of(fsc::acc);
  ASSERT_TRUE(record.set_text(field::memc_nominal, "1e999V"));
  EXPECT_FALSE(run_statement(record));
  EXPECT_EQ(mem1_value(run), 12);
  EXPECT_EQ(run.stop_reason, stop_reason_bit::floating_point);
}

TEST_F(Registers, Clearing) {
  run.registers.mem = run.registers.m[0] = run.registers.m[255] = run.registers.l[32] = 1;
  run.registers.mem2 = "x";
  run.registers.s[1] = "kept";
  clear_registers(run);
  EXPECT_EQ(mem_value(run) + mem1_value(run) + run.registers.m[255] + run.registers.l[32], 0);
  EXPECT_EQ(mem2_text(run), "");
  EXPECT_EQ(run.registers.s[1], "kept");
}

}  // namespace
}  // namespace orvane
