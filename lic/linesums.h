#ifndef VELK_LIC_LINESUMS_H
#define VELK_LIC_LINESUMS_H

#include <cstdint>

#include <velk/VelkCompute.h>

namespace velk {

// One line's convolution: the texture values T of records lo .. hi, the centre
// c, the kernel half-length n, and the accumulation the outputs go to.
struct LineSums {
    int* T;
    std::int64_t* S;  // wide running sums; the narrow ones replace T in place
    const VelkCompute::LinePoint* points;
    int* accum;
    int cellStride, numSubCells, channels;
    int c, lo, hi, n;
    bool atomic;  // other threads add to the same cells meanwhile
};

// Convolves the line with `kernel` (0 box, 1 triangle, 2 cubic; any other
// value accumulates nothing) and adds every output record's value and hit to
// its cell. `bytes`: the texture values are bytes, which allows exact 32-bit
// sums.
void convolveLine(const LineSums& line, int kernel, bool bytes);

}  // namespace velk

#endif
