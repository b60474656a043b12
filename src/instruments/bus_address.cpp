#include "instruments/bus_address.h"

#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

bool begins_with_digit(std::string_view text) {
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

// "COM" and a number that no port has is a slip of the pen, not an alias.
bool looks_like_port(std::string_view text) {
  if (text.size() < 4) return false;
  for (std::size_t i = 0; i < 3; ++i) {
    if ((text[i] | 0x20) != "com"[i]) return false;
  }
  return begins_with_digit(text.substr(3));
}

int alias_address(std::string_view alias, AddressKind kind, DevAddress& address) {
  const auto found = dev_by_alias(alias);
  if (!found) return 2929;
  if (kind == AddressKind::bus && found->interface != DeviceInterface::ieee488) return 2932;
  if (kind == AddressKind::port && found->interface != DeviceInterface::serial) return 2933;
  address = *found;
  return 0;
}

}  // namespace

int parse_bus_number(std::string_view text, BusAddress& address) {
  const std::size_t colon = text.find(':');
  const auto number = element_number(text.substr(0, colon), 0, board_1_base + BusAddress::highest_primary);
  if (!number) return 1903;
  const std::uint32_t primary = *number >= board_1_base ? *number - board_1_base : *number;
  if (primary > BusAddress::highest_primary) return 1904;
  BusAddress parsed;
  parsed.flags = BusAddress::board_valid | BusAddress::primary_valid;
  parsed.board = *number >= board_1_base ? 1 : 0;
  parsed.primary = static_cast<std::uint8_t>(primary);
  if (colon != std::string_view::npos) {
    const auto secondary = element_number(text.substr(colon + 1), 0, BusAddress::highest_secondary);
    if (!secondary) return 1905;
    parsed.flags |= BusAddress::secondary_valid;
    parsed.secondary = static_cast<std::uint8_t>(*secondary);
  }
  address = parsed;
  return 0;
}

int parse_address(std::string_view text, AddressKind kind, DevAddress& address) {
  if (kind != AddressKind::bus) {
    if (const std::uint16_t port = port_number(text); port != 0) {
      address = {DeviceInterface::serial, {}, port};
      return 0;
    }
    if (looks_like_port(text)) return 220;
  }
  if (kind != AddressKind::port && (text.empty() || begins_with_digit(text))) {
    DevAddress parsed{DeviceInterface::ieee488, {}, 0};
    const int wrong = parse_bus_number(text, parsed.bus);
    if (wrong == 0) address = parsed;
    return wrong;
  }
  return alias_address(text, kind, address);
}

bool for_each_address(std::string_view text, const std::function<bool(std::string_view)>& found) {
  return for_each_element(text, [&](std::string_view content) {
    const ElementParts parts = element_parts(content);
    return parts.word != "@" || found(parts.argument);
  });
}

}  // namespace orvane
