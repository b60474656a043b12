// Reports on the desktop: the viewer's search and zoom, a form whose fields follow each other, pages as a file.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <fstream>
#include <sstream>

#include "config/user_settings.h"
#include "desktop/desk.h"
#include "desktop/main_window.h"
#include "desktop/printing.h"
#include "desktop/texts.h"
#include "messages/catalogue.h"
#include "operator_hand.h"
#include "reports/page_layout.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

class DesktopReports : public EngineTest {
 protected:
  DesktopReports() {
    screen.use(&main);
    main.show();
  }
  ~DesktopReports() override {
    EXPECT_TRUE(hand.is_done()) << "fewer windows than answers";
    screen.close();
  }

  std::string path(const char* name) const { return (folder / name).string(); }

  MainWindow main;
  DesktopDesk screen;
  Hand hand;
};

TEST_F(DesktopReports, TheViewerFindsAndZooms) {
  LinesWindow window;
  window.kind = WindowKind::viewer;
  window.title = "Results";
  for (int i = 1; i <= 60; ++i)
    window.lines.push_back(formatted("Test %2d %s", i, i % 20 == 0 ? "FAIL" : "PASS"));
  window.buttons = {{answer::ok, "Close", true}, {45, "Print"}};
  const auto found_line = [](const DeskWindow& box) {
    const QTextCursor cursor = box.findChild<QPlainTextEdit*>()->textCursor();
    return cursor.hasSelection() ? cursor.blockNumber() + 1 : 0;
  };
  hand.then([&](DeskWindow& box) {
    auto* text = box.findChild<QPlainTextEdit*>();
    press_key(box, Qt::Key_F, Qt::ControlModifier);
    type_text(box, "fail");
    // From the end the search begins anew; Shift goes back.
    for (const int line : {20, 40, 60, 20}) {
      press_key(box, Qt::Key_Return);
      EXPECT_EQ(found_line(box), line);
    }
    press_key(box, Qt::Key_Return, Qt::ShiftModifier);
    EXPECT_EQ(found_line(box), 60);
    type_text(box, "ure");
    press_key(box, Qt::Key_Return);
    bool told = false;
    for (const QLabel* label : box.findChildren<QLabel*>()) told = told || label->text() == shown(msg(31339));
    EXPECT_TRUE(told) << "nothing was found, and nobody said so";
    EXPECT_TRUE(box.is_waiting());

    const int size = text->font().pointSize();
    press_key(box, Qt::Key_Plus, Qt::ControlModifier);
    EXPECT_GT(text->font().pointSize(), size);
    press_key(box, Qt::Key_0, Qt::ControlModifier);
    EXPECT_EQ(text->font().pointSize(), size);
    press_key(box, Qt::Key_Escape);
  });
  EXPECT_EQ(screen.lines(window), answer::ok);
}

TEST_F(DesktopReports, AFieldFollowsAnother) {
  FormWindow form;
  form.fields.resize(2);
  for (FormField& field : form.fields) field.kind = FieldKind::choice;
  form.fields[0].choices = {"Save", "View"};
  form.fields[0].text = "Save";
  form.fields[1].choices = {"Results", "Run as left"};
  form.fields[1].text = "Run as left";
  form.buttons = {{answer::ok, "OK", true}};
  form.changed = [](FormWindow& window) {
    if (window.fields[0].text != "View") return;
    window.fields[1].choices = {"Results"};
    window.fields[1].text = "Results";
  };
  hand.then([](DeskWindow& window) {
    press_key(window, Qt::Key_Down);
    const QComboBox* second = window.findChildren<QComboBox*>().last();
    EXPECT_EQ(second->count(), 1);
    EXPECT_EQ(second->currentText(), "Results");
    press_key(window, Qt::Key_Return);
  });
  EXPECT_EQ(screen.form(form), answer::ok);
  EXPECT_EQ(form.fields[0].text, "View");
  EXPECT_EQ(form.fields[1].text, "Results");
}

TEST_F(DesktopReports, PagesGoToAFile) {
  use_user_settings(path("settings.ini"));
  ASSERT_TRUE(keep_page_margins({.numbers = true}));
  ReportText report;
  report.first = {"Once"};
  report.head = {"Head"};
  for (int i = 0; i < 150; ++i) report.body.push_back(formatted("Test %d", i));
  DesktopPrinters printers;
  {
    const std::unique_ptr<Printer> printer = printers.open_pdf(path("report.pdf"));
    ASSERT_NE(printer, nullptr);
    EXPECT_TRUE(draw_report(*printer, "Report", report));
  }
  std::ostringstream file;
  file << std::ifstream(path("report.pdf"), std::ios::binary).rdbuf();
  const std::string pages = file.str();
  EXPECT_TRUE(pages.starts_with("%PDF-"));
  EXPECT_NE(pages.find("%%EOF"), std::string::npos);
  // 11.7 inches less 1.5 at six lines an inch: some sixty lines a page.
  EXPECT_NE(pages.find("/Count 3"), std::string::npos);

  EXPECT_EQ(printers.open_pdf(path("absent/report.pdf")), nullptr);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{31283});
}

}  // namespace
}  // namespace orvane::test
