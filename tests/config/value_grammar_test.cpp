#include "config/value_grammar.h"

#include <gtest/gtest.h>

#include "config/key_table.h"

namespace orvane {
namespace {

constexpr double none = -99999;

TEST(ValueGrammar, AlternativesInOrder) {
  struct Case {
    const char *grammar, *text;
    double real, integer;  // what each form takes; none for nothing
  };
  const Case cases[] = {
      {"0-10, NONE:-1", "7", 7, 7},
      {"0-10, NONE:-1", "none", -1, -1},
      {"0-10, NONE:-1", "0", 0, 0},
      {"0-10, NONE:-1", "10", 10, 10},
      {"0-10, NONE:-1", "10.000001", none, none},
      {"0-10, NONE:-1", "2.5", 2.5, none},
      {"0-10, NONE:-1", "1e1", 10, none},
      {"0-10, NONE:-1", "+3", 3, none},
      {"0-10, NONE:-1", "-0", 0, 0},
      {"0-10, NONE:-1", "NONE ", none, none},
      {"0-10, NONE:-1", "", none, none},
      {"-1-100", "-1", -1, -1},
      {"-1-100", "-2", none, none},
      {"-1-100", "100", 100, 100},
      {"1E-20-1E-6", "1e-20", 1e-20, none},
      {"1E-20-1E-6", "1.1e-6", none, none},
      {"0.0000000000000001-0.00001", "1e-4", none, none},
      {"0.0000000000000001-0.00001", "0.00001", 1e-5, none},
      {"<5", "5", none, none},
      {"<5", "-32768", -32768, -32768},
      {"<=5", "5", 5, 5},
      {"> 5", "5", none, none},
      {">5", "32768", 32768, none},
      {">=5", "5", 5, 5},
      {"4, 6", "6", 6, 6},
      {"4, 6", "5", none, none},
      {"YES:1, 1:1, NO:0, 0:0", "Yes", 1, 1},
      {"YES:1, 1:1, NO:0, 0:0", "0", 0, 0},
      {"YES:1, 1:1, NO:0, 0:0", "01", none, none},
      {"YES:1, 1:1, NO:0, 0:0", "ye", none, none},
      {"+:1, YES:1, -:0, NO:0", "-", 0, 0},
      {"PC2B(T):10, AT-GPIB/TNT(PNP):14", "at-gpib/tnt(pnp)", 14, 14},
      {"0-100", "1x", none, none},
      {"0-100", "inf", none, none},
      {"0-100", "nan", none, none},
      {"0-100", "0x10", none, none},
      {"0-100", "1e999", none, none},
      {"0-100", "+-5", none, none},
      {"0-100", ".5", .5, none},
      {"0-100", "5.", 5, none},
      {"0-100", ".", none, none},
      {"0-100", "1e", none, none},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(value_by_grammar(c.grammar, c.text, NumberForm::real).value_or(none), c.real)
        << c.grammar << " | " << c.text;
    EXPECT_EQ(value_by_grammar(c.grammar, c.text, NumberForm::short_integer).value_or(none), c.integer)
        << c.grammar << " | " << c.text;
  }
}

// Each alternative of each row of the key table takes what it says itself: a typing error in a grammar shows
// here.
TEST(ValueGrammar, EveryGrammarOfTheKeyTableIsSound) {
  for (const KeyRow& row : config_keys()) {
    EXPECT_EQ((row.text != nullptr) + (row.real != nullptr) + (row.word != nullptr) + (row.parser != nullptr),
              1)
        << row.name;
    if (row.real == nullptr && row.word == nullptr) continue;
    const NumberForm form = row.real != nullptr ? NumberForm::real : NumberForm::short_integer;
    std::string_view rest = row.grammar;
    ASSERT_FALSE(rest.empty()) << row.name;
    while (!rest.empty()) {
      const std::size_t comma = std::min(rest.find(','), rest.size());
      const std::string_view alternative = trim(rest.substr(0, comma));
      rest.remove_prefix(std::min(comma + 1, rest.size()));
      const std::size_t colon = alternative.rfind(':');
      const std::size_t dash = alternative.find('-', alternative.find_first_of("-eE") == 0 ? 1 : 0);
      std::string first(alternative.substr(0, std::min(colon, alternative.size())));
      if (colon == std::string_view::npos && dash != std::string_view::npos &&
          first.find_first_of("eE") > dash)
        first = first.substr(0, dash);
      if (first.find("E-20") != std::string::npos) first = "1E-20";
      EXPECT_TRUE(value_by_grammar(row.grammar, first, form).has_value()) << row.name << ": " << first;
    }
  }
}

}  // namespace
}  // namespace orvane
