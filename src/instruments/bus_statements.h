// The statements that carry a line of text for a device: IEEE, IEEE2, SCPI, PORT and VISA. Plain text is sent, elements
// in brackets act, in the order in which they are written:
//   [@22] [@122:1] [@DMM] [@COM3]  sets the device: IEEE-488 address (100 to 130 are on board 1) with a secondary
//                                  one, alias, or port
//   [I] [I$] [I!]                  reads a reply: its first number into MEM, its text into MEM2, to nowhere
//   [I > file] [I >> file]         the reply goes to a file, or behind what is in it
//   [O< file]                      sends a file
//   [IB n m > file]                n bytes of a port, or "*" until nothing more comes for m milliseconds
//   [D n] [T n]                    waits, sets the time-out; milliseconds
//   [TERM x] [OTERM x]             what ends a read, what ends a write: 10, 'x', CR, LF, CRLF, NONE
//   [EOI ON] [S n]                 END on the last byte; milliseconds between bytes (IEEE-488)
//   [SDC] [GTL] [LLO] [REN] [TRIG] [IFC n] [SPL m] [SRQ t,m] [SRQ ON]     lines, polls, service requests (IEEE-488)
//   [P COM3,9600,N,8,1,X] [CLR] [CLR ON] [REOPEN]                         of ports
// Files stand in the folder of the key "user_data_dir" where their name is relative.
#pragma once

#include <span>

#include "state/statement.h"

namespace orvane {

std::span<const HandlerRow> bus_handlers();

/// The start of a run: no address is known, everything is as these statements find it first.
void bus_statements_reset(RunState& run);

}  // namespace orvane
