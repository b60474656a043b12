#include "reports/saved_run.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "config/startup_config.h"
#include "platform/files.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 512u << 20, line_width = 72;

std::string one_line(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
  return text;
}

std::string fixed_line(std::string text) {
  text = one_line(std::move(text));
  text.resize(std::max(text.size(), line_width), ' ');
  return text + '\n';
}

std::string title_of(const RunState& run) {
  std::string title;
  for (const char* name : {"PROC_NAME$", "UUT_CODE$", "SER_NUM$", "DATE$", "TIME$"}) {
    const std::string* value = run_variable(run, name);
    if (value != nullptr && !value->empty()) title += (title.empty() ? "" : "  ") + *value;
  }
  return title.substr(0, line_width);
}

// "%8ld %8ld %8ld": whole numbers with blanks between them.
bool read_places(std::string_view text, std::array<std::size_t, 3>& places) {
  for (std::size_t& place : places) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), place);
    if (error != std::errc()) return false;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  }
  return text.find_first_not_of(" \r") == std::string_view::npos;
}

}  // namespace

bool saved_run_text(RunState& run, std::string_view log, std::string& text) {
  std::vector<TraceRecord> standards;
  if (!trace_used_records(run, standards)) return false;
  text = fixed_line(title_of(run));
  const std::size_t variables_at = text.size();
  for (const auto& [name, value] : run_variable_list(run)) text += name + "=" + one_line(value) + "\n";
  const std::size_t trace_at = text.size();
  text += trace_dump(standards);
  const std::size_t log_at = text.size();
  text += log;
  text += fixed_line(formatted("%8ld %8ld %8ld", static_cast<long>(variables_at), static_cast<long>(trace_at),
                               static_cast<long>(log_at)));
  return true;
}

bool saved_run_write(RunState& run, const std::string& path) {
  const std::string sorted = work_file("rsltsort.tmp");
  std::string log, text;
  if (read_file(sorted, file_limit, log) != ReadResult::ok) return errp(4952, sorted);
  if (!log.empty() && log.back() != '\n') log += '\n';
  if (!saved_run_text(run, log, text)) return false;
  return replace_file(path, text) || errp(31241, path);
}

bool saved_run_parse(std::string_view contents, const std::string& path, SavedRun& saved) {
  saved = {};
  const auto damaged = [&] { return errp(31243, path); };
  std::string_view body = contents;
  if (!body.ends_with('\n')) return damaged();
  body.remove_suffix(1);
  const std::size_t last = body.rfind('\n');
  std::array<std::size_t, 3> places{};
  // A trailer of another width was cut off, and its last number may be half of one.
  if (last == std::string_view::npos || body.size() - last - 1 != line_width ||
      !read_places(body.substr(last + 1), places))
    return damaged();
  const auto [variables_at, trace_at, log_at] = places;
  const std::size_t end = last + 1;
  if (variables_at > trace_at || trace_at > log_at || log_at > end) return damaged();
  // Each part begins behind the end of a line.
  for (const std::size_t place : places) {
    if (place == 0 || contents[place - 1] != '\n') return damaged();
  }
  const std::string_view title = contents.substr(0, contents.find('\n'));
  saved.title = title.substr(0, title.find_last_not_of(' ') + 1);
  for (std::string_view rest = contents.substr(variables_at, trace_at - variables_at); !rest.empty();) {
    const std::size_t line_end = rest.find('\n');
    const std::string_view line = rest.substr(0, line_end);
    rest.remove_prefix(line_end == std::string_view::npos ? rest.size() : line_end + 1);
    const std::size_t sign = line.find("$=");
    if (sign == std::string_view::npos) return damaged();
    const auto name = run_variable_name(line.substr(0, sign + 1));
    if (!name) return damaged();
    saved.variables.emplace_back(*name, line.substr(sign + 2));
  }
  saved.log = contents.substr(log_at, end - log_at);
  return trace_parse(contents.substr(trace_at, log_at - trace_at), path, saved.standards);
}

bool saved_run_read(const std::string& path, SavedRun& saved) {
  std::string contents;
  if (read_file(path, file_limit, contents) != ReadResult::ok) return errp(31242, path);
  return saved_run_parse(contents, path, saved);
}

}  // namespace orvane
