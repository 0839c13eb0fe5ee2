#ifndef VELK_LIC_RECORDFILL_H
#define VELK_LIC_RECORDFILL_H

#include <cstddef>
#include <type_traits>

#include <velk/VelkCompute.h>
#include "forceinline.h"
#include "pointgeometry.h"
#include "texture.h"

namespace velk {

// The texture lookup of a computation: one of the library's four, which are
// inlined, or a host's own through its pointer.
enum LookupKind {
    kLookupPointer,
    kLookupBilinear1,
    kLookupConst1,
    kLookupBilinearN,
    kLookupConstN
};

// Calls f(std::integral_constant<LookupKind, kind>()), so that a line's
// records are filled by code made for its lookup.
template <class F>
void withLookup(LookupKind kind, F f) {
    switch (kind) {
        case kLookupBilinear1:
            f(std::integral_constant<LookupKind, kLookupBilinear1>());
            break;
        case kLookupConst1:
            f(std::integral_constant<LookupKind, kLookupConst1>());
            break;
        case kLookupBilinearN:
            f(std::integral_constant<LookupKind, kLookupBilinearN>());
            break;
        case kLookupConstN:
            f(std::integral_constant<LookupKind, kLookupConstN>());
            break;
        case kLookupPointer:
            f(std::integral_constant<LookupKind, kLookupPointer>());
            break;
    }
}

inline LookupKind lookupKindOf(VelkCompute::PixelLookup getPixel) {
    if (getPixel == VelkCompute::getPixelBilinear1) return kLookupBilinear1;
    if (getPixel == VelkCompute::getPixelConst1) return kLookupConst1;
    if (getPixel == VelkCompute::getPixelBilinearN) return kLookupBilinearN;
    if (getPixel == VelkCompute::getPixelConstN) return kLookupConstN;
    return kLookupPointer;
}

// What filling a record needs from the engine, kept in registers over a line.
struct RecordFill {
    PointGeometry<float, int> geometry;
    int subPixels;
    int channels;
    VelkImage* input;
    Texture texture;
    VelkCompute::PixelLookup getPixel;
    const int* accum;
    int cellStride;
};

template <bool kSubPixels>
VELK_ALWAYS_INLINE int subPixelOf(const RecordFill& f, float xw, float yw) {
    if (!kSubPixels) return 0;
    const int N = f.subPixels;
    return static_cast<int>(f.geometry.xScale * N * xw) % N +
           N * (static_cast<int>(f.geometry.yScale * N * yw) % N);
}

// The output pixel and sub-pixel of a point, and where its convolved value
// will be added: the spare cell behind the image for points far off the
// domain (extrapolated ends, NaN), which no output pixel reads.
template <bool kSubPixels>
VELK_ALWAYS_INLINE void placeRecord(const RecordFill& f, Vec2f p, VelkCompute::LinePoint& point) {
    const PointGeometry<float, int>& g = f.geometry;
    const float xw = g.wrapOnce(p.x, g.xMax);
    const float yw = g.wrapOnce(p.y, g.yMax);
    if (g.inside(xw, yw)) {
        point.pixel = g.pixelOf(g.column(xw), g.row(yw));
        point.subPixel = subPixelOf<kSubPixels>(f, xw, yw);
    } else {
        point.pixel = g.cells.width * g.cells.height;
        point.subPixel = 0;
    }
}

// Fills one record from its traced position p: the output pixel and sub-pixel
// the point falls in (only for output records, kPixels), and the texture
// value(s) there.
template <LookupKind kLookup, bool kSubPixels, bool kPixels>
VELK_ALWAYS_INLINE void fillRecord(const RecordFill& f, Vec2f p, VelkCompute::LinePoint& point,
                                   int* out) {
    constexpr bool kBilinear = kLookup == kLookupBilinear1 || kLookup == kLookupBilinearN;
    constexpr int kChannels = kLookup == kLookupBilinear1 || kLookup == kLookupConst1 ? 1 : 0;
    const PointGeometry<float, int>& g = f.geometry;
    const float tx = p.x * g.xScale;
    const float ty = p.y * g.yScale;
    if (kPixels && kLookup != kLookupPointer && g.plain(p.x, p.y, tx, ty)) {
        const int ix = static_cast<int>(tx);
        const int iy = static_cast<int>(ty);
        point.pixel = g.pixelOf(ix, iy);
        // The convolution adds to this cell once the line is filled.
        __builtin_prefetch(f.accum + static_cast<std::ptrdiff_t>(point.pixel) * f.cellStride, 1);
        point.subPixel = subPixelOf<kSubPixels>(f, p.x, p.y);
        const float fx = tx - static_cast<float>(ix);
        const float fy = ty - static_cast<float>(iy);
        readTexel<kBilinear, kChannels>(
            f.texture, texelAt(f.texture, ix, iy, pixelStep<kBilinear, kChannels>(f.texture)), fx,
            fy, out);
        return;
    }
    if (kPixels) placeRecord<kSubPixels>(f, p, point);
    if (kLookup == kLookupPointer) {
        f.getPixel(f.input, tx, ty, out);
    } else {
        lookup<kBilinear, kChannels>(f.texture, tx, ty, out);
    }
}

// Fills records lo .. hi from the traced positions. Only the output records,
// first .. last, need their output pixels; the others only feed the kernel
// with their texture values.
void fillLine(const RecordFill& f, LookupKind kind, const Vec2f* positions,
              VelkCompute::LinePoint* points, int* samples, int lo, int first, int last, int hi);

}  // namespace velk

#endif
