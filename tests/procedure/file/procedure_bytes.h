// Compiled procedures as bytes, made by hand: what the loader is to read stands here independently of the
// writer.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "state/fsc_record.h"

namespace orvane::test {

struct FileParts {
  std::string version = "7.20a";
  int format = 8;
  int flags = 0x0002;
  int record_size = 92;
  std::string table;
  std::vector<FscRecord> main;
  std::vector<FscRecord> listing;
  int main_count = -1;  // as the header says; -1: as many as there are
  int listing_count = -1;
};

inline std::string u16(int value) {
  return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)};
}

inline std::string file_bytes(const FileParts& parts) {
  std::string version = parts.version;
  version.resize(6, '\0');
  std::string out =
      std::string("\x1A\x13\xF3\x1C", 4) + version + std::string(2, '\0') + static_cast<char>(parts.format) +
      u16(parts.flags) + u16(parts.record_size) +
      u16(parts.main_count >= 0 ? parts.main_count : static_cast<int>(parts.main.size())) +
      u16(parts.listing_count >= 0 ? parts.listing_count : static_cast<int>(parts.listing.size())) +
      parts.table;
  for (const auto* records : {&parts.main, &parts.listing}) {
    for (const FscRecord& record : *records)
      out.append(reinterpret_cast<const char*>(record.bytes.data()), FscRecord::size);
  }
  return out;
}

inline FscRecord make_record(int code, std::string_view text = {}, int line_flags = 0x1033) {
  FscRecord record = fsc_record_new();
  record.set(field::code, static_cast<std::uint16_t>(code));
  record.set(field::line_flags, static_cast<std::uint16_t>(line_flags));
  if (!record.set_text(field::text, text)) record.bytes.fill(0);
  return record;
}

inline FscRecord block_record(int code, int target_index, std::string_view condition = {}) {
  FscRecord record = make_record(code);
  record.set(field::block_target_index, static_cast<std::int16_t>(target_index));
  (void)record.set_text(field::block_text, condition);
  return record;
}

inline FscRecord comment_record(std::string_view text, int code = 0x0100) {
  return make_record(code, text, 0x1001);
}

inline FscRecord with_comments(FscRecord record, int count) {
  record.set(field::listing_before, static_cast<std::uint8_t>(count));
  return record;
}

}  // namespace orvane::test
