#include "settings/setting_table.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "config/setting_words.h"
#include "config/value_grammar.h"
#include "state/uncertainty_state.h"
#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

namespace w = setting_words;
using C = StartupConfig;
using S = Setting;
using T = Takes;

constexpr double never = not_configured;  // no key has this value

constexpr SettingRow number(S setting, std::string_view name, std::optional<double> fallback = {}) {
  return {.setting = setting, .name = name, .takes = T::number, .fallback = fallback};
}
constexpr SettingRow range(S setting, std::string_view name, T takes, double low, double high,
                           std::optional<double> fallback = {}) {
  return {.setting = setting, .name = name, .takes = takes, .low = low, .high = high, .fallback = fallback};
}
constexpr SettingRow keyed(SettingRow row, std::int16_t C::*key, double unset) {
  row.word_key = key;
  row.unset_key = unset;
  return row;
}
constexpr SettingRow keyed(SettingRow row, double C::*key) {
  row.real_key = key;
  row.unset_key = not_configured;
  return row;
}
constexpr SettingRow word(S setting, std::string_view name, std::string_view words,
                          std::optional<double> fallback = {}) {
  return {.setting = setting, .name = name, .takes = T::words, .words = words, .fallback = fallback};
}
constexpr SettingRow word(S setting, std::string_view name, std::string_view words, std::int16_t C::*key,
                          double unset, std::optional<double> fallback = {}) {
  return keyed(word(setting, name, words, fallback), key, unset);
}
constexpr SettingRow degrees(S setting, std::string_view name, std::optional<double> fallback = {}) {
  return {.setting = setting, .name = name, .takes = T::infinite, .fallback = fallback};
}
constexpr SettingRow switch_of(S setting, std::string_view name, std::int16_t C::*key) {
  return word(setting, name, w::key_switch, key, -1, 0);
}
constexpr SettingRow text(S setting, std::string_view name, std::string C::*key = nullptr) {
  return {.setting = setting, .name = name, .takes = T::text, .text_key = key};
}

// clang-format off
constexpr std::array rows = {
    SettingRow{.setting = S::ACCRED, .name = "ACCRED", .takes = T::words_or_integer, .words = w::yes_no, .low = 0, .high = 32767, .fallback = 0},
    SettingRow{.setting = S::ALL, .name = "ALL", .takes = T::nothing},
    number(S::C1, "C1", 1), number(S::C2, "C2"), number(S::C3, "C3", 1), number(S::C4, "C4", 1),
    number(S::C5, "C5", 1), number(S::C6, "C6", 1), number(S::C7, "C7", 1), number(S::C8, "C8", 1),
    number(S::C9, "C9", 1), number(S::C10, "C10", 1),
    number(S::CS1, "CS1", 1), number(S::CS2, "CS2", 1),
    keyed(range(S::CONF, "CONF", T::number, 0, 4), &C::CONF),
    word(S::CORREQ, "CORREQ", "EXACT:1, NO:2, YES:3", 2),
    keyed(number(S::COV_FAC, "COV_FAC"), &C::COV_FAC),
    SettingRow{.setting = S::CPT, .name = "CPT", .takes = T::quantity},
    degrees(S::DF, "DF"),
    degrees(S::DF1, "DF1", infinite_df), degrees(S::DF2, "DF2"), degrees(S::DF3, "DF3", infinite_df),
    degrees(S::DF4, "DF4", infinite_df), degrees(S::DF5, "DF5", infinite_df), degrees(S::DF6, "DF6", infinite_df),
    degrees(S::DF7, "DF7", infinite_df), degrees(S::DF8, "DF8", infinite_df), degrees(S::DF9, "DF9", infinite_df),
    degrees(S::DF10, "DF10", infinite_df), degrees(S::DFS1, "DFS1"), degrees(S::DFS2, "DFS2", infinite_df),
    number(S::EXP_UNC, "EXP_UNC"),
    keyed(number(S::F, "F"), &C::F),
    word(S::GB, "GB", w::gb, &C::GB, 0),
    keyed(range(S::GBF, "GBF", T::number, 0, 1000), &C::gbf),
    word(S::GB_MODE, "GB_MODE", w::gb_mode, &C::GB_MODE, 0),
    word(S::GB_OVERFLOW, "GB_OVERFLOW", w::gb_overflow, &C::GB_OVERFLOW, 0),
    word(S::GB_PTS, "GB_PTS", w::gb_pts, &C::GB_PTS, 0, 4),
    word(S::GB_RESULT, "GB_RESULT", w::gb_result, &C::GB_RESULT, 0, 4),
    range(S::IMPED, "IMPED", T::number, 0, 1e6),
    word(S::KCONF, "KCONF", w::confidence, &C::KCONF, 0, 4),
    word(S::LOGLIN, "LOGLIN", "Vrms:1, volts:1, V:1, watts:2, W:2"),
    range(S::MATH_EPSILON, "MATH_EPSILON", T::zero_or_number, 1e-15, 1e-5, 1e-13),
    word(S::MEAS, "MEAS", "UI:1, SA:2", 1),
    word(S::MEASURE_ONLY, "MEASURE_ONLY", w::yes_no, &C::MEASURE_ONLY, never),
    word(S::MEMC_IRPT, "MEMC_IRPT", w::yes_no, &C::MEMC_IRPT, never),
    text(S::MFILE, "MFILE", &C::mfile),
    word(S::MFILE_FORMAT, "MFILE_FORMAT", w::mfile_format, &C::mfile_format, 0, 1),
    text(S::N5532A_504, "N5532A-504", &C::N5532A_504), text(S::N5532A_518, "N5532A-518", &C::N5532A_518),
    text(S::N5532A_526, "N5532A-526", &C::N5532A_526), text(S::N5532A_550, "N5532A-550", &C::N5532A_550),
    keyed(range(S::NMEAS, "NMEAS", T::integer, 0, 1000, 0), &C::nmeas, -1),
    keyed(range(S::NSD, "NSD", T::integer, 2, 14, 6), &C::nsd, -1),
    keyed(range(S::NTHROW, "NTHROW", T::integer, -1, 100, 0), &C::nthrow, -2),
    switch_of(S::PTF_DMM4, "PTF_DMM4", &C::PTF_DMM4), switch_of(S::PTF_DMM5, "PTF_DMM5", &C::PTF_DMM5),
    switch_of(S::PTF_DMM6, "PTF_DMM6", &C::PTF_DMM6), switch_of(S::PTF_DMM7, "PTF_DMM7", &C::PTF_DMM7),
    switch_of(S::PTF_ACM1, "PTF_ACM1", &C::PTF_ACM1), switch_of(S::PTF_RMS1, "PTF_RMS1", &C::PTF_RMS1),
    switch_of(S::PTF_CTR1, "PTF_CTR1", &C::PTF_CTR1),
    switch_of(S::PTF_HP34401A, "PTF_HP34401A", &C::PTF_HP34401A),
    switch_of(S::PTF_HP34420A, "PTF_HP34420A", &C::PTF_HP34420A),
    switch_of(S::PTF_HP3458A, "PTF_HP3458A", &C::PTF_HP3458A),
    switch_of(S::PTF_K2000, "PTF_K2000", &C::PTF_K2000), switch_of(S::PTF_K2001, "PTF_K2001", &C::PTF_K2001),
    switch_of(S::PTF_K2002, "PTF_K2002", &C::PTF_K2002),
    word(S::REMCON, "REMCON", w::yes_no, &C::REMCON, never),
    word(S::ResetUUT, "ResetUUT", w::yes_no, 1),
    word(S::RSM, "RSM", w::rsm, &C::RSM, 0, 2),
    number(S::S1, "S1"), number(S::S2, "S2"),
    word(S::SENSORCHANGE, "SENSORCHANGE", w::yes_no, 0),
    range(S::SlewStart, "SlewStart", T::integer, -12, 12),
    keyed(range(S::SrqDelay, "SrqDelay", T::integer, 0, 1000, 0), &C::SrqDelay, -1),
    keyed(range(S::SrqHoldOff, "SrqHoldOff", T::integer, 0, 1000, 0), &C::SrqHoldOff, -1),
    keyed(range(S::SrqRetry, "SrqRetry", T::integer, 0, 100, 0), &C::SrqRetry, -1),
    number(S::STD_UNC, "STD_UNC"), number(S::SYS_ACC, "SYS_ACC"),
    text(S::TDESC, "TDESC"),
    word(S::TOL_REF, "TOL_REF", w::tol_ref, &C::TOL_REF, 0, 1),
    number(S::U1, "U1"), number(S::U2, "U2"), number(S::U3, "U3", 0), number(S::U4, "U4", 0),
    number(S::U5, "U5", 0), number(S::U6, "U6", 0), number(S::U7, "U7", 0), number(S::U8, "U8", 0),
    number(S::U9, "U9", 0), number(S::U10, "U10", 0),
    word(S::U2M, "U2M", w::u2m, &C::U2M, 0, 1),
    word(S::UCONF, "UCONF", w::confidence, &C::UCONF, 0),
    word(S::UFMT, "UFMT", w::ufmt, &C::UFMT, 0, 4),
    word(S::USE_ST, "USE_ST", w::key_switch, &C::USE_ST, -1, 0),
    word(S::UUP, "UUP", w::key_switch, &C::UUP, never),
    number(S::UUT_RES, "UUT_RES"),
    word(S::WS, "WS", w::key_switch, &C::WS, never),
};
// clang-format on

constexpr bool rows_are_in_order() {
  if (rows.size() != static_cast<std::size_t>(S::count)) return false;
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (rows[i].setting != static_cast<S>(i)) return false;
  }
  return true;
}
static_assert(rows_are_in_order(), "a setting is the index of its row");

// Words of settings count in their exact case, unlike those of keys.
std::optional<double> exact_word(std::string_view words, std::string_view text) {
  while (!words.empty()) {
    const std::size_t comma = std::min(words.find(','), words.size());
    const std::string_view one = trim(words.substr(0, comma));
    words.remove_prefix(std::min(comma + 1, words.size()));
    const std::size_t colon = one.rfind(':');
    if (one.substr(0, colon) == text) return real_number(one.substr(colon + 1));
  }
  return std::nullopt;
}

std::optional<double> in_range(const SettingRow& row, std::optional<double> value, SettingCheck check) {
  if (!value || !std::isfinite(*value)) return std::nullopt;
  const bool any = row.low == row.high || check == SettingCheck::without_range;
  return any || num_in(*value, row.low, row.high) ? value : std::nullopt;
}

std::optional<double> integer(const SettingRow& row, std::string_view text, SettingCheck check) {
  const std::optional<int> value = short_number(text);
  return value ? in_range(row, *value, check) : std::nullopt;
}

bool is_quantity(std::string_view text) {
  DimValue value;
  const auto has_both = [&] {
    return (value.flags & DimValue::number) != 0 && value.unit != unit_code::none;
  };
  return (dim_parse_exact(text, value) && has_both()) || (dim_parse_listing(text, value) && has_both());
}

}  // namespace

const SettingRow& setting_row(Setting setting) { return rows[static_cast<std::size_t>(setting)]; }

const SettingRow* find_setting(std::string_view name) {
  const auto row = std::find_if(rows.begin(), rows.end(),
                                [&](const SettingRow& one) { return same_word(one.name, name); });
  return row != rows.end() ? &*row : nullptr;
}

std::optional<double> setting_parse(const SettingRow& row, std::string_view text, SettingCheck check) {
  switch (row.takes) {
    case T::nothing: return std::nullopt;
    case T::words: return exact_word(row.words, text);
    case T::words_or_integer: {
      const std::optional<double> value = exact_word(row.words, text);
      return value ? value : integer(row, text, check);
    }
    case T::zero_or_number:
      if (whole_number(text) == 0.0) return 0.0;
      [[fallthrough]];
    case T::number: return in_range(row, whole_number(text), check);
    case T::infinite:
      return text == "INF" ? std::optional(infinite_df) : in_range(row, whole_number(text), check);
    case T::integer: return integer(row, text, check);
    case T::quantity: return is_quantity(text) ? std::optional(0.0) : std::nullopt;
    case T::text: return 0.0;
  }
  return std::nullopt;
}

}  // namespace orvane
