// What the system can claim of a test: the accuracy that was looked up or stated, and how the sequence that works it
// out has ended.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace orvane {

namespace acc_flag {
// AccRow::flags
constexpr std::uint16_t second_low = 0x0004, second_high = 0x0008;  // columns 3 and 4 are "na"
constexpr std::uint16_t no_gain = 0x0010, no_floor = 0x0020;        // columns 5 and 6 are "na"
constexpr std::uint16_t no_extra = 0x0040;                          // column 7 is "na"
constexpr std::uint16_t hit = 0x0080;
constexpr std::uint16_t extra_percent = 0x0100;  // column 7 ends in "%"
}  // namespace acc_flag

/// One range line of an accuracy file, and where it stands.
struct AccRow {
  std::uint16_t flags = 0;          // acc_flag; without acc_flag::hit the rest is of no use
  std::array<double, 7> columns{};  // as the file gives them
  std::string path;
  int line = 0;                                // of the file, from 1
  double confidence = 0;                       // of the file's header, in sigma; 0 where it has none
  double gain() const { return columns[4]; }   // percent of the value
  double floor() const { return columns[5]; }  // in the unit of the file
};

/// An accuracy that belongs to a later MEMC or MEMCX.
struct PendingAccuracy {
  static constexpr std::uint16_t valid = 0x0001;
  std::uint16_t flags = 0;
  std::uint16_t fsc = 0;  // code of the statement that has set it
  double nominal = 0;     // in the unit of the accuracy
  std::uint8_t unit = 0;
  std::uint8_t prefix = 0;
  double mod_value = 0;
  double sys_tol = 0;
  std::uint32_t mod_extra = 0;  // MOD2: its code and value
  std::uint8_t mod3 = 0;
};

/// The files that ACCF statements have named in this run, and the statements that the procedure names in ACCF at all.
struct AccfTable {
  static constexpr std::size_t slots = 251, code_limit = 64;
  std::array<std::string, slots> files;  // by the low byte of a statement's code; empty: the usual choice
  std::vector<std::uint16_t> codes;      // found by the scan in front of the run
};

/// The latest ACC statement.
struct AccStatement {
  static constexpr std::uint16_t met = 0x0001, number_given = 0x0002, unit_known = 0x0004;
  std::uint16_t flags = 0;
  double value = 0;         // the number of the statement (number_given), or MEM
  double tol = 0;           // the larger of the absolute tolerances below and above
  std::string units;        // the text behind the number; empty with unit_known
  std::uint8_t unit = 0;    // with unit_known, which the setting UUP asks for
  std::uint8_t prefix = 0;  // the same
  bool has(std::uint16_t bits) const { return (flags & bits) != 0; }
};

/// The correction of the latest reading that had one; test_bit::corrected tells whether it is the test's.
struct AppliedCorrection {
  double first = 0;   // at the value, in the nominal's unit without prefix
  double second = 0;  // at the modifier, in the same unit
  std::string path;
  int line = 0;  // of the first one's RANGE
  double amount() const { return first + second; }
};

/// Why the sequence of the system accuracy ended.
enum class UrStatus : std::uint8_t {
  not_run = 0,
  option_off = 1,
  modifier_from_mem = 2,
  no_nominal = 3,
  nothing_pending = 4,
  no_accuracy_kind = 5,
  unknown_code = 6,
  handler_failed = 7,
  floating_point = 8,
  no_tolerance = 9,
  no_mode = 10,
  lookup_failed = 11,
  no_entry = 12,
  out_of_range = 13,
  stored_pending = 14,
  too_small = 15,
  tur_computed = 16,
  no_statement = 17,
  stored_number = 18,
  stored_mem = 19,
  no_registers = 20,
  named_early = 21,
  named_end = 22
};

namespace ur_bit {
// SystemAccuracy::bits
constexpr std::uint16_t test_tolerance = 0x01, system_tolerance = 0x02, tur = 0x04, tur_low = 0x08,
                        modifier = 0x10, modifier_from_mem = 0x20;
}  // namespace ur_bit

struct SystemAccuracy {
  UrStatus status = UrStatus::not_run;
  std::uint16_t bits = 0;  // ur_bit
  double impedance = 0;    // ohms, for levels
  PendingAccuracy pending;
  AccStatement statement;

  // How the system tolerance in hand came about, for those who ask: the row and its mode words, the value it was
  // looked up at and its unit, and both parts of the tolerance in the unit of the file.
  AccRow row;
  std::string mode;
  double looked_up = 0;
  std::uint8_t looked_up_unit = 0;  // unit code of the file's form
  std::optional<double> modifier;   // the second value of the look-up
  double gain_part = 0, floor_part = 0;
};

}  // namespace orvane
