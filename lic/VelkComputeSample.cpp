#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <typeinfo>

#include <velk/RK43.h>
#include <velk/RKCK.h>
#include <velk/RKDP.h>
#include <velk/VelkCompute.h>
#include <velk/VelkImage.h>
#include <velk/VelkIntegrator.h>
#include <velk/VelkVectorField.h>
#include "AdaptiveCursor.h"
#include "bilinear.h"
#include "forceinline.h"
#include "midpointstep.h"
#include "periodic.h"

namespace {

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
// is not finite). Pixels lie `step` bytes apart within a row.
VELK_ALWAYS_INLINE const unsigned char* texel(const Texture& t, float x, float y, float& fx,
                                              float& fy, int step) {
    // Most points lie within the first period and need no wrapping.
    if (!(x >= 0.0f && x < t.periodX) && !velk::wrapPeriodic(x, t.periodX)) return nullptr;
    if (!(y >= 0.0f && y < t.periodY) && !velk::wrapPeriodic(y, t.periodY)) return nullptr;
    const int ix = static_cast<int>(x);
    const int iy = static_cast<int>(y);
    fx = x - static_cast<float>(ix);
    fy = y - static_cast<float>(iy);
    return t.data + static_cast<std::ptrdiff_t>(iy) * t.bytesPerLine +
           static_cast<std::ptrdiff_t>(ix) * step;
}

// Bytes from one pixel to the next as a lookup addresses them: nChannels, but
// the one-channel constant lookup reads the bytes of a row one by one.
template <bool kBilinear, int kChannels>
inline int pixelStep(const Texture& t) {
    return !kBilinear && kChannels == 1 ? 1 : t.nChannels;
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
        out[ch] =
            static_cast<int>(velk::bilinear(p[ch], p[ch + right], q[ch], q[ch + right], fx, fy));
    }
}

template <bool kBilinear, int kChannels>
VELK_ALWAYS_INLINE void lookup(const Texture& t, float x, float y, int* out) {
    float fx = 0.0f, fy = 0.0f;
    const unsigned char* p = texel(t, x, y, fx, fy, pixelStep<kBilinear, kChannels>(t));
    readTexel<kBilinear, kChannels>(t, p, fx, fy, out);
}

// One line's convolution: the texture values T of records lo .. hi, the centre
// c, the kernel half-length n and the kernel's divisor.
struct LineSums {
    int* T;
    std::int64_t* S;  // wide running sums; the narrow ones replace T in place
    const VelkCompute::LinePoint* points;
    int* accum;
    int cellStride, numSubCells, channels;
    int c, lo, hi, n;
    std::int64_t divisor;
};

// Exact integer division of numerators below 2^31 by a divisor d from 1 to
// 2^23: with l the smallest number such that 2^l >= d, shift = 31 + l and
// magic = ceil(2^shift / d) (at most 2^32), num * magic / 2^shift lies within
// 2^-l <= 1/d above num / d, which never reaches the next integer; the product
// stays below 2^63.
struct Reciprocal {
    std::uint64_t magic;
    int shift;

    explicit Reciprocal(std::uint32_t d) {
        int l = 0;
        while ((std::uint64_t{1} << l) < d) l++;
        shift = 31 + l;
        magic = ((std::uint64_t{1} << shift) + d - 1) / d;
    }
    std::uint32_t divide(std::uint32_t num) const {
        return static_cast<std::uint32_t>((num * magic) >> shift);
    }
};

// Kernel output from the running sums at i - n, i and i + n (and i - n + m,
// i + n - m for the cubic kernel, m = 2n / 3), in the sums' own type.
template <int kKernel, class Sum>
inline Sum kernelNumerator(const Sum* back, const Sum* centre, const Sum* ahead, int mOffset) {
    if (kKernel == 0) return *ahead - *back;
    if (kKernel == 1) return *ahead + *back - 2 * *centre;
    return *ahead - *back + 3 * (back[mOffset] - ahead[-mOffset]);
}

// Running sums of T along a line, anchored at the centre (S[c] = 0),
// integrated once (box), twice (triangle) or three times (cubic); then the
// kernel outputs of every output record, accumulated into its cell. kChannels
// 0 means the channel count is only known at run time.
//
// Wide: 64-bit sums in S and 64-bit division, for any values and lengths.
// Narrow: the sums modulo 2^32 overwrite T, and the quotients come from the
// reciprocal. The caller takes it only when the texture values are bytes and
// the kernel's weights are non-negative and sum to the divisor, so that every
// numerator lies in [0, 256 * divisor) and 256 * divisor <= 2^31: numerators
// computed modulo 2^32 are then exact.
template <int kKernel, int kChannels, bool kNarrow>
void convolveLine(const LineSums& line, const Reciprocal& reciprocal) {
    typedef typename std::conditional<kNarrow, std::uint32_t, std::int64_t>::type Sum;
    const int nch = kChannels != 0 ? kChannels : line.channels;
    const int c = line.c, lo = line.lo, hi = line.hi, n = line.n;
    const int* T = line.T;
    Sum* S = kNarrow ? reinterpret_cast<Sum*>(line.T) : reinterpret_cast<Sum*>(line.S);
    for (int ch = 0; ch < nch; ch++) {
        // Backwards first: in place, T[i + 1] is read before S[i + 1] replaces it.
        Sum s1 = 0, s2 = 0, s3 = 0;
        Sum next = static_cast<Sum>(T[c * nch + ch]);
        for (int i = c - 1; i >= lo; i--) {
            const Sum t = static_cast<Sum>(T[i * nch + ch]);
            s3 -= s2;
            s2 -= s1;
            s1 -= next;
            next = t;
            S[i * nch + ch] = kKernel == 0 ? s1 : kKernel == 1 ? s2 : s3;
        }
        s1 = s2 = s3 = 0;
        S[c * nch + ch] = 0;
        for (int i = c + 1; i <= hi; i++) {
            s1 += static_cast<Sum>(T[i * nch + ch]);
            s2 += s1;
            s3 += s2;
            S[i * nch + ch] = kKernel == 0 ? s1 : kKernel == 1 ? s2 : s3;
        }
    }

    const int mOffset = 2 * n / 3 * nch;
    for (int i = lo + n; i <= hi - n; i++) {
        const VelkCompute::LinePoint& point = line.points[i];
        int* cell = line.accum + static_cast<std::ptrdiff_t>(point.pixel) * line.cellStride;
        cell[point.subPixel]++;
        int* channelSums = cell + line.numSubCells;
        const Sum* back = S + (i - n) * nch;
        const Sum* centre = S + i * nch;
        const Sum* ahead = S + (i + n) * nch;
        for (int ch = 0; ch < nch; ch++) {
            const Sum numerator =
                kernelNumerator<kKernel>(back + ch, centre + ch, ahead + ch, mOffset);
            if (kNarrow) {
                channelSums[ch] += static_cast<int>(reciprocal.divide(numerator));
            } else {
                channelSums[ch] += static_cast<int>(numerator / line.divisor);
            }
        }
    }
}

template <int kKernel, bool kNarrow>
void convolveChannels(const LineSums& line, const Reciprocal& reciprocal) {
    if (line.channels == 1) {
        convolveLine<kKernel, 1, kNarrow>(line, reciprocal);
    } else if (line.channels == 3) {
        convolveLine<kKernel, 3, kNarrow>(line, reciprocal);
    } else {
        convolveLine<kKernel, 0, kNarrow>(line, reciprocal);
    }
}

template <int kKernel>
void convolveKernel(const LineSums& line, bool bytes) {
    const bool narrow = bytes && line.divisor <= (std::int64_t{1} << 23);
    const Reciprocal reciprocal(narrow ? static_cast<std::uint32_t>(line.divisor) : 1);
    if (narrow) {
        convolveChannels<kKernel, true>(line, reciprocal);
    } else {
        convolveChannels<kKernel, false>(line, reciprocal);
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
    const int* accum;
    int cellStride;
};

enum LookupKind {
    kLookupPointer,
    kLookupBilinear1,
    kLookupConst1,
    kLookupBilinearN,
    kLookupConstN
};

template <bool kSubPixels>
VELK_ALWAYS_INLINE int subPixelOf(const RecordFill& f, float xw, float yw) {
    if (!kSubPixels) return 0;
    const int N = f.subPixels;
    return static_cast<int>(f.xScale * N * xw) % N + N * (static_cast<int>(f.yScale * N * yw) % N);
}

// Fills one record from its traced position p: the output pixel and sub-pixel
// the point falls in (only for output records, kPixels), and the texture
// value(s) there.
template <LookupKind kLookup, bool kSubPixels, bool kPixels>
VELK_ALWAYS_INLINE void fillRecord(const RecordFill& f, Vec2f p, VelkCompute::LinePoint& point,
                                   int* out) {
    constexpr bool kBilinear = kLookup == kLookupBilinear1 || kLookup == kLookupBilinearN;
    constexpr int kChannels = kLookup == kLookupBilinear1 || kLookup == kLookupConst1 ? 1 : 0;
    const Texture& t = f.texture;
    const float tx = p.x * f.xScale;
    const float ty = p.y * f.yScale;
    if (!kPixels) {
        if (kLookup == kLookupPointer) {
            f.getPixel(f.input, tx, ty, out);
        } else {
            lookup<kBilinear, kChannels>(t, tx, ty, out);
        }
        return;
    }

    // Inside the field and within the first texture period, the usual case:
    // neither position wraps, and the texel is the output pixel (trunc(xScale
    // * x) both times, below width - 1).
    if (kLookup != kLookupPointer && p.x >= 0.0f && p.x <= f.xMax && p.y >= 0.0f && p.y <= f.yMax &&
        tx < t.periodX && ty < t.periodY) {
        const int ix = static_cast<int>(tx);
        const int iy = static_cast<int>(ty);
        point.pixel = ix + iy * f.width;
        // The convolution adds to this cell once the line is filled.
        __builtin_prefetch(f.accum + static_cast<std::ptrdiff_t>(point.pixel) * f.cellStride, 1);
        point.subPixel = subPixelOf<kSubPixels>(f, p.x, p.y);
        const float fx = tx - static_cast<float>(ix);
        const float fy = ty - static_cast<float>(iy);
        const unsigned char* q =
            t.data + static_cast<std::ptrdiff_t>(iy) * t.bytesPerLine +
            static_cast<std::ptrdiff_t>(ix) * pixelStep<kBilinear, kChannels>(t);
        readTexel<kBilinear, kChannels>(t, q, fx, fy, out);
        return;
    }

    // One periodic correction only: points within the domain and just beyond
    // its border map onto the image.
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
        point.subPixel = subPixelOf<kSubPixels>(f, xw, yw);
    } else {
        // Far off the domain (extrapolated ends, NaN): the spare cell behind
        // the image, which no output pixel reads.
        point.pixel = f.width * f.height;
        point.subPixel = 0;
    }
    if (kLookup == kLookupPointer) {
        f.getPixel(f.input, tx, ty, out);
    } else {
        lookup<kBilinear, kChannels>(t, tx, ty, out);
    }
}

typedef float Float4 __attribute__((vector_size(16)));
typedef int Int4 __attribute__((vector_size(16)));

inline Float4 splat(float v) {
    return Float4{v, v, v, v};
}

inline Int4 splat(int v) {
    return Int4{v, v, v, v};
}

inline Float4 select(Int4 mask, Float4 a, Float4 b) {
    return reinterpret_cast<Float4>((mask & reinterpret_cast<Int4>(a)) |
                                    (~mask & reinterpret_cast<Int4>(b)));
}

inline Int4 select(Int4 mask, Int4 a, Int4 b) {
    return (mask & a) | (~mask & b);
}

inline bool allOf(Int4 mask) {
    return (mask[0] & mask[1] & mask[2] & mask[3]) != 0;
}

// Below 2^24, integers and their sums and products are exact in single
// precision: fillFour forms pixel indices and texel offsets as floats where
// they stay below.
const double kExactFloatInts = 16777216.0;

// What fillFour needs, in all four lanes, set up once per line.
struct Lanes {
    Float4 xScale, yScale, xMax, yMax, periodX, periodY, twoPeriodsX, twoPeriodsY;
    Float4 width, rowBytes, channels;
    Int4 widthInt, heightInt, spare;
    bool wrappable;     // both periods positive
    bool smallOffsets;  // every texel offset below 2^24 (else 64-bit offsets)

    explicit Lanes(const RecordFill& f)
        : xScale(splat(f.xScale)),
          yScale(splat(f.yScale)),
          xMax(splat(f.xMax)),
          yMax(splat(f.yMax)),
          periodX(splat(f.texture.periodX)),
          periodY(splat(f.texture.periodY)),
          twoPeriodsX(splat(2.0f * f.texture.periodX)),
          twoPeriodsY(splat(2.0f * f.texture.periodY)),
          width(splat(static_cast<float>(f.width))),
          rowBytes(splat(static_cast<float>(f.texture.bytesPerLine))),
          channels(splat(static_cast<float>(f.texture.nChannels))),
          widthInt(splat(f.width)),
          heightInt(splat(f.height)),
          spare(splat(f.width * f.height)),
          wrappable(f.texture.periodX > 0.0f && f.texture.periodY > 0.0f) {
        const Texture& t = f.texture;
        smallOffsets = t.bytesPerLine >= 0 && t.nChannels >= 0 &&
                       static_cast<double>(t.bytesPerLine) * (t.periodY + 2.0) +
                               static_cast<double>(t.nChannels) * (t.periodX + 2.0) <
                           kExactFloatInts;
    }
};

// Whether fillFour serves the image: fewer than 2^24 output pixels.
inline bool smallImage(const RecordFill& f) {
    return static_cast<double>(f.width) * f.height + 1.0 < kExactFloatInts;
}

// The second half of fillFour: output pixels (kPixels; with, for lanes inside
// the domain, the sub-pixels of the positions xw, yw) and the texture values
// at (tx, ty), already wrapped into the first period.
template <bool kBilinear, bool kSubPixels, bool kPixels>
VELK_ALWAYS_INLINE void finishFour(const RecordFill& f, const Lanes& l, Int4 pixel, Int4 inside,
                                   Float4 xw, Float4 yw, Float4 tx, Float4 ty,
                                   VelkCompute::LinePoint* points, int* out) {
    const Texture& t = f.texture;
    const Int4 ix = __builtin_convertvector(tx, Int4);
    const Int4 iy = __builtin_convertvector(ty, Int4);
    const Float4 column = __builtin_convertvector(ix, Float4);
    const Float4 row = __builtin_convertvector(iy, Float4);
    const Float4 fx = tx - column;
    const Float4 fy = ty - row;
    std::ptrdiff_t offset[4];
    if (l.smallOffsets) {
        const Int4 small = __builtin_convertvector(row * l.rowBytes + column * l.channels, Int4);
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
        const Float4 P00 = __builtin_convertvector(low & byte, Float4);
        const Float4 P10 = __builtin_convertvector(low >> 8, Float4);
        const Float4 P01 = __builtin_convertvector(high & byte, Float4);
        const Float4 P11 = __builtin_convertvector(high >> 8, Float4);
        values = __builtin_convertvector(
            P00 + (P10 - P00) * fx + (P01 - P00) * fy + fx * fy * (P00 - P01 - P10 + P11), Int4);
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
    Float4 a, b;
    std::memcpy(&a, positions, sizeof a);
    std::memcpy(&b, positions + 2, sizeof b);
    const Float4 x = __builtin_shufflevector(a, b, 0, 2, 4, 6);
    const Float4 y = __builtin_shufflevector(a, b, 1, 3, 5, 7);
    const Float4 tx = x * l.xScale;
    const Float4 ty = y * l.yScale;
    const Float4 zero = {};
    const Int4 yes = splat(-1);
    if (kPixels) {
        if (allOf((x >= zero) & (x <= l.xMax) & (y >= zero) & (y <= l.yMax) & (tx < l.periodX) &
                  (ty < l.periodY))) {
            // No wrapping, and the texel is the output pixel.
            const Float4 pixel =
                __builtin_convertvector(__builtin_convertvector(ty, Int4), Float4) * l.width +
                __builtin_convertvector(__builtin_convertvector(tx, Int4), Float4);
            finishFour<kBilinear, kSubPixels, true>(f, l, __builtin_convertvector(pixel, Int4), yes,
                                                    x, y, tx, ty, points, out);
            return true;
        }
    } else if (allOf((tx >= zero) & (tx < l.periodX) & (ty >= zero) & (ty < l.periodY))) {
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
    u = select(u < zero, u + l.periodX, u);
    u = select(u < zero, u + l.periodX, u);
    u = select(u >= l.periodX, u - l.periodX, u);
    v = select(v < zero, v + l.periodY, v);
    v = select(v < zero, v + l.periodY, v);
    v = select(v >= l.periodY, v - l.periodY, v);
    if (!kPixels) {
        finishFour<kBilinear, kSubPixels, false>(f, l, yes, yes, x, y, u, v, points, out);
        return true;
    }

    // One periodic correction of the position for the output pixel.
    const Float4 xw = select(x < zero, x + l.xMax, select(x > l.xMax, x - l.xMax, x));
    const Float4 yw = select(y < zero, y + l.yMax, select(y > l.yMax, y - l.yMax, y));
    const Int4 inside = (xw >= zero) & (xw <= l.xMax) & (yw >= zero) & (yw <= l.yMax);
    Int4 px = __builtin_convertvector(select(inside, l.xScale * xw, zero), Int4);
    Int4 py = __builtin_convertvector(select(inside, l.yScale * yw, zero), Int4);
    const Int4 one = splat(1);
    px = select(px >= l.widthInt, l.widthInt - one, px);
    py = select(py >= l.heightInt, l.heightInt - one, py);
    const Float4 pixel =
        __builtin_convertvector(py, Float4) * l.width + __builtin_convertvector(px, Float4);
    finishFour<kBilinear, kSubPixels, true>(
        f, l, select(inside, __builtin_convertvector(pixel, Int4), l.spare), inside, xw, yw, u, v,
        points, out);
    return true;
}

// Fills records lo .. hi from the traced positions. Only the output records,
// first .. last, need their output pixels; the others only feed the kernel
// with their texture values.
template <LookupKind kLookup, bool kSubPixels>
void fillRecords(const RecordFill& f, const Vec2f* positions, VelkCompute::LinePoint* points,
                 int* samples, int lo, int first, int last, int hi) {
    constexpr bool kBilinear = kLookup == kLookupBilinear1;
    int i = lo;
    if ((kLookup == kLookupBilinear1 || kLookup == kLookupConst1) && f.channels == 1 &&
        f.texture.nChannels == 1 && smallImage(f)) {
        const Lanes lanes(f);
        for (; i + 3 <= hi; i += 4) {
            const bool pixels = i + 3 >= first && i <= last;
            if (pixels ? fillFour<kBilinear, kSubPixels, true>(f, lanes, positions + i, points + i,
                                                               samples + i)
                       : fillFour<kBilinear, kSubPixels, false>(f, lanes, positions + i, points + i,
                                                                samples + i)) {
                continue;
            }
            for (int k = i; k < i + 4; k++) {
                fillRecord<kLookup, kSubPixels, true>(f, positions[k], points[k], samples + k);
            }
        }
    }
    for (; i <= hi; i++) {
        int* out = samples + static_cast<std::ptrdiff_t>(i) * f.channels;
        if (i >= first && i <= last) {
            fillRecord<kLookup, kSubPixels, true>(f, positions[i], points[i], out);
        } else {
            fillRecord<kLookup, kSubPixels, false>(f, positions[i], points[i], out);
        }
    }
}

template <LookupKind kLookup>
void fillRecords(const RecordFill& f, const Vec2f* positions, VelkCompute::LinePoint* points,
                 int* samples, int lo, int first, int last, int hi) {
    if (f.subPixels == 1) {
        fillRecords<kLookup, false>(f, positions, points, samples, lo, first, last, hi);
    } else {
        fillRecords<kLookup, true>(f, positions, points, samples, lo, first, last, hi);
    }
}

// One side of a line, records centre + kDir * k for k = 1, 2, ..., traced one
// record per step(): the filter part whatever the status (past the end of the
// line the integrators extrapolate), then an extension step only while the
// output point it completes, nFilter records behind, is valid.
template <int kDir, class Next>
class SideTrace {
  public:
    SideTrace(Next next, Vec2f* centre, VelkCompute::LinePoint* points, int n, int nExtension)
        : next(next), centre(centre), points(points), n(n), nExtension(nExtension) {}

    // Traces one more record; false once the side is complete.
    VELK_ALWAYS_INLINE bool step() {
        if (k > n) {
            if (!(extension < nExtension && points[kDir * (1 + extension)].status == 0)) {
                return false;
            }
            extension++;
        }
        centre[kDir * k] = next(points[kDir * k].status);
        k++;
        return true;
    }
    // The whole side.
    VELK_ALWAYS_INLINE void run() {
        while (step()) {
        }
    }
    int extensionSteps() const { return extension; }

  private:
    Next next;
    Vec2f* centre;
    VelkCompute::LinePoint* points;
    int n, nExtension;
    int k = 1;
    int extension = 0;
};

template <int kDir, class Next>
SideTrace<kDir, Next> sideTrace(Next next, Vec2f* centre, VelkCompute::LinePoint* points, int n,
                                int nExtension) {
    return SideTrace<kDir, Next>(next, centre, points, n, nExtension);
}

enum IntegratorKind { kGeneric, kAdaptive, kMidpoint };

IntegratorKind kindOf(const VelkIntegrator& integrator) {
    const std::type_info& type = typeid(integrator);
    if (type == typeid(RK43) || type == typeid(RKCK) || type == typeid(RKDP)) return kAdaptive;
    if (type == typeid(Midpoint)) return kMidpoint;
    return kGeneric;
}

// Both sides of a line; sets the extension steps of each. The engine's own
// integrators are stepped without a virtual call per point, any other
// integrator through next().
void traceLine(VelkIntegrator& forward, VelkIntegrator& backward, Vec2f* centre,
               VelkCompute::LinePoint* points, int n, int nExtension, int& ahead, int& behind) {
    const IntegratorKind kind = kindOf(forward);
    if (kind == kAdaptive && kindOf(backward) == kAdaptive && &forward != &backward) {
        velk::AdaptiveCursor f(static_cast<AdaptiveIntegrator&>(forward));
        velk::AdaptiveCursor b(static_cast<AdaptiveIntegrator&>(backward));
        auto ahead_ = sideTrace<+1>([&](int& status) { return f.next(status); }, centre, points, n,
                                    nExtension);
        ahead_.run();
        auto behind_ = sideTrace<-1>([&](int& status) { return b.next(status); }, centre, points, n,
                                     nExtension);
        behind_.run();
        f.finish();
        b.finish();
        ahead = ahead_.extensionSteps();
        behind = behind_.extensionSteps();
    } else if (kind == kMidpoint && kindOf(backward) == kMidpoint && &forward != &backward) {
        Midpoint& f = static_cast<Midpoint&>(forward);
        Midpoint& b = static_cast<Midpoint&>(backward);
        auto ahead_ = sideTrace<+1>(
            [&](int& status) {
                velk::midpointStep(f);
                status = f.status;
                return f.pos;
            },
            centre, points, n, nExtension);
        auto behind_ = sideTrace<-1>(
            [&](int& status) {
                velk::midpointStep(b);
                status = b.status;
                return b.pos;
            },
            centre, points, n, nExtension);
        // Each midpoint step is a chain of dependent operations; stepping the
        // two independent sides in turn lets the processor overlap them.
        bool moreAhead = true, moreBehind = true;
        while (moreAhead && moreBehind) {
            moreAhead = ahead_.step();
            moreBehind = behind_.step();
        }
        if (moreAhead) ahead_.run();
        if (moreBehind) behind_.run();
        ahead = ahead_.extensionSteps();
        behind = behind_.extensionSteps();
    } else {
        auto ahead_ = sideTrace<+1>([&](int& status) { return forward.next(status); }, centre,
                                    points, n, nExtension);
        ahead_.run();
        auto behind_ = sideTrace<-1>([&](int& status) { return backward.next(status); }, centre,
                                     points, n, nExtension);
        behind_.run();
        ahead = ahead_.extensionSteps();
        behind = behind_.extensionSteps();
    }
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
    traceLine(*forward, *backward, positions + c, points + c, n, nExtension, ahead, behind);
    const int lo = c - n - behind;
    const int hi = c + n + ahead;

    // The records are filled after the tracing: the loop keeps the engine's
    // scales in registers instead of reloading them around every call.
    const RecordFill fill = {xMax,     yMax,         xScale,    yScale, width,
                             height,   numSubPixels, nChannels, input,  textureOf(input),
                             getPixel, accum,        cellStride};
    if (getPixel == getPixelBilinear1) {
        fillRecords<kLookupBilinear1>(fill, positions, points, samples, lo, lo + n, hi - n, hi);
    } else if (getPixel == getPixelConst1) {
        fillRecords<kLookupConst1>(fill, positions, points, samples, lo, lo + n, hi - n, hi);
    } else if (getPixel == getPixelBilinearN) {
        fillRecords<kLookupBilinearN>(fill, positions, points, samples, lo, lo + n, hi - n, hi);
    } else if (getPixel == getPixelConstN) {
        fillRecords<kLookupConstN>(fill, positions, points, samples, lo, lo + n, hi - n, hi);
    } else {
        fillRecords<kLookupPointer>(fill, positions, points, samples, lo, lo + n, hi - n, hi);
    }

    // The library's lookups deliver bytes; a host's own may not.
    const bool bytes = getPixel == getPixelBilinear1 || getPixel == getPixelConst1 ||
                       getPixel == getPixelBilinearN || getPixel == getPixelConstN;
    LineSums line = {samples,   sums, points, accum, cellStride, numSubCells,
                     nChannels, c,    lo,     hi,    n,          0};
    const std::int64_t wide = n;
    switch (filterKernel) {
        case BOX:
            line.divisor = 2 * wide;
            convolveKernel<0>(line, bytes);
            break;
        case TRIANGLE:
            line.divisor = wide * wide;
            convolveKernel<1>(line, bytes);
            break;
        case CUBIC:
            // m cubed, as 8 n^3 / 27; 0 only if the kernel changed after start().
            // Only for n a multiple of 3 are the weights those of the cubic
            // bell, summing to the divisor.
            line.divisor = 8 * wide * wide * wide / 27;
            if (line.divisor > 0) convolveKernel<2>(line, bytes && n % 3 == 0);
            break;
        default:
            break;
    }
}
