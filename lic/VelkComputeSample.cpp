#include <cmath>
#include <cstddef>

#include <velk/VelkCompute.h>
#include <velk/VelkImage.h>
#include <velk/VelkIntegrator.h>
#include <velk/VelkVectorField.h>
#include "bilinear.h"
#include "domainline.h"
#include "linesums.h"
#include "linetools.h"
#include "linetrace.h"
#include "recordfill.h"
#include "texture.h"

using velk::lookup;
using velk::textureOf;

void VelkCompute::getPixelConst1(VelkImage* image, float x, float y, int* out) {
    lookup<false, 1>(textureOf(image), x, y, out);
}

void VelkCompute::getPixelConstN(VelkImage* image, float x, float y, int* out) {
    lookup<false, 0>(textureOf(image), x, y, out);
}

void VelkCompute::getPixelBilinear1(VelkImage* image, float x, float y, int* out) {
    lookup<true, 1>(textureOf(image), x, y, out);
}

void VelkCompute::getPixelBilinearN(VelkImage* image, float x, float y, int* out) {
    lookup<true, 0>(textureOf(image), x, y, out);
}

void VelkCompute::sample(const Vec2f& seed) {
    velk::LineTools tools = {forward, backward, positions, points, samples, sums, 0, 0};
    if (velk::sampleLine(*this, cellShift, tools, seed)) numFieldLines++;
}

bool velk::sampleLine(const VelkCompute& e, int cellShift, LineTools& tools, const Vec2f& seed,
                      const CellZone* zone, DeferredAdds* deferred) {
    // Buffers from start(), and the sub-pixel and channel counts they were sized
    // for (setNumSubPixels only takes effect at the next start).
    const int n = e.nFilter;
    if (!tools.points || n < 1 || e.numSubPixels < 1 ||
        static_cast<long long>(e.numSubPixels) * e.numSubPixels != e.numSubCells ||
        e.input->nChannels != e.nChannels) {
        return false;
    }
    if (needsDomainLine(e)) return sampleDomainLine(e, cellShift, tools, seed, zone, deferred);
    const VelkVectorField* field = e.field;
    const int W = field->width;
    const int H = field->height;
    // The seed needs its four nodes (mirrored at the last column and row).
    if (W < 2 || H < 2 ||
        !(seed.x >= 0.0f && seed.x <= static_cast<float>(W - 1) && seed.y >= 0.0f &&
          seed.y <= static_cast<float>(H - 1))) {
        return false;
    }

    const int ix = static_cast<int>(seed.x);
    const int iy = static_cast<int>(seed.y);
    const float fx = seed.x - static_cast<float>(ix);
    const float fy = seed.y - static_cast<float>(iy);
    const std::ptrdiff_t dx = ix < W - 1 ? 1 : -1;
    const std::ptrdiff_t dy = iy < H - 1 ? W : -W;
    const Vec2f* n00 =
        reinterpret_cast<const Vec2f*>(field->data) + (static_cast<std::ptrdiff_t>(iy) * W + ix);
    const Vec2f* n10 = n00 + dx;
    const Vec2f* n01 = n00 + dy;
    const Vec2f* n11 = n01 + dx;
    const float vx = bilinear(n00->x, n10->x, n01->x, n11->x, fx, fy);
    const float vy = bilinear(n00->y, n10->y, n01->y, n11->y, fx, fy);
    const float length2 = vx * vx + vy * vy;
    if (length2 == 0.0f || std::isnan(length2)) return false;

    const float length = std::sqrt(length2);
    const Vec2f direction = {vx / length, vy / length};
    tools.forward->init(seed, direction);
    tools.backward->init(seed, direction);

    const int c = e.nTotal;
    tools.positions[c] = seed;
    int ahead = 0, behind = 0;
    traceLine(*tools.forward, *tools.backward, tools.positions + c, tools.points + c, n,
              e.nExtension, ahead, behind);
    const int lo = c - n - behind;
    const int hi = c + n + ahead;
    tools.lo = lo;
    tools.hi = hi;

    // The records are filled after the tracing: the loop keeps the engine's
    // scales in registers instead of reloading them around every call.
    const LookupKind kind = lookupKindOf(e.getPixel);
    fillLine(recordFillOf(e, cellShift), kind, tools.positions, tools.points, tools.samples, lo,
             lo + n, hi - n, hi);
    // The library's lookups deliver bytes; a host's own may not.
    convolveLine(lineSumsOf(e, tools, zone, deferred), e.filterKernel, kind != kLookupPointer);
    return true;
}
