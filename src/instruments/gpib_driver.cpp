#include "instruments/gpib_driver.h"

#include <memory>

#include "config/startup_config.h"
#include "platform/library.h"
#include "state/report.h"

namespace orvane {
namespace {

const GpibDriver* installed = nullptr;
bool load_failed = false;

template <class T>
bool look_up(const SharedLibrary& library, T*& member, const char* name, std::string& missing) {
  member = reinterpret_cast<T*>(library.symbol(name));
  if (member == nullptr && missing.empty()) missing = name;
  return member != nullptr;
}

// Status words bear a prefix in some drivers.
template <class T>
void look_up_word(const SharedLibrary& library, T*& member, const std::string& name, std::string& missing) {
  std::string unused;
  if (!look_up(library, member, ("user_" + name).c_str(), unused))
    look_up(library, member, name.c_str(), missing);
}

std::string look_up_all(const SharedLibrary& library, GpibDriver& d) {
  std::string missing;
  look_up(library, d.ibonl, "ibonl", missing);
  look_up(library, d.ibtmo, "ibtmo", missing);
  look_up(library, d.ibconfig, "ibconfig", missing);
  look_up(library, d.Send, "Send", missing);
  look_up(library, d.SendDataBytes, "SendDataBytes", missing);
  look_up(library, d.Receive, "Receive", missing);
  look_up(library, d.RcvRespMsg, "RcvRespMsg", missing);
  look_up(library, d.DevClear, "DevClear", missing);
  look_up(library, d.ReadStatusByte, "ReadStatusByte", missing);
  look_up(library, d.SendCmds, "SendCmds", missing);
  look_up(library, d.EnableRemote, "EnableRemote", missing);
  look_up(library, d.EnableLocal, "EnableLocal", missing);
  look_up(library, d.SetRWLS, "SetRWLS", missing);
  look_up(library, d.Trigger, "Trigger", missing);
  look_up(library, d.TestSRQ, "TestSRQ", missing);
  look_up(library, d.FindLstn, "FindLstn", missing);
  look_up(library, d.SendIFC, "SendIFC", missing);
  look_up_word(library, d.ibsta, "ibsta", missing);
  look_up_word(library, d.iberr, "iberr", missing);
  look_up_word(library, d.ibcntl, "ibcntl", missing);
  return missing;
}

const GpibDriver* load() {
  // Both live to the end of the program: a driver may keep threads of its own.
  static SharedLibrary library;
  static GpibDriver driver;
  const std::string& name = startup_config().ib_driver;
  std::string reason;
  if (!library.open(name, reason)) {
    errp(30410, name, reason);
    return nullptr;
  }
  driver = GpibDriver();
  if (const std::string missing = look_up_all(library, driver); !missing.empty()) {
    errp(30411, name, missing);
    return nullptr;
  }
  return &driver;
}

}  // namespace

const GpibDriver* gpib_driver() {
  if (installed == nullptr && !load_failed) {
    installed = load();
    load_failed = installed == nullptr;
  }
  return installed;
}

void set_gpib_driver(const GpibDriver* driver) {
  installed = driver;
  load_failed = false;
}

}  // namespace orvane
