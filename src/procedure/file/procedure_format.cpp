#include "procedure/file/procedure_format.h"

#include <algorithm>

namespace orvane {
namespace {

constexpr std::size_t narrow_entries = 16, narrow_alternatives = 4;
constexpr std::size_t narrow_size = 161;

template <class T>
T load(const std::uint8_t* at) {
  T value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

template <class T>
void store(std::uint8_t* at, T value) {
  std::memcpy(at, &value, sizeof value);
}

// Offsets in the header.
constexpr std::size_t at_mark = 0, at_rest = 1, at_magic = 2, at_format = 12, at_flags = 13,
                      at_record_size = 15, at_main = 17, at_listing = 19;

/// Reads and writes the words, or bytes, of a stored table one behind the other.
class Words {
 public:
  Words(std::string_view bytes, bool narrow) : bytes_(bytes), narrow_(narrow) {}
  std::uint16_t next() {
    const auto low = static_cast<std::uint8_t>(bytes_[at_++]);
    if (narrow_) return low;
    return static_cast<std::uint16_t>(low | static_cast<std::uint8_t>(bytes_[at_++]) << 8);
  }

 private:
  std::string_view bytes_;
  bool narrow_;
  std::size_t at_ = 0;
};

void put(std::string& out, std::uint16_t word, bool narrow) {
  out += static_cast<char>(word & 0xFF);
  if (!narrow) out += static_cast<char>(word >> 8);
}

std::size_t alternatives_used(const RequiredInstruments::Entry& entry) {
  const auto end = std::find_if(entry.alternatives.begin(), entry.alternatives.end(),
                                [](const auto& one) { return one.option == 0; });
  return static_cast<std::size_t>(end - entry.alternatives.begin());
}

bool entry_fits_narrow(const RequiredInstruments::Entry& entry) {
  const auto wide = [](std::uint16_t word) { return word > 255; };
  if (entry.reserved != 0 || wide(entry.instrument) || wide(entry.option_mask)) return false;
  const std::size_t used = alternatives_used(entry);
  if (used > narrow_alternatives) return false;
  return std::none_of(
      entry.alternatives.begin(), entry.alternatives.begin() + static_cast<std::ptrdiff_t>(used),
      [&](const auto& one) { return one.reserved != 0 || wide(one.option) || wide(one.option_mask); });
}

}  // namespace

std::string signature_of(std::string_view version) {
  std::string signature(2, '\0');
  std::memcpy(signature.data(), &FileHeader::magic, sizeof FileHeader::magic);
  return signature.append(version.substr(0, FileHeader::version_size));
}

int header_parse(const HeaderBytes& bytes, FileHeader& header) {
  const char* begin = reinterpret_cast<const char*>(bytes.data()) + FileHeader::signature_offset;
  header.signature.assign(begin, FileHeader::signature_size);
  if (const std::size_t end = header.signature.find('\0', sizeof FileHeader::magic); end != std::string::npos)
    header.signature.resize(end);
  header.format_version = bytes[at_format];
  header.flags = load<std::uint16_t>(&bytes[at_flags]);
  header.main_count = load<std::uint16_t>(&bytes[at_main]);
  header.listing_count = load<std::uint16_t>(&bytes[at_listing]);

  if (bytes[at_mark] != FileHeader::mark || bytes[at_rest] != FileHeader::rest_size ||
      load<std::uint16_t>(&bytes[at_magic]) != FileHeader::magic ||
      load<std::uint16_t>(&bytes[at_record_size]) != FscRecord::size)
    return 404;
  if (header.format_version != format_version_narrow && header.format_version != format_version_wide)
    return 417;
  return header.main_count == 0 && header.listing_count == 0 ? 408 : 0;
}

HeaderBytes header_format(const FileHeader& header) {
  HeaderBytes bytes{};
  bytes[at_mark] = FileHeader::mark;
  bytes[at_rest] = FileHeader::rest_size;
  std::memcpy(&bytes[at_magic], header.signature.data(),
              std::min(header.signature.size(), FileHeader::signature_size));
  bytes[at_format] = header.format_version;
  store(&bytes[at_flags], header.flags);
  store(&bytes[at_record_size], static_cast<std::uint16_t>(FscRecord::size));
  store(&bytes[at_main], header.main_count);
  store(&bytes[at_listing], header.listing_count);
  return bytes;
}

std::size_t required_size(std::uint8_t format_version) {
  return format_version == format_version_narrow ? narrow_size
                                                 : std::size_t{RequiredInstruments::stored_size};
}

bool required_parse(std::string_view bytes, std::uint8_t format_version, RequiredInstruments& table) {
  const bool narrow = format_version == format_version_narrow;
  const std::size_t entries = narrow ? narrow_entries : std::size_t{RequiredInstruments::max_entries};
  if (bytes.size() < required_size(format_version)) return false;
  table = {};
  Words words(bytes, narrow);
  table.count = words.next();
  for (std::size_t i = 0; i < entries; ++i) {
    RequiredInstruments::Entry& entry = table.entries[i];
    if (!narrow) entry.reserved = words.next();
    entry.instrument = words.next();
    entry.option_mask = words.next();
    for (std::size_t k = 0; k < (narrow ? narrow_alternatives : entry.alternatives.size()); ++k) {
      if (!narrow) entry.alternatives[k].reserved = words.next();
      entry.alternatives[k].option = words.next();
      entry.alternatives[k].option_mask = words.next();
    }
  }
  return table.count <= entries;
}

std::string required_format(const RequiredInstruments& table, std::uint8_t format_version) {
  const bool narrow = format_version == format_version_narrow;
  const std::size_t entries = narrow ? narrow_entries : table.entries.size();
  std::string out;
  put(out, table.count, narrow);
  for (std::size_t i = 0; i < entries; ++i) {
    const RequiredInstruments::Entry& entry = table.entries[i];
    if (!narrow) put(out, entry.reserved, narrow);
    put(out, entry.instrument, narrow);
    put(out, entry.option_mask, narrow);
    for (std::size_t k = 0; k < (narrow ? narrow_alternatives : entry.alternatives.size()); ++k) {
      if (!narrow) put(out, entry.alternatives[k].reserved, narrow);
      put(out, entry.alternatives[k].option, narrow);
      put(out, entry.alternatives[k].option_mask, narrow);
    }
  }
  return out;
}

bool required_fits_narrow(const RequiredInstruments& table) {
  return table.count <= narrow_entries &&
         std::all_of(table.entries.begin(), table.entries.begin() + table.count, entry_fits_narrow);
}

}  // namespace orvane
