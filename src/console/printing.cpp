#include "console/printing.h"

#include <cstdlib>
#include <string>
#include <vector>

#include "config/startup_config.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/process.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view program = "lp";
constexpr std::uint32_t patience_ms = 30000;  // of the printing system

// A page of characters: 12 to the inch, 6 lines to the inch, so that 80 columns fit between the usual margins. The
// border that printers cannot reach is a quarter of an inch.
constexpr int characters = 12, lines = 6;
struct Paper {
  int columns, rows;
};
constexpr Paper a4{99, 70}, letter{102, 66};

// The system's paper, as its own programs take it.
Paper paper() {
  const char* size = std::getenv("PAPERSIZE");
  return size != nullptr && std::string_view(size) == "letter" ? letter : a4;
}

class TextPrinter : public Printer {
 public:
  explicit TextPrinter(std::string path) : program_(std::move(path)) {}

  PageMetrics metrics() override {
    const Paper size = paper();
    return {.width = size.columns,
            .height = size.rows,
            .dots_x = characters,
            .dots_y = lines,
            .offset_x = characters / 4,
            .offset_y = 1,
            .line_height = 1,
            .character_width = 1};
  }
  bool begin(std::string_view title) override {
    title_ = title;
    document_.clear();
    pages_ = 0;
    return true;
  }
  bool begin_page() override {
    if (pages_++ > 0) document_ += '\f';
    page_.clear();
    return true;
  }
  bool select_font() override { return true; }
  bool text(int x, int y, std::string_view line) override {
    if (x < 0 || y < 0 || y >= paper().rows) return false;
    if (page_.size() <= static_cast<std::size_t>(y)) page_.resize(static_cast<std::size_t>(y) + 1);
    std::string& row = page_[static_cast<std::size_t>(y)];
    row.resize(static_cast<std::size_t>(x), ' ');
    row += line;
    row.resize(std::min(row.size(), static_cast<std::size_t>(paper().columns)));
    return true;
  }
  bool end_page() override {
    for (const std::string& row : page_) (document_ += row) += '\n';
    return true;
  }
  bool end() override {
    const std::string path = work_file("print.tmp");
    if (!replace_file(path, utf8_from_cp1252(document_))) return errp(31333, path);
    return hand_over(path);
  }
  bool abort() override {
    document_.clear();
    return true;
  }

 private:
  bool hand_over(const std::string& path) const {
    const ProcessStart start{
        .program = program_,
        .arguments = {"-t", utf8_from_cp1252(title_), "-o", "cpi=" + std::to_string(characters), "-o",
                      "lpi=" + std::to_string(lines), "-o", "page-left=0", "-o", "page-right=0", "-o",
                      "page-top=0", "-o", "page-bottom=0", path},
        .directory = {},
        .output = {}};
    int system_error = 0;
    const std::unique_ptr<ChildProcess> child = processes().start(start, system_error);
    if (child == nullptr) return errp(31333, program_);
    const bool ended = child->wait(patience_ms, system_error) == ChildProcess::State::ended;
    if (!ended) child->end();
    const bool printed = ended && !child->ended_badly() && child->exit_code(system_error) == 0;
    static_cast<void>(child->close(system_error));
    return printed || errp(31333, program_);
  }

  const std::string program_;
  std::string title_;
  std::string document_;
  std::vector<std::string> page_;
  int pages_ = 0;
};

}  // namespace

std::unique_ptr<Printer> ConsolePrinters::open(PrintUse) {
  const std::string path = program_in_search_path(program);
  if (path.empty()) {
    errp(4856);
    return nullptr;
  }
  return std::make_unique<TextPrinter>(path);
}

bool ConsolePrinters::has_printer(PrintUse) const { return !program_in_search_path(program).empty(); }

}  // namespace orvane
