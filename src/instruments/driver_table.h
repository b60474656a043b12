// Drivers of instruments, by model. A driver is a row of functions and keeps no state but what its model needs; a
// function that a model does not need is left out of its row. The rooms that talk to instruments in general (service
// requests, reset of the bench, the identity check) come here with an instrument code.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "state/bus_state.h"
#include "state/statement.h"

namespace orvane {

/// Who an instrument says that it is. Fields it does not tell are empty.
struct DeviceIdentity {
  std::string maker, model, serial, firmware;
};

struct DriverRow {
  std::uint16_t code = 0;                     // instrument code
  std::uint16_t statement = 0;                // code of its test statement
  StatementHandler run = nullptr;             // executes that statement
  StatementHandler store_modifier = nullptr;  // executes its modifier statement, where it has one
  /// The limits of the model, before the run and again as the statement begins. False after a report.
  bool (*check)(RunState& run, const FscRecord& record) = nullptr;
  /// True if the reply is the model's. False after a report.
  bool (*identify)(RunState& run, const DevAddress& address, DeviceIdentity& identity) = nullptr;
  /// The state in which the operator finds it behind a run, for a model whose PTF key asks for one.
  bool (*leave)(RunState& run, const DevAddress& address) = nullptr;
  /// Outputs off, start state.
  bool (*reset)(RunState& run, const DevAddress& address) = nullptr;
  /// Reads out and reports why it asks for service; true if that has dealt with the request.
  bool (*serve)(RunState& run, const DevAddress& address, std::uint8_t status) = nullptr;
};

/// All drivers, in the order of their codes. Start-up hands them down; the tables are checked as they come: an
/// unknown code or statement, a code that stands twice, or a row without `run` or `reset` is message 30440 (model,
/// what is wrong) and false.
[[nodiscard]] bool drivers_install(std::span<const DriverRow> rows);
const DriverRow* driver_of(std::uint16_t code);  // null if the model has none
const DriverRow* driver_of_statement(std::uint16_t code);

/// The instrument code of a model's test or modifier statement; 0 if it is not one model's.
std::uint16_t instrument_code_of_statement(std::uint16_t statement);

// By instrument code. A model without the function: dev_identify and dev_leave have nothing to do and succeed,
// dev_reset is message 2951 with its name, dev_srq says that nobody has dealt with it.
[[nodiscard]] bool dev_identify(RunState& run, std::uint16_t code, const DevAddress& address,
                                DeviceIdentity& identity);
[[nodiscard]] bool dev_leave(RunState& run, std::uint16_t code, const DevAddress& address, bool force);
[[nodiscard]] bool dev_reset(RunState& run, std::uint16_t code, const DevAddress& address);
[[nodiscard]] bool dev_srq(RunState& run, std::uint16_t code, const DevAddress& address, std::uint8_t status);

/// Statements of the installed drivers. Those of models without one end with message 2951 and the model's name.
std::span<const HandlerRow> driver_handlers();

}  // namespace orvane
