#ifndef VELK_FIXEDINTEGRATOR_H
#define VELK_FIXEDINTEGRATOR_H

#include <velk/VelkIntegrator.h>

// Base of the fixed-step schemes: one integration step of stepSize per point.
// After a line ends, next() keeps extrapolating along the last derivative.
class VELK_EXPORT FixedIntegrator : public VelkIntegrator {
  public:
    Vec2f pos;    // current point; next() returns a reference to it
    Vec2f deriv;  // normalised, direction-signed slope at pos

    explicit FixedIntegrator(int direction);

    void init(const Vec2f& p, const Vec2f& v) override;
    void init(const Vec2f& p, const Vec2f& v, float magnitude) override;
};

#endif
