#include "procedure/file/field_codes.h"

#include <algorithm>
#include <array>

#include "procedure/file/ascii.h"
#include "state/fsc_record.h"
#include "state/run_state.h"

namespace orvane {
namespace {

using Word = std::string_view;

// Words by code, from code 0. An empty word is a code that has none.
// clang-format off
constexpr std::array mod2_words = std::to_array<Word>({
    "",   "O",  "",   "-D", "+D", "-D", "+A", "-A", "I1", "I2", "SH", "W",  "SI", "SQ", "TI", "MK", "TS",
    "ED", "U1", "U2", "_J", "_K", "_T", "_E", "_S", "_R", "_B", "_C", "_N", "R1", "R2", "R3", "R4", "R5",
    "R6", "R7", "R8", "R9", "LS", "ZQ", "_L", "_U", "SM", "LP", "VL", "VD", "ZN", "PU", "M1", "M2", "M3",
    "M4", "F1", "F2", "F3", "F4", "+R", "-R", "C1", "C2", "C3", "C4", "C5", "FL", "PB", "RT", "TU", "FE",
    "+X", "-X", "SY", "CD", "OI", "RR", "RH", "LR", "OP", "ZK", "HE", "OC", "TZ", "IP", "SE", "P1", "P2",
    "P3", "P4", "P5", "-Z", "Y4", "HI", "P6", "P7", "P8", "P9", "NO", "R0", "RD", "RP"});
constexpr std::array mod3_words = std::to_array<Word>({
    "",   "E",  "-E", "F",  "EF", "FE", "G",  "B1", "B2", "B3", "B4", "W",  "CO", "SI", "SQ", "TI", "PA", "FA",
    "FC", "FR", "ST", "AX", "BC", "BP", "BV", "SC", "TC", "TM", "WA", "RF", "PR", "DA", "MX", "MN", "PP", "S6",
    "OM", "ZM", "HV", "ZR", "HC", "HM", "RL", "AL", "DL", "CA", "CF", "AM", "FM", "PM", "DX", "AD", "AF", "TL",
    "SN", "CP", "PL", "SK", "TN", "VM", "+V", "-V", "7E", "-F", "PI", "RS", "D5", "D6", "D7", "D8", "D4"});
constexpr std::array con_words = std::to_array<Word>({
    "",    "2W",  "4W",  "CW",  "RW",  "L",   "XF",  "3W",  "DV",  "T1",  "T3",  "T5",  "TD",  "L2W", "LT1",
    "LT3", "LT5", "FT",  "FX",  "LFT", "LFX", "P01", "P02", "P03", "P04", "P05", "P06", "P07", "P08", "P09",
    "P22", "P23", "P24", "P29", "P30", "P31", "PA3", "PA4", "PA5", "PA6", "PD2", "PD3", "PD4", "PD5", "PD6",
    "PD7", "PV3", "PV4", "PA7", "PA8"});
// The second run of connection codes.
constexpr std::uint8_t con_second = 91;
constexpr std::array con_second_words = std::to_array<Word>({
    "CH1", "CH2", "CH3", "CH4", "CH5", "2WR", "4WR", "DIV", "SUB", "DEV", "DI4", "SU4", "DE4", "3WR"});
// clang-format on
static_assert(mod2_words.size() == 99 && mod3_words.size() == 71 && con_words.size() == 50 &&
              con_second_words.size() == 14);
static_assert(mod2_words[29] == "R1" && mod2_words[48] == "M1" && mod2_words[58] == "C1" &&
              mod2_words[70] == "SY" && mod2_words[83] == "P1" && mod2_words[91] == "P6" &&
              mod2_words[98] == "RP");
static_assert(mod3_words[7] == "B1" && mod3_words[35] == "S6" && mod3_words[60] == "+V" &&
              mod3_words[66] == "D5");
static_assert(con_words[21] == "P01" && con_words[36] == "PA3" && con_words[40] == "PD2" &&
              con_words[49] == "PA8");

constexpr std::uint16_t mod2_impedance = 2;
struct ImpedanceWord {
  std::int16_t ohms;
  Word word;
};
constexpr ImpedanceWord impedance_words[] = {{50, "5Z"}, {75, "7Z"}, {300, "3Z"}, {600, "6Z"}};

constexpr std::array mod4_words = std::to_array<Word>({"", "", "S", "N", "C"});
static_assert(mod4_code::s == 2 && mod4_code::n == 3 && mod4_code::c == 4);

// clang-format off
constexpr AskLetter letters[] = {
    {'R', 16, ask_option::R}, {'D', 18, ask_option::D}, {'Q', 20, ask_option::Q}, {'N', 22, ask_option::N},
    {'G', 24, ask_option::G}, {'B', 24, ask_option::B}, {'K', 24, ask_option::K}, {'P', 37, ask_option::P},
    {'J', 39, ask_option::J}, {'S', 41, ask_option::S}, {'U', 43, ask_option::U}, {'M', 51, ask_option::M},
    {'C', 53, ask_option::C}, {'X', 55, ask_option::X}, {'Z', 57, ask_option::Z}, {'A', 66, ask_option::A},
    {'F', 66, ask_option::F}, {'L', 69, ask_option::L}, {'T', 72, ask_option::T}, {'W', 75, ask_option::W},
    {'V', 75, ask_option::V}};
// clang-format on

Word word_at(std::span<const Word> words, std::size_t code) {
  return code < words.size() ? words[code] : Word();
}

std::optional<std::size_t> index_of(std::span<const Word> words, Word word) {
  const auto found =
      std::find_if(words.begin(), words.end(), [&](Word one) { return ascii_same(one, word); });
  if (word.empty() || found == words.end()) return std::nullopt;
  return static_cast<std::size_t>(found - words.begin());
}

std::optional<std::uint8_t> byte_of(std::optional<std::size_t> index) {
  if (!index) return std::nullopt;
  return static_cast<std::uint8_t>(*index);
}

}  // namespace

std::string_view mod2_word(Mod2 mod2) {
  if (mod2.code != mod2_impedance) return word_at(mod2_words, mod2.code);
  for (const ImpedanceWord& one : impedance_words) {
    if (one.ohms == mod2.value) return one.word;
  }
  return {};
}

std::string_view mod3_word(std::uint8_t code) { return word_at(mod3_words, code); }
std::string_view mod4_word(std::uint8_t code) { return word_at(mod4_words, code); }
std::string_view con_word(std::uint8_t code) {
  return code < con_second ? word_at(con_words, code)
                           : word_at(con_second_words, static_cast<std::size_t>(code - con_second));
}

std::optional<Mod2> mod2_code(std::string_view word) {
  for (const ImpedanceWord& one : impedance_words) {
    if (ascii_same(one.word, word)) return Mod2{.code = mod2_impedance, .value = one.ohms};
  }
  const std::optional<std::size_t> index = index_of(mod2_words, word);
  if (!index) return std::nullopt;
  return Mod2{.code = static_cast<std::uint16_t>(*index), .value = 0};
}

std::optional<std::uint8_t> mod3_code(std::string_view word) { return byte_of(index_of(mod3_words, word)); }
std::optional<std::uint8_t> mod4_code_of(std::string_view word) {
  return byte_of(index_of(mod4_words, word));
}
std::optional<std::uint8_t> con_code(std::string_view word) {
  if (const auto index = index_of(con_words, word)) return byte_of(index);
  const auto second = index_of(con_second_words, word);
  if (!second) return std::nullopt;
  return static_cast<std::uint8_t>(*second + con_second);
}

std::span<const AskLetter> ask_letters() { return letters; }

}  // namespace orvane
