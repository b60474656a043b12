#include "instruments/bench_file.h"

#include "support/desk.h"

namespace orvane {
namespace {

class BenchFile : public test::EngineTest {
 protected:
  DeviceList list;
  std::vector<BenchFault> faults;

  bool read(const std::string& text) {
    faults.clear();
    return bench_file_read(write("bench.txt", text), list, faults);
  }
  // "LINE NUMBER" of each fault, or the number alone where there is no line.
  std::vector<std::string> told() const {
    std::vector<std::string> all;
    for (const BenchFault& fault : faults) {
      const std::string head = (folder / "bench.txt").string() + ":";
      EXPECT_TRUE(fault.text.starts_with(head)) << fault.text;
      const std::string rest = fault.text.substr(head.size());
      const std::string line = rest.substr(0, rest.find_first_not_of("0123456789"));
      all.push_back((line.empty() ? "" : line + " ") + std::to_string(fault.number));
    }
    return all;
  }
};

TEST_F(BenchFile, TheExampleOfTheGuide) {
  ASSERT_TRUE(
      read("\xEF\xBB\xBF# place : model / options = aliases {asset}\r\n"
           "22      : hp 3458a /2/16 = DMM, VM {MY4500 1234}\n"
           "  1     : Agilent E4412A /3 {US37290}\n"
           "        : #133\n"
           "\n"
           "COM3    : HP 34401A = DVM2\n"
           "110     : \"Signal switch = a/b\" = SW {77}\n"
           ": Gauge blocks 0.5 to 100 mm {47\xC2\xB5}\n"))
      << faults.front().text;
  ASSERT_EQ(list.instruments.size(), 2U);
  const InstrumentRecord& meter = list.instruments[0];
  EXPECT_EQ(meter.code, 1);
  EXPECT_EQ(address_text(meter.address), "IEEE-488 22");
  EXPECT_EQ(meter.options, 0x8002);
  EXPECT_EQ(meter.aliases[0], "DMM");
  EXPECT_EQ(meter.aliases[1], "VM");
  EXPECT_EQ(meter.asset, "MY4500 1234");
  ASSERT_EQ(meter.slots.size(), 2U);
  EXPECT_EQ(meter.slots[0].number, 1);
  EXPECT_EQ(meter.slots[0].code, 131);
  EXPECT_EQ(meter.slots[0].options, 4);
  EXPECT_EQ(meter.slots[0].asset, "US37290");
  EXPECT_EQ(meter.slots[1].number, 0);
  EXPECT_EQ(meter.slots[1].code, 133);
  EXPECT_EQ(address_text(list.instruments[1].address), "RS232 COM3");
  ASSERT_EQ(list.generic.size(), 1U);
  EXPECT_EQ(list.generic[0].name, "Signal switch = a/b");
  EXPECT_EQ(address_text(list.generic[0].address), "IEEE-488 110");
  EXPECT_EQ(list.generic[0].aliases[0], "SW");
  ASSERT_EQ(list.manual.size(), 1U);
  EXPECT_EQ(list.manual[0].name, "Gauge blocks 0.5 to 100 mm");
  EXPECT_EQ(list.manual[0].asset, "47\xB5");
}

TEST_F(BenchFile, EveryFaultHasItsLineAndNumber) {
  std::string many;
  for (int i = 0; i < 9; ++i) many += " : #133\n";
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"22 HP 3458A\n", {"1 30420"}},
      {"31 : HP 3458A\n0 : HP 34401A\nCOM22 : HP 34401A\n22:1 : HP 3458A\n",
       {"1 30421", "2 30421", "3 30421", "4 30436"}},
      {"22 : HP 3458A 5}\n22 : \"open\n", {"1 30422", "2 30422"}},
      {"22 :\n: {1}\n", {"1 30423", "2 30423"}},
      {"22 : \"x\" y\n", {"1 30424"}},
      {"22 : HP 3458A = 12\n22 : HP 3458A = A, B, C\n22 : HP 3458A = TOOLONGG\n22 : HP 3458A = com1\n",
       {"1 30425", "2 30425", "3 30425", "4 30425"}},
      {"22 : HP 3458A /17\n", {"1 30426"}},
      {"22 : HP 3458A = A\n23 : HP 34401A = a\n", {"2 30427"}},
      {"22 : HP 3458A {1}\n: gauge {1}\n", {"2 30428"}},
      {" 1 : #133\n: gauge\n 1 : #133\n", {"1 30429", "3 30429"}},
      {"22 : HP 3458A\n x : #133\n", {"2 30430"}},
      {": gauge = G\n", {"1 30431"}},
      {"22 : HP 3458A\n 1 : #133\n 1 : #134\n", {"3 30432"}},
      {"22 : \"" + std::string(30, 'n') + "\"\n", {"1 30433"}},
      {std::string(396, 'x') + "\n", {"1 30435"}},
      {"22 : HP 3458A {" + std::string(61, 'a') + "}\n", {"1 30437"}},
      {"22 : HP 3458A\n23 : hp 3458a\n", {"2 2907"}},
      {"22 : HP 9999\n22 : #201\n", {"1 30436", "2 30436"}},
      {"22 : HP 3458A\n" + many, {"10 2919"}},
      // Places.
      {"COM1 : HP 3458A\n", {"1 2934"}},
      {"LEMOPRC1 : #24\n1 : PRC1\n", {"1 355"}},
      {"COMMFC1 : HP 34401A\n2 : MFC1\n", {"1 378"}},
      {"4 : #43\nCOMMFC2 : #44\nLEMOPRC1 : #45\n3 : MFC2\n4 : PRC1\n", {"1 2872"}},
      {"COM1 : #114\n", {"1 348"}},
      {"9 : #89\n", {"1 2968"}},
      {"9 : #93\n", {"1 495"}},
      // Ports and their calibrators.
      {"COMMFC1 : \"unit\"\nCOMMFC2 : \"unit 2\"\nCOMOSC1 : \"unit 3\"\nCOMOSC2 : \"unit 4\"\nLEMOPRC1 : "
       "\"unit 5\"\n",
       {"2937", "2956", "2957", "2958", "356"}},
      {"COMMFC1 : MFC1\n", {"3579"}},
      {"COMMFC2 : MFC1\nCOMMFC1 : MFC2\n", {"2497"}},
      {"COMMFC2 : MFC1\nCOMOSC1 : MFC2\n5 : OSC1\n", {}},
      {"3 : #3\n4 : #23\n", {"2936"}},
  };
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(read(text), expected.empty()) << text;
    EXPECT_EQ(told(), expected) << text;
  }
  std::string rows;
  for (int code = 133; code < 133 + 26; ++code) rows += "1 : #" + std::to_string(code) + "\n";
  for (int code = 70; code < 70 + 16; ++code) rows += "1 : #" + std::to_string(code) + "\n";
  for (int code = 12; code < 12 + 22; ++code) rows += "1 : #" + std::to_string(code) + "\n";
  EXPECT_TRUE(read(rows)) << faults.front().text;
  EXPECT_FALSE(read(rows + "2 : #160\n"));
  EXPECT_EQ(told(), std::vector<std::string>{"65 2911"});
  EXPECT_FALSE(bench_file_read((folder / "absent").string(), list, faults));
  EXPECT_EQ(faults.back().number, 30434);
}

TEST(Alias, WhatReadsAsAnAddressIsNone) {
  for (const char* good :
       {"A", "DMM", "a_1", "1234567", "31", "99", "131", "099", "0000", "COM17", "COMX", "LEMO"})
    EXPECT_TRUE(is_alias(good)) << good;
  for (const char* bad :
       {"", "1", "07", "30", "100", "130", "COM1", "com16", "COMMFC1", "LEMOPRC1", "a b", "12345678", "\xB5"})
    EXPECT_FALSE(is_alias(bad)) << bad;
}

}  // namespace
}  // namespace orvane
