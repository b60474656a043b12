#include "procedure/file/load.h"

#include <algorithm>

#include "config/startup_config.h"
#include "platform/files.h"
#include "platform/input_file.h"
#include "platform/operator.h"
#include "platform/platform.h"
#include "procedure/file/node_store.h"
#include "procedure/file/procedure_format.h"
#include "procedure/file/render.h"
#include "state/open_shared.h"
#include "state/report.h"

namespace orvane {
namespace {

/// Records as they came from the file, one behind the other.
struct RecordBlock {
  std::unique_ptr<std::byte[]> bytes;
  std::size_t count = 0;    // whole records that were there
  std::uint64_t begin = 0;  // offset of the first one in the file

  std::byte* record(std::size_t index) const { return bytes.get() + index * FscRecord::size; }
  std::uint64_t offset(std::size_t index) const { return begin + index * FscRecord::size; }
  std::uint16_t code(std::size_t index) const {
    std::uint16_t code;
    std::memcpy(&code, record(index), sizeof code);
    return code;
  }
};

/// One load: the file, the procedure it fills, and the only place where its failures are reported.
class Load {
 public:
  Load(Procedure& procedure, const std::string& path, bool text_mode)
      : procedure_(procedure), path_(path), text_mode_(text_mode) {}

  bool run() {
    bool ok = false;
    procedure_clear_nodes(procedure_);
    try {
      ok = read();
    } catch (const std::bad_alloc&) {
      ok = errp(401, path_);
    }
    if (!ok) procedure_clear_nodes(procedure_);
    return ok;
  }
  /// Where in the file a failure was met.
  std::uint64_t fault_offset() const { return fault_offset_.value_or(position_); }

 private:
  bool read() {
    if (!open_shared(path_, [this] { return file_.open(path_); })) return errp(405, path_);
    FileHeader header;
    if (!read_header(header)) return false;
    if ((header.flags & file_flag::required) != 0 && !read_required(header.format_version)) return false;
    if (!read_main(header.main_count)) return false;
    if (text_mode_ && !read_listing(header.listing_count)) return false;
    if (!file_.close()) return errp(402, path_);
    procedure_.signature = header.signature;
    procedure_.format_version = header.format_version;
    procedure_.main_count = header.main_count;
    procedure_.listing_count = header.listing_count;
    procedure_.set(header.flags & file_flag::writer);
    procedure_.set(procedure_flag::loaded | procedure_flag::same_as_file);
    return true;
  }

  bool read_header(FileHeader& header) {
    HeaderBytes bytes{};
    if (!read_exactly(bytes.data(), FileHeader::lead_size)) return errp(406, path_);
    // A wrong length says more than the file's early end.
    fault_offset_ = 0;
    if (bytes[1] != FileHeader::rest_size) return errp(404, path_);
    const bool whole = read_exactly(bytes.data() + FileHeader::lead_size, FileHeader::rest_size);
    if (!whole) fault_offset_.reset();
    if (!whole) return errp(406, path_);
    const int fault = header_parse(bytes, header);
    if (fault == 417) return errp(417, path_, header.format_version);
    if (fault != 0) return errp(fault, path_);
    fault_offset_.reset();
    return true;
  }

  bool read_required(std::uint8_t format_version) {
    std::string bytes(required_size(format_version), '\0');
    if (!read_exactly(bytes.data(), bytes.size())) return errp(406, path_);
    procedure_.required = std::make_unique<RequiredInstruments>();
    fault_offset_ = FileHeader::size;
    if (!required_parse(bytes, format_version, *procedure_.required)) return errp(30100, path_);
    fault_offset_.reset();
    procedure_.set(procedure_flag::required);
    return true;
  }

  bool read_main(std::size_t count) {
    RecordBlock block = read_records(count);
    for (std::size_t i = 0; i < block.count; ++i) {
      if ((block.code(i) & code_class::listing) == 0) continue;
      fault_offset_ = block.offset(i);
      return errp(403, path_);
    }
    if (block.count != count) return errp(406, path_);
    make_nodes(block);
    procedure_link_branches(procedure_);
    return true;
  }

  void make_nodes(RecordBlock& block) {
    if (procedure_.store == nullptr) procedure_.store = std::make_unique<NodeStore>();
    NodeStore& store = *procedure_.store;
    store.reserve_nodes(block.count);
    procedure_.lines.reserve(block.count);
    ProcNode* tail = nullptr;
    for (std::size_t i = 0; i < block.count; ++i) {
      ProcNode* node = store.node();
      node->record = store.record_at(block.record(i));
      node->prev = tail;
      (tail != nullptr ? tail->next : procedure_.head) = node;
      tail = node;
      if ((block.code(i) & code_class::executable) == 0) continue;
      node->line_index = static_cast<std::uint16_t>(procedure_.lines.size());
      procedure_.lines.push_back(node);
    }
    procedure_.tail = tail;
    if (text_mode_) {
      for (ProcNode* node = procedure_.head; node != nullptr; node = node->next) show(*node);
    }
    store.keep(std::move(block.bytes));
  }

  // Listing records stand before the main record that asks for them; the rest stands at the end.
  bool read_listing(std::size_t count) {
    RecordBlock block = read_records(count);
    std::size_t used = 0;
    for (ProcNode* node = procedure_.head; node != nullptr; node = node->next) {
      for (int left = node->record->get(field::listing_before); left > 0; --left) {
        if (!take_listing(block, used++, node)) return false;
      }
    }
    while (used < count) {
      if (!take_listing(block, used++, nullptr)) return false;
    }
    procedure_.store->keep(std::move(block.bytes));
    return true;
  }

  bool take_listing(const RecordBlock& block, std::size_t index, ProcNode* before) {
    if (index >= block.count) return errp(406, path_);
    if ((block.code(index) & code_class::listing) == 0) {
      fault_offset_ = block.offset(index);
      return errp(403, path_);
    }
    ProcNode* node = before != nullptr ? node_insert(procedure_, before, 0) : node_append(procedure_, 0);
    node->record = procedure_.store->record_at(block.record(index));
    show(*node);
    return true;
  }

  void show(ProcNode& node) {
    constexpr std::uint16_t capacity = node_request::with_text & node_request::text_mask;
    node.text = procedure_.store->text(capacity + std::size_t{1});
    node.text_capacity = capacity;
    const std::string line = render_record(*node.record);
    node.text_length = static_cast<std::uint16_t>(std::min<std::size_t>(line.size(), capacity));
    std::memcpy(node.text, line.data(), node.text_length);
  }

  bool read_exactly(void* to, std::size_t size) {
    const std::size_t came = file_.read(to, size);
    position_ += came;
    return came == size;
  }

  // Up to `count` records. The header's count is believed only as far as the file is long; a file without a
  // size (a pipe) is believed as far as it comes.
  RecordBlock read_records(std::size_t count) {
    constexpr std::size_t first_step = std::size_t{64} * FscRecord::size;
    const std::size_t wanted = count * FscRecord::size;
    const std::uint64_t begin = position_;
    std::size_t room = std::min(wanted, left_in_file().value_or(first_step));
    std::unique_ptr<std::byte[]> bytes(new std::byte[room]);
    std::size_t got = 0;
    for (;;) {
      const std::size_t came = file_.read(bytes.get() + got, room - got);
      got += came;
      position_ += came;
      if (got < room || room == wanted || file_.size()) break;
      const std::size_t larger = std::min(wanted, room * 2);
      std::unique_ptr<std::byte[]> moved(new std::byte[larger]);
      std::memcpy(moved.get(), bytes.get(), got);
      bytes = std::move(moved);
      room = larger;
    }
    return {std::move(bytes), got / FscRecord::size, begin};
  }

  std::optional<std::size_t> left_in_file() const {
    const std::optional<std::uint64_t> size = file_.size();
    if (!size) return std::nullopt;
    return static_cast<std::size_t>(*size > position_ ? *size - position_ : 0);
  }

  Procedure& procedure_;
  const std::string& path_;
  bool text_mode_;
  InputFile file_;
  std::uint64_t position_ = 0;
  std::optional<std::uint64_t> fault_offset_;  // where it is not the position
};

/// The please-wait window of a load, closed with the object. Null without a desk.
std::unique_ptr<WaitWindow> announce(std::string_view name) {
  constexpr std::size_t limit = 192, cut = 187;
  if (platform().desk == nullptr) return nullptr;
  std::string text = msg(412) + " \"" + std::string(name) + "\".";
  if (text.size() > limit) text = text.substr(0, cut) + "...\".";
  return platform().desk->wait({.title = {}, .text = std::move(text), .abort_button = false});
}

void take_name(Procedure& procedure) {
  if (procedure.has(procedure_flag::name_set)) return;
  const ProcDirEntry& entry = procedure.directory;
  const int index = entry.matched_line - entry.first_line;
  const bool known = index >= 0 && index < ProcDirEntry::max_names;
  procedure.name = known ? entry.names[static_cast<std::size_t>(index)] : std::string();
}

}  // namespace

bool load_procedure(Procedure& procedure, const std::string& directory_path, bool text_mode) {
  std::string path;
  const std::string& directory = directory_path.empty() ? startup_config().procdir : directory_path;
  if (!join_path(path, procedure_path_limit, directory, procedure.directory.file_name))
    return errp(405, directory + "/" + procedure.directory.file_name);
  take_name(procedure);
  const std::unique_ptr<WaitWindow> window = announce(procedure.name);
  return load_procedure_file(procedure, path, text_mode);
}

bool load_procedure_file(Procedure& procedure, const std::string& path, bool text_mode,
                         std::uint64_t* fault_offset) {
  Load load(procedure, path, text_mode);
  const bool ok = load.run();
  if (!ok && fault_offset != nullptr) *fault_offset = load.fault_offset();
  return ok;
}

}  // namespace orvane
