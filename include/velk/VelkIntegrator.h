#ifndef VELK_VELKINTEGRATOR_H
#define VELK_VELKINTEGRATOR_H

#include <velk/Vec2f.h>
#include <velk/velk_export.h>

// Traces one field line through a vector field grid, one point per next() call,
// at fixed arc-length spacing. Positions are in grid units: node (i, j) is at
// (i, j). Status codes: 0 valid, 1 left the domain (or step too small), 2
// critical point or invalid value.
//
// Calling order: set direction (and optionally normalization), setField,
// stepSize, then per line init followed by repeated next.
class VELK_EXPORT VelkIntegrator {
  public:
    // Bits of `domain`. ORIENTATION: the field gives directions only up to
    // sign, so every sampled vector (and, before blending, each of its four
    // corners) is turned to agree with `heading`. PERIODIC_X, PERIODIC_Y: the
    // nodes of the axis are one period, node fieldWidth being node 0 again.
    enum Domain : int { ORIENTATION = 1, PERIODIC_X = 2, PERIODIC_Y = 4 };

    float stepSize;   // spacing of the returned points, in grid units
    int status;       // 0 valid, 1 left the domain, 2 critical point
    float direction;  // +1 along the field, -1 against it
    int fieldWidth;
    int fieldHeight;
    float xMax;           // fieldWidth - 1.001, the largest valid x
    float yMax;           // fieldHeight - 1.001, the largest valid y
    Vec2f* field;         // borrowed for the duration of a computation
    float magnitude;      // raw field length at the most recent evaluation
    float normalization;  // speed threshold of the derivative normalisation
    int domain;           // Domain bits, 0 by default
    Vec2f heading;        // the latest sampled field direction; init() sets it to v

    VelkIntegrator();
    virtual ~VelkIntegrator();

    // Starts a line at p with the field direction v there (unit length, not re-evaluated).
    virtual void init(const Vec2f& p, const Vec2f& v) = 0;
    // Advances one step; the reference stays valid until the next call or init.
    virtual const Vec2f& next(int& status) = 0;
    // As init(p, v), and stores the field magnitude at p.
    virtual void init(const Vec2f& p, const Vec2f& v, float magnitude) = 0;
    // As next(status), and also hands out the field magnitude along the line.
    virtual const Vec2f& next(float& magnitude, int& status) = 0;

    // Borrows the field's nodes; sets xMax and yMax.
    void setField(int width, int height, Vec2f* data);
    // Normalised, direction-signed derivative at p into d. Does nothing once the
    // status is non-zero; on failure sets the status and leaves d unchanged.
    void derivs(const Vec2f& p, Vec2f& d);
};

#endif
