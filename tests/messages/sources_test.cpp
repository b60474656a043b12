// Every number that the sources report has its text, and the text's directives fit the call's arguments.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "messages/catalogue.h"

namespace orvane {
namespace {

// A reporting function, and which of its arguments is the number; what follows are the message's arguments.
struct Reporter {
  const char* name;
  std::size_t number;
  bool packed;  // the arguments are a list of their own and are not counted
};
constexpr Reporter reporters[] = {{"run_error", 1, false}, {"run_report", 2, false}, {"errp", 0, false},
                                  {"msgp", 0, false},      {"warnp", 0, false},      {"msg", 0, false},
                                  {"yesnoph", 0, true},    {"okcanph", 0, true},     {"show_error", 0, true}};

std::string read(const std::filesystem::path& path) {
  std::ostringstream out;
  out << std::ifstream(path, std::ios::binary).rdbuf();
  return out.str();
}

std::vector<std::filesystem::path> sources() {
  std::vector<std::filesystem::path> found;
  for (const char* folder : {"/src", "/apps"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(std::string(ORVANE_SOURCE_DIR) + folder)) {
      if (entry.path().extension() == ".cpp" || entry.path().extension() == ".h") found.push_back(entry.path());
    }
  }
  return found;
}

// The top-level arguments of the call whose opening parenthesis stands at `open`; none if it does not close.
std::vector<std::string> arguments(const std::string& text, std::size_t open) {
  std::vector<std::string> list(1);
  int depth = 0;
  char quote = 0;
  for (std::size_t i = open; i < text.size(); ++i) {
    const char c = text[i];
    if (quote != 0) {
      if (c == '\\') list.back() += text[i++];
      if (c == quote) quote = 0;
    } else if (c == '"' || c == '\'') {
      quote = c;
    } else if (c == '(' || c == '{' || c == '[') {
      if (++depth == 1) continue;
    } else if (c == ')' || c == '}' || c == ']') {
      if (--depth == 0) return list;
    } else if (c == ',' && depth == 1) {
      list.emplace_back();
      continue;
    }
    list.back() += text[i];
  }
  return {};
}

std::size_t directives(std::string_view text) {
  std::size_t count = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != '%') continue;
    if (text[i + 1] != '%') {
      ++count;
      const std::size_t end = text.find_first_of("diuxXocsfFeEgG", i);
      count += static_cast<std::size_t>(std::count(text.begin() + static_cast<std::ptrdiff_t>(i),
                                                   text.begin() + static_cast<std::ptrdiff_t>(std::min(end, text.size())), '*'));
    }
    ++i;
  }
  return count;
}

// The numbers that an argument may stand for: a literal, or the branches of a condition.
std::vector<int> numbers(const std::string& argument) {
  static const std::regex literal(R"(^\s*(?:[^?]*\?)?\s*(\d{2,5})\s*(?::\s*(\d{2,5})\s*)?$)");
  std::smatch match;
  std::vector<int> found;
  if (!std::regex_match(argument, match, literal)) return found;
  for (std::size_t i = 1; i < match.size(); ++i) {
    if (match[i].matched) found.push_back(std::stoi(match[i]));
  }
  return found;
}

class MessageSources : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string reason;
    ASSERT_TRUE(catalogue_load(ORVANE_SOURCE_DIR "/messages/en.txt", reason)) << reason;
  }
};

TEST_F(MessageSources, EveryReportHasATextThatFitsItsArguments) {
  int calls = 0;
  for (const std::filesystem::path& path : sources()) {
    const std::string text = read(path);
    for (const Reporter& reporter : reporters) {
      const std::regex call("(?:^|[^A-Za-z0-9_])" + std::string(reporter.name) + R"(\s*\()");
      for (std::sregex_iterator at(text.begin(), text.end(), call), end; at != end; ++at) {
        const std::vector<std::string> given =
            arguments(text, static_cast<std::size_t>(at->position() + at->length() - 1));
        if (given.size() <= reporter.number) continue;
        for (const int number : numbers(given[reporter.number])) {
          ++calls;
          const std::string_view words = catalogue_text(number);
          const std::string where = path.filename().string() + ": message " + std::to_string(number);
          EXPECT_FALSE(words.empty()) << where << " has no text";
          if (words.empty() || reporter.packed) continue;
          EXPECT_EQ(directives(words), given.size() - reporter.number - 1) << where << ": " << words;
        }
      }
    }
  }
  EXPECT_GT(calls, 150) << "the calls were not found";
}

TEST_F(MessageSources, EveryTextIsUsed) {
  // The floating-point trap of 2501 is a test of results here; 7120 and 7121 label fields of other test windows.
  const std::set<int> reserved = {2501, 7120, 7121};
  std::set<int> literals;
  const std::regex number(R"((?:^|[^A-Za-z0-9_.])(\d{2,5})(?![A-Za-z0-9_.]))");
  for (const std::filesystem::path& path : sources()) {
    const std::string text = read(path);
    for (std::sregex_iterator at(text.begin(), text.end(), number), end; at != end; ++at)
      literals.insert(std::stoi((*at)[1]));
  }
  std::istringstream lines(read(ORVANE_SOURCE_DIR "/messages/en.txt"));
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || line[0] == '#') continue;
    const int one = std::stoi(line);
    EXPECT_TRUE(literals.count(one) != 0 || reserved.count(one) != 0) << "no source reports message " << one;
  }
}

}  // namespace
}  // namespace orvane
