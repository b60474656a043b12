// The bus traffic of a run as a file, and a run against it without a bench.
#include "system/laboratory.h"

namespace orvane::test {
namespace {

using Record = LaboratoryTest;

TEST_F(Record, ADemoRunAgainstItsRecordGivesTheSameResults) {
  demo();
  write("answers.txt", "yes\n*\n");
  const std::vector<std::string> start = {"--answers", path("answers.txt"), "-run", demo_procedure};
  const auto with = [&](const char* option) {
    std::vector<std::string> words = start;
    words.insert(words.end(), {option, path("bus.jsonl")});
    return run_process(ovrun(words));
  };
  const Ended first = with("--record");
  ASSERT_EQ(first.status, 1) << first.err;
  const std::string record = contents("bus.jsonl");
  EXPECT_NE(record.find("\"call\":\"Receive\",\"board\":0,"), std::string::npos) << record.substr(0, 2000);

  configure("ib_driver", "no-such-driver.so");
  const Ended again = with("--replay");
  EXPECT_EQ(again.status, 1) << again.err;
  EXPECT_EQ(again.out, first.out);
  EXPECT_EQ(again.err, first.err);

  // A byte that the program is to send, in the middle of the run.
  const std::size_t at = record.find("\"bytes\":", record.size() / 2);
  ASSERT_NE(at, std::string::npos);
  const std::size_t send = record.rfind("\"dir\":\"out\",\"call\":\"Send\"", at);
  std::string other = record;
  other[other.find("\"bytes\":\"", send) + 9] = '~';
  write("bus.jsonl", other);
  const Ended differs = with("--replay");
  EXPECT_EQ(differs.status, 3);
  EXPECT_NE(differs.err.find("E30904: "), std::string::npos) << differs.err;
  EXPECT_NE(differs.err.find("from byte 1 on: Send 0,"), std::string::npos) << differs.err;
}

}  // namespace
}  // namespace orvane::test
