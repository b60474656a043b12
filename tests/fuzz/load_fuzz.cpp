// Any bytes as a compiled procedure: loaded in both modes, shown, checked.
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "procedure/file/check.h"
#include "procedure/file/load.h"
#include "procedure/file/render.h"

namespace {

// A file of this process, in memory where the system has such a place.
const std::string& path() {
  static const std::string file = std::string(access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp") +
                                  "/orvane_load_fuzz." + std::to_string(getpid());
  static const int at_exit = std::atexit([] { unlink(path().c_str()); });
  (void)at_exit;
  return file;
}

void write_file(const std::uint8_t* data, std::size_t size) {
  std::FILE* file = std::fopen(path().c_str(), "wb");
  if (file == nullptr || std::fwrite(data, 1, size, file) != size) std::abort();
  std::fclose(file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace orvane;
  write_file(data, size);
  for (const bool text_mode : {false, true}) {
    Procedure procedure;
    std::uint64_t offset = 0;
    if (!load_procedure_file(procedure, path(), text_mode, &offset)) {
      if (offset > size || procedure.head != nullptr) std::abort();
      continue;
    }
    std::size_t nodes = 0;
    for (const ProcNode* node = procedure.head; node != nullptr; node = node->next, ++nodes) {
      const std::string line = render_record(*node->record);
      if (line.size() > line_columns || (text_mode && line != node->shown())) std::abort();
      (void)procedure.branch_target(*node);
      (void)statement_line_count(*node);
    }
    if (nodes != procedure.main_count + (text_mode ? procedure.listing_count : 0U)) std::abort();
    if (text_mode) (void)check_procedure(procedure, size);
  }
  return 0;
}
