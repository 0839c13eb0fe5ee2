#ifndef VELK_LIC_LINESUMS_H
#define VELK_LIC_LINESUMS_H

#include <cstdint>

#include <velk/VelkCompute.h>
#include "cellzone.h"

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
    // Null: every output goes to its cell. Otherwise only those inside the
    // zone do, and the others are deferred.
    const CellZone* zone;
    DeferredAdds* deferred;
};

// Convolves the line with `kernel` (0 box, 1 triangle, 2 cubic; any other
// value accumulates nothing) and adds every output record's value and hit to
// its cell. `bytes`: the texture values are bytes, which allows exact 32-bit
// sums.
void convolveLine(const LineSums& line, int kernel, bool bytes);

// As convolveLine for a line that ends: only records first .. last (around
// the centre) exist, each output is divided by the kernel weight it received,
// and one more value per output, the received share of the full weight scaled
// to 1 .. 255, is added behind its channel sums. `received` holds hi + 1
// running sums of the weights. Takes any texture values.
void convolveEndingLine(const LineSums& line, int kernel, int first, int last,
                        std::int64_t* received);

}  // namespace velk

#endif
