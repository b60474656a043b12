#include "procedure/run/capture.h"

#include "values/numbers.h"
#include "values/units.h"

namespace orvane {
namespace {

void fill(QuantitySlot& slot, std::uint8_t digits, bool exponent, double value, std::uint8_t unit,
          std::uint8_t prefix) {
  slot = QuantitySlot();
  slot.flags = QuantitySlot::filled | QuantitySlot::value_given;
  if (exponent) slot.flags |= QuantitySlot::exponent;
  slot.digits = digits;
  slot.value = value;
  slot.unit = unit;
  slot.prefix = prefix;
}

// A text without a number leaves the slot with its unit alone.
void fill_from_text(QuantitySlot& slot, std::string_view text) {
  slot = QuantitySlot();
  if (text.empty()) return;
  slot.flags = QuantitySlot::filled;
  DimValue dim;
  if (!dim_parse_listing(text, dim)) return;
  if ((dim.flags & DimValue::number) != 0) slot.flags |= QuantitySlot::value_given;
  if ((dim.flags & DimValue::exponent) != 0) slot.flags |= QuantitySlot::exponent;
  slot.digits = dim.digits;
  slot.value = dim.value;
  slot.unit = dim.unit;
  slot.prefix = dim.prefix;
  slot.unit_text = dim.unit_text;
}

void capture_acc(RunState& run, const FscRecord& record) {
  QuantitySlot& slot = run.slots.text_nominal;
  fill_from_text(slot, record.text(field::memc_nominal));
  if ((slot.flags & QuantitySlot::value_given) == 0) {
    slot.flags |= QuantitySlot::filled | QuantitySlot::value_given;
    slot.value = run.registers.mem;
  }
  run.slots.any = true;
}

void capture_memc(RunState& run, const FscRecord& record) {
  fill_from_text(run.slots.text_nominal, record.text(field::memc_nominal));
  fill_from_text(run.slots.text_modifier, record.text(field::memc_modifier));
  if (record.code() == fsc::memcx) {
    run.slots.text_nominal.flags |= QuantitySlot::extended;
    run.slots.text_modifier.flags |= QuantitySlot::extended;
  }
  run.slots.any = true;
}

void capture_setup_line(RunState& run, const FscRecord& record) {
  if (!is_setup_line(record)) return;
  const QuantityField nominal = record.get(field::nominal);
  const ModifierField mod1 = record.get(field::mod1);
  const double mem = run.registers.mem;
  fill(run.slots.nominal, nominal.digits, (nominal.flags & QuantityField::exponent) != 0,
       (nominal.flags & QuantityField::from_mem) != 0 ? mem : nominal.value, nominal.unit, nominal.prefix);
  if (mod1.unit != 0) {
    fill(run.slots.modifier, mod1.digits, (mod1.flags & ModifierField::exponent) != 0,
         (mod1.flags & ModifierField::from_mem) != 0 ? mem : mod1.value, mod1.unit, mod1.prefix);
  }
  run.slots.any = true;
}

}  // namespace

void capture_quantities(RunState& run, const FscRecord& record, Capture kind) {
  switch (kind) {
    case Capture::none: break;
    case Capture::acc: capture_acc(run, record); break;
    case Capture::memc: capture_memc(run, record); break;
    case Capture::standard: capture_setup_line(run, record); break;
  }
}

void release_quantities(RunState& run) { run.slots = QuantitySlots(); }

}  // namespace orvane
