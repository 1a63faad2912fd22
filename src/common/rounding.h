#pragma once

namespace kv {

// Nearest integer, ties to the even neighbour (2.5 -> 2, 3.5 -> 4), as a double.
double roundHalfEven(double v);

// Rounds to the given number of decimals with ties to even (1.25 -> 1.2 at one decimal).
double roundHalfEven(double v, int decimals);

// Real division that fails on a zero divisor instead of giving infinity.
double divide(double numerator, double denominator);

} // namespace kv
