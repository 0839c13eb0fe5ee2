#ifndef VELK_FIELDS_REPEATEDADD_H
#define VELK_FIELDS_REPEATEDADD_H

#include <cmath>
#include <cstring>

namespace velk {

namespace detail {

inline bool sameBits(float a, float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The stretch of values around v on which float addition rounds to one
// uniform grid of spacing u: v's binade, or below 2^-125 the whole band of
// subnormals and smallest normals on both sides of zero.
inline void uniformStretch(float v, double& lo, double& hi, double& u) {
    const double band = std::ldexp(1.0, -125);
    double a = std::fabs(static_cast<double>(v));
    if (a < band) {
        lo = -band;
        hi = band;
        u = std::ldexp(1.0, -149);
        return;
    }
    int e;
    std::frexp(a, &e);  // a in [2^(e-1), 2^e)
    u = std::ldexp(1.0, e - 24);
    if (v > 0.0f) {
        lo = std::ldexp(1.0, e - 1);
        hi = std::ldexp(1.0, e);
    } else {
        lo = -std::ldexp(1.0, e);
        hi = -std::ldexp(1.0, e - 1);
    }
}

}  // namespace detail

// The value of x after k repetitions of the float addition x = x + d, bit for
// bit, in far fewer than k operations when k is large. Within a stretch where
// the sums round to one grid of spacing u, every step after the first adds
// the same multiple of u (a tie to even settles the last bit after one step),
// so the steps of a stretch are taken in one multiplication, exact in double.
inline float addRepeatedly(float x, float d, long long k) {
    while (k > 0) {
        float x1 = x + d;
        k--;
        if (detail::sameBits(x1, x) || (std::isnan(x1) && std::isnan(x))) return x1;
        x = x1;
        if (k < 2 || !std::isfinite(x)) continue;

        // Two more plain steps: the second of them is the settled step s.
        float x2 = x + d;
        float x3 = x2 + d;
        k -= 2;
        if (!std::isfinite(x3)) {
            x = x3;
            continue;
        }
        double lo, hi, u;
        detail::uniformStretch(x3, lo, hi, u);
        const double ad = std::fabs(static_cast<double>(d));
        // Values from which a sum cannot leave the stretch.
        const double first = lo + ad + 2 * u;
        const double last = hi - ad - 2 * u;
        const double x1d = x, x2d = x2, x3d = x3;
        if (x1d < first || x1d > last || x2d < first || x2d > last) {
            x = x3;
            continue;
        }
        const double s = x3d - x2d;
        if (s == 0.0) return x3;
        double room = s > 0.0 ? (last - x3d) / s : (x3d - first) / -s;
        long long j = room >= 0.0 ? static_cast<long long>(std::floor(room)) + 1 : 0;
        if (j > k) j = k;
        x = static_cast<float>(x3d + static_cast<double>(j) * s);
        k -= j;
    }
    return x;
}

}  // namespace velk

#endif
