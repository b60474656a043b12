#include "state/fsc_record.h"

namespace orvane {
namespace {

// Stored forms of the blocks: bytes in the order of the members, the value as binary64 without padding.
template <class Block>
Block load_quantity(const std::uint8_t* p) {
  Block block;
  block.unit = p[0];
  block.prefix = p[1];
  block.flags = p[2];
  block.digits = p[3];
  std::memcpy(&block.value, p + 4, sizeof block.value);
  return block;
}

template <class Block>
void store_quantity(std::uint8_t* p, const Block& block) {
  p[0] = block.unit;
  p[1] = block.prefix;
  p[2] = block.flags;
  p[3] = block.digits;
  std::memcpy(p + 4, &block.value, sizeof block.value);
}

constexpr int term_size = 10;

// The five spans of CON's switches: first and last switch, offset of the span's byte 0.
struct SwitchSpan {
  int first;
  int last;
  int offset;
};
constexpr SwitchSpan switch_spans[] = {
    {1, 127, 13}, {128, 255, 38}, {256, 383, 54}, {384, 511, 70}, {512, 559, 86}};

// The byte and the bit of a switch; byte -1 for a number outside the set. A span numbers its bits from its first
// switch, the first span from 0, so that switch 0 is the unused bit of its first byte.
struct SwitchPlace {
  int byte;
  std::uint8_t bit;
};
SwitchPlace switch_place(int number) {
  for (const SwitchSpan& span : switch_spans) {
    if (number >= span.first && number <= span.last) {
      const int n = span.first == 1 ? number : number - span.first;
      return {span.offset + n / 8, static_cast<std::uint8_t>(1U << (n % 8))};
    }
  }
  return {-1, 0};
}

}  // namespace

RangeField FscRecord::get(BlockField<RangeField> field) const {
  const std::uint8_t* p = bytes.data() + field.offset;
  RangeField range{.flags = p[0], .digits = p[1]};
  std::memcpy(&range.value, p + 2, sizeof range.value);
  return range;
}

QuantityField FscRecord::get(BlockField<QuantityField> field) const {
  return load_quantity<QuantityField>(bytes.data() + field.offset);
}

ModifierField FscRecord::get(BlockField<ModifierField> field) const {
  return load_quantity<ModifierField>(bytes.data() + field.offset);
}

ToleranceField FscRecord::get(BlockField<ToleranceField> field) const {
  const std::uint8_t* p = bytes.data() + field.offset;
  ToleranceField tolerance{.count = p[0], .flags = p[1]};
  p += 2;
  for (ToleranceTerm& term : tolerance.terms) {
    term.kind = p[0];
    term.digits_or_index = p[1];
    std::memcpy(&term.value, p + 2, sizeof term.value);
    p += term_size;
  }
  return tolerance;
}

void FscRecord::set(BlockField<RangeField> field, const RangeField& value) {
  std::uint8_t* p = bytes.data() + field.offset;
  p[0] = value.flags;
  p[1] = value.digits;
  std::memcpy(p + 2, &value.value, sizeof value.value);
}

void FscRecord::set(BlockField<QuantityField> field, const QuantityField& value) {
  store_quantity(bytes.data() + field.offset, value);
}

void FscRecord::set(BlockField<ModifierField> field, const ModifierField& value) {
  store_quantity(bytes.data() + field.offset, value);
}

void FscRecord::set(BlockField<ToleranceField> field, const ToleranceField& value) {
  std::uint8_t* p = bytes.data() + field.offset;
  p[0] = value.count;
  p[1] = value.flags;
  p += 2;
  for (const ToleranceTerm& term : value.terms) {
    p[0] = term.kind;
    p[1] = term.digits_or_index;
    std::memcpy(p + 2, &term.value, sizeof term.value);
    p += term_size;
  }
}

FscRecord fsc_record_new() {
  FscRecord record{};
  record.set(field::line_flags, line_flag::unused_set);
  return record;
}

bool con_switch(const FscRecord& record, int number) {
  const SwitchPlace place = switch_place(number);
  return place.byte >= 0 && (record.bytes[static_cast<std::size_t>(place.byte)] & place.bit) != 0;
}

bool con_set_switch(FscRecord& record, int number) {
  const SwitchPlace place = switch_place(number);
  if (place.byte < 0) return false;
  record.bytes[static_cast<std::size_t>(place.byte)] |= place.bit;
  return true;
}

bool is_setup_line(const FscRecord& record) {
  const std::uint8_t mod4 = record.get(field::mod4);
  if (mod4 == mod4_code::n) return true;
  const QuantityField nominal = record.get(field::nominal);
  return mod4 == mod4_code::s && nominal.unit != 0 && (nominal.flags & QuantityField::keep) == 0;
}

bool is_reset_form(const FscRecord& record) {
  return record.has_class(code_class::instrument) &&
         (record.get(field::nominal).flags & QuantityField::keep) != 0;
}

}  // namespace orvane
