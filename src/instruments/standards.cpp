#include "instruments/standards.h"

#include <algorithm>
#include <vector>

namespace orvane {
namespace {

std::vector<StandardSource>& sources() {
  static std::vector<StandardSource> the_sources;
  return the_sources;
}

}  // namespace

void standard_source_add(StandardSource source) {
  if (std::find(sources().begin(), sources().end(), source) == sources().end()) sources().push_back(source);
}

void standard_sources_clear() { sources().clear(); }

StandardState standard_state(std::string_view name) {
  if (sources().empty()) return StandardState::known;
  StandardState state = StandardState::unknown;
  for (const StandardSource source : sources()) state = std::max(state, source(name));
  return state;
}

}  // namespace orvane
