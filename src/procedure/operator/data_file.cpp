#include "procedure/operator/data_file.h"

#include <algorithm>
#include <cmath>

#include "config/startup_config.h"
#include "platform/files.h"
#include "text/expand.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr int digits = 12;
constexpr std::string_view name = "dosdose.dat";
constexpr std::size_t path_limit = 4096;
constexpr std::uint32_t longest_text = RegisterFile::mem2_limit;

std::string counted(std::string_view text) {
  return std::to_string(text.size()) + (text.empty() ? "" : " ") + std::string(text) + "\n";
}

// Reads line by line and remembers where it is.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  int line() const { return line_; }
  bool at_end() const { return rest_.find_first_not_of("\r\n") == std::string_view::npos; }

  bool number(double& value) {
    const std::optional<double> read = whole_number(trim_blanks(next()));
    if (read) value = *read;
    return read && std::isfinite(*read);
  }

  bool count(std::uint32_t highest, std::uint32_t& value) {
    const auto read = element_number(trim_blanks(next()), 0, highest);
    value = read.value_or(0);
    return read.has_value();
  }

  // The length says where the text ends, whatever bytes it is made of.
  bool text(std::string& out) {
    ++line_;
    const std::size_t end = std::min(rest_.find_first_of(" \r\n"), rest_.size());
    const auto length = element_number(rest_.substr(0, end), 0, longest_text);
    if (!length) return false;
    rest_.remove_prefix(end);
    if (rest_.starts_with(' ')) rest_.remove_prefix(1);
    if (rest_.size() < *length) return false;
    out = rest_.substr(0, *length);
    rest_.remove_prefix(*length);
    return out.find('\n') == std::string::npos && end_of_line();
  }

 private:
  std::string_view next() {
    ++line_;
    const std::size_t end = std::min(rest_.find('\n'), rest_.size());
    std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
  }

  bool end_of_line() {
    if (rest_.starts_with('\r')) rest_.remove_prefix(1);
    if (rest_.empty()) return true;
    if (!rest_.starts_with('\n')) return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view rest_;
  int line_ = 0;
};

bool read_lines(Reader& reader, std::uint32_t count, std::string& out) {
  out.clear();
  for (std::uint32_t i = 0; i < count; ++i) {
    std::string line;
    if (!reader.text(line)) return false;
    out += (i > 0 ? "\n" : "") + line;
    if (out.size() > longest_text) return false;
  }
  return true;
}

bool read_all(Reader& reader, ProgramData& data) {
  std::uint32_t lines = 0, status = 0;
  if (!reader.number(data.mem) || !reader.number(data.mem1) || !reader.count(longest_text, lines))
    return false;
  data.mem2.clear();
  if (lines == 0 && reader.at_end()) return true;
  if (!reader.count(program_status::number, status) || !reader.number(data.percent) ||
      !read_lines(reader, lines, data.mem2))
    return false;
  data.status = static_cast<int>(status);
  return reader.at_end() || reader.text(data.text);
}

}  // namespace

std::string program_data_path() {
  const StartupConfig& config = startup_config();
  const std::string& folder = !config.user_data_dir.empty() ? config.user_data_dir : config.user_cwd;
  std::string path;
  if (folder.empty() || !join_path(path, path_limit, folder, name)) return work_file(name);
  return path;
}

std::string write_program_data(const ProgramData& data) {
  std::string lines;
  std::size_t count = 0;
  for (std::string_view rest = data.mem2; !data.mem2.empty(); ++count) {
    const std::size_t end = rest.find('\n');
    lines += counted(rest.substr(0, end));
    if (end == std::string_view::npos) {
      ++count;
      break;
    }
    rest.remove_prefix(end + 1);
  }
  return print_number(data.mem, 'g', digits) + "\n" + print_number(data.mem1, 'g', digits) + "\n" +
         std::to_string(count) + "\n" + std::to_string(data.status) + "\n" +
         print_number(data.percent, 'g', digits) + "\n" + lines + counted(data.text);
}

bool read_program_data(std::string_view text, ProgramData& data, int& line) {
  Reader reader(text);
  ProgramData read;
  const bool ok = read_all(reader, read);
  line = reader.line();
  if (ok) data = std::move(read);
  return ok;
}

}  // namespace orvane
