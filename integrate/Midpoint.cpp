#include <velk/Midpoint.h>

#include "midpointstep.h"

Midpoint::Midpoint(int direction) : FixedIntegrator(direction) {}

const Vec2f& Midpoint::next(int& outStatus) {
    velk::withDomain(
        *this, [this](auto hasDomain) { velk::midpointStep<decltype(hasDomain)::value>(*this); });
    outStatus = status;
    return pos;
}

const Vec2f& Midpoint::next(float& outMagnitude, int& outStatus) {
    velk::withDomain(
        *this, [this](auto hasDomain) { velk::midpointStep<decltype(hasDomain)::value>(*this); });
    outMagnitude = magnitude;
    outStatus = status;
    return pos;
}
