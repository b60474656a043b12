// Forms at the console: typed at a terminal, and filled by a script.
#include <gtest/gtest.h>
#include <unistd.h>

#include "console/desk.h"
#include "console/form_fields.h"
#include "state/pump.h"
#include "support/desk.h"

namespace orvane {
namespace {

// Standard input from a text, as if it were typed.
class Typed {
 public:
  explicit Typed(const std::string& text) : saved_(::dup(STDIN_FILENO)) {
    int ends[2];
    if (::pipe(ends) != 0 || ::write(ends[1], text.data(), text.size()) != static_cast<ssize_t>(text.size()))
      ADD_FAILURE() << "no input";
    ::dup2(ends[0], STDIN_FILENO);
    ::close(ends[0]);
    ::close(ends[1]);
  }
  ~Typed() {
    ::dup2(saved_, STDIN_FILENO);
    ::close(saved_);
  }
  Typed(const Typed&) = delete;
  Typed& operator=(const Typed&) = delete;

 private:
  int saved_;
};

std::string fault_of(const FormField& field) {
  if (field.required && field.text.empty()) return "It is needed.";
  if (field.kind == FieldKind::number && !field.text.empty() &&
      field.text.find_first_not_of("0123456789.") != std::string::npos)
    return "It is no number.";
  if (field.kind == FieldKind::choice &&
      std::find(field.choices.begin(), field.choices.end(), field.text) == field.choices.end())
    return "It is no choice.";
  return {};
}

class Form : public test::EngineTest {
 protected:
  Form() {
    window.title = "Unit data";
    window.lines = {"Read them from\nthe label."};
    window.buttons = {{answer::ok, "OK", true}, {answer::terminate, "Cancel", false}};
    window.fields.resize(6);
    FormField& note = window.fields[0];
    note.kind = FieldKind::note;
    note.label = "A note";
    FormField& serial = window.fields[1];
    serial.name = "SER_NUM$";
    serial.label = "Serial number";
    serial.length = 10;
    serial.required = true;
    FormField& fixed = window.fields[2];
    fixed.name = "MODEL$";
    fixed.label = "Model";
    fixed.text = "M1";
    fixed.read_only = true;
    FormField& value = window.fields[3];
    value.name = "TEMP$";
    value.label = "Temperature";
    value.kind = FieldKind::number;
    value.low = 10;
    value.high = 40;
    value.text = "23";
    FormField& choice = window.fields[4];
    choice.name = "STATE$";
    choice.label = "State";
    choice.kind = FieldKind::choice;
    choice.choices = {"new", "used", "unusable"};
    choice.text = "new";
    FormField& check = window.fields[5];
    check.name = "CLEAN$";
    check.label = "Clean";
    check.kind = FieldKind::check;
    check.text = "NO";
    window.fault = fault_of;
    clear_abort();
  }

  int typed(const std::string& text) {
    ConsoleDesk console(transcript);
    const Typed input(text);
    ::testing::internal::CaptureStdout();
    const int code = console.form(window);
    shown = ::testing::internal::GetCapturedStdout();
    gone = console.gone();
    return code;
  }

  int answered(const std::string& text, bool expect_misfit = false) {
    std::string reason;
    EXPECT_TRUE(parse_answers(text, answers, reason)) << reason;
    ConsoleDesk console(transcript);
    console.answer_from(&answers);
    ::testing::internal::CaptureStdout();
    const int code = console.form(window);
    shown = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(console.misfit(), expect_misfit) << text;
    return code;
  }

  std::string entries() const {
    std::string out;
    for (const FormField& field : window.fields) {
      if (is_filled_in(field)) out += field.text + "|";
    }
    return out;
  }

  FormWindow window;
  Transcript transcript;
  Answers answers;
  std::string shown;
  bool gone = false;
};

TEST(FormFields, EntriesAreUnderstood) {
  struct Case {
    FieldKind kind;
    const char* entry;
    const char* text;
  };
  const Case cases[] = {
      {FieldKind::text, "  a,b ", "  a,b "},
      {FieldKind::number, " 1,5 ", "1.5"},
      {FieldKind::integer, " 7 ", "7"},
      {FieldKind::date, " 2026-11-23", "2026-11-23"},
      {FieldKind::check, "y", "YES"},
      {FieldKind::check, "0", "NO"},
      {FieldKind::check, "perhaps", "perhaps"},
      {FieldKind::choice, "USED", "used"},
      {FieldKind::choice, "1", "new"},
      {FieldKind::choice, "4", "4"},
      {FieldKind::choice, "u", "u"},
      {FieldKind::choice, "un", "unusable"},
      {FieldKind::choice, "", ""},
  };
  for (const Case& c : cases) {
    FormField field;
    field.kind = c.kind;
    field.choices = {"new", "used", "unusable"};
    enter_field(field, c.entry);
    EXPECT_EQ(field.text, c.text) << c.entry;
  }
}

TEST_F(Form, IsAskedFieldByField) {
  EXPECT_EQ(typed("\nSN 1\nwarm\n25,5\n3\ny\n\n"), answer::ok);
  EXPECT_EQ(entries(), "SN 1|25.5|unusable|YES|");
  for (const char* line :
       {"--- Unit data ---\nRead them from\nthe label.\nA note\nModel M1\n",
        "  Serial number (at most 10 characters, needed)\nSER_NUM$>   It is needed.\nSER_NUM$> ",
        "  Temperature (a number, from 10 to 40)\nTEMP$ [23]>   It is no number.\nTEMP$ [warm]>   = 25.5\n",
        "    [2] used\n", "STATE$ [new]>   = unusable\n", "CLEAN$ [NO]>   = YES\n",
        "[1] OK (Enter)   [2] Cancel"})
    EXPECT_NE(shown.find(line), std::string::npos) << line << shown;
}

TEST_F(Form, EnterKeepsABlankEmptiesAndBackGoesBack) {
  window.fields[1].text = "SN 1";
  EXPECT_EQ(typed("\n \n<\n24\nused\n\n<\nno\n1\n"), answer::ok);
  EXPECT_EQ(entries(), "SN 1|24|used|NO|");
}

TEST_F(Form, IsLeftWithoutAVerdict) {
  EXPECT_EQ(typed("SN 1\n\x1b\n"), answer::terminate);
  EXPECT_FALSE(gone);
  EXPECT_EQ(typed("SN 1\n\n\n\nca\n"), answer::terminate);
  EXPECT_EQ(typed("SN 1\n"), answer::terminate) << "end of input";
  EXPECT_TRUE(gone);
  EXPECT_TRUE(abort_requested());
}

TEST_F(Form, AFieldThatAnotherOneSpoilsIsAskedAgain) {
  window.fault = [this](const FormField& field) {
    const bool clean = window.fields[5].text == "YES";
    return field.name == "STATE$" && clean && field.text == "new" ? std::string("New units are not cleaned.")
                                                                  : fault_of(field);
  };
  EXPECT_EQ(typed("SN 1\n\n\ny\n\n2\n\n\n"), answer::ok);
  EXPECT_NE(shown.find("New units are not cleaned."), std::string::npos);
  EXPECT_EQ(entries(), "SN 1|23|used|YES|");
}

TEST_F(Form, IsFilledByAScript) {
  const std::string path = (folder / "t.jsonl").string();
  ASSERT_TRUE(transcript.open(path));
  EXPECT_EQ(answered("set ser_num$ = SN 1\nset TEMP$ = 21,5\nset STATE$ = used\nok\n"), answer::ok);
  EXPECT_EQ(entries(), "SN 1|21.5|used|NO|");
  EXPECT_EQ(
      contents(path),
      "{\"event\":\"window\",\"kind\":\"form\",\"title\":\"Unit data\",\"lines\":[\"Read them from\",\"the "
      "label.\",\"A note\",\"Serial number SN 1\",\"Model M1\",\"Temperature 21.5\",\"State used\",\"Clean "
      "NO\"],\"buttons\":[210,205],\"answer\":210,\"fields\":{\"SER_NUM$\":\"SN 1\",\"MODEL$\":\"M1\","
      "\"TEMP$\":\"21.5\",\"STATE$\":\"used\",\"CLEAN$\":\"NO\"}}\n");
  EXPECT_EQ(answered("cancel\n"), answer::terminate);
  EXPECT_EQ(answered("*\n"), answer::ok);
  window.fields[1].text.clear();
  EXPECT_EQ(answered("abort\n"), answer::terminate) << "a form that cannot be taken is left by Abort";
  EXPECT_TRUE(abort_requested());
}

TEST_F(Form, AScriptThatDoesNotFitIsTold) {
  struct Case {
    const char* answers;
    const char* text;
  };
  const Case cases[] = {
      {"ok\n",
       "E30512: The answer in line 1 does not fit the field \"SER_NUM$\" of the window \"Unit data\": It is "
       "needed. It "
       "offers 210 OK, 205 Cancel."},
      {"set SER_NUM$ = 1\nset TEMP$ = warm\ndefault\n",
       "E30512: The answer in line 3 does not fit the field \"TEMP$\" of the window \"Unit data\": It is no "
       "number. It "
       "offers 210 OK, 205 Cancel."},
      {"set NOBODY$ = 1\nok\n",
       "E30513: The answer in line 2 fills the field \"NOBODY$\", which the window \"Unit data\" does not "
       "have; it "
       "offers SER_NUM$, TEMP$, STATE$, CLEAN$."},
      {"set MODEL$ = 1\nok\n",
       "E30513: The answer in line 2 fills the field \"MODEL$\", which the window \"Unit data\" does not "
       "have; it "
       "offers SER_NUM$, TEMP$, STATE$, CLEAN$."},
      {"continue\n",
       "E30508: The answer in line 1 does not fit the window \"Unit data\"; it offers 210 OK, 205 Cancel."},
      {"", "E30507: No answer is left for the window \"Unit data\"; it offers 210 OK, 205 Cancel."},
  };
  const FormWindow as_new = window;
  for (const Case& c : cases) {
    window = as_new;
    EXPECT_EQ(answered(c.answers, true), answer::terminate) << c.answers;
    EXPECT_EQ(desk.last_message(), c.text);
  }
}

TEST_F(Form, NoNumberOfFaultsLosesTheForm) {
  window.fields.clear();
  EXPECT_EQ(typed("\n"), answer::ok) << "a form without fields";
  window.buttons.clear();
  EXPECT_EQ(answered("ok\n", true), answer::terminate);
}

}  // namespace
}  // namespace orvane
