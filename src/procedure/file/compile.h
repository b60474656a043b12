// The compiler: source text in, a procedure out. The source is the listing: fixed columns, header lines first.
// docs/formats.md shows every line's form.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "procedure/file/procedure.h"

namespace orvane {

struct CompileFault {
  int line = 0;    // from 1
  int column = 0;  // from 1; a tab goes to the next column of 8
  std::string reason;
};

/// Compiles a whole source text (Windows-1252). `name` of the procedure comes from its "INSTRUMENT:" line. All
/// faults are collected in the order of their lines, one a line at most; with any fault the procedure is left empty
/// and the result is false. Out of memory throws std::bad_alloc.
[[nodiscard]] bool compile_procedure(std::string_view source, Procedure& procedure,
                                     std::vector<CompileFault>& faults);

}  // namespace orvane
