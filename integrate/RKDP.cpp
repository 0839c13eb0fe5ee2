#include <velk/RKDP.h>

#include "fieldeval.h"

namespace {

// Dormand-Prince tableau; every fraction is a single-precision division.
constexpr float kA21 = 1.0f / 5.0f;
constexpr float kA31 = 3.0f / 40.0f, kA32 = 9.0f / 40.0f;
constexpr float kA41 = 44.0f / 45.0f, kA42 = -56.0f / 15.0f, kA43 = 32.0f / 9.0f;
constexpr float kA51 = 19372.0f / 6561.0f, kA52 = -25360.0f / 2187.0f, kA53 = 64448.0f / 6561.0f,
                kA54 = -212.0f / 729.0f;
constexpr float kA61 = 9017.0f / 3168.0f, kA62 = -355.0f / 33.0f, kA63 = 46732.0f / 5247.0f,
                kA64 = 49.0f / 176.0f, kA65 = -5103.0f / 18656.0f;
// Fifth-order weights (zero on k2 and k7).
constexpr float kB1 = 35.0f / 384.0f, kB3 = 500.0f / 1113.0f, kB4 = 125.0f / 192.0f,
                kB5 = -2187.0f / 6784.0f, kB6 = 11.0f / 84.0f;
// Fifth- minus fourth-order weights (zero on k2).
constexpr float kE1 = kB1 - 5179.0f / 57600.0f, kE3 = kB3 - 7571.0f / 16695.0f,
                kE4 = kB4 - 393.0f / 640.0f, kE5 = kB5 - (-92097.0f / 339200.0f),
                kE6 = kB6 - 187.0f / 2100.0f, kE7 = 0.0f - 1.0f / 40.0f;

}  // namespace

RKDP::RKDP(float tolerance, float initialStep, float minStep, float maxStep, int direction)
    : AdaptiveIntegrator(tolerance, initialStep, minStep, maxStep, direction) {}

void RKDP::step(const Vec2f& y, const Vec2f& dydx, float& htry, float& hdid, Vec2f& yout,
                Vec2f& dydxout) {
    Vec2f yerr;
    do rkdp(y, dydx, htry, yout, dydxout, yerr);
    while (!velk::acceptTrial(*this, yerr, htry));
    velk::finishStep(*this, htry, hdid);
}

namespace {

// The seventh stage is the slope at yout (first same as last): it is delivered
// in dydxout and starts the next step.
template <bool kDomain>
void rkdpStages(RKDP& it, const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& dydxout,
                Vec2f& yerr) {
    const Vec2f& k1 = dydx;
    Vec2f k2, k3, k4, k5, k6;
    velk::stageField<kDomain>(it, y.x + h * (kA21 * k1.x), y.y + h * (kA21 * k1.y), k2);
    velk::stageField<kDomain>(it, y.x + h * (kA31 * k1.x + kA32 * k2.x),
                              y.y + h * (kA31 * k1.y + kA32 * k2.y), k3);
    velk::stageField<kDomain>(it, y.x + h * (kA41 * k1.x + kA42 * k2.x + kA43 * k3.x),
                              y.y + h * (kA41 * k1.y + kA42 * k2.y + kA43 * k3.y), k4);
    velk::stageField<kDomain>(it, y.x + h * (kA51 * k1.x + kA52 * k2.x + kA53 * k3.x + kA54 * k4.x),
                              y.y + h * (kA51 * k1.y + kA52 * k2.y + kA53 * k3.y + kA54 * k4.y),
                              k5);
    velk::stageField<kDomain>(
        it, y.x + h * (kA61 * k1.x + kA62 * k2.x + kA63 * k3.x + kA64 * k4.x + kA65 * k5.x),
        y.y + h * (kA61 * k1.y + kA62 * k2.y + kA63 * k3.y + kA64 * k4.y + kA65 * k5.y), k6);
    yout.x = y.x + h * (kB1 * k1.x + kB3 * k3.x + kB4 * k4.x + kB5 * k5.x + kB6 * k6.x);
    yout.y = y.y + h * (kB1 * k1.y + kB3 * k3.y + kB4 * k4.y + kB5 * k5.y + kB6 * k6.y);
    velk::endPointField<kDomain>(it, yout, dydxout);
    const Vec2f& k7 = dydxout;
    yerr.x = h * (kE1 * k1.x + kE3 * k3.x + kE4 * k4.x + kE5 * k5.x + kE6 * k6.x + kE7 * k7.x);
    yerr.y = h * (kE1 * k1.y + kE3 * k3.y + kE4 * k4.y + kE5 * k5.y + kE6 * k6.y + kE7 * k7.y);
}

}  // namespace

void RKDP::rkdp(const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& dydxout,
                Vec2f& yerr) {
    velk::withDomain(*this, [&](auto hasDomain) {
        rkdpStages<decltype(hasDomain)::value>(*this, y, dydx, h, yout, dydxout, yerr);
    });
}
