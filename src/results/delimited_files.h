// The delimited pair: the results of a run and their readings as text, for a database or for other programs.
// docs/formats.md lists the columns.
//
//   1,'10.00 V @ 1 kHz','10.00','','V',...   integers as they are, texts in single quotes (one within is doubled)
//
// A quantity has three columns: its printed number, its prefix and its unit. What is empty has nothing between its
// commas. The last column has no comma behind it; lines end in CR LF.
#pragma once

#include <string>

#include "state/run_state.h"

namespace orvane {

struct DelimitedPair {
  std::string results, readings;  // paths
};

/// Writes both files into the working folder, under names that are free: results-NNN.txt and readings-NNN.txt. False
/// after a report, with neither file left: 694, 695 a file cannot be made, 691 not be written to its end.
[[nodiscard]] bool write_delimited_pair(RunState& run, DelimitedPair& pair);

}  // namespace orvane
