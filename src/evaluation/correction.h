// Corrections: what the calibration certificate of a standard says its readings are off by, taken from a text file of
// the folder `correctdir` and added to what the standard read or applied: corrected value = value + correction.
//
//   # HP 3458A, certificate of 2026-03-02
//   ASSET: DEMO-3458            optional: the file is for this specimen alone
//   MODE: Volts                 the words of accuracy files, in any order and case
//   RANGE: 0 1.2                of the nominal, without prefix; both ends belong to it
//     0     0.0000002           a value, and the correction there in the same unit
//     1     0.0000011
//   RANGE: 0 1.2                the same for statements with a modifier
//     0     0
//   MOD1: 10 100000             within the RANGE: of the modifier
//     1000  0                   a modifier, and a further correction there in percent of the value
//     50000 0.002
//
// Numbers are in the nominal's unit without prefix; a value whose files are in another unit (a level) has no correction.
// Between two points a correction is a straight line; beyond the outermost ones it stays what it is there. Where an
// exact point is asked for, the nominal (and the modifier) must be a point. The first MODE with the words counts, and of
// it the first RANGE that holds the nominal: for a statement with a modifier one whose MOD1 holds it, else one without
// MOD1.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// What a reading is corrected by.
struct CorrectionQuery {
  std::string_view mode;
  double nominal = 0;              // chooses the RANGE; the point where an exact one is asked for
  double value = 0;                // where the correction is worked out
  std::optional<double> modifier;  // none: no MOD1 counts
  bool exact = false;
};
struct Correction {
  static constexpr int none = 0, first_kind = 1, both_kinds = 2;
  int kinds = none;
  double first = 0, second = 0;  // both in the unit of the value
  int line = 0;                  // of the RANGE
};

/// False after a report: 31020 the file cannot be read, 31021 with file, line and reason a damaged line, 31022 the file
/// is for another asset than `asset`. A value without a correction is no failure: `out.kinds` is none.
[[nodiscard]] bool cor_lookup(RunState& run, const std::string& path, std::string_view asset,
                              const CorrectionQuery& query, Correction& out);

/// Whose corrections a statement takes. The instruments' floor hands it down.
struct CorrectionSource {
  /// The path of the file, which may be missing, and the asset of the instrument, empty where it has none. Empty: the
  /// statement has no file. False after a report.
  bool (*file_of)(RunState& run, const FscRecord& record, std::string& path, std::string& asset) = nullptr;
};
void cor_install_source(const CorrectionSource& source);

/// The loop's step behind an instrument statement with the option C: corrects what it read or applied, in
/// TestValues::actual (and MEM1 where that is the reading), or in MEM after a set-up line. Flags and amount go to
/// test_state and run.correction. False if the test must stop: those of cor_lookup(), and with CORREQ YES or EXACT
/// 31023 no file, 31024 no correction for the value.
[[nodiscard]] bool cor_check(RunState& run, const FscRecord& record);

}  // namespace orvane
