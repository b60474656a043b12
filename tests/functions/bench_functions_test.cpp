// MATH on the bench: bytes of binary reads, assets and calibrations, connections, the watch over voltages, the slew
// dialog, the climate; and that no function of the library is missing.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "config/startup_config.h"
#include "functions/slew_functions.h"
#include "instruments/calibration_records.h"
#include "instruments/device_list.h"
#include "instruments/instrument_names.h"
#include "instruments/inventory.h"
#include "instruments/room_climate.h"
#include "instruments/safety.h"
#include "state/run_variables.h"
#include "support/math_desk.h"

namespace orvane {
namespace {

struct NumberCase {
  const char* text;
  double value;
};
struct TextCase {
  const char* text;
  const char* value;
};
struct FaultCase {
  const char* text;
  int message;
};

class BenchFunctions : public test::MathTest {
 protected:
  BenchFunctions() {
    startup_config() = StartupConfig();
    startup_config().config = (folder / "bench.txt").string();
    write("inventory.txt", "{77}\nserial = S77\n4201 = bench meter\n");
    DeviceList list;
    InstrumentRecord meter;
    meter.code = instrument_code("HP 3458A");
    meter.asset = "3458";
    meter.aliases = {"DMM", ""};
    InstrumentSlot slot;
    slot.code = meter.code;
    slot.asset = "plug-in";
    meter.slots = {slot};
    list.instruments.push_back(meter);
    list.generic.push_back({.name = "Meter", .address = {}, .aliases = {"M", "K"}, .asset = "77"});
    list.generic.push_back({.name = "Source", .address = {}, .aliases = {"", ""}, .asset = ""});
    list.manual.push_back({"meter", 0, "78", 0});
    set_device_list(std::move(list));
  }
  ~BenchFunctions() override {
    set_device_list(std::nullopt);
    set_calibration_records(nullptr);
    set_safety_watch(nullptr);
    set_slew_dialog(nullptr);
    set_room_sensor(nullptr);
    startup_config() = StartupConfig();
  }

  void expect_numbers(std::initializer_list<NumberCase> cases) {
    for (const NumberCase& c : cases)
      EXPECT_EQ(number(c.text), c.value) << c.text << " " << desk.last_message();
  }
  void expect_texts(std::initializer_list<TextCase> cases) {
    for (const TextCase& c : cases) EXPECT_EQ(text(c.text), c.value) << c.text << " " << desk.last_message();
  }
  void expect_faults(std::initializer_list<FaultCase> cases) {
    for (const FaultCase& c : cases) EXPECT_EQ(message_of(c.text), c.message) << c.text;
  }
};

TEST_F(BenchFunctions, BytesOfTheLatestBinaryRead) {
  expect_numbers({{"brn()", 0}, {"brb(4096)", 0}});
  run.read_block = std::string("A\0\x7F\xFF\x80\n~ ", 8);
  expect_numbers({{"brn()", 8},
                  {"brb(1)", 65},
                  {"brb(4)", 255},
                  {"brb(9)", 0},
                  {"brw(3)", 0x7FFF},
                  {"brw(4)", 0xFF80},
                  {"brw(8)", 0x2000},
                  {"bri(1)", 0x41007FFF},
                  {"bri(4)", 0xFF800A7E},
                  {"bri(4093)", 0}});
  expect_texts({{"brs(1,8)", "A<NUL><DEL><FF><80><LF>~ "},
                {"brx(1,4)", "41,00,7F,FF"},
                {"brx(4096,1)", "00"},
                {"brs(2,1)", "<NUL>"}});
  EXPECT_EQ(text("brs(1,4096)").size(), 25 + 5 * 4088u);
  expect_faults({{"M[1]=brb(0)", 1613},
                 {"M[1]=brb(4097)", 1613},
                 {"M[1]=brw(4096)", 1613},
                 {"M[1]=bri(4094)", 1613},
                 {"S[1]=brs(0,1)", 1613},
                 {"S[1]=brx(4097,1)", 1613},
                 {"S[1]=brs(1,0)", 1614},
                 {"S[1]=brx(1,4097)", 1614},
                 {"S[1]=brx(4096,2)", 1614}});
  EXPECT_EQ(message_of("M[1]=bri(4094)"), 1613);
  EXPECT_NE(desk.last_message().find("bri: the byte 4094"), std::string::npos) << desk.last_message();
}

TEST_F(BenchFunctions, NamesAndAssets) {
  run_variable_set(run, "UUT_CODE$", "U-1");
  expect_texts({{"asset(\"METER\")", "77"},
                {"asset(\"k\")", "77"},
                {"asset(\"Source\")", ""},
                {"asset(\"\")", ""},
                {"asset(\"another\")", ""},
                {"assetc(\"Meter\",1)", "77"},
                {"assetc(\"Meter\",2)", "78"},
                {"assetc(\"Meter\",3)", ""},
                {"assetc(\"Meter\",0)", ""},
                {"instr(\"m\")", "Meter"},
                {"instr(\"another\")", ""},
                {"instr(\"dmm\")", "HP 3458A"},
                {"asset(\"dmm\")", "3458"},
                {"assetc(\"hp 3458a\",2)", "plug-in"},
                {"inv(\"77\",4206)", "S77"},
                {"inv(\"77\",4201)", "bench meter"},
                {"inv(\"77\",4202)", ""},
                {"inv(\"99\",4201)", ""},
                {"uut()", "U-1"}});
  expect_faults({{"S[1]=instr(S[9])", 9998},
                 {"S[1]=instr(\"\")", 9999},
                 {"S[1]=inv(\"77\",2301)", 514},
                 {"S[1]=inv(\"77\",0)", 514},
                 {"S[1]=inv(\"77\",4260)", 515},
                 {"S[1]=inv(\"77\",40000)", 513}});
}

RecordAnswer count_of(std::string_view asset, long& count) {
  if (asset == "broken") return RecordAnswer::failed;
  if (asset == "memory") return RecordAnswer::no_memory;
  count = asset == "new" ? 0 : asset == "many" ? 32768 : 3;
  return RecordAnswer::found;
}
RecordAnswer field_of(std::string_view asset, int n, int field, std::string& text) {
  text = std::string(asset) + " " + std::to_string(n) + " " + std::to_string(field);
  return field == 2302 ? RecordAnswer::failed : field == 2303 ? RecordAnswer::no_memory : RecordAnswer::found;
}

TEST_F(BenchFunctions, Calibrations) {
  constexpr const char* fields[] = {"S[1]=cal(\"\",1,2301)", "S[1]=cal(\"77\",1,2300)",
                                    "S[1]=cal(\"77\",1,2397)", "S[1]=cal(\"77\",0,2301)"};
  const auto expect_arguments = [&] {
    expect_faults({{"M[1]=ncal(\"\")", 6065},
                   {fields[0], 6065},
                   {fields[1], 6066},
                   {fields[2], 6066},
                   {fields[3], 6069}});
  };
  expect_arguments();
  expect_faults({{"M[1]=ncal(\"77\")", 31160}, {"S[1]=cal(\"77\",1,2301)", 31160}});
  constexpr CalibrationRecords records = {count_of, field_of};
  set_calibration_records(&records);
  expect_arguments();
  expect_numbers({{"ncal(\"77\")", 3}, {"ncal(\"new\")", 0}});
  expect_texts({{"cal(\"77\",1,2301)", "77 1 2301"},
                {"cal(\"77\",3,2396)", "77 3 2396"},
                {"cal(\"77\",-1,2301)", "77 3 2301"},
                {"cal(\"77\",-3,2301)", "77 1 2301"}});
  expect_faults({{"M[1]=ncal(\"many\")", 6067},
                 {"M[1]=ncal(\"broken\")", 6071},
                 {"S[1]=cal(\"memory\",1,2301)", 6073},
                 {"S[1]=cal(\"many\",1,2301)", 6067},
                 {"S[1]=cal(\"new\",1,2301)", 6068},
                 {"S[1]=cal(\"77\",4,2301)", 6070},
                 {"S[1]=cal(\"77\",-4,2301)", 6070},
                 {"S[1]=cal(\"77\",1,2302)", 6072},
                 {"S[1]=cal(\"77\",1,2303)", 6073}});
}

TEST_F(BenchFunctions, TextsOfConnections) {
  expect_texts({{"cm(8,\"4 mm\")", ""},
                {"cm(8,\"BNC\")", "4 mm"},
                {"cm(0,\"all\")", ""},
                {"cm(8,S[9])", "all"},
                {"cm(1,\"x\")", "all"},
                {"cm(8,\"\")", ""}});
  EXPECT_EQ(run.connections.conditions[1], "x");
  EXPECT_EQ(run.connections.conditions[7], "all");
  expect_faults({{"cm(9,\"x\")", 1469}, {"cm(-1,\"x\")", 1469}, {"cm(1,\"y\")", 0}});
}

std::vector<std::string> watched;
bool apply_watched(RunState&, std::string_view name, int channel, const LiveOutput& output) {
  EXPECT_EQ(channel, 0);
  watched.push_back(formatted("%s %g %d %d %d %d", name, output.level, int{output.level_prefix},
                              int{output.level_unit}, int{output.waveform}, int{output.frequency_unit}));
  return name != "Source";
}
bool remove_watched(RunState&, std::string_view name, int) {
  watched.push_back("-" + std::string(name));
  return name != "Source";
}

TEST_F(BenchFunctions, WatchOverVoltages) {
  const auto expect_arguments = [&] {
    expect_faults({{"SafeOn(\"\",\"1V\",\"\")", 2472},
                   {"SafeOn(S[9],\"1V\",\"\")", 2472},
                   {"SafeOn(\"UUT\",\"\",\"\")", 2473},
                   {"SafeOn(\"UUT\",S[9],\"\")", 2473},
                   {"SafeOn(\"UUT\",\"1V\",S[9])", 2474},
                   {"SafeOn(\"nobody\",\"1V\",\"\")", 2471},
                   {"SafeOn(\"UUT\",\"V\",\"\")", 2475},
                   {"SafeOn(\"UUT\",\"much\",\"\")", 2475},
                   {"SafeOn(\"UUT\",\"1V\",\"wave\")", 2476}});
  };
  run.demo_mode = true;
  expect_arguments();
  expect_numbers({{"SafeOn(\"UUT\",\"1V\",\"sq\")", 1}, {"SafeOff(\"UUT\")", 1}});
  run.demo_mode = false;
  expect_faults({{"SafeOn(\"UUT\",\"1V\",\"\")", 2470}, {"SafeOff(\"UUT\")", 0}});
  startup_config().safety = 0;
  expect_faults({{"SafeOn(\"UUT\",\"1V\",\"\")", 0}});
  constexpr SafetyWatch watch = {apply_watched, remove_watched};
  set_safety_watch(&watch);
  watched.clear();
  expect_faults({{"SafeOn(\"UUT\",\"1V\",\"\")", 0}});
  startup_config().safety = 1;
  run.demo_mode = true;
  expect_faults({{"SafeOn(\"UUT\",\"1V\",\"\")", 0}});
  EXPECT_TRUE(watched.empty()) << "off, and in a demonstration";
  startup_config().safety = 2;
  expect_faults({{"SafeOn(\"m\",\"2kV\",\"Lev Sine\")", 0}, {"SafeOff(\"k\")", 0}});
  run.demo_mode = false;
  expect_faults({{"SafeOn(\"uut\",\"-60 V\",\"\")", 0},
                 {"SafeOff(\"source\")", 100},
                 {"SafeOn(\"Source\",\"1V\",\"\")", 2470}});
  DimValue kilovolt, volt;
  ASSERT_TRUE(dim_parse_exact("2kV", kilovolt) && dim_parse_exact("-60 V", volt));
  EXPECT_EQ(watched[0], formatted("Meter 2 %d %d 9 %d", int{kilovolt.prefix}, int{unit_code::volt},
                                  int{unit_code::hertz}));
  EXPECT_EQ(watched[1], "-Meter");
  EXPECT_EQ(watched[2], formatted("UUT -60 %d %d 0 0", int{volt.prefix}, int{unit_code::volt}));
  EXPECT_EQ(watched[3], "-Source");
  expect_arguments();
}

int dialog_answer = 0;
int turn(RunState& of, double& value, int step) {
  value += of.slew.in_force.scale * step;
  return dialog_answer;
}

TEST_F(BenchFunctions, SlewDialog) {
  expect_faults({{"M[1]=slew(1,2)", 31161}});
  expect_numbers({{"slewop()", 3},
                  {"slewmsg(0,\"a\")", 1},
                  {"slewmsg(3,\"d\")", 1},
                  {"slewmsg(4,\"e\")", 0},
                  {"slewmsg(-1,\"e\")", 0},
                  {"slewscale(0.5)", 1},
                  {"slewstart(-8)", 1},
                  {"slewstart(11)", 1},
                  {"slewstart(0)", 0},
                  {"slewstart(12)", 0},
                  {"slewstart(-9)", 0}});
  EXPECT_EQ(run.slew.in_force.scale, 0);
  EXPECT_EQ(number("slewinit()"), 1);
  EXPECT_EQ(run.slew.in_force.texts, (std::array<std::string, 4>{"a", "", "", "d"}));
  EXPECT_EQ(run.slew.in_force.start, 11);
  set_slew_dialog(turn);
  for (const auto& [answer, outcome] : {std::pair{1, 1}, {2, -1}, {205, 2}, {210, 0}, {7, 3}}) {
    dialog_answer = answer;
    EXPECT_EQ(number("slew(10,3)"), 11.5);
    EXPECT_EQ(number("slewop()"), outcome) << answer;
  }
}

std::optional<RoomClimate> sensed(std::string&) { return RoomClimate{22.5, 41, 1700000000}; }

TEST_F(BenchFunctions, ClimateOfTheRoom) {
  expect_faults({{"M[1]=rht_temp()", 1895}, {"M[1]=rht_humidity()", 1895}, {"M[1]=rht_time()", 1895}});
  set_room_sensor(sensed);
  expect_numbers({{"rht_temp()", 22.5}, {"rht_humidity()", 41}, {"rht_time()", 1700000000}});
}

TEST_F(BenchFunctions, SettingsAndUncertaintyThatAreNotThere) {
  expect_faults({{"S[1]=vget(\"no such\")", 2850}, {"M[1]=uncv(1)", 300}, {"M[1]=uncv(-1)", 300}});
  EXPECT_EQ(text("vget(\"NMEAS\")"), "");
  run.uncertainty.readings = {1, 2};
  expect_numbers({{"uncv(2)", 2}, {"uncv(0)", 1.5}});
  expect_faults({{"M[1]=uncv(3)", 300}});
}

// Every function that procedures may call, and which of them may stand alone as a statement ("*").
constexpr const char* library[] = {
    "abs sqrt exp sin cos tan asin acos atan sinh cosh tanh ceil ln log int rnd sgn deg rad degc degf pow",
    "dbmtow wtodbm dbmtov vtodbm dbtopctv dbtopctw pcttodbv pcttodbw frnd bit not max2 min2 rss2 rss3",
    "sum sum_l avg avg_l max max_l min min_l rss rss_l sdev sdev_l mget *mset lget *lset sget *sset",
    "len sub find findi fld repl pad padb itoc ctoi cmp cmpi zcmp zcmpi Empty Null fmt is_num is_num_lead",
    "is_num_sub is_dim is_unit base pscale unit uprefix utime date time ctime ugdt uldt ftime exists IsDir",
    "IsOrd flen mtime *unlink read *append *write *insert *replace *delete dfile ifile ini rif *wif rinf",
    "rinfe IsVar *del get *put getv *putv vget brn brb brw bri brs brx accv accv2 accvf accvf2 accvg accvg2",
    "conf adjthr fail pass ui asset assetc sn inv ncal cal instr uut proc psub psubi vers *cm unc uncv",
    "rht_temp rht_humidity rht_time *SafeOff *SafeOn *mcclr *mcset mctest slew *slewinit *slewmsg slewop",
    "*slewscale *slewstart"};

TEST(MathLibrary, HasItsFunctions) {
  std::vector<std::string> expected, present;
  for (const char* line : library) {
    std::istringstream names(line);
    for (std::string name; names >> name;) expected.push_back(name);
  }
  EXPECT_EQ(expected.size(), 161u);
  for (const MathFunctionRow& row : math_function_rows())
    present.push_back(((row.flags & math_flag::statement) != 0 ? "*" : "") + std::string(row.name));
  std::sort(expected.begin(), expected.end());
  std::sort(present.begin(), present.end());
  EXPECT_EQ(present, expected);
}

}  // namespace
}  // namespace orvane
