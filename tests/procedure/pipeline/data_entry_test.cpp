#include "procedure/pipeline/data_entry.h"

#include <fstream>
#include <sstream>

#include "messages/catalogue.h"
#include "support/desk.h"

namespace orvane {
namespace {

class DataEntryFile : public test::EngineTest {
 protected:
  bool parse(std::string_view text) {
    entry = DataEntry();
    faults.clear();
    return parse_data_entry(text, "uut.txt", entry, faults);
  }
  DataEntry entry;
  std::vector<EntryFault> faults;
};

TEST_F(DataEntryFile, FormsAreReadAsWritten) {
  ASSERT_TRUE(
      parse("\xEF\xBB\xBF# the bench of workshop 3\r\n"
            "[Variables]\nvariable = customer\n"
            "[environment]\nask = START, end\n"
            "[start]\ntext = From the plate:\ntext = (at the back)\n"
            "field = ser_num$\nLABEL = Serial n\xC2\xB0 = \nlength=20\nrequired = YES\n"
            "field = TEMP$\nkind = number\nlow = -5\nhigh = 1e2\ndefault = 23,5\n"
            "note = then\n"
            "field = CUSTOMER$\nkind = choice\nchoice = inside\nchoice = outside\ndefault = outside\n"
            "[end]\nfield = CUSTOMER$\nkind = check\nread_only = 1\n"))
      << faults.front().text;
  EXPECT_TRUE(entry.environment_at_start && entry.environment_at_end);
  EXPECT_EQ(entry.start.lines, (std::vector<std::string>{"From the plate:", "(at the back)"}));
  ASSERT_EQ(entry.start.fields.size(), 4U);
  const FormField& serial = entry.start.fields[0];
  EXPECT_EQ(serial.name, "SER_NUM$");
  EXPECT_EQ(serial.label, "Serial n\xB0 =");
  EXPECT_EQ(serial.length, 20U);
  EXPECT_TRUE(serial.required && !serial.read_only);
  const FormField& number = entry.start.fields[1];
  EXPECT_EQ(number.label, "TEMP");
  EXPECT_EQ(*number.low, -5);
  EXPECT_EQ(*number.high, 100);
  EXPECT_EQ(number.text, "23,5");
  EXPECT_EQ(entry.start.fields[2].kind, FieldKind::note);
  EXPECT_EQ(entry.start.fields[3].choices, (std::vector<std::string>{"inside", "outside"}));
  ASSERT_EQ(entry.end.fields.size(), 1U);
  EXPECT_EQ(entry.end.fields[0].text, "NO");
  EXPECT_TRUE(entry.end.fields[0].read_only);
}

TEST_F(DataEntryFile, AnEmptyFileAsksNothing) {
  for (const char* text :
       {"", "\n\n", "# nothing\n; to ask\n", "[start]\n[end]\n", "[environment]\nask = none\n"}) {
    EXPECT_TRUE(parse(text)) << text;
    EXPECT_TRUE(entry.start.empty() && entry.end.empty()) << text;
    EXPECT_FALSE(entry.environment_at_start || entry.environment_at_end) << text;
  }
  EXPECT_TRUE(read_data_entry("", entry, faults));
}

TEST_F(DataEntryFile, EveryFaultNamesFileLineAndReason) {
  const std::string field = "[start]\nfield = SER_NUM$\n";
  struct Case {
    std::string text;
    int number;
    const char* fault;
  };
  const Case cases[] = {
      {"[start]\nwhat\n", 30612, "uut.txt:2: this is neither a [section] nor KEY = VALUE"},
      {"\n[begin]\nfield = X$\n", 30613,
       "uut.txt:2: there is no section [begin]; sections are [variables], [environment], [start] and [end]"},
      {"[start\n", 30613,
       "uut.txt:1: there is no section [start; sections are [variables], [environment], [start] and [end]"},
      {"field = SER_NUM$\n", 30614, "uut.txt:1: a section must stand before the first key"},
      {field + "size = 3\n", 30615, "uut.txt:3: the key \"size\" is none of this section"},
      {"[environment]\nask = middle\n", 30616,
       "uut.txt:2: \"middle\" is no value of \"ask\"; it takes start, end, none"},
      {field + "kind = colour\n", 30616,
       "uut.txt:3: \"colour\" is no value of \"kind\"; it takes text, number, integer, date, choice, check"},
      {field + "length = 77\n", 30616, "uut.txt:3: \"77\" is no value of \"length\"; it takes 1 to 76"},
      {field + "required = perhaps\n", 30616,
       "uut.txt:3: \"perhaps\" is no value of \"required\"; it takes yes, no"},
      {field + "kind = number\nlow = 1e999\n", 30616,
       "uut.txt:4: \"1e999\" is no value of \"low\"; it takes a number"},
      {"[start]\nfield = 1ST$\n", 30617,
       "uut.txt:2: \"1ST$\" is no name of a variable: letters, digits and \"_\", no digit at the start, "
       "\"$\" at the "
       "end"},
      {"[start]\nfield = TEST_STATUS$\n", 30618,
       "uut.txt:2: \"TEST_STATUS$\" is set by the program itself; ask into another variable"},
      {"[variables]\nvariable = UI2$\n", 30618,
       "uut.txt:2: \"UI2$\" is set by the program itself; ask into another variable"},
      {"[start]\nlabel = x\n", 30619,
       "uut.txt:2: \"label\" belongs to a field; a line \"field = NAME$\" must stand before it"},
      {"[start]\nfield = SER_NO$\nlabel = x\n", 30621,
       "uut.txt:2: the variable \"SER_NO$\" is not known; correct it, or name it in the section [variables]"},
      {field + "field = ser_num$\n", 30622, "uut.txt:3: the form asks for \"SER_NUM$\" twice"},
      {field + "kind = choice\nchoice = one\n", 30624,
       "uut.txt:2: \"SER_NUM$\": a field of the kind choice has two or more choices, any other kind none"},
      {field + "kind = number\nlow = 2\nhigh = 1\n", 30625,
       "uut.txt:2: \"SER_NUM$\": the lower limit is above the upper one"},
      {field + "kind = integer\ndefault = 1.5\n[end]\n", 30626,
       "uut.txt:2: the default \"1.5\" of \"SER_NUM$\" cannot be taken: This is no whole number."},
      {"[start]\ntext = " + std::string(400, 'x') + "\n", 30611,
       "uut.txt:2: a line has at most 400 characters"},
  };
  for (const Case& c : cases) {
    EXPECT_FALSE(parse(c.text)) << c.fault;
    ASSERT_EQ(faults.size(), 1U) << c.fault;
    EXPECT_EQ(faults[0].number, c.number) << c.fault;
    EXPECT_EQ(faults[0].text, c.fault);
  }
  EXPECT_FALSE(read_data_entry((folder / "absent.txt").string(), entry, faults));
  EXPECT_EQ(faults.back().number, 30610);
}

TEST_F(DataEntryFile, FieldsAndChoicesHaveTheirLimit) {
  std::string text = "[start]\n";
  for (std::size_t i = 0; i < entry_field_limit; ++i) text += "note = x\n";
  EXPECT_TRUE(parse(text));
  EXPECT_FALSE(parse(text + "field = SER_NUM$\nkind = number\n"));
  ASSERT_EQ(faults.size(), 1U);
  EXPECT_EQ(faults[0].number, 30620);
  text = "[start]\nfield = SER_NUM$\nkind = choice\n";
  for (std::size_t i = 0; i < entry_choice_limit; ++i) text += "choice = " + std::to_string(i) + "\n";
  EXPECT_TRUE(parse(text));
  EXPECT_FALSE(parse(text + "choice = more\n"));
  EXPECT_EQ(faults[0].number, 30623);
}

TEST_F(DataEntryFile, TheDemoFileIsSoundAndEveryCutOfItIsRead) {
  std::ostringstream text;
  text << std::ifstream(ORVANE_SOURCE_DIR "/demo/data-entry.txt", std::ios::binary).rdbuf();
  const std::string whole = text.str();
  EXPECT_TRUE(parse(whole)) << faults.front().text;
  EXPECT_FALSE(entry.start.empty());
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const bool sound = parse(whole.substr(0, length));
    EXPECT_EQ(sound, faults.empty());
    for (const EntryFault& fault : faults) EXPECT_TRUE(fault.text.starts_with("uut.txt:")) << fault.text;
  }
}

TEST_F(DataEntryFile, WhatIsEnteredIsJudgedByItsKind) {
  struct Case {
    FieldKind kind;
    const char* text;
    int fault;  // message number, 0: taken
    const char* value;
  };
  const Case cases[] = {
      {FieldKind::number, " 1,5 ", 0, "1.5"},
      {FieldKind::number, "-1e3", 30633, ""},
      {FieldKind::number, "11", 30634, ""},
      {FieldKind::number, "1.5.2", 30631, ""},
      {FieldKind::number, "1e400", 30631, ""},
      {FieldKind::number, "", 30630, ""},
      {FieldKind::integer, "7", 0, "7"},
      {FieldKind::integer, "7.0", 30632, ""},
      {FieldKind::integer, "1e0", 30632, ""},
      {FieldKind::date, "2024-02-29", 0, "2024-02-29"},
      {FieldKind::date, "2023-02-29", 30636, ""},
      {FieldKind::date, "2100-02-29", 30636, ""},
      {FieldKind::date, "24-2-9", 30636, ""},
      {FieldKind::date, "2024-13-01", 30636, ""},
      {FieldKind::check, "YES", 0, "YES"},
      {FieldKind::check, "maybe", 30637, ""},
      {FieldKind::choice, "two", 0, "two"},
      {FieldKind::choice, "Two", 30638, ""},
      {FieldKind::text, " as typed ", 0, " as typed "},
      {FieldKind::text, "   ", 30630, ""},
      {FieldKind::text, "12345678901234567890x", 30635, ""},
  };
  for (const Case& c : cases) {
    FormField field;
    field.kind = c.kind;
    field.text = c.text;
    field.required = true;
    field.length = 20;
    field.low = 1;
    field.high = 10;
    field.choices = {"one", "two"};
    const std::string fault = entry_fault(field);
    const std::string wanted = c.fault == 30633 || c.fault == 30634
                                   ? msg(c.fault, c.fault == 30633 ? 1.0 : 10.0)
                               : c.fault == 30635 ? msg(30635, 20)
                               : c.fault != 0     ? msg(c.fault)
                                                  : std::string();
    EXPECT_EQ(fault, wanted) << c.text;
    if (c.fault == 0) {
      EXPECT_EQ(entry_value(field), c.value);
    }
    field.read_only = true;
    EXPECT_EQ(entry_fault(field), "") << c.text;
  }
}

}  // namespace
}  // namespace orvane
