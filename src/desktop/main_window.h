// The main window: menu, the rows of the status window, the heading, how far the run has come, Run and Abort.
// It decides whether a command may be given now; what a command does is the program's.
#pragma once

#include <QMainWindow>
#include <functional>
#include <map>

#include "desktop/menu.h"
#include "platform/operator.h"

class QLabel;
class QProgressBar;
class QPushButton;
class QTimer;

namespace orvane {

class MainWindow : public QMainWindow {
 public:
  MainWindow();
  ~MainWindow() override;

  /// What carries out a command that has been allowed; set once.
  std::function<void(int id)> on_command;
  /// The window is to close and no run is on.
  std::function<void()> on_close;

  /// Gives a command, as the menu does. Refused while another one is on (130 is not), without the operator's right
  /// (message 2177), or where it is not offered.
  void give(int id);
  /// While a command is carried out no other one is taken.
  void set_busy(bool busy);
  bool is_busy() const { return busy_; }
  /// A run is on: Abort is offered, closing is refused.
  void set_run(bool on);
  bool run_is_on() const { return run_on_; }

  void show_status(int row, const QString& text);
  void show_progress(const RunProgress& progress);
  void show_checks(std::string_view method, bool real);
  void show_idle_text(const QString& text);
  /// Shows the window where it stood last.
  void open();
  /// Opens after a short time, or with the first window that needs it: a run that begins by itself and ends at once
  /// shows nothing.
  void open_soon();
  void open_if_due();
  void keep_place();
  QAction* action(int id) const;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void moveEvent(QMoveEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void make_menu();
  void make_rows();
  QAction* make_action(const MenuCommand& row);
  void make_tools();
  void enable_commands();
  void refuse_close();

  std::map<int, QAction*> actions_;
  QMenu* tools_ = nullptr;
  std::map<int, QLabel*> rows_;
  QLabel* heading_ = nullptr;
  QProgressBar* bar_ = nullptr;
  QLabel* progress_ = nullptr;
  QPushButton* run_ = nullptr;
  QPushButton* abort_ = nullptr;
  QTimer* keeper_ = nullptr;
  QTimer* opener_ = nullptr;  // runs while the opening is put off
  QString idle_text_;
  bool busy_ = false, run_on_ = false, refusing_ = false;
};

/// The application-wide keys of the Abort command: F10 and Ctrl+Break.
bool is_abort_key(int key, Qt::KeyboardModifiers modifiers);

}  // namespace orvane
