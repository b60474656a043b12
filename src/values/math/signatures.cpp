#include "values/math/function_row.h"

namespace orvane {
namespace {

constexpr auto num = ArgumentKind::num, integer = ArgumentKind::integer,
               checked = ArgumentKind::checked_integer, str = ArgumentKind::str;

}  // namespace

const SignatureShape signature_shapes[signature_count + 1] = {
    {},
    {0, {}, false},
    {1, {num}, false},
    {2, {num, num}, false},
    {3, {num, num, num}, false},
    {2, {num, integer}, false},
    {1, {integer}, false},
    {2, {integer, num}, false},
    {1, {str}, false},
    {3, {str, str, num}, false},
    {4, {str, str, num, num}, false},
    {0, {}, false},
    {1, {num}, false},
    {1, {integer}, false},
    {2, {integer, str}, false},
    {1, {str}, false},
    {2, {str, num}, false},
    {2, {str, str}, false},
    {3, {str, str, num}, false},
    {3, {str, str, integer}, false},
    {3, {str, str, str}, false},
    {4, {str, str, str, str}, false},
    {0, {}, true},
    {1, {num}, true},
    {2, {num, str}, true},
    {1, {integer}, true},
    {2, {integer, integer}, true},
    {2, {checked, str}, true},
    {1, {str}, true},
    {2, {str, num}, true},
    {2, {str, checked}, true},
    {3, {str, integer, integer}, true},
    {3, {str, integer, str}, true},
    {2, {str, str}, true},
    {3, {str, str, str}, true},
};
}  // namespace orvane
