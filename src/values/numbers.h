// Numbers and short texts, as every room reads, compares, rounds and prints them: the scanner that finds a
// number at the start of a text, comparisons with a relative allowance, printing in fixed, exponent and
// engineering form to a width, and the small text splitters. No function depends on the locale. The only
// state is the compare epsilon.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

// --- Scanning ------------------------------------------------------------------------------------

/// Length of the number at the start of `text`, 0 if there is none. A number is an optional sign, then digits
/// with an optional point and further digits, or a point and digits, then an optional exponent. A trailing
/// point belongs to it ("12." has length 3), a malformed exponent does not ("12e+" has length 2). No blanks
/// are skipped.
std::size_t number_length(std::string_view text);

/// The same with "," for a decimal point wherever "." may stand.
std::size_t number_length_intl(std::string_view text);

/// number_length() and the value in one pass. The value is correctly rounded; one too small for a double is
/// 0, one too large is infinite, with its sign. Without a number the result is 0 and the value is not
/// touched.
std::size_t scan_number(std::string_view text, double& value);
/// The same for a text that ends with a NUL.
std::size_t scan_number_nul(const char* text, double& value);

/// The value if the whole text is a number.
std::optional<double> whole_number(std::string_view text);

void first_comma_to_point(std::string& text);
void all_commas_to_points(std::string& text);

/// A decimal integer of -32768 to 32767 with an optional "-"; nothing unless the whole text is one.
std::optional<std::int32_t> parse_short(std::string_view text);

/// Hexadecimal digits in either case with an optional "-", up to 7FFFFFFF in size; besides these the exact
/// text
/// "-80000000". Nothing unless the whole text is one.
std::optional<std::int32_t> parse_hex32(std::string_view text);

/// Skips blanks and tabs, takes an optional "-" and digits, skips blanks and tabs, and leaves `text` at what
/// follows. Without digits the result is 0; digits beyond 32 bits wrap.
std::int32_t read_int(std::string_view& text);

/// Decimal digits of n without its sign; 1 for 0.
int int_digits(std::int64_t n);

/// How a number was written: digits before the point in the high nibble, behind it in the low nibble. 0, for
/// no format, if one of the counts is 16 or more. An optional sign is skipped. True if an "E" or "e" follows.
bool number_digits(std::string_view text, std::uint8_t& digits_byte);

constexpr int digits_before_point(std::uint8_t digits_byte) { return digits_byte >> 4; }
constexpr int digits_after_point(std::uint8_t digits_byte) { return digits_byte & 0x0F; }

// --- Comparison ----------------------------------------------------------------------------------
// A bound is widened by the compare epsilon times its own size; so a bound of 0 is exact. MATH compares
// otherwise.

/// Takes 1e-16 to 1e-5; anything else sets the initial 1e-11.
void set_compare_epsilon(double epsilon);
double compare_epsilon();

bool num_ge(double x, double low);
bool num_le(double x, double high);
bool num_lt(double x, double low);
bool num_gt(double x, double high);
bool num_in(double x, double low, double high);
bool num_eq(double x, double y);
bool num_ne(double x, double y);
bool num_in_both(double x1, double low1, double high1, double x2, double low2, double high2);
/// In the range, or in its mirror image -high to -low.
bool num_in_mirror(double x, double low, double high);
bool num_in_any(double x, std::span<const double> values);
/// In the range after both ends moved outwards by `percent` of their own size.
bool num_in_widened(double x, double low, double high, double percent);
/// The mantissa of x (1 to below 10; 0 for 0) lies within `percent` of `centre`.
bool num_mantissa_near(double x, double centre, double percent);
/// In the range, and exactly on a multiple of `step` as round_to_step() gives it.
bool num_on_step(double x, double low, double high, double step);

/// Both look at 13 significant digits.
bool one_significant_digit(double x);
/// 2.5 and 2500 have the same digits; signs do not count.
bool same_digits(double a, double b);

// --- Rounding ------------------------------------------------------------------------------------

/// To n significant digits; n is clamped to 1 to 16.
double round_sig(double x, int n);
/// To a multiple of `step`, halves away from zero.
double round_to_step(double x, double step);
/// Halves go up: -2.5 gives -2.
double round_half_up(double x);
/// -1, 0 or 1.
double sign_of(double x);

struct EngineeringParts {
  double mantissa = 0;
  int exponent = 0;  // a multiple of 3
};
/// x as mantissa times a power of 1000; both 0 for 0. A value that is not finite is its own mantissa.
EngineeringParts eng_split(double x);

// --- Printing ------------------------------------------------------------------------------------
// Exponents have a sign and at least two digits, as the C library writes them.

/// Room that print_general() needs.
constexpr std::size_t general_limit = 32;
/// "%.*g" with `precision` of 1 to 17 into `out`; returns the end. No NUL is written.
char* print_general(double x, int precision, char* out);

/// "%.*g", "%.*e" or "%.*f" by `style` (e, f, g, E, F, G). The precision is clamped to 0 to
/// print_precision_limit.
constexpr int print_precision_limit = 120;
std::string print_number(double x, char style, int precision);

/// Prints by a format of one directive: "%", flags, at most three digits of width, optionally "." and at most
/// three of precision, and a style letter. Nothing if the format is anything else.
std::optional<std::string> print_by_format(std::string_view format, double x);

/// Removes a "+" and the leading zeros from an exponent, but never its last digit: "1e-007" becomes "1e-7".
std::string strip_exponent_zeros(std::string text);

/// Shortens a printed number: "0.5" becomes ".5", and "1.25E+3" becomes "125E1" if the new exponent is no
/// longer than the old one.
std::string compact_number(std::string text);

/// A number as it was recorded: by its digits byte in fixed or exponent form, or by `default_format` ("%.9g")
/// if no format was recorded. Exponents lose their zeros. What is longer than `width_limit` is made compact.
std::string format_value(double x, std::uint8_t digits_byte, bool use_exponent, std::size_t width_limit,
                         std::string_view default_format);

/// Engineering form with a prefix letter (f to G), `sig` decimals of the mantissa to begin with (12 if
/// negative) and as many fewer as it takes to fit into `width`; without a letter for the exponent it ends in
/// "E" and the exponent.
std::string format_eng_prefix(double x, int sig, int width, bool blank_before_letter);
/// The same without letters. Thousandths are written as a fraction: ".0015".
std::string format_eng_exp(double x, int sig, int width);

/// Columns of `nint` digits, a point and `nfrac` digits, cut (not rounded) behind the first `nsig`
/// significant ones, but never inside the integer part. Nothing if a count is negative or nint + nfrac is 31
/// or more.
std::optional<std::string> format_aligned(double x, int nint, int nfrac, int nsig);

/// A relative error in per cent or, below 0.1 %, in parts per million; above 500 % ">500     %".
std::string format_error_ratio(double ratio);

// --- Prefixed numbers in short texts -------------------------------------------------------------

/// The number at the start of a text (blanks skipped, 0 if none) times the multiplier of the letter behind
/// it: G, M, k, m, u, n, p, f; any other is 1.
double value_from_prefixed_text(std::string_view text);
/// The same letters as powers of ten; any other is 0.
int exponent_from_letter(char letter);

// --- Splitting -----------------------------------------------------------------------------------

/// Without the blanks and tabs on both sides.
std::string_view trim_blanks(std::string_view text);

/// Splits a line at its first "=" and trims both parts. False if one is longer than its limit; it is then cut
/// there. A line without "=" is a key with an empty value.
[[nodiscard]] bool key_value_split(std::string_view line, std::string& key, std::size_t key_limit,
                                   std::string& value, std::size_t value_limit);

/// The trimmed tokens between delimiters. Two delimiters in a row have an empty token between them; none
/// follows a last delimiter. A delimiter that is NUL, blank or tab is message 104 and fails.
[[nodiscard]] bool split_on(std::string_view text, char delimiter, std::vector<std::string_view>& tokens);
/// The same with tokens of their own; nothing after a failure.
std::optional<std::vector<std::string>> split_list(std::string_view text, char delimiter);

// --- Statistics ----------------------------------------------------------------------------------

struct Moments {
  double mean = 0;
  double abs_dev = 0;  // mean distance from the mean
  double sdev = 0;
  double variance = 0;  // of a sample: divided by n - 1
};
/// Nothing for fewer than two values.
std::optional<Moments> moments(std::span<const double> values);

}  // namespace orvane
