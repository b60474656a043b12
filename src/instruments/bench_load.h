// The device list from the instrument configuration: at the start of the program, and again whenever the file has
// changed before a run.
#pragma once

namespace orvane {

/// Reads the file of the key "config" if it is another one than at the last call, and puts its list in force; an empty
/// key leaves no list standing. While it reads, the program holds the configuration's lock. All faults are reported;
/// with one the list that stands is empty, so that nothing is taken for what it is not, and the result is false.
[[nodiscard]] bool dev_reload_if_changed();

/// The list was written by the program itself: the next dev_reload_if_changed() reads it again.
void dev_note_written();

}  // namespace orvane
