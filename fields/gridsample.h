#ifndef VELK_FIELDS_GRIDSAMPLE_H
#define VELK_FIELDS_GRIDSAMPLE_H

#include "bilinear.h"

namespace velk {

// Bilinear sample at (sx, sy) of a width x height grid of N-float nodes stored
// row-major, x fastest. The x neighbour is the next column, or the previous one
// on the last column; the neighbour row likewise, so every sample uses four
// nodes of the grid. Positions are expected in [0, width-1] x [0, height-1];
// indices are clamped into the grid so that no other position reads outside
// it. The formula's order of operations is part of the result.
template <int N>
inline void sampleBilinear(const float* grid, int width, int height, float sx, float sy,
                           float* out) {
    int ix = static_cast<int>(sx);
    int iy = static_cast<int>(sy);
    float fx = sx - static_cast<float>(ix);
    float fy = sy - static_cast<float>(iy);
    if (ix > width - 1) ix = width - 1;
    if (ix < 0) ix = 0;
    if (iy > height - 1) iy = height - 1;
    if (iy < 0) iy = 0;
    int bx = ix >= width - 1 ? ix - 1 : ix + 1;
    int cy = iy >= height - 1 ? iy - 1 : iy + 1;
    if (bx < 0) bx = 0;  // a single column or row is its own neighbour
    if (cy < 0) cy = 0;

    const long row = static_cast<long>(width) * N;
    const float* a = grid + iy * row + static_cast<long>(ix) * N;
    const float* b = grid + iy * row + static_cast<long>(bx) * N;
    const float* c = grid + cy * row + static_cast<long>(ix) * N;
    const float* d = grid + cy * row + static_cast<long>(bx) * N;
    for (int k = 0; k < N; k++) {
        out[k] = bilinear(a[k], b[k], c[k], d[k], fx, fy);
    }
}

}  // namespace velk

#endif
