// The statement record: 92 bytes, little-endian, byte for byte as in a compiled procedure file.
//
//   0 code  2 test_major  4 test_minor  6 line_flags  8 source line  10 listing_before  11 -  12 payload (80 bytes)
//
// Payloads depend on the code. This header names the fields of each once, under `field`; loader, renderer, compiler
// and statements use these names and no offset stands anywhere else. Values are copied in and out with memcpy, so
// that a record may lie at any address. Texts are NUL-terminated in their span, Windows-1252.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "state/fsc_codes.h"

namespace orvane {

static_assert(std::endian::native == std::endian::little, "records are read as they stand in the file");

/// A value of type T at `offset` of a record.
template <class T>
struct Field {
  static_assert(std::is_arithmetic_v<T>);
  std::uint16_t offset;
};

/// A text in `size` bytes at `offset`, ended by a NUL or by the end of the span.
struct TextField {
  std::uint16_t offset;
  std::uint16_t size;
};

/// A block of fields that recurs in payloads: RangeField and its kin below.
template <class Block>
struct BlockField {
  std::uint16_t offset;
};

/// Automatic, numeric or empty range. 10 bytes.
struct RangeField {
  static constexpr std::uint8_t filled = 0x01, number = 0x02, automatic = 0x04, exponent = 0x08;
  static constexpr int stored_size = 10;
  std::uint8_t flags = 0;
  std::uint8_t digits = 0;  // as typed: high nibble integer digits, low nibble fraction digits; 0 free format
  double value = 0;
};

/// A quantity as typed (10 mV is value 10, prefix milli, unit volt). 12 bytes.
struct QuantityField {
  static constexpr std::uint8_t keep = 0x01;      // written "*": keep what the instrument has
  static constexpr std::uint8_t from_mem = 0x02;  // no number: the value is MEM at run time
  static constexpr std::uint8_t exponent = 0x04;
  static constexpr int stored_size = 12;
  std::uint8_t unit = 0;
  std::uint8_t prefix = 0;
  std::uint8_t flags = 0;
  std::uint8_t digits = 0;
  double value = 0;
};

/// The second quantity of a statement: as QuantityField, with flags of its own; unit 0 means that it is empty.
struct ModifierField {
  static constexpr std::uint8_t from_mem = 0x01, exponent = 0x08;
  static constexpr int stored_size = 12;
  std::uint8_t unit = 0;
  std::uint8_t prefix = 0;
  std::uint8_t flags = 0;
  std::uint8_t digits = 0;
  double value = 0;
};

/// One term of a tolerance.
struct ToleranceTerm {
  // bits 0-1: which side the term adds to
  static constexpr std::uint8_t side_mask = 0x03, upper = 1, lower = 2, both = 3;
  // bits 2-3: what the number is
  static constexpr std::uint8_t form_mask = 0x0C, percent = 4, parts_per_million = 8, unit = 12;
  // bits 4-5: what a relative term refers to
  static constexpr std::uint8_t reference_mask = 0x30, of_range = 16, of_reference = 32;
  // bits 6-7: where the value stands
  static constexpr std::uint8_t source_mask = 0xC0, number = 0, number_exponent = 64, memory = 128,
                                location = 192;

  std::uint8_t kind = 0;
  std::uint8_t digits_or_index = 0;  // digits byte of a number, index of a register
  double value = 0;
};

/// Up to three tolerance terms. 32 bytes.
struct ToleranceField {
  static constexpr std::uint8_t latest_tol = 0x01;  // written "TOL": the terms of the latest TOL statement
  static constexpr int max_terms = 3;
  static constexpr int stored_size = 32;
  std::uint8_t count = 0;
  std::uint8_t flags = 0;
  std::array<ToleranceTerm, max_terms> terms{};
};

struct FscRecord {
  static constexpr int size = 92;
  static constexpr int payload_offset = 12;

  std::array<std::uint8_t, size> bytes;

  template <class T>
  T get(Field<T> field) const {
    T value;
    std::memcpy(&value, bytes.data() + field.offset, sizeof value);
    return value;
  }
  template <class T>
  void set(Field<T> field, std::type_identity_t<T> value) {
    std::memcpy(bytes.data() + field.offset, &value, sizeof value);
  }

  /// The text up to its NUL or the end of its span.
  std::string_view text(TextField field) const {
    const char* begin = reinterpret_cast<const char*>(bytes.data()) + field.offset;
    const void* end = std::memchr(begin, 0, field.size);
    return {begin,
            end != nullptr ? static_cast<std::size_t>(static_cast<const char*>(end) - begin) : field.size};
  }
  /// Stores a text and clears the rest of the span. False, with nothing stored, if it does not fit with its NUL.
  [[nodiscard]] bool set_text(TextField field, std::string_view value) {
    if (value.size() >= field.size) return false;
    std::memset(bytes.data() + field.offset, 0, field.size);
    if (!value.empty()) std::memcpy(bytes.data() + field.offset, value.data(), value.size());
    return true;
  }

  RangeField get(BlockField<RangeField> field) const;
  QuantityField get(BlockField<QuantityField> field) const;
  ModifierField get(BlockField<ModifierField> field) const;
  ToleranceField get(BlockField<ToleranceField> field) const;
  void set(BlockField<RangeField> field, const RangeField& value);
  void set(BlockField<QuantityField> field, const QuantityField& value);
  void set(BlockField<ModifierField> field, const ModifierField& value);
  void set(BlockField<ToleranceField> field, const ToleranceField& value);

  std::uint16_t code() const { return get(Field<std::uint16_t>{0}); }
  std::int16_t test_major() const { return get(Field<std::int16_t>{2}); }
  std::int16_t test_minor() const { return get(Field<std::int16_t>{4}); }
  std::uint16_t line_flags() const { return get(Field<std::uint16_t>{6}); }
  bool has_flag(std::uint16_t bits) const { return (line_flags() & bits) != 0; }
  bool has_class(std::uint16_t bits) const { return (code() & bits) != 0; }
};
static_assert(sizeof(FscRecord) == FscRecord::size);
static_assert(std::is_trivially_copyable_v<FscRecord>);

namespace line_flag {
constexpr std::uint16_t unused_set = 0x1001;      // set on every record made in memory
constexpr std::uint16_t columns = 0x0002;         // the columns are parsed fields, not literal text
constexpr std::uint16_t adjustment = 0x0008;      // belongs to an adjustment block
constexpr std::uint16_t first = 0x0010;           // first record of a statement
constexpr std::uint16_t last = 0x0020;            // last record of a statement
constexpr std::uint16_t result = 0x0040;          // yields a test result
constexpr std::uint16_t adjust_follows = 0x0100;  // an adjustment block follows this test
constexpr std::uint16_t continues = 0x0200;  // continues the statement above though it bears the same FSC
constexpr std::uint16_t warn_400 = 0x0400;   // reports on this record are warnings (also bit 0x0800)
constexpr std::uint16_t first_after_header = 0x0800;
}  // namespace line_flag

namespace field {
// Head of every record.
constexpr Field<std::uint16_t> code{0};
constexpr Field<std::int16_t> test_major{2};
constexpr Field<std::int16_t> test_minor{4};
constexpr Field<std::uint16_t> line_flags{6};
constexpr Field<std::uint16_t> source_line{8};
constexpr Field<std::uint8_t> listing_before{10};

// Text payloads. A listing record and a record without parsed columns hold the whole line.
constexpr TextField text{12, 80};     // DISP and the others of its family, EVAL, CALL, DO, END, header lines
constexpr TextField text_14{14, 78};  // TOL, FMT, VSET, TSET, CMP, LABEL
constexpr Field<std::uint16_t> text_kind{12};      // FMT, VSET: the text's kind
constexpr Field<double> adjustment_threshold{12};  // header line 1033, percent

// Standard instrument record.
constexpr BlockField<RangeField> range{12};
constexpr BlockField<QuantityField> nominal{22};
constexpr BlockField<ToleranceField> tolerance{34};
constexpr BlockField<ModifierField> mod1{66};
constexpr Field<std::uint16_t> mod2_code{78};
constexpr Field<std::int16_t> mod2_value{80};  // for code 2 the impedance in ohms
constexpr Field<std::uint8_t> mod3{82};
constexpr Field<std::uint8_t> mod4{83};
constexpr Field<std::uint8_t> con{84};

// Branching statements. The link is kept beside the record.
constexpr Field<std::int16_t> jmp_target_major{12};
constexpr Field<std::int16_t> jmp_target_minor{14};
constexpr Field<std::int16_t> jmp_target_index{16};
constexpr Field<std::uint32_t> jmp_link{18};
constexpr Field<std::uint8_t> jmp_condition{22};  // 0 always, 1 "PASS", 2 "FAIL"
constexpr TextField jmp_text{23, 43};       // a procedure's name (JMPF, JMPT), a tolerance expression (JMPZ)
constexpr Field<double> jmp_tolerance{66};  // 0 none
constexpr Field<std::int16_t> jmpl_target_index{12};
constexpr Field<std::uint32_t> jmpl_link{14};
constexpr TextField jmpl_text{18, 74};                 // label, blanks, optional expression
constexpr Field<std::int16_t> block_target_index{14};  // IF, ELSE, ELSEIF, WHILE, ENDW, UNTIL
constexpr Field<std::uint32_t> block_link{16};
constexpr TextField block_text{20, 72};  // the condition

constexpr Field<std::uint32_t> target_options{12};  // TARGET, see target_option
constexpr Field<std::uint32_t> ask_options{12};     // ASK+, ASK-

// DRAW: position and size are stored with 10 added to x and width.
constexpr Field<std::uint8_t> draw_x{12}, draw_y{13}, draw_width{14}, draw_height{15};
constexpr Field<std::uint8_t> draw_style_1{16}, draw_style_2{17}, draw_style_3{18}, draw_style_4{19};

// RNG
constexpr Field<std::uint8_t> rng_unit{12}, rng_prefix{13}, rng_flags{14};
constexpr Field<double> rng_value{16};

// MEM+ MEM- MEM* MEM/ and MEME
constexpr Field<double> mem_operand{12};
constexpr Field<std::uint8_t> mem_present{20};
constexpr Field<std::uint8_t> meme_register{21};
constexpr Field<std::uint8_t> meme_operation{22};  // 1 load ("<"), 2 store (">"), 0 exchange MEM and MEM1

// ACC, MEMC, MEMCX
constexpr BlockField<RangeField> memc_range{12};
constexpr TextField memc_nominal{22, 16};  // ACC: the nominal's unit text
constexpr BlockField<ToleranceField> memc_tolerance{38};
constexpr TextField memc_modifier{70, 16};

// ACCF
constexpr Field<std::uint16_t> accf_ordinal{14};
constexpr TextField accf_name{16, 76};  // empty for "*"

// CON: one number, or a set of switches. The 560 switches lie in five spans, see con_switch().
constexpr Field<std::uint8_t> con_flags{12};
constexpr Field<double> con_number{30};

// Statements with parameters by name: head at 12, text behind it.
constexpr TextField parameter_text{34, 58};
}  // namespace field

namespace target_option {
constexpr std::uint32_t none = 0x01, m = 0x02, p = 0x04;
}
namespace rng_flag {
constexpr std::uint8_t value = 0x01, ac = 0x02, minus_d = 0x04;
}
namespace con_flag {
constexpr std::uint8_t plus = 0x01, minus = 0x02, number = 0x04;
}
namespace meme_operation {
constexpr std::uint8_t exchange = 0, load = 1, store = 2;
}
namespace jump_condition {
constexpr std::uint8_t always = 0, pass = 1, fail = 2;
}
/// DRAW stores x and width with this added.
constexpr int draw_offset = 10;
namespace mod4_code {
constexpr std::uint8_t none = 0, s = 2, n = 3, c = 4;
}

/// The switches of CON are numbered 1 to 559.
constexpr int con_switch_limit = 559;
/// Is switch `number` set in this record? False for a number outside 1 to 559.
bool con_switch(const FscRecord& record, int number);
/// Sets switch `number`. False if the number is outside 1 to 559.
[[nodiscard]] bool con_set_switch(FscRecord& record, int number);

/// A record as the system makes it: all bytes zero, line_flags 0x1001.
FscRecord fsc_record_new();

/// Where a branching statement keeps the index of its target line. Meaningful with code_class::branching.
constexpr Field<std::int16_t> branch_index_field(std::uint16_t code) {
  switch (code) {
    case fsc::jmpl: return field::jmpl_target_index;
    case fsc::if_:
    case fsc::else_:
    case fsc::elseif:
    case fsc::while_:
    case fsc::endw:
    case fsc::until: return field::block_target_index;
    default: return field::jmp_target_index;
  }
}

/// True for a set-up line of the standard layout: it establishes a value but yields no result of its own.
bool is_setup_line(const FscRecord& record);

/// True for an instrument statement with a NOMINAL of "*": it takes the instrument to its start state and yields no
/// result.
bool is_reset_form(const FscRecord& record);

}  // namespace orvane
