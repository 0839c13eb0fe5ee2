#ifndef VELK_RK43_H
#define VELK_RK43_H

#include <velk/AdaptiveIntegrator.h>

// Classical fourth-order Runge-Kutta with an embedded third-order error estimate.
class VELK_EXPORT RK43 : public AdaptiveIntegrator {
  public:
    RK43(float tolerance, float initialStep, float minStep, float maxStep, int direction);

    void step(const Vec2f& y, const Vec2f& dydx, float& htry, float& hdid, Vec2f& yout,
              Vec2f& dydxout) override;
    // One step of size h without size control; yerr receives the error estimate.
    // A failed evaluation leaves through recovery (codes 1, 2), as in step().
    void rkstep(const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& dydxout,
                Vec2f& yerr);
};

#endif
