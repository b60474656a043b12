#include "console/form_fields.h"

#include <algorithm>
#include <vector>

#include "messages/catalogue.h"
#include "values/numbers.h"

namespace orvane {
namespace {

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }
bool same_letter(char a, char b) { return lower(a) == lower(b); }

bool same(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), same_letter);
}

bool begins_with(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && same(text.substr(0, start.size()), start);
}

std::string limits_of(const FormField& field) {
  if (field.low && field.high) return msg(30520, *field.low, *field.high);
  if (field.low) return msg(30521, *field.low);
  return field.high ? msg(30522, *field.high) : std::string();
}

std::string kind_of(const FormField& field) {
  switch (field.kind) {
    case FieldKind::number: return msg(30523);
    case FieldKind::integer: return msg(30524);
    case FieldKind::date: return msg(30525);
    case FieldKind::check: return msg(30526);
    case FieldKind::note:
    case FieldKind::text:
    case FieldKind::choice: break;
  }
  return {};
}

// By its text, by its number, or by letters that only one of them begins with.
void enter_choice(FormField& field, std::string_view entry) {
  const std::vector<std::string>& choices = field.choices;
  for (const std::string& choice : choices) {
    if (same(choice, entry)) {
      field.text = choice;
      return;
    }
  }
  field.text = entry;
  if (const auto number = parse_short(entry)) {
    if (*number >= 1 && static_cast<std::size_t>(*number) <= choices.size())
      field.text = choices[static_cast<std::size_t>(*number - 1)];
    return;
  }
  const auto fits = [&](const std::string& choice) { return !entry.empty() && begins_with(choice, entry); };
  if (std::count_if(choices.begin(), choices.end(), fits) == 1)
    field.text = *std::find_if(choices.begin(), choices.end(), fits);
}

void enter_check(FormField& field, std::string_view entry) {
  field.text = entry;
  if (entry == "1" || (!entry.empty() && begins_with("yes", entry))) field.text = "YES";
  if (entry == "0" || (!entry.empty() && begins_with("no", entry))) field.text = "NO";
}

}  // namespace

std::string field_line(const FormField& field) {
  std::string about;
  for (const std::string& part :
       {kind_of(field), limits_of(field),
        field.kind == FieldKind::text && field.length > 0 ? msg(30527, field.length) : std::string(),
        field.required ? msg(30528) : std::string()}) {
    if (!part.empty()) about += (about.empty() ? "" : ", ") + part;
  }
  return field.label + (about.empty() ? "" : " (" + about + ")");
}

void enter_field(FormField& field, std::string_view entry) {
  switch (field.kind) {
    case FieldKind::number: {
      std::string text(trim_blanks(entry));
      all_commas_to_points(text);
      field.text = std::move(text);
      break;
    }
    case FieldKind::integer:
    case FieldKind::date: field.text = trim_blanks(entry); break;
    case FieldKind::choice: enter_choice(field, trim_blanks(entry)); break;
    case FieldKind::check: enter_check(field, trim_blanks(entry)); break;
    case FieldKind::note: break;
    case FieldKind::text: field.text = entry; break;
  }
}

FormField* field_named(FormWindow& window, std::string_view name) {
  for (FormField& field : window.fields) {
    if (field.kind != FieldKind::note && same(field.name, name)) return &field;
  }
  return nullptr;
}

FormField* field_at_fault(FormWindow& window, std::string& fault) {
  for (FormField& field : window.fields) {
    fault = window.fault ? window.fault(field) : std::string();
    if (!fault.empty()) return &field;
  }
  return nullptr;
}

}  // namespace orvane
