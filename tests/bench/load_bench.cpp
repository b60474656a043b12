// Loading of compiled procedures. With a file as argument: loads it N times in one process, freed in between, as a
// peer program does; without: made-up procedures through Google Benchmark.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "procedure/file/load.h"
#include "procedure/file/proc_dir.h"

namespace orvane {
namespace {

// Walks the list once, so that every line is used.
std::uint64_t use(const Procedure& procedure) {
  std::uint64_t sum = 0;
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    sum += node->record->get(field::code) + std::uint64_t{node->line_index};
    if (const ProcNode* target = procedure.branch_target(*node)) sum += target->line_index;
  }
  return sum;
}

int load_times(const char* path, int times) {
  std::uint64_t sum = 0;
  for (int i = 0; i < times; ++i) {
    Procedure procedure;
    if (!load_procedure_file(procedure, path, false)) return 1;
    sum += use(procedure);
  }
  std::printf("%llu\n", static_cast<unsigned long long>(sum));
  return 0;
}

int find_times(const char* path, const char* name, int times) {
  int line = -1;
  for (int i = 0; i < times; ++i) {
    const int handle = pd_open(path, pd_mode_read);
    ProcDirEntry entry;
    entry.dir_flags = ProcDirEntry::any;
    entry.name_count = 1;
    entry.names[0] = name;
    if (!pd_find(handle, entry) || !pd_close(handle)) return 1;
    line = entry.dir_flags == 0 ? -1 : entry.matched_line;
  }
  std::printf("%d\n", line);
  return 0;
}

void BM_LoadProcedure(benchmark::State& state) {
  const std::string path = (std::filesystem::temp_directory_path() / "orvane_load_bench.prc").string();
  {
    Procedure made;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      FscRecord& record = *node_append(made, node_request::record)->record;
      record.set(field::code, fsc::disp);
      (void)record.set_text(field::text, "a line of a procedure");
    }
    if (!write_procedure(made, path)) state.SkipWithError("cannot write");
  }
  for (auto _ : state) {
    Procedure procedure;
    benchmark::DoNotOptimize(load_procedure_file(procedure, path, false));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
  std::filesystem::remove(path);
}
BENCHMARK(BM_LoadProcedure)->Arg(100)->Arg(10000)->Arg(65535);

}  // namespace
}  // namespace orvane

int main(int argc, char** argv) {
  if (argc == 4 && std::string_view(argv[1]) == "load")
    return orvane::load_times(argv[2], std::atoi(argv[3]));
  if (argc == 5 && std::string_view(argv[1]) == "find")
    return orvane::find_times(argv[2], argv[3], std::atoi(argv[4]));
  if (argc == 3 && std::string_view(argv[1]) == "sort") return orvane::pd_sort(argv[2], false) ? 0 : 1;
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
