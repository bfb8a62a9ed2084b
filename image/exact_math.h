// Functions with the same bits on every system, which the mathematical library does not promise:
// made of operations that IEEE 754 defines to the last bit, and compiled without fusing them.
#pragma once

namespace marbelot {

// sin and cos of pi * x, to 1e-15, for |x| up to 1e6.
double sinPi(double x);
double cosPi(double x);

// The share of a normal distribution below x standard deviations, to 2e-7.
double normalShareBelow(double x);

}  // namespace marbelot
