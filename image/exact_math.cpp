#include "image/exact_math.h"

#include <cmath>
#include <numbers>

namespace marbelot {
namespace {

// Taylor's series for |x| up to a quarter, where they reach 1e-16.
double sinPiNearZero(double x) {
  const double angle = std::numbers::pi * x, t = angle * angle;
  return angle *
         (1 - t * (1.0 / 6 - t * (1.0 / 120 -
                                  t * (1.0 / 5040 - t * (1.0 / 362880 -
                                                         t * (1.0 / 39916800 -
                                                              t * (1.0 / 6227020800 -
                                                                   t * (1.0 / 1307674368000))))))));
}

double cosPiNearZero(double x) {
  const double angle = std::numbers::pi * x, t = angle * angle;
  return 1 - t * (1.0 / 2 -
                  t * (1.0 / 24 -
                       t * (1.0 / 720 -
                            t * (1.0 / 40320 -
                                 t * (1.0 / 3628800 -
                                      t * (1.0 / 479001600 - t * (1.0 / 87178291200 -
                                                                  t * (1.0 / 20922789888000))))))));
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
