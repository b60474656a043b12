// Which accuracy file counts for a statement or an instrument of this bench: the one that an ACCF statement names, the
// one whose header fits the asset and how long its calibration holds, or the file with the statement's name.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "state/run_state.h"
#include "state/statement.h"

namespace orvane {

constexpr std::size_t accuracy_path_limit = 260;

/// The file for an instrument by its display name, an alias, or the name of a generic or manual one; and the confidence
/// of its header in sigma. Nothing after a report: 9472 no such instrument, 9471 no instrument configuration, 9473 it
/// has no asset, 9474 the inventory has no interval for it, 135 its unit is unknown, 136 and 153 of acc_choose(), those
/// of acch_scan().
std::optional<std::string> acc_file_for_name(std::string_view name, double& confidence);

/// The file for the instrument of a statement; nothing, without a report, where its asset or interval is not known.
std::optional<std::string> acc_file_for_fsc(RunState& run, const FscRecord& record);

/// In front of a run: selects a file for each instrument that it requires, but for those whose statements the procedure
/// names in ACCF. Nothing to do with the key acc_check off, or while no system accuracy is worked out. False after a
/// report; the next run then scans anew. 131: the asset or its interval is not known, an error in a run that touches
/// instruments of the bench, a message in a demonstration and for an instrument that the operator answers for.
[[nodiscard]] bool acc_select_for_run(RunState& run);

/// The path of a file that ACCF names, by the key accf_acc_rel. 128: it is too long.
[[nodiscard]] bool acc_path_from_accf(RunState& run, std::string_view name, std::string& path);

/// The file of the name of a statement in small letters, in the folder of accuracy files; the file may be missing.
[[nodiscard]] bool acc_default_path(RunState& run, std::uint16_t code, std::string& path);

/// The path for one statement of the run: by ACCF, else selected (with acc_check), else by its name. 217: there is none.
[[nodiscard]] bool acc_path_for_node(RunState& run, const FscRecord& record, std::string& path);

/// Gain and floor of an instrument at a value: |x| * gain / 100 + floor. 3288 no name, 3289 no mode; 3290 to 3294 and,
/// with two values, 3295 to 3299: acc_check off, no file, the look-up failed, no row, "na" in gain or floor.
[[nodiscard]] bool acc_value(RunState& run, std::string_view name, std::string_view mode, double x,
                             double& value);
[[nodiscard]] bool acc_value2(RunState& run, std::string_view name, std::string_view mode, double x, double y,
                              double& value);

/// The procedure has an ACCF for statements of this code. 31016: more codes than the list takes.
[[nodiscard]] bool accf_note(RunState& run, std::uint16_t code);
/// The start of a run: no ACCF has been met.
void accf_reset(RunState& run);

/// ACCF.
std::span<const HandlerRow> accuracy_handlers();

/// Hands the choice down to the system accuracy and the corrections, and the names of instruments to the scan.
void accuracy_install();

}  // namespace orvane
