// The base of every window that waits for the operator. It is made once and shown again and again; while it waits an
// event loop of its own turns. What holds for all of them: the window takes the focus, Enter presses the button that
// stands out, Esc is the safe refusal where there is one and never a verdict, closing the window only asks again, and
// a key that is held down answers nothing.
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "platform/operator.h"

class QEventLoop;
class QHBoxLayout;
class QLabel;
class QTimer;
class QVBoxLayout;

namespace orvane {

class Beeper;
class DeskButton;

class DeskWindow : public QWidget {
 public:
  explicit DeskWindow(QWidget* owner);
  ~DeskWindow() override;

  bool is_waiting() const { return loop_ != nullptr; }
  /// Ends the wait as the Abort command does: with the answer of an operator who gives the work up.
  void give_up() { finish(leave_code_); }
  /// Ends the wait with the code of a button, if the window takes it as it stands.
  virtual void press(int code);

 protected:
  /// Shows the window and waits for its answer; answer::failed if it waits already.
  int wait_for_answer();
  void finish(int code);
  /// Shows the window in its place, with the focus where it belongs.
  void present();
  void mark_default();
  void refuse_close();

  QVBoxLayout* body() const { return body_; }
  /// The buttons of the window. Those that give up stand apart, at the other end of the row. `aside`: further ones in
  /// a row of the window's own.
  void set_buttons(const std::vector<Button>& buttons, QHBoxLayout* aside_row = nullptr,
                   const std::vector<Button>& aside = {});
  void enable_button(int code, bool enabled);
  DeskButton* button(int code) const;
  int first_code() const;
  void set_leave_code(int code) { leave_code_ = code; }
  void hint(const QString& text);

  /// Is the answer taken? A window that checks what was entered says what is wrong and returns false.
  virtual bool accepts(int /*code*/) { return true; }
  /// The widget that has the focus at first; null for the default button.
  virtual QWidget* first_focus() { return nullptr; }
  /// The answer of Esc, and of closing the window; answer::failed if it only asks again.
  virtual int escape_code() const;
  virtual int close_code() const { return answer::failed; }
  /// Where the window opens; empty: over its owner.
  virtual QRect wanted_place() const { return {}; }
  virtual bool opens_minimised() const { return false; }
  /// Does it call the operator by the bell?
  virtual bool rings() const { return true; }

  void keyPressEvent(QKeyEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  friend class DeskButton;
  void place();
  void beep();
  void ring();
  DeskButton* spare_button();
  void fill_row(QHBoxLayout* row, const std::vector<Button>& buttons);

  QVBoxLayout* body_ = nullptr;
  QLabel* hint_ = nullptr;
  QHBoxLayout* row_ = nullptr;
  std::vector<DeskButton*> pool_;     // all that were made; they are used again
  std::vector<DeskButton*> buttons_;  // those in use
  std::size_t in_use_ = 0;
  QTimer* beeper_ = nullptr;
  std::unique_ptr<Beeper> bell_;  // while the window waits
  QEventLoop* loop_ = nullptr;
  int answer_ = answer::failed;
  int leave_code_ = answer::terminate;
};

/// Every window that waits gives up: the Abort command was given, or the operator has left.
void abandon_windows();
/// The innermost window that waits, or null.
DeskWindow* waiting_window();

}  // namespace orvane
