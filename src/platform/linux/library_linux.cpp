#include <dlfcn.h>

#include "platform/library.h"

namespace orvane {

bool SharedLibrary::open(const std::string& name, std::string& reason) {
  handle_ = ::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    const char* why = ::dlerror();
    reason = why != nullptr ? why : name;
  }
  return handle_ != nullptr;
}

void* SharedLibrary::symbol(const char* name) const {
  return handle_ != nullptr ? ::dlsym(handle_, name) : nullptr;
}

}  // namespace orvane
