// The tools menu: programs of the laboratory, from the section "Tools" of the user's settings. Rows are numbered from 1
// without a gap, at most 20 of them; a row is a name, a comma and a command:
//
//   [Tools]
//   1 = Calculator, galculator
//   2 = Cable list, xdg-open /lab/cables.pdf
#pragma once

#include <string>
#include <vector>

namespace orvane {

struct Tool {
  std::string name;
  std::string command;
};
std::vector<Tool> configured_tools();

/// The name of the tool behind a menu command; empty if there is none.
std::string tool_name(int id);
/// Starts the tool's program, which then goes its own way. False after message 30852.
bool run_tool(int id);

}  // namespace orvane
