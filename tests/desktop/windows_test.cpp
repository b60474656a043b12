// Each kind of window: what Enter, Esc, closing, a held key and the Abort command answer, and what it does besides.
#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#include "config/startup_config.h"
#include "desktop/desk.h"
#include "desktop/main_window.h"
#include "desktop/texts.h"
#include "desktop/why_window.h"
#include "operator_hand.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

class Windows : public EngineTest {
 protected:
  Windows() {
    startup_config() = StartupConfig();
    screen.use(&main);
    main.show();
  }
  ~Windows() override {
    EXPECT_TRUE(hand.is_done()) << "fewer windows than answers";
    screen.close();
  }

  static std::vector<Button> yes_no_terminate() {
    return {{answer::yes, "Yes", true}, {answer::no, "No"}, {answer::terminate, "Terminate"}};
  }
  int question(WindowKind kind, std::vector<Button> buttons) {
    LinesWindow window;
    window.kind = kind;
    window.title = "Question";
    window.lines = {"Is the lamp lit?"};
    window.buttons = std::move(buttons);
    return screen.lines(window);
  }

  MainWindow main;
  DesktopDesk screen;
  Hand hand;
};

TEST_F(Windows, EnterIsTheDefaultAndEscTheRefusal) {
  hand.key(Qt::Key_Return);
  EXPECT_EQ(question(WindowKind::question, yes_no_terminate()), answer::yes);
  hand.key(Qt::Key_Escape);
  EXPECT_EQ(question(WindowKind::question, yes_no_terminate()), answer::terminate);
  hand.key(Qt::Key_Tab).key(Qt::Key_Enter);
  EXPECT_EQ(question(WindowKind::question, yes_no_terminate()), answer::no);
  hand.then([](DeskWindow& window) { QTest::mouseClick(button_of(window, answer::no), Qt::LeftButton); });
  EXPECT_EQ(question(WindowKind::question, yes_no_terminate()), answer::no);
  // Without a Terminate the No of a plain question refuses.
  hand.key(Qt::Key_Escape);
  EXPECT_EQ(question(WindowKind::question, {{answer::yes, "Yes", true}, {answer::no, "No"}}), answer::no);
}

TEST_F(Windows, NeitherEscNorClosingIsAVerdict) {
  for (const WindowKind kind : {WindowKind::evaluation, WindowKind::picture}) {
    hand.key(Qt::Key_Escape).close().key(Qt::Key_Tab).key(Qt::Key_Return);
    EXPECT_EQ(question(kind, {{answer::yes, "Pass", true}, {answer::no, "Fail"}}), answer::no);
  }
}

TEST_F(Windows, AHeldKeyAnswersNothing) {
  hand.then([](DeskWindow& window) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space}) {
      QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
      QApplication::sendEvent(window.focusWidget(), &held);
    }
    EXPECT_TRUE(window.is_waiting());
    window.give_up();
  });
  EXPECT_EQ(question(WindowKind::evaluation, yes_no_terminate()), answer::terminate);
}

TEST_F(Windows, ButtonsHaveKeysAndTerminateStandsApart) {
  hand.then([](DeskWindow& window) {
    const QPushButton *yes = button_of(window, answer::yes), *no = button_of(window, answer::no),
                      *terminate = button_of(window, answer::terminate);
    EXPECT_EQ(yes->text(), "&Yes");
    EXPECT_EQ(no->text(), "&No");
    EXPECT_EQ(terminate->text(), "&Terminate");
    EXPECT_LT(terminate->geometry().right() + 30, yes->geometry().left());
    EXPECT_LT(yes->geometry().right(), no->geometry().left());
    EXPECT_NE(yes->palette().color(QPalette::Button), no->palette().color(QPalette::Button))
        << "what Enter presses";
    window.give_up();
  });
  question(WindowKind::question, yes_no_terminate());
  EXPECT_EQ(with_access_keys({"Save", "Save As", "Stop", "A & B", "e"}),
            (std::vector<QString>{"&Save", "S&ave As", "S&top", "A && &B", "&e"}));
}

TEST_F(Windows, AMissingOrDamagedPictureIsToldInItsPlace) {
  const struct {
    std::string path;
    const char* told;
  } cases[] = {{"nowhere.png", "nowhere.png"},
               {write("damaged.png", "\x89PNG\r\n\x1a\nthis is none"), "damaged.png"}};
  for (const auto& one : cases) {
    LinesWindow window;
    window.kind = WindowKind::picture;
    window.lines = {"Look"};
    window.buttons = {{answer::ok, "OK", true}};
    window.picture = Picture{one.path, "UUT Front View", PictureFrame{10, 10, 40, 40}};
    bool told = false;
    hand.then([&](DeskWindow& shown_window) {
      for (const QLabel* label : shown_window.findChildren<QLabel*>())
        told = told || (label->isVisible() && label->text().contains(one.told));
      press_key(shown_window, Qt::Key_Return);
    });
    EXPECT_EQ(screen.lines(window), answer::ok);
    EXPECT_TRUE(told) << one.told;
  }
}

// --- Prompts -----------------------------------------------------------------------------------------------------

TEST_F(Windows, AskTakesWhatIsTyped) {
  AskWindow window;
  window.lines = {"Reading?"};
  window.buttons = {{answer::ok, "OK", true}, {answer::terminate, "Cancel"}};
  window.length = 6;
  std::string text = "old";
  hand.type("12,5 \u00B5V too long").key(Qt::Key_Return);  // the first text is selected: typing replaces it
  EXPECT_EQ(screen.ask(window, text), answer::ok);
  EXPECT_EQ(text, "12,5 \xB5");
  hand.type("x").key(Qt::Key_Escape);
  EXPECT_EQ(screen.ask(window, text), answer::terminate);
  EXPECT_EQ(text, "12,5 \xB5") << "a prompt that is given up changes nothing";
  window.echo = false;
  hand.then([](DeskWindow& shown_window) {
    auto* field = shown_window.findChild<QLineEdit*>();
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
    EXPECT_TRUE(field->hasFocus() || shown_window.focusWidget() == field);
    type_text(shown_window, "key");
    press_key(shown_window, Qt::Key_Return);
    EXPECT_EQ(field->echoMode(), QLineEdit::Password);
  });
  EXPECT_EQ(screen.ask(window, text), answer::ok);
  EXPECT_EQ(text, "key");
}

TEST_F(Windows, AskShowsHowANumberIsUnderstood) {
  const struct {
    const char* typed;
    const char* told;
  } cases[] = {{"1,5", "= 1.5"}, {"1.5", ""}, {"2,5e3", "= 2500"}, {"1,5V", ""}};
  AskWindow window;
  window.buttons = {{answer::ok, "OK", true}};
  window.length = 20;
  for (const auto& one : cases) {
    std::string text;
    QString told;
    hand.type(one.typed).then([&](DeskWindow& shown_window) {
      for (const QLabel* label : shown_window.findChildren<QLabel*>())
        if (label->isVisible() && label->text().startsWith("=")) told = label->text();
      press_key(shown_window, Qt::Key_Return);
    });
    screen.ask(window, text);
    EXPECT_EQ(told.toStdString(), one.told) << one.typed;
  }
}

// --- Lists -------------------------------------------------------------------------------------------------------

class CountedRows : public RowSource {
 public:
  std::size_t rows = 65535;
  mutable std::size_t asked = 0;
  std::size_t count() const override { return rows; }
  std::string row(std::size_t index) const override {
    ++asked;
    return "row " + std::to_string(index) + "\tvalue";
  }
};

TEST_F(Windows, AListingRendersOnlyWhatIsDrawn) {
  CountedRows rows;
  ChoiceWindow window;
  window.kind = WindowKind::listing;
  window.rows = &rows;
  window.first_row = 60000;
  window.buttons = {{answer::ok, "Go on", true}, {answer::terminate, "Cancel"}};
  QElapsedTimer timer;
  timer.start();
  hand.then([&](DeskWindow& shown_window) {
    shown_window.grab();  // all of it is drawn
    EXPECT_LT(rows.asked, 400U);
    press_key(shown_window, Qt::Key_Down);
    press_key(shown_window, Qt::Key_Return);
  });
  std::size_t row = 0;
  EXPECT_EQ(screen.choose(window, row), answer::ok);
  EXPECT_EQ(row, 60001U);
  EXPECT_LT(timer.elapsed(), 3000);
}

TEST_F(Windows, AListIsNarrowedByTyping) {
  CountedRows rows;
  rows.rows = 120;
  ChoiceWindow window;
  window.filter = true;
  window.headings = "Name\tState";
  window.rows = &rows;
  window.buttons = {{answer::ok, "OK", true}, {answer::terminate, "Cancel"}};
  std::size_t row = 7;
  hand.type("VAL 11").key(Qt::Key_Down).key(Qt::Key_Return);  // 11, 110 to 119
  EXPECT_EQ(screen.choose(window, row), answer::ok);
  EXPECT_EQ(row, 110U);
  // Nothing fits: the list cannot be answered with a row, only given up.
  hand.type("nothing").key(Qt::Key_Return).then([](DeskWindow& shown_window) {
    EXPECT_FALSE(button_of(shown_window, answer::ok)->isEnabled());
    press_key(shown_window, Qt::Key_Escape);
  });
  row = 7;
  EXPECT_EQ(screen.choose(window, row), answer::terminate);
  EXPECT_EQ(row, 7U);
}

// --- Forms -------------------------------------------------------------------------------------------------------

TEST_F(Windows, AFormStaysUntilItsFieldsFit) {
  FormWindow form;
  form.fields.resize(4);
  form.fields[0].name = "SER_NUM$";
  form.fields[0].required = true;
  form.fields[1].name = "T";
  form.fields[1].kind = FieldKind::number;
  form.fields[1].text = "20";
  form.fields[2].kind = FieldKind::choice;
  form.fields[2].choices = {"good", "damaged"};
  form.fields[2].text = "damaged";
  form.fields[3].kind = FieldKind::check;
  form.fields[3].text = "NO";
  form.buttons = {{answer::ok, "OK", true}, {answer::terminate, "Cancel"}};
  form.fault = [](const FormField& field) {
    return std::string(field.required && field.text.empty() ? "A serial number is needed." : "");
  };
  hand.key(Qt::Key_Return).then([](DeskWindow& window) {
    bool told = false;
    for (const QLabel* label : window.findChildren<QLabel*>())
      told = told || (label->isVisible() && label->text().contains("A serial number is needed."));
    EXPECT_TRUE(told);
    EXPECT_EQ(window.focusWidget(), window.findChildren<QLineEdit*>().first());
    type_text(window, "A-17");
    press_key(window, Qt::Key_Tab);
    press_key(window, Qt::Key_Tab);
    press_key(window, Qt::Key_Up);  // the other choice
    press_key(window, Qt::Key_Tab);
    press_key(window, Qt::Key_Space);
    press_key(window, Qt::Key_Return);
  });
  EXPECT_EQ(screen.form(form), answer::ok);
  EXPECT_EQ(form.fields[0].text, "A-17");
  EXPECT_EQ(form.fields[1].text, "20");
  EXPECT_EQ(form.fields[2].text, "good");
  EXPECT_EQ(form.fields[3].text, "YES");
  hand.close().key(Qt::Key_Escape);  // a form that is given up checks nothing
  form.fields[0].text.clear();
  EXPECT_EQ(screen.form(form), answer::terminate);
}

// --- The decision about a test -------------------------------------------------------------------------------------

TestWindow decision(std::initializer_list<int> enabled) {
  TestWindow window;
  window.status_text = "FAIL";
  window.colour = result_colour::fail;
  window.texts = {{"Error:", "-1.70 %"}};
  for (int code = answer::test_adjust; code <= answer::test_term; ++code)
    window.buttons.push_back({{code, "B" + std::to_string(code), code == answer::test_continue},
                              std::find(enabled.begin(), enabled.end(), code) != enabled.end()});
  return window;
}

TEST_F(Windows, TheTestWindowTakesOnlyWhatIsEnabled) {
  const TestWindow window = decision({answer::test_continue, answer::test_comment, answer::test_term});
  // F6 (Repeat) and F3 (List) are off; Esc and closing are no verdict; F2 is Comment.
  hand.key(Qt::Key_F6).key(Qt::Key_F3).key(Qt::Key_Escape).close().key(Qt::Key_F2);
  EXPECT_EQ(screen.test(window), answer::test_comment);
  hand.key(Qt::Key_Return);
  EXPECT_EQ(screen.test(window), answer::test_continue);
  hand.then([](DeskWindow& shown_window) { shown_window.give_up(); });
  EXPECT_EQ(screen.test(window), answer::test_term) << "the Abort command";
}

TEST_F(Windows, TheTestWindowTellsItsStatusInWordsAndASign) {
  QStringList texts;
  hand.then([&](DeskWindow& window) {
    for (const QLabel* label : window.findChildren<QLabel*>())
      if (label->isVisible()) texts += label->text();
    press_key(window, Qt::Key_Return);
  });
  screen.test(decision({answer::test_continue}));
  EXPECT_TRUE(texts.contains("FAIL"));
  EXPECT_TRUE(texts.contains(QString(QChar(0x2717))));
  EXPECT_TRUE(texts.contains("-1.70 %"));
}

// The window of the reasons, if it is open.
WhyBox* why_window() {
  for (QWidget* one : QApplication::topLevelWidgets()) {
    if (auto* why = dynamic_cast<WhyBox*>(one); why != nullptr && why->isVisible()) return why;
  }
  return nullptr;
}

// How far a bar is filled, in its middle row.
double filled(ShareBar& bar) {
  const QImage image = bar.grab().toImage();
  const QColor empty = bar.palette().color(QPalette::Base);
  int cells = 0;
  for (int x = 0; x < image.width(); ++x) cells += image.pixelColor(x, image.height() / 2) != empty ? 1 : 0;
  return static_cast<double>(cells) / image.width();
}

TEST_F(Windows, WhyTellsTheFactsAndDrawsTheShares) {
  TestWindow window = decision({answer::test_continue});
  window.explanation.facts = {{"Limits", "9.99 to 10.01"}, {"Verdict", "FAIL (100 % of tolerance fails)"}};
  window.explanation.budget = {{"U1 system accuracy", "0.003 V", 0.75}, {"U2", "0.002 V", 0.25}};
  hand.key(Qt::Key_F5).then([](DeskWindow& test) {
    WhyBox* why = why_window();
    ASSERT_NE(why, nullptr);
    QStringList texts;
    for (const QLabel* label : why->findChildren<QLabel*>())
      if (label->isVisible()) texts += label->text();
    for (const QString text :
         {"Limits", "9.99 to 10.01", "\u2717 FAIL (100 % of tolerance fails)", "0.003 V"})
      EXPECT_TRUE(texts.contains(text)) << text.toStdString();
    std::vector<ShareBar*> bars;
    for (QWidget* one : why->findChildren<QWidget*>())
      if (auto* bar = dynamic_cast<ShareBar*>(one)) bars.push_back(bar);
    ASSERT_EQ(bars.size(), 2U);
    EXPECT_EQ(bars[0]->accessibleName(), QString("U1 system accuracy: 75.0\u00A0%, 0.003 V"));
    EXPECT_NEAR(filled(*bars[0]), 0.75, 0.05);
    EXPECT_NEAR(filled(*bars[1]), 0.25, 0.05);
    press_key(*why, Qt::Key_Tab);
    press_key(*why, Qt::Key_Escape);
    EXPECT_EQ(why_window(), nullptr);
    EXPECT_TRUE(test.is_waiting() && test.isVisible());
  });
  hand.type("?").then([](DeskWindow&) {
    press_key(*why_window(), Qt::Key_Return);
    EXPECT_EQ(why_window(), nullptr);
  });
  // It may stand open beside the decision, and goes with it.
  hand.key(Qt::Key_F5).then([](DeskWindow& test) {
    EXPECT_NE(why_window(), nullptr);
    test.press(answer::test_continue);
  });
  EXPECT_EQ(screen.test(window), answer::test_continue);
  EXPECT_EQ(why_window(), nullptr);

  // Where there is nothing to tell, nothing opens.
  hand.key(Qt::Key_F5).then([](DeskWindow& test) {
    EXPECT_EQ(why_window(), nullptr);
    test.give_up();
  });
  screen.test(decision({answer::test_continue}));
}

// --- Waits and messages ----------------------------------------------------------------------------------------------

TEST_F(Windows, OnlyItsButtonEndsAWait) {
  const auto outer = screen.wait({"Warming up", "Please wait\n00:10", true});
  QTest::qWait(20);
  auto* dialog = dynamic_cast<DeskWindow*>(QApplication::activeWindow());
  ASSERT_NE(dialog, nullptr);
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Space}) press_key(*dialog, key);
  dialog->close();
  EXPECT_TRUE(dialog->isVisible());
  EXPECT_FALSE(outer->abort_pressed());
  {
    const auto inner = screen.wait({"Loading", "Please wait", false});
    EXPECT_EQ(button_of(*dialog, answer::terminate), nullptr);
  }
  outer->update("Please wait\n00:09");
  QTest::mouseClick(button_of(*dialog, answer::terminate), Qt::LeftButton);
  EXPECT_TRUE(outer->abort_pressed());
}

TEST_F(Windows, LiveValuesStayUntilAKeyEndsThem) {
  struct Case {
    Qt::Key key;
    int code;
  };
  for (const Case& c : {Case{Qt::Key_Return, answer::ok}, Case{Qt::Key_Escape, answer::terminate}}) {
    const auto live = screen.live({.kind = WindowKind::slew,
                                   .title = "UUT Setup",
                                   .lines = {"Range : 10 V"},
                                   .buttons = {{answer::ok, "OK", true}, {answer::terminate, "Terminate"}}});
    live->post("9.999 V");
    QTest::qWait(20);
    DeskWindow* dialog = nullptr;
    for (QWidget* one : QApplication::topLevelWidgets()) {
      if (auto* window = dynamic_cast<DeskWindow*>(one); window != nullptr && window->isVisible())
        dialog = window;
    }
    ASSERT_NE(dialog, nullptr);
    dialog->close();
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(live->poll(), answer::failed);
    press_key(*dialog, c.key);
    EXPECT_EQ(live->poll(), c.code);
  }
}

TEST_F(Windows, AShortDelayOpensNoWindow) {
  const auto visible = [] {
    for (const QWidget* one : QApplication::topLevelWidgets())
      if (one->isVisible() && dynamic_cast<const DeskWindow*>(one) != nullptr) return true;
    return false;
  };
  screen.wait({"", "Loading", false}).reset();
  const auto longer = screen.wait({"", "Loading", false});
  EXPECT_FALSE(visible());
  QTest::qWait(500);
  EXPECT_TRUE(visible());
}

TEST_F(Windows, AMessageIsReadAndClosed) {
  int seen = 0;
  for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Escape}) {
    hand.then([&, key](DeskWindow& window) {
      ++seen;
      press_key(window, key);
    });
    screen.message(MessageKind::error, 2742, "E2742: no device listens");
  }
  hand.then([&](DeskWindow& window) {
    ++seen;
    window.close();
  });
  screen.message(MessageKind::information, 30856, "The instruments are reset.");
  EXPECT_EQ(seen, 3);
}

TEST_F(Windows, WhoHasLeftAnswersNothingMore) {
  screen.leave();
  EXPECT_EQ(question(WindowKind::question, yes_no_terminate()), answer::terminate);
  EXPECT_EQ(screen.test(decision({answer::test_continue})), answer::test_term);
  screen.message(MessageKind::error, 1, "E1: nobody reads this");
}

}  // namespace
}  // namespace orvane::test
