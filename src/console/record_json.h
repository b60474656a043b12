// A record field by field, as JSON: what its form shows, by the names that the fields have.
#pragma once

#include <nlohmann/json.hpp>

#include "state/fsc_record.h"

namespace orvane {

/// "code" and "fsc" first, then the head of the record, then its payload. Texts are UTF-8; a number that is none is
/// null.
nlohmann::ordered_json record_json(const FscRecord& record);

}  // namespace orvane
