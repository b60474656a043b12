#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "../../simulator/bench_file.h"

namespace gpibsim {
namespace {

std::string ask(Instrument& instrument, std::string_view message) {
  instrument.take(message, true);
  bool ended = false;
  std::string reply = instrument.give(4096, ended);
  return std::string(trim(reply));
}

Instrument& only(Bench& bench) { return *bench.begin()->second; }

TEST(SimulatedBench, FaultsOfTheDescriptionNameTheirLine) {
  struct Case {
    const char* text;
    const char* reason;
  };
  const Case cases[] = {
      {"seed = 1\n", "1: an instrument's section, \"[22] HP3458A\", is expected"},
      {"[22] HP3458A\n\nDCV.gain = x\n", "3: a number is expected"},
      {"[22] HP3458A\nDCV.input = 10\n", "2: \"EXPECTED : APPLIED\" is expected"},
      {"[22] HP3458A\nXYZ.gain = 1\n", "2: no such key: \"XYZ.gain\""},
      {"[22] OTHER\n", "1: no such model: \"OTHER\""},
      {"[31] SCPI\n", "1: an address is 0 to 30, or 100 to 130"},
      {"[4] SCPI\n[4] SCPI\n", "2: the address stands twice"},
      {"[4] SCPI\nsetting = VOLT 1\n", "2: a path and its numbers are expected"},
      {"[x] SCPI\n", "1: \"[ADDRESS] MODEL\" is expected"},
  };
  for (const Case& c : cases) {
    Bench bench;
    std::string reason;
    EXPECT_FALSE(read_bench(c.text, bench, reason)) << c.text;
    EXPECT_EQ(reason, c.reason);
  }
}

TEST(SimulatedBench, TheMeterReadsWhatIsAppliedWithItsError) {
  Bench bench;
  std::string reason;
  ASSERT_TRUE(read_bench("[22] HP3458A\nDCV.gain = 1e-5\nDCV.offset = 1e-6\nDCV.input = 10 : 10.002\n", bench,
                         reason));
  Instrument& meter = only(bench);
  EXPECT_EQ(ask(meter, "END ALWAYS;ID?"), "HP3458A");
  EXPECT_NEAR(std::strtod(ask(meter, "DCV 10;TRIG HOLD;TRIG SGL").c_str(), nullptr), 10.002 * 1.00001 + 1e-6,
              1e-7);
  EXPECT_NEAR(std::strtod(ask(meter, "ACV 3;TRIG SGL").c_str(), nullptr), 3.0, 1e-8);
  EXPECT_EQ(ask(meter, "TRIG HOLD"), "");
  EXPECT_EQ(ask(meter, "ERR?"), "0");
}

TEST(SimulatedBench, NoiseIsTheSameForTheSameSeed) {
  const auto readings = [](int seed) {
    Bench bench;
    std::string reason, out;
    EXPECT_TRUE(
        read_bench("[22] HP3458A\nseed = " + std::to_string(seed) + "\nDCV.noise = 1e-3\n", bench, reason));
    for (int i = 0; i < 50; ++i) out += ask(only(bench), "DCV 1;TRIG SGL") + " ";
    return out;
  };
  EXPECT_EQ(readings(1), readings(1));
  EXPECT_NE(readings(1), readings(2));
}

TEST(SimulatedBench, TheMetersStatusByteAndErrors) {
  Bench bench;
  std::string reason;
  ASSERT_TRUE(read_bench("[22] HP3458A\n", bench, reason));
  Instrument& meter = only(bench);
  meter.take("RQS 32;TRIG HOLD", true);
  EXPECT_EQ(meter.serial_poll() & 0xE0, 0);
  meter.take("TRIG SGL", true);
  EXPECT_EQ(meter.serial_poll() & 0xE0, 0x80);  // a reading is ready; service is asked for errors only
  meter.take("NONSENSE;DCV 5000", true);
  EXPECT_TRUE(meter.requests_service());
  EXPECT_EQ(meter.serial_poll() & 0x60, 0x60);
  EXPECT_FALSE(meter.requests_service());  // the poll took the request back
  meter.clear();
  EXPECT_EQ(ask(meter, "ERR?"), "72");
  EXPECT_EQ(ask(meter, "ERR?"), "0");
}

TEST(SimulatedBench, TheGenericInstrumentKeepsIeee488Dot2) {
  Bench bench;
  std::string reason;
  ASSERT_TRUE(
      read_bench("[4] SCPI\nidentity = A,B,0,1\nsetting = SOURce:VOLTage 0 -10 10\n"
                 "setting = SOURce:FREQuency 50 1 1000\nreading = MEASure:VOLTage:DC 5 0\n",
                 bench, reason));
  Instrument& source = only(bench);
  EXPECT_EQ(ask(source, "*IDN?"), "A,B,0,1");
  EXPECT_EQ(ask(source, ":sour:volt 2.5;FREQ 60;:SOURCE:VOLTAGE?;FREQ?"), "2.5;60");
  EXPECT_EQ(ask(source, "MEAS:VOLT:DC?"), "5");
  EXPECT_EQ(ask(source, "*CLS;*ESE 60;*SRE 32;*OPC?"), "1");
  source.take("VOLT 1", true);  // not below SOURce
  EXPECT_TRUE(source.requests_service());
  EXPECT_EQ(source.serial_poll() & 0x60, 0x60);
  EXPECT_FALSE(source.requests_service());
  EXPECT_EQ(ask(source, "*ESR?"), "32");
  EXPECT_EQ(ask(source, "SYST:ERR?"), "-113,\"Undefined header\"");
  EXPECT_EQ(ask(source, "SYST:ERR?"), "0,\"No error\"");
  source.take("SOUR:VOLT 11;VOLT x;VOLT", true);
  EXPECT_EQ(ask(source, "SYST:ERR?;ERR?;ERR?"),
            "-222,\"Data out of range\";-104,\"Data type error\";-109,\"Missing parameter\"");
  EXPECT_EQ(ask(source, "*RST;SOUR:VOLT?"), "0");
  EXPECT_EQ(ask(source, "SOUR:VOLT 1"), "");
  EXPECT_EQ(ask(source, "SYST:ERR?"), "-420,\"Query UNTERMINATED\"");
}

}  // namespace
}  // namespace gpibsim
