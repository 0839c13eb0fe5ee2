#ifndef VELK_EULER_H
#define VELK_EULER_H

#include <velk/FixedIntegrator.h>

// Explicit Euler: one field evaluation per step.
class VELK_EXPORT Euler : public FixedIntegrator {
  public:
    explicit Euler(int direction = 1);

    const Vec2f& next(int& status) override;
    const Vec2f& next(float& magnitude, int& status) override;
};

#endif
