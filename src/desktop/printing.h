// Printing on the desktop: the system's printers, files of pages (PDF), a preview.
#pragma once

#include "platform/printer.h"

class QPrinter;
class QWidget;

namespace orvane {

class DesktopPrinters : public PrinterSystem {
 public:
  /// Windows open over the owner, which may be null.
  void use(QWidget* owner) { owner_ = owner; }

  std::unique_ptr<Printer> open(PrintUse use) override;
  bool has_printer(PrintUse use) const override;
  void choose(PrintUse use) override;
  bool makes_pages() const override { return true; }
  std::unique_ptr<Printer> open_pdf(const std::string& path) override;
  void preview(PrintUse use, std::string_view title, const std::function<void(Printer&)>& draw) override;
  bool open_in_viewer(const std::string& path) override;

 private:
  QWidget* owner_ = nullptr;
};

}  // namespace orvane
