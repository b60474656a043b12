// The options of every start, whatever the front end.
#pragma once

#include <string>

#include "procedure/pipeline/own_words.h"

namespace orvane {

/// Options of every start; "" where the line does not name one.
struct ProgramOptions : OwnWords {
  std::string config;
  std::string settings;
  std::string mode;  // "demo" or "real"
};

}  // namespace orvane
