// The system's own command-line words, which every program takes the same way: one dash and a word, in any place of
// the command line, beside the options in the usual form.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace orvane {

struct OwnWords {
  std::string procedure;      // -run NAME, Windows-1252: the run starts at once
  std::string directory;      // -dir FOLDER: working folder
  std::string debug_letters;  // behind -T
  bool auto_test = false;     // -AutoTest: reports open no box
  bool trace = false;         // -trace: the driver layer is traced
  bool lfcr = false;          // -lfcr: lines of the debug log end with CR LF
  bool hide = false;          // -hide: the main window stays hidden
  bool exit = false;          // -exit: the program ends behind the first run
  bool no_logo = false;       // -logo: nothing but the status rows at the start
  bool load = false;          // -load: a procedure is chosen and run at the start
  bool pack = false;          // -pack: deleted lines leave the procedure directory, which is sorted
};

/// Takes the words out of `words`. A value is what is wrong with them, in words.
std::optional<std::string> take_own_words(std::vector<std::string>& words, OwnWords& own);

/// Sets the debug words that they stand for.
void apply_debug_words(const OwnWords& own);

}  // namespace orvane
