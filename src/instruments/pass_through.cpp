#include "instruments/pass_through.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <utility>
#include <vector>

#include "instruments/device_list.h"
#include "instruments/ieee488.h"
#include "instruments/instrument_names.h"
#include "instruments/line_endings.h"
#include "platform/platform.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint32_t host_timeout = 5000, poll_interval = 100;  // milliseconds
constexpr std::size_t write_limit = 1024, numbers_a_command = 10, error_limit = 16;
constexpr std::uint16_t line_feed = 10;  // ends the lines of a serial link
constexpr std::size_t identity_fields = 4;

// Bits of the calibrator's answers.
constexpr unsigned status_error = 0x08, inner_bytes_came = 0x100;

// The calibrators, by port.
struct HostRow {
  std::uint16_t code;
  double firmware_of_numbers;  // UUT_SENDB came with it
};
constexpr HostRow hosts[] = {{24, 2.4}, {41, 0}, {42, 0}, {87, 0}};
static_assert(std::size(hosts) == SerialState::pass_through_limit);

const HostRow& host_of(int port) { return hosts[port - DevAddress::first_pass_through]; }
PassThroughState& state_of(RunState& run, int port) {
  return run.serial.calibrator_ports[static_cast<std::size_t>(port - DevAddress::first_pass_through)];
}

bool traced() { return (debug_flags() & debug_bit::serial) != 0; }

// ---- The calibrator's own link ----

class Link {
 public:
  Link(RunState& run, const DevAddress& host) : run_(run), host_(host) {}

  bool send(std::string_view command) {
    if (is_bus()) return own_timeout() && ib_wrt(run_, host_.bus, command, BusCheck::none);
    return comm_wrt(run_, host_.port, command) >= 0;
  }

  /// `block`: the answer may hold bytes of any kind.
  bool read(std::string& reply, bool block = false) {
    reply.clear();
    bool ended = false;
    if (!is_bus()) {
      if (comm_rd(run_, host_.port, reply, ib_read_limit, block, ended) < 0) return false;
    } else if (!ib_trd(run_, host_.bus, reply, ib_read_limit, IeeeState::end_only, ended, BusCheck::none)) {
      return false;
    }
    while (!block && (reply.ends_with('\n') || reply.ends_with('\r'))) reply.pop_back();
    return true;
  }

  bool query(std::string_view command, std::string& reply, bool block = false) {
    return send(command) && read(reply, block);
  }

  // A command whose "*OPC?" answers when it is done; a line of the time before it may stand in front.
  bool command(std::string_view text, int lines) {
    std::string reply;
    if (!send(text)) return false;
    for (int line = 0; line < lines; ++line) {
      if (!read(reply)) return false;
      if (reply == "1") return true;
    }
    return errp(30902, address_text(host_), text, reply);
  }

  // The lines of a serial link begin as this protocol needs them.
  bool begin() {
    if (is_bus()) return true;
    SerialPortState* port = open_port();
    if (port == nullptr) return false;
    port->input_terminator = port->output_terminator = line_feed;
    comm_time(run_, host_.port, host_timeout);
    return command("SP_SET COMP,LF;*OPC?", 2);
  }

 private:
  bool is_bus() const { return host_.interface == DeviceInterface::ieee488; }

  // The calibrator's own link is a plain port. Null after a report.
  SerialPortState* open_port() {
    if (host_.port < 1 || host_.port > SerialState::port_limit) {
      errp(478, "pass_open", host_.port);
      return nullptr;
    }
    SerialPortState& port = run_.serial.ports[static_cast<std::size_t>(host_.port - 1)];
    if (port.is_open(run_.demo_mode)) return &port;
    SerialSettings settings;
    return comm_defaults(host_.port, settings) && comm_open(run_, host_.port, settings) ? &port : nullptr;
  }

  // The time-out is the board's; statements that follow set their own again.
  bool own_timeout() {
    run_.ieee.timeout[host_.bus.board].reset();
    return ib_timeout(run_, host_.bus.board, host_timeout);
  }

  RunState& run_;
  DevAddress host_;
};

// ---- Answers ----

std::vector<std::string> fields_of(std::string_view text) {
  std::vector<std::string> fields(1);
  for (const char c : text) {
    if (c == ',') {
      fields.emplace_back();
    } else {
      fields.back() += c;
    }
  }
  return fields;
}

std::string without_blanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \"");
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(" \"") - first + 1));
}

// The number at the head of a text; 0 without one.
template <class T>
T leading_number(std::string_view text) {
  T value = 0;
  const std::string trimmed = without_blanks(text);
  std::from_chars(trimmed.data(), trimmed.data() + trimmed.size(), value);
  return value;
}

// "#15hello" and perhaps an end of line.
bool block_of(std::string_view reply, std::string_view& bytes) {
  if (reply.size() < 2 || reply[0] != '#' || reply[1] < '1' || reply[1] > '9') return false;
  const auto digits = static_cast<std::size_t>(reply[1] - '0');
  if (reply.size() < 2 + digits) return false;
  std::size_t length = 0;
  const char* begin = reply.data() + 2;
  const auto [end, error] = std::from_chars(begin, begin + digits, length);
  if (error != std::errc() || end != begin + digits || reply.size() - 2 - digits < length) return false;
  bytes = reply.substr(2 + digits, length);
  return reply.substr(2 + digits + length).find_first_not_of("\r\n") == std::string_view::npos;
}

// The model stands third; instruments that follow IEEE-488.2 to the letter have it second.
bool is_model(const std::vector<std::string>& fields, std::string_view name) {
  return fields.size() >= identity_fields &&
         (without_blanks(fields[2]) == name || without_blanks(fields[1]) == name);
}

bool ask_identity(RunState& run, int port, PassThroughState& state) {
  std::string reply;
  const std::string name = instrument_text(host_of(port).code);
  if (!Link(run, state.host).query("*IDN?", reply)) return false;
  const std::vector<std::string> fields = fields_of(reply);
  if (!is_model(fields, name)) return errp(3594, port_name(static_cast<std::uint16_t>(port)), name, reply);
  state.host_firmware = leading_number<double>(fields[identity_fields - 1]);
  return true;
}

// ---- Line parameters ----

struct FlowRow {
  SerialFlow flow;
  const char* word;
};
constexpr FlowRow flow_rows[] = {{SerialFlow::rts_cts, "RTS"},
                                 {SerialFlow::xon_xoff, "XON"},
                                 {SerialFlow::none, "NOSTALL"}};  // handshake 1 first
struct ParityRow {
  SerialParity parity;
  const char* word;
};
constexpr ParityRow parity_rows[] = {{SerialParity::none, "PNONE"},
                                     {SerialParity::even, "PEVEN"},
                                     {SerialParity::odd, "PODD"}};  // parity 1 first
constexpr std::uint32_t rates[] = {300, 600, 1200, 2400, 4800, 9600};

template <class Rows, class Value>
const char* word_of(const Rows& rows, Value value) {
  for (const auto& [own, word] : rows) {
    if (own == value) return word;
  }
  return "";
}

bool send_settings(RunState& run, const PassThroughState& state) {
  const SerialSettings& s = state.settings;
  const std::string text =
      formatted("UUT_SET %u,%s,DBIT%d,SBIT%d,%s;*OPC?", s.baud, word_of(flow_rows, s.flow), s.data_bits,
                s.stop_bits, word_of(parity_rows, s.parity));
  return Link(run, state.host).command(text, 1);
}

// What the block gives is checked; 0 keeps what the port has.
bool merge_settings(int port, const SerialParameters& wanted, SerialSettings& settings) {
  const std::string name = port_name(static_cast<std::uint16_t>(port));
  if (wanted.baud != 0) {
    const std::uint32_t rate = comm_baud(wanted.baud);
    if (std::find(std::begin(rates), std::end(rates), rate) == std::end(rates)) return errp(3586, name, rate);
    settings.baud = rate;
  }
  if (wanted.parity > std::size(parity_rows)) return errp(3587, name);
  if (wanted.parity != 0) settings.parity = parity_rows[wanted.parity - 1].parity;
  if (wanted.data_bits != 0 && wanted.data_bits != 7 && wanted.data_bits != 8) return errp(3588, name);
  if (wanted.data_bits != 0) settings.data_bits = wanted.data_bits;
  if (wanted.stop_bits > 2) return errp(3588, name);
  if (wanted.stop_bits != 0) settings.stop_bits = wanted.stop_bits;
  if (wanted.handshake > std::size(flow_rows)) return errp(3590, name);
  if (wanted.handshake != 0) settings.flow = flow_rows[wanted.handshake - 1].flow;
  return true;
}

bool open_host(RunState& run, int port, PassThroughState& state) {
  if (run.demo_mode) return true;
  if (!dev_locate(run, host_of(port).code, state.host)) return false;
  Link link(run, state.host);
  return link.begin() && ask_identity(run, port, state);
}

// ---- Reading ----

// Reads out why the calibrator is at fault, and reports each reason.
void report_errors(RunState& run, int port, const PassThroughState& state) {
  for (std::size_t i = 0; i < error_limit; ++i) {
    std::string reply;
    if (!Link(run, state.host).query("ERR?", reply)) return;
    if (leading_number<int>(reply) == 0 && i > 0) return;
    errp(30903, port_name(static_cast<std::uint16_t>(port)), reply);
    if (leading_number<int>(reply) == 0) return;
  }
}

// Asks once whether bytes have come, and takes them over.
bool fetch(RunState& run, int port, PassThroughState& state) {
  Link link(run, state.host);
  std::string status, events, inner;
  if (!link.query("*STB?", status) || !link.query("*ESR?", events) || !link.query("ISR?", inner))
    return false;
  if ((leading_number<unsigned>(status) & status_error) != 0) {
    report_errors(run, port, state);
    return false;
  }
  if ((leading_number<unsigned>(inner) & inner_bytes_came) == 0) return true;
  std::string reply;
  std::string_view bytes;
  if (!link.query("UUT_RECV?", reply, true)) return false;
  if (!block_of(reply, bytes)) return errp(3592, port_name(static_cast<std::uint16_t>(port)), reply);
  if (state.received.size() + bytes.size() > PassThroughState::buffer_limit)
    return errp(3595, port_name(static_cast<std::uint16_t>(port)), PassThroughState::buffer_limit);
  state.received += bytes;
  return true;
}

// Waits until bytes are there. 1, comm_failed or comm_stopped.
int wait_for_bytes(RunState& run, int port, PassThroughState& state) {
  std::uint32_t elapsed = 0;
  while (state.received.empty()) {
    if (!fetch(run, port, state)) return comm_failed;
    if (!state.received.empty()) break;
    if (state.timeout != 0 && elapsed >= state.timeout)
      return errp(3584, port_name(static_cast<std::uint16_t>(port)), elapsed, state.timeout) ? 1
                                                                                             : comm_failed;
    if (pumping_wait(poll_interval) == WaitEnd::stopped) return comm_stopped;
    elapsed += poll_interval;
  }
  return 1;
}

// ---- Writing ----

bool is_control(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\r' && c != '\n') || byte == 0x7F;
}

bool send_numbers(RunState& run, int port, const PassThroughState& state, std::string_view bytes) {
  const double needed = host_of(port).firmware_of_numbers;
  if (state.host_firmware < needed)
    return errp(2335, port_name(static_cast<std::uint16_t>(port)), state.host_firmware, needed);
  for (std::size_t at = 0; at < bytes.size(); at += numbers_a_command) {
    std::string command = "UUT_SENDB ";
    for (const char c : bytes.substr(at, numbers_a_command)) {
      if (command.back() != ' ') command += ',';
      command += std::to_string(static_cast<unsigned char>(c));
    }
    if (!Link(run, state.host).send(command)) return false;
  }
  return true;
}

bool send_block(RunState& run, const PassThroughState& state, std::string_view bytes) {
  const std::string length = std::to_string(bytes.size());
  return Link(run, state.host)
      .send(formatted("%s #%d%s", "UUT_SEND", length.size(), length) + std::string(bytes));
}

}  // namespace

PassThroughState* pass_port(RunState& run, int port) {
  PassThroughState& state = state_of(run, port);
  if (state.open) return &state;
  errp(458, port);
  return nullptr;
}

bool pass_open(RunState& run, int port) {
  PassThroughState& state = state_of(run, port);
  state = PassThroughState();
  state.open = open_host(run, port, state);
  return state.open;
}

bool pass_reopen(RunState& run, int port) {
  PassThroughState& state = state_of(run, port);
  state.received.clear();
  state.open = open_host(run, port, state) && (run.demo_mode || send_settings(run, state));
  return state.open;
}

void pass_close(RunState& run, int port) { state_of(run, port).open = false; }

bool pass_configure(RunState& run, int port, const SerialParameters& parameters) {
  PassThroughState* state = pass_port(run, port);
  if (state == nullptr) return false;
  SerialSettings settings = state->settings;
  if (!merge_settings(port, parameters, settings)) return false;
  state->settings = settings;
  return run.demo_mode || send_settings(run, *state);
}

int pass_rd(RunState& run, int port, std::string& text, std::size_t limit, bool block_mode,
            bool& terminated) {
  PassThroughState* state = pass_port(run, port);
  if (state == nullptr) return comm_failed;
  terminated = run.demo_mode;
  if (run.demo_mode) return static_cast<int>(text.size());
  text.clear();
  BlockWatch block;
  while (text.size() < limit && !terminated) {
    if (const int got = wait_for_bytes(run, port, *state); got != 1) return got;
    std::size_t used = 0;
    while (used < state->received.size() && text.size() < limit && !terminated) {
      const auto byte = static_cast<std::uint8_t>(state->received[used++]);
      if (traced()) debug_log("%s : %03d = %s", "pass_rd", text.size() + 1, comm_byte_text(byte));
      const bool unchecked = block_mode && block.passes(byte);
      terminated = !unchecked && ends_input(state->input_terminator, byte);
      if (!terminated) text += static_cast<char>(byte);
    }
    state->received.erase(0, used);
  }
  if (!terminated) return static_cast<int>(text.size());
  if ((state->input_terminator & terminator::line) != 0 && text.ends_with('\r')) text.pop_back();
  if (state->clear_after_read && !pass_clear(run, port)) return comm_failed;
  return static_cast<int>(text.size());
}

int pass_wrt(RunState& run, int port, std::string_view bytes, bool escape) {
  const PassThroughState* state = pass_port(run, port);
  if (state == nullptr) return comm_failed;
  if (!run.demo_mode) {
    const std::string all = std::string(bytes) + output_ending(state->output_terminator);
    if (all.size() > write_limit)
      return errp(3585, port_name(static_cast<std::uint16_t>(port)), write_limit) ? 0 : comm_failed;
    const bool numbers = escape && std::any_of(bytes.begin(), bytes.end(), is_control);
    const bool sent = numbers ? send_numbers(run, port, *state, all) : send_block(run, *state, all);
    if (!sent) return comm_failed;
  }
  if (traced())
    debug_log("%s : %s : %d bytes written", "pass_wrt", port_name(static_cast<std::uint16_t>(port)),
              bytes.size());
  return static_cast<int>(bytes.size());
}

bool pass_clear(RunState& run, int port) {
  PassThroughState* state = pass_port(run, port);
  if (state == nullptr) return false;
  state->received.clear();
  return run.demo_mode || Link(run, state->host).send("UUT_FLUSH");
}

}  // namespace orvane
