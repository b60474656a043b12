// Hostile settings: each line is the text of a VSET or a TSET. What is refused leaves the store as it was; a value that
// was taken is still read safely when the registers in its brackets have changed.
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "settings/setting_table.h"
#include "settings/settings.h"
#include "settings/vset.h"

using namespace orvane;

namespace {

void require(bool condition) {
  if (!condition) std::abort();
}

FscRecord record_of(std::uint16_t code, std::string_view text) {
  FscRecord record = fsc_record_new();
  record.set(field::code, code);
  static_cast<void>(record.set_text(field::text_14, text.substr(0, field::text_14.size - 1U)));
  return record;
}

using Stored = std::vector<std::pair<std::optional<std::string>, std::optional<std::string>>>;
Stored stored(const RunState& run) {
  Stored values;
  for (const VsetEntry& entry : run.vset) values.emplace_back(entry.vset_value, entry.tset_value);
  return values;
}

void add(RunState& run, const std::string& line, VsetKind kind) {
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) return;
  const std::string name = line.substr(0, equals), value = line.substr(equals + 1);
  const FscRecord record = record_of(kind == VsetKind::one_test ? fsc::tset : fsc::vset, line);
  const Stored before = stored(run);
  if (!vset_add(run, record, name, value)) {
    require(stored(run) == before);
    require(value.find('[') != std::string::npos || !vset_validate(name, value));
  } else if (value != "*") {
    require(vset_is_name(name));
    for (const VsetEntry& entry : run.vset) require(entry.vset_value || entry.tset_value);
  }
}

void check(const SettingRow& row, double value) {
  if (row.is_text()) return;
  require(std::isfinite(value));
  const bool code = row.takes == Takes::words || row.takes == Takes::integer;
  if (code) require(std::fabs(value) <= 32768 && value == std::trunc(value));
}

void read_all(RunState& run) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(Setting::count); ++i) {
    const auto setting = static_cast<Setting>(i);
    const SettingRow& row = setting_row(setting);
    if (const auto value = setting_set(run, setting)) check(row, *value);
    if (const auto value = setting_value(run, setting)) check(row, *value);
    if (row.is_text()) require(setting_text(run, setting).size() <= 0xFFFF);
    static_cast<void>(vset_get(run, row.name));
  }
  require(vset_math_epsilon(run) >= 0);
}

void registers(RunState& run, double number, const char* text) {
  run.registers.m.fill(number);
  run.registers.mem = number;
  run.registers.mem2 = text;
  run.registers.s.fill(text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  RunState& run = run_state();
  run = RunState();
  run.set(run_flag::run_active);
  const std::string text(reinterpret_cast<const char*>(data), size);
  registers(run, 4, "95.00%");
  VsetKind kind = VsetKind::permanent;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    add(run, text.substr(at, end - at), kind);
    kind = kind == VsetKind::permanent ? VsetKind::one_test : VsetKind::permanent;
    at = end + 1;
  }
  read_all(run);
  for (const double number : {-1e300, 40000.0, double{NAN}}) {
    registers(run, number, "[M1] is no number");
    read_all(run);
  }
  vset_test_done(run);
  for (const VsetEntry& entry : run.vset) require(!entry.tset_value && entry.vset_value);
  vset_del(run, "*", VsetKind::permanent);
  require(run.vset.empty());
  return 0;
}
