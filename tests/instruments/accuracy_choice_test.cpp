// The accuracy file of an instrument and of a statement: inventory, selection in front of a run, ACCF, default names.
#include <gtest/gtest.h>

#include "instruments/accuracy_choice.h"
#include "instruments/drivers/drivers.h"
#include "instruments/inventory.h"
#include "support/bench_file.h"
#include "values/accuracy/accuracy_scan.h"

namespace orvane::test {
namespace {

using Numbers = std::vector<int>;

constexpr std::uint16_t hp3458a = 1;

class AccuracyChoiceTest : public BenchFileTest {
 protected:
  AccuracyChoiceTest() {
    EXPECT_TRUE(drivers_install(all_drivers()));
    accuracy_install();
    run.flags2 |= run_flag2::uncertainty;
    run.demo_mode = false;
    bench("22 : HP 3458A = DMM {A1}\n23 : \"Old meter\" = VM {A2}\n: Weights\n24 : HP 34401A\n");
    write("inventory.txt", "{A1}\ninterval = 12 months\nserial = S1\n\n{a2}\n4229 = 90\n4228 = d\n");
    header("a.acc", "HP 3458A", "12 months");
    header("b.acc", "Old Meter", "90 d");
  }
  ~AccuracyChoiceTest() override { acch_clear(); }

  void bench(const std::string& text) {
    write("bench.txt", text);
    dev_note_written();
    EXPECT_TRUE(dev_reload_if_changed());
  }
  void header(const std::string& name, const std::string& instrument, const std::string& interval) const {
    write("acc/" + name,
          "Begin Header\ninstrument = " + instrument + "\nconfidence = 3\ninterval = " + interval +
              "\nend header\nMODE: V\n0 1 na na 10 0.5 na\n1 2 na na na 0.5 na\n0 9 0 9 20 1 na\n");
  }
  std::string acc(const std::string& name) const { return (folder / "acc" / name).string(); }

  // The path for a name, or the numbers of the messages.
  std::string file_for(const std::string& name) {
    desk.shown.clear();
    double confidence = 0;
    const auto path = acc_file_for_name(name, confidence);
    return path ? *path : numbers();
  }
  std::string numbers() const {
    std::string text;
    for (const int number : desk.message_numbers()) text += std::to_string(number) + " ";
    return text;
  }
  std::string path_of(std::uint16_t code) {
    desk.shown.clear();
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    std::string path;
    return acc_path_for_node(run, record, path) ? path : numbers();
  }
  void accf(std::uint16_t code, const std::string& name) {
    FscRecord record = fsc_record_new();
    record.set(field::accf_ordinal, static_cast<std::uint16_t>(fsc_ordinal(code)));
    EXPECT_TRUE(record.set_text(field::accf_name, name));
    Statement statement{run, record};
    EXPECT_TRUE(accuracy_handlers()[0].handler(statement));
  }
  RequiredInstrument& require(std::uint16_t code, RequiredInstrument::Served served) {
    RequiredInstrument one;
    one.code = code;
    one.served = served;
    one.used = code;
    run.pipeline.required = {one};
    return run.pipeline.required[0];
  }
  // The result of the selection and its messages.
  std::string select() {
    desk.shown.clear();
    const bool done = acc_select_for_run(run);
    return (done ? "yes " : "no ") + numbers();
  }
};

TEST_F(AccuracyChoiceTest, FilesByTheNamesOfTheBench) {
  struct Case {
    const char* name;
    std::string file;
  };
  for (const Case& c : {Case{"hp 3458a", acc("a.acc")}, Case{"DMM", acc("a.acc")},
                        Case{"old METER", acc("b.acc")}, Case{"vm", acc("b.acc")}, Case{"Unknown", "9472 "},
                        Case{"Weights", "9473 "}, Case{"HP 34401A", "9473 "}})
    EXPECT_EQ(file_for(c.name), c.file) << c.name;
  write("inventory.txt", "{A1}\n4229 = 12\n4228 = MM\n{A2}\nserial = 1\n");
  EXPECT_EQ(file_for("DMM"), "135 ");
  EXPECT_EQ(file_for("VM"), "9474 ");
  write("inventory.txt", "{A1}\ninterval = 6 months\n");
  EXPECT_EQ(file_for("DMM"), "136 ");
  EXPECT_EQ(desk.last_message(),
            "E136: No accuracy file is for HP 3458A, asset \"A1\", with an interval of 6 month(s). "
            "See the headers of the files in accdir.");
  header("c.acc", "HP 3458A", "12 months");
  write("inventory.txt", "{A1}\ninterval = 12 months\n");
  EXPECT_EQ(file_for("DMM"), "153 ");
}

TEST_F(AccuracyChoiceTest, TheInventoryAndItsFaults) {
  EXPECT_EQ(inventory_text("a1", inventory_property::serial_number), "S1");
  EXPECT_EQ(inventory_text("A1", inventory_property::interval), "12");
  EXPECT_EQ(inventory_text("A1", inventory_property::interval_units), "M");
  EXPECT_FALSE(inventory_text("A1", 4201));
  EXPECT_FALSE(inventory_text("A3", inventory_property::interval));
  struct Case {
    const char* text;
    int number, line;
  };
  for (const Case& c :
       {Case{"serial = 1\n", 31011, 1}, Case{"{A\n", 31011, 1}, Case{"{}\n", 31011, 1},
        Case{"{A1}\n{a1}\n", 31012, 2}, Case{"{A1}\nserial = 1\n4206 = 2\n", 31012, 3},
        Case{"{A1}\nserial\n", 31011, 2}, Case{"{A1}\ncolour = red\n", 31013, 2},
        Case{"{A1}\ninterval = 0 months\n", 31011, 2}, Case{"{A1}\n\ninterval = 1\n", 31011, 3}}) {
    desk.shown.clear();
    write("inventory.txt", c.text);
    EXPECT_FALSE(inventory_knows("A1")) << c.text;
    EXPECT_EQ(desk.message_numbers(), Numbers{c.number}) << c.text;
    EXPECT_NE(desk.last_message().find("line " + std::to_string(c.line)), std::string::npos) << c.text;
  }
}

TEST_F(AccuracyChoiceTest, SelectionInFrontOfARun) {
  using Served = RequiredInstrument::Served;
  run.pipeline.required.clear();
  write("acc/bad.acc", "Begin Header\nconfidence = x\n");
  EXPECT_EQ(select(), "yes ") << "no instrument is required: a damaged header is nobody's";
  RequiredInstrument& meter = require(hp3458a, Served::configured);
  EXPECT_EQ(select(), "no 197 ");
  EXPECT_TRUE(acch_list().empty());
  std::filesystem::remove(acc("bad.acc"));

  EXPECT_EQ(select(), "yes ");
  EXPECT_EQ(path_of(fsc::i3458), acc("a.acc"));
  EXPECT_EQ(path_of(fsc::m3458), acc("a.acc"));
  ASSERT_TRUE(accf_note(run, fsc::i3458));
  write("inventory.txt", "{A2}\nserial = 1\n");
  EXPECT_EQ(select(), "yes ") << "ACCF names its file";
  accf_reset(run);
  EXPECT_EQ(select(), "no 131 ");
  EXPECT_TRUE(run.has(run_flag::stop_test));
  run.clear(run_flag::stop_test);
  run.demo_mode = true;
  EXPECT_EQ(select(), "yes 131 ");
  EXPECT_FALSE(run.has(run_flag::stop_test));
  run.demo_mode = false;
  meter.served = Served::by_hand;
  EXPECT_EQ(select(), "yes 131 ");
  meter.served = Served::skipped;
  EXPECT_EQ(select(), "yes ");
  meter.served = Served::configured;
  startup_config().acc_check = 0;
  EXPECT_EQ(select(), "yes ");
  startup_config().acc_check = 1;
  write("inventory.txt", "{A1}\ninterval = 1 week\n");
  EXPECT_EQ(select(), "no 136 ");
}

TEST_F(AccuracyChoiceTest, ThePathOfAStatement) {
  EXPECT_EQ(path_of(fsc::i3458), "217 ");
  write("acc/3458.acc", "MODE: V\n");
  EXPECT_EQ(path_of(fsc::i3458), acc("3458.acc"));
  accf(fsc::i3458, "own.acc");
  EXPECT_EQ(path_of(fsc::i3458), acc("own.acc"));
  EXPECT_EQ(path_of(fsc::i34401), "217 ");
  accf(fsc::i3458, "");
  EXPECT_EQ(path_of(fsc::i3458), acc("3458.acc"));
  accf(fsc::i3458, "/" + std::string(74, 'x'));
  EXPECT_EQ(path_of(fsc::i3458), "/" + std::string(74, 'x'));
  startup_config().acc_check = 0;
  EXPECT_EQ(path_of(fsc::i34401), acc("34401.acc"));
  EXPECT_EQ(path_of(fsc::resf), acc("mfc3.acc"));
  EXPECT_EQ(path_of(fsc::n5530), acc("n5531.acc"));

  // The limit counts the whole path; one below it is taken.
  std::string path;
  startup_config().accf_acc_rel = 1;
  EXPECT_TRUE(acc_path_from_accf(run, "/" + std::string(accuracy_path_limit - 2, 'x'), path));
  EXPECT_FALSE(acc_path_from_accf(run, "/" + std::string(accuracy_path_limit - 1, 'x'), path));
  EXPECT_EQ(desk.message_numbers().back(), 128);
  EXPECT_FALSE(acc_path_from_accf(run, std::string(accuracy_path_limit - 2, 'x'), path));
  EXPECT_EQ(desk.message_numbers().back(), 128);
  for (int i = 0; i < 64; ++i) EXPECT_TRUE(accf_note(run, static_cast<std::uint16_t>(2062 + i)));
  EXPECT_TRUE(accf_note(run, 2062));
  EXPECT_FALSE(accf_note(run, 2062 + 64));
}

TEST_F(AccuracyChoiceTest, GainAndFloorCombined) {
  double value = 0;
  EXPECT_TRUE(acc_value(run, "DMM", "v", 0.5, value));
  EXPECT_DOUBLE_EQ(value, 0.55);
  EXPECT_TRUE(acc_value2(run, "DMM", "v", 5, 5, value));
  EXPECT_DOUBLE_EQ(value, 2);
  const auto fails = [&](const char* name, const char* mode, double x, std::optional<double> y) {
    desk.shown.clear();
    EXPECT_FALSE(y ? acc_value2(run, name, mode, x, *y, value) : acc_value(run, name, mode, x, value));
    return numbers();
  };
  EXPECT_EQ(fails("", "v", 1, {}), "3288 ");
  EXPECT_EQ(fails("DMM", "", 1, {}), "3289 ");
  EXPECT_EQ(fails("Unknown", "v", 1, {}), "9472 3291 ");
  EXPECT_EQ(fails("Unknown", "v", 1, 1), "9472 3296 ");
  EXPECT_EQ(fails("DMM", "v v", 1, {}), "123 3292 ");
  EXPECT_EQ(fails("DMM", "v v", 1, 1), "123 3297 ");
  EXPECT_EQ(fails("DMM", "v", 3, {}), "3293 ");
  EXPECT_EQ(fails("DMM", "v", 3, 10), "3298 ");
  EXPECT_EQ(fails("DMM", "v", 2, {}), "3294 ");
  write("acc/a.acc",
        "Begin Header\ninstrument = HP 3458A\nconfidence = 3\ninterval = 12 m\nend header\nMODE: V\n0 1 0 1 "
        "1 na na\n");
  EXPECT_EQ(fails("DMM", "v", 1, 1), "3299 ");
  startup_config().acc_check = 0;
  EXPECT_EQ(fails("DMM", "v", 1, {}), "3290 ");
  EXPECT_EQ(fails("DMM", "v", 1, 1), "3295 ");
}

}  // namespace
}  // namespace orvane::test
