#include "instruments/driver_table.h"

#include "config/startup_config.h"
#include "instruments/drivers/drivers.h"
#include "procedure/run/dispatch.h"
#include "settings/vset.h"
#include "support/desk.h"

namespace orvane {
namespace {

bool runs(Statement&) { return true; }
bool resets(RunState&, const DevAddress&) { return true; }
bool leave_calls = false;
bool leaves(RunState&, const DevAddress&) { return leave_calls = true; }

class DriverTable : public test::EngineTest {
 protected:
  ~DriverTable() override { static_cast<void>(drivers_install(all_drivers())); }
};

TEST_F(DriverTable, RowsAreCheckedAsTheyCome) {
  const DriverRow good{.code = 1, .statement = fsc::i3458, .run = runs, .reset = resets};
  DriverRow unknown = good, foreign = good, idle = good, unsafe = good, modifier = good;
  unknown.code = 9;
  foreign.code = 38;
  idle.run = nullptr;
  unsafe.reset = nullptr;
  modifier.code = 38;
  modifier.statement = fsc::i34401;
  modifier.store_modifier = runs;  // its statement has none
  for (const DriverRow& row : {unknown, foreign, idle, unsafe, modifier}) {
    desk.shown.clear();
    EXPECT_FALSE(drivers_install({&row, 1}));
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{30440});
    EXPECT_EQ(driver_of(row.code), nullptr);
  }
  const DriverRow twice[] = {good, good};
  EXPECT_FALSE(drivers_install(twice));
  EXPECT_TRUE(drivers_install({&good, 1}));
  EXPECT_TRUE(drivers_install(all_drivers()));
}

TEST_F(DriverTable, AModelWithoutADriverIsNamed) {
  struct Case {
    std::uint16_t statement;
    const char* name;
  };
  EXPECT_TRUE(drivers_install({}));
  dispatch_install(driver_handlers());
  for (const Case& c : {Case{fsc::mfc1, "MFC1"}, Case{fsc::mmfc1, "MFC1"}, Case{fsc::i8902, "HP 8902A"},
                        Case{fsc::n5530, "N5530"}, Case{fsc::mcal, "MCAL"}}) {
    desk.shown.clear();
    FscRecord record = fsc_record_new();
    record.set(field::code, c.statement);
    Statement statement{run, record};
    EXPECT_FALSE(dispatch_table().entry(c.statement).handler(statement));
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{2951});
    EXPECT_NE(desk.last_message().find(c.name), std::string::npos) << desk.last_message();
  }
  EXPECT_FALSE(dev_reset(run, 24, {}));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2951, 2951}));
  DeviceIdentity identity;
  EXPECT_TRUE(dev_identify(run, 24, {}, identity) && dev_leave(run, 24, {}, true));
  EXPECT_FALSE(dev_srq(run, 24, {}, 0x40));
}

TEST_F(DriverTable, TheSettingThenTheKeySaysWhetherAModelIsLeft) {
  DriverRow row{.code = 38, .statement = fsc::i34401, .run = runs, .leave = leaves, .reset = resets};
  struct Case {
    const char* setting;
    int key;
    bool force, left;
  };
  for (const Case& c : {Case{"", -1, false, false}, Case{"", 0, false, false}, Case{"", 1, false, true},
                        Case{"NO", 1, false, false}, Case{"1", 0, false, true}, Case{"NO", 0, true, true}}) {
    ASSERT_TRUE(drivers_install({&row, 1}));
    startup_config().PTF_HP34401A = static_cast<std::int16_t>(c.key);
    run.vset.clear();
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::vset);
    if (*c.setting != 0) {
      EXPECT_TRUE(vset_add(run, record, "PTF_HP34401A", c.setting));
    }
    leave_calls = false;
    EXPECT_TRUE(dev_leave(run, 38, {}, c.force));
    EXPECT_EQ(leave_calls, c.left) << c.setting << c.key;
  }
  startup_config().PTF_HP34401A = -1;
}

}  // namespace
}  // namespace orvane
