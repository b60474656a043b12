// The serial port on the back of a calibrator, ports 17 to 20. The calibrator forwards bytes between that port and its
// own link to the program, which is IEEE-488 or serial; it never forwards by itself, so received bytes are asked for:
//
//   UUT_SET 9600,XON,DBIT8,SBIT1,PNONE;*OPC?   line parameters; answers "1"
//   UUT_SEND #15hello                          a definite-length block: digits of the length, length, bytes
//   UUT_SENDB 27,91,72                         up to ten bytes as numbers, where control bytes must survive
//   *STB? *ESR? ISR?                           8 in the first: the calibrator has an error; 0x100 in the last: bytes
//   UUT_RECV?                                  answers "#15hello"
//   UUT_FLUSH                                  drops what came
//
// On a serial link of its own the calibrator is first set to lines that end with LF: "SP_SET COMP,LF;*OPC?", answered
// by "1", perhaps behind a line of the earlier setting. "ERR?" reads out one error of the calibrator, 0 when there is
// no further one.
//
// Counts are those of comm.h. Failures report themselves.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "instruments/comm.h"
#include "state/run_state.h"

namespace orvane {

/// Finds the calibrator and asks who it is (3594).
[[nodiscard]] bool pass_open(RunState& run, int port);
/// Opens again and sends the line parameters that were sent last.
[[nodiscard]] bool pass_reopen(RunState& run, int port);
void pass_close(RunState& run, int port);

/// 3586 no such rate, 3587 no such parity, 3588 data or stop bits, 3590 no such handshake.
[[nodiscard]] bool pass_configure(RunState& run, int port, const SerialParameters& parameters);

/// Reads up to a terminator or `limit` bytes. 3584 the time-out, 3592 the calibrator's answer is no block, 3595 the
/// bytes do not fit the port's buffer, 30903 the calibrator's own error.
int pass_rd(RunState& run, int port, std::string& text, std::size_t limit, bool block_mode, bool& terminated);
/// Writes the bytes and the output terminator, together at most 1024 (3585). `escape`: control bytes go out as
/// numbers, for which the first calibrator needs firmware 2.4 (2335).
int pass_wrt(RunState& run, int port, std::string_view bytes, bool escape);
[[nodiscard]] bool pass_clear(RunState& run, int port);

/// The open port's state, or null after message 458.
PassThroughState* pass_port(RunState& run, int port);

}  // namespace orvane
