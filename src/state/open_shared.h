// Files that another program may hold for the moment.
#pragma once

#include <functional>
#include <string>

namespace orvane {

/// Calls `open`, which returns false with errno as the system left it. While the system says that another program
/// holds the file, the operator is asked whether to try again (message 30047 with the path). False if the file could
/// not be opened, or the operator gave it up.
[[nodiscard]] bool open_shared(const std::string& path, const std::function<bool()>& open);

}  // namespace orvane
