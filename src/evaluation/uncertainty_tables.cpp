#include "evaluation/uncertainty_tables.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "evaluation/uncertainty.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr int confidence_columns = 6;

struct StudentRow {
  double df;
  std::array<double, confidence_columns> t;  // 68.27 %, 90 %, 95 %, 95.45 %, 99 %, 99.73 %
};

// clang-format off
constexpr StudentRow student_rows[] = {
    {1, {1.84, 6.31, 12.71, 13.97, 63.66, 235.8}},
    {2, {1.32, 2.92, 4.3, 4.53, 9.92, 19.21}},
    {3, {1.2, 2.35, 3.18, 3.31, 5.84, 9.22}},
    {4, {1.14, 2.13, 2.78, 2.87, 4.6, 6.62}},
    {5, {1.11, 2.02, 2.57, 2.65, 4.03, 5.51}},
    {6, {1.09, 1.94, 2.45, 2.52, 3.71, 4.9}},
    {7, {1.08, 1.89, 2.36, 2.43, 3.5, 4.53}},
    {8, {1.07, 1.86, 2.31, 2.37, 3.36, 4.28}},
    {9, {1.06, 1.83, 2.26, 2.32, 3.25, 4.09}},
    {10, {1.05, 1.81, 2.23, 2.28, 3.17, 3.96}},
    {11, {1.05, 1.8, 2.2, 2.25, 3.11, 3.85}},
    {12, {1.04, 1.78, 2.18, 2.23, 3.05, 3.76}},
    {13, {1.04, 1.77, 2.16, 2.21, 3.01, 3.69}},
    {14, {1.04, 1.76, 2.14, 2.2, 2.98, 3.64}},
    {15, {1.03, 1.75, 2.13, 2.18, 2.95, 3.59}},
    {16, {1.03, 1.75, 2.12, 2.17, 2.92, 3.54}},
    {17, {1.03, 1.74, 2.11, 2.16, 2.9, 3.51}},
    {18, {1.03, 1.73, 2.1, 2.15, 2.88, 3.48}},
    {19, {1.03, 1.73, 2.09, 2.14, 2.86, 3.45}},
    {20, {1.03, 1.72, 2.09, 2.13, 2.85, 3.42}},
    {25, {1.02, 1.71, 2.06, 2.11, 2.79, 3.33}},
    {30, {1.02, 1.7, 2.04, 2.09, 2.75, 3.27}},
    {35, {1.01, 1.7, 2.03, 2.07, 2.72, 3.23}},
    {40, {1.01, 1.68, 2.02, 2.06, 2.7, 3.2}},
    {45, {1.01, 1.68, 2.01, 2.06, 2.69, 3.18}},
    {50, {1.01, 1.68, 2.01, 2.05, 2.68, 3.16}},
    {100, {1.005, 1.66, 1.984, 2.025, 2.626, 3.077}},
    {200, {1.0, 1.65, 1.97, 2.01, 2.6, 3.04}},
    {1000, {1.0, 1.646, 1.96, 2.0, 2.58, 3.01}},
    {infinite_df, {1.0, 1.645, 1.96, 2.0, 2.576, 3.0}},
};
// clang-format on
constexpr const StudentRow& last_finite_row = *(std::end(student_rows) - 2);
static_assert(last_finite_row.df == 1000);

struct FactorRow {
  int up_to;  // readings
  double factor;
};
// clang-format off
constexpr FactorRow factor_rows[] = {
    {1, 1000000}, {2, 6.985}, {3, 2.265}, {4, 1.655}, {5, 1.435}, {6, 1.325}, {7, 1.26}, {8, 1.215}, {9, 1.185},
    {10, 1.16}, {11, 1.14}, {12, 1.125}, {13, 1.115}, {14, 1.105}, {15, 1.1}, {16, 1.09}, {17, 1.085}, {18, 1.08},
    {19, 1.075}, {20, 1.07}, {25, 1.065}, {30, 1.055}, {35, 1.045}, {40, 1.035}, {50, 1.03}, {100, 1.025},
    {101, 1.0125}};
// clang-format on

}  // namespace

double small_sample_factor(int n) {
  const auto row = std::find_if(std::begin(factor_rows), std::end(factor_rows),
                                [n](const FactorRow& one) { return n <= one.up_to; });
  return row != std::end(factor_rows) ? row->factor : 1.0;
}

double t_factor(double df, int confidence) {
  if (confidence < 1 || confidence > confidence_columns) {
    errp(388, confidence);
    return 0;
  }
  if (!(df >= 1)) {
    errp(389, df);
    return 0;
  }
  const auto column = static_cast<std::size_t>(confidence - 1);
  if (df >= infinite_df) return std::rbegin(student_rows)->t[column];
  if (df >= last_finite_row.df) return last_finite_row.t[column];
  // The row above df; the first row is met by df = 1, so there is one below as well.
  const StudentRow* above = std::upper_bound(std::begin(student_rows), std::end(student_rows), df,
                                             [](double x, const StudentRow& row) { return x < row.df; });
  const StudentRow& below = above[-1];
  const double share = (df - below.df) / (above->df - below.df);
  return below.t[column] + share * (above->t[column] - below.t[column]);
}

}  // namespace orvane
