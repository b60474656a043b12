#include <csignal>
#include <cstdio>
#include <exception>
#include <iostream>

#include "console/ovproc.h"
#include "messages/catalogue.h"

int main(int argc, char** argv) {
#ifdef SIGPIPE
  std::signal(SIGPIPE, SIG_IGN);  // a reader that leaves early is a failed write
#endif
  std::ios::sync_with_stdio(false);
  std::string reason;
  if (!orvane::catalogue_open(reason)) std::cerr << "ovproc: " << reason << '\n';
  try {
    return orvane::ovproc({argv + 1, argv + argc}, {std::cin, std::cout, std::cerr});
  } catch (const std::exception& error) {  // out of memory
    std::fprintf(stderr, "ovproc: %s\n", error.what());
    return orvane::exit_status::failed;
  }
}
