#include "results/delimited_files.h"

#include <charconv>
#include <cstdio>
#include <memory>

#include "config/startup_config.h"
#include "evaluation/result_store.h"
#include "results/result_fields.h"
#include "results/results.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/units.h"

namespace orvane {
namespace {

using F = ResultField;

// ---- Columns ----

// A column that no field fills.
enum class Fixed : std::uint8_t {
  none,
  quantity,
  zero,
  asset,
  date,
  procedure,
  revision,
  operator_name,
  serial
};

struct Column {
  F field = F::count;
  Fixed fixed = Fixed::none;
  int family = 0;  // so many fields from this one on

  constexpr Column(F one, int many = 1) : field(one), family(many) {}
  constexpr Column(Fixed one) : fixed(one) {}
};

// clang-format off
constexpr Column columns[] = {
    F::row, F::test_description, F::fixed_quantity, F::variable_quantity, F::lower_limit, F::upper_limit, F::test_status,
    F::expanded_uncertainty, F::standard_uncertainty, F::coverage_factor, F::condition, F::remark, F::cardinal_point,

    F::cardinal_is_fixed, F::nominal, F::mod1, F::system_actual, F::correction_flag, F::uut_indicated, F::expected_value,
    F::measurement, F::measured_by_uut, F::deviation, F::error, F::relative_error, F::correction_amount, Fixed::quantity,
    F::tolerance_reference, F::negative_test_tolerance, F::positive_test_tolerance, F::test_tolerance,
    F::test_uncertainty_ratio, F::tolerance_error, F::uncertainty_method,

    F::nthrow, F::reading_count, F::standard_deviation, Fixed::zero, Fixed::zero, F::students_t_factor, F::use_st, F::ws,
    Fixed::zero,

    {F::degrees_of_freedom_1, 10}, F::degrees_of_freedom_s1, F::degrees_of_freedom_s2, F::degrees_of_freedom,
    {F::uncertainty_component_1, 10}, {F::sensitivity_coefficient_1, 10}, F::cs1, F::cs2, F::s1, F::s2, Fixed::quantity,

    F::test_step, F::test_status_2, F::result_type, F::accreditation_flag, F::guardbanding_method,
    F::guardbanded_lower_limit, F::guardbanded_upper_limit, F::system_accuracy, F::system_coverage_factor, F::uut_range,
    F::uut_resolution, F::sense, F::input_impedance, F::output_impedance_1, F::output_impedance_2,

    F::waveform_1, F::amplitude_1, F::frequency_1, F::period_1, F::pulse_width, F::dc_offset, F::duty_cycle, F::rise_time,
    F::fall_time, F::trigger_skew, F::video, F::polarity, F::rtd_type, F::rtd_nominal_resistance, F::thermocouple_type,
    F::modulation_source, F::am_depth, F::fm_deviation, F::phase_deviation, F::waveform_2, F::amplitude_2, F::frequency_2,
    F::period_2, F::power, F::phase, F::displacement_power_factor, F::dpf_polarity,

    Fixed::asset, Fixed::date, Fixed::procedure, Fixed::revision, Fixed::operator_name, Fixed::serial};
// clang-format on

// ---- Elements ----

void put_quoted(std::string& out, std::string_view text) {
  out += '\'';
  for (std::size_t quote = text.find('\''); quote != std::string_view::npos; quote = text.find('\'')) {
    out.append(text.substr(0, quote + 1)).append(1, '\'');
    text.remove_prefix(quote + 1);
  }
  out.append(text).append(1, '\'');
}

void put_text(std::string& out, std::string_view text) {
  if (!text.empty()) put_quoted(out, text);
  out += ',';
}

void put_integer(std::string& out, int value) {
  char room[16];
  const auto made = std::to_chars(room, room + sizeof room, value);
  out.append(room, made.ptr).append(1, ',');
}

void put_unit(std::string& out, std::uint8_t prefix, std::string_view unit) {
  const auto classic = prefix_symbol(prefix);
  put_text(out, classic ? *classic : prefix_display(prefix).value_or(""));
  put_text(out, unit);
}

void put_field(std::string& out, const ResultRecord& record, F field) {
  const ResultValue* value = record.find(field);
  switch (result_field_row(field).kind) {
    case ResultKind::integer: put_integer(out, value != nullptr ? static_cast<int>(value->raw) : 0); return;
    case ResultKind::text:
      put_text(out, value != nullptr ? record.text_of(*value) : std::string_view());
      return;
    case ResultKind::value: break;
  }
  if (value == nullptr) {
    out += ",,,";
  } else {
    if (value->printed_size != 0) {
      put_text(out, record.printed(*value));
    } else {
      put_text(out, r_text(record, field));
    }
    put_unit(out, value->prefix, r_units(record, *value));
  }
}

// The texts that are the same in every line.
struct RunTexts {
  std::string asset, date, procedure, revision, operator_name, serial;

  explicit RunTexts(const RunState& run) {
    const auto text = [&](std::string_view name) {
      const std::string* value = run_variable(run, name);
      return value != nullptr ? *value : std::string();
    };
    asset = text("UUT_CODE$");
    date = text("DATE$");
    procedure = text("PROC_NAME$");
    revision = text("PROC_REV$");
    operator_name = text("OPERATOR_NAME$");
    serial = text("SER_NUM$");
  }
  std::string_view of(Fixed fixed) const {
    switch (fixed) {
      case Fixed::asset: return asset;
      case Fixed::date: return date;
      case Fixed::procedure: return procedure;
      case Fixed::revision: return revision;
      case Fixed::operator_name: return operator_name;
      default: return serial;
    }
  }
};

void end_line(std::string& out, std::string_view last) {
  if (!last.empty()) put_quoted(out, last);
  out += "\r\n";
}

void put_result(std::string& out, const RunTexts& texts, const ResultRecord& record) {
  for (const Column& column : columns) {
    switch (column.fixed) {
      case Fixed::none:
        for (int i = 1; i <= column.family; ++i) put_field(out, record, result_field(column.field, i));
        break;
      case Fixed::quantity: out += ",,,"; break;
      case Fixed::zero: out += "0,"; break;
      default: put_text(out, texts.of(column.fixed)); break;
    }
  }
  const ResultValue* last = record.find(F::test_step_2);
  end_line(out, last != nullptr ? record.text_of(*last) : std::string_view());
}

void put_readings(std::string& out, const RunTexts& texts, const ResultRecord& record) {
  const std::string_view unit = unit_symbol_or_empty(record.reading_unit);
  for (std::size_t i = 0; i < record.readings.size(); ++i) {
    put_text(out, texts.asset);
    put_text(out, texts.date);
    put_integer(out, static_cast<int>(record.row));
    put_text(out, std::to_string(i));
    put_text(out, reading_text(record, i));
    put_unit(out, record.reading_prefix, unit);
    for (const std::string* text : {&texts.procedure, &texts.revision, &texts.operator_name})
      put_text(out, *text);
    end_line(out, texts.serial);
  }
}

// ---- Files ----

class File {
 public:
  // A name that is taken is nobody's fault.
  enum class Made { yes, taken, no };
  Made make(const std::string& path) {
    file_.reset(std::fopen(path.c_str(), "wbx"));
    if (file_ != nullptr) return Made::yes;
    return errno == EEXIST ? Made::taken : Made::no;
  }
  std::string buffer;
  // False once a write has failed.
  bool write(std::size_t above = 0) {
    if (buffer.size() <= above) return good_;
    good_ = good_ && std::fwrite(buffer.data(), 1, buffer.size(), file_.get()) == buffer.size();
    buffer.clear();
    return good_;
  }
  bool close() {
    if (file_ == nullptr) return true;
    const bool written = write();
    return std::fclose(file_.release()) == 0 && written;
  }

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Close> file_;
  bool good_ = true;
};

constexpr std::size_t block = std::size_t{1} << 20;

class Pair {
 public:
  Pair(RunState& run, DelimitedPair& paths) : run_(run), paths_(paths) {}

  bool write() {
    if (!make()) return false;
    if (fill() && close()) return true;
    remove(paths_.results);
    remove(paths_.readings);
    return false;
  }

 private:
  static void remove(const std::string& path) { std::remove(path.c_str()); }

  bool make() {
    for (int number = 1;; ++number) {
      paths_.results = work_file(formatted("results-%03d.txt", number));
      paths_.readings = work_file(formatted("readings-%03d.txt", number));
      const File::Made first = results_.make(paths_.results);
      if (first == File::Made::no) return errp(694, paths_.results);
      if (first == File::Made::taken) continue;
      const File::Made second = readings_.make(paths_.readings);
      if (second == File::Made::yes) return true;
      static_cast<void>(results_.close());
      remove(paths_.results);
      if (second == File::Made::no) return errp(695, paths_.readings);
    }
  }

  bool fill() {
    const RunTexts texts(run_);
    const auto& records = run_.results.records;
    RowProgress progress(msg(696), records.size());
    for (const auto& record : records) {
      progress.row();
      put_result(results_.buffer, texts, *record);
      put_readings(readings_.buffer, texts, *record);
      if (!results_.write(block)) return errp(691, paths_.results);
      if (!readings_.write(block)) return errp(691, paths_.readings);
    }
    return true;
  }

  bool close() {
    const bool first = results_.close(), second = readings_.close();
    return (first && second) || errp(691, first ? paths_.readings : paths_.results);
  }

  RunState& run_;
  DelimitedPair& paths_;
  File results_, readings_;
};

}  // namespace

bool write_delimited_pair(RunState& run, DelimitedPair& pair) { return Pair(run, pair).write(); }

}  // namespace orvane
