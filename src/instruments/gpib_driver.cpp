#include "instruments/gpib_driver.h"

#include <string_view>
#include <utility>

#include "config/startup_config.h"
#include "platform/library.h"
#include "state/report.h"

namespace orvane {
namespace {

const GpibDriver* installed = nullptr;  // in place of the library
const GpibDriver* library = nullptr;
std::string library_fault;  // why it cannot be used

template <class T>
bool look_up(const SharedLibrary& from, T*& member, const char* name, std::string& missing) {
  member = reinterpret_cast<T*>(from.symbol(name));
  if (member == nullptr && missing.empty()) missing = name;
  return member != nullptr;
}

// Status words bear a prefix in some drivers.
template <class T>
void look_up_word(const SharedLibrary& from, T*& member, const std::string& name, std::string& missing) {
  std::string unused;
  if (!look_up(from, member, ("user_" + name).c_str(), unused)) look_up(from, member, name.c_str(), missing);
}

std::string look_up_all(const SharedLibrary& from, GpibDriver& d) {
  std::string missing;
  look_up(from, d.ibonl, "ibonl", missing);
  look_up(from, d.ibtmo, "ibtmo", missing);
  look_up(from, d.ibconfig, "ibconfig", missing);
  look_up(from, d.Send, "Send", missing);
  look_up(from, d.SendDataBytes, "SendDataBytes", missing);
  look_up(from, d.Receive, "Receive", missing);
  look_up(from, d.RcvRespMsg, "RcvRespMsg", missing);
  look_up(from, d.DevClear, "DevClear", missing);
  look_up(from, d.ReadStatusByte, "ReadStatusByte", missing);
  look_up(from, d.SendCmds, "SendCmds", missing);
  look_up(from, d.EnableRemote, "EnableRemote", missing);
  look_up(from, d.EnableLocal, "EnableLocal", missing);
  look_up(from, d.SetRWLS, "SetRWLS", missing);
  look_up(from, d.Trigger, "Trigger", missing);
  look_up(from, d.TestSRQ, "TestSRQ", missing);
  look_up(from, d.FindLstn, "FindLstn", missing);
  look_up(from, d.SendIFC, "SendIFC", missing);
  look_up_word(from, d.ibsta, "ibsta", missing);
  look_up_word(from, d.iberr, "iberr", missing);
  look_up_word(from, d.ibcntl, "ibcntl", missing);
  return missing;
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Compares without the year. The library's text is believed only as far as it agrees, since nothing bounds it.
bool same_copyright(const char* text, std::string_view wanted) {
  for (const char c : wanted) {
    if (*text != c && !(is_digit(*text) && is_digit(c))) return false;
    ++text;
  }
  return *text == '\0';
}

// A driver that is not there.
template <class R, class... A>
void refuse(R (*&member)(A...)) {
  member = [](A...) { return R(); };
}

GpibDriver absent_driver() {
  static int status = gpib_status::error, error = 0;
  static long count = 0;
  GpibDriver d;
  refuse(d.ibonl);
  refuse(d.ibtmo);
  refuse(d.ibconfig);
  refuse(d.Send);
  refuse(d.SendDataBytes);
  refuse(d.Receive);
  refuse(d.RcvRespMsg);
  refuse(d.DevClear);
  refuse(d.ReadStatusByte);
  refuse(d.SendCmds);
  refuse(d.EnableRemote);
  refuse(d.EnableLocal);
  refuse(d.SetRWLS);
  refuse(d.Trigger);
  refuse(d.TestSRQ);
  refuse(d.FindLstn);
  refuse(d.SendIFC);
  d.ibsta = &status;
  d.iberr = &error;
  d.ibcntl = &count;
  return d;
}

bool refuse_library(std::string reason) {
  library_fault = std::move(reason);
  return false;
}

bool load(GpibDriver& driver) {
  library_fault.clear();
  static SharedLibrary file;  // to the end of the program: a driver may keep threads of its own
  const std::string& name = startup_config().ib_driver;
  std::string reason;
  if (!file.open(name, reason)) return refuse_library(msg(30410, name, reason));
  if (const std::string missing = look_up_all(file, driver); !missing.empty())
    return refuse_library(msg(30411, name, missing));
  const auto* copyright = static_cast<const char*>(file.symbol("CopyrightString"));
  const std::string& wanted = startup_config().ib_copyright;
  return copyright == nullptr || same_copyright(copyright, wanted) ||
         refuse_library(msg(30900, name, wanted));
}

}  // namespace

const GpibDriver& gpib_library() {
  static GpibDriver driver;
  if (library == nullptr) {
    driver = GpibDriver();
    if (!load(driver)) driver = absent_driver();
    library = &driver;
  }
  return *library;
}

const std::string& gpib_library_fault() {
  static const std::string none;
  return installed != nullptr ? none : library_fault;
}

const GpibDriver& gpib_driver() { return installed != nullptr ? *installed : gpib_library(); }

const GpibDriver* set_gpib_driver(const GpibDriver* driver) {
  if (driver == nullptr) library = nullptr;
  return std::exchange(installed, driver);
}

}  // namespace orvane
