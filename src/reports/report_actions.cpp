#include "reports/report_actions.h"

#include <algorithm>
#include <array>
#include <memory>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "platform/process.h"
#include "reports/export.h"
#include "reports/page_layout.h"
#include "reports/report.h"
#include "reports/result_directory.h"
#include "reports/saved_run.h"
#include "state/pump.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr std::size_t report_limit_bytes = 512u << 20;
constexpr std::uint64_t record_room = 300;    // that the list's record takes, and some
constexpr std::uint32_t shown_for_ms = 1200;  // how long the note of a save stands
constexpr std::size_t path_length = 260;

struct CommandRow {
  int command;
  char kind;  // in rslt.dir
  int title;  // message
  int saved;  // message
  PrintUse use;
};
constexpr CommandRow command_rows[] = {
    {report_command::certificate, result_kind::certificate, 31286, 4911, PrintUse::certificates},
    {report_command::results, result_kind::results, 31287, 4912, PrintUse::results},
    {report_command::summary, result_kind::summary, 31288, 4913, PrintUse::results},
    {report_command::as_found, result_kind::as_found, 31289, 4915, PrintUse::results},
    {report_command::as_left, result_kind::as_left, 31290, 4916, PrintUse::results},
};
const CommandRow* row_of(int command) {
  const auto at = std::find_if(std::begin(command_rows), std::end(command_rows),
                               [&](const CommandRow& row) { return row.command == command; });
  return at != std::end(command_rows) ? at : nullptr;
}

std::string sorted_log() { return work_file("rsltsort.tmp"); }
std::string report_file() { return work_file("result.lst"); }

bool read_report(const std::string& file, ReportText& report) {
  std::string contents;
  if (read_file(file, report_limit_bytes, contents) != ReadResult::ok) return errp(31291, file);
  report = report_text(contents);
  return true;
}

std::string joined_lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) (text += line) += '\n';
  return text;
}

bool ends_in_pdf(std::string_view path) {
  constexpr std::string_view ending = ".pdf";
  if (path.size() < ending.size()) return false;
  return std::equal(ending.begin(), ending.end(), path.end() - static_cast<std::ptrdiff_t>(ending.size()),
                    [](char a, char b) { return a == (b >= 'A' && b <= 'Z' ? b + ('a' - 'A') : b); });
}

bool write_pages(const std::string& title, const ReportText& report, const std::string& path) {
  PrinterSystem* printers = platform().printers;
  if (printers == nullptr || !printers->makes_pages()) return errp(31292, path);
  const std::unique_ptr<Printer> pages = printers->open_pdf(path);
  return pages != nullptr && draw_report(*pages, title, report);
}

// The folder must take the file and its record.
bool has_room(const std::string& file) {
  const std::string list = result_directory_file();
  if (list.empty()) return errp(31281);
  const auto size = file_size(file);
  if (!size) return errp(4952, file);
  const auto room = free_space(startup_config().rsltdir);
  if (!room) return errp(4953, startup_config().rsltdir);
  return *room >= *size + record_room || errp(4954, startup_config().rsltdir);
}

void tell_saved(int message, const std::string& path) {
  const auto note = platform().desk->wait({msg(31293), msg(message, path), false});
  if (platform().desk->is_watched()) static_cast<void>(pumping_wait(shown_for_ms));
}

// A report with what can be done with it.
class Viewer {
 public:
  Viewer(const std::string& title, const std::string& file, PrintUse use)
      : title_(title), file_(file), use_(use) {}

  bool show() {
    if (!read_report(file_, report_)) return false;
    for (;;) {
      const int code = platform().desk->lines(window());
      if (code == answer::failed) return errp(2204, title_);
      if (code == report_do::print) {
        static_cast<void>(print_report_file(title_, file_, use_));
      } else if (code == report_do::save_as) {
        static_cast<void>(save_report_as(title_, file_));
      } else if (code == preview) {
        platform().printers->preview(
            use_, title_, [this](Printer& pages) { static_cast<void>(draw_report(pages, title_, report_)); });
      } else if (code == system_viewer) {
        const std::string path = work_file("report.pdf");
        if (write_pages(title_, report_, path)) static_cast<void>(platform().printers->open_in_viewer(path));
      } else {
        return true;
      }
    }
  }

 private:
  static constexpr int preview = 46, system_viewer = 48;

  LinesWindow window() const {
    LinesWindow window;
    window.kind = WindowKind::viewer;
    window.title = title_;
    window.lines = report_lines(report_);
    window.buttons = {
        {answer::ok, msg(31294), true}, {report_do::print, msg(31295)}, {report_do::save_as, msg(31296)}};
    if (platform().printers != nullptr && platform().printers->makes_pages()) {
      window.buttons.push_back({preview, msg(31330)});
      window.buttons.push_back({system_viewer, msg(31331)});
    }
    return window;
  }

  const std::string& title_;
  const std::string& file_;
  const PrintUse use_;
  ReportText report_;
};

}  // namespace

bool view_report(const std::string& title, const std::string& file, PrintUse use) {
  return platform().desk != nullptr && Viewer(title, file, use).show();
}

bool print_report_file(const std::string& title, const std::string& file, PrintUse use) {
  ReportText report;
  if (!read_report(file, report)) return false;
  if (platform().printers == nullptr) return errp(4856);
  const std::unique_ptr<Printer> printer = platform().printers->open(use);
  return printer != nullptr && print_report(*printer, title, report);
}

bool save_report_as(const std::string& title, const std::string& file) {
  ReportText report;
  if (platform().desk == nullptr || !read_report(file, report)) return false;
  AskWindow window;
  window.title = msg(31296);
  window.lines = {msg(31297, title)};
  window.buttons = {{answer::ok, msg(30043), true}, {answer::terminate, msg(30044)}};
  window.length = path_length;
  window.names_a_file = true;
  for (std::string name;;) {
    if (platform().desk->ask(window, name) != answer::ok) return false;
    if (name.empty()) continue;
    const std::string path = system_text(name);
    const std::array<MessageArg, 1> args = {name};
    if (file_exists(path) && yesnoph(31298, args) != answer::yes) {
      if (!platform().desk->is_watched()) return false;
      continue;
    }
    if (ends_in_pdf(name)) return write_pages(title, report, path);
    if (replace_file(path, joined_lines(report_lines(report)))) return true;
    errp(31283, title, name);
  }
}

bool report_action(RunState& run, int command, int action) {
  const CommandRow* row = row_of(command);
  if (!report_set_kind(run, command) || row == nullptr) return false;
  if (!report_build(run, sorted_log(), report_file())) return false;
  const std::string title = msg(row->title);
  switch (action) {
    case report_do::view: return view_report(title, report_file(), row->use);
    case report_do::print: return print_report_file(title, report_file(), row->use);
    default: return save_report_as(title, report_file());
  }
}

bool report_save(RunState& run, int command, int kind) {
  if (platform().desk == nullptr) return false;
  auto progress = platform().desk->wait({msg(31293), msg(780), false});
  if (kind == save_kind::sdf_summary) {
    if (!export_summary(run)) return false;
    progress.reset();
    tell_saved(31299, startup_config().calhist_results);
    return true;
  }
  const CommandRow* row = row_of(command);
  if (!report_set_kind(run, command) || row == nullptr) return false;
  const bool raw = kind != save_kind::report;
  const std::string file = raw ? work_file("rslt.raw") : report_file();
  if (raw ? !saved_run_write(run, file) : !report_build(run, sorted_log(), file)) return false;
  if (!has_room(file)) return false;
  SavedResult entry = saved_result_of(run, row->kind);
  if (!save_result_file(file, entry)) return false;
  const std::string path = saved_file_path(entry);
  run_variable_set(run, "RESULTS_FILE_NAME$", path);
  progress.reset();
  tell_saved(row->saved, path);
  return true;
}

}  // namespace orvane
