#include "procedure/pipeline/scan_statements.h"

#include <algorithm>
#include <array>

#include "config/startup_config.h"
#include "instruments/accuracy_choice.h"
#include "instruments/bus_address.h"
#include "instruments/driver_table.h"
#include "instruments/reset_list.h"
#include "instruments/standards.h"
#include "platform/files.h"
#include "procedure/file/ascii.h"
#include "procedure/operator/pictures.h"
#include "procedure/pipeline/check_block.h"
#include "procedure/pipeline/scan.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

void add_once(std::vector<std::string>& list, std::string_view text) {
  if (std::find(list.begin(), list.end(), text) == list.end()) list.emplace_back(text);
}

// --- Addresses -------------------------------------------------------------------------------------------------

// One row a statement of the bus language: what its address elements may name, and which bus it drives without one.
struct BusRow {
  std::uint16_t code;
  AddressKind kind;
};
constexpr BusRow bus_rows[] = {{fsc::ieee, AddressKind::bus},
                               {fsc::ieee2, AddressKind::bus},
                               {fsc::scpi, AddressKind::bus},
                               {fsc::port, AddressKind::port},
                               {fsc::reset, AddressKind::either}};

void note_address(PreRun& pre_run, const DevAddress& address) {
  if (address.interface == DeviceInterface::ieee488) {
    pre_run.ieee = true;
    pre_run.addresses.push_back(address.bus);
  } else if (address.interface == DeviceInterface::serial) {
    pre_run.serial = true;
    pre_run.ports.set(address.port);
  }
}

bool scan_addresses(RunState& run, const FscRecord& record, AddressKind kind) {
  PreRun& pre_run = run.pipeline.pre_run;
  if (kind == AddressKind::bus) pre_run.ieee = true;
  if (kind == AddressKind::port) pre_run.serial = true;
  return for_each_address(record.text(field::text), [&](std::string_view argument) {
    DevAddress address;
    const int wrong = parse_address(argument, kind, address);
    if (wrong == 0) {
      note_address(pre_run, address);
      return true;
    }
    return is_demo_alias(run, wrong) || run_error(run, wrong, argument);
  });
}

// --- Files and standards ---------------------------------------------------------------------------------------

bool scan_picture(RunState& run, const ProcNode& node) {
  const std::string path = picture_of(*node.record);
  return path.empty() || is_ordinary_file(path) || run_error(run, 1805, path);
}

bool scan_standard(RunState& run, const ProcNode& node) {
  const std::string_view name = trim_blanks(node.record->text(field::text));
  const StandardState state = standard_state(name);
  if (state == StandardState::unknown) return run_error(run, 30001, name);
  if (state == StandardState::overdue) {
    run.pipeline.standard_overdue = true;
    if (startup_config().in_cal_req != 0) return run_error(run, 30609, name);
  }
  add_once(run.pipeline.pre_run.standards, name);
  return true;
}

bool scan_accuracy_file(RunState& run, const ProcNode& node) {
  const std::string_view statement = fsc_name(node.record->get(field::accf_ordinal));
  if (!accf_note(run, fsc_code(statement))) return false;
  const std::string_view name = trim_blanks(node.record->text(field::accf_name));
  if (name.empty()) return true;  // "*": the usual choice again
  std::string path;
  if (!acc_path_from_accf(run, name, path)) return false;
  return is_ordinary_file(path) || run_error(run, 121, path);
}

// --- Instruments -----------------------------------------------------------------------------------------------

// Statements that the configuration must allow.
bool is_available(std::uint16_t code) {
  switch (code) {
    case fsc::n5530:
    case fsc::n5531: return startup_config().AgilentN5530S != 0;
    default: return true;
  }
}

// Blocks are looked at once, from their first record.
bool begins_block(const ProcNode& node) {
  const ProcNode* above = node.prev;
  while (above != nullptr && (above->record == nullptr || !above->record->has_class(code_class::executable)))
    above = above->prev;
  return above == nullptr || above->record->code() != node.record->code();
}

// The instrument is the first word of the statement's text.
bool scan_parameters(RunState& run, const ProcNode& node) {
  if (!begins_block(node)) return true;
  std::vector<CheckStatement> statements;
  if (!check_ScanBlock(node, statements)) return false;
  std::vector<std::string>& kinds = run.pipeline.pre_run.parameter_kinds;
  for (const CheckStatement& statement : statements) {
    const std::string_view text = trim_blanks(statement.text);
    std::string kind(fsc_name(fsc_ordinal(node.record->code())));
    kind += ' ';
    for (const char c : text.substr(0, text.find_first_of(" \t,;="))) kind += ascii_upper(c);
    add_once(kinds, kind);
    if (kinds.size() > parameter_kind_limit) return run_error(run, 2579, parameter_kind_limit);
  }
  return true;
}

// The ordinal of the test statement of each modifier statement, by the modifier's ordinal; 0 for other statements.
const std::array<std::uint8_t, 256>& models_of_modifiers() {
  static const std::array<std::uint8_t, 256> models = [] {
    std::array<std::uint8_t, 256> table{};
    for (const FscRow& row : fsc_rows()) {
      if (row.modifier != 0)
        table[static_cast<std::size_t>(fsc_ordinal(row.modifier))] =
            static_cast<std::uint8_t>(fsc_ordinal(row.code));
    }
    return table;
  }();
  return models;
}

// The limits of the instrument's model; reports name the source line. A warning does not keep a run from beginning: the
// statement itself is then refused where it stands.
bool check_limits(RunState& run, const FscRecord& record) {
  const DriverRow* driver = driver_of_statement(record.code());
  if (driver == nullptr || driver->check == nullptr) return true;
  run.set(run_flag::check_lines);
  const bool fits = driver->check(run, record);
  run.clear(run_flag::check_lines);
  return fits || !run.has(run_flag::stop_test);
}

bool scan_instrument(RunState& run, const ProcNode& node) {
  const std::uint16_t code = node.record->code();
  const auto ordinal = static_cast<std::size_t>(fsc_ordinal(code));
  if (fsc_row(code) == nullptr) return true;  // the dispatcher names it
  if (!is_available(code)) return run_error(run, 2527, fsc_name(static_cast<int>(ordinal)));
  if (fsc_is_named_parameter(code)) {
    run.pipeline.pre_run.instruments.set(ordinal);
    return scan_parameters(run, node);
  }
  if ((code & code_class::instrument) != 0) {
    run.pipeline.pre_run.instruments.set(ordinal);
    return check_limits(run, *node.record);
  }
  if (const std::uint8_t model = models_of_modifiers()[ordinal]; model != 0) {
    run.pipeline.pre_run.instruments.set(model);
  }
  return true;
}

struct ScanRow {
  std::uint16_t code;
  bool (*scan)(RunState& run, const ProcNode& node);
};
constexpr ScanRow scan_rows[] = {{fsc::pic, scan_picture},
                                 {fsc::pice, scan_picture},
                                 {fsc::std, scan_standard},
                                 {fsc::accf, scan_accuracy_file}};

}  // namespace

bool scan_statement(RunState& run, const ProcNode& node) {
  const std::uint16_t code = node.record->code();
  for (const ScanRow& row : scan_rows) {
    if (row.code == code) return row.scan(run, node);
  }
  for (const BusRow& row : bus_rows) {
    if (row.code == code)
      return scan_addresses(run, *node.record, row.kind) &&
             (code != fsc::reset || reset_check(run, *node.record));
  }
  return scan_instrument(run, node);
}

}  // namespace orvane
