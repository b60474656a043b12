// Start and end of the engine: rooms hand their tables down, the configuration is read.
#pragma once

#include <string>

#include "state/run_state.h"

namespace orvane {

enum class RunMode { from_settings, demo, real };

struct EngineStart {
  std::string config_path;    // empty: found as the documentation tells
  std::string settings_path;  // empty: "settings.ini" in the user's configuration directory
  RunMode mode = RunMode::from_settings;
  bool recover =
      true;  // after a run that died all instruments are reset at once; otherwise as the next run begins
};

/// The place of the startup configuration when none is named: $ORVANE_INI, else "orvane.ini" in the user's
/// configuration directory if it is there, else the system's.
std::string default_config_path();

/// Hands every room's tables to the rooms below. Once for a program; tests call it as well.
void engine_install();

/// Loads the message texts, installs the tables, reads configuration and settings, opens the debug log if a switch
/// asks for it. False after reports.
[[nodiscard]] bool engine_start(RunState& run, const EngineStart& start);

/// Puts the instruments to standby, for an end of the program in the middle of a run.
void engine_make_safe();

/// Frees procedures and closes the debug log.
void engine_stop();

}  // namespace orvane
