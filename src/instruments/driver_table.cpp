#include "instruments/driver_table.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

#include "config/startup_config.h"
#include "instruments/instrument_names.h"
#include "settings/settings.h"
#include "state/fsc.h"
#include "state/report.h"

namespace orvane {
namespace {

// --- Models and their statements -----------------------------------------------------------------------------------

struct ModelRow {
  std::uint16_t statement;  // of the test
  std::uint16_t code;
};
// clang-format off
constexpr ModelRow models[] = {
    {fsc::i3458, 1}, {fsc::i5011, 2}, {fsc::mfc3, 10}, {fsc::i5030, 16}, {fsc::i5001, 22}, {fsc::mfc1, 24},
    {fsc::hp60, 27}, {fsc::hp63, 28}, {fsc::mfc4, 33}, {fsc::i3325, 34}, {fsc::i2000, 35}, {fsc::i2001, 36},
    {fsc::i2002, 37}, {fsc::i34401, 38}, {fsc::i34420, 39}, {fsc::i5050, 40}, {fsc::mfc2, 41}, {fsc::osc1, 42},
    {fsc::i8901, 73}, {fsc::i8902, 74}, {fsc::i8903, 75}, {fsc::i8648, 76}, {fsc::i2024, 77}, {fsc::i437, 78},
    {fsc::smy02, 79}, {fsc::i5335, 82}, {fsc::i8560, 83}, {fsc::i8566, 84}, {fsc::i8568, 85}, {fsc::i8590, 86},
    {fsc::osc2, 87}, {fsc::i33120, 91}, {fsc::i33250, 127}, {fsc::i4418, 129}, {fsc::i4419, 130},
    {fsc::i6000, 165}, {fsc::i53131, 169}, {fsc::i53132, 170}, {fsc::i53181, 171}, {fsc::i33220, 172},
    {fsc::i6520, 173}, {fsc::i5350, 178}, {fsc::i5351, 179}, {fsc::i5352, 180}, {fsc::psa, 190}};
// Modifier statements of families, which no one model's test statement names.
constexpr std::uint16_t family_modifiers[] = {fsc::mcal, fsc::mmfc, fsc::acms};
// clang-format on

// --- Installed drivers ---------------------------------------------------------------------------------------------

struct Drivers {
  std::span<const DriverRow> rows;
  std::array<const DriverRow*, highest_instrument_code + 1> by_code{};
  std::vector<HandlerRow> handlers;
};

Drivers& drivers() {
  static Drivers installed;
  return installed;
}

std::string model_name(std::uint16_t code) {
  const std::string_view name = instrument_name(code);
  return name.empty() ? std::to_string(code) : std::string(name);
}

// A statement of a model without a driver, or of a family: the model's name, else the statement's own.
bool run_without_driver(Statement& s) {
  const std::uint16_t code = instrument_code_of_statement(s.record.code());
  return run_error(s.run, 2951,
                   code != 0 ? model_name(code) : std::string(fsc_name(fsc_ordinal(s.record.code()))));
}

bool is_instrument_statement(const FscRow& row) {
  return (row.code & code_class::instrument) != 0 || fsc_is_named_parameter(row.code);
}

std::vector<HandlerRow> make_handlers() {
  std::vector<HandlerRow> handlers;
  for (const FscRow& row : fsc_rows()) {
    if (!is_instrument_statement(row)) continue;
    const DriverRow* driver = driver_of_statement(row.code);
    handlers.push_back({row.code, driver != nullptr ? driver->run : run_without_driver});
    if (row.modifier == 0) continue;
    const bool stores = driver != nullptr && driver->store_modifier != nullptr;
    handlers.push_back({row.modifier, stores ? driver->store_modifier : run_without_driver});
  }
  for (const std::uint16_t code : family_modifiers) {
    const bool known = std::any_of(handlers.begin(), handlers.end(),
                                   [&](const HandlerRow& row) { return row.code == code; });
    if (!known) handlers.push_back({code, run_without_driver});
  }
  return handlers;
}

const char* fault_of(const DriverRow& row, const Drivers& installed) {
  if (row.code == 0 || row.code > highest_instrument_code || instrument_name(row.code).empty())
    return "no such instrument code";
  if (row.statement == 0 || instrument_code_of_statement(row.statement) != row.code)
    return "statement of another model";
  if (installed.by_code[row.code] != nullptr) return "stands twice";
  if (row.run == nullptr) return "does not run its statement";
  if (row.reset == nullptr) return "has no reset";
  if (row.store_modifier != nullptr && fsc_modifier_code(row.statement) == 0)
    return "has no modifier statement";
  return nullptr;
}

// --- Leaving -------------------------------------------------------------------------------------------------------

struct LeaveSwitch {
  std::uint16_t code;
  Setting setting;
};
constexpr LeaveSwitch leave_switches[] = {{1, Setting::PTF_HP3458A},   {35, Setting::PTF_K2000},
                                          {36, Setting::PTF_K2001},    {37, Setting::PTF_K2002},
                                          {38, Setting::PTF_HP34401A}, {39, Setting::PTF_HP34420A}};

// A model without a switch of its own is always left in order.
bool leave_is_wanted(RunState& run, const DriverRow& row) {
  for (const LeaveSwitch& one : leave_switches) {
    if (one.code == row.code) return setting_code(run, one.setting) != 0;
  }
  return true;
}

}  // namespace

bool drivers_install(std::span<const DriverRow> rows) {
  Drivers& installed = drivers();
  installed = Drivers();
  installed.rows = rows;
  bool sound = true;
  for (const DriverRow& row : rows) {
    if (const char* fault = fault_of(row, installed)) {
      sound = errp(30440, model_name(row.code), fault);
      continue;
    }
    installed.by_code[row.code] = &row;
  }
  installed.handlers = make_handlers();
  return sound;
}

const DriverRow* driver_of(std::uint16_t code) {
  return code <= highest_instrument_code ? drivers().by_code[code] : nullptr;
}

const DriverRow* driver_of_statement(std::uint16_t statement) {
  const DriverRow* row = driver_of(instrument_code_of_statement(statement));
  return row != nullptr && row->statement == statement ? row : nullptr;
}

std::uint16_t instrument_code_of_statement(std::uint16_t statement) {
  if (statement == 0) return 0;
  for (const ModelRow& row : models) {
    if (row.statement == statement || fsc_modifier_code(row.statement) == statement) return row.code;
  }
  return 0;
}

bool dev_identify(RunState& run, std::uint16_t code, const DevAddress& address, DeviceIdentity& identity) {
  const DriverRow* row = driver_of(code);
  return row == nullptr || row->identify == nullptr || row->identify(run, address, identity);
}

bool dev_leave(RunState& run, std::uint16_t code, const DevAddress& address, bool force) {
  const DriverRow* row = driver_of(code);
  if (row == nullptr || row->leave == nullptr || (!force && !leave_is_wanted(run, *row))) return true;
  return row->leave(run, address);
}

bool dev_reset(RunState& run, std::uint16_t code, const DevAddress& address) {
  const DriverRow* row = driver_of(code);
  return row != nullptr ? row->reset(run, address) : run_error(run, 2951, model_name(code));
}

bool dev_srq(RunState& run, std::uint16_t code, const DevAddress& address, std::uint8_t status) {
  const DriverRow* row = driver_of(code);
  return row != nullptr && row->serve != nullptr && row->serve(run, address, status);
}

std::span<const HandlerRow> driver_handlers() { return drivers().handlers; }

}  // namespace orvane
