#include "procedure/pipeline/database.h"

#include "config/startup_config.h"
#include "state/report.h"

namespace orvane {
namespace {

struct Installed {
  const DatabaseRoads* roads = nullptr;
  bool absence_told = false;
};

Installed& installed() {
  static Installed the_installed;
  return the_installed;
}

}  // namespace

bool operator_may(int right) {
  const DatabaseRoads* roads = startup_config().database != 0 ? installed().roads : nullptr;
  return roads == nullptr || right == operator_right::always || roads->operator_may(right);
}

void set_database_roads(const DatabaseRoads* roads) { installed() = {roads, false}; }

const DatabaseRoads* database_roads() {
  if (startup_config().database == 0) return nullptr;
  if (installed().roads == nullptr && !installed().absence_told) {
    installed().absence_told = true;
    msgp(30600);
  }
  return installed().roads;
}

}  // namespace orvane
