#include "linesums.h"

#include <cstddef>
#include <type_traits>

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
template <int kKernel, int kChannels, bool kNarrow, bool kZoned>
void convolve(const LineSums& line, std::int64_t divisor, const Reciprocal& reciprocal) {
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
        int* channelSums;
        if (!kZoned || line.zone->contains(point.pixel)) {
            int* cell = line.accum + static_cast<std::ptrdiff_t>(point.pixel) * line.cellStride;
            cell[point.subPixel]++;
            channelSums = cell + line.numSubCells;
        } else {
            int* entry = line.deferred->append(2 + nch);
            if (!entry) continue;
            entry[0] = point.pixel;
            entry[1] = point.subPixel;
            channelSums = entry + 2;
        }
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

}  // namespace

void convolveLine(const LineSums& line, int kernel, bool bytes) {
    const std::int64_t n = line.n;
    switch (kernel) {
        case 0:
            convolveKernel<0>(line, 2 * n, bytes);
            break;
        case 1:
            convolveKernel<1>(line, n * n, bytes);
            break;
        case 2: {
            // m cubed, as 8 n^3 / 27; 0 only if the kernel changed after start().
            // Only for n a multiple of 3 are the weights those of the cubic
            // bell, summing to the divisor.
            const std::int64_t divisor = 8 * n * n * n / 27;
            if (divisor > 0) convolveKernel<2>(line, divisor, bytes && n % 3 == 0);
            break;
        }
        default:
            break;
    }
}

}  // namespace velk
