#include "instruments/bench_load.h"

#include "instruments/device_list.h"
#include "support/bench_file.h"

namespace orvane {
namespace {

using BenchLoad = test::BenchFileTest;

TEST_F(BenchLoad, ReadsWhatHasChangedUnderTheLock) {
  write("bench.txt", "22 : HP 3458A\n");
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_EQ(device_list().instruments.size(), 1U);
  EXPECT_EQ(lock(), "None");
  dev_set_flags(1, device_flag::used);
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_EQ(device_list().instruments[0].flags, device_flag::used) << "the same file is not read again";
  write("bench.txt", "22 : HP 3458A\n23 : HP 34401A\n");
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_EQ(device_list().instruments.size(), 2U);
  EXPECT_EQ(device_list().instruments[0].flags, 0);
  // A file that was written a moment ago may have been written twice.
  clock.seconds = std::time(nullptr);
  dev_set_flags(1, device_flag::used);
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_EQ(device_list().instruments[0].flags, 0);

  startup_config().config.clear();
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_FALSE(device_list_stands());
  EXPECT_TRUE(desk.shown.empty());
}

TEST_F(BenchLoad, AFaultyFileLeavesAnEmptyBench) {
  write("bench.txt", "22 : HP 3458A\n22 HP 34401A\n99 : x\n");
  EXPECT_FALSE(dev_reload_if_changed());
  EXPECT_EQ(desk.message_numbers(), (std::vector{30420, 30421}));
  EXPECT_TRUE(device_list_stands());
  EXPECT_TRUE(device_list().instruments.empty());
  EXPECT_EQ(lock(), "None");
  write("bench.txt", "22 : HP 3458A\n");
  EXPECT_TRUE(dev_reload_if_changed());
  EXPECT_EQ(device_list().instruments.size(), 1U);
}

TEST_F(BenchLoad, TheEditorsLockIsRespectedAndADeadOneIsCleared) {
  write("bench.txt", "22 : HP 3458A\n");
  ASSERT_TRUE(profile_put(config_path(), "startup", "lock", "RunTime"));
  EXPECT_TRUE(dev_reload_if_changed());
  ASSERT_TRUE(profile_put(config_path(), "startup", "lock", "Editor"));
  dev_note_written();
  EXPECT_FALSE(dev_reload_if_changed());
  EXPECT_EQ(desk.message_numbers(), std::vector{2494});
  EXPECT_EQ(lock(), "Editor");
}

}  // namespace
}  // namespace orvane
