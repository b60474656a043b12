#include "values/math/codes.h"

#include <algorithm>
#include <iterator>

#include "state/report.h"

namespace orvane {
namespace {

struct CodeRow {
  int code;
  int message;
  bool shows_rest;
};

constexpr int generic_message = 1851;

// clang-format off
constexpr CodeRow rows[] = {
    {math_code::accuracy_off, 1937, false},
    {math_code::accuracy_lookup, 1897, false},
    {math_code::accuracy_not_applicable, 1899, false},
    {math_code::accuracy_no_file, 1896, false},
    {math_code::accuracy_no_row, 1898, false},
    {math_code::no_memory, 1858, false},
    {math_code::no_equals, 1853, false},
    {math_code::avg_start, 1872, false},
    {math_code::avg_end, 1873, false},
    {math_code::avg_l_start, 393, false},
    {math_code::avg_l_end, 394, false},
    {math_code::bit_number, 1894, false},
    {math_code::date_text, 448, true},
    {math_code::division_by_zero, 1856, false},
    {math_code::path_too_long, 1893, false},
    {math_code::field_index, 1859, false},
    {math_code::field_source, 1860, false},
    {math_code::field_separator, 1861, false},
    {math_code::format, 1862, true},
    {math_code::getv_failed, 1887, true},
    {math_code::getv_no_name, 1888, true},
    {math_code::incomplete, 1854, false},
    {math_code::register_index, 1857, false},
    {math_code::no_target, 1852, false},
    {math_code::max_start, 1874, false},
    {math_code::max_end, 1875, false},
    {math_code::max_l_start, 395, false},
    {math_code::max_l_end, 396, false},
    {math_code::min_start, 1876, false},
    {math_code::min_end, 1877, false},
    {math_code::min_l_start, 397, false},
    {math_code::min_l_end, 398, false},
    {math_code::argument_count, 1863, true},
    {math_code::not_a_number, 1864, true},
    {math_code::stack_full, 1865, true},
    {math_code::putv_failed, 1889, true},
    {math_code::putv_no_name, 1890, true},
    {math_code::putv_too_long, 1892, false},
    {math_code::putv_no_old_value, 1891, true},
    {math_code::no_reading, 1895, false},
    {math_code::rss_start, 1938, false},
    {math_code::rss_end, 1939, false},
    {math_code::rss_l_start, 428, false},
    {math_code::rss_l_end, 429, false},
    {math_code::sdev_start, 1878, false},
    {math_code::sdev_end, 1878, false},
    {math_code::sdev_l_start, 399, false},
    {math_code::sdev_l_end, 399, false},
    {math_code::not_one_value, 1855, true},
    {math_code::sub_length, 1866, true},
    {math_code::sub_start, 1867, true},
    {math_code::sub_source, 1868, true},
    {math_code::sum_start, 999, false},
    {math_code::sum_end, 1000, false},
    {math_code::sum_l_start, 977, false},
    {math_code::sum_l_end, 978, false},
    {math_code::not_at_end, generic_message, false},
    {math_code::unc_value, 2033, false},
    {math_code::uncv_value, 2034, false},
    {math_code::stack_empty, 1869, true},
    {math_code::open_string, 1870, true},
    {math_code::number_expected, 1871, true},
    {math_code::statement_function, 2035, true},
};
// clang-format on

}  // namespace

bool math_report(RunState& run, const FscRecord& record, int code, std::string_view rest) {
  if (code == math_code::reported) return false;
  if (code == math_code::fault) return floating_point_stop(run);
  const auto* row =
      std::find_if(std::begin(rows), std::end(rows), [code](const CodeRow& r) { return r.code == code; });
  if (row == std::end(rows)) return run_report(run, record, generic_message);
  if (row->shows_rest) return run_report(run, record, row->message, rest);
  return run_report(run, record, row->message);
}

}  // namespace orvane
