#include "instruments/bench_file.h"

#include <algorithm>

#include "config/line_reader.h"
#include "config/value_grammar.h"
#include "instruments/bus_address.h"
#include "instruments/instrument_names.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 1 << 20;
constexpr int options_limit = 16;

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_word(char c) { return is_digit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }

// One line, taken apart from both ends: asset, aliases, options, and the name that remains.
struct Entry {
  std::string_view name;
  bool quoted = false;
  std::uint16_t options = 0;
  std::array<std::string, 2> aliases;
  std::string asset;
};

class Reader {
 public:
  Reader(std::string file, DeviceList& list, std::vector<BenchFault>& faults)
      : file_(std::move(file)), list_(list), faults_(faults) {}

  void line(std::string_view text, int number) {
    number_ = number;
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) return fault(30420, msg(30420, file_, number));
    const bool indented = text.front() == ' ' || text.front() == '\t';
    const std::string_view place = trim(text.substr(0, colon));
    Entry entry;
    if (!take_apart(trim(text.substr(colon + 1)), entry)) return;
    if (indented) return slot(place, entry);
    if (place.empty()) return manual(entry);
    DevAddress address;
    if (!read_place(place, address)) return fault(30421, msg(30421, file_, number, place));
    if (entry.quoted) {
      generic(address, entry);
    } else {
      instrument(address, entry);
    }
  }

 private:
  void fault(int number, std::string text) { faults_.push_back({number, std::move(text)}); }
  bool refuse(int number, std::string text) {
    fault(number, std::move(text));
    return false;
  }

  static bool read_place(std::string_view text, DevAddress& address) {
    address.port = port_number(text);
    if (address.port != 0) {
      address.interface = DeviceInterface::serial;
      return true;
    }
    address.interface = DeviceInterface::ieee488;
    return parse_bus_number(text, address.bus) == 0 && address.bus.primary != 0;
  }

  bool take_apart(std::string_view text, Entry& entry) {
    if (text.ends_with('}')) {
      const std::size_t begin = text.find('{');
      if (begin == std::string_view::npos) return refuse(30422, msg(30422, file_, number_));
      entry.asset = trim(text.substr(begin + 1, text.size() - begin - 2));
      if (entry.asset.size() > device_limit::asset)
        return refuse(30437, msg(30437, file_, number_, entry.asset, device_limit::asset));
      text = trim(text.substr(0, begin));
    }
    if (text.starts_with('"')) return quoted_name(text, entry);
    if (!take_aliases(text, entry) || !take_options(text, entry)) return false;
    entry.name = trim(text);
    return !entry.name.empty() || refuse(30423, msg(30423, file_, number_));
  }

  bool quoted_name(std::string_view text, Entry& entry) {
    const std::size_t end = text.find('"', 1);
    if (end == std::string_view::npos) return refuse(30422, msg(30422, file_, number_));
    entry.quoted = true;
    entry.name = trim(text.substr(1, end - 1));
    std::string_view rest = trim(text.substr(end + 1));
    if (!take_aliases(rest, entry)) return false;
    if (!rest.empty()) return refuse(30424, msg(30424, file_, number_, rest));
    return !entry.name.empty() || refuse(30423, msg(30423, file_, number_));
  }

  bool take_aliases(std::string_view& text, Entry& entry) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string_view::npos) return true;
    std::string_view rest = trim(text.substr(equals + 1));
    text = trim(text.substr(0, equals));
    for (std::size_t i = 0;; ++i) {
      const std::size_t comma = rest.find(',');
      const std::string_view one = trim(rest.substr(0, comma));
      if (i == entry.aliases.size() || !is_alias(one)) return refuse(30425, msg(30425, file_, number_, one));
      entry.aliases[i] = one;
      if (comma == std::string_view::npos) return true;
      rest.remove_prefix(comma + 1);
    }
  }

  // From the end: "/2/3". A name may hold a "/" that no number follows.
  bool take_options(std::string_view& text, Entry& entry) {
    for (;;) {
      const std::size_t slash = text.rfind('/');
      if (slash == std::string_view::npos) return true;
      const auto option = short_number(trim(text.substr(slash + 1)));
      if (!option) return true;
      if (*option < 1 || *option > options_limit)
        return refuse(30426, msg(30426, file_, number_, *option, options_limit));
      entry.options = static_cast<std::uint16_t>(entry.options | 1U << (*option - 1));
      text = trim(text.substr(0, slash));
    }
  }

  std::uint16_t code_of(std::string_view name) {
    if (name.starts_with('#')) {
      const auto number = short_number(name.substr(1));
      if (number && *number >= 1 && *number <= highest_instrument_code)
        return static_cast<std::uint16_t>(*number);
    }
    if (const std::uint16_t code = instrument_code(name); code != 0) return code;
    fault(30436, msg(30436, file_, number_, name));
    return 0;
  }

  bool aliases_are_new(const Entry& entry) {
    for (const std::string& alias : entry.aliases) {
      if (alias.empty()) continue;
      if (std::find_if(aliases_.begin(), aliases_.end(),
                       [&](const std::string& one) { return same_word(one, alias); }) != aliases_.end())
        return refuse(30427, msg(30427, file_, number_, alias));
      aliases_.push_back(alias);
    }
    return true;
  }

  bool asset_is_new(const Entry& entry) {
    if (entry.asset.empty()) return true;
    if (std::find(assets_.begin(), assets_.end(), entry.asset) != assets_.end())
      return refuse(30428, msg(30428, file_, number_, entry.asset));
    assets_.push_back(entry.asset);
    return true;
  }

  void instrument(const DevAddress& address, const Entry& entry) {
    host_ = false;
    const std::uint16_t code = code_of(entry.name);
    if (code == 0 || !aliases_are_new(entry) || !asset_is_new(entry)) return;
    const bool twice = std::any_of(list_.instruments.begin(), list_.instruments.end(),
                                   [&](const InstrumentRecord& row) { return row.code == code; });
    if (twice) return fault(2907, msg(2907, file_, number_, entry.name));
    if (list_.instruments.size() == device_limit::rows)
      return fault(2911, msg(2911, file_, number_, device_limit::rows));
    host_ = true;
    list_.instruments.push_back({.address = address,
                                 .code = code,
                                 .options = entry.options,
                                 .flags = 0,
                                 .asset = entry.asset,
                                 .slots = {},
                                 .aliases = entry.aliases,
                                 .line = number_});
  }

  void slot(std::string_view place, const Entry& entry) {
    if (!host_) return fault(30429, msg(30429, file_, number_));
    const auto number = place.empty() ? std::optional<int>(0) : short_number(place);
    if (!number || *number < 0) return fault(30430, msg(30430, file_, number_, place));
    const std::uint16_t code = code_of(entry.name);
    if (code == 0 || !asset_is_new(entry)) return;
    if (!entry.aliases[0].empty()) return fault(30431, msg(30431, file_, number_));
    std::vector<InstrumentSlot>& slots = list_.instruments.back().slots;
    if (slots.size() == device_limit::slots)
      return fault(2919, msg(2919, file_, number_, instrument_name(list_.instruments.back().code),
                             device_limit::slots));
    const bool taken =
        *number != 0 && std::any_of(slots.begin(), slots.end(),
                                    [&](const InstrumentSlot& one) { return one.number == *number; });
    if (taken) return fault(30432, msg(30432, file_, number_, *number));
    slots.push_back({.number = static_cast<std::uint16_t>(*number),
                     .code = code,
                     .options = entry.options,
                     .flags = 0,
                     .asset = entry.asset,
                     .line = number_});
  }

  bool name_fits(const Entry& entry) {
    return entry.name.size() <= device_limit::name ||
           refuse(30433, msg(30433, file_, number_, entry.name, device_limit::name));
  }

  void generic(const DevAddress& address, const Entry& entry) {
    host_ = false;
    if (!name_fits(entry) || !aliases_are_new(entry) || !asset_is_new(entry)) return;
    list_.generic.push_back({.name = std::string(entry.name),
                             .address = address,
                             .flags = 0,
                             .aliases = entry.aliases,
                             .asset = entry.asset,
                             .line = number_});
  }

  void manual(const Entry& entry) {
    host_ = false;
    if (!entry.aliases[0].empty()) return fault(30431, msg(30431, file_, number_));
    if (!name_fits(entry) || !asset_is_new(entry)) return;
    list_.manual.push_back(
        {.name = std::string(entry.name), .flags = 0, .asset = entry.asset, .line = number_});
  }

  const std::string file_;
  DeviceList& list_;
  std::vector<BenchFault>& faults_;
  std::vector<std::string> aliases_, assets_;
  int number_ = 0;
  bool host_ = false;  // the line above was an instrument or one of its slots
};

}  // namespace

bool is_alias(std::string_view text) {
  if (text.empty() || text.size() > device_limit::alias || !std::all_of(text.begin(), text.end(), is_word))
    return false;
  if (port_number(text) != 0) return false;
  if (!std::all_of(text.begin(), text.end(), is_digit)) return true;
  const int number = short_number(text).value_or(0);
  return !(text.size() == 1 || (text.size() == 2 && number <= 30) ||
           (text.size() == 3 && number >= 100 && number <= 130));
}

bool bench_file_read(const std::string& path, DeviceList& list, std::vector<BenchFault>& faults) {
  const std::string file = cp1252_from_either(path);
  const std::size_t before = faults.size();
  list = DeviceList();
  std::string text;
  if (read_file(path, file_limit, text) != ReadResult::ok) {
    faults.push_back({30434, msg(30434, file, file_limit)});
    return false;
  }
  Reader reader(file, list, faults);
  LineReader lines(text, device_limit::line, LineReader::Skip::blank_and_comments);
  std::string line;
  for (;;) {
    switch (lines.next(line)) {
      case LineReader::Result::line: reader.line(cp1252_from_either(line), lines.number()); break;
      case LineReader::Result::too_long:
        faults.push_back({30435, msg(30435, file, lines.number(), device_limit::line)});
        break;
      case LineReader::Result::end: check_bench(list, file, faults); return faults.size() == before;
    }
  }
}

}  // namespace orvane
