#include "procedure/file/proc_dir.h"

#include "support/desk.h"

namespace orvane {
namespace {

std::string line(const std::string& marks, const std::string& file, const std::string& name) {
  std::string text = marks + file;
  text.resize(18, ' ');
  text += name;
  text.resize(73, ' ');
  return text + "\r\n";
}

ProcDirEntry wanted(const std::string& name, std::uint8_t flags) {
  ProcDirEntry entry;
  entry.dir_flags = flags;
  entry.name_count = 1;
  entry.names[0] = name;
  return entry;
}

constexpr std::uint8_t any = ProcDirEntry::any, kind_e = ProcDirEntry::kind_e, kind_h = ProcDirEntry::kind_h,
                       blank = ProcDirEntry::kind_blank;

class ProcDirTest : public test::EngineTest {
 protected:
  ~ProcDirTest() override {
    for (int handle = 1; handle <= pd_open_limit; ++handle) (void)pd_close(handle);
  }
  int open(const std::string& bytes) {
    write("proc.dir", bytes);
    return pd_open(path, pd_mode_read);
  }
  std::string error(int number, const std::string& text) const {
    std::string expected = "E" + std::to_string(number) + ": " + text;
    if (const std::size_t at = expected.find("PATH"); at != std::string::npos) expected.replace(at, 4, path);
    return expected;
  }

  std::string path = (folder / "proc.dir").string();
};

const std::string name55 = std::string(54, 'n') + "N";
const std::string sample = line("XEFL ", "1.prc", "Gone") + line(" EF  ", "2.prc", "First name") +
                           line(" E   ", "2.prc", "Second name") + line(" E L ", "2.prc", "Third name") +
                           line(" HFL ", "3.prc", "helper") + line("  FL ", "4.prc", "plain") +
                           line("DEFL ", "5.prc", "deposited") + line(" EFL ", "6.prc", name55) +
                           line(" EFL ", "7.prc", "Gone");

TEST_F(ProcDirTest, FindsAndReadsEntries) {
  struct Case {
    std::string name;
    std::uint8_t flags;
    int line;  // -1: message 905; -2: not there, and no failure
  };
  const Case cases[] = {{"second NAME", kind_e, 2},
                        {"Second name  ", kind_e, 2},
                        {"Second", kind_e, -1},
                        {"helper", kind_e, -1},
                        {"helper", kind_e | kind_h, 4},
                        {"plain", kind_e, -1},
                        {"plain", blank, 5},
                        {"deposited", kind_e, -1},
                        {"deposited", kind_e | ProcDirEntry::status_d, 6},
                        {std::string(55, 'N'), kind_e, 7},
                        {name55 + "N", kind_e, -1},
                        {"gone", kind_e, 8},
                        {"unknown", any, -2},
                        {"deposited", any, 6},
                        {"", any, -2}};
  const int handle = open(sample);
  ASSERT_EQ(pd_line_count(handle), 9);
  for (const Case& c : cases) {
    ProcDirEntry entry = wanted(c.name, c.flags);
    EXPECT_EQ(pd_find(handle, entry), c.line != -1) << c.name;
    if (c.line >= 0) {
      EXPECT_EQ(entry.matched_line, c.line) << c.name;
    }
    if (c.line == -1) {
      EXPECT_EQ(desk.last_message(), error(905, "There is no procedure \"" + c.name +
                                                    "\" of this kind in the procedure directory."));
    }
    if (c.line == -2) {
      EXPECT_EQ(entry.dir_flags, 0) << c.name;
    }
  }
  ProcDirEntry entry = wanted("third name", kind_e);
  ASSERT_TRUE(pd_find(handle, entry));
  EXPECT_EQ(entry.first_line, 1);
  EXPECT_EQ(entry.last_line, 3);
  EXPECT_EQ(entry.dir_flags, kind_e);
  EXPECT_EQ(entry.file_name, "2.prc");
  EXPECT_EQ(entry.name_count, 3);
  EXPECT_EQ(entry.names[1], "Second name");

  bool same = false;
  EXPECT_TRUE(pd_two_names(handle, "first name", "THIRD NAME", same) && same);
  EXPECT_TRUE(pd_two_names(handle, "first name", "helper", same) && !same);
  EXPECT_TRUE(pd_two_names(handle, "nowhere", "helper", same) && !same);
}

TEST_F(ProcDirTest, SearchesForward) {
  const int handle = open(sample);
  ProcDirEntry entry = wanted("", kind_e);
  ASSERT_TRUE(pd_search(handle, "s", 0, false, entry));
  EXPECT_EQ(entry.matched_line, 2);
  entry.dir_flags = kind_e;
  ASSERT_TRUE(pd_search(handle, "gone", 0, true, entry));
  EXPECT_EQ(entry.matched_line, 8) << "deleted lines are passed over";
  entry.dir_flags = kind_e;
  EXPECT_FALSE(pd_search(handle, "Secon", 0, true, entry));
  EXPECT_EQ(entry.dir_flags, kind_e | ProcDirEntry::end_reached);
  EXPECT_TRUE(desk.shown.empty());
}

TEST_F(ProcDirTest, DamagedEntries) {
  struct Case {
    const char* what;
    std::string bytes;
    int line;
    int number;
    std::string text;
  };
  const std::string damaged = "The procedure directory \"PATH\" is damaged: ";
  std::string seven;
  for (int i = 0; i < 7; ++i)
    seven += line(i == 0 ? " EF  " : i == 6 ? " E L " : " E   ", "1.prc", std::string(1, 'a'));
  const Case cases[] = {
      {"no first line", line(" E L ", "1.prc", "a"), 0, 901,
       damaged + "there is no line 0 to begin an entry."},
      {"no last line", line(" EF  ", "1.prc", "a"), 0, 902,
       "The procedure directory \"PATH\" cannot be read at line 2."},
      {"a line of no entry", line(" EFL ", "1.prc", "a") + line(" E   ", "1.prc", "b"), 1, 30103,
       damaged + "line 2 belongs to no entry."},
      {"line behind the end", line(" EFL ", "1.prc", "a"), 1, 902,
       "The procedure directory \"PATH\" cannot be read at line 2."},
      {"an entry in an entry", line(" EF  ", "1.prc", "a") + line(" EFL ", "2.prc", "b"), 0, 906,
       damaged + "at line 2 an entry begins inside another one."},
      {"seven names", seven, 6, 926, damaged + "the entry at line 7 has more than 6 names."},
      {"file name without end", line(" EFL ", "1234567890123", "a"), 0, 907,
       damaged + "the file name of line 1 has no end."},
  };
  for (const Case& c : cases) {
    const int handle = open(c.bytes);
    ProcDirEntry entry;
    EXPECT_FALSE(pd_read_at(handle, c.line, entry)) << c.what;
    EXPECT_EQ(desk.last_message(), error(c.number, c.text)) << c.what;
    EXPECT_TRUE(pd_close(handle));
  }
}

TEST_F(ProcDirTest, OpenTable) {
  EXPECT_EQ(pd_open(path, pd_mode_read), 0);
  EXPECT_EQ(desk.last_message(), error(911,
                                       "The procedure directory \"PATH\" cannot be opened. Check the key "
                                       "\"procdir\" and the rights of the file."));
  EXPECT_EQ(pd_open(folder.string(), pd_mode_read), 0) << "a folder";
  EXPECT_EQ(pd_open(path, "w"), 0);
  EXPECT_EQ(desk.last_message(), error(917, "A procedure directory cannot be opened in the mode \"w\"."));
  const int created = pd_open(path, pd_mode_write);
  EXPECT_EQ(pd_line_count(created), 0) << "the write mode makes a missing file";
  EXPECT_EQ(pd_open(path, pd_mode_read), 0);
  EXPECT_EQ(desk.last_message(), error(922, "The procedure directory \"PATH\" is open already."));
  for (int i = 1; i < pd_open_limit; ++i) EXPECT_NE(pd_open(write(std::to_string(i), ""), pd_mode_read), 0);
  EXPECT_EQ(pd_open(write("fifth", ""), pd_mode_read), 0);
  EXPECT_EQ(desk.last_message(), error(900, "More than 4 procedure directories cannot be open at one time."));
  EXPECT_TRUE(pd_close(created));
  EXPECT_FALSE(pd_close(created));
  EXPECT_EQ(desk.last_message(), error(898, "The procedure directory with the handle 1 is not open."));
  EXPECT_EQ(pd_line_count(99), -1);
}

TEST_F(ProcDirTest, Sizes) {
  struct Case {
    std::size_t size;
    int number;
  };
  for (const Case& c : {Case{0, 0}, {74, 909}, {76, 909}, {4915200, 0}, {4915201, 915}, {4915275, 915}}) {
    desk.shown.clear();
    const int handle = open(std::string(c.size, ' '));
    EXPECT_EQ(desk.message_numbers(), c.number == 0 ? std::vector<int>{} : std::vector<int>{c.number})
        << c.size;
    if (handle != 0) {
      EXPECT_TRUE(pd_close(handle));
    }
  }
}

// --- Writing -------------------------------------------------------------------------------------------------

TEST_F(ProcDirTest, AddsAndReplaces) {
  std::vector<PdAddition> additions = {{"one", {}}, {"two", {}}};
  write("2.prc", "of somebody");
  ASSERT_TRUE(pd_choose_file_names(folder.string(), additions));
  EXPECT_EQ(additions[0].file_name, "1.prc");
  EXPECT_EQ(additions[1].file_name, "3.prc") << "no file is written over";
  EXPECT_FALSE(std::filesystem::exists(path)) << "nothing is written yet";
  ASSERT_TRUE(pd_add(folder.string(), additions));
  EXPECT_EQ(contents(path), line(" EFL ", "1.prc", "one") + line(" EFL ", "3.prc", "two"));

  write("proc.dir", sample);
  additions = {{"HELPER", {}}, {"first name", {}}, {"new", {}}, {"Third name", {}}};
  ASSERT_TRUE(pd_choose_file_names(folder.string(), additions));
  EXPECT_EQ(additions[0].file_name, "3.prc") << "an entry of its own keeps its file";
  EXPECT_EQ(additions[1].file_name, "8.prc") << "other names use 2.prc still";
  EXPECT_EQ(additions[2].file_name, "9.prc");
  EXPECT_EQ(additions[3].file_name, "10.prc");
  ASSERT_TRUE(pd_add(folder.string(), additions));
  EXPECT_EQ(contents(path), line("XEFL ", "1.prc", "Gone") + line(" EFL ", "2.prc", "Second name") +
                                line(" EFL ", "3.prc", "HELPER") + line("  FL ", "4.prc", "plain") +
                                line("DEFL ", "5.prc", "deposited") + line(" EFL ", "6.prc", name55) +
                                line(" EFL ", "7.prc", "Gone") + line(" EFL ", "8.prc", "first name") +
                                line(" EFL ", "9.prc", "new") + line(" EFL ", "10.prc", "Third name"));

  write("proc.dir", line(" EFL ", "../x.prc", "outside"));
  additions = {{"outside", {}}};
  ASSERT_TRUE(pd_choose_file_names(folder.string(), additions));
  EXPECT_EQ(additions[0].file_name, "1.prc") << "no file outside the directory is written over";

  write("proc.dir", std::string(74, ' '));
  EXPECT_FALSE(pd_choose_file_names(folder.string(), additions));
  EXPECT_FALSE(pd_add(folder.string(), additions));
  EXPECT_EQ(contents(path), std::string(74, ' '));
  EXPECT_FALSE(pd_add(folder.string(), {{std::string(56, 'n'), "1.prc"}}));
}

TEST_F(ProcDirTest, Sorts) {
  const std::string two = line(" EF  ", "2.prc", "beta") + line(" E L ", "2.prc", "AA second");
  write("proc.dir", line(" EFL ", "1.prc", "sub  abc") + two + line("XEFL ", "3.prc", "aaa") +
                        line("DEFL ", "4.prc", "aab") + line("PEFL ", "5.prc", "ABC") +
                        line(" EFL ", "6.prc", "abc") + line(" EFL ", "7.prc", "sub ") +
                        line(" EFL ", "8.prc", "Sub Zeta"));
  const std::string before = contents(path);
  ASSERT_TRUE(pd_sort(path, false));
  EXPECT_EQ(contents(path), line("PEFL ", "5.prc", "ABC") + line(" EFL ", "6.prc", "abc") + two +
                                line(" EFL ", "7.prc", "sub ") + line(" EFL ", "1.prc", "sub  abc") +
                                line(" EFL ", "8.prc", "Sub Zeta"));
  EXPECT_EQ(contents((folder / "pdf.bak").string()), before);
  ASSERT_TRUE(pd_sort(path, true));
  EXPECT_EQ(contents(path), line("PEFL ", "5.prc", "ABC") + line(" EFL ", "6.prc", "abc") +
                                line(" EFL ", "1.prc", "sub  abc") + two + line(" EFL ", "7.prc", "sub ") +
                                line(" EFL ", "8.prc", "Sub Zeta"));
}

TEST_F(ProcDirTest, ASortThatFailsLeavesTheFile) {
  const std::string orphan = line(" E L ", "1.prc", "orphan"), open_end = line(" EF  ", "1.prc", "open");
  std::string eight = line(" EF  ", "1.prc", "a");
  for (int i = 0; i < 6; ++i) eight += line(" E   ", "1.prc", "b");
  for (const auto& [bytes, number] : {std::pair<std::string, int>{orphan, 30103},
                                      {open_end, 902},
                                      {open_end + open_end, 906},
                                      {eight + line(" E L ", "1.prc", "c"), 926},
                                      {"x", 909}}) {
    write("proc.dir", bytes);
    EXPECT_FALSE(pd_sort(path, false));
    EXPECT_EQ(desk.message_numbers().back(), number);
    EXPECT_EQ(contents(path), bytes);
  }
  EXPECT_FALSE(pd_sort((folder / "none").string(), false));
  EXPECT_EQ(desk.message_numbers().back(), 911);
  write("proc.dir", sample);
  std::filesystem::create_directories(folder / "pdf.bak" / "full");
  EXPECT_FALSE(pd_sort(path, false));
  EXPECT_EQ(desk.message_numbers().back(), 914);
  EXPECT_EQ(contents(path), sample);
}

TEST_F(ProcDirTest, DeletesTheFilesOfSpecialEntries) {
  for (const char* file : {"1.prc", "2.prc", "3.prc"}) write(file, "x");
  const int handle = open(line("DEF  ", "1.prc", "a") + line("DE L ", "2.prc", "b") +
                          line(" EFL ", "3.prc", "c") + line("PEFL ", "4.prc", "d"));
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(pd_delete_file(handle, folder.string(), i)) << i;
  EXPECT_FALSE(std::filesystem::exists(folder / "1.prc"));
  EXPECT_TRUE(std::filesystem::exists(folder / "2.prc")) << "no first line";
  EXPECT_TRUE(std::filesystem::exists(folder / "3.prc")) << "an ordinary entry";
  EXPECT_EQ(desk.last_message(),
            error(914, "The file \"" + (folder / "4.prc").string() + "\" cannot be deleted."));
  EXPECT_FALSE(pd_delete_file(handle, std::string(260, 'd'), 0));
  EXPECT_EQ(desk.message_numbers().back(), 919);
  EXPECT_FALSE(pd_delete_file(handle, folder.string(), 4));
}

}  // namespace
}  // namespace orvane
