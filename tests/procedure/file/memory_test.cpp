#include "procedure/file/memory.h"

#include "procedure/file/load.h"
#include "procedure/file/proc_dir.h"
#include "procedure/file/procedure_bytes.h"
#include "support/desk.h"

namespace orvane {
namespace {

class MemoryTest : public test::EngineTest {
 protected:
  MemoryTest() {
    free_all_procedures();
    std::vector<PdAddition> additions;
    for (char c = 'A'; c <= 'J'; ++c) {
      PdAddition addition{.name = std::string("sub ") + c, .file_name = std::string(1, c) + ".prc"};
      test::FileParts parts;
      parts.main = {test::make_record(fsc::end, addition.name)};
      write(addition.file_name, test::file_bytes(parts));
      additions.push_back(addition);
    }
    EXPECT_TRUE(pd_add(folder.string(), additions));
  }
  ~MemoryTest() override { free_all_procedures(); }

  Procedure* get(const std::string& name) { return procedure_by_name(run, folder.string(), name); }
  // Files read so far.
  std::size_t loads() const { return desk.of_kind("wait").size(); }
};

TEST_F(MemoryTest, TheLeastRecentlyUsedGoes) {
  Procedure* main = acquire_main_procedure();
  main->name = "main";
  main->set(procedure_flag::loaded | procedure_flag::pinned);
  for (const char* name : {"sub A", "sub B", "sub C", "sub D", "sub E", "sub F", "sub G"})
    ASSERT_NE(get(name), nullptr) << name;
  EXPECT_EQ(loads(), 7U);
  ASSERT_NE(get("SUB a"), nullptr) << "names are the same in any case";
  EXPECT_EQ(loads(), 7U);
  const Procedure* h = get("sub H");
  ASSERT_NE(h, nullptr);
  EXPECT_EQ(h->name, "sub H");
  EXPECT_EQ(loads(), 8U);
  get("sub A");
  EXPECT_EQ(loads(), 8U) << "used since, it stayed";
  get("sub B");
  EXPECT_EQ(loads(), 9U) << "the oldest went and loads again";
  EXPECT_EQ(main->name, "main") << "pinned";
  EXPECT_EQ(acquire_main_procedure(), main);
  EXPECT_TRUE(main->name.empty());
  get("sub A");
  EXPECT_EQ(loads(), 10U) << "every slot was freed";
}

TEST_F(MemoryTest, NoSlot) {
  for (char c = 'A'; c < 'A' + procedure_slots; ++c)
    get(std::string("sub ") + c)->set(procedure_flag::pinned);
  EXPECT_EQ(find_procedure(run, "sub I"), nullptr);
  EXPECT_EQ(get("sub I"), nullptr);
  EXPECT_EQ(desk.last_message(),
            "E1817: There is no room in memory for the procedure \"sub I\": too many procedures are in use.");
  EXPECT_TRUE(run.has(run_flag::stop_test));
  Procedure* b = find_procedure(run, "sub B");
  EXPECT_TRUE(release_procedure(b));
  EXPECT_FALSE(release_procedure(b)) << "it is in no slot now";
  EXPECT_EQ(get("sub I"), b);
  free_all_but("SUB I");
  EXPECT_EQ(b->name, "sub I");
  get("sub C");
  EXPECT_EQ(loads(), 10U);
}

TEST_F(MemoryTest, AProcedureThatDoesNotLoadLeavesItsSlotFree) {
  write("A.prc", "no procedure");
  for (int i = 0; i < 20; ++i) EXPECT_EQ(get("sub A"), nullptr);
  EXPECT_EQ(get("unknown"), nullptr);
  EXPECT_EQ(desk.message_numbers().back(), 905);
  for (char c = 'B'; c < 'B' + procedure_slots; ++c) EXPECT_NE(get(std::string("sub ") + c), nullptr);
  EXPECT_EQ(pd_open((folder / "proc.dir").string(), pd_mode_read), 1) << "no directory was left open";
  EXPECT_TRUE(pd_close(1));
}

TEST_F(MemoryTest, AgesAreRenumberedInTheirOrder) {
  for (char c = 'A'; c < 'A' + procedure_slots; ++c) get(std::string("sub ") + c);
  for (int i = 0; i < 70000; ++i) find_procedure(run, i % 2 == 0 ? "sub G" : "sub H");
  get("sub A");
  const std::size_t before = loads();
  get("sub I");  // in the place of B
  get("sub J");  // in the place of C
  get("sub A");
  get("sub D");
  EXPECT_EQ(loads(), before + 2);
  get("sub B");
  EXPECT_EQ(loads(), before + 3);
}

TEST_F(MemoryTest, ShownName) {
  set_current_procedure_name(std::string(60, 'x'));
  EXPECT_EQ(current_procedure_name(), std::string(55, 'x'));
  set_current_procedure_name("");
  EXPECT_TRUE(current_procedure_name().empty());
}

}  // namespace
}  // namespace orvane
