// The rules over the whole bench: where each model may stand, and what its ports need.
#include <algorithm>
#include <iterator>
#include <set>

#include "instruments/bench_file.h"
#include "instruments/instrument_names.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::uint16_t pressure_port =
    18;  // the second calibrator's pass-through port takes pressure modules too

// How a model can be reached. Models that stand in no row have an IEEE-488 interface alone.
enum class Reach : std::uint8_t {
  both,               // IEEE-488, or serial but for the pressure calibrator's own port
  plain_serial,       // IEEE-488, or a port of the workstation
  pressure_module,    // pass-through port 18, or the pressure calibrator's port
  controller_module,  // the pressure calibrator's port
  serial_alone,
  slot_alone  // a plug-in without a place of its own
};
struct ReachRow {
  std::uint16_t first, last;
  Reach reach;
};
constexpr ReachRow reach_rows[] = {
    {5, 7, Reach::slot_alone},
    {11, 11, Reach::slot_alone},
    {24, 25, Reach::both},
    {34, 35, Reach::both},
    {38, 39, Reach::plain_serial},
    {41, 42, Reach::both},
    {43, 69, Reach::pressure_module},
    {77, 77, Reach::both},
    {87, 88, Reach::both},
    {89, 89, Reach::serial_alone},
    {90, 90, Reach::slot_alone},
    {91, 91, Reach::plain_serial},
    {93, 96, Reach::slot_alone},
    {109, 109, Reach::slot_alone},
    {111, 112, Reach::slot_alone},
    {113, 113, Reach::both},
    {114, 121, Reach::controller_module},
    {122, 122, Reach::both},
    {124, 126, Reach::controller_module},
    {129, 130, Reach::both},
    {159, 159, Reach::controller_module},
    {168, 168, Reach::controller_module},
    {176, 177, Reach::controller_module},
};

// The calibrators whose pass-through ports are 17 to 20, and port 21.
struct HostRow {
  std::uint16_t port, host;
  int missing;
};
constexpr HostRow host_rows[] = {
    {17, 24, 2937}, {18, 41, 2956}, {19, 42, 2957}, {20, 87, 2958}, {DevAddress::lemo_port, 113, 356}};

constexpr std::uint16_t generator_old = 3, generator_new = 23;

int misplaced(std::uint16_t code, const DevAddress& address) {
  const auto row = std::find_if(std::begin(reach_rows), std::end(reach_rows),
                                [&](const ReachRow& one) { return code >= one.first && code <= one.last; });
  const bool serial = address.interface == DeviceInterface::serial;
  if (row == std::end(reach_rows)) return serial ? 2934 : 0;
  const bool lemo = serial && address.port == DevAddress::lemo_port;
  switch (row->reach) {
    case Reach::both: return lemo ? 355 : 0;
    case Reach::plain_serial: return serial && address.port > DevAddress::last_plain_port ? 378 : 0;
    case Reach::pressure_module: return lemo || (serial && address.port == pressure_port) ? 0 : 2872;
    case Reach::controller_module: return lemo ? 0 : 348;
    case Reach::serial_alone:
      if (!serial) return 2968;
      return lemo ? 355 : 0;
    case Reach::slot_alone: break;
  }
  return 495;
}

class Checks {
 public:
  Checks(const DeviceList& list, const std::string& file, std::vector<BenchFault>& faults)
      : list_(list), file_(file), faults_(faults) {}

  void places() {
    for (const InstrumentRecord& row : list_.instruments) {
      if (const int number = misplaced(row.code, row.address); number != 0)
        faults_.push_back(
            {number, msg(number, file_, row.line, instrument_text(row.code), address_text(row.address))});
    }
  }

  void ports() {
    for (const HostRow& row : host_rows) {
      if (!in_use(row.port) || find(row.host) != nullptr) continue;
      faults_.push_back(
          {row.missing, msg(row.missing, file_, port_name(row.port), instrument_text(row.host))});
    }
    for (const InstrumentRecord& row : list_.instruments) {
      if (host_of(row) == row.code)
        faults_.push_back({3579, msg(3579, file_, instrument_text(row.code), port_name(row.address.port))});
    }
    chains();
  }

  void pairs() {
    if (find(generator_old) != nullptr && find(generator_new) != nullptr)
      faults_.push_back(
          {2936, msg(2936, file_, instrument_text(generator_old), instrument_text(generator_new))});
  }

 private:
  const InstrumentRecord* find(std::uint16_t code) const {
    for (const InstrumentRecord& row : list_.instruments) {
      if (row.code == code) return &row;
    }
    return nullptr;
  }
  static bool stands_on(const DevAddress& address, std::uint16_t port) {
    return address.interface == DeviceInterface::serial && address.port == port;
  }
  bool in_use(std::uint16_t port) const {
    return std::any_of(list_.instruments.begin(), list_.instruments.end(),
                       [&](const InstrumentRecord& row) { return stands_on(row.address, port); }) ||
           std::any_of(list_.generic.begin(), list_.generic.end(),
                       [&](const GenericInstrument& row) { return stands_on(row.address, port); });
  }
  // The calibrator on whose pass-through port a row stands, 0 if on none.
  static std::uint16_t host_of(const InstrumentRecord& row) {
    for (const HostRow& one : host_rows) {
      if (stands_on(row.address, one.port)) return one.host;
    }
    return 0;
  }
  // Hosts that stand on each other's ports: told once. A host on its own port has been told already.
  void chains() {
    for (const HostRow& start : host_rows) {
      std::set<std::uint16_t> visited;
      std::uint16_t code = start.host;
      for (const InstrumentRecord* row = find(code); row != nullptr; row = find(code)) {
        const std::uint16_t next = host_of(*row);
        if (next == 0 || next == code) break;
        if (!visited.insert(code).second)
          return faults_.push_back({2497, msg(2497, file_, instrument_text(code))});
        code = next;
      }
    }
  }

  const DeviceList& list_;
  const std::string& file_;
  std::vector<BenchFault>& faults_;
};

}  // namespace

void check_bench(const DeviceList& list, const std::string& file, std::vector<BenchFault>& faults) {
  Checks checks(list, file, faults);
  checks.places();
  checks.ports();
  checks.pairs();
}

}  // namespace orvane
