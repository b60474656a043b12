#include "procedure/file/compile.h"

#include <random>

#include "procedure/file/compile_parts.h"
#include "procedure/file/field_codes.h"
#include "procedure/file/field_text.h"
#include "procedure/file/load.h"
#include "procedure/file/procedure_bytes.h"
#include "procedure/file/procedure_format.h"
#include "procedure/file/render.h"
#include "support/desk.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

const std::string header =
    "INSTRUMENT:            Test procedure\n"
    "ADJUSTMENT THRESHOLD:  70%\n"
    " STEP    FSC    RANGE NOMINAL        TOLERANCE     MOD1        MOD2  3  4 CON\n";
constexpr int header_lines = 3;

// A line from its fields: "column text" pairs, columns from 1 as people count.
std::string at(std::initializer_list<std::pair<std::size_t, std::string>> fields) {
  std::string line;
  for (const auto& [column, text] : fields) {
    line.resize(column - 1, ' ');
    line += text;
  }
  return line;
}
std::string statement(const std::string& number, const std::string& name, const std::string& text = {}) {
  return text.empty()
             ? at({{4 - std::min<std::size_t>(number.find('.'), 3), number}, {10, name}})
             : at({{4 - std::min<std::size_t>(number.find('.'), 3), number}, {10, name}, {23, text}});
}

// Compiles these lines behind the header; faults as "line:column: reason", lines counted from the first of these.
std::vector<std::string> faults_of(const std::vector<std::string>& lines, Procedure* into = nullptr) {
  std::string source = header;
  for (const std::string& line : lines) source += line + "\n";
  Procedure procedure;
  std::vector<CompileFault> faults;
  const bool ok = compile_procedure(source, into != nullptr ? *into : procedure, faults);
  EXPECT_EQ(ok, faults.empty());
  std::vector<std::string> texts;
  for (const CompileFault& fault : faults)
    texts.push_back(std::to_string(fault.line - header_lines) + ":" + std::to_string(fault.column) + ": " +
                    fault.reason);
  return texts;
}

const FscRecord& line_record(const Procedure& procedure, std::size_t index) {
  return *procedure.lines[index]->record;
}

std::uint16_t flags_of(const Procedure& procedure, std::size_t index) {
  return line_record(procedure, index).get(field::line_flags);
}

// --- One line that does not compile: where and why -----------------------------------------------------------

TEST(Compile, FaultsOfOneLine) {
  struct Case {
    std::string line;
    int column;
    const char* reason;
  };
  const auto x79 = std::string(79, 'x');
  const Case cases[] = {
      {statement("1.001", "DSIP", "a"), 10, "there is no statement \"DSIP\""},
      {"DISP hello", 1, "a statement's name begins in column 10, within an adjustment block in column 17"},
      {"DSIP hello", 1, "a statement's name begins in column 10, within an adjustment block in column 17"},
      {"1,001    DISP", 2, "a test number is written as 1.001"},
      {"1.1      DISP", 3, "a test number has three digits behind its point"},
      {"0.001    DISP", 1, "test numbers go from 1.000 to 32767.32767"},
      {"32768.001DISP", 1, "test numbers go from 1.000 to 32767.32767"},
      {"  1.001 DISP", 9, "a statement's name begins in column 10, within an adjustment block in column 17"},
      {"  1.001   DISP", 11,
       "a statement's name begins in column 10, within an adjustment block in column 17"},
      {"  1.001", 10, "a statement's name is missing"},
      {"  1.001  DISP  x", 16, "nothing stands between the name and column 17"},
      {"  1.001  DISP      x", 20, "nothing may stand here; the text begins in column 23"},
      {"  1.001  DISP         \x01", 23, "a control character"},
      {"# " + x79, 80, "the line is longer than 79 columns"},
      {statement("1.001", "DISP", x79), 80, "the line is longer than 79 columns"},
      {statement("1.001", "CALL"), 23, "the name of a procedure is missing"},
      {statement("1.001", "CALL", std::string(56, 'n')), 78, "a procedure's name has at most 55 characters"},
      {statement("1.001", "LABEL"), 23, "the name of the label is missing"},
      {statement("1.001", "LABEL", "two words"), 26, "a label is one word"},
      {statement("1.001", "JMPL", " x"), 24, "the label begins in column 23"},
      {statement("1.001", "JMPL", "nowhere M[1]"), 23, "there is no label \"NOWHERE\""},
      {statement("1.001", "JMP"), 23, "the test number of the target is missing"},
      {statement("1.001", "JMP", "1.1"), 25, "a test number has three digits behind its point"},
      {statement("1.001", "JMP", "9.001"), 23, "no line has this test number"},
      {at({{3, "1.001"}, {10, "JMP"}, {23, "1.001"}, {38, "PAST"}}), 38, "the condition is PASS or FAIL"},
      {at({{3, "1.001"}, {10, "JMP"}, {23, "1.001"}, {39, "PASS"}}), 39, "the condition begins in column 38"},
      {at({{3, "1.001"}, {10, "RPT"}, {23, "1.001"}, {38, "PASS"}}), 38, "RPT has no condition"},
      {at({{3, "1.001"}, {10, "JMPZ"}, {23, "1.001"}, {38, "0.1"}}), 40,
       "the tolerance is a number or an expression, and U"},
      {statement("1.001", "MEM+", "1.5V"), 23, "\"1.5V\" is no number"},
      {statement("1.001", "MEM+", "1e400"), 23, "the number is too large"},
      {at({{3, "1.001"}, {10, "MEME"}, {67, "<256"}}), 67, "the register is written as <1 or >1, up to 255"},
      {at({{3, "1.001"}, {10, "MEME"}, {23, "1"}, {67, "<1"}}), 67,
       "MEME has a number or a register, not both"},
      {at({{3, "1.001"}, {10, "ASK+"}, {17, "D"}}), 17, "the option D stands in column 19"},
      {at({{3, "1.001"}, {10, "ASK-"}, {17, "R E"}}), 19, "\"E\" is no option"},
      {statement("1.001", "CON", "+1,560"), 26, "switches are numbers of 1 to 559 with commas between them"},
      {statement("1.001", "CON", "+1,,2"), 26, "switches are numbers of 1 to 559 with commas between them"},
      {statement("1.001", "CON", "1234567890123456"), 23, "the number is too large"},
      {at({{3, "1.001"}, {10, "DRAW"}, {23, " 5  7 80"}, {52, "  1  2  3  4"}}), 31,
       "a number of 0 to 255 is missing"},
      {at({{3, "1.001"}, {10, "DRAW"}, {23, " 5  7 80 50"}, {52, "  1  2  3"}}), 61,
       "a number of 0 to 255 is missing"},
      {at({{3, "1.001"}, {10, "RNG"}, {23, "10kZ"}, {52, "DC"}}), 52, "only AC may stand here"},
      {statement("1.001", "ACCF", "NONE"), 23, "there is no statement \"NONE\""},
      {statement("1.001", "ACCF", "3458"), 38, "the file name, or *, is missing"},
      {statement("1.001", "TARGET", "-x"), 23, "the options are -m, -p or -m -p"},
      {statement("1.001", "END", "now"), 23, "nothing may stand here"},
      {statement("1.001", "IF"), 23, "the condition is missing"},
      {at({{3, "1.001"}, {10, "3458"}, {17, "10V"}}), 19, "RANGE is a number or A"},
      {at({{3, "1.001"}, {10, "3458"}, {17, "1000000"}}), 22, "RANGE has at most five characters"},
      {statement("1.001", "3458", "10.0"), 27, "the number has no unit"},
      {statement("1.001", "3458", "10.0Ohm"), 27, "\"Ohm\" is no unit"},
      {statement("1.001", "3458", "10.0fV"), 27, "\"fV\" is no unit"},
      {at({{3, "1.001"}, {10, "3458"}, {24, "10.0V"}}), 24, "NOMINAL begins in column 23"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "10.0V"}, {36, "12.5%"}}), 36, "TOLERANCE begins in column 38"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "1V"}, {38, "0.1"}}), 38,
       "a tolerance term ends in %, /, P%, P/ or U"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "1V"}, {38, "1% 2% 3% 4%"}}), 47,
       "a tolerance has at most three terms"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "1V"}, {38, "1% +-2U"}}), 41,
       "a tolerance term has one sign at most"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "1V"}, {38, "0.0050% 0.0010U"}}), 46,
       "a tolerance term ends in %, /, P%, P/ or U"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "1V"}, {38, "1% M256U"}}), 41,
       "a tolerance term ends in %, /, P%, P/ or U"},
      {at({{3, "1.001"}, {10, "MEMC"}, {23, "1V"}, {67, "x"}}), 67, "nothing may stand here"},
      {at({{3, "1.001"}, {10, "3458"}, {23, "1V"}, {67, "4Z"}}), 67, "\"4Z\" is no word of MOD2"},
      {at({{3, "1.001"}, {10, "3458"}, {23, "1V"}, {73, "X"}}), 73, "\"X\" is no word of MOD4"},
      {at({{3, "1.001"}, {17, "DISP"}, {23, "turn R5"}}), 17, "an adjustment block stands behind a test"},
      {at({{3, "1.001"}, {17, "EVAL"}}), 17, "EVAL cannot stand in an adjustment block"},
      {statement("1.001", "ELSE"), 10, "there is no IF that this line belongs to"},
      {statement("1.001", "UNTIL", "1"), 10, "there is no DO that this line belongs to"},
      {statement("1.001", "WHILE", "1"), 10, "the block is not closed: ENDW is missing"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(faults_of({c.line}),
              (std::vector<std::string>{"1:" + std::to_string(c.column) + ": " + c.reason}))
        << c.line;
}

TEST(Compile, FaultsOfSeveralLines) {
  EXPECT_EQ(faults_of({statement("1.001", "IF", "1"), statement("1.002", "WHILE", "1"),
                       statement("1.003", "ENDIF"), statement("1.004", "ENDW"), statement("1.005", "ELSE"),
                       statement("1.006", "ELSE"), statement("1.007", "ENDIF"),
                       statement("1.008", "LABEL", "A"), statement("1.009", "LABEL", "a"),
                       statement("1.010", "JMP", "8.888"), statement("1.011", "NONE")}),
            (std::vector<std::string>{
                "3:10: there is no IF that this line belongs to: the block of line 5 waits for its ENDW",
                "6:10: the ELSE in line 8 is the last part of its block",
                "9:23: the label stands in line 11 already", "10:23: no line has this test number",
                "11:10: there is no statement \"NONE\""}));
  std::vector<std::string> lines(33, statement("1.001", "DISP", "x"));
  EXPECT_EQ(faults_of(lines), std::vector<std::string>{"33:10: the statement has more than its 32 lines"});
  lines.assign(256, "# comment");
  lines.push_back(statement("1.001", "END"));
  EXPECT_EQ(faults_of(lines),
            std::vector<std::string>{"257:1: more than 255 comment lines stand before this line"});
}

TEST(Compile, HeaderFaults) {
  struct Case {
    std::string source;
    const char* fault;
  };
  const std::string name = "INSTRUMENT:            A\n";
  const Case cases[] = {
      {"", "1:1: the line \"INSTRUMENT:\" with the procedure's name is missing"},
      {"DATE:   x\n", "1:1: the line \"INSTRUMENT:\" with the procedure's name is missing"},
      {"INSTRUMENT:\n", "1:24: the procedure's name is missing"},
      {"INSTRUMENT:            " + std::string(56, 'n'),
       "1:79: a procedure's name has at most 55 characters"},
      {name + "ADJUSTMENT THRESHOLD:  much", "2:24: the threshold is a number of percent"},
      {name + "DATE: " + std::string(57, 'd'), "2:63: a header text has at most 56 characters"},
      {name + "CONFIGURATION:         HP 3458A; HP 1", "2:34: \"HP 1\" is no instrument"},
      {name + "CONFIGURATION:         HP 3458A/17", "2:33: an option is a number of 1 to 16"},
      {name + "CONFIGURATION:         #0", "2:24: \"#0\" is no instrument"},
      {name + "CONFIGURATION:         #1 (#2|#3", "2:33: \")\" is missing"},
  };
  for (const Case& c : cases) {
    Procedure procedure;
    std::vector<CompileFault> faults;
    EXPECT_FALSE(compile_procedure(c.source, procedure, faults)) << c.source;
    ASSERT_EQ(faults.size(), 1U) << c.source;
    EXPECT_EQ(
        std::to_string(faults[0].line) + ":" + std::to_string(faults[0].column) + ": " + faults[0].reason,
        c.fault);
    EXPECT_EQ(procedure.head, nullptr);
  }
}

// --- What the compiler adds to the lines ---------------------------------------------------------------------

TEST(Compile, HeaderFacts) {
  Procedure procedure;
  std::vector<CompileFault> faults;
  ASSERT_TRUE(
      compile_procedure("instrument: A name  \r\n"
                        "CONFIGURATION:         HP 3458A/1/3, hp 34401a; HP 3458A/16\n"
                        "  more text of the header\n"
                        "CONFIGURATION:         #24 (Agilent E4412A/2 | #132)\n"
                        "====\n"
                        "# comment\n"
                        "\tSTEP  FSC\n"
                        "=====\n"
                        "\n"
                        "plain text\n"
                        "  1.001  END\n",
                        procedure, faults))
      << faults[0].reason;
  EXPECT_EQ(procedure.name, "A name");
  EXPECT_EQ(procedure.flags, procedure_flag::loaded | procedure_flag::required);
  const RequiredInstruments& table = *procedure.required;
  ASSERT_EQ(table.count, 3);
  EXPECT_EQ(table.entries[0].instrument, 1);
  EXPECT_EQ(table.entries[0].option_mask, 0x8005);
  EXPECT_EQ(table.entries[1].instrument, 38);
  EXPECT_EQ(table.entries[2].instrument, 24);
  EXPECT_EQ(table.entries[2].alternatives[0].option, 131);
  EXPECT_EQ(table.entries[2].alternatives[0].option_mask, 2);
  EXPECT_EQ(table.entries[2].alternatives[1].option, 132);

  std::vector<std::pair<int, int>> codes;  // code, flags beyond those of every record
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next)
    codes.emplace_back(node->record->get(field::code), node->record->get(field::line_flags) & ~0x1003);
  EXPECT_EQ(codes, (std::vector<std::pair<int, int>>{{1029, 0},
                                                     {1036, 0},
                                                     {1027, 0},
                                                     {1036, 0},
                                                     {1028, 0},
                                                     {0x100, 0},
                                                     {1037, 0},
                                                     {1028, 0},
                                                     {0, 0x800},
                                                     {0, 0},
                                                     {fsc::end, 0x30}}));
  EXPECT_EQ(render_record(*procedure.head->record), "INSTRUMENT:            A name");
}

TEST(Compile, StatementsAndTheirFlags) {
  Procedure procedure;
  const std::vector<std::string> lines = {statement("1.001", "DISP", "a"),
                                          "# between",
                                          statement("1.001", "DISP", "b"),
                                          "",
                                          statement("1.001", "DISP", "c"),
                                          statement("1.002", "DISP", "d"),
                                          statement("1.003", "MATH", "M[1] = 1"),
                                          statement("1.003", "MATH", "M[1] = 2"),
                                          at({{3, "2.001"}, {10, "MEMC"}, {23, "1V"}, {38, "1%"}}),
                                          "# adjust",
                                          at({{17, "DISP"}, {23, "turn"}}),
                                          at({{17, "MESS"}, {23, "more"}}),
                                          at({{3, "2.002"}, {10, "3458"}, {23, "1V"}, {73, "N"}}),
                                          at({{3, "2.003"}, {10, "3458"}, {23, "1V"}, {73, "C"}}),
                                          statement("2.004", "PICE", "a"),
                                          statement("2.004", "PICE", "b"),
                                          at({{17, "DISP"}, {23, "turn"}})};
  ASSERT_EQ(faults_of(lines, &procedure), std::vector<std::string>{});
  constexpr int base = 0x1003;
  const int expected[] = {base | 0x810, base | 0x200, base | 0x220, base | 0x30, base | 0x30,
                          base | 0x30,  base | 0x170, base | 0x38,  base | 0x38, base | 0x30,
                          base | 0x70,  base | 0x150, base | 0x360, base | 0x38};
  ASSERT_EQ(procedure.lines.size(), std::size(expected));
  for (std::size_t i = 0; i < std::size(expected); ++i)
    EXPECT_EQ(flags_of(procedure, i), expected[i]) << render_record(line_record(procedure, i));
  EXPECT_EQ(line_record(procedure, 1).get(field::listing_before), 1);
  EXPECT_EQ(statement_line_count(*procedure.lines[0]), 3);
  EXPECT_EQ(procedure.listing_count, 2);
  EXPECT_EQ(procedure.main_count, 18);
}

TEST(Compile, BranchTargets) {
  Procedure procedure;
  ASSERT_EQ(
      faults_of({statement("1.001", "DO"), statement("1.002", "IF", "1"), statement("1.003", "IF", "2"),
                 statement("1.004", "ELSE"), statement("1.005", "ENDIF"), statement("1.006", "ELSEIF", "3"),
                 statement("1.007", "WHILE", "4"), statement("1.008", "ENDW"), statement("1.009", "ELSE"),
                 statement("1.010", "ENDIF"), statement("1.011", "UNTIL", "5"),
                 statement("1.012", "JMP", "1.014"), statement("1.013", "JMPL", "here M[1]"),
                 statement("1.014", "DISP", "a"), statement("1.014", "DISP", "b"),
                 statement("1.015", "LABEL", "HERE"), statement("1.016", "RPT", "1.001")},
                &procedure),
      std::vector<std::string>{});
  const std::pair<int, int> links[] = {{1, 5}, {2, 3},  {3, 4},   {5, 8},   {6, 7}, {7, 6},
                                       {8, 9}, {10, 0}, {11, 13}, {12, 15}, {16, 0}};
  for (const auto& [from, to] : links) {
    const FscRecord& record = line_record(procedure, static_cast<std::size_t>(from));
    EXPECT_EQ(record.get(branch_index_field(record.get(field::code))), to) << render_record(record);
    EXPECT_EQ(procedure.branch_target(*procedure.lines[static_cast<std::size_t>(from)]),
              procedure.lines[static_cast<std::size_t>(to)]);
  }
}

TEST(Compile, LongProcedures) {
  std::vector<std::string> lines(32767, statement("1.001", "MATH", "x"));
  lines.push_back(statement("2.001", "MATH", "the last one in reach"));
  lines.push_back(statement("2.002", "JMP", "2.001"));
  EXPECT_EQ(faults_of(lines), std::vector<std::string>{});
  lines.insert(lines.begin(), statement("1.001", "MATH", "x"));
  EXPECT_EQ(
      faults_of(lines),
      std::vector<std::string>{"32770:23: the target in line 32772 lies behind the 32,768th statement line; "
                               "branches reach no further"});
  lines.assign(65536 - header_lines, "  1.001  MATH");
  EXPECT_EQ(faults_of(lines).size(), 1U);
  lines.pop_back();
  EXPECT_EQ(faults_of(lines), std::vector<std::string>{});
}

// --- There and back ------------------------------------------------------------------------------------------

class RoundTrip : public ::testing::Test {
 protected:
  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }
  bool chance() { return number(0, 1) == 1; }
  template <class T>
  T one_of(std::initializer_list<T> values) {
    return *(values.begin() + number(0, static_cast<int>(values.size()) - 1));
  }

  std::string text(int limit) {
    std::string made(static_cast<std::size_t>(number(0, limit)), ' ');
    for (char& c : made) {
      do c = static_cast<char>(number(0x20, 0xFF));
      while (c == '\x7F');
    }
    return made.substr(0, made.find_last_not_of(' ') + 1);
  }
  std::string word(int limit) {
    std::string made(static_cast<std::size_t>(number(1, limit)), ' ');
    for (char& c : made) c = static_cast<char>(number('!', '~'));
    return made;
  }

  // A number as it may be typed, in the form in which it is shown again.
  struct Typed {
    double value = 0;
    std::uint8_t digits = 0;
    bool exponent = false;
  };
  Typed typed(int whole, int decimals) {
    std::string digits = std::to_string(number(1, 9));
    for (int i = 1; i < whole; ++i) digits += static_cast<char>(number('0', '9'));
    if (decimals > 0) digits += '.';
    for (int i = 0; i < decimals; ++i) digits += static_cast<char>(number('0', '9'));
    Typed made;
    made.exponent = whole == 1 && number(0, 3) == 0;
    if (made.exponent) digits += "e" + std::to_string(number(-9, 9));
    number_digits(digits, made.digits);
    EXPECT_EQ(scan_number(digits, made.value), digits.size());
    return made;
  }
  RangeField range() {
    switch (number(0, 2)) {
      case 0: return {};
      case 1: return {.flags = RangeField::filled | RangeField::automatic, .digits = 0, .value = 0};
      default: break;
    }
    const Typed made = typed(1, 0);
    return {.flags = static_cast<std::uint8_t>(RangeField::filled | RangeField::number |
                                               (made.exponent ? RangeField::exponent : 0)),
            .digits = made.digits,
            .value = made.value};
  }
  template <class Quantity>
  Quantity quantity() {
    Quantity made;
    if (number(0, 3) == 0) return made;
    do made.unit = static_cast<std::uint8_t>(number(1, 71));
    while (!unit_listing_token(made.unit));
    made.prefix = one_of<PrefixCode>({1, 1, 2, 3, 4, 5, 6, 7, 8, 17});
    // "m" and the token "Hg" and their like are units of their own.
    std::uint8_t prefix = 0, unit = 0;
    if (!unit_from_text(unit_text(made.prefix, made.unit), prefix, unit) || unit != made.unit ||
        prefix != made.prefix)
      made.prefix = prefix_code::none;
    if (chance()) {
      made.flags = Quantity::from_mem;
    } else {
      const Typed one = typed(number(1, 3), number(0, 2));
      made.flags = one.exponent ? Quantity::exponent : std::uint8_t{0};
      made.digits = one.digits;
      made.value = one.value;
    }
    return made;
  }
  // At most as long as its columns.
  ToleranceField tolerance() {
    for (;;) {
      const ToleranceField made = any_tolerance();
      if (tolerance_text(made).size() <= 14) return made;
    }
  }
  ToleranceField any_tolerance() {
    ToleranceField made;
    if (number(0, 5) == 0) {
      made.flags = ToleranceField::latest_tol;
      return made;
    }
    made.count = static_cast<std::uint8_t>(number(0, 3));
    for (std::size_t i = 0; i < made.count; ++i) {
      ToleranceTerm& term = made.terms[i];
      term.kind = static_cast<std::uint8_t>(one_of<int>({1, 2, 3}) | one_of<int>({36, 20, 40, 24, 12}));
      switch (number(0, 3)) {
        case 0:
          term.kind |= ToleranceTerm::memory;
          term.digits_or_index = static_cast<std::uint8_t>(number(0, 9));
          break;
        case 1:
          term.kind |= ToleranceTerm::location;
          term.digits_or_index = static_cast<std::uint8_t>(number(1, 9));
          break;
        default:
          term.digits_or_index = 0x10;
          term.value = number(1, 9);
          break;
      }
    }
    return made;
  }

  static void put(FscRecord& record, TextField where, std::string_view made) {
    EXPECT_TRUE(record.set_text(where, made));
  }
  // The record must come back from its line; and the line from the record.
  void expect_same(const FscRecord& record) {
    const std::string line = render_record(record);
    compiling::SourceLine source(line);
    FscRecord back = fsc_record_new();
    ASSERT_TRUE(compiling::read_statement(source, back)) << line << "\n"
                                                         << source.fault().offset << source.fault().reason;
    EXPECT_EQ(render_record(back), line);
    EXPECT_EQ(back.bytes, record.bytes) << line;
  }
  FscRecord statement_record(std::uint16_t code) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    record.set(field::line_flags, line_flag::unused_set | line_flag::columns);
    if (chance()) {
      record.set(field::test_major, static_cast<std::int16_t>(number(1, 9999)));
      record.set(field::test_minor, static_cast<std::int16_t>(number(0, 999)));
    }
    return record;
  }

  static constexpr int rounds = 300;
  std::mt19937 random{20240501};
};

TEST_F(RoundTrip, Texts) {
  for (int i = 0; i < rounds; ++i) {
    for (const std::uint16_t code :
         {fsc::disp, fsc::math, fsc::wait, fsc::pice, fsc::endif, fsc::do_, fsc::tol, fsc::fmt, fsc::cmp,
          fsc::else_, fsc::endw, fsc::n5531, fsc::est1}) {
      FscRecord record = statement_record(code);
      const TextField where = (code & code_class::branching) != 0                        ? field::block_text
                              : code == fsc::tol || code == fsc::fmt || code == fsc::cmp ? field::text_14
                              : code == fsc::n5531 || code == fsc::est1 ? field::parameter_text
                                                                        : field::text;
      put(record, where, text(57));
      expect_same(record);
    }
    FscRecord eval = statement_record(fsc::eval);
    put(eval, field::text, text(63));
    expect_same(eval);
    FscRecord call = statement_record(fsc::call);
    put(call, field::text, word(55));
    expect_same(call);
    FscRecord label = statement_record(fsc::label);
    put(label, field::text_14, word(57));
    expect_same(label);
    FscRecord jmpl = statement_record(fsc::jmpl);
    put(jmpl, field::jmpl_text, word(10) + " " + word(40));
    expect_same(jmpl);
    FscRecord until = statement_record(fsc::until);
    put(until, field::block_text, "M[1] > " + word(50));
    expect_same(until);
  }
}

TEST_F(RoundTrip, FlowAndRegisters) {
  for (int i = 0; i < rounds; ++i) {
    for (const std::uint16_t code : {fsc::jmp, fsc::jmpt, fsc::jmpf, fsc::jmpz, fsc::rpt}) {
      FscRecord record = statement_record(code);
      record.set(field::jmp_target_major, static_cast<std::int16_t>(number(1, 32767)));
      record.set(field::jmp_target_minor, static_cast<std::int16_t>(number(0, 32767)));
      if (code == fsc::jmp) record.set(field::jmp_condition, static_cast<std::uint8_t>(number(0, 2)));
      if (code == fsc::jmpt || code == fsc::jmpf) put(record, field::jmp_text, chance() ? word(42) : "");
      if (code == fsc::jmpz && chance())
        record.set(field::jmp_tolerance, typed(2, 3).value);
      else if (code == fsc::jmpz && chance())
        put(record, field::jmp_text, "M[" + word(38) + "]");
      expect_same(record);
    }
    FscRecord operand = statement_record(
        one_of<std::uint16_t>({fsc::mem_plus, fsc::mem_minus, fsc::mem_times, fsc::mem_divide, fsc::meme}));
    if (chance()) {
      operand.set(field::mem_operand, (chance() ? -1 : 1) * typed(3, 3).value);
      operand.set(field::mem_present, std::uint8_t{1});
    }
    expect_same(operand);
    FscRecord meme = statement_record(fsc::meme);
    meme.set(field::meme_operation, static_cast<std::uint8_t>(number(1, 2)));
    meme.set(field::meme_register, static_cast<std::uint8_t>(number(0, 255)));
    expect_same(meme);
    FscRecord ask = statement_record(one_of<std::uint16_t>({fsc::ask_plus, fsc::ask_minus}));
    std::uint32_t options = 0, last = 0;
    for (const AskLetter& letter : ask_letters()) {
      if (letter.column != last && chance()) options |= letter.bit;
      last = letter.column;
      if ((options & letter.bit) == 0 && number(0, 3) == 0) last = 0;
      if ((options & letter.bit) != 0) last = letter.column;
    }
    // Of letters that share a column only one can be shown.
    if ((options & ask_option::G) != 0) options &= ~(ask_option::B | ask_option::K);
    if ((options & ask_option::B) != 0) options &= ~ask_option::K;
    if ((options & ask_option::A) != 0) options &= ~ask_option::F;
    if ((options & ask_option::W) != 0) options &= ~ask_option::V;
    ask.set(field::ask_options, options);
    expect_same(ask);
    FscRecord target = statement_record(fsc::target);
    target.set(field::target_options, one_of<std::uint32_t>({1, 2, 4, 6}));
    expect_same(target);
    expect_same(statement_record(fsc::end));
  }
}

TEST_F(RoundTrip, SwitchesAndPictures) {
  for (int i = 0; i < rounds; ++i) {
    FscRecord con = statement_record(fsc::con);
    const int flags = number(1, 4);
    con.set(field::con_flags, static_cast<std::uint8_t>(flags));
    if (flags == con_flag::number)
      con.set(field::con_number, number(0, 100000));
    else
      for (int n = number(0, 14); n > 0; --n) EXPECT_TRUE(con_set_switch(con, number(1, 559)));
    expect_same(con);
    FscRecord draw = statement_record(fsc::draw);
    for (const auto where :
         {field::draw_x, field::draw_y, field::draw_width, field::draw_height, field::draw_style_1,
          field::draw_style_2, field::draw_style_3, field::draw_style_4})
      draw.set(where, static_cast<std::uint8_t>(number(0, 255)));
    expect_same(draw);
    FscRecord rng = statement_record(fsc::rng);
    const QuantityField range = quantity<QuantityField>();
    rng.set(field::rng_unit, range.unit);
    rng.set(field::rng_prefix, range.prefix);
    rng.set(field::rng_value, range.value);
    const bool value = range.unit != 0 && (range.flags & QuantityField::from_mem) == 0;
    rng.set(field::rng_flags, static_cast<std::uint8_t>((value ? 1 : 0) | one_of<int>({0, 2, 4, 6})));
    expect_same(rng);
    FscRecord accf = statement_record(fsc::accf);
    accf.set(
        field::accf_ordinal,
        static_cast<std::uint16_t>(fsc_ordinal(one_of<std::uint16_t>({fsc::i3458, fsc::memc, fsc::pqc1}))));
    put(accf, field::accf_name, chance() ? "a" + word(41) : "");
    expect_same(accf);
  }
}

TEST_F(RoundTrip, InstrumentsAndComparisons) {
  for (int i = 0; i < rounds * 10; ++i) {
    FscRecord standard =
        statement_record(one_of<std::uint16_t>({fsc::i3458, fsc::mfc1, fsc::i53131, fsc::smy02, fsc::resf}));
    standard.set(field::range, range());
    standard.set(field::nominal,
                 number(0, 9) == 0 ? QuantityField{.flags = QuantityField::keep} : quantity<QuantityField>());
    standard.set(field::tolerance, tolerance());
    standard.set(field::mod1, quantity<ModifierField>());
    const auto mod2 = static_cast<std::uint16_t>(number(0, 98));
    standard.set(field::mod2_code, mod2 == 5 ? std::uint16_t{3} : mod2);  // 3 and 5 have one word
    if (mod2 == 2) standard.set(field::mod2_value, one_of<std::int16_t>({50, 75, 300, 600}));
    standard.set(field::mod3, static_cast<std::uint8_t>(number(0, 70)));
    standard.set(field::mod4, one_of<std::uint8_t>({0, 2, 3, 4}));
    const auto con = static_cast<std::uint8_t>(number(0, 104));
    standard.set(field::con, con_word(con).empty() ? std::uint8_t{0} : con);
    expect_same(standard);

    FscRecord memc = statement_record(one_of<std::uint16_t>({fsc::memc, fsc::memcx, fsc::acc}));
    memc.set(field::memc_range, range());
    put(memc, field::memc_nominal, chance() ? word(15) : "");
    memc.set(field::memc_tolerance, tolerance());
    if (memc.get(field::code) != fsc::acc) put(memc, field::memc_modifier, chance() ? word(15) : "");
    expect_same(memc);
  }
}

// Every unit with every prefix, alone and with a number.
TEST_F(RoundTrip, Units) {
  int shown = 0;
  for (int unit = 1; unit <= 71; ++unit) {
    if (!unit_listing_token(static_cast<std::uint8_t>(unit))) continue;
    for (const PrefixCode code : std::initializer_list<PrefixCode>{1, 2, 3, 4, 5, 6, 7, 8, 17}) {
      std::uint8_t prefix = 0, back = 0;
      ASSERT_TRUE(unit_from_text(unit_text(code, static_cast<std::uint8_t>(unit)), prefix, back));
      if (back == unit && prefix == code)
        ++shown;
      else
        ADD_FAILURE() << unit_text(code, static_cast<std::uint8_t>(unit)) << " reads as "
                      << unit_text(prefix, back);
    }
  }
  EXPECT_EQ(shown, 51 * 9);
}

class RoundTripFile : public test::EngineTest {};

TEST_F(RoundTripFile, SourceToFileToSource) {
  const std::string source =
      "INSTRUMENT:            Round trip\n"
      "AUTHOR:                  \xC4 B\n"
      "NUMBER OF TESTS:       as typed\n"
      "==========\n"
      " STEP    FSC\n"
      "# first\n"
      "  1.001  ASK-   R     N\n"
      "\n"
      "  1.002  WHILE        M[1] < 3\n"
      "  1.003  MATH         M[1] = M[1] + 1\n"
      "  # inside\n"
      "  1.004  ENDW\n"
      "  2.001  MEMC   10    10.000V        0.05% +0.002U 1kH\n"
      "                DISP  turn R5\n"
      "  2.002  3458         *              TOL                                S\n"
      "Some text in between.\n"
      "  3.001  END\n"
      "# last\n";
  Procedure procedure;
  std::vector<CompileFault> faults;
  ASSERT_TRUE(compile_procedure(source, procedure, faults)) << faults[0].line << faults[0].reason;
  const std::string path = (folder / "1.prc").string(), again_path = (folder / "2.prc").string();
  ASSERT_TRUE(write_procedure(procedure, path));
  Procedure loaded;
  ASSERT_TRUE(load_procedure_file(loaded, path, true));
  std::string listed;
  for (const ProcNode* node = loaded.head; node != nullptr; node = node->next)
    listed += std::string(node->shown()) + "\n";
  EXPECT_EQ(listed, source);
  ASSERT_TRUE(compile_procedure(listed, procedure, faults));
  ASSERT_TRUE(write_procedure(procedure, again_path));
  EXPECT_EQ(contents(again_path), contents(path));
}

}  // namespace
}  // namespace orvane
