// The instrument configuration, the file of the key "config": what stands on the bench, one line an instrument.
//
//   # place : model / options = aliases {asset}
//   22      : HP 3458A /2 = DMM, VM {MY45001234}
//     1     : Agilent E4412A {US37290}         a plug-in in slot 1 of the instrument above: the line begins with a blank
//           : Agilent E4413A                   an accessory without a slot
//   COM3    : HP 34401A = DVM2
//   110     : "Signal switch" = SW {77}        an instrument without a driver: its name stands between quotes
//           : Gauge blocks 0.5 to 100 mm {4711}     (from the first column) a standard without an address
//
// A place is an IEEE-488 address (0 to 30, 100 to 130 on the second board) or a port name. Lines are UTF-8 or
// Windows-1252.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "instruments/device_list.h"

namespace orvane {

namespace device_limit {
constexpr std::size_t rows = 64, slots = 8, asset = 60, alias = 7, name = 29, line = 395;
}

/// A fault of the file. `text` begins with the file and, where there is one, the line.
struct BenchFault {
  int number = 0;
  std::string text;
};

/// Reads the file and checks it as a whole. All faults are collected, none is reported; with a fault the list is not
/// to be used.
[[nodiscard]] bool bench_file_read(const std::string& path, DeviceList& list,
                                   std::vector<BenchFault>& faults);

/// May a text be an alias: 1 to 7 letters, digits and underscores, neither a number that reads as an address nor a
/// port name.
bool is_alias(std::string_view text);

/// The rules over the whole bench: which model may stand at which kind of place, and what a pass-through port needs.
void check_bench(const DeviceList& list, const std::string& file, std::vector<BenchFault>& faults);

}  // namespace orvane
