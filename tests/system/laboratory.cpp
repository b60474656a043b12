#include "system/laboratory.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "support/procedures.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

std::string read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace

LaboratoryTest::LaboratoryTest() {
  std::string pattern = (fs::temp_directory_path() / "orvane-laboratory-XXXXXX").string();
  folder = ::mkdtemp(pattern.data());
  fs::create_directory(folder / "procedures");
  fs::create_directory(folder / "work");
  for (const char* part : {"instruments.txt", "inventory.txt", "data-entry.txt", "accuracy", "corrections",
                           "templates", "trace.txt"})
    fs::copy(fs::path(ORVANE_SOURCE_DIR "/demo") / part, folder / part, fs::copy_options::recursive);
  write_configuration(false);
}

void LaboratoryTest::write_configuration(bool asks) const {
  std::istringstream demo(read(ORVANE_SOURCE_DIR "/demo/orvane.ini"));
  std::string text;
  for (std::string one; std::getline(demo, one);) {
    if (one.starts_with("ib_driver")) one = "ib_driver = " + built("libgpibsim.so");
    if (!asks && one.starts_with("bcf")) one = "bcf =";
    if (!asks && one.starts_with("postmenu")) continue;
    text += one + "\n";
  }
  write("orvane.ini", text);
}

LaboratoryTest::~LaboratoryTest() {
  std::error_code error;
  fs::remove_all(folder, error);
}

void LaboratoryTest::demo() {
  std::vector<std::string> words = {"compile"};
  for (const auto& entry : fs::directory_iterator(ORVANE_SOURCE_DIR "/demo/source"))
    words.push_back(entry.path());
  std::sort(words.begin() + 1, words.end());
  words.insert(words.end(), {"--procdir", path("procedures")});
  const Ended compiled = run_process(ovproc(words));
  ASSERT_EQ(compiled.status, 0) << compiled.err;
}

void LaboratoryTest::demo_with_its_windows() {
  demo();
  write_configuration(true);
}

void LaboratoryTest::configure(const std::string& key, const std::string& value) const {
  std::istringstream old(contents("orvane.ini"));
  std::string text;
  for (std::string one; std::getline(old, one);) {
    if (!one.starts_with(key + " =")) text += one + "\n";
    if (one == "[startup]") text += key + " = " + value + "\n";
  }
  write("orvane.ini", text);
}

void LaboratoryTest::procedure(const std::string& name, const std::vector<std::string>& statements,
                               const std::string& configuration) {
  std::string text = header(name, configuration);
  for (const std::string& statement : statements) text += statement + "\n";
  const Ended compiled = run_process(ovproc({"compile", "-", "--procdir", path("procedures")}), text);
  ASSERT_EQ(compiled.status, 0) << compiled.err;
}

Command LaboratoryTest::ovrun(const std::vector<std::string>& words) const {
  Command command;
  command.words = {built("ovrun"), "--config", path("orvane.ini"), "--settings",     path("settings.ini"),
                   "--mode",       "real",     "--transcript",     path("run.jsonl")};
  command.words.insert(command.words.end(), words.begin(), words.end());
  // No configuration of the person who runs the tests, no terminal of theirs.
  command.environment = {{"ORVANE_BENCH", ORVANE_SOURCE_DIR "/demo/bench.txt"},
                         {"HOME", path("home")},
                         {"XDG_CONFIG_HOME", path("home/.config")},
                         {"ORVANE_INI", ""},
                         {"TERM", "xterm"}};
  command.directory = folder.string();
  return command;
}

Command LaboratoryTest::ovrun(const std::string& procedure, const std::string& answers) const {
  write("answers.txt", answers);
  return ovrun({"--answers", path("answers.txt"), "-run", procedure});
}

Command LaboratoryTest::ovproc(const std::vector<std::string>& words) const {
  Command command{.words = {built("ovproc")}, .environment = {}, .directory = folder.string()};
  command.words.insert(command.words.end(), words.begin(), words.end());
  return command;
}

void LaboratoryTest::write(const std::string& name, std::string_view text) const {
  std::ofstream(folder / name, std::ios::binary) << text;
}

std::string LaboratoryTest::contents(const std::string& name) const { return read(folder / name); }

std::vector<nlohmann::json> LaboratoryTest::events(const std::string& event) const {
  std::vector<nlohmann::json> list;
  std::istringstream lines(contents("run.jsonl"));
  for (std::string one; std::getline(lines, one);) {
    nlohmann::json json = nlohmann::json::parse(one);
    if (event.empty() || json["event"] == event) list.push_back(std::move(json));
  }
  return list;
}

std::vector<int> LaboratoryTest::message_numbers() const {
  std::vector<int> numbers;
  for (const nlohmann::json& event : events("message")) numbers.push_back(event["number"]);
  return numbers;
}

}  // namespace orvane::test
