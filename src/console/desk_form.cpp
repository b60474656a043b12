// Forms of the console's desk: asked field by field at a terminal, filled by "set" lines from a script.
#include "console/desk.h"
#include "console/desk_parts.h"
#include "console/form_fields.h"
#include "messages/catalogue.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::string_view back_key = "<";

std::string field_offer(const FormWindow& window) {
  std::string out;
  for (const FormField& field : window.fields) {
    if (is_filled_in(field)) out += (out.empty() ? "" : ", ") + field.name;
  }
  return out;
}

// The field in front of `index` that is filled in, or `index` if there is none.
std::size_t field_before(const FormWindow& window, std::size_t index) {
  for (std::size_t at = index; at > 0; --at) {
    if (is_filled_in(window.fields[at - 1])) return at - 1;
  }
  return index;
}

bool offers_refusal(const std::vector<Button>& buttons) {
  for (const Button& button : buttons) {
    if (button.code == answer::terminate) return true;
  }
  return false;
}

}  // namespace

void ConsoleDesk::show_fields(const FormWindow& window) {
  for (const FormField& field : window.fields) {
    if (field.kind == FieldKind::note) print(field.label);
    if (field.kind != FieldKind::note && field.read_only) print(field.label + " " + field.text);
  }
}

// --- From a script ---

int ConsoleDesk::form_from_answers(Waiting& window, const Answer& answer) {
  FormWindow& form = *window.form;
  for (const auto& [name, value] : answer.fields) {
    FormField* field = field_named(form, name);
    if (field == nullptr || field->read_only) {
      errp(30513, answer.line, name, window.title, field_offer(form));
      return misfit(window);
    }
    enter_field(*field, value);
    if (form.changed) form.changed(form);
    print(field->label + " " + field->text);
  }
  const int code = from_answer(window, answer);
  if (gone_ || window.buttons.empty() || code != window.buttons.front().code) return code;
  std::string fault;
  const FormField* faulty = field_at_fault(form, fault);
  if (faulty == nullptr) return code;
  if (answer.kind == Answer::Kind::abort) return leave(window);  // what Abort leaves need not be whole
  errp(30512, answer.line, faulty->name, window.title, fault, button_offer(window.buttons));
  return misfit(window);
}

// --- From a terminal ---

// One field until what stands in it can be taken.
ConsoleDesk::FieldEnd ConsoleDesk::ask_field(Waiting& window, FormField& field, int& left) {
  print("  " + field_line(field));
  std::size_t number = 0;
  for (const std::string& choice : field.choices) print("    [" + std::to_string(++number) + "] " + choice);
  for (;;) {
    const std::string prompt = field.name + (field.text.empty() ? "" : " [" + field.text + "]") + "> ";
    const std::optional<std::string> entry = read_entry(window, prompt, left);
    if (!entry) return FieldEnd::left;
    const std::string_view word = trim_blanks(*entry);
    if (word == escape_key && offers_refusal(window.buttons)) {
      left = answer::terminate;
      return FieldEnd::left;
    }
    if (word == back_key) return FieldEnd::back;
    if (!entry->empty()) {
      enter_field(field, word.empty() ? std::string_view() : std::string_view(*entry));
      if (window.form->changed) window.form->changed(*window.form);
      if (field.text != *entry) print("  = " + field.text);
    }
    const std::string fault = window.form->fault ? window.form->fault(field) : std::string();
    if (fault.empty()) return FieldEnd::taken;
    print("  " + fault);
  }
}

// Asks the fields from `first` on. answer::failed when all are filled in, otherwise the answer by which the form was
// left.
int ConsoleDesk::fill_in(Waiting& window, std::size_t first) {
  FormWindow& form = *window.form;
  for (std::size_t at = first; at < form.fields.size();) {
    if (!is_filled_in(form.fields[at])) {
      ++at;
      continue;
    }
    int left = answer::failed;
    switch (ask_field(window, form.fields[at], left)) {
      case FieldEnd::left: return left;
      case FieldEnd::back: at = field_before(form, at); break;
      case FieldEnd::taken: ++at; break;
    }
  }
  return answer::failed;
}

// The buttons behind the fields. answer::failed if the form is to be filled in again from `at_fault` on.
int ConsoleDesk::press_in_form(Waiting& window, std::size_t& at_fault) {
  FormWindow& form = *window.form;
  show_buttons(window);
  for (;;) {
    int left = answer::failed;
    const std::optional<std::string> text = read_entry(window, "> ", left);
    if (!text) return left;
    if (trim_blanks(*text) == back_key) {
      at_fault = field_before(form, form.fields.size());
      return answer::failed;
    }
    const std::optional<int> code = entered(window, *text);
    if (!code) {
      print("  Please type the number or the first letters of a button.");
      continue;
    }
    std::string fault;
    const FormField* faulty = *code == window.buttons.front().code ? field_at_fault(form, fault) : nullptr;
    if (faulty == nullptr) return *code;
    print("  " + fault);
    at_fault = static_cast<std::size_t>(faulty - form.fields.data());
    return answer::failed;
  }
}

int ConsoleDesk::form_from_terminal(Waiting& window) {
  print(msg(30529));
  for (std::size_t first = 0;;) {
    const int left = fill_in(window, first);
    if (left != answer::failed) return left;
    const int code = press_in_form(window, first);
    if (code != answer::failed) return code;
  }
}

}  // namespace orvane
