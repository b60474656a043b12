// The commands of the main window, one row each, in the order of their menus.
#pragma once

#include <span>

namespace orvane {

namespace command {
constexpr int about = 100, results_file_2 = 110, results_file_1 = 120, abort = 130, by_asset = 140,
              by_procedure = 150, by_workload = 160, run = 170, instruments = 180, print_setup_0 = 190,
              real_mode = 200, print_setup_1 = 210, reset = 220, exit = 230, configuration_1 = 235,
              configuration_2 = 240, print_setup_3 = 250, login = 260, database = 265, show_results = 270,
              results_file_3 = 280, clear_results = 290, configuration_3 = 300, after_run = 310;
constexpr int first_tool = 1000, last_tool = 1019;
}  // namespace command

enum class Menu { run, results, configure, tools, help };
struct MenuTitle {
  Menu menu;
  int title;
};
std::span<const MenuTitle> menu_titles();

struct MenuCommand {
  int id;
  Menu menu;
  int label;
  int right;             // operator_right
  const char* key;       // shortcut, or null
  bool is_checked_item;  // carries a check mark
  bool begins_group;     // a line stands above it
  int missing = 0;       // why it is not offered here, 0 if it is
};
std::span<const MenuCommand> menu_commands();
const MenuCommand* menu_command(int id);

}  // namespace orvane
