// The transcript: what the operator saw and answered, one JSON object a line, UTF-8, flushed at each line.
#pragma once

#include <fstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/operator.h"

namespace orvane {

class Transcript {
 public:
  /// False if the file cannot be written.
  [[nodiscard]] bool open(const std::string& path);
  bool is_open() const { return file_.is_open(); }
  /// A line could not be written; what stands in the file is not the whole run.
  bool is_broken() const { return file_.is_open() && !file_; }

  struct Window {
    std::string_view kind;
    std::string_view title;
    std::vector<std::string> lines;
    std::vector<int> buttons;
    bool has_answer = true;
    int answer = 0;
    const std::string* text = nullptr;  // what was typed, if anything
    std::size_t row = 0;                // the row that was chosen, from 1; 0 if none was
    std::string picture = {};           // path of the picture beside the lines
    std::vector<std::pair<std::string, std::string>> fields = {};  // of a form: name and text, as it was left
  };
  void window(const Window& window);
  void message(MessageKind kind, int number, std::string_view text);
  void status(int row, std::string_view text);
  void result(const ResultLine& line);
  void run_start(std::string_view procedure);
  void run_end(std::string_view procedure, int run_test, std::string_view overall, int exit);

 private:
  std::ofstream file_;
};

}  // namespace orvane
