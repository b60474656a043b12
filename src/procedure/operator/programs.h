// DOS and DOSE: a procedure runs a program of the laboratory's own and waits for it. What the two tell each other
// stands in "dosdose.dat" (data_file.h); what the program writes goes to "dosdose.log" of the working folder. No shell
// is between them.
//
//   DOS   measure.sh --range 10 "two words"      blanks part words; double quotes hold words together, and \" is a
//                                                quote; any other backslash stands for itself
//
// A name with a drive or a root stands alone; any other is looked for in the folder of the key "user_prog_dir", in
// that of "user_cwd", and in the system's search path. On Windows a name without an extension is that of an ".exe". On
// Linux, where programs bear none, the name itself comes first, then the one with ".exe".
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "state/statement.h"

namespace orvane {

/// The words of a command. False if a closing quote is missing.
[[nodiscard]] bool command_words(std::string_view command, std::vector<std::string>& words);

/// The file of a program's name; empty if there is none.
std::string find_program(const std::string& name);

bool run_dos(Statement& statement);
bool run_dose(Statement& statement);

}  // namespace orvane
