// A startup configuration with every key that is needed, for tests that want a sound one.
#pragma once

#include <filesystem>
#include <string>

namespace orvane::test {

/// Its folders are `acc`, `help`, `pics`, `procs` and `work` beside the file; see make_configured_folders().
inline std::string sound_configuration() {
  return "[startup]\n"
         "accdir = acc\nbcf =\nconfig =\ncorrectdir = none\nfail_prompt = none\nhelpdir = help\n"
         "pass_prompt = none\npassword_dir = .\npicdir = pics\nprocdir = procs\nprompt = none\n"
         "varfile = vars.txt\nworkdir = work\nptitle_l = Laboratory\nptitle_r =\n"
         "beep = none\nib_dmachan = none\nib_ioaddr = none\nib_nport = 0\nib_type = NONE\nport = NONE\n"
         "systype = METER\ndue_date_in_cal = no\noot_lim = 200\npass100 = yes\ntur_lim = NONE\n";
}

/// Makes the folders that the sound configuration names.
inline void make_configured_folders(const std::filesystem::path& folder) {
  for (const char* name : {"acc", "help", "pics", "procs", "work"})
    std::filesystem::create_directory(folder / name);
}

}  // namespace orvane::test
