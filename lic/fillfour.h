#ifndef VELK_LIC_FILLFOUR_H
#define VELK_LIC_FILLFOUR_H

#include <cstddef>
#include <cstring>

#include "lanes.h"
#include "recordfill.h"

namespace velk {

// What fillFour needs, in all four lanes, set up once per line.
struct Lanes {
    PointGeometry<Float4, Int4> geometry;
    Float4 twoPeriodsX, twoPeriodsY;
    Float4 rowBytes, channels;
    Int4 spare;
    bool wrappable;     // both periods positive
    bool smallOffsets;  // every texel offset below 2^24 (else 64-bit offsets)

    explicit Lanes(const RecordFill& f) {
        const PointGeometry<float, int>& g = f.geometry;
        const Texture& t = f.texture;
        const CellLayout<float, int>& c = g.cells;
        geometry = {splat(g.xScale),
                    splat(g.yScale),
                    splat(g.xMax),
                    splat(g.yMax),
                    splat(g.periodX),
                    splat(g.periodY),
                    {splat(c.tileMask), splat(c.tileSize), splat(c.width), splat(c.height),
                     splat(c.widthF), c.tiled}};
        twoPeriodsX = splat(2.0f * g.periodX);
        twoPeriodsY = splat(2.0f * g.periodY);
        rowBytes = splat(static_cast<float>(t.bytesPerLine));
        channels = splat(static_cast<float>(t.nChannels));
        spare = splat(c.width * c.height);
        wrappable = g.periodX > 0.0f && g.periodY > 0.0f;
        smallOffsets = t.bytesPerLine >= 0 && t.nChannels >= 0 &&
                       static_cast<double>(t.bytesPerLine) * (g.periodY + 2.0) +
                               static_cast<double>(t.nChannels) * (g.periodX + 2.0) <
                           kExactFloatInts;
    }
};

// Whether fillFour serves the image: fewer than 2^24 output pixels.
inline bool smallImage(const RecordFill& f) {
    return static_cast<double>(f.geometry.cells.width) * f.geometry.cells.height + 1.0 <
           kExactFloatInts;
}

// The second half of fillFour: output pixels (kPixels; with, for lanes inside
// the domain, the sub-pixels of the positions xw, yw) and the texture values
// at (tx, ty), already wrapped into the first period.
template <bool kBilinear, bool kSubPixels, bool kPixels>
VELK_ALWAYS_INLINE void finishFour(const RecordFill& f, const Lanes& l, Int4 pixel, Int4 inside,
                                   Float4 xw, Float4 yw, Float4 tx, Float4 ty,
                                   VelkCompute::LinePoint* points, int* out) {
    const Texture& t = f.texture;
    const Int4 ix = toInt(tx);
    const Int4 iy = toInt(ty);
    const Float4 column = toFloat(ix);
    const Float4 row = toFloat(iy);
    const Float4 fx = tx - column;
    const Float4 fy = ty - row;
    std::ptrdiff_t offset[4];
    if (l.smallOffsets) {
        const Int4 small = toInt(row * l.rowBytes + column * l.channels);
        for (int k = 0; k < 4; k++) offset[k] = small[k];
    } else {
        for (int k = 0; k < 4; k++) {
            offset[k] = static_cast<std::ptrdiff_t>(iy[k]) * t.bytesPerLine +
                        static_cast<std::ptrdiff_t>(ix[k]) * t.nChannels;
        }
    }
    const unsigned char* q[4];
    for (int k = 0; k < 4; k++) {
        if (kPixels) {
            VelkCompute::LinePoint& point = points[k];
            point.pixel = pixel[k];
            __builtin_prefetch(f.accum + static_cast<std::ptrdiff_t>(pixel[k]) * f.cellStride, 1);
            point.subPixel = inside[k] ? subPixelOf<kSubPixels>(f, xw[k], yw[k]) : 0;
        }
        q[k] = t.data + offset[k];
    }
    Int4 values;
    if (kBilinear) {
        // Each texel with its right neighbour, in the low and high byte.
        const std::ptrdiff_t up = t.bytesPerLine;
        const Int4 low = {q[0][0] | q[0][1] << 8, q[1][0] | q[1][1] << 8, q[2][0] | q[2][1] << 8,
                          q[3][0] | q[3][1] << 8};
        const Int4 high = {q[0][up] | q[0][up + 1] << 8, q[1][up] | q[1][up + 1] << 8,
                           q[2][up] | q[2][up + 1] << 8, q[3][up] | q[3][up + 1] << 8};
        const Int4 byte = splat(0xff);
        values = toInt(bilinear(toFloat(low & byte), toFloat(low >> 8), toFloat(high & byte),
                                toFloat(high >> 8), fx, fy));
    } else {
        values = Int4{q[0][0], q[1][0], q[2][0], q[3][0]};
    }
    std::memcpy(out, &values, sizeof values);
}

// Four records of a one-channel texture at once, lane by lane the operations
// of fillRecord (kPixels: with the output pixels). Returns false, having
// written nothing, when one of the points lies so far out (or is not a number)
// that its texture position needs more than two periods of wrapping;
// fillRecord takes those.
template <bool kBilinear, bool kSubPixels, bool kPixels>
VELK_ALWAYS_INLINE bool fillFour(const RecordFill& f, const Lanes& l, const Vec2f* positions,
                                 VelkCompute::LinePoint* points, int* out) {
    const PointGeometry<Float4, Int4>& g = l.geometry;
    Float4 a, b;
    std::memcpy(&a, positions, sizeof a);
    std::memcpy(&b, positions + 2, sizeof b);
    const Float4 x = __builtin_shufflevector(a, b, 0, 2, 4, 6);
    const Float4 y = __builtin_shufflevector(a, b, 1, 3, 5, 7);
    const Float4 tx = x * g.xScale;
    const Float4 ty = y * g.yScale;
    const Float4 zero = {};
    const Int4 yes = splat(-1);
    if (kPixels) {
        if (allOf(g.plain(x, y, tx, ty))) {
            finishFour<kBilinear, kSubPixels, true>(f, l, g.pixelOf(toInt(tx), toInt(ty)), yes, x,
                                                    y, tx, ty, points, out);
            return true;
        }
    } else if (allOf((tx >= zero) & (tx < g.periodX) & (ty >= zero) & (ty < g.periodY))) {
        finishFour<kBilinear, kSubPixels, false>(f, l, yes, yes, x, y, tx, ty, points, out);
        return true;
    }

    // The texture position, wrapped as velk::wrapPeriodic does when it is
    // less than two periods away: at most two additions, then at most one
    // subtraction (of a value below two periods: exact).
    if (!l.wrappable || !allOf((tx < l.twoPeriodsX) & (-tx < l.twoPeriodsX) & (ty < l.twoPeriodsY) &
                               (-ty < l.twoPeriodsY))) {
        return false;
    }
    Float4 u = tx, v = ty;
    u = select(u < zero, u + g.periodX, u);
    u = select(u < zero, u + g.periodX, u);
    u = select(u >= g.periodX, u - g.periodX, u);
    v = select(v < zero, v + g.periodY, v);
    v = select(v < zero, v + g.periodY, v);
    v = select(v >= g.periodY, v - g.periodY, v);
    if (!kPixels) {
        finishFour<kBilinear, kSubPixels, false>(f, l, yes, yes, x, y, u, v, points, out);
        return true;
    }

    const Float4 xw = g.wrapOnce(x, g.xMax);
    const Float4 yw = g.wrapOnce(y, g.yMax);
    const Int4 inside = g.inside(xw, yw);
    const Int4 pixel =
        g.pixelOf(g.column(select(inside, xw, zero)), g.row(select(inside, yw, zero)));
    finishFour<kBilinear, kSubPixels, true>(f, l, select(inside, pixel, l.spare), inside, xw, yw, u,
                                            v, points, out);
    return true;
}

}  // namespace velk

#endif
