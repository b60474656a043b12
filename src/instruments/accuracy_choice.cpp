#include "instruments/accuracy_choice.h"

#include <algorithm>
#include <cmath>

#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "evaluation/correction.h"
#include "evaluation/system_accuracy.h"
#include "instruments/device_assets.h"
#include "instruments/device_list.h"
#include "instruments/driver_table.h"
#include "instruments/instrument_names.h"
#include "instruments/inventory.h"
#include "platform/files.h"
#include "state/fsc.h"
#include "state/report.h"
#include "values/accuracy/accuracy_scan.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// --- The asset and how long its calibration holds ------------------------------------------------------------------

// The entry of the device list that the choice is for; the first of its name.
std::optional<NamedDevice> holder_of(std::string_view name) {
  std::vector<NamedDevice> found = dev_named(name);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

enum class QueryResult { found, missing, refused };

// The interval of an asset. `refused` after message 135.
QueryResult interval_of(const std::string& asset, bool report, AccQuery& query) {
  const auto number = inventory_text(asset, inventory_property::interval);
  const auto letter = inventory_text(asset, inventory_property::interval_units);
  const auto value = number ? whole_number(trim_blanks(*number)) : std::nullopt;
  if (!letter || !value || !std::isfinite(*value)) return QueryResult::missing;
  const std::string_view unit = trim_blanks(*letter);
  const std::uint16_t units = unit.size() == 1 ? acc_interval::units_of(unit) : std::uint16_t{0};
  if (units == 0) {
    if (report) errp(135, asset, *letter);
    return QueryResult::refused;
  }
  query = {*value, units, acc_interval::in_days(*value, units)};
  return QueryResult::found;
}

AccWanted wanted_of(const NamedDevice& holder, const AccQuery& query) {
  return {holder.code, holder.name, holder.asset, query};
}

// --- The start of a run --------------------------------------------------------------------------------------------

bool has_accf(const RunState& run, std::uint16_t code) {
  return std::any_of(run.accf.codes.begin(), run.accf.codes.end(), [code](std::uint16_t statement) {
    return instrument_code_of_statement(statement) == code;
  });
}

// Message 131: an error where the run measures with this instrument of the bench, words where it goes on all the same.
bool no_asset(RunState& run, const RequiredInstrument& wanted, const std::string& reason) {
  const bool goes_on = run.demo_mode || wanted.served != RequiredInstrument::Served::configured;
  const std::string name = instrument_text(wanted.code);
  if (!goes_on) return run_error(run, 131, name, reason);
  msgp(131, name, reason);
  return true;
}

bool select_for(RunState& run, const RequiredInstrument& wanted) {
  const InstrumentRecord* row = dev_find(wanted.code);
  if (row == nullptr) return no_asset(run, wanted, msg(31004));
  if (row->asset.empty()) return no_asset(run, wanted, msg(31005));
  const NamedDevice holder{row->code, instrument_text(row->code), row->asset};
  AccQuery query;
  switch (interval_of(row->asset, true, query)) {
    case QueryResult::found: break;
    case QueryResult::missing: return no_asset(run, wanted, msg(31006, row->asset));
    case QueryResult::refused: return run.demo_mode;
  }
  AccFileInfo* info = acc_choose(wanted_of(holder, query), !run.demo_mode);
  if (info != nullptr) info->flags |= AccFileInfo::selected;
  return info != nullptr || run.demo_mode;
}

bool needs_file(const RunState& run, const RequiredInstrument& wanted) {
  return wanted.served != RequiredInstrument::Served::skipped && !has_accf(run, wanted.code) &&
         (wanted.served != RequiredInstrument::Served::configured || !has_accf(run, wanted.used));
}

bool select_all(RunState& run) {
  const std::vector<RequiredInstrument>& required = run.pipeline.required;
  const auto needs = [&](const RequiredInstrument& one) { return needs_file(run, one); };
  if (std::none_of(required.begin(), required.end(), needs)) return true;
  acch_refresh();
  if (!acch_scan(startup_config().accdir)) return false;
  for (AccFileInfo& info : acch_list()) info.flags &= static_cast<std::uint16_t>(~AccFileInfo::selected);
  return std::all_of(required.begin(), required.end(),
                     [&](const RequiredInstrument& one) { return !needs(one) || select_for(run, one); });
}

// --- The path of a statement ---------------------------------------------------------------------------------------

// Statements that measure with the instrument of another one: its file is theirs.
struct SiblingRow {
  std::uint16_t code, sibling;
};
constexpr SiblingRow sibling_rows[] = {
    {fsc::resf, fsc::mfc3}, {fsc::wide, fsc::mfc3}, {fsc::n5530, fsc::n5531}};

// The name of a statement in small letters, as its files have it.
std::string file_stem(std::uint16_t code) {
  const auto sibling = std::find_if(std::begin(sibling_rows), std::end(sibling_rows),
                                    [code](const SiblingRow& row) { return row.code == code; });
  const std::uint16_t named = sibling != std::end(sibling_rows) ? sibling->sibling : code;
  std::string name(fsc_name(fsc_ordinal(named)));
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return name;
}

bool join_accuracy_path(RunState& run, std::string_view name, std::string& path) {
  return join_path(path, accuracy_path_limit, startup_config().accdir, name) ||
         run_error(run, 128, name, accuracy_path_limit);
}

const AccFileInfo* selected_file(std::uint16_t statement) {
  const std::uint16_t code = instrument_code_of_statement(statement);
  const InstrumentRecord* row = code != 0 ? dev_find(code) : nullptr;
  const std::uint16_t serves = row != nullptr ? row->code : code;
  if (serves == 0) return nullptr;
  for (const AccFileInfo& info : acch_list()) {
    if ((info.flags & AccFileInfo::selected) != 0 && info.device_id == serves) return &info;
  }
  return nullptr;
}

bool lookup(RunState& run, const FscRecord& record, std::string_view mode, double value,
            std::optional<double> modifier, AccRow& row) {
  std::string path;
  return acc_path_for_node(run, record, path) && acc_lookup(path, mode, value, modifier, row);
}

// Corrections are one specimen's: the file has the statement's name, and may name the asset that it is for.
bool correction_file(RunState& run, const FscRecord& record, std::string& path, std::string& asset) {
  path.clear();
  if (startup_config().correctdir.empty()) return true;
  const std::uint16_t code = instrument_code_of_statement(record.code());
  if (const InstrumentRecord* row = code != 0 ? dev_find(code) : nullptr) asset = row->asset;
  const std::string name = file_stem(record.code()) + ".cor";
  return join_path(path, accuracy_path_limit, startup_config().correctdir, name) ||
         run_error(run, 128, name, accuracy_path_limit);
}

// --- ACCF ----------------------------------------------------------------------------------------------------------

bool run_accf(Statement& s) {
  const std::size_t slot = s.record.get(field::accf_ordinal);
  if (slot >= AccfTable::slots) return run_error(s.run, 31015, static_cast<int>(slot));
  s.run.accf.files[slot] = trim_blanks(s.record.text(field::accf_name));
  return true;
}

constexpr HandlerRow rows[] = {{fsc::accf, run_accf, Pace::quick}};

// --- Values --------------------------------------------------------------------------------------------------------

bool value_at(RunState& run, std::string_view name, std::string_view mode, double x, std::optional<double> y,
              double& value) {
  if (name.empty()) return run_error(run, 3288);
  if (mode.empty()) return run_error(run, 3289, name);
  const bool two = y.has_value();
  if (startup_config().acc_check == 0) return run_error(run, two ? 3295 : 3290, name);
  double confidence = 0;
  const std::optional<std::string> path = acc_file_for_name(name, confidence);
  if (!path) return run_error(run, two ? 3296 : 3291, name);
  AccRow row;
  if (!acc_lookup(*path, mode, x, y, row)) return run_error(run, two ? 3297 : 3292, name, *path);
  if ((row.flags & acc_flag::hit) == 0) return run_error(run, two ? 3298 : 3293, name, mode, x, *path);
  if ((row.flags & (acc_flag::no_gain | acc_flag::no_floor)) != 0)
    return run_error(run, two ? 3299 : 3294, name, *path, row.line);
  value = std::fabs(x) * row.gain() * 0.01 + row.floor();
  return true;
}

}  // namespace

std::optional<std::string> acc_file_for_name(std::string_view name, double& confidence) {
  const auto nothing = [](bool) { return std::nullopt; };
  if (!device_list_stands()) return nothing(errp(9471, name));
  const std::optional<NamedDevice> holder = holder_of(trim_blanks(name));
  if (!holder) return nothing(errp(9472, name));
  if (holder->asset.empty()) return nothing(errp(9473, holder->name));
  AccQuery query;
  switch (interval_of(holder->asset, true, query)) {
    case QueryResult::found: break;
    case QueryResult::missing: return nothing(errp(9474, holder->name, holder->asset));
    case QueryResult::refused: return std::nullopt;
  }
  acch_refresh();
  if (!acch_scan(startup_config().accdir)) return std::nullopt;
  const AccFileInfo* info = acc_choose(wanted_of(*holder, query), true);
  if (info == nullptr) return std::nullopt;
  confidence = info->confidence;
  return info->path;
}

std::optional<std::string> acc_file_for_fsc(RunState&, const FscRecord& record) {
  const std::uint16_t code = instrument_code_of_statement(record.code());
  const InstrumentRecord* row = code != 0 ? dev_find(code) : nullptr;
  AccQuery query;
  if (row == nullptr || row->asset.empty() || interval_of(row->asset, false, query) != QueryResult::found)
    return std::nullopt;
  acch_refresh();
  if (!acch_scan(startup_config().accdir)) return std::nullopt;
  const AccFileInfo* info =
      acc_choose(wanted_of({row->code, instrument_text(row->code), row->asset}, query), false);
  return info != nullptr ? std::optional(info->path) : std::nullopt;
}

bool acc_select_for_run(RunState& run) {
  if (startup_config().acc_check == 0 || (run.flags2 & run_flag2::uncertainty) == 0) return true;
  if (select_all(run)) return true;
  acch_clear();
  return false;
}

bool acc_path_from_accf(RunState& run, std::string_view name, std::string& path) {
  const bool has_separator = name.find_first_of("/\\") != std::string_view::npos;
  const bool rooted = name.starts_with('/') || name.starts_with('\\') || (name.size() > 1 && name[1] == ':');
  const bool as_it_is = startup_config().accf_acc_rel != 0 ? rooted : has_separator;
  if (!as_it_is) return join_accuracy_path(run, name, path);
  path = name;
  return path.size() < accuracy_path_limit || run_error(run, 128, name, accuracy_path_limit);
}

bool acc_default_path(RunState& run, std::uint16_t code, std::string& path) {
  return join_accuracy_path(run, file_stem(code) + ".acc", path);
}

bool acc_path_for_node(RunState& run, const FscRecord& record, std::string& path) {
  const std::size_t slot = static_cast<std::size_t>(fsc_ordinal(record.code()));
  if (slot < AccfTable::slots && !run.accf.files[slot].empty())
    return acc_path_from_accf(run, run.accf.files[slot], path);
  if (startup_config().acc_check == 0) return acc_default_path(run, record.code(), path);
  if (const AccFileInfo* info = selected_file(record.code())) {
    path = info->path;
    return true;
  }
  return acc_default_path(run, record.code(), path) &&
         (is_ordinary_file(path) || run_error(run, 217, fsc_name(fsc_ordinal(record.code())), path));
}

bool acc_value(RunState& run, std::string_view name, std::string_view mode, double x, double& value) {
  return value_at(run, name, mode, x, std::nullopt, value);
}

bool acc_value2(RunState& run, std::string_view name, std::string_view mode, double x, double y,
                double& value) {
  return value_at(run, name, mode, x, y, value);
}

bool accf_note(RunState& run, std::uint16_t code) {
  std::vector<std::uint16_t>& codes = run.accf.codes;
  if (std::find(codes.begin(), codes.end(), code) != codes.end()) return true;
  if (codes.size() == AccfTable::code_limit) return run_error(run, 31016, AccfTable::code_limit);
  codes.push_back(code);
  return true;
}

void accf_reset(RunState& run) { run.accf = AccfTable(); }

std::span<const HandlerRow> accuracy_handlers() { return rows; }

void accuracy_install() {
  acc_install_names(instrument_code);
  ur_install_source({lookup});
  cor_install_source({correction_file});
}

}  // namespace orvane
