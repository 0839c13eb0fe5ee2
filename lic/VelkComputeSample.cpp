#include <cmath>
#include <cstddef>

#include <velk/VelkCompute.h>
#include <velk/VelkImage.h>
#include <velk/VelkIntegrator.h>
#include <velk/VelkVectorField.h>
#include "bilinear.h"
#include "linesums.h"
#include "linetrace.h"
#include "recordfill.h"
#include "texture.h"

using velk::lookup;
using velk::textureOf;

namespace {

velk::LookupKind lookupKind(VelkCompute::PixelLookup getPixel) {
    if (getPixel == VelkCompute::getPixelBilinear1) return velk::kLookupBilinear1;
    if (getPixel == VelkCompute::getPixelConst1) return velk::kLookupConst1;
    if (getPixel == VelkCompute::getPixelBilinearN) return velk::kLookupBilinearN;
    if (getPixel == VelkCompute::getPixelConstN) return velk::kLookupConstN;
    return velk::kLookupPointer;
}

}  // namespace

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
    // Buffers from start(), and the sub-pixel and channel counts they were sized
    // for (setNumSubPixels only takes effect at the next start).
    if (!points || nFilter < 1 || numSubPixels < 1 ||
        static_cast<long long>(numSubPixels) * numSubPixels != numSubCells ||
        input->nChannels != nChannels) {
        return;
    }
    const int W = field->width;
    const int H = field->height;
    // The seed needs its four nodes (mirrored at the last column and row).
    if (W < 2 || H < 2 ||
        !(seed.x >= 0.0f && seed.x <= static_cast<float>(W - 1) && seed.y >= 0.0f &&
          seed.y <= static_cast<float>(H - 1))) {
        return;
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
    const float vx = velk::bilinear(n00->x, n10->x, n01->x, n11->x, fx, fy);
    const float vy = velk::bilinear(n00->y, n10->y, n01->y, n11->y, fx, fy);
    const float length2 = vx * vx + vy * vy;
    if (length2 == 0.0f || std::isnan(length2)) return;

    numFieldLines++;
    const float length = std::sqrt(length2);
    const Vec2f direction = {vx / length, vy / length};
    forward->init(seed, direction);
    backward->init(seed, direction);

    const int n = nFilter;
    const int c = nTotal;
    positions[c] = seed;

    int ahead = 0, behind = 0;
    velk::traceLine(*forward, *backward, positions + c, points + c, n, nExtension, ahead, behind);
    const int lo = c - n - behind;
    const int hi = c + n + ahead;

    // The records are filled after the tracing: the loop keeps the engine's
    // scales in registers instead of reloading them around every call.
    const velk::LookupKind kind = lookupKind(getPixel);
    const velk::Texture texture = textureOf(input);
    const velk::RecordFill fill = {{xScale, yScale, xMax, yMax, texture.periodX, texture.periodY,
                                    width, height, static_cast<float>(width)},
                                   numSubPixels,
                                   nChannels,
                                   input,
                                   texture,
                                   getPixel,
                                   accum,
                                   cellStride};
    velk::fillLine(fill, kind, positions, points, samples, lo, lo + n, hi - n, hi);

    // The library's lookups deliver bytes; a host's own may not.
    const velk::LineSums line = {samples,   sums, points, accum, cellStride, numSubCells,
                                 nChannels, c,    lo,     hi,    n};
    velk::convolveLine(line, filterKernel, kind != velk::kLookupPointer);
}
