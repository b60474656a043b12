#include "platform/locale_signs.h"

#include <windows.h>

namespace orvane {
namespace {

char sign_of(LCTYPE type, char unknown) {
  char text[8] = {};
  const int length = ::GetLocaleInfoA(LOCALE_USER_DEFAULT, type, text, sizeof text);
  return length == 2 ? text[0] : unknown;  // the sign and its NUL
}

}  // namespace

NumberSigns user_number_signs() {
  NumberSigns signs;
  signs.decimal = sign_of(LOCALE_SDECIMAL, signs.decimal);
  signs.separator = sign_of(LOCALE_SLIST, signs.separator);
  return signs;
}

}  // namespace orvane
