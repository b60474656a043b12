#include "instruments/bench_load.h"

#include "config/startup_config.h"
#include "instruments/bench_file.h"
#include "instruments/ieee488.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "state/report.h"

namespace orvane {
namespace {

constexpr std::int64_t young =
    2000000000;  // nanoseconds in which a file may change without changing its times
constexpr std::int64_t second = 1000000000;

struct LoadedBench {
  std::string path;
  std::optional<FileStamp> stamp;  // none: nothing has been read, or it is to be read again
};
LoadedBench& loaded() {
  static LoadedBench state;
  return state;
}

bool is_unchanged(const std::string& path, const std::optional<FileStamp>& now) {
  const LoadedBench& last = loaded();
  if (!now || !last.stamp || path != last.path || *now != *last.stamp) return false;
  return std::int64_t{platform().clock->now()} * second - now->changed >= young;
}

bool read_bench(const std::string& path) {
  DeviceList list;
  std::vector<BenchFault> faults;
  const bool sound = bench_file_read(path, list, faults);
  for (const BenchFault& fault : faults)
    show_text("E" + std::to_string(fault.number) + ": " + fault.text, MessageKind::error, fault.number);
  set_device_list(sound ? std::move(list) : DeviceList());
  ib_forget_listeners();
  return sound;
}

}  // namespace

bool dev_reload_if_changed() {
  const std::string& path = startup_config().config;
  if (path.empty()) {
    set_device_list(std::nullopt);
    loaded() = {};
    return true;
  }
  const std::optional<FileStamp> now = file_stamp(path);
  if (is_unchanged(path, now)) return true;
  // Where this program cannot write, nobody is locked out by it and nothing is left over of it.
  const bool locks = may_write_beside(config_path());
  // A lock of our own is left over from a program that died.
  if (locks && (dev_lock(DevLock::clear_own) == DevLockResult::failed ||
                dev_lock(DevLock::take) == DevLockResult::failed))
    return false;
  const bool sound = read_bench(path);
  loaded() = {.path = path, .stamp = sound ? now : std::nullopt};
  return (!locks || dev_lock(DevLock::release) == DevLockResult::done) && sound;
}

void dev_note_written() { loaded().stamp.reset(); }

}  // namespace orvane
