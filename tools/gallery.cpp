// Shows every window of the desktop with what a calibration would put there, and saves a picture of each.
//   gallery FOLDER light|dark PREFIX     (QT_SCALE_FACTOR for larger ones)
#include <QApplication>
#include <QKeyEvent>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPixmap>
#include <QStyleFactory>
#include <QTemporaryDir>
#include <QTimer>
#include <cstdio>
#include <functional>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "desktop/desktop.h"
#include "desktop/main_window.h"
#include "desktop/results_window.h"
#include "desktop/window.h"
#include "messages/catalogue.h"
#include "reports/post_run.h"
#include "reports/report_settings.h"
#include "results/result_list.h"
#include "state/buttons.h"
#include "state/run_state.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

QString folder, prefix, scratch;
int failures = 0;

void dark_colours() {
  QPalette colours;
  const QColor ground(38, 40, 43), field(24, 26, 28), text(230, 230, 230), quiet(140, 140, 140);
  colours.setColor(QPalette::Window, ground);
  colours.setColor(QPalette::Button, QColor(58, 61, 65));
  for (const auto role : {QPalette::Base, QPalette::ToolTipBase}) colours.setColor(role, field);
  colours.setColor(QPalette::AlternateBase, ground);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText})
    colours.setColor(role, text);
  colours.setColor(QPalette::Highlight, QColor(61, 126, 203));
  colours.setColor(QPalette::HighlightedText, Qt::white);
  colours.setColor(QPalette::PlaceholderText, quiet);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
    colours.setColor(QPalette::Disabled, role, QColor(110, 110, 110));
  QApplication::setPalette(colours);
}

void save(QWidget& window, const char* name) {
  if (!window.grab().save(folder + "/" + prefix + name + ".png")) ++failures;
}

// Lets the window open, takes its picture and gives it up.
template <class Show>
void picture_of(const char* name, Show show, const std::function<void(QWidget&)>& before = {}) {
  QTimer::singleShot(250, qApp, [&] {
    QWidget* window = QApplication::activeWindow();
    for (QWidget* one : QApplication::topLevelWidgets()) {
      if (one->isVisible() && dynamic_cast<DeskWindow*>(one) != nullptr) window = one;
    }
    if (before) before(*window);
    QApplication::processEvents();
    save(*window, name);
    if (auto* waiting = dynamic_cast<DeskWindow*>(window)) waiting->give_up();
  });
  show();
}

std::vector<Button> buttons(std::initializer_list<std::pair<int, int>> rows) {
  std::vector<Button> made;
  for (const auto& [row, code] : rows) made.push_back(standard_button(row, code, made.empty()));
  return made;
}

class Names : public RowSource {
 public:
  std::vector<std::string> rows;
  std::size_t count() const override { return rows.size(); }
  std::string row(std::size_t index) const override { return rows[index]; }
};

class Listing : public RowSource {
 public:
  std::size_t count() const override { return 65535; }
  std::string row(std::size_t index) const override {
    return formatted("%3d.%03d  MEMC             %d.0000V      1%%", index / 20 + 1, index % 20 + 1,
                     index % 300);
  }
};

void status_board(Desktop& desktop) {
  DesktopDesk& desk = desktop.desk();
  desk.status(status_row::procedure, "Hand-held multimeter: verification");
  desk.status(status_row::revision, "1.0");
  desk.status(status_row::operator_name, "M. Keller");
}

void results(DesktopDesk& desk) {
  const auto line = [&](const char* columns, const char* status, int colour, std::optional<double> percent) {
    desk.result({"", "", status, colour, columns, percent});
  };
  desk.result_note("DC volts", result_colour::comment);
  line("1\t300mV\t30.00mV\t30.001mV\t\t\t-0.003 %\t3", "PASS", result_colour::pass, -3);
  line("2\t300mV\t300.0mV\t299.92mV\t\t\t0.027 %\t9", "PASS", result_colour::pass, 9);
  line("3\t3V\t3.000V\t2.9932V\t\t\t0.227 %\t76", "MARGINAL PASS", result_colour::marginal, 76);
  desk.result_note("AC volts", result_colour::comment);
  line("4\t300V\t300V\t305.09V\t\t50Hz\t-1.70 %\t154", "FAIL", result_colour::fail, -154);
  line("5\t300V\t300V\t302.80V\t\t400Hz\t-0.93 %\t-97", "PASS?", result_colour::pass_indeterminate, -97);
  line("6\t3kOhm\t3.000kOhm\t3.0291kOhm\t\t\t-0.97 %\t103", "FAIL?", result_colour::fail_indeterminate, 103);
}

TestWindow test_window(const char* status, int colour) {
  TestWindow window;
  window.form = "pt_Result";
  window.title = "Test result";
  window.status_text = status;
  window.colour = colour;
  window.texts = {{"Range:", "300V"},          {"UUT indicated:", "300V"},     {"System actual:", "305.09V"},
                  {"Modifier:", "50Hz"},       {"Error:", "-1.70 %"},          {"% of tolerance:", "154"},
                  {"Test tolerance:", "3.3V"}, {"System tolerance:", "0.08V"}, {"TUR:", "41"}};
  for (const auto& [code, label] :
       {std::pair(1001, 7100), std::pair(1005, 7101), std::pair(1002, 7102), std::pair(1000, 7103),
        std::pair(1004, 7104), std::pair(1003, 7105), std::pair(1006, 7106), std::pair(1007, 7107)})
    window.buttons.push_back(
        {{code, std::string(catalogue_text(label)), code == 1001}, code != 1000 && code != 1006});
  return window;
}

// How the verdict of a guarded point came about, with the figures of the demo laboratory.
TestWindow explained_window() {
  TestWindow window = test_window("PASS INDETERM", result_colour::pass_indeterminate);
  window.texts = {{"UUT indicated:", "3V"},
                  {"System actual:", "2.99890018V (corrected)"},
                  {"Error:", "366     ppm"},
                  {"% of tolerance:", "103"},
                  {"Test tolerance:", "0.0011400V"},
                  {"System tolerance:", "4.0000E-05V"},
                  {"TUR:", ">  4.0"},
                  {"Standard uncertainty:", "3.51269E-05"}};
  window.explanation.facts = {
      {"Unit under test", "3V"},
      {"System", "2.99890018V (corrected)"},
      {"Readings",
       "mean of 5, after 0 thrown away: 2.99890176, 2.9989009, 2.99890066, 2.99890024, 2.99889734"},
      {"Correction", "-4.49835276e-06 was added to the reading (3458.cor, line 10)"},
      {"Error", "3 - 2.99890018 = 0.00109981836"},
      {"Tolerance", "+/- 0.00114 = 0.038 % of 3"},
      {"Limits", "2.99776018 to 3.00004018"},
      {"Percent of tolerance", "0.00109981836 / 0.00114 = 96.4752945 %"},
      {"Accuracy", "hp3458a.acc, line 17, mode \"Volts\": at 3, 0.001 % of value = 3e-05, floor 1e-05"},
      {"System tolerance", "4.0000E-05V"},
      {"TUR", "0.00114 / 4e-05 = 28.5"},
      {"Standard uncertainty", "3.51268993e-05 V"},
      {"Effective degrees of freedom", "19029123.8"},
      {"Coverage factor", "2"},
      {"Expanded uncertainty", "7.02537985e-05 V"},
      {"Guard band",
       "MU: expanded uncertainty 7.02537985e-05, factor 1; limits -0.0010697462, +0.0010697462 around the "
       "expected value: the error is 102.811149 % of them, and 90.875018 % of the outer ones"},
      {"Verdict", "PASS INDETERM (100 % of tolerance still passes)"}};
  window.explanation.budget = {
      {"U1 system accuracy", "2e-05 V = 4e-05 / 2 sigma, degrees of freedom infinite", 0.32418},
      {"U2 scatter and resolution",
       "2.88773103e-05 V from scatter 7.52142475e-07 (1.6818417e-06 / sqrt 5) and resolution 2.88675135e-05 "
       "(0.0001 / sqrt 12), degrees of freedom 8691335.03",
       0.67582}};
  return window;
}

QString bench_picture() {
  QPixmap picture(560, 360);
  picture.fill(QColor(245, 240, 225));
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(Qt::black, 3));
  painter.drawRoundedRect(60, 50, 440, 250, 18, 18);
  painter.drawRect(100, 85, 240, 90);
  painter.setFont(QFont("DejaVu Sans Mono", 32));
  painter.drawText(QRect(100, 85, 240, 90), Qt::AlignCenter, "300.0");
  for (const auto& [x, colour] : {std::pair(380, Qt::red), std::pair(440, Qt::black)}) {
    painter.setBrush(colour);
    painter.drawEllipse(QPoint(x, 250), 18, 18);
  }
  painter.setBrush(Qt::NoBrush);
  painter.drawEllipse(QPoint(200, 240), 40, 40);
  const QString path = scratch + "/bench-view.png";
  picture.save(path);
  return path;
}

void texts(DesktopDesk& desk, const QString& picture) {
  LinesWindow window;
  window.kind = WindowKind::prompt;
  window.title = "Test Information";
  window.lines = {"Connect the unit to the HP 3458A:", "", "  V input  to  Input HI",
                  "  COM      to  Input LO",           "", "Then press Continue."};
  window.buttons = buttons({{button_row::ok, answer::ok}, {button_row::terminate, answer::terminate}});
  picture_of("display", [&] { desk.lines(window); });
  window.kind = WindowKind::question;
  window.title = "Test Decision";
  window.lines = {"Does the unit measure AC volts?"};
  window.buttons = buttons({{button_row::yes, answer::yes},
                            {button_row::no, answer::no},
                            {button_row::terminate, answer::terminate}});
  picture_of("question", [&] { desk.lines(window); });
  window.kind = WindowKind::picture;
  window.title = "Test Evaluation";
  window.lines = {"Are all segments of the", "display lit, and equally", "bright?"};
  window.buttons = {{answer::yes, "Pass", true}, {answer::no, "Fail"}, {answer::terminate, "Terminate"}};
  window.picture = Picture{picture.toStdString(), "UUT Front View", {}};
  picture_of("picture", [&] { desk.lines(window); });
  window.picture->path = "/laboratory/pictures/rear.bmp";
  picture_of("picture-missing", [&] { desk.lines(window); });

  AskWindow ask;
  ask.title = "Operator Prompt";
  ask.lines = {"Reading of the unit in volts?"};
  ask.buttons = buttons({{button_row::ok, answer::ok}, {button_row::cancel, answer::terminate}});
  ask.length = 15;
  std::string text = "1,0045e2";
  picture_of("prompt", [&] { desk.ask(ask, text); });
  ask.kind = WindowKind::login;
  ask.title = "Login";
  ask.lines = {"Password of M. Keller"};
  ask.echo = false;
  text = "secret";
  picture_of("password", [&] { desk.ask(ask, text); });
}

void lists(DesktopDesk& desk) {
  Names names;
  for (const char* unit : {"Hand-held multimeter: AC volts", "Hand-held multimeter: DC volts",
                           "Hand-held multimeter: ohms", "Hand-held multimeter: verification",
                           "Pressure gauge 0 to 10 bar", "Signal generator: level", "Torque wrench 20 Nm"})
    names.rows.push_back(unit);
  ChoiceWindow window;
  window.title = "Choose a procedure";
  window.filter = true;
  window.rows = &names;
  window.first_row = 3;
  window.buttons = buttons({{button_row::ok, answer::ok}, {button_row::cancel, answer::terminate}});
  std::size_t row = 0;
  picture_of("choice", [&] { desk.choose(window, row); });
  names.rows = {"HP 3458A\tHP 3458A\tIEEE-488 22\tfound", "HP 33120A\t\t\tmissing",
                "Keithley 2000\tKeithley 2000\tRS232 COM2\tfound"};
  window.kind = WindowKind::required;
  window.title = "Required instruments";
  window.headings = "Needed\tConfigured\tAddress\tState";
  window.filter = false;
  window.first_row = 1;
  picture_of("required", [&] { desk.choose(window, row); });
  Listing listing;
  window.kind = WindowKind::listing;
  window.title = "Procedure";
  window.headings.clear();
  window.rows = &listing;
  window.first_row = 40000;
  window.buttons = {{answer::ok, msg(5901), true}, {answer::terminate, msg(5911)}};
  picture_of("listing", [&] { desk.choose(window, row); });
}

void forms(DesktopDesk& desk) {
  FormWindow form;
  form.title = "Enter Data";
  form.lines = {"Unit under test"};
  form.fields = {{.name = "SER_NUM$",
                  .label = "Serial number",
                  .length = 20,
                  .low = {},
                  .high = {},
                  .required = true,
                  .choices = {},
                  .text = ""},
                 {.name = "UUT_CODE$",
                  .label = "Code",
                  .length = 10,
                  .low = {},
                  .high = {},
                  .choices = {},
                  .text = "DMM-17"},
                 {.name = "T",
                  .label = "Temperature in degC",
                  .kind = FieldKind::number,
                  .low = 15.0,
                  .high = 30.0,
                  .choices = {},
                  .text = "41"},
                 {.name = "D",
                  .label = "Received",
                  .kind = FieldKind::date,
                  .low = {},
                  .high = {},
                  .choices = {},
                  .text = ""},
                 {.name = "S",
                  .label = "State",
                  .kind = FieldKind::choice,
                  .low = {},
                  .high = {},
                  .choices = {"good", "damaged"},
                  .text = "good"},
                 {.name = "C",
                  .label = "Accessories complete",
                  .kind = FieldKind::check,
                  .low = {},
                  .high = {},
                  .choices = {},
                  .text = "YES"}};
  form.fault = [](const FormField& field) -> std::string {
    if (field.required && field.text.empty()) return "A serial number is needed.";
    if (field.name == "T") return "15 to 30 is taken.";
    return {};
  };
  form.buttons = buttons({{button_row::ok, answer::ok}, {button_row::cancel, answer::terminate}});
  picture_of(
      "form", [&] { desk.form(form); },
      [](QWidget& window) { dynamic_cast<DeskWindow&>(window).press(answer::ok); });
}

// The viewer of reports, and the windows of what follows a run.
void reports(DesktopDesk& desk) {
  LinesWindow window;
  window.kind = WindowKind::viewer;
  window.title = "Results";
  window.lines = {"                          CALIBRATION RESULTS",
                  "",
                  "  Unit     Hand-held multimeter                 Serial number   4711",
                  "  Date     2026-11-23                           Operator        M. Keller",
                  "",
                  "  TEST    RANGE INDICATED      ACTUAL         MODIFIER        ERROR        %TOL"};
  for (int i = 1; i <= 40; ++i)
    window.lines.push_back("    " + std::to_string(i) + (i < 10 ? " " : "") +
                           "    10      10mV           10.001mV       1kHz            -100     ppm  71");
  window.buttons = {
      {answer::ok, msg(31294), true}, {45, msg(31295)}, {47, msg(31296)}, {46, msg(31330)}, {48, msg(31331)}};
  picture_of("report", [&] { desk.lines(window); });

  const QString settings = scratch + "/post.ini";
  use_user_settings(settings.toStdString());
  for (const char* key : {"postmenu", "macro_view"})
    static_cast<void>(put_user_setting("Configuration", key, "15"));
  static_cast<void>(put_user_setting("Page Margin", "page", "1"));
  run_variable_set(run_state(), "PROC_NAME$", "Hand-held multimeter, 3.5 digits");
  run_variable_set(run_state(), "OVERALL_RESULT$", "PASS");
  for (int i = 0; i < 40; ++i) {
    auto record = std::make_unique<ResultRecord>();
    record->flags = result_bit::is_evaluated | result_bit::pass;
    record->key[0] = static_cast<std::uint32_t>(i + 1) << 16 | 1U;
    run_state().results.records.push_back(std::move(record));
  }
  picture_of(
      "post-run", [] { static_cast<void>(post_run(run_state())); },
      [](QWidget&) { QTimer::singleShot(200, qApp, [] { waiting_window()->press(answer::yes); }); });
  picture_of("page-layout", configure_margins);
  picture_of("macro", rtconf_macro_proc);
}

void decisions(DesktopDesk& desk) {
  picture_of("test-fail", [&] { desk.test(test_window("FAIL", result_colour::fail)); });
  picture_of("test-pass", [&] { desk.test(test_window("PASS", result_colour::pass)); });
  picture_of(
      "test-guarded", [&] { desk.test(explained_window()); },
      [](QWidget& window) {
        QKeyEvent why(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier);
        QApplication::sendEvent(&window, &why);
        QApplication::processEvents();
        save(*QApplication::activeWindow(), "why");
        QApplication::activeWindow()->close();
        QApplication::processEvents();
      });
  TestWindow stopped =
      test_window("MEMC: stopped by an error. IEEE-488: no device listens. Check address, cable and power.",
                  result_colour::stopped);
  stopped.title = "Test stopped";
  stopped.texts.clear();
  picture_of("test-stopped", [&] { desk.test(stopped); });
  picture_of("error", [&] {
    desk.message(MessageKind::error, 2742,
                 "E2742: IEEE-488: no device listens. Check address, cable and power.");
  });
  const auto wait = desk.wait({"Warming up", "The source settles before the next point.\n00:42", true});
  picture_of("wait", [] {
    QEventLoop loop;
    QTimer::singleShot(500, &loop, &QEventLoop::quit);
    loop.exec();
  });
}

void start_faults() {
  DesktopDesk desk;
  desk.message(MessageKind::error, 504,
               "E504: orvane.ini: the key \"oot_lim\" is missing; add it with its value.");
  desk.message(MessageKind::error, 505,
               "E505: orvane.ini:41: \"maybe\" is no value of the key \"pass100\", which takes yes/no.");
  desk.message(MessageKind::error, 548,
               "E548: orvane.ini:7: the key \"procdir\" names \"/lab/procs\", which is no folder; make it or "
               "name another.");
  picture_of("start-faults", [&] { desk.tell_gathered(); });
}

// Windows of a bench at work.
void bench(DesktopDesk& desk) {
  LinesWindow leads;
  leads.kind = WindowKind::connections;
  leads.title = "Connect:";
  leads.lines = {"HP 3458A", "", "Unit under test V / HI terminal to the HP 3458A Input HI",
                 "Unit under test COM / LO terminal to the HP 3458A Input LO"};
  leads.buttons = {{answer::ok, "OK", true}, {answer::terminate, "Terminate", false}};
  picture_of("connect", [&] { desk.lines(leads); });
  LinesWindow live;
  live.kind = WindowKind::slew;
  live.title = "Live values";
  live.lines = {"Function : DC volts", "Range : 10 V",
                "Turn the zero of the unit until the reading is near 0."};
  live.buttons = leads.buttons;
  if (const std::unique_ptr<LiveWindow> window = desk.live(live)) {
    window->post("-0.0001234 V");
    QApplication::processEvents();
    save(*QApplication::activeWindow(), "live");
  } else {
    ++failures;
  }
}

int all() {
  use_user_settings((scratch + "/settings.ini").toStdString());
  startup_config().workload_data.clear();
  start_faults();
  Desktop desktop;
  desktop.open();
  MainWindow& main = desktop.main();
  QApplication::processEvents();
  save(main, "main");
  QMenu* menu = main.menuBar()->actions().first()->menu();
  menu->popup(main.mapToGlobal(QPoint(0, 20)));
  QApplication::processEvents();
  save(*menu, "menu");
  menu->hide();
  // The window names files as an installed program has them.
  std::vector<ConfigFault> faults;
  static_cast<void>(config_load("/etc/orvane/orvane.ini", faults));
  use_user_settings("/home/lab/.config/orvane/settings.ini");
  picture_of("about", [&] { desktop.command(command::about); });
  use_user_settings((scratch + "/settings.ini").toStdString());
  status_board(desktop);
  const QString picture = bench_picture();
  texts(desktop.desk(), picture);
  lists(desktop.desk());
  reports(desktop.desk());
  forms(desktop.desk());
  decisions(desktop.desk());
  bench(desktop.desk());
  main.set_busy(true);
  desktop.desk().run_begins({"Hand-held multimeter: verification", "1.0", false});
  desktop.desk().enable_abort_menu(true);
  desktop.desk().status(status_row::heading, "AC volts\n300 V range");
  desktop.desk().progress({48, 120, 4, 11, 107});
  results(desktop.desk());
  QApplication::processEvents();
  tres_window()->resize(tres_window()->width(), 210);
  QApplication::processEvents();
  save(main, "main-run");
  save(*tres_window(), "results");
  desktop.desk().enable_abort_menu(false);
  main.set_busy(false);
  return failures == 0 ? 0 : 1;
}

}  // namespace
}  // namespace orvane

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  if (argc != 4) {
    std::fputs("usage: gallery FOLDER light|dark PREFIX\n", stderr);
    return 64;
  }
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  QApplication::setFont(QFont("DejaVu Sans", 10));
  const QTemporaryDir scratch;
  orvane::scratch = scratch.path();
  orvane::folder = argv[1];
  orvane::prefix = argv[3];
  if (QString(argv[2]) == "dark") orvane::dark_colours();
  std::string reason;
  if (!orvane::catalogue_open(reason)) {
    std::fprintf(stderr, "gallery: %s\n", reason.c_str());
    return 3;
  }
  return orvane::all();
}
