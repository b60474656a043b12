#include "state/fsc.h"

#include <algorithm>
#include <array>

namespace orvane {
namespace {

// One row a statement, by ordinal: code, name, the most records a statement of it may span, and, for a test
// statement of an instrument, the code of the modifier statement that keeps its settings.
// clang-format off
constexpr FscRow rows[] = {
    {fsc::con, "CON", 1, 0},
    {fsc::disp, "DISP", 32, 0},
    {fsc::draw, "DRAW", 1, 0},
    {fsc::head, "HEAD", 1, 0},
    {fsc::ieee, "IEEE", 999, 0},
    {fsc::memi, "MEMI", 32, 0},
    {fsc::mem2, "MEM2", 32, 0},
    {fsc::mess, "MESS", 8, 0},
    {fsc::opbr, "OPBR", 32, 0},
    {fsc::pic, "PIC", 999, 0},
    {fsc::port, "PORT", 999, 0},
    {fsc::rng, "RNG", 1, 0},
    {fsc::rslt, "RSLT", 1, 0},
    {fsc::set, "SET", 8, 0},
    {fsc::ask_plus, "ASK+", 1, 0},
    {fsc::ask_minus, "ASK-", 1, 0},
    {fsc::call, "CALL", 1, 0},
    {fsc::dos, "DOS", 1, 0},
    {fsc::end, "END", 1, 0},
    {fsc::jmp, "JMP", 1, 0},
    {fsc::jmpf, "JMPF", 1, 0},
    {fsc::jmpt, "JMPT", 1, 0},
    {fsc::jmpz, "JMPZ", 1, 0},
    {fsc::math, "MATH", 1, 0},
    {fsc::mcal, "MCAL", 1, 0},
    {fsc::mem_times, "MEM*", 1, 0},
    {fsc::mem_plus, "MEM+", 1, 0},
    {fsc::mem_minus, "MEM-", 1, 0},
    {fsc::mem_divide, "MEM/", 1, 0},
    {fsc::meme, "MEME", 1, 0},
    {fsc::acc, "ACC", 1, 0},
    {fsc::mmfc, "MMFC", 1, 0},
    {fsc::rpt, "RPT", 1, 0},
    {fsc::tol, "TOL", 1, 0},
    {fsc::dose, "DOSE", 1, 0},
    {fsc::eval, "EVAL", 1, 0},
    {fsc::memc, "MEMC", 1, 0},
    {fsc::pice, "PICE", 999, 0},
    {fsc::hp60, "HP60", 1, 0},
    {fsc::hp63, "HP63", 1, 0},
    {fsc::i5001, "5001", 1, 0},
    {fsc::mfc3, "MFC3", 1, fsc::mmfc},
    {fsc::resf, "RESF", 1, 0},
    {fsc::wide, "WIDE", 1, 0},
    {fsc::i3458, "3458", 1, fsc::m3458},
    {fsc::i5011, "5011", 1, 0},
    {fsc::std, "STD", 1, 0},
    {fsc::i5030, "5030", 1, 0},
    {fsc::acm1, "ACM1", 1, fsc::acms},
    {fsc::acms, "ACMS", 1, 0},
    {fsc::mmfc1, "MMFC1", 1, 0},
    {fsc::mfc1, "MFC1", 1, fsc::mmfc1},
    {fsc::m3458, "M3458", 1, 0},
    {fsc::mfc4, "MFC4", 1, fsc::mmfc4},
    {fsc::mmfc4, "MMFC4", 1, 0},
    {fsc::i3325, "3325", 1, fsc::m3325},
    {fsc::m3325, "M3325", 1, 0},
    {fsc::accf, "ACCF", 1, 0},
    {fsc::i2000, "2000", 1, 0},
    {fsc::i2001, "2001", 1, 0},
    {fsc::i2002, "2002", 1, 0},
    {fsc::i34401, "34401", 1, 0},
    {fsc::i34420, "34420", 1, 0},
    {fsc::jmpl, "JMPL", 1, 0},
    {fsc::label, "LABEL", 1, 0},
    {fsc::fmt, "FMT", 1, 0},
    {fsc::i5050, "5050", 1, 0},
    {fsc::vset, "VSET", 1, 0},
    {fsc::mfc2, "MFC2", 1, fsc::mmfc2},
    {fsc::mmfc2, "MMFC2", 1, 0},
    {fsc::osc1, "OSC1", 1, fsc::mosc1},
    {fsc::mosc1, "MOSC1", 1, 0},
    {fsc::target, "TARGET", 1, 0},
    {fsc::i8901, "8901", 1, fsc::m8901},
    {fsc::m8901, "M8901", 1, 0},
    {fsc::i8902, "8902", 1, fsc::m8902},
    {fsc::m8902, "M8902", 1, 0},
    {fsc::i8903, "8903", 1, fsc::m8903},
    {fsc::m8903, "M8903", 1, 0},
    {fsc::i8648, "8648", 1, fsc::m8648},
    {fsc::m8648, "M8648", 1, 0},
    {fsc::i2024, "2024", 1, fsc::m2024},
    {fsc::m2024, "M2024", 1, 0},
    {fsc::i437, "437", 1, fsc::m437},
    {fsc::m437, "M437", 1, 0},
    {fsc::smy02, "SMY02", 1, fsc::msmy02},
    {fsc::msmy02, "MSMY02", 1, 0},
    {fsc::i5335, "5335", 1, fsc::m5335},
    {fsc::m5335, "M5335", 1, 0},
    {fsc::reset, "RESET", 1, 0},
    {fsc::i8560, "8560", 1, fsc::m8560},
    {fsc::m8560, "M8560", 1, 0},
    {fsc::i8566, "8566", 1, fsc::m8566},
    {fsc::m8566, "M8566", 1, 0},
    {fsc::i8568, "8568", 1, fsc::m8568},
    {fsc::m8568, "M8568", 1, 0},
    {fsc::i8590, "8590", 1, fsc::m8590},
    {fsc::m8590, "M8590", 1, 0},
    {fsc::osc2, "OSC2", 1, fsc::mosc2},
    {fsc::mosc2, "MOSC2", 1, 0},
    {fsc::i33120, "33120", 1, fsc::m33120},
    {fsc::m33120, "M33120", 1, 0},
    {fsc::cmp, "CMP", 1, 0},
    {fsc::osc3, "OSC3", 1, fsc::mosc3},
    {fsc::mosc3, "MOSC3", 1, 0},
    {fsc::msc1, "MSC1", 1, fsc::mmsc1},
    {fsc::mmsc1, "MMSC1", 1, 0},
    {fsc::memcx, "MEMCX", 1, 0},
    {fsc::i33250, "33250", 1, fsc::m33250},
    {fsc::m33250, "M33250", 1, 0},
    {fsc::dmm1, "DMM1", 1, fsc::mdmm1},
    {fsc::mdmm1, "MDMM1", 1, 0},
    {fsc::i4418, "4418", 1, fsc::m4418},
    {fsc::m4418, "M4418", 1, 0},
    {fsc::i4419, "4419", 1, fsc::m4419},
    {fsc::m4419, "M4419", 1, 0},
    {fsc::tset, "TSET", 1, 0},
    {fsc::ieee2, "IEEE2", 999, 0},
    {fsc::scpi, "SCPI", 999, 0},
    {fsc::wait, "WAIT", 1, 0},
    {fsc::i6000, "6000", 1, 0},
    {fsc::if_, "IF", 1, 0},
    {fsc::else_, "ELSE", 1, 0},
    {fsc::elseif, "ELSEIF", 1, 0},
    {fsc::endif, "ENDIF", 1, 0},
    {fsc::while_, "WHILE", 1, 0},
    {fsc::endw, "ENDW", 1, 0},
    {fsc::do_, "DO", 1, 0},
    {fsc::until, "UNTIL", 1, 0},
    {fsc::pqc1, "PQC1", 999, 0},
    {fsc::i53131, "53131", 1, fsc::m53131},
    {fsc::m53131, "M53131", 1, 0},
    {fsc::i53132, "53132", 1, fsc::m53132},
    {fsc::m53132, "M53132", 1, 0},
    {fsc::i53181, "53181", 1, fsc::m53181},
    {fsc::m53181, "M53181", 1, 0},
    {fsc::i6520, "6520", 1, fsc::m6520},
    {fsc::m6520, "M6520", 1, 0},
    {fsc::i33220, "33220", 1, fsc::m33220},
    {fsc::m33220, "M33220", 1, 0},
    {fsc::dmm3, "DMM3", 1, fsc::mdmm3},
    {fsc::mdmm3, "MDMM3", 1, 0},
    {fsc::dmm2, "DMM2", 1, fsc::mdmm2},
    {fsc::mdmm2, "MDMM2", 1, 0},
    {fsc::i5350, "5350", 1, fsc::m5350},
    {fsc::m5350, "M5350", 1, 0},
    {fsc::i5351, "5351", 1, fsc::m5351},
    {fsc::m5351, "M5351", 1, 0},
    {fsc::i5352, "5352", 1, fsc::m5352},
    {fsc::m5352, "M5352", 1, 0},
    {fsc::rfc1, "RFC1", 999, 0},
    {fsc::n5530, "N5530", 999, 0},
    {fsc::n5531, "N5531", 999, 0},
    {fsc::fsmr, "FSMR", 999, 0},
    {fsc::psa, "PSA", 999, 0},
    {fsc::est1, "EST1", 1, 0},
    {fsc::visa, "VISA", 999, 0},
};
// clang-format on

constexpr int lowest_ordinal = 14;
constexpr int highest_ordinal = 250;

constexpr bool rows_are_sound() {
  int before = lowest_ordinal - 1;
  for (const FscRow& row : rows) {
    const int ordinal = fsc_ordinal(row.code);
    if (ordinal <= before || ordinal > highest_ordinal) return false;
    before = ordinal;
  }
  return true;
}
static_assert(rows_are_sound(), "rows stand in the order of their ordinals, each ordinal once");

constexpr auto by_ordinal = [] {
  std::array<const FscRow*, 256> table{};
  for (const FscRow& row : rows) table[static_cast<std::size_t>(fsc_ordinal(row.code))] = &row;
  return table;
}();

bool same_name(std::string_view a, std::string_view b) {
  const auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; };
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [&](char x, char y) { return upper(x) == upper(y); });
}

}  // namespace

std::span<const FscRow> fsc_rows() { return rows; }

const FscRow* fsc_row(std::uint16_t code) {
  const FscRow* row = by_ordinal[static_cast<std::size_t>(fsc_ordinal(code))];
  return row != nullptr && row->code == code ? row : nullptr;
}

std::string_view fsc_name(int ordinal) {
  if (ordinal < lowest_ordinal || ordinal > highest_ordinal) return {};
  const FscRow* row = by_ordinal[static_cast<std::size_t>(ordinal)];
  return row != nullptr ? std::string_view(row->name) : std::string_view();
}

std::uint16_t fsc_code(std::string_view name) {
  for (const FscRow& row : rows) {
    if (same_name(row.name, name)) return row.code;
  }
  return 0;
}

std::uint16_t fsc_modifier_code(std::uint16_t code) {
  const FscRow* row = fsc_row(code);
  return row != nullptr ? row->modifier : 0;
}

std::string_view fsc_modifier_name(std::uint16_t code) {
  const std::uint16_t modifier = fsc_modifier_code(code);
  return modifier != 0 ? fsc_name(fsc_ordinal(modifier)) : std::string_view();
}

int fsc_line_limit(std::uint16_t code) {
  const FscRow* row = fsc_row(code);
  return row != nullptr ? row->line_limit : 1;
}

bool fsc_is_named_parameter(std::uint16_t code) {
  switch (code) {
    case fsc::pqc1:
    case fsc::rfc1:
    case fsc::n5530:
    case fsc::n5531:
    case fsc::fsmr:
    case fsc::psa:
    case fsc::est1: return true;
    default: return false;
  }
}

bool fsc_is_evaluated_with_parameters(std::uint16_t code) {
  return (code & code_class::instrument) != 0 || fsc_is_named_parameter(code);
}

}  // namespace orvane
