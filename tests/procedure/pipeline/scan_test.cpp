// The scan in front of a run, and the check of the instruments that it found.
#include "procedure/pipeline/scan.h"

#include "config/profile.h"
#include "config/startup_config.h"
#include "instruments/accuracy_choice.h"
#include "instruments/device_list.h"
#include "instruments/standards.h"
#include "messages/catalogue.h"
#include "procedure/file/memory.h"
#include "procedure/pipeline/check_block.h"
#include "procedure/pipeline/required.h"
#include "procedure/pipeline/run_test.h"
#include "procedure/run/dispatch.h"
#include "state/fsc.h"
#include "support/procedures.h"

namespace orvane {
namespace {

class ScanTest : public test::RunTest {
 protected:
  ScanTest() {
    startup_config().picdir = startup_config().accdir = folder.string();
    // A form in front of the run: the scan has to fail before it is shown.
    startup_config().bcf = write("uut.txt", "[start]\nfield = SER_NUM$\n");
  }
  ~ScanTest() override {
    set_device_list(std::nullopt);
    standard_sources_clear();
    set_exclusive_options({});
  }

  /// Runs one statement line in a procedure of its own; the numbers of the messages, and whether the form came.
  std::vector<int> scan_of(const std::string& statement) {
    procedure("One", {statement, "END"});
    return scan_run("One");
  }
  std::vector<int> scan_run(const std::string& name) {
    desk.shown.clear();
    desk.replies.clear();
    desk.reply(answer::terminate);  // the form, if it comes to that
    result = go(name);
    return desk.message_numbers();
  }
  bool passed() const { return result == run_result::given_up && desk.of_kind("form").size() == 1; }
  int result = -1;
};

TEST_F(ScanTest, WhatAStatementNamesMustBeThere) {
  write("there.png", "x");
  write("there.acc", "x");
  DeviceList list;
  list.generic.push_back({.name = "Relay box",
                          .address = {DeviceInterface::serial, {}, 3},
                          .flags = 0,
                          .aliases = {"RELAY", ""},
                          .asset = ""});
  list.generic.push_back({.name = "Scanner",
                          .address = {DeviceInterface::ieee488, {3, 0, 9, 0}, 0},
                          .flags = 0,
                          .aliases = {"", "SCAN"},
                          .asset = ""});
  set_device_list(list);
  run.demo_mode = false;
  startup_config().ib_nport = 1;
  struct Case {
    const char* statement;
    int number;  // 0: the scan lets it pass
  };
  const Case cases[] = {
      {"PIC there.png", 0},
      {"PIC absent.png", 1805},
      {"PICE absent.png", 1805},
      {"ACCF MFC1           there.acc", 0},
      {"ACCF MFC1           absent.acc", 121},
      {"IEEE [@22]*RST", 0},
      {"IEEE [@131]", 1903},
      {"IEEE [@31]", 1904},
      {"IEEE a[ @5:31 ]b", 1905},
      {"IEEE [@100:3]x[@7]", 0},
      {"IEEE [@]", 1903},
      {"IEEE [@nobody]", 2929},
      {"IEEE [@relay]", 2932},
      {"IEEE [@Scan]", 0},
      {"IEEE2 [@99]", 1904},
      {"SCPI [@nobody]", 2929},
      {"PORT [@COM16]", 0},
      {"PORT [@COM22]", 220},
      {"PORT [@COMMFC2]", 0},
      {"PORT [@relay]", 0},
      {"PORT [@scan]", 2933},
      {"PORT [@22]", 2929},
      {"RESET [@22]*RST", 0},
      {"RESET [@COM3]x", 0},
      {"RESET [@nobody]", 2929},
      {"IEEE [@22", 0},
      {"DISP [@nobody]", 0},
      {"STD anything", 0},
      {"CALL Nowhere", 905},
  };
  for (const Case& c : cases) {
    const std::vector<int> numbers = scan_of(c.statement);
    EXPECT_EQ(numbers, c.number != 0 ? std::vector<int>{c.number} : std::vector<int>{}) << c.statement;
    EXPECT_EQ(passed(), c.number == 0) << c.statement;
    if (c.number != 0) {
      EXPECT_EQ(result, run_result::failed) << c.statement;
      EXPECT_TRUE(desk.of_kind("form").empty()) << c.statement;
    }
  }
  run.demo_mode = true;
  EXPECT_EQ(scan_of("IEEE [@nobody]"), std::vector<int>{}) << "a demonstration needs no bench";
  EXPECT_EQ(scan_of("IEEE [@31]"), std::vector<int>{1904});
}

TEST_F(ScanTest, StandardsAreKnownByTheirSources) {
  standard_source_add([](std::string_view name) {
    return name == "HP 3458A"  ? StandardState::known
           : name == "Old one" ? StandardState::overdue
                               : StandardState::unknown;
  });
  EXPECT_EQ(scan_of("STD HP 3458A"), std::vector<int>{});
  EXPECT_TRUE(passed());
  EXPECT_EQ(run.pipeline.pre_run.standards, std::vector<std::string>{"HP 3458A"});
  EXPECT_EQ(scan_of("STD HP 3457A"), std::vector<int>{30001});
  EXPECT_NE(desk.last_message().find("HP 3457A"), std::string::npos);
  EXPECT_EQ(scan_of("STD Old one"), std::vector<int>{});
  EXPECT_TRUE(run.pipeline.standard_overdue);
  startup_config().in_cal_req = 1;
  EXPECT_EQ(scan_of("STD Old one"), std::vector<int>{30609});
}

TEST_F(ScanTest, AccuracyFilesAreFoundByTheRuleOfTheirNames) {
  StartupConfig& config = startup_config();
  config.accdir = "/acc";
  struct Case {
    std::int16_t relative;
    const char* name;
    const char* path;
  };
  for (const Case& c : {Case{1, "a.acc", "/acc/a.acc"}, Case{1, "sub/a.acc", "/acc/sub/a.acc"},
                        Case{1, "/x/a", "/x/a"}, Case{1, "C:a", "C:a"}, Case{0, "a.acc", "/acc/a.acc"},
                        Case{0, "sub/a.acc", "sub/a.acc"}, Case{0, "\\a", "\\a"}}) {
    config.accf_acc_rel = c.relative;
    std::string path;
    EXPECT_TRUE(acc_path_from_accf(run, c.name, path));
    EXPECT_EQ(path, c.path);
  }
}

TEST_F(ScanTest, SubProceduresAreWalkedOnceEach) {
  // Circles, a call of itself, and one procedure called from everywhere.
  procedure("Main", {"CALL A", "CALL B", "CALL main", "IEEE [@1]", "END"});
  procedure("A", {"CALL B", "CALL A", "CALL C", "IEEE [@2]", "END"});
  procedure("B", {"CALL A", "CALL C", "CALL Main", "IEEE [@3]", "END"});
  procedure("C", {"IEEE [@4]", "END"});
  EXPECT_EQ(scan_run("Main"), std::vector<int>{});
  EXPECT_TRUE(passed());
  std::vector<int> primaries;
  for (const BusAddress& address : run.pipeline.pre_run.addresses) primaries.push_back(address.primary);
  std::sort(primaries.begin(), primaries.end());
  EXPECT_EQ(primaries, (std::vector<int>{1, 2, 3, 4}));
  EXPECT_TRUE(run.pipeline.pre_run.ieee);
}

TEST_F(ScanTest, TheSlotsMayOverflowAndTheWalkGoesOn) {
  // Twelve sub-procedures on two levels evict the main procedure and each other, again and again.
  std::vector<std::string> main_lines;
  for (int i = 1; i <= 12; ++i) {
    const std::string name = "Sub " + std::to_string(i);
    main_lines.push_back("CALL " + name);
    main_lines.push_back("IEEE [@" + std::to_string(i) + "]");
    std::vector<std::string> sub_lines;
    for (int k = 1; k <= 12; ++k)
      sub_lines.push_back("CALL Leaf " + std::to_string(i) + " " + std::to_string(k % 4));
    sub_lines.push_back("IEEE [@" + std::to_string(100 + i) + "]");
    sub_lines.push_back("END");
    procedure(name, sub_lines);
    for (int k = 0; k < 4; ++k) procedure("Leaf " + std::to_string(i) + " " + std::to_string(k), {"END"});
  }
  main_lines.push_back("MATH M[1]=5");
  main_lines.push_back("END");
  procedure("Main", main_lines);
  startup_config().bcf.clear();
  startup_config().ieee_demo_prompt = 0;
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(run.pipeline.pre_run.addresses.size(), 24u);
  EXPECT_EQ(m(1), 5) << "the main procedure was brought back to run";
}

TEST_F(ScanTest, CallsAreCountedAndLimited) {
  for (int level = 0; level <= 9; ++level)
    procedure("Level " + std::to_string(level), {"CALL Level " + std::to_string(level + 1), "END"});
  procedure("Level 10", {"END"});
  EXPECT_EQ(scan_run("Level 2"), std::vector<int>{}) << "eight levels";
  EXPECT_EQ(scan_run("Level 1"), std::vector<int>{1816});
  EXPECT_NE(desk.last_message().find('8'), std::string::npos);

  std::vector<std::string> lines;
  for (std::size_t i = 0; i <= visited_limit; ++i) {
    const std::string name = "N" + std::to_string(i);
    procedure(name, {"END"});
    lines.push_back("CALL " + name);
  }
  const std::string last = lines.back();
  lines.pop_back();
  procedure("Many", lines);
  EXPECT_EQ(scan_run("Many"), std::vector<int>{});
  lines.push_back(last);
  procedure("Too many", lines);
  EXPECT_EQ(scan_run("Too many"), std::vector<int>{30601});
}

TEST_F(ScanTest, AMissingTableAndAMissingThresholdAreTold) {
  const std::string text = test::header("Bare");
  source(text.substr(0, text.find("ADJUSTMENT")) + text.substr(text.find("NUMBER OF TESTS")) +
         line(1, 1, "END", "") + "\n");
  EXPECT_EQ(scan_run("Bare"), std::vector<int>{111});
}

// --- Required instruments ----------------------------------------------------------------------------------------

class RequiredTest : public ScanTest {
 protected:
  RequiredTest() {
    run.demo_mode = false;
    startup_config().show_req_instr = 0;
    // The lock stands in the configuration's file; what it says otherwise does not matter here.
    const StartupConfig kept = startup_config();
    std::vector<ConfigFault> faults;
    static_cast<void>(config_load(write("orvane.ini", "[startup]\nlock = None\n"), faults));
    startup_config() = kept;
  }

  void requires_text(const std::string& name, const std::string& configuration,
                     const std::string& statements) {
    std::string text = test::header(name);
    text.replace(text.find("CONFIGURATION:"), 14, "CONFIGURATION:         " + configuration);
    source(text + statements);
  }
  void one(const std::string& configuration) {
    requires_text("One", configuration, line(1, 1, "END", "") + "\n");
  }
  static InstrumentRecord instrument(std::uint16_t code, std::uint8_t primary, std::uint16_t options = 0) {
    InstrumentRecord row;
    row.code = code;
    row.options = options;
    row.address = {DeviceInterface::ieee488, {3, 0, primary, 0}, 0};
    return row;
  }
  const RequiredInstrument& required(std::size_t index) const { return run.pipeline.required.at(index); }
  using Served = RequiredInstrument::Served;

  int run_one(const std::vector<int>& codes, std::size_t row = 0) {
    desk.shown.clear();
    desk.replies.clear();
    for (const int code : codes) desk.reply(code, {}, row);
    desk.reply(answer::terminate);
    return go("One");
  }
};

TEST_F(RequiredTest, WithoutAListTheOperatorIsToldAndNotBlocked) {
  one("HP 3458A/1; #24 (#131|#132/2)");
  EXPECT_EQ(run_one({}), run_result::given_up);  // the form
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{30608});
  EXPECT_NE(desk.last_message().find("HP 3458A/1, MFC1 (Agilent E4412A | Agilent E4413A/2)"),
            std::string::npos)
      << desk.last_message();
  EXPECT_EQ(required(0).served, Served::unchecked);
  run.demo_mode = true;
  run_one({});
  EXPECT_TRUE(desk.message_numbers().empty());
}

TEST_F(RequiredTest, WhatIsConfiguredServesWithoutAWord) {
  one("HP 3458A/1; #129 (#131|#132/2)");
  InstrumentRecord meter = instrument(129, 13);
  meter.slots.push_back({.number = 0, .code = 132, .options = 3, .flags = 0, .asset = ""});
  set_device_list(DeviceList{{instrument(1, 22, 1), meter}, {}, {}});
  EXPECT_EQ(run_one({}), run_result::given_up);
  EXPECT_EQ(desk.of_kind("choose").size(), 0u);
  EXPECT_TRUE(desk.message_numbers().empty());
  EXPECT_EQ(required(1).served, Served::configured);
  EXPECT_EQ(device_list().instruments[0].flags & device_flag::required, device_flag::required);
  // With the key on 2 the list is shown all the same.
  startup_config().show_req_instr = 2;
  EXPECT_EQ(run_one({answer::terminate}), run_result::given_up);
  ASSERT_EQ(desk.of_kind("choose").size(), 1u);
  EXPECT_EQ(desk.of_kind("choose")[0].choice.kind, WindowKind::required);
  EXPECT_EQ(desk.of_kind("choose")[0].lines[0], "HP 3458A/1\tHP 3458A\tIEEE-488 22");
  EXPECT_TRUE(desk.of_kind("form").empty());
}

TEST_F(RequiredTest, EachOpenInstrumentIsAskedAboutInItsForm) {
  struct Case {
    const char* configuration;
    int question;
    std::vector<InstrumentRecord> rows;
  };
  InstrumentRecord withdrawn = instrument(1, 22);
  withdrawn.flags = device_flag::withdrawn;
  const Case cases[] = {
      {"HP 3458A", 2987, {}},
      {"HP 3458A/1", 2988, {instrument(1, 22)}},
      {"Agilent E4418B (#131)", 2988, {instrument(129, 13)}},
      {"#4", 2989, {}},
      {"HP 3458A", 2990, {withdrawn}},
  };
  for (const Case& c : cases) {
    one(c.configuration);
    set_device_list(DeviceList{c.rows, {}, {}});
    for (const auto& [code, served] :
         {std::pair{answer::ok, Served::by_hand}, {answer::no, Served::skipped}}) {
      EXPECT_EQ(run_one({code}), run_result::given_up);
      ASSERT_EQ(desk.of_kind("choose").size(), 1u) << c.configuration;
      const test::Shown window = desk.of_kind("choose")[0];
      const std::string text = std::string(catalogue_text(c.question));
      EXPECT_NE(window.title.find(text.substr(text.find(" is "))), std::string::npos) << window.title;
      ASSERT_EQ(window.buttons.size(), 3u);
      EXPECT_TRUE(window.buttons[2].is_default) << "without an instrument the safe answer is not to begin";
      EXPECT_EQ(required(0).served, served);
      EXPECT_EQ(desk.of_kind("form").size(), 1u);
    }
    EXPECT_EQ(run_one({answer::terminate}), run_result::given_up);
    EXPECT_TRUE(desk.of_kind("form").empty());
    EXPECT_EQ(run_one({answer::failed}), run_result::failed);
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{2566});
    EXPECT_EQ(run_one({77}), run_result::failed);
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{2568});
    startup_config().req_std_prompt = 0;
    EXPECT_EQ(run_one({}), run_result::given_up);
    EXPECT_EQ(desk.of_kind("choose").size(), 0u);
    EXPECT_EQ(required(0).served, Served::skipped);
    startup_config().req_std_prompt = 1;
  }
}

TEST_F(RequiredTest, SubstitutesStandIn) {
  one("#178");  // 179, then 180
  set_device_list(DeviceList{{instrument(180, 5)}, {}, {}});
  run_one({});
  EXPECT_EQ(desk.of_kind("choose").size(), 0u);
  ASSERT_NE(dev_find(178), nullptr);
  EXPECT_EQ(dev_find(178)->code, 180);

  set_device_list(DeviceList{{instrument(180, 5), instrument(179, 6)}, {}, {}});
  run_one({answer::ok}, 1);
  ASSERT_EQ(desk.of_kind("choose").size(), 1u);
  EXPECT_EQ(desk.of_kind("choose")[0].lines,
            (std::vector<std::string>{"HP 5350B\tHP 5351B\tIEEE-488 6", "HP 5350B\tHP 5352B\tIEEE-488 5"}));
  EXPECT_EQ(dev_find(178)->code, 180);
  // The next check begins without the table; the model itself goes before every substitute.
  set_device_list(DeviceList{{instrument(178, 4), instrument(180, 5)}, {}, {}});
  run_one({});
  EXPECT_EQ(dev_find(178)->code, 178);
  // A row that lacks the options is no reason to take another model.
  one("#178/1");
  run_one({answer::no});
  EXPECT_EQ(required(0).served, Served::skipped);
}

TEST_F(RequiredTest, TablesOfAllProceduresAreMerged) {
  requires_text("Main", "HP 3458A/1; MFC2/1",
                line(1, 1, "CALL", "Sub") + "\n" + line(1, 2, "END", "") + "\n");
  requires_text("Sub", "HP 3458A/3 (#131); MFC2/2; HP 34401A", line(1, 1, "END", "") + "\n");
  const ExclusiveOptions rows[] = {{41, 2, 1}};
  set_exclusive_options(rows);
  run.demo_mode = true;
  desk.reply(answer::terminate);
  EXPECT_EQ(go("Main"), run_result::given_up);
  std::string all;
  for (const RequiredInstrument& one : run.pipeline.required) all += required_text(one) + ";";
  EXPECT_EQ(all, "HP 3458A/1/3 (Agilent E4412A);MFC2/2;HP 34401A;");

  RequiredInstruments table;
  run.pipeline.required.clear();
  table.count = RequiredInstruments::max_entries;
  for (std::uint16_t i = 0; i < table.count; ++i)
    table.entries[i].instrument = static_cast<std::uint16_t>(i + 1);
  EXPECT_TRUE(merge_required(run, table));
  table.count = 1;
  table.entries[0].instrument = 100;
  EXPECT_FALSE(merge_required(run, table));
}

TEST_F(RequiredTest, TheConfigurationIsReservedForTheRun) {
  const std::string path = config_path();
  startup_config().bcf.clear();
  startup_config().ib_nport = 1;
  startup_config().ib_type = 2;  // a family without a driver
  one("HP 3458A");
  set_device_list(DeviceList{{instrument(1, 22)}, {}, {}});
  const auto holder = [&] { return profile_get(path, "startup", "lock").value_or(""); };
  static std::string seen;
  seen.clear();
  const HandlerRow end{fsc::end, [](Statement& s) {
                         seen = profile_get(config_path(), "startup", "lock").value_or("");
                         s.run.set(run_flag::end_seen);
                         return true;
                       }};
  dispatch_install({&end, 1});
  desk.replies.clear();
  EXPECT_EQ(go("One"), run_result::finished);
  EXPECT_TRUE(desk.message_numbers().empty()) << desk.last_message();
  EXPECT_EQ(seen, "RunTime");
  EXPECT_EQ(holder(), "None");
  ASSERT_TRUE(profile_put(path, "startup", "lock", "Editor"));
  desk.shown.clear();
  EXPECT_EQ(go("One"), run_result::failed);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2494});
  EXPECT_EQ(holder(), "Editor");
  EXPECT_EQ(dev_lock(DevLock::clear_own), DevLockResult::editor);
  ASSERT_TRUE(profile_put(path, "startup", "lock", "RunTime"));
  EXPECT_EQ(dev_lock(DevLock::clear_own), DevLockResult::done);
  EXPECT_EQ(dev_lock(DevLock::clear_own), DevLockResult::nobody);
  EXPECT_EQ(dev_lock(DevLock::release), DevLockResult::failed);
  // A file that cannot be written is told, and keeps nobody from working.
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  desk.shown.clear();
  EXPECT_EQ(go("One"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2242});
}

TEST_F(RequiredTest, TheListIsReadFromItsFileAsTheRunBegins) {
  one("HP 3458A");
  startup_config().config = write("bench.txt", "22 : HP 3458A = DMM\n");
  startup_config().show_req_instr = 2;
  EXPECT_EQ(run_one({answer::terminate}), run_result::given_up);
  ASSERT_EQ(desk.of_kind("choose").size(), 1u) << desk.last_message();
  EXPECT_EQ(desk.of_kind("choose")[0].lines[0], "HP 3458A\tHP 3458A\tIEEE-488 22");
  // A damaged file is told; what it would have held is missing by name.
  startup_config().config = write("damaged.txt", "22 : HP 3458A\n23 : Nobody knows\n");
  EXPECT_EQ(run_one({answer::terminate}), run_result::given_up);
  EXPECT_FALSE(desk.message_numbers().empty());
  ASSERT_EQ(desk.of_kind("choose").size(), 1u);
  EXPECT_EQ(desk.of_kind("choose")[0].title, msg(2987, "HP 3458A"));
  EXPECT_TRUE(desk.of_kind("form").empty());
}

TEST_F(RequiredTest, ABusThatIsNotThereIsAskedAbout) {
  procedure("One", {"IEEE [@22]*RST", "END"});
  EXPECT_EQ(run_one({answer::no}), run_result::given_up);
  EXPECT_TRUE(desk.of_kind("form").empty());
  EXPECT_EQ(run_one({answer::yes}), run_result::given_up);
  EXPECT_EQ(desk.of_kind("form").size(), 1u);
  startup_config().ib_nport = 1;
  run_one({});
  EXPECT_EQ(desk.of_kind("form").size(), 1u);
  EXPECT_TRUE(desk.of_kind("lines").empty());
}

// --- Blocks ------------------------------------------------------------------------------------------------------

TEST_F(ScanTest, StatementsAreFoundWithinTheirBlocks) {
  // Two statements of DISP, the second of three records; one MATH; one DISP of a test that counts on.
  source(test::header("Blocks") + line(1, 1, "DISP", "a") + "\n" + line(1, 2, "DISP", "b") + "\n" +
         line(1, 2, "DISP", "c") + "\n" + line(1, 2, "DISP", "d") + "\n" + line(1, 3, "MATH", "M[1]=1") +
         "\n" + line(1, 4, "DISP", "e") + "\n" + line(1, 5, "END", "") + "\n");
  desk.reply(answer::terminate);
  static_cast<void>(go("Blocks"));
  const Procedure* loaded = find_procedure(run, "Blocks");
  ASSERT_GE(loaded->lines.size(), 7u);
  const auto at = [&](std::size_t index) -> const ProcNode& { return *loaded->lines[index]; };
  const std::size_t firsts[] = {0, 1, 1, 1, 4, 5, 6}, begins[] = {0, 0, 0, 0, 4, 5, 6},
                    ends[] = {3, 3, 3, 3, 4, 5, 6};
  for (std::size_t i = 0; i < 7; ++i) {
    EXPECT_EQ(check_FindFirstLine(at(i)), &at(firsts[i])) << i;
    EXPECT_EQ(check_IsFirstLine(at(i)), firsts[i] == i) << i;
    EXPECT_EQ(check_FindBlockBegin(at(i)), &at(begins[i])) << i;
    EXPECT_EQ(check_FindBlockEnd(at(i)), &at(ends[i])) << i;
  }
  std::vector<CheckStatement> statements;
  ASSERT_TRUE(check_ScanBlock(at(2), statements));
  ASSERT_EQ(statements.size(), 2u);
  EXPECT_EQ(statements[1].text, "bcd");
}

TEST_F(ScanTest, AStatementWithoutEndIsTheFatalOne) {
  Procedure procedure;
  for (std::size_t i = 0; i <= check_text_limit / 79 + 1; ++i) {
    ProcNode* node = node_append(procedure, node_request::record);
    node->record->set(field::code, fsc::disp);
    ASSERT_TRUE(node->record->set_text(field::text, std::string(79, 'x')));
  }
  std::vector<CheckStatement> statements;
  EXPECT_FALSE(check_ScanBlock(*procedure.head, statements));
  EXPECT_EQ(desk.last_message(), "E100: Fatal internal error -- cbuf overrun");
}

TEST_F(ScanTest, KindsOfNamedParametersAreCountedAndLimited) {
  const auto record_of = [](Procedure& procedure, int number, std::string_view text) {
    ProcNode* node = node_append(procedure, node_request::record);
    node->record->set(field::code, fsc::pqc1);
    node->record->set(field::test_major, 1);
    node->record->set(field::test_minor, static_cast<std::int16_t>(number));
    EXPECT_TRUE(node->record->set_text(field::parameter_text, text));
  };
  for (const std::size_t count : {parameter_kind_limit, parameter_kind_limit + 1}) {
    Procedure made;
    for (std::size_t i = 0; i < count; ++i)
      record_of(made, static_cast<int>(i) + 1, "kind" + std::to_string(i) + " = 1");
    record_of(made, static_cast<int>(count) + 1, "KIND0 = 2");
    made.name = "Made";
    Procedure* procedure = &made;
    desk.shown.clear();
    EXPECT_EQ(scan_procedure(run, procedure), count == parameter_kind_limit);
    EXPECT_EQ(desk.message_numbers(),
              count == parameter_kind_limit ? std::vector<int>{} : std::vector<int>{2579});
    EXPECT_TRUE(run.pipeline.pre_run.instruments.test(static_cast<std::size_t>(fsc_ordinal(fsc::pqc1))));
  }
}

}  // namespace
}  // namespace orvane
