// ovrun: runs a procedure at the terminal or from an answers file.
#pragma once

namespace orvane {

/// The program. Its exit status: 0 finished, 1 finished with the result FAIL, 2 given up or terminated, 3 could not
/// start or stopped by a failure, 64 wrong usage.
int ovrun_main(int argc, const char* const* argv);

}  // namespace orvane
