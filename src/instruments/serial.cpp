#include "instruments/serial.h"

#include "instruments/device_list.h"
#include "instruments/pass_through.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint16_t accessory_host = 113;  // the pressure calibrator

enum class Kind { none, plain, pass_through, accessory };
Kind kind_of(int port) {
  if (port >= 1 && port <= DevAddress::last_plain_port) return Kind::plain;
  if (port >= DevAddress::first_pass_through && port <= DevAddress::last_pass_through)
    return Kind::pass_through;
  return port == DevAddress::lemo_port ? Kind::accessory : Kind::none;
}

bool no_such_port(int port, const char* function) { return errp(478, function, port); }

// Modules on the accessory port are reached through the calibrator's own statements.
bool carries_modules_alone(int port) { return errp(360, serial_name(port)); }

// Counts of a failure that has been reported.
int failed(bool reported) { return reported ? 0 : comm_failed; }

bool open_accessory_port(RunState& run) {
  DevAddress host;
  run.serial.accessory_port_open = run.demo_mode || dev_locate(run, accessory_host, host);
  return run.serial.accessory_port_open;
}

bool open_plain(RunState& run, int port) {
  SerialSettings settings;
  return (run.demo_mode || comm_defaults(port, settings)) && comm_open(run, port, settings);
}

// The settings that a plain port and a pass-through port both have; null for the accessory port and after a report.
template <class Change>
bool set(RunState& run, int port, const char* function, const Change& change) {
  switch (kind_of(port)) {
    case Kind::plain: change(run.serial.ports[static_cast<std::size_t>(port - 1)]); return true;
    case Kind::pass_through:
      change(run.serial.calibrator_ports[static_cast<std::size_t>(port - DevAddress::first_pass_through)]);
      return true;
    case Kind::accessory: return true;
    case Kind::none: break;
  }
  return no_such_port(port, function);
}

}  // namespace

std::string serial_name(int port) {
  return kind_of(port) == Kind::none ? "<undefined>" : port_name(static_cast<std::uint16_t>(port));
}

bool serial_on(RunState& run, int port) {
  switch (kind_of(port)) {
    case Kind::plain: return open_plain(run, port);
    case Kind::pass_through: return pass_open(run, port);
    case Kind::accessory: return open_accessory_port(run);
    case Kind::none: break;
  }
  return no_such_port(port, "serial_on");
}

bool serial_on_2(RunState& run, int port) {
  switch (kind_of(port)) {
    case Kind::plain: return comm_reopen(run, port);
    case Kind::pass_through: return pass_reopen(run, port);
    case Kind::accessory: return open_accessory_port(run);
    case Kind::none: break;
  }
  return no_such_port(port, "serial_on_2");
}

bool serial_conf(RunState& run, int port, const SerialParameters& parameters) {
  switch (kind_of(port)) {
    case Kind::plain: return comm_configure(run, port, parameters);
    case Kind::pass_through: return pass_configure(run, port, parameters);
    case Kind::accessory: return true;
    case Kind::none: break;
  }
  return no_such_port(port, "serial_conf");
}

bool serial_off(RunState& run, int port) {
  switch (kind_of(port)) {
    case Kind::plain: comm_close(run, port); return true;
    case Kind::pass_through: pass_close(run, port); return true;
    case Kind::accessory: run.serial.accessory_port_open = false; return true;
    case Kind::none: break;
  }
  return no_such_port(port, "serial_off");
}

bool serial_is_open(const RunState& run, int port) {
  switch (kind_of(port)) {
    case Kind::plain: return run.serial.ports[static_cast<std::size_t>(port - 1)].is_open(run.demo_mode);
    case Kind::pass_through:
      return run.serial.calibrator_ports[static_cast<std::size_t>(port - DevAddress::first_pass_through)]
          .open;
    case Kind::accessory: return run.serial.accessory_port_open;
    case Kind::none: break;
  }
  return no_such_port(port, "serial_is_open");
}

int serial_rd(RunState& run, int port, std::string& text, std::size_t limit, bool block_mode,
              bool& terminated) {
  terminated = false;
  switch (kind_of(port)) {
    case Kind::plain: return comm_rd(run, port, text, limit, block_mode, terminated);
    case Kind::pass_through: return pass_rd(run, port, text, limit, block_mode, terminated);
    case Kind::accessory: return failed(carries_modules_alone(port));
    case Kind::none: break;
  }
  return failed(no_such_port(port, "serial_rd"));
}

int serial_wrt(RunState& run, int port, std::string_view bytes, bool escape) {
  switch (kind_of(port)) {
    case Kind::plain: return comm_wrt(run, port, bytes);
    case Kind::pass_through: return pass_wrt(run, port, bytes, escape);
    case Kind::accessory: return failed(carries_modules_alone(port));
    case Kind::none: break;
  }
  return failed(no_such_port(port, "serial_wrt"));
}

bool serial_clr_q(RunState& run, int port) {
  switch (kind_of(port)) {
    case Kind::plain: return comm_clear(run, port);
    case Kind::pass_through: return pass_clear(run, port);
    case Kind::accessory: return carries_modules_alone(port);
    case Kind::none: break;
  }
  return no_such_port(port, "serial_clr_q");
}

bool serial_clear_after_read(RunState& run, int port, bool on) {
  return set(run, port, "serial_clear_after_read", [&](auto& state) { state.clear_after_read = on; });
}

bool serial_terminators(RunState& run, int port, std::uint16_t input, std::uint16_t output) {
  return set(run, port, "serial_terminators", [&](auto& state) {
    state.input_terminator = input;
    state.output_terminator = output;
  });
}

bool serial_time(RunState& run, int port, std::uint32_t milliseconds) {
  if (kind_of(port) == Kind::plain) {
    comm_time(run, port, milliseconds);
    return true;
  }
  return set(run, port, "serial_time", [&](auto& state) { state.timeout = milliseconds; });
}

void serial_close_all(RunState& run) {
  for (int port = 1; port <= DevAddress::lemo_port; ++port) {
    if (serial_is_open(run, port)) static_cast<void>(serial_off(run, port));
  }
}

}  // namespace orvane
