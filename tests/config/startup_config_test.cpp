#include "config/startup_config.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "config/key_table.h"
#include "support/configuration.h"
#include "support/desk.h"

namespace orvane {
namespace {

class Configuration : public test::EngineTest {
 protected:
  Configuration() { test::make_configured_folders(folder); }
  ~Configuration() override { startup_config() = StartupConfig(); }

  std::vector<ConfigFault> faults;
  std::string path;

  bool load(const std::string& text) {
    faults.clear();
    path = write("orvane.ini", text);
    return config_load(path, faults);
  }
  // The faults as lines "NUMBER text", the file's path shortened to its name.
  std::string fault_lines() const {
    std::string all;
    for (const ConfigFault& fault : faults) {
      std::string text = fault.text;
      for (std::size_t at; (at = text.find(folder.string() + "/")) != std::string::npos;)
        text.erase(at, folder.string().size() + 1);
      all += std::to_string(fault.number) + " " + text + "\n";
    }
    return all;
  }
  const ConfigValue value(std::string_view key) const {
    for (const ConfigValue& one : config_values()) {
      if (one.key == key) return one;
    }
    return {};
  }
};

TEST_F(Configuration, ValuesDefaultsAndOrigins) {
  EXPECT_FALSE(load("\xEF\xBB\xBF" + test::sound_configuration() + "[Else]\nBEEP = 1\n"));
  EXPECT_EQ(fault_lines(),
            "501 orvane.ini:29: the key \"beep\" stands in line 17 already; remove one of the two.\n");
  std::string sound = test::sound_configuration();
  ASSERT_TRUE(
      load("mathCONVprecision = 9\r\n" + sound +
           "; oot_lim = 1\n  # another\n[Anything]\nGONOGO\t=\tok \xC3\xB5 \nnthrow=-1\nunknown key = 7\n"
           "ib_driver = ./bench.so\nGB = rds\nN5532A-504 = sensor\n"))
      << fault_lines();
  const StartupConfig& config = startup_config();
  EXPECT_EQ(config.MathConvPrecision, 9);
  EXPECT_EQ(config.GoNoGo, "ok \xF5");
  EXPECT_EQ(config.nthrow, -1);
  EXPECT_EQ(config.nsd, -1);
  EXPECT_EQ(config.tur_lim, -1);
  EXPECT_EQ(config.pass100, 1);
  EXPECT_EQ(config.oot_lim, 200);
  EXPECT_EQ(config.GB, 5);
  EXPECT_EQ(config.CONF, not_configured);
  EXPECT_EQ(config.prompt, "");
  EXPECT_EQ(config.procdir, (folder / "procs").string());
  EXPECT_EQ(config.ib_driver, (folder / "./bench.so").string());
  EXPECT_EQ(work_file("rslt.tmp"), (folder / "work" / "rslt.tmp").string());
  EXPECT_EQ(procedure_directory_file(), (folder / "procs" / "proc.dir").string());
  EXPECT_EQ(result_directory_file(), "");

  struct Case {
    const char *key, *text;
    int line;
  };
  const Case cases[] = {{"MathConvPrecision", "9", 1},
                        {"pass100", "yes", 27},
                        {"prompt", "", 13},
                        {"procdir", "procs", 12},
                        {"GB", "rds", 36},
                        {"ExtendedUnits", "1", 0},
                        {"RefAccFactor", "1e-13", 0},
                        {"MaxSafePeakACV", "42.4", 0},
                        {"gbf", "", 0},
                        {"GoNoGo", "ok \xF5", 32},
                        {"N5532A-504", "sensor", 37},
                        {"nthrow", "-1", 33}};
  for (const Case& c : cases) {
    EXPECT_EQ(value(c.key).text, c.text) << c.key;
    EXPECT_EQ(value(c.key).line, c.line) << c.key;
  }
  EXPECT_EQ(config_values().size(), config_keys().size());
  EXPECT_EQ(config_values().front().key, "accdir");
  EXPECT_EQ(config_values().back().key, "late_reply_clear");
}

TEST_F(Configuration, AllFaultsAreToldEachWithItsPlace) {
  const std::string bad =
      "oot_lim = 99.8\n"           // 1
      "oot_lim = 100\n"            // 2
      "pass100 = perhaps\n"        // 3
      "tur_lim = 10.1\n"           // 4
      "epsfactor = 1e-4\n"         // 5
      "MaxSafePeakACV = 42.5\n"    // 6
      "nsd = 2.0\n"                // 7
      "nmeas = 1001\n"             // 8
      "beep = 1, 101\n"            // 9
      "ib_dmachan = 3, 3\n"        // 10
      "ib_ioaddr = FF\n"           // 11
      "ib_type = ZT1444\n"         // 12
      "port = COM21\n"             // 13
      "tdesc_DecimalSymbol = a\n"  // 14
      "procdir = nowhere\n"        // 15
      "workdir =\n"                // 16
      "accdir = " +
      std::string(257, 'x') + "\n" +  // 17
      std::string(396, 'k') + "\n" +  // 18
      std::string(131, 'k') +
      " = 1\n"  // 19
      "accdir = acc\nbcf =\nconfig =\ncorrectdir = none\nfail_prompt = none\nhelpdir = help\n"
      "pass_prompt = none\npassword_dir = .\nprompt = none\nvarfile = v\nptitle_l =\nptitle_r =\n"
      "ib_nport = 0\nsystype = METER\n";
  EXPECT_FALSE(load(bad));
  const std::string too_long =
      ": the line is too long: a line has at most 395 characters, a key 130, a value 256.\n";
  EXPECT_EQ(
      fault_lines(),
      "505 orvane.ini:1: \"99.8\" is no value of the key \"oot_lim\", which takes 99.9-500.\n"
      "501 orvane.ini:2: the key \"oot_lim\" stands in line 1 already; remove one of the two.\n"
      "505 orvane.ini:3: \"perhaps\" is no value of the key \"pass100\", which takes YES:1, 1:1, NO:0, 0:0.\n"
      "505 orvane.ini:4: \"10.1\" is no value of the key \"tur_lim\", which takes 0-10, NONE:-1.\n"
      "505 orvane.ini:5: \"1e-4\" is no value of the key \"epsfactor\", which takes "
      "0.0000000000000001-0.00001.\n"
      "505 orvane.ini:6: \"42.5\" is no value of the key \"MaxSafePeakACV\", which takes 10.0-42.4.\n"
      "505 orvane.ini:7: \"2.0\" is no value of the key \"nsd\", which takes 2-14.\n"
      "505 orvane.ini:8: \"1001\" is no value of the key \"nmeas\", which takes 0-1000.\n"
      "505 orvane.ini:9: \"1, 101\" is no value of the key \"beep\", which takes seconds 0-3600 and, behind "
      "a comma, a "
      "count 0-100; none, off.\n"
      "505 orvane.ini:10: \"3, 3\" is no value of the key \"ib_dmachan\", which takes one or two different "
      "channels "
      "0-15; none.\n"
      "505 orvane.ini:11: \"FF\" is no value of the key \"ib_ioaddr\", which takes one or two hexadecimal "
      "addresses "
      "100-F000; none.\n"
      "505 orvane.ini:12: \"ZT1444\" is no value of the key \"ib_type\", which takes NONE:0, PC2B(T):10, "
      "PC2A:11, "
      "PCMCIA-GPIB:12, AT-GPIB/TNT:13, AT-GPIB/TNT(PNP):14, PCI-GPIB:15, GPIB-USB-A:16.\n"
      "505 orvane.ini:13: \"COM21\" is no value of the key \"port\", which takes NONE:0, COM1:1, COM2:2, "
      "COM3:3, COM4:4, "
      "COM5:5, COM6:6, COM7:7, COM8:8, COM9:9, COM10:10, COM11:11, COM12:12, COM13:13, COM14:14, COM15:15, "
      "COM16:16, "
      "COMMFC1:17, COMMFC2:18, COMOSC1:19, COMOSC2:20.\n"
      "505 orvane.ini:14: \"a\" is no value of the key \"tdesc_DecimalSymbol\", which takes one character "
      "that is no "
      "letter or digit; system.\n"
      "500 orvane.ini:17" +
          too_long + "500 orvane.ini:18" + too_long + "500 orvane.ini:19" + too_long +
          "504 orvane.ini: the key \"picdir\" is missing; add it with its value.\n"
          "504 orvane.ini: the key \"due_date_in_cal\" is missing; add it with its value.\n"
          "548 orvane.ini: the key \"procdir\" names \"nowhere\", which is no folder; make it or name "
          "another.\n"
          "553 orvane.ini: the key \"workdir\" names \"\", which is no folder; make it or name another.\n");
  // A key at fault keeps its default.
  EXPECT_EQ(startup_config().oot_lim, 0.0);
  EXPECT_EQ(startup_config().MaxSafePeakACV, 42.4);

  config_report(faults);
  EXPECT_EQ(desk.shown.size(), faults.size());
  EXPECT_EQ(desk.shown[1].number, 501);
  EXPECT_EQ(desk.shown[1].lines.front(), "E501: " + faults[1].text);
}

TEST_F(Configuration, EveryNeededKeyIsMissed) {
  EXPECT_FALSE(load("# nothing\n"));
  std::string expected;
  for (const KeyRow& row : config_keys()) {
    if (!row.has(key_flag::optional))
      expected +=
          "504 orvane.ini: the key \"" + std::string(row.name) + "\" is missing; add it with its value.\n";
  }
  EXPECT_EQ(fault_lines(), expected);
  EXPECT_EQ(faults.size(), 26u);
}

TEST_F(Configuration, FilesThatAreNone) {
  EXPECT_FALSE(load(""));
  EXPECT_EQ(faults.at(0).number, 2525);
  faults.clear();
  EXPECT_FALSE(config_load((folder / "absent.ini").string(), faults));
  EXPECT_EQ(faults.at(0).number, 2506);
  faults.clear();
  EXPECT_FALSE(config_load(folder.string(), faults));
  EXPECT_EQ(faults.at(0).number, 2506);
  EXPECT_FALSE(load(std::string((1 << 20) + 1, '\n')));
  EXPECT_EQ(fault_lines(),
            "506 orvane.ini: the startup configuration cannot be read; it may have at most 1048576 bytes.\n");
}

TEST_F(Configuration, LimitsOfALine) {
  const std::string sound = test::sound_configuration();
  EXPECT_TRUE(load(sound + "GoNoGo = " + std::string(256, 'v') + "\n")) << fault_lines();
  EXPECT_EQ(startup_config().GoNoGo.size(), 256u);
  EXPECT_TRUE(load(sound + std::string(130, 'k') + " = " + std::string(256, 'v') + "\n")) << fault_lines();
  EXPECT_TRUE(load(sound + "#" + std::string(1000, 'c') + "\n")) << fault_lines();
  EXPECT_TRUE(load(sound + "GoNoGo" + std::string(380, ' ') + "= v\n")) << fault_lines();
  EXPECT_FALSE(
      load(sound + "GoNoGo" + std::string(48 * 8 + 2, ' ') + "=\tv\n"));  // the tab goes to column 400
  EXPECT_EQ(faults.at(0).number, 500);
}

TEST_F(Configuration, KeysWithParsersOfTheirOwn) {
  struct Case {
    const char* line;
    bool good;
    int first, second;
  };
  const Case cases[] = {{"beep = none", true, 0, 0},
                        {"beep = OFF", true, 0, 0},
                        {"beep = 3600,100", true, 3600, 100},
                        {"beep = 5", true, 5, 0},
                        {"beep = 3601", false, 0, 0},
                        {"beep = 1,2,3", false, 0, 0},
                        {"beep = -1", false, 0, 0},
                        {"beep =", false, 0, 0},
                        {"ib_ioaddr = 2C0, F000", true, 0x2C0, 0xF000},
                        {"ib_ioaddr = 0x100", true, 0x100, 0},
                        {"ib_ioaddr = F001", false, 0, 0},
                        {"ib_ioaddr = 100,200,300", false, 0, 0},
                        {"ib_dmachan = 0, 15", true, 0, 15},
                        {"ib_dmachan = 16", false, 0, 0},
                        {"ib_dmachan = None", true, 0, 0},
                        {"ib_dmachan = 1,", false, 0, 0}};
  for (const Case& c : cases) {
    std::string text = test::sound_configuration();
    const std::string key = std::string(c.line).substr(0, std::string(c.line).find(' '));
    const std::size_t at = text.find(key + " = ");
    text.replace(at, text.find('\n', at) - at, c.line);
    EXPECT_EQ(load(text), c.good) << c.line << "\n" << fault_lines();
    const StartupConfig& config = startup_config();
    const bool beep = key == "beep";
    const PairKey& pair = key == "ib_ioaddr" ? config.ib_ioaddr : config.ib_dmachan;
    EXPECT_EQ(beep ? config.beep.seconds : pair.value[0], c.first) << c.line;
    EXPECT_EQ(beep ? config.beep.count : pair.value[1], c.second) << c.line;
  }
}

// docs/formats.md names every key with its need, its grammar and its default as the table has them.
TEST_F(Configuration, TheDocumentAgreesWithTheTable) {
  const std::string document = contents(ORVANE_SOURCE_DIR "/docs/formats.md");
  (void)load("");
  for (const KeyRow& row : config_keys()) {
    std::string line =
        "| `" + std::string(row.name) + "` | " + (row.has(key_flag::optional) ? "" : "yes") + " | ";
    if (row.real != nullptr || row.word != nullptr) {
      const bool yes_no = row.grammar.starts_with("YES:1, 1:1"),
                 confidence = row.grammar.starts_with("1sigma");
      line += yes_no ? "yes/no" : confidence ? "confidence" : "`" + std::string(row.grammar) + "`";
      line += " | " + value(row.name).text + " | ";
    } else if (row.text != nullptr) {
      line += row.has(key_flag::path) ? "path" : row.has(key_flag::library) ? "name or path" : "text";
      line += row.has(key_flag::none_unsets) ? ", `none` |" : " |";
    } else {
      line += std::string(row.grammar) + " |";
    }
    EXPECT_NE(document.find(line), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace orvane
