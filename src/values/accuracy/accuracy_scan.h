// The accuracy files of a folder by their headers, and which of them counts for an instrument: the one whose interval
// fits how long its calibration holds. A file for one asset goes before one for all.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "values/accuracy/accuracy_file.h"

namespace orvane {

/// The code of an instrument's name; the bench hands it down. Without it every device_id is 0.
void acc_install_names(std::uint16_t (*code_of_name)(std::string_view name));

/// Builds the list of files with a complete header, in the order of their names, unless it stands. A please-wait
/// window shows the name of each. False after a report, with the list empty: 174 no file or no folder, 177 or 208 to 210
/// the folder cannot be read, 109 a header without a name, those of acch_header().
[[nodiscard]] bool acch_scan(const std::string& folder);

/// Forgets the list if a file of it, or the folder, is another than it was. What was selected is selected again when
/// the files are scanned anew.
void acch_refresh();
void acch_clear();

std::vector<AccFileInfo>& acch_list();

/// How long the calibration of an asset holds.
struct AccQuery {
  double value = 0;
  std::uint16_t interval_units = 0;  // acc_interval
  double days = 0;
};

struct AccWanted {
  std::uint16_t device_id = 0;  // 0: by name
  std::string name;
  std::string asset;
  AccQuery query;
};

/// The file of the list for an instrument; null if there is none. With `report`: 136 none fits, 153 several do and the
/// key acc_conflict does not say which.
AccFileInfo* acc_choose(const AccWanted& wanted, bool report);

}  // namespace orvane
