// Damaged compiled procedures through the programs: never a signal, never silent.
#include <random>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

class Hostile : public LaboratoryTest {
 protected:
  // A loop that a flipped bit has made endless is aborted again and again, until no answer is left.
  std::string impatient_operator() const {
    std::string answers;
    for (int i = 0; i < 50; ++i) answers += "default\n";
    for (int i = 0; i < 100; ++i) answers += "abort-at " + std::to_string(3000 + i) + "\n";
    return answers;
  }
};

TEST_F(Hostile, FlippedBytesOfACompiledProcedure) {
  demo();
  const std::string sound = contents("procedures/4.prc");
  ASSERT_GT(sound.size(), 2000U);
  std::mt19937 random(20261122);
  constexpr int damaged_files = 40;
  std::vector<std::string> check = {"check"};
  for (int i = 0; i < damaged_files; ++i) {
    std::string damaged = sound;
    for (int flips = 1 + i % 3; flips > 0; --flips) {
      // Every second file is damaged in its header or the first records.
      const std::size_t at = random() % (i % 2 == 0 ? damaged.size() : 400);
      damaged[at] = static_cast<char>(damaged[at] ^ (1 << random() % 8));
    }
    if (i % 10 == 9) damaged.resize(random() % damaged.size());
    const std::string name = "damaged-" + std::to_string(i) + ".prc";
    write(name, damaged);
    check.push_back(path(name));
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"list", path(name)}, {"dump", "--json", path(name)}}) {
      const Ended ended = run_process(ovproc(words));
      EXPECT_EQ(ended.signal, 0) << name;
      EXPECT_LE(ended.status, 1) << name;
      EXPECT_EQ(ended.status == 1, ended.err.starts_with(path(name) + ": E")) << ended.err;
    }
    write("procedures/4.prc", damaged);
    const Ended ended = run_process(ovrun("Hand-held multimeter: ohms", impatient_operator()));
    EXPECT_EQ(ended.signal, 0) << name;
    EXPECT_LE(ended.status, 3) << name;
    if (ended.status == 3) {
      EXPECT_TRUE(ended.err.starts_with("E")) << name << ": " << ended.err;
    }
  }
  const Ended checked = run_process(ovproc(check));
  EXPECT_EQ(checked.signal, 0);
  EXPECT_EQ(checked.status, 1);
  EXPECT_NE(checked.err.find(": E"), std::string::npos);
}

TEST_F(Hostile, FilesThatAreNoProcedures) {
  demo();
  write("zeros.prc", std::string(100000, '\0'));
  write("text.prc", "INSTRUMENT: no\n");
  // A header that promises 65,535 records of each kind and nothing behind it.
  write("promise.prc", std::string("\x1A\x13\xF3\x1C"
                                   "1.00\0\0\0\0\x08\x02\0\x5C\0\xFF\xFF\xFF\xFF",
                                   21));
  for (const char* name :
       {"zeros.prc", "text.prc", "promise.prc", "missing.prc", "procedures", "/dev/zero"}) {
    const std::string file = name[0] == '/' ? name : path(name);
    for (const char* verb : {"check", "list", "dump"}) {
      const Ended ended = run_process(ovproc({verb, file}));
      EXPECT_EQ(ended.status, 1) << verb << " " << name << ", signal " << ended.signal;
      EXPECT_TRUE(ended.err.starts_with(file + ": ")) << ended.err;
    }
  }
  for (const char* name : {"zeros.prc", "text.prc", "promise.prc"}) {
    std::filesystem::copy_file(folder / name, folder / "procedures/4.prc",
                               std::filesystem::copy_options::overwrite_existing);
    const Ended ended = run_process(ovrun("Hand-held multimeter: ohms", "*\n"));
    EXPECT_EQ(ended.status, 3) << name;
    EXPECT_TRUE(ended.err.starts_with("E4")) << ended.err;
  }
  write("procedures/proc.dir", std::string(1000, 'x'));
  EXPECT_EQ(run_process(ovrun("Hand-held multimeter: ohms", "*\n")).status, 3);
  EXPECT_EQ(run_process(ovrun({"--list"})).status, 3);
}

}  // namespace
}  // namespace orvane::test
