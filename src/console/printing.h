// Printing from a terminal: pages of plain text, handed to the printing system's program "lp".
#pragma once

#include "platform/printer.h"

namespace orvane {

class ConsolePrinters : public PrinterSystem {
 public:
  /// Null after message 4856 where the program is not in the search path.
  std::unique_ptr<Printer> open(PrintUse use) override;
  bool has_printer(PrintUse use) const override;
};

}  // namespace orvane
