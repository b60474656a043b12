#include "procedure/run/flow.h"

#include <cmath>
#include <limits>

#include "procedure/file/memory.h"
#include "procedure/file/procedure.h"
#include "procedure/pipeline/run_test.h"
#include "procedure/run/blocks.h"
#include "procedure/run/call.h"
#include "procedure/run/dispatch.h"
#include "support/procedures.h"

namespace orvane {
namespace {

using test::RunTest;

// --- Single statements -----------------------------------------------------------------------------------------

class Flow : public RunTest {
 protected:
  // Runs one record as the statement of a procedure with this name; true if it branched.
  bool branches(const FscRecord& record, const std::string& name = "P") {
    Procedure procedure;
    procedure.name = name;
    Procedure* handle = &procedure;
    ProcNode* node = node_append(procedure, node_request::record);
    *node->record = record;
    procedure.current = node;
    run.set(run_flag::branch_taken | run_flag::run_active);  // stale from a statement before
    dispatch_statement(run, handle);
    return run.has(run_flag::branch_taken);
  }

  static FscRecord jump(std::uint16_t code, std::string_view text = {}, double tolerance = 0) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    EXPECT_TRUE(record.set_text(field::jmp_text, text));
    record.set(field::jmp_tolerance, tolerance);
    return record;
  }
};

TEST_F(Flow, JumpsByTheSecondRegister) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    FscRecord record;
    double mem1;
    bool branch;
  };
  const Case cases[] = {
      {jump(fsc::jmpt), 1e-300, true},
      {jump(fsc::jmpt), 0, false},
      {jump(fsc::jmpt), -1, false},
      {jump(fsc::jmpt), nan, false},
      {jump(fsc::jmpf), -1e-300, true},
      {jump(fsc::jmpf), 0, false},
      {jump(fsc::jmpf), 1, false},
      {jump(fsc::jmpf), nan, true},
      {jump(fsc::jmpz), 0, true},
      {jump(fsc::jmpz), 1e-300, false},
      {jump(fsc::jmpz, "", 0.5), 0.5, true},
      {jump(fsc::jmpz, "", 0.5), -0.5, true},
      {jump(fsc::jmpz, "", 0.5), 0.6, false},
      {jump(fsc::jmpz, "0-0.5"), 0.5, true},
      {jump(fsc::jmpz, "0"), 0.1, false},
      {jump(fsc::jmpz, "2", 0.5), 1.5, true},
  };
  int number = 0;
  for (const Case& c : cases) {
    run.registers.mem1() = c.mem1;
    EXPECT_EQ(branches(c.record), c.branch) << "case " << number;
    ++number;
  }
}

TEST_F(Flow, JumpOnTheOutcomeOfTheLatestTest) {
  for (const bool failed : {false, true}) {
    run.test.test_state = failed ? test_bit::failed : 0;
    for (const int condition : {0, 1, 2}) {
      FscRecord record = jump(fsc::jmp);
      record.set(field::jmp_condition, static_cast<std::uint8_t>(condition));
      EXPECT_EQ(branches(record), condition == 0 || failed == (condition == 2)) << failed << condition;
    }
  }
}

TEST_F(Flow, NamesCompareOverTheirOddLength) {
  const std::string forty_one(41, 'x');
  struct Case {
    std::string running, name;
    bool same;
  };
  const Case cases[] = {
      {"Multimeter", "MULTIMETER", true},
      {"Multimeter", "Multimeter 2", false},
      {"Multimeter 2", "Multimeter", false},
      {forty_one + "y", forty_one + "z", true},  // only 41 characters count
      {forty_one + " y", forty_one, true},
      {"abc" + std::string(38, ' ') + " tail", "abc and more", true},  // blanks before position 41 fall away
      {"abc" + std::string(38, ' ') + "tail", "abc and more", false},
      {std::string(42, ' ') + "tail", " x", true},  // at least one character is compared
      {std::string(42, ' ') + "tail", "x", false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(procedure_name_matches(c.running, c.name), c.same) << c.running << " / " << c.name;
    EXPECT_EQ(branches(jump(fsc::jmpt, c.name), c.running), c.same);
    EXPECT_EQ(branches(jump(fsc::jmpf, c.name), c.running), !c.same);
  }
}

TEST_F(Flow, ConditionsAreFalseAroundZero) {
  EXPECT_FALSE(condition_true(1e-20));
  EXPECT_FALSE(condition_true(-1e-20));
  EXPECT_FALSE(condition_true(0));
  EXPECT_TRUE(condition_true(2e-20));
  EXPECT_TRUE(condition_true(-2e-20));
}

TEST_F(Flow, LabelJumpsWithoutAnExpressionAlways) {
  struct Case {
    const char* text;
    bool branch;
  };
  for (const Case& c : {Case{"again", true}, Case{"  again  ", true}, Case{"again 1", true},
                        Case{"again  0", false}, Case{"again 2 > 3", false}}) {
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::jmpl);
    ASSERT_TRUE(record.set_text(field::jmpl_text, c.text));
    EXPECT_EQ(branches(record), c.branch) << c.text;
  }
}

TEST_F(Flow, AnUnknownCodeIsNamed) {
  FscRecord record = fsc_record_new();
  record.set(field::code, static_cast<std::uint16_t>(code_class::executable |
                                                     fsc_ordinal(fsc::n5530)));  // of another class
  branches(record);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2517});
  EXPECT_NE(desk.last_message().find("N5530"), std::string::npos);
  EXPECT_TRUE(run.has(run_flag::stop_test));
}

// --- The block stack -------------------------------------------------------------------------------------------

TEST_F(Flow, ClosingStatementsFindOnlyTheirOwnBlocks) {
  struct Case {
    std::uint16_t closing, pushed;
    int message;
  };
  const Case cases[] = {
      {fsc::endif, fsc::if_, 0},       {fsc::endif, fsc::else_, 0},     {fsc::endif, fsc::elseif, 0},
      {fsc::endif, fsc::while_, 7258}, {fsc::else_, fsc::if_, 0},       {fsc::else_, fsc::elseif, 0},
      {fsc::else_, fsc::else_, 7256},  {fsc::elseif, fsc::else_, 7257}, {fsc::elseif, fsc::if_, 0},
      {fsc::endw, fsc::while_, 0},     {fsc::endw, fsc::if_, 7263},
  };
  for (const Case& c : cases) {
    block_reset(run);
    desk.shown.clear();
    ASSERT_TRUE(block_push(run, true, c.pushed, 7));
    const BlockEntry* found = nullptr;
    EXPECT_EQ(find_block(run, c.closing, 7, found), c.message == 0);
    EXPECT_EQ(found != nullptr, c.message == 0);
    EXPECT_EQ(desk.message_numbers(), c.message != 0 ? std::vector<int>{c.message} : std::vector<int>());
    EXPECT_TRUE(find_block(run, c.closing, 8, found));
    EXPECT_EQ(found, nullptr);
  }
  EXPECT_FALSE(block_pop(run, 99));
  EXPECT_EQ(desk.message_numbers().back(), 7254);
}

TEST_F(Flow, ACalleeNeverSeesItsCallersBlocks) {
  ASSERT_TRUE(block_push(run, true, fsc::if_, 3));
  const BlockScope scope = block_enter(run);
  const BlockEntry* found = nullptr;
  ASSERT_TRUE(find_block(run, fsc::endif, 3, found));
  EXPECT_EQ(found, nullptr);
  ASSERT_TRUE(block_push(run, false, fsc::if_, 3));
  ASSERT_TRUE(find_block(run, fsc::endif, 3, found));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->state, 0);
  block_leave(run, scope);
  ASSERT_TRUE(find_block(run, fsc::endif, 3, found));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->state, 1);
}

// --- Whole procedures ------------------------------------------------------------------------------------------

TEST_F(Flow, BlocksNestAndTakeOneBranchEach) {
  // M[2] collects a digit for each part that ran.
  procedure("Blocks", {
                          "MATH M[1]=0; M[2]=0",
                          "WHILE M[1] < 4",
                          "IF M[1] == 0",
                          "MATH M[2]=M[2]*10+1",
                          "ELSEIF M[1] == 1",
                          "MATH M[2]=M[2]*10+2",
                          "ELSEIF M[1] == 2",
                          "IF 0",
                          "MATH M[2]=M[2]*10+9",
                          "ELSE",
                          "MATH M[2]=M[2]*10+3",
                          "ENDIF",
                          "ELSE",
                          "MATH M[2]=M[2]*10+4",
                          "ENDIF",
                          "MATH M[1]=M[1]+1",
                          "ENDW",
                          "DO",
                          "MATH M[1]=M[1]-1",
                          "UNTIL M[1] <= 1",
                          "END",
                      });
  EXPECT_EQ(go("Blocks"), run_result::finished);
  EXPECT_EQ(m(2), 1234);
  EXPECT_EQ(m(1), 1);
  EXPECT_TRUE(desk.message_numbers().empty());
}

TEST_F(Flow, AJumpIntoABlockRunsItsElsePart) {
  procedure("Into", {
                        "JMPL inside",
                        "IF 1",
                        "LABEL inside",
                        "MATH M[1]=1",
                        "ELSE",
                        "MATH M[2]=1",
                        "ENDIF",
                        "END",
                    });
  EXPECT_EQ(go("Into"), run_result::finished);
  EXPECT_EQ(m(1), 1);
  EXPECT_EQ(m(2), 1);
}

TEST_F(Flow, AFaultInAConditionStopsAtTheStatement) {
  procedure("Fault", {"IF nothing == 1", "MATH M[1]=1", "ENDIF", "MATH M[2]=1", "END"});
  EXPECT_EQ(go("Fault"), run_result::finished);
  const auto stops = desk.of_kind("test");
  ASSERT_EQ(stops.size(), 1u);
  EXPECT_EQ(stops[0].test.form, "pt_Terminate");
  EXPECT_EQ(m(1), 1);  // the line counts as not branching
  EXPECT_EQ(m(2), 1);
}

// --- CALL ------------------------------------------------------------------------------------------------------

TEST_F(Flow, ACalleeHasItsOwnLocationsAndVariables) {
  procedure("Main", {"MATH L[1]=5; x=1; @g=1; M[1]=7", "CALL Sub",
                     "MATH M[2]=L[1]; M[3]=IsVar(\"y\"); M[4]=@g", "END"});
  procedure("Sub", {"MATH M[5]=L[1]; M[6]=IsVar(\"x\"); L[1]=9; y=1; @g=2; M[1]=8", "END"});
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(m(1), 8);  // shared
  EXPECT_EQ(m(2), 5);
  EXPECT_EQ(m(3), 0);
  EXPECT_EQ(m(4), 2);
  EXPECT_EQ(m(5), 0);
  EXPECT_EQ(m(6), 0);
  EXPECT_TRUE(desk.message_numbers().empty());
}

TEST_F(Flow, ACallerThatWasEvictedGoesOnWhereItWas) {
  std::vector<std::string> main_lines;
  for (int i = 1; i <= 12; ++i) {
    main_lines.push_back("CALL Sub " + std::to_string(i));
    procedure("Sub " + std::to_string(i), {"MATH M[1]=M[1]*2+1", "END"});
  }
  main_lines.push_back("END");
  procedure("Main", main_lines);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(m(1), 4095);
}

TEST_F(Flow, EachLevelOfCallsSurvivesTheEvictionOfItsCaller) {
  // At the bottom of a chain eight other procedures push everything above out of the memory.
  for (int level = 1; level <= 3; ++level) {
    const std::string next = level < 3 ? "CALL Level " + std::to_string(level + 1) : "CALL Flush";
    procedure("Level " + std::to_string(level), {"MATH M[1]=M[1]*10+" + std::to_string(level), next,
                                                 "MATH M[2]=M[2]*10+" + std::to_string(level), "END"});
  }
  std::vector<std::string> flush;
  for (int i = 1; i <= 8; ++i) {
    flush.push_back("CALL Sub " + std::to_string(i));
    procedure("Sub " + std::to_string(i), {"END"});
  }
  flush.push_back("END");
  procedure("Flush", flush);
  EXPECT_EQ(go("Level 1"), run_result::finished);
  EXPECT_EQ(m(1), 123);
  EXPECT_EQ(m(2), 321);
  EXPECT_TRUE(desk.message_numbers().empty());
}

TEST_F(Flow, TheNinthLevelIsRefusedAndTheEighthGoesOn) {
  procedure("Deep", {"MATH M[1]=M[1]+1", "CALL Deep", "MATH M[2]=M[2]+1", "END"});
  EXPECT_EQ(go("Deep"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1816});
  EXPECT_EQ(m(1), 9);  // the main procedure and eight levels
  EXPECT_EQ(m(2), 9);
}

std::string lost_directory;

// The scan finds what is missing; a callee may still be lost by the time of its CALL.
TEST_F(Flow, AMissingCalleeStopsTheStatementAlone) {
  procedure("Main", {"HEAD x", "CALL Sub", "MATH M[1]=1", "END"});
  procedure("Sub", {"END"});
  const HandlerRow losing_row{fsc::head, [](Statement& s) {
                                free_all_but((*s.procedure)->name);
                                return std::filesystem::remove(lost_directory);
                              }};
  dispatch_install({&losing_row, 1});
  lost_directory = (folder / "proc.dir").string();
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{911});
  EXPECT_EQ(desk.of_kind("test").size(), 1u);
  EXPECT_EQ(m(1), 1);
}

TEST_F(Flow, AStatementWithoutMemoryEndsItsTest) {
  procedure("Main", {"HEAD x", "MATH M[1]=1", "END"});
  const HandlerRow greedy{fsc::head, [](Statement&) -> bool { throw std::bad_alloc(); }};
  dispatch_install({&greedy, 1});
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2217});
  EXPECT_NE(desk.last_message().find("HEAD"), std::string::npos) << desk.last_message();
  EXPECT_EQ(desk.of_kind("test").size(), 1u);
}

TEST_F(Flow, TermLeavesAllLevels) {
  procedure("Main", {"CALL Sub", "MATH M[1]=1", "END"});
  procedure("Sub", {"MATH M[2]=1/0", "MATH M[3]=1", "END"});
  desk.reply(answer::test_term);
  EXPECT_EQ(go("Main"), run_result::finished);
  EXPECT_TRUE(run.has(run_flag::terminate));
  EXPECT_EQ(m(1), 0);
  EXPECT_EQ(m(3), 0);
}

}  // namespace
}  // namespace orvane
