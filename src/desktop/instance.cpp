#include "desktop/instance.h"

#include <QDir>
#include <QFileInfo>

#include "desktop/texts.h"
#include "platform/files.h"

namespace orvane {
namespace {

// Where the user has no folder of the program's yet and none can be made, the one for passing files serves.
QString lock_folder() {
  const QString folder = shown_path(user_config_directory());
  return QFileInfo(folder).isDir() || QDir().mkpath(folder) ? folder : QDir::tempPath();
}

std::unique_ptr<QLockFile> lock_of(const QString& path) {
  auto lock = std::make_unique<QLockFile>(path);
  lock->setStaleLockTime(0);  // only the end of its process frees a lock
  return lock;
}

bool is_held(const QString& path) {
  if (!QFileInfo::exists(path)) return false;
  const auto lock = lock_of(path);
  return !lock->tryLock(0) && lock->error() == QLockFile::LockFailedError;
}

}  // namespace

InstanceState Instance::take() {
  const QString folder = lock_folder();
  if (is_held(folder + "/test-run.lock")) return InstanceState::editor_runs;
  lock_ = lock_of(folder + "/run-time.lock");
  if (!lock_->tryLock(0) && lock_->error() == QLockFile::LockFailedError) return InstanceState::taken;
  return InstanceState::free;
}

}  // namespace orvane
