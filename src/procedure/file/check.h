// Looks for faults in a loaded procedure that would stop it only as it runs.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "procedure/file/procedure.h"

namespace orvane {

struct ProcedureFault {
  std::string where;  // "line 12" of the listing, "offset 113" of the file
  int number = 0;
  std::string text;  // without a head
};

/// The faults of a procedure that was loaded in text mode from a file of `file_size` bytes (nothing if it has no
/// size): 30107 a branch without a target, 30108 a statement that no name belongs to, 30109 bytes behind the last
/// record, 30110 a statement of several records that is broken off.
std::vector<ProcedureFault> check_procedure(const Procedure& procedure,
                                            std::optional<std::uint64_t> file_size);

}  // namespace orvane
