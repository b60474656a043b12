// MATH on accuracy files, the inventory, and the clock.
#include <gtest/gtest.h>

#include <cmath>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "state/debug.h"
#include "support/math_desk.h"
#include "values/accuracy/accuracy_scan.h"

namespace orvane {
namespace {

class AccuracyFunctions : public test::MathTest {
 protected:
  AccuracyFunctions() {
    startup_config() = StartupConfig();
    std::filesystem::create_directory(folder / "acc");
    startup_config().accdir = (folder / "acc").string();
    startup_config().config = (folder / "bench.txt").string();
    DeviceList list;
    list.generic.push_back({.name = "Meter", .address = {}, .aliases = {"M", ""}, .asset = "77"});
    set_device_list(std::move(list));
    write("inventory.txt", "{77}\nserial = S77\ninterval = 1 month\n");
    write("acc/meter.acc",
          "Begin Header\ninstrument = meter\nconfidence = 2.5\ninterval = 30 - 31 days\nend header\n"
          "MODE: V\n0 1 na na 10 0.5 na\n1 2 na na 10 na na\n2 3 na na na 0.5 na\n0 1 0 1 20 1 na\n4 5 na na "
          "bad 1 na\n");
  }
  ~AccuracyFunctions() override {
    set_device_list(std::nullopt);
    startup_config() = StartupConfig();
    acch_clear();
  }
};

TEST_F(AccuracyFunctions, PartsOfTheAccuracy) {
  struct Case {
    const char* text;
    double value;
  };
  for (const Case& c :
       {Case{"accv(\"Meter\", \"v\", 0.5)", 0.55}, Case{"accv(\"m\", \"v\", 1)", 0.6},
        Case{"accv2(\"Meter\", \"v\", 0.5, 1)", 1.1}, Case{"accvf(\"Meter\", \"v\", 2.5)", 0.5},
        Case{"accvf2(\"Meter\", \"v\", 0.5, 1)", 1}, Case{"accvg(\"Meter\", \"v\", 2)", 0.2},
        Case{"accvg2(\"Meter\", \"v\", 0.5, 1)", 0.1}, Case{"conf(\"METER\")", 2.5}})
    EXPECT_DOUBLE_EQ(number(c.text), c.value) << c.text;
  EXPECT_EQ(text("sn(\"77\")"), "S77");
  EXPECT_EQ(text("sn(\"78\")"), "");
}

TEST_F(AccuracyFunctions, Failures) {
  struct Case {
    const char* text;
    int first, last;
  };
  for (const Case& c :
       {Case{"M[1] = accv(\"X\", \"v\", 1)", 9472, 1896}, Case{"M[1] = conf(\"X\")", 9472, 1896},
        Case{"M[1] = accv(\"M\", \"w\", 1)", 1898, 1898}, Case{"M[1] = accv(\"M\", \"v\", 1.5)", 1899, 1899},
        Case{"M[1] = accv(\"M\", \"v\", 2.5)", 1899, 1899},
        Case{"M[1] = accvg(\"M\", \"v\", 2.5)", 1899, 1899},
        Case{"M[1] = accvf(\"M\", \"v\", 1.5)", 1899, 1899},
        Case{"M[1] = accv(\"M\", \"v\", 4.5)", 127, 1897}}) {
    EXPECT_EQ(message_of(c.text), c.first) << c.text;
    EXPECT_EQ(desk.message_numbers().back(), c.last) << c.text;
  }
  startup_config().acc_check = 0;
  EXPECT_EQ(message_of("M[1] = accv(\"M\", \"v\", 1)"), 1937);
}

TEST_F(AccuracyFunctions, TheDebugLogTellsWhatWasLookedUp) {
  ASSERT_TRUE(debug_log_open(folder.string()));
  set_debug_flags(debug_bit::api);
  EXPECT_DOUBLE_EQ(number("accvg2(\"Meter\", \"v\", 0.5, 1)"), 0.1);
  EXPECT_EQ(message_of("M[1] = accvf(\"M\", \"v\", 1.5)"), 1899);
  debug_log_close();
  const std::string log = contents((folder / "ovdebug.txt").string());
  EXPECT_NE(log.find("m_accvg2 : instrument name = \"Meter\"\nm_accvg2 : mode string     = \"v\"\n"
                     "m_accvg2 : lookup value #1  = 0.5\nm_accvg2 : lookup value #2  = 1\n"
                     "m_accvg2 : return value    = 0.1\n"),
            std::string::npos)
      << log;
  EXPECT_NE(log.find("m_accvf : lookup value    = 1.5\nm_accvf : return value    = 0\n"), std::string::npos)
      << log;
}

TEST_F(AccuracyFunctions, Times) {
  EXPECT_EQ(number("utime()"), 1700000000);
  EXPECT_EQ(text("ugdt(utime(), \"%F %T\")"), "2023-11-14 22:13:20");
  EXPECT_EQ(text("uldt(utime(), \"%F %T\")"), text("date(\"%F\") & \" \" & time()"));
  EXPECT_EQ(number("ctime(uldt(utime(), \"%F %T\"))"), 1700000000);
  EXPECT_EQ(text("ftime(-3661)"), "-01:01:01");
  EXPECT_EQ(message_of("M[1] = ctime(\"31.6.2026\")"), 448);
  EXPECT_NE(desk.last_message().find("31.6.2026"), std::string::npos);
  EXPECT_EQ(message_of("S[1] = date(\"%Q\")"), 31007);
  EXPECT_EQ(message_of("S[1] = ugdt(1e300, \"%F\")"), 31008);
  EXPECT_EQ(message_of("S[1] = uldt(1e18, \"%F\")"), 31008);
}

}  // namespace
}  // namespace orvane
