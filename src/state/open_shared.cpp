#include "state/open_shared.h"

#include <array>
#include <cerrno>

#include "platform/files.h"
#include "state/report.h"

namespace orvane {

bool open_shared(const std::string& path, const std::function<bool()>& open) {
  for (;;) {
    errno = 0;
    if (open()) return true;
    if (!is_sharing_violation(errno)) return false;
    const std::array<MessageArg, 1> args = {path};
    if (yesnoph(30047, args) != answer::yes) return false;
  }
}

}  // namespace orvane
