#ifndef VELK_MIDPOINT_H
#define VELK_MIDPOINT_H

#include <velk/FixedIntegrator.h>

// Explicit midpoint rule: evaluations at the midpoint and at the end of each step.
class VELK_EXPORT Midpoint : public FixedIntegrator {
  public:
    explicit Midpoint(int direction = 1);

    const Vec2f& next(int& status) override;
    const Vec2f& next(float& magnitude, int& status) override;
};

#endif
