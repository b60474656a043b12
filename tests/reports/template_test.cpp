#include <gtest/gtest.h>

#include "config/startup_config.h"
#include "reports/column_run.h"
#include "reports/template_engine.h"
#include "reports/template_parse.h"
#include "state/run_variables.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

class TemplateTest : public EngineTest {
 protected:
  TemplateTest() {
    run_variable_set(run, "SER_NUM$", "4711");
    run_variable_set(run, "LONG$", "0123456789");
    run_variable_set(run, "EMPTY$", "");
    run_variable_set(run, "PATH$", "a/b;c");
  }
  ~TemplateTest() override {
    trace_close();
    startup_config().trace_template.clear();
  }
  std::string made(std::string_view text, Section section = Section::top, bool optional = false) {
    std::string out;
    failed = !template_run(run, Template(text), section, optional, state, source, out);
    return out;
  }
  // The number that ends the template.
  int fault(std::string_view text, Section section = Section::top) {
    desk.shown.clear();
    made(text, section);
    return failed && !desk.shown.empty() ? desk.message_numbers().back() : 0;
  }
  std::string value(std::string_view name) {
    const std::string* text = run_variable(run, name);
    return text != nullptr ? *text : "(none)";
  }

  TemplateState state;
  ReportSource source;
  bool failed = false;
};

TEST_F(TemplateTest, TextAndVariablesStandInTheirColumns) {
  struct Case {
    const char *text, *made;
  };
  const Case cases[] = {
      {"Serial SER_NUM$.\n", "Serial 4711.\n"},
      {"SER_NUM$  end\n", "4711      end\n"},  // "end" stays in column 10
      {"LONG$ end\n", "0123456789end\n"},      // it overran its room
      {"LONG$       end\n", "0123456789  end\n"},
      {"EMPTY$  end\n", "        end\n"},
      {"EMPTY$\n", ""},
      {"UNSET$ x\n", "UNSET$ x\n"},
      {"ser_num$ x\n", "ser_num$ x\n"},  // names have capitals
      {"a SER_NUMBER b\n", "a SER_NUMBER b\n"},
      {"\n\n  \nx\n\n", "x\n"},  // empty lines write nothing
      {"\\ \nx\n", "\nx\n"},
      {"a\\\nb   c\n", "ab   c\n"},  // joined lines count columns on
      {"\\SER_NUM$\n", "SER_NUM$\n"},
      {"\\\\x\n", "\\x\n"},
      {"# comment\n; another\n #text\n", " #text\n"},
      {"a # b\n", "a # b\n"},
      {"no end", "no end\n"},
      {"3V$x\r\n", "3V$x\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(made(c.text), c.made) << c.text;
}

TEST_F(TemplateTest, SectionsAreFoundByTheirMarks) {
  const std::string text =
      "top\nRSLT_TYPE$(INSTR)\nfirst\nRSLT_TYPE$( END )\nlast\nRSLT_TYPE$(INSTR)\nagain\n";
  EXPECT_EQ(made(text), "top\n");
  EXPECT_EQ(made(text, Section::instr), "first\n");
  EXPECT_EQ(made(text, Section::end), "last\n");
  EXPECT_EQ(made(text, Section::eval, true), "");
  EXPECT_FALSE(failed);
  EXPECT_EQ(fault(text, Section::eval), 4647);
  EXPECT_EQ(fault("RSLT_TYPE$(NOTHING)\nRSLT_TYPE$(END)\n", Section::end), 4649);
  EXPECT_EQ(fault("RSLT_TYPE$()\nRSLT_TYPE$(END)\n", Section::end), 4648);
  EXPECT_EQ(fault("RSLT_TYPE$(END)\nRSLT_TYPE$(NOTHING)\n", Section::end), 0);  // not reached

  for (const auto& [letter, section] : std::vector<std::pair<char, Section>>{{'A', Section::adjust},
                                                                             {'S', Section::instr},
                                                                             {'a', Section::instr},
                                                                             {'d', Section::dose_pf},
                                                                             {' ', Section::separator},
                                                                             {'Z', Section::end_summary},
                                                                             {'C', Section::top}})
    EXPECT_EQ(section_of_letter(letter), section) << letter;
}

TEST_F(TemplateTest, SplitAndSubst) {
  EXPECT_EQ(made("SPLIT$(PATH$, ONE$, \"/\", TWO$, \"\\;\", THREE$)ONE$ TWO$ THREE$\n").find("a"), 0U);
  EXPECT_EQ(value("ONE$") + value("TWO$") + value("THREE$"), "abc");
  // A template's own names are as they are written: ONE$ and one$ are two.
  EXPECT_EQ(made("SPLIT$(PATH$,one$,\"/\",Rest$)\none$ ONE$ Rest$ rest$\n"), "a    a    b;c   rest$\n");
  EXPECT_EQ(made("SPLIT$(LONG$,one$,\"3\",Rest$)\none$ ONE$\n"), "012  a\n");
  made("SPLIT$(PATH$,ALL$,\"#\",REST$)");
  EXPECT_EQ(value("ALL$") + "|" + value("REST$"), "a/b;c|");
  made("SPLIT$(PATH$,PATH$,\"/\",REST$)");
  EXPECT_EQ(value("PATH$") + "|" + value("REST$"), "a|b;c");

  made("SUBST$(LONG$,\"345\",SER_NUM$)");
  EXPECT_EQ(value("LONG$"),
            "012471"
            "16789");
  made("SUBST$(LONG$,\"01\",\"\")SUBST$(LONG$,\"nothing\",\"x\")");
  EXPECT_EQ(value("LONG$"), "247116789");
  made("SUBST$(UNSET$,\"a\",\"b\")");
  EXPECT_EQ(value("UNSET$"), "(none)");
}

TEST_F(TemplateTest, FaultsOfFunctionsHaveTheirNumbers) {
  struct Case {
    const char* text;
    int number;
  };
  const Case cases[] = {
      {"SPLIT$(\"a\",B$)", 4937},
      {"SPLIT$(UNSET$,B$)", 4938},
      {"SPLIT$(LONG$,B$,C$)", 4939},
      {"SPLIT$(LONG$,B$,\"x\" C$)", 4940},
      {"SPLIT$(LONG$,\"x\")", 4941},
      {"SPLIT$(LONG$,B$;\"x\",C$)", 4942},
      {"SPLIT$(LONG$,B$,\"x\nC$)", 4936},
      {"SPLIT$(LONG$,B$,\"x\\\nC$)", 4935},
      {"SUBST$(\"a\",\"b\",\"c\")", 4948},
      {"SUBST$(LONG$;\"b\",\"c\")", 4949},
      {"SUBST$(LONG$,b,\"c\")", 4931},
      {"SUBST$(LONG$,\"b\";\"c\")", 4932},
      {"SUBST$(LONG$,\"b\",c)", 4933},
      {"SUBST$(LONG$,\"b\",\"c\"", 4940},
      {"LDIG$(0)", 4946},
      {"LDIG$(17)", 4946},
      {"LDIG$(4", 4947},
      {"LDIG$(16)", 0},
      {"STD$(21)", 4944},
      {"STD$(0)", 4944},
      {"STD$(1", 4945},
      {"STD$(1)", 4943},
      {"STD1$(1)", 4944},
      {"STD2$(1)", 4944},
      {"TRACE1$()", 4675},
      {"TRACE$()", 31240},
  };
  for (const Case& c : cases) EXPECT_EQ(fault(c.text), c.number) << c.text;
  state.compare = true;
  const Case compared[] = {{"STD$(1)", 4672}, {"TRACE$()", 4674}, {"STD1$(1)", 4944}, {"TRACE2$()", 31240}};
  for (const Case& c : compared) EXPECT_EQ(fault(c.text), c.number) << c.text;
}

TEST_F(TemplateTest, WhatWasMadeInFrontOfAFaultStays) {
  EXPECT_EQ(made("first\nLDIG$(0)\nsecond\n"), "first\n");
  EXPECT_TRUE(failed);
}

TEST_F(TemplateTest, StandardsGiveTheirVariables) {
  for (const char* name : {"A", "B"}) {
    TraceRecord record;
    record.text[0] = name;
    source.standards[0].push_back(record);
  }
  EXPECT_EQ(made("T_Instrument_Name$\nSTD$(2)T_Instrument_Name$\nSTD$(3)T_Instrument_Name$.\n"),
            "T_Instrument_Name$\nB\n.\n");
  // A trace template that asks for itself is not entered again.
  startup_config().trace_template = write("t.txt", "- T_Instrument_Name$\nTRACE$()\n");
  state = {};
  EXPECT_EQ(made("list\nTRACE$()\nend T_Instrument_Name$\n"), "list\n- A\n- B\nend T_Instrument_Name$\n");
}

TEST_F(TemplateTest, LimitsArePrintedFromTheirPackedForm) {
  EXPECT_EQ(limit_text(packed_limit(1.5, 1, "V"), 6, 18), "1.5V");
  EXPECT_EQ(limit_text(packed_limit(1.0 / 3, 1, "V"), 4, 18), "0.3333V");
  EXPECT_EQ(limit_text(packed_limit(1.0 / 3, 1, "Ohm"), 16, 18),
            "0.3333333333333333");  // the unit does not fit
  EXPECT_FALSE(limit_text("no limit", 6, 18));

  run_variable_set(run, "LL1$", packed_limit(2.5, 1, "V"));
  EXPECT_EQ(made("LL1$\n"), "2.5V\n");
  EXPECT_EQ(made("LDIG$(1)LL1$|\n"), "2V|\n");
}

TEST_F(TemplateTest, APageFillLineIsOneLine) {
  for (const auto& [text, sound] : std::vector<std::pair<const char*, bool>>{
           {"RSLT_TYPE$(PAGE_FILL_LINE)\n........\n", true},
           {"RSLT_TYPE$(PAGE_FILL_LINE)\nSER_NUM$ x\nRSLT_TYPE$(END)\nSER_NUM$\n", true},
           {"RSLT_TYPE$(PAGE_FILL_LINE)\n.....", false},
           {"RSLT_TYPE$(PAGE_FILL_LINE)\n.....\nSER_NUM$\n", false},
           {"RSLT_TYPE$(END)\n", true}})
    EXPECT_EQ(template_check_page_fill(Template(text)), sound) << text;
}

// --- Lines of a log ---

std::string at_columns(std::string_view head, std::vector<std::pair<std::size_t, std::string>> texts) {
  std::string line(head);
  for (const auto& [column, text] : texts) {
    line.resize(std::max(line.size(), 11 + column), ' ');
    line.replace(11 + column, text.size(), text);
  }
  return line + "\n";
}
const std::string test_line =
    at_columns(
        "0001.002 M ",
        {{2, "1"},
         {4, "c"},
         {8, "10"},
         {14, "10mV"},
         {29, "10.001mV"},
         {44, "1kHz"},
         {60, "-100     ppm"},
         {73, " 71"},
         {80, "10"},
         {100, "4023fae147ae147b40240a3d70a3d70a3:Volts:10.0:10.001:9.99:10.02:*:1.0E-03:2.0E-03:2:"}}) +
    at_columns("0001.002 M ", {{8, "SYSTEM TOL:0.0010mV"},
                               {31, "TEST TOL:0.0200mV"},
                               {51, "TUR: 4.0"},
                               {60, "MARGINAL"},
                               {73, "PASS"}});

TEST_F(TemplateTest, TheColumnsOfATestAreItsVariables) {
  startup_config();
  std::string out;
  const std::string columns =
      write("c.txt",
            "RSLT_TYPE$(INSTR)\n"
            "TN$|UR$|UI$|SA$|MO$|ER$|ET$|ST$|TT$|TU$|CO$|TR$\n"
            "FN$|FVA$|FRE$|FLL$|FUL$|A$|MU_STD$|MU_EXP$|MU_COV$\n"
            "LL$|UL$|DE$|C$|TOL_C$|ERPPM$|ERPCT$|NOX$|SH_A$|SH_R$|UI1$|UI2$|SA1$|SA2$\n");
  ASSERT_TRUE(column_run(run, test_line, columns, state, source, out)) << desk.last_message();
  EXPECT_EQ(out,
            "  1    |10|10mV|10.001mV|1kHz|-100     ppm| 71|SYSTEM TOL:0.0010mV|TEST TOL:0.0200mV|TUR: "
            "4.0|MARGINAL|PASS\n"
            "Volts|10.0|10.001|9.99|10.02|*|1.0E-03|2.0E-03|2\n"
            "9.99mV|10.02mV|Volts|c|-0.2/+0.1%|-100         ppm|-0.01        "
            "%|10|-0.02/+0.01mV|0.2%|10|mV|10.001|mV\n");
}

TEST_F(TemplateTest, NotesAndNestedCalls) {
  const std::string log =
      "0000.000 C           2 ENTER main\n"
      "0001.001 R         a remark\n"
      "0005.001 C           1 ENTER sub\n"
      "0002.001 B         in braces\n"
      "0005.001 L             LEAVE sub\n"
      "0006.001 K         noted\n"
      "0000.000 L             LEAVE main\n";
  const std::string columns =
      write("c.txt",
            "RSLT_TYPE$(RSLT)\nTN$     R RM$\nRSLT_TYPE$(BRACE)\nTN$     B RM$\n"
            "RSLT_TYPE$(REMARK)\nTN$     K RM$\nRSLT_TYPE$(SEPARATOR)\n--\nRSLT_TYPE$(END)\nend\n");
  std::string out;
  ASSERT_TRUE(column_run(run, log, columns, state, source, out));
  EXPECT_EQ(out, "  1     R a remark\n--\n  5-2   B in braces\n--\n  6     K noted\nend\n");
  out.clear();
  ASSERT_TRUE(column_run(run, log, "", state, source, out));
  EXPECT_EQ(out, "  1     a remark\n  5-2   in braces\n  6     noted\n");
}

TEST_F(TemplateTest, FaultsOfTheLines) {
  std::string out;
  const std::string bare = write("c.txt", "RSLT_TYPE$(EVAL)\nx\n");
  EXPECT_FALSE(column_run(run, test_line, bare, state, source, out));
  EXPECT_EQ(desk.message_numbers().back(), 4647);
  EXPECT_FALSE(column_run(run, test_line, "/nothing", state, source, out));
  EXPECT_EQ(desk.message_numbers().back(), 4636);
  const std::string& whole = test_line;
  EXPECT_FALSE(column_run(run, whole.substr(0, whole.find('\n') + 1), "", state, source, out));
  EXPECT_EQ(desk.message_numbers().back(), 4623);
  // A second test without SEPARATOR.
  std::string second = whole;
  second.replace(0, 4, "0002");
  second.replace(second.find('\n') + 1, 4, "0002");
  const std::string instr = write("i.txt", "RSLT_TYPE$(INSTR)\nx\n");
  EXPECT_FALSE(column_run(run, whole + second, instr, state, source, out));
  EXPECT_EQ(desk.message_numbers().back(), 4647);
}

TEST_F(TemplateTest, ShortFormsOfTolerances) {
  for (const auto& [share, text] : std::vector<std::pair<double, const char*>>{{0.0123, "1.23%"},
                                                                               {0.0001234, "123ppm"},
                                                                               {4.99, "499%"},
                                                                               {5, ">500%"},
                                                                               {-0.01, "1%"},
                                                                               {0, "0ppm"}})
    EXPECT_EQ(short_relative(share), text) << share;
}

}  // namespace
}  // namespace orvane::test
