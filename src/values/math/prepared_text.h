// A text as the evaluator takes it: without the blanks and tabs outside its quotes, cut at ";" into
// statements that end with a NUL each. A backslash inside quotes keeps the character behind it from being the
// closing quote.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "state/fsc_record.h"

namespace orvane {

class PreparedText {
 public:
  static constexpr std::size_t limit = 80;  // a record's text; what is longer is cut here

  /// A text of the record that is one statement without blanks and quotes, as most are, is used where it
  /// stands; any other is copied. It ends at its size or at a NUL.
  PreparedText(const FscRecord& record, std::string_view text);

  /// The first statement; empty if there is none.
  std::string_view first() const { return plain_ ? text_ : behind(0); }
  /// The one behind `statement`; empty at the end.
  std::string_view next(std::string_view statement) const {
    if (plain_) return {};
    return behind(static_cast<std::size_t>(statement.data() - buffer_.data()) + statement.size());
  }

 private:
  bool take_in_place(const FscRecord& record, std::string_view text);
  void copy(std::string_view text);
  std::string_view behind(std::size_t position) const;

  std::string_view text_;
  bool plain_;
  std::size_t size_ = 0;                // of what is in the buffer
  std::array<char, limit + 1> buffer_;  // not filled before it is used: this is made for every statement
};

}  // namespace orvane
