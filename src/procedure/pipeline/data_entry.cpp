#include "procedure/pipeline/data_entry.h"

#include <algorithm>
#include <span>

#include "config/line_reader.h"
#include "config/value_grammar.h"
#include "messages/catalogue.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t file_limit = 1U << 20, line_limit = 400, fault_limit = 100;
constexpr std::size_t text_line_limit = 32;  // lines of text above a form

// Goes through the lines and knows the section and the field in hand.
class Reader {
 public:
  Reader(const std::string& path, DataEntry& entry, std::vector<EntryFault>& faults)
      : path_(path), entry_(entry), faults_(faults) {}

  void read(std::string_view text) {
    LineReader lines(text, line_limit, LineReader::Skip::blank_and_comments);
    std::string line;
    for (auto got = lines.next(line); got != LineReader::Result::end; got = lines.next(line)) {
      line_ = lines.number();
      if (got == LineReader::Result::too_long) {
        refuse(30611, line_limit);
      } else if (line.find('\0') != std::string::npos) {
        refuse(30612);
      } else {
        take(trim_blanks(line));
      }
      if (faults_.size() >= fault_limit) return;
    }
    end_field();
  }

 private:
  enum class Section { none, unknown, variables, environment, form };

  template <class... A>
  void refuse(int number, const A&... args) {
    refuse_at(line_, number, args...);
  }
  template <class... A>
  void refuse_at(int line, int number, const A&... args) {
    faults_.push_back({number, formatted("%s:%d: %s", path_, line, msg(number, args...))});
  }

  void take(std::string_view line) {
    if (line.starts_with('[')) return section(line);
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals == 0) return refuse(30612);
    key_ = trim_blanks(line.substr(0, equals));
    value_ = trim_blanks(line.substr(equals + 1));
    switch (section_) {
      case Section::none: return refuse(30614);
      case Section::unknown: return;  // told at its heading
      case Section::variables: return variables();
      case Section::environment: return environment();
      case Section::form: return form();
    }
  }

  void section(std::string_view line) {
    end_field();
    const std::string_view name =
        line.ends_with(']') ? trim_blanks(line.substr(1, line.size() - 2)) : std::string_view();
    section_ = Section::form;
    if (same_word(name, "start")) {
      form_ = &entry_.start;
    } else if (same_word(name, "end")) {
      form_ = &entry_.end;
    } else if (same_word(name, "environment")) {
      section_ = Section::environment;
    } else if (same_word(name, "variables")) {
      section_ = Section::variables;
    } else {
      section_ = Section::unknown;
      refuse(30613, line);
    }
  }

  void variables() {
    if (!same_word(key_, "variable")) return refuse(30615, key_);
    const auto name = run_variable_name(value_);
    if (!name) return refuse(30617, value_);
    if (entry_variable_written(*name)) return refuse(30618, *name);
    own_.push_back(*name);
  }

  void environment() {
    if (!same_word(key_, "ask")) return refuse(30615, key_);
    std::string_view words = value_;
    while (!words.empty()) {
      const std::size_t end = std::min(words.find_first_of(" \t,"), words.size());
      const std::string_view word = words.substr(0, end);
      words = words.substr(std::min(words.find_first_not_of(" \t,", end), words.size()));
      if (same_word(word, "start")) {
        entry_.environment_at_start = true;
      } else if (same_word(word, "end")) {
        entry_.environment_at_end = true;
      } else if (!same_word(word, "none")) {
        refuse(30616, word, "ask", "start, end, none");
      }
    }
  }

  // One row a key of a form.
  struct FieldKey {
    std::string_view name;
    void (Reader::*take)();
    bool needs_field;
  };
  static std::span<const FieldKey> field_keys() {
    static constexpr FieldKey rows[] = {
        {"text", &Reader::take_text, false},        {"note", &Reader::take_note, false},
        {"field", &Reader::take_field, false},      {"label", &Reader::take_label, true},
        {"kind", &Reader::take_kind, true},         {"length", &Reader::take_length, true},
        {"low", &Reader::take_low, true},           {"high", &Reader::take_high, true},
        {"required", &Reader::take_required, true}, {"read_only", &Reader::take_read_only, true},
        {"choice", &Reader::take_choice, true},     {"default", &Reader::take_default, true},
    };
    return rows;
  }

  void form() {
    for (const FieldKey& row : field_keys()) {
      if (!same_word(row.name, key_)) continue;
      if (row.needs_field && in_refused_field_) return;
      if (row.needs_field && field_line_ == 0) return refuse(30619, row.name);
      return (this->*row.take)();
    }
    refuse(30615, key_);
  }

  void take_text() {
    if (form_->lines.size() >= text_line_limit) return refuse(30620, text_line_limit);
    form_->lines.emplace_back(value_);
  }

  bool room_for_field() {
    if (form_->fields.size() < entry_field_limit) return true;
    refuse(30620, entry_field_limit);
    return false;
  }

  void take_note() {
    end_field();
    if (!room_for_field()) return;
    FormField note;
    note.kind = FieldKind::note;
    note.label = value_;
    form_->fields.push_back(std::move(note));
  }

  void take_field() {
    end_field();
    in_refused_field_ = true;
    const auto name = run_variable_name(value_);
    if (!name) return refuse(30617, value_);
    if (entry_variable_written(*name)) return refuse(30618, *name);
    if (!entry_variable_known(*name) && std::find(own_.begin(), own_.end(), *name) == own_.end())
      return refuse(30621, *name);
    const bool twice = std::any_of(form_->fields.begin(), form_->fields.end(),
                                   [&](const FormField& field) { return field.name == *name; });
    if (twice) return refuse(30622, *name);
    if (!room_for_field()) return;
    in_refused_field_ = false;
    FormField field;
    field.name = *name;
    field.label = name->substr(0, name->size() - 1);
    field.length = entry_length_limit;
    form_->fields.push_back(std::move(field));
    field_line_ = line_;
  }

  FormField& field() { return form_->fields.back(); }

  void take_label() { field().label = value_; }

  void take_kind() {
    struct KindRow {
      std::string_view word;
      FieldKind kind;
    };
    static constexpr KindRow rows[] = {
        {"text", FieldKind::text}, {"number", FieldKind::number}, {"integer", FieldKind::integer},
        {"date", FieldKind::date}, {"choice", FieldKind::choice}, {"check", FieldKind::check},
    };
    for (const KindRow& row : rows) {
      if (!same_word(row.word, value_)) continue;
      field().kind = row.kind;
      return;
    }
    refuse(30616, value_, "kind", "text, number, integer, date, choice, check");
  }

  void take_length() {
    const auto length = parse_short(value_);
    if (!length || *length < 1 || *length > static_cast<int>(entry_length_limit))
      return refuse(30616, value_, "length", "1 to 76");
    field().length = static_cast<std::size_t>(*length);
  }

  void take_limit(std::optional<double>& limit) {
    const auto number = whole_number(value_);
    if (!number || *number - *number != 0) return refuse(30616, value_, key_, "a number");
    limit = number;
  }
  void take_low() { take_limit(field().low); }
  void take_high() { take_limit(field().high); }

  void take_yes_no(bool& flag) {
    const auto number = value_by_grammar("YES:1, 1:1, NO:0, 0:0", value_, NumberForm::short_integer);
    if (!number) return refuse(30616, value_, key_, "yes, no");
    flag = *number != 0;
  }
  void take_required() { take_yes_no(field().required); }
  void take_read_only() { take_yes_no(field().read_only); }

  void take_choice() {
    std::vector<std::string>& choices = field().choices;
    if (value_.empty() || std::find(choices.begin(), choices.end(), value_) != choices.end())
      return refuse(30616, value_, "choice", "a text that no other choice has");
    if (choices.size() >= entry_choice_limit) return refuse(30623, entry_choice_limit);
    choices.emplace_back(value_);
  }

  void take_default() { field().text = value_; }

  // What can be judged only once the whole field is known.
  void end_field() {
    in_refused_field_ = false;
    if (field_line_ == 0) return;
    const int line = field_line_;
    field_line_ = 0;
    FormField& done = field();
    if (done.kind == FieldKind::check && done.text.empty()) done.text = "NO";
    if (done.kind == FieldKind::check)
      std::transform(done.text.begin(), done.text.end(), done.text.begin(), upper);
    if (done.kind == FieldKind::choice ? done.choices.size() < 2 : !done.choices.empty())
      return refuse_at(line, 30624, done.name);
    if (done.low && done.high && *done.low > *done.high) return refuse_at(line, 30625, done.name);
    if (done.text.empty()) return;
    FormField tried = done;
    tried.read_only = false;
    const std::string wrong = entry_fault(tried);
    if (!wrong.empty()) refuse_at(line, 30626, done.text, done.name, wrong);
  }

  static char upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

  const std::string& path_;
  DataEntry& entry_;
  std::vector<EntryFault>& faults_;
  std::vector<std::string> own_;  // variables that the file names
  Section section_ = Section::none;
  EntryForm* form_ = nullptr;
  std::string_view key_, value_;
  int line_ = 0;
  int field_line_ = 0;  // of the field in hand; 0: none
  bool in_refused_field_ = false;
};

// Lines are turned one by one: a file may mix both encodings.
std::string engine_text(std::string_view text) {
  std::string out;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    out += cp1252_from_either(text.substr(0, end));
    text.remove_prefix(end);
  }
  return out;
}

}  // namespace

bool parse_data_entry(std::string_view text, const std::string& path, DataEntry& entry,
                      std::vector<EntryFault>& faults) {
  const std::size_t before = faults.size();
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  const std::string lines = engine_text(text);
  Reader(path, entry, faults).read(lines);
  return faults.size() == before;
}

bool read_data_entry(const std::string& path, DataEntry& entry, std::vector<EntryFault>& faults) {
  if (path.empty()) return true;
  std::string text;
  if (read_file(path, file_limit, text) != ReadResult::ok) {
    faults.push_back({30610, msg(30610, path, file_limit >> 20)});
    return false;
  }
  return parse_data_entry(text, path, entry, faults);
}

void report_entry_faults(const std::vector<EntryFault>& faults) {
  for (const EntryFault& fault : faults)
    show_text(formatted("E%d: %s", fault.number, fault.text), MessageKind::error, fault.number);
}

}  // namespace orvane
