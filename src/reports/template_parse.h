// A template as tokens.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reports/template_engine.h"

namespace orvane {

enum class TokenKind : std::uint8_t { text, blanks, variable, function, newline, mark };

struct Token {
  TokenKind kind = TokenKind::newline;
  std::uint32_t index = 0;    // of a text, a variable, a function or a mark
  std::uint32_t columns = 0;  // that it takes in the template's line
};

/// A variable, and where its value is found.
struct TemplateVariable {
  enum class Place : std::uint8_t { run, line, line_1, line_2, standard };
  std::string name;
  Place place = Place::run;
  LineVariable line = LineVariable::count;
  int standard_field = 0;
  bool is_limit = false;
};

enum class FunctionKind : std::uint8_t { trace, trace_1, trace_2, split, subst, ldig, std, std_1, std_2 };

/// An argument: a variable or a text in double quotes.
struct Argument {
  bool is_variable = false;
  std::uint32_t variable = 0;
  std::string text;
};
struct FunctionCall {
  FunctionKind kind = FunctionKind::trace;
  std::vector<Argument> arguments;
  int number = 0;  // of LDIG$( and STD$(
  int fault = 0;   // the message of what is wrong behind the last argument; 0 if the call is whole
  int template_line = 0;
};

struct SectionMark {
  std::string name;  // empty: there was none
  std::optional<Section> section;
  std::size_t token = 0;  // of the mark
  int template_line = 0;
};

class Template {
 public:
  explicit Template(std::string_view text, std::string the_path = {});

  std::string template_path;  // for reports
  int lines = 0;
  std::vector<Token> tokens;
  std::vector<std::string> texts;
  std::vector<TemplateVariable> variables;
  std::vector<FunctionCall> functions;
  std::vector<SectionMark> marks;
  bool open_end = false;  // the last line has no end
};

/// The name of a section, "INSTR" and so on; "" of the top.
std::string_view section_name(Section section);

}  // namespace orvane
