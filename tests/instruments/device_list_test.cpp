#include "instruments/device_list.h"

#include "config/startup_config.h"
#include "instruments/bench_load.h"
#include "instruments/device_assets.h"
#include "support/bench_file.h"

namespace orvane {
namespace {

using Numbers = std::vector<int>;

class Devices : public test::BenchFileTest {
 protected:
  void bench(const std::string& text) {
    write("bench.txt", text);
    dev_note_written();
    ASSERT_TRUE(dev_reload_if_changed()) << desk.last_message();
  }
  Numbers said() {
    Numbers numbers = desk.message_numbers();
    desk.shown.clear();
    run.clear(run_flag::stop_test);
    return numbers;
  }
};

constexpr const char* house =
    "22 : HP 3458A = DMM {A1}\n"
    "  1 : Agilent E4412A {A2}\n"
    "    : Agilent E4413A\n"
    "105 : HP 33120A\n"
    "23 : Agilent E4419B\n"
    "COM3 : HP 34401A\n"
    "7 : \"Switch\" = SW {A3}\n"
    ": Gauge blocks {A4}\n"
    ": Weights\n";

TEST_F(Devices, LocatesByCodeThroughSubstitutesAndSaysWhyNot) {
  bench(house);
  DevAddress address;
  ASSERT_TRUE(dev_locate(run, 1, address));
  EXPECT_EQ(address.bus.primary, 22);
  EXPECT_EQ(run.ieee.last_standard.bus.primary, 22);
  EXPECT_EQ(device_list().instruments[0].flags, device_flag::used);
  ASSERT_TRUE(dev_locate(run, 38, address));
  EXPECT_EQ(address.port, 3);
  EXPECT_EQ(run.ieee.last_standard.bus.primary, 22) << "a serial standard raises no service request";

  EXPECT_FALSE(dev_locate(run, 0, address));
  EXPECT_FALSE(dev_locate(run, 201, address));
  EXPECT_FALSE(dev_locate(run, 129, address));
  EXPECT_EQ(said(), (Numbers{2913, 2913, 2908}));
  dev_substitute(129, 130);
  ASSERT_TRUE(dev_locate(run, 129, address));
  EXPECT_EQ(address.bus.primary, 23);
  dev_withdraw(130);
  EXPECT_FALSE(dev_locate(run, 129, address));
  EXPECT_EQ(said(), (Numbers{2905})) << "the substitute's own error";
}

TEST_F(Devices, AddressesOfABoard) {
  bench(house);
  const auto at = [](int board, int primary) {
    return DevAddress{DeviceInterface::ieee488,
                      {BusAddress::board_valid | BusAddress::primary_valid, static_cast<std::uint8_t>(board),
                       static_cast<std::uint8_t>(primary), 0},
                      0};
  };
  EXPECT_EQ(dev_code_at(at(0, 22)), 1);
  EXPECT_EQ(dev_code_at(at(1, 5)), 91);
  EXPECT_EQ(dev_code_at(at(1, 22)), 0);
  EXPECT_EQ(dev_code_at({DeviceInterface::serial, {}, 3}), 38);
  std::vector<BusAddress> list;
  ASSERT_TRUE(dev_addresses_on_board(0, 3, never_polled_code, list));
  EXPECT_EQ(list.size(), 3U) << "generic instruments too";
  EXPECT_FALSE(dev_addresses_on_board(0, 2, 0, list));
  EXPECT_EQ(said(), (Numbers{2901}));
  dev_withdraw(1);
  EXPECT_EQ(dev_code_at(at(0, 22)), 0);
  std::size_t next = 0, count = 0;
  while (dev_next_configured(next) != nullptr) ++count;
  EXPECT_EQ(count, 3U);
}

TEST_F(Devices, ARunUsesOnlyTheSlotsThatItRequired) {
  bench(house);
  EXPECT_EQ(dev_slots(1).size(), 2U);
  EXPECT_FALSE(dev_use_slot(run, 1, 131, 1));
  EXPECT_FALSE(dev_use_slot(run, 1, 132, 0));
  EXPECT_EQ(said(), (Numbers{385, 386}));
  dev_require_slots(1, 131, 0);
  EXPECT_TRUE(dev_use_slot(run, 1, 131, 1));
  dev_withdraw_slot(1, 132, 0);
  EXPECT_EQ(dev_slots(1), (std::vector<std::pair<std::uint16_t, std::uint16_t>>{{131, 1}}));
}

TEST_F(Devices, AStandardIsNotCalibratedWithItself) {
  struct Case {
    const char* asset;
    int error, question;  // 0: no match
  };
  bench(house);
  dev_set_flags(1, device_flag::required);
  dev_require_slots(1, 131, 0);
  device_list_to_change()->generic[0].flags |= device_flag::required;
  for (const Case& c : {Case{"A1", 324, 327}, Case{"A2", 324, 327}, Case{"A3", 325, 328},
                        Case{"A4", 326, 329}, Case{"A5", 0, 0}, Case{"", 0, 0}}) {
    startup_config().self_cal = 0;
    EXPECT_EQ(dev_self_calibration_check(run, c.asset), c.error == 0) << c.asset;
    EXPECT_EQ(said(), c.error == 0 ? Numbers{} : Numbers{c.error}) << c.asset;
    startup_config().self_cal = 1;
    for (const int code : {answer::yes, answer::no}) {
      if (c.question == 0) continue;
      desk.reply(code);
      EXPECT_EQ(dev_self_calibration_check(run, c.asset), code == answer::yes) << c.asset;
      desk.shown.clear();
    }
    startup_config().self_cal = 2;
    EXPECT_TRUE(dev_self_calibration_check(run, c.asset)) << c.asset;
    EXPECT_TRUE(desk.shown.empty() && desk.replies.empty()) << c.asset;
  }
}

TEST_F(Devices, TheFrequencyReferenceIsOnTheBench) {
  bench(house);
  struct Case {
    const char* name;
    int missing, withdrawn;
  };
  for (const Case& c : {Case{"", 2336, 0}, Case{"HP 5335A", 2337, 0}, Case{"hp 3458a", 0, 2338},
                        Case{"Switch", 0, 2339}, Case{"WEIGHTS", 0, 2340}}) {
    startup_config().FreqRefDevName = c.name;
    EXPECT_EQ(dev_use_frequency_reference(run), c.missing == 0) << c.name;
    EXPECT_EQ(said(), c.missing == 0 ? Numbers{} : Numbers{c.missing}) << c.name;
  }
  dev_set_flags(0, device_flag::withdrawn);
  for (const auto& [name, number] : {std::pair{"HP 3458A", 2338}, {"Switch", 2339}, {"Weights", 2340}}) {
    startup_config().FreqRefDevName = name;
    EXPECT_FALSE(dev_use_frequency_reference(run)) << name;
    EXPECT_EQ(said(), Numbers{number}) << name;
  }
}

TEST_F(Devices, AnAssetIsWrittenIntoItsLineOnce) {
  bench(std::string("# the house\r\n\r\n") + house);
  struct Case {
    AssetKind kind;
    const char *name, *asset, *host;
    int message;
  };
  const std::string too_long(61, 'x');
  for (const Case& c : {Case{AssetKind::instrument, "HP 33120A", "", "", 2484},
                        Case{AssetKind::instrument, "HP 33120A", too_long.c_str(), "", 2485},
                        Case{AssetKind::instrument, "", "B1", "", 2486},
                        Case{AssetKind::instrument, "HP 3458A", "B1", "", 2488},
                        Case{AssetKind::instrument, "Switch", "B1", "", 2489},
                        Case{AssetKind::generic, "Weights", "B1", "", 2490},
                        Case{AssetKind::manual, "Nothing", "B1", "", 2491},
                        Case{static_cast<AssetKind>(4), "x", "B1", "", 2492},
                        Case{AssetKind::instrument, "HP 33120A", "A4", "", 30981},
                        Case{AssetKind::instrument, "HP 33120A", "B1", "", 0},
                        Case{AssetKind::manual, "weights", "B2", "", 0},
                        Case{AssetKind::instrument, "Agilent E4413A", "B3", "HP 3458A", 0},
                        Case{AssetKind::manual, "HP 34401A", "B4", "", 0}}) {
    EXPECT_EQ(dev_set_asset(c.kind, c.name, c.asset, c.host), c.message == 0) << c.name << c.asset;
    EXPECT_EQ(said(), c.message == 0 ? Numbers{} : Numbers{c.message}) << c.name << c.asset;
  }
  const std::string text = contents(bench_path);
  EXPECT_TRUE(text.starts_with("# the house\r\n\r\n22 : HP 3458A = DMM {A1}\n"));
  for (const char* line : {"105 : HP 33120A {B1}\n", ": Weights {B2}\n", "    : Agilent E4413A {B3}\n",
                           "COM3 : HP 34401A {B4}\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line << text;
  EXPECT_EQ(device_list().manual[1].asset, "B2");
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_EQ(device_list().instruments[1].asset, "B1") << "as the file has it";
}

}  // namespace
}  // namespace orvane
