// Hostile saved runs: what is taken is part of the file, and comes back from what is written of it.
#include <string>

#include "reports/saved_run.h"
#include "scratch.h"

using namespace orvane;

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
  const std::string all(reinterpret_cast<const char*>(data), size);
  SavedRun saved;
  if (!saved_run_parse(all, "fuzz", saved)) return 0;
  fuzz::require(all.find(saved.log) != std::string::npos);
  for (const auto& [name, value] : saved.variables) {
    fuzz::require(name.size() >= 2 && name.back() == '$');
    fuzz::require(value.find('\n') == std::string::npos && all.find("$=" + value) != std::string::npos);
  }
  std::vector<TraceRecord> again;
  fuzz::require(trace_parse(trace_dump(saved.standards), "again", again));
  fuzz::require(again.size() == saved.standards.size());
  for (std::size_t i = 0; i < again.size(); ++i) fuzz::require(again[i].text == saved.standards[i].text);
  return 0;
}
