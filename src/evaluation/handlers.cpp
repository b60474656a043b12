#include "evaluation/handlers.h"

#include "evaluation/memc.h"
#include "evaluation/tolerance.h"
#include "state/report.h"

namespace orvane {

bool run_memc(Statement& statement) { return memc_values(statement.run, statement.record); }

bool run_tol(Statement& statement) {
  const std::string_view text = statement.record.text(field::text_14);
  if (!tolerance_from_text(text, statement.run.latest_tolerance))
    return run_report(statement.run, statement.record, 30300, text);
  return true;
}

std::span<const HandlerRow> evaluation_handlers() {
  static constexpr HandlerRow rows[] = {
      {fsc::tol, run_tol, Pace::quick},
      {fsc::memc, run_memc, Pace::quick},
      {fsc::memcx, run_memc, Pace::quick},
  };
  return rows;
}

}  // namespace orvane
