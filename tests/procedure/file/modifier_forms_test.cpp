#include "procedure/file/modifier_forms.h"

#include <gtest/gtest.h>

#include "procedure/file/compile_parts.h"
#include "procedure/file/render.h"
#include "state/fsc.h"

namespace orvane {
namespace {

struct Put {
  std::size_t column;
  const char* text;
};

std::string line_of(std::string_view name, const std::vector<Put>& puts) {
  std::string line = "  1.001  " + std::string(name);
  for (const Put& put : puts) {
    line.resize(put.column, ' ');
    line += put.text;
  }
  return line;
}

// What is read from a line shows as the same line.
TEST(ModifierForms, EveryModelsColumnsComeRound) {
  struct Case {
    const char* name;
    std::vector<Put> puts;
  };
  const Case cases[] = {
      {"M3458", {{16, "RNGLK"}, {22, "10.0000V"}}},
      {"M3458", {}},
      {"MMFC2",
       {{16, "HX13"},
        {22, "1.5V"},
        {37, "50mV"},
        {51, "1kH"},
        {66, "SI"},
        {69, "EF"},
        {72, "S"},
        {75, "4W"}}},
      {"MMFC1", {{16, "LEAD"}, {22, "*"}, {66, "5Z"}}},
      {"MOSC1", {{16, "SKEW"}}},
      {"MOSC2", {{37, "1.00V"}, {51, "kH"}}},
      {"M33120", {{16, "EXT"}, {22, "1V"}, {51, "1.5kH"}}},
      {"M33220", {{16, "PULSE"}, {22, "1V"}, {37, "2V"}, {51, "3kH"}, {66, "7Z"}, {69, "F"}, {72, "X"}}},
      {"M33250", {{16, "PER"}, {22, "V"}, {66, "6Z"}}},
      {"M8901", {{22, "1MH"}, {37, "12.3SP"}, {51, "1kH"}, {66, "H0"}, {69, "L3"}, {72, "X"}, {75, "P+-"}}},
      {"M8902", {{66, "H2"}, {75, "RMS"}}},
      {"M8903", {{37, "1.0SP"}}},
      {"M437", {{16, "HIGH"}, {22, "1MH"}, {37, "F100"}, {51, "E4412A"}, {66, "T12"}}},
      {"M437", {{66, "T"}}},
      {"M5335", {{16, "ChA"}, {22, "1MH"}, {37, "1V"}, {51, "2V"}, {66, "DC"}, {69, "+-"}, {72, "X10"}}},
      {"M53131", {{16, "COM"}, {66, "AL"}, {69, "--"}, {72, "X"}}},
      {"M53132", {{66, "AC"}, {72, "X"}}},
      {"M53181", {{16, "ChB"}, {66, "DC"}}},
      {"M8560", {{16, "RESBW"}, {22, "1kH"}, {51, "10.0MH"}}},
      {"M8566", {{16, "START"}}},
      {"M8568", {{16, "ATTEN"}, {22, "10D"}}},
      {"M8590", {{16, "VIDBW"}, {22, "3kH"}}},
      {"MDMM3",
       {{16, "DBREF"},
        {22, "600Z"},
        {37, "0.5NPLC"},
        {51, "16uavg"},
        {59, "100ublk"},
        {67, "FL"},
        {70, "DC"},
        {72, "LOI"},
        {75, "NOT"}}},
      {"MDMM1", {{37, "100NPLC"}}},
      {"M4418", {{16, "F3"}, {22, "E4412A"}, {37, "\"first text\""}, {58, "\"second\""}}},
      {"M4419", {{58, "\"\xB5W\""}}},
      {"M5350", {{16, "HI"}, {22, "1MH"}, {37, "S"}, {51, "TRK"}}},
      {"M5352", {{51, "MAN"}}},
      {"M6520",
       {{16, "TEST"}, {22, "1GZ"}, {37, "100V"}, {51, "10V"}, {66, "C3"}, {69, "T1"}, {72, "-"}, {75, "ON"}}},
      {"ACMS", {{22, "1V"}, {37, "2mV"}, {66, "G"}, {69, "M"}}},
      {"MMFC", {{22, "*"}, {37, "12.5%"}}},
      {"MMFC", {{22, "10V"}, {37, "1kH"}}},
      {"M3325", {{16, "INT"}, {22, "1V"}, {51, "1kH"}}},
  };
  for (const Case& c : cases) {
    const std::string text = line_of(c.name, c.puts);
    compiling::SourceLine line(text);
    FscRecord record = fsc_record_new();
    EXPECT_TRUE(compiling::read_statement(line, record)) << text << "\n" << line.fault().reason;
    EXPECT_EQ(render_record(record), text);
  }
}

TEST(ModifierForms, EveryModifierHasItsColumns) {
  for (int ordinal = 0; ordinal < 256; ++ordinal) {
    const std::string_view name = fsc_name(ordinal);
    const std::uint16_t code = fsc_modifier_code(fsc_code(name));
    EXPECT_TRUE(code == 0 || !modifier_columns(code).empty()) << name;
  }
}

// Fields of one model never lie over one another, in the record or in the line.
TEST(ModifierForms, FieldsLieBehindOneAnother) {
  for (int ordinal = 0; ordinal < 256; ++ordinal) {
    const std::uint16_t code = fsc_code(fsc_name(ordinal));
    std::array<bool, FscRecord::size> taken{};
    std::size_t column = 0;
    for (const ModifierColumn& one : modifier_columns(code)) {
      EXPECT_GT(one.column, column) << fsc_name(ordinal);
      column = one.column;
      // An empty record with only this field set differs in its bytes alone.
      const auto size_of = [](const ModifierColumn& field) -> std::size_t {
        switch (field.kind) {
          case ModifierKind::nominal:
          case ModifierKind::modifier: return 12;
          case ModifierKind::tagged: return 14;
          case ModifierKind::plain:
          case ModifierKind::percent: return 10;
          case ModifierKind::plain_or_star: return 12;
          case ModifierKind::real:
          case ModifierKind::impedance: return 8;
          case ModifierKind::mod2: return 4;
          case ModifierKind::text:
          case ModifierKind::quoted: return field.size;
          case ModifierKind::word16:
          case ModifierKind::count16:
          case ModifierKind::special:
          case ModifierKind::mod4:
          case ModifierKind::con: return 2;
          default: return 1;
        }
      };
      for (std::size_t i = 0; i < size_of(one); ++i) {
        ASSERT_LT(one.offset + i, taken.size()) << fsc_name(ordinal);
        EXPECT_FALSE(taken[one.offset + i]) << fsc_name(ordinal) << " byte " << one.offset + i;
        taken[one.offset + i] = true;
      }
    }
  }
}

TEST(ModifierForms, WhatIsNoFieldIsRefusedWithItsPlace) {
  struct Case {
    const char* name;
    Put put;
    std::size_t column;
  };
  const Case cases[] = {
      {"M3458", {16, "LOCK"}, 16},      {"M3458", {22, "10"}, 24},        {"M3458", {37, "1V"}, 37},
      {"MMFC2", {16, "HX256"}, 16},     {"MMFC2", {16, "HX"}, 16},        {"M8901", {37, "12SP"}, 37},
      {"M8901", {37, "0.1SP"}, 37},     {"M437", {37, "F0"}, 37},         {"MDMM3", {37, "0.5"}, 37},
      {"MDMM3", {51, "70000uavg"}, 51}, {"M4418", {37, "no quotes"}, 37}, {"M33220", {66, "SI"}, 66},
      {"MMFC", {37, "%"}, 37},          {"ACMS", {22, "*"}, 22},          {"M8560", {20, "x"}, 20},
  };
  for (const Case& c : cases) {
    const std::string text = line_of(c.name, {c.put});
    compiling::SourceLine line(text);
    FscRecord record = fsc_record_new();
    EXPECT_FALSE(compiling::read_statement(line, record)) << text;
    EXPECT_EQ(line.fault().offset, c.column) << text << "\n" << line.fault().reason;
    EXPECT_FALSE(line.fault().reason.empty());
  }
}

}  // namespace
}  // namespace orvane
