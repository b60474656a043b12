// The settings that the program writes back to the startup configuration when the operator changes them. Each
// function checks the value, writes it to the place where its key stands (a new key goes to the section "startup"),
// keeping every other line, and then takes it into startup_config(). A value that is in force already is not written
// again. All return false after a report; a key that could not be written is then as it was, in the file and in
// force. A failing write is message 2242 with key, section and file.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace orvane {

/// The frequency reference's accuracy mode and device; an empty text is written as an empty value.
[[nodiscard]] bool set_freq_ref_acc_mode(std::string_view mode);
[[nodiscard]] bool set_freq_ref_dev_name(std::string_view name);

/// The default serial port: 0 none, 1 to 16 a port of the system, 17 to 20 a pass-through port (message 597).
[[nodiscard]] bool set_port(int port);

/// The procedure folder, UTF-8: a text (509) of a path that exists (511) and is a folder (512).
[[nodiscard]] bool set_procdir(std::string_view folder);

namespace board_type {
// Of the key "ib_type". The two without a token of the key table can be written here but are not taken at a start.
constexpr int none = 0, zt1444 = 1, zt1488 = 2;
}  // namespace board_type

struct BoardSettings {
  int count = 0;  // 0 to 2 (message 590)
  int type = 0;   // a type that is known (591), and one when there are boards (592)
  /// 256 to 61440 (593, 594), 0 for none: the first is needed by one board (595), both by two (596).
  std::array<std::uint32_t, 2> address{};
};
/// Count, type and addresses of the IEEE-488 boards.
[[nodiscard]] bool set_boards(const BoardSettings& boards);

}  // namespace orvane
