#include "reports/page_layout.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <memory>
#include <optional>

#include "config/user_settings.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view section = "Page Margin";
constexpr int end_of_first_page = 4624, end_of_head = 4625;
constexpr char form_feed = '\f';

std::optional<double> inches(std::string_view text) {
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !(value >= 0 && value <= 100))
    return std::nullopt;
  return value;
}

// In dots; -1 for a text that is no length.
int dots(const std::string& margin, int dots_per_inch) {
  const auto value = inches(margin);
  return value ? static_cast<int>(*value * dots_per_inch) : -1;
}

struct Layout {
  int left = 0, top = 0;
  int last_line = 0;  // the lowest place of a line
  int number_x = 0, number_y = 0;
  bool numbers = false;
};

Layout layout_of(const PageMargins& margins, const PageMetrics& page) {
  Layout layout;
  layout.left = dots(margins.left, page.dots_x);
  layout.top = dots(margins.top, page.dots_y);
  layout.last_line = page.height - dots(margins.bottom, page.dots_y) - page.line_height;
  layout.numbers = margins.numbers;
  if (margins.numbers) {
    layout.number_x = page.width / 2;
    layout.number_y = layout.last_line;
    layout.last_line -= page.line_height;
  }
  return layout;
}

// One document on its way to a printer.
class PrintJob {
 public:
  explicit PrintJob(Printer& printer) : printer_(printer) {}

  // Is there a printer that can take it, with these margins?
  bool set_up() {
    page_ = printer_.metrics();
    if (page_.width <= 0 || page_.height <= 0 || page_.line_height <= 0 || page_.dots_x <= 0 ||
        page_.dots_y <= 0)
      return errp(4834);
    const PageMargins margins = page_margins();
    if (const int fault = margin_fault(margins, page_); fault != 0) return errp(fault);
    layout_ = layout_of(margins, page_);
    return layout_.last_line >= layout_.top || errp(4835);
  }

  bool too_wide(const ReportText& report) const {
    std::size_t widest = 0;
    for (const auto* part : {&report.first, &report.head, &report.body}) {
      for (const std::string& line : *part) widest = std::max(widest, line.size());
    }
    const auto room = static_cast<double>(page_.width - page_.offset_x - layout_.left);
    return static_cast<double>(widest) * page_.character_width > room;
  }

  bool print(std::string_view title, const ReportText& report, WaitWindow* window) {
    window_ = window;
    if (!printer_.begin(title)) return errp(2185, "PrintBegin");
    if (pages(report)) return printer_.end() || errp(2186);
    if (!printer_.abort()) errp(2189);
    return false;
  }

 private:
  bool pages(const ReportText& report) {
    head_ = &report.head;
    if (!begin_page()) return false;
    for (const auto* part : {&report.first, &report.head}) {
      for (const std::string& line : *part) {
        if (!print_line(line)) return false;
      }
    }
    repeats_ = true;
    for (const std::string& line : report.body) {
      if (!print_line(line)) return false;
    }
    return end_page();
  }

  bool print_line(std::string_view line) {
    if (aborted()) return errp(4836, "fAbort");
    const bool feeds = line.starts_with(form_feed);
    if (feeds || y_ > layout_.last_line) {
      if (!end_page() || !begin_page() || (repeats_ && !print_head())) return false;
      if (feeds) line.remove_prefix(1);
      if (feeds && line.empty()) return true;
    }
    return set(line);
  }

  // A head that leaves no room for the report is printed on the first page only.
  bool print_head() {
    if (layout_.top + static_cast<int>(head_->size()) * page_.line_height > layout_.last_line) return true;
    return std::all_of(head_->begin(), head_->end(), [this](const std::string& line) { return set(line); });
  }

  bool set(std::string_view line) {
    if (!line.empty() && !printer_.text(layout_.left, y_, line)) return errp(2233);
    y_ += page_.line_height;
    return true;
  }

  bool begin_page() {
    if (!printer_.begin_page()) return errp(2187);
    ++number_;
    y_ = layout_.top;
    return printer_.select_font() || errp(2210);
  }

  bool end_page() {
    if (layout_.numbers && !printer_.text(layout_.number_x, layout_.number_y, std::to_string(number_)))
      return errp(2233);
    return printer_.end_page() || errp(2188);
  }

  // The window takes its turns while pages go out.
  bool aborted() {
    if (window_ == nullptr) return false;
    return pump_messages() || window_->abort_pressed();
  }

  Printer& printer_;
  PageMetrics page_;
  Layout layout_;
  WaitWindow* window_ = nullptr;
  const std::vector<std::string>* head_ = nullptr;
  bool repeats_ = false;
  int y_ = 0;
  int number_ = 0;
};

bool print_anyway() {
  LinesWindow window;
  window.kind = WindowKind::print;
  window.title = "Paper Width Exceeded!";
  window.lines = {"Some information will be lost.  Print Anyway?"};
  window.buttons = {{answer::yes, msg(30041)}, {answer::no, msg(30042), true}};
  return platform().desk != nullptr && platform().desk->lines(window) == answer::yes;
}

}  // namespace

ReportText report_text(std::string_view contents) {
  const std::string first_mark = msg(end_of_first_page), head_mark = msg(end_of_head);
  std::vector<std::string> lines;
  std::optional<std::size_t> first_end, head_end;
  while (!contents.empty()) {
    const std::size_t end = contents.find('\n');
    std::string_view line = contents.substr(0, end);
    contents.remove_prefix(end == std::string_view::npos ? contents.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (!first_end && line == first_mark) {
      first_end = lines.size();
    } else if (first_end && !head_end && line == head_mark) {
      head_end = lines.size();
    } else {
      lines.emplace_back(line);
    }
  }
  // Half of a pair of marks divides nothing but the first page.
  const auto at = [&](std::size_t place) { return lines.begin() + static_cast<std::ptrdiff_t>(place); };
  const std::size_t first = first_end.value_or(0), head = head_end.value_or(first);
  ReportText report;
  report.first.assign(std::make_move_iterator(lines.begin()), std::make_move_iterator(at(first)));
  report.head.assign(std::make_move_iterator(at(first)), std::make_move_iterator(at(head)));
  report.body.assign(std::make_move_iterator(at(head)), std::make_move_iterator(lines.end()));
  return report;
}

std::vector<std::string> report_lines(const ReportText& report) {
  std::vector<std::string> lines = report.first;
  lines.insert(lines.end(), report.head.begin(), report.head.end());
  lines.insert(lines.end(), report.body.begin(), report.body.end());
  return lines;
}

PageMargins page_margins() {
  PageMargins margins;
  for (const auto& [key, member] :
       {std::pair{"left", &PageMargins::left}, {"top", &PageMargins::top}, {"bottom", &PageMargins::bottom}})
    margins.*member = user_setting(section, key).value_or(margins.*member);
  const auto numbers = user_setting(section, "page");
  margins.numbers = numbers.value_or("0") != "0";
  if (!numbers) {
    errp(2225);
    static_cast<void>(put_user_setting(section, "page", "0"));
  }
  return margins;
}

bool keep_page_margins(const PageMargins& margins) {
  return put_user_setting(section, "left", margins.left) && put_user_setting(section, "top", margins.top) &&
         put_user_setting(section, "bottom", margins.bottom) &&
         put_user_setting(section, "page", margins.numbers ? "1" : "0");
}

int margin_fault(const PageMargins& margins, const PageMetrics& page) {
  if (dots(margins.left, page.dots_x) < page.offset_x) return 4852;
  if (dots(margins.top, page.dots_y) < page.offset_y) return 4853;
  const int bottom = dots(margins.bottom, page.dots_y);
  if (bottom < page.offset_y) return 4854;
  return margins.numbers && bottom < page.offset_y + page.line_height ? 4855 : 0;
}

bool print_report(Printer& printer, std::string_view title, const ReportText& report) {
  PrintJob job(printer);
  if (!job.set_up()) return false;
  if (job.too_wide(report) && !print_anyway()) return false;
  std::unique_ptr<WaitWindow> window;
  if (platform().desk != nullptr) window = platform().desk->wait({msg(31280), std::string(title), true});
  return job.print(title, report, window.get());
}

bool draw_report(Printer& printer, std::string_view title, const ReportText& report) {
  PrintJob job(printer);
  return job.set_up() && job.print(title, report, nullptr);
}

}  // namespace orvane
