#include "values/math/value_stack.h"

#include <cmath>

#include "values/math/literals.h"

namespace orvane {

void MathStack::own(MathCell& cell, std::string text) {
  if (owned_ == nullptr) owned_ = std::make_unique<OwnedTexts>();
  std::string& owned = (*owned_)[static_cast<std::size_t>(&cell - cells_)];
  owned = std::move(text);
  cell = {0, owned.data(), static_cast<std::uint32_t>(owned.size()), true, true};
}

void MathStack::own_borrowed() {
  for (MathCell* cell = cells_; cell != top_; ++cell) {
    if (cell->is_text && !cell->owned && cell->data != nullptr) own(*cell, std::string(cell->text()));
  }
}

int MathStack::to_number(MathCell& cell) {
  double value = 0;
  if (!number_in_text(cell.text(), value)) return math_code::not_a_number;
  if (!std::isfinite(value)) return math_code::fault;
  cell.number = value;
  cell.is_text = false;
  return math_code::none;
}

void MathStack::to_text(MathCell& cell) {
  if (!cell.is_text) own(cell, std::string(NumberText(cell.number).view()));
}

}  // namespace orvane
