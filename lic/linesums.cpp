#include "linesums.h"

#include <cstddef>
#include <type_traits>

#include "forceinline.h"

namespace velk {
namespace {

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

// Running sums of value(i) over records lo .. hi into S[i * stride],
// anchored at the centre (S[c] = 0), integrated once (box), twice (triangle)
// or three times (cubic). S may overwrite the values in place: each value is
// read before its sum is written.
template <int kKernel, class Sum, class Value>
VELK_ALWAYS_INLINE void runningSums(Value value, Sum* S, int stride, int c, int lo, int hi) {
    // Backwards first: in place, value(i + 1) is read before S[i + 1] replaces it.
    Sum s1 = 0, s2 = 0, s3 = 0;
    Sum next = value(c);
    for (int i = c - 1; i >= lo; i--) {
        const Sum t = value(i);
        s3 -= s2;
        s2 -= s1;
        s1 -= next;
        next = t;
        S[i * stride] = kKernel == 0 ? s1 : kKernel == 1 ? s2 : s3;
    }
    s1 = s2 = s3 = 0;
    S[c * stride] = 0;
    for (int i = c + 1; i <= hi; i++) {
        s1 += value(i);
        s2 += s1;
        s3 += s2;
        S[i * stride] = kKernel == 0 ? s1 : kKernel == 1 ? s2 : s3;
    }
}

// Counts a hit of an output point and returns where its `values` sums go: its
// cell, or with a zone that does not contain it a deferred entry; null when
// the entry cannot be had.
template <bool kZoned>
VELK_ALWAYS_INLINE int* outputSums(const LineSums& line, const VelkCompute::LinePoint& point,
                                   int values) {
    if (!kZoned || line.zone->contains(point.pixel)) {
        int* cell = line.accum + static_cast<std::ptrdiff_t>(point.pixel) * line.cellStride;
        cell[point.subPixel]++;
        return cell + line.numSubCells;
    }
    int* entry = line.deferred->append(2 + static_cast<std::size_t>(values));
    if (!entry) return nullptr;
    entry[0] = point.pixel;
    entry[1] = point.subPixel;
    return entry + 2;
}

// The running sums of T along a line, then the kernel outputs of every output
// record, accumulated into its cell. kChannels 0 means the channel count is
// only known at run time.
//
// Wide: 64-bit sums in S and 64-bit division, for any values and lengths.
// Narrow: the sums modulo 2^32 overwrite T, and the quotients come from the
// reciprocal. The caller takes it only when the texture values are bytes and
// the kernel's weights are non-negative and sum to the divisor, so that every
// numerator lies in [0, 256 * divisor) and 256 * divisor <= 2^31: numerators
// computed modulo 2^32 are then exact.
template <int kKernel, int kChannels, bool kNarrow, bool kZoned>
void convolve(const LineSums& line, std::int64_t divisor, const Reciprocal& reciprocal) {
    typedef typename std::conditional<kNarrow, std::uint32_t, std::int64_t>::type Sum;
    const int nch = kChannels != 0 ? kChannels : line.channels;
    const int c = line.c, lo = line.lo, hi = line.hi, n = line.n;
    const int* T = line.T;
    Sum* S = kNarrow ? reinterpret_cast<Sum*>(line.T) : reinterpret_cast<Sum*>(line.S);
    for (int ch = 0; ch < nch; ch++) {
        runningSums<kKernel>([=](int i) { return static_cast<Sum>(T[i * nch + ch]); }, S + ch, nch,
                             c, lo, hi);
    }

    const int mOffset = 2 * n / 3 * nch;
    for (int i = lo + n; i <= hi - n; i++) {
        int* channelSums = outputSums<kZoned>(line, line.points[i], nch);
        if (!channelSums) continue;
        const Sum* back = S + (i - n) * nch;
        const Sum* centre = S + i * nch;
        const Sum* ahead = S + (i + n) * nch;
        for (int ch = 0; ch < nch; ch++) {
            const Sum numerator =
                kernelNumerator<kKernel>(back + ch, centre + ch, ahead + ch, mOffset);
            if (kNarrow) {
                channelSums[ch] += static_cast<int>(reciprocal.divide(numerator));
            } else {
                channelSums[ch] += static_cast<int>(numerator / divisor);
            }
        }
    }
}

// The convolution of a line that ends: records outside first .. last count
// as absent, and each output is divided by the kernel weight it received
// (its running sums over the line's indicator, in `received`); the weight's
// share of the divisor, scaled to 1 .. 255, is added behind the channels.
template <int kKernel, bool kZoned>
void convolveEnding(const LineSums& line, std::int64_t divisor, int first, int last,
                    std::int64_t* received) {
    const int nch = line.channels;
    const int c = line.c, lo = line.lo, hi = line.hi, n = line.n;
    const int* T = line.T;
    std::int64_t* S = line.S;
    for (int ch = 0; ch < nch; ch++) {
        runningSums<kKernel>(
            [=](int i) { return i >= first && i <= last ? std::int64_t{T[i * nch + ch]} : 0; },
            S + ch, nch, c, lo, hi);
    }
    runningSums<kKernel>([first, last](int i) { return std::int64_t{i >= first && i <= last}; },
                         received, 1, c, lo, hi);

    const int m = 2 * n / 3;
    const int from = lo + n > first ? lo + n : first;
    const int to = hi - n < last ? hi - n : last;
    for (int i = from; i <= to; i++) {
        const std::int64_t weight =
            kernelNumerator<kKernel>(received + i - n, received + i, received + i + n, m);
        if (weight <= 0) continue;
        int* sums = outputSums<kZoned>(line, line.points[i], nch + 1);
        if (!sums) continue;
        const std::int64_t* back = S + (i - n) * nch;
        const std::int64_t* centre = S + i * nch;
        const std::int64_t* ahead = S + (i + n) * nch;
        for (int ch = 0; ch < nch; ch++) {
            sums[ch] += static_cast<int>(
                kernelNumerator<kKernel>(back + ch, centre + ch, ahead + ch, m * nch) / weight);
        }
        const std::int64_t share = weight * 255 / divisor;
        sums[nch] += share > 0 ? static_cast<int>(share) : 1;
    }
}

template <int kKernel, bool kNarrow, bool kZoned>
void convolveChannels(const LineSums& line, std::int64_t divisor, const Reciprocal& reciprocal) {
    if (line.channels == 1) {
        convolve<kKernel, 1, kNarrow, kZoned>(line, divisor, reciprocal);
    } else if (line.channels == 3) {
        convolve<kKernel, 3, kNarrow, kZoned>(line, divisor, reciprocal);
    } else {
        convolve<kKernel, 0, kNarrow, kZoned>(line, divisor, reciprocal);
    }
}

template <int kKernel, bool kNarrow>
void convolveZoned(const LineSums& line, std::int64_t divisor, const Reciprocal& reciprocal) {
    if (line.zone) {
        convolveChannels<kKernel, kNarrow, true>(line, divisor, reciprocal);
    } else {
        convolveChannels<kKernel, kNarrow, false>(line, divisor, reciprocal);
    }
}

template <int kKernel>
void convolveKernel(const LineSums& line, std::int64_t divisor, bool bytes) {
    const bool narrow = bytes && divisor <= (std::int64_t{1} << 23);
    const Reciprocal reciprocal(narrow ? static_cast<std::uint32_t>(divisor) : 1);
    if (narrow) {
        convolveZoned<kKernel, true>(line, divisor, reciprocal);
    } else {
        convolveZoned<kKernel, false>(line, divisor, reciprocal);
    }
}

template <int kKernel>
void convolveEndingZoned(const LineSums& line, std::int64_t divisor, int first, int last,
                         std::int64_t* received) {
    if (line.zone) {
        convolveEnding<kKernel, true>(line, divisor, first, last, received);
    } else {
        convolveEnding<kKernel, false>(line, divisor, first, last, received);
    }
}

// The divisor of a kernel of half-length n: the sum of its weights. The cubic
// kernel's is m cubed, 8 n^3 / 27 (0 only if the kernel changed after start());
// only for n a multiple of 3 are its weights those of the cubic bell, summing
// to it.
std::int64_t divisorOf(int kernel, std::int64_t n) {
    switch (kernel) {
        case 0:
            return 2 * n;
        case 1:
            return n * n;
        case 2:
            return 8 * n * n * n / 27;
        default:
            return 0;
    }
}

}  // namespace

void convolveEndingLine(const LineSums& line, int kernel, int first, int last,
                        std::int64_t* received) {
    const std::int64_t divisor = divisorOf(kernel, line.n);
    if (divisor <= 0) return;
    if (kernel == 0) convolveEndingZoned<0>(line, divisor, first, last, received);
    if (kernel == 1) convolveEndingZoned<1>(line, divisor, first, last, received);
    if (kernel == 2) convolveEndingZoned<2>(line, divisor, first, last, received);
}

void convolveLine(const LineSums& line, int kernel, bool bytes) {
    const std::int64_t divisor = divisorOf(kernel, line.n);
    if (divisor <= 0) return;
    if (kernel == 0) convolveKernel<0>(line, divisor, bytes);
    if (kernel == 1) convolveKernel<1>(line, divisor, bytes);
    if (kernel == 2) convolveKernel<2>(line, divisor, bytes && line.n % 3 == 0);
}

}  // namespace velk
