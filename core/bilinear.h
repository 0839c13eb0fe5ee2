#ifndef VELK_BILINEAR_H
#define VELK_BILINEAR_H

namespace velk {

// The bilinear blend of four corner values (p10 the x neighbour, p01 the row
// neighbour) used by the texture lookups, the seed direction and the grid
// sampling. The order of the terms is part of every result. F is a float or a
// vector of floats (lanes blended alike).
template <class F>
inline F bilinear(F p00, F p10, F p01, F p11, F fx, F fy) {
    return p00 + (p10 - p00) * fx + (p01 - p00) * fy + fx * fy * (p00 - p01 - p10 + p11);
}

inline float bilinear(float p00, float p10, float p01, float p11, float fx, float fy) {
    return bilinear<float>(p00, p10, p01, p11, fx, fy);
}

}  // namespace velk

#endif
