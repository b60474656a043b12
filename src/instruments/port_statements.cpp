#include "instruments/port_statements.h"

#include <algorithm>

#include "config/startup_config.h"
#include "instruments/bus_address.h"
#include "instruments/serial.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::uint32_t longest_timeout = 1000000;  // milliseconds
constexpr std::uint32_t longest_gap = 32767;        // milliseconds
constexpr std::uint32_t longest_block = 4096;
constexpr std::size_t piece_limit = 4097;

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

// --- The port in use -------------------------------------------------------------------------------------------

// The current port, else the default one, else that of the key "port"; 0 if none is named.
int port_in_use(RunState& run) {
  PortState& state = run.port;
  if (state.fallback == 0)
    state.fallback = static_cast<std::uint16_t>(std::max<int>(startup_config().port, 0));
  if (state.current == 0) state.current = state.fallback;
  return state.current;
}

// A port that the run has not opened is opened here; it then has the statements' terminators and time-out.
bool prepare(RunState& run, int port) {
  const PortState& state = run.port;
  return (serial_is_open(run, port) || serial_on(run, port)) &&
         serial_terminators(run, port, state.input_terminator, state.output_terminator) &&
         serial_time(run, port, state.timeout);
}

bool ready(RunState& run) {
  const int port = port_in_use(run);
  return port != 0 ? prepare(run, port) : run_error(run, 222);
}

void take_port(RunState& run, int port) {
  run.port.current = run.port.fallback = static_cast<std::uint16_t>(port);
}

bool eval_address(RunState& run, const FscRecord&, std::string_view argument) {
  DevAddress address;
  const int wrong = parse_address(argument, AddressKind::port, address);
  if (is_demo_alias(run, wrong)) {
    run.port.current = 1;  // some port that nothing is sent to
    return true;
  }
  if (wrong != 0) return run_error(run, wrong, argument);
  run.port.current = address.port;
  if (port_number(argument) != 0) take_port(run, address.port);
  return true;
}

// --- Writing and reading ---------------------------------------------------------------------------------------

// What a call of the serial layer that gives a count has come to; it has reported itself.
bool has_count(RunState& run, int count) {
  if (count == comm_stopped) return give_up(run);
  if (count >= 0) return true;
  run.set(run_flag::stop_test);
  return false;
}

bool write(RunState& run, std::string_view text) {
  const int port = port_in_use(run);
  if (port == 0) return run_error(run, 221, 0, text.size(), serial_name(port));
  if (!prepare(run, port)) return false;
  const int count = serial_wrt(run, port, text, true);
  if (!has_count(run, count)) return false;
  return static_cast<std::size_t>(count) >= text.size() ||
         run_error(run, 221, count, text.size(), serial_name(port));
}

bool send(RunState& run, const FscRecord&, std::string_view text) { return write(run, text); }

std::string demo_question(const RunState& run) { return msg(5016, serial_name(run.port.current)); }

bool read_piece(RunState& run, std::string& piece, bool, bool& ended) {
  return has_count(run, serial_rd(run, run.port.current, piece, piece_limit, false, ended));
}

constexpr ReplySource source = {1912, ready, demo_question, read_piece, false};

bool eval_reply(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::number, source);
}
bool eval_reply_text(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::text, source);
}
bool eval_reply_discard(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_input(run, record, argument, ReplyUse::discard, source);
}

bool eval_file(RunState& run, const FscRecord& record, std::string_view argument) {
  return eval_output(run, record, argument,
                     [&run](std::string_view block, bool) { return write(run, block); });
}

// "n m > file": n bytes, or "*" until nothing more comes; m milliseconds without a byte are too long behind the first.
bool block_arguments(std::string_view text, CommBlock& block) {
  const std::size_t blank = std::min(text.find_first_of(" \t"), text.size());
  const std::string_view how_many = text.substr(0, blank), gap_text = trim_blanks(text.substr(blank));
  block.to_silence = how_many == "*";
  const auto count =
      block.to_silence ? std::optional<std::uint32_t>(0) : element_number(how_many, 1, longest_block);
  const auto gap =
      gap_text.empty() ? std::optional<std::uint32_t>(0) : element_number(gap_text, 1, longest_gap);
  block.count = count.value_or(0);
  block.gap = gap.value_or(0);
  return count && gap;
}

bool eval_block(RunState& run, const FscRecord& record, std::string_view argument) {
  const std::size_t arrow = std::min(argument.find('>'), argument.size());
  CommBlock block;
  ReplyFile file;
  if (!block_arguments(trim_blanks(argument.substr(0, arrow)), block))
    return refuse_argument(run, record, argument);
  if (arrow < argument.size() && !file.open(run, record, argument.substr(arrow))) return false;
  if (!ready(run)) return false;
  run.read_block.clear();
  const int port = run.port.current;
  if (port > DevAddress::last_plain_port) return run_error(run, 30933, serial_name(port));
  return has_count(run, comm_block_rd(run, port, run.read_block, block)) && file.add(run, run.read_block);
}

// --- Settings --------------------------------------------------------------------------------------------------

bool eval_timeout(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, longest_timeout);
  if (milliseconds) run.port.timeout = *milliseconds;
  return milliseconds || refuse_argument(run, record, argument);
}

std::uint16_t terminator_word(int byte) {
  if (byte == no_terminator) return terminator::control;
  return byte == line_terminator ? terminator::line : static_cast<std::uint16_t>(byte);
}

bool eval_term(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto byte = terminator_argument(argument, false);
  if (byte) run.port.input_terminator = terminator_word(*byte);
  return byte || refuse_argument(run, record, argument);
}

bool eval_output_term(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto byte = terminator_argument(argument, true);
  if (byte) run.port.output_terminator = terminator_word(*byte);
  return byte || refuse_argument(run, record, argument);
}

bool eval_clear(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto on = on_or_off(argument);
  if (!on && !argument.empty()) return refuse_argument(run, record, argument);
  if (!ready(run)) return false;
  return on ? serial_clear_after_read(run, run.port.current, *on) : serial_clr_q(run, run.port.current);
}

// A port that is not open yet is opened as any other element would open it.
bool eval_reopen(RunState& run, const FscRecord& record, std::string_view argument) {
  if (!argument.empty()) return refuse_argument(run, record, argument);
  const int port = port_in_use(run);
  if (port == 0) return run_error(run, 222);
  if (!serial_is_open(run, port)) return prepare(run, port);
  return serial_off(run, port) && serial_on_2(run, port);
}

bool eval_parameters(RunState& run, const FscRecord& record, std::string_view argument) {
  int port = 0;
  SerialParameters parameters;
  switch (parse_port_parameters(argument, port, parameters)) {
    case PortArgument::no_such_port: return run_error(run, 220, argument);
    case PortArgument::refused: return refuse_argument(run, record, argument);
    case PortArgument::ok: break;
  }
  if (port != 0) take_port(run, port);
  return ready(run) && serial_conf(run, run.port.current, parameters);
}

constexpr ElementAction elements[] = {
    {"@", eval_address},        {"D", eval_delay},           {"I", eval_reply},   {"I$", eval_reply_text},
    {"I!", eval_reply_discard}, {"IB", eval_block},          {"O", eval_file},    {"T", eval_timeout},
    {"TERM", eval_term},        {"OTERM", eval_output_term}, {"CLR", eval_clear}, {"REOPEN", eval_reopen},
    {"P", eval_parameters},
};

// --- [P ...] ---------------------------------------------------------------------------------------------------

// A letter of `letters` as its code, counted from 1. An empty position is 0.
std::optional<std::uint8_t> letter_code(std::string_view text, std::string_view letters) {
  if (text.empty()) return std::uint8_t{0};
  const std::size_t at = text.size() == 1 ? letters.find(upper(text[0])) : std::string_view::npos;
  if (at == std::string_view::npos) return std::nullopt;
  return static_cast<std::uint8_t>(at + 1);
}

std::optional<std::uint8_t> digit_code(std::string_view text, std::uint32_t low, std::uint32_t high) {
  if (text.empty()) return std::uint8_t{0};
  const auto number = element_number(text, low, high);
  if (!number) return std::nullopt;
  return static_cast<std::uint8_t>(*number);
}

std::optional<std::uint8_t> baud_code(std::string_view text) {
  if (text.empty()) return std::uint8_t{0};
  const std::uint8_t code = comm_baud_code(element_number(text, 1, 1000000).value_or(0));
  return code != 0 ? std::optional<std::uint8_t>(code) : std::nullopt;
}

bool begins_with_letter(std::string_view text) {
  return !text.empty() && upper(text[0]) >= 'A' && upper(text[0]) <= 'Z';
}

}  // namespace

const BusLanguage& port_language() {
  static const BusLanguage language = {elements, send};
  return language;
}

PortArgument parse_port_parameters(std::string_view text, int& port, SerialParameters& parameters) {
  constexpr std::size_t positions = 6;
  std::vector<std::string_view> parts;
  if (!split_on(text, ',', parts)) return PortArgument::refused;
  for (std::string_view& part : parts) part = trim_blanks(part);
  port = 0;
  if (parts.empty()) return PortArgument::refused;
  if (begins_with_letter(parts[0])) {
    port = port_number(parts[0]);
    if (port == 0 || port > DevAddress::last_pass_through) return PortArgument::no_such_port;
  } else if (!parts[0].empty()) {
    parts.insert(parts.begin(), std::string_view());
  }
  if (parts.size() > positions) return PortArgument::refused;
  parts.resize(positions);
  const auto baud = baud_code(parts[1]), parity = letter_code(parts[2], "NEOMS"),
             data = digit_code(parts[3], 5, 8), stop = digit_code(parts[4], 1, 2),
             handshake = letter_code(parts[5], "HXNDR");
  if (!baud || !parity || !data || !stop || !handshake) return PortArgument::refused;
  parameters = {*baud, *parity, *data, *stop, *handshake};
  return PortArgument::ok;
}

}  // namespace orvane
