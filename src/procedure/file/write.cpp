#include <algorithm>

#include "platform/files.h"
#include "procedure/file/load.h"
#include "procedure/file/procedure_format.h"
#include "state/report.h"

namespace orvane {
namespace {

bool is_listing(const ProcNode& node) { return (node.record->get(field::code) & code_class::listing) != 0; }

struct Counts {
  std::size_t main = 0;
  std::size_t listing = 0;
};

// Counts the records, and notes in each main record how many listing lines stand before it.
bool count_records(Procedure& procedure, Counts& counts) {
  std::size_t before = 0;
  for (ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    if (node->record == nullptr) continue;
    if (is_listing(*node)) {
      ++before;
      ++counts.listing;
      continue;
    }
    ++counts.main;
    if (before > listing_before_limit)
      return errp(416, before, counts.main + counts.listing, listing_before_limit);
    node->record->set(field::listing_before, static_cast<std::uint8_t>(before));
    before = 0;
  }
  return true;
}

void put_records(std::string& out, const Procedure& procedure, bool listing) {
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    if (node->record != nullptr && is_listing(*node) == listing)
      out.append(reinterpret_cast<const char*>(node->record->bytes.data()), FscRecord::size);
  }
}

std::string file_bytes(const Procedure& procedure, const FileHeader& header) {
  const HeaderBytes bytes = header_format(header);
  std::string out;
  out.reserve(FileHeader::size + required_size(header.format_version) +
              (std::size_t{header.main_count} + header.listing_count) * FscRecord::size);
  out.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if ((header.flags & file_flag::required) != 0)
    out += required_format(*procedure.required, header.format_version);
  put_records(out, procedure, false);
  put_records(out, procedure, true);
  return out;
}

}  // namespace

bool write_procedure(Procedure& procedure, const std::string& path) {
  Counts counts;
  if (!count_records(procedure, counts)) return false;
  if (counts.main > main_records_limit || counts.listing > listing_records_limit)
    return errp(30101, path, counts.main, counts.listing, main_records_limit);

  const bool with_table = procedure.has(procedure_flag::required) && procedure.required != nullptr;
  FileHeader header;
  header.signature = procedure.signature.empty() ? signature_of(ORVANE_VERSION) : procedure.signature;
  header.format_version =
      with_table && !required_fits_narrow(*procedure.required) ? format_version_wide : format_version_narrow;
  header.flags = static_cast<std::uint16_t>(file_flag::writer | (with_table ? file_flag::required : 0));
  header.main_count = static_cast<std::uint16_t>(counts.main);
  header.listing_count = static_cast<std::uint16_t>(counts.listing);
  if (!replace_file(path, file_bytes(procedure, header))) return errp(407, path);

  procedure.signature = header.signature;
  procedure.format_version = header.format_version;
  procedure.main_count = header.main_count;
  procedure.listing_count = header.listing_count;
  procedure.clear(procedure_flag::name_set);
  procedure.set(procedure_flag::same_as_file);
  return true;
}

}  // namespace orvane
