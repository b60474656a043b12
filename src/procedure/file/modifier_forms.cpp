#include "procedure/file/modifier_forms.h"

#include <cmath>

#include "procedure/file/ascii.h"
#include "procedure/file/field_codes.h"
#include "values/numbers.h"

namespace orvane {
namespace {

using Kind = ModifierKind;
using Words = const std::string_view[];

constexpr std::uint8_t star = 0x01,
                       is_percent = 0x02;  // of the flags at offset 12 of the calibrators' modifiers
constexpr std::uint8_t flags_offset = 12;
constexpr int impedances[] = {50, 75, 300, 600};

// ---- Words ----

constexpr Words form_words = {"LEAD", "RNGLK", "TCREF", "HX#", "LIMIT", "EVEN", "PULSE", "IMPED", "SKEW"};
constexpr Words range_lock = {"RNGLK"};
constexpr Words sources = {"INT", "EXT"};
constexpr Words generator_sources = {"INT", "EXT", "PER", "PULSE"};
constexpr Words flag_f = {"F"}, flag_x = {"X"}, flag_g = {"G"}, flag_s = {"S"}, flag_dc = {"DC"},
                flag_hi = {"HI"}, flag_not = {"NOT"};
constexpr Words high_pass = {"H0", "H1", "H2"};
constexpr Words low_pass = {"L0", "L1", "L2", "L3"};
constexpr Words detectors = {"D5", "D6", "AVG", "HLD", "P-", "P+", "P+-", "RMS"};
constexpr Words power_ranges = {"LOW", "MID", "HIGH"};
constexpr Words factor = {"F#"}, table_words = {"T", "T#"};
constexpr Words channels = {"ChA", "ChB", "COM"};
constexpr Words couplings = {"AC", "DC"};
constexpr Words filtered_couplings = {"AL", "AC", "AH", "DL", "DC", "DH"};
constexpr Words slopes = {"+", "-", "++", "+-", "-+", "--"};
constexpr Words attenuators = {"X1", "X10"};
constexpr Words analyser_words = {"RESBW", "SPAN", "VIDBW", "ATTEN", "START"};
constexpr Words meter_words = {"DBREF", "IMPED", "RNGLK"};
constexpr Words cycles = {"NPLC"}, averages = {"uavg"}, blocks = {"ublk"};
constexpr Words filters = {"PRT", "FL", "FS"};
constexpr Words guards = {"G", "LOI"};
constexpr Words trackings = {"LOW", "MAN", "TRK"};
constexpr Words bridge_words = {"MAX", "TEST"};
constexpr Words capacities = {"C1", "C2", "C3"}, times = {"T1", "T2", "T3"}, signs = {"+", "-"},
                switches = {"OFF", "ON"};
constexpr Words guard_modes = {"F", "M", "C"};

// ---- Columns of the models ----

constexpr ModifierColumn calibrator[] = {{Kind::word8, 12, 16, form_words},
                                         {Kind::nominal, 14, 22},
                                         {Kind::tagged, 26, 37},
                                         {Kind::modifier, 40, 51},
                                         {Kind::mod2, 52, 66},
                                         {Kind::mod3, 56, 69},
                                         {Kind::mod4, 58, 72},
                                         {Kind::con, 60, 75}};
constexpr ModifierColumn meter_3458[] = {{Kind::word16, 12, 16, range_lock}, {Kind::nominal, 14, 22}};
constexpr ModifierColumn generator_33120[] = {
    {Kind::word16, 12, 16, sources}, {Kind::nominal, 14, 22}, {Kind::modifier, 26, 51}};
constexpr ModifierColumn generator_33220[] = {{Kind::word16, 60, 16, generator_sources},
                                              {Kind::nominal, 12, 22},
                                              {Kind::modifier, 24, 37},
                                              {Kind::modifier, 36, 51},
                                              {Kind::impedance, 52, 66},
                                              {Kind::word8, 48, 69, flag_f},
                                              {Kind::word8, 49, 72, flag_x}};
constexpr ModifierColumn analyser_8901[] = {{Kind::nominal, 12, 22},         {Kind::special, 36, 37},
                                            {Kind::modifier, 24, 51},        {Kind::word8, 38, 66, high_pass},
                                            {Kind::word8, 39, 69, low_pass}, {Kind::word8, 40, 72, flag_x},
                                            {Kind::word8, 41, 75, detectors}};
constexpr ModifierColumn power_437[] = {{Kind::word16, 14, 16, power_ranges},
                                        {Kind::nominal, 22, 22},
                                        {Kind::count16, 16, 37, factor},
                                        {Kind::text, 36, 51, {}, 16},
                                        {Kind::word8, 18, 66, table_words}};
constexpr ModifierColumn counter_5335[] = {{Kind::word16, 12, 16, channels},  {Kind::nominal, 16, 22},
                                           {Kind::modifier, 28, 37},          {Kind::modifier, 40, 51},
                                           {Kind::word8, 52, 66, couplings},  {Kind::word8, 53, 69, slopes},
                                           {Kind::word8, 54, 72, attenuators}};
constexpr ModifierColumn counter_53131[] = {{Kind::word16, 12, 16, channels},
                                            {Kind::nominal, 16, 22},
                                            {Kind::modifier, 28, 37},
                                            {Kind::modifier, 40, 51},
                                            {Kind::word8, 52, 66, filtered_couplings},
                                            {Kind::word8, 53, 69, slopes},
                                            {Kind::word8, 54, 72, flag_x}};
constexpr ModifierColumn counter_53132[] = {{Kind::word16, 12, 16, channels}, {Kind::nominal, 16, 22},
                                            {Kind::modifier, 28, 37},         {Kind::modifier, 40, 51},
                                            {Kind::word8, 52, 66, couplings}, {Kind::word8, 53, 69, slopes},
                                            {Kind::word8, 54, 72, flag_x}};
constexpr ModifierColumn analyser_8560[] = {
    {Kind::word16, 12, 16, analyser_words}, {Kind::nominal, 14, 22}, {Kind::modifier, 26, 51}};
constexpr ModifierColumn multimeter[] = {
    {Kind::word16, 12, 16, meter_words}, {Kind::nominal, 14, 22},         {Kind::real, 26, 37, cycles},
    {Kind::count16, 34, 51, averages},   {Kind::count16, 36, 59, blocks}, {Kind::word8, 38, 67, filters},
    {Kind::word8, 39, 70, flag_dc},      {Kind::word8, 40, 72, guards},   {Kind::word8, 41, 75, flag_not}};
constexpr ModifierColumn power_4418[] = {{Kind::count16, 12, 16, factor},
                                         {Kind::text, 14, 22, {}, 16},
                                         {Kind::quoted, 30, 37, {}, 20},
                                         {Kind::quoted, 58, 58, {}, 20}};
constexpr ModifierColumn counter_5350[] = {{Kind::word8, 12, 16, flag_hi},
                                           {Kind::nominal, 14, 22},
                                           {Kind::word8, 13, 37, flag_s},
                                           {Kind::word8, 26, 51, trackings}};
constexpr ModifierColumn bridge_6520[] = {{Kind::word16, 12, 16, bridge_words},
                                          {Kind::nominal, 18, 22},
                                          {Kind::modifier, 30, 37},
                                          {Kind::modifier, 42, 51},
                                          {Kind::word8, 54, 66, capacities},
                                          {Kind::word8, 55, 69, times},
                                          {Kind::word8, 56, 72, signs},
                                          {Kind::word8, 57, 75, switches}};
constexpr ModifierColumn measurement_standard[] = {{Kind::plain, 16, 22},
                                                   {Kind::plain, 26, 37},
                                                   {Kind::word8, 13, 66, flag_g},
                                                   {Kind::word8, 14, 69, guard_modes}};
constexpr ModifierColumn calibrator_mfc[] = {{Kind::plain_or_star, 12, 22}, {Kind::percent, 24, 37}};

struct Model {
  std::uint16_t code;
  std::span<const ModifierColumn> columns;
};
constexpr Model models[] = {
    {fsc::mmfc1, calibrator},
    {fsc::mmfc2, calibrator},
    {fsc::mmfc4, calibrator},
    {fsc::mosc1, calibrator},
    {fsc::mosc2, calibrator},
    {fsc::mosc3, calibrator},
    {fsc::mmsc1, calibrator},
    {fsc::m3458, meter_3458},
    {fsc::m3325, generator_33120},
    {fsc::m33120, generator_33120},
    {fsc::m33220, generator_33220},
    {fsc::m33250, generator_33220},
    {fsc::m8648, generator_33120},
    {fsc::m2024, generator_33120},
    {fsc::msmy02, generator_33120},
    {fsc::m8901, analyser_8901},
    {fsc::m8902, analyser_8901},
    {fsc::m8903, analyser_8901},
    {fsc::m437, power_437},
    {fsc::m5335, counter_5335},
    {fsc::m53131, counter_53131},
    {fsc::m53132, counter_53132},
    {fsc::m53181, counter_53132},
    {fsc::m8560, analyser_8560},
    {fsc::m8566, analyser_8560},
    {fsc::m8568, analyser_8560},
    {fsc::m8590, analyser_8560},
    {fsc::mdmm1, multimeter},
    {fsc::mdmm2, multimeter},
    {fsc::mdmm3, multimeter},
    {fsc::m4418, power_4418},
    {fsc::m4419, power_4418},
    {fsc::m5350, counter_5350},
    {fsc::m5351, counter_5350},
    {fsc::m5352, counter_5350},
    {fsc::m6520, bridge_6520},
    {fsc::acms, measurement_standard},
    {fsc::mcal, measurement_standard},
    {fsc::mmfc, calibrator_mfc},
};

// ---- Fields ----

Field<std::uint8_t> byte_at(int offset) { return {static_cast<std::uint16_t>(offset)}; }
Field<std::uint16_t> word_at(int offset) { return {static_cast<std::uint16_t>(offset)}; }
Field<double> real_at(int offset) { return {static_cast<std::uint16_t>(offset)}; }
constexpr int plain_value = 2, tag_size = 2, star_size = 2;

std::string word_text(const FscRecord& record, const ModifierColumn& column, unsigned value) {
  if (value == 0 || value > column.words.size()) return {};
  std::string text(column.words[value - 1]);
  if (text.back() == '#') {
    text.pop_back();
    text += std::to_string(record.get(byte_at(column.offset + 1)));
  }
  return text;
}

std::string plain_text(const FscRecord& record, int offset) {
  const std::uint8_t unit = record.get(byte_at(offset));
  if (unit == 0) return {};
  return free_number_text(record.get(real_at(offset + plain_value))) +
         unit_text(record.get(byte_at(offset + 1)), unit);
}

std::string count_text(const ModifierColumn& column, unsigned count) {
  if (count == 0) return {};
  std::string text(column.words.front());
  if (text.back() != '#') return std::to_string(count) + text;
  text.pop_back();
  return text + std::to_string(count);
}

std::string special_text(const FscRecord& record, int offset) {
  const int major = record.get(byte_at(offset)), minor = record.get(byte_at(offset + 1));
  return major == 0 ? std::string() : std::to_string(major) + "." + std::to_string(minor) + "SP";
}

std::string percent_text(const FscRecord& record, int offset) {
  if ((record.get(byte_at(flags_offset)) & is_percent) == 0) return plain_text(record, offset);
  return free_number_text(record.get(real_at(offset + plain_value))) + "%";
}

std::string_view impedance_text(double ohms) {
  for (const int known : impedances) {
    if (ohms == known) return mod2_word({.code = 2, .value = static_cast<std::int16_t>(known)});
  }
  return {};
}

// ---- From text ----

bool refuse(FieldFault& fault, std::string_view text, const char* what) {
  fault = {0, "\"" + std::string(text) + "\" is no " + what};
  return false;
}

// A whole number of up to `high`; nothing otherwise.
std::optional<unsigned> count_of(std::string_view text, unsigned high) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos || text.size() > 5)
    return std::nullopt;
  unsigned value = 0;
  for (const char digit : text) value = value * 10 + static_cast<unsigned>(digit - '0');
  return value <= high ? std::optional(value) : std::nullopt;
}

// The number of the word, and of "HX7" the 7; 0 if no word fits.
unsigned word_number(std::span<const std::string_view> words, std::string_view text, unsigned& behind) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string_view word = words[i];
    if (word.back() != '#') {
      if (ascii_same(word, text)) return static_cast<unsigned>(i + 1);
      continue;
    }
    const std::string_view letters = word.substr(0, word.size() - 1);
    if (text.size() <= letters.size() || !ascii_starts(text, letters)) continue;
    const auto number = count_of(text.substr(letters.size()), 255);
    if (!number) continue;
    behind = *number;
    return static_cast<unsigned>(i + 1);
  }
  return 0;
}

bool word_from_text(std::string_view text, const ModifierColumn& column, FscRecord& record,
                    FieldFault& fault) {
  unsigned behind = 0;
  const unsigned number = word_number(column.words, text, behind);
  if (number == 0) return refuse(fault, text, "word of this column");
  if (column.kind == Kind::word16) {
    record.set(word_at(column.offset), static_cast<std::uint16_t>(number));
    return true;
  }
  record.set(byte_at(column.offset), static_cast<std::uint8_t>(number));
  if (column.words[number - 1].back() == '#')
    record.set(byte_at(column.offset + 1), static_cast<std::uint8_t>(behind));
  return true;
}

bool count_from_text(std::string_view text, const ModifierColumn& column, FscRecord& record,
                     FieldFault& fault) {
  std::string_view word = column.words.front(), digits = text;
  if (word.back() == '#') {
    word.remove_suffix(1);
    if (!ascii_starts(text, word)) return refuse(fault, text, "count of this column");
    digits.remove_prefix(word.size());
  } else {
    if (text.size() < word.size() || !ascii_same(text.substr(text.size() - word.size()), word))
      return refuse(fault, text, "count of this column");
    digits.remove_suffix(word.size());
  }
  const auto count = count_of(digits, 65535);
  if (!count || *count == 0) return refuse(fault, text, "count of 1 to 65535");
  record.set(word_at(column.offset), static_cast<std::uint16_t>(*count));
  return true;
}

bool real_from_text(std::string_view text, std::string_view word, double& value, FieldFault& fault) {
  const std::size_t length = scan_number(text, value);
  if (length == 0 || !std::isfinite(value) || !ascii_same(text.substr(length), word))
    return refuse(fault, text, "number of this column");
  return true;
}

bool plain_from_text(std::string_view text, int offset, FscRecord& record, FieldFault& fault) {
  QuantityField quantity;
  if (!nominal_from_text(text, quantity, fault)) return false;
  if ((quantity.flags & (QuantityField::keep | QuantityField::from_mem)) != 0)
    return refuse(fault, text, "number with its unit");
  record.set(byte_at(offset), quantity.unit);
  record.set(byte_at(offset + 1), quantity.prefix);
  record.set(real_at(offset + plain_value), quantity.value);
  return true;
}

void set_flag(FscRecord& record, std::uint8_t bit) {
  record.set(byte_at(flags_offset), static_cast<std::uint8_t>(record.get(byte_at(flags_offset)) | bit));
}

bool percent_from_text(std::string_view text, int offset, FscRecord& record, FieldFault& fault) {
  if (text.back() != '%') return plain_from_text(text, offset, record, fault);
  double value = 0;
  if (!real_from_text(text, "%", value, fault)) return false;
  set_flag(record, is_percent);
  record.set(real_at(offset + plain_value), value);
  return true;
}

bool special_from_text(std::string_view text, int offset, FscRecord& record, FieldFault& fault) {
  const std::size_t point = text.find('.');
  const bool formed = point != std::string_view::npos && text.size() > point + 2 &&
                      ascii_same(text.substr(text.size() - 2), "SP");
  const auto major = formed ? count_of(text.substr(0, point), 255) : std::nullopt;
  const auto minor = formed ? count_of(text.substr(point + 1, text.size() - point - 3), 255) : std::nullopt;
  if (!major || !minor || *major == 0) return refuse(fault, text, "special function such as 12.3SP");
  record.set(byte_at(offset), static_cast<std::uint8_t>(*major));
  record.set(byte_at(offset + 1), static_cast<std::uint8_t>(*minor));
  return true;
}

bool mod2_from_text(std::string_view text, const ModifierColumn& column, FscRecord& record,
                    FieldFault& fault) {
  const std::optional<Mod2> found = mod2_code(text);
  if (!found) return refuse(fault, text, "word of this column");
  record.set(word_at(column.offset), found->code);
  record.set(Field<std::int16_t>{static_cast<std::uint16_t>(column.offset + 2)}, found->value);
  return true;
}

bool code_from_text(std::string_view text, const ModifierColumn& column, FscRecord& record,
                    FieldFault& fault) {
  const std::optional<std::uint8_t> code = column.kind == Kind::mod3   ? mod3_code(text)
                                           : column.kind == Kind::mod4 ? mod4_code_of(text)
                                                                       : con_code(text);
  if (!code) return refuse(fault, text, "word of this column");
  if (column.kind == Kind::mod3) {
    record.set(byte_at(column.offset), *code);
  } else {
    record.set(word_at(column.offset), *code);
  }
  return true;
}

bool impedance_from_text(std::string_view text, int offset, FscRecord& record, FieldFault& fault) {
  const std::optional<Mod2> found = mod2_code(text);
  if (!found || found->code != 2) return refuse(fault, text, "impedance: 5Z, 7Z, 3Z or 6Z");
  record.set(real_at(offset), found->value);
  return true;
}

bool quoted_from_text(std::string_view text, const ModifierColumn& column, FscRecord& record,
                      FieldFault& fault) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"')
    return refuse(fault, text, "text between double quotes");
  const TextField place{column.offset, column.size};
  return record.set_text(place, text.substr(1, text.size() - 2)) || refuse(fault, text, "text short enough");
}

template <class Block>
bool block_from_text(std::string_view text, int offset, FscRecord& record,
                     bool (*read)(std::string_view, Block&, FieldFault&), FieldFault& fault) {
  Block block;
  if (!read(text, block, fault)) return false;
  record.set(BlockField<Block>{static_cast<std::uint16_t>(offset)}, block);
  return true;
}

}  // namespace

std::span<const ModifierColumn> modifier_columns(std::uint16_t code) {
  for (const Model& model : models) {
    if (model.code == code) return model.columns;
  }
  return {};
}

std::string modifier_column_text(const FscRecord& record, const ModifierColumn& column) {
  const std::uint16_t offset = column.offset;
  switch (column.kind) {
    case Kind::word8: return word_text(record, column, record.get(byte_at(offset)));
    case Kind::word16: return word_text(record, column, record.get(word_at(offset)));
    case Kind::nominal: return nominal_text(record.get(BlockField<QuantityField>{offset}));
    case Kind::modifier: return modifier_text(record.get(BlockField<ModifierField>{offset}));
    case Kind::tagged:
      if (record.get(word_at(offset)) == 0) return {};
      return nominal_text(
          record.get(BlockField<QuantityField>{static_cast<std::uint16_t>(offset + tag_size)}));
    case Kind::plain: return plain_text(record, offset);
    case Kind::plain_or_star:
      return (record.get(byte_at(offset)) & star) != 0 ? "*" : plain_text(record, offset + star_size);
    case Kind::percent: return percent_text(record, offset);
    case Kind::count16: return count_text(column, record.get(word_at(offset)));
    case Kind::real: {
      const double value = record.get(real_at(offset));
      return value == 0 ? std::string() : free_number_text(value) + std::string(column.words.front());
    }
    case Kind::special: return special_text(record, offset);
    case Kind::mod2:
      return std::string(
          mod2_word({record.get(word_at(offset)),
                     record.get(Field<std::int16_t>{static_cast<std::uint16_t>(offset + 2)})}));
    case Kind::mod3: return std::string(mod3_word(record.get(byte_at(offset))));
    case Kind::mod4: return std::string(mod4_word(static_cast<std::uint8_t>(record.get(word_at(offset)))));
    case Kind::con: return std::string(con_word(static_cast<std::uint8_t>(record.get(word_at(offset)))));
    case Kind::impedance: return std::string(impedance_text(record.get(real_at(offset))));
    case Kind::text: return std::string(record.text({offset, column.size}));
    case Kind::quoted: break;
  }
  const std::string_view text = record.text({offset, column.size});
  return text.empty() ? std::string() : '"' + std::string(text) + '"';
}

bool modifier_column_from_text(std::string_view text, const ModifierColumn& column, FscRecord& record,
                               FieldFault& fault) {
  if (text.empty()) return true;
  const int offset = column.offset;
  switch (column.kind) {
    case Kind::word8:
    case Kind::word16: return word_from_text(text, column, record, fault);
    case Kind::nominal: return block_from_text(text, offset, record, nominal_from_text, fault);
    case Kind::modifier: return block_from_text(text, offset, record, modifier_from_text, fault);
    case Kind::tagged:
      record.set(word_at(offset), 1);
      return block_from_text(text, offset + tag_size, record, nominal_from_text, fault);
    case Kind::plain: return plain_from_text(text, offset, record, fault);
    case Kind::plain_or_star:
      if (text != "*") return plain_from_text(text, offset + star_size, record, fault);
      set_flag(record, star);
      return true;
    case Kind::percent: return percent_from_text(text, offset, record, fault);
    case Kind::count16: return count_from_text(text, column, record, fault);
    case Kind::real: {
      double value = 0;
      if (!real_from_text(text, column.words.front(), value, fault)) return false;
      record.set(real_at(offset), value);
      return true;
    }
    case Kind::special: return special_from_text(text, offset, record, fault);
    case Kind::mod2: return mod2_from_text(text, column, record, fault);
    case Kind::mod3:
    case Kind::mod4:
    case Kind::con: return code_from_text(text, column, record, fault);
    case Kind::impedance: return impedance_from_text(text, offset, record, fault);
    case Kind::text:
      return record.set_text({column.offset, column.size}, text) || refuse(fault, text, "text short enough");
    case Kind::quoted: break;
  }
  return quoted_from_text(text, column, record, fault);
}

}  // namespace orvane
