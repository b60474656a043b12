#include "instruments/reset_list.h"

#include <algorithm>

#include "instruments/bus_address.h"
#include "instruments/bus_elements_ieee.h"
#include "instruments/port_statements.h"
#include "state/debug.h"
#include "state/fsc.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// --- Which elements may stand in the commands of which interface -----------------------------------------------

// An element by its word, and its bit. A letter for several words is one element with several uses.
struct ElementBit {
  std::string_view word;
  int bit;
};
constexpr ElementBit element_bits[] = {
    {"D", 1},    {"DRAW", 2},   {"I", 3},     {"I$", 3},      {"MEM", 4},   {"", 5},     {"X", 5},
    {"P", 6},    {"T", 7},      {"SRQ", 8},   {"SPL", 9},     {"N", 10},    {"SDC", 11}, {"REN", 12},
    {"GTL", 13}, {"LLO", 14},   {"TRIG", 15}, {"EOI", 16},    {"TERM", 17}, {"IFC", 18}, {"S", 19},
    {"V", 20},   {"O", 21},     {"CLR", 22},  {"REOPEN", 24}, {"M", 25},    {"L", 25},   {"SREG", 27},
    {"I!", 28},  {"OTERM", 29}, {"NO", 30},   {"IB", 31}};

constexpr std::uint32_t one(int bit) { return std::uint32_t{1} << bit; }

// Values of the run may stand in a statement; what is kept of it has them filled in.
constexpr std::uint32_t values = one(4) | one(20) | one(25) | one(27);
constexpr std::uint32_t ieee_kept = 0x302FFBA2, serial_kept = 0x316200E2;
constexpr std::uint32_t ieee_written = 0x3A3FFBB2, serial_written = 0x3B7200F2;
constexpr std::uint32_t any_interface = 0x3B7FFBF2;
static_assert((ieee_kept & values) == 0 && (ieee_written & values) == values);
static_assert((serial_kept & values) == 0 && (serial_written & values) == values);

struct MaskRow {
  DeviceInterface interface;
  std::string_view name;
  std::uint32_t written, kept;
};
constexpr MaskRow mask_rows[] = {
    {DeviceInterface::ieee488, "IEEE-488", ieee_written, ieee_kept},
    {DeviceInterface::serial, "serial", serial_written, serial_kept},
    {DeviceInterface::none, "(interface unknown)", any_interface, any_interface}};

const MaskRow& masks_of(DeviceInterface interface) {
  for (const MaskRow& row : mask_rows) {
    if (row.interface == interface) return row;
  }
  return std::end(mask_rows)[-1];
}

bool is_allowed(std::string_view content, std::uint32_t mask) {
  const std::string word = element_parts(content).word;
  return std::any_of(std::begin(element_bits), std::end(element_bits),
                     [&](const ElementBit& row) { return row.word == word && (mask & one(row.bit)) != 0; });
}

// The first element that may not stand there; nothing if all may.
std::optional<std::string> refused_element(std::string_view text, std::uint32_t mask) {
  std::optional<std::string> refused;
  for_each_element(text, [&](std::string_view content) {
    if (!is_allowed(content, mask)) refused = std::string(content);
    return !refused;
  });
  return refused;
}

// --- Addresses -------------------------------------------------------------------------------------------------

// A statement taken apart: the argument of its address element, where it begins with one, and its commands.
struct ResetText {
  std::optional<std::string_view> address;
  std::string_view commands;
};

ResetText take_apart(std::string_view text) {
  ResetText parts{std::nullopt, text};
  const std::string_view trimmed = trim_blanks(text);
  if (!trimmed.starts_with('[')) return parts;
  const std::size_t end = element_end(trimmed, 0);
  if (end == std::string_view::npos) return parts;
  const ElementParts element = element_parts(trimmed.substr(1, end - 1));
  if (element.word != "@") return parts;
  parts.address = element.argument;
  parts.commands = trimmed.substr(end + 1);
  return parts;
}

bool is_same(const DevAddress& a, const DevAddress& b) {
  if (a.interface != b.interface) return false;
  switch (a.interface) {
    case DeviceInterface::none: return true;
    case DeviceInterface::ieee488:
      return a.bus.board == b.bus.board && a.bus.primary == b.bus.primary && a.bus.flags == b.bus.flags &&
             ((a.bus.flags & BusAddress::secondary_valid) == 0 || a.bus.secondary == b.bus.secondary);
    case DeviceInterface::serial: return a.port == b.port;
    case DeviceInterface::visa: break;
  }
  return false;
}

// --- RESET -----------------------------------------------------------------------------------------------------

ResetNode& node_for(RunState& run, const DevAddress& address) {
  auto& list = run.reset_list;
  const auto found = std::find_if(list.begin(), list.end(),
                                  [&](const ResetNode& node) { return is_same(node.address, address); });
  if (found != list.end()) return *found;
  list.emplace_back();
  list.back().address = address;
  return list.back();
}

bool run_reset_statement(Statement& s) {
  const ResetText parts = take_apart(s.record.text(field::text));
  DevAddress address;
  if (parts.address) {
    const int wrong = parse_address(*parts.address, AddressKind::either, address);
    if (wrong != 0) return is_demo_alias(s.run, wrong) || run_error(s.run, wrong, *parts.address);
  }
  std::string commands;
  if (!insert_values(s.run, s.record, parts.commands, commands)) return false;
  const MaskRow& masks = masks_of(address.interface);
  if (const auto refused = refused_element(commands, masks.kept))
    return run_error(s.run, 2684, *refused, masks.name);
  ResetNode& node = node_for(s.run, address);
  node.record = s.record;
  node.text = std::move(commands);
  node.name = parts.address ? std::string(*parts.address) : std::string();
  node.is_uut = !parts.address;
  return true;
}

constexpr HandlerRow rows[] = {{fsc::reset, run_reset_statement}};

// --- The list runs ---------------------------------------------------------------------------------------------

bool is_traced() { return (debug_flags() & debug_bit::reset) != 0; }

constexpr const char* list_function = "reset_exec";

void trace_node(const ResetNode& node) {
  const std::string_view name = fsc_name(fsc_ordinal(node.record.code()));
  const std::string_view text = node.text.empty() ? std::string_view("<EMPTY>") : std::string_view(node.text);
  const BusAddress& bus = node.address.bus;
  debug_log("%s : FSC \"%s\" : device \"%s\"", list_function, name, node.name);
  switch (node.address.interface) {
    case DeviceInterface::none:
      return debug_log("%s : UUT                       : cmd = \"%s\"", list_function, text);
    case DeviceInterface::ieee488:
      if ((bus.flags & BusAddress::secondary_valid) != 0)
        return debug_log("%s : IEEE-488 %d:%d:%d : cmd = \"%s\"", list_function, bus.board, bus.primary,
                         bus.secondary, text);
      return debug_log("%s : IEEE-488 %d:%d    : cmd = \"%s\"", list_function, bus.board, bus.primary, text);
    case DeviceInterface::serial:
      return debug_log("%s : SERIAL %d                 : cmd = \"%s\"", list_function, node.address.port,
                       text);
    case DeviceInterface::visa: break;
  }
  debug_log("%s : internal error - unknown \"dev_interface\" value", list_function);
}

// Where the unit under test is, as the statements have addressed it; no interface if none of them has.
DevAddress uut_address(const RunState& run) {
  if (run.port.fallback != 0) return {DeviceInterface::serial, {}, run.port.fallback};
  if (run.ieee.saved.is_set()) return {DeviceInterface::ieee488, run.ieee.saved, 0};
  return {};
}

bool reset_exec_ieee(RunState& run, const ResetNode& node, const BusAddress& address) {
  if (node.record.code() != fsc::reset) return run_error(run, 2687, "reset_exec_ieee");
  const PushedBusState pushed(run);
  run.ieee.current = address;
  return speak(run, node.record, node.text, ieee_language());
}

bool reset_exec_serial(RunState& run, const ResetNode& node, std::uint16_t port) {
  if (node.record.code() != fsc::reset) return run_error(run, 2687, "reset_exec_serial");
  const PushedBusState pushed(run);
  run.port.current = port;
  return speak(run, node.record, node.text, port_language());
}

bool exec_node(RunState& run, const ResetNode& node) {
  const DevAddress address =
      node.address.interface == DeviceInterface::none ? uut_address(run) : node.address;
  switch (address.interface) {
    case DeviceInterface::ieee488: return reset_exec_ieee(run, node, address.bus);
    case DeviceInterface::serial: return reset_exec_serial(run, node, address.port);
    default: return true;
  }
}

bool is_chosen(const ResetNode& node, std::uint16_t choice) {
  if (node.text.empty()) return false;
  if ((choice & reset_choice::only_uut) != 0) return node.is_uut;
  return (choice & reset_choice::skip_uut) == 0 || !node.is_uut;
}

}  // namespace

bool reset_exec(RunState& run, std::uint16_t choice) {
  constexpr std::uint16_t stops = run_flag::stop_test | run_flag::skip_test;
  if (is_traced()) {
    debug_log("%s : RESET command list contains %d items", list_function, run.reset_list.size());
    for (const ResetNode& node : run.reset_list) trace_node(node);
  }
  const auto stopped = static_cast<std::uint16_t>(run.flags & stops);
  bool aborted = abort_requested(), done = true;
  for (const ResetNode& node : run.reset_list) {
    if (!is_chosen(node, choice)) continue;
    // Neither what has stopped the run nor a device that fails keeps the others from their safe state.
    run.clear(stops);
    clear_abort();
    done = exec_node(run, node) && done;
    aborted = aborted || abort_requested();
  }
  run.clear(stops);
  run.set(stopped);
  if (aborted) raise_abort();
  return done;
}

void reset_clear(RunState& run) { run.reset_list.clear(); }

bool reset_check(RunState& run, const FscRecord& record) {
  const ResetText parts = take_apart(record.text(field::text));
  DevAddress address;
  if (parts.address && parse_address(*parts.address, AddressKind::either, address) != 0) address = {};
  const MaskRow& masks = masks_of(address.interface);
  const auto refused = refused_element(parts.commands, masks.written);
  if (!refused) return true;
  return parts.address ? run_error(run, 2686, *refused, masks.name, *parts.address)
                       : run_error(run, 2685, *refused, masks.name);
}

std::span<const HandlerRow> reset_handlers() { return rows; }

}  // namespace orvane
