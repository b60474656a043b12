#include "desktop/printing.h"

#include <QDesktopServices>
#include <QFile>
#include <QPainter>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPrinterInfo>
#include <QUrl>

#include "config/user_settings.h"
#include "desktop/texts.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr int dots_per_inch = 300;
constexpr int type_size = 10;  // points; 80 characters take 6.7 inches
constexpr double points_per_inch = 72;

// The choice of a printer, as the settings keep it.
std::string_view section_of(PrintUse use) {
  return use == PrintUse::certificates ? "Printer Certificates" : "Printer Results";
}

QFont report_font() {
  QFont font("DejaVu Sans Mono");
  font.setStyleHint(QFont::TypeWriter);
  font.setPointSize(type_size);
  return font;
}

// A document on a printer of the toolkit, which is its own or borrowed from a preview.
class QtPrinter : public Printer {
 public:
  explicit QtPrinter(std::unique_ptr<QPrinter> own) : own_(std::move(own)), printer_(*own_) { set_up(); }
  explicit QtPrinter(QPrinter& borrowed) : printer_(borrowed) { set_up(); }

  PageMetrics metrics() override {
    const QPageLayout layout = printer_.pageLayout();
    const QRect paper = layout.fullRectPixels(printer_.resolution());
    const QMarginsF border = layout.minimumMargins();
    const double dots =
        printer_.resolution() / (layout.units() == QPageLayout::Millimeter ? 25.4 : points_per_inch);
    const QFontMetricsF type(report_font(), &printer_);
    return {.width = paper.width(),
            .height = paper.height(),
            .dots_x = printer_.resolution(),
            .dots_y = printer_.resolution(),
            .offset_x = static_cast<int>(border.left() * dots),
            .offset_y = static_cast<int>(border.top() * dots),
            .line_height = qRound(type.lineSpacing()),
            .character_width = qRound(type.horizontalAdvance('0'))};
  }

  bool begin(std::string_view title) override {
    printer_.setDocName(shown(title));
    printer_.setCreator("Orvane Run Time");
    first_page_ = true;
    return painter_.begin(&printer_);
  }
  bool begin_page() override {
    const bool begun = first_page_ || printer_.newPage();
    first_page_ = false;
    return begun;
  }
  bool select_font() override {
    const QFont font = report_font();
    painter_.setFont(font);
    ascent_ = QFontMetricsF(font, &printer_).ascent();
    return true;
  }
  bool text(int x, int y, std::string_view line) override {
    painter_.drawText(QPointF(x, y + ascent_), shown(line));
    return true;
  }
  bool end_page() override { return printer_.printerState() == QPrinter::Active; }
  bool end() override { return painter_.end(); }
  bool abort() override {
    const bool aborted = printer_.abort();
    painter_.end();
    return aborted;
  }

 private:
  void set_up() { printer_.setFullPage(true); }

  std::unique_ptr<QPrinter> own_;
  QPrinter& printer_;
  QPainter painter_;
  double ascent_ = 0;
  bool first_page_ = true;
};

QPrinterInfo chosen_info(const std::string& name) {
  return name.empty() ? QPrinterInfo::defaultPrinter() : QPrinterInfo::printerInfo(shown_path(name));
}
std::string chosen_name(PrintUse use) { return user_setting(section_of(use), "name").value_or(""); }

// The printer that was chosen for this use; null after a report.
std::unique_ptr<QPrinter> chosen_printer(PrintUse use) {
  const std::string name = chosen_name(use);
  const QPrinterInfo info = chosen_info(name);
  if (info.isNull()) {
    if (!name.empty()) {
      errp(2353);
    } else if (QPrinterInfo::availablePrinterNames().isEmpty()) {
      errp(4856);
    } else {
      errp(2352);
    }
    return nullptr;
  }
  auto printer = std::make_unique<QPrinter>(info);
  if (!printer->isValid()) {
    errp(2354);
    return nullptr;
  }
  printer->setResolution(dots_per_inch);
  const std::string paper = user_setting(section_of(use), "paper").value_or("");
  if (!paper.empty()) {
    bool known = false;
    const int id = QString::fromStdString(paper).toInt(&known);
    if (!known || id < 0 || id > QPageSize::LastPageSize ||
        !printer->setPageSize(QPageSize(static_cast<QPageSize::PageSizeId>(id))))
      warnp(2355);
  }
  if (user_setting(section_of(use), "landscape").value_or("0") == "1")
    printer->setPageOrientation(QPageLayout::Landscape);
  return printer;
}

}  // namespace

std::unique_ptr<Printer> DesktopPrinters::open(PrintUse use) {
  std::unique_ptr<QPrinter> printer = chosen_printer(use);
  return printer != nullptr ? std::make_unique<QtPrinter>(std::move(printer)) : nullptr;
}

bool DesktopPrinters::has_printer(PrintUse use) const { return !chosen_info(chosen_name(use)).isNull(); }

void DesktopPrinters::choose(PrintUse use) {
  if (QPrinterInfo::availablePrinterNames().isEmpty()) {
    errp(4856);
    return;
  }
  std::unique_ptr<QPrinter> printer = has_printer(use) ? chosen_printer(use) : nullptr;
  if (printer == nullptr) printer = std::make_unique<QPrinter>();
  QPrintDialog dialog(printer.get(), owner_);
  dialog.setOptions(QAbstractPrintDialog::PrintToFile);
  if (dialog.exec() != QDialog::Accepted) return;
  const QPageLayout layout = printer->pageLayout();
  const std::string_view section = section_of(use);
  const bool kept =
      put_user_setting(section, "name", printer->printerName().toStdString()) &&
      put_user_setting(section, "paper", std::to_string(static_cast<int>(layout.pageSize().id()))) &&
      put_user_setting(section, "landscape", layout.orientation() == QPageLayout::Landscape ? "1" : "0");
  if (!kept) errp(2359);
}

std::unique_ptr<Printer> DesktopPrinters::open_pdf(const std::string& path) {
  // The toolkit tells only at the end that a file cannot be written.
  QFile file(shown_path(path));
  if (!file.open(QIODevice::WriteOnly)) {
    errp(31283, "PDF", path);
    return nullptr;
  }
  file.close();
  auto printer = std::make_unique<QPrinter>();
  printer->setOutputFormat(QPrinter::PdfFormat);
  printer->setResolution(dots_per_inch);
  printer->setOutputFileName(shown_path(path));
  const QPrinterInfo system = QPrinterInfo::defaultPrinter();
  printer->setPageSize(system.isNull() ? QPageSize(QPageSize::A4) : system.defaultPageSize());
  return std::make_unique<QtPrinter>(std::move(printer));
}

void DesktopPrinters::preview(PrintUse use, std::string_view title,
                              const std::function<void(Printer&)>& draw) {
  std::unique_ptr<QPrinter> printer = has_printer(use) ? chosen_printer(use) : nullptr;
  if (printer == nullptr) {
    // Without a printer the pages are shown all the same; they can be saved as a file.
    printer = std::make_unique<QPrinter>();
    printer->setOutputFormat(QPrinter::PdfFormat);
    printer->setResolution(dots_per_inch);
    printer->setPageSize(QPageSize(QPageSize::A4));
  }
  QPrintPreviewDialog dialog(printer.get(), owner_);
  dialog.setWindowTitle(shown(title));
  QObject::connect(&dialog, &QPrintPreviewDialog::paintRequested, &dialog, [&draw](QPrinter* target) {
    QtPrinter pages(*target);
    draw(pages);
  });
  dialog.resize(900, 1000);
  dialog.exec();
}

bool DesktopPrinters::open_in_viewer(const std::string& path) {
  return QDesktopServices::openUrl(QUrl::fromLocalFile(shown_path(path))) || errp(31332, path);
}

}  // namespace orvane
