#include "values/units.h"

#include <algorithm>
#include <array>

#include "config/startup_config.h"
#include "values/numbers.h"

namespace orvane {
namespace {

// ---- Tables ----

struct UnitRow {
  UnitCode code = 0;
  const char* listing = nullptr;
  const char* symbol = nullptr;
  const char* display = nullptr;
  const char* long_name = nullptr;
  const char* extended = nullptr;  // of the display form, where it differs
};

// clang-format off
constexpr UnitRow unit_rows[] = {
    {1, "A", "A", "A", "amps"},
    {2, "D", "dBm", "dBm", "dBm"},
    {3, "H", "Hz", "Hz", "hertz"},
    {4, "Z", "Ohms", "Ohm", "ohms"},
    {5, "Y", "S", "S", "siemens"},
    {6, "V", "V", "V", "volts"},
    {7, "Vpp", "Vpp", "Vpp", "volts peak-to-peak"},
    {8, "degC", "degC", "degC", "degrees Celsius", "\xB0" "C"},
    {9, "degF", "degF", "degF", "degrees Fahrenheit", "\xB0" "F"},
    {10, "T", "s", "s", "seconds"},
    {11, "W", "W", "W", "watts"},
    {12, "deg", "deg", "deg", "degrees", "\xB0"},
    {13, "F", "F", "F", "farads"},
    {14, "Vp", "Vp", "Vp", "volts peak"},
    {15, "Ap", "Ap", "Ap", "amps peak"},
    {16, "App", "App", "App", "amps peak-to-peak"},
    {17, "pct", "%", "%", "percent"},
    {18, "Voff", "V", "V", "volts offset"},
    {19, "H/H", "Hz/Hz", "Hz/Hz", "hertz / hertz"},
    {20, "DF", "DF", "DF", "duty factor"},
    {21, "V/V", "V/V", "V/V", "volts / volts"},
    {22, "IRE", "IRE", "IRE", "IRE"},
    {23, "LM", "Line_Marker", "Line_Marker", "line markers"},
    {24, "Pa", "Pa", "Pa", "Pascals"},
    {25, "bar", "bar", "bar", "bars"},
    {26, "psi", "psi", "psi", "pounds per square inch"},
    {27, "g/cm2", "g/cm2", "g/cm2", "grams per square centimeter", "g/cm\xB2"},
    {28, "inHg", "inHg", "inHg", "inches of mercury"},
    {29, "mHg", "mHg", "mHg", "meters of mercury"},
    {30, "inH2O", "inH2O", "inH2O", "inches of water"},
    {31, "ftH2O", "ftH2O", "ftH2O", "feet of water"},
    {32, "mH2O", "mH2O", "mH2O", "meters of water"},
    {33, "rad", "rad", "rad", "radians"},
    {34, "J", "J", "J", "joules"},
    {35, "V/A", "V/A", "V/A", "volts / amps"},
    {36, "VA", "VA", "VA", "volt-amps"},
    {37, "VAR", "VAR", "VAR", "volt-amps reactive"},
    {38, "K", "K", "K", "kelvins"},
    {39, "cmH2O", "cmH2O", "cmH2O", "centimeters of water"},
    {40, "dB", "dB", "dB", "decibels"},
    {41, "A/A", "A/A", "A/A", "amps / amps"},
    {42, "Z/Z", "Ohms/Ohms", "Ohm/Ohm", "ohms / ohms"},
    {43, "ppm", "ppm", "ppm", "parts per million"},
    {44, "ppb", "ppb", "ppb", "parts per billion"},
    {45, "Hy", "Hy", "H", "henries"},
    {46, "QF", "QF", "QF", "quality factor"},
    {47, "c", "c", "c", "cycles"},
    {48, nullptr, "SPD", "SPD", "steps per decade"},
    {49, nullptr, "SPS", "SPS", "steps per sweep"},
    {53, "dBmV", "dBmV", "dBmV", "dBmV"},
    {54, "dBmW", "dBmW", "dBmW", "dBmW"},
    {67, nullptr, "Hz/V", nullptr, nullptr},
    {68, nullptr, "%/V", nullptr, nullptr},
    {69, nullptr, "rad/V", nullptr, nullptr},
    {70, "dBc/Hz", "dBc/Hz", "dBc/Hz", "dBc/Hz"},
    {71, "dBuV", "dBuV", "dBuV", "dBuV", "dB\xB5V"},
};

struct PrefixRow {
  PrefixCode code = 0;
  const char* symbol = nullptr;
  const char* display = nullptr;
  const char* long_name = nullptr;
  double multiplier = 0;
  int exponent = 0;
  const char* letters = "";             // as typed
  const char* extended = nullptr;       // of the display form, where it differs
};
constexpr PrefixRow prefix_rows[] = {
    {1, "", "", "", 1.0, 0, ""},
    {2, "p", "p", "pico", 1e-12, -12, "p"},
    {3, "n", "n", "nano", 1e-9, -9, "Nn"},
    {4, "u", "u", "micro", 1e-6, -6, "Uu\xB5", "\xB5"},
    {5, "m", "m", "milli", 1e-3, -3, "m"},
    {6, "k", "k", "kilo", 1e3, 3, "Kk"},
    {7, "M", "M", "mega", 1e6, 6, "M"},
    {8, "G", "G", "giga", 1e9, 9, "Gg"},
    {9, nullptr, "a", nullptr, 1e-18, 0, "a"},
    {10, nullptr, "c", nullptr, 0.0, 0, ""},
    {11, nullptr, "d", nullptr, 0.0, 0, ""},
    {13, nullptr, "E", nullptr, 1e18, 0, "E"},
    {14, nullptr, "f", nullptr, 1e-15, 0, "f"},
    {15, nullptr, "h", nullptr, 0.0, 0, ""},
    {16, nullptr, "P", nullptr, 1e15, 0, "P"},
    {17, "T", "T", "tera", 1e12, 12, "T"},
    {18, nullptr, "y", nullptr, 1e-24, 0, "y"},
    {19, nullptr, "Y", nullptr, 1e24, 0, "Y"},
    {20, nullptr, "z", nullptr, 1e-21, 0, "z"},
    {21, nullptr, "Z", nullptr, 1e21, 0, "Z"},
};

struct SpelledUnit {
  std::string_view text;
  UnitCode code;
};
// The listing spelling, in lower case. The order decides: "va" stands before "a".
constexpr SpelledUnit listing_units[] = {
    {"v/v", 21}, {"v", 6}, {"a/a", 41}, {"pa", 24}, {"va", 36}, {"v/a", 35}, {"a", 1}, {"h/h", 19}, {"h", 3},
    {"z/z", 42}, {"hz", 3}, {"z", 4}, {"rad", 33}, {"spd", 48}, {"d", 2}, {"pct", 17}, {"t", 10}, {"vp", 14},
    {"vpp", 7}, {"hy", 45}, {"y", 5}, {"ap", 15}, {"app", 16}, {"bar", 25}, {"cmh2o", 39}, {"db", 40}, {"dbm", 2},
    {"deg", 12}, {"degc", 8}, {"c", 47}, {"degf", 9}, {"df", 20}, {"qf", 46}, {"voff", 18}, {"f", 13},
    {"fth2o", 31}, {"g/cm2", 27}, {"inh2o", 30}, {"inhg", 28}, {"ire", 22}, {"j", 34}, {"k", 38}, {"lm", 23},
    {"mh2o", 32}, {"mhg", 29}, {"ppb", 44}, {"ppm", 43}, {"sps", 49}, {"psi", 26}, {"s", 10}, {"var", 37},
    {"w", 11}, {"%", 17},
};
// The exact spelling: "h" is the henry here and "T" the tesla.
constexpr SpelledUnit exact_units[] = {
    {"A", 1}, {"Ap", 15}, {"App", 16}, {"bar", 25}, {"Bq", 50}, {"C", 52}, {"cd", 51}, {"cmH2O", 39}, {"dB", 40},
    {"dBc/Hz", 70}, {"dBm", 2}, {"dBmV", 53}, {"dBuV", 71}, {"dBmW", 54}, {"deg", 12}, {"degC", 8}, {"degF", 9},
    {"F", 13}, {"ftH2O", 31}, {"g", 55}, {"g/cm2", 27}, {"Gy", 56}, {"h", 45}, {"Hz", 3}, {"Hz/V", 67},
    {"inH2O", 30}, {"inHg", 28}, {"J", 34}, {"K", 38}, {"kat", 57}, {"l", 58}, {"lm", 59}, {"lx", 60}, {"m", 61},
    {"mH2O", 32}, {"mHg", 29}, {"mol", 62}, {"N", 63}, {"Ohm", 4}, {"ohm", 4}, {"Ohms", 4}, {"ohms", 4},
    {"Pa", 24}, {"PCT", 17}, {"pct", 17}, {"PPB", 44}, {"ppb", 44}, {"PPM", 43}, {"ppm", 43}, {"SPS", 49},
    {"sps", 49}, {"PSI", 26}, {"psi", 26}, {"rad", 33}, {"rad/V", 69}, {"s", 10}, {"S", 5}, {"SPD", 48},
    {"spd", 48}, {"sr", 65}, {"Sv", 64}, {"T", 66}, {"V", 6}, {"VA", 36}, {"Vp", 14}, {"Vpp", 7}, {"W", 11},
    {"Wb", 255}, {"%", 17}, {"%/V", 68},
};
// What an operand of a command statement may end in, in lower case.
constexpr std::string_view operand_units[] = {
    "%%", "a", "ap", "app", "bar", "cmh2o", "dbm", "deg", "degc", "degf", "f", "fth2o", "g/cm2", "hz", "inh2o",
    "inhg", "ire", "j", "mh2o", "mhg", "ohm", "pa", "psi", "radian", "s", "s", "v", "vp", "vpp", "w",
};
// clang-format on
static_assert(std::size(listing_units) == 53);
static_assert(std::size(exact_units) == 70);
static_assert(std::size(operand_units) == 30);

constexpr const UnitRow* find_unit_row(UnitCode unit) {
  for (const UnitRow& row : unit_rows) {
    if (row.code == unit) return &row;
  }
  return nullptr;
}
constexpr const PrefixRow* find_prefix_row(PrefixCode prefix) {
  for (const PrefixRow& row : prefix_rows) {
    if (row.code == prefix) return &row;
  }
  return nullptr;
}

template <class Row, std::size_t n, auto find>
constexpr auto index_rows() {
  std::array<const Row*, n> rows{};
  for (std::size_t code = 0; code < n; ++code) rows[code] = find(static_cast<std::uint8_t>(code));
  return rows;
}
constexpr auto unit_by_code = index_rows<UnitRow, 72, find_unit_row>();
constexpr auto prefix_by_code = index_rows<PrefixRow, 22, find_prefix_row>();

constexpr UnitRow no_unit;
constexpr PrefixRow no_prefix;
const UnitRow& unit_row(UnitCode unit) {
  const UnitRow* row = unit < unit_by_code.size() ? unit_by_code[unit] : nullptr;
  return row != nullptr ? *row : no_unit;
}
const PrefixRow& prefix_row(PrefixCode prefix) {
  const PrefixRow* row = prefix < prefix_by_code.size() ? prefix_by_code[prefix] : nullptr;
  return row != nullptr ? *row : no_prefix;
}

CodeText text_or_nothing(const char* text) {
  if (text == nullptr) return std::nullopt;
  return std::string_view(text);
}

bool extended_units() { return startup_config().ExtendedUnits != 0; }

constexpr auto prefix_by_letter = [] {
  std::array<PrefixCode, 256> codes{};
  for (const PrefixRow& row : prefix_rows) {
    for (const char* p = row.letters; *p != '\0'; ++p) codes[static_cast<unsigned char>(*p)] = row.code;
  }
  return codes;
}();

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }

bool equal_in_any_case(std::string_view text, std::string_view lower_case) {
  return std::equal(text.begin(), text.end(), lower_case.begin(), lower_case.end(),
                    [](char a, char b) { return lower(a) == b; });
}

// ---- Parsing ----

constexpr std::size_t source_limit = 65535;  // what unit_offset can address

std::size_t skip_blanks(std::string_view text, std::size_t at) {
  while (at < text.size() && text[at] == ' ') ++at;
  return at;
}

// The number at the start, and where the unit part behind it begins.
bool parse_number_part(std::string_view text, DimValue& out, std::size_t& unit_part) {
  out = DimValue();
  if (text.empty() || text.size() > source_limit) return false;
  const std::size_t length = scan_number(text, out.value);
  if (length != 0) {
    out.flags |= DimValue::number;
    if (number_digits(text.substr(0, length), out.digits)) out.flags |= DimValue::exponent;
  }
  unit_part = skip_blanks(text, length);
  return true;
}

struct UnitMatch {
  UnitCode code = unit_code::none;
  std::size_t length = 0;
};

UnitMatch match_listing_unit(std::string_view part) {
  for (const SpelledUnit& row : listing_units) {
    const std::size_t n = row.text.size();
    if (part.size() < n || !equal_in_any_case(part.substr(part.size() - n), row.text)) continue;
    if (row.code == unit_code::pascal && part.ends_with("pA")) return {unit_code::amp, 1};
    return {row.code, n};
  }
  return {};
}

UnitMatch match_exact_unit(std::string_view part) {
  UnitMatch best;
  for (const SpelledUnit& row : exact_units) {
    if (part.ends_with(row.text) && row.text.size() > best.length) best = {row.code, row.text.size()};
  }
  return best;
}

// Takes what stands before a matched unit for its prefix: nothing, or one prefix letter.
bool take_prefix(std::string_view part, std::size_t unit_length, DimValue& out, std::size_t& offset) {
  const std::size_t before = part.size() - unit_length;
  if (before == 0) {
    out.prefix = prefix_code::none;
    return true;
  }
  if (before > 1) return false;
  out.prefix = prefix_from_letter(part.front());
  ++offset;
  return out.prefix != prefix_code::absent;
}

bool set_unit_text(DimValue& out, std::string_view text, std::size_t offset) {
  out.unit_offset = static_cast<std::uint16_t>(offset);
  if (text.size() >= DimValue::unit_text_limit) return false;
  out.unit_text = text;
  return true;
}

// A text without a known unit: an optional prefix, then any text, which "'" may enclose. A single character
// is the text itself.
bool parse_free_unit(std::string_view text, std::size_t offset, DimValue& out) {
  out.prefix = prefix_code::none;
  bool quoted = false;
  if (text.size() - offset > 1) {
    if (const PrefixCode prefix = prefix_from_letter(text[offset]); prefix != prefix_code::absent) {
      out.prefix = prefix;
      ++offset;
    }
    quoted = text[offset] == '\'';
    if (quoted) ++offset;
  }
  if (!set_unit_text(out, text.substr(offset), offset)) return false;
  if (quoted && out.unit_text.ends_with('\'')) out.unit_text.pop_back();
  return true;
}

// The operand's register or number; returns how much of the text that is.
std::size_t operand_value_length(std::string_view text) {
  constexpr std::size_t mem_length = 4;  // "mem" alone takes the character behind it as well
  if (text.size() >= 3 && equal_in_any_case(text.substr(0, 3), "mem"))
    return std::min(mem_length, text.size());
  const char letter = text.empty() ? '\0' : lower(text.front());
  if (letter == 'm' || letter == 's') {
    const int limit = letter == 'm' ? 255 : 32;
    int number = 0;
    std::size_t at = 1;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
      number = std::min(number * 10 + (text[at] - '0'), limit + 1);
    if (number >= 1 && number <= limit) return at;
  }
  return number_length(text);
}

bool is_operand_unit(std::string_view word) {
  return std::any_of(std::begin(operand_units), std::end(operand_units),
                     [&](std::string_view unit) { return equal_in_any_case(word, unit); });
}

}  // namespace

// ---- Texts of units ----

CodeText unit_listing_token(UnitCode unit) { return text_or_nothing(unit_row(unit).listing); }
CodeText unit_symbol(UnitCode unit) { return text_or_nothing(unit_row(unit).symbol); }
std::string_view unit_symbol_or_empty(UnitCode unit) { return unit_symbol(unit).value_or(""); }
std::string_view unit_symbol_valued(UnitCode unit, double value) {
  return unit == unit_code::ohm && value == 1.0 ? "Ohm" : unit_symbol_or_empty(unit);
}
CodeText unit_display(UnitCode unit) {
  const UnitRow& row = unit_row(unit);
  return text_or_nothing(row.extended != nullptr && extended_units() ? row.extended : row.display);
}
CodeText unit_long_name(UnitCode unit) { return text_or_nothing(unit_row(unit).long_name); }

// ---- Prefixes ----

double prefix_multiplier(PrefixCode prefix) { return prefix_row(prefix).multiplier; }
int prefix_exponent(PrefixCode prefix) { return prefix_row(prefix).exponent; }
CodeText prefix_symbol(PrefixCode prefix) { return text_or_nothing(prefix_row(prefix).symbol); }
std::string_view prefix_symbol_or_empty(PrefixCode prefix) { return prefix_symbol(prefix).value_or(""); }
CodeText prefix_display(PrefixCode prefix) {
  const PrefixRow& row = prefix_row(prefix);
  return text_or_nothing(row.extended != nullptr && extended_units() ? row.extended : row.display);
}
CodeText prefix_long_name(PrefixCode prefix) { return text_or_nothing(prefix_row(prefix).long_name); }
CodeText prefix_long_name_for(PrefixCode prefix, std::string_view unit_long_name) {
  if (unit_long_name == "ohms") {
    switch (prefix) {
      case prefix_code::kilo: return "kil";
      case prefix_code::mega: return "meg";
      case prefix_code::giga: return "gig";
      default: break;
    }
  }
  return prefix_long_name(prefix);
}

// ---- Codes from letters and texts ----

UnitCode unit_from_exact_text(std::string_view text) {
  for (const SpelledUnit& row : exact_units) {
    if (row.text == text) return row.code;
  }
  return unit_code::none;
}

UnitCode unit_from_letter(char letter) {
  switch (lower(letter)) {
    case 'a': return unit_code::amp;
    case 'd': return unit_code::dbm;
    case 'f': return unit_code::farad;
    case 'h': return unit_code::hertz;
    case 'j': return unit_code::joule;
    case 't': return unit_code::second;
    case 'v': return unit_code::volt;
    case 'w': return unit_code::watt;
    case 'y': return unit_code::siemens;
    case 'z': return unit_code::ohm;
    default: return unit_code::none;
  }
}

PrefixCode prefix_from_letter(char letter) { return prefix_by_letter[static_cast<unsigned char>(letter)]; }

PrefixCode prefix_from_listing_letter(char letter, UnitCode unit) {
  switch (letter) {
    case 'M':
      switch (unit) {
        case unit_code::hertz:
        case unit_code::ohm:
        case unit_code::watt:
        case unit_code::pascal:
        case unit_code::volt_amp:
        case unit_code::var: return prefix_code::mega;
        default: return prefix_code::milli;
      }
    case 'm': return prefix_code::milli;
    default: break;
  }
  switch (lower(letter)) {
    case 'g': return prefix_code::giga;
    case 'k': return prefix_code::kilo;
    case 'n': return prefix_code::nano;
    case 'p': return prefix_code::pico;
    case 't': return prefix_code::tera;
    case 'u': return prefix_code::micro;
    default: return prefix_code::absent;
  }
}

bool unit_is_pressure(UnitCode unit) {
  return (unit >= unit_code::pascal && unit <= unit_code::meter_water) || unit == unit_code::cm_water;
}

// ---- Values with a unit ----

bool dim_parse_listing(std::string_view text, DimValue& out) {
  std::size_t offset = 0;
  if (!parse_number_part(text, out, offset)) return false;
  const std::string_view part = text.substr(offset);
  const UnitMatch match = match_listing_unit(part);
  std::size_t unit_offset = offset;
  if (match.code == unit_code::none || !take_prefix(part, match.length, out, unit_offset))
    return parse_free_unit(text, offset, out);
  out.unit = match.code;
  const CodeText shown = unit_display(out.unit);
  return shown && set_unit_text(out, *shown, unit_offset);
}

bool dim_parse_exact(std::string_view text, DimValue& out) {
  std::size_t offset = 0;
  if (!parse_number_part(text, out, offset)) return false;
  const std::string_view part = text.substr(offset);
  const UnitMatch match = match_exact_unit(part);
  if (match.code == unit_code::none || !take_prefix(part, match.length, out, offset)) return false;
  out.unit = match.code;
  return set_unit_text(out, text.substr(offset), offset);
}

bool operand_parse(std::string_view text) {
  text.remove_prefix(skip_blanks(text, 0));
  text.remove_prefix(operand_value_length(text));
  if (text.empty() || is_operand_unit(text)) return true;
  return prefix_from_letter(text.front()) != prefix_code::absent && is_operand_unit(text.substr(1));
}

}  // namespace orvane
