#include "state/reserved_variables.h"

#include <algorithm>
#include <string>

namespace orvane {
namespace {

constexpr std::uint8_t report = reserved_flag::by_report;
// What an operator enters describes one job: it stands in no file from which a later job could take it by mistake.
constexpr std::uint8_t entered = reserved_flag::none;
constexpr std::uint8_t kept = reserved_flag::by_report | reserved_flag::kept_in_file;

constexpr ReservedVariable rows[] = {
    {"A$", report},
    {"A$", report},  // of the accuracy and of its printed form
    {"ACT$", report},
    {"ACT_HR$", report},
    {"ACT_MIN$", report},
    {"C$", report},
    {"CO$", report},
    {"DATE$", report},
    {"DE$", report},
    {"DMY$", report},
    {"ELAPSED_TIME$", report},
    {"ELAPSED_TIME_HR$", report},
    {"ELAPSED_TIME_MIN$", report},
    {"ER$", report},
    {"ERPCT$", report},
    {"ERPPM$", report},
    {"ET$", report},
    {"FLL$", report},
    {"FN$", report},
    {"FRE$", report},
    {"FUL$", report},
    {"FVA$", report},
    {"LL$", report},
    {"M$", report},
    {"MARGINAL$", report},
    {"MDY$", report},
    {"MO$", report},
    {"MU_COV$", report},
    {"MU_EXP$", report},
    {"MU_STD$", report},
    {"NOTIFY_USER$", kept},
    {"NOX$", report},
    {"NUM_ADJ$", report},
    {"NUM_FAILED$", report},
    {"OPERATOR_NAME$", entered},
    {"OVERALL_RESULT$", report},
    {"P$", report},
    {"PROC_NAME$", report},
    {"PROC_REV$", report},
    {"RESULTS_FILE_NAME$", report},
    {"RM$", report},
    {"RPT_CODE$", report},
    {"RPT_TYPE$", report},
    {"SA$", report},
    {"SER_NUM$", entered},
    {"SH_A$", report},
    {"SH_R$", report},
    {"ST$", report},
    {"TEST_STATUS$", report},
    {"TIME$", report},
    {"TN$", report},
    {"TOL_C$", report},
    {"TR$", report},
    {"TT$", report},
    {"TU$", report},
    {"T_CAL_DATE$", report},
    {"T_CAL_DUE_DATE$", report},
    {"T_CAL_INTERVAL$", report},
    {"T_DESCRIPTION$", report},
    {"T_INSTRUMENT_NAME$", report},
    {"T_MANUFACTURER$", report},
    {"T_MODEL$", report},
    {"T_PROPERTY_NUMBER$", report},
    {"T_REPORT_NUMBER$", report},
    {"T_SERIAL_NUMBER$", report},
    {"UI$", report},
    {"UL$", report},
    {"UR$", report},
    {"UUT_CODE$", entered},
};

constexpr bool before(const ReservedVariable& a, const ReservedVariable& b) { return a.name < b.name; }
static_assert(std::is_sorted(std::begin(rows), std::end(rows), before));
static_assert(std::size(rows) == 69);

constexpr std::size_t shortest = 2, longest = 19;  // of a reserved name, its "$" included

const ReservedVariable* find(std::string_view name) {
  const auto at = std::lower_bound(std::begin(rows), std::end(rows), ReservedVariable{name, 0}, before);
  return at != std::end(rows) && at->name == name ? at : nullptr;
}

}  // namespace

std::span<const ReservedVariable> reserved_variables() { return rows; }

const ReservedVariable* reserved_variable(std::string_view name) {
  if (name.size() < shortest || name.size() > longest) return nullptr;
  if (const ReservedVariable* row = find(name)) return row;
  if (!name.ends_with("1$") && !name.ends_with("2$")) return nullptr;
  return find(std::string(name.substr(0, name.size() - 2)) + '$');
}

}  // namespace orvane
