// Whole runs of compiled procedures on the desktop, with the keyboard alone; what is refused while one is on.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPushButton>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "desktop/desktop.h"
#include "desktop/main_window.h"
#include "desktop/results_window.h"
#include "desktop/texts.h"
#include "desktop/tools.h"
#include "instruments/bench_file.h"
#include "messages/catalogue.h"
#include "operator_hand.h"
#include "procedure/pipeline/database.h"
#include "procedure/pipeline/run_test.h"
#include "state/pump.h"
#include "support/procedures.h"
#include "support/process.h"

namespace orvane::test {
namespace {

// The text of a message window.
QString text_in(DeskWindow& window) {
  QString text;
  for (const QLabel* label : window.findChildren<QLabel*>())
    if (label->text().size() > text.size()) text = label->text();
  return text;
}

class DesktopRun : public RunTest {
 protected:
  DesktopRun() {
    platform().clock = &system_clock();
    desktop = std::make_unique<Desktop>();
    desktop->open();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&main()));
  }
  ~DesktopRun() override {
    EXPECT_TRUE(hand.is_done()) << "fewer windows than answers";
    desktop.reset();
    clear_abort();
  }

  int go(const std::string& name) {
    desktop->run(name);
    return desktop->exit_code();
  }
  MainWindow& main() { return desktop->main(); }

  Hand hand;
  std::unique_ptr<Desktop> desktop;
};

TEST_F(DesktopRun, AProcedureIsRunWithTheKeyboardAlone) {
  procedure("keyboard",
            {"DISP Connect the unit.", "OPBR Does it measure AC volts?", "MATH M[1] = MEM1",
             "MEMI Reading in volts?", "MATH M[2] = MEM", "MEME 10", "MEMC 10.000V        1%", "END"});
  QStringList titles;
  const auto note = [&](DeskWindow& window) { titles += window.windowTitle(); };
  hand.then([&](DeskWindow& window) {  // the list of procedures, from F5
    note(window);
    press_key(window, Qt::Key_Return);
  });
  hand.then([&](DeskWindow& window) {
    note(window);
    press_key(window, Qt::Key_Return);
  });
  hand.then([&](DeskWindow& window) {
    note(window);
    press_key(window, Qt::Key_Tab);
    press_key(window, Qt::Key_Return);
  });
  hand.type("12,5").key(Qt::Key_Return);
  hand.then([&](DeskWindow& window) {
    note(window);
    press_key(window, Qt::Key_Return);
  });
  hand.key(Qt::Key_Return);  // a demonstration says that it was one
  QTest::keyClick(&main(), Qt::Key_F5);
  EXPECT_EQ(desktop->exit_code(), run_result::finished);
  EXPECT_EQ(m(1), -1.0) << "No";
  EXPECT_EQ(m(2), 12.5);
  ASSERT_EQ(titles.size(), 4);
  EXPECT_EQ(titles[2], "Test Decision");
  EXPECT_EQ(titles[3], "Test result");
  EXPECT_FALSE(main().is_busy());
  EXPECT_FALSE(main().run_is_on());
}

// The demo laboratory's calibration against its simulated bench: Enter for every prompt, a comment and on at the point
// that fails.
TEST_F(DesktopRun, TheDemoCalibrationIsFinishedWithTheKeyboardAlone) {
  for (const auto& entry : std::filesystem::directory_iterator(ORVANE_SOURCE_DIR "/demo/source"))
    source(contents(entry.path().string()));
  startup_config().ib_nport = 1;
  startup_config().ib_type = 15;
  startup_config().ib_driver = built("libgpibsim.so");
  ::setenv("ORVANE_BENCH", ORVANE_SOURCE_DIR "/demo/bench.txt", 1);
  run.demo_mode = false;
  DeviceList bench;
  std::vector<BenchFault> faults;
  ASSERT_TRUE(bench_file_read(ORVANE_SOURCE_DIR "/demo/instruments.txt", bench, faults));
  set_device_list(std::move(bench));
  int decisions = 0;
  hand.always([&](DeskWindow& window) {
    if (window.windowTitle() == shown(msg(7122)) && ++decisions == 1) return press_key(window, Qt::Key_F2);
    if (window.windowTitle() == shown(msg(7104))) type_text(window, "fails at 300 V");
    press_key(window, Qt::Key_Return);
  });
  EXPECT_EQ(go("Hand-held multimeter: verification"), run_result::finished);
  EXPECT_EQ(decisions, 2) << "the failing point, before and behind its comment";
  EXPECT_EQ(overall_result(run).failed, 1U);
  ASSERT_NE(tres_window(), nullptr);
  int failed = 0, passed = 0, comments = 0;
  for (const TestResultLine& line : tres_window()->lines()) {
    failed += line.colour == result_colour::fail ? 1 : 0;
    passed += line.colour == result_colour::pass || line.colour == result_colour::marginal ? 1 : 0;
    comments += line.text.contains("fails at 300 V") ? 1 : 0;
  }
  EXPECT_EQ(failed, 1);
  EXPECT_EQ(passed, 10);
  EXPECT_EQ(comments, 1);
  set_device_list(std::nullopt);
  run.demo_mode = true;
}

TEST_F(DesktopRun, CancelInTheListGivesUpWithoutAWord) {
  procedure("one", {"END"});
  hand.key(Qt::Key_Escape);
  EXPECT_EQ(go(""), run_result::given_up);
}

// While a window waits in a run: Run, Reset, Exit, closing and the tools do nothing, from whatever road they come.
TEST_F(DesktopRun, NoOtherCommandIsTakenDuringARun) {
  procedure("long", {"DISP Wait.", "MATH M[1] = M[1] + 1", "END"});
  std::vector<QString> told;
  hand.then([&](DeskWindow& window) {
    main().set_run(true);
    for (const int id : {command::run, command::exit, command::real_mode, command::about, command::by_asset,
                         command::first_tool})
      main().give(id);
    QTest::keyClick(&main(), Qt::Key_F5);
    desktop->run("long");
    EXPECT_EQ(waiting_window(), &window) << "a command was carried out";
    for (const MenuCommand& row : menu_commands()) {
      const QAction* action = main().action(row.id);
      EXPECT_TRUE(action == nullptr || action->isEnabled() == (row.id == command::abort)) << row.id;
    }
    EXPECT_TRUE(main().action(command::abort)->isEnabled());
    main().close();
    EXPECT_TRUE(main().isVisible());
    main().give(command::reset);
    EXPECT_EQ(told, (std::vector<QString>{shown(msg(2298)), shown(msg(2113))}));
    press_key(window, Qt::Key_Return);
  });
  for (int i = 0; i < 2; ++i) {
    hand.then([&](DeskWindow& window) {
      told.push_back(text_in(window));
      EXPECT_EQ(window.windowTitle(), "Run Time Information");
      press_key(window, Qt::Key_Return);
    });
  }
  hand.key(Qt::Key_Return);
  EXPECT_EQ(go("long"), run_result::finished);
  EXPECT_EQ(m(1), 1.0) << "the run went on, once";
}

TEST_F(DesktopRun, TheAbortKeyReachesARunInAnyWindow) {
  procedure("prompts", {"DISP Wait.", "MATH M[1] = 1", "END"});
  hand.then([](DeskWindow& window) { press_key(window, Qt::Key_F10); });
  hand.then([](DeskWindow& window) {  // Term is allowed: the stop asks
    EXPECT_EQ(window.windowTitle(), "Test stopped");
    window.give_up();
  });
  hand.key(Qt::Key_Return);
  go("prompts");
  EXPECT_EQ(m(1), 0.0);
  EXPECT_TRUE(is_abort_key(Qt::Key_Pause, Qt::ControlModifier));
  EXPECT_TRUE(is_abort_key(Qt::Key_Cancel, Qt::NoModifier));
  EXPECT_FALSE(is_abort_key(Qt::Key_F10, Qt::ShiftModifier));
}

TEST_F(DesktopRun, TheWindowStaysAliveInALoopAndAbortEndsIt) {
  procedure("endless", {"WHILE 1", "MATH M[1] = M[1] + 1", "ENDW", "END"});
  QElapsedTimer since;
  qint64 took = -1;
  QTimer::singleShot(100, [&] {
    since.start();
    desktop->abort();
  });
  hand.then([&](DeskWindow& window) {
    took = since.elapsed();
    window.give_up();
  });
  hand.key(Qt::Key_Return);
  go("endless");
  EXPECT_GT(m(1), 10.0);
  EXPECT_GE(took, 0);
  EXPECT_LT(took, 1000);
}

TEST_F(DesktopRun, TheEndOfTheSessionEndsARunWithoutAQuestion) {
  procedure("prompt", {"DISP Wait.", "DISP Wait.", "END"});
  hand.then([&](DeskWindow&) { desktop->leave(); });
  go("prompt");
  EXPECT_FALSE(main().is_busy());
  EXPECT_TRUE(run.has(run_flag::terminate));
  // The program has been told to end; here another test follows, and a loop that begins anew forgets it.
  QTimer::singleShot(0, qApp, &QCoreApplication::quit);
  QApplication::exec();
}

// --- Commands --------------------------------------------------------------------------------------------------------

TEST_F(DesktopRun, ModeAndMethodGoToTheSettings) {
  EXPECT_FALSE(main().action(command::real_mode)->isChecked());
  main().give(command::real_mode);
  EXPECT_EQ(user_setting("Run Time", "mode"), "real");
  EXPECT_FALSE(run.demo_mode);
  EXPECT_TRUE(main().action(command::real_mode)->isChecked());
  main().give(command::real_mode);
  EXPECT_EQ(user_setting("Run Time", "mode"), "demo");
  main().give(command::by_procedure);
  EXPECT_EQ(user_setting("Run Time", "method"), "by_proc");
  EXPECT_TRUE(main().action(command::by_procedure)->isChecked());
  EXPECT_EQ(main().action(command::by_workload), nullptr) << "no workload is configured";
}

TEST_F(DesktopRun, WhatIsNotOfferedSaysWhy) {
  int missing = 0;
  for (const MenuCommand& row : menu_commands()) {
    const QAction* item = main().action(row.id);
    if (item == nullptr) continue;
    EXPECT_FALSE(item->text().isEmpty()) << row.id;
    if (row.missing == 0) continue;
    ++missing;
    EXPECT_FALSE(item->isEnabled()) << row.id;
    EXPECT_FALSE(item->statusTip().isEmpty()) << row.id;
  }
  EXPECT_GT(missing, 5);
}

TEST_F(DesktopRun, ACommandNeedsItsRight) {
  static int asked = -1;
  DatabaseRoads roads{};
  roads.operator_may = [](int right) {
    asked = right;
    return false;
  };
  startup_config().database = 1;
  set_database_roads(&roads);
  QString told;
  hand.then([&](DeskWindow& window) {
    told = window.windowTitle();
    press_key(window, Qt::Key_Return);
  });
  main().give(command::real_mode);
  set_database_roads(nullptr);
  EXPECT_EQ(told, "Run Time Error");
  EXPECT_EQ(asked, operator_right::common);
  EXPECT_TRUE(run.demo_mode) << "the command was carried out";
}

TEST_F(DesktopRun, ToolsAreStartedAndGoTheirOwnWay) {
  const std::string mark = (folder / "tool ran").string();
  ASSERT_TRUE(put_user_setting("Tools", "1", "Mark it, /bin/sh -c \"touch '" + mark + "'\""));
  ASSERT_TRUE(put_user_setting("Tools", "2", "Nothing, /nowhere/program"));
  ASSERT_TRUE(put_user_setting("Tools", "4", "Behind a gap, true"));
  ASSERT_EQ(configured_tools().size(), 2U);
  EXPECT_EQ(tool_name(command::first_tool), "Mark it");
  main().give(command::first_tool);
  for (int i = 0; i < 500 && !std::filesystem::exists(mark); ++i) QTest::qWait(10);
  EXPECT_TRUE(std::filesystem::exists(mark));
  hand.key(Qt::Key_Return);  // 30852
  main().give(command::first_tool + 1);
}

}  // namespace
}  // namespace orvane::test
