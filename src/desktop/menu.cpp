#include "desktop/menu.h"

#include "procedure/pipeline/database.h"

namespace orvane {
namespace {

// Why a command is not offered.
constexpr int no_instrument_dialogs = 30832, no_database = 30833;

constexpr MenuTitle titles[] = {{Menu::run, 30821},
                                {Menu::results, 30822},
                                {Menu::configure, 30823},
                                {Menu::tools, 30824},
                                {Menu::help, 30825}};

// clang-format off
constexpr MenuCommand commands[] = {
    {command::run,             Menu::run,       4347, operator_right::common,   "F5",     false, false},
    {command::abort,           Menu::run,       4343, operator_right::always,   nullptr,  false, false},
    {command::by_procedure,    Menu::run,       4345, operator_right::common,   nullptr,  true,  true},
    {command::by_asset,        Menu::run,       4344, operator_right::common,   nullptr,  true,  false, no_database},
    {command::by_workload,     Menu::run,       4346, operator_right::workload, nullptr,  true,  false},
    {command::real_mode,       Menu::run,       4350, operator_right::common,   nullptr,  true,  true},
    {command::reset,           Menu::run,       4352, operator_right::reset,    "F12",    false, false},
    {command::login,           Menu::run,       4357, operator_right::common,   nullptr,  false, true,  no_database},
    {command::exit,            Menu::run,       4353, operator_right::common,   "Ctrl+Q", false, true},
    {command::show_results,    Menu::results,   4359, operator_right::common,   "F8",     false, false},
    {command::clear_results,   Menu::results,   4361, operator_right::common,   nullptr,  false, false},
    {command::results_file_1,  Menu::results,   4342, operator_right::common,   nullptr,  false, true},
    {command::results_file_2,  Menu::results,   4341, operator_right::common,   nullptr,  false, false},
    {command::results_file_3,  Menu::results,   4360, operator_right::common,   nullptr,  false, false},
    {command::database,        Menu::results,   4391, operator_right::common,   "Ctrl+D", false, true,  no_database},
    {command::instruments,     Menu::configure, 4348, operator_right::common,   nullptr,  false, false, no_instrument_dialogs},
    {command::configuration_1, Menu::configure, 2810, operator_right::common,   nullptr,  false, false, no_instrument_dialogs},
    {command::configuration_2, Menu::configure, 4355, operator_right::common,   nullptr,  false, false, no_instrument_dialogs},
    {command::configuration_3, Menu::configure, 4338, operator_right::common,   nullptr,  false, false, no_instrument_dialogs},
    {command::print_setup_0,   Menu::configure, 4349, operator_right::common,   nullptr,  false, true},
    {command::print_setup_1,   Menu::configure, 4351, operator_right::common,   nullptr,  false, false},
    {command::print_setup_3,   Menu::configure, 4390, operator_right::common,   nullptr,  false, false},
    {command::after_run,       Menu::configure, 7012, operator_right::common,   nullptr,  false, true},
    {command::about,           Menu::help,      4340, operator_right::always,   "F1",     false, false},
};
// clang-format on

}  // namespace

std::span<const MenuTitle> menu_titles() { return titles; }
std::span<const MenuCommand> menu_commands() { return commands; }

const MenuCommand* menu_command(int id) {
  for (const MenuCommand& row : commands) {
    if (row.id == id) return &row;
  }
  return nullptr;
}

}  // namespace orvane
