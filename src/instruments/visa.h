// VISA: a line of text for a device that is reached through a VISA library, which is loaded by name when it is first
// needed. The key "ni-visa" allows the statement; without it, and without a library, it ends with message 313.
#pragma once

#include <cstdint>

#include "state/statement.h"

namespace orvane {

/// The functions of the library that are used, under the names of the VISA standard.
struct VisaLibrary {
  using Status = std::int32_t;
  using Session = std::uint32_t;
  static constexpr std::size_t description_size = 256;  // bytes of a resource's name, with its NUL
  Status (*viOpenDefaultRM)(Session* manager) = nullptr;
  Status (*viOpen)(Session manager, const char* name, std::uint32_t access, std::uint32_t timeout,
                   Session* session) = nullptr;
  Status (*viClose)(Session object) = nullptr;
  Status (*viRead)(Session session, unsigned char* bytes, std::uint32_t count, std::uint32_t* read) = nullptr;
  Status (*viWrite)(Session session, const unsigned char* bytes, std::uint32_t count,
                    std::uint32_t* written) = nullptr;
  Status (*viFindRsrc)(Session manager, const char* expression, Session* list, std::uint32_t* count,
                       char* description) = nullptr;
  Status (*viFindNext)(Session list, char* description) = nullptr;
  Status (*viSetAttribute)(Session object, std::uint32_t attribute, std::uintptr_t value) = nullptr;
};

/// A library in place of the system's, until null is set.
void set_visa_library(const VisaLibrary* library);

/// VISA. Its records are joined; the text runs with the last one.
bool visa_statement(Statement& statement);

/// The end of a run: closes the instrument's session, then the resource manager's.
void visa_end_of_run(RunState& run);

}  // namespace orvane
