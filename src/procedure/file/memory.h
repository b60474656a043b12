// The procedure memory: eight slots in which loaded procedures live. Slot 0 is the main procedure's;
// sub-procedures come and go by least recent use.
#pragma once

#include <string>
#include <string_view>

#include "procedure/file/procedure.h"
#include "state/run_state.h"

namespace orvane {

constexpr int procedure_slots = 8;

/// Frees every slot, gives slot 0 a fresh age and returns its procedure.
Procedure* acquire_main_procedure();

/// The slot of a procedure by name, in any case: the loaded one, else a free slot, else the least recently
/// used slot that is loaded and not pinned, emptied. Null if there is none; the caller reports 1817. The
/// caller fills `directory` and calls load_procedure() if the flag `loaded` is not set.
Procedure* find_procedure(RunState& run, std::string_view name);

/// Frees the slot of this procedure. False if it is in no slot.
bool release_procedure(Procedure* procedure);

/// Frees all slots whose procedure has another name.
void free_all_but(std::string_view name);

/// Frees every slot.
void free_all_procedures();

/// The name that the windows show, at most 55 characters; an empty text clears it.
std::string_view current_procedure_name();
void set_current_procedure_name(std::string_view name);

/// Makes a sub-procedure ready: finds its slot, and if it is not loaded looks it up in proc.dir of
/// `procedure_directory` (kinds E and H) and loads it, with text in a Test Run. Null after a report: 1817 no
/// slot, 1818 the directory cannot be closed, and the numbers of the directory and of the loader.
Procedure* procedure_by_name(RunState& run, const std::string& procedure_directory, std::string_view name);

}  // namespace orvane
