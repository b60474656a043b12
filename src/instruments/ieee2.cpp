#include "instruments/ieee2.h"

#include <charconv>
#include <vector>

#include "config/startup_config.h"
#include "instruments/bus_elements_ieee.h"
#include "instruments/ieee488.h"
#include "instruments/scpi_path.h"
#include "instruments/srq.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t command_limit = 64;
constexpr std::size_t error_limit = 32;  // entries of an error queue that are read
constexpr std::uint8_t mav = 0x10,
                       esb = 0x20;  // of the status byte: a message is available, an event has happened
constexpr int opc = 0x01;           // of the event register: operation complete

struct EventBit {
  int bit;
  int message;
};
constexpr EventBit event_errors[] = {{0x04, 569}, {0x08, 570}, {0x10, 554}, {0x20, 577}};
constexpr int error_bits = 0x3C;

const BusAddress& device(const RunState& run) { return run.ieee.current; }

// A message of this room's own, and its reply to the end.
bool ask(RunState& run, std::string_view question, std::string& reply) {
  if (!ieee_write(run, question)) return false;
  bool ended = false;
  if (!ib_trd(run, device(run), reply, ib_read_limit, run.ieee.read_terminator, ended)) return false;
  return !reply.empty() || run_error(run, 30412, device(run).primary);
}

// --- The error queue -------------------------------------------------------------------------------------------

bool says_no_error(std::string_view reply) {
  reply.remove_prefix(std::min(reply.find_first_not_of(" +"), reply.size()));
  int code = 0;
  const auto [end, error] = std::from_chars(reply.data(), reply.data() + reply.size(), code);
  static_cast<void>(end);
  return error == std::errc() && code == 0;
}

// Reads and reports the queue; the number of its entries. A stop that an earlier report has set does not keep the
// device from being asked.
std::size_t empty_queue(RunState& run) {
  std::vector<std::string> errors;
  {
    const LiftedStop lifted(run);
    std::string reply;
    while (errors.size() < error_limit && ask(run, "System:Error?", reply) && !says_no_error(reply))
      errors.emplace_back(trim_blanks(reply.substr(0, reply.find_first_of("\r\n"))));
  }
  for (const std::string& error : errors) run_error(run, 566, device(run).board, device(run).primary, error);
  if (errors.size() >= error_limit) run_error(run, 568, device(run).board, device(run).primary, error_limit);
  return errors.size();
}

void empty_queue_of(RunState& run, bool is_scpi) {
  if (is_scpi) empty_queue(run);
}

// --- The event register ----------------------------------------------------------------------------------------

bool report_events(RunState& run, int events) {
  for (const EventBit& row : event_errors) {
    if ((events & row.bit) != 0) run_error(run, row.message, device(run).board, device(run).primary);
  }
  return false;
}

// Reports errors that the register tells of. False if it does.
bool check_events(RunState& run, bool is_scpi, int events) {
  if ((events & error_bits) == 0) return true;
  if (!is_scpi) return report_events(run, events);
  if (empty_queue(run) > 0) return false;
  report_events(run, events);
  return run_error(run, 567, device(run).board, device(run).primary);
}

// Reads the register, whatever has been reported so far.
bool read_events(RunState& run, int& events) {
  const LiftedStop lifted(run);
  std::string reply;
  events = 0;
  if (!ask(run, "*ESR?", reply)) return false;
  events = static_cast<int>(number_in_reply(reply)) & 0xFF;
  return true;
}

bool read_and_check_events(RunState& run, bool is_scpi, int& events) {
  return read_events(run, events) && check_events(run, is_scpi, events);
}

// --- Waiting ---------------------------------------------------------------------------------------------------

bool write_message(RunState& run, const std::string& message, std::size_t text_size) {
  return ieee_write(run, message) || run.has(run_flag::skip_test) ||
         run_error(run, 556, device(run).primary, text_size, message.size());
}

// What a wait that was not acknowledged is reported as, for commands and for queries.
struct WaitMessages {
  int not_acknowledged, timed_out, wrong_board, other, given_up;
};
constexpr WaitMessages command_messages = {558, 557, 1700, 559, 2027};
constexpr WaitMessages query_messages = {1537, 1536, 1539, 1538, 2028};

bool wait_failed(RunState& run, bool is_scpi, SrqWait outcome, const WaitMessages& messages) {
  const BusAddress& at = device(run);
  int events = 0;
  switch (outcome) {
    case SrqWait::stopped: run.set(run_flag::skip_test); return true;
    case SrqWait::timed_out: return run_error(run, messages.timed_out, at.board, at.primary);
    case SrqWait::wrong_board: return run_error(run, messages.wrong_board, at.board, at.primary);
    case SrqWait::not_acknowledged: run_error(run, messages.not_acknowledged, at.board, at.primary); break;
    default: run_error(run, messages.other, at.board, at.primary); break;
  }
  static_cast<void>(read_and_check_events(run, is_scpi, events));
  return run_error(run, messages.given_up, at.board, at.primary);
}

SrqWait wait_for(RunState& run, std::uint8_t& status) {
  const std::uint32_t timeout = run.ieee.timeout[device(run).board].value_or(ib_default_timeout);
  return ib_srqwait(run, timeout, device(run), status);
}

// --- Outcomes --------------------------------------------------------------------------------------------------

bool command_done(RunState& run, bool is_scpi, std::uint8_t status) {
  const BusAddress& at = device(run);
  if ((status & esb) == 0) {
    run_error(run, 560, at.board, at.primary, status);
    empty_queue_of(run, is_scpi);
    return false;
  }
  int events = 0;
  if (!read_and_check_events(run, is_scpi, events)) return false;
  if ((events & opc) != 0) return true;
  run_error(run, 7720, at.board, at.primary, status, events);
  empty_queue_of(run, is_scpi);
  return false;
}

// A reply that belongs to a query in error is of no use.
void discard_reply(RunState& run) {
  const LiftedStop lifted(run);
  std::string piece;
  bool ended = false;
  while (!ended && ib_trd(run, device(run), piece, ib_read_limit, IeeeState::end_only, ended) &&
         !piece.empty())
    continue;
}

bool query_done(RunState& run, bool is_scpi, std::uint8_t status) {
  const BusAddress& at = device(run);
  if ((status & esb) == 0) return (status & mav) != 0 || run_error(run, 438, at.board, at.primary, status);
  if ((status & mav) != 0) discard_reply(run);
  int events = 0;
  static_cast<void>(read_and_check_events(run, is_scpi, events));
  run_error(run, 7719, at.board, at.primary, status, events);
  empty_queue_of(run, is_scpi);
  return false;
}

// --- Commands and queries of a text ----------------------------------------------------------------------------

// Where the first query begins; npos if there is none. False after a report.
bool find_queries(RunState& run, std::string_view text, std::size_t& begin) {
  begin = std::string_view::npos;
  std::size_t count = 0;
  for (std::size_t at = 0; at <= text.size(); ++count) {
    const std::size_t end = std::min(text.find(';', at), text.size());
    const std::string_view command = text.substr(at, end - at);
    const bool is_query = command.find('?') != std::string_view::npos;
    if (is_query && begin == std::string_view::npos) begin = at;
    if (!is_query && begin != std::string_view::npos && !trim_blanks(command).empty())
      return run_error(run, 893, text);
    at = end + 1;
  }
  return count <= command_limit || run_error(run, 892, text, command_limit);
}

bool complete(RunState& run, std::string_view text, std::string& out) {
  switch (scpi_complete(text, out)) {
    case ScpiPath::two_queries: return run_error(run, 440, text);
    case ScpiPath::too_long: return run_error(run, 30932, text, scpi_message_limit);
    case ScpiPath::ok: break;
  }
  return true;
}

}  // namespace

bool ieee2_Write(RunState& run, const FscRecord& record, std::string_view text) {
  const bool is_scpi = record.code() == fsc::scpi;
  std::string completed(text);
  if (is_scpi && !complete(run, text, completed)) return false;
  std::size_t queries = 0;
  if (!find_queries(run, completed, queries) || !ieee_ready(run)) return false;
  const std::string_view all = completed;
  const std::string_view commands = all.substr(0, queries);
  if (!commands.empty() && (!ieee2_Command(run, is_scpi, commands) || run.has(run_flag::skip_test)))
    return false;
  return queries == std::string_view::npos || ieee2_Query(run, is_scpi, all.substr(queries));
}

bool ieee2_Command(RunState& run, bool is_scpi, std::string_view text) {
  std::string message = "*CLS;*SRE 96;*ESE 61;";
  message += text;
  message += text.ends_with(';') ? "*OPC" : ";*OPC";
  if (!write_message(run, message, text.size())) return false;
  if (run.demo_mode || run.has(run_flag::skip_test)) return true;
  std::uint8_t status = 0;
  const SrqWait outcome = wait_for(run, status);
  return outcome == SrqWait::acknowledged ? command_done(run, is_scpi, status)
                                          : wait_failed(run, is_scpi, outcome, command_messages);
}

bool ieee2_Query(RunState& run, bool is_scpi, std::string_view text) {
  std::string message = "*CLS;*SRE 112;*ESE 60;";
  message += text;
  if (!write_message(run, message, text.size())) return false;
  if (run.demo_mode || run.has(run_flag::skip_test)) return true;
  std::uint8_t status = 0;
  const SrqWait outcome = wait_for(run, status);
  if (outcome != SrqWait::acknowledged) return wait_failed(run, is_scpi, outcome, query_messages);
  const auto delay = static_cast<std::uint32_t>(std::max<int>(startup_config().ieee2_query_delay, 0));
  return (delay == 0 || wait_or_give_up(run, delay)) && query_done(run, is_scpi, status);
}

const BusLanguage& ieee2_language() {
  static const BusLanguage language = {ieee_elements(), ieee2_Write};
  return language;
}

}  // namespace orvane
