#include <velk/VelkIntegrator.h>

#include <cmath>
#include <cstddef>
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
      normalization(0.0f),
      domain(0),
      heading{0.0f, 0.0f} {}

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

namespace velk {
namespace {

// The nodes i0, i1 around p on an axis of n nodes (largest valid p: max) and
// p's fraction between them; false outside a closed axis or for a position
// that is not a finite float of whole-number resolution.
bool axisNodes(float p, int n, float max, bool periodic, int& i0, int& i1, float& f) {
    if (!periodic) {
        if (!(p >= 0.0f && p <= max)) return false;
        i0 = static_cast<int>(p);
        i1 = i0 + 1;
        f = p - static_cast<float>(i0);
        return true;
    }
    if (p >= 0.0f && p < static_cast<float>(n)) {
        // Within the first period, as most points are.
        i0 = static_cast<int>(p);
        i1 = i0 + 1 < n ? i0 + 1 : 0;
        f = p - static_cast<float>(i0);
        return true;
    }
    if (!(std::fabs(p) < 16777216.0f) || n < 1) return false;
    const float whole = std::floor(p);
    f = p - whole;
    i0 = static_cast<int>(whole) % n;
    if (i0 < 0) i0 += n;
    i1 = i0 + 1 < n ? i0 + 1 : 0;
    return true;
}

VELK_ALWAYS_INLINE float dot(const Vec2f& a, const Vec2f& b) {
    return a.x * b.x + a.y * b.y;
}

VELK_ALWAYS_INLINE Vec2f agreeing(Vec2f v, const Vec2f& reference) {
    return dot(v, reference) < 0.0f ? Vec2f{-v.x, -v.y} : v;
}

// Without a heading yet (a seed), the strongest corner gives the axis and a
// fixed half-plane the sense, so that a line starts alike whatever the signs
// of its nodes.
Vec2f referenceOf(const Vec2f& heading, const Vec2f (&corner)[4]) {
    if (heading.x != 0.0f || heading.y != 0.0f) return heading;
    Vec2f best = corner[0];
    for (const Vec2f& v : corner) {
        if (dot(v, v) > dot(best, best)) best = v;
    }
    return best.x > 0.0f || (best.x == 0.0f && best.y > 0.0f) ? best : Vec2f{-best.x, -best.y};
}

}  // namespace

bool interpolateDomain(VelkIntegrator& it, float px, float py, float& vx, float& vy) {
    int i0, i1, j0, j1;
    float fx, fy;
    if (!axisNodes(px, it.fieldWidth, it.xMax, it.domain & VelkIntegrator::PERIODIC_X, i0, i1,
                   fx) ||
        !axisNodes(py, it.fieldHeight, it.yMax, it.domain & VelkIntegrator::PERIODIC_Y, j0, j1,
                   fy)) {
        return false;
    }
    const std::ptrdiff_t row0 = static_cast<std::ptrdiff_t>(j0) * it.fieldWidth;
    const std::ptrdiff_t row1 = static_cast<std::ptrdiff_t>(j1) * it.fieldWidth;
    Vec2f corner[4] = {it.field[row0 + i0], it.field[row0 + i1], it.field[row1 + i0],
                       it.field[row1 + i1]};
    if (!(it.domain & VelkIntegrator::ORIENTATION)) {
        blendField(corner[0], corner[1], corner[2], corner[3], fx, fy, vx, vy);
        return true;
    }
    const Vec2f reference = referenceOf(it.heading, corner);
    for (Vec2f& v : corner) v = agreeing(v, reference);
    blendField(corner[0], corner[1], corner[2], corner[3], fx, fy, vx, vy);
    const Vec2f v = agreeing({vx, vy}, reference);
    vx = v.x;
    vy = v.y;
    // Kept at unit 1-norm, so that later products neither underflow nor overflow.
    const float norm = std::fabs(vx) + std::fabs(vy);
    if (norm > 0.0f && std::isfinite(norm)) it.heading = {vx / norm, vy / norm};
    return true;
}

}  // namespace velk

void VelkIntegrator::derivs(const Vec2f& p, Vec2f& d) {
    if (status != 0) return;
    velk::withDomain(*this, [&](auto hasDomain) {
        velk::evaluateField<decltype(hasDomain)::value>(*this, p, d);
    });
}
