#include "instruments/instrument_names.h"

#include <algorithm>

namespace orvane {
namespace {

struct NameRow {
  std::uint16_t code;
  std::string_view name;
};

// clang-format off
constexpr NameRow rows[] = {
    {1, "HP 3458A"}, {2, "Tektronix CG5011"}, {10, "MFC3"}, {16, "Tektronix SG5030"}, {22, "Tektronix CG5001"},
    {24, "MFC1"}, {27, "HP 6060B"}, {28, "HP 6063B"}, {33, "MFC4"}, {34, "HP 3325B"}, {35, "Keithley 2000"},
    {36, "Keithley 2001"}, {37, "Keithley 2002"}, {38, "HP 34401A"}, {39, "HP 34420A"}, {40, "Tegam SG5050"},
    {41, "MFC2"}, {42, "OSC1"}, {73, "HP 8901B"}, {74, "HP 8902A"}, {75, "HP 8903B"}, {76, "HP 8648"},
    {77, "Marconi 2024"}, {78, "HP 437B"}, {79, "Rohde & Schwarz SMY02"}, {82, "HP 5335A"}, {83, "HP 8560"},
    {84, "HP 8566B"}, {85, "HP 8568B"}, {86, "HP 8590"}, {87, "OSC2"}, {91, "HP 33120A"}, {113, "PRC1"},
    {127, "Agilent 33250A"}, {129, "Agilent E4418B"}, {130, "Agilent E4419B"}, {131, "Agilent E4412A"},
    {132, "Agilent E4413A"}, {165, "Clarke-Hess 6000"}, {169, "Agilent 53131A"}, {170, "Agilent 53132A"},
    {171, "Agilent 53181A"}, {172, "Agilent 33220A"}, {173, "Guildline 6520"}, {178, "HP 5350B"},
    {179, "HP 5351B"}, {180, "HP 5352B"}, {190, "Agilent PSA"}, {198, "Agilent EPM"}};
// clang-format on

constexpr char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

}  // namespace

std::string_view instrument_name(std::uint16_t code) {
  for (const NameRow& row : rows) {
    if (row.code == code) return row.name;
  }
  return {};
}

std::string instrument_text(std::uint16_t code) {
  const std::string_view name = instrument_name(code);
  return name.empty() ? "#" + std::to_string(code) : std::string(name);
}

std::uint16_t instrument_code(std::string_view name) {
  for (const NameRow& row : rows) {
    if (std::equal(row.name.begin(), row.name.end(), name.begin(), name.end(),
                   [](char a, char b) { return upper(a) == upper(b); }))
      return row.code;
  }
  return 0;
}

}  // namespace orvane
