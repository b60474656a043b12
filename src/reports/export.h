// Results for other programs: a template's text under a name of its own.
#pragma once

#include <string>

#include "state/run_state.h"

namespace orvane {

/// Makes the template's text and writes it to the file that EXPORT_RESULT_FN$ names once the template has run; "NONE"
/// writes nothing. A name that is not set, or ends in a separator, gets a name of its own, "MR" and six letters or
/// digits; a name that is taken gets an extension from ".001" to ".999". False after a report: 960 no template, 961 it
/// cannot be read, 962 the variable cannot be a name, 963 there is no folder, 964 no free name of its own, 965 no free
/// extension, 966 the file cannot be written, 967 a fault in the template, 968 what stands in the target already cannot be read.
[[nodiscard]] bool export_results(RunState& run, const std::string& template_file);

/// The SDF summary: the text of "calhist_template", added to the file of "calhist_results" (31244: the key is not set).
[[nodiscard]] bool export_summary(RunState& run);

}  // namespace orvane
