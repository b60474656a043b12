// A disk that fills up in the middle of what a run writes: small file systems, a page larger each time, so that the end
// of the room meets each of the writes in turn.
#include <filesystem>
#include <set>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

// $1: the room in KB, $2: the laboratory; the rest is the command. What stands in "old" is there before; what stands in
// the full folder afterwards is kept in "kept".
constexpr const char* on_a_small_file_system =
    "room=$1; cd \"$2\" || exit 99; shift 2; mount -t tmpfs -o size=${room}k full work || exit 98; cp old/* "
    "work || exit 97; "
    "\"$@\"; status=$?; cp -r work kept; exit $status";
// Where nobody may mount one: no file may grow beyond the room.
constexpr const char* with_small_files =
    "room=$1; cd \"$2\" || exit 99; shift 2; cp old/* work || exit 97; trap '' XFSZ; (ulimit -f $((room * 2 "
    "- 40)); \"$@\"); "
    "status=$?; cp -r work kept; exit $status";

class FullDisk : public LaboratoryTest {
 protected:
  FullDisk() {
    may_mount_ =
        run_process({{"/usr/bin/unshare", "-rm", "/bin/sh", "-c", "mount -t tmpfs full /mnt"}, {}, {}})
            .status == 0;
    configure("delimited_results", "YES");
    configure("mfile", path("work/measured.txt"));
    configure("calhist_results", "work/history.txt");
    write("settings.ini", "[Configuration]\npass_save = 31\n[Page Margin]\npage = 1\n");
    procedure("three",
              {source_line(1, 1, "ASK-", std::string(44, ' ') + "F"),
               source_line(1, 2, "MATH", "putv(\"LAST$\", \"new\")"), source_line(1, 3, "MEME", "10"),
               source_line(1, 4, "MEMC", "10.000V        1%"), source_line(2, 1, "MEMC", "10.000V        1%"),
               source_line(3, 1, "MEMC", "10.000V        1%"), source_line(3, 2, "END")});
    fs::create_directory(folder / "old");
    write("old/variables.txt", "LAST$=old\n");
    write("old/history.txt", "the runs before\n");
    write("old/r.json", "{\"the\": \"run before\"}\n");
    write("old/1.res", "the report before\n");
    write("old/rslt.dir", std::string(" 1             ") + std::string(16, 'A') + std::string(16, 'S') +
                              "20261122 12:00R\r\n" + std::string(55, 'P') + "\r\n");
  }

  Ended run_in(int kilobytes) {
    std::error_code ignored;
    fs::remove_all(folder / "kept", ignored);
    if (!may_mount_) {
      fs::remove_all(folder / "work", ignored);
      fs::create_directory(folder / "work");
    }
    Command inner = ovrun("three", "*\n");
    inner.words.insert(inner.words.end(), {"--results", path("work/r.json"), "--junit", path("work/j.xml")});
    Command command = inner;
    command.words = {"/bin/sh",
                     "-c",
                     may_mount_ ? on_a_small_file_system : with_small_files,
                     "sh",
                     std::to_string(kilobytes),
                     folder.string()};
    if (may_mount_) command.words.insert(command.words.begin(), {"/usr/bin/unshare", "-rm"});
    command.words.insert(command.words.end(), inner.words.begin(), inner.words.end());
    return run_process(command);
  }
  std::string kept(const std::string& name) const { return contents("kept/" + name); }

  // What stood there before, or the new one whole.
  void expect_old_or_whole(const std::string& name, const std::string& end) const {
    const std::string text = kept(name), old = contents("old/" + name);
    EXPECT_TRUE(text == old || (text.size() > old.size() / 2 && text.ends_with(end))) << name << ":\n"
                                                                                      << text;
  }

  bool may_mount_ = false;
};

TEST_F(FullDisk, WhateverItMeetsIsToldAndNothingIsHalfWritten) {
  bool was_full = false, had_room = false;
  std::set<std::string> told;
  for (int pages = 5; pages <= 60 && !had_room; ++pages) {
    SCOPED_TRACE(pages);
    const Ended ended = run_in(pages * 4);
    ASSERT_LT(ended.status, 90) << ended.err;
    had_room = ended.err.empty();
    was_full = was_full || !had_room;
    for (std::size_t at = 0; (at = ended.err.find("\nE", at)) != std::string::npos; ++at)
      told.insert(ended.err.substr(at + 1, ended.err.find(':', at) - at - 1));
    if (ended.err.starts_with("E")) told.insert(ended.err.substr(0, ended.err.find(':')));

    expect_old_or_whole("variables.txt", "\n");
    expect_old_or_whole("history.txt", "\n");
    expect_old_or_whole("r.json", "}\n");
    EXPECT_TRUE(kept("history.txt").starts_with("the runs before\n"));
    EXPECT_EQ(kept("1.res"), "the report before\n");
    EXPECT_TRUE(kept("j.xml").empty() || kept("j.xml").ends_with("</testsuites>\n")) << kept("j.xml");
    // A record of the directory is whole, and so is the file that it names.
    const std::string directory = kept("rslt.dir");
    EXPECT_EQ(directory.size() % 121, 0U);
    EXPECT_TRUE(directory.starts_with(contents("old/rslt.dir")));
    for (std::size_t at = 121; at + 121 <= directory.size(); at += 121) {
      const std::string number = directory.substr(at + 1, directory.find(' ', at + 1) - at - 1);
      const char kind = directory[at + 61];
      const std::string file = kept(number + (kind == 'L' ? ".raw" : ".res"));
      EXPECT_TRUE(kind == 'L' ? file.size() > 72 && file[file.size() - 74] == '\n' : file.ends_with("\n"))
          << kind << file;
    }
    if (had_room) {
      EXPECT_EQ(ended.status, 0) << ended.out;
      EXPECT_EQ(directory.size(), std::size_t{121} * 5);
      EXPECT_NE(kept("variables.txt").find("LAST$=new\n"), std::string::npos);
      EXPECT_NE(kept("history.txt"), "the runs before\n");
      EXPECT_NE(kept("rsltsort.tmp").find("0003.001 M"), std::string::npos);
    } else {
      EXPECT_NE(ended.status, 0) << ended.err;
    }
  }
  EXPECT_TRUE(was_full && had_room);
  // The start of a run, its log, its files, the saved run, the room for a report, the history, the variables, the results
  // for other programs: each has met the end of the room.
  for (const char* one : {"E31402", "E4623", "E691", "E31241", "E4954", "E966", "E4507", "E31191"})
    EXPECT_TRUE(!may_mount_ || told.contains(one)) << one;
  EXPECT_GE(told.size(), 3U);
}

}  // namespace
}  // namespace orvane::test
