#include "image/exact_math.h"

#include <cmath>
#include <numbers>

namespace marbelot {
namespace {

// Taylor's series, for |x| up to a quarter.
double sinPiNearZero(double x) {
  const double angle = std::numbers::pi * x, square = angle * angle;
  double term = angle, sum = 0;
  for (int n = 2; n < 22; n += 2) {
    sum += term;
    term *= -square / (n * (n + 1));
  }
  return sum;
}

double cosPiNearZero(double x) {
  const double angle = std::numbers::pi * x, square = angle * angle;
  double term = 1, sum = 0;
  for (int n = 1; n < 23; n += 2) {
    sum += term;
    term *= -square / (n * (n + 1));
  }
  return sum;
}

}  // namespace

double sinPi(double x) {
  const double quarters = std::floor(2 * x + 0.5);
  const double rest = x - quarters / 2;
  switch (static_cast<long>(quarters) & 3) {
    case 0:
      return sinPiNearZero(rest);
    case 1:
      return cosPiNearZero(rest);
    case 2:
      return -sinPiNearZero(rest);
    default:
      return -cosPiNearZero(rest);
  }
}

double cosPi(double x) { return sinPi(x + 0.5); }

// Abramowitz and Stegun, Handbook of Mathematical Functions, 26.2.19 (error below 1.5e-7).
double normalShareBelow(double x) {
  const double z = std::abs(x);
  double sum =
      1 +
      z * (0.0498673470 +
           z * (0.0211410061 +
                z * (0.0032776263 + z * (0.0000380036 + z * (0.0000488906 + z * 0.0000053830)))));
  for (int doubling = 0; doubling < 4; ++doubling) sum *= sum;
  const double above = 0.5 / sum;
  return x < 0 ? above : 1 - above;
}

}  // namespace marbelot
