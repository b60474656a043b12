// The results window, where windows stand, colours and signs, and the event loop's guard.
#include <gtest/gtest.h>

#include <QApplication>
#include <QScreen>
#include <QTimer>
#include <set>

#include "config/user_settings.h"
#include "desktop/desk.h"
#include "desktop/look.h"
#include "desktop/main_window.h"
#include "desktop/placement.h"
#include "desktop/results_window.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

class Boards : public EngineTest {
 protected:
  Boards() { use_user_settings((folder / "settings.ini").string()); }
  ~Boards() override { tres_close(); }
};

TEST_F(Boards, The801stResultRemovesTheFirst) {
  QWidget owner;
  tres_add_line("nobody lists this", result_colour::pass);
  ASSERT_TRUE(tres_open(&owner, false));
  EXPECT_EQ(tres_window()->windowTitle(), "Run Time Test Results");
  EXPECT_TRUE(tres_window()->lines().empty());
  for (int i = 1; i <= 801; ++i) tres_add_line(std::to_string(i) + "\t3V", result_colour::pass, i);
  const auto& lines = tres_window()->lines();
  ASSERT_EQ(lines.size(), 800U);
  EXPECT_EQ(lines.front().text, "2\t3V");
  EXPECT_EQ(lines.back().text, "801\t3V");
  tres_window()->grab();
  tres_clear();
  EXPECT_TRUE(tres_window()->lines().empty());
  tres_open(&owner, true);
  EXPECT_EQ(tres_window()->windowTitle(), "Test Run Test Results");
}

TEST_F(Boards, TheNewestResultIsDrawnAndBeyondALimitLooksDifferent) {
  QWidget owner;
  tres_open(&owner, false);
  const auto drawn = [](double percent) {
    tres_clear();
    for (int i = 0; i < 100; ++i) tres_add_line(" ", result_colour::comment);
    tres_add_line("1\t3V", result_colour::fail, percent, "FAIL");
    return tres_window()->grab().toImage();
  };
  const QImage within = drawn(99), beyond = drawn(101), far_beyond = drawn(1e300);
  EXPECT_NE(within, beyond);
  EXPECT_NE(within, drawn(-99));
  // Beyond the limit a bar is higher, not just a pixel longer.
  const auto coloured = [](const QImage& image) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
      for (int x = 0; x < image.width(); ++x)
        count += QColor(image.pixel(x, y)).hsvSaturation() > 200 ? 1 : 0;
    return count;
  };
  EXPECT_GT(coloured(beyond), coloured(within) * 5 / 4);
  EXPECT_GT(coloured(far_beyond), coloured(within));
}

TEST_F(Boards, PlacesAreKeptAndPutBackInView) {
  const QRect screen = QApplication::primaryScreen()->availableGeometry();
  const QRect inside(screen.left() + 20, screen.top() + 30, 300, 200);
  EXPECT_EQ(in_view(inside), inside);
  for (const QRect& lost : {QRect(-5000, -5000, 300, 200), QRect(90000, 40, 300, 200),
                            QRect(40, 90000, 300, 200), QRect(40, -190, 300, 200), QRect(-290, 40, 300, 200)})
    EXPECT_TRUE(screen.contains(in_view(lost))) << lost.x() << "," << lost.y();
  EXPECT_TRUE(screen.contains(in_view(QRect(90000, 90000, 9000, 9000))));

  write("settings.ini",
        "[Run Time Results]\nLeft = 90000\nTop = 40\nRight = 90640\nBottom = 200\nState = 1\n");
  QWidget owner;
  tres_open(&owner, false);
  EXPECT_TRUE(screen.contains(tres_window()->geometry()));
  EXPECT_EQ(tres_window()->size(), QSize(640, 160));
  tres_window()->setGeometry(50, 60, 700, 150);
  tres_close();
  EXPECT_EQ(user_setting("Run Time Results", "Left"), "50");
  EXPECT_EQ(user_setting("Run Time Results", "Bottom"), "210");

  write("settings.ini", "[Run Time Main]\nLeft = 70\nTop = 80\nWidth = 700\nHeight = 400\n");
  {
    MainWindow main;
    main.open();
    EXPECT_EQ(main.geometry(), QRect(70, 80, 700, 400));
    main.setGeometry(75, 85, 710, 420);
    main.close();
  }
  EXPECT_EQ(user_setting("Run Time Main", "Left"), "75");
  EXPECT_EQ(user_setting("Run Time Main", "Height"), "420");
  for (const char* text : {"", "x", "7x", "99999999999", "1e3"}) {
    write("settings.ini", "[Run Time Main]\nLeft = " + std::string(text) + "\n");
    EXPECT_FALSE(placement_value("Run Time Main", "Left")) << text;
  }
}

TEST_F(Boards, VerdictsAreReadOnLightAndDarkAndNeverByColourAlone) {
  std::set<QString> signs;
  for (int colour = result_colour::pass; colour <= result_colour::fail_indeterminate; ++colour) {
    EXPECT_TRUE(signs.insert(verdict_sign(colour)).second) << "two verdicts with the sign of " << colour;
    for (const QColor ground :
         {QColor(Qt::white), QColor(Qt::black), QColor(24, 26, 28), QColor(255, 255, 225)}) {
      QPalette palette;
      palette.setColor(QPalette::Base, ground);
      EXPECT_GE(contrast(verdict_colour(colour, palette), ground), 4.5)
          << colour << " on " << ground.name().toStdString();
    }
  }
}

TEST_F(Boards, TurnsOfTheEventLoopNeverNest) {
  DesktopEvents events;
  int depth = 0, deepest = 0;
  bool inner_seen = false;
  QTimer::singleShot(0, [&] {
    deepest = std::max(deepest, ++depth);
    QTimer::singleShot(0, [&] { inner_seen = true; });
    for (int i = 0; i < 5; ++i) events.turn();
    --depth;
  });
  for (int i = 0; i < 200 && depth == 0 && deepest == 0; ++i) events.turn();
  EXPECT_EQ(deepest, 1);
  EXPECT_FALSE(inner_seen) << "the inner turn handled events";
  for (int i = 0; i < 200 && !inner_seen; ++i) events.turn();
  EXPECT_TRUE(inner_seen);
}

}  // namespace
}  // namespace orvane::test
