#include <velk/Euler.h>

#include "fieldeval.h"

namespace {

// Moves along the slope of the previous evaluation, then evaluates at the new
// point; after the line has ended only the move remains (straight extrapolation).
template <bool kDomain>
VELK_ALWAYS_INLINE void eulerStep(Euler& it) {
    it.pos.x += it.stepSize * it.deriv.x;
    it.pos.y += it.stepSize * it.deriv.y;
    if (it.status == 0) velk::evaluateField<kDomain>(it, it.pos, it.deriv);
}

}  // namespace

Euler::Euler(int direction) : FixedIntegrator(direction) {}

const Vec2f& Euler::next(int& outStatus) {
    velk::withDomain(*this,
                     [this](auto hasDomain) { eulerStep<decltype(hasDomain)::value>(*this); });
    outStatus = status;
    return pos;
}

const Vec2f& Euler::next(float& outMagnitude, int& outStatus) {
    velk::withDomain(*this,
                     [this](auto hasDomain) { eulerStep<decltype(hasDomain)::value>(*this); });
    outMagnitude = magnitude;
    outStatus = status;
    return pos;
}
