// How the statements stand in a line: each belongs to one form, which the renderer shows and the compiler reads.
#pragma once

#include <cstdint>

#include "state/fsc_record.h"

namespace orvane {

enum class StatementForm : std::uint8_t {
  none,        // the name alone: END, and statements that are known by their code only
  text,        // text in the column of NOMINAL; where the record keeps it: statement_text_field()
  eval,        // text in the column of RANGE
  jump,        // JMP, RPT: target test number, PASS or FAIL
  jump_name,   // JMPT, JMPF: target test number, procedure name
  jump_zero,   // JMPZ: target test number, tolerance
  arithmetic,  // MEM+ and its kin: an operand or nothing
  exchange,    // MEME
  ask,         // ASK+, ASK-: letters in columns of their own
  con,
  draw,
  rng,
  acc,   // ACC: range, value with unit, tolerance
  memc,  // MEMC, MEMCX: the same and a modifier
  accf,
  target,
  standard,  // the columns of the standard instrument record
  modifier,  // settings of an instrument: every model has columns of its own
  count
};

/// The form of a statement's code.
StatementForm statement_form(std::uint16_t code);

/// Where a statement of the form `text` keeps its text.
TextField statement_text_field(std::uint16_t code);

}  // namespace orvane
