#include "state/debug.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "platform/files.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::size_t path_limit = 260;

struct Words {
  std::uint32_t debug = 0;
  std::uint32_t log = 0;
  std::uint32_t box = 0;
};
Words words;

struct Letter {
  char letter;
  std::uint32_t bit;
};
constexpr std::array<Letter, 10> letters = {{{'a', debug_bit::api},
                                             {'e', debug_bit::errors},
                                             {'i', debug_bit::bus},
                                             {'P', debug_bit::post_run},
                                             {'p', debug_bit::evaluation},
                                             {'R', debug_bit::reset},
                                             {'r', debug_bit::run},
                                             {'s', debug_bit::serial},
                                             {'q', debug_bit::srq},
                                             {'u', debug_bit::uncertainty}}};

std::ofstream& log_file() {
  static std::ofstream file;
  return file;
}

}  // namespace

std::uint32_t debug_flags() { return words.debug; }
std::uint32_t log_flags() { return words.log; }
std::uint32_t box_flags() { return words.box; }
void set_debug_flags(std::uint32_t bits) { words.debug |= bits; }
void set_log_flags(std::uint32_t bits) { words.log |= bits; }
void set_box_flags(std::uint32_t bits) { words.box |= bits; }
void clear_debug_words() { words = Words(); }

bool debug_letters(std::string_view text) {
  bool all_known = true;
  for (const char c : text) {
    bool known = false;
    for (const Letter& row : letters) {
      if (row.letter != c) continue;
      set_debug_flags(row.bit);
      set_log_flags(log_bit::open_log);  // every switch writes to the log
      known = true;
    }
    all_known = all_known && known;
  }
  return all_known;
}

bool debug_log_open(const std::string& directory) {
  std::string path;
  if (!join_path(path, path_limit + 1, directory, "ovdebug.txt")) return errp(492, directory, path_limit);
  std::ofstream& file = log_file();
  file.close();
  file.clear();
  errno = 0;
  file.open(path, std::ios::binary | std::ios::trunc);
  if (!file) return errp(493, path, errno);
  debug_log("dpr_open : %s", path);
  return true;
}

void debug_log_close() {
  std::ofstream& file = log_file();
  if (!file.is_open()) return;
  file.close();
  if (file.fail()) errp(494);
}

bool debug_log_is_open() { return log_file().is_open(); }

void debug_log_line(std::string_view line) {
  std::ofstream& file = log_file();
  if (file.is_open()) {
    file << line << ((log_flags() & log_bit::lfcr) != 0 ? "\r\n" : "\n") << std::flush;
    return;
  }
  if (std::getenv("ORVANE_DEBUG") == nullptr) return;
  const std::string text = "ORVANE DEBUG: " + std::string(line) + "\n";
  std::fputs(text.c_str(), stderr);
}

}  // namespace orvane
