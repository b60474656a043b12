// Lines of a text that is in memory, as configuration, accuracy and correction files are read: tabs go to the
// next column of 8, CR and trailing blanks are dropped, a byte order mark at the start is none of the text.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvane {

class LineReader {
 public:
  enum class Result { line, too_long, end };
  enum class Skip {
    nothing,
    blank_and_comments
  };  // comments: the first character that is no blank is "#" or ";"

  /// `text` must live as long as the reader. A line may have `limit` characters, tabs expanded.
  LineReader(std::string_view text, std::size_t limit, Skip skip);

  /// The next line. One that is too long comes cut at the limit; the line after it is the next.
  Result next(std::string& line);
  /// The number of the line that came last, from 1, skipped ones counted.
  int number() const { return number_; }

 private:
  std::string_view rest_;
  std::size_t limit_;
  Skip skip_;
  int number_ = 0;
};

}  // namespace orvane
