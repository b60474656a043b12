// Every number that the sources report has a text, the text's directives fit what the call hands over, and no text
// stands in the catalogue that nobody uses.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "messages/catalogue.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;

struct Source {
  std::string name;  // below the project's folder
  std::string text;  // comments blanked, so that places stay
};

std::string without_comments(std::string text) {
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] == '"' || text[i] == '\'') {
      // A quote between digits groups them.
      if (text[i] == '\'' && i > 0 && std::isalnum(static_cast<unsigned char>(text[i - 1])) != 0) continue;
      const char quote = text[i];
      for (++i; i < text.size() && text[i] != quote; ++i) i += text[i] == '\\' ? 1 : 0;
    } else if (text[i] == '/' && text[i + 1] == '/') {
      for (; i < text.size() && text[i] != '\n'; ++i) text[i] = ' ';
    }
  }
  return text;
}

std::vector<Source> read_sources() {
  const fs::path root = ORVANE_SOURCE_DIR;
  std::vector<Source> sources;
  for (const char* folder : {"src", "apps"}) {
    for (const auto& entry : fs::recursive_directory_iterator(root / folder)) {
      if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") continue;
      std::ifstream file(entry.path(), std::ios::binary);
      std::ostringstream text;
      text << file.rdbuf();
      sources.push_back(
          {entry.path().lexically_relative(root).generic_string(), without_comments(text.str())});
    }
  }
  return sources;
}

// --- Calls -------------------------------------------------------------------------------------------------------

// A function that takes a number: behind how many arguments, and how many stand between it and those of the text.
struct Reporter {
  std::string_view name;
  std::size_t before;
  std::size_t between;
  bool packed;              // the text's arguments come as one array
  std::string_view folder;  // where the name has this meaning
};
constexpr Reporter reporters[] = {
    {"run_error", 1, 0, false, "src/"},
    {"run_report", 2, 0, false, "src/"},
    {"errp", 0, 0, false, "src/"},
    {"msgp", 0, 0, false, "src/"},
    {"warnp", 0, 0, false, "src/"},
    {"msg", 0, 0, false, "src/"},
    {"yesnoph", 0, 0, true, "src/"},
    {"okcanph", 0, 0, true, "src/"},
    {"show_error", 0, 1, true, "src/"},
    {"catalogue_text", 0, 0, false, "src/"},
    {"report", 0, 0, false, "src/functions/"},
    {"add", 1, 0, false, "src/procedure/file/check.cpp"},
    {"refuse", 0, 0, false, "src/procedure/pipeline/data_entry.cpp"},
    {"refuse_at", 1, 0, false, "src/procedure/pipeline/data_entry.cpp"},
    {"ends", 1, 0, false, "src/instruments/srq.cpp"},
    {"fault", 1, 0, false, "src/instruments/srq_power_on.cpp"},
    {"device_fault", 1, 0, false, "src/instruments/drivers/"},
    {"climate_field", 1, 2, false, "src/procedure/pipeline/entry_forms.cpp"},
};
// Where these functions are made, one calls the other.
constexpr std::string_view makers[] = {"src/state/report.h", "src/messages/catalogue.cpp",
                                       "src/messages/catalogue.h", "src/values/math/function_row.h"};

struct Call {
  const Source* source = nullptr;
  std::size_t at = 0;
  const Reporter* reporter = nullptr;
  std::vector<std::string> arguments;

  std::string place() const {
    const auto line =
        std::count(source->text.begin(), source->text.begin() + static_cast<long>(at), '\n') + 1;
    return source->name + ":" + std::to_string(line);
  }
};

std::string trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \n\t");
  if (first == std::string_view::npos) return {};
  return std::string(text.substr(first, text.find_last_not_of(" \n\t") - first + 1));
}

// The arguments between the bracket at `open` and its partner.
std::vector<std::string> arguments_at(const std::string& text, std::size_t open) {
  std::vector<std::string> arguments;
  std::string one;
  int depth = 0;
  for (std::size_t i = open; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      const std::size_t begin = i;
      for (++i; i < text.size() && text[i] != '"'; ++i) i += text[i] == '\\' ? 1 : 0;
      one += text.substr(begin, i - begin + 1);
      continue;
    }
    const bool closes = c == ')' || c == ']' || c == '}';
    if (closes && --depth == 0) break;
    if (c == ',' && depth == 1) {
      arguments.push_back(trimmed(one));
      one.clear();
    } else if (depth > 0) {
      one += c;
    }
    if (c == '(' || c == '[' || c == '{') ++depth;
  }
  if (!trimmed(one).empty()) arguments.push_back(trimmed(one));
  return arguments;
}

std::vector<Call> calls_in(const Source& source) {
  static const std::regex call_of(R"(\b(\w+)\()");
  std::vector<Call> calls;
  for (std::sregex_iterator at(source.text.begin(), source.text.end(), call_of), end; at != end; ++at) {
    for (const Reporter& reporter : reporters) {
      if (at->str(1) != reporter.name || !source.name.starts_with(reporter.folder)) continue;
      const auto begin = static_cast<std::size_t>(at->position(0));
      Call call{&source, begin, &reporter, arguments_at(source.text, begin + reporter.name.size())};
      if (call.arguments.size() <= reporter.before) continue;
      const bool declared = call.arguments[reporter.before].starts_with("int ");
      const bool forwarded = call.arguments.back() == "args...";
      if (declared || forwarded) continue;
      calls.push_back(std::move(call));
    }
  }
  return calls;
}

// --- Numbers -----------------------------------------------------------------------------------------------------

bool is_number(const std::string& text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// The numbers that an expression can be: a literal, a constant of the file, or a choice of two of these.
std::vector<int> numbers_of(const std::string& expression, const Source& source) {
  if (is_number(expression)) return {std::stoi(expression)};
  const std::size_t question = expression.find('?');
  const std::size_t colon = expression.rfind(" : ");
  if (question != std::string::npos && colon != std::string::npos) {
    std::vector<int> first =
        numbers_of(trimmed(expression.substr(question + 1, colon - question - 1)), source);
    const std::vector<int> second = numbers_of(trimmed(expression.substr(colon + 3)), source);
    if (first.empty() || second.empty()) return {};
    first.insert(first.end(), second.begin(), second.end());
    return first;
  }
  std::smatch match;
  const bool word = std::regex_match(expression, std::regex(R"(\w+)"));
  if (word && std::regex_search(source.text, match, std::regex("\\b" + expression + R"( = (\d{3,})\b)")))
    return {std::stoi(match.str(1))};
  return {};
}

// Calls whose number comes from elsewhere: the expression at the call and where its numbers stand. Each number is the
// first group of the pattern in its file. `kinds`: what the call hands over, d integer, s text, g real.
struct Table {
  std::string_view file;
  std::string_view expression;
  std::string_view numbers_in;
  const char* numbers;
  std::string_view kinds;
};
constexpr const char* math_codes = "src/values/math/codes.cpp";
constexpr const char* bus_elements = "src/instruments/bus_elements_ieee.cpp";
constexpr const char* ieee2 = "src/instruments/ieee2.cpp";
constexpr const char* ports = "src/instruments/port_statements.cpp";
constexpr const char* visa = "src/instruments/visa.cpp";
constexpr const char* addresses = "src/instruments/bus_address.cpp";
constexpr const char* dialog = "src/procedure/run/test_dialog.cpp";
constexpr const char* assets = "src/instruments/device_assets.cpp";
constexpr const char* meter_3458 = "src/instruments/drivers/hp3458a.cpp";
constexpr const char* limits_3458 = "src/instruments/drivers/hp3458a_limits.cpp";
constexpr const char* driver_prompts = "src/instruments/drivers/prompts.cpp";
constexpr const char* acc_header = "src/values/accuracy/accuracy_header.cpp";
constexpr const char* acc_scan = "src/values/accuracy/accuracy_scan.cpp";
constexpr const char* inventory = "src/instruments/inventory.cpp";
const Table tables[] = {
    {"src/desktop/viewer_window.cpp", "tip", "src/desktop/viewer_window.cpp", R"(tool\(.*?, (313\d\d),)", ""},
    {"src/reports/page_layout.cpp", "fault", "src/reports/page_layout.cpp", R"((?:return|\?) (485\d)\b)", ""},
    {"src/reports/report_settings.cpp", "fault", "src/reports/page_layout.cpp", R"((?:return|\?) (485\d)\b)",
     ""},
    {"src/reports/report_settings.cpp", "names[i].second", "src/reports/report_settings.cpp",
     R"(\{"\w+", (3132\d)\})", ""},
    {"src/reports/report_settings.cpp", "bit.action", "src/reports/report_settings.cpp", R"(,\s+(700[3-6]), )",
     ""},
    {"src/reports/report_settings.cpp", "bit.report", "src/reports/report_settings.cpp", R"(, (70\d\d)\})",
     ""},
    {"src/reports/post_run.cpp", "choice.label", "src/reports/post_run.cpp", R"(, (31\d{3})\})", ""},
    {"src/reports/post_run.cpp", "label", "src/reports/post_run.cpp", R"(choice_field\("\w+", (\d+)\))", ""},
    {"src/reports/report.cpp", "missing", "src/reports/report.cpp", R"(part\(.*?(46\d\d)\))", "s"},
    {"src/reports/report.cpp", "missing", "src/reports/report.cpp", R"(certificate \? (4634) :)", "s"},
    {"src/reports/report.cpp", "number", "src/reports/report.cpp", R"(end_of_\w+ = (462[45]))", ""},
    {"src/reports/report.cpp", "number", "src/reports/report.cpp", R"(write_report\([^;]*, (469\d)\))", "s"},
    {"src/reports/report_actions.cpp", "row->title", "src/reports/report_actions.cpp",
     R"(result_kind::\w+, (\d+), )", ""},
    {"src/reports/report_actions.cpp", "message", "src/reports/report_actions.cpp", R"(, (49\d\d), PrintUse)",
     "s"},
    {"src/reports/report_actions.cpp", "message", "src/reports/report_actions.cpp", R"(tell_saved\((\d+),)",
     "s"},
    {"src/reports/saved_results.cpp", "row.label", "src/reports/saved_results.cpp",
     R"(result_kind::\w+, (\d+)\})", ""},
    {"src/reports/template_engine.cpp", "function.fault", "src/reports/template_parse.cpp", R"(\b(49\d\d)\b)",
     "sd"},
    {"src/reports/template_engine.cpp", "misplaced", "src/reports/template_engine.cpp",
     R"(compare \? (467\d) :)", "sd"},
    {"src/reports/template_engine.cpp", "misplaced", "src/reports/template_engine.cpp",
     R"(compare \? 0 : (467\d)\))", "sd"},
    {"src/reports/trace_file.cpp", "number", "src/reports/trace_file.cpp",
     R"(fault\((705|708|709|710|719|720|725),)", "sds"},
    {"src/reports/trace_file.cpp", "number", "src/reports/trace_file.cpp", R"(fault\((707)\))", "sd"},
    {"src/reports/trace_file.cpp", "number", "src/reports/trace_file.cpp", R"(fault\((711),)", "sdsd"},
    {"src/reports/trace_file.cpp", "number", "src/reports/trace_file.cpp", R"(fault\((712),)", "sdss"},
    {"src/evaluation/explain.cpp", "label", "src/evaluation/explain.cpp", R"(= (310[78]\d)[,;])", ""},
    {"src/evaluation/tolerance.cpp", "sentence", "src/evaluation/tolerance.cpp", R"(\b(3111[345])\b)", "ss"},
    {acc_header, "number", acc_header, R"(fault\((\d+),)", "sds"},
    {acc_scan, "number", acc_scan, R"(nothing\((\d+),)", "ssgs"},
    {inventory, "number", inventory, R"(fault\((\d+),)", "sds"},
    {"src/evaluation/correction.cpp", "fault->reason", "src/evaluation/correction_file.cpp",
     R"(\b\w+ = (310\d\d)\b)", ""},
    {meter_3458, "message", meter_3458, R"(\b(26(?:3[2-9]|4\d|5\d|60))[,}])", ""},
    {meter_3458, "write_message", meter_3458, R"(ERR\?", (26\d\d), \d+)", "s"},
    {meter_3458, "read_message", meter_3458, R"(ERR\?", \d+, (26\d\d))", "s"},
    {limits_3458, "message", limits_3458, R"(\}, (26\d\d)[,}])", "gg"},
    {driver_prompts, "message", driver_prompts, R"(return (49\d\d);)", "ss"},
    {"src/instruments/bench_checks.cpp", "number", "src/instruments/bench_checks.cpp",
     R"((?:return|\?) (\d{3,4})\b)", "sdss"},
    {"src/instruments/bench_checks.cpp", "number", "src/instruments/bench_checks.cpp", R"(: (2872|348);)",
     "sdss"},
    {"src/instruments/bench_checks.cpp", "row.missing", "src/instruments/bench_checks.cpp",
     R"(\{(?:\d+|DevAddress::lemo_port), \d+, (\d+)\})", "sss"},
    {"src/instruments/comm.cpp", "row.number", "src/instruments/comm.cpp", R"(serial_fault::\w+, (\d+)\})",
     "d"},
    {"src/instruments/comm.cpp", "number", "src/instruments/comm.cpp",
     R"(\b(?:put_byte|send_settings|system_fault)\([^;]*?\b(77\d\d)\b)", "d"},
    {"src/instruments/comm.cpp", "number", "src/instruments/comm.cpp", R"(first \? 7795 : (7796))", "d"},
    {assets, "match->error", assets, R"(Match\{[^,]*, (32[456]),)", "ss"},
    {assets, "match->question", assets, R"(Match\{.*, (32[789])\})", "ss"},
    {assets, "missing->message", assets, R"(AssetKind::\w+, (\d+)\})", "s"},
    {assets, "message", assets, R"(row.flags, (23\d\d)\))", "s"},
    {"src/config/startup_checks.cpp", "row.number", "src/config/startup_checks.cpp", R"(, (\d+), Need::)",
     "ss"},
    {math_codes, "row->message", math_codes, R"(\{math_code::\w+, (\d+), true\})", "s"},
    {math_codes, "row->message", math_codes, R"(\{math_code::\w+, (\d+), false\})", ""},
    {"src/functions/register_functions.cpp", "message", "src/functions/register_functions.cpp",
     R"(\b[mls]_message = (\d+))", "ddd"},
    {bus_elements, "wrong != 0 ? wrong : 1904", addresses, R"(return (190\d);)", "s"},
    {bus_elements, "wrong != 0 ? wrong : 1904", bus_elements, R"(wrong : (\d+))", "s"},
    {bus_elements, "wrong", addresses, R"(return (\d{3,});)", "s"},
    {bus_elements, "failure", bus_elements, R"(eval_line<\w+, (\d+)>)", "d"},
    {bus_elements, "srq_failure(outcome)", bus_elements, R"(return (1\d{3});)", "d"},
    {"src/instruments/bus_elements.cpp", "source.too_long", bus_elements, R"(source = \{(\d+),)", "d"},
    {"src/instruments/bus_elements.cpp", "source.too_long", ports, R"(source = \{(\d+),)", "d"},
    {"src/instruments/bus_elements.cpp", "source.too_long", visa, R"(source = \{(\d+),)", "d"},
    {ports, "wrong", addresses, R"(return (\d{3,});)", "s"},
    {visa, "wrong", addresses, R"(return (\d{3,});)", "s"},
    {"src/instruments/reset_list.cpp", "wrong", addresses, R"(return (\d{3,});)", "s"},
    {ieee2, "row.message", ieee2, R"(\{0x\w+, (5\d\d)\})", "dd"},
    {ieee2, "messages.not_acknowledged", ieee2, R"(_messages = \{(\d+),)", "dd"},
    {ieee2, "messages.timed_out", ieee2, R"(_messages = \{\d+, (\d+),)", "dd"},
    {ieee2, "messages.wrong_board", ieee2, R"(_messages = \{\d+, \d+, (\d+),)", "dd"},
    {ieee2, "messages.other", ieee2, R"(_messages = \{\d+, \d+, \d+, (\d+),)", "dd"},
    {ieee2, "messages.given_up", ieee2, R"(_messages = .*, (\d+)\};)", "dd"},
    {"src/procedure/pipeline/scan_statements.cpp", "wrong", addresses, R"(return (\d{3,});)", "s"},
    {"src/procedure/pipeline/entry_forms.cpp", "label", "src/procedure/pipeline/entry_forms.cpp",
     R"(\$", (3064\d),)", ""},
    {"src/instruments/bench.cpp", "message", "src/instruments/bench.cpp", R"(\w, (295[34]),)", "s"},
    {"src/instruments/ieee488.cpp", "row.message", "src/instruments/ieee488.cpp", R"(\{\d+, (27\d\d)\})",
     "s"},
    {"src/procedure/file/load.cpp", "fault", "src/procedure/file/procedure_format.cpp", R"(return (404);)",
     "s"},
    {"src/procedure/file/load.cpp", "fault", "src/procedure/file/procedure_format.cpp", R"(\? (408) : 0)",
     "s"},
    {"src/procedure/run/blocks.cpp", "message", "src/procedure/run/blocks.cpp", R"(\}, (72\d\d)\})", ""},
    {"src/procedure/run/post_test.cpp", "message", "src/procedure/run/post_test.cpp",
     R"(stop_reason_bit::\w+, (\d+)\})", "s"},
    {"src/procedure/run/post_test.cpp", "message", "src/procedure/run/post_test.cpp",
     R"(plain_stop_message = (\d+))", "s"},
    {"src/procedure/operator/programs.cpp", "number", "src/procedure/operator/programs.cpp",
     R"(system_fault\((\d+),)", "ssd"},
    {dialog, "row.caption", dialog, R"(\{answer::test_\w+, (\d+)\})", ""},
    {dialog, "row.label", dialog, R"(\{(71\d\d), &DecisionBlock::)", ""},
    {"src/desktop/look.cpp", "word", "src/desktop/look.cpp", R"(, u'\\u\w+', (\d{5})\})", ""},
    {"src/desktop/main_window.cpp", "title.title", "src/desktop/menu.cpp", R"(\{Menu::\w+, (\d+)\})", ""},
    {"src/desktop/main_window.cpp", "row.label", "src/desktop/menu.cpp",
     R"(Menu::\w+,\s+(\d+), operator_right)", ""},
    {"src/desktop/main_window.cpp", "row->label", "src/desktop/menu.cpp",
     R"(Menu::\w+,\s+(\d+), operator_right)", ""},
    {"src/desktop/main_window.cpp", "row.missing", "src/desktop/menu.cpp", R"(\bno_\w+ = (\d+))", ""},
    {"src/desktop/main_window.cpp", "one.caption", "src/desktop/main_window.cpp",
     R"(status_row::\w+, (\d+)\})", ""},
    {"src/state/buttons.cpp", "label_messages[row - 1]", "src/state/buttons.cpp", R"([{ ]([89]\d\d)[,}])",
     ""},
};

// Numbers that a source counts out: every text that stands in the span is used there, with no argument.
struct Counted {
  std::string_view file;
  std::string_view expression;
  int first, last;
};
constexpr const char* connections = "src/instruments/connections.cpp";
constexpr const char* connection_number = "number + (number < first_high ? low_texts : high_texts)";
const Counted counted[] = {{connections, connection_number, 8001, 8579},
                           {connections, connection_number, 10580, 11024}};

// --- Texts -------------------------------------------------------------------------------------------------------

char kind_of_conversion(char conversion) {
  if (std::string_view("diuxXoc").find(conversion) != std::string_view::npos) return 'd';
  if (std::string_view("eEfFgG").find(conversion) != std::string_view::npos) return 'g';
  return conversion;
}

// The kinds that a text takes, in order: "sd". A "%" that begins no directive is '%'.
std::string directives_of(std::string_view text) {
  std::string kinds;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') continue;
    if (text.substr(i).starts_with("%%")) {
      ++i;
      continue;
    }
    const std::size_t end = text.find_first_not_of("-+ #0123456789.hlLqjzt", i + 1);
    const char conversion = end == std::string_view::npos ? '%' : text[end];
    const bool known = std::string_view("diuxXoceEfFgGs").find(conversion) != std::string_view::npos;
    kinds += known ? kind_of_conversion(conversion) : '%';
  }
  return kinds;
}

// Names and what they are declared as; '?' for a name that is declared as several things.
using Names = std::map<std::string, char>;

void note_declarations(const Source& source, Names& names) {
  static const std::regex declaration(
      R"(\b(std::string_view|std::string|char\*|int|std::size_t|std::u?int\d+_t|long|unsigned|double)&? (\w+)\b)");
  for (std::sregex_iterator at(source.text.begin(), source.text.end(), declaration), end; at != end; ++at) {
    const std::string type = at->str(1);
    const char kind = type == "double"                                      ? 'g'
                      : type.starts_with("std::s") && type != "std::size_t" ? 's'
                                                                            : 'd';
    const char noted = type == "char*" ? 's' : kind;
    const auto [entry, added] = names.emplace(at->str(2), noted);
    if (!added && entry->second != noted) entry->second = '?';
  }
}

// What an argument is, as far as its text and the declarations of names tell; '?' otherwise.
char kind_of_argument(const std::string& argument, const Names& own, const Names& everywhere) {
  static const std::regex integer(
      R"(-?\d+|.*(\.|->)(size|length|count)\(\)|static_cast<(int|unsigned|long)>.*)");
  static const std::regex real(R"(-?\d+\.\d*(e-?\d+)?)");
  static const std::regex text(
      R"(".*"|.*_name\(.*\)|std::string(_view)?\(.*\)|.*\.(str|string|substr)\(.*\))");
  static const std::regex name(R"((\w+(\.|->))*(\w+))");
  if (std::regex_match(argument, integer)) return 'd';
  if (std::regex_match(argument, real)) return 'g';
  if (std::regex_match(argument, text)) return 's';
  std::smatch match;
  if (!std::regex_match(argument, match, name)) return '?';
  for (const Names* names : {&own, &everywhere}) {
    if (const auto at = names->find(match.str(3)); at != names->end()) return at->second;
  }
  return '?';
}

bool kinds_fit(const std::string& directives, const std::string& given) {
  return directives.size() == given.size() &&
         std::equal(directives.begin(), directives.end(), given.begin(), [](char wanted, char got) {
           return got == '?' || wanted == got || (wanted == 'g' && got == 'd');
         });
}

class Sources : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string reason;
    ASSERT_TRUE(catalogue_load(ORVANE_SOURCE_DIR "/messages/en.txt", reason)) << reason;
  }

  void check(int number, const std::string& given, const std::string& place) {
    used.insert(number);
    const std::string_view text = catalogue_text(number);
    EXPECT_FALSE(text.empty()) << place << ": message " << number << " has no text";
    if (text.empty() || given == "*") return;
    EXPECT_TRUE(kinds_fit(directives_of(text), given))
        << place << ": message " << number << " \"" << text << "\" is given \"" << given << "\"";
  }

  void check_call(const Call& call) {
    const std::string& expression = call.arguments[call.reporter->before];
    std::string given = call.reporter->packed ? "*" : "";
    const std::size_t first = call.reporter->before + 1 + call.reporter->between;
    if (call.reporter->packed && call.arguments.size() <= first) given.clear();
    Names own_names;
    note_declarations(*call.source, own_names);
    for (std::size_t i = first; !call.reporter->packed && i < call.arguments.size(); ++i)
      given += kind_of_argument(call.arguments[i], own_names, names);
    all_kinds += given.size();
    known_kinds +=
        static_cast<std::size_t>(std::count_if(given.begin(), given.end(), [](char c) { return c != '?'; }));
    const std::vector<int> numbers = numbers_of(expression, *call.source);
    for (const int number : numbers) check(number, given, call.place());
    if (!numbers.empty()) return;
    const bool known = std::any_of(std::begin(tables), std::end(tables), [&](const Table& table) {
      return table.file == call.source->name && table.expression == expression;
    });
    const bool is_counted = std::any_of(std::begin(counted), std::end(counted), [&](const Counted& one) {
      return one.file == call.source->name && one.expression == expression;
    });
    EXPECT_TRUE(known || is_counted) << call.place() << ": where does the number \"" << expression
                                     << "\" come from? Add a row to the tables of this test.";
    calls_of_tables.insert(call.source->name + " " + expression);
  }

  void check_table(const Table& table) {
    EXPECT_TRUE(calls_of_tables.contains(std::string(table.file) + " " + std::string(table.expression)))
        << table.file << ": no call has the number \"" << table.expression << "\" any more";
    const auto source = std::find_if(sources.begin(), sources.end(),
                                     [&](const Source& one) { return one.name == table.numbers_in; });
    ASSERT_NE(source, sources.end()) << table.numbers_in;
    const std::regex pattern(table.numbers);
    int count = 0;
    for (std::sregex_iterator at(source->text.begin(), source->text.end(), pattern), end; at != end;
         ++at, ++count)
      check(std::stoi(at->str(1)), std::string(table.kinds), std::string(table.numbers_in));
    EXPECT_GT(count, 0) << table.numbers_in << ": no number fits " << table.numbers;
  }

  std::vector<Source> sources = read_sources();
  Names names;
  std::set<int> used;
  std::set<std::string> calls_of_tables;
  std::size_t known_kinds = 0, all_kinds = 0;
};

// Texts that no source uses yet, with the reason why they stand.
const std::map<int, std::string_view> reserved = {
    {2501, "the floating-point trap: faults are seen in results, there is no handler that could fail"},
    {7120, "label of the status in the desktop's test window"},
};

TEST_F(Sources, EveryNumberHasATextThatFitsAndEveryTextIsUsed) {
  std::size_t calls = 0;
  for (const Source& source : sources) note_declarations(source, names);
  for (const Source& source : sources) {
    if (std::find(std::begin(makers), std::end(makers), source.name) != std::end(makers)) continue;
    for (const Call& call : calls_in(source)) {
      check_call(call);
      ++calls;
    }
  }
  EXPECT_GT(calls, 150U) << "the calls are not found any more";
  EXPECT_GT(known_kinds * 10, all_kinds * 7) << "what the calls hand over is not recognised any more";
  for (const Table& table : tables) check_table(table);
  for (const Counted& one : counted) {
    EXPECT_TRUE(calls_of_tables.contains(std::string(one.file) + " " + std::string(one.expression)));
    for (int number = one.first; number <= one.last; ++number) {
      if (!catalogue_text(number).empty()) check(number, "", std::string(one.file));
    }
  }

  for (int number = 0; number < 100000; ++number) {
    const bool there = !catalogue_text(number).empty();
    const bool is_reserved = reserved.contains(number);
    EXPECT_FALSE(there && !used.contains(number) && !is_reserved)
        << "message " << number << " \"" << catalogue_text(number) << "\" is used by nobody";
    EXPECT_FALSE(is_reserved && used.contains(number)) << "message " << number << " is not reserved any more";
  }
}

}  // namespace
}  // namespace orvane
