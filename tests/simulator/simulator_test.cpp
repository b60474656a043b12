#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>

#include "../../simulator/bench_file.h"
#include "../../simulator/scpi_instrument.h"

namespace gpibsim {
namespace {

std::string ask(Instrument& instrument, std::string_view message) {
  instrument.take(message, true);
  bool ended = false;
  std::string reply = instrument.give(4096, ended);
  return std::string(trim(reply));
}

Instrument& only(Bench& bench) { return *bench.bus.begin()->second; }
Instrument& at(Bench& bench, int primary) { return *bench.bus.at({0, primary}); }
double number(const std::string& text) { return std::strtod(text.c_str(), nullptr); }

Bench made(const std::string& text) {
  Bench bench;
  std::string reason;
  EXPECT_TRUE(read_bench(text, bench, reason)) << reason;
  return bench;
}

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
      {"[22] HP3458A\nfault = lost\n", "2: no such fault: \"lost\""},
      {"[10] HP33120A\nwire = 22 75\n", "2: \"ADDRESS\" or \"ADDRESS 50\" is expected"},
      {"# one\n[10] HP33120A\nwire = 22\n", "2: the wire leads to no instrument on the bus"},
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

TEST(SimulatedBench, HeadersMatchTheirNodes) {
  struct Case {
    const char *given, *node;
    bool matches;
  };
  for (const Case& c : {Case{"VOLT", "VOLTage[:DC]", true}, Case{"VOLTAGE:DC", "VOLTage[:DC]", true},
                        Case{"VOLTA", "VOLTage[:DC]", false}, Case{"VOLT:AC", "VOLTage[:DC]", false},
                        Case{"SENS1:VOLT:RANG", "[SENSe:]VOLTage[:DC]:RANGe[:UPPer]", true},
                        Case{"VOLT:DC:RANG:UPP", "[SENSe:]VOLTage[:DC]:RANGe[:UPPer]", true},
                        Case{"VOLT:RANG:AUTO", "[SENSe:]VOLTage[:DC]:RANGe[:UPPer]", false},
                        Case{"", "VOLTage", false}, Case{"DC", "VOLTage[:DC]", false}})
    EXPECT_EQ(header_matches(c.given, c.node), c.matches) << c.given << " " << c.node;
}

TEST(SimulatedBench, TheScpiMetersMeasureRangeAndOverload) {
  struct Case {
    const char* message;
    double reading;
  };
  for (const char* model : {"HP34401A", "K2000", "K2001", "K2002"}) {
    Bench bench =
        made(std::string("[1] ") + model + "\nserial = 77\nDCV.input = 5 : 5.0004\nACV.applied = 2\n");
    Instrument& meter = only(bench);
    EXPECT_NE(ask(meter, "*IDN?").find(",77,"), std::string::npos);
    for (const Case& c : {Case{"CONF:VOLT:DC 5;:READ?", 5.0004}, Case{"MEAS:VOLT:AC?", 2},
                          Case{"FUNC \"VOLT:AC\";:VOLT:AC:RANG 1;:INIT;:FETC?", 9.9e37},
                          Case{"VOLT:AC:RANG:AUTO ON;:READ?", 2},
                          Case{":SENS:FUNC 'RES';:SENS:RES:NPLC 10;RANG 100;:READ?", 100},
                          Case{"*RST;:CONF:FRES 50;:READ?", 50}})
      EXPECT_NEAR(number(ask(meter, c.message)), c.reading, 1e-9 * c.reading) << model << " " << c.message;
    EXPECT_EQ(ask(meter, "SYST:ERR?"), "0,\"No error\"") << model;
    meter.take("FUNC \"LENGTH\";:CONF:VOLT:DC 5000;:NONSENSE", true);
    EXPECT_EQ(ask(meter, "SYST:ERR?;ERR?;ERR?").substr(0, 4), "-224");
    EXPECT_EQ(ask(meter, "*RST;*CLS;FETC?"), "");
    EXPECT_EQ(ask(meter, "SYST:ERR?").substr(0, 4), "-230");
  }
  Bench nanovolt = made("[1] HP34420A\n");
  EXPECT_EQ(ask(only(nanovolt), "*CLS;:MEAS:VOLT:AC?"), "") << "it has no AC";
}

TEST(SimulatedBench, ASourceIsSeenByTheMetersThatAreWiredToIt) {
  Bench bench = made(
      "[10] HP33120A\namplitude.error = 1e-3\nfrequency.error = 1e-5\nwire = 22\nwire = 23 50\n"
      "[22] HP3458A\n[23] HP34401A\n");
  at(bench, 10).take("OUTP:LOAD 50;:FUNC:SHAP SIN;:FREQ 5000;:VOLT 2;:VOLT:OFFS 0.25", true);
  EXPECT_TRUE(at(bench, 10).is_live());
  EXPECT_NEAR(number(ask(at(bench, 22), "ACV 1;TRIG SGL")), 2 * 2 * 1.001 / std::sqrt(8.0), 1e-6);
  EXPECT_NEAR(number(ask(at(bench, 22), "DCV 1;TRIG SGL")), 0.5, 1e-9);
  EXPECT_NEAR(number(ask(at(bench, 22), "FREQ 2;TRIG SGL")), 5000.05, 1e-4);
  EXPECT_NEAR(number(ask(at(bench, 23), "MEAS:VOLT:AC?")), 2 * 1.001 / std::sqrt(8.0), 1e-6);
  EXPECT_NEAR(number(ask(at(bench, 23), "MEAS:PER?")), 1 / 5000.05, 1e-12);
  // High impedance: what is set is what an open output gives.
  at(bench, 10).take("*RST;OUTP:LOAD INF;:VOLT:UNIT VRMS;:FUNC:SHAP SQU;:VOLT 3", true);
  EXPECT_NEAR(number(ask(at(bench, 22), "ACV 3;TRIG SGL")), 3 * 1.001, 1e-6);
  EXPECT_NEAR(number(ask(at(bench, 10), "VOLT?;:VOLT:UNIT VPP;:VOLT?")), 3, 1e-6);
  at(bench, 10).take("*CLS;VOLT 21;:FUNC:SHAP TRI;:FREQ 2E5", true);
  EXPECT_EQ(ask(at(bench, 10), "SYST:ERR?;:SYST:ERR?").substr(0, 4), "-222");
  at(bench, 10).take("*RST", true);
  EXPECT_FALSE(at(bench, 10).is_live());
}

TEST(SimulatedBench, SettingsComeBackFromTheirState) {
  const std::string text =
      "[4] SCPI\nsetting = SOURce:VOLTage 0 -10 10\nsetting = OUTPut:STATe 0 0 1\n[10] HP33120A\n";
  Bench bench = made(text), again = made(text);
  at(bench, 4).take("SOUR:VOLT 7;:OUTP:STAT 1", true);
  at(bench, 10).take("APPL:SQU 2E3,4,0.5", true);
  for (const int place : {4, 10}) {
    EXPECT_TRUE(at(bench, place).is_live());
    at(again, place).restore(at(bench, place).state());
    EXPECT_EQ(at(again, place).state(), at(bench, place).state());
    EXPECT_TRUE(at(again, place).is_live());
    EXPECT_FALSE(at(again, place).has_answer());
  }
}

TEST(SimulatedBench, FaultsOnDemand) {
  const auto meter = [](const std::string& fault) {
    return made("[1] SCPI\nreading = READ 5 0\nfault = " + fault + "\n");
  };
  bool ended = false;
  Bench silent = meter("silent 1 1");
  EXPECT_EQ(ask(only(silent), "READ?"), "5");
  EXPECT_EQ(ask(only(silent), "READ?"), "");
  EXPECT_EQ(ask(only(silent), "READ?"), "5");

  Bench late = meter("late 0 1");
  EXPECT_EQ(ask(only(late), "*IDN?"), "");
  EXPECT_EQ(trim(only(late).give(100, ended)), "ORVANE,SCPI,0,1.0") << "the late answer";
  Bench cleared = meter("late 0 1");
  EXPECT_EQ(ask(only(cleared), "*IDN?"), "");
  only(cleared).clear();
  EXPECT_EQ(ask(only(cleared), "READ?"), "5");

  Bench babbling = meter("babbling");
  only(babbling).take("READ?", true);
  EXPECT_EQ(only(babbling).give(10, ended), "xxxxxxxxxx");
  EXPECT_FALSE(ended);
  Bench garbage = meter("garbage");
  EXPECT_NE(ask(only(garbage), "READ?"), "5");
  Bench stuck = meter("stuck 1");
  only(stuck).take("*CLS", true);
  EXPECT_FALSE(only(stuck).requests_service());
  only(stuck).take("*CLS", true);
  EXPECT_TRUE(only(stuck).requests_service());
  EXPECT_EQ(only(stuck).serial_poll(), 0);
  Bench unplugged = meter("unplugged 1");
  only(unplugged).take("*CLS", true);
  EXPECT_FALSE(only(unplugged).is_unplugged());
  only(unplugged).take("*CLS", true);
  EXPECT_TRUE(only(unplugged).is_unplugged());
}

TEST(SimulatedBench, ACalibratorCarriesBytesToTheUnitOnItsBack) {
  Bench bench = made("[5] MFC1\nidentity = U,UNIT,1,2\nsetting = VOLTage 3 0 10\n");
  Instrument& host = only(bench);
  EXPECT_EQ(ask(host, "*IDN?"), "ORVANE,0,MFC1,2.6");
  EXPECT_EQ(ask(host, "UUT_SET 9600,NOSTALL,DBIT8,SBIT1,PNONE;*OPC?"), "1");
  EXPECT_EQ(ask(host, "ISR?"), "0");
  host.take("UUT_SEND #211VOLT 4;*IDN", true);
  host.take("UUT_SEND #12?\r", true);
  EXPECT_EQ(ask(host, "ISR?"), "256");
  EXPECT_EQ(ask(host, "UUT_RECV?"), "#212U,UNIT,1,2");
  host.take("UUT_SENDB 86,79,76,84,63,13", true);
  EXPECT_EQ(ask(host, "UUT_RECV?").substr(0, 4), "#134");
  host.take("UUT_SENDB 86,79,76,84,63,13", true);
  host.take("UUT_FLUSH", true);
  EXPECT_EQ(ask(host, "ISR?"), "0");
}

}  // namespace
}  // namespace gpibsim
