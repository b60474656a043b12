#include "instruments/inventory.h"

#include <charconv>
#include <cmath>
#include <map>
#include <vector>

#include "config/line_reader.h"
#include "config/startup_config.h"
#include "config/value_grammar.h"
#include "state/report.h"
#include "values/accuracy/accuracy_file.h"
#include "values/accuracy/accuracy_text.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t line_limit = 256, asset_limit = 63, key_limit = 63, value_limit = 255;
constexpr std::string_view file_name = "inventory.txt";

struct Asset {
  std::string name;
  std::map<int, std::string> texts;  // by property number
};

// The file as it was read. One that is at fault is empty.
struct InventoryFile {
  std::string path;
  std::optional<ReadStamp> read;
  std::vector<Asset> assets;
};
InventoryFile& kept() {
  static InventoryFile file;
  return file;
}

Asset* find_asset(std::vector<Asset>& assets, std::string_view name) {
  for (Asset& asset : assets) {
    if (same_word(asset.name, name)) return &asset;
  }
  return nullptr;
}

class Reader {
 public:
  Reader(const std::string& path, std::vector<Asset>& assets) : path_(path), assets_(assets) {}

  bool read(std::string_view text) {
    LineReader lines(text, line_limit, LineReader::Skip::blank_and_comments);
    std::string line;
    for (;;) {
      const LineReader::Result result = lines.next(line);
      if (result == LineReader::Result::end) return true;
      line_ = lines.number();
      if (result == LineReader::Result::too_long) return fault(31010, std::to_string(line_limit));
      const std::string_view words = trim(line);
      if (!(words.starts_with('{') ? asset(words) : property(words))) return false;
    }
  }

 private:
  bool fault(int number, std::string_view what) { return errp(number, path_, line_, what); }

  bool asset(std::string_view text) {
    const std::string_view name = trim(text.substr(1, text.size() - (text.ends_with('}') ? 2 : 1)));
    if (!text.ends_with('}') || name.empty() || name.size() > asset_limit) return fault(31011, text);
    if (find_asset(assets_, name) != nullptr) return fault(31012, name);
    assets_.push_back({std::string(name), {}});
    return true;
  }

  bool property(std::string_view text) {
    std::string key, value;
    if (assets_.empty() || !key_value_split(text, key, key_limit, value, value_limit) || value.empty())
      return fault(31011, text);
    if (same_word(key, "interval")) return interval(value);
    if (same_word(key, "serial")) return store(inventory_property::serial_number, value);
    const std::optional<std::int32_t> number = parse_short(key);
    if (!number || *number <= 0) return fault(31013, key);
    return store(*number, value);
  }

  bool interval(const std::string& value) {
    double number = 0;
    const std::size_t length = scan_number(value, number);
    const std::string_view unit = trim(std::string_view(value).substr(length));
    const char* letter = acc_interval::letter_of(unit);
    if (length == 0 || !std::isfinite(number) || number <= 0 || letter == nullptr) return fault(31011, value);
    return store(inventory_property::interval, value.substr(0, length)) &&
           store(inventory_property::interval_units, letter);
  }

  bool store(int number, std::string_view text) {
    return assets_.back().texts.emplace(number, text).second || fault(31012, text);
  }

  const std::string& path_;
  std::vector<Asset>& assets_;
  int line_ = 0;
};

// Beside the instrument configuration.
std::string inventory_path() {
  const std::string& bench = startup_config().config;
  if (bench.empty()) return {};
  const std::size_t separator = bench.find_last_of("/\\");
  const std::string folder = separator == std::string::npos ? std::string() : bench.substr(0, separator + 1);
  return folder + std::string(file_name);
}

std::vector<Asset>& assets() {
  InventoryFile& file = kept();
  const std::string path = inventory_path();
  const std::optional<FileStamp> now = file_stamp(path);
  if (now && file.read && file.path == path && still_same(*file.read, *now)) return file.assets;
  file = {.path = path, .read = read_stamp(path), .assets = {}};
  if (!file.read) return file.assets;
  std::string text;
  if (acc_read(path, text) != AccRead::ok) {
    errp(31014, path);
  } else if (!Reader(path, file.assets).read(text)) {
    file.assets.clear();
  }
  return file.assets;
}

bool file_stands() { return file_exists(inventory_path()); }
bool file_knows(std::string_view asset) { return find_asset(assets(), asset) != nullptr; }
std::optional<std::string> file_text(std::string_view asset, int property) {
  const Asset* found = find_asset(assets(), asset);
  if (found == nullptr) return std::nullopt;
  const auto text = found->texts.find(property);
  return text != found->texts.end() ? std::optional(text->second) : std::nullopt;
}

constexpr Inventory inventory_file = {file_stands, file_knows, file_text};
const Inventory* installed = &inventory_file;

}  // namespace

void set_inventory(const Inventory* inventory) {
  installed = inventory != nullptr ? inventory : &inventory_file;
}

bool inventory_stands() { return installed->stands(); }
bool inventory_knows(std::string_view asset) { return installed->knows(asset); }
std::optional<std::string> inventory_text(std::string_view asset, int property) {
  return installed->text(asset, property);
}

}  // namespace orvane
