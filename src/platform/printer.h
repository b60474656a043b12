// Printers as the engine uses them: pages on which lines of text are set at places. Places are dots of the printer,
// from the upper left corner of the paper. Texts are Windows-1252, in a type of one width.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace orvane {

/// Reports of results and certificates may go to different printers or papers.
enum class PrintUse { results, certificates };

struct PageMetrics {
  int width = 0, height = 0;       // of the paper
  int dots_x = 0, dots_y = 0;      // an inch
  int offset_x = 0, offset_y = 0;  // the border that cannot be printed on
  int line_height = 0;             // from line to line
  int character_width = 0;
};

/// A document that is being printed. Every function returns false if the printer refuses.
class Printer {
 public:
  virtual ~Printer() = default;
  virtual PageMetrics metrics() = 0;
  virtual bool begin(std::string_view title) = 0;
  virtual bool begin_page() = 0;
  /// The type of reports; chosen anew on every page.
  virtual bool select_font() = 0;
  virtual bool text(int x, int y, std::string_view line) = 0;
  virtual bool end_page() = 0;
  virtual bool end() = 0;
  /// Gives the document up: nothing of it is printed that has not been already.
  virtual bool abort() = 0;
};

/// The printers of a front end. Whatever fails has been reported.
class PrinterSystem {
 public:
  virtual ~PrinterSystem() = default;
  /// The printer that was chosen for this use, else the system's own; null if there is none.
  virtual std::unique_ptr<Printer> open(PrintUse use) = 0;
  /// Asked without a report.
  virtual bool has_printer(PrintUse use) const = 0;

  // What only some front ends can do.
  /// Lets the operator choose printer and paper, and keeps the choice.
  virtual void choose(PrintUse /*use*/) {}
  virtual bool makes_pages() const { return false; }
  /// A file of pages (PDF) in place of a printer; null if it cannot be made.
  virtual std::unique_ptr<Printer> open_pdf(const std::string& /*path*/) { return nullptr; }
  /// Shows the pages that `draw` makes before they are printed.
  virtual void preview(PrintUse /*use*/, std::string_view /*title*/,
                       const std::function<void(Printer&)>& /*draw*/) {}
  /// Hands a file of pages to the system's viewer.
  virtual bool open_in_viewer(const std::string& /*path*/) { return false; }
};

}  // namespace orvane
