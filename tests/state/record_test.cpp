#include "state/fsc.h"
#include "state/fsc_record.h"
#include "state/pump.h"
#include "support/desk.h"

namespace orvane {
namespace {

TEST(FscCatalogue, NamesAndCodes) {
  for (const int none : {-1, 13, 84, 251, 255}) EXPECT_EQ(fsc_name(none), "") << none;
  EXPECT_EQ(fsc_code("disp"), fsc::disp);
  EXPECT_EQ(fsc_code("MeM+"), fsc::mem_plus);
  EXPECT_EQ(fsc_code("DISPL"), 0);
  EXPECT_EQ(fsc_code(""), 0);
  for (const FscRow& row : fsc_rows()) {
    EXPECT_EQ(fsc_code(row.name), row.code);
    EXPECT_EQ(fsc_name(fsc_ordinal(row.code)), row.name);
    const int class_bits = row.code & 0xFF00;
    EXPECT_TRUE(class_bits == 0x0800 || class_bits == 0x1800 || class_bits == 0x4800 || class_bits == 0x6800)
        << row.name;
    if (row.modifier != 0) {
      EXPECT_EQ(row.modifier & 0xFF00, 0x0800) << row.name;
    }
  }
  EXPECT_EQ(fsc_row(fsc::disp | code_class::test), nullptr);  // the same ordinal in another class
  EXPECT_EQ(fsc_modifier_name(fsc_code("3458")), "M3458");
  EXPECT_EQ(fsc_modifier_name(fsc_code("ACM1")), "ACMS");
  EXPECT_EQ(fsc_modifier_code(fsc_code("34401")), 0);
  EXPECT_EQ(fsc_line_limit(fsc::ieee), 999);
  EXPECT_EQ(fsc_line_limit(fsc::opbr), 32);
  EXPECT_EQ(fsc_line_limit(fsc::set), 8);
  EXPECT_EQ(fsc_line_limit(fsc::math), 1);
}

TEST(Record, SwitchesOfTheMatrixLieApart) {
  FscRecord record = fsc_record_new();
  for (int n = 1; n <= con_switch_limit; ++n) {
    EXPECT_FALSE(con_switch(record, n)) << n;
    ASSERT_TRUE(con_set_switch(record, n));
    EXPECT_TRUE(con_switch(record, n)) << n;
  }
  EXPECT_FALSE(con_set_switch(record, 0));
  EXPECT_FALSE(con_set_switch(record, con_switch_limit + 1));
  EXPECT_EQ(record.get(field::con_number), 0);  // the number between the spans is untouched
  EXPECT_EQ(record.code(), 0);
}

TEST(Record, TextsEndAtTheirSpan) {
  FscRecord record = fsc_record_new();
  record.bytes.fill('x');
  EXPECT_EQ(record.text(field::memc_nominal).size(), 16u);
  EXPECT_EQ(record.text(field::text).size(), 80u);
  EXPECT_FALSE(record.set_text(field::memc_nominal, "1234567890123456"));
  EXPECT_TRUE(record.set_text(field::memc_nominal, "123456789012345"));
  EXPECT_EQ(record.text(field::memc_nominal), "123456789012345");
  EXPECT_EQ(record.bytes[38], 'x');
}

TEST(Record, OnlySetUpLinesKeepTheirValues) {
  struct Case {
    std::uint8_t mod4, unit, flags;
    bool setup;
  };
  for (const Case& c : {Case{mod4_code::n, 0, 0, true}, Case{mod4_code::s, 6, 0, true},
                        Case{mod4_code::s, 0, 0, false}, Case{mod4_code::s, 6, QuantityField::keep, false},
                        Case{mod4_code::none, 6, 0, false}, Case{mod4_code::c, 6, 0, false}}) {
    FscRecord record = fsc_record_new();
    record.set(field::mod4, c.mod4);
    record.set(field::nominal, QuantityField{.unit = c.unit, .flags = c.flags});
    EXPECT_EQ(is_setup_line(record), c.setup);
  }
}

class Pump : public test::EngineTest {};

TEST_F(Pump, TheLoopTurnsAtMostOnceAMillisecond) {
  struct Turns : EventLoop {
    int count = 0;
    void turn() override { ++count; }
  } events;
  platform().events = &events;
  pump_messages();
  const int start = events.count;
  for (int i = 0; i < 10; ++i) pump_messages();
  EXPECT_EQ(events.count, start);
  clock.milliseconds += 1;
  for (int i = 0; i < 640; ++i) pump_messages_quick();
  EXPECT_EQ(events.count, start + 1);
  raise_abort();
  EXPECT_TRUE(pump_messages_quick());
  EXPECT_EQ(pumping_wait(1000), WaitEnd::stopped);
  EXPECT_EQ(clock.slept, 0u);
  clear_abort();
  clock.milliseconds = 0xFFFFFF00;
  EXPECT_EQ(pumping_wait(1000), WaitEnd::elapsed);
  EXPECT_EQ(clock.slept, 1000u);
}

}  // namespace
}  // namespace orvane
