// The value stack of an expression: 15 cells, each a number or a text. A text is borrowed where it stands (in
// the statement, a register, a variable) or belongs to its cell. Numbers cost no allocation, and nothing is
// set up for cells that are never used.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "values/math/function_row.h"

namespace orvane {

class MathStack {
 public:
  static constexpr int limit = 15;

  MathStack() : top_(cells_) {}
  MathStack(const MathStack&) = delete;
  MathStack& operator=(const MathStack&) = delete;

  // False if the stack is full.
  [[nodiscard]] bool push(double number) {
    if (top_ == cells_ + limit) [[unlikely]]
      return false;
    top_->number = number;
    top_->is_text = false;
    ++top_;
    return true;
  }
  [[nodiscard]] bool push_borrowed(std::string_view text) {
    if (top_ == cells_ + limit) return false;
    *top_++ = {0, text.data(), static_cast<std::uint32_t>(text.size()), true, false};
    return true;
  }
  [[nodiscard]] bool push_owned(std::string text) {
    if (top_ == cells_ + limit) return false;
    own(*top_++, std::move(text));
    return true;
  }

  /// The cell behind the latest value; the latest value is end()[-1].
  MathCell* end() { return top_; }
  MathCell& bottom() { return cells_[0]; }
  void pop() { --top_; }
  /// Drops everything from this cell on.
  void pop_to(MathCell* cell) { top_ = cell; }

  /// Makes a number of the cell's text. math_code::none, not_a_number, or fault for one that no double can
  /// hold.
  static int to_number(MathCell& cell);
  /// Makes a text of the cell's number.
  void to_text(MathCell& cell);
  /// Makes every text on the stack the property of its cell, before a function changes what it was borrowed
  /// from.
  void own_borrowed();

 private:
  void own(MathCell& cell, std::string text);

  using OwnedTexts = std::array<std::string, limit>;  // by cell

  MathCell cells_[limit];  // filled as they are pushed
  MathCell* top_;
  std::unique_ptr<OwnedTexts> owned_;  // once there is one
};

}  // namespace orvane
