#include "procedure/file/memory.h"

#include <array>

#include "platform/files.h"
#include "procedure/file/ascii.h"
#include "procedure/file/load.h"
#include "procedure/file/proc_dir.h"
#include "state/report.h"

namespace orvane {
namespace {

struct Slot {
  Procedure procedure;
  std::uint16_t age = 0;  // 0: free; of two slots the one with the smaller age was used longer ago
};

constexpr std::uint16_t last_age = 65534;

struct Memory {
  std::array<Slot, procedure_slots> slots;
  std::uint16_t age = 0;  // the age given last
  std::string shown_name;
};

Memory& memory() {
  static Memory the_memory;
  return the_memory;
}

// Ages start again from 1 in the order that they have.
void renumber_ages() {
  std::array<std::uint16_t, procedure_slots> ranks{};
  memory().age = 0;
  for (std::size_t i = 0; i < ranks.size(); ++i) {
    const std::uint16_t age = memory().slots[i].age;
    if (age == 0) continue;
    for (const Slot& other : memory().slots) ranks[i] += other.age != 0 && other.age <= age;
    ++memory().age;
  }
  for (std::size_t i = 0; i < ranks.size(); ++i) memory().slots[i].age = ranks[i];
}

std::uint16_t next_age() {
  if (memory().age >= last_age) renumber_ages();
  return ++memory().age;
}

void free_slot(Slot& slot) {
  slot.procedure = Procedure();
  slot.age = 0;
}

bool is_loaded(const Slot& slot) { return slot.age != 0 && slot.procedure.has(procedure_flag::loaded); }

Slot* loaded_slot(std::string_view name) {
  for (Slot& slot : memory().slots) {
    if (slot.age != 0 && ascii_same(slot.procedure.name, name)) return is_loaded(slot) ? &slot : nullptr;
  }
  return nullptr;
}

Slot* free_slot_found() {
  for (Slot& slot : memory().slots) {
    if (slot.age == 0) return &slot;
  }
  return nullptr;
}

Slot* evicted_slot() {
  Slot* oldest = nullptr;
  for (Slot& slot : memory().slots) {
    if (!is_loaded(slot) || slot.procedure.has(procedure_flag::pinned)) continue;
    if (oldest == nullptr || slot.age < oldest->age) oldest = &slot;
  }
  if (oldest != nullptr) free_slot(*oldest);
  return oldest;
}

// Fills the directory entry of the name. The directory is closed whatever happened.
bool look_up(const std::string& procedure_directory, std::string_view name, ProcDirEntry& entry) {
  std::string path;
  if (!join_path(path, procedure_path_limit, procedure_directory, proc_dir_name))
    return errp(911, procedure_directory);
  const int handle = pd_open(path, pd_mode_read);
  if (handle == 0) return false;
  entry = {};
  entry.dir_flags = ProcDirEntry::kind_e | ProcDirEntry::kind_h;
  entry.name_count = 1;
  entry.names[0] = name;
  const bool found = pd_find(handle, entry);
  if (!pd_close(handle)) return errp(1818, path);
  return found;
}

}  // namespace

Procedure* acquire_main_procedure() {
  free_all_procedures();
  Slot& slot = memory().slots[0];
  slot.age = next_age();
  return &slot.procedure;
}

Procedure* find_procedure(RunState&, std::string_view name) {
  Slot* slot = loaded_slot(name);
  if (slot == nullptr) slot = free_slot_found();
  if (slot == nullptr) slot = evicted_slot();
  if (slot == nullptr) return nullptr;
  slot->age = next_age();
  return &slot->procedure;
}

bool release_procedure(Procedure* procedure) {
  for (Slot& slot : memory().slots) {
    if (&slot.procedure != procedure || slot.age == 0) continue;
    free_slot(slot);
    return true;
  }
  return false;
}

void free_all_but(std::string_view name) {
  for (Slot& slot : memory().slots) {
    if (slot.age != 0 && !ascii_same(slot.procedure.name, name)) free_slot(slot);
  }
}

void free_all_procedures() {
  for (Slot& slot : memory().slots) free_slot(slot);
}

std::string_view current_procedure_name() { return memory().shown_name; }

void set_current_procedure_name(std::string_view name) {
  memory().shown_name = name.substr(0, ProcDirEntry::name_limit);
}

Procedure* procedure_by_name(RunState& run, const std::string& procedure_directory, std::string_view wanted) {
  const std::string name(wanted);  // it may stand in a record of the procedure that is evicted now
  Procedure* procedure = find_procedure(run, name);
  if (procedure == nullptr) {
    run_error(run, 1817, name);
    return nullptr;
  }
  if (procedure->has(procedure_flag::loaded)) return procedure;
  if (look_up(procedure_directory, name, procedure->directory) &&
      load_procedure(*procedure, procedure_directory, run.has(run_flag::test_run)))
    return procedure;
  // A slot without lines can neither be used nor evicted.
  release_procedure(procedure);
  return nullptr;
}

}  // namespace orvane
