#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include "platform/library.h"

namespace orvane {

bool SharedLibrary::open(const std::string& name, std::string& reason) {
  handle_ = ::LoadLibraryA(name.c_str());
  if (handle_ == nullptr) reason = "system error " + std::to_string(::GetLastError());
  return handle_ != nullptr;
}

void* SharedLibrary::symbol(const char* name) const {
  return handle_ != nullptr ? reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(handle_), name)) : nullptr;
}

}  // namespace orvane
