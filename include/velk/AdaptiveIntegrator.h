#ifndef VELK_ADAPTIVEINTEGRATOR_H
#define VELK_ADAPTIVEINTEGRATOR_H

#include <csetjmp>

#include <velk/VelkIntegrator.h>

// Base of the embedded Runge-Kutta schemes with step-size control. Points are
// still returned at spacing stepSize: each accepted step is covered by a cubic
// Hermite curve that is sampled by forward differences. When a step cannot be
// completed (border or critical point) the line continues with Euler steps.
class VELK_EXPORT AdaptiveIntegrator : public VelkIntegrator {
  public:
    Vec2f pos0;      // start of the most recent adaptive step
    Vec2f pos;       // end of the most recent accepted step
    Vec2f deriv0;    // derivative at pos0
    Vec2f deriv;     // derivative at pos
    Vec2f tangent0;  // Hermite tangents of the last step
    Vec2f tangent1;
    float s0;       // curve parameter at pos0
    float s;        // curve parameter at pos
    float t;        // curve parameter of the current returned point
    float mag0;     // field magnitude at the start of the last step
    float mag;      // interpolated magnitude at the current returned point
    float magStep;  // increment of mag per returned point
    Vec2f coef3;    // cubic of the last step, highest power first
    Vec2f coef2;
    Vec2f coef1;
    Vec2f coef0;
    Vec2f outPoint;  // current returned point; next() returns a reference to it
    Vec2f diff1;     // forward differences at the sampling spacing
    Vec2f diff2;
    Vec2f diff3;
    float tolerance;
    float initialStep;
    float stepTry;  // step size to try next
    float minStep;
    float maxStep;
    int fallback;           // 1 once the line continues with Euler steps
    std::jmp_buf recovery;  // leaves a failed step (codes 1, 2, 3)

    AdaptiveIntegrator(float tolerance, float initialStep, float minStep, float maxStep,
                       int direction);

    void init(const Vec2f& p, const Vec2f& v) override;
    const Vec2f& next(int& status) override;
    void init(const Vec2f& p, const Vec2f& v, float magnitude) override;
    const Vec2f& next(float& magnitude, int& status) override;

    // One accepted adaptive step from y; htry is updated to the next trial size.
    // A failed step leaves through recovery (codes 1, 2, 3), which the caller
    // must have armed with setjmp; next() does.
    virtual void step(const Vec2f& y, const Vec2f& dydx, float& htry, float& hdid, Vec2f& yout,
                      Vec2f& dydxout) = 0;
};

#endif
