// A laboratory in a folder of its own, in which the built programs run as an operator would start them.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/procedures.h"
#include "support/process.h"

namespace orvane::test {

constexpr const char* demo_procedure = "Hand-held multimeter: verification";

class LaboratoryTest : public ::testing::Test {
 protected:
  /// The demo laboratory's configuration with the simulated board of this build and without the windows in front of a
  /// run and behind it, and no procedure yet.
  LaboratoryTest();
  ~LaboratoryTest() override;

  /// Compiles the demo's procedures: 1.prc the verification, 2.prc DC, 3.prc AC, 4.prc ohms.
  void demo();
  /// The same, with those windows: what demo/answers.txt answers.
  void demo_with_its_windows();
  /// Compiles source_line()s behind a standard header.
  void procedure(const std::string& name, const std::vector<std::string>& statements,
                 const std::string& configuration = {});

  /// The command "ovrun --config ... --settings ... --mode real --transcript ... WORDS".
  Command ovrun(const std::vector<std::string>& words) const;
  /// The same for a procedure with the answers of a text.
  Command ovrun(const std::string& procedure, const std::string& answers) const;
  Command ovproc(const std::vector<std::string>& words) const;

  std::string path(const std::string& name) const { return (folder / name).string(); }
  void write(const std::string& name, std::string_view text) const;
  /// Replaces the line of a key in the laboratory's configuration, or adds one.
  void configure(const std::string& key, const std::string& value) const;
  std::string contents(const std::string& name) const;  // "" if there is no such file

  /// The transcript's lines; with a name only the events that have it.
  std::vector<nlohmann::json> events(const std::string& event = {}) const;
  /// The numbers of the messages in the transcript.
  std::vector<int> message_numbers() const;

  std::filesystem::path folder;

 private:
  void write_configuration(bool asks) const;
};

}  // namespace orvane::test
