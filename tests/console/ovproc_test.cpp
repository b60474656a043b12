#include "console/ovproc.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "procedure/file/procedure_bytes.h"
#include "support/desk.h"

namespace orvane {
namespace {

struct Outcome {
  int status = -1;
  std::string out, err;
};

class OvprocTest : public test::EngineTest {
 protected:
  Outcome run_ovproc(const std::vector<std::string>& arguments, const std::string& input = {}) const {
    std::istringstream in(input);
    std::ostringstream out, err;
    Outcome made;
    made.status = ovproc(arguments, {in, out, err});
    made.out = out.str();
    made.err = err.str();
    return made;
  }
  std::string in_folder(const std::string& name) const { return (folder / name).string(); }
  std::string file(const std::string& name) const { return contents(in_folder(name)); }

  std::string dir = folder.string();
};

// "a µ" in UTF-8.
const std::string source =
    "INSTRUMENT:            Meter \xC2\xB5\n"
    "CONFIGURATION:         HP 3458A\n"
    "# first\n"
    "  1.001  DISP         a \xC2\xB5\n"
    "  1.002  MEMC         10.0V          1%\n"
    "  1.003  END\n";

TEST_F(OvprocTest, CompileListAndFind) {
  const std::string path = write("s.txt", source);
  const Outcome compiled = run_ovproc({"compile", path, "--procdir", dir});
  EXPECT_EQ(compiled.status, 0) << compiled.err;
  EXPECT_EQ(compiled.out, "1.prc Meter \xC2\xB5\n");
  EXPECT_EQ(file("proc.dir").substr(0, 26), " EFL 1.prc        Meter \xB5 ");

  const Outcome listed = run_ovproc({"list", in_folder("1.prc")});
  EXPECT_EQ(listed.out, source);
  EXPECT_EQ(run_ovproc({"list", "--procdir", dir, "METER \xC2\xB5"}).out, source);
  EXPECT_EQ(run_ovproc({"dir", "find", "meter \xC2\xB5", "--procdir", dir}).out, "1.prc Meter \xC2\xB5\n");

  const std::string before = file("1.prc");
  const Outcome again = run_ovproc({"compile", "-", "--procdir", dir}, listed.out);
  EXPECT_EQ(again.out, "1.prc Meter \xC2\xB5\n") << "compiling again replaces the file";
  EXPECT_EQ(file("1.prc"), before);
  EXPECT_EQ(file("proc.dir").size(), 75U);
  EXPECT_EQ(run_ovproc({"check", in_folder("1.prc")}).status, 0);
}

TEST_F(OvprocTest, SourcesOfAllKinds) {
  const Outcome result = run_ovproc({"compile", "-", "--procdir", dir},
                                    "\xEF\xBB\xBFINSTRUMENT:            A\r\n"
                                    "         DISP         \xB5 as one byte   \t\r\n"
                                    "         DISP         \xE2\x82\xAC as UTF-8\r\n");
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(run_ovproc({"list", in_folder("1.prc")}).out,
            "INSTRUMENT:            A\n"
            "         DISP         \xC2\xB5 as one byte\n"
            "         DISP         \xE2\x82\xAC as UTF-8\n");
}

TEST_F(OvprocTest, FaultsLeaveEverythingAsItWas) {
  ASSERT_EQ(run_ovproc({"compile", write("s.txt", source), "--procdir", dir}).status, 0);
  const std::string before = file("proc.dir");
  const std::string good = write("good.txt", "INSTRUMENT:            Good\n");
  const std::string bad = write("bad.txt",
                                "INSTRUMENT:            Bad\n"
                                "  1.001  DSIP\n"
                                "         DISP         10 \xCE\xA9 and \xCE\xA9\n"
                                "  1.002  JMP          9.999\n");
  const Outcome result = run_ovproc({"compile", good, bad, "--procdir", dir});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, bad + ":2:10: there is no statement \"DSIP\"\n" + bad +
                            ":3:26: the character \"\xCE\xA9\" has no place in Windows-1252\n" + bad +
                            ":4:23: no line has this test number\n");
  EXPECT_EQ(result.out, "");
  EXPECT_EQ(file("proc.dir"), before);
  EXPECT_FALSE(std::filesystem::exists(in_folder("2.prc")));

  EXPECT_EQ(run_ovproc({"compile", "-", "--procdir", dir}, "x").err,
            "-:1:1: the line \"INSTRUMENT:\" with the procedure's name is missing\n");
  const Outcome twice = run_ovproc({"compile", good, good, "--procdir", dir});
  EXPECT_EQ(twice.status, 1);
  EXPECT_NE(twice.err.find("E30106: "), std::string::npos) << twice.err;
  const Outcome none = run_ovproc({"compile", in_folder("none.txt"), "--procdir", dir});
  EXPECT_EQ(none.err, in_folder("none.txt") + ": E30104: The source \"" + in_folder("none.txt") +
                          "\" cannot be read.\n");
  const Outcome nowhere = run_ovproc({"compile", good, "--procdir", in_folder("no/folder")});
  EXPECT_EQ(nowhere.status, 1);
  EXPECT_TRUE(nowhere.err.starts_with("E407: ")) << nowhere.err;
}

TEST_F(OvprocTest, DumpsTheSameValuesTwice) {
  ASSERT_EQ(run_ovproc({"compile", "-", "--procdir", dir}, source).status, 0);
  const Outcome dumped = run_ovproc({"dump", in_folder("1.prc"), "--json"});
  const auto json = nlohmann::json::parse(dumped.out);
  EXPECT_EQ(json["version"], 8);
  EXPECT_EQ(json["main"], 5);
  EXPECT_EQ(json["listing"], 1);
  EXPECT_EQ(json["required"][0]["instrument"], 1);
  ASSERT_EQ(json["records"].size(), 6U);
  EXPECT_EQ(json["records"][2]["code"], 2063);
  EXPECT_EQ(json["records"][2]["fsc"], "DISP");
  EXPECT_EQ(json["records"][2]["text"], "a \xC2\xB5");
  EXPECT_EQ(json["records"][2]["listing_before"], 1);
  EXPECT_EQ(json["records"][3]["nominal"], "10.0V");
  EXPECT_EQ(json["records"][3]["tolerance"]["terms"][0]["kind"], 39);
  EXPECT_EQ(json["records"][5]["text"], "# first")
      << "listing records stand behind the main records, as in the file";
  const Outcome text = run_ovproc({"dump", in_folder("1.prc")});
  EXPECT_NE(text.out.find("record 4\n  code: 18484\n  fsc: MEMC\n  test_major: 1\n  test_minor: 2\n"),
            std::string::npos);
  EXPECT_NE(text.out.find("  tolerance.terms.0.kind: 39\n"), std::string::npos) << text.out;
}

// A record of every code, with bytes of every value: whatever it is, it is shown as UTF-8 without control characters.
TEST_F(OvprocTest, HostileRecordsAreShown) {
  test::FileParts parts;
  for (int code = 0; code < 0x10000; code += 7) {
    FscRecord record{};
    for (std::size_t i = 0; i < record.bytes.size(); ++i)
      record.bytes[i] = static_cast<std::uint8_t>(code * 31 + static_cast<int>(i) * 77);
    record.set(field::code, static_cast<std::uint16_t>(code & ~0x0300));
    record.set(field::listing_before, std::uint8_t{0});
    parts.main.push_back(record);
  }
  const std::string path = write("hostile.prc", test::file_bytes(parts));
  const Outcome listed = run_ovproc({"list", path});
  EXPECT_EQ(listed.status, 0);
  EXPECT_EQ(static_cast<std::size_t>(std::count(listed.out.begin(), listed.out.end(), '\n')),
            parts.main.size());
  for (const char c : listed.out) EXPECT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20);
  EXPECT_EQ(listed.out.find(" \n"), std::string::npos);
  EXPECT_EQ(nlohmann::json::parse(run_ovproc({"dump", "--json", path}).out)["records"].size(),
            parts.main.size());
  EXPECT_EQ(run_ovproc({"check", path}).status, 1);
}

TEST_F(OvprocTest, ChecksFiles) {
  FscRecord jmp = test::make_record(fsc::jmp);
  jmp.set(field::jmp_target_index, 7);
  test::FileParts parts;
  parts.main = {test::make_record(fsc::disp, "x", 0x1013), jmp, test::make_record(0x0800 | 5)};
  parts.listing = {test::comment_record("# c")};
  const std::string whole = test::file_bytes(parts);
  const std::string path = write("1.prc", whole + "xyz");
  const Outcome result = run_ovproc({"check", path});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err, path + ": line 2: E30107: The branch of JMP leads to no line.\n" + path +
                            ": line 1: E30110: The statement DISP has no last line.\n" + path +
                            ": line 3: E30108: There is no statement with the code 2053.\n" + path +
                            ": offset 389: E30109: 3 bytes stand behind the last record.\n");
  write("1.prc", whole.substr(0, 200));
  EXPECT_EQ(run_ovproc({"check", path}).err,
            path + ": offset 200: E406: The file \"" + path + "\" ends too early, or cannot be read.\n");
  std::string misplaced = whole;
  misplaced[21 + 92 + 1] = '\x01';
  write("1.prc", misplaced);
  EXPECT_TRUE(run_ovproc({"check", path}).err.starts_with(path + ": offset 113: E403: "));
  EXPECT_TRUE(run_ovproc({"list", path}).err.starts_with(path + ": E403: "));
}

TEST_F(OvprocTest, Directories) {
  EXPECT_TRUE(run_ovproc({"dir", "list", "--procdir", dir}).err.starts_with("E911: "));
  write("proc.dir", "");
  const Outcome empty = run_ovproc({"dir", "list", "--procdir", dir});
  EXPECT_EQ(empty.status, 0);
  EXPECT_EQ(empty.out + empty.err, "");
  for (const char* name : {"b", "C", "a"})
    ASSERT_EQ(run_ovproc({"compile", "-", "--procdir", dir}, std::string("INSTRUMENT: ") + name).status, 0);
  EXPECT_EQ(run_ovproc({"dir", "list", "--procdir", dir}).out, "1.prc b\n2.prc C\n3.prc a\n");
  EXPECT_EQ(run_ovproc({"dir", "sort", "--procdir", dir}).status, 0);
  EXPECT_EQ(run_ovproc({"dir", "list", "--procdir", dir}).out, "3.prc a\n1.prc b\n2.prc C\n");
  const Outcome missing = run_ovproc({"dir", "find", "d", "--procdir", dir});
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.err, "E905: There is no procedure \"d\" of this kind in the procedure directory.\n");
  write("proc.dir", file("proc.dir") + "x");
  for (const char* command : {"list", "sort"})
    EXPECT_EQ(run_ovproc({"dir", command, "--procdir", dir}).status, 1);
  EXPECT_TRUE(run_ovproc({"dir", "find", "a", "--procdir", dir}).err.starts_with("E909: "));
  EXPECT_EQ(file("proc.dir").size(), 226U) << "a failed sort leaves the file";
}

TEST_F(OvprocTest, Usage) {
  for (const std::vector<std::string>& arguments : {std::vector<std::string>{},
                                                    {"frobnicate"},
                                                    {"list"},
                                                    {"compile"},
                                                    {"dir"},
                                                    {"dir", "find"},
                                                    {"dump", "a", "b"},
                                                    {"list", "--no-such-option", "x"}}) {
    const Outcome result = run_ovproc(arguments);
    EXPECT_EQ(result.status, 64);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
  }
  EXPECT_EQ(run_ovproc({"--help"}).status, 0);
  EXPECT_EQ(run_ovproc({"--version"}).status, 0);
}

// The examples of the document are true: they compile, and are shown as they stand.
TEST_F(OvprocTest, ExamplesOfTheDocument) {
  std::istringstream document(contents(ORVANE_SOURCE_DIR "/docs/formats.md"));
  const std::string ruler = "    1       10     17    23 ";
  std::string text, example = "INSTRUMENT:            Examples\n";
  while (std::getline(document, text) && !text.starts_with(ruler)) continue;
  while (std::getline(document, text) && text.starts_with("    ")) example += text.substr(4) + "\n";
  EXPECT_GT(std::count(example.begin(), example.end(), '\n'), 20);
  const Outcome compiled = run_ovproc({"compile", "-", "--procdir", dir}, example);
  EXPECT_EQ(compiled.err, "");
  EXPECT_EQ(run_ovproc({"list", in_folder("1.prc")}).out, example);
}

// Files of each format version that was ever written must load for ever, and show what they showed.
TEST_F(OvprocTest, ReleasedFormats) {
  for (const std::string name : {"procedure_v8", "procedure_v9"}) {
    const std::string data = ORVANE_SOURCE_DIR "/tests/data/" + name;
    EXPECT_EQ(run_ovproc({"check", data + ".prc"}).err, "") << name;
    EXPECT_EQ(run_ovproc({"list", data + ".prc"}).out, contents(data + ".txt")) << name;
    ASSERT_EQ(run_ovproc({"compile", data + ".txt", "--procdir", dir}).status, 0) << name;
  }
  // All but the compiler's own version.
  const auto rest = [](const std::string& bytes) { return bytes.substr(0, 4) + bytes.substr(10); };
  EXPECT_EQ(rest(file("1.prc")), rest(contents(ORVANE_SOURCE_DIR "/tests/data/procedure_v8.prc")));
  EXPECT_EQ(rest(file("2.prc")), rest(contents(ORVANE_SOURCE_DIR "/tests/data/procedure_v9.prc")));
}

}  // namespace
}  // namespace orvane
