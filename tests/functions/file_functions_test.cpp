// Functions that change files, read keys of profile files, and keep named texts.
#include <gtest/gtest.h>

#include "config/startup_config.h"
#include "support/math_desk.h"
#include "values/variable_file.h"

namespace orvane {
namespace {

class FileFunctions : public test::MathTest {
 protected:
  FileFunctions() { startup_config() = StartupConfig(); }
  ~FileFunctions() override { startup_config() = StartupConfig(); }
};

TEST_F(FileFunctions, EditsByLine) {
  const struct {
    const char* before;
    const char* statement;
    const char* after;
    int message;
  } cases[] = {
      {"1\n2\n", "write(MEM2,\"x\",0)", "x\n1\n2\n", 0},
      {"1\n2\n", "write(MEM2,\"x\",1.9)", "1\nx\n2\n", 0},
      {"1\r\n2", "write(MEM2,\"x\",2)", "1\r\n2\nx\n", 0},
      {"1\n2\n", "write(MEM2,\"x\",3)", "1\n2\n", 3945},
      {"1\n2\n", "write(MEM2,\"x\",-1)", "1\n2\n", 3945},
      {"", "write(MEM2,\"x\",0)", "x\n", 0},
      {"1\n2\n", "insert(MEM2,\"x\",2)", "1\nx\n2\n", 0},
      {"1\n2\n", "insert(MEM2,\"x\",3)", "1\n2\nx\n", 0},
      {"1\n2\n", "insert(MEM2,\"x\",0)", "1\n2\n", 2006},
      {"1\n2\n", "replace(MEM2,\"x\",2)", "1\nx\n2\n", 0},
      {"1\n2\n", "replace(MEM2,\"x\",4)", "1\n2\n", 3947},
      {"1\n2\n3", "delete(MEM2,2)", "1\n3", 0},
      {"1\n2\n3", "delete(MEM2,3)", "1\n2\n", 0},
      {"1\n2\n3", "delete(MEM2,4)", "1\n2\n3", 3949},
      {"1\n2\n3", "delete(MEM2,0.5)", "1\n2\n3", 3949},
      {"1\n", "write(MEM2,\"x\",1e300)", "1\n", 3945},
      {"1\n", "write(S[9],\"x\",1)", "1\n", 3944},
      {"1\n", "insert(\"\",\"x\",1)", "1\n", 2005},
      {"1\n", "replace(\"\",\"x\",1)", "1\n", 3946},
      {"1\n", "delete(\"\",1)", "1\n", 3948},
  };
  for (const auto& c : cases) {
    run.registers.mem2 = write("f.txt", c.before);
    EXPECT_EQ(message_of(c.statement), c.message) << c.statement;
    EXPECT_EQ(contents(run.registers.mem2), c.after) << c.statement;
  }
  // A line at the limit is copied whole, a longer one stops the edit before anything is lost.
  const std::string longest(16384, 'x');
  run.registers.mem2 = write("f.txt", longest + "\n");
  EXPECT_EQ(message_of("write(MEM2,\"x\",0)"), 0);
  EXPECT_EQ(contents(run.registers.mem2), "x\n" + longest + "\n");
  run.registers.mem2 = write("f.txt", longest + "y\n");
  EXPECT_EQ(message_of("write(MEM2,\"x\",0)"), 3945);
  EXPECT_EQ(contents(run.registers.mem2), longest + "y\n");
  // What is read goes with the edits, also where the file keeps its size.
  run.registers.mem2 = write("f.txt", "a\nb\n");
  EXPECT_EQ(text("read(MEM2,2)"), "b");
  EXPECT_TRUE(math("delete(MEM2,2);insert(MEM2,\"c\",1)"));
  EXPECT_EQ(text("read(MEM2,1)&read(MEM2,2)"), "ca");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
}

TEST_F(FileFunctions, DeletesAFile) {
  run.registers.mem2 = write("gone", "x");
  EXPECT_GT(number("mtime(MEM2)"), 1.6e9);
  EXPECT_EQ(message_of("unlink(MEM2)"), 0);
  EXPECT_EQ(number("exists(MEM2)+mtime(MEM2)"), 0);
  EXPECT_EQ(message_of("unlink(MEM2)"), 3446);
  EXPECT_EQ(message_of("unlink(S[9])"), 3446);
  run.registers.mem2 = folder.string();
  EXPECT_EQ(message_of("unlink(MEM2)"), 3448);
}

TEST_F(FileFunctions, KeysOfProfileFiles) {
  StartupConfig& config = startup_config();
  const std::string base = folder.string();
  run.registers.s[1] = write("p.ini", "[a]\nk = 1\n");
  EXPECT_EQ(text("rif(S[1],\"A\",\"K\")"), "1");
  EXPECT_EQ(number("Null(rif(S[1],\"a\",\"x\"))"), 1);
  EXPECT_EQ(message_of("wif(S[1],\"a\",\"k\",\"2\")"), 0);
  const struct {
    std::string key;
    std::string* folder;
  } bases[] = {{base, nullptr},
               {base + "/cfg/@user_cwd", &config.user_cwd},
               {base + "/cfg/@ user_prog_dir", &config.user_prog_dir},
               {"@user_data_dir", &config.user_data_dir}};
  for (const auto& c : bases) {
    config = StartupConfig();
    config.RifWifDir = c.key;
    EXPECT_EQ(text("rif(\"p.ini\",\"a\",\"k\")"), c.folder == nullptr ? "2" : "") << c.key;
    if (c.folder != nullptr) *c.folder = base;
    EXPECT_EQ(text("rif(\"p.ini\",\"a\",\"k\")"), "2") << c.key;
  }
  EXPECT_EQ(message_of("S[2]=rif(\"\",\"a\",\"k\")"), 10330);
  EXPECT_EQ(message_of("S[2]=rif(pad(\"x\",300),\"a\",\"k\")"), 10331);
  EXPECT_EQ(message_of("wif(\"/proc/none/x\",\"a\",\"k\",\"v\")"), 2242);

  config = StartupConfig();
  EXPECT_EQ(message_of("S[2]=rinf(\"a\",\"k\")"), 10333);
  config.workdir = base;
  EXPECT_EQ(message_of("S[2]=rinf(\"a\",\"k\")"), 10332);
  write("user_config_instr.ini", "[a]\nk=5\n");
  EXPECT_EQ(text("rinf(\"a\",\"k\")&rinfe(\"a\",\"k\")"), "55");
  EXPECT_EQ(number("Null(rinf(\"a\",\"x\"))"), 1);
  EXPECT_EQ(message_of("S[2]=rinfe(\"a\",\"x\")"), 10335);
  config.RinfBase = "p.ini";
  EXPECT_EQ(text("rinf(\"a\",\"k\")"), "2");
  config.RinfDir = "/none";
  EXPECT_EQ(message_of("S[2]=rinf(\"a\",\"k\")"), 10332);
  config.RinfDir = std::string(260, 'd');
  EXPECT_EQ(message_of("S[2]=rinf(\"a\",\"k\")"), 10334);

  config = StartupConfig();
  config.user_cwd = base;
  EXPECT_EQ(text("dfile()"), base + "/dosdose.dat");
  config.user_data_dir = "/data";
  EXPECT_EQ(text("dfile()"), "/data/dosdose.dat");
  config.user_data_dir = std::string(260, 'd');
  EXPECT_EQ(message_of("S[2]=dfile()"), 1893);
}

TEST_F(FileFunctions, NamedTexts) {
  EXPECT_EQ(number("Null(get(\"a\"))"), 1);
  EXPECT_EQ(number("Null(put(\"a\",\"1\"))"), 1);
  EXPECT_EQ(text("put(\"a\",\"2\")&get(\"a\")&get(\"A\")"), "12");
  EXPECT_EQ(message_of("put(S[9],\"1\")"), 9997);

  const std::string path = write("vars.txt", "PTITLE_L$=\n");
  ASSERT_TRUE(var_open(run, path, ""));
  EXPECT_EQ(number("Null(getv(\"foo\"))"), 1);
  EXPECT_EQ(number("Null(putv(\"foo\",\"1\"))"), 1);
  EXPECT_EQ(contents(path), "FOO$=1\nPTITLE_L$=\n");
  EXPECT_EQ(text("putv(\"FOO$\",\"2\")&getv(\"FOO\")&getv(\"foo$\")"), "122");
  run_variable_set(run, "FOO$", "of the run");
  EXPECT_EQ(text("getv(\"FOO\")"), "of the run");
  const std::string value(506, 'v');
  run.registers.mem2 = value;
  EXPECT_EQ(message_of("putv(\"foo$\",MEM2)"), 0);
  EXPECT_EQ(contents(path), "FOO$=" + value + "\nPTITLE_L$=\n");
  const std::pair<const char*, int> faults[] = {{"putv(\"FOOO\",MEM2)", 1892},
                                                {"putv(S[9],\"1\")", 1890},
                                                {"S[1]=getv(S[9])", 1888},
                                                {"S[1]=getv(\"1x\")", 1887},
                                                {"putv(\"AB\",\"x\\ny\")", 4514}};
  for (const auto& [statement, message] : faults) EXPECT_EQ(message_of(statement), message) << statement;
  EXPECT_EQ(message_of("putv(\"1x\",\"1\")"), 4506);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4506, 1889, 2035}));
}

}  // namespace
}  // namespace orvane
