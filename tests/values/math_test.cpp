#include "values/math/math.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <functional>
#include <random>

#include "support/math_desk.h"
#include "values/math/function_index.h"

namespace orvane {
namespace {

using MathLanguage = test::MathTest;

TEST_F(MathLanguage, Expressions) {
  struct Case {
    const char* text;
    double value;
  };
  const Case cases[] = {
      // precedence and association
      {"2+3*4", 14},
      {"(2+3)*4", 20},
      {"2^3^2", 64},
      {"2*3^2", 18},
      {"10-4-3", 3},
      {"100/10/5", 2},
      {"2-1+5", 6},
      {"1+2<4", 1},
      {"3<2<1", 1},
      {"1==1==1", 1},
      {"2*3==6&&1", 1},
      {"((7))", 7},
      // && and || share one level, from left to right, both sides always evaluated
      {"1||0&&0", 0},
      {"0&&0||1", 1},
      {"1||1&&0", 0},
      {"2&&-3", 1},
      {"0||0", 0},
      {"0&&(1/1)", 0},
      // signs belong to literals
      {"-3+5", 2},
      {"5--3", 8},
      {"5-+3", 2},
      {"5*-2", -10},
      {"(-2)^2", 4},
      {"-2^2", 4},
      {"+.5", 0.5},
      {"0--.5", 0.5},
      {"2^-1", 0.5},
      {"1<-1", 0},
      {"5 - - 3", 8},
      // literals
      {"12.", 12},
      {".25", 0.25},
      {"1e3", 1000},
      {"1.5E-3", 0.0015},
      {"1e-400", 0},
      {"00017", 17},
      {"123456789.5", 123456789.5},
      {"9999999999", 9999999999.0},
      {"1 2", 12},
      {"1 .\t5", 1.5},
      {"0001e2", 100},
      // comparisons
      {"1<2", 1},
      {"2<=2", 1},
      {"3>2", 1},
      {"2>=3", 0},
      {"2!=3", 1},
      {"2 < = 3", 1},
      {"\"10\"==\"10.0\"", 1},
      // blanks outside quotes mean nothing
      {" M [ 1 ] + 1 ", 8},
      {"m[001]", 7},
      {"me m", 3},
      {"ab s(-2)", 2},
      // registers and functions, in any case
      {"M[1]*MEM", 21},
      {"mem1", 4},
      {"L[32]", 5},
      {"l[1]", 0},
      {"ABS(-1)", 1},
      {"abs(-1)", 1},
      {"m[255]", 6},
      {"pow(1,-2)", 1},
      {"pow(+2,3)", 8},
      {"max2(1,abs(-2))+1", 3},
      {"adjthr()", 0},
  };
  run.registers.m[1] = 7;
  run.registers.m[255] = 6;
  run.registers.mem = 3;
  run.registers.mem1() = 4;
  run.registers.l[32] = 5;
  for (const Case& c : cases) {
    EXPECT_EQ(number(c.text), c.value) << c.text;
    EXPECT_TRUE(desk.shown.empty()) << c.text << ": " << desk.last_message();
  }
}

TEST_F(MathLanguage, NumbersInTexts) {
  struct Case {
    const char* text;
    std::optional<double> value;
  };
  const Case cases[] = {{"10.5 volts", 10.5}, {"U=-3", -3}, {"-  4", -4}, {"+\t.5x", 0.5}, {"x.5", 0.5},
                        {"1e3V", 1000},       {"abc", {}},  {"", {}},     {"- -4", {}},    {"--4", {}},
                        {"a-b5", {}},         {".", {}},    {"-", {}}};
  for (const Case& c : cases) {
    run.registers.mem2 = c.text;
    if (c.value) {
      EXPECT_EQ(number("MEM2+0"), *c.value) << c.text;
    } else {
      EXPECT_EQ(message_of("M[1]=MEM2"), 1864) << c.text;
      EXPECT_NE(desk.last_message().find("\"" + std::string(c.text) + "\""), std::string::npos)
          << desk.last_message();
    }
  }
}

TEST_F(MathLanguage, TextsAndLiterals) {
  const std::pair<const char*, const char*> cases[] = {
      {R"("a"&"b"&1)", "ab1"},
      {R"("x"&1/4)", "x0.25"},  // "/" binds tighter than "&"
      {R"(1&2+1)", "13"},       // "&" and "+" are one level: "12" + 1
      {R"(1+1&2)", "22"},
      {R"("a;b c"&" d")", "a;b c d"},
      {R"("q\"q\\")", "q\"q\\"},
      {R"("\n\N\r\R")", "\n\n\r\r"},
      {R"("\x41\X7a\x4")", "Azx4"},  // \x4 breaks the rule: the x itself
      {R"("\x00|\xg1")", "x00|xg1"},
      {R"("\065\255\256\000\300")",
       "A\xFF"
       "256000300"},
      {R"("\q\9")", "q9"},
      {R"("")", ""},
      {R"("\x4141")", "A41"},
      {R"(S[1]&"-")", "-"},  // NULL is the empty text
      {R"(1e20)", "1e+20"},
      {R"(1/3)", "0.3333333333333"},
      {R"(2/3*1e-7)", "6.666666666667e-08"},
      {R"(0-0)", "0"},
      {R"(" \" ; ")", " \" ; "},
  };
  for (const auto& [expression, expected] : cases) EXPECT_EQ(text(expression), expected) << expression;
  math_environment().conversion_precision = 4;
  EXPECT_EQ(text("2/3&\"\""), "0.6667");
  std::string cut;
  EXPECT_TRUE(math_eval_string(run, statement(""), "\"abcdef\"", 4, cut));
  EXPECT_EQ(cut, "abc");
}

TEST_F(MathLanguage, Targets) {
  EXPECT_TRUE(math("M[1]=2+3*4; MEM = M[1]*2;MEM1=3;L[3]=\"2.5x\"; S[1] = 1/3 ; MEM2=\"x\"&1/3;;  ;"));
  EXPECT_EQ(run.registers.m[1], 14);
  EXPECT_EQ(run.registers.mem, 28);
  EXPECT_EQ(run.registers.mem1(), 3);
  EXPECT_EQ(run.registers.l[3], 2.5);
  EXPECT_EQ(run.registers.s[1], "0.3333333333333");
  EXPECT_EQ(run.registers.mem2, "x0.3333333333333");

  EXPECT_TRUE(math("S[1]=\"a;b\"; S[2]=\"c\"; S[32]=S[1]&S[2]"));
  EXPECT_EQ(run.registers.s[32], "a;bc");
  EXPECT_TRUE(math("S[1]=S[1];S[2]=S[31];MEM2=S[31]"));  // S[31] was never set
  EXPECT_EQ(run.registers.s[1], "a;b");
  EXPECT_FALSE(run.registers.s[2]);
  EXPECT_EQ(run.registers.mem2, "");

  EXPECT_TRUE(math("S[3]=pad(\"x\",5000);MEM2=S[3]"));
  EXPECT_EQ(run.registers.mem2.size(), 4096u);
  EXPECT_TRUE(math("mset(3,1.5) ; LSET(2, 7);sset(4,\"t\")"));
  EXPECT_EQ(run.registers.m[3], 1.5);
  EXPECT_EQ(run.registers.l[2], 7);
  EXPECT_EQ(run.registers.s[4], "t");
  EXPECT_TRUE(desk.shown.empty()) << desk.last_message();
}

TEST_F(MathLanguage, Faults) {
  struct Case {
    const char* text;
    int message;
  };
  const std::string deep = "M[1]=" + [] {
    std::string text;
    for (int i = 0; i < 15; ++i) text += "1+(";
    return text + "1";
  }() + std::string(15, ')');
  const std::string long_name(33, 'n');
  const Case cases[] = {
      // 22: something is missing or does not fit
      {"M[1]=", 1854},
      {"M[1]=1+", 1854},
      {"M[1]=(1", 1854},
      {"M[1]=1 M[2]", 1854},
      {"M[1]=M[2]3", 1854},
      {"M[1]=(1)2", 1854},
      {"M[1]=()", 1854},
      {"M[1]=*2", 1854},
      {"M[1]=pow(1,+2)", 1854},
      {"M[1]=pow(1,)", 1854},
      {"M[1]=pow(,1)", 1854},
      {"M[1]=1)", 1854},
      {"M[1]=1=2", 1854},
      {"M[1]=1!2", 1854},
      {"M[1]=1|2", 1854},
      {"M[1]==2", 1854},
      {"M[1]=nosuch(1)", 1854},
      {"M[1]=x.5", 1854},
      {"M[1]=x\"a\"", 1854},
      {"M[1]=abs", 10322},
      {"M[1]=1,2", 1854},
      {"M[1]=2x", 1854},
      {"M[1]=MEM(1)", 1854},
      {"M[1]=#", 1854},
      {"M[1]=1\xB2", 1854},
      {"M[1]=\"a\"\"b\"", 1854},
      // 58: a comma or a closing parenthesis ends the text
      {"M[1]=1,", 1851},
      // 63, 62, 23, 24, 7
      {"M[1]=-M[2]", 1871},
      {"M[1]=1+-+2", 1871},
      {"M[1]=.", 1871},
      {"-M[1]=2", 1871},
      {"M[1]=abs(-x)", 1871},
      {"S[1]=\"abc", 1870},
      {"S[1]=\"abc\\\"", 1870},
      {"\"abc", 1870},
      {"M[0]=1", 1857},
      {"M[256]=1", 1857},
      {"S[33]=\"x\"", 1857},
      {"M[1000]=1", 1857},
      {"M[1]=M[MEM]", 1857},
      {"M[1]=L[33]", 1857},
      {"M[]=1", 1857},
      {"M[1=1", 1857},
      {"M[0001]=1", 1857},
      {"L[001]=1", 1857},
      {"M[-1]=1", 1857},
      {"M[1.0]=1", 1857},
      {"1=2", 1852},
      {"=2", 1852},
      {"(M[1])=2", 1852},
      {"abs(1)", 1852},
      {"\"a\"=1", 1852},
      {"abs(1)=2", 1852},
      {"nosuch(1)", 1852},
      {"x.y=1", 1852},
      {"+1=2", 1852},
      {"#", 1852},
      {"M[1]", 1853},
      {"x", 1853},
      {"M[1]+1=2", 1853},
      // 33
      {"M[1]=abs()", 1863},
      {"M[1]=abs(1,2)", 1863},
      {"M[1]=pass(1)", 1863},
      {"M[1]=pow(2)", 1863},
      // 36
      {deep.c_str(), 1865},
      // 14, and faults that say nothing of their own
      {"M[1]=1/0", 1856},
      {"M[1]=1/(2-2)", 1856},
      {"M[1]=1/(0-0)", 1856},
      {"M[1]=sqrt(-1)", -1},
      {"M[1]=exp(1000)", -1},
      {"M[1]=ln(0)", -1},
      {"M[1]=1e308*10", -1},
      {"M[1]=1e400", -1},
      {"M[1]=\"1e400\"", -1},
      {"M[1]=0^-1", -1},
      {"M[1]=(0-8)^.5", -1},
      {"mset(1,sqrt(-1))", -1},
      {"M[1]=1e308+1e308", -1},
      {"M[1]=1e-300/1e300", 0},
      // 34, 35, 64
      {"M[1]=\"abc\"", 1864},
      {"M[1]=abs(\"abc\")", 1864},
      {"M[1]=\"a\"+1", 1864},
      {"M[1]=S[1]", 1864},
      {"M[1]=novar", 10322},
      {"M[1]=mget(0)", 10325},
  };
  for (const Case& c : cases) {
    math_environment().open_parentheses = 0;
    run.registers.m[1] = 77;
    EXPECT_EQ(message_of(c.text), c.message) << c.text << " " << desk.last_message();
    if (c.message != 0) {
      EXPECT_EQ(run.registers.m[1], 77) << c.text;
    }
  }
  EXPECT_EQ(message_of("M[1]=" + long_name), 10324);
  EXPECT_EQ(message_of(long_name + "=1"), 10324);
  EXPECT_EQ(message_of(long_name.substr(1) + "=1"), 0);

  // The stack takes fifteen values.
  EXPECT_EQ(message_of("M[1]=1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1+(1))))))))))))))"), 0);
  EXPECT_EQ(run.registers.m[1], 15);
}

TEST_F(MathLanguage, OpenParenthesesOfAFailedStatementStillCount) {
  EXPECT_EQ(message_of("M[1]=1)"), 1854);  // nothing is open: the parenthesis does not fit
  EXPECT_EQ(message_of("M[1]=((1"), 1854);
  EXPECT_EQ(message_of("M[1]=(2)"), 0);
  EXPECT_EQ(message_of("M[1]=1)"), 1851);
  EXPECT_EQ(message_of("M[1]=1)x"), 1854);
  EXPECT_EQ(message_of("M[1]=1)"), 1854);
}

TEST_F(MathLanguage, MessagesShowWhatIsWrong) {
  const std::pair<const char*, const char*> cases[] = {{"M[1]=abs(1,2)", "\"abs\""},
                                                       {"M[1]=1+-M[2]*3", "\"-M[2]*3\""},
                                                       {"S[1]=\"a\"&\"bc", ": \"bc"},
                                                       {"M[1]=fmt(1,\"%d\")", "\"%d\""},
                                                       {"M[1]=len(sub(\"abc\",9,1))", "\"abc\""},
                                                       {"M[1]=x1", "\"x1\""}};
  for (const auto& [statement, shown] : cases) {
    EXPECT_NE(message_of(statement), 0);
    EXPECT_NE(desk.last_message().find(shown), std::string::npos) << desk.last_message();
  }
}

TEST_F(MathLanguage, EarlierPartsStayDone) {
  EXPECT_FALSE(math("M[1]=1;M[2]=1/0;M[3]=3"));
  EXPECT_EQ(run.registers.m[1], 1);
  EXPECT_EQ(run.registers.m[2], 0);
  EXPECT_EQ(run.registers.m[3], 0);
  EXPECT_TRUE(run.has(run_flag::stop_test));
}

TEST_F(MathLanguage, CallsThatStandAlone) {
  EXPECT_FALSE(math("mset(0,1)"));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{10325, 2035}));
  desk.shown.clear();
  EXPECT_FALSE(math("mset(1,1)x"));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{1854, 2035}));
  desk.shown.clear();
  // Their limit is that of an expression, blanks not counted: 56 characters.
  const std::string fits = "mset(1 , " + std::string(48, '1') + ")";
  EXPECT_TRUE(math(fits)) << desk.last_message();
  EXPECT_FALSE(math("mset(1," + std::string(49, '1') + ")"));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{1883, 2035}));
}

TEST_F(MathLanguage, AFunctionMayChangeWhatItWasGiven) {
  ASSERT_TRUE(math("S[1]=\"first value of sixteen and more\";x=S[1]&\"!\""));
  EXPECT_EQ(text("S[1]&sset(1,\"second\")&S[1]"),
            "first value of sixteen and morefirst value of sixteen and moresecond");
  EXPECT_EQ(text("sset(1,S[1]&S[1])"), "second");
  EXPECT_EQ(run.registers.s[1], "secondsecond");
  EXPECT_EQ(text("x&del(\"x\")"), "first value of sixteen and more!first value of sixteen and more!");
  EXPECT_EQ(number("M[1]+mset(1,5)+M[1]"), 5);
}

TEST_F(MathLanguage, ExpressionsOfOtherStatements) {
  double value = 1;
  const FscRecord record = statement("");
  EXPECT_EQ(number("1" + std::string(55, '0')), 1e55);
  EXPECT_TRUE(std::isnan(number("1" + std::string(56, '0'))));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1883});
  EXPECT_NE(desk.last_message().find("56"), std::string::npos);
  desk.shown.clear();
  EXPECT_FALSE(math_eval_number(run, record, {}, value));
  EXPECT_FALSE(math_eval_number(run, record, "1;2", value));
  EXPECT_FALSE(math_eval_number(run, record, "", value));
  EXPECT_TRUE(math_eval_number(run, record, " 4; ;", value));
  EXPECT_EQ(value, 4);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{1882, 1884, 1854}));

  // A text of the record itself, up to the record's last byte.
  FscRecord condition = fsc_record_new();
  ASSERT_TRUE(condition.set_text(field::block_text, "M[1]<3"));
  EXPECT_TRUE(math_eval_number(run, condition, condition.text(field::block_text), value));
  EXPECT_EQ(value, 1);
  for (std::size_t i = 0; i < field::text.size; ++i) condition.bytes[field::text.offset + i] = '1';
  EXPECT_FALSE(math_statement(run, condition));
  for (const char* text : {"7", "7 ", "7;"}) {
    condition.bytes[FscRecord::size - 1] = 0;
    const std::string_view tail(
        reinterpret_cast<const char*>(condition.bytes.data()) + FscRecord::size - std::strlen(text),
        std::strlen(text));
    std::memcpy(condition.bytes.data() + FscRecord::size - std::strlen(text), text, std::strlen(text));
    EXPECT_TRUE(math_eval_number(run, condition, tail, value)) << text;
    EXPECT_EQ(value, 7);
  }
}

TEST_F(MathLanguage, SyntaxCheckTouchesNothing) {
  run.clear(run_flag::run_active);
  run.set(run_flag::check_mode);
  EXPECT_TRUE(math("M[1]=\"abc\"; S[1]=novar&sqrt(-1)/0; mset(1,2);y=1e400; M[1]=abs(\"x\")+del(\"y\")"));
  EXPECT_EQ(run.registers.m[1], 0);
  EXPECT_FALSE(run.registers.s[1]);
  double value = 9;
  EXPECT_TRUE(math_eval_number(run, statement(""), "2+3", value));
  EXPECT_EQ(value, 0);
  std::string result = "old";
  EXPECT_TRUE(math_eval_string(run, statement(""), "\"x\"&1", 100, result));
  EXPECT_EQ(result, "");
  EXPECT_EQ(queue_peek(), nullptr);

  for (const char* bad : {"M[1]=1+", "M[1]=abs()", "M[256]=1", "mset(1)", "1=1"}) {
    queue_clear();
    EXPECT_FALSE(math(bad)) << bad;
    EXPECT_NE(queue_peek(), nullptr) << bad;
  }
  EXPECT_TRUE(desk.shown.empty());
}

double epsilon_in_test = 0;

TEST_F(MathLanguage, ComparisonsAllowForTheLargerOperand) {
  const auto compared = [this](double a, const char* op, double b) {
    run.registers.m[1] = a;
    run.registers.m[2] = b;
    return number("M[1]" + std::string(op) + "M[2]");
  };
  EXPECT_EQ(number("1==1.0000000000001"), 1);
  epsilon_in_test = 0;
  math_environment().epsilon = [](const RunState&) { return epsilon_in_test; };
  EXPECT_EQ(number("1==1.0000000000001"), 0);
  EXPECT_EQ(compared(1, "<", 1.0000000000001), 1);

  std::mt19937 random(5);
  std::uniform_real_distribution<double> spread(-3, 3);
  for (int i = 0; i < 2000; ++i) {
    epsilon_in_test = i % 4 == 0 ? 0 : 1e-9;
    const double a = std::ldexp(spread(random), static_cast<int>(random() % 20) - 10);
    const double b = i % 3 == 0 ? spread(random) : a * (1 + spread(random) * 1e-9);
    const double e = std::max(std::fabs(a), std::fabs(b)) * epsilon_in_test;
    const bool equal = b - e <= a && a <= b + e;
    ASSERT_EQ(compared(a, "<", b), a < b - e);
    ASSERT_EQ(compared(a, "<=", b), a <= b + e);
    ASSERT_EQ(compared(a, ">", b), a > b + e);
    ASSERT_EQ(compared(a, ">=", b), a >= b - e);
    ASSERT_EQ(compared(a, "==", b), equal);
    ASSERT_EQ(compared(a, "!=", b), !equal);
  }
}

// A second evaluator, by recursion on whole substrings: finds the last operator of the lowest level outside
// parentheses and splits there. Numbers, M registers and + - * / ^ < && || only.
double reference(const std::string& text, const RegisterFile& registers) {
  static const std::vector<std::vector<std::string>> levels = {
      {"&&", "||"}, {"<"}, {"+", "-"}, {"*", "/"}, {"^"}};
  for (const auto& level : levels) {
    int depth = 0;
    for (std::size_t i = text.size(); i-- > 1;) {
      if (text[i] == ')') ++depth;
      if (text[i] == '(') --depth;
      if (depth != 0 || !(isdigit(text[i - 1]) || text[i - 1] == ')' || text[i - 1] == ']')) continue;
      for (const std::string& op : level) {
        if (text.compare(i, op.size(), op) != 0) continue;
        const double a = reference(text.substr(0, i), registers),
                     b = reference(text.substr(i + op.size()), registers);
        switch (op[0]) {
          case '&': return a != 0 && b != 0;
          case '|': return a != 0 || b != 0;
          case '<': return a < b - std::max(std::fabs(a), std::fabs(b)) * 1e-13;
          case '+': return a + b;
          case '-': return a - b;
          case '*': return a * b;
          case '/': return a / b;
          default: return std::pow(a, b);
        }
      }
    }
  }
  if (text[0] == '(') return reference(text.substr(1, text.size() - 2), registers);
  if (text[0] == 'M') return registers.m[std::stoul(text.substr(2))];
  return std::stod(text);
}

TEST_F(MathLanguage, RandomExpressionsAgreeWithTheReference) {
  std::mt19937 random(7);
  for (std::size_t i = 1; i < 10; ++i) run.registers.m[i] = static_cast<double>(i) - 4.5;
  const std::function<std::string(int)> make = [&](int size) -> std::string {
    if (size <= 1) {
      switch (random() % 4) {
        case 0: return "M[" + std::to_string(1 + random() % 9) + "]";
        case 1: return "-" + std::to_string(random() % 90 + 1) + ".5";
        default: return std::to_string(random() % 20 + 1);
      }
    }
    const char* ops[] = {"+", "-", "*", "/", "^", "<", "&&", "||", "+", "*"};
    const int left = 1 + static_cast<int>(random() % static_cast<unsigned>(size - 1));
    std::string text = make(left) + ops[random() % 10] + make(size - left);
    return random() % 3 == 0 ? "(" + text + ")" : text;
  };
  int compared = 0;
  for (int i = 0; i < 30000; ++i) {
    const std::string text = make(1 + static_cast<int>(random() % 8));
    if (text.size() > math_expression_limit) continue;
    const double expected = reference(text, run.registers);
    desk.shown.clear();
    const double value = number(text);
    if (!std::isfinite(expected)) continue;  // how faults are told is another test's matter
    if (std::isnan(value)) continue;         // an inner fault that the reference computed past, as in 0/(1/0)
    ASSERT_EQ(value, expected) << text;
    ++compared;
  }
  EXPECT_GT(compared, 15000);
}

TEST_F(MathLanguage, StringRegistersForOthers) {
  EXPECT_TRUE(string_register_set(run, 31, "last"));
  EXPECT_EQ(text("S[32]"), "last");
  EXPECT_EQ(string_register_get(run, 31), "last");
  EXPECT_FALSE(string_register_get(run, 32));
  EXPECT_FALSE(string_register_get(run, -1));
  EXPECT_FALSE(string_register_set(run, 32, "x"));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1880});
  math_clear_strings(run);
  EXPECT_FALSE(string_register_get(run, 31));
}

TEST_F(MathLanguage, EveryCodeHasItsMessage) {
  const int numbers[] = {1937, 1897, 1899, 1896, 1898, 1858, 1853, 1872, 1873, 393,  394,  1894, 448,
                         1856, 1893, 1859, 1860, 1861, 1862, 1887, 1888, 1854, 1857, 1852, 1874, 1875,
                         395,  396,  1876, 1877, 397,  398,  1863, 1864, 0,    1865, 1889, 1890, 1892,
                         1891, 1895, 1938, 1939, 428,  429,  1878, 1878, 399,  399,  1855, 1866, 1867,
                         1868, 999,  1000, 977,  978,  1851, 2033, 2034, 1869, 1870, 1871, 2035};
  for (int code = 1; code <= 64; ++code) {
    desk.shown.clear();
    EXPECT_FALSE(math_report(run, statement(""), code, "the rest"));
    const int expected = numbers[code - 1];
    EXPECT_EQ(desk.message_numbers(), expected == 0 ? std::vector<int>() : std::vector<int>{expected})
        << code;
    if (expected != 0) {
      EXPECT_FALSE(catalogue_text(expected).empty()) << expected;
    }
  }
  desk.shown.clear();
  EXPECT_FALSE(math_report(run, statement(""), 999, ""));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1851});
}

}  // namespace
}  // namespace orvane
