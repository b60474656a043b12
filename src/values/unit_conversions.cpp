// The conversions of values/units.h.
#include <cmath>

#include "values/units.h"

namespace orvane {
namespace {

constexpr double milliwatt = 0.001, microvolt = 1e-6;
constexpr double rms_to_p = 1.4142135623731, rms_to_p_p = 2.8284271247462;
constexpr double p_to_rms = 0.707106781186545, p_p_to_rms = 0.3535533905932725;
constexpr double degrees_per_radian = 57.29577951308232, radians_per_degree = 0.017453292519943295;
constexpr double kelvin_offset = 273.0;
constexpr double lowest_decade = -5000;  // below it a level is taken for 0 at once

struct FactorPair {
  double there;
  double back;
};
// Peak-to-peak to RMS, and back; by PeakToPeakPair.
constexpr FactorPair pp_pairs[] = {
    {0.2635, 3.79506641366224},
    {0.2866666666666671, 3.48837209302325},
    {0.2886750000000002, 3.46410323027626},
    {0.28867513418962576, 3.46410162},
    {0.21650635814221958, 4.618802},
    {0.44095, 2.26783081982084},
    {0.3535533905932725, 2.8284271247462},
    {0.5, 2.0},
};
// RMS to peak, and back; by PeakPair.
constexpr FactorPair peak_pairs[] = {
    {1.89753320683112, 0.527},
    {2.0, 0.5},
    {1.4142135623731, 0.707106781186545},
    {1.0, 1.0},
    {3.48837209302325, 0.2866666666666671},
    {1.73205161513813, 0.5773500000000004},
    {1.73205081, 0.5773502683792515},
    {2.309401, 0.43301271628443916},
    {1.13391540991042, 0.8819},
};

const FactorPair* pair_of_wave(int wave) {
  const auto row = [](PeakToPeakPair pair) { return &pp_pairs[static_cast<std::size_t>(pair)]; };
  switch (wave) {
    case 1: return row(PeakToPeakPair::r02635);
    case 2: return row(PeakToPeakPair::r02867);
    case 4:
    case 6: return row(PeakToPeakPair::r05);
    case 5: return row(PeakToPeakPair::r03536);
    case 7: return row(PeakToPeakPair::r04410);
    case 8: return row(PeakToPeakPair::r0288675135);
    default: return nullptr;
  }
}

struct PressureRow {
  UnitCode unit;
  double at_4c;
  double at_20c;
  double at_60f;
};
constexpr PressureRow pressure_rows[] = {
    {unit_code::pascal, 6894.757, 6894.757, 6894.757},
    {unit_code::bar, 0.06894757, 0.06894757, 0.06894757},
    {unit_code::psi, 1.0, 1.0, 1.0},
    {unit_code::gram_per_cm2, 70.30696, 70.30696, 70.30696},
    {unit_code::inch_mercury, 2.036021, 2.036021, 2.041772},
    {unit_code::meter_mercury, 0.051715095, 0.051715095, 0.051715095},
    {unit_code::inch_water, 27.6799, 27.72887, 27.707048},
    {unit_code::foot_water, 2.3066583, 2.3107391, 2.308966},
    {unit_code::meter_water, 0.7030696, 0.7043134, 0.7030696},
    {unit_code::cm_water, 0.7030696 * 100, 0.7043134 * 100, 0.7030696 * 100},
};

std::optional<double> factor_from_psi(UnitCode unit, ReferenceTemperature temperature) {
  constexpr double band = 0.001;
  const double f = temperature.fahrenheit ? temperature.value : c_to_f(temperature.value);
  const double c = temperature.fahrenheit ? f_to_c(temperature.value) : temperature.value;
  for (const PressureRow& row : pressure_rows) {
    if (row.unit != unit) continue;
    if (f > 60.0 - band && f < 60.0 + band) return row.at_60f;
    if (c > 20.0 - band && c < 20.0 + band) return row.at_20c;
    return row.at_4c;
  }
  return std::nullopt;
}

}  // namespace

double dbm_to_w(double dbm) { return milliwatt * std::pow(10.0, dbm / 10); }
double w_to_dbm(double w) { return 10 * std::log10(w / milliwatt); }
double dbm_to_v(double dbm, double z) {
  const double decades = dbm / 20;
  return decades < lowest_decade ? 0.0 : std::sqrt(milliwatt * z) * std::pow(10.0, decades);
}
double dbm_to_vp(double dbm, double z) { return dbm_to_v(dbm, z) * rms_to_p; }
double dbm_to_vpp(double dbm, double z) { return dbm_to_v(dbm, z) * rms_to_p_p; }
double v_to_dbm(double v, double z) { return 10 * std::log10(v * v / (milliwatt * z)); }
double vp_to_dbm(double vp, double z) { return v_to_dbm(p_to_rms * vp, z); }
double vpp_to_dbm(double vpp, double z) { return v_to_dbm(p_p_to_rms * vpp, z); }
double dbuv_to_v(double dbuv) {
  const double decades = dbuv / 20;
  return decades < lowest_decade ? 0.0 : microvolt * std::pow(10.0, decades);
}
double v_to_dbuv(double v) { return 20 * std::log10(v / microvolt); }
double dbuv_to_dbm(double dbuv, double z) {
  return dbuv / 20 < lowest_decade ? 0.0 : v_to_dbm(dbuv_to_v(dbuv), z);
}
double dbm_to_dbuv(double dbm, double z) { return v_to_dbuv(dbm_to_v(dbm, z)); }
double db_to_pct_w(double db) { return std::pow(10.0, db / 10 + 2); }
double db_to_pct_v(double db) { return std::pow(10.0, db / 20 + 2); }
double pct_to_db_w(double pct) { return (std::log10(pct) - 2) * 10; }
double pct_to_db_v(double pct) { return (std::log10(pct) - 2) * 20; }
double c_to_f(double celsius) { return 1.8 * celsius + 32; }
double f_to_c(double fahrenheit) { return (fahrenheit - 32) / 1.8; }
double c_to_k(double celsius) { return celsius + kelvin_offset; }
double k_to_c(double kelvin) { return kelvin - kelvin_offset; }
double deg_to_rad(double degrees) { return radians_per_degree * degrees; }
double rad_to_deg(double radians) { return degrees_per_radian * radians; }
double power_factor_angle(double power_factor, int sense) {
  const double angle = std::acos(power_factor) * degrees_per_radian;
  return sense == 2 ? -angle : angle;
}

double pp_to_rms(double pp, PeakToPeakPair pair) {
  return pp * pp_pairs[static_cast<std::size_t>(pair)].there;
}
double rms_to_pp(double rms, PeakToPeakPair pair) {
  return rms * pp_pairs[static_cast<std::size_t>(pair)].back;
}
double wave_to_rms(double pp, int wave) {
  const FactorPair* pair = pair_of_wave(wave);
  return pair != nullptr ? pp * pair->there : pp;
}
double wave_from_rms(double rms, int wave) {
  const FactorPair* pair = pair_of_wave(wave);
  return pair != nullptr ? rms * pair->back : rms;
}
double rms_to_peak(double rms, PeakPair pair) {
  return rms * peak_pairs[static_cast<std::size_t>(pair)].there;
}
double peak_to_rms(double peak, PeakPair pair) {
  return std::fabs(peak) * peak_pairs[static_cast<std::size_t>(pair)].back;
}
double peak_to_pp(double peak) { return std::fabs(peak) * 2; }
double pp_to_peak(double pp) { return pp * 0.5; }

double ire_to_pct(double ire) { return ire * 0.7142857142857143; }
double pct_to_ire(double pct) { return pct * 1.4; }
double fraction_to_pct(double fraction) { return fraction * 100.0; }
double pct_to_fraction(double pct) { return pct * 0.01; }

std::optional<double> psi_to_pressure(double psi, UnitCode unit, ReferenceTemperature temperature) {
  const std::optional<double> factor = factor_from_psi(unit, temperature);
  if (!factor) return std::nullopt;
  return psi * *factor;
}
std::optional<double> pressure_to_psi(double amount, UnitCode unit, ReferenceTemperature temperature) {
  const std::optional<double> factor = factor_from_psi(unit, temperature);
  if (!factor) return std::nullopt;
  return amount / *factor;
}

}  // namespace orvane
