// What the evaluation must know of an instrument, by its statement: the words that select an entry of an accuracy file,
// the form in which the file has its values, the impedance of its levels, and whether it is a source. One row a model;
// docs/formats.md lists the words for authors of accuracy files.
#pragma once

#include <cstdint>
#include <string>

#include "state/run_state.h"
#include "values/units.h"

namespace orvane {

/// The columns of an instrument statement that choose the words, as the record or a pending accuracy has them.
struct ModeColumns {
  std::uint16_t fsc = 0;
  UnitCode unit = unit_code::none;  // of NOMINAL
  std::uint16_t mod2_code = 0;
  std::int16_t mod2_value = 0;
  std::uint8_t mod3 = 0;
  std::uint8_t con = 0;
};
ModeColumns mode_columns(const FscRecord& record);

/// The words into `out`; empty for a model or a unit without accuracy.
void mode_words(const ModeColumns& columns, std::string& out);

/// Ohms: those of MOD2, else the model's.
double mode_impedance(const ModeColumns& columns);

/// A source applies a value and its reading is what the operator reads off the unit under test.
bool is_source_statement(std::uint16_t fsc);

/// Levels of these models are powers: their dBm are averaged and combined as watts.
bool is_power_statement(std::uint16_t fsc);

}  // namespace orvane
