#include "desktop/desktop.h"

#include <QApplication>
#include <QKeyEvent>
#include <QSessionManager>
#include <QTimer>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "desktop/instance.h"
#include "desktop/main_window.h"
#include "desktop/results_window.h"
#include "desktop/texts.h"
#include "desktop/tools.h"
#include "desktop/window.h"
#include "instruments/bench.h"
#include "messages/encoding.h"
#include "platform/terminal.h"
#include "procedure/file/proc_dir.h"
#include "procedure/pipeline/engine.h"
#include "procedure/pipeline/run_test.h"
#include "reports/report_settings.h"
#include "reports/saved_results.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr int exit_failed = 3;
constexpr int pulse_interval = 100;  // milliseconds between two looks at the signals
constexpr std::string_view settings_section = "Run Time";

std::atomic<bool> asked_to_end{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler sets it");

void error_line(const std::string& utf8) { std::fprintf(stderr, "%s\n", utf8.c_str()); }

// Without a screen there is nobody who could press OK.
bool has_screen() {
  const QString platform = QGuiApplication::platformName();
  return platform != "offscreen" && platform != "minimal";
}

// A toolkit that cannot open the display ends the program; it shall not do so by a signal.
void on_toolkit_message(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type != QtCriticalMsg && type != QtFatalMsg) return;
  error_line("orvane: " + text.toStdString());
  if (type == QtFatalMsg) std::_Exit(exit_failed);
}

bool enter_directory(const std::string& directory, EngineStart& start) {
  std::error_code error;
  for (std::string* path : {&start.config_path, &start.settings_path}) {
    if (!path->empty()) *path = std::filesystem::absolute(*path, error).string();
  }
  std::filesystem::current_path(directory, error);
  return !error || errp(30504, directory);
}

}  // namespace

Desktop::Desktop() {
  platform().desk = &desk_;
  platform().events = &events_;
  platform().printers = &printers_;
  qApp->installEventFilter(this);
  QObject::connect(qApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager&) { leave(); });
}

Desktop::~Desktop() {
  qApp->removeEventFilter(this);
  tres_close();
  desk_.close();
  printers_.use(nullptr);
  main_.reset();
  engine_stop();
  platform() = Platform{.desk = nullptr, .clock = &system_clock(), .events = nullptr};
}

// --- Start ---

bool Desktop::start(const DesktopOptions& options) {
  EngineStart start;
  start.config_path = options.config.empty() ? default_config_path() : options.config;
  start.settings_path = options.settings;
  if (options.mode == "demo") start.mode = RunMode::demo;
  if (options.mode == "real") start.mode = RunMode::real;
  const bool started = (options.directory.empty() || enter_directory(options.directory, start)) &&
                       engine_start(run_state(), start);
  for (const DesktopDesk::Report& report : desk_.gathered()) error_line(utf8_from_either(report.text));
  // With -AutoTest reports open no box; the reason of a failure is told all the same.
  if (!started && desk_.gathered().empty() && !last_error().empty())
    error_line(utf8_from_either(last_error()));
  if (!started && has_screen()) desk_.tell_gathered();
  return started;
}

void Desktop::open(const DesktopOptions& options) {
  options_ = options;
  ends_behind_run_ = options.exit || !options.procedure.empty();
  const bool runs = !options.procedure.empty() || options.load;
  main_ = std::make_unique<MainWindow>();
  printers_.use(main_.get());
  main_->on_command = [this](int id) { command(id); };
  main_->on_close = [this] { quit(); };
  if (!options.no_logo) main_->show_idle_text(shown(msg(30853)));
  desk_.use(main_.get());
  show_mode();
  if (!runs) {
    main_->open();
  } else if (!options.hide) {
    main_->open_soon();
  }
  if (has_screen()) desk_.tell_gathered();  // warnings of the start

  on_interrupt([] { asked_to_end = true; });
  pulse_ = new QTimer(this);
  connect(pulse_, &QTimer::timeout, this, [this] { look_at_signals(); });
  pulse_->start(pulse_interval);
  if (options.pack) static_cast<void>(pd_sort(procedure_directory_file(), true));
  if (runs) QTimer::singleShot(0, this, [this] { run(options_.procedure); });
}

// --- Commands ---

// Each command and what it does.
struct Desktop::Action {
  int id;
  void (*act)(Desktop& desktop);
};
const Desktop::Action Desktop::actions[] = {
    {command::about, [](Desktop& d) { d.about(); }},
    {command::abort, [](Desktop& d) { d.abort(); }},
    {command::by_asset, [](Desktop& d) { d.choose_method("by_asset"); }},
    {command::by_procedure, [](Desktop& d) { d.choose_method("by_proc"); }},
    {command::by_workload, [](Desktop& d) { d.choose_method("by_work"); }},
    {command::run, [](Desktop& d) { d.run({}); }},
    {command::real_mode, [](Desktop& d) { d.toggle_mode(); }},
    {command::reset, [](Desktop& d) { d.reset_instruments(); }},
    {command::exit, [](Desktop& d) { d.main_->close(); }},
    {command::show_results,
     [](Desktop& d) { tres_open(d.main_.get(), run_state().has(run_flag::test_run)); }},
    {command::clear_results, [](Desktop&) { tres_clear(); }},
    {command::results_file_1, [](Desktop& d) { d.with_results(open_saved_results); }},
    {command::results_file_2, [](Desktop& d) { d.with_results(compare_saved_results); }},
    {command::results_file_3,
     [](Desktop& d) { d.with_results([](RunState&) { return delete_saved_results(); }); }},
    {command::print_setup_0, [](Desktop& d) { d.in_command([&d] { d.printers_.choose(PrintUse::results); }); }},
    {command::print_setup_1,
     [](Desktop& d) { d.in_command([&d] { d.printers_.choose(PrintUse::certificates); }); }},
    {command::print_setup_3, [](Desktop& d) { d.in_command(configure_margins); }},
    {command::after_run, [](Desktop& d) { d.in_command(configure_reports); }},
};

void Desktop::command(int id) {
  if (id >= command::first_tool) {
    run_tool(id);
    return;
  }
  for (const Action& action : actions) {
    if (action.id == id) return action.act(*this);
  }
}

// While the work goes on, event loops turn in it; no other command is taken meanwhile.
void Desktop::in_command(const std::function<void()>& work) {
  if (main_->is_busy()) return;
  main_->set_busy(true);
  work();
  main_->set_busy(false);
  if (leaving_) quit();
}

void Desktop::run(const std::string& name) {
  if (main_->is_busy()) return;
  in_command([&] {
    in_run_ = true;
    clear_abort();
    exit_code_ = run_test(run_state(), name);
    main_->set_run(false);
    in_run_ = false;
  });
  if (ends_behind_run_) return quit();
  show_mode();
}

void Desktop::abort() {
  raise_abort();
  abandon_windows();
}

void Desktop::leave() {
  leaving_ = true;
  desk_.leave();
  abort();
  if (!main_ || !main_->is_busy()) quit();
}

void Desktop::choose_method(const char* method) {
  static_cast<void>(put_user_setting(settings_section, "method", method));
  show_mode();
}

void Desktop::toggle_mode() {
  RunState& state = run_state();
  state.demo_mode = !state.demo_mode;
  static_cast<void>(put_user_setting(settings_section, "mode", state.demo_mode ? "demo" : "real"));
  show_mode();
}

void Desktop::show_mode() {
  const bool real = !run_state().demo_mode;
  main_->show_checks(user_setting(settings_section, "method").value_or("by_proc"), real);
  desk_.status(status_row::mode, msg(real ? 30855 : 30854));
}

void Desktop::reset_instruments() {
  in_command([&] {
    if (bench_reset(run_state()) == BenchReset::done) msgp(30856);
  });
}

void Desktop::with_results(bool (*work)(RunState& run)) {
  in_command([work] { static_cast<void>(work(run_state())); });
}

void Desktop::about() {
  in_command([&] {
    LinesWindow window;
    window.title = catalogue_text(4340);
    window.lines = {msg(30040), msg(30857, ORVANE_VERSION), "", msg(30858, config_path()),
                    msg(30859, user_settings_path())};
    window.buttons = {{answer::ok, msg(30043), true}};
    desk_.lines(window);
  });
}

void Desktop::quit() { QCoreApplication::exit(exit_code_); }

// --- From outside ---

void Desktop::look_at_signals() {
  if (asked_to_end.exchange(false)) leave();
}

// The Abort command's keys hold in every window of the program.
bool Desktop::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress || !in_run_) return QObject::eventFilter(object, event);
  const auto* key = static_cast<QKeyEvent*>(event);
  if (!is_abort_key(key->key(), key->modifiers())) return QObject::eventFilter(object, event);
  if (!key->isAutoRepeat()) abort();
  return true;
}

// --- The program ---

namespace {

int refuse_instance(DesktopDesk& desk, InstanceState state) {
  if (state == InstanceState::taken) {
    errp(30860);
  } else {
    errp(2292, msg(30861), msg(30862));
  }
  error_line(utf8_from_cp1252(last_error()));
  if (has_screen()) desk.tell_gathered();
  return exit_failed;
}

int run_program(int argc, char** argv, const DesktopOptions& options) {
  qInstallMessageHandler(on_toolkit_message);
  std::string reason;
  if (!catalogue_open(reason)) {
    error_line("orvane: " + reason);
    return exit_failed;
  }
  apply_debug_words(options);
  QApplication application(argc, argv);
  QApplication::setApplicationName("orvane");
  QApplication::setQuitOnLastWindowClosed(false);
  Desktop desktop;
  Instance instance;
  if (const InstanceState state = instance.take(); state != InstanceState::free)
    return refuse_instance(desktop.desk(), state);
  if (!desktop.start(options)) return exit_failed;
  desktop.open(options);
  return QApplication::exec();
}

}  // namespace

int desktop_main(int argc, char** argv) {
  DesktopOptions options;
  if (const auto status = parse_desktop_line(argc, argv, options)) return *status;
  ignore_broken_pipes();
  try {
    return run_program(argc, argv, options);
  } catch (const std::exception& error) {  // out of memory
    error_line(std::string("orvane: ") + error.what());
    return exit_failed;
  }
}

}  // namespace orvane
