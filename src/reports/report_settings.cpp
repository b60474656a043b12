#include "reports/report_settings.h"

#include <array>
#include <charconv>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "config/user_settings.h"
#include "messages/catalogue.h"
#include "platform/platform.h"
#include "reports/page_layout.h"
#include "reports/post_run.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::string_view section = "Configuration";
constexpr const char *yes = "YES", *no = "NO";

// One check box: a bit of a key.
struct Bit {
  const char* key;  // behind "pass_", "fail_" or "macro_"
  int bit;
  int action, report;  // messages of its label
};
// clang-format off
constexpr Bit macro_bits[] = {
    {"save",   report_bit::results,      7003, 7008},
    {"save",   report_bit::certificate,  7003, 7007},
    {"save",   report_bit::summary,      7003, 7010},
    {"save",   report_bit::sdf_summary,  7003, 7009},
    {"save",   report_bit::ask_as_found, 7003, 7011},
    {"print",  report_bit::results,      7005, 7008},
    {"print",  report_bit::certificate,  7005, 7007},
    {"print",  report_bit::summary,      7005, 7010},
    {"saveas", report_bit::results,      7004, 7008},
    {"saveas", report_bit::certificate,  7004, 7007},
    {"saveas", report_bit::summary,      7004, 7010},
    {"view",   report_bit::results,      7006, 7008},
    {"view",   report_bit::certificate,  7006, 7007},
    {"view",   report_bit::summary,      7006, 7010},
};
constexpr Bit window_bits[] = {
    {"postmenu", post_menu::save,    7003, 0},
    {"postmenu", post_menu::save_as, 7004, 0},
    {"postmenu", post_menu::print,   7005, 0},
    {"postmenu", post_menu::view,    7006, 0},
};
// clang-format on

int stored(const std::string& key) {
  const std::string text = user_setting(section, key).value_or("0");
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() ? value : 0;
}

// A form of check boxes. Bits of a key that no box stands for stay as they are.
void edit_bits(const std::string& title, const std::string& head, std::span<const Bit> bits) {
  if (platform().desk == nullptr) return;
  FormWindow window;
  window.title = title;
  for (const Bit& bit : bits) {
    FormField field;
    field.name = bit.report == 0 ? msg(bit.action) : std::string(bit.key) + " " + std::to_string(bit.bit);
    field.label = bit.report == 0 ? msg(bit.action) : msg(bit.action) + ": " + msg(bit.report);
    field.kind = FieldKind::check;
    field.text = (stored(head + bit.key) & bit.bit) != 0 ? yes : no;
    window.fields.push_back(std::move(field));
  }
  window.buttons = {{answer::ok, msg(30043), true}, {answer::terminate, msg(30044)}};
  window.fault = [](const FormField& field) {
    return field.text == yes || field.text == no ? std::string() : msg(31309);
  };
  if (platform().desk->form(window) != answer::ok) return;
  for (std::size_t i = 0; i < bits.size(); ++i) {
    const std::string key = head + bits[i].key;
    const int value = window.fields[i].text == yes ? stored(key) | bits[i].bit : stored(key) & ~bits[i].bit;
    if (!put_user_setting(section, key, std::to_string(value))) return;
  }
}

class Dialogs : public RowSource {
 public:
  struct Row {
    std::string label;
    void (*open)();
  };
  const std::vector<Row> rows = {{msg(7000, "PASS") + " / FAIL", rtconf_reports_proc},
                                 {msg(7001), rtconf_macro_proc},
                                 {msg(7002), rtconf_dialog_proc}};
  std::size_t count() const override { return rows.size(); }
  std::string row(std::size_t index) const override { return rows[index].label; }
};

}  // namespace

void configure_reports() {
  const Dialogs dialogs;
  ChoiceWindow window;
  window.title = msg(7012);
  window.rows = &dialogs;
  window.buttons = {{answer::ok, msg(31302), true}, {answer::terminate, msg(31294)}};
  for (std::size_t row = 0;
       platform().desk != nullptr && platform().desk->choose(window, row) == answer::ok;) {
    dialogs.rows[row].open();
    window.first_row = row;
  }
}

void rtconf_reports_proc() {
  edit_bits(msg(7000, "PASS"), "pass_", macro_bits);
  edit_bits(msg(7000, "FAIL"), "fail_", macro_bits);
}

void rtconf_macro_proc() { edit_bits(msg(7001), "macro_", macro_bits); }
void rtconf_dialog_proc() { edit_bits(msg(7002), "", window_bits); }

void configure_margins() {
  if (platform().desk == nullptr) return;
  PrinterSystem* printers = platform().printers;
  const bool checked = printers != nullptr && printers->has_printer(PrintUse::results);
  const std::unique_ptr<Printer> printer = checked ? printers->open(PrintUse::results) : nullptr;
  // Without a printer only lengths are checked.
  const PageMetrics page = printer != nullptr
                               ? printer->metrics()
                               : PageMetrics{.width = 850, .height = 1100, .dots_x = 100, .dots_y = 100};
  const PageMargins kept = page_margins();
  FormWindow window;
  window.title = catalogue_text(4390);
  window.lines = {msg(31325)};
  const std::array<std::pair<const char*, int>, 3> names = {
      {{"left", 31326}, {"top", 31327}, {"bottom", 31328}}};
  const std::array<const std::string*, 3> texts = {&kept.left, &kept.top, &kept.bottom};
  for (std::size_t i = 0; i < names.size(); ++i) {
    FormField field;
    field.name = names[i].first;
    field.label = msg(names[i].second);
    field.kind = FieldKind::number;
    field.length = 8;
    field.required = true;
    field.text = *texts[i];
    window.fields.push_back(std::move(field));
  }
  FormField numbers;
  numbers.name = "page";
  numbers.label = msg(31329);
  numbers.kind = FieldKind::check;
  numbers.text = kept.numbers ? yes : no;
  window.fields.push_back(std::move(numbers));
  window.buttons = {{answer::ok, msg(30043), true}, {answer::terminate, msg(30044)}};
  const auto entered = [&window] {
    return PageMargins{.left = window.fields[0].text,
                       .top = window.fields[1].text,
                       .bottom = window.fields[2].text,
                       .numbers = window.fields[3].text == yes};
  };
  // Each margin is told where it was entered; the room for page numbers is the bottom margin's.
  window.fault = [&](const FormField& field) {
    const int fault = margin_fault(entered(), page);
    const bool here = (fault == 4852 && field.name == "left") || (fault == 4853 && field.name == "top") ||
                      ((fault == 4854 || fault == 4855) && field.name == "bottom");
    return here ? msg(fault) : std::string();
  };
  if (platform().desk->form(window) == answer::ok) static_cast<void>(keep_page_margins(entered()));
}

}  // namespace orvane
