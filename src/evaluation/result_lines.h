// The printed lines of a result: two of 79 columns, below two lines of headings. Reports cut them by columns, so a
// field never moves.
//
//             1         2         3         4         5         6         7
//   0123456789012345678901234567890123456789012345678901234567890123456789012345678
//   TEST    RANGE INDICATED      ACTUAL         MODIFIER        ERROR        %TOL
//                 UUT            SYSTEM                                      ERROR
//     1 c 10      10mV           10.001mV       1kHz            -100     ppm  71
//                                                               MARGINAL     PASS
//
// (The letter c marks a corrected reading; it stands in column 4.)
#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "platform/operator.h"
#include "state/run_state.h"

namespace orvane {

constexpr std::size_t result_columns = 79;

/// Where the fields of both lines begin.
namespace result_column {
constexpr std::size_t test = 0, corrected = 4, range = 8, indicated = 14, actual = 29, modifier = 44,
                      error = 60, percent = 73;
constexpr std::size_t condition = 60, verdict = 73;  // of the second line
}  // namespace result_column

/// The two lines of headings.
std::array<std::string, 2> result_headings();

/// Fills run.decision, lines, colour and result flags included, and sets or clears test_bit::failed. `percent` is the
/// percent of tolerance that decides, `reference` what a relative error refers to. A go/no-go test is decided already:
/// its failed bit goes in. Statements that bring their outcome with them go to format_judgement().
void format_result(RunState& run, const FscRecord& record, double percent, double reference);

// Parts of it that format_judgement() shares.
struct OutcomeRow;
void begin_decision(RunState& run, const FscRecord& record);
void apply_outcome(RunState& run, const OutcomeRow& row);
void fill_percent(DecisionBlock& block, double percent, bool negative);

/// The result as the results board takes it.
ResultLine board_line(const DecisionBlock& decision);

}  // namespace orvane
