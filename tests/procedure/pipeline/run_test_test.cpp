// The road into a run and out of it: the order of its steps, what a cancel at each window does, what stays behind.
#include "procedure/pipeline/run_test.h"

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "instruments/room_climate.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/database.h"
#include "procedure/pipeline/engine.h"
#include "procedure/pipeline/run_ends.h"
#include "procedure/run/dispatch.h"
#include "state/pump.h"
#include "state/run_variables.h"
#include "support/procedures.h"

namespace orvane {
namespace {

using Log = std::vector<std::string>;
Log steps;  // what happened, in its order

// A desk that writes windows and boards into the one list.
class OrderDesk : public test::Desk {
 public:
  bool abort_at_form = false;  // the Abort command is given while a form waits
  void message(MessageKind kind, int number, std::string_view text) override {
    steps.push_back("message " + std::to_string(number));
    Desk::message(kind, number, text);
  }
  int lines(const LinesWindow& window) override {
    steps.push_back("lines " + window.title);
    return Desk::lines(window);
  }
  int choose(const ChoiceWindow& window, std::size_t& row) override {
    steps.push_back("choose");
    return Desk::choose(window, row);
  }
  int form(FormWindow& window) override {
    steps.push_back("form " + (window.fields.empty() ? std::string() : window.fields[0].name));
    if (abort_at_form) raise_abort();
    return Desk::form(window);
  }
  void run_begins(const RunBoard& board) override { steps.push_back("begins " + board.procedure); }
  void enable_abort_menu(bool on) override { steps.push_back(on ? "menu abort" : "menu all"); }
};

// A database that writes its calls into the list.
struct DatabaseDouble {
  int uut_setup = run_result::finished;
  bool works = true;
};
DatabaseDouble database;
constexpr DatabaseRoads roads = {
    [](int right) { return right != operator_right::reset; },
    [](RunState&) { return steps.push_back("db open"), database.works; },
    [](RunState&, std::string& name) {
      name = "Main";
      return run_result::finished;
    },
    [](RunState&) { return steps.push_back("db uut"), database.uut_setup; },
    [](RunState&) { return steps.push_back("db accuracy"), true; },
    [](RunState&) { return steps.push_back("db results"), true; },
    [](RunState&) { return steps.push_back("db post-run"), true; },
    [](RunState&) { steps.push_back("db close"); },
};

class Pipeline : public test::RunTest {
 protected:
  Pipeline() {
    steps.clear();
    database = DatabaseDouble();
    platform().desk = &order;
    procedure("Main", {"HEAD working", "MATH M[1]=1", "END"});
  }
  ~Pipeline() override {
    set_database_roads(nullptr);
    set_room_sensor(nullptr);
  }

  void data_entry(const std::string& text) { startup_config().bcf = write("uut.txt", text); }
  std::string marker() const { return user_setting("Run Time", "procedure").value_or(""); }
  std::string variable(const char* name) const {
    const std::string* value = run_variable(run, name);
    return value != nullptr ? *value : "(none)";
  }
  void reply(int code, std::vector<std::pair<std::string, std::string>> fields = {}) {
    order.replies.push_back({code, {}, 0, std::move(fields)});
  }

  OrderDesk order;
};

const char* both_ends =
    "[environment]\nask = start end\n[start]\nfield = SER_NUM$\nrequired = yes\n[end]\nfield = UUT_CODE$\n";

TEST_F(Pipeline, StepsComeInTheirOrder) {
  data_entry(both_ends);
  startup_config().rt_demo_prompt = 1;
  startup_config().database = 1;
  set_database_roads(&roads);
  run.demo_mode = true;
  const HandlerRow head{fsc::head, [](Statement& s) {
                          steps.push_back(s.run.active() ? "statement" : "?");
                          return true;
                        }};
  dispatch_install({&head, 1});
  reply(answer::yes);
  reply(answer::ok);  // the procedure
  reply(answer::ok, {{"TEMP$", "23"}, {"HUMIDITY$", "40"}});
  reply(answer::ok, {{"SER_NUM$", "1"}});
  for (const bool uut_first : {true, false}) {
    startup_config().UUTPromptFirst = uut_first ? 1 : 0;
    const auto replies = order.replies;
    steps.clear();
    EXPECT_EQ(run_test(run, ""), run_result::finished);
    Log wanted = {"lines Orvane Run Time", "db open", "choose"};
    if (uut_first) wanted.push_back("db uut");
    wanted.push_back("wait");
    Log seen = steps;
    std::erase(wanted, "wait");
    wanted.push_back("db accuracy");
    if (!uut_first) wanted.push_back("db uut");
    for (const char* step :
         {"db results", "form TEMP$", "form SER_NUM$", "begins Main", "menu abort", "statement",
          "message 5019", "menu all", "form TEMP$", "form UUT_CODE$", "db post-run", "db close"})
      wanted.push_back(step);
    wanted.front() = seen.empty() ? "" : seen.front();  // the question's title is the catalogue's
    EXPECT_EQ(seen, wanted);
    order.replies = replies;
  }
}

TEST_F(Pipeline, ACancelInAnyWindowGivesTheRunUp) {
  data_entry(both_ends);
  struct Case {
    int windows_before;  // answered with what they need
    int result;
    bool began;
  };
  // The question of a demonstration, the choice, the room, the unit, the room again, the unit again.
  const Case cases[] = {{0, 2, false}, {1, 2, false}, {2, 2, false}, {3, 2, false},
                        {4, 2, true},  {5, 2, true},  {6, 1, true}};
  startup_config().rt_demo_prompt = 1;
  for (const Case& c : cases) {
    order.replies.clear();
    steps.clear();
    order.shown.clear();
    const std::pair<std::string, std::string> warm{"TEMP$", "23"}, dry{"HUMIDITY$", "40"};
    const std::vector<test::Reply> answers = {
        {answer::yes, {}, 0, {}},         {answer::ok, {}, 0, {}},
        {answer::ok, {}, 0, {warm, dry}}, {answer::ok, {}, 0, {{"SER_NUM$", "1"}}},
        {answer::ok, {}, 0, {}},          {answer::ok, {}, 0, {}}};
    for (int i = 0; i < c.windows_before; ++i) order.replies.push_back(answers[static_cast<std::size_t>(i)]);
    order.replies.push_back({c.windows_before == 0 ? answer::no : answer::terminate, {}, 0, {}});
    EXPECT_EQ(run_test(run, ""), c.result) << c.windows_before;
    const bool began = std::find(steps.begin(), steps.end(), "begins Main") != steps.end();
    EXPECT_EQ(began, c.began) << c.windows_before;
    std::vector<int> numbers = order.message_numbers();
    EXPECT_EQ(numbers, began ? std::vector<int>{5019} : std::vector<int>{}) << c.windows_before;
    if (began) {
      EXPECT_EQ(steps.back(), c.windows_before == 4 ? "form TEMP$" : "form UUT_CODE$");
    }
  }
}

TEST_F(Pipeline, AClosedSessionFollowsEveryOpenOne) {
  startup_config().database = 1;
  set_database_roads(&roads);
  database.uut_setup = run_result::given_up;
  EXPECT_EQ(go("Main"), run_result::given_up);
  EXPECT_EQ(steps, (Log{"db open", "db uut", "db close"}));
  steps.clear();
  database.works = false;
  EXPECT_EQ(go("Main"), run_result::failed);
  EXPECT_EQ(steps, (Log{"db open", "db close"}));
  EXPECT_TRUE(operator_may(operator_right::common));
  EXPECT_FALSE(operator_may(operator_right::reset));
  startup_config().database = 0;
  EXPECT_TRUE(operator_may(operator_right::reset));
}

TEST_F(Pipeline, AMissingDatabaseIsToldOnceAndNothingIsBlocked) {
  startup_config().database = 1;
  set_database_roads(nullptr);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(std::count(steps.begin(), steps.end(), "message 30600"), 1);
  EXPECT_TRUE(operator_may(operator_right::reset));
}

TEST_F(Pipeline, TheMethodSaysHowAProcedureIsChosen) {
  procedure("Other", {"MATH M[1]=2", "END"});
  order.reply(answer::ok, {}, 1);
  EXPECT_EQ(run_test(run, ""), run_result::finished);
  EXPECT_EQ(m(1), 2);
  const test::Shown list = order.of_kind("choose").back();
  EXPECT_EQ(list.lines, (std::vector<std::string>{"Main\t1.prc\tE", "Other\t2.prc\tE"}));
  EXPECT_TRUE(list.choice.filter);
  EXPECT_NE(list.choice.headings.find('\t'), std::string::npos);

  // The next choice begins at the latest one.
  order.reply(answer::terminate);
  EXPECT_EQ(run_test(run, ""), run_result::given_up);
  EXPECT_EQ(order.of_kind("choose").back().choice.first_row, 1u);

  order.shown.clear();
  ASSERT_TRUE(put_user_setting("Run Time", "method", "by_asset"));
  EXPECT_EQ(run_test(run, ""), run_result::failed);
  EXPECT_EQ(order.message_numbers(), std::vector<int>{30606});
  startup_config().database = 1;
  set_database_roads(&roads);
  EXPECT_EQ(run_test(run, ""), run_result::finished);
  EXPECT_EQ(run.run_name, "");
  EXPECT_EQ(m(1), 1);
  startup_config().database = 0;

  // Without a workload file "by_work" is not offered.
  ASSERT_TRUE(put_user_setting("Run Time", "method", "by_work"));
  order.shown.clear();
  order.reply(answer::terminate);
  EXPECT_EQ(run_test(run, ""), run_result::given_up);
  EXPECT_EQ(order.of_kind("choose").back().lines.size(), 2u);
  startup_config().workload_data =
      write("jobs.txt", "# jobs\nMain | 17 | first\n\nOther|30172| workshop 3 | due\r\n");
  data_entry("[start]\nfield = SER_NUM$\n");
  order.reply(answer::ok, {}, 1);
  EXPECT_EQ(run_test(run, ""), run_result::finished);
  EXPECT_EQ(m(1), 2);
  EXPECT_EQ(order.of_kind("choose").back().lines,
            (std::vector<std::string>{"Main\t17\tfirst", "Other\t30172\tworkshop 3 | due"}));
  EXPECT_EQ(order.of_kind("form").back().form.fields[0].text, "30172");
  EXPECT_EQ(variable("SER_NUM$"), "30172");
  startup_config().workload_data = write("jobs.txt", "Main\n | 3\n");
  order.shown.clear();
  EXPECT_EQ(run_test(run, ""), run_result::failed);
  EXPECT_EQ(order.message_numbers(), std::vector<int>{30603});
  EXPECT_NE(order.last_message().find("jobs.txt:2: "), std::string::npos);
}

TEST_F(Pipeline, DamagedLinesOfTheDirectoryHideNoOtherProcedure) {
  for (const char* name : {"A", "B", "C", "D"}) procedure(name, {"END"});
  const std::string path = (folder / "proc.dir").string(), sound = contents(path);
  struct Case {
    std::size_t line, column;  // of the byte that is damaged
    char byte;
    std::size_t rows;
    bool told;
  };
  const Case cases[] = {
      {0, 1, 'E', 5, false},  // as it was
      {1, 74, 'x', 4, true},  // no line end
      {2, 2, ' ', 4, true},   // not the first line of an entry, and none has begun
      {3, 5, ' ', 4, true},   // no file
      {4, 18, ' ', 4, true},  // no name
      {4, 0, 'X', 4, false},  // deleted
      {4, 1, ' ', 4, false},  // no kind that runs
  };
  for (const Case& c : cases) {
    std::string text = sound;
    text[c.line * 75 + c.column] = c.byte;
    write("proc.dir", text);
    order.shown.clear();
    order.reply(answer::terminate);
    EXPECT_EQ(run_test(run, ""), run_result::given_up);
    EXPECT_EQ(order.of_kind("choose").back().lines.size(), c.rows) << c.line << ":" << c.column;
    EXPECT_EQ(order.message_numbers(), c.told ? std::vector<int>{30652} : std::vector<int>{}) << c.line;
  }
}

TEST_F(Pipeline, AMarkerTellsOfARunThatDied) {
  run.demo_mode = false;
  const HandlerRow head{fsc::head, [](Statement&) {
                          steps.push_back("marker " + user_setting("Run Time", "procedure").value_or(""));
                          return true;
                        }};
  dispatch_install({&head, 1});
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(steps, (Log{"begins Main", "menu abort", "marker underway", "menu all"}));
  EXPECT_EQ(marker(), "done");

  ASSERT_TRUE(put_user_setting("Run Time", "procedure", "underway"));
  steps.clear();
  run.demo_mode = true;
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(marker(), "underway") << "a demonstration neither resets nor forgets";
  EXPECT_EQ(std::count(steps.begin(), steps.end(), "message 30650"), 0);

  run.demo_mode = false;
  steps.clear();
  EXPECT_EQ(go("Main"), run_result::finished);
  ASSERT_FALSE(steps.empty());
  EXPECT_EQ(steps.front(), "message 30650");
  EXPECT_EQ(marker(), "done");

  // Instruments that cannot be reset: nothing begins, and the next start tries again.
  ASSERT_TRUE(put_user_setting("Run Time", "procedure", "underway"));
  startup_config().ib_nport = 1;
  startup_config().ib_type = 1;  // none that exists
  steps.clear();
  EXPECT_EQ(go("Main"), run_result::failed);
  EXPECT_EQ(steps, Log{"message 2864"});
  EXPECT_EQ(marker(), "underway");
}

TEST_F(Pipeline, AFailedStartLeavesNoMarkerAndNoMenu) {
  run.demo_mode = false;
  startup_config().ib_nport = 1;
  startup_config().ib_type = 1;
  EXPECT_EQ(go("Main"), run_result::failed);
  EXPECT_EQ(steps, (Log{"begins Main", "menu abort", "message 2864", "menu all"}));
  EXPECT_EQ(marker(), "done");
  EXPECT_EQ(run.procedure_name, "");
  EXPECT_EQ(m(1), 0);
}

TEST_F(Pipeline, EntriesBecomeVariablesOfTheRun) {
  data_entry(
      "[variables]\nvariable = PLACE$\n[start]\nfield = SER_NUM$\nrequired = yes\nfield = PLACE$\ndefault = "
      "bench 2\n"
      "read_only = yes\n[end]\nfield = PLACE$\n");
  startup_config().prompt = write("prompt.txt", "Read the plate.\n");
  reply(answer::ok);                        // refused: the serial number is missing
  reply(answer::ok, {{"SER_NUM$", "--"}});  // refused: it identifies nothing
  reply(answer::ok, {{"SER_NUM$", "A-17"}});
  reply(answer::ok, {{"PLACE$", "bench 3"}});
  EXPECT_EQ(go("Main"), run_result::finished);
  const std::vector<test::Shown> forms = order.of_kind("form");
  ASSERT_EQ(forms.size(), 4u);
  EXPECT_EQ(forms[0].title, "Enter Data");
  EXPECT_EQ(forms[0].form.lines, std::vector<std::string>{"Read the plate."});
  EXPECT_EQ(forms[0].lines.back(), msg(30630));
  EXPECT_EQ(forms[1].lines.back(), msg(30639));
  EXPECT_EQ(forms[3].form.lines, std::vector<std::string>{msg(4550)});
  EXPECT_EQ(forms[3].form.fields[0].text, "bench 2") << "a read-only field goes into its variable";
  EXPECT_EQ(variable("ser_num"), "A-17");
  EXPECT_EQ(variable("PLACE$"), "bench 3");

  // The next run begins without them; a read-only field may be kept out of the variables.
  startup_config().readonly_var = 0;
  startup_config().SerialNumberCheck = 0;
  reply(answer::ok, {{"SER_NUM$", "--"}});
  reply(answer::ok);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(order.of_kind("form")[4].form.fields[0].text, "");
  EXPECT_EQ(order.of_kind("form")[5].form.fields[0].text, "");
  EXPECT_EQ(variable("SER_NUM$"), "--");

  // "warn" asks: No leads back to the form.
  startup_config().SerialNumberCheck = 2;
  steps.clear();
  reply(answer::ok, {{"SER_NUM$", "--"}});
  reply(answer::no);
  reply(answer::ok);
  reply(answer::yes);
  reply(answer::ok);
  EXPECT_EQ(go("Main"), run_result::finished);
  std::erase_if(steps,
                [](const std::string& step) { return step.starts_with("m") || step.starts_with("b"); });
  EXPECT_EQ(steps.size(), 5u) << "form, question, form, question, and the form at the end";
}

TEST_F(Pipeline, ADamagedDataEntryFileStopsTheRunBeforeItBegins) {
  data_entry("[start]\nfield = NOBODY$\nwhat\n");
  EXPECT_EQ(go("Main"), run_result::failed);
  EXPECT_EQ(order.message_numbers(), (std::vector<int>{30621, 30612, 2508}));
  const std::vector<test::Shown> faults = order.of_kind("error");
  EXPECT_TRUE(faults[1].lines[0].starts_with("E30612: " + startup_config().bcf + ":3: "))
      << faults[1].lines[0];
  EXPECT_EQ(m(1), 0);
  startup_config().bcf = (folder / "absent").string();
  order.shown.clear();
  EXPECT_EQ(go("Main"), run_result::failed);
  EXPECT_EQ(order.message_numbers(), (std::vector<int>{30610, 2508}));
}

TEST_F(Pipeline, AWindowThatFailsOrIsAbortedNeverBegins) {
  data_entry(both_ends);
  reply(answer::failed);
  EXPECT_EQ(go("Main"), run_result::failed);
  EXPECT_EQ(order.message_numbers(), std::vector<int>{2508});
  order.shown.clear();
  reply(answer::failed);
  EXPECT_EQ(run_test(run, ""), run_result::failed);
  EXPECT_EQ(order.message_numbers(), std::vector<int>{374});
  EXPECT_EQ(m(1), 0);

  // Abort while the first form waits, which is then answered by its button.
  order.shown.clear();
  order.abort_at_form = true;
  reply(answer::ok, {{"TEMP$", "23"}, {"HUMIDITY$", "40"}});
  startup_config().bcf = write("room.txt", "[environment]\nask = start\n");
  EXPECT_EQ(go("Main"), run_result::given_up);
  EXPECT_TRUE(order.message_numbers().empty());
  EXPECT_EQ(m(1), 0);
  raise_abort();  // one that is left over from before
  order.abort_at_form = false;
  reply(answer::ok, {{"TEMP$", "23"}, {"HUMIDITY$", "40"}});
  EXPECT_EQ(go("Main"), run_result::finished);
}

TEST_F(Pipeline, SettingsThatCannotBeWrittenLoseNoRun) {
  run.demo_mode = false;
  use_user_settings(folder.string());  // a folder
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(order.message_numbers(), (std::vector<int>{2242, 2242}));
  EXPECT_EQ(m(1), 1);
}

TEST_F(Pipeline, TheRoomIsReadFromTheSensorsFile) {
  data_entry("[environment]\nask = start\n");
  const auto line = [this](int minutes_ago, const char* values) {
    const std::time_t time = clock.seconds - minutes_ago * 60;
    std::tm at{};
    localtime_r(&time, &at);
    return formatted("%04d-%02d-%02d %02d:%02d ", at.tm_year + 1900, at.tm_mon + 1, at.tm_mday, at.tm_hour,
                     at.tm_min) +
           values + "\n";
  };
  startup_config().rht_file = write("room.txt", "# time C %\n" + line(90, "20 50") + line(10, "22,9;\t41.5"));
  reply(answer::ok);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(variable("TEMP$"), "22.9");
  EXPECT_EQ(variable("HUMIDITY$"), "41.5");

  const std::string stale = line(61, "20 50"), damaged = "2026-02-30 10:00 20 50\n";
  for (const std::string& text : {stale, damaged, std::string("# none\n")}) {
    startup_config().rht_file = write("room.txt", text);
    order.shown.clear();
    reply(answer::ok, {{"TEMP$", "19"}, {"HUMIDITY$", "101"}});
    reply(answer::terminate);
    EXPECT_EQ(go("Main"), run_result::given_up);
    const test::Shown form = order.of_kind("form").front();
    EXPECT_EQ(form.form.fields[0].text, "") << text;
    EXPECT_EQ(form.form.lines.size() > 1, true) << "the window says why: " << text;
    EXPECT_EQ(form.lines.back(), msg(30634, 100.0)) << text;
  }
  startup_config().rht_max_age = 0;
  startup_config().rht_file = write("room.txt", stale);
  reply(answer::ok);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(variable("TEMP$"), "20");
}

TEST_F(Pipeline, TheEndOfARunStandsInItsVariables) {
  const HandlerRow head{fsc::head, [](Statement& s) {
                          static_cast<test::FalseClock*>(platform().clock)->milliseconds +=
                              61u * 60000u + 30000u;
                          static_cast<test::FalseClock*>(platform().clock)->seconds += 3690;
                          const std::string* name = run_variable(s.run, "PROC_NAME$");
                          steps.push_back(name != nullptr ? *name : "");
                          return true;
                        }};
  dispatch_install({&head, 1});
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_NE(std::find(steps.begin(), steps.end(), "Main"), steps.end());
  const std::pair<const char*, const char*> wanted[] = {
      {"ACT$", "1 Hour 1 Minute"},
      {"ACT_MIN$", "61.5"},
      {"ACT_HR$", "1.0"},
      {"ELAPSED_TIME_MIN$", "61.5"},
      {"TEST_STATUS$", "COMPLETED"},
      {"OVERALL_RESULT$", ""},
      {"NUM_ADJ$", "0"},
      {"NUM_FAILED$", "0"},
      {"PROC_NAME$", "Main"},
      {"PROC_REV$", "1.0"},
  };
  for (const auto& [name, value] : wanted) EXPECT_EQ(variable(name), value) << name;
  EXPECT_EQ(variable("DATE_END$").size(), 10u);
  EXPECT_EQ(variable("ELAPSED_TIME$"), "1 Hour 1 Minute");
}

TEST_F(Pipeline, TheStatusTellsHowTheRunEnded) {
  const auto compared = [](int step) {  // MEM with 10 V, within 1 %
    std::string text = line(1, step, "MEMC", "10.00V");
    text.resize(37, ' ');
    return text + "1%\n";
  };
  source(test::header("Judged") + line(1, 1, "MEMI", "Reading?") + "\n" + compared(2) +
         line(2, 1, "MEMI", "Reading?") + "\n" + compared(2) + line(2, 3, "END", "") + "\n");
  procedure("Breaks", {"MATH M[1]=1/0", "END"});
  struct Case {
    const char* procedure;
    std::deque<test::Reply> replies;
    const char* status;
    const char* overall;
    const char* failed;
    int note;
  };
  const auto press = [](int code, std::string text = {}) {
    return test::Reply{code, std::move(text), 0, {}};
  };
  const test::Reply good = press(answer::ok, "10"), bad = press(answer::ok, "11"),
                    up = press(answer::terminate), on = press(answer::test_continue),
                    off = press(answer::test_term);
  const Case cases[] = {
      {"Judged", {good, on, good, on}, "COMPLETED", "PASS", "0", 5019},
      {"Judged", {good, on, bad, on}, "COMPLETED", "FAIL", "1", 5019},
      {"Judged", {good, on, up, off}, "TERMINATED", "", "0", 5020},
      {"Judged", {bad, off}, "TERMINATED", "FAIL", "1", 5020},
      {"Breaks", {on}, "COMPLETED", "", "0", 5019},
      {"Breaks", {off}, "TERMINATED", "", "0", 5020},
  };
  for (const Case& c : cases) {
    order.replies = c.replies;
    order.shown.clear();
    EXPECT_EQ(run_test(run, c.procedure), run_result::finished);
    EXPECT_EQ(variable("TEST_STATUS$"), c.status) << c.procedure;
    EXPECT_EQ(variable("OVERALL_RESULT$"), c.overall) << c.procedure << c.status;
    EXPECT_EQ(variable("NUM_FAILED$"), c.failed);
    EXPECT_EQ(order.message_numbers().back(), c.note);
  }
}

TEST_F(Pipeline, ProgressIsToldTenTimesASecondAtMost) {
  std::vector<std::string> lines = {"CALL Sub"};
  for (int i = 0; i < 20; ++i) lines.push_back("HEAD x");
  lines.push_back("END");
  procedure("Long", lines);
  procedure("Sub", {"HEAD x", "HEAD x", "END"});
  static test::FalseClock* time = nullptr;
  time = &clock;
  const HandlerRow head{fsc::head, [](Statement&) {
                          time->milliseconds += 50;
                          return true;
                        }};
  dispatch_install({&head, 1});
  EXPECT_EQ(go("Long"), run_result::finished);
  const std::vector<RunProgress>& told = order.progress_shown;
  ASSERT_GE(told.size(), 10u);
  EXPECT_LE(told.size(), 12u);
  std::size_t before = 0;
  for (const RunProgress& one : told) {
    EXPECT_EQ(one.statements, 22u);
    EXPECT_GE(one.statement, before);
    EXPECT_LE(one.statement, 22u);
    before = one.statement;
  }
  EXPECT_EQ(told.front().statement, 1u) << "a sub-procedure stands at its CALL";
  EXPECT_EQ(told.back().tests, 1u);
}

}  // namespace
}  // namespace orvane
