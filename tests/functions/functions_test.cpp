#include "functions/functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

#include "state/debug.h"
#include "support/math_desk.h"

namespace orvane {
namespace {

using Functions = test::MathTest;

struct NumberCase {
  const char* text;
  double value;
};
struct TextCase {
  const char* text;
  const char* value;
};
struct FaultCase {
  const char* text;
  int message;  // -1: the floating-point reason
};

TEST_F(Functions, Numbers) {
  const double pi = std::numbers::pi;
  const NumberCase cases[] = {
      {"abs(-2.5)", 2.5},
      {"sqrt(9)", 3},
      {"exp(1)", std::exp(1)},
      {"ln(2)", std::log(2)},
      {"log(1000)", 3},
      {"sin(1)", std::sin(1)},
      {"cos(1)", std::cos(1)},
      {"tan(1)", std::tan(1)},
      {"asin(1)", pi / 2},
      {"acos(1)", 0},
      {"atan(1)", pi / 4},
      {"sinh(1)", std::sinh(1)},
      {"cosh(1)", std::cosh(1)},
      {"tanh(1)", std::tanh(1)},
      {"ceil(-1.5)", -1},
      {"int(-1.5)", -2},
      {"int(1.9)", 1},
      {"rnd(-2.5)", -2},
      {"rnd(2.5)", 3},
      {"sgn(-3)", -1},
      {"sgn(0)", 0},
      {"deg(1)", 57.29577951308232},
      {"rad(180)", pi},
      {"degc(212)", 100},
      {"degf(100)", 212},
      {"pow(2,10)", 1024},
      {"dbmtow(30)", 1},
      {"wtodbm(1)", 30},
      {"dbmtov(0,50)", std::sqrt(0.05)},
      {"vtodbm(1,50)", 10 * std::log10(20)},
      {"dbtopctv(20)", 1000},
      {"dbtopctw(10)", 1000},
      {"pcttodbv(1000)", 20},
      {"pcttodbw(1000)", 10},
      {"frnd(123456,2)", 120000},
      {"frnd(123456,0)", 100000},
      {"frnd(1/3,99)", 0.3333333333333333},
      {"not(0)", 1},
      {"not(1e-300)", 0},
      {"max2(1,-2)", 1},
      {"min2(1,-2)", -2},
      {"rss2(3,4)", 5},
      {"rss3(2,3,6)", 7},
      {"bit(0,5)", 1},
      {"bit(1,5)", 0},
      {"bit(31,-1)", 1},
      {"bit(31,2147483647)", 0},
      {"bit(0,1e300)", 0},
      {"bit(2.9,4.9)", 1},
      {"bit(-0.5,1)", 1},
      {"sqrt(\"16 V\")", 4},
  };
  for (const NumberCase& c : cases)
    EXPECT_DOUBLE_EQ(number(c.text), c.value) << c.text << " " << desk.last_message();

  const FaultCase faults[] = {{"M[1]=sqrt(-1)", -1},
                              {"M[1]=ln(-1)", -1},
                              {"M[1]=log(0)", -1},
                              {"M[1]=acos(2)", -1},
                              {"M[1]=pow(0,-1)", -1},
                              {"M[1]=exp(710)", -1},
                              {"M[1]=sinh(1e3)", -1},
                              {"M[1]=rss2(1e200,0)", -1},
                              {"M[1]=rss3(0,0,1e200)", -1},
                              {"M[1]=wtodbm(-1)", -1},
                              {"M[1]=frnd(1.7976931348623157e308,1)", -1},
                              {"M[1]=dbmtow(1e5)", -1},
                              {"M[1]=vtodbm(0,50)", -1},
                              {"M[1]=bit(32,1)", 1894},
                              {"M[1]=bit(-1,1)", 1894}};
  for (const FaultCase& c : faults) {
    run.registers.m[1] = 5;
    EXPECT_EQ(message_of(c.text), c.message) << c.text;
    EXPECT_EQ(run.registers.m[1], 5) << c.text;
  }
}

TEST_F(Functions, RangesOfRegisters) {
  for (std::size_t i = 1; i <= 255; ++i) run.registers.m[i] = static_cast<double>(i);
  for (std::size_t i = 1; i <= 32; ++i) run.registers.l[i] = -static_cast<double>(i);
  const NumberCase cases[] = {
      {"sum(1,255)", 255 * 128},
      {"sum(4,4)", 4},
      {"sum_l(1,32)", -33 * 16},
      {"avg(2,4)", 3},
      {"avg(4,4)", 4},
      {"avg_l(2,4)", -3},
      {"max(2,9)", 9},
      {"max_l(2,9)", -2},
      {"min(2,9)", 2},
      {"min_l(2,9)", -9},
      {"min_l(33,255)", 0},
      {"min_l(32,33)", -32},
      {"rss(3,4)", 5},
      {"rss_l(3,4)", 5},
      {"rss_l(32,255)", 32},
      {"sdev(1,2)", std::sqrt(0.5)},
      {"sdev_l(1,2)", std::sqrt(0.5)},
      {"sum(1.9,2.9)", 3},
  };
  for (const NumberCase& c : cases)
    EXPECT_DOUBLE_EQ(number(c.text), c.value) << c.text << " " << desk.last_message();

  struct RangeFunction {
    const char* name;
    int limit, start_message, end_message;
  };
  const RangeFunction functions[] = {
      {"sum", 255, 999, 1000},  {"sum_l", 32, 977, 978},   {"avg", 255, 1872, 1873},
      {"avg_l", 32, 393, 394},  {"max", 255, 1874, 1875},  {"max_l", 32, 395, 396},
      {"min", 255, 1876, 1877}, {"min_l", 255, 397, 398},  {"rss", 255, 1938, 1939},
      {"rss_l", 255, 428, 429}, {"sdev", 255, 1878, 1878}, {"sdev_l", 32, 399, 399}};
  for (const RangeFunction& f : functions) {
    const auto message = [&](double a, double b) {
      return message_of("M[1]=" + std::string(f.name) + "(0+" + std::to_string(a) + "," + std::to_string(b) +
                        ")");
    };
    EXPECT_EQ(message(1, f.limit), 0) << f.name;
    EXPECT_EQ(message(1, f.limit + 1), f.end_message) << f.name;
    EXPECT_EQ(message(1, 0), f.end_message) << f.name;
    EXPECT_EQ(message(9, 0), f.end_message) << f.name;
    EXPECT_EQ(message(3, 2), f.start_message) << f.name;
    EXPECT_EQ(message(0, 2), f.start_message) << f.name;
    EXPECT_EQ(message(-5, 2), f.start_message) << f.name;
    EXPECT_EQ(message(1, 1e30), f.end_message) << f.name;
    EXPECT_EQ(message(4, 4), std::string_view(f.name).starts_with("sdev") ? f.start_message : 0) << f.name;
  }
  run.registers.m[1] = run.registers.m[2] = 1.7e308;
  EXPECT_EQ(message_of("M[3]=sum(1,2)"), -1);
  EXPECT_EQ(message_of("M[3]=rss(1,1)"), -1);
}

TEST_F(Functions, RegisterAccess) {
  EXPECT_EQ(number("mset(255,7)+mset(255,8)"), 7);
  EXPECT_EQ(number("mget(255)"), 8);
  EXPECT_EQ(number("mget(255.9)"), 8);
  EXPECT_EQ(number("lset(32,7)"), 0);
  EXPECT_EQ(number("lget(32)"), 7);
  EXPECT_EQ(text("sset(1,\"old\")"), "");
  EXPECT_EQ(text("sset(1,\"new\")"), "old");
  EXPECT_EQ(text("sget(1)&sget(2)"), "new");
  EXPECT_EQ(number("Null(sget(2))"), 1);
  const FaultCase cases[] = {{"M[1]=mget(0)", 10325},     {"M[1]=mget(256)", 10325},  {"mset(-1,1)", 10325},
                             {"M[1]=mget(65537)", 10325}, {"M[1]=lget(33)", 10326},   {"lset(0,1)", 10326},
                             {"S[1]=sget(33)", 10327},    {"sset(0,\"x\")", 10327},   {"sset(3,S[9])", 10328},
                             {"sset(40000,\"x\")", 513},  {"M[1]=mget(1e300)", 10325}};
  for (const FaultCase& c : cases) EXPECT_EQ(message_of(c.text), c.message) << c.text;
}

TEST_F(Functions, Texts) {
  run.registers.mem2 = "a,b;;c";
  const TextCase texts[] = {
      {"sub(\"abc\",3,10)", "c"},
      {"sub(\"abc\",1,2)", "ab"},
      {"fld(MEM2,1,\",\")", "a"},
      {"fld(MEM2,2,\",\")", "b;;c"},
      {"fld(MEM2,3,\",\")", ""},
      {"fld(MEM2,2,\";;\")", "c"},
      {"fld(MEM2,1,\"\")", "a,b;;c"},
      {"fld(\"\",1,\",\")", ""},
      {"repl(\"b\",\"xyz\",\"abcb\")", "axyzcb"},
      {"repl(\"q\",\"x\",\"abc\")", "abc"},
      {"repl(\"\",\"x\",\"abc\")", "abc"},
      {"repl(\"b\",\"\",\"abc\")", "ac"},
      {"pad(\"ab\",4)", "ab  "},
      {"padb(\"ab\",4)", "  ab"},
      {"pad(\"abc\",2)", "abc"},
      {"itoc(65)", "A"},
      {"itoc(300)", ""},
      {"itoc(-1)", ""},
      {"itoc(0)", ""},
      {"itoc(255)", "\xFF"},
      {"fmt(3.14159,\"%8.3f\")", "   3.142"},
      {"fmt(1234,\"%.2e\")", "1.23e+03"},
      {"fmt(1e-7,\"%G\")", "1E-07"},
      {"fmt(-2.5,\"%08.2f\")", "-0002.50"},
      {"fmt(.1,\"%.16f\")", "0.1000000000000000"},
      {"vers()", ORVANE_VERSION},
      {"pad(S[1],2)", "  "},
  };
  for (const TextCase& c : texts) EXPECT_EQ(text(c.text), c.value) << c.text << " " << desk.last_message();

  const NumberCase numbers[] = {
      {"len(\"abc\")", 3},
      {"len(S[1])", 0},
      {"len(pad(\"\",32767))", 32767},
      {"find(\"aaaa\",\"aa\",0)", 2},
      {"find(\"aaaa\",\"aa\",2)", 3},
      {"find(\"aaaa\",\"aa\",3)", 0},
      {"find(\"abc\",\"\",0)", 0},
      {"find(\"\",\"a\",0)", 0},
      {"find(\"abc\",\"C\",1)", 0},
      {"findi(\"abC\",\"Bc\",1)", 2},
      {"find(\"abc\",\"c\",-1)", 0},
      {"find(S[1],\"c\",0)", 0},
      {"ctoi(\"A\")", 65},
      {"ctoi(\"\\xFF\")", -1},
      {"ctoi(S[1])", 0},
      {"cmp(\"a\",\"a\")", 1},
      {"cmp(\"a\",\"b\")", -1},
      {"cmp(\"a\",\"A\")", -1},
      {"cmpi(\"a\",\"A\")", 1},
      {"zcmp(\"a\",\"b\")", 0},
      {"zcmp(S[1],\"\")", 1},
      {"zcmpi(\"aB\",\"Ab\")", 1},
      {"zcmpi(\"\\xE4\",\"\\xC4\")", 0},
      {"Empty(S[1])", 1},
      {"empty(\"\")", 1},
      {"Empty(\"x\")", 0},
      {"Null(S[1])", 1},
      {"null(\"\")", 0},
      {"Null(fld(\"a\",2,\",\"))", 1},
      {"is_num(\"-1.5e3\")", 1},
      {"is_num(\"1 \")", 0},
      {"is_num(\"\")", 0},
      {"is_num_lead(\"1V\")", 1},
      {"is_num_lead(\"V1\")", 0},
      {"is_num_sub(\"V1\")", 1},
      {"is_num_sub(\"V-\")", 0},
  };
  for (const NumberCase& c : numbers)
    EXPECT_EQ(number(c.text), c.value) << c.text << " " << desk.last_message();

  const FaultCase faults[] = {
      {"S[1]=sub(\"abc\",4,1)", 1867},
      {"S[1]=sub(\"\",1,1)", 1867},
      {"S[1]=sub(\"abc\",0,1)", 1867},
      {"S[1]=sub(\"abc\",1,0)", 1866},
      {"S[1]=sub(S[9],1,1)", 1868},
      {"S[1]=fld(\"a\",0,\",\")", 1859},
      {"S[1]=fld(S[9],1,\",\")", 1860},
      {"S[1]=fld(\"a\",1,S[9])", 1861},
      {"S[1]=repl(S[9],\"\",\"\")", 10313},
      {"S[1]=repl(\"\",S[9],\"\")", 10314},
      {"S[1]=repl(\"\",\"\",S[9])", 10312},
      {"S[1]=pad(\"a\",0)", 10309},
      {"S[1]=padb(\"a\",-1)", 10309},
      {"S[1]=pad(\"a\",32768)", 513},
      {"S[1]=pad(\"a\",-40000)", 513},
      {"S[1]=pad(\"a\",32767)&\"b\"", 1858},
      {"S[1]=repl(\"a\",\"bb\",padb(\"a\",32767))", 1858},
  };
  for (const FaultCase& c : faults) EXPECT_EQ(message_of(c.text), c.message) << c.text;
  for (const char* format :
       {"%d", "%", "", "f", "%123f", "%.17f", "%.f", "%5.", "%s", "%-5f", "%lf", "%%", "%12.16fx"})
    EXPECT_EQ(message_of("S[1]=fmt(1,\"" + std::string(format) + "\")"), 1862) << format;
  for (const char* format : {"%f", "%12.16g", "%.0E", "%00f", "%1.1G"})
    EXPECT_EQ(message_of("S[1]=fmt(1,\"" + std::string(format) + "\")"), 0) << format;
}

TEST_F(Functions, TextsWithUnits) {
  const NumberCase numbers[] = {
      {"base(\"10mV\")", 10 * 0.001},  {"base(\"3 V\")", 3},        {"pscale(\"10kOhm\")", 1000},
      {"pscale(\"10 V\")", 1},         {"is_dim(\"10mV\")", 1},     {"is_dim(\"mV\")", 0},
      {"is_dim(\"10 xyz\")", 0},       {"is_dim(\"\")", 0},         {"is_unit(\"10mV\",\"V\")", 1},
      {"is_unit(\"10mV\",\"mV\")", 0}, {"is_unit(\"mV\",\"V\")", 1}};
  for (const NumberCase& c : numbers)
    EXPECT_EQ(number(c.text), c.value) << c.text << " " << desk.last_message();
  const TextCase texts[] = {{"unit(\"10mV\")", "V"},
                            {"unit(\"5 kHz\")", "Hz"},
                            {"uprefix(\"10mV\")", "m"},
                            {"uprefix(\"10V\")", ""}};
  for (const TextCase& c : texts) EXPECT_EQ(text(c.text), c.value) << c.text << " " << desk.last_message();
  const FaultCase faults[] = {{"M[1]=base(\"abc\")", 10310},
                              {"M[1]=base(\"mV\")", 10311},
                              {"M[1]=pscale(\"V\")", 10311},
                              {"M[1]=pscale(S[1])", 10310},
                              {"S[2]=unit(\"10\")", 10310},
                              {"S[2]=uprefix(\"?\")", 10310},
                              {"M[1]=is_unit(\"10 xyz\",\"V\")", 10310},
                              {"M[1]=base(\"1e308YV\")", -1}};
  for (const FaultCase& c : faults) EXPECT_EQ(message_of(c.text), c.message) << c.text;
  EXPECT_EQ(message_of("M[1]=base(\"abc\")"), 10310);
  EXPECT_NE(desk.last_message().find("BASE: \"abc\""), std::string::npos) << desk.last_message();
}

TEST_F(Functions, TheRun) {
  run.procedure_name = "HP 34401A: 1 year CAL";
  run.adjust_threshold = 70;
  run.test.indicated = 9.5;
  const NumberCase numbers[] = {{"psub(\"34401\")", 1}, {"psub(\"hp\")", 0},    {"psubi(\"hp\")", 1},
                                {"psubi(\"cal\")", 1},  {"psubi(\"call\")", 0}, {"psub(\"\")", 1},
                                {"adjthr()", 70},       {"ui()", 9.5},          {"pass()", 1},
                                {"fail()", 0},          {"IsVar(\"x\")", 0},    {"IsVar(S[1])", 0}};
  for (const NumberCase& c : numbers) EXPECT_EQ(number(c.text), c.value) << c.text;
  EXPECT_EQ(text("proc()"), "HP 34401A: 1 year CAL");
  run.test.test_state |= test_bit::failed;
  EXPECT_EQ(number("pass()*10+fail()"), 1);
  EXPECT_TRUE(math("x=5"));
  EXPECT_EQ(number("IsVar(\"x\")"), 1);
  EXPECT_EQ(number("IsVar(\"X\")"), 0);
  EXPECT_EQ(text("del(\"x\")"), "5");
  EXPECT_EQ(number("Null(del(\"x\"))"), 1);
}

TEST_F(Functions, LinesOfFiles) {
  run.registers.mem2 = write("lines.txt", "one\ntwo\r\n\nfour");
  const TextCase cases[] = {{"read(MEM2,1)", "one"},  {"read(MEM2,2)", "two"}, {"read(MEM2,3)", ""},
                            {"read(MEM2,4)", "four"}, {"read(MEM2,5)", ""},    {"read(MEM2,2.9)", "two"},
                            {"read(MEM2,1)", "one"}};
  for (int round = 0; round < 2; ++round) {
    for (const TextCase& c : cases) EXPECT_EQ(text(c.text), c.value) << c.text;
  }
  EXPECT_EQ(number("Null(read(MEM2,5))"), 1);
  EXPECT_EQ(number("Null(read(MEM2,3))"), 0);
  EXPECT_EQ(number("Null(read(MEM2,4294967295))"), 1);

  // What is appended stands behind an unfinished last line, as in any editor; reading goes on at the right
  // place.
  EXPECT_TRUE(math("append(MEM2,\"!\");append(MEM2,\"five\")"));
  EXPECT_EQ(contents(run.registers.mem2), "one\ntwo\r\n\nfour!\nfive\n");
  EXPECT_EQ(text("read(MEM2,4)&read(MEM2,5)"), "four!five");
  EXPECT_EQ(number("Null(read(MEM2,6))"), 1);
  EXPECT_TRUE(math("append(MEM2,\"six\")"));
  EXPECT_EQ(text("read(MEM2,6)"), "six");

  write("lines.txt", "another file altogether\nx");
  EXPECT_EQ(text("read(MEM2,2)"), "x");

  const FaultCase faults[] = {{"S[1]=read(\"/no/such/file\",1)", 1773},
                              {"S[1]=read(S[9],1)", 1773},
                              {"S[1]=read(MEM2,0)", 1775},
                              {"S[1]=read(MEM2,0.9)", 1775},
                              {"S[1]=read(MEM2,4294967296)", 1774},
                              {"append(S[9],\"x\")", 2349},
                              {"append(\"\",S[9])", 2349},
                              {"append(\"/no/such/file\",\"x\")", 2350}};
  for (const FaultCase& c : faults) EXPECT_EQ(message_of(c.text), c.message) << c.text;
  EXPECT_EQ(message_of("append(\"\",S[9])"), 2349);
  EXPECT_NE(desk.of_kind("error").front().lines.front().find("<Null Line>"), std::string::npos);
  EXPECT_EQ(message_of("append(\"\",\"\")"), 2349);
  EXPECT_NE(desk.of_kind("error").front().lines.front().find("<Empty Line>"), std::string::npos);
  run.registers.mem2 = folder.string();
  EXPECT_EQ(message_of("S[1]=read(MEM2,1)"), 1776);
}

TEST_F(Functions, LongLinesAndManyFiles) {
  const std::string longest(32767, 'x');
  run.registers.mem2 = write("long.txt", longest + "\n" + longest + "y\nlast\n");
  EXPECT_EQ(text("read(MEM2,1)"), longest);
  EXPECT_EQ(message_of("S[1]=read(MEM2,2)"), 1858);
  EXPECT_EQ(text("read(MEM2,3)"), "last");

  // Every line of every file, in an order in which each file is left and met again.
  std::vector<std::string> paths;
  for (int f = 0; f < 20; ++f) {
    std::string lines;
    for (int i = 1; i <= 30; ++i) lines += std::to_string(f * 100 + i) + "\n";
    paths.push_back(write("f" + std::to_string(f), lines));
  }
  for (int i = 1; i <= 30; ++i) {
    for (int f = 0; f < 20; ++f) {
      run.registers.mem2 = paths[static_cast<std::size_t>(f)];
      ASSERT_EQ(text("read(MEM2," + std::to_string(i) + ")"), std::to_string(f * 100 + i));
    }
  }
}

TEST_F(Functions, QuestionsAboutPaths) {
  run.registers.mem2 = write("here", "12345");
  EXPECT_EQ(number("exists(MEM2)*100+IsDir(MEM2)*10+IsOrd(MEM2)"), 101);
  EXPECT_EQ(number("flen(MEM2)"), 5);
  run.registers.mem2 = folder.string();
  EXPECT_EQ(number("exists(MEM2)*100+IsDir(MEM2)*10+IsOrd(MEM2)"), 110);
  run.registers.mem2 += "/missing";
  EXPECT_EQ(number("exists(MEM2)+IsDir(MEM2)+IsOrd(MEM2)+flen(MEM2)"), -1);
}

TEST_F(Functions, TheTableIsChecked) {
  EXPECT_TRUE(math_functions_sound());
  std::string reason;
  const auto body = math_function_rows().front().body;
  const auto row = [body](const char* name, int signature = 1) {
    return MathFunctionRow{name, static_cast<Signature>(signature), 0, body};
  };
  const std::pair<std::vector<MathFunctionRow>, const char*> bad[] = {
      {{row("b"), row("a")}, "\"a\" stands out of order, or twice"},
      {{row("a"), row("A")}, "\"A\" stands out of order, or twice"},
      {{row("a"), row("b", 35)}, "\"b\" has an unknown signature"},
      {{row("b", 0)}, "\"b\" has an unknown signature"},
      {{row("1a")}, "\"1a\" is no name of a function"},
      {{row("mem1")}, "\"mem1\" is no name of a function"},
      {{{"a", Signature::gives_num, 2, body}}, "\"a\" has an unknown flag"},
      {{{"a", Signature::gives_num, 0, nullptr}}, "\"a\" has no body"},
  };
  for (const auto& [rows, expected] : bad) {
    EXPECT_FALSE(check_math_functions(rows, reason));
    EXPECT_EQ(reason, expected);
  }
  // Every row is found by its name, in any case.
  for (const MathFunctionRow& one : math_function_rows()) {
    std::string upper(one.name);
    for (char& c : upper) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c);
    run.clear(run_flag::run_active);
    std::string call = upper + "(";
    const int count = signature_shape(one.signature).count;
    for (int i = 0; i < count; ++i) call += i == 0 ? "1" : ",1";
    double value = 0;
    EXPECT_TRUE(math_eval_number(run, statement(""), call + ")", value)) << call;
    EXPECT_FALSE(math_eval_number(run, statement(""), call + (count == 0 ? "1)" : ",1)"), value)) << call;
  }
}

// Only while procedures are being tried out, which the debug letter a says.
TEST_F(Functions, SwitchesForTryingOutProcedures) {
  EXPECT_EQ(number("mcset(\"PTS Inhibit\") + mctest(\"PTS Inhibit\")"), 1);
  EXPECT_EQ(run.test_switches, 0u);
  set_debug_flags(debug_bit::api);
  EXPECT_EQ(number("mcset(\"PTS Inhibit\") + mctest(\"PTS Inhibit\")"), 2);
  EXPECT_EQ(run.test_switches, test_switch::inhibit_dialog);
  EXPECT_EQ(number("mctest(\"PTS ShowWindow\") + mctest(\"another\")"), 0);
  EXPECT_EQ(number("mcclr(\"PTS Inhibit\") + mctest(\"PTS Inhibit\")"), 1);
}

}  // namespace
}  // namespace orvane
