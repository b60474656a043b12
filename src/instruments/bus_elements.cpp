#include "instruments/bus_elements.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "config/startup_config.h"
#include "instruments/ieee488.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "state/buttons.h"
#include "state/fsc.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::uint32_t longest_delay = 3600000;  // milliseconds
constexpr std::size_t demo_reply_limit = 73;
constexpr std::size_t path_limit = 260;
constexpr std::size_t file_block = 256;
constexpr std::uint32_t reset_timeout = 15000;  // milliseconds, of a port within a push

char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool same_word(std::string_view text, std::string_view word) {
  return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                    [](char a, char b) { return upper(a) == b; });
}

struct TerminatorName {
  std::string_view name;
  int value;
  bool output_only = false;
};
constexpr TerminatorName terminator_names[] = {
    {"CR", 13}, {"LF", 10}, {"CRLF", line_terminator, true}, {"NONE", no_terminator}, {"OFF", no_terminator}};

}  // namespace

// --- The loop --------------------------------------------------------------------------------------------------

bool speak(RunState& run, const FscRecord& record, std::string_view text, const BusLanguage& language) {
  TextCursor cursor{text, 0};
  while (!cursor.done()) {
    std::string out;
    const bool expanded = expand(run, record, cursor, language.elements, out);
    // An operator who gave up has been asked: the statement then ends without a fault of its own.
    if (run.has(run_flag::skip_test)) return true;
    if (!expanded || run.has(run_flag::stop_test) || abort_requested()) return false;
    if (out.empty()) continue;
    const bool sent = language.send(run, record, out);
    if (run.has(run_flag::skip_test)) return true;
    if (!sent) return false;
  }
  return true;
}

bool refuse_argument(RunState& run, const FscRecord& record, std::string_view argument) {
  return run_error(run, 30401, argument, fsc_name(fsc_ordinal(record.code())));
}

bool give_up(RunState& run) {
  run.set(run_flag::skip_test);
  return false;
}

bool wait_or_give_up(RunState& run, std::uint32_t milliseconds) {
  return pumping_wait(milliseconds) != WaitEnd::stopped || give_up(run);
}

bool eval_delay(RunState& run, const FscRecord& record, std::string_view argument) {
  const auto milliseconds = element_number(argument, 0, longest_delay);
  return milliseconds ? wait_or_give_up(run, *milliseconds) : refuse_argument(run, record, argument);
}

// --- Arguments -------------------------------------------------------------------------------------------------

std::optional<bool> on_or_off(std::string_view text) {
  if (same_word(text, "ON")) return true;
  if (same_word(text, "OFF")) return false;
  return std::nullopt;
}

std::optional<int> terminator_argument(std::string_view text, bool output) {
  for (const TerminatorName& row : terminator_names) {
    if (same_word(text, row.name) && (output || !row.output_only)) return row.value;
  }
  std::optional<std::uint32_t> byte = element_number(text, 0, 255);
  if (text.size() == 3 && text.front() == '\'' && text.back() == '\'')
    byte = static_cast<unsigned char>(text[1]);
  if (!byte || *byte == no_terminator) return std::nullopt;
  return static_cast<int>(*byte);
}

// --- Files -----------------------------------------------------------------------------------------------------

std::string bus_file_path(std::string_view name) {
  std::string path;
  if (name.find('\0') != std::string_view::npos ||
      !join_path(path, path_limit, startup_config().user_data_dir, name))
    return {};
  return path;
}

struct ReplyFile::Stream {
  std::string path;
  std::ofstream file;
};

ReplyFile::ReplyFile() = default;
ReplyFile::~ReplyFile() = default;

bool ReplyFile::open(RunState& run, const FscRecord& record, std::string_view argument) {
  const bool adds = argument.starts_with(">>");
  const std::string_view name =
      argument.starts_with('>') ? trim_blanks(argument.substr(adds ? 2 : 1)) : std::string_view();
  if (name.empty()) return refuse_argument(run, record, argument);
  stream_ = std::make_unique<Stream>();
  stream_->path = bus_file_path(name);
  if (stream_->path.empty()) return run_error(run, 30930, name);
  stream_->file.open(stream_->path, std::ios::binary | (adds ? std::ios::app : std::ios::trunc));
  return stream_->file.is_open() || run_error(run, 30930, stream_->path);
}

bool ReplyFile::add(RunState& run, std::string_view bytes) {
  if (!stream_) return true;
  stream_->file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  stream_->file.flush();
  return stream_->file.good() || run_error(run, 30931, stream_->path);
}

bool eval_output(RunState& run, const FscRecord& record, std::string_view argument,
                 const std::function<bool(std::string_view, bool)>& send) {
  const std::string_view name =
      argument.starts_with('<') ? trim_blanks(argument.substr(1)) : std::string_view();
  if (name.empty()) return refuse_argument(run, record, argument);
  const std::string path = bus_file_path(name);
  if (path.empty()) return run_error(run, 1920, name);
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) return run_error(run, 1920, path);
  std::string block(file_block, '\0');
  bool last = false;
  while (!last) {
    file.read(block.data(), static_cast<std::streamsize>(file_block));
    const auto count = static_cast<std::size_t>(file.gcount());
    last = file.peek() == std::ifstream::traits_type::eof();
    if (file.bad()) return run_error(run, 1921, path);
    if (count > 0 && !send(std::string_view(block).substr(0, count), last)) return false;
    if (pump_messages()) return give_up(run);
  }
  file.clear();
  file.close();
  return !file.fail() || run_error(run, 1922, path);
}

// --- Replies ---------------------------------------------------------------------------------------------------

namespace {

// In demonstration mode the operator types what the device would have answered.
bool demo_reply(RunState& run, const ReplySource& source, std::string& reply) {
  AskWindow window;
  window.title = "Operator Prompt";
  window.lines = {source.question(run)};
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  window.length = demo_reply_limit;
  const int code = platform().desk != nullptr ? platform().desk->ask(window, reply) : answer::failed;
  if (code == answer::ok) return true;
  return code == answer::failed ? run_error(run, 374) : give_up(run);
}

// Reads in pieces up to the reply's end. A file takes all of it; here one byte more than the limit is kept, to tell of
// a reply too long.
bool read_reply(RunState& run, const ReplySource& source, ReplyFile& file, std::string& reply) {
  constexpr std::size_t keep = RegisterFile::mem2_limit + 1;
  bool ended = false;
  for (bool first = true; !ended; first = false) {
    std::string piece;
    if (!source.read(run, piece, first, ended) || !file.add(run, piece)) return false;
    reply += piece.substr(0, keep - std::min(reply.size(), keep));
    if (pump_messages()) return give_up(run);
  }
  return true;
}

bool store_number(RunState& run, std::string_view reply) {
  const double value = number_in_reply(reply);
  if (!std::isfinite(value)) return floating_point_stop(run);
  run.registers.mem = value;
  return true;
}

bool store_text(RunState& run, const ReplySource& source, std::string_view reply) {
  if (reply.size() > RegisterFile::mem2_limit)
    return run_error(run, source.too_long, RegisterFile::mem2_limit);
  run.registers.mem2 = reply.substr(0, reply.find_first_of("\r\n"));
  return true;
}

}  // namespace

bool eval_input(RunState& run, const FscRecord& record, std::string_view argument, ReplyUse use,
                const ReplySource& source) {
  ReplyFile file;
  if (!argument.empty() &&
      (use == ReplyUse::number ? !file.open(run, record, argument) : !refuse_argument(run, record, argument)))
    return false;
  if (use == ReplyUse::text) run.registers.mem2.clear();
  if (!source.ready(run)) return false;
  std::string reply;
  if (!run.demo_mode) {
    if (!read_reply(run, source, file, reply)) return false;
  } else if (use != ReplyUse::discard) {  // nobody is asked for what nobody looks at
    if (!demo_reply(run, source, reply) || !file.add(run, reply)) return false;
  }
  if (source.keeps_block) run.read_block = reply.substr(0, read_block_limit);
  if (use == ReplyUse::discard || !argument.empty()) return true;
  return use == ReplyUse::text ? store_text(run, source, reply) : store_number(run, reply);
}

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

// --- State -----------------------------------------------------------------------------------------------------

PushedBusState::PushedBusState(RunState& run) : run_(run), ieee_(run.ieee), port_(run.port) {
  const IeeeState fresh;
  run.ieee.end = fresh.end;
  run.ieee.read_terminator = fresh.read_terminator;
  run.ieee.gap = fresh.gap;
  run.ieee.addressing = fresh.addressing;
  run.ieee.timeout = fresh.timeout;
  run.port.timeout = reset_timeout;
  run.port.input_terminator = run.port.output_terminator = PortState::start_terminator;
}

PushedBusState::~PushedBusState() {
  const auto used = run_.ieee.timeout;
  run_.ieee.current = ieee_.current;
  run_.ieee.saved = ieee_.saved;
  run_.ieee.end = ieee_.end;
  run_.ieee.read_terminator = ieee_.read_terminator;
  run_.ieee.gap = ieee_.gap;
  run_.ieee.addressing = ieee_.addressing;
  run_.ieee.timeout = ieee_.timeout;
  run_.port = std::move(port_);
  // A board whose time-out was changed meanwhile is not what is remembered of it.
  for (std::size_t board = 0; board < used.size(); ++board) {
    if (used[board]) run_.ieee.timeout[board].reset();
  }
}

}  // namespace orvane
