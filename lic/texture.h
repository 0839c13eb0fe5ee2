#ifndef VELK_LIC_TEXTURE_H
#define VELK_LIC_TEXTURE_H

#include <cstddef>

#include <velk/VelkImage.h>
#include "bilinear.h"
#include "forceinline.h"
#include "periodic.h"

namespace velk {

// What a texture lookup reads of an image, taken once so that a line's lookups
// keep it in registers.
struct Texture {
    const unsigned char* data;
    std::ptrdiff_t bytesPerLine;
    int nChannels;
    float periodX;  // width - 1: the last column repeats the first
    float periodY;
};

inline Texture textureOf(const VelkImage* image) {
    return {image->data, image->bytesPerLine, image->nChannels,
            static_cast<float>(image->width - 1), static_cast<float>(image->height - 1)};
}

// Bytes from one pixel to the next as a lookup addresses them: nChannels, but
// the one-channel constant lookup reads the bytes of a row one by one.
template <bool kBilinear, int kChannels>
inline int pixelStep(const Texture& t) {
    return !kBilinear && kChannels == 1 ? 1 : t.nChannels;
}

// The texel at (ix, iy), pixels `step` bytes apart within a row.
VELK_ALWAYS_INLINE const unsigned char* texelAt(const Texture& t, int ix, int iy, int step) {
    return t.data + static_cast<std::ptrdiff_t>(iy) * t.bytesPerLine +
           static_cast<std::ptrdiff_t>(ix) * step;
}

// Periodic wrap and split into texel and fractions; null when no wrapped
// position exists (an image narrower or lower than 2 pixels, a coordinate that
// is not finite).
VELK_ALWAYS_INLINE const unsigned char* texel(const Texture& t, float x, float y, float& fx,
                                              float& fy, int step) {
    // Most points lie within the first period and need no wrapping.
    if (!(x >= 0.0f && x < t.periodX) && !wrapPeriodic(x, t.periodX)) return nullptr;
    if (!(y >= 0.0f && y < t.periodY) && !wrapPeriodic(y, t.periodY)) return nullptr;
    const int ix = static_cast<int>(x);
    const int iy = static_cast<int>(y);
    fx = x - static_cast<float>(ix);
    fy = y - static_cast<float>(iy);
    return texelAt(t, ix, iy, step);
}

// The four lookups at a texel p (null: nothing to read, zeros) with fractions
// fx, fy. kChannels is 1 for the one-channel variants, which read a single
// value, and 0 for the others, which read t.nChannels.
template <bool kBilinear, int kChannels>
VELK_ALWAYS_INLINE void readTexel(const Texture& t, const unsigned char* p, float fx, float fy,
                                  int* out) {
    const int nch = kChannels != 0 ? kChannels : t.nChannels;
    if (!p) {
        for (int ch = 0; ch < nch; ch++) out[ch] = 0;
        return;
    }
    if (!kBilinear) {
        for (int ch = 0; ch < nch; ch++) out[ch] = p[ch];
        return;
    }
    // The right neighbour is one pixel (t.nChannels bytes) further.
    const int right = t.nChannels;
    const unsigned char* q = p + t.bytesPerLine;
    for (int ch = 0; ch < nch; ch++) {
        out[ch] = static_cast<int>(bilinear(p[ch], p[ch + right], q[ch], q[ch + right], fx, fy));
    }
}

template <bool kBilinear, int kChannels>
VELK_ALWAYS_INLINE void lookup(const Texture& t, float x, float y, int* out) {
    float fx = 0.0f, fy = 0.0f;
    const unsigned char* p = texel(t, x, y, fx, fy, pixelStep<kBilinear, kChannels>(t));
    readTexel<kBilinear, kChannels>(t, p, fx, fy, out);
}

}  // namespace velk

#endif
