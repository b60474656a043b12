#include "procedure/run/sample_loop.h"

#include "evaluation/uncertainty.h"
#include "procedure/file/procedure.h"
#include "support/accuracy_desk.h"

namespace orvane {
namespace {

class SampleLoopTest : public test::AccuracyTest {
 protected:
  void add(FscRecord record, int test, int step, bool result = false) {
    record.set(field::test_major, static_cast<std::int16_t>(test));
    record.set(field::test_minor, static_cast<std::int16_t>(step));
    const std::uint16_t flags = line_flag::first | line_flag::last;
    record.set(field::line_flags, result ? static_cast<std::uint16_t>(flags | line_flag::result) : flags);
    *node_append(procedure, node_request::record)->record = record;
  }
  FscRecord text(std::uint16_t code, std::string_view words) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    EXPECT_TRUE(record.set_text(field::text, words));
    return record;
  }
  FscRecord setup(std::uint16_t code) {
    FscRecord record = instrument(code, 1, unit_code::volt, "");
    record.set(field::mod4, mod4_code::n);
    return record;
  }
  // One step at the last line; where the run goes on, by step number.
  int next() {
    run.uncertainty = UncertaintyBlock();
    procedure.current = procedure.tail;
    procedure.clear(procedure_flag::placed);
    bool again = false;
    EXPECT_TRUE(sample_step(run, procedure, again));
    EXPECT_EQ(again, procedure.has(procedure_flag::placed));
    return again ? procedure.current->record->test_minor() : 0;
  }

  Procedure procedure;
};

TEST_F(SampleLoopTest, WhereAReadingIsTakenAgain) {
  set("NMEAS", "2");
  const FscRecord memc = comparison("1V", "1%"), write = text(fsc::ieee, "[@5]VOLT 1"),
                  read = text(fsc::ieee, "[@5]READ?[i]"), meter = setup(fsc::i3458),
                  source = setup(fsc::i33120);
  struct Case {
    std::vector<FscRecord> lines;  // steps 1 on of test 1, MEMC behind them
    bool irpt;
    int goes_to;
  };
  const int memc_itself = 9;
  const Case cases[] = {{{meter, write}, true, 1},
                        {{meter, meter, write}, true, 2},
                        {{read, write, write}, true, 1},
                        {{meter, text(fsc::memi, "Reading?")}, true, 2},
                        {{read, source}, true, 2},
                        {{read, source}, false, 1},
                        {{write}, true, memc_itself},
                        {{}, true, memc_itself},
                        {{setup(fsc::m3458)}, true, memc_itself}};
  for (const Case& c : cases) {
    set("MEMC_IRPT", c.irpt ? "YES" : "NO");
    procedure = Procedure();
    add(meter, 0, 7);  // of an earlier test
    int step = 0;
    for (const FscRecord& line : c.lines) add(line, 1, ++step);
    add(memc, 1, memc_itself, true);
    EXPECT_EQ(next(), c.goes_to) << &c - cases;
  }
  // A result in front belongs to another decision; a plain statement goes back to itself, all of it.
  procedure = Procedure();
  add(meter, 1, 1);
  add(instrument(fsc::i3458, 1, unit_code::volt, "1%"), 1, 2, true);
  EXPECT_EQ(next(), 2);
  add(memc, 1, memc_itself, true);
  EXPECT_EQ(next(), memc_itself);
  // A bus statement of two records is sent whole.
  procedure = Procedure();
  add(write, 1, 1);
  procedure.tail->record->set(field::line_flags, line_flag::first);
  add(read, 1, 2);
  procedure.tail->record->set(field::line_flags, line_flag::last);
  add(memc, 1, memc_itself, true);
  EXPECT_EQ(next(), 1);
}

TEST_F(SampleLoopTest, TheAccuracyStandsOnTheMean) {
  // The set-up line's accuracy is in force; the limit on the mean's side counts.
  set("NMEAS", "3");
  test::look_up.floor = 0.01;
  add(setup(fsc::i3458), 1, 1);
  add(comparison("1V", "+0.3U -0.1U"), 1, 2, true);
  ASSERT_TRUE(ur_system_accuracy(run, *procedure.head->record));
  bool again = false;
  for (const double reading : {1.2, 0.9, 0.6}) {
    measured(reading, 1);
    procedure.current = procedure.tail;
    if (reading > 1) {
      ASSERT_TRUE(ur_system_accuracy(run, *procedure.current->record));
      EXPECT_NEAR(run.test.test_tol, 0.1, 1e-12);
    }
    ASSERT_TRUE(sample_step(run, procedure, again));
    EXPECT_EQ(again, !samples_complete(run));
    EXPECT_EQ(again, reading > 0.7);
  }
  EXPECT_NEAR(run.test.actual, 0.9, 1e-12);
  EXPECT_NEAR(run.test.test_tol, 0.3, 1e-12);
  EXPECT_TRUE(run.uncertainty.valid(Quantity::exp_unc));
  // A failure ends the samples, so that a repetition begins anew.
  measured(test::not_a_number, 1);
  EXPECT_FALSE(sample_step(run, procedure, again));
  EXPECT_TRUE(samples_complete(run));
}

}  // namespace
}  // namespace orvane
