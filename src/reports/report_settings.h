// The dialogs in which a laboratory sets what follows a run, and the margins of the pages. They edit the sections
// "Configuration" and "Page Margin" of the user's settings.
#pragma once

namespace orvane {

/// Chooses one of the dialogs below, until the operator closes the choice.
void configure_reports();

/// What the macro does behind a PASS or a FAIL.
void rtconf_reports_proc();
/// What the button "Macro" of the window does.
void rtconf_macro_proc();
/// What the window offers.
void rtconf_dialog_proc();

/// Margins and page numbers, checked against the printer where there is one.
void configure_margins();

}  // namespace orvane
