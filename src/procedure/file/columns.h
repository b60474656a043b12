// The columns of a procedure line, counted from 0. What is typed, shown and traced stands in them.
//
//   0         9      16    22             37            51             66 69 72 75
//     1.001   3458         10.0000V       0.01% 0.002U  1kH               E     4W
//             FSC    RANGE NOMINAL        TOLERANCE     MOD1           MOD2, 3, 4, CON
#pragma once

#include <cstddef>

namespace orvane::column {

constexpr std::size_t test = 0, fsc = 9, adjustment_fsc = 16, range = 16, nominal = 22, tolerance = 37,
                      mod1 = 51, mod2 = 66, mod3 = 69, mod4 = 72, con = 75, end = 79;

// Widths in which a field is shown; a number that is longer is made compact.
constexpr std::size_t range_width = 5, quantity_width = 14, tolerance_width = 13;

// Columns that hold something else in one kind of statement.
constexpr std::size_t text = nominal;  // of texts
constexpr std::size_t jump_target = nominal, jump_condition = tolerance;
constexpr std::size_t header_text = 23;  // of a header line behind its keyword
constexpr std::size_t meme_register = mod2, draw_style = mod1, rng_ac = mod1, rng_minus_d = mod2,
                      accf_file = tolerance;

}  // namespace orvane::column
