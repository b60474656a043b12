#include "procedure/file/load.h"

#include <algorithm>
#include <numeric>

#include "procedure/file/procedure_bytes.h"
#include "procedure/file/procedure_format.h"
#include "support/desk.h"

namespace orvane {
namespace {

using test::block_record;
using test::comment_record;
using test::file_bytes;
using test::FileParts;
using test::make_record;
using test::u16;
using test::with_comments;

class LoadTest : public test::EngineTest {
 protected:
  // Loads these bytes; the message shown, or "".
  std::string load(std::string_view bytes, bool text_mode = true) {
    write("1.prc", bytes);
    desk.shown.clear();
    loaded = load_procedure_file(procedure, path, text_mode);
    EXPECT_EQ(loaded, desk.shown.empty());
    return loaded ? std::string() : desk.last_message();
  }
  std::string error(int number, const std::string& text) const {
    std::string expected = "E" + std::to_string(number) + ": " + text;
    if (const std::size_t at = expected.find("PATH"); at != std::string::npos) expected.replace(at, 4, path);
    return expected;
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> all;
    for (const ProcNode* node = procedure.head; node != nullptr; node = node->next)
      all.emplace_back(node->shown());
    return all;
  }

  Procedure procedure;
  std::string path = (folder / "1.prc").string();
  bool loaded = false;
};

FileParts small_file() {
  FileParts parts;
  parts.main = {make_record(header_code::instrument, "INSTRUMENT: a"),
                with_comments(make_record(fsc::disp, "one"), 2), block_record(fsc::if_, 3, "M[1] > 0"),
                make_record(fsc::disp, "two"), with_comments(make_record(fsc::endif, ""), 1)};
  parts.listing = {comment_record("# first"), comment_record("# second", 0x0200), comment_record("# third"),
                   comment_record("# behind the last line"), comment_record("# end")};
  return parts;
}

TEST_F(LoadTest, MainRecordsMakeTheListAndTheLinks) {
  ASSERT_EQ(load(file_bytes(small_file()), false), "");
  EXPECT_EQ(procedure.flags, 0x0001 | 0x0002 | 0x0800);
  EXPECT_EQ(procedure.signature,
            "\xF3\x1C"
            "7.20a");
  EXPECT_EQ(procedure.main_count, 5);
  EXPECT_EQ(procedure.listing_count, 5);
  ASSERT_EQ(procedure.lines.size(), 4U);
  const ProcNode* if_line = procedure.lines[1];
  EXPECT_EQ(if_line->record->get(field::code), fsc::if_);
  EXPECT_EQ(if_line->line_index, 1);
  EXPECT_EQ(procedure.branch_target(*if_line), procedure.lines[3]);
  EXPECT_EQ(if_line->record->get(field::block_link), 0U) << "record bytes stay as in the file";

  std::size_t forward = 0, backward = 0;
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next, ++forward)
    EXPECT_TRUE(node->text == nullptr);
  for (const ProcNode* node = procedure.tail; node != nullptr; node = node->prev) ++backward;
  EXPECT_EQ(forward, 5U);
  EXPECT_EQ(backward, 5U);
}

TEST_F(LoadTest, TextModeShowsCommentsInTheirPlaces) {
  ASSERT_EQ(load(file_bytes(small_file()), true), "");
  const std::vector<std::string> shown = texts();
  ASSERT_EQ(shown.size(), 10U);
  const std::vector<std::string> comments = {shown[1], shown[2], shown[6], shown[8], shown[9]};
  EXPECT_EQ(comments,
            (std::vector<std::string>{"# first", "# second", "# third", "# behind the last line", "# end"}));
  EXPECT_EQ(procedure.lines.size(), 4U) << "comments have no line index";
}

TEST_F(LoadTest, ABranchOutsideTheLinesHasNoTarget) {
  for (const int target : {-32768, -1, 2, 32767}) {
    FileParts parts;
    FscRecord jmp = make_record(fsc::jmp);
    jmp.set(field::jmp_target_index, static_cast<std::int16_t>(target));
    FscRecord jmpl = make_record(fsc::jmpl);
    jmpl.set(field::jmpl_target_index, static_cast<std::int16_t>(target));
    parts.main = {jmp, jmpl};
    ASSERT_EQ(load(file_bytes(parts), false), "") << target;
    for (const ProcNode* line : procedure.lines) EXPECT_EQ(procedure.branch_target(*line), nullptr) << target;
  }
}

// The header's faults, by the byte that is changed. Every other byte must load, or say a number with the
// path.
TEST_F(LoadTest, HeaderBytes) {
  const std::string good = file_bytes(small_file());
  for (std::size_t at = 0; at < FileHeader::size; ++at) {
    for (int bit = 0; bit < 8; ++bit) {
      std::string bytes = good;
      bytes[at] = static_cast<char>(bytes[at] ^ (1 << bit));
      const std::string message = load(bytes);
      const std::string where = std::to_string(at) + "." + std::to_string(bit);
      if (at <= 3 || at == 15 || at == 16) {
        EXPECT_EQ(message,
                  error(404, "The file \"PATH\" is not a compiled procedure, or its header is damaged."))
            << where;
      } else if (at == 12 && bit != 0) {
        EXPECT_EQ(message,
                  error(417, "The file \"PATH\" has format version " + std::to_string(8 ^ (1 << bit)) +
                                 "; versions 8 and 9 can be read. Compile it again."));
      } else if (at < 13) {
        EXPECT_EQ(message, "") << where;
      } else if (!loaded) {
        EXPECT_TRUE(message.starts_with("E40") && message.find(path) != std::string::npos)
            << where << message;
      }
    }
  }
}

TEST_F(LoadTest, HeaderLengthAndCounts) {
  const std::string damaged = "The file \"PATH\" is not a compiled procedure, or its header is damaged.";
  const std::string early = "The file \"PATH\" ends too early, or cannot be read.";
  EXPECT_EQ(load("\x1A\x12"), error(404, damaged)) << "a wrong length is said although the file ends";
  EXPECT_EQ(load("\x1A\x13"), error(406, early));
  EXPECT_EQ(load("\x1A"), error(406, early));
  FileParts none;
  EXPECT_EQ(load(file_bytes(none)), error(408, "The file \"PATH\" holds no lines at all."));
  FileParts only_comments;
  only_comments.listing = {comment_record("# alone")};
  EXPECT_EQ(load(file_bytes(only_comments)), "");
  EXPECT_EQ(texts(), std::vector<std::string>{"# alone"});
  FileParts wide = small_file();
  wide.record_size = 96;
  EXPECT_EQ(load(file_bytes(wide)), error(404, damaged));
}

TEST_F(LoadTest, CutToEveryLength) {
  FileParts parts = small_file();
  parts.format = 9;
  parts.flags = 0x0012;
  parts.table = std::string(RequiredInstruments::stored_size, '\0');
  const std::string good = file_bytes(parts);
  const std::string early = "The file \"PATH\" ends too early, or cannot be read.";
  const std::size_t main_end = FileHeader::size + parts.table.size() + parts.main.size() * FscRecord::size;
  for (std::size_t length = 0; length < good.size(); length += length < 40 || length > 3470 ? 1 : 97) {
    EXPECT_EQ(load(good.substr(0, length), true), error(406, early)) << length;
    EXPECT_TRUE(procedure.head == nullptr && procedure.lines.empty() && procedure.flags == 0) << length;
    if (length >= main_end) {
      EXPECT_EQ(load(good.substr(0, length), false), "") << "comments are not read: " << length;
    }
  }
  EXPECT_EQ(load(good), "");
}

TEST_F(LoadTest, RecordsInTheWrongPlace) {
  const std::string wrong =
      "The file \"PATH\" is damaged: a comment line stands among its statements, or a statement among its "
      "comment "
      "lines.";
  FileParts parts = small_file();
  parts.main[2] = comment_record("# here");
  EXPECT_EQ(load(file_bytes(parts), false), error(403, wrong));
  parts = small_file();
  parts.listing[2] = make_record(fsc::disp, "here");
  EXPECT_EQ(load(file_bytes(parts)), error(403, wrong));
  EXPECT_EQ(load(file_bytes(parts), false), "") << "not read outside text mode";
  parts = small_file();
  parts.listing[4] = make_record(fsc::disp, "behind");
  EXPECT_EQ(load(file_bytes(parts)), error(403, wrong));
}

TEST_F(LoadTest, CountsThatPromiseMore) {
  const std::string early = "The file \"PATH\" ends too early, or cannot be read.";
  FileParts parts = small_file();
  parts.listing.clear();
  parts.main_count = 65535;
  EXPECT_EQ(load(file_bytes(parts)), error(406, early));
  parts = small_file();
  parts.listing_count = 65535;
  EXPECT_EQ(load(file_bytes(parts)), error(406, early));
  parts = small_file();
  parts.main[0] = with_comments(parts.main[0], 255);
  EXPECT_EQ(load(file_bytes(parts)), error(406, early)) << "more comments before a line than there are";
  parts = small_file();
  parts.format = 8;
  parts.flags = 0x0012;
  parts.table = std::string(161, '\0');
  parts.table[0] = 17;
  EXPECT_EQ(load(file_bytes(parts)), error(30100,
                                           "The file \"PATH\" is damaged: its table of required instruments "
                                           "counts more entries than it has."));
}

TEST_F(LoadTest, TheLargestFileLoadsAndLists) {
  FileParts parts;
  parts.main.assign(65535, make_record(fsc::disp, "line"));
  parts.listing.assign(65535, comment_record("# comment"));
  for (FscRecord& record : parts.main) record = with_comments(record, 1);
  ASSERT_EQ(load(file_bytes(parts)), "");
  EXPECT_EQ(procedure.lines.size(), 65535U);
  EXPECT_EQ(procedure.lines.back()->line_index, 65534);
  EXPECT_EQ(texts().size(), 131070U);
  EXPECT_EQ(procedure.tail, procedure.lines.back());
}

TEST_F(LoadTest, OpeningFails) {
  path = (folder / "none.prc").string();
  EXPECT_FALSE(load_procedure_file(procedure, path, false));
  const std::string cannot =
      "The file \"PATH\" cannot be opened. Check the procedure directory and the rights of the file.";
  EXPECT_EQ(desk.last_message(), error(405, cannot));
  path = folder.string();
  EXPECT_FALSE(load_procedure_file(procedure, path, false));
  EXPECT_EQ(desk.last_message(), error(405, cannot));
  procedure.directory.file_name = "1.prc";
  EXPECT_FALSE(load_procedure(procedure, std::string(284, 'd'), false)) << "the path has 290 characters";
  EXPECT_EQ(desk.message_numbers().back(), 405);
}

TEST_F(LoadTest, NameAndAnnouncement) {
  write("7.prc", file_bytes(small_file()));
  procedure.directory = {.first_line = 10,
                         .last_line = 11,
                         .matched_line = 11,
                         .dir_flags = 0,
                         .file_name = "7.prc",
                         .name_count = 2,
                         .names = {"first name", "second name"}};
  ASSERT_TRUE(load_procedure(procedure, folder.string(), false));
  EXPECT_EQ(procedure.name, "second name");
  ASSERT_EQ(desk.of_kind("wait").size(), 1U);
  EXPECT_EQ(desk.of_kind("wait")[0].lines, std::vector<std::string>{"Loading \"second name\"."});

  procedure.set(procedure_flag::name_set);
  procedure.name = std::string(200, 'n');
  ASSERT_TRUE(load_procedure(procedure, folder.string() + "/", false));
  EXPECT_EQ(procedure.name, std::string(200, 'n')) << "a name that is set stays";
  const std::string shown = desk.of_kind("wait").back().lines[0];
  EXPECT_EQ(shown, "Loading \"" + std::string(178, 'n') + "...\".");
  EXPECT_EQ(shown.size(), 192U);
}

// --- Writing
// -------------------------------------------------------------------------------------------------

TEST_F(LoadTest, WritingGivesTheSameBytes) {
  const std::string good = file_bytes(small_file());
  ASSERT_EQ(load(good, true), "");
  const std::string copy = (folder / "copy.prc").string();
  ASSERT_TRUE(write_procedure(procedure, copy));
  EXPECT_EQ(contents(copy), good);
  EXPECT_FALSE(write_procedure(procedure, (folder / "none" / "x.prc").string()));
  EXPECT_EQ(desk.message_numbers().back(), 407);
}

TEST_F(LoadTest, ListingLinesBeforeOneRecord) {
  for (const int count : {255, 256}) {
    Procedure made;
    for (int i = 0; i < count; ++i) *node_append(made, node_request::record)->record = comment_record("#");
    *node_append(made, node_request::record)->record = make_record(fsc::disp, "x");
    EXPECT_EQ(write_procedure(made, (folder / "x.prc").string()), count == 255);
    if (count == 255) {
      EXPECT_EQ(made.tail->record->get(field::listing_before), 255);
    }
  }
  EXPECT_EQ(desk.last_message(),
            "E416: 256 comment lines stand before line 257 of the procedure; a compiled procedure keeps at "
            "most 255 "
            "before one line.");
}

RequiredInstruments table_of(int entries) {
  RequiredInstruments table;
  table.count = static_cast<std::uint16_t>(entries);
  for (int i = 0; i < entries; ++i) {
    RequiredInstruments::Entry& entry = table.entries[static_cast<std::size_t>(i)];
    entry.instrument = static_cast<std::uint16_t>(1 + i);
    entry.option_mask = static_cast<std::uint16_t>(i);
    entry.alternatives[0] = {.reserved = 0, .option = 5, .option_mask = 3};
    entry.alternatives[3] = {.reserved = 0, .option = 9, .option_mask = 255};
  }
  return table;
}

// What forces the wide table; and both forms come back as they were.
TEST_F(LoadTest, RequiredTablesInBothVersions) {
  struct Case {
    const char* what;
    int entries;
    void (*change)(RequiredInstruments&);
    int version;
  };
  const Case cases[] = {
      {"16 entries", 16, [](RequiredInstruments&) {}, 8},
      {"17 entries", 17, [](RequiredInstruments&) {}, 9},
      {"64 entries", 64, [](RequiredInstruments&) {}, 9},
      {"reserved", 1, [](RequiredInstruments& t) { t.entries[0].reserved = 1; }, 9},
      {"mask 255", 1, [](RequiredInstruments& t) { t.entries[0].option_mask = 255; }, 8},
      {"mask 256", 1, [](RequiredInstruments& t) { t.entries[0].option_mask = 256; }, 9},
      {"five alternatives", 1,
       [](RequiredInstruments& t) {
         for (std::size_t i = 0; i < 5; ++i) t.entries[0].alternatives[i].option = 1;
       },
       9},
      {"four alternatives", 1,
       [](RequiredInstruments& t) {
         for (std::size_t i = 0; i < 4; ++i) t.entries[0].alternatives[i].option = 1;
       },
       8},
      {"alternative reserved", 1, [](RequiredInstruments& t) { t.entries[0].alternatives[0].reserved = 1; },
       9},
      {"alternative mask 256", 1,
       [](RequiredInstruments& t) { t.entries[0].alternatives[0].option_mask = 256; }, 9},
  };
  for (const Case& c : cases) {
    RequiredInstruments table = table_of(c.entries);
    c.change(table);
    Procedure made;
    *node_append(made, node_request::record)->record = make_record(fsc::disp, "x");
    made.required = std::make_unique<RequiredInstruments>(table);
    made.set(procedure_flag::required);
    const std::string file = (folder / "table.prc").string();
    ASSERT_TRUE(write_procedure(made, file)) << c.what;
    EXPECT_EQ(contents(file).size(), 21U + (c.version == 8 ? 161U : 3458U) + 92U) << c.what;
    Procedure back;
    ASSERT_TRUE(load_procedure_file(back, file, false)) << c.what;
    EXPECT_EQ(back.format_version, c.version) << c.what;
    EXPECT_TRUE(back.has(procedure_flag::required)) << c.what;
    EXPECT_EQ(required_format(*back.required, 9), required_format(table, 9)) << c.what;
  }
}

// --- Nodes
// ---------------------------------------------------------------------------------------------------

TEST_F(LoadTest, NodeTextGrowsInSteps) {
  ProcNode* node = node_append(procedure, node_request::with_text);
  EXPECT_EQ(node->text_capacity, 79);
  ASSERT_TRUE(node_set_text(procedure, *node, "kept"));
  EXPECT_FALSE(node_grow_text(procedure, *node, 79));
  EXPECT_EQ(desk.last_message(),
            "E571: A line of the procedure is to get room for 79 characters but has room for 79 already.");
  ASSERT_TRUE(node_grow_text(procedure, *node, 80));
  EXPECT_EQ(node->text_capacity, 96);
  EXPECT_EQ(node->shown(), "kept");
  EXPECT_FALSE(node_grow_text(procedure, *node, 65535));
  EXPECT_EQ(desk.message_numbers().back(), 572);
  EXPECT_FALSE(node_add_record(procedure, *node));
  EXPECT_EQ(desk.message_numbers().back(), 575);

  ProcNode* bare = node_append(procedure, 0);
  EXPECT_TRUE(bare->record == nullptr && bare->text == nullptr);
  node->line_index = 7;
  node->record->set(field::test_major, 12);
  ASSERT_TRUE(node_copy(procedure, *bare, *node));
  EXPECT_EQ(bare->line_index, 7);
  EXPECT_EQ(bare->shown(), "kept");
  EXPECT_EQ(bare->record->bytes, node->record->bytes);
}

TEST_F(LoadTest, StatementLineCount) {
  const auto line = [&](int code, int flags) {
    ProcNode* node = node_append(procedure, node_request::record);
    *node->record = make_record(code, "", flags);
    return node;
  };
  const ProcNode* first = line(fsc::disp, 0x10);
  line(0x0100, 0);
  const ProcNode* second = line(fsc::disp, 0x20);
  const ProcNode* single = line(fsc::mess, 0x30);
  const ProcNode* open = line(fsc::head, 0x10);
  line(fsc::disp, 0x30);
  const ProcNode* last = line(fsc::disp, 0x10);
  EXPECT_EQ(statement_line_count(*first), 2);
  EXPECT_EQ(statement_line_count(*second), 1);
  EXPECT_EQ(statement_line_count(*single), 1);
  EXPECT_EQ(statement_line_count(*open), 0) << "another statement comes first";
  EXPECT_EQ(statement_line_count(*last), 0) << "the list ends first";
}

}  // namespace
}  // namespace orvane
