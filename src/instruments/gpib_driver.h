// The IEEE-488.2 driver library of the bench, loaded at run time by name, one look-up a function. Boards are numbered
// from 0; addresses are the driver's 16-bit values, lists of them end with gpib_no_address. Lengths are `long`, as in
// the driver's own interface. After every call the three status words tell how it went; they are read right after
// it, on the one thread.
#pragma once

#include <cstdint>
#include <string>

namespace orvane {

using GpibAddress = std::uint16_t;
constexpr GpibAddress gpib_no_address = 0xFFFF;

namespace gpib_status {
constexpr int error = 0x8000, timeout = 0x4000, end = 0x2000, srq = 0x1000;
}
namespace gpib_send {
constexpr int no_end = 0, with_end = 2;  // END on the last byte
}
constexpr int gpib_receive_to_end = 0x100;  // in place of a stop character

struct GpibDriver {
  int (*ibonl)(int board, int online) = nullptr;
  int (*ibtmo)(int board, int code) = nullptr;
  int (*ibconfig)(int board, int option, int value) = nullptr;
  void (*Send)(int board, GpibAddress address, const void* data, long count, int end) = nullptr;
  void (*SendDataBytes)(int board, const void* data, long count, int end) = nullptr;
  void (*Receive)(int board, GpibAddress address, void* data, long count, int stop) = nullptr;
  void (*RcvRespMsg)(int board, void* data, long count, int stop) = nullptr;
  void (*DevClear)(int board, GpibAddress address) = nullptr;
  void (*ReadStatusByte)(int board, GpibAddress address, short* status) = nullptr;
  void (*SendCmds)(int board, const void* commands, long count) = nullptr;
  void (*EnableRemote)(int board, const GpibAddress* list) = nullptr;
  void (*EnableLocal)(int board, const GpibAddress* list) = nullptr;
  void (*SetRWLS)(int board, const GpibAddress* list) = nullptr;
  void (*Trigger)(int board, GpibAddress address) = nullptr;
  void (*TestSRQ)(int board, short* asserted) = nullptr;
  void (*FindLstn)(int board, const GpibAddress* list, GpibAddress* found, int limit) = nullptr;
  void (*SendIFC)(int board) = nullptr;

  volatile int* ibsta = nullptr;
  volatile int* iberr = nullptr;
  volatile long* ibcntl = nullptr;

  int status() const { return *ibsta; }
  bool failed() const { return (*ibsta & gpib_status::error) != 0; }
  long count() const { return *ibcntl; }
};

/// The driver, loaded at the first call. In place of one that cannot be used a driver is given whose calls do nothing
/// and whose status words say "system error", so that the check of each call fails; gpib_library_fault() then says why.
/// Tests and the record of the traffic put a driver of their own in its place.
const GpibDriver& gpib_driver();
/// Gives what stood in the library's place until now, or null. With null the library is loaded anew.
const GpibDriver* set_gpib_driver(const GpibDriver* driver);

/// The library of the key "ib_driver", whatever stands in its place.
const GpibDriver& gpib_library();
/// Why the library cannot be used: it cannot be loaded, it lacks a function (the first one is named), its copyright text
/// is another one. Empty for one that can.
const std::string& gpib_library_fault();

}  // namespace orvane
