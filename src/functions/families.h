// The families of the function table, and what their bodies share.
#pragma once

#include <cmath>
#include <span>

#include "values/fault.h"
#include "values/math/function_row.h"

namespace orvane {

std::span<const MathFunctionRow> accuracy_functions();
std::span<const MathFunctionRow> arithmetic_functions();
std::span<const MathFunctionRow> block_functions();
std::span<const MathFunctionRow> dimension_functions();
std::span<const MathFunctionRow> file_functions();
std::span<const MathFunctionRow> profile_functions();
std::span<const MathFunctionRow> instrument_functions();
std::span<const MathFunctionRow> register_functions();
std::span<const MathFunctionRow> run_functions();
std::span<const MathFunctionRow> slew_functions();
std::span<const MathFunctionRow> string_functions();
std::span<const MathFunctionRow> time_functions();
std::span<const MathFunctionRow> variable_functions();

/// Gives a computed number, or faults where numbers that are finite gave one that is not.
inline bool give_computed(MathCall& call, double result, double a, double b = 0.0) {
  return operation_faulted(result, a, b) ? call.fault() : call.give(result);
}

/// The body of a function that is a plain function of one or two numbers.
template <auto Function>
bool of_one_number(MathCall& call) {
  return give_computed(call, Function(call.num(0)), call.num(0));
}
template <auto Function>
bool of_two_numbers(MathCall& call) {
  return give_computed(call, Function(call.num(0), call.num(1)), call.num(0), call.num(1));
}

/// A number as an index: without its fraction; far outside every range it stays outside.
inline int index_of(double x) {
  constexpr double beyond = 1e6;
  if (std::isnan(x)) return 0;
  return static_cast<int>(x < -beyond ? -beyond : x > beyond ? beyond : x);
}

}  // namespace orvane
