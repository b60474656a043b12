// Elements of the bus language that every kind of interface has: waits, replies, files, terminators. What an interface
// does of its own stands in bus_elements_ieee.h, port_statements.h and visa.h; each hands down its table of elements
// and how a text is sent.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "state/statement.h"
#include "text/expand.h"

namespace orvane {

/// What a statement offers: its elements, and how the text between them goes out (false after a report).
struct BusLanguage {
  std::span<const ElementAction> elements;
  bool (*send)(RunState& run, const FscRecord& record, std::string_view text);
};

/// Runs a text: sends and acts in the order in which it is written. False if it failed or the run stops; true as well
/// if the operator gave the test up in the middle of it.
[[nodiscard]] bool speak(RunState& run, const FscRecord& record, std::string_view text,
                         const BusLanguage& language);

/// Message 30401: the argument is none of this element. Returns false.
bool refuse_argument(RunState& run, const FscRecord& record, std::string_view argument);

/// The operator gives the test up. Returns false.
bool give_up(RunState& run);

/// A pumping wait. False if the operator gave up.
[[nodiscard]] bool wait_or_give_up(RunState& run, std::uint32_t milliseconds);

/// [D n]
bool eval_delay(RunState& run, const FscRecord& record, std::string_view argument);

// --- Arguments -------------------------------------------------------------------------------------------------

/// "ON" or "OFF"; nothing for any other text.
std::optional<bool> on_or_off(std::string_view text);

constexpr int no_terminator = 64;     // "NONE" and "OFF": the mark for reading to END
constexpr int line_terminator = 256;  // "CRLF"
/// The argument of [TERM x] or [OTERM x]: a number, a character in quotes, a name. A byte, or one of the two above;
/// nothing for any other text, and for the byte 64, which is the mark.
std::optional<int> terminator_argument(std::string_view text, bool output);

// --- Replies ---------------------------------------------------------------------------------------------------

enum class ReplyUse { number, text, discard };

/// Where an interface's replies come from.
struct ReplySource {
  int too_long;  // message, with the limit, of a reply that MEM2 does not hold
  /// Makes sure that there is a device. False after a report.
  bool (*ready)(RunState& run);
  /// What the operator is asked for in demonstration mode.
  std::string (*question)(const RunState& run);
  /// The next piece; at least one byte, or `ended`. False after a report.
  bool (*read)(RunState& run, std::string& piece, bool first, bool& ended);
  bool keeps_block;  // its replies stay in RunState::read_block
};

/// [I], [I$], [I!], [I > file], [I >> file]: reads a whole reply and puts it where it belongs.
[[nodiscard]] bool eval_input(RunState& run, const FscRecord& record, std::string_view argument, ReplyUse use,
                              const ReplySource& source);

/// The first number in a reply: everything before the first digit, sign or point is passed over, blanks may stand
/// behind a sign. 0 if there is none.
double number_in_reply(std::string_view reply);

// --- Files -----------------------------------------------------------------------------------------------------

/// Where a statement's file stands: a relative name joins the folder of the key "user_data_dir".
/// Empty for a name that holds a NUL or makes a path of 260 characters or more: such a file is never opened.
std::string bus_file_path(std::string_view name);

/// A file that takes bytes as they come. Its argument is "> name" or ">> name", which adds to what is there.
class ReplyFile {
 public:
  ReplyFile();
  ~ReplyFile();
  ReplyFile(const ReplyFile&) = delete;
  ReplyFile& operator=(const ReplyFile&) = delete;
  /// False after message 30401 or 30930.
  [[nodiscard]] bool open(RunState& run, const FscRecord& record, std::string_view argument);
  /// Without an open file there is nothing to do. False after message 30931.
  [[nodiscard]] bool add(RunState& run, std::string_view bytes);

 private:
  struct Stream;
  std::unique_ptr<Stream> stream_;
};

/// [O< file]: hands out the file in blocks; `send` is told which one is the last. 1920 not opened, 1921 not read, 1922
/// not closed.
[[nodiscard]] bool eval_output(RunState& run, const FscRecord& record, std::string_view argument,
                               const std::function<bool(std::string_view block, bool last)>& send);

// --- State -----------------------------------------------------------------------------------------------------

/// Puts the state of the statements aside and gives a fresh one, until it goes out of scope.
class PushedBusState {
 public:
  explicit PushedBusState(RunState& run);
  ~PushedBusState();
  PushedBusState(const PushedBusState&) = delete;
  PushedBusState& operator=(const PushedBusState&) = delete;

 private:
  RunState& run_;
  IeeeState ieee_;
  PortState port_;
};

/// Takes a stop flag down, so that a device can be asked why it failed; up again at the end of the scope.
class LiftedStop {
 public:
  explicit LiftedStop(RunState& run) : run_(run), was_set_(run.has(run_flag::stop_test)) {
    run.clear(run_flag::stop_test);
  }
  ~LiftedStop() {
    if (was_set_) run_.set(run_flag::stop_test);
  }
  LiftedStop(const LiftedStop&) = delete;
  LiftedStop& operator=(const LiftedStop&) = delete;

 private:
  RunState& run_;
  bool was_set_;
};

}  // namespace orvane
