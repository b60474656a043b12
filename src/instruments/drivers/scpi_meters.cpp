// The facts of each SCPI multimeter, from the makers' published ranges.
#include "instruments/drivers/scpi_dmm.h"

namespace orvane {
namespace {

using F = DmmFunction;

constexpr std::uint16_t carriage_return = 13, line_feed = 10;
constexpr const char *hp = "HEWLETT-PACKARD", *keithley = "KEITHLEY INSTRUMENTS INC.";

constexpr double volts_6[] = {0.1, 1, 10, 100, 1000}, ac_volts_6[] = {0.1, 1, 10, 100, 750};
constexpr double amps_6[] = {0.01, 0.1, 1, 3}, ac_amps_6[] = {1, 3};
constexpr double ohms_6[] = {100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
constexpr double volts_nano[] = {1e-3, 0.01, 0.1, 1, 10, 100};
constexpr double ohms_nano[] = {1, 10, 100, 1e3, 1e4, 1e5, 1e6};
constexpr double volts_wide[] = {0.2, 2, 20, 200, 1000}, ac_volts_wide[] = {0.2, 2, 20, 200, 750};
constexpr double amps_wide[] = {200e-6, 2e-3, 0.02, 0.2, 2};
constexpr double ohms_wide[] = {20, 200, 2e3, 2e4, 2e5, 2e6, 2e7, 2e8, 1e9};
constexpr double ohms_wide_4[] = {20, 200, 2e3, 2e4, 2e5};

constexpr double filters_34401[] = {3, 20, 200}, filters_2000[] = {3, 30, 300};

constexpr DmmFunctionRow functions_34401[] = {
    {F::dc_volts, "VOLT:DC", volts_6, 0, 1000}, {F::ac_volts, "VOLT:AC", ac_volts_6, 0, 750, 3, 3e5},
    {F::dc_amps, "CURR:DC", amps_6, 0, 3},      {F::ac_amps, "CURR:AC", ac_amps_6, 0, 3, 3, 5e3},
    {F::ohms, "RES", ohms_6, 0, 1.2e8},         {F::ohms_4_wire, "FRES", ohms_6, 0, 1.2e8},
    {F::frequency, "FREQ", {}, 3, 3e5},         {F::period, "PER", {}, 1 / 3e5, 1.0 / 3},
};
constexpr DmmFunctionRow functions_34420[] = {
    {F::dc_volts, "VOLT:DC", volts_nano, 0, 100},
    {F::ohms, "RES", ohms_nano, 0, 1.2e6},
    {F::ohms_4_wire, "FRES", ohms_nano, 0, 1.2e6},
};
constexpr DmmFunctionRow functions_2000[] = {
    {F::dc_volts, "VOLT:DC", volts_6, 0, 1000}, {F::ac_volts, "VOLT:AC", ac_volts_6, 0, 750, 3, 3e5},
    {F::dc_amps, "CURR:DC", amps_6, 0, 3},      {F::ac_amps, "CURR:AC", ac_amps_6, 0, 3, 3, 5e3},
    {F::ohms, "RES", ohms_6, 0, 1.2e8},         {F::ohms_4_wire, "FRES", ohms_6, 0, 1.2e8},
    {F::frequency, "FREQ", {}, 3, 5e5},         {F::period, "PER", {}, 2e-6, 1.0 / 3},
};
constexpr DmmFunctionRow functions_2001[] = {
    {F::dc_volts, "VOLT:DC", volts_wide, 0, 1000}, {F::ac_volts, "VOLT:AC", ac_volts_wide, 0, 750, 20, 2e6},
    {F::dc_amps, "CURR:DC", amps_wide, 0, 2.1},    {F::ac_amps, "CURR:AC", amps_wide, 0, 2.1, 20, 1e5},
    {F::ohms, "RES", ohms_wide, 0, 1.05e9},        {F::ohms_4_wire, "FRES", ohms_wide_4, 0, 2.1e5},
    {F::frequency, "FREQ", {}, 1, 1.5e7},
};
constexpr DmmFunctionRow functions_2002[] = {
    {F::dc_volts, "VOLT:DC", volts_wide, 0, 1000}, {F::ac_volts, "VOLT:AC", ac_volts_wide, 0, 750, 1, 2e6},
    {F::dc_amps, "CURR:DC", amps_wide, 0, 2.1},    {F::ac_amps, "CURR:AC", amps_wide, 0, 2.1, 1, 1e5},
    {F::ohms, "RES", ohms_wide, 0, 1.05e9},        {F::ohms_4_wire, "FRES", ohms_wide_4, 0, 2.1e5},
    {F::frequency, "FREQ", {}, 1, 1.5e7},
};

constexpr DmmModel hp34401a{.code = 38,
                            .statement = fsc::i34401,
                            .maker = hp,
                            .model = "34401A",
                            .functions = functions_34401,
                            .bandwidth = {false, filters_34401},
                            .slow_cycles = 100,
                            .fast_cycles = 10,
                            .configures_range = true,
                            .connection_volts = 192,
                            .connection_sense = 193,
                            .connection_amps = 194,
                            .port = {30000, line_feed, ":SYST:REM"},
                            .clear_key = &StartupConfig::HP34401_SDC};
constexpr DmmModel hp34420a{.code = 39,
                            .statement = fsc::i34420,
                            .maker = hp,
                            .model = "34420A",
                            .functions = functions_34420,
                            .slow_cycles = 100,
                            .fast_cycles = 10,
                            .configures_range = true,
                            .connection_volts = 1010,
                            .connection_sense = 1011,
                            .port = {30000, line_feed, ":SYST:REM"},
                            .clear_key = &StartupConfig::HP34420_SDC};
constexpr DmmModel k2000{.code = 35,
                         .statement = fsc::i2000,
                         .maker = keithley,
                         .model = "MODEL 2000",
                         .functions = functions_2000,
                         .bandwidth = {true, filters_2000},
                         .names_elements = true,
                         .connection_volts = 195,
                         .connection_sense = 196,
                         .connection_amps = 197,
                         .port = {5000, carriage_return, nullptr},
                         .clear_key = &StartupConfig::K2000_SDC};
constexpr DmmModel k2001{.code = 36,
                         .statement = fsc::i2001,
                         .maker = keithley,
                         .model = "MODEL 2001",
                         .functions = functions_2001,
                         .names_elements = true,
                         .connection_volts = 1012,
                         .connection_sense = 1013,
                         .connection_amps = 1014,
                         .port = {5000, carriage_return, nullptr},
                         .clear_key = &StartupConfig::K200x_SDC};
constexpr DmmModel k2002{.code = 37,
                         .statement = fsc::i2002,
                         .maker = keithley,
                         .model = "MODEL 2002",
                         .functions = functions_2002,
                         .names_elements = true,
                         .connection_volts = 1015,
                         .connection_sense = 1016,
                         .connection_amps = 1017,
                         .port = {5000, carriage_return, nullptr},
                         .clear_key = &StartupConfig::K200x_SDC};

}  // namespace

DriverRow hp34401a_row() { return dmm_row<hp34401a>(); }
DriverRow hp34420a_row() { return dmm_row<hp34420a>(); }
DriverRow k2000_row() { return dmm_row<k2000>(); }
DriverRow k2001_row() { return dmm_row<k2001>(); }
DriverRow k2002_row() { return dmm_row<k2002>(); }

}  // namespace orvane
