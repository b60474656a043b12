// The SCPI multimeters: one body, and a row of facts for each model. Limits and ranges are those that the makers have
// published for the models.
//
//   34401        10V      0.01%                        DC volts
//   2000         1V       0.1%        1kH              AC volts
//   2001         0D       0.1U        1kH   6Z         AC level in dBm, the volts across 600 ohm
//   34420        100Z     0.01%                   4W   ohms, 4-wire
#pragma once

#include <span>

#include "config/startup_config.h"
#include "instruments/drivers/road.h"
#include "instruments/drivers/scpi_common.h"

namespace orvane {

enum class DmmFunction { none, dc_volts, ac_volts, dc_amps, ac_amps, ohms, ohms_4_wire, frequency, period };

struct DmmFunctionRow {
  DmmFunction function = DmmFunction::none;
  const char* node = nullptr;            // of the command tree
  std::span<const double> ranges;        // frequency and period have none
  double lowest = 0, highest = 0;        // values; the lowest is mirrored for DC
  double low_hertz = 0, high_hertz = 0;  // of AC
};

/// A filter of AC functions: its lowest frequency in hertz, ascending.
struct DmmBandwidth {
  bool by_function = false;  // the node stands below the function's
  std::span<const double> hertz;
};

struct DmmModel {
  std::uint16_t code = 0, statement = 0;
  const char *maker = nullptr, *model = nullptr;  // as "*IDN?" has them
  std::span<const DmmFunctionRow> functions;
  DmmBandwidth bandwidth = {};
  double slow_cycles = 10, fast_cycles = 1;  // power line cycles of DC functions; fast with MOD3 "F"
  bool configures_range = false;             // CONFigure takes the expected value; otherwise RANGe does
  bool names_elements = false;  // a reading bears more than its number until FORMat:ELEMents says otherwise
  int connection_volts = 0, connection_sense = 0, connection_amps = 0;
  ScpiPort port = {};
  std::int16_t StartupConfig::*clear_key = nullptr;  // device clear at reset
};

// The steps of the road for a model of this kind, see RoadModel.
[[nodiscard]] bool dmm_limits(RunState& run, const FscRecord& record, const Wanted& wanted,
                              const DmmModel& model);
[[nodiscard]] bool dmm_connections(RunState& run, const Wanted& wanted, const DmmModel& model);
[[nodiscard]] bool dmm_preset(const Device& device, const DmmModel& model);
/// The one message that sets the meter up.
std::string dmm_setup_message(const Wanted& wanted, const DmmModel& model);
[[nodiscard]] bool dmm_read(const Device& device, const Wanted& wanted, WaitWindow* wait, double& value);
Settle dmm_settle(const Wanted& wanted);

constexpr std::uint32_t dmm_timeout =
    15000;  // milliseconds: the slowest reading with its zero takes half of it

/// The port is up and its time-out is set.
inline bool dmm_ready(const Device& device, const DmmModel& model) {
  return scpi_prepare(device, model.port) && dev_timeout(device, dmm_timeout);
}

/// The driver of a model that stands in the program for ever.
template <const DmmModel& model>
DriverRow dmm_row() {
  static constexpr RoadModel road{
      .code = model.code,
      .timeout = dmm_timeout,
      .limits = [](RunState& run, const FscRecord& record,
                   const Wanted& wanted) { return dmm_limits(run, record, wanted, model); },
      .connections = [](RunState& run, const Wanted& wanted) { return dmm_connections(run, wanted, model); },
      .prepare = [](const Device& device) { return scpi_prepare(device, model.port); },
      .preset = [](const Device& device) { return dmm_preset(device, model); },
      .setup = [](const Device& device,
                  const Wanted& wanted) { return scpi_wrt(device, dmm_setup_message(wanted, model)); },
      .read = dmm_read,
      .settle = dmm_settle};
  return {.code = model.code,
          .statement = model.statement,
          .run = [](Statement& s) { return road_run(s, road); },
          .check = [](RunState& run, const FscRecord& record) { return road_check(run, record, road); },
          .identify =
              [](RunState& run, const DevAddress& address, DeviceIdentity& identity) {
                const Device device{run, address, model.code, BusCheck::none};
                return dmm_ready(device, model) && scpi_identify(device, model.maker, model.model, identity);
              },
          .leave =
              [](RunState& run, const DevAddress& address) {
                const Device device{run, address, model.code, BusCheck::none};
                return dmm_ready(device, model) && dmm_preset(device, model) && dev_local(device);
              },
          .reset =
              [](RunState& run, const DevAddress& address) {
                const Device device{run, address, model.code, BusCheck::none};
                return dmm_ready(device, model) && dmm_preset(device, model);
              },
          .serve =
              [](RunState& run, const DevAddress& address, std::uint8_t) {
                return scpi_serve({run, address, model.code, BusCheck::none});
              }};
}

// The models.
DriverRow k2000_row();
DriverRow k2001_row();
DriverRow k2002_row();
DriverRow hp34401a_row();
DriverRow hp34420a_row();

}  // namespace orvane
