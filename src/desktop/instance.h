// One Run Time a user, and none beside the editor's Test Run. Each holds a lock file in the user's folder of
// configuration: "run-time.lock" and "test-run.lock", the number of the holding process in the first line. A file that a
// dead process left behind locks nothing.
#pragma once

#include <QLockFile>
#include <memory>

namespace orvane {

enum class InstanceState { free, taken, editor_runs };

class Instance {
 public:
  /// Takes the lock; it is held while the object lives.
  InstanceState take();

 private:
  std::unique_ptr<QLockFile> lock_;
};

}  // namespace orvane
