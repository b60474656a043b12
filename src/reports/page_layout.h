// Printing: the lines of a report on pages with margins, a head that stands on every page, and page numbers.
//
// A report file has three parts, divided by two marks, each a line of its own (messages 4624 and 4625): what stands on
// the first page only, the head of every page, and the rest. A file without marks is all rest. A line that begins with
// a form feed begins a page.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/printer.h"

namespace orvane {

struct ReportText {
  std::vector<std::string> first, head, body;
};
/// Parts the lines of a report at its marks.
ReportText report_text(std::string_view contents);
/// The lines as they are read: first page, head, rest, without the marks.
std::vector<std::string> report_lines(const ReportText& report);

/// The section "Page Margin" of the user's settings: inches as texts, page numbers on or off.
struct PageMargins {
  std::string left = "0.75", top = "0.75", bottom = "0.75";
  bool numbers = false;
};
/// Where the section has no key "page", message 2225 says so once and "page=0" is written.
PageMargins page_margins();
/// False after message 2242.
[[nodiscard]] bool keep_page_margins(const PageMargins& margins);

/// The message that says why these margins do not fit the paper, or 0: 4852 left, 4853 top, 4854 bottom reach into the
/// border that cannot be printed on (or are no numbers), 4855 the bottom has no room for page numbers.
int margin_fault(const PageMargins& margins, const PageMetrics& page);

/// Prints a report under a title. Lines that are too long for the paper are asked about first; a window with an Abort
/// button stands open meanwhile. False after a report, or when the operator gave it up; the document is then aborted.
[[nodiscard]] bool print_report(Printer& printer, std::string_view title, const ReportText& report);

/// The same pages without windows and questions, for a preview or a file.
[[nodiscard]] bool draw_report(Printer& printer, std::string_view title, const ReportText& report);

}  // namespace orvane
