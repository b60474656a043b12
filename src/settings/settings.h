// The values of the settings: what a procedure has set by VSET or TSET, else the startup key of the same name, else
// what holds where nothing is said. Words are read as numbers: YES is 1, the words of a list have the numbers that the
// startup keys give them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "state/run_state.h"

namespace orvane {

/// The names of VSET and TSET. C1 to C10, DF1 to DF10 and U1 to U10 follow one another.
enum class Setting : std::uint8_t {
  // clang-format off
  ACCRED, ALL, C1, C2, C3, C4, C5, C6, C7, C8, C9, C10, CS1, CS2, CONF, CORREQ, COV_FAC, CPT, DF,
  DF1, DF2, DF3, DF4, DF5, DF6, DF7, DF8, DF9, DF10, DFS1, DFS2, EXP_UNC, F, GB, GBF, GB_MODE, GB_OVERFLOW,
  GB_PTS, GB_RESULT, IMPED, KCONF, LOGLIN, MATH_EPSILON, MEAS, MEASURE_ONLY, MEMC_IRPT, MFILE, MFILE_FORMAT,
  N5532A_504, N5532A_518, N5532A_526, N5532A_550, NMEAS, NSD, NTHROW, PTF_DMM4, PTF_DMM5, PTF_DMM6, PTF_DMM7,
  PTF_ACM1, PTF_RMS1, PTF_CTR1, PTF_HP34401A, PTF_HP34420A, PTF_HP3458A, PTF_K2000, PTF_K2001, PTF_K2002, REMCON,
  ResetUUT, RSM, S1, S2, SENSORCHANGE, SlewStart, SrqDelay, SrqHoldOff, SrqRetry, STD_UNC, SYS_ACC, TDESC,
  TOL_REF, U1, U2, U3, U4, U5, U6, U7, U8, U9, U10, U2M, UCONF, UFMT, USE_ST, UUP, UUT_RES, WS,
  count
  // clang-format on
};

/// The number that the procedure has set; nothing where it sets none, or where brackets cannot be expanded or no
/// longer give a number (the failure has reported itself). "INF" is infinite_df.
std::optional<double> setting_set(RunState& run, Setting setting);

/// The number in force: set, else the key, else the fallback; nothing for a setting that then is worked out.
std::optional<double> setting_value(RunState& run, Setting setting);

/// setting_value() of a setting that always has one.
int setting_code(RunState& run, Setting setting);

/// The text in force of a setting that is a text (CPT, MFILE, N5532A-..., TDESC); empty without one.
std::string setting_text(RunState& run, Setting setting);

}  // namespace orvane
