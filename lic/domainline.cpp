#include "domainline.h"

#include <cmath>

#include <velk/VelkImage.h>
#include <velk/VelkIntegrator.h>
#include <velk/VelkVectorField.h>
#include "fieldeval.h"
#include "linesums.h"
#include "linetrace.h"
#include "recordfill.h"
#include "wrappedfill.h"

namespace velk {
namespace {

// Whether a seed coordinate has nodes around it, and the coordinate at which
// to sample them: a closed axis's last node lends its cell.
bool seedOn(float v, int nodes, float max, bool periodic, float& at) {
    if (periodic) {
        at = v;
        return std::isfinite(v);
    }
    at = v < max ? v : max;
    return v >= 0.0f && v <= static_cast<float>(nodes - 1);
}

// The first and last records of a line that ends: the run of valid records
// around the centre.
void validRun(const VelkCompute::LinePoint* points, int c, int lo, int hi, int& first, int& last) {
    first = c;
    while (first > lo && points[first - 1].status == 0) first--;
    last = c;
    while (last < hi && points[last + 1].status == 0) last++;
}

// The records of a line that stays at its seed: only the centre is valid.
void stayAt(const Vec2f& seed, Vec2f* positions, VelkCompute::LinePoint* points, int c, int n) {
    for (int k = c - n; k <= c + n; k++) {
        positions[k] = seed;
        points[k].status = k == c ? 0 : 2;
    }
}

}  // namespace

bool sampleDomainLine(const VelkCompute& e, int cellShift, LineTools& tools, const Vec2f& seed,
                      const CellZone* zone, DeferredAdds* deferred) {
    const int W = e.field->width;
    const int H = e.field->height;
    const bool wrapX = e.getPeriodicX(), wrapY = e.getPeriodicY();
    Vec2f at;
    if (W < 2 || H < 2 || !seedOn(seed.x, W, e.xMax, wrapX, at.x) ||
        !seedOn(seed.y, H, e.yMax, wrapY, at.y)) {
        return false;
    }
    // The integrator samples as the line will, orientation and wrapping included.
    VelkIntegrator& probe = *tools.forward;
    probe.heading = {0.0f, 0.0f};
    float vx, vy;
    if (!interpolateDomain(probe, at.x, at.y, vx, vy)) return false;
    const float length2 = vx * vx + vy * vy;
    if (std::isnan(length2) || (length2 == 0.0f && !e.getNoData())) return false;

    const int n = e.nFilter;
    const int c = e.nTotal;
    int lo = c - n, hi = c + n;
    if (length2 == 0.0f) {
        stayAt(seed, tools.positions, tools.points, c, n);
    } else {
        const float length = std::sqrt(length2);
        const Vec2f direction = {vx / length, vy / length};
        tools.forward->init(seed, direction);
        tools.backward->init(seed, direction);
        tools.positions[c] = seed;
        int ahead = 0, behind = 0;
        traceLine(*tools.forward, *tools.backward, tools.positions + c, tools.points + c, n,
                  e.nExtension, ahead, behind);
        lo -= behind;
        hi += ahead;
    }
    tools.lo = lo;
    tools.hi = hi;

    const RecordFill fill = recordFillOf(e, cellShift);
    const LookupKind kind = lookupKindOf(e.getPixel);
    if (wrapX || wrapY) {
        fillWrapped(fill, axisWrap(wrapX, W, e.xMax, e.xScale, e.width),
                    axisWrap(wrapY, H, e.yMax, e.yScale, e.height), kind, tools.positions,
                    tools.points, tools.samples, lo, lo + n, hi - n, hi);
    } else {
        fillLine(fill, kind, tools.positions, tools.points, tools.samples, lo, lo + n, hi - n, hi);
    }

    const LineSums line = lineSumsOf(e, tools, zone, deferred);
    if (!e.getNoData()) {
        convolveLine(line, e.filterKernel, kind != kLookupPointer);
        return true;
    }
    int first, last;
    validRun(tools.points, c, lo, hi, first, last);
    const std::size_t records = 2 * static_cast<std::size_t>(c) + 1;
    convolveEndingLine(line, e.filterKernel, first, last,
                       tools.sums + records * static_cast<std::size_t>(e.nChannels));
    return true;
}

}  // namespace velk
