// A procedure in memory: a doubly linked list of lines, each with its record and, where the procedure is
// shown, its text. The Procedure owns the list; the procedure memory (procedure/file/memory.h) owns the
// Procedure.
//
// Nothing that survives a CALL may hold a Procedure or a ProcNode: the callee may evict its caller. It holds
// the procedure's name and the line_index instead.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "state/fsc_record.h"

namespace orvane {

struct ProcNode {
  static constexpr std::int32_t no_branch = -1;

  FscRecord* record = nullptr;  // owned by the procedure; a node may exist without one
  ProcNode* next = nullptr;
  ProcNode* prev = nullptr;
  std::int32_t branch = no_branch;  // target of a branching record: an index into Procedure::lines
  std::uint16_t line_index = 0;     // position among the executable lines, from 0
  std::uint16_t spare = 0;
  char* text = nullptr;             // the line as shown, ended by a NUL, or none; owned by the procedure
  std::uint16_t text_capacity = 0;  // characters that `text` holds besides its NUL
  std::uint16_t text_length = 0;

  std::string_view shown() const { return {text, text_length}; }
};

namespace procedure_flag {
constexpr std::uint16_t loaded = 0x0001;
constexpr std::uint16_t writer = 0x0002;    // carried over from the file
constexpr std::uint16_t required = 0x0010;  // the required-instrument table is filled
constexpr std::uint16_t name_set = 0x0020;  // the loader must not take the name from the directory entry
constexpr std::uint16_t placed = 0x0100;    // `current` was set by someone other than the loop
constexpr std::uint16_t same_as_file = 0x0800;
constexpr std::uint16_t pinned = 0x1000;     // never evicted
constexpr std::uint16_t no_return = 0x2000;  // on leaving a CALL the caller does not continue
}  // namespace procedure_flag

/// An entry of proc.dir: one file with up to six procedure names.
struct ProcDirEntry {
  static constexpr int max_names = 6;
  static constexpr std::size_t file_name_limit = 12, name_limit = 55;
  // dir_flags: in a search the kinds that are acceptable, after a read what the entry is.
  static constexpr std::uint8_t status_d = 0x01, status_p = 0x02, kind_e = 0x04, end_reached = 0x10,
                                any = 0x20, kind_h = 0x40, kind_blank = 0x80;
  std::uint16_t first_line = 0;
  std::uint16_t last_line = 0;
  std::uint16_t matched_line = 0;
  std::uint8_t dir_flags = 0;
  std::string file_name;
  std::uint8_t name_count = 0;
  std::array<std::string, max_names> names;
};

/// The instruments that a procedure requires, in the widened form of format version 9.
struct RequiredInstruments {
  static constexpr int max_entries = 64, max_alternatives = 8;
  static constexpr int stored_size = 3458;
  struct Alternative {
    std::uint16_t reserved = 0;
    std::uint16_t option = 0;  // 0 ends the row of alternatives
    std::uint16_t option_mask = 0;
  };
  struct Entry {
    std::uint16_t reserved = 0;
    std::uint16_t instrument = 0;  // instrument code
    std::uint16_t option_mask = 0;
    std::array<Alternative, max_alternatives> alternatives{};
  };
  std::uint16_t count = 0;
  std::array<Entry, max_entries> entries{};
};

class NodeStore;

struct Procedure {
  Procedure();
  ~Procedure();
  Procedure(Procedure&&) noexcept;
  Procedure& operator=(Procedure&&) noexcept;

  ProcNode* head = nullptr;
  ProcNode* current = nullptr;  // the line being executed
  ProcNode* tail = nullptr;
  std::vector<ProcNode*> lines;  // the executable lines by line_index
  std::string signature;         // bytes 2 to 9 of the file header, cut at the first NUL of the version text
  std::uint8_t format_version = 0;
  std::uint16_t flags = 0;  // procedure_flag
  std::uint16_t main_count = 0;
  std::uint16_t spare = 0;
  std::uint16_t listing_count = 0;
  ProcDirEntry directory;
  std::unique_ptr<RequiredInstruments> required;  // null: no table
  std::string name;                               // under which the procedure runs
  std::unique_ptr<NodeStore> store;               // owns nodes and records

  bool has(std::uint16_t bits) const { return (flags & bits) != 0; }
  void set(std::uint16_t bits) { flags = static_cast<std::uint16_t>(flags | bits); }
  void clear(std::uint16_t bits) { flags = static_cast<std::uint16_t>(flags & ~bits); }
  /// The target of a branching line, or null: the branch then ends the procedure.
  ProcNode* branch_target(const ProcNode& node) const {
    return node.branch >= 0 && static_cast<std::size_t>(node.branch) < lines.size()
               ? lines[static_cast<std::size_t>(node.branch)]
               : nullptr;
  }
};

// --- Nodes
// ---------------------------------------------------------------------------------------------------

/// Request word of node_append and node_insert: one bit asks for a record, the low ten give the capacity for
/// text.
namespace node_request {
constexpr std::uint16_t record = 0x8000;
constexpr std::uint16_t text_mask = 0x03FF;
constexpr std::uint16_t with_text = 0x804F;  // a record and 79 characters of text
}  // namespace node_request

/// Makes a node and appends it at the tail. Its record is as the system makes one (fsc_record_new). Never
/// null; out of memory throws std::bad_alloc, which the loader and the compiler catch.
ProcNode* node_append(Procedure& procedure, std::uint16_t request);
/// Makes a node and inserts it before `before`, which belongs to the procedure.
ProcNode* node_insert(Procedure& procedure, ProcNode* before, std::uint16_t request);
/// Gives the node room for `size` characters of text and keeps what it has: the capacity becomes (size AND
/// 0xFFF0) +
/// 16. A size not above the present capacity is message 571, lack of memory 572.
[[nodiscard]] bool node_grow_text(Procedure& procedure, ProcNode& node, std::uint16_t size);
/// Sets the text, with more room if it needs it.
[[nodiscard]] bool node_set_text(Procedure& procedure, ProcNode& node, std::string_view text);
/// Gives a record to a node that has none (else message 575; lack of memory is 576).
[[nodiscard]] bool node_add_record(Procedure& procedure, ProcNode& node);
/// Copies line_index, spare, text and the whole record.
[[nodiscard]] bool node_copy(Procedure& procedure, ProcNode& to, const ProcNode& from);
/// Frees all nodes and everything about them: counts, table of required instruments, flags that a load sets.
/// Name, directory entry and the other flags stay.
void procedure_clear_nodes(Procedure& procedure);

/// Numbers the executable lines from `head` on: fills line_index and `lines`.
void procedure_number_lines(Procedure& procedure);
/// Sets the branch of every branching line from the index in its record. An index outside the lines gives
/// ProcNode::no_branch.
void procedure_link_branches(Procedure& procedure);

/// Records from this node on that belong to one statement: forward over records of the same FSC up to and
/// including the one with line_flag::last; 0 if another FSC or the end of the list comes first. Lines that
/// are not executable are passed over.
int statement_line_count(const ProcNode& node);

}  // namespace orvane
