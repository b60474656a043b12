#include "procedure/file/listing.h"

#include <algorithm>

#include "messages/catalogue.h"
#include "platform/operator.h"
#include "platform/platform.h"
#include "procedure/file/render.h"

namespace orvane {
namespace {

// Rows render as they are shown.
class ListingRows : public RowSource {
 public:
  explicit ListingRows(const Procedure& procedure) {
    for (ProcNode* node = procedure.head; node != nullptr; node = node->next) nodes_.push_back(node);
  }
  std::size_t count() const override { return nodes_.size(); }
  std::string row(std::size_t index) const override {
    const ProcNode& node = *nodes_[index];
    if (node.text != nullptr) return std::string(node.text, node.text_length);
    return node.record != nullptr ? render_record(*node.record) : std::string();
  }
  ProcNode* node(std::size_t index) const { return index < nodes_.size() ? nodes_[index] : nullptr; }
  std::size_t index_of(const ProcNode* wanted) const {
    const auto at = std::find(nodes_.begin(), nodes_.end(), wanted);
    return at != nodes_.end() ? static_cast<std::size_t>(at - nodes_.begin()) : 0;
  }

 private:
  std::vector<ProcNode*> nodes_;
};

}  // namespace

int list_procedure(Procedure& procedure, const ProcNode* selected) {
  if (platform().desk == nullptr) return answer::failed;
  const ListingRows rows(procedure);
  ChoiceWindow window;
  window.kind = WindowKind::listing;
  window.title = msg(244);
  window.rows = &rows;
  window.first_row = rows.index_of(selected);
  window.buttons = {{answer::ok, msg(5901), true}, {answer::terminate, msg(5911), false}};
  std::size_t row = window.first_row;
  const int code = platform().desk->choose(window, row);
  if (code != answer::ok) return code;
  ProcNode* chosen = rows.node(row);
  if (chosen == nullptr) return answer::failed;
  procedure.current = chosen;
  procedure.set(procedure_flag::placed);
  return answer::ok;
}

}  // namespace orvane
