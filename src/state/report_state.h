// The report that is being made of a run.
#pragma once

namespace orvane {

struct ReportState {
  int kind = 0;      // ReportKind
  bool due = false;  // chosen, and not built yet
};

}  // namespace orvane
