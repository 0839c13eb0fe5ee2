#ifndef VELK_PERIODIC_H
#define VELK_PERIODIC_H

#include <cmath>

namespace velk {

// Wraps v into [0, period) by repeated addition or subtraction, so the result
// rounds exactly as a plain loop would. Returns false, leaving v unusable, when
// no wrapped value exists (NaN, infinities, a period that is not positive).
// Far-out values take an exact remainder first instead of looping for ages.
inline bool wrapPeriodic(float& v, float period) {
    if (!(period > 0.0f) || !std::isfinite(v)) return false;
    if (std::fabs(v) > period * 1048576.0f) v = std::fmod(v, period);
    while (v < 0.0f) v += period;
    while (v >= period) v -= period;
    return true;
}

}  // namespace velk

#endif
