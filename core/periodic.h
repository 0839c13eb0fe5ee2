#ifndef VELK_PERIODIC_H
#define VELK_PERIODIC_H

#include <cmath>

namespace velk {

// Wraps v into [0, period) as repeated addition or subtraction of the period
// would, rounding included. Returns false, leaving v unusable, when no wrapped
// value exists (NaN, infinities, a period that is not positive).
//
// The period is a whole number (a size minus one). Below 2^24 every addition or
// subtraction of a whole period but the last one is exact, so the exact
// remainder followed by the last step gives the loop's result in constant time;
// beyond 2^24 the loop would stall, and the remainder still ends.
inline bool wrapPeriodic(float& v, float period) {
    if (!(period > 0.0f) || !std::isfinite(v)) return false;
    if (std::fabs(v) >= 2.0f * period) v = std::fmod(v, period);
    while (v < 0.0f) v += period;
    while (v >= period) v -= period;
    return true;
}

}  // namespace velk

#endif
