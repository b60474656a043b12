// Any bytes as source text, and as the fields behind the name of any statement. What compiles must show a listing
// that compiles, and shows itself again.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "procedure/file/compile.h"
#include "procedure/file/render.h"
#include "state/fsc.h"

namespace {

using namespace orvane;

std::string listing(const Procedure& procedure) {
  std::string text;
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next)
    text += render_record(*node->record) + "\n";
  return text;
}

// The first byte of each line chooses a statement; the others stand in the columns of its fields.
std::string with_names(std::string_view source) {
  std::string text = "INSTRUMENT: fuzz\n STEP\n";
  while (!source.empty()) {
    const std::size_t end = std::min(source.find('\n'), source.size());
    const std::string_view line = source.substr(0, end);
    source.remove_prefix(std::min(end + 1, source.size()));
    if (line.empty()) continue;
    const auto rows = fsc_rows();
    std::string made = "  1.001  ";
    made += rows[static_cast<unsigned char>(line[0]) % rows.size()].name;
    made.resize(16, ' ');
    text += made.append(line.substr(1)) + "\n";
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view source(reinterpret_cast<const char*>(data), size);
  std::vector<CompileFault> faults;
  for (const std::string& text : {std::string(source), with_names(source)}) {
    Procedure first, second;
    if (!compile_procedure(text, first, faults)) {
      for (const CompileFault& fault : faults) {
        if (fault.line < 1 || fault.column < 1 || fault.column > 80 || fault.reason.empty()) std::abort();
      }
      if (faults.empty() || first.head != nullptr) std::abort();
      continue;
    }
    const std::string shown = listing(first);
    if (!compile_procedure(shown, second, faults) || listing(second) != shown) std::abort();
  }
  return 0;
}
