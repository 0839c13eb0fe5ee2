#include <cmath>
#include <cstddef>

#include "VelkCompute.h"
#include "VelkImage.h"
#include "VelkIntegrator.h"
#include "VelkVectorField.h"
#include "periodic.h"

namespace {

// The bilinear formula of the texture lookups and of the field value at a seed,
// term by term in single precision.
inline float bilinear(float p00, float p10, float p01, float p11, float fx, float fy) {
    return p00 + (p10 - p00) * fx + (p01 - p00) * fy + fx * fy * (p00 - p01 - p10 + p11);
}

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

// Periodic wrap and split into texel and fractions; null when no wrapped
// position exists (an image narrower or lower than 2 pixels, a coordinate that
// is not finite).
__attribute__((always_inline)) inline const unsigned char* texel(const Texture& t, float x, float y,
                                                                 float& fx, float& fy) {
    if (!velk::wrapPeriodic(x, t.periodX) || !velk::wrapPeriodic(y, t.periodY)) return nullptr;
    const int ix = static_cast<int>(x);
    const int iy = static_cast<int>(y);
    fx = x - static_cast<float>(ix);
    fy = y - static_cast<float>(iy);
    return t.data + static_cast<std::ptrdiff_t>(iy) * t.bytesPerLine +
           static_cast<std::ptrdiff_t>(ix) * t.nChannels;
}

// The bodies of the four lookups; the one-channel ones are also inlined into
// the filling of a line's records.
__attribute__((always_inline)) inline void constOne(const Texture& t, float x, float y, int* out) {
    float fx, fy;
    const unsigned char* p = texel(t, x, y, fx, fy);
    out[0] = p ? p[0] : 0;
}

__attribute__((always_inline)) inline void bilinearOne(const Texture& t, float x, float y,
                                                       int* out) {
    float fx, fy;
    const unsigned char* p = texel(t, x, y, fx, fy);
    if (!p) {
        out[0] = 0;
        return;
    }
    const unsigned char* q = p + t.bytesPerLine;
    out[0] = static_cast<int>(bilinear(p[0], p[1], q[0], q[1], fx, fy));
}

inline void constN(const Texture& t, float x, float y, int* out) {
    float fx, fy;
    const unsigned char* p = texel(t, x, y, fx, fy);
    for (int ch = 0; ch < t.nChannels; ch++) out[ch] = p ? p[ch] : 0;
}

inline void bilinearN(const Texture& t, float x, float y, int* out) {
    float fx, fy;
    const unsigned char* p = texel(t, x, y, fx, fy);
    const int nch = t.nChannels;
    if (!p) {
        for (int ch = 0; ch < nch; ch++) out[ch] = 0;
        return;
    }
    const unsigned char* q = p + t.bytesPerLine;
    for (int ch = 0; ch < nch; ch++) {
        out[ch] = static_cast<int>(bilinear(p[ch], p[ch + nch], q[ch], q[ch + nch], fx, fy));
    }
}

// Running sums of the texture values T along a line, anchored at the centre c
// (S[c] = 0), integrated once (box), twice (triangle) or three times (cubic);
// then the kernel outputs of every output record, accumulated into its cell.
// kChannels 0 means the channel count is only known at run time.
template <int kKernel, int kChannels>
void convolveLine(const int* T, std::int64_t* S, const VelkCompute::LinePoint* points, int* accum,
                  int cellStride, int numSubCells, int channels, int c, int lo, int hi, int n,
                  std::int64_t divisor) {
    const int nch = kChannels != 0 ? kChannels : channels;
    for (int ch = 0; ch < nch; ch++) {
        std::int64_t s1 = 0, s2 = 0, s3 = 0;
        S[c * nch + ch] = 0;
        for (int i = c + 1; i <= hi; i++) {
            s1 += T[i * nch + ch];
            s2 += s1;
            s3 += s2;
            S[i * nch + ch] = kKernel == 0 ? s1 : kKernel == 1 ? s2 : s3;
        }
        s1 = s2 = s3 = 0;
        for (int i = c - 1; i >= lo; i--) {
            s3 -= s2;
            s2 -= s1;
            s1 -= T[(i + 1) * nch + ch];
            S[i * nch + ch] = kKernel == 0 ? s1 : kKernel == 1 ? s2 : s3;
        }
    }

    const int m = 2 * n / 3;
    for (int i = lo + n; i <= hi - n; i++) {
        const VelkCompute::LinePoint& point = points[i];
        int* cell = accum + static_cast<std::ptrdiff_t>(point.pixel) * cellStride;
        cell[point.subPixel]++;
        int* channelSums = cell + numSubCells;
        const std::int64_t* back = S + (i - n) * nch;
        const std::int64_t* centre = S + i * nch;
        const std::int64_t* ahead = S + (i + n) * nch;
        for (int ch = 0; ch < nch; ch++) {
            std::int64_t numerator;
            if (kKernel == 0) {
                numerator = ahead[ch] - back[ch];
            } else if (kKernel == 1) {
                numerator = ahead[ch] + back[ch] - 2 * centre[ch];
            } else {
                numerator = ahead[ch] - back[ch] + 3 * (back[m * nch + ch] - ahead[-m * nch + ch]);
            }
            channelSums[ch] += static_cast<int>(numerator / divisor);
        }
    }
}

template <int kKernel>
void convolveKernel(const int* T, std::int64_t* S, const VelkCompute::LinePoint* points, int* accum,
                    int cellStride, int numSubCells, int channels, int c, int lo, int hi, int n,
                    std::int64_t divisor) {
    if (channels == 1) {
        convolveLine<kKernel, 1>(T, S, points, accum, cellStride, numSubCells, channels, c, lo, hi,
                                 n, divisor);
    } else if (channels == 3) {
        convolveLine<kKernel, 3>(T, S, points, accum, cellStride, numSubCells, channels, c, lo, hi,
                                 n, divisor);
    } else {
        convolveLine<kKernel, 0>(T, S, points, accum, cellStride, numSubCells, channels, c, lo, hi,
                                 n, divisor);
    }
}

// What filling a record needs from the engine, kept in registers over a line.
struct RecordFill {
    float xMax, yMax, xScale, yScale;
    int width, height, subPixels;
    int channels;
    VelkImage* input;
    Texture texture;
    VelkCompute::PixelLookup getPixel;
};

enum LookupKind { kLookupPointer, kLookupBilinear1, kLookupConst1 };

// Fills records lo .. hi from the traced positions: the output pixel and
// sub-pixel the point falls in, and the texture value(s) there.
template <LookupKind kLookup, bool kSubPixels>
void fillRecords(const RecordFill f, const Vec2f* positions, VelkCompute::LinePoint* points,
                 int* samples, int lo, int hi) {
    const int spare = f.width * f.height;
    for (int i = lo; i <= hi; i++) {
        const Vec2f p = positions[i];
        VelkCompute::LinePoint& point = points[i];
        // One periodic correction only: points within the domain and just
        // beyond its border map onto the image.
        float xw = p.x;
        float yw = p.y;
        if (xw < 0.0f) {
            xw = p.x + f.xMax;
        } else if (xw > f.xMax) {
            xw = p.x - f.xMax;
        }
        if (yw < 0.0f) {
            yw = p.y + f.yMax;
        } else if (yw > f.yMax) {
            yw = p.y - f.yMax;
        }
        if (xw >= 0.0f && xw <= f.xMax && yw >= 0.0f && yw <= f.yMax) {
            int px = static_cast<int>(f.xScale * xw);
            int py = static_cast<int>(f.yScale * yw);
            // xScale * xMax may round up to width on a field much finer than the image.
            if (px >= f.width) px = f.width - 1;
            if (py >= f.height) py = f.height - 1;
            point.pixel = px + py * f.width;
            if (kSubPixels) {
                const int N = f.subPixels;
                point.subPixel = static_cast<int>(f.xScale * N * xw) % N +
                                 N * (static_cast<int>(f.yScale * N * yw) % N);
            } else {
                point.subPixel = 0;
            }
        } else {
            // Far off the domain (extrapolated ends, NaN): the spare cell behind
            // the image, which no output pixel reads.
            point.pixel = spare;
            point.subPixel = 0;
        }
        int* out = samples + static_cast<std::ptrdiff_t>(i) * f.channels;
        const float tx = p.x * f.xScale;
        const float ty = p.y * f.yScale;
        if (kLookup == kLookupBilinear1) {
            bilinearOne(f.texture, tx, ty, out);
        } else if (kLookup == kLookupConst1) {
            constOne(f.texture, tx, ty, out);
        } else {
            f.getPixel(f.input, tx, ty, out);
        }
    }
}

template <LookupKind kLookup>
void fillRecords(const RecordFill& f, const Vec2f* positions, VelkCompute::LinePoint* points,
                 int* samples, int lo, int hi) {
    if (f.subPixels == 1) {
        fillRecords<kLookup, false>(f, positions, points, samples, lo, hi);
    } else {
        fillRecords<kLookup, true>(f, positions, points, samples, lo, hi);
    }
}

}  // namespace

void VelkCompute::getPixelConst1(VelkImage* image, float x, float y, int* out) {
    constOne(textureOf(image), x, y, out);
}

void VelkCompute::getPixelConstN(VelkImage* image, float x, float y, int* out) {
    constN(textureOf(image), x, y, out);
}

void VelkCompute::getPixelBilinear1(VelkImage* image, float x, float y, int* out) {
    bilinearOne(textureOf(image), x, y, out);
}

void VelkCompute::getPixelBilinearN(VelkImage* image, float x, float y, int* out) {
    bilinearN(textureOf(image), x, y, out);
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
    const float vx = bilinear(n00->x, n10->x, n01->x, n11->x, fx, fy);
    const float vy = bilinear(n00->y, n10->y, n01->y, n11->y, fx, fy);
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

    // The filter part is traced whatever the status: past the end of the line
    // the integrators extrapolate. An extension step is taken only while the
    // output point it completes (nFilter records behind) is valid.
    for (int k = 1; k <= n; k++) positions[c + k] = forward->next(points[c + k].status);
    int ahead = 0;
    while (ahead < nExtension && points[c + 1 + ahead].status == 0) {
        const int i = c + n + 1 + ahead;
        positions[i] = forward->next(points[i].status);
        ahead++;
    }
    for (int k = 1; k <= n; k++) positions[c - k] = backward->next(points[c - k].status);
    int behind = 0;
    while (behind < nExtension && points[c - 1 - behind].status == 0) {
        const int i = c - n - 1 - behind;
        positions[i] = backward->next(points[i].status);
        behind++;
    }
    const int lo = c - n - behind;
    const int hi = c + n + ahead;

    // The records are filled after the tracing: the loop keeps the engine's
    // scales in registers instead of reloading them around every call.
    const RecordFill fill = {xMax,         yMax,      xScale, yScale,           width,   height,
                             numSubPixels, nChannels, input,  textureOf(input), getPixel};
    if (getPixel == getPixelBilinear1) {
        fillRecords<kLookupBilinear1>(fill, positions, points, samples, lo, hi);
    } else if (getPixel == getPixelConst1) {
        fillRecords<kLookupConst1>(fill, positions, points, samples, lo, hi);
    } else {
        fillRecords<kLookupPointer>(fill, positions, points, samples, lo, hi);
    }

    const std::int64_t wide = n;
    switch (filterKernel) {
        case BOX:
            convolveKernel<0>(samples, sums, points, accum, cellStride, numSubCells, nChannels, c,
                              lo, hi, n, 2 * wide);
            break;
        case TRIANGLE:
            convolveKernel<1>(samples, sums, points, accum, cellStride, numSubCells, nChannels, c,
                              lo, hi, n, wide * wide);
            break;
        case CUBIC: {
            // m cubed, as 8 n^3 / 27; 0 only if the kernel changed after start().
            const std::int64_t divisor = 8 * wide * wide * wide / 27;
            if (divisor > 0) {
                convolveKernel<2>(samples, sums, points, accum, cellStride, numSubCells, nChannels,
                                  c, lo, hi, n, divisor);
            }
            break;
        }
        default:
            break;
    }
}
