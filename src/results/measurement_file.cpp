#include "results/measurement_file.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "config/startup_config.h"
#include "evaluation/result_store.h"
#include "evaluation/uncertainty.h"
#include "platform/files.h"
#include "platform/local_time.h"
#include "platform/locale_signs.h"
#include "platform/platform.h"
#include "settings/settings.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/dates.h"
#include "values/numbers.h"

namespace orvane {
namespace {

using Q = Quantity;

constexpr std::size_t path_limit = 260;
constexpr std::size_t name_width = 22;

namespace mfile_form {
constexpr int quoted = 2, standard = 3, verbose = 4;  // 1: the delimited form
}

// One column: its name, its text, empty for a quantity that the test does not have.
struct Cell {
  std::string name;
  std::string text;
  bool is_number = false;
};

class Cells {
 public:
  Cells(RunState& run, const FscRecord& statement) : run_(run), statement_(statement) {}

  std::vector<Cell> all() {
    text("Step Number", formatted("%d.%03d", statement_.test_major(), statement_.test_minor()));
    number("Welch-Satterthwaite Flag", run_.uncertainty.has(unc_flag::welch_satterthwaite) ? 1 : 0);
    variable("Asset", "UUT_CODE$");
    const std::tm started = local_time(run_.pipeline.times.started);
    text("Start Date", format_time("%F", started).value_or(""));
    text("Start Time", format_time("%T", started).value_or(""));
    number("UUT Indicated", run_.test.indicated);
    number("System Actual", run_.test.actual);
    chain();
    number("NThrow", run_.uncertainty.nthrow);
    number("Number of Measurements", static_cast<double>(run_.uncertainty.readings.size()));
    int i = 0;
    for (const double reading : run_.uncertainty.readings) number("Value " + std::to_string(++i), reading);
    return std::move(cells_);
  }

 private:
  void text(std::string name, std::string value) {
    cells_.push_back({std::move(name), std::move(value), false});
  }
  void number(std::string name, double value) {
    cells_.push_back({std::move(name), print_number(value, 'g', 10), true});
  }
  void variable(std::string name, std::string_view variable) {
    const std::string* value = run_variable(run_, variable);
    text(std::move(name), value != nullptr ? *value : std::string());
  }
  void quantity(std::string name, Q which) {
    if (run_.uncertainty.valid(which)) {
      number(std::move(name), run_.uncertainty[which]);
    } else {
      cells_.push_back({std::move(name), {}, true});
    }
  }
  void family(const std::string& name, Q first) {
    for (int i = 1; i <= component_count; ++i) quantity(name + std::to_string(i), component(first, i));
  }

  void chain() {
    struct Row {
      const char* name;
      Q which;
    };
    constexpr Row heads[] = {{"Expanded Uncertainty", Q::exp_unc},
                             {"Standard Uncertainty", Q::std_unc},
                             {"Confidence", Q::conf},
                             {"Coverage", Q::cov_fac},
                             {"F", Q::f},
                             {"System Accuracy", Q::sys_acc},
                             {"S1", Q::s1},
                             {"S2", Q::s2},
                             {"Standard Deviation", Q::sdev},
                             {"RSS", Q::rss}};
    for (const Row& row : heads) quantity(row.name, row.which);
    family("U", Q::u1);
    family("C", Q::c1);
    quantity("CS1", Q::cs1);
    quantity("CS2", Q::cs2);
    quantity("DF", Q::df);
    family("DF", Q::df1);
    quantity("DFS1", Q::dfs1);
    quantity("DFS2", Q::dfs2);
    if (const auto resolution = r_uut_resolution(run_)) {
      number("UUT Resolution", *resolution);
    } else {
      cells_.push_back({"UUT Resolution", {}, true});
    }
  }

  RunState& run_;
  const FscRecord& statement_;
  std::vector<Cell> cells_;
};

// ---- The forms ----

std::string verbose_text(const std::vector<Cell>& cells) {
  const std::tm now = local_time(platform().clock->now());
  std::string out;
  const auto line = [&](std::string name, const std::string& value) {
    if (name.size() < name_width) name.resize(name_width, ' ');
    std::string shown = value.empty() ? "N/A" : value;
    for (char& c : shown) {
      if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    out += name + " = " + shown + "\r\n";
  };
  line("Time", format_time("%F %T", now).value_or(""));
  for (const Cell& cell : cells) line(cell.name, cell.text);
  return out;
}

struct Delimiters {
  std::string separator = ", ";
  char decimal = '.';
  bool quotes = false;
};

Delimiters delimiters_of(int format) {
  Delimiters out;
  if (format != mfile_form::standard) {
    const NumberSigns signs = user_number_signs();
    out.separator.assign(1, signs.separator);
    out.decimal = signs.decimal;
  }
  out.quotes = format == mfile_form::quoted;
  return out;
}

// A text that would be taken for more than one column or line is quoted in every form.
std::string element(std::string text, const Delimiters& delimiters, bool is_number) {
  if (is_number) std::replace(text.begin(), text.end(), '.', delimiters.decimal);
  const bool splits = text.find(delimiters.separator[0]) != std::string::npos ||
                      text.find_first_of("\"\r\n") != std::string::npos;
  if (is_number || (!delimiters.quotes && !splits)) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

std::string delimited_line(const std::vector<Cell>& cells, const Delimiters& delimiters, bool names) {
  std::string out;
  for (const Cell& cell : cells) {
    if (&cell != &cells.front()) out += delimiters.separator;
    out += names ? element(cell.name, delimiters, false) : element(cell.text, delimiters, cell.is_number);
  }
  return out + "\r\n";
}

// ---- The file ----

bool append(const std::string& path, const std::string& text) {
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "ab"));
  if (file == nullptr) return errp(297, path);
  const bool written = std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
  return (std::fclose(file.release()) == 0 && written) || errp(298, path);
}

}  // namespace

bool mfile_write(RunState& run, const FscRecord& statement) {
  const std::string name = setting_text(run, Setting::MFILE);
  if (name.empty()) return true;
  std::string path;
  if (!join_path(path, path_limit, startup_config().user_data_dir, name)) return errp(299, name);
  const std::vector<Cell> cells = Cells(run, statement).all();
  const int format = setting_code(run, Setting::MFILE_FORMAT);
  if (format == mfile_form::verbose) return append(path, verbose_text(cells));
  const Delimiters delimiters = delimiters_of(format);
  std::string text = delimited_line(cells, delimiters, false);
  if (file_size(path).value_or(0) == 0) text.insert(0, delimited_line(cells, delimiters, true));
  return append(path, text);
}

}  // namespace orvane
