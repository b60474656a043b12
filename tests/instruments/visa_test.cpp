#include "instruments/visa.h"

#include "support/statements.h"

namespace orvane {
namespace {

// A library that writes down its calls.
struct VisaScript {
  std::vector<std::string> calls;
  std::vector<std::pair<VisaLibrary::Status, std::string>> replies;  // one for each read
  std::size_t next_reply = 0;
  std::vector<std::string> serial;  // resources that it lists
  std::size_t next_serial = 0;
  std::string fails;  // this function
};
VisaScript visa;

VisaLibrary::Status call(const std::string& name, const std::string& rest = {}) {
  visa.calls.push_back(name + rest);
  return visa.fails == name ? static_cast<VisaLibrary::Status>(0xBFFF0015) : 0;
}

VisaLibrary::Status next_resource(char* description) {
  if (visa.next_serial >= visa.serial.size()) return -1;
  const std::string& name = visa.serial[visa.next_serial++];
  description[name.copy(description, VisaLibrary::description_size - 1)] = '\0';
  return 0;
}

const VisaLibrary table = [] {
  VisaLibrary v;
  v.viOpenDefaultRM = [](VisaLibrary::Session* manager) { return *manager = 1, call("manager"); };
  v.viOpen = [](VisaLibrary::Session, const char* name, std::uint32_t, std::uint32_t,
                VisaLibrary::Session* session) {
    return *session = 2, call("open", " " + std::string(name));
  };
  v.viClose = [](VisaLibrary::Session object) { return call("close", " " + std::to_string(object)); };
  v.viRead = [](VisaLibrary::Session, unsigned char* bytes, std::uint32_t, std::uint32_t* count) {
    const auto [status, text] = visa.replies.at(visa.next_reply++);
    *count = static_cast<std::uint32_t>(text.copy(reinterpret_cast<char*>(bytes), text.size()));
    return call("read"), status;
  };
  v.viWrite = [](VisaLibrary::Session, const unsigned char* bytes, std::uint32_t count, std::uint32_t* done) {
    *done = count;
    return call("write", " " + std::string(reinterpret_cast<const char*>(bytes), count));
  };
  v.viFindRsrc = [](VisaLibrary::Session, const char* expression, VisaLibrary::Session* list,
                    std::uint32_t* count, char* description) {
    call("find", " " + std::string(expression));
    *list = 3;
    *count = static_cast<std::uint32_t>(visa.serial.size());
    return next_resource(description);
  };
  v.viFindNext = [](VisaLibrary::Session, char* description) { return next_resource(description); };
  v.viSetAttribute = [](VisaLibrary::Session, std::uint32_t, std::uintptr_t value) {
    return call("set", " " + std::to_string(value));
  };
  return v;
}();

class Visa : public test::StatementTest {
 protected:
  Visa() {
    visa = {};
    set_visa_library(&table);
    startup_config().ni_visa = 1;
  }
  ~Visa() override { set_visa_library(nullptr); }
  bool line(std::string_view text, std::uint16_t flags = line_flag::first | line_flag::last) {
    visa.calls.clear();
    return statement(fsc::visa, text, flags);
  }
};

TEST_F(Visa, LinesAreJoinedAndRunWithTheLastOne) {
  visa.replies = {{0x3FFF0006, "1."}, {0x3FFF0005, "5 V\n"}, {0, "name\r\n"}};
  EXPECT_TRUE(line("[@122]MEAS:", line_flag::first));
  EXPECT_TRUE(line("VOLT", 0));
  EXPECT_TRUE(visa.calls.empty());
  EXPECT_TRUE(line("?[I][I$]", line_flag::last));
  EXPECT_EQ(visa.calls,
            (Calls{"manager", "open GPIB1::22::INSTR", "write MEAS:VOLT?", "read", "read", "read"}));
  EXPECT_EQ(run.registers.mem, 1.5);
  EXPECT_EQ(run.registers.mem2, "name");
  visa.serial = {"ASRL1::INSTR", "ASRL3::INSTR"};
  EXPECT_TRUE(line("[@COM3][TERM 10][T 500][TERM OFF]X"));
  EXPECT_EQ(visa.calls, (Calls{"find ASRL?*INSTR", "close 3", "close 2", "open ASRL3::INSTR", "set 10",
                               "set 1", "set 500", "set 0", "write X"}));
  visa.calls.clear();
  visa_end_of_run(run);
  EXPECT_EQ(visa.calls, (Calls{"close 2", "close 1"}));
}

TEST_F(Visa, FailuresHaveTheirNumbers) {
  for (const char* text : {"A", "[I]", "[TERM 10]", "[T 1]"}) {
    EXPECT_FALSE(line(text));
    EXPECT_EQ(reported(), 30936) << text;
  }
  EXPECT_FALSE(line("[@COM2]"));
  EXPECT_EQ(reported(), 30935);
  for (const char* function : {"open", "write", "manager"}) {
    visa_end_of_run(run);
    visa.fails = function;
    EXPECT_FALSE(line("[@5]A"));
    EXPECT_EQ(reported(), 30934) << function;
  }
  visa.fails.clear();
  visa.replies = {{0x3FFF0002, "x"}, {0x3FFF0006, std::string(4096, 'x')}, {0, "y"}};
  EXPECT_FALSE(line("[@5][I]"));
  EXPECT_EQ(reported(), 30934);
  EXPECT_FALSE(line("[I$]"));
  EXPECT_EQ(reported(), 2860);
  startup_config().ni_visa = 0;
  EXPECT_FALSE(line("[@5]A"));
  EXPECT_EQ(reported(), 313);
}

}  // namespace
}  // namespace orvane
