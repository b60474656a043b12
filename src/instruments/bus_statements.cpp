#include "instruments/bus_statements.h"

#include <algorithm>
#include <cmath>

#include "config/startup_config.h"
#include "instruments/bus_address.h"
#include "instruments/ieee488.h"
#include "platform/platform.h"
#include "state/buttons.h"
#include "state/pump.h"
#include "state/report.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::uint32_t longest_delay = 3600000;  // milliseconds
constexpr std::size_t demo_reply_limit = 73;
constexpr std::size_t address_entry_limit = 7;

// --- Addresses -------------------------------------------------------------------------------------------------

bool board_exists(const RunState& run, const BusAddress& address) {
  return run.demo_mode || address.board < startup_config().ib_nport;
}

// Asks the operator for the address of the unit under test; it stands for the rest of the run.
bool ask_address(RunState& run) {
  for (;;) {
    AskWindow window;
    window.title = "Operator Prompt";
    window.lines = {msg(5009)};
    window.buttons = {standard_button(button_row::ok, answer::ok, true),
                      standard_button(button_row::cancel, answer::terminate)};
    window.length = address_entry_limit;
    std::string entry;
    const int code = platform().desk != nullptr ? platform().desk->ask(window, entry) : answer::failed;
    if (code == answer::failed) return run_error(run, 374);
    if (code != answer::ok) {
      run.set(run_flag::skip_test);
      return false;
    }
    BusAddress address;
    const int wrong = parse_bus_number(trim_blanks(entry), address);
    if (wrong == 0 && address.primary >= 1 && board_exists(run, address)) {
      run.ieee.current = run.ieee.saved = address;
      return true;
    }
    errp(wrong != 0 ? wrong : 1904, entry);
  }
}

// Makes sure that a device is addressed.
bool have_address(RunState& run) {
  if (run.ieee.current.is_set()) return true;
  if (run.demo_mode && startup_config().ieee_demo_prompt == 0) {
    run.ieee.current = BusAddress{BusAddress::board_valid | BusAddress::primary_valid, 1, 1, 0};
    return true;
  }
  return ask_address(run);
}

bool have_timeout(RunState& run) {
  auto& timeout = run.ieee.timeout[run.ieee.current.board];
  if (timeout) return true;
  timeout = ib_default_timeout;
  return ib_timeout(run, run.ieee.current.board, ib_default_timeout);
}

bool ready(RunState& run) { return have_address(run) && have_timeout(run); }

// --- Replies ---------------------------------------------------------------------------------------------------

// In demonstration mode the operator types what the device would have answered.
bool demo_reply(RunState& run, std::string& reply) {
  AskWindow window;
  window.title = "Operator Prompt";
  window.lines = {msg(5015, run.ieee.current.primary)};
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  window.length = demo_reply_limit;
  const int code = platform().desk != nullptr ? platform().desk->ask(window, reply) : answer::failed;
  if (code == answer::ok) return true;
  if (code == answer::failed) return run_error(run, 374);
  run.set(run_flag::skip_test);
  return false;
}

// Reads in pieces up to END or the terminator. One byte more than the limit is kept, to tell of a reply too long.
bool read_reply(RunState& run, std::string& reply) {
  reply.clear();
  if (!ready(run)) return false;
  if (run.demo_mode) return demo_reply(run, reply);
  BusAddress address = run.ieee.current;
  bool ended = false;
  while (!ended) {
    std::string piece;
    if (!ib_trd(run, address, piece, ib_read_limit, run.ieee.read_terminator, ended)) return false;
    if (piece.empty()) return run_error(run, 30412, address.primary);
    reply += piece.substr(0, ib_read_limit + 1 - std::min(reply.size(), ib_read_limit + 1));
    address.flags |= BusAddress::do_not_address;
    if (pump_messages()) {
      run.set(run_flag::skip_test);
      return false;
    }
  }
  return true;
}

bool act_input(RunState& run, const FscRecord& record, std::string_view argument) {
  if (!argument.empty()) return run_error(run, 30401, argument, "IEEE");
  static_cast<void>(record);
  std::string reply;
  if (!read_reply(run, reply)) return false;
  const double value = number_in_reply(reply);
  if (!std::isfinite(value)) return floating_point_stop(run);
  run.registers.mem = value;
  return true;
}

bool act_input_text(RunState& run, const FscRecord&, std::string_view argument) {
  if (!argument.empty()) return run_error(run, 30401, argument, "IEEE");
  std::string reply;
  run.registers.mem2.clear();
  if (!read_reply(run, reply)) return false;
  if (reply.size() > RegisterFile::mem2_limit) return run_error(run, 1902, RegisterFile::mem2_limit);
  run.registers.mem2 = reply.substr(0, reply.find_first_of("\r\n"));
  return true;
}

// --- Other elements --------------------------------------------------------------------------------------------

bool act_address(RunState& run, const FscRecord&, std::string_view argument) {
  DevAddress address;
  if (const int wrong = parse_address(argument, AddressKind::bus, address); wrong != 0)
    return run_error(run, wrong, argument);
  if (!board_exists(run, address.bus)) return run_error(run, 30413, argument, startup_config().ib_nport);
  run.ieee.current = address.bus;
  // A number is the unit under test and stands for the statements behind this one; an alias is a standard.
  const bool is_number = !argument.empty() && argument.front() >= '0' && argument.front() <= '9';
  if (is_number) run.ieee.saved = address.bus;
  return true;
}

bool act_delay(RunState& run, const FscRecord&, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, longest_delay);
  if (!milliseconds) return run_error(run, 30401, argument, "IEEE");
  if (pumping_wait(*milliseconds) == WaitEnd::stopped) {
    run.set(run_flag::skip_test);
    return false;
  }
  return true;
}

bool act_timeout(RunState& run, const FscRecord&, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, ib_longest_timeout);
  if (!milliseconds) return run_error(run, 30401, argument, "IEEE");
  if (!have_address(run)) return false;
  run.ieee.timeout[run.ieee.current.board] = *milliseconds;
  return ib_timeout(run, run.ieee.current.board, *milliseconds);
}

bool act_serial_poll(RunState& run, const FscRecord&, std::string_view argument) {
  const auto mask = argument.empty() ? std::optional<std::uint32_t>(255) : element_number(argument, 0, 255);
  if (!mask) return run_error(run, 30401, argument, "IEEE");
  if (!ready(run)) return false;
  std::uint8_t status = 255;
  if (!run.demo_mode && !ib_spoll(run, run.ieee.current, status)) return false;
  run.registers.mem = static_cast<double>(status & *mask);
  return true;
}

constexpr ElementAction ieee_actions[] = {
    {"@", "eval_address", act_address},   {"I", "eval_input", act_input},
    {"I$", "eval_input", act_input_text}, {"D", "eval_delay", act_delay},
    {"T", "eval_timeout", act_timeout},   {"SPL", "eval_spoll", act_serial_poll},
};

// --- The statement ---------------------------------------------------------------------------------------------

// An operator who gave up has been asked: the statement then ends without a fault of its own.
bool ended(const RunState& run) { return run.has(run_flag::skip_test); }

bool run_ieee(Statement& s) {
  RunState& run = s.run;
  if (s.record.has_flag(line_flag::first)) {
    if (run.ieee.saved.is_set()) run.ieee.current = run.ieee.saved;
    run.ieee.timeout = {};
  }
  TextCursor cursor{s.record.text(field::text), 0};
  while (!cursor.done()) {
    if (run.has(run_flag::stop_test) || abort_requested()) return false;
    std::string text;
    if (!expand(run, s.record, cursor, ieee_actions, text)) return ended(run);
    if (ended(run)) return true;
    if (text.empty()) continue;
    if (!ready(run)) return ended(run);
    if (!ib_wrt_eoi(run, run.ieee.current, text, true)) return false;
  }
  return true;
}

// This system has no VISA library to hand the statement to.
bool run_visa(Statement& s) { return run_error(s.run, 313); }

constexpr HandlerRow rows[] = {{fsc::ieee, run_ieee}, {fsc::visa, run_visa}};

}  // namespace

double number_in_reply(std::string_view reply) {
  reply.remove_prefix(std::min(reply.find_first_of("0123456789+-."), reply.size()));
  bool negative = false;
  if (reply.starts_with('+') || reply.starts_with('-')) {
    negative = reply.front() == '-';
    reply.remove_prefix(1);
    reply.remove_prefix(std::min(reply.find_first_not_of(' '), reply.size()));
  }
  double value = 0;
  if (!reply.empty() && (reply.front() == '+' || reply.front() == '-')) return 0;
  scan_number(reply, value);
  return negative ? -value : value;
}

std::span<const HandlerRow> bus_handlers() { return rows; }

}  // namespace orvane
