#include "platform/process.h"

namespace orvane {

Processes& system_processes();  // of the platform

namespace {
Processes* in_use = nullptr;
}

Processes& processes() { return in_use != nullptr ? *in_use : system_processes(); }
void use_processes(Processes* other) { in_use = other; }

}  // namespace orvane
