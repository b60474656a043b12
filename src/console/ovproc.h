// ovproc: works with compiled procedures from the command line. compile, list, dump, dir, check.
// Every command takes its files and writes to the streams it is given; the result is the program's exit status.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace orvane {

namespace exit_status {
constexpr int ok = 0, failed = 1, usage = 64;
}

struct ConsoleStreams {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
};

/// The whole program: takes the command line apart (without the program's name) and runs the command.
int ovproc(std::vector<std::string> arguments, ConsoleStreams streams);

// The commands. File names are as the system gives them, procedure names as typed (UTF-8).

/// Compiles the sources ("-" is standard input). Any fault of any of them: all are written to `err`, nothing to disk.
int ovproc_compile(const std::vector<std::string>& sources, const std::string& directory,
                   ConsoleStreams streams);
int ovproc_list_file(const std::string& file, ConsoleStreams streams);
int ovproc_list_name(const std::string& directory, const std::string& name, ConsoleStreams streams);
int ovproc_dump(const std::string& file, bool json, ConsoleStreams streams);
int ovproc_dir_list(const std::string& directory, ConsoleStreams streams);
int ovproc_dir_sort(const std::string& directory, ConsoleStreams streams);
int ovproc_dir_find(const std::string& directory, const std::string& name, ConsoleStreams streams);
int ovproc_check(const std::vector<std::string>& files, ConsoleStreams streams);

}  // namespace orvane
