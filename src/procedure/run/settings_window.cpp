#include "procedure/run/settings_window.h"

#include "messages/catalogue.h"
#include "platform/platform.h"
#include "state/buttons.h"

namespace orvane {
namespace {

class SettingRows : public RowSource {
 public:
  explicit SettingRows(const RunState& run) : settings_(run.uut_settings) {}
  std::size_t count() const override { return settings_.size(); }
  std::string row(std::size_t index) const override {
    if (index >= settings_.size()) return {};
    return formatted("\t%s\t:\t%s", settings_[index].first, settings_[index].second);
  }

 private:
  const std::vector<std::pair<std::string, std::string>>& settings_;
};

}  // namespace

bool show_uut_settings(const RunState& run) {
  const SettingRows rows(run);
  ChoiceWindow window;
  window.kind = WindowKind::settings;
  window.title = msg(30714);
  window.rows = &rows;
  window.buttons = {standard_button(button_row::ok, answer::ok, true)};
  std::size_t row = 0;
  return platform().desk != nullptr && platform().desk->choose(window, row) != answer::failed;
}

}  // namespace orvane
