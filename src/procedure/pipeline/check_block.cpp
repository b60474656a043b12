#include "procedure/pipeline/check_block.h"

#include "state/fsc.h"
#include "state/report.h"

namespace orvane {
namespace {

bool is_executable(const ProcNode& node) {
  return node.record != nullptr && node.record->has_class(code_class::executable) &&
         !node.record->has_class(code_class::listing | code_class::header);
}

const ProcNode* executable_before(const ProcNode& node) {
  const ProcNode* at = node.prev;
  while (at != nullptr && !is_executable(*at)) at = at->prev;
  return at;
}

const ProcNode* executable_behind(const ProcNode& node) {
  const ProcNode* at = node.next;
  while (at != nullptr && !is_executable(*at)) at = at->next;
  return at;
}

bool same_block(const ProcNode* other, const ProcNode& node) {
  return other != nullptr && other->record->code() == node.record->code();
}

bool same_test(const FscRecord& a, const FscRecord& b) {
  return a.test_major() == b.test_major() && a.test_minor() == b.test_minor();
}

std::string_view text_of(const FscRecord& record) {
  return record.text(fsc_is_named_parameter(record.code()) ? field::parameter_text : field::text);
}

}  // namespace

const ProcNode* check_FindBlockBegin(const ProcNode& node) {
  const ProcNode* begin = &node;
  for (const ProcNode* at = executable_before(node); same_block(at, node); at = executable_before(*at))
    begin = at;
  return begin;
}

const ProcNode* check_FindBlockEnd(const ProcNode& node) {
  const ProcNode* end = &node;
  for (const ProcNode* at = executable_behind(node); same_block(at, node); at = executable_behind(*at))
    end = at;
  return end;
}

bool check_IsFirstLine(const ProcNode& node) {
  const ProcNode* above = executable_before(node);
  if (!same_block(above, node)) return true;
  return !node.record->has_flag(line_flag::continues) && !same_test(*node.record, *above->record);
}

const ProcNode* check_FindFirstLine(const ProcNode& node) {
  const ProcNode* at = &node;
  while (!check_IsFirstLine(*at)) at = executable_before(*at);
  return at;
}

bool check_ScanBlock(const ProcNode& node, std::vector<CheckStatement>& statements) {
  const ProcNode* const end = check_FindBlockEnd(node);
  for (const ProcNode* at = check_FindBlockBegin(node);; at = executable_behind(*at)) {
    if (check_IsFirstLine(*at)) statements.push_back({at, {}});
    std::string& text = statements.back().text;
    text += text_of(*at->record);
    if (text.size() > check_text_limit) return errp(100, "cbuf overrun");
    if (at == end) return true;
  }
}

}  // namespace orvane
