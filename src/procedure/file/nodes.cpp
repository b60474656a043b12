#include <algorithm>
#include <utility>

#include "procedure/file/node_store.h"
#include "procedure/file/procedure.h"
#include "state/report.h"

namespace orvane {
namespace {

bool is_executable(std::uint16_t code) {
  return (code & code_class::executable) != 0 && (code & code_class::listing) == 0;
}

NodeStore& store_of(Procedure& procedure) {
  if (procedure.store == nullptr) procedure.store = std::make_unique<NodeStore>();
  return *procedure.store;
}

ProcNode* node_make(Procedure& procedure, std::uint16_t request) {
  NodeStore& store = store_of(procedure);
  ProcNode* node = store.node();
  if ((request & node_request::record) != 0) node->record = store.record();
  if (const std::uint16_t capacity = request & node_request::text_mask; capacity != 0) {
    node->text = store.text(capacity + std::size_t{1});
    node->text_capacity = capacity;
  }
  return node;
}

}  // namespace

Procedure::Procedure() = default;
Procedure::~Procedure() = default;
Procedure::Procedure(Procedure&& other) noexcept { *this = std::move(other); }

Procedure& Procedure::operator=(Procedure&& other) noexcept {
  if (this == &other) return *this;
  head = std::exchange(other.head, nullptr);
  current = std::exchange(other.current, nullptr);
  tail = std::exchange(other.tail, nullptr);
  lines = std::exchange(other.lines, {});
  signature = std::exchange(other.signature, {});
  format_version = std::exchange(other.format_version, std::uint8_t{0});
  flags = std::exchange(other.flags, std::uint16_t{0});
  main_count = std::exchange(other.main_count, std::uint16_t{0});
  spare = std::exchange(other.spare, std::uint16_t{0});
  listing_count = std::exchange(other.listing_count, std::uint16_t{0});
  directory = std::exchange(other.directory, {});
  required = std::move(other.required);
  name = std::exchange(other.name, {});
  store = std::move(other.store);
  return *this;
}

ProcNode* node_append(Procedure& procedure, std::uint16_t request) {
  ProcNode* node = node_make(procedure, request);
  node->prev = procedure.tail;
  (procedure.tail != nullptr ? procedure.tail->next : procedure.head) = node;
  procedure.tail = node;
  return node;
}

ProcNode* node_insert(Procedure& procedure, ProcNode* before, std::uint16_t request) {
  ProcNode* node = node_make(procedure, request);
  node->next = before;
  node->prev = before->prev;
  (before->prev != nullptr ? before->prev->next : procedure.head) = node;
  before->prev = node;
  return node;
}

bool node_grow_text(Procedure& procedure, ProcNode& node, std::uint16_t size) {
  if (size <= node.text_capacity) return errp(571, size, node.text_capacity);
  const std::uint32_t capacity = (size & 0xFFF0U) + 16U;
  if (capacity > 0xFFFF) return errp(572, size);
  char* grown = nullptr;
  try {
    grown = store_of(procedure).text(capacity + std::size_t{1});
  } catch (const std::bad_alloc&) {
    return errp(572, size);
  }
  if (node.text != nullptr) std::memcpy(grown, node.text, node.text_length);
  node.text = grown;
  node.text_capacity = static_cast<std::uint16_t>(capacity);
  return true;
}

bool node_set_text(Procedure& procedure, ProcNode& node, std::string_view text) {
  if (text.size() > node.text_capacity &&
      !node_grow_text(procedure, node,
                      static_cast<std::uint16_t>(std::min<std::size_t>(text.size(), 0xFFFF))))
    return false;
  if (node.text == nullptr) return true;  // an empty text on a node without one
  if (!text.empty()) std::memcpy(node.text, text.data(), text.size());
  node.text[text.size()] = '\0';
  node.text_length = static_cast<std::uint16_t>(text.size());
  return true;
}

bool node_add_record(Procedure& procedure, ProcNode& node) {
  if (node.record != nullptr) return errp(575);
  try {
    node.record = store_of(procedure).record();
  } catch (const std::bad_alloc&) {
    return errp(576);
  }
  return true;
}

bool node_copy(Procedure& procedure, ProcNode& to, const ProcNode& from) {
  to.line_index = from.line_index;
  to.spare = from.spare;
  if (!node_set_text(procedure, to, from.shown())) return false;
  if (from.record == nullptr) return true;
  if (to.record == nullptr && !node_add_record(procedure, to)) return false;
  *to.record = *from.record;
  return true;
}

void procedure_clear_nodes(Procedure& procedure) {
  procedure.head = procedure.current = procedure.tail = nullptr;
  procedure.lines.clear();
  procedure.store.reset();
  procedure.required.reset();
  procedure.signature.clear();
  procedure.format_version = 0;
  procedure.main_count = procedure.listing_count = 0;
  procedure.clear(procedure_flag::loaded | procedure_flag::writer | procedure_flag::required |
                  procedure_flag::same_as_file);
}

void procedure_number_lines(Procedure& procedure) {
  procedure.lines.clear();
  for (ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    if (node->record == nullptr || !is_executable(node->record->get(field::code))) continue;
    node->line_index = static_cast<std::uint16_t>(procedure.lines.size());
    procedure.lines.push_back(node);
  }
}

void procedure_link_branches(Procedure& procedure) {
  const auto count = static_cast<std::int32_t>(procedure.lines.size());
  for (ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    node->branch = ProcNode::no_branch;
    if (node->record == nullptr) continue;
    const std::uint16_t code = node->record->get(field::code);
    if ((code & code_class::branching) == 0 || (code & code_class::listing) != 0) continue;
    const std::int16_t index = node->record->get(branch_index_field(code));
    if (index >= 0 && index < count) node->branch = index;
  }
}

int statement_line_count(const ProcNode& node) {
  if (node.record == nullptr) return 0;
  const std::uint16_t code = node.record->get(field::code);
  int count = 0;
  for (const ProcNode* at = &node; at != nullptr; at = at->next) {
    if (at->record == nullptr) continue;
    const std::uint16_t found = at->record->get(field::code);
    if (found != code) {
      if ((found & code_class::executable) == 0) continue;
      return 0;
    }
    ++count;
    if ((at->record->get(field::line_flags) & line_flag::last) != 0) return count;
  }
  return 0;
}

}  // namespace orvane
