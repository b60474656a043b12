#include "platform/locale_signs.h"

#include <langinfo.h>
#include <locale.h>

#include <cstring>

namespace orvane {

// A locale of its own: the program's stays that of C. There is no list separator here; where the comma is the decimal
// sign, lists are written with semicolons.
NumberSigns user_number_signs() {
  NumberSigns signs;
  const locale_t user = ::newlocale(LC_NUMERIC_MASK, "", nullptr);
  if (user == nullptr) return signs;
  const char* decimal = ::nl_langinfo_l(RADIXCHAR, user);
  if (std::strlen(decimal) == 1) signs.decimal = decimal[0];
  if (signs.decimal == ',') signs.separator = ';';
  ::freelocale(user);
  return signs;
}

}  // namespace orvane
