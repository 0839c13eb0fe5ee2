#include <velk/AdaptiveIntegrator.h>

#include "fieldeval.h"

namespace {

// Straight move along the current slope: the Euler fallback and the
// extrapolation after the end of a line.
VELK_ALWAYS_INLINE void moveAlong(AdaptiveIntegrator& it) {
    it.outPoint.x += it.stepSize * it.deriv.x;
    it.outPoint.y += it.stepSize * it.deriv.y;
}

VELK_ALWAYS_INLINE void eulerStep(AdaptiveIntegrator& it) {
    moveAlong(it);
    velk::withDomain(it, [&it](auto hasDomain) {
        velk::evaluateField<decltype(hasDomain)::value>(it, it.outPoint, it.deriv);
    });
}

// Takes adaptive steps until the front s passes t. Returns 0, or the code a
// failed step left through the recovery buffer. A function that calls setjmp
// cannot be inlined; its frame stays live while step runs.
template <bool kTrackMagnitude>
__attribute__((noinline)) int advanceFront(AdaptiveIntegrator& it) {
    switch (setjmp(it.recovery)) {
        case 0:
            break;
        case velk::kLeftDomain:
            return velk::kLeftDomain;
        case velk::kCriticalPoint:
            return velk::kCriticalPoint;
        default:
            return velk::kStepTooSmall;
    }
    do {
        it.pos0 = it.pos;
        it.deriv0 = it.deriv;
        it.s0 = it.s;
        if (kTrackMagnitude) it.mag0 = it.magnitude;
        float hdid;
        it.step(it.pos0, it.deriv0, it.stepTry, hdid, it.pos, it.deriv);
        it.s += hdid;
    } while (it.t > it.s);
    return 0;
}

// Covers the last step by its cubic Hermite curve, evaluates it at t and sets
// up the forward differences for the following points at spacing stepSize.
VELK_ALWAYS_INLINE void setUpCubic(AdaptiveIntegrator& it, float& u, float& delta) {
    const float span = it.s - it.s0;
    u = (it.t - it.s0) / span;
    delta = it.stepSize / span;
    const Vec2f& p0 = it.pos0;
    const Vec2f& p1 = it.pos;
    it.tangent0 = {span * it.deriv0.x, span * it.deriv0.y};
    it.tangent1 = {span * it.deriv.x, span * it.deriv.y};
    const Vec2f& m0 = it.tangent0;
    const Vec2f& m1 = it.tangent1;
    it.coef3 = {(2.0f * p0.x - 2.0f * p1.x) + m0.x + m1.x,
                (2.0f * p0.y - 2.0f * p1.y) + m0.y + m1.y};
    it.coef2 = {(-3.0f * p0.x + 3.0f * p1.x) - 2.0f * m0.x - m1.x,
                (-3.0f * p0.y + 3.0f * p1.y) - 2.0f * m0.y - m1.y};
    it.coef1 = m0;
    it.coef0 = p0;
    const Vec2f& c3 = it.coef3;
    const Vec2f& c2 = it.coef2;
    it.outPoint = {((c3.x * u + c2.x) * u + m0.x) * u + p0.x,
                   ((c3.y * u + c2.y) * u + m0.y) * u + p0.y};
    const float delta2 = delta * delta;
    const float delta3 = delta2 * delta;
    const Vec2f curv = {c2.x + 3.0f * c3.x * u, c2.y + 3.0f * c3.y * u};
    it.diff1 = {
        (m0.x + (2.0f * c2.x + 3.0f * c3.x * u) * u) * delta + curv.x * delta2 + c3.x * delta3,
        (m0.y + (2.0f * c2.y + 3.0f * c3.y * u) * u) * delta + curv.y * delta2 + c3.y * delta3};
    it.diff2 = {2.0f * curv.x * delta2 + 6.0f * c3.x * delta3,
                2.0f * curv.y * delta2 + 6.0f * c3.y * delta3};
    it.diff3 = {6.0f * c3.x * delta3, 6.0f * c3.y * delta3};
}

template <bool kTrackMagnitude>
VELK_ALWAYS_INLINE void nextPoint(AdaptiveIntegrator& it, float& outMagnitude, int& outStatus) {
    if (it.status != 0) {
        moveAlong(it);
        outStatus = 1;  // also after a critical point, unlike the fixed-step schemes
        return;
    }
    if (it.fallback) {
        eulerStep(it);
        if (kTrackMagnitude) outMagnitude = it.magnitude;
        outStatus = it.status;
        return;
    }
    it.t += it.stepSize;
    if (it.t <= it.s) {
        // Inside the last adaptive step: six additions per point.
        it.outPoint.x += it.diff1.x;
        it.outPoint.y += it.diff1.y;
        it.diff1.x += it.diff2.x;
        it.diff1.y += it.diff2.y;
        it.diff2.x += it.diff3.x;
        it.diff2.y += it.diff3.y;
        if (kTrackMagnitude) {
            it.mag += it.magStep;
            outMagnitude = it.mag;
        }
        outStatus = 0;
        return;
    }
    switch (advanceFront<kTrackMagnitude>(it)) {
        case 0:
            break;
        case velk::kStepTooSmall:
            moveAlong(it);
            it.status = 1;
            outStatus = 1;
            return;
        default:
            // Border or critical point ahead: walk up to it with Euler steps,
            // starting along whatever slope the failed step left in deriv.
            it.fallback = 1;
            eulerStep(it);
            if (kTrackMagnitude) outMagnitude = it.magnitude;
            outStatus = it.status;
            return;
    }
    float u, delta;
    setUpCubic(it, u, delta);
    if (kTrackMagnitude) {
        const float m1 = it.magnitude;  // at the end point of the last step
        it.mag = it.mag0 + (m1 - it.mag0) * u;
        it.magStep = (m1 - it.mag0) * delta;
        outMagnitude = it.mag;
    }
    outStatus = 0;
}

}  // namespace

AdaptiveIntegrator::AdaptiveIntegrator(float tolerance, float initialStep, float minStep,
                                       float maxStep, int direction)
    : pos0(),
      pos(),
      deriv0(),
      deriv(),
      tangent0(),
      tangent1(),
      s0(0.0f),
      s(0.0f),
      t(0.0f),
      mag0(0.0f),
      mag(0.0f),
      magStep(0.0f),
      coef3(),
      coef2(),
      coef1(),
      coef0(),
      outPoint(),
      diff1(),
      diff2(),
      diff3(),
      tolerance(tolerance),
      initialStep(initialStep),
      stepTry(initialStep),
      minStep(minStep),
      maxStep(maxStep),
      fallback(0),
      recovery() {
    this->direction = static_cast<float>(direction);
}

void AdaptiveIntegrator::init(const Vec2f& p, const Vec2f& v) {
    pos = p;
    outPoint = p;
    deriv.x = direction * v.x;
    deriv.y = direction * v.y;
    s = 0.0f;
    t = 0.0f;
    stepTry = initialStep;
    status = 0;
    fallback = 0;
    heading = v;
}

void AdaptiveIntegrator::init(const Vec2f& p, const Vec2f& v, float magnitude) {
    AdaptiveIntegrator::init(p, v);
    this->magnitude = magnitude;
}

const Vec2f& AdaptiveIntegrator::next(int& outStatus) {
    float unused;
    nextPoint<false>(*this, unused, outStatus);
    return outPoint;
}

const Vec2f& AdaptiveIntegrator::next(float& outMagnitude, int& outStatus) {
    nextPoint<true>(*this, outMagnitude, outStatus);
    return outPoint;
}
