#include "console/answers.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "messages/encoding.h"
#include "platform/operator.h"

namespace orvane {
namespace {

struct WordRow {
  std::string_view word;
  int code;       // in every window but the test window
  int test_code;  // in the test window
};
constexpr WordRow word_rows[] = {
    {"ok", answer::ok, answer::ok},
    {"yes", answer::yes, answer::yes},
    {"no", answer::no, answer::no},
    {"terminate", answer::terminate, answer::terminate},
    {"cancel", answer::terminate, answer::test_cancel},
    {"continue", answer::test_continue, answer::test_continue},
    {"adjust", answer::test_adjust, answer::test_adjust},
    {"list", answer::test_list, answer::test_list},
    {"comment", answer::test_comment, answer::test_comment},
    {"repeat", answer::test_repeat, answer::test_repeat},
    {"settings", answer::test_settings, answer::test_settings},
    {"term", answer::test_term, answer::test_term},
};

std::string_view trim(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

template <class T>
bool whole_number(std::string_view text, T& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

// The rest of a line that begins with this word and a blank.
bool after_word(std::string_view line, std::string_view word, std::string_view& rest) {
  if (!line.starts_with(word) || line.size() <= word.size() || line[word.size()] != ' ') return false;
  rest = trim(line.substr(word.size() + 1));
  return true;
}

class Parser {
 public:
  explicit Parser(Answers& answers) : answers_(answers) {}

  // One line, not blank and no comment. Empty if it is sound, otherwise what is wrong.
  std::string line(std::string_view raw, int number) {
    const std::string_view text = trim(raw);
    std::string_view rest;
    if (after_word(text, "abort-at", rest)) return abort_at(rest);
    if (answers_.defaults_follow) return "\"*\" is the last line";
    if (after_word(text, "set", rest)) return field(rest);
    Answer answer;
    answer.line = number;
    if (text == "*") {
      answers_.defaults_follow = true;
      if (fields_.empty()) return {};
    }
    answer.fields = std::exchange(fields_, {});
    if (text == "*") return add(std::move(answer));  // by default, with fields
    if (raw.starts_with("=")) {
      answer.kind = Answer::Kind::text;
      answer.text = cp1252_from_either(raw.substr(raw.size() > 1 && raw[1] == ' ' ? 2 : 1));
      return add(std::move(answer));
    }
    if (after_word(text, "row", rest)) return row(std::move(answer), rest);
    return button(std::move(answer), text);
  }

  std::string finish() {
    std::sort(answers_.abort_at.begin(), answers_.abort_at.end());
    return fields_.empty() ? "" : "no answer follows the line \"set\"";
  }

 private:
  std::string add(Answer answer) {
    answers_.list.push_back(std::move(answer));
    return {};
  }

  std::string field(std::string_view rest) {
    const std::size_t equals = rest.find('=');
    if (equals == std::string_view::npos) return "\"set NAME = VALUE\" is expected";
    fields_.emplace_back(cp1252_from_either(trim(rest.substr(0, equals))),
                         cp1252_from_either(trim(rest.substr(equals + 1))));
    return {};
  }

  std::string abort_at(std::string_view rest) {
    std::uint64_t statement = 0;
    if (!whole_number(rest, statement) || statement == 0) return "\"abort-at\" takes a number from 1";
    answers_.abort_at.push_back(statement);
    return {};
  }

  std::string row(Answer answer, std::string_view rest) {
    if (!whole_number(rest, answer.row) || answer.row == 0) return "\"row\" takes a number from 1";
    --answer.row;
    answer.kind = Answer::Kind::row;
    return add(std::move(answer));
  }

  std::string button(Answer answer, std::string_view text) {
    if (text == "default" || text == "abort") {
      answer.kind = text == "abort" ? Answer::Kind::abort : Answer::Kind::by_default;
      return add(std::move(answer));
    }
    for (const WordRow& known : word_rows) {
      if (known.word != text) continue;
      answer.kind = Answer::Kind::word;
      answer.code = known.code;
      answer.test_code = known.test_code;
      return add(std::move(answer));
    }
    if (!whole_number(text, answer.code)) return "\"" + std::string(text) + "\" is no answer";
    answer.kind = Answer::Kind::code;
    answer.test_code = answer.code;
    return add(std::move(answer));
  }

  Answers& answers_;
  std::vector<std::pair<std::string, std::string>> fields_;
};

}  // namespace

const Answer* Answers::take() {
  static const Answer by_default{};
  if (next < list.size()) return &list[next++];
  return defaults_follow ? &by_default : nullptr;
}

bool parse_answers(std::string_view utf8, Answers& answers, std::string& reason) {
  answers = Answers();
  constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";
  if (utf8.starts_with(byte_order_mark)) utf8.remove_prefix(byte_order_mark.size());
  Parser parser(answers);
  int number = 0;
  while (!utf8.empty()) {
    const std::size_t end = utf8.find('\n');
    std::string_view line = utf8.substr(0, end);
    utf8 = end == std::string_view::npos ? std::string_view() : utf8.substr(end + 1);
    ++number;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (trim(line).empty() || line.front() == '#') continue;
    reason = parser.line(line, number);
    if (!reason.empty()) {
      reason = std::to_string(number) + ": " + reason;
      return false;
    }
  }
  reason = parser.finish();
  if (!reason.empty()) reason = std::to_string(number) + ": " + reason;
  return reason.empty();
}

}  // namespace orvane
