#include "wrappedfill.h"

#include <cstddef>

#include "bilinear.h"
#include "periodic.h"

namespace velk {
namespace {

// wrapPeriodic, with the usual case of a value already within the period first.
VELK_ALWAYS_INLINE bool wrapInto(float& v, float period) {
    return (v >= 0.0f && v < period) || wrapPeriodic(v, period);
}

// The output pixel along an axis of a field coordinate v, which becomes the
// wrapped coordinate; -1 off a closed axis (one periodic correction only, as
// for the closed domain).
VELK_ALWAYS_INLINE int pixelOn(const AxisWrap& a, float& v) {
    if (a.periodic) {
        if (!wrapInto(v, a.nodes)) return -1;
    } else {
        v = v < 0.0f ? v + a.max : v > a.max ? v - a.max : v;
        if (!(v >= 0.0f && v <= a.max)) return -1;
    }
    const int p = static_cast<int>(a.scale * v);
    return p >= a.pixels ? a.pixels - 1 : p;
}

// The texels i0, i1 around a wrapped texture coordinate t, and its fraction.
VELK_ALWAYS_INLINE void texelsOn(const AxisWrap& a, float t, int& i0, int& i1, float& f) {
    i0 = static_cast<int>(t);
    f = t - static_cast<float>(i0);
    i1 = i0 + 1 < a.pixels ? i0 + 1 : 0;
}

// The library's lookups with each axis wrapped into its own period; kChannels
// 0 when only known at run time.
template <bool kBilinear, int kChannels>
VELK_ALWAYS_INLINE void lookupWrapped(const Texture& t, const AxisWrap& ax, const AxisWrap& ay,
                                      float tx, float ty, int channels, int* out) {
    const int nch = kChannels != 0 ? kChannels : channels;
    if (!wrapInto(tx, ax.texturePeriod) || !wrapInto(ty, ay.texturePeriod)) {
        for (int ch = 0; ch < nch; ch++) out[ch] = 0;
        return;
    }
    int i0, i1, j0, j1;
    float fx, fy;
    texelsOn(ax, tx, i0, i1, fx);
    texelsOn(ay, ty, j0, j1, fy);
    const unsigned char* r0 = t.data + static_cast<std::ptrdiff_t>(j0) * t.bytesPerLine;
    const unsigned char* r1 = t.data + static_cast<std::ptrdiff_t>(j1) * t.bytesPerLine;
    const std::ptrdiff_t c0 = static_cast<std::ptrdiff_t>(i0) * t.nChannels;
    const std::ptrdiff_t c1 = static_cast<std::ptrdiff_t>(i1) * t.nChannels;
    for (int ch = 0; ch < nch; ch++) {
        out[ch] = kBilinear ? static_cast<int>(bilinear(r0[c0 + ch], r0[c1 + ch], r1[c0 + ch],
                                                        r1[c1 + ch], fx, fy))
                            : r0[c0 + ch];
    }
}

VELK_ALWAYS_INLINE void placeWrapped(const RecordFill& f, const AxisWrap& ax, const AxisWrap& ay,
                                     Vec2f p, VelkCompute::LinePoint& point) {
    const int px = pixelOn(ax, p.x);
    const int py = pixelOn(ay, p.y);
    if (px < 0 || py < 0) {
        point.pixel = f.geometry.cells.width * f.geometry.cells.height;
        point.subPixel = 0;
        return;
    }
    point.pixel = f.geometry.pixelOf(px, py);
    point.subPixel = f.subPixels == 1 ? 0 : subPixelOf<true>(f, p.x, p.y);
}

template <LookupKind kLookup>
void fillRecords(const RecordFill& f, const AxisWrap& ax, const AxisWrap& ay,
                 const Vec2f* positions, VelkCompute::LinePoint* points, int* samples, int lo,
                 int first, int last, int hi) {
    constexpr bool kBilinear = kLookup == kLookupBilinear1 || kLookup == kLookupBilinearN;
    constexpr int kChannels = kLookup == kLookupBilinear1 || kLookup == kLookupConst1 ? 1 : 0;
    for (int i = lo; i <= hi; i++) {
        const Vec2f p = positions[i];
        if (i >= first && i <= last) placeWrapped(f, ax, ay, p, points[i]);
        int* out = samples + static_cast<std::ptrdiff_t>(i) * f.channels;
        float tx = p.x * ax.scale;
        float ty = p.y * ay.scale;
        if (kLookup != kLookupPointer) {
            lookupWrapped<kBilinear, kChannels>(f.texture, ax, ay, tx, ty, f.channels, out);
        } else if (wrapInto(tx, ax.texturePeriod) && wrapInto(ty, ay.texturePeriod)) {
            f.getPixel(f.input, tx, ty, out);
        } else {
            for (int ch = 0; ch < f.channels; ch++) out[ch] = 0;
        }
    }
}

}  // namespace

void fillWrapped(const RecordFill& f, const AxisWrap& ax, const AxisWrap& ay, LookupKind kind,
                 const Vec2f* positions, VelkCompute::LinePoint* points, int* samples, int lo,
                 int first, int last, int hi) {
    withLookup(kind, [&](auto lookup) {
        fillRecords<decltype(lookup)::value>(f, ax, ay, positions, points, samples, lo, first, last,
                                             hi);
    });
}

}  // namespace velk
