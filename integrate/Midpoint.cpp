#include <velk/Midpoint.h>

#include "midpointstep.h"

Midpoint::Midpoint(int direction) : FixedIntegrator(direction) {}

const Vec2f& Midpoint::next(int& outStatus) {
    velk::midpointStep(*this);
    outStatus = status;
    return pos;
}

const Vec2f& Midpoint::next(float& outMagnitude, int& outStatus) {
    velk::midpointStep(*this);
    outMagnitude = magnitude;
    outStatus = status;
    return pos;
}
