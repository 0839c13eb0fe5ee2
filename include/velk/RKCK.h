#ifndef VELK_RKCK_H
#define VELK_RKCK_H

#include <velk/AdaptiveIntegrator.h>

// Cash-Karp embedded 5(4) pair.
class VELK_EXPORT RKCK : public AdaptiveIntegrator {
  public:
    RKCK(float tolerance, float initialStep, float minStep, float maxStep, int direction);

    void step(const Vec2f& y, const Vec2f& dydx, float& htry, float& hdid, Vec2f& yout,
              Vec2f& dydxout) override;
    // One step of size h without size control; yerr receives the error estimate.
    // A failed evaluation leaves through recovery (codes 1, 2), as in step().
    void rkck(const Vec2f& y, const Vec2f& dydx, float h, Vec2f& yout, Vec2f& yerr);
};

#endif
