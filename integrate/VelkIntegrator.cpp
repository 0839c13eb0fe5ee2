#include <velk/VelkIntegrator.h>

#include <cmath>
#include <limits>

#include "fieldeval.h"

namespace {

// Largest float whose truncation still has a right (upper) neighbour node, i.e.
// the largest float strictly below nodes - 1.
float belowLastNode(int nodes) {
    const double last = static_cast<double>(nodes) - 1.0;
    float limit = static_cast<float>(last);
    while (static_cast<double>(limit) >= last)
        limit = std::nextafter(limit, -std::numeric_limits<float>::infinity());
    return limit;
}

}  // namespace

// Until setField is called no point is inside the domain, so nothing is read.
VelkIntegrator::VelkIntegrator()
    : stepSize(0.0f),
      status(0),
      direction(0.0f),
      fieldWidth(0),
      fieldHeight(0),
      xMax(-1.001f),
      yMax(-1.001f),
      field(nullptr),
      magnitude(0.0f),
      normalization(0.0f) {}

VelkIntegrator::~VelkIntegrator() = default;

void VelkIntegrator::setField(int width, int height, Vec2f* data) {
    fieldWidth = width;
    fieldHeight = height;
    field = data;
    xMax = static_cast<float>(width) - 1.001f;
    yMax = static_cast<float>(height) - 1.001f;
    // From about 32768 nodes on, width - 1.001 rounds up to width - 1 in single
    // precision, and a point on the last column would read past the row.
    if (width > 1) xMax = std::fmin(xMax, belowLastNode(width));
    if (height > 1) yMax = std::fmin(yMax, belowLastNode(height));
}

void VelkIntegrator::derivs(const Vec2f& p, Vec2f& d) {
    if (status != 0) return;
    velk::evaluateField(*this, p, d);
}
