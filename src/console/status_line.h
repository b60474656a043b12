// The one line on standard error that is redrawn in place: progress and count-downs. Whoever prints clears it first.
#pragma once

#include <string_view>

namespace orvane {

/// Output may be coloured: standard output is a terminal that knows colours and NO_COLOR is not set.
bool terminal_is_coloured();

class StatusLine {
 public:
  /// Without a terminal on standard output and standard error, on one that cannot move its cursor, and with
  /// NO_COLOR nothing is ever drawn.
  StatusLine();

  bool is_live() const { return live_; }
  void draw(std::string_view utf8);
  void clear();

  // A please-wait window has the line for itself; progress stays silent while one is open.
  void hold() { ++holders_; }
  void release() { --holders_; }
  bool is_held() const { return holders_ > 0; }

 private:
  bool live_;
  bool drawn_ = false;
  int holders_ = 0;
};

}  // namespace orvane
