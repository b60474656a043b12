// The fields of a form as an operator at a terminal, or a script, fills them.
#pragma once

#include <string>
#include <string_view>

#include "platform/operator.h"

namespace orvane {

/// Does anybody fill this field in?
inline bool is_filled_in(const FormField& field) { return field.kind != FieldKind::note && !field.read_only; }

/// The label and what the field takes: "Serial number (at most 10 characters, needed)".
std::string field_line(const FormField& field);

/// Puts an entry into the field as it stands for: a number with a comma gets its point, a choice may be given by its
/// number or its first letters, "y" is "YES". What fits nothing stays as it is, for FormWindow::fault to tell.
void enter_field(FormField& field, std::string_view entry);

/// The field of this name, in any case of its letters; null if there is none.
FormField* field_named(FormWindow& window, std::string_view name);

/// The first field at fault, and why; null if all can be taken.
FormField* field_at_fault(FormWindow& window, std::string& fault);

}  // namespace orvane
