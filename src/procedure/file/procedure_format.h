// The bytes of a compiled procedure file. All numbers are little-endian, texts Windows-1252.
//
//   21 bytes              the header
//   161 or 3458 bytes     the table of required instruments, with file_flag::required (format version 8 or 9)
//   main_count * 92       the main records: header lines and statements
//   listing_count * 92    the listing records: comments, read only when the procedure is shown
//
// The header, by offset:
//
//   0  u8       26             10  2 bytes  0
//   1  u8       19, the bytes  12  u8       format version, 8 or 9
//               behind this    13  u16      flags
//   2  u16      0x1CF3         15  u16      92, the size of a record
//   4  6 bytes  version text   17  u16      main_count
//               of the         19  u16      listing_count
//               compiler
//
// A main record says in its byte listing_before how many listing records stand in front of it in the source;
// what is left of them stands behind the last line.
//
// Table of required instruments, version 9: u16 count, then always 64 entries of 54 bytes: u16 0, u16
// instrument, u16 option mask, and 8 alternatives of u16 0, u16 option, u16 option mask. Version 8: u8 count,
// then always 16 entries of 10 bytes: u8 instrument, u8 option mask, 4 pairs of u8 option, u8 option mask.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "procedure/file/procedure.h"

namespace orvane {

constexpr std::uint8_t format_version_narrow = 8;  // table of required instruments in bytes
constexpr std::uint8_t format_version_wide = 9;    // in words

constexpr std::size_t main_records_limit = 65535, listing_records_limit = 65535;
constexpr std::size_t listing_before_limit = 255;

namespace file_flag {
constexpr std::uint16_t writer = 0x0002;    // set by every writer
constexpr std::uint16_t required = 0x0010;  // the table of required instruments follows the header
}  // namespace file_flag

struct FileHeader {
  static constexpr std::size_t size = 21, lead_size = 2, rest_size = 19;
  static constexpr std::uint8_t mark = 26;
  static constexpr std::uint16_t magic = 0x1CF3;
  static constexpr std::size_t signature_offset = 2, signature_size = 8, version_size = 6;

  std::string signature;  // the magic and the compiler's version, cut at its first NUL
  std::uint8_t format_version = format_version_narrow;
  std::uint16_t flags = 0;
  std::uint16_t main_count = 0;
  std::uint16_t listing_count = 0;
};

using HeaderBytes = std::array<std::uint8_t, FileHeader::size>;

/// The signature that a compiler of this version text (at most 6 characters, the rest is cut) leaves in its
/// files.
std::string signature_of(std::string_view version);

/// Takes the header apart. 0, or the number of the message for what is wrong with it: 404 damaged, 417
/// another format version, 408 no records. `header` is filled in any case.
int header_parse(const HeaderBytes& bytes, FileHeader& header);
HeaderBytes header_format(const FileHeader& header);

/// Bytes of the stored table in a format version.
std::size_t required_size(std::uint8_t format_version);
/// Takes a stored table apart; false if its count is above what it has room for.
[[nodiscard]] bool required_parse(std::string_view bytes, std::uint8_t format_version,
                                  RequiredInstruments& table);
std::string required_format(const RequiredInstruments& table, std::uint8_t format_version);
/// The table can be stored in bytes (format version 8): at most 16 entries, at most 4 alternatives in a row,
/// no reserved word set, and every number below 256.
bool required_fits_narrow(const RequiredInstruments& table);

}  // namespace orvane
