#include <gtest/gtest.h>

#include <filesystem>

#include "config/config_writers.h"
#include "config/profile.h"
#include "config/startup_config.h"
#include "support/configuration.h"
#include "support/desk.h"

namespace orvane {
namespace {

class StartupChecks : public test::EngineTest {
 protected:
  StartupChecks() { test::make_configured_folders(folder); }
  ~StartupChecks() override { startup_config() = StartupConfig(); }

  std::vector<ConfigFault> faults;
  std::string path;

  // The sound configuration with the lines of these keys replaced, others put behind.
  static std::string with(const std::vector<std::string>& lines) {
    std::string text = test::sound_configuration();
    for (const std::string& line : lines) {
      const std::string key = line.substr(0, line.find(" ="));
      const std::size_t at = text.find("\n" + key + " =");
      if (at == std::string::npos) {
        text += line + "\n";
      } else {
        text.replace(at + 1, text.find('\n', at + 1) - at - 1, line);
      }
    }
    return text;
  }
  bool load(const std::string& text) {
    faults.clear();
    path = write("orvane.ini", text);
    return config_load(path, faults);
  }
  std::vector<int> numbers() const {
    std::vector<int> all;
    for (const ConfigFault& fault : faults) all.push_back(fault.number);
    return all;
  }
};

TEST_F(StartupChecks, KeysThatDoNotFitOneAnother) {
  struct Case {
    std::vector<std::string> lines;
    std::vector<int> faults;
  };
  const Case cases[] = {
      {{"ptitle_l = " + std::string(40, 'l'), "ptitle_r = " + std::string(37, 'r')}, {}},
      {{"ptitle_l = " + std::string(40, 'l'), "ptitle_r = " + std::string(38, 'r')}, {518}},
      {{"ib_nport = 1", "ib_type = NONE"}, {519}},
      {{"ib_nport = 1", "ib_type = PCI-GPIB"}, {}},
      {{"ib_nport = 1", "ib_type = PC2A"}, {517}},
      {{"ib_type = PC2B(T)"}, {517}},
      {{"ib_type = PC2A", "winsys = WIN2000"}, {517}},
      {{"ib_type = PC2A", "winsys = WIN95"}, {}},
      {{"ib_type = PC2A", "winsys = WIN98"}, {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(load(with(c.lines)), c.faults.empty()) << c.lines.back();
    EXPECT_EQ(numbers(), c.faults) << c.lines.back();
  }
}

// Every path key at once: each fault has its number and names its key.
TEST_F(StartupChecks, EveryPathIsChecked) {
  const std::pair<const char*, int> files[] = {{"bcf", 527},
                                               {"cal_cert_template", 528},
                                               {"calhist_template", 529},
                                               {"config", 530},
                                               {"fail_prompt", 531},
                                               {"pass_prompt", 532},
                                               {"prompt", 533},
                                               {"rslt_col_fl_template", 534},
                                               {"rslt_col_template", 535},
                                               {"rslt_fl_template", 536},
                                               {"rslt_page", 537},
                                               {"rslt_page_fl_template", 538},
                                               {"rslt_template", 539},
                                               {"trace_template", 540},
                                               {"varfile", 541},
                                               {"workload_template", 542},
                                               {"trace", 579},
                                               {"error_log", 7800},
                                               {"calhist_results", 7798}};
  const std::pair<const char*, int> folders[] = {
      {"accdir", 543},        {"correctdir", 544},    {"helpdir", 545}, {"password_dir", 546},
      {"picdir", 547},        {"procdir", 548},       {"rsltdir", 549}, {"user_cwd", 550},
      {"user_data_dir", 551}, {"user_prog_dir", 552}, {"workdir", 553}};
  write("a_file", "x");
  std::vector<std::string> wrong, absent, right;
  for (const auto& [key, number] : files) {
    wrong.push_back(std::string(key) + " = acc");
    absent.push_back(std::string(key) + " = not_there");
    right.push_back(std::string(key) + " = a_file");
  }
  for (const auto& [key, number] : folders) {
    wrong.push_back(std::string(key) + " = a_file");
    absent.push_back(std::string(key) + " = not_there");
    right.push_back(std::string(key) + " = acc");
  }
  EXPECT_FALSE(load(with(wrong)));
  ASSERT_EQ(faults.size(), std::size(files) + std::size(folders));
  const auto expect = [&](const ConfigFault& fault, const std::pair<const char*, int>& row) {
    EXPECT_EQ(fault.number, row.second);
    EXPECT_NE(fault.text.find("\"" + std::string(row.first) + "\""), std::string::npos) << fault.text;
    EXPECT_EQ(fault.warning, row.second == 547) << fault.text;
  };
  for (std::size_t i = 0; i < std::size(files); ++i) expect(faults[i], files[i]);
  for (std::size_t i = 0; i < std::size(folders); ++i) expect(faults[std::size(files) + i], folders[i]);

  // Files that the program makes may be absent.
  EXPECT_FALSE(load(with(absent)));
  EXPECT_EQ(faults.size(), std::size(files) + std::size(folders) - 4);
  EXPECT_TRUE(load(with(right)));
  EXPECT_EQ(faults.size(), 0U);
  // A folder of pictures that is absent only warns; unset folders are no fault where "none" unsets them.
  EXPECT_TRUE(load(with({"picdir = not_there", "rsltdir = none", "user_cwd ="})));
  EXPECT_EQ(numbers(), (std::vector{547}));
  EXPECT_FALSE(load(with({"accdir ="})));
  EXPECT_EQ(numbers(), (std::vector{543}));
}

TEST_F(StartupChecks, GuardbandKeysComeFromTheirOwnFileWhereTheyAreUnset) {
  write("gb.ini",
        "GB_MODE = STEP\n[Orvane Guardbanding Initialization]\ngb_table = acc/table.txt\ngbf = 1.5\n"
        "GB_MODE = INTERP\nGB_PTS = RESULT\nUCONF = 95.45%\npass100 = NO\nGB = TSR\n");
  ASSERT_TRUE(load(with({"gb_init = gb.ini", "GB_PTS = P"}))) << faults.front().text;
  const StartupConfig& config = startup_config();
  EXPECT_EQ(config.gb_table, (folder / "acc/table.txt").string());
  EXPECT_EQ(config.gbf, 1.5);
  EXPECT_EQ(config.GB, 6);
  EXPECT_EQ(config.GB_MODE, 2);
  EXPECT_EQ(config.GB_PTS, 3) << "the configuration's own value stands";
  EXPECT_EQ(config.GB_OVERFLOW, 0);
  EXPECT_EQ(config.UCONF, 4);
  EXPECT_EQ(config.pass100, 1) << "no key of guardbands";
  for (const ConfigValue& value : config_values()) {
    if (value.key == "GB_MODE") {
      EXPECT_EQ(value.text, "INTERP");
      EXPECT_EQ(value.line, 5);
      EXPECT_EQ(value.file, (folder / "gb.ini").string());
    }
    if (value.key == "GB_PTS") {
      EXPECT_EQ(value.file, path);
    }
  }
  write("gb.ini", "[Orvane Guardbanding Initialization]\ngbf = 1000.1\nGB_MODE = SOMETIMES\nUCONF = 1\n");
  EXPECT_FALSE(load(with({"gb_init = gb.ini"})));
  EXPECT_EQ(numbers(), (std::vector{505, 505}));
  EXPECT_NE(faults[0].text.find("gb.ini:3: \"SOMETIMES\""), std::string::npos) << faults[0].text;
  EXPECT_EQ(startup_config().gbf, not_configured) << "a factor that is none is passed over";
  EXPECT_FALSE(load(with({"gb_init = absent.ini"})));
  EXPECT_EQ(numbers(), (std::vector{30320}));
}

TEST_F(StartupChecks, WritersKeepTheFileAndTakeTheValue) {
  std::filesystem::create_directory(folder / "m\xC3\xBC");
  // A key counts wherever it stands, so it is written where it stands.
  ASSERT_TRUE(load(with({"# the bench", "port = NONE"}) + "[Bench]\n; reference\nFreqRefDevName = old\n"));
  const std::string before = contents(path);
  EXPECT_TRUE(set_port(0));
  EXPECT_EQ(contents(path), before) << "the same value is not written again";
  EXPECT_TRUE(set_port(18));
  EXPECT_TRUE(set_freq_ref_dev_name(""));
  EXPECT_TRUE(set_freq_ref_acc_mode("fast \xB5"));
  EXPECT_TRUE(set_procdir((folder / "m\xC3\xBC").string()));
  EXPECT_TRUE(set_boards({.count = 2, .type = 15, .address = {0x2C0, 0xF000}}));
  EXPECT_EQ(startup_config().port, 18);
  EXPECT_EQ(startup_config().FreqRefDevName, "");
  EXPECT_EQ(startup_config().FreqRefAccMode, "fast \xB5");
  EXPECT_EQ(startup_config().ib_ioaddr.value[1], 0xF000);
  EXPECT_EQ(startup_config().procdir, (folder / "m\xC3\xBC").string());
  const std::string after = contents(path);
  EXPECT_NE(after.find("\n# the bench\n"), std::string::npos);
  EXPECT_NE(after.find("[Bench]\n; reference\nFreqRefDevName = \n"), std::string::npos) << after;
  EXPECT_NE(after.find("\nib_ioaddr = 2c0, f000\n"), std::string::npos) << after;
  EXPECT_NE(after.find("\nFreqRefAccMode = fast \xC2\xB5\n"), std::string::npos) << after;
  const StartupConfig written = startup_config();
  ASSERT_TRUE(load(after)) << faults.front().text;
  EXPECT_EQ(startup_config().port, written.port);
  EXPECT_EQ(startup_config().ib_type, 15);
  EXPECT_EQ(startup_config().procdir, written.procdir);

  EXPECT_TRUE(set_boards({.count = 0, .type = board_type::zt1444, .address = {}}));
  EXPECT_NE(contents(path).find("\nib_type = ZT1444\n"), std::string::npos);
  EXPECT_NE(contents(path).find("\nib_ioaddr = none\n"), std::string::npos);
  EXPECT_EQ(startup_config().ib_type, board_type::zt1444);
}

TEST_F(StartupChecks, WritersRefuseWhatIsNoSetting) {
  ASSERT_TRUE(load(with({})));
  const std::string before = contents(path);
  const std::string file = write("a_file", "x");
  EXPECT_FALSE(set_port(-1));
  EXPECT_FALSE(set_port(21));
  EXPECT_FALSE(set_procdir(""));
  EXPECT_FALSE(set_procdir((folder / "nowhere").string()));
  EXPECT_FALSE(set_procdir(file));
  EXPECT_FALSE(set_boards({.count = 3, .type = 15, .address = {}}));
  EXPECT_FALSE(set_boards({.count = 1, .type = 99, .address = {}}));
  EXPECT_FALSE(set_boards({.count = 1, .type = 0, .address = {}}));
  EXPECT_FALSE(set_boards({.count = 1, .type = 15, .address = {0xFF, 0}}));
  EXPECT_FALSE(set_boards({.count = 1, .type = 15, .address = {0x100, 0xF001}}));
  EXPECT_FALSE(set_boards({.count = 1, .type = 15, .address = {0, 0x100}}));
  EXPECT_FALSE(set_boards({.count = 2, .type = 15, .address = {0x100, 0}}));
  EXPECT_EQ(desk.message_numbers(),
            (std::vector{597, 597, 509, 511, 512, 590, 591, 592, 593, 594, 595, 596}));
  EXPECT_EQ(contents(path), before);

  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_FALSE(set_port(3));
  EXPECT_EQ(desk.shown.back().number, 2242);
  EXPECT_EQ(startup_config().port, 0);
}

}  // namespace
}  // namespace orvane
