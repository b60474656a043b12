// A printer that keeps what it is given: 8.5 by 11 inches of 100 dots, a border of a quarter of an inch, lines of 10
// dots, characters of 5.
#pragma once

#include <string>
#include <vector>

#include "platform/printer.h"

namespace orvane::test {

struct PrintedText {
  int x = 0, y = 0;
  std::string text;
  friend bool operator==(const PrintedText&, const PrintedText&) = default;
};

class RecordingPrinter : public Printer {
 public:
  std::string title;
  std::vector<std::vector<PrintedText>> pages;
  bool begun = false, ended = false, aborted = false;
  std::string refuses;  // steps by name, with commas

  PageMetrics metrics() override {
    if (!takes("metrics")) return {};
    return {.width = 850,
            .height = 1100,
            .dots_x = 100,
            .dots_y = 100,
            .offset_x = 25,
            .offset_y = 25,
            .line_height = 10,
            .character_width = 5};
  }
  bool begin(std::string_view name) override {
    title = name;
    return begun = takes("begin");
  }
  bool begin_page() override {
    pages.emplace_back();
    return takes("begin_page");
  }
  bool select_font() override { return takes("font"); }
  bool text(int x, int y, std::string_view line) override {
    pages.back().push_back({x, y, std::string(line)});
    return takes("text");
  }
  bool end_page() override { return takes("end_page"); }
  bool end() override { return ended = takes("end"); }
  bool abort() override {
    aborted = true;
    return takes("abort");
  }

 private:
  bool takes(const std::string& step) const {
    return ("," + refuses + ",").find("," + step + ",") == std::string::npos;
  }
};

/// Printers that hand out references to one recording.
class RecordingPrinters : public PrinterSystem {
 public:
  RecordingPrinter last;
  bool none = false;
  std::vector<PrintUse> uses;

  bool has_printer(PrintUse) const override { return !none; }
  std::unique_ptr<Printer> open(PrintUse use) override {
    uses.push_back(use);
    if (none) return nullptr;
    last = {};
    return std::make_unique<Borrowed>(last);
  }

 private:
  class Borrowed : public Printer {
   public:
    explicit Borrowed(RecordingPrinter& to) : to_(to) {}
    PageMetrics metrics() override { return to_.metrics(); }
    bool begin(std::string_view title) override { return to_.begin(title); }
    bool begin_page() override { return to_.begin_page(); }
    bool select_font() override { return to_.select_font(); }
    bool text(int x, int y, std::string_view line) override { return to_.text(x, y, line); }
    bool end_page() override { return to_.end_page(); }
    bool end() override { return to_.end(); }
    bool abort() override { return to_.abort(); }

   private:
    RecordingPrinter& to_;
  };
};

}  // namespace orvane::test
