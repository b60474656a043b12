// A desk without an operator: reports are collected, windows fail. For programs that only read and write files.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/operator.h"

namespace orvane {

class ReportCollector : public Operator {
 public:
  /// The texts reported since the last call, with their heads, Windows-1252.
  std::vector<std::string> take() { return std::exchange(reports_, {}); }

  void message(MessageKind, int, std::string_view text) override { reports_.emplace_back(text); }
  int lines(const LinesWindow&) override { return answer::failed; }
  int ask(const AskWindow&, std::string&) override { return answer::failed; }
  int choose(const ChoiceWindow&, std::size_t&) override { return answer::failed; }
  int form(FormWindow&) override { return answer::failed; }
  int test(const TestWindow&) override { return answer::failed; }
  std::unique_ptr<WaitWindow> wait(const WaitText&) override { return std::make_unique<NoWindow>(); }
  std::unique_ptr<LiveWindow> live(const LinesWindow&) override { return nullptr; }
  void status(int, std::string_view) override {}
  void result(const ResultLine&) override {}
  void result_note(std::string_view, int) override {}
  void run_begins(const RunBoard&) override {}
  void enable_abort_menu(bool) override {}
  void progress(const RunProgress&) override {}

 private:
  struct NoWindow : WaitWindow {
    void update(std::string_view) override {}
    bool abort_pressed() override { return false; }
  };
  std::vector<std::string> reports_;
};

}  // namespace orvane
