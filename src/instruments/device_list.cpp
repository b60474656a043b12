#include "instruments/device_list.h"

#include <algorithm>

#include "config/profile.h"
#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "instruments/instrument_names.h"
#include "messages/catalogue.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint16_t board_1_base = 100;

struct Installed {
  std::optional<DeviceList> list;
  std::array<std::uint16_t, highest_instrument_code + 1> substitutes{};
};

Installed& installed() {
  static Installed the_installed;
  return the_installed;
}

// Ports behind COM16, from 17 on.
constexpr std::string_view special_ports[] = {"COMMFC1", "COMMFC2", "COMOSC1", "COMOSC2", "LEMOPRC1"};

// A model's code and the codes that may stand in for it. The order is that of the search.
struct SubstituteRow {
  std::uint16_t code;
  std::array<std::uint16_t, 7> others;
};
constexpr SubstituteRow substitute_rows[] = {
    {10, {33}},
    {42, {87}},
    {103, {102}},
    {110, {108}},
    {129, {130}},
    {161, {162}},
    {160, {164}},
    {21, {29}},
    {169, {170}},
    {174, {175}},
    {178, {179, 180}},
    {179, {180}},
    {70, {104}},
    {71, {99}},
    {80, {105}},
    {81, {101, 71, 97, 106, 99}},
    {97, {106, 99, 101, 71}},
    {98, {97, 106, 99, 100, 81, 101, 71}},
    {99, {71}},
    {100, {81, 101, 71, 97, 106, 99}},
    {101, {71, 99}},
    {106, {101, 71, 99}},
};

InstrumentRecord* row_of(std::uint16_t code) {
  if (!installed().list) return nullptr;
  for (InstrumentRecord& row : installed().list->instruments) {
    if (row.code == code) return &row;
  }
  return nullptr;
}

bool has_all(std::uint16_t options, std::uint16_t mask) { return (options & mask) == mask; }

// Withdrawn rows are passed over.
template <class Row>
std::optional<DevAddress> alias_in(std::vector<Row>& rows, std::string_view alias) {
  for (Row& row : rows) {
    if ((row.flags & device_flag::withdrawn) != 0) continue;
    if (!same_word(row.aliases[0], alias) && !same_word(row.aliases[1], alias)) continue;
    row.flags |= device_flag::used;
    return row.address;
  }
  return std::nullopt;
}

// Where an instrument that is configured and not withdrawn stands in the list, through the substitution table.
InstrumentRecord* substituted(std::uint16_t code) {
  if (code == 0 || code > highest_instrument_code) return nullptr;
  const std::uint16_t substitute = installed().substitutes[code];
  return row_of(substitute != 0 ? substitute : code);
}

bool withdrawn(std::uint16_t flags) { return (flags & device_flag::withdrawn) != 0; }

bool same_place(const DevAddress& a, const DevAddress& b) {
  if (a.interface != b.interface) return false;
  if (a.interface == DeviceInterface::serial) return a.port == b.port;
  return a.bus.board == b.bus.board && a.bus.primary == b.bus.primary;
}

InstrumentSlot* slot_of(std::uint16_t code, std::uint16_t slot_code, std::uint16_t number) {
  InstrumentRecord* row = substituted(code);
  if (row == nullptr) return nullptr;
  const auto found = std::find_if(row->slots.begin(), row->slots.end(), [&](const InstrumentSlot& one) {
    return one.code == slot_code && one.number == number;
  });
  return found != row->slots.end() ? &*found : nullptr;
}

template <class Change>
void change_flags(std::uint16_t code, Change change) {
  if (!installed().list) return;
  for (InstrumentRecord& row : installed().list->instruments) {
    if (code != 0 && row.code != code) continue;
    change(row.flags);
    if (code == 0)
      for (InstrumentSlot& slot : row.slots) change(slot.flags);
  }
  if (code != 0) return;
  for (GenericInstrument& row : installed().list->generic) change(row.flags);
  for (ManualInstrument& row : installed().list->manual) change(row.flags);
}

}  // namespace

std::string address_text(const DevAddress& address) {
  switch (address.interface) {
    case DeviceInterface::ieee488: {
      const BusAddress& bus = address.bus;
      std::string text = "IEEE-488 " + std::to_string(bus.board * board_1_base + bus.primary);
      if ((bus.flags & BusAddress::secondary_valid) != 0) text += ":" + std::to_string(bus.secondary);
      return text;
    }
    case DeviceInterface::serial: return "RS232 " + port_name(address.port);
    case DeviceInterface::visa: return "VISA";
    case DeviceInterface::none: break;
  }
  return "<UNKNOWN>";
}

std::uint16_t port_number(std::string_view name) {
  for (std::uint16_t port = 1; port <= DevAddress::lemo_port; ++port) {
    if (same_word(port_name(port), name)) return port;
  }
  return 0;
}

std::string port_name(std::uint16_t port) {
  if (port == 0 || port > DevAddress::lemo_port) return {};
  if (port <= DevAddress::last_plain_port) return "COM" + std::to_string(port);
  return std::string(special_ports[port - DevAddress::first_pass_through]);
}

void set_device_list(std::optional<DeviceList> list) {
  installed().list = std::move(list);
  installed().substitutes.fill(0);
}

bool device_list_stands() { return installed().list.has_value(); }

const DeviceList& device_list() {
  static const DeviceList none;
  return installed().list ? *installed().list : none;
}

DeviceList* device_list_to_change() { return installed().list ? &*installed().list : nullptr; }

const InstrumentRecord* dev_find(std::uint16_t code) {
  const InstrumentRecord* row = substituted(code);
  return row != nullptr && !withdrawn(row->flags) ? row : nullptr;
}

bool dev_locate(RunState& run, std::uint16_t code, DevAddress& address) {
  if (code == 0 || code > highest_instrument_code) return run_error(run, 2913, instrument_text(code));
  InstrumentRecord* row = substituted(code);
  if (row == nullptr) return run_error(run, 2908, instrument_text(code));
  if (withdrawn(row->flags)) return run_error(run, 2905, instrument_text(row->code));
  row->flags |= device_flag::used;
  address = row->address;
  if (address.interface != DeviceInterface::ieee488) return true;
  if (!address.bus.is_set()) return run_error(run, 2912, instrument_text(row->code));
  run.ieee.last_standard = address;
  return true;
}

std::uint16_t dev_code_at(const DevAddress& address) {
  for (const InstrumentRecord& row : device_list().instruments) {
    if (!withdrawn(row.flags) && same_place(row.address, address)) return row.code;
  }
  return 0;
}

bool dev_addresses_on_board(int board, std::size_t limit, std::uint16_t but, std::vector<BusAddress>& list) {
  list.clear();
  const auto add = [&](const DevAddress& address) {
    if (address.interface != DeviceInterface::ieee488 || address.bus.board != board) return true;
    if (list.size() == limit) return errp(2901, limit);
    list.push_back(address.bus);
    return true;
  };
  for (const InstrumentRecord& row : device_list().instruments) {
    if (row.code != but && !withdrawn(row.flags) && !add(row.address)) return false;
  }
  const std::vector<GenericInstrument>& generic = device_list().generic;
  return std::all_of(generic.begin(), generic.end(),
                     [&](const GenericInstrument& row) { return add(row.address); });
}

const InstrumentRecord* dev_next_configured(std::size_t& at) {
  const std::vector<InstrumentRecord>& rows = device_list().instruments;
  while (at < rows.size()) {
    const InstrumentRecord& row = rows[at++];
    if (!withdrawn(row.flags)) return &row;
  }
  return nullptr;
}

bool dev_is_configured(std::uint16_t code, std::uint16_t option_mask) {
  const InstrumentRecord* row = row_of(code);
  return row != nullptr && (row->flags & device_flag::withdrawn) == 0 && has_all(row->options, option_mask);
}

bool dev_slot_is_configured(const InstrumentRecord& host, std::uint16_t code, std::uint16_t option_mask) {
  return std::any_of(host.slots.begin(), host.slots.end(), [&](const InstrumentSlot& slot) {
    return slot.code == code && (slot.flags & device_flag::withdrawn) == 0 &&
           has_all(slot.options, option_mask);
  });
}

std::optional<DevAddress> dev_by_alias(std::string_view alias) {
  if (!installed().list || alias.empty()) return std::nullopt;
  if (const auto address = alias_in(installed().list->generic, alias)) return address;
  return alias_in(installed().list->instruments, alias);
}

std::span<const std::uint16_t> dev_substitutes(std::uint16_t code) {
  for (const SubstituteRow& row : substitute_rows) {
    if (row.code != code) continue;
    const auto end = std::find(row.others.begin(), row.others.end(), 0);
    return {row.others.data(), static_cast<std::size_t>(end - row.others.begin())};
  }
  return {};
}

void dev_substitute(std::uint16_t code, std::uint16_t substitute) {
  if (code == 0) {
    installed().substitutes.fill(0);
  } else if (code <= highest_instrument_code) {
    installed().substitutes[code] = substitute;
  }
}

void dev_set_flags(std::uint16_t code, std::uint16_t flags) {
  change_flags(code, [flags](std::uint16_t& word) { word = static_cast<std::uint16_t>(word | flags); });
}

void dev_clear_flags(std::uint16_t code, std::uint16_t flags) {
  change_flags(code, [flags](std::uint16_t& word) { word = static_cast<std::uint16_t>(word & ~flags); });
}

std::vector<std::string> dev_used_names() {
  std::vector<std::string> names;
  const auto is_used = [](const auto& row) { return (row.flags & device_flag::used) != 0; };
  for (const InstrumentRecord& row : device_list().instruments) {
    if (is_used(row)) names.emplace_back(instrument_name(row.code));
    for (const InstrumentSlot& slot : row.slots) {
      if (is_used(slot)) names.emplace_back(instrument_name(slot.code));
    }
  }
  for (const GenericInstrument& row : device_list().generic) {
    if (is_used(row)) names.push_back(row.name);
  }
  for (const ManualInstrument& row : device_list().manual) {
    if (is_used(row)) names.push_back(row.name);
  }
  return names;
}

void dev_withdraw(std::uint16_t code) {
  InstrumentRecord* row = row_of(code);
  if (row == nullptr) return;
  row->flags |= device_flag::withdrawn;
  for (InstrumentSlot& slot : row->slots) slot.flags |= device_flag::withdrawn;
}

void dev_require_slots(std::uint16_t code, std::uint16_t slot_code, std::uint16_t option_mask) {
  InstrumentRecord* row = row_of(code);
  if (row == nullptr) return;
  for (InstrumentSlot& slot : row->slots) {
    if (slot.code == slot_code && has_all(slot.options, option_mask)) slot.flags |= device_flag::required;
  }
}

void dev_withdraw_slot(std::uint16_t code, std::uint16_t slot_code, std::uint16_t number) {
  if (InstrumentSlot* slot = slot_of(code, slot_code, number)) slot->flags |= device_flag::withdrawn;
}

bool dev_use_slot(RunState& run, std::uint16_t code, std::uint16_t slot_code, std::uint16_t number) {
  InstrumentSlot* slot = slot_of(code, slot_code, number);
  if (slot == nullptr || (slot->flags & device_flag::required) == 0) {
    if (number == 0) return run_error(run, 386, instrument_text(slot_code), instrument_text(code));
    return run_error(run, 385, instrument_text(slot_code), number, instrument_text(code));
  }
  slot->flags |= device_flag::used;
  return true;
}

std::vector<std::pair<std::uint16_t, std::uint16_t>> dev_slots(std::uint16_t code) {
  std::vector<std::pair<std::uint16_t, std::uint16_t>> found;
  const InstrumentRecord* row = dev_find(code);
  if (row == nullptr) return found;
  for (const InstrumentSlot& slot : row->slots) {
    if (!withdrawn(slot.flags)) found.emplace_back(slot.code, slot.number);
  }
  return found;
}

DevLockResult dev_lock(DevLock operation) {
  static constexpr std::string_view section = "startup", key = "lock";
  static constexpr std::string_view own = "RunTime", none = "None";
  const std::string holder = profile_get(config_path(), section, key).value_or(std::string(none));
  const bool free = holder.empty() || same_word(holder, none);
  switch (operation) {
    case DevLock::take:
      if (!free) {
        errp(2494, holder);
        return DevLockResult::failed;
      }
      return profile_put(config_path(), section, key, own) ? DevLockResult::done : DevLockResult::not_written;
    case DevLock::release:
      if (!same_word(holder, own)) {
        errp(2493, holder);
        return DevLockResult::failed;
      }
      break;
    case DevLock::clear_own:
      if (free) return DevLockResult::nobody;
      if (!same_word(holder, own)) return DevLockResult::editor;
      break;
  }
  return profile_put(config_path(), section, key, none) ? DevLockResult::done : DevLockResult::not_written;
}

}  // namespace orvane
