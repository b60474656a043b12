// The codes of all statements. A function select code (FSC) is a 16-bit number: class bits in the high byte,
// an ordinal of 14 to 250 in the low byte. The ordinal alone identifies the statement; lists index by it.
#pragma once

#include <cstdint>

namespace orvane {

namespace code_class {
// Class bits. They are part of the code.
constexpr std::uint16_t listing_a = 0x0100;    // comment line of one kind
constexpr std::uint16_t listing_b = 0x0200;    // comment line of the other kind
constexpr std::uint16_t listing = 0x0300;      // either kind
constexpr std::uint16_t header = 0x0400;       // header line; the low byte selects the keyword
constexpr std::uint16_t executable = 0x0800;   // dispatched by the run loop, has a line index
constexpr std::uint16_t branching = 0x1000;    // holds a branch target
constexpr std::uint16_t instrument = 0x2000;   // fixed column layout of the standard record
constexpr std::uint16_t test = 0x4000;         // yields a measured result that is evaluated
}  // namespace code_class

namespace header_code {
// Lines in front of the first statement.
constexpr std::uint16_t plain = 1027, separator = 1028, instrument = 1029, date = 1030, author = 1031,
                        revision = 1032, adjustment_threshold = 1033, number_of_tests = 1034,
                        number_of_lines = 1035, configuration = 1036, step = 1037, standard = 1108;
}  // namespace header_code

namespace fsc {
// clang-format off
constexpr std::uint16_t con = 2062;
constexpr std::uint16_t disp = 2063;
constexpr std::uint16_t draw = 2064;
constexpr std::uint16_t head = 2065;
constexpr std::uint16_t ieee = 2066;
constexpr std::uint16_t memi = 2067;
constexpr std::uint16_t mem2 = 2068;
constexpr std::uint16_t mess = 2069;
constexpr std::uint16_t opbr = 2070;
constexpr std::uint16_t pic = 2071;
constexpr std::uint16_t port = 2072;
constexpr std::uint16_t rng = 2073;
constexpr std::uint16_t rslt = 2074;
constexpr std::uint16_t set = 2075;
constexpr std::uint16_t ask_plus = 2076;
constexpr std::uint16_t ask_minus = 2077;
constexpr std::uint16_t call = 2078;
constexpr std::uint16_t dos = 2079;
constexpr std::uint16_t end = 2080;
constexpr std::uint16_t jmp = 6177;
constexpr std::uint16_t jmpf = 6178;
constexpr std::uint16_t jmpt = 6179;
constexpr std::uint16_t jmpz = 6180;
constexpr std::uint16_t math = 2085;
constexpr std::uint16_t mcal = 2086;
constexpr std::uint16_t mem_times = 2087;
constexpr std::uint16_t mem_plus = 2088;
constexpr std::uint16_t mem_minus = 2089;
constexpr std::uint16_t mem_divide = 2090;
constexpr std::uint16_t meme = 2091;
constexpr std::uint16_t acc = 2092;
constexpr std::uint16_t mmfc = 2093;
constexpr std::uint16_t rpt = 6192;
constexpr std::uint16_t tol = 2097;
constexpr std::uint16_t dose = 18482;
constexpr std::uint16_t eval = 18483;
constexpr std::uint16_t memc = 18484;
constexpr std::uint16_t pice = 18485;
constexpr std::uint16_t hp60 = 26678;
constexpr std::uint16_t hp63 = 26679;
constexpr std::uint16_t i5001 = 26680;
constexpr std::uint16_t mfc3 = 26687;
constexpr std::uint16_t resf = 26698;
constexpr std::uint16_t wide = 26700;
constexpr std::uint16_t i3458 = 26701;
constexpr std::uint16_t i5011 = 26704;
constexpr std::uint16_t std = 2131;
constexpr std::uint16_t i5030 = 26709;
constexpr std::uint16_t acm1 = 26710;
constexpr std::uint16_t acms = 2135;
constexpr std::uint16_t mmfc1 = 2137;
constexpr std::uint16_t mfc1 = 26714;
constexpr std::uint16_t m3458 = 2142;
constexpr std::uint16_t mfc4 = 26719;
constexpr std::uint16_t mmfc4 = 2144;
constexpr std::uint16_t i3325 = 26721;
constexpr std::uint16_t m3325 = 2146;
constexpr std::uint16_t accf = 2147;
constexpr std::uint16_t i2000 = 26724;
constexpr std::uint16_t i2001 = 26725;
constexpr std::uint16_t i2002 = 26726;
constexpr std::uint16_t i34401 = 26727;
constexpr std::uint16_t i34420 = 26728;
constexpr std::uint16_t jmpl = 6249;
constexpr std::uint16_t label = 2154;
constexpr std::uint16_t fmt = 2155;
constexpr std::uint16_t i5050 = 26732;
constexpr std::uint16_t vset = 2157;
constexpr std::uint16_t mfc2 = 26734;
constexpr std::uint16_t mmfc2 = 2159;
constexpr std::uint16_t osc1 = 26736;
constexpr std::uint16_t mosc1 = 2161;
constexpr std::uint16_t target = 2165;
constexpr std::uint16_t i8901 = 26742;
constexpr std::uint16_t m8901 = 2167;
constexpr std::uint16_t i8902 = 26744;
constexpr std::uint16_t m8902 = 2169;
constexpr std::uint16_t i8903 = 26746;
constexpr std::uint16_t m8903 = 2171;
constexpr std::uint16_t i8648 = 26748;
constexpr std::uint16_t m8648 = 2173;
constexpr std::uint16_t i2024 = 26750;
constexpr std::uint16_t m2024 = 2175;
constexpr std::uint16_t i437 = 26752;
constexpr std::uint16_t m437 = 2177;
constexpr std::uint16_t smy02 = 26754;
constexpr std::uint16_t msmy02 = 2179;
constexpr std::uint16_t i5335 = 26758;
constexpr std::uint16_t m5335 = 2183;
constexpr std::uint16_t reset = 2184;
constexpr std::uint16_t i8560 = 26761;
constexpr std::uint16_t m8560 = 2186;
constexpr std::uint16_t i8566 = 26763;
constexpr std::uint16_t m8566 = 2188;
constexpr std::uint16_t i8568 = 26765;
constexpr std::uint16_t m8568 = 2190;
constexpr std::uint16_t i8590 = 26767;
constexpr std::uint16_t m8590 = 2192;
constexpr std::uint16_t osc2 = 26769;
constexpr std::uint16_t mosc2 = 2194;
constexpr std::uint16_t i33120 = 26773;
constexpr std::uint16_t m33120 = 2198;
constexpr std::uint16_t cmp = 18583;
constexpr std::uint16_t osc3 = 26776;
constexpr std::uint16_t mosc3 = 2201;
constexpr std::uint16_t msc1 = 26792;
constexpr std::uint16_t mmsc1 = 2217;
constexpr std::uint16_t memcx = 18602;
constexpr std::uint16_t i33250 = 26814;
constexpr std::uint16_t m33250 = 2239;
constexpr std::uint16_t dmm1 = 26816;
constexpr std::uint16_t mdmm1 = 2241;
constexpr std::uint16_t i4418 = 26818;
constexpr std::uint16_t m4418 = 2243;
constexpr std::uint16_t i4419 = 26820;
constexpr std::uint16_t m4419 = 2245;
constexpr std::uint16_t tset = 2246;
constexpr std::uint16_t ieee2 = 2247;
constexpr std::uint16_t scpi = 2248;
constexpr std::uint16_t wait = 2249;
constexpr std::uint16_t i6000 = 26836;
constexpr std::uint16_t if_ = 6357;
constexpr std::uint16_t else_ = 6358;
constexpr std::uint16_t elseif = 6359;
constexpr std::uint16_t endif = 2264;
constexpr std::uint16_t while_ = 6361;
constexpr std::uint16_t endw = 6362;
constexpr std::uint16_t do_ = 2267;
constexpr std::uint16_t until = 6364;
constexpr std::uint16_t pqc1 = 18653;
constexpr std::uint16_t i53131 = 26846;
constexpr std::uint16_t m53131 = 2271;
constexpr std::uint16_t i53132 = 26848;
constexpr std::uint16_t m53132 = 2273;
constexpr std::uint16_t i53181 = 26850;
constexpr std::uint16_t m53181 = 2275;
constexpr std::uint16_t i6520 = 26852;
constexpr std::uint16_t m6520 = 2277;
constexpr std::uint16_t i33220 = 26854;
constexpr std::uint16_t m33220 = 2279;
constexpr std::uint16_t dmm3 = 26856;
constexpr std::uint16_t mdmm3 = 2281;
constexpr std::uint16_t dmm2 = 26858;
constexpr std::uint16_t mdmm2 = 2283;
constexpr std::uint16_t i5350 = 26860;
constexpr std::uint16_t m5350 = 2285;
constexpr std::uint16_t i5351 = 26862;
constexpr std::uint16_t m5351 = 2287;
constexpr std::uint16_t i5352 = 26864;
constexpr std::uint16_t m5352 = 2289;
constexpr std::uint16_t rfc1 = 18674;
constexpr std::uint16_t n5530 = 18677;
constexpr std::uint16_t n5531 = 18678;
constexpr std::uint16_t fsmr = 18679;
constexpr std::uint16_t psa = 18680;
constexpr std::uint16_t est1 = 18681;
constexpr std::uint16_t visa = 2298;
// clang-format on
}  // namespace fsc

/// The ordinal of a code: its low byte.
constexpr int fsc_ordinal(std::uint16_t code) { return code & 0xFF; }

}  // namespace orvane
