// How the user's system writes numbers. The program itself always computes and prints with ".".
#pragma once

namespace orvane {

struct NumberSigns {
  char decimal = '.';
  char separator = ',';  // between the values of a list
};

/// As the user's system has them; the signs of C where it does not say, or says more than one character.
NumberSigns user_number_signs();

}  // namespace orvane
