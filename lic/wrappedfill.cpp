#include "wrappedfill.h"

#include <cstddef>

#include "bilinear.h"
#include "periodic.h"

namespace velk {
namespace {

// The output pixel along an axis of a field coordinate v, which becomes the
// wrapped coordinate; -1 off a closed axis (one periodic correction only, as
// for the closed domain).
int pixelOn(const AxisWrap& a, float& v) {
    if (a.periodic) {
        if (!wrapPeriodic(v, a.nodes)) return -1;
    } else {
        v = v < 0.0f ? v + a.max : v > a.max ? v - a.max : v;
        if (!(v >= 0.0f && v <= a.max)) return -1;
    }
    const int p = static_cast<int>(a.scale * v);
    return p >= a.pixels ? a.pixels - 1 : p;
}

// Wraps a texture coordinate t into its period (the size on a periodic axis,
// the size - 1 on a closed one); false when nothing can be wrapped.
bool wrapTexture(const AxisWrap& a, float& t) {
    return wrapPeriodic(t, static_cast<float>(a.periodic ? a.pixels : a.pixels - 1));
}

// The texels i0, i1 around a wrapped texture coordinate t, and its fraction.
void texelsOn(const AxisWrap& a, float t, int& i0, int& i1, float& f) {
    i0 = static_cast<int>(t);
    f = t - static_cast<float>(i0);
    i1 = i0 + 1 < a.pixels ? i0 + 1 : 0;
}

void lookupWrapped(const Texture& t, const AxisWrap& ax, const AxisWrap& ay, bool bilinear,
                   float tx, float ty, int channels, int* out) {
    if (!wrapTexture(ax, tx) || !wrapTexture(ay, ty)) {
        for (int ch = 0; ch < channels; ch++) out[ch] = 0;
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
    for (int ch = 0; ch < channels; ch++) {
        out[ch] = bilinear ? static_cast<int>(velk::bilinear(r0[c0 + ch], r0[c1 + ch], r1[c0 + ch],
                                                             r1[c1 + ch], fx, fy))
                           : r0[c0 + ch];
    }
}

void placeWrapped(const RecordFill& f, const AxisWrap& ax, const AxisWrap& ay, Vec2f p,
                  VelkCompute::LinePoint& point) {
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

}  // namespace

void fillWrapped(const RecordFill& f, const AxisWrap& ax, const AxisWrap& ay, bool bilinear,
                 bool own, const Vec2f* positions, VelkCompute::LinePoint* points, int* samples,
                 int lo, int first, int last, int hi) {
    for (int i = lo; i <= hi; i++) {
        const Vec2f p = positions[i];
        if (i >= first && i <= last) placeWrapped(f, ax, ay, p, points[i]);
        int* out = samples + static_cast<std::ptrdiff_t>(i) * f.channels;
        float tx = p.x * ax.scale;
        float ty = p.y * ay.scale;
        if (!own) {
            lookupWrapped(f.texture, ax, ay, bilinear, tx, ty, f.channels, out);
        } else if (wrapTexture(ax, tx) && wrapTexture(ay, ty)) {
            f.getPixel(f.input, tx, ty, out);
        } else {
            for (int ch = 0; ch < f.channels; ch++) out[ch] = 0;
        }
    }
}

}  // namespace velk
