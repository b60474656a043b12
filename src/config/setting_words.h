// The words that a startup key and the setting of the same name share, in the grammar of config/value_grammar.h.
#pragma once

#include <string_view>

namespace orvane::setting_words {

// Switches: of a key, of a setting that takes numbers as well, and of one that takes the words alone.
constexpr std::string_view key_switch = "YES:1, 1:1, NO:0, 0:0";
constexpr std::string_view yes_no = "YES:1, NO:0";
constexpr std::string_view confidence =
    "1sigma:1, 68.27%:1, 90.00%:2, 90.0%:2, 95.00%:3, 95.0%:3, 2sigma:4, 95.45%:4, 99.00%:5, 99.0%:5, "
    "3sigma:6, 99.73%:6";
constexpr std::string_view gb_mode = "STEP:1, INTERP:2";
constexpr std::string_view gb_overflow = "DISABLE:1, DISABLE_W:2, LIMIT:3, LIMIT_W:4";
constexpr std::string_view gb_pts = "F:1, PF:2, P:3, RESULT:4";
constexpr std::string_view gb_result = "F:1, P:3, PF:4";
constexpr std::string_view gb = "DIRECT:1, MU:2, NTUR:3, OFF:4, RDS:5, TSR:6, TUR:7";
constexpr std::string_view mfile_format = "DELIM:1, DELIM-Q:2, DELIM-STD:3, VERBOSE:4";  // of the setting
constexpr std::string_view rsm = "All:1, FirstLast:2, Last:3";
constexpr std::string_view tol_ref = "NOMINAL:1, SYSTEM_ACTUAL:2, UUT_INDICATED:3";
constexpr std::string_view u2m = "RSS:1, Single:2";
constexpr std::string_view ufmt = "ENGR:1, NOM:2, PREFIX:3, SCI:4";

}  // namespace orvane::setting_words
