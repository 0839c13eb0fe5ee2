#ifndef VELK_FIELDEVAL_H
#define VELK_FIELDEVAL_H

// The field evaluation shared by every stepping routine. It runs once per stage
// of every step of every streamline, so it is forced inline rather than called.

#include <cmath>
#include <csetjmp>
#include <cstddef>
#include <type_traits>

#include <velk/AdaptiveIntegrator.h>
#include <velk/VelkIntegrator.h>

#include "forceinline.h"

namespace velk {

// Failure codes carried by the non-local exit out of an adaptive step.
enum StepFailure { kLeftDomain = 1, kCriticalPoint = 2, kStepTooSmall = 3 };

// The bilinear blend of the field vectors at the four nodes of a cell (b the x
// neighbour, c the row neighbour); the order of the terms is part of every line.
VELK_ALWAYS_INLINE void blendField(const Vec2f& a, const Vec2f& b, const Vec2f& c, const Vec2f& e,
                                   float fx, float fy, float& vx, float& vy) {
    const float fxy = fx * fy;
    vx = ((b.x - a.x) * fx + a.x) + (c.x - a.x) * fy + ((a.x - c.x - b.x) + e.x) * fxy;
    vy = ((b.y - a.y) * fx + a.y) + (c.y - a.y) * fy + ((a.y - c.y - b.y) + e.y) * fxy;
}

// interpolateField for an integrator with domain bits: periodic axes wrap, and
// an orientation field is turned to agree with the heading, which it updates.
bool interpolateDomain(VelkIntegrator& it, float px, float py, float& vx, float& vy);

// Bilinear field vector at (px, py); false when the point is outside the domain
// (a NaN coordinate included). setField keeps xMax below fieldWidth - 1, so the
// right and upper neighbours always exist. kDomain: the integrator may have
// domain bits, decided once per step or line (see withDomain) rather than per
// evaluation; with none set, both paths give the same vector.
template <bool kDomain>
VELK_ALWAYS_INLINE bool interpolateField(VelkIntegrator& it, float px, float py, float& vx,
                                         float& vy) {
    if (kDomain) return interpolateDomain(it, px, py, vx, vy);
    if (!(px >= 0.0f && px <= it.xMax && py >= 0.0f && py <= it.yMax)) return false;
    const int i = static_cast<int>(px);
    const int j = static_cast<int>(py);
    const float fx = px - static_cast<float>(i);
    const float fy = py - static_cast<float>(j);
    const Vec2f* a = it.field + (static_cast<std::ptrdiff_t>(j) * it.fieldWidth + i);
    const Vec2f* c = a + it.fieldWidth;
    blendField(a[0], a[1], c[0], c[1], fx, fy, vx, vy);
    return true;
}

// Calls f with std::true_type when the integrator has domain bits, with
// std::false_type otherwise, for the kDomain of the evaluations below.
template <class F>
VELK_ALWAYS_INLINE void withDomain(const VelkIntegrator& it, F f) {
    if (it.domain != 0) {
        f(std::true_type());
    } else {
        f(std::false_type());
    }
}

// Scales a raw field vector of length m > 0 to the direction-signed derivative.
VELK_ALWAYS_INLINE void normalizeInto(const VelkIntegrator& it, float vx, float vy, float m,
                                      Vec2f& d) {
    const float s = m > it.normalization ? it.direction / m : it.direction / it.normalization;
    d.x = vx * s;
    d.y = vy * s;
}

// The status-setting evaluation (the body of derivs): on failure status becomes
// 1 or 2 and d is left alone.
template <bool kDomain>
VELK_ALWAYS_INLINE void evaluateField(VelkIntegrator& it, const Vec2f& p, Vec2f& d) {
    float vx, vy;
    if (!interpolateField<kDomain>(it, p.x, p.y, vx, vy)) {
        it.status = 1;
        return;
    }
    const float m = std::sqrt(vx * vx + vy * vy);
    it.magnitude = m;
    if (static_cast<double>(m) < 1e-10 || std::isnan(m)) {
        it.status = 2;
        return;
    }
    normalizeInto(it, vx, vy, m, d);
}

// Stage evaluation inside an adaptive step: a failure abandons the step through
// the integrator's recovery buffer, so the stage code needs no status tests.
template <bool kDomain>
VELK_ALWAYS_INLINE void stageField(AdaptiveIntegrator& it, float px, float py, Vec2f& k) {
    float vx, vy;
    if (!interpolateField<kDomain>(it, px, py, vx, vy)) std::longjmp(it.recovery, kLeftDomain);
    if (std::isnan(vx) || std::isnan(vy)) std::longjmp(it.recovery, kCriticalPoint);
    const float m = std::sqrt(vx * vx + vy * vy);
    it.magnitude = m;
    if (static_cast<double>(m) < 1e-10) std::longjmp(it.recovery, kCriticalPoint);
    normalizeInto(it, vx, vy, m, k);
}

// Evaluation at a step's end point. The raw (or zeroed) vector is left in d when
// the evaluation fails, because the Euler fallback moves along it.
template <bool kDomain>
VELK_ALWAYS_INLINE void endPointField(AdaptiveIntegrator& it, const Vec2f& p, Vec2f& d) {
    float vx, vy;
    if (!interpolateField<kDomain>(it, p.x, p.y, vx, vy)) std::longjmp(it.recovery, kLeftDomain);
    d.x = vx;
    d.y = vy;
    if (std::isnan(vx) || std::isnan(vy)) {
        d.x = 0.0f;
        d.y = 0.0f;
        std::longjmp(it.recovery, kCriticalPoint);
    }
    const float m = std::sqrt(vx * vx + vy * vy);
    it.magnitude = m;
    if (static_cast<double>(m) < 1e-10) std::longjmp(it.recovery, kCriticalPoint);
    normalizeInto(it, vx, vy, m, d);
}

// Step-size control after one trial step: true accepts it; otherwise halves
// htry for another trial, or ends the line once htry is already below minStep.
// The minimum is tested before halving, so one trial below it is still made.
VELK_ALWAYS_INLINE bool acceptTrial(AdaptiveIntegrator& it, const Vec2f& yerr, float& htry) {
    const float e = std::fabs(yerr.x) + std::fabs(yerr.y) + 1e-10f;
    const float ratio = it.tolerance / e;
    if (!(ratio < 1.0f)) return true;
    if (std::fabs(htry) < it.minStep) std::longjmp(it.recovery, kStepTooSmall);
    htry = htry * 0.5f;
    return false;
}

// The accepted step's size goes to hdid; the next trial doubles it, capped at maxStep.
VELK_ALWAYS_INLINE void finishStep(const AdaptiveIntegrator& it, float& htry, float& hdid) {
    hdid = htry;
    const float grown = 2.0f * htry;
    htry = grown < it.maxStep ? grown : it.maxStep;
}

}  // namespace velk

#endif
