// Printing from a terminal: what the printing system's program is given, and what becomes of its refusal.
#include "console/printing.h"

#include <cstdlib>
#include <filesystem>

#include "config/startup_config.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

class Printing : public EngineTest {
 protected:
  Printing() : path_(std::getenv("PATH")) {
    startup_config().workdir = folder.string();
    ::setenv("PATH", (folder.string() + ":/usr/bin:/bin").c_str(), 1);
    ::unsetenv("PAPERSIZE");
  }
  ~Printing() override {
    ::setenv("PATH", path_.c_str(), 1);
    startup_config().workdir.clear();
  }
  // A printing system that keeps what it is given.
  void install(const std::string& end) {
    const std::string own = folder.string();
    const std::string program =
        write("lp", "#!/bin/sh\nprintf '%s\\n' \"$@\" > " + own +
                        "/words\nfor last; do :; done\ncp \"$last\" " + own + "/document\n" + end + "\n");
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  }
  bool print(const std::vector<std::vector<std::string>>& pages) {
    ConsolePrinters printers;
    const std::unique_ptr<Printer> printer = printers.open(PrintUse::results);
    if (printer == nullptr || !printer->begin("Results of \xB5"
                                              "A"))
      return false;
    for (const auto& page : pages) {
      EXPECT_TRUE(printer->begin_page() && printer->select_font());
      int row = 1;
      for (const std::string& line : page) EXPECT_TRUE(printer->text(4, row++, line));
      EXPECT_TRUE(printer->end_page());
    }
    return printer->end();
  }
  std::string given(const char* name) const { return contents((folder / name).string()); }

 private:
  std::string path_;
};

TEST_F(Printing, PagesOfTextWithTheSizeOfTheirCharacters) {
  install("exit 0");
  ASSERT_TRUE(print({{"first", "10 \xB5V"}, {"second"}})) << desk.last_message();
  EXPECT_EQ(given("document"), "\n    first\n    10 \u00B5V\n\f\n    second\n");
  EXPECT_EQ(
      given("words"),
      "-t\nResults of \u00B5A\n-o\ncpi=12\n-o\nlpi=6\n-o\npage-left=0\n-o\npage-right=0\n-o\npage-top=0\n"
      "-o\npage-bottom=0\n" +
          (folder / "print.tmp").string() + "\n");
}

TEST_F(Printing, ARefusalIsTold) {
  install("exit 1");
  EXPECT_FALSE(print({{"text"}}));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{31333});
  install("kill -9 $$");
  EXPECT_FALSE(print({{"text"}}));
  std::filesystem::remove(folder / "lp");
  ::setenv("PATH", folder.c_str(), 1);
  desk.shown.clear();
  EXPECT_FALSE(ConsolePrinters().has_printer(PrintUse::results));
  EXPECT_FALSE(print({{"text"}}));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4856});
}

}  // namespace
}  // namespace orvane::test
