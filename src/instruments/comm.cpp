#include "instruments/comm.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "config/value_grammar.h"
#include "instruments/line_endings.h"
#include "platform/platform.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint32_t read_poll = 100, write_poll = 10;  // milliseconds between two looks at the line
constexpr std::size_t silence_limit = 4096;

constexpr std::uint32_t rates[] = {50,   75,   110,  134,  150,  200,   300,   600,   1200,   1800,   2000,
                                   2400, 3600, 4800, 7200, 9600, 19200, 38400, 56000, 115200, 128000, 256000};
constexpr std::uint32_t rate_of_statements_only = 2000;  // no entry of the section "ports" may name it

struct Letter {
  char letter;
  SerialParity parity;
};
constexpr Letter parities[] = {{'n', SerialParity::none},
                               {'e', SerialParity::even},
                               {'o', SerialParity::odd},
                               {'m', SerialParity::mark},
                               {'s', SerialParity::space}};  // code 1 first

constexpr SerialFlow flows[] = {SerialFlow::rts_cts, SerialFlow::xon_xoff, SerialFlow::none,
                                SerialFlow::dtr_dsr, SerialFlow::xon_xoff_rts_on};  // code 1 first

bool traced() { return (debug_flags() & debug_bit::serial) != 0; }

SerialSystem& system_of() {
  SerialSystem* own = platform().serial;
  return own != nullptr ? *own : system_serial();
}

SerialPortState& state_of(RunState& run, int port) {
  return run.serial.ports[static_cast<std::size_t>(port - 1)];
}

// ---- The line's own faults ----

struct FaultRow {
  std::uint32_t bit;
  int number;
};
constexpr FaultRow fault_rows[] = {{serial_fault::mode, 4470},
                                   {serial_fault::line_break, 4471},
                                   {serial_fault::not_selected, 4472},
                                   {serial_fault::frame, 4473},
                                   {serial_fault::input_output, 4474},
                                   {serial_fault::out_of_paper, 4475},
                                   {serial_fault::overrun, 4476},
                                   {serial_fault::printer_timeout, 4477},
                                   {serial_fault::receive_overflow, 4478},
                                   {serial_fault::parity, 4479},
                                   {serial_fault::transmit_full, 4480}};

bool system_fault(int number, int port, int error) {
  const MessageArg args[] = {MessageArg(port)};
  return show_error(number, error, MessageArgs(args, 1));
}

bool purge(SerialPortState& state, int port) {
  const int error = state.line->purge_input();
  return error == 0 || system_fault(7789, port, error);
}

// Asks the line; its faults are reported, each by its number. A mode that the line does not have stands alone.
bool line_state(SerialPortState& state, int port, bool purge_on_fault, SerialLineState& now) {
  if (const int error = state.line->line_state(now); error != 0) return system_fault(7786, port, error);
  if (now.faults == 0) return true;
  if (purge_on_fault && !purge(state, port)) return false;
  for (const FaultRow& row : fault_rows) {
    if ((now.faults & row.bit) == 0) continue;
    errp(row.number, port);
    if (row.bit == serial_fault::mode) break;
  }
  return false;
}

// ---- Reading ----

// Waits until a byte is there and takes it. comm_failed or comm_stopped, or 1; 0 if the time was over and
// `silence_ends`.
int next_byte(SerialPortState& state, int port, std::uint32_t timeout, bool silence_ends,
              std::uint8_t& byte) {
  std::uint32_t elapsed = 0;
  for (;;) {
    SerialLineState now;
    if (!line_state(state, port, true, now)) return comm_failed;
    if (now.waiting > 0) break;
    if (timeout != 0 && elapsed >= timeout) {
      if (silence_ends) return 0;
      if (purge(state, port)) errp(10501, port, elapsed, timeout);
      return comm_failed;
    }
    const std::uint32_t step = timeout != 0 ? std::min(read_poll, timeout - elapsed) : read_poll;
    if (pumping_wait(step) == WaitEnd::stopped) return purge(state, port) ? comm_stopped : comm_failed;
    elapsed += step;
  }
  int count = 0;
  if (const int error = state.line->read_byte(byte, count); error != 0)
    return system_fault(7790, port, error) ? 1 : comm_failed;
  if (count != 1) return errp(7791, port, count) ? 1 : comm_failed;
  return 1;
}

// ---- Writing ----

// Writes one byte; `number` is its fault. 1, comm_failed, comm_stopped, or 0 if the time is over.
int put_byte(SerialPortState& state, int port, std::uint8_t byte, int number, std::uint32_t& elapsed) {
  for (;;) {
    int count = 0;
    if (const int error = state.line->write_byte(byte, count); error != 0)
      return system_fault(number, port, error) ? 1 : comm_failed;
    if (count == 1) return 1;
    if (state.timeout != 0 && elapsed >= state.timeout) return 0;
    if (pumping_wait(write_poll) == WaitEnd::stopped) return comm_stopped;
    elapsed += write_poll;
  }
}

int put_data(SerialPortState& state, int port, std::string_view bytes) {
  std::uint32_t elapsed = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<std::uint8_t>(bytes[i]);
    if (traced()) debug_log("%s : COM%d : byte #%03d = %s", "comm_wrt", port, i + 1, comm_byte_text(byte));
    const int done = put_byte(state, port, byte, 7794, elapsed);
    if (done == 0) errp(10502, port, elapsed, state.timeout, i + 1, bytes.size() - i);
    if (done != 1) return done == comm_stopped ? comm_stopped : comm_failed;
  }
  return 1;
}

int put_ending(SerialPortState& state, int port) {
  const std::string ending = output_ending(state.output_terminator);
  std::uint32_t elapsed = 0;
  for (std::size_t i = 0; i < ending.size(); ++i) {
    const auto byte = static_cast<std::uint8_t>(ending[i]);
    if (traced())
      debug_log("%s : COM%d : writing terminator : byte #%03d = %s", "comm_wrt", port, i + 1,
                comm_byte_text(byte));
    const bool first = i == 0;
    const int done = put_byte(state, port, byte, first ? 7795 : 7796, elapsed);
    if (done == 0) {
      if (first) {
        errp(10503, port, elapsed, state.timeout);
      } else {
        errp(10504, port, elapsed, state.timeout);
      }
    }
    if (done != 1) return done == comm_stopped ? comm_stopped : comm_failed;
  }
  return 1;
}

// Waits until the line has sent everything; the time counts from the last byte that went.
int drain(SerialPortState& state, int port) {
  SerialLineState now;
  if (!line_state(state, port, false, now)) return comm_failed;
  std::uint32_t elapsed = 0;
  while (now.unsent > 0) {
    if (pumping_wait(write_poll) == WaitEnd::stopped) return comm_stopped;
    const std::uint32_t before = now.unsent;
    if (!line_state(state, port, false, now)) return comm_failed;
    elapsed = now.unsent == before ? elapsed + write_poll : 0;
    if (state.timeout != 0 && elapsed > state.timeout)
      return errp(10505, port, elapsed, state.timeout, now.unsent) ? 1 : comm_failed;
  }
  return 1;
}

// ---- Settings ----

std::vector<std::string> fields_of(std::string_view text) {
  std::vector<std::string> fields;
  for (;;) {
    const std::size_t comma = text.find(',');
    fields.emplace_back(trim(text.substr(0, comma)));
    if (comma == std::string_view::npos) return fields;
    text.remove_prefix(comma + 1);
  }
}

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool send_settings(SerialPortState& state, int port, const SerialSettings& settings, int number) {
  state.settings = settings;
  if (state.line == nullptr) return true;
  const int error = state.line->configure(settings);
  return error == 0 || system_fault(number, port, error);
}

bool open_line(RunState& run, SerialPortState& state, int port) {
  if (!run.demo_mode) {
    int error = 0;
    std::string advice;
    const std::string name = comm_system_name(port);
    state.line = system_of().open(name, error, advice);
    if (state.line == nullptr) {
      const MessageArg args[] = {MessageArg(port), MessageArg(name), MessageArg(advice)};
      return show_error(7788, error, MessageArgs(args, std::size(args)));
    }
  }
  state.open = true;
  return true;
}

constexpr std::array<std::string_view, 33> control_names = {
    "<NUL>", "<SOH>", "<STX>", "<ETX>", "<EOT>", "<ENQ>", "<ACK>", "<BEL>", "<BS>",  "<HT>",  "<LF>",
    "<VT>",  "<FF>",  "<CR>",  "<SO>",  "<SI>",  "<DLE>", "<DC1>", "<DC2>", "<DC3>", "<DC4>", "<NAK>",
    "<SYN>", "<ETB>", "<CAN>", "<EM>",  "<SUB>", "<ESC>", "<FS>",  "<GS>",  "<RS>",  "<US>",  "<SP>"};

}  // namespace

std::uint32_t comm_baud(std::uint8_t code) {
  return code >= 1 && code <= std::size(rates) ? rates[code - 1] : 0;
}

std::uint8_t comm_baud_code(std::uint32_t rate) {
  const auto found = std::find(std::begin(rates), std::end(rates), rate);
  return found == std::end(rates) ? std::uint8_t{0}
                                  : static_cast<std::uint8_t>(found - std::begin(rates) + 1);
}

std::string comm_system_name(int port) {
  const std::vector<std::string> names = fields_of(startup_config().com_names);
  const auto index = static_cast<std::size_t>(port - 1);
  if (index < names.size() && !names[index].empty()) return names[index];
  return system_of().port_name(port);
}

bool comm_defaults(int port, SerialSettings& settings) {
  const std::optional<std::string> text = user_setting("ports", "COM" + std::to_string(port) + ":");
  if (!text) return errp(470, port, port);
  const std::vector<std::string> fields = fields_of(*text);
  if (fields.size() < 4) return errp(471, port, *text);
  settings = SerialSettings();
  const auto rate = real_number(fields[0]);
  const std::uint32_t baud = rate && *rate >= 0 && *rate <= 256000 ? static_cast<std::uint32_t>(*rate) : 0;
  if (comm_baud_code(baud) == 0 || baud == rate_of_statements_only) return errp(453, port, fields[0]);
  settings.baud = baud;
  const auto parity = std::find_if(std::begin(parities), std::end(parities), [&](const Letter& one) {
    return fields[1].size() == 1 && one.letter == lower(fields[1][0]);
  });
  if (parity == std::end(parities)) return errp(474, port, fields[1]);
  settings.parity = parity->parity;
  const auto data = short_number(fields[2]), stop = short_number(fields[3]);
  if (!data || *data < 5 || *data > 8) return errp(471, port, *text);
  if (!stop || (*stop != 1 && *stop != 2)) return errp(475, port, fields[3]);
  settings.data_bits = static_cast<std::uint8_t>(*data);
  settings.stop_bits = static_cast<std::uint8_t>(*stop);
  const std::string handshake = fields.size() > 4 ? fields[4] : std::string();
  if (same_word(handshake, "p")) {
    settings.flow = SerialFlow::rts_cts;
  } else if (same_word(handshake, "x")) {
    settings.flow = SerialFlow::xon_xoff;
  } else if (!handshake.empty()) {
    return errp(476, port, handshake);
  }
  return true;
}

SerialPortState* comm_port(RunState& run, int port) {
  if (port >= 1 && port <= SerialState::port_limit && state_of(run, port).is_open(run.demo_mode))
    return &state_of(run, port);
  errp(458, port);
  return nullptr;
}

bool comm_open(RunState& run, int port, const SerialSettings& settings) {
  SerialPortState& state = state_of(run, port);
  state = SerialPortState();
  state.timeout = SerialPortState::start_timeout;
  SerialSettings wanted = settings;
  wanted.dtr_on = startup_config().dtr_disable == 0;
  if (open_line(run, state, port) && send_settings(state, port, wanted, 7793)) return true;
  comm_close(run, port);
  return false;
}

void comm_close(RunState& run, int port) {
  SerialPortState& state = state_of(run, port);
  state.line.reset();
  state.open = false;
}

bool comm_reopen(RunState& run, int port) {
  SerialPortState& state = state_of(run, port);
  comm_close(run, port);
  if (open_line(run, state, port) && send_settings(state, port, state.settings, 7792)) return true;
  comm_close(run, port);
  return false;
}

bool comm_configure(RunState& run, int port, const SerialParameters& parameters) {
  SerialPortState* state = comm_port(run, port);
  if (state == nullptr) return false;
  SerialSettings settings = state->settings;
  if (const std::uint32_t rate = comm_baud(parameters.baud); rate != 0) settings.baud = rate;
  if (parameters.parity >= 1 && parameters.parity <= std::size(parities))
    settings.parity = parities[parameters.parity - 1].parity;
  if (parameters.data_bits >= 5 && parameters.data_bits <= 8) settings.data_bits = parameters.data_bits;
  if (parameters.stop_bits == 1 || parameters.stop_bits == 2) settings.stop_bits = parameters.stop_bits;
  if (parameters.handshake >= 1 && parameters.handshake <= std::size(flows))
    settings.flow = flows[parameters.handshake - 1];
  return send_settings(*state, port, settings, 7793);
}

int comm_rd(RunState& run, int port, std::string& text, std::size_t limit, bool block_mode,
            bool& terminated) {
  SerialPortState* state = comm_port(run, port);
  if (state == nullptr) return comm_failed;
  terminated = run.demo_mode;
  if (run.demo_mode) return static_cast<int>(text.size());
  text.clear();
  BlockWatch block;
  while (text.size() < limit && !terminated) {
    std::uint8_t byte = 0;
    const int got = next_byte(*state, port, state->timeout, false, byte);
    if (got != 1) return got;
    if (traced()) debug_log("%s : %03d = %s", "comm_rd", text.size() + 1, comm_byte_text(byte));
    const bool unchecked = block_mode && block.passes(byte);
    terminated = !unchecked && ends_input(state->input_terminator, byte);
    if (!terminated) text += static_cast<char>(byte);
  }
  if (terminated) {
    if (traced()) debug_log(ending_text(state->input_terminator), "comm_rd");
    if ((state->input_terminator & terminator::line) != 0 && text.ends_with('\r')) text.pop_back();
    if (state->clear_after_read && !purge(*state, port)) return comm_failed;
  }
  if (traced()) debug_log("%s : COM%d : returning count = %d", "comm_rd", port, text.size());
  return static_cast<int>(text.size());
}

int comm_block_rd(RunState& run, int port, std::string& bytes, const CommBlock& block) {
  SerialPortState* state = comm_port(run, port);
  if (state == nullptr) return comm_failed;
  if (run.demo_mode) return static_cast<int>(bytes.size());
  bytes.clear();
  const std::size_t count = block.count == 0 && block.to_silence ? silence_limit : block.count;
  while (bytes.size() < count) {
    const std::uint32_t timeout = bytes.empty() || block.gap == 0 ? state->timeout : block.gap;
    std::uint8_t byte = 0;
    const int got = next_byte(*state, port, timeout, block.to_silence && !bytes.empty(), byte);
    if (got < 0) return got;
    if (got == 0) break;
    if (traced()) debug_log("%s : %03d = %s", "comm_block_rd", bytes.size() + 1, comm_byte_text(byte));
    bytes += static_cast<char>(byte);
  }
  if (traced()) debug_log("%s : COM%d : returning count = %d", "comm_block_rd", port, bytes.size());
  return static_cast<int>(bytes.size());
}

int comm_wrt(RunState& run, int port, std::string_view bytes) {
  SerialPortState* state = comm_port(run, port);
  if (state == nullptr) return comm_failed;
  if (!run.demo_mode) {
    int done = put_data(*state, port, bytes);
    if (done == 1) done = put_ending(*state, port);
    if (done == 1) done = drain(*state, port);
    if (done != 1) return done;
  }
  if (traced()) debug_log("%s : COM%d : %d bytes written", "comm_wrt", port, bytes.size());
  return static_cast<int>(bytes.size());
}

bool comm_clear(RunState& run, int port) {
  SerialPortState* state = comm_port(run, port);
  return state != nullptr && (state->line == nullptr || purge(*state, port));
}

void comm_time(RunState& run, int port, std::uint32_t milliseconds) {
  state_of(run, port).timeout = milliseconds;
  if (traced()) debug_log("%s : COM%d timeout set to %u milliseconds", "comm_time", port, milliseconds);
}

std::string comm_byte_text(std::uint8_t byte) {
  constexpr std::uint8_t first_printable = 33, last_printable = 126, del = 127;
  std::string text = formatted("%u/%02Xh", byte, byte);
  if (byte >= first_printable && byte <= last_printable) return text + formatted(" ('%c')", byte);
  if (byte < control_names.size()) return text + " (" + std::string(control_names[byte]) + ")";
  return byte == del ? text + " (<DEL>)" : text;
}

}  // namespace orvane
