#include "config/config_writers.h"

#include <string>
#include <vector>

#include "config/config_parts.h"
#include "config/profile.h"
#include "config/value_grammar.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view startup_section = "startup";
constexpr int last_port = 20;
constexpr std::uint32_t lowest_address = 0x100, highest_address = 0xF000;

const KeyRow& row_of(std::string_view key) {
  return config_keys()[static_cast<std::size_t>(find_config_key(key))];
}

// Writes a value that has been checked and takes it over.
bool write_key(std::string_view key, std::string_view value) {
  const std::string section = profile_section_of(config_path(), key).value_or(std::string(startup_section));
  if (!profile_put(config_path(), section, key, value)) return false;
  note_written_key(key, utf8_from_cp1252(value));
  return true;
}

// The token that the grammar of a key gives for a number; empty if there is none.
std::string token_of(std::string_view grammar, int number) {
  for (std::size_t at = 0; at < grammar.size();) {
    const std::size_t end = std::min(grammar.find(',', at), grammar.size());
    const std::string_view one = trim(grammar.substr(at, end - at));
    const std::size_t colon = one.rfind(':');
    if (colon != std::string_view::npos && short_number(one.substr(colon + 1)) == number)
      return std::string(one.substr(0, colon));
    at = end + 1;
  }
  return {};
}

std::string type_token(int type) {
  if (type == board_type::zt1444) return "ZT1444";
  if (type == board_type::zt1488) return "ZT1488";
  return token_of(row_of("ib_type").grammar, type);
}

bool is_address(std::uint32_t address) {
  return address == 0 || (address >= lowest_address && address <= highest_address);
}

bool boards_are_sound(const BoardSettings& boards) {
  const auto [first, second] = boards.address;
  if (boards.count < 0 || boards.count > 2) return errp(590, boards.count);
  if (type_token(boards.type).empty()) return errp(591, boards.type);
  if (boards.count > 0 && boards.type == board_type::none) return errp(592, boards.count);
  if (!is_address(first)) return errp(593, first);
  if (!is_address(second)) return errp(594, second);
  if (boards.count == 1 && first == 0) return errp(595);
  return boards.count < 2 || (first != 0 && second != 0) || errp(596);
}

std::string address_text(const BoardSettings& boards) {
  const auto [first, second] = boards.address;
  if (boards.count == 0 || first == 0) return "none";
  return boards.count == 1 ? formatted("%x", first) : formatted("%x, %x", first, second);
}

}  // namespace

bool set_freq_ref_acc_mode(std::string_view mode) { return write_key("FreqRefAccMode", mode); }
bool set_freq_ref_dev_name(std::string_view name) { return write_key("FreqRefDevName", name); }

bool set_port(int port) {
  if (port < 0 || port > last_port) return errp(597, port);
  return write_key("port", token_of(row_of("port").grammar, port));
}

bool set_procdir(std::string_view folder) {
  const std::string path(folder);
  if (path.empty()) return errp(509);
  const std::string shown = cp1252_from_either(path);
  if (!file_exists(path)) return errp(511, shown);
  return is_directory(path) ? write_key("procdir", shown) : errp(512, shown);
}

bool set_boards(const BoardSettings& boards) {
  if (!boards_are_sound(boards) || !write_key("ib_nport", std::to_string(boards.count)) ||
      !write_key("ib_type", type_token(boards.type)) || !write_key("ib_ioaddr", address_text(boards)))
    return false;
  startup_config().ib_type = static_cast<std::int16_t>(boards.type);
  return true;
}

}  // namespace orvane
