// RunState: the one control block of the program, passed first to run-time functions. It holds everything that
// lives as long as a run; run_reset[] (procedure/pipeline/run_reset.h) brings it to its start.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "state/accuracy_state.h"
#include "state/bus_state.h"
#include "state/fsc_record.h"
#include "state/guard_state.h"
#include "state/instrument_state.h"
#include "state/math_store.h"
#include "state/pipeline_state.h"
#include "state/report_state.h"
#include "state/result_record.h"
#include "state/serial_state.h"
#include "state/slew_state.h"
#include "state/test_values.h"
#include "state/uncertainty_state.h"

namespace orvane {

namespace test_switch {
// RunState::test_switches: for trying out procedures; MATH sets and reads them while the debug letter a is on.
constexpr std::uint32_t inhibit_dialog = 1;  // the window at a test answers Continue by itself
constexpr std::uint32_t window_shown = 2;    // the latest test led to its window
}  // namespace test_switch

namespace run_flag {
// RunState::flags
constexpr std::uint16_t stop_test = 0x0020;     // a statement failed; the evaluation turns it into a dialog
constexpr std::uint16_t run_active = 0x0040;    // the main run loop is on
constexpr std::uint16_t test_run = 0x0080;      // started by the editor for a Test Run
constexpr std::uint16_t branch_taken = 0x0100;  // a branching statement has decided to branch
constexpr std::uint16_t skip_test = 0x0200;     // the operator gave up the test
constexpr std::uint16_t terminate = 0x0400;     // the run ends after this statement
constexpr std::uint16_t end_seen = 0x1000;      // END: this procedure ends
constexpr std::uint16_t check_lines = 0x2000;   // procedure check: reports name the source line
constexpr std::uint16_t check_mode = 0x4000;    // procedure check: reports go to the queue
}  // namespace run_flag

namespace run_flag2 {
constexpr std::uint16_t uncertainty = 0x0004;  // uncertainty evaluation is on
}

namespace stop_reason_bit {
constexpr std::uint16_t srq_unserved = 0x0001, srq_stuck = 0x0002, other = 0x0004, floating_point = 0x0008;
}

namespace ask_option {
// RunState::options, the letters of ASK+ and ASK-
constexpr std::uint32_t R = 0x000001, D = 0x000002, N = 0x000004, P = 0x000008, J = 0x000010, S = 0x000020,
                        M = 0x000040, A = 0x000080, F = 0x000100, L = 0x000200, T = 0x000400, W = 0x000800,
                        G = 0x001000, B = 0x002000, K = 0x004000, U = 0x008000, Q = 0x010000, V = 0x020000,
                        C = 0x040000, X = 0x080000, Z = 0x100000;
constexpr std::uint32_t start = 233213;  // R N P J S M A L T W U Q V
}  // namespace ask_option

/// The registers of a run. Index 0 of m is MEM1; m[1] to m[255] and l[1] to l[32] are the numbered ones. The
/// functions min_l and rss_l may name locations up to 255: those above 32 hold 0 and are never written.
struct RegisterFile {
  static constexpr int m_limit = 255, l_limit = 32, s_limit = 32;
  static constexpr std::size_t mem2_limit = 4096;
  double mem = 0;
  std::array<double, 256> m{};
  std::array<double, 256> l{};
  std::string mem2;
  std::array<std::optional<std::string>, 33> s;  // s[1] to s[32]; none is a register that was never set

  double& mem1() { return m[0]; }
  double mem1() const { return m[0]; }
};

/// What a statement says about a value of the test, kept from before it runs until its results are made.
struct QuantitySlot {
  static constexpr std::uint16_t filled = 0x01, value_given = 0x02, exponent = 0x04, extended = 0x08;
  std::uint16_t flags = 0;
  std::uint8_t digits = 0;
  double value = 0;
  std::uint8_t unit = 0;
  std::uint8_t prefix = 0;
  std::string unit_text;
};

struct QuantitySlots {
  QuantitySlot nominal, modifier, text_nominal, text_modifier;
  bool any = false;  // one of them is filled
};

/// One entry of the block stack: an IF, ELSE, ELSEIF or WHILE that is not closed yet.
struct BlockEntry {
  std::uint16_t state = 0;     // 1 if the block's condition was true
  std::uint16_t code = 0;      // statement that pushed the entry
  std::uint16_t key = 0;       // line_index of the line that closes it
  std::uint32_t sequence = 0;  // running number
};

struct BlockStack {
  std::vector<BlockEntry> entries;  // the last one is the top
  std::uint32_t next_sequence = 0;
  std::uint32_t floor = 0;  // entries with a sequence below it belong to callers and are never found
};

struct CallLevel {
  std::int16_t test_major = 0;
  std::int16_t test_minor = 0;
  friend auto operator<=>(const CallLevel&, const CallLevel&) = default;
};

/// How the latest tolerance was made: the terms in force, what they refer to, and what they came to.
struct ToleranceMade {
  ToleranceField field;
  double range = 0, reference = 0;
  double neg = 0, pos = 0;
};

/// Frame of the picture window, as DRAW leaves it.
struct DrawSettings {
  int x = 0, y = 0, width = 0, height = 0;
  std::array<std::uint8_t, 4> style{};
};

/// A value of VSET (for the rest of the run) and of TSET (for the next test), kept as text.
struct VsetEntry {
  static constexpr std::uint16_t brackets = 0x0001, tset_present = 0x0002;
  std::uint16_t flags = 0;
  std::uint8_t setting = 0;  // Setting, the index of the name in the vocabulary
  std::string name;          // as written
  std::optional<std::string> vset_value;
  std::optional<std::string> tset_value;
};

/// A line for the log that is kept until the test that it belongs to is written.
struct PendingNote {
  static constexpr int brace = 1, rslt = 2, comment = 4;
  static constexpr std::size_t text_limit = 65;
  int mask = 0;
  int test_major = 0;
  int test_minor = 0;
  std::string text;
};

/// The running log "rslt.tmp".
struct ResultLog {
  std::ofstream file;
  std::string path;
  bool broken = false;  // a write failed: nothing more is written in this run
  int adjusted = -1;    // test number of the latest "ADJUST PERFORMED" line of this procedure
  std::vector<PendingNote> notes;
};

/// A printf format that FMT has set for a field of the results.
struct FmtEntry {
  std::string name;
  std::string value;
};

struct RunState {
  // The fields that every statement reads stand first.
  std::uint16_t flags = 0;        // run_flag
  std::uint16_t flags2 = 0;       // run_flag2
  std::uint16_t stop_reason = 0;  // stop_reason_bit
  std::uint32_t options = 0;      // ask_option
  std::uint64_t statements_run = 0;
  std::uint64_t next_abort = 0;  // statements_run at which an abort is due; 0 none
  RegisterFile registers;
  double adjust_threshold = 0;      // percent
  std::uint32_t test_switches = 0;  // test_switch

  TestValues test;
  DecisionBlock decision;
  SystemAccuracy accuracy;
  AccfTable accf;
  AppliedCorrection correction;
  UncertaintyBlock uncertainty;
  GuardResult guard;
  QuantitySlots slots;
  BlockStack blocks;
  std::vector<CallLevel> calls;
  int call_depth = 0;  // CALLs that the dispatcher has open
  MathStore math;
  std::vector<VsetEntry> vset;
  ToleranceField latest_tolerance;  // of the latest TOL statement
  ToleranceMade tolerance_made;
  DrawSettings draw;
  std::vector<std::string> mess_lines;                            // of MESS, for the next prompt
  std::vector<std::pair<std::string, std::string>> uut_settings;  // of SET
  ResultLog log;
  IeeeState ieee;
  PortState port;
  VisaState visa;
  SerialState serial;
  std::string read_block;  // bytes of the latest binary read, see read_block_limit
  SlewState slew;
  std::vector<ResetNode> reset_list;  // in the order of their first use
  ConnectionTable connections;
  ModifierBlocks modifiers;
  SampleLoop samples;
  std::vector<FmtEntry> formats;  // of FMT, in the order of their names' first mention
  ResultList results;
  ReportState report;
  PipelineState pipeline;
  std::vector<std::uint64_t> abort_at;  // scripted aborts, in increasing order
  std::string procedure_name;           // of the running procedure, as shown
  std::string run_name;                 // of the main procedure
  bool demo_mode = true;                // no instrument is touched
  bool full_initialisation = true;

  // Handed down by the instruments' floor; null while no bus is in use.
  bool (*bus_poll)(RunState&) = nullptr;  // serves an SRQ; false if it failed

  bool has(std::uint16_t bits) const { return (flags & bits) != 0; }
  void set(std::uint16_t bits) { flags = static_cast<std::uint16_t>(flags | bits); }
  void clear(std::uint16_t bits) { flags = static_cast<std::uint16_t>(flags & ~bits); }
  bool asks(std::uint32_t letters) const { return (options & letters) != 0; }
  bool active() const { return has(run_flag::run_active); }
  bool stopped() const { return has(run_flag::stop_test | run_flag::skip_test); }
};

/// The control block of the program.
RunState& run_state();

/// Serves a device that asks for service. False if an abort is requested, the poll of the bus has found a fault, or
/// stop_test is set.
bool poll_run(RunState& run);

/// A floating-point fault in a statement: sets stop_test and the reason; says nothing itself. Returns false.
bool floating_point_stop(RunState& run);

}  // namespace orvane
