#include "instruments/bus_statements.h"

#include "instruments/bus_elements_ieee.h"
#include "instruments/ieee2.h"
#include "instruments/port_statements.h"
#include "instruments/srq.h"
#include "instruments/visa.h"

namespace orvane {
namespace {

// A statement begins with the unit under test, where it is known, and with settings of its own.
void begin_on_bus(RunState& run) {
  if (run.ieee.saved.is_set()) {
    run.ieee.current = run.ieee.saved;
    ib_note_uut(run, {DeviceInterface::ieee488, run.ieee.saved, 0});
  }
  run.ieee.timeout = {};
  run.ieee.gap = 0;
}

bool run_on_bus(Statement& s, const BusLanguage& language) {
  if (s.record.has_flag(line_flag::first)) begin_on_bus(s.run);
  return speak(s.run, s.record, s.record.text(field::text), language);
}

bool run_ieee(Statement& s) { return run_on_bus(s, ieee_language()); }
bool run_ieee2(Statement& s) { return run_on_bus(s, ieee2_language()); }

bool run_port(Statement& s) {
  if (s.record.has_flag(line_flag::first)) s.run.port.current = 0;
  return speak(s.run, s.record, s.record.text(field::text), port_language());
}

constexpr HandlerRow rows[] = {{fsc::ieee, run_ieee},
                               {fsc::ieee2, run_ieee2},
                               {fsc::scpi, run_ieee2},
                               {fsc::port, run_port},
                               {fsc::visa, visa_statement}};

}  // namespace

std::span<const HandlerRow> bus_handlers() { return rows; }

void bus_statements_reset(RunState& run) {
  run.ieee = IeeeState();
  run.port = PortState();
  run.read_block.clear();
}

}  // namespace orvane
