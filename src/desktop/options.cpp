#include "desktop/options.h"

#include "frontend/program_line.h"

namespace orvane {

std::optional<int> parse_desktop_line(int argc, const char* const* argv, DesktopOptions& options) {
  CLI::App app{"Runs compiled calibration procedures on the desktop.", "orvane"};
  add_program_options(app, options);
  app.footer(
      "System words: -run NAME  -dir FOLDER  -load  -pack  -hide  -exit  -logo  -AutoTest  -trace  "
      "-Tletters");
  return parse_program_line(app, argc, argv, options);
}

}  // namespace orvane
