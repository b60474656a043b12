#include "instruments/bus_elements_ieee.h"

#include "config/startup_config.h"
#include "instruments/bus_address.h"
#include "instruments/ieee488.h"
#include "instruments/srq.h"
#include "platform/platform.h"
#include "state/buttons.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t address_entry_limit = 7;
constexpr std::uint32_t longest_srq_wait = 86400000;  // milliseconds
constexpr std::uint32_t longest_gap = 65535;          // milliseconds

// --- Addresses -------------------------------------------------------------------------------------------------

bool board_exists(const RunState& run, const BusAddress& address) {
  return run.demo_mode || address.board < startup_config().ib_nport;
}

// The unit under test is known from now on.
bool take_uut(RunState& run, const BusAddress& address) {
  run.ieee.current = run.ieee.saved = address;
  ib_note_uut(run, {DeviceInterface::ieee488, address, 0});
  return true;
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
    if (code != answer::ok) return give_up(run);
    BusAddress address;
    const int wrong = parse_bus_number(trim_blanks(entry), address);
    if (wrong == 0 && address.primary >= 1 && board_exists(run, address)) return take_uut(run, address);
    errp(wrong != 0 ? wrong : 1904, entry);
  }
}

// With two boards the unit under test has the second one to itself.
bool find_or_ask(RunState& run) {
  BusAddress address;
  if (run.demo_mode || startup_config().ib_nport < 2) return ask_address(run);
  switch (ib_find_uut(run, address)) {
    case UutSearch::failed: return false;
    case UutSearch::stopped: return give_up(run);
    case UutSearch::found: return take_uut(run, address);
    case UutSearch::nobody: break;
  }
  return ask_address(run);
}

// Where a device would be that a demonstration does not have: 101.
constexpr BusAddress demo_address = {BusAddress::board_valid | BusAddress::primary_valid, 1, 1, 0};

bool have_address(RunState& run) {
  if (run.ieee.current.is_set()) return true;
  if (!run.demo_mode || startup_config().ieee_demo_prompt != 0) return find_or_ask(run);
  run.ieee.current = demo_address;
  return true;
}

bool have_timeout(RunState& run) {
  auto& timeout = run.ieee.timeout[run.ieee.current.board];
  if (timeout) return true;
  timeout = ib_default_timeout;
  return ib_timeout(run, run.ieee.current.board, ib_default_timeout);
}

bool eval_address(RunState& run, const FscRecord&, std::string_view argument) {
  DevAddress address;
  const int wrong = parse_address(argument, AddressKind::bus, address);
  if (is_demo_alias(run, wrong)) {
    run.ieee.current = demo_address;
    return true;
  }
  if (wrong != 0) return run_error(run, wrong, argument);
  if (!board_exists(run, address.bus)) return run_error(run, 30413, argument, startup_config().ib_nport);
  // A number is the unit under test and stands for the statements behind this one; an alias is a standard.
  const bool is_number = !argument.empty() && argument.front() >= '0' && argument.front() <= '9';
  if (is_number) return take_uut(run, address.bus);
  run.ieee.current = address.bus;
  ib_note_standard(run, address);
  return true;
}

// --- Writing and reading ---------------------------------------------------------------------------------------

BusAddress address_in_use(const RunState& run) {
  BusAddress address = run.ieee.current;
  if (!run.ieee.addressing) address.flags |= BusAddress::do_not_address;
  return address;
}

bool write_part(RunState& run, std::string_view text, bool end) {
  const BusAddress address = address_in_use(run);
  return run.ieee.gap != 0 ? ib_wrt_slow_eoi(run, address, text, run.ieee.gap, end)
                           : ib_wrt_eoi(run, address, text, end);
}

std::string demo_question(const RunState& run) { return msg(5015, run.ieee.current.primary); }

bool read_piece(RunState& run, std::string& piece, bool first, bool& ended) {
  BusAddress address = address_in_use(run);
  if (!first) address.flags |= BusAddress::do_not_address;
  if (!ib_trd(run, address, piece, ib_read_limit, run.ieee.read_terminator, ended)) return false;
  return !piece.empty() || run_error(run, 30412, address.primary);
}

constexpr ReplySource source = {1902, ieee_ready, demo_question, read_piece, true};

bool eval_reply(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::number, source);
}
bool eval_reply_text(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::text, source);
}
bool eval_reply_discard(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::discard, source);
}

// One message over all blocks: END with the last one, the device addressed with the first one.
bool eval_file(RunState& run, const FscRecord& record, std::string_view argument) {
  if (!ieee_ready(run)) return false;
  const bool sent = eval_output(run, record, argument, [&run](std::string_view block, bool last) {
    const bool written = write_part(run, block, last && run.ieee.end);
    run.ieee.addressing = false;
    return written;
  });
  run.ieee.addressing = true;
  return sent;
}

// --- Settings --------------------------------------------------------------------------------------------------

bool eval_timeout(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, ib_longest_timeout);
  if (!milliseconds) return refuse_argument(run, record, argument);
  if (!have_address(run)) return false;
  run.ieee.timeout[run.ieee.current.board] = *milliseconds;
  return ib_timeout(run, run.ieee.current.board, *milliseconds);
}

bool eval_term(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto byte = terminator_argument(argument, false);
  if (byte) run.ieee.read_terminator = *byte;
  return byte || refuse_argument(run, record, argument);
}

bool eval_end(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto on = on_or_off(argument);
  if (on) run.ieee.end = *on;
  return on || refuse_argument(run, record, argument);
}

bool eval_gap(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, longest_gap);
  if (milliseconds) run.ieee.gap = *milliseconds;
  return milliseconds || refuse_argument(run, record, argument);
}

// --- Bus lines -------------------------------------------------------------------------------------------------

// An element without an argument that drives a line of the device's bus.
template <bool (*drive)(RunState&, const BusAddress&), int failure>
bool eval_line(RunState& run, const FscRecord& record, std::string_view argument) {
  if (!argument.empty()) return refuse_argument(run, record, argument);
  if (!ieee_ready(run)) return false;
  return drive(run, run.ieee.current) || run_error(run, failure, run.ieee.current.primary);
}

bool eval_interface_clear(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto board = argument.empty() ? std::optional<std::uint32_t>(0) : element_number(argument, 0, 1);
  return board ? ib_ifc(run, static_cast<int>(*board)) : refuse_argument(run, record, argument);
}

// --- Polls and service requests --------------------------------------------------------------------------------

constexpr std::uint8_t every_bit = 255;

std::optional<std::uint32_t> mask_argument(std::string_view text) {
  return text.empty() ? std::optional<std::uint32_t>(every_bit) : element_number(text, 0, every_bit);
}

bool eval_spoll(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto mask = mask_argument(argument);
  if (!mask) return refuse_argument(run, record, argument);
  if (!ieee_ready(run)) return false;
  std::uint8_t status = every_bit;
  if (!run.demo_mode && !ib_spoll(run, run.ieee.current, status)) return false;
  run.registers.mem = static_cast<double>(status & *mask);
  return true;
}

bool switch_srq(RunState& run, bool on) {
  if (run.demo_mode) return true;
  if (startup_config().ib_nport < 2) return run_error(run, 1914);
  const BusAddress& uut = run.ieee.last_uut.bus;
  if (uut.is_set() && uut.board == 0) return run_error(run, 1915);
  return ib_srq_enable(run, on) || run_error(run, 1916);
}

int srq_failure(SrqWait outcome) {
  switch (outcome) {
    case SrqWait::not_acknowledged: return 1908;
    case SrqWait::timed_out: return 1906;
    case SrqWait::stopped: return 1907;
    case SrqWait::wrong_board: return 1704;
    default: return 1909;
  }
}

// "t,m" waits for a request of the device; "ON" and "OFF" say whether requests on the second board count.
bool eval_srq(RunState& run, const FscRecord& record, std::string_view argument) {
  if (const auto on = on_or_off(argument)) return switch_srq(run, *on);
  const std::size_t comma = argument.find(',');
  const auto timeout = element_number(trim_blanks(argument.substr(0, comma)), 0, longest_srq_wait);
  const auto mask = mask_argument(comma == std::string_view::npos ? std::string_view()
                                                                  : trim_blanks(argument.substr(comma + 1)));
  if (!timeout || !mask) return refuse_argument(run, record, argument);
  if (!ieee_ready(run)) return false;
  std::uint8_t status = 0;
  const SrqWait outcome = ib_srqwait(run, *timeout, run.ieee.current, status);
  if (outcome == SrqWait::acknowledged) {
    run.registers.mem = static_cast<double>(status & *mask);
    return true;
  }
  if (outcome == SrqWait::stopped) run.set(run_flag::skip_test);
  return run_error(run, srq_failure(outcome), run.ieee.current.primary);
}

constexpr ElementAction elements[] = {
    {"@", eval_address},
    {"D", eval_delay},
    {"I", eval_reply},
    {"I$", eval_reply_text},
    {"I!", eval_reply_discard},
    {"O", eval_file},
    {"T", eval_timeout},
    {"TERM", eval_term},
    {"EOI", eval_end},
    {"S", eval_gap},
    {"SPL", eval_spoll},
    {"SRQ", eval_srq},
    {"SDC", eval_line<ib_clr, 2836>},
    {"GTL", eval_line<ib_gtl, 2833>},
    {"LLO", eval_line<ib_llo, 2834>},
    {"REN", eval_line<ib_ren, 2835>},
    {"TRIG", eval_line<ib_trig, 2837>},
    {"IFC", eval_interface_clear},
};

bool send_plain(RunState& run, const FscRecord&, std::string_view text) { return ieee_write(run, text); }

}  // namespace

bool ieee_ready(RunState& run) { return have_address(run) && have_timeout(run); }

bool ieee_write(RunState& run, std::string_view text) {
  return ieee_ready(run) && write_part(run, text, run.ieee.end);
}

std::span<const ElementAction> ieee_elements() { return elements; }

const BusLanguage& ieee_language() {
  static const BusLanguage language = {elements, send_plain};
  return language;
}

}  // namespace orvane
