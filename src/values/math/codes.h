// What can go wrong in an expression: the error codes that the evaluator and the functions set, and the
// messages that they become.
#pragma once

#include <string_view>

#include "state/run_state.h"

namespace orvane {

namespace math_code {
// clang-format off
constexpr int none = 0, accuracy_off = 1, accuracy_lookup = 2, accuracy_not_applicable = 3,
              accuracy_no_file = 4, accuracy_no_row = 5, no_memory = 6, no_equals = 7, avg_start = 8,
              avg_end = 9, avg_l_start = 10, avg_l_end = 11, bit_number = 12, date_text = 13,
              division_by_zero = 14, path_too_long = 15, field_index = 16, field_source = 17,
              field_separator = 18, format = 19, getv_failed = 20, getv_no_name = 21, incomplete = 22,
              register_index = 23, no_target = 24, max_start = 25, max_end = 26, max_l_start = 27,
              max_l_end = 28, min_start = 29, min_end = 30, min_l_start = 31, min_l_end = 32,
              argument_count = 33, not_a_number = 34, reported = 35, stack_full = 36, putv_failed = 37,
              putv_no_name = 38, putv_too_long = 39, putv_no_old_value = 40, no_reading = 41, rss_start = 42,
              rss_end = 43, rss_l_start = 44, rss_l_end = 45, sdev_start = 46, sdev_end = 47,
              sdev_l_start = 48, sdev_l_end = 49, not_one_value = 50, sub_length = 51, sub_start = 52,
              sub_source = 53, sum_start = 54, sum_end = 55, sum_l_start = 56, sum_l_end = 57,
              not_at_end = 58, unc_value = 59, uncv_value = 60, stack_empty = 61, open_string = 62,
              number_expected = 63, statement_function = 64;
// clang-format on
/// A floating-point fault. It has no message of its own.
constexpr int fault = -1;
}  // namespace math_code

/// Reports a failed expression on its record: the code's message, with `rest` (the text not scanned, or a
/// function's name) where the message shows it. A fault stops the statement with its reason, a code that has
/// been reported says nothing more. Always false.
bool math_report(RunState& run, const FscRecord& record, int code, std::string_view rest);

}  // namespace orvane
