#include "instruments/device_assets.h"

#include <algorithm>

#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "instruments/bench_file.h"
#include "instruments/bench_load.h"
#include "instruments/device_list.h"
#include "instruments/instrument_names.h"
#include "platform/files.h"
#include "platform/operator.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::int16_t self_cal_no = 0, self_cal_yes = 2;
constexpr std::size_t file_limit = 1 << 20;

bool required(std::uint16_t flags) { return (flags & device_flag::required) != 0; }

// An entry with the asset, and the messages of its kind.
struct Match {
  std::string name;
  int error = 0, question = 0;
};

std::optional<Match> match_of(std::string_view asset) {
  const DeviceList& list = device_list();
  for (const InstrumentRecord& row : list.instruments) {
    if (required(row.flags) && row.asset == asset) return Match{instrument_text(row.code), 324, 327};
    for (const InstrumentSlot& slot : row.slots) {
      if (required(slot.flags) && slot.asset == asset) return Match{instrument_text(slot.code), 324, 327};
    }
  }
  for (const GenericInstrument& row : list.generic) {
    if (required(row.flags) && row.asset == asset) return Match{row.name, 325, 328};
  }
  for (const ManualInstrument& row : list.manual) {
    if (row.asset == asset) return Match{row.name, 326, 329};
  }
  return std::nullopt;
}

// --- Writing an asset ------------------------------------------------------------------------------------------

// An entry of the list as the writer sees it.
struct Place {
  std::string* asset = nullptr;
  int line = 0;
};

template <class Row>
Place by_name(std::vector<Row>& rows, std::string_view name) {
  for (Row& row : rows) {
    if (same_word(row.name, name)) return {&row.asset, row.line};
  }
  return {};
}

Place by_model(DeviceList& list, std::string_view name, std::string_view host) {
  for (InstrumentRecord& row : list.instruments) {
    const std::string model = instrument_text(row.code);
    if (host.empty() && same_word(model, name)) return {&row.asset, row.line};
    if (!host.empty() && !same_word(model, host)) continue;
    for (InstrumentSlot& slot : row.slots) {
      if (same_word(instrument_text(slot.code), name)) return {&slot.asset, slot.line};
    }
  }
  return {};
}

Place find_entry(DeviceList& list, AssetKind kind, std::string_view name, std::string_view host) {
  Place found;
  if (kind == AssetKind::manual) found = by_name(list.manual, name);
  if (kind != AssetKind::instrument && found.asset == nullptr) found = by_name(list.generic, name);
  if (kind != AssetKind::generic && found.asset == nullptr) found = by_model(list, name, host);
  return found;
}

bool is_taken(const DeviceList& list, std::string_view asset) {
  const auto has = [&](const auto& row) { return row.asset == asset; };
  return std::any_of(list.generic.begin(), list.generic.end(), has) ||
         std::any_of(list.manual.begin(), list.manual.end(), has) ||
         std::any_of(list.instruments.begin(), list.instruments.end(), [&](const InstrumentRecord& row) {
           return has(row) || std::any_of(row.slots.begin(), row.slots.end(), has);
         });
}

// Puts " {asset}" behind the text of a line, in front of what ends it.
bool append_to_line(std::string& text, int line, std::string_view asset) {
  std::size_t begin = 0;
  for (int i = 1; i < line; ++i) {
    begin = text.find('\n', begin);
    if (begin++ == std::string::npos) return false;
  }
  std::size_t end = std::min(text.find('\n', begin), text.size());
  while (end > begin && (text[end - 1] == '\r' || text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
  text.insert(end, " {" + std::string(asset) + "}");
  return true;
}

// The file may have been changed since it was read: it is read anew, and the entry looked for in what stands there.
bool write_asset(AssetKind kind, std::string_view name, std::string_view asset, std::string_view host) {
  const std::string& path = startup_config().config;
  DeviceList list;
  std::vector<BenchFault> faults;
  std::string text;
  if (!bench_file_read(path, list, faults) || read_file(path, file_limit, text) != ReadResult::ok)
    return errp(30980, path);
  const Place place = find_entry(list, kind, name, host);
  if (place.asset == nullptr || !place.asset->empty()) return errp(30980, path);
  if (is_taken(list, asset)) return errp(30981, asset);
  if (!append_to_line(text, place.line, asset)) return errp(30980, path);
  return replace_file(path, text) || errp(2242, "asset", name, path);
}

// --- Entries by name -------------------------------------------------------------------------------

template <class Row>
void add_named(const std::vector<Row>& rows, std::string_view name, std::vector<NamedDevice>& found) {
  for (const Row& row : rows) {
    bool hit = same_word(row.name, name);
    if constexpr (requires { row.aliases; })
      hit = hit || same_word(row.aliases[0], name) || same_word(row.aliases[1], name);
    if (hit) found.push_back({0, row.name, row.asset});
  }
}

}  // namespace

std::vector<NamedDevice> dev_named(std::string_view name) {
  const DeviceList& list = device_list();
  std::vector<NamedDevice> found;
  if (name.empty()) return found;  // an alias that is not given is empty
  for (const InstrumentRecord& row : list.instruments) {
    const std::string model = instrument_text(row.code);
    if (same_word(model, name) || same_word(row.aliases[0], name) || same_word(row.aliases[1], name))
      found.push_back({row.code, model, row.asset});
  }
  for (const InstrumentRecord& row : list.instruments) {
    for (const InstrumentSlot& slot : row.slots) {
      if (const std::string model = instrument_text(slot.code); same_word(model, name))
        found.push_back({slot.code, model, slot.asset});
    }
  }
  add_named(list.generic, name, found);
  add_named(list.manual, name, found);
  return found;
}

bool dev_self_calibration_check(RunState& run, std::string_view uut_asset) {
  const std::int16_t rule = startup_config().self_cal;
  if (uut_asset.empty() || rule == self_cal_yes) return true;
  const std::optional<Match> match = match_of(uut_asset);
  if (!match) return true;
  if (rule == self_cal_no) return run_error(run, match->error, uut_asset, match->name);
  const MessageArg args[] = {uut_asset, match->name};
  return yesnoph(match->question, args) == answer::yes;
}

bool dev_use_frequency_reference(RunState& run) {
  const std::string& name = startup_config().FreqRefDevName;
  if (name.empty()) return run_error(run, 2336);
  DeviceList* list = device_list_to_change();
  if (list == nullptr) return run_error(run, 2337, name);
  const auto use = [&](std::uint16_t& flags, int message) {
    if ((flags & device_flag::withdrawn) != 0) return run_error(run, message, name);
    flags |= device_flag::used;
    return true;
  };
  for (InstrumentRecord& row : list->instruments) {
    if (same_word(instrument_text(row.code), name)) return use(row.flags, 2338);
  }
  for (GenericInstrument& row : list->generic) {
    if (same_word(row.name, name)) return use(row.flags, 2339);
  }
  for (ManualInstrument& row : list->manual) {
    if (same_word(row.name, name)) return use(row.flags, 2340);
  }
  return run_error(run, 2337, name);
}

bool dev_set_asset(AssetKind kind, std::string_view name, std::string_view asset, std::string_view host) {
  struct MissingRow {
    AssetKind kind;
    int message;
  };
  static constexpr MissingRow missing_rows[] = {
      {AssetKind::instrument, 2489}, {AssetKind::generic, 2490}, {AssetKind::manual, 2491}};
  const auto missing = std::find_if(std::begin(missing_rows), std::end(missing_rows),
                                    [kind](const MissingRow& row) { return row.kind == kind; });
  if (missing == std::end(missing_rows)) return errp(2492, static_cast<int>(kind));
  if (asset.empty()) return errp(2484, name);
  if (asset.size() > device_limit::asset) return errp(2485, asset, device_limit::asset);
  if (name.empty()) return errp(2486, asset);
  DeviceList* list = device_list_to_change();
  const Place place = list != nullptr ? find_entry(*list, kind, name, host) : Place();
  if (place.asset == nullptr) return errp(missing->message, name);
  if (!place.asset->empty()) return errp(2488, name, *place.asset);
  if (is_taken(*list, asset)) return errp(30981, asset);
  if (dev_lock(DevLock::take) != DevLockResult::done) return false;
  const bool written = write_asset(kind, name, asset, host);
  const bool released = dev_lock(DevLock::release) == DevLockResult::done;
  if (!written) return false;
  *place.asset = asset;
  dev_note_written();
  return released;
}

}  // namespace orvane
