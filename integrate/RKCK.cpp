#include <velk/RKCK.h>

#include "fieldeval.h"

namespace {

// Cash-Karp tableau; every fraction is a single-precision division.
constexpr float kB21 = 1.0f / 5.0f;
constexpr float kB31 = 3.0f / 40.0f, kB32 = 9.0f / 40.0f;
constexpr float kB41 = 3.0f / 10.0f, kB42 = -9.0f / 10.0f, kB43 = 6.0f / 5.0f;
constexpr float kB51 = -11.0f / 54.0f, kB52 = 5.0f / 2.0f, kB53 = -70.0f / 27.0f,
                kB54 = 35.0f / 27.0f;
constexpr float kB61 = 1631.0f / 55296.0f, kB62 = 175.0f / 512.0f, kB63 = 575.0f / 13824.0f,
                kB64 = 44275.0f / 110592.0f, kB65 = 253.0f / 4096.0f;
// Fifth-order weights (zero on k2 and k5).
constexpr float kC1 = 37.0f / 378.0f, kC3 = 250.0f / 621.0f, kC4 = 125.0f / 594.0f,
                kC6 = 512.0f / 1771.0f;
// Fifth- minus fourth-order weights (zero on k2).
constexpr float kE1 = kC1 - 2825.0f / 27648.0f, kE3 = kC3 - 18575.0f / 48384.0f,
                kE4 = kC4 - 13525.0f / 55296.0f, kE5 = 0.0f - 277.0f / 14336.0f,
                kE6 = kC6 - 1.0f / 4.0f;

}  // namespace

RKCK::RKCK(float tolerance, float initialStep, float minStep, float maxStep, int direction)
    : AdaptiveIntegrator(tolerance, initialStep, minStep, maxStep, direction) {}

void RKCK::step(const Vec2f& y, const Vec2f& dydx, float& htry, float& hdid, Vec2f& yout,
                Vec2f& dydxout) {
    Vec2f yerr;
    do rkck(y, dydx, htry, yout, yerr);
    while (!velk::acceptTrial(*this, yerr, htry));
    velk::finishStep(*this, htry, hdid);
    // The scheme has no end-point stage, so the slope there is evaluated only
    // once the step is accepted.
    velk::withDomain(*this, [&](auto hasDomain) {
        velk::endPointField<decltype(hasDomain)::value>(*this, yout, dydxout);
    });
}

namespace {

template <bool kDomain>
void rkckStages(RKCK& it, const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& yerr) {
    const Vec2f& k1 = dydx;
    Vec2f k2, k3, k4, k5, k6;
    velk::stageField<kDomain>(it, y.x + h * (kB21 * k1.x), y.y + h * (kB21 * k1.y), k2);
    velk::stageField<kDomain>(it, y.x + h * (kB31 * k1.x + kB32 * k2.x),
                              y.y + h * (kB31 * k1.y + kB32 * k2.y), k3);
    velk::stageField<kDomain>(it, y.x + h * (kB41 * k1.x + kB42 * k2.x + kB43 * k3.x),
                              y.y + h * (kB41 * k1.y + kB42 * k2.y + kB43 * k3.y), k4);
    velk::stageField<kDomain>(it, y.x + h * (kB51 * k1.x + kB52 * k2.x + kB53 * k3.x + kB54 * k4.x),
                              y.y + h * (kB51 * k1.y + kB52 * k2.y + kB53 * k3.y + kB54 * k4.y),
                              k5);
    velk::stageField<kDomain>(
        it, y.x + h * (kB61 * k1.x + kB62 * k2.x + kB63 * k3.x + kB64 * k4.x + kB65 * k5.x),
        y.y + h * (kB61 * k1.y + kB62 * k2.y + kB63 * k3.y + kB64 * k4.y + kB65 * k5.y), k6);
    yout.x = y.x + h * (kC1 * k1.x + kC3 * k3.x + kC4 * k4.x + kC6 * k6.x);
    yout.y = y.y + h * (kC1 * k1.y + kC3 * k3.y + kC4 * k4.y + kC6 * k6.y);
    yerr.x = h * (kE1 * k1.x + kE3 * k3.x + kE4 * k4.x + kE5 * k5.x + kE6 * k6.x);
    yerr.y = h * (kE1 * k1.y + kE3 * k3.y + kE4 * k4.y + kE5 * k5.y + kE6 * k6.y);
}

}  // namespace

void RKCK::rkck(const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& yerr) {
    velk::withDomain(*this, [&](auto hasDomain) {
        rkckStages<decltype(hasDomain)::value>(*this, y, dydx, h, yout, yerr);
    });
}
