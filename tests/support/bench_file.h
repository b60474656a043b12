// A laboratory with an instrument configuration, for tests of what is read from it.
#pragma once

#include <ctime>

#include "config/profile.h"
#include "config/startup_config.h"
#include "instruments/bench_load.h"
#include "support/configuration.h"
#include "support/desk.h"

namespace orvane::test {

class BenchFileTest : public EngineTest {
 protected:
  BenchFileTest() {
    make_configured_folders(folder);
    std::vector<ConfigFault> faults;
    EXPECT_TRUE(config_load(write("orvane.ini", sound_configuration()), faults));
    startup_config().config = bench_path;
    dev_note_written();
    clock.seconds = std::time(nullptr) + 10;
  }
  ~BenchFileTest() override {
    startup_config() = StartupConfig();
    EXPECT_TRUE(dev_reload_if_changed());
  }
  std::string lock() const { return profile_get(config_path(), "startup", "lock").value_or(""); }

  const std::string bench_path = (folder / "bench.txt").string();
};

}  // namespace orvane::test
