#include "desktop/tools.h"

#include <QProcess>

#include "config/user_settings.h"
#include "desktop/menu.h"
#include "desktop/texts.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view section = "Tools";
constexpr int tool_limit = command::last_tool - command::first_tool + 1;

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

const Tool* tool_of(const std::vector<Tool>& tools, int id) {
  const auto at = static_cast<std::size_t>(id - command::first_tool);
  return id >= command::first_tool && at < tools.size() ? &tools[at] : nullptr;
}

}  // namespace

std::vector<Tool> configured_tools() {
  std::vector<Tool> tools;
  for (int number = 1; number <= tool_limit; ++number) {
    const auto row = user_setting(section, std::to_string(number));
    if (!row) break;
    const std::size_t comma = row->find(',');
    Tool tool{trimmed(row->substr(0, comma)), {}};
    if (comma != std::string::npos) tool.command = trimmed(std::string_view(*row).substr(comma + 1));
    if (tool.command.empty()) tool.command = tool.name;
    tools.push_back(std::move(tool));
  }
  return tools;
}

std::string tool_name(int id) {
  const std::vector<Tool> tools = configured_tools();
  const Tool* tool = tool_of(tools, id);
  return tool != nullptr ? tool->name : std::string();
}

bool run_tool(int id) {
  const std::vector<Tool> tools = configured_tools();
  const Tool* tool = tool_of(tools, id);
  if (tool == nullptr) return false;
  QStringList words = QProcess::splitCommand(shown(tool->command));
  if (words.isEmpty()) return errp(30852, tool->name, tool->command);
  const QString program = words.takeFirst();
  return QProcess::startDetached(program, words) || errp(30852, tool->name, tool->command);
}

}  // namespace orvane
