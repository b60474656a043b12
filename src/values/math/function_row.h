// A function of MATH is one row: its name, what it takes and gives, and its body. The table stands in
// functions/ and is handed down at start-up.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "state/report.h"
#include "state/run_state.h"
#include "values/math/codes.h"

namespace orvane {

/// Arguments and result by code. An `int` is a number truncated towards zero to 16 bits (beyond them the
/// nearest 16-bit number); a checked one outside -32768 to 32767 is message 513.
enum class Signature : std::uint8_t {
  gives_num = 1,
  num_gives_num,
  num_num_gives_num,
  num_num_num_gives_num,
  num_int_gives_num,
  int_gives_num,
  int_num_gives_num,
  str_gives_num,
  str_str_num_gives_num,
  str_str_num_num_gives_num,
  gives_int,
  num_gives_int,
  int_gives_int,
  int_str_gives_int,
  str_gives_int,
  str_num_gives_int,
  str_str_gives_int,
  str_str_num_gives_int,
  str_str_int_gives_int,
  str_str_str_gives_int,
  str_str_str_str_gives_int,
  gives_str,
  num_gives_str,
  num_str_gives_str,
  int_gives_str,
  int_int_gives_str,
  checked_int_str_gives_str,
  str_gives_str,
  str_num_gives_str,
  str_checked_int_gives_str,
  str_int_int_gives_str,
  str_int_str_gives_str,
  str_str_gives_str,
  str_str_str_gives_str,
};
constexpr int signature_count = 34;

enum class ArgumentKind : std::uint8_t { none, num, integer, checked_integer, str };

struct SignatureShape {
  static constexpr int max_arguments = 4;
  int count = 0;
  ArgumentKind arguments[max_arguments] = {};
  bool gives_text = false;
};
extern const SignatureShape signature_shapes[signature_count + 1];  // by code
inline const SignatureShape& signature_shape(Signature signature) {
  return signature_shapes[static_cast<int>(signature)];
}

/// One cell of the value stack. A text may be NULL (no data), which stands for the empty text. A text is
/// borrowed from the statement, a register or a variable unless `owned`.
struct MathCell {
  double number;
  const char* data;
  std::uint32_t size;
  bool is_text;
  bool owned;

  std::string_view text() const { return {data, size}; }
};

/// A text that may be NULL.
using MathText = std::optional<std::string>;

struct MathFunctionRow;

/// One call of a function: its arguments, already of the kinds that the signature asks for, and its result.
struct MathCall {
  RunState& run;
  const FscRecord& record;
  const MathFunctionRow& row;
  const MathCell* arguments;

  double number = 0;           // the result of a function that gives a number
  MathText text = {};          // of one that gives a text; none is NULL
  int code = math_code::none;  // why it failed
  std::optional<std::string> note = {};

  double num(int i) const { return arguments[i].number; }
  int integer(int i) const { return static_cast<int>(arguments[i].number); }
  /// NULL counts as the empty text here.
  std::string_view str(int i) const { return arguments[i].text(); }
  bool null(int i) const { return arguments[i].data == nullptr; }

  // The ways to end a function: `return call.give(x);`
  bool give(double value) {
    number = value;
    return true;
  }
  bool give_truth(bool value) { return give(value ? 1.0 : 0.0); }
  bool give_text(std::string value) {
    text = std::move(value);
    return true;
  }
  bool give_null() { return true; }
  bool fail(int reason) {
    code = reason;
    return false;
  }
  /// Fails with the text that the message shows, in place of the rest of the statement.
  bool fail(int reason, std::string_view shown) {
    note = std::string(shown.substr(0, note_limit));
    return fail(reason);
  }
  /// Fails with a message of its own.
  template <class... A>
  bool report(int message, const A&... args) {
    run_report(run, record, message, args...);
    return fail(math_code::reported);
  }
  bool fault() { return fail(math_code::fault); }

  static constexpr std::size_t note_limit = 255;
};

namespace math_flag {
constexpr std::uint8_t none = 0x00;
/// May stand alone as a statement. Only such a function may change registers, string registers or variables.
constexpr std::uint8_t statement = 0x01;
}  // namespace math_flag

struct MathFunctionRow {
  std::string_view name;
  Signature signature;
  std::uint8_t flags;
  bool (*body)(MathCall& call);
};

}  // namespace orvane
