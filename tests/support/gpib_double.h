// A driver of the bus that writes down its calls and answers from a script.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "instruments/gpib_driver.h"
#include "state/bus_state.h"
#include "support/desk.h"

namespace orvane::test {

struct GpibScript {
  std::vector<std::string> calls;  // without the looks at the SRQ line
  std::vector<std::string>
      replies;  // one for each read; with "..." behind it END is not set, "!" in front: time-out
  std::size_t next_reply = 0;
  std::function<std::string(const std::string& written)>
      answer;  // in place of the replies, to what was written last
  short status_byte = 0;
  std::vector<short> status_bytes;  // of the polls to come, before status_byte counts
  int fail_call = -1;               // the call with this index fails
  int iberr_then = 6;
  std::vector<std::vector<int>> srq;  // by look at the line: the boards where it is up; the last one stays
  int looks = 0;                      // at the line
  std::vector<GpibAddress> listeners;
  int find_error = -1;  // iberr of every search
};
extern GpibScript script;

const GpibDriver& scripted_driver();

BusAddress on(int board, int primary);
DevAddress device(int board, int primary);  // on the bus
DevAddress serial_device(int port);

/// Two boards with the scripted driver, and no devices.
class BusTest : public EngineTest {
 protected:
  BusTest();
  ~BusTest() override;
};

}  // namespace orvane::test
