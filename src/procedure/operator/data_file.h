// "dosdose.dat": what a procedure and a program that it runs tell each other. Text, one value a line:
//
//   10.5          MEM, "%.12g"
//   -3            MEM1
//   2             lines of MEM2 that follow below
//   0             status: 0 as written; a program of DOSE puts 1 for PASS, 2 for FAIL or 3 for a number
//   0             that number: the percent of tolerance
//   5 first       a line of MEM2: its length in bytes, a blank, the text
//   6 second
//   0             the text for the result, in the same form
//
// The program may change every line and the number of lines. Behind the third line it may leave off what is as it
// was written, if there is no line of MEM2. Line ends are LF or CR LF.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

struct ProgramData {
  double mem = 0;
  double mem1 = 0;
  std::string mem2;  // lines parted by line breaks
  int status = program_status::none;
  double percent = 0;
  std::string text;
};

/// Where the file stands: in the folder of the key "user_data_dir", else of "user_cwd", else the working folder.
std::string program_data_path();

std::string write_program_data(const ProgramData& data);

/// False with the number of the faulty line, from 1: it is missing, no finite number, no status, or its length is not
/// that of the text. `data` is then as it was.
[[nodiscard]] bool read_program_data(std::string_view text, ProgramData& data, int& line);

}  // namespace orvane
