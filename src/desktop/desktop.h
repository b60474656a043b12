// The desktop program: start, commands, the run inside a command, and the end.
#pragma once

#include <QObject>
#include <memory>
#include <string>

#include "desktop/desk.h"
#include "desktop/options.h"
#include "desktop/printing.h"

class QTimer;

namespace orvane {

class MainWindow;
struct RunState;

/// One desktop for the life of the program. It installs itself as the outside world of the engine.
class Desktop : public QObject {
 public:
  Desktop();
  ~Desktop() override;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;

  /// Reads configuration and settings. False after its reports have been shown; they also stand on standard error.
  bool start(const DesktopOptions& options);
  /// Makes and shows the main window, and posts the Run command where the command line asks for a run.
  void open(const DesktopOptions& options);
  /// The main window with a started engine, for a test or a picture.
  void open() { open(DesktopOptions()); }

  MainWindow& main() { return *main_; }
  DesktopDesk& desk() { return desk_; }
  int exit_code() const { return exit_code_; }

  /// Carries out a command that the main window has allowed.
  void command(int id);
  /// Runs a procedure, or with an empty name the operator's choice. Refused while a command is on.
  void run(const std::string& name);
  /// The Abort command: raises the request, and every window that waits gives up.
  void abort();
  /// The session ends or the program was asked to end: Abort, without any further question, and then the end.
  void leave();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  struct Action;
  static const Action actions[];
  void in_command(const std::function<void()>& work);
  void choose_method(const char* method);
  void toggle_mode();
  void reset_instruments();
  void about();
  void with_results(bool (*work)(RunState& run));
  void show_mode();
  void quit();
  void look_at_signals();

  DesktopDesk desk_;
  DesktopEvents events_;
  DesktopPrinters printers_;
  std::unique_ptr<MainWindow> main_;
  QTimer* pulse_ = nullptr;
  DesktopOptions options_;
  int exit_code_ = 0;
  bool ends_behind_run_ = false, leaving_ = false, in_run_ = false;
};

/// The whole program: its exit status.
int desktop_main(int argc, char** argv);

}  // namespace orvane
