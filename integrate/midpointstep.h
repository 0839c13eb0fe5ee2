#ifndef VELK_MIDPOINTSTEP_H
#define VELK_MIDPOINTSTEP_H

// One step of the midpoint rule, shared by Midpoint::next and the LIC engine,
// which inlines it into its tracing loop.

#include <velk/Midpoint.h>
#include "fieldeval.h"

namespace velk {

// The start slope is the deriv left by the previous call (or init); the end
// point's derivative becomes the start slope of the next call.
template <bool kDomain>
VELK_ALWAYS_INLINE void midpointStep(Midpoint& it) {
    if (it.status == 0) {
        const float half = it.stepSize * 0.5f;
        const Vec2f mid = {it.pos.x + half * it.deriv.x, it.pos.y + half * it.deriv.y};
        velk::evaluateField<kDomain>(it, mid, it.deriv);
    }
    it.pos.x += it.stepSize * it.deriv.x;
    it.pos.y += it.stepSize * it.deriv.y;
    if (it.status == 0) velk::evaluateField<kDomain>(it, it.pos, it.deriv);
}

}  // namespace velk

#endif
