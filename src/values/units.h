// Units and prefixes: the two code spaces of statements, accuracy files and results, their texts in every
// form in which they appear, the two parsers that recognise a value with a unit, and the conversions between
// units.
//
// A quantity is kept as typed: 10 mV is value 10, prefix milli, unit volt. It is scaled where it is used:
//   value * prefix_multiplier(prefix)
// A look-up gives nothing for a code that has no text in that form. Texts are Windows-1252; the forms with
// the bytes B0, B2 and B5 (degree, square, micro) are chosen by the key "ExtendedUnits".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

using UnitCode = std::uint8_t;    // 0: none, or unknown
using PrefixCode = std::uint8_t;  // 0: none was given

namespace unit_code {
// clang-format off
constexpr UnitCode none = 0, amp = 1, dbm = 2, hertz = 3, ohm = 4, siemens = 5, volt = 6, volt_pp = 7, celsius = 8,
                   fahrenheit = 9, second = 10, watt = 11, degree = 12, farad = 13, volt_p = 14, amp_p = 15,
                   amp_pp = 16, percent = 17, volt_offset = 18, hertz_ratio = 19, duty_factor = 20, volt_ratio = 21,
                   ire = 22, line_marker = 23, pascal = 24, bar = 25, psi = 26, gram_per_cm2 = 27, inch_mercury = 28,
                   meter_mercury = 29, inch_water = 30, foot_water = 31, meter_water = 32, radian = 33, joule = 34,
                   volt_per_amp = 35, volt_amp = 36, var = 37, kelvin = 38, cm_water = 39, decibel = 40,
                   amp_ratio = 41, ohm_ratio = 42, ppm = 43, ppb = 44, henry = 45, quality_factor = 46, cycle = 47,
                   steps_per_decade = 48, steps_per_sweep = 49, becquerel = 50, candela = 51, coulomb = 52,
                   dbmv = 53, dbmw = 54, gram = 55, gray = 56, katal = 57, liter = 58, lumen = 59, lux = 60,
                   meter = 61, mole = 62, newton = 63, sievert = 64, steradian = 65, tesla = 66,
                   hertz_per_volt = 67, percent_per_volt = 68, radian_per_volt = 69, dbc_per_hertz = 70, dbuv = 71,
                   weber = 255;
// clang-format on
}  // namespace unit_code

namespace prefix_code {
// 12 is free. c, d and h can be printed but not entered, and multiply by 0.
constexpr PrefixCode absent = 0, none = 1, pico = 2, nano = 3, micro = 4, milli = 5, kilo = 6, mega = 7,
                     giga = 8, atto = 9, centi = 10, deci = 11, exa = 13, femto = 14, hecto = 15, peta = 16,
                     tera = 17, yocto = 18, yotta = 19, zepto = 20, zetta = 21;
}  // namespace prefix_code

/// A text of a code, or nothing. The texts live for ever.
using CodeText = std::optional<std::string_view>;

// ---- Texts of units ----

/// The token of the procedure listing, a vocabulary of its own: "D" dBm, "H" hertz, "Z" ohm, "Y" siemens, "T"
/// seconds.
CodeText unit_listing_token(UnitCode unit);
/// The text for drivers and messages ("Ohms").
CodeText unit_symbol(UnitCode unit);
std::string_view unit_symbol_or_empty(UnitCode unit);
/// As unit_symbol_or_empty, but "Ohm" for a value of exactly 1 ohm.
std::string_view unit_symbol_valued(UnitCode unit, double value);
/// The text shown to the operator ("Ohm"); with the key "ExtendedUnits" in its extended form.
CodeText unit_display(UnitCode unit);
/// The words of prompts ("volts peak-to-peak").
CodeText unit_long_name(UnitCode unit);

// ---- Prefixes ----

/// 1.0 for prefix_code::none; 0.0 for c, d, h and every code outside the table, 0 included.
double prefix_multiplier(PrefixCode prefix);
/// The power of ten of the eight classic prefixes (p n u m k M G T); 0 for all others.
int prefix_exponent(PrefixCode prefix);
/// The classic prefixes only.
CodeText prefix_symbol(PrefixCode prefix);
std::string_view prefix_symbol_or_empty(PrefixCode prefix);
/// All prefixes of the table; micro is the byte B5 with the key "ExtendedUnits".
CodeText prefix_display(PrefixCode prefix);
CodeText prefix_long_name(PrefixCode prefix);
/// As prefix_long_name, but before "ohms" the words "kil", "meg", "gig", which join to kilohms, megohms,
/// gigohms.
CodeText prefix_long_name_for(PrefixCode prefix, std::string_view unit_long_name);

// ---- Codes from letters and texts ----

/// The code whose text in the exact (SI) spelling is this whole text; 0 if there is none.
UnitCode unit_from_exact_text(std::string_view text);
/// The one-letter form of a compiled text field, in any case (A D F H J T V W Y Z); 0 if there is none.
UnitCode unit_from_letter(char letter);
/// A prefix letter as typed (p N n U u B5 m K k M G g a E f P T y Y z Z); 0 if it is none.
PrefixCode prefix_from_letter(char letter);
/// A prefix letter of a compiled text field: in any case but for M, which means mega with hertz, ohms, watts,
/// pascals, VA and VAR and milli with every other unit. 0 if it is none.
PrefixCode prefix_from_listing_letter(char letter, UnitCode unit);
/// Codes 24 to 32, and 39.
bool unit_is_pressure(UnitCode unit);

// ---- Values with a unit, from text ----

struct DimValue {
  static constexpr std::uint16_t number = 0x01;       // a number was present
  static constexpr std::uint16_t exponent = 0x02;     // it was written with an exponent
  static constexpr std::size_t unit_text_limit = 32;  // unit_text is shorter than this

  std::uint16_t flags = 0;
  double value = 0;         // as written, without the prefix
  std::uint8_t digits = 0;  // digits byte, see number_digits()
  PrefixCode prefix = prefix_code::absent;
  UnitCode unit = unit_code::none;
  std::string unit_text;
  std::uint16_t unit_offset = 0;  // where in the source text the prefix or the unit begins
};

/// The spelling of the procedure listing, in any case: "10mV", "3 kHz", "10pA" (picoamps; "10pa" is pascals).
/// A text without a known unit succeeds as free text with unit 0. A text without a number succeeds with the
/// flag clear. Fails for an empty text and for a unit text of unit_text_limit characters or more; `out` is
/// then of no use.
[[nodiscard]] bool dim_parse_listing(std::string_view text, DimValue& out);

/// The SI spelling, with case: "10 mV", "1Ohm". Fails besides when the text does not end in a known unit or
/// when more than one prefix letter stands before it. unit_text is the unit without the prefix.
[[nodiscard]] bool dim_parse_exact(std::string_view text, DimValue& out);

/// Checks an operand of a command statement: "mem1", "mem2", "mem", "m12", "s3" or a number, behind it a unit
/// with at most one prefix letter, in any case. True if the whole text is that; an empty text is.
bool operand_parse(std::string_view text);

// ---- Conversions ----
// Pure functions; z is an impedance in ohms, logarithms are to base 10. No range check: a result may be
// infinite or not a number, which the caller tests.

double dbm_to_w(double dbm);
double w_to_dbm(double w);
/// 0 below a level of -100000 dBm.
double dbm_to_v(double dbm, double z);
double dbm_to_vp(double dbm, double z);
double dbm_to_vpp(double dbm, double z);
double v_to_dbm(double v, double z);
double vp_to_dbm(double vp, double z);
double vpp_to_dbm(double vpp, double z);
double dbuv_to_v(double dbuv);
double v_to_dbuv(double v);
double dbuv_to_dbm(double dbuv, double z);
double dbm_to_dbuv(double dbm, double z);
double db_to_pct_w(double db);
double db_to_pct_v(double db);
double pct_to_db_w(double pct);
double pct_to_db_v(double pct);
double c_to_f(double celsius);
double f_to_c(double fahrenheit);
/// Celsius and kelvin differ by 273.0 here, not by 273.15.
double c_to_k(double celsius);
double k_to_c(double kelvin);
double deg_to_rad(double degrees);
double rad_to_deg(double radians);
/// The angle of a power factor in degrees; negative when sense is 2.
double power_factor_angle(double power_factor, int sense);

/// Fixed pairs between peak-to-peak and RMS; the constants are those in force and not to be derived anew.
enum class PeakToPeakPair : std::uint8_t {
  r02635,
  r02867,
  r0288675,
  r0288675135,
  r02165,
  r04410,
  r03536,
  r05
};
double pp_to_rms(double pp, PeakToPeakPair pair);
double rms_to_pp(double rms, PeakToPeakPair pair);
/// The pair of a waveform code (1, 2, 4, 5, 6, 7, 8); any other code gives x unchanged.
double wave_to_rms(double pp, int wave);
double wave_from_rms(double rms, int wave);

/// Fixed pairs between RMS and peak, by the first digits of the RMS-to-peak factor. Peak to RMS takes the
/// amount without its sign.
enum class PeakPair : std::uint8_t { r18975, r2, r14142, r1, r34884, r1732052, r17320508, r23094, r11339 };
double rms_to_peak(double rms, PeakPair pair);
double peak_to_rms(double peak, PeakPair pair);
/// |x| * 2, and x * 0.5.
double peak_to_pp(double peak);
double pp_to_peak(double pp);

/// Percent of IRE units, and fractions.
double ire_to_pct(double ire);
double pct_to_ire(double pct);
double fraction_to_pct(double fraction);
double pct_to_fraction(double pct);

/// The reference temperature of a pressure unit: it chooses the factor of water and mercury columns.
struct ReferenceTemperature {
  double value = 4.0;
  bool fahrenheit = false;
};
/// psi into a pressure unit and back; nothing for a unit that is no pressure.
std::optional<double> psi_to_pressure(double psi, UnitCode unit, ReferenceTemperature temperature = {});
std::optional<double> pressure_to_psi(double amount, UnitCode unit, ReferenceTemperature temperature = {});

/// Further pressure scales, as factors from psi.
namespace pressure_factor {
constexpr double atmosphere = 0.06804596;
constexpr double dyne_per_cm2 = 68947.57;
constexpr double foot_seawater = 2.243611;
constexpr double inch_seawater = 26.92334;
constexpr double meter_seawater = 0.6838528;
constexpr double ounce_per_inch2 = 16.0;
constexpr double pound_per_foot2 = 144.0;
constexpr double ton_per_inch2 = 0.0005;
constexpr double ton_per_foot2 = 0.072;
constexpr double torr = 51.71508;
}  // namespace pressure_factor

}  // namespace orvane
