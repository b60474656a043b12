// A library loaded at run time, one look-up a function. It is never closed: a driver may keep threads of its own.
#pragma once

#include <string>

namespace orvane {

class SharedLibrary {
 public:
  /// Loads by file name or path. On failure `reason` says why in the system's words.
  [[nodiscard]] bool open(const std::string& name, std::string& reason);
  bool is_open() const { return handle_ != nullptr; }
  /// The address of a function or datum, or null.
  void* symbol(const char* name) const;

 private:
  void* handle_ = nullptr;
};

}  // namespace orvane
