// The device list: which instrument models stand on this bench, where, with which options, plug-ins and aliases. It
// turns an instrument code into an address, and answers the check in front of a run. Whoever reads the instrument
// configuration fills it with set_device_list(); until then no list stands, and nothing is known of the bench.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "state/bus_state.h"
#include "state/run_state.h"

namespace orvane {

/// "IEEE-488 22", "IEEE-488 122:1" (board 1, secondary 1), "RS232 COM3".
std::string address_text(const DevAddress& address);

/// The number of a port name, in any case: 1 to 21; 0 if it is none.
std::uint16_t port_number(std::string_view name);
/// The name of a port number; empty if there is none.
std::string port_name(std::uint16_t port);

namespace device_flag {
constexpr std::uint16_t withdrawn = 0x01;  // from use, for this run
constexpr std::uint16_t required = 0x02;   // by the procedure that runs
constexpr std::uint16_t used = 0x04;       // by a statement of this run
}  // namespace device_flag

/// A plug-in or an accessory.
struct InstrumentSlot {
  std::uint16_t number = 0;  // 0 for an accessory without a slot
  std::uint16_t code = 0;
  std::uint16_t options = 0;
  std::uint16_t flags = 0;  // device_flag
  std::string asset;
  int line = 0;  // in the file
};
struct InstrumentRecord {
  DevAddress address;
  std::uint16_t code = 0;
  std::uint16_t options = 0;  // mask of installed options
  std::uint16_t flags = 0;    // device_flag
  std::string asset;
  std::vector<InstrumentSlot> slots;
  std::array<std::string, 2> aliases;
  int line = 0;  // in the file
};
/// An instrument on a bus that no driver knows.
struct GenericInstrument {
  std::string name;
  DevAddress address;
  std::uint16_t flags = 0;
  std::array<std::string, 2> aliases;
  std::string asset;
  int line = 0;  // in the file
};
/// One without an address.
struct ManualInstrument {
  std::string name;
  std::uint16_t flags = 0;
  std::string asset;
  int line = 0;  // in the file
};
struct DeviceList {
  std::vector<InstrumentRecord> instruments;  // a code stands once
  std::vector<GenericInstrument> generic;
  std::vector<ManualInstrument> manual;
};

/// Puts a list in force; nothing: no list stands.
void set_device_list(std::optional<DeviceList> list);
bool device_list_stands();
const DeviceList& device_list();      // empty while none stands
DeviceList* device_list_to_change();  // null while none stands

/// Where the instrument of a code is, through the substitution table. It is marked as used and is from now on the
/// standard that was addressed last. False after a report, whose argument is the display name: 2905 withdrawn, 2908
/// not configured, 2913 no such code, 2912 its address is none.
[[nodiscard]] bool dev_locate(RunState& run, std::uint16_t code, DevAddress& address);

/// The code of the row at this address that is not withdrawn; 0 if there is none.
std::uint16_t dev_code_at(const DevAddress& address);

/// The primary addresses in use on a board, of instruments and generic instruments, up to `limit` (2901 beyond).
/// `but` is a code that is left out.
[[nodiscard]] bool dev_addresses_on_board(int board, std::size_t limit, std::uint16_t but,
                                          std::vector<BusAddress>& list);
constexpr std::uint16_t never_polled_code = 14;  // the model that must never be serial polled

/// The configured rows that are not withdrawn, one at a call: `at` is 0 before the first. Null behind the last.
const InstrumentRecord* dev_next_configured(std::size_t& at);

/// The names of all that statements of this run have used, plug-ins and instruments without a driver as well.
std::vector<std::string> dev_used_names();

/// The row of a code, through the substitution table, unless it is withdrawn; null if there is none.
const InstrumentRecord* dev_find(std::uint16_t code);
/// Is this very code configured, not withdrawn, with all options of the mask?
bool dev_is_configured(std::uint16_t code, std::uint16_t option_mask);
/// Is one of the instrument's slots or accessories of this code, with all options of the mask?
bool dev_slot_is_configured(const InstrumentRecord& host, std::uint16_t code, std::uint16_t option_mask);
/// Where an alias is, generic instruments first; nothing if no device has it. A hit is marked as used.
std::optional<DevAddress> dev_by_alias(std::string_view alias);

/// The codes that may stand in for one that is not configured, in the order in which they are looked for.
std::span<const std::uint16_t> dev_substitutes(std::uint16_t code);
/// From now on dev_find(code) finds `substitute`. (0, 0) clears the table.
void dev_substitute(std::uint16_t code, std::uint16_t substitute);

/// Sets or clears flags of a code's row; code 0 stands for the whole list, slots included.
void dev_set_flags(std::uint16_t code, std::uint16_t flags);
void dev_clear_flags(std::uint16_t code, std::uint16_t flags);

/// Takes an instrument and all that is fitted to it out of use, for this run.
void dev_withdraw(std::uint16_t code);

/// The run requires the plug-ins and accessories of this code that have all options of the mask.
void dev_require_slots(std::uint16_t code, std::uint16_t slot_code, std::uint16_t option_mask);

// One plug-in or accessory of a model; slot number 0 stands for an accessory without a slot.
void dev_withdraw_slot(std::uint16_t code, std::uint16_t slot_code, std::uint16_t number);
/// Marks it as used. A run may only use what it required: 385 with the slot's number, 386 without.
[[nodiscard]] bool dev_use_slot(RunState& run, std::uint16_t code, std::uint16_t slot_code,
                                std::uint16_t number);
/// Codes and numbers of those that are not withdrawn.
std::vector<std::pair<std::uint16_t, std::uint16_t>> dev_slots(std::uint16_t code);

/// The lock on the instrument configuration between this program and the editor: the key "lock" of the section
/// "startup" of the startup configuration, with the words "RunTime", "Editor" and "None".
enum class DevLock { take, release, clear_own };
enum class DevLockResult { failed, done, nobody, editor, not_written };
/// take: message 2494 if anybody holds it. release: 2493 if this program does not. clear_own: nobody and editor say
/// who holds it, nothing is then written. not_written: after message 2242.
DevLockResult dev_lock(DevLock operation);

}  // namespace orvane
