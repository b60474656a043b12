#include "console/bench_report.h"

#include <algorithm>

#include "config/startup_config.h"
#include "console/columns.h"
#include "instruments/bench_load.h"
#include "instruments/device_list.h"
#include "instruments/driver_table.h"
#include "instruments/ieee488.h"
#include "instruments/instrument_names.h"
#include "instruments/serial.h"
#include "messages/encoding.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view blank = "-";  // an empty column

std::string joined(const std::vector<std::string>& texts, std::string_view between) {
  std::string out;
  for (const std::string& text : texts) {
    if (!text.empty()) out += (out.empty() ? "" : std::string(between)) + text;
  }
  return out;
}

std::string options_of(std::uint16_t mask) {
  std::string text;
  for (int bit = 0; bit < 16; ++bit) {
    if ((mask >> bit & 1) != 0) text += "/" + std::to_string(bit + 1);
  }
  return text;
}

std::string row_of(const std::vector<std::string>& columns) {
  std::string row;
  for (const std::string& text : columns)
    row += (row.empty() ? "" : "\t") + (text.empty() ? std::string(blank) : text);
  return row;
}

class BenchReport {
 public:
  BenchReport(RunState& run, const std::function<void(const std::string&)>& line) : run_(run), line_(line) {}

  bool work() {
    const bool live = !run_.demo_mode;
    if (live && !ib_init(run_)) return false;
    rows_.push_back(msg(30982));
    for (const InstrumentRecord& row : device_list().instruments) instrument(row, live);
    for (const GenericInstrument& row : device_list().generic) generic(row, live);
    for (const ManualInstrument& row : device_list().manual)
      rows_.push_back(row_of({"", row.name, "", "", row.asset, ""}));
    const std::vector<std::size_t> widths = column_widths(rows_);
    for (const std::string& row : rows_) say(in_columns(row, widths));
    substitutes();
    if (live) strangers();
    ib_end_of_run(run_);
    return all_answer_;
  }

 private:
  void say(const std::string& text) { line_(utf8_from_cp1252(text)); }

  void instrument(const InstrumentRecord& row, bool live) {
    rows_.push_back(row_of({address_text(row.address), instrument_text(row.code), options_of(row.options),
                            joined({row.aliases[0], row.aliases[1]}, ", "), row.asset,
                            live ? answer_of(row) : std::string()}));
    for (const InstrumentSlot& slot : row.slots) {
      const std::string place = slot.number != 0 ? msg(30983, slot.number) : msg(30984);
      rows_.push_back(
          row_of({"  " + place, instrument_text(slot.code), options_of(slot.options), "", slot.asset, ""}));
    }
  }

  void generic(const GenericInstrument& row, bool live) {
    std::string state;
    if (live && row.address.interface == DeviceInterface::ieee488) state = listener_text(row.address.bus);
    rows_.push_back(row_of({address_text(row.address), "\"" + row.name + "\"", "",
                            joined({row.aliases[0], row.aliases[1]}, ", "), row.asset, state}));
  }

  // "listens", or that nobody does.
  std::string listener_text(const BusAddress& address) {
    switch (ib_find(run_, address)) {
      case FoundDevice::found: return msg(30985);
      case FoundDevice::nobody: break;
      default: run_.clear(run_flag::stop_test); break;
    }
    all_answer_ = false;
    return msg(30986);
  }

  std::string answer_of(const InstrumentRecord& row) {
    if (row.address.interface == DeviceInterface::ieee488) {
      const std::string state = listener_text(row.address.bus);
      if (state != msg(30985) || driver_of(row.code) == nullptr) return state;
    } else if (!serial_is_open(run_, row.address.port) && !serial_on(run_, row.address.port)) {
      return silent();
    }
    if (driver_of(row.code) == nullptr) return {};
    DeviceIdentity identity;
    if (!dev_identify(run_, row.code, row.address, identity)) return silent();
    return joined({identity.maker, identity.model, identity.serial, identity.firmware}, ", ");
  }

  // Why has been reported.
  std::string silent() {
    run_.clear(run_flag::stop_test);
    all_answer_ = false;
    return msg(30987);
  }

  void substitutes() {
    for (std::uint16_t code = 1; code <= highest_instrument_code; ++code) {
      if (dev_is_configured(code, 0)) continue;
      for (const std::uint16_t other : dev_substitutes(code)) {
        if (!dev_is_configured(other, 0)) continue;
        say(msg(30988, instrument_text(other), instrument_text(code)));
        break;
      }
    }
  }

  // Listeners on the boards that the configuration does not name.
  void strangers() {
    for (int board = 0; board < std::min<int>(startup_config().ib_nport, 2); ++board) {
      for (std::uint8_t primary = 1; primary <= BusAddress::highest_primary; ++primary) {
        const BusAddress address{BusAddress::board_valid | BusAddress::primary_valid,
                                 static_cast<std::uint8_t>(board), primary, 0};
        if (is_named(address)) continue;
        const FoundDevice found = ib_find(run_, address);
        if (found == FoundDevice::found)
          say(msg(30989, address_text({DeviceInterface::ieee488, address, 0})));
        if (found == FoundDevice::stop_scan || found == FoundDevice::failed) {
          run_.clear(run_flag::stop_test);
          break;
        }
      }
    }
  }

  static bool is_named(const BusAddress& address) {
    const auto here = [&](const auto& row) {
      return row.address.interface == DeviceInterface::ieee488 && row.address.bus.board == address.board &&
             row.address.bus.primary == address.primary;
    };
    const DeviceList& list = device_list();
    return std::any_of(list.instruments.begin(), list.instruments.end(), here) ||
           std::any_of(list.generic.begin(), list.generic.end(), here);
  }

  RunState& run_;
  const std::function<void(const std::string&)>& line_;
  std::vector<std::string> rows_;
  bool all_answer_ = true;
};

}  // namespace

bool report_bench(RunState& run, const std::function<void(const std::string&)>& line) {
  if (startup_config().config.empty()) return errp(30990);
  if (!dev_reload_if_changed()) return false;
  return BenchReport(run, line).work();
}

}  // namespace orvane
