#include "platform/local_time.h"

namespace orvane {

std::tm local_time(std::time_t moment) {
  std::tm parts{};
  return ::localtime_r(&moment, &parts) != nullptr ? parts : std::tm{};
}

}  // namespace orvane
