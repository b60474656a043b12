#include "desktop/instance.h"

#include <QDir>

#include "desktop/texts.h"
#include "platform/files.h"

namespace orvane {
namespace {

std::unique_ptr<QLockFile> lock_of(const char* name) {
  const QString folder = shown_path(user_config_directory());
  // Where the user has no folder of the program's yet and none can be made, the one for passing files serves.
  const bool there = QDir().mkpath(folder);
  auto lock = std::make_unique<QLockFile>((there ? folder : QDir::tempPath()) + "/" + name);
  lock->setStaleLockTime(0);  // only the end of its process frees a lock
  return lock;
}

}  // namespace

InstanceState Instance::take() {
  const auto editor = lock_of("test-run.lock");
  if (!editor->tryLock(0) && editor->error() == QLockFile::LockFailedError) return InstanceState::editor_runs;
  editor->unlock();
  lock_ = lock_of("run-time.lock");
  if (!lock_->tryLock(0) && lock_->error() == QLockFile::LockFailedError) return InstanceState::taken;
  return InstanceState::free;
}

}  // namespace orvane
