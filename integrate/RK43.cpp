#include <velk/RK43.h>

#include "fieldeval.h"

RK43::RK43(float tolerance, float initialStep, float minStep, float maxStep, int direction)
    : AdaptiveIntegrator(tolerance, initialStep, minStep, maxStep, direction) {}

void RK43::step(const Vec2f& y, const Vec2f& dydx, float& htry, float& hdid, Vec2f& yout,
                Vec2f& dydxout) {
    Vec2f yerr;
    do rkstep(y, dydx, htry, yout, dydxout, yerr);
    while (!velk::acceptTrial(*this, yerr, htry));
    velk::finishStep(*this, htry, hdid);
}

namespace {

// The end-point slope k5 replaces k4 in the weights to give the comparison
// solution; it is also the start slope of the next step (four new evaluations).
template <bool kDomain>
void rkstepStages(RK43& it, const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& dydxout,
                  Vec2f& yerr) {
    const Vec2f& k1 = dydx;
    const float hh = h * 0.5f;
    Vec2f k2, k3, k4;
    velk::stageField<kDomain>(it, y.x + hh * k1.x, y.y + hh * k1.y, k2);
    velk::stageField<kDomain>(it, y.x + hh * k2.x, y.y + hh * k2.y, k3);
    velk::stageField<kDomain>(it, y.x + h * k3.x, y.y + h * k3.y, k4);
    yout.x = y.x + h * ((k2.x + k3.x) / 3.0f + (k4.x + k1.x) / 6.0f);
    yout.y = y.y + h * ((k2.y + k3.y) / 3.0f + (k4.y + k1.y) / 6.0f);
    velk::endPointField<kDomain>(it, yout, dydxout);
    const Vec2f& k5 = dydxout;
    yerr.x = (k4.x - k5.x) * h / 6.0f;
    yerr.y = (k4.y - k5.y) * h / 6.0f;
}

}  // namespace

void RK43::rkstep(const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& dydxout,
                  Vec2f& yerr) {
    velk::withDomain(*this, [&](auto hasDomain) {
        rkstepStages<decltype(hasDomain)::value>(*this, y, dydx, h, yout, dydxout, yerr);
    });
}
