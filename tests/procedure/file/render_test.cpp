#include "procedure/file/render.h"

#include <gtest/gtest.h>

#include "procedure/file/field_text.h"
#include "procedure/file/procedure_bytes.h"
#include "state/run_state.h"
#include "values/units.h"

namespace orvane {
namespace {

FscRecord record(std::uint16_t code, int major = 0, int minor = 0) {
  FscRecord made = test::make_record(code);
  made.set(field::test_major, static_cast<std::int16_t>(major));
  made.set(field::test_minor, static_cast<std::int16_t>(minor));
  return made;
}

template <class F>
FscRecord with(FscRecord made, F change) {
  change(made);
  return made;
}

FscRecord text_record(std::uint16_t code, TextField field, std::string_view text) {
  FscRecord made = record(code, 1, 1);
  EXPECT_TRUE(made.set_text(field, text));
  return made;
}

FscRecord jump(std::uint16_t code, std::string_view text, double tolerance, int condition = 0) {
  FscRecord made = record(code, 1, 1);
  made.set(field::jmp_target_major, 12);
  made.set(field::jmp_target_minor, 3);
  made.set(field::jmp_condition, static_cast<std::uint8_t>(condition));
  EXPECT_TRUE(made.set_text(field::jmp_text, text));
  made.set(field::jmp_tolerance, tolerance);
  return made;
}

struct Case {
  FscRecord record;
  const char* line;
};

void expect_lines(const std::vector<Case>& cases) {
  for (const Case& c : cases) EXPECT_EQ(render_record(c.record), c.line);
}

TEST(Render, TestNumberAndName) {
  FscRecord literal = text_record(fsc::disp, field::text, "literal text of the line");
  literal.set(field::line_flags, line_flag::unused_set);
  FscRecord adjustment = text_record(fsc::disp, field::text, "turn R5");
  adjustment.set(field::line_flags, line_flag::unused_set | line_flag::columns | line_flag::adjustment);
  expect_lines({
      {record(fsc::end, 1, 1), "  1.001  END"},
      {record(fsc::end, 123, 45), "123.045  END"},
      {record(fsc::end, 32767, 32767), "32767.327END"},  // the name stands in its column whatever was there
      {record(fsc::end, 0, 7), "         END"},
      {record(fsc::end, -1, 7), "         END"},
      {record(fsc::i3458, 1, 2), "  1.002  3458"},
      {record(fsc::m3458, 1, 2), "  1.002  M3458"},
      {record(fsc::meme, 0, 0), "         MEME"},
      {record(2048 + 84, 1, 1), "  1.001"},
      {literal, "literal text of the line"},
      {adjustment, "  1.001         DISP  turn R5"},
      {test::comment_record("# comment"), "# comment"},
      {test::comment_record("other kind", 0x0200), "other kind"},
      {test::make_record(0, "plain text"), "plain text"},
      {test::make_record(0, ""), ""},
  });
}

TEST(Render, HeaderLines) {
  FscRecord threshold = test::make_record(header_code::adjustment_threshold);
  threshold.set(field::adjustment_threshold, 70);
  FscRecord tiny = threshold;
  tiny.set(field::adjustment_threshold, 1e-7);
  const auto header = [](int code, const char* text) { return test::make_record(code, text); };
  expect_lines({
      {header(header_code::plain, "Model 1"), "Model 1"},
      {header(header_code::separator, "====="), "====="},
      {header(header_code::step, " STEP    FSC"), " STEP    FSC"},
      {header(header_code::instrument, "DMM"), "INSTRUMENT:            DMM"},
      {header(header_code::date, "2024"), "DATE:                  2024"},
      {header(header_code::author, "A"), "AUTHOR:                A"},
      {header(header_code::revision, "  2"), "REVISION:                2"},
      {threshold, "ADJUSTMENT THRESHOLD:  70%"},
      {tiny, "ADJUSTMENT THRESHOLD:  1e-7%"},
      {header(header_code::number_of_tests, "12"), "NUMBER OF TESTS:       12"},
      {header(header_code::number_of_lines, "345"), "NUMBER OF LINES:       345"},
      {header(header_code::configuration, "HP 3458A"), "CONFIGURATION:         HP 3458A"},
      {header(header_code::standard, "S"), "STANDARD:              S"},
  });
}

TEST(Render, TextStatements) {
  const std::string full(57, 'x');
  for (const std::uint16_t code :
       {fsc::disp, fsc::head, fsc::ieee, fsc::memi, fsc::mem2, fsc::mess,  fsc::opbr,  fsc::pic,
        fsc::port, fsc::rslt, fsc::set,  fsc::dos,  fsc::math, fsc::std,   fsc::reset, fsc::ieee2,
        fsc::scpi, fsc::wait, fsc::visa, fsc::dose, fsc::pice, fsc::endif, fsc::do_,   fsc::call}) {
    const std::string line = render_record(text_record(code, field::text, full));
    EXPECT_EQ(line.size(), 79U) << code << ": a line that fills the last column keeps it";
    EXPECT_EQ(line.substr(22), full) << code;
  }
  for (const std::uint16_t code : {fsc::tol, fsc::fmt, fsc::vset, fsc::tset, fsc::cmp, fsc::label})
    EXPECT_EQ(render_record(text_record(code, field::text_14, "abc")).substr(22), "abc") << code;
  for (const std::uint16_t code : {fsc::if_, fsc::else_, fsc::elseif, fsc::while_, fsc::endw, fsc::until})
    EXPECT_EQ(render_record(text_record(code, field::block_text, "M[1]")).substr(22), "M[1]") << code;
  for (const std::uint16_t code :
       {fsc::pqc1, fsc::rfc1, fsc::n5530, fsc::n5531, fsc::fsmr, fsc::psa, fsc::est1})
    EXPECT_EQ(render_record(text_record(code, field::parameter_text, "A = 1")).substr(22), "A = 1") << code;
  expect_lines({
      {text_record(fsc::disp, field::text, std::string(79, 'y')),
       "  1.001  DISP         yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy"},
      {text_record(fsc::jmpl, field::jmpl_text, "again M[1]"), "  1.001  JMPL         again M[1]"},
      {text_record(fsc::eval, field::text, "-e M[1] : x"), "  1.001  EVAL   -e M[1] : x"},
      {text_record(fsc::end, field::text, "not shown"), "  1.001  END"},
  });
}

TEST(Render, Jumps) {
  expect_lines({
      {jump(fsc::jmp, "", 0), "  1.001  JMP          12.003"},
      {jump(fsc::jmp, "", 0, 1), "  1.001  JMP          12.003         PASS"},
      {jump(fsc::rpt, "", 0, 2), "  1.001  RPT          12.003         FAIL"},
      {jump(fsc::jmpt, "My name", 0), "  1.001  JMPT         12.003         My name"},
      {jump(fsc::jmpf, "", 0), "  1.001  JMPF         12.003"},
      {jump(fsc::jmpz, "M[1]", 0), "  1.001  JMPZ         12.003         M[1]U"},
      {jump(fsc::jmpz, "", 0), "  1.001  JMPZ         12.003"},
      {jump(fsc::jmpz, "", 0.5), "  1.001  JMPZ         12.003         0.5U"},
      {jump(fsc::jmpz, "", 1e-9), "  1.001  JMPZ         12.003         1e-9U"},
  });
}

TEST(Render, RegistersAndOptions) {
  const auto operand = [](double value) {
    return with(record(fsc::mem_plus, 1, 1), [&](FscRecord& r) {
      r.set(field::mem_operand, value);
      r.set(field::mem_present, std::uint8_t{1});
    });
  };
  const auto meme = [](int number, int operation) {
    return with(record(fsc::meme, 1, 1), [&](FscRecord& r) {
      r.set(field::meme_register, static_cast<std::uint8_t>(number));
      r.set(field::meme_operation, static_cast<std::uint8_t>(operation));
    });
  };
  const auto ask = [](std::uint32_t options) {
    return with(record(fsc::ask_plus, 1, 1), [&](FscRecord& r) { r.set(field::ask_options, options); });
  };
  using namespace ask_option;
  expect_lines({
      {record(fsc::mem_minus, 1, 1), "  1.001  MEM-"},
      {operand(-1.5), "  1.001  MEM+         -1.5"},
      {operand(1e20), "  1.001  MEM+         1e20"},
      {meme(7, 0), "  1.001  MEME"},
      {meme(7, 1), "  1.001  MEME                                                     <7"},
      {meme(255, 2), "  1.001  MEME                                                     >255"},
      {ask(0), "  1.001  ASK+"},
      {ask(0x1FFFFF & ~(B | K | F | V)),
       "  1.001  ASK+   R D Q N G            P J S U       M C X Z        A  L  T  W"},
      {ask(B | K | F | V), "  1.001  ASK+           B                                         F        V"},
      {ask(K), "  1.001  ASK+           K"},
  });
}

TEST(Render, SwitchesAndPictures) {
  const auto con = [](int flags, std::initializer_list<int> switches, double number = 0) {
    return with(record(fsc::con, 1, 1), [&](FscRecord& r) {
      r.set(field::con_flags, static_cast<std::uint8_t>(flags));
      r.set(field::con_number, number);
      for (const int one : switches) EXPECT_TRUE(con_set_switch(r, one));
    });
  };
  const FscRecord draw = with(record(fsc::draw, 1, 1), [](FscRecord& r) {
    r.set(field::draw_x, 15);
    r.set(field::draw_y, 7);
    r.set(field::draw_width, 90);
    r.set(field::draw_height, 50);
    r.set(field::draw_style_1, 1);
    r.set(field::draw_style_2, 22);
    r.set(field::draw_style_3, 255);
    r.set(field::draw_style_4, 0);
  });
  const auto rng = [](int flags) {
    return with(record(fsc::rng, 1, 1), [&](FscRecord& r) {
      r.set(field::rng_unit, unit_code::volt);
      r.set(field::rng_prefix, prefix_code::milli);
      r.set(field::rng_flags, static_cast<std::uint8_t>(flags));
      r.set(field::rng_value, 200.0);
    });
  };
  const auto target = [](std::uint32_t options) {
    return with(record(fsc::target, 1, 1), [&](FscRecord& r) { r.set(field::target_options, options); });
  };
  const auto accf = [](std::uint16_t code, const char* file) {
    return with(record(fsc::accf, 1, 1), [&](FscRecord& r) {
      r.set(field::accf_ordinal, static_cast<std::uint16_t>(fsc_ordinal(code)));
      EXPECT_TRUE(r.set_text(field::accf_name, file));
    });
  };
  expect_lines({
      {con(1, {1, 127, 128, 559}), "  1.001  CON          +1,127,128,559"},
      {con(2, {384}), "  1.001  CON          -384"},
      {con(3, {}), "  1.001  CON          ="},
      {con(0, {}), "  1.001  CON"},
      {con(4, {}, 17), "  1.001  CON          17"},
      {draw, "  1.001  DRAW          5  7 80 50                    1 22255  0"},
      {rng(0), "  1.001  RNG          mV"},
      {rng(3), "  1.001  RNG          200mV                        AC"},
      {rng(5), "  1.001  RNG          200mV                                       -D"},
      {target(1), "  1.001  TARGET"},
      {target(2), "  1.001  TARGET       -m"},
      {target(6), "  1.001  TARGET       -m -p"},
      {accf(fsc::i3458, "hp.acc"), "  1.001  ACCF         3458           hp.acc"},
      {accf(fsc::i3458, ""), "  1.001  ACCF         3458           *"},
  });
}

TEST(Render, StandardRecord) {
  FscRecord all = record(fsc::i3458, 1, 1);
  all.set(field::range, {.flags = 3, .digits = 0x30, .value = 10});
  all.set(field::nominal,
          {.unit = unit_code::volt, .prefix = prefix_code::milli, .digits = 0x23, .value = 10});
  ToleranceField tolerance{.count = 2};
  tolerance.terms[0] = {.kind = 3 | 36, .digits_or_index = 0x12, .value = 0.05};
  tolerance.terms[1] = {.kind = 1 | 12 | 128, .digits_or_index = 12};
  all.set(field::tolerance, tolerance);
  all.set(field::mod1, {.unit = unit_code::hertz, .prefix = prefix_code::kilo, .value = 1});
  all.set(field::mod2_code, std::uint16_t{2});
  all.set(field::mod2_value, std::int16_t{600});
  all.set(field::mod3, std::uint8_t{62});
  all.set(field::mod4, mod4_code::c);
  all.set(field::con, std::uint8_t{104});
  FscRecord other = record(fsc::dmm1, 1, 1);
  other.set(field::range, {.flags = 5});
  other.set(field::nominal, {.flags = QuantityField::keep});
  other.set(field::tolerance, {.count = 0, .flags = ToleranceField::latest_tol});
  other.set(field::mod1, {.unit = unit_code::ohm, .flags = ModifierField::from_mem});
  other.set(field::mod2_code, std::uint16_t{29});
  other.set(field::mod4, mod4_code::n);
  FscRecord bad = record(fsc::dmm1, 1, 1);
  bad.set(field::mod2_code, std::uint16_t{99});
  bad.set(field::mod3, std::uint8_t{71});
  bad.set(field::mod4, std::uint8_t{1});
  bad.set(field::con, std::uint8_t{50});
  expect_lines({
      {all, "  1.001  3458   010   10.000mV       0.05% +M12U   1kH            6Z 7E C  3WR"},
      {other, "  1.001  DMM1   A     *              TOL           Z              R1    N"},
      {record(fsc::resf, 1, 1), "  1.001  RESF"},
      {bad, "  1.001  DMM1"},
  });
}

TEST(Render, Comparisons) {
  FscRecord memc = record(fsc::memc, 2, 1);
  memc.set(field::memc_range, {.flags = 3 | RangeField::exponent, .digits = 0x11, .value = 1e5});
  EXPECT_TRUE(memc.set_text(field::memc_nominal, "10.00V"));
  ToleranceField tolerance{.count = 1};
  tolerance.terms[0] = {.kind = 3 | 40, .value = 10};
  memc.set(field::memc_tolerance, tolerance);
  EXPECT_TRUE(memc.set_text(field::memc_modifier, "1kH"));
  FscRecord acc = memc;
  acc.set(field::code, fsc::acc);
  FscRecord memcx = memc;
  memcx.set(field::code, fsc::memcx);
  expect_lines({
      {memc, "  2.001  MEMC   1.0e5 10.00V         10P%          1kH"},
      {memcx, "  2.001  MEMCX  1.0e5 10.00V         10P%          1kH"},
      {acc, "  2.001  ACC    1.0e5 10.00V         10P%"},
  });
}

TEST(Render, NumbersThatAreTooLong) {
  const auto nominal = [](double value, int digits, int flags) {
    return nominal_text({.unit = unit_code::volt_pp,
                         .prefix = prefix_code::micro,
                         .flags = static_cast<std::uint8_t>(flags),
                         .digits = static_cast<std::uint8_t>(digits),
                         .value = value});
  };
  EXPECT_EQ(nominal(0.12345678, 0x18, 0), "0.12345678uVpp") << "14 characters stay";
  EXPECT_EQ(nominal(0.123456789, 0x19, 0), ".123456789uVpp");
  EXPECT_EQ(nominal(1.2345678e12, 0x17, 4), "12345678e5uVpp");
  EXPECT_EQ(nominal(0.1, 0, 0), "0.1uVpp");
  EXPECT_EQ(range_text({.flags = 3, .digits = 0x14, .value = 0.1234}), ".1234");
  EXPECT_EQ(range_text({.flags = 3, .digits = 0, .value = 123456}), "12346e1")
      << "five digits, then made compact";

  ToleranceField tolerance{.count = 3};
  tolerance.terms[0] = {.kind = 1 | 36, .digits_or_index = 0x14, .value = 0.1234};
  tolerance.terms[1] = {.kind = 2 | 24, .digits_or_index = 0x13, .value = 0.123};
  tolerance.terms[2] = {.kind = 3 | 12 | 192, .digits_or_index = 7};
  EXPECT_EQ(tolerance_text(tolerance), "+0.1234% -0.123P/ L7U") << "13 characters of numbers stay";
  tolerance.terms[2].digits_or_index = 17;
  EXPECT_EQ(tolerance_text(tolerance), "+.1234% -.123P/ L17U");
  tolerance.count = 200;
  EXPECT_EQ(tolerance_text(tolerance), "+.1234% -.123P/ L17U") << "a count of a damaged record";
  tolerance = {.count = 2};
  tolerance.terms[0] = {.kind = 128 | 3 | 20};
  tolerance.terms[1] = {.kind = 0, .value = 5};
  EXPECT_EQ(tolerance_text(tolerance), "/ 5");
}

}  // namespace
}  // namespace orvane
