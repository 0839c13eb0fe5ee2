#ifndef VELK_LIC_LINETOOLS_H
#define VELK_LIC_LINETOOLS_H

#include <cstdint>

#include <velk/VelkCompute.h>
#include "linesums.h"
#include "recordfill.h"

class VelkIntegrator;

namespace velk {

// What one thread samples lines with: two integrators and line buffers of
// 2 * nTotal + 1 records (sums: nChannels + 1 per record), and the records
// of its last line.
struct LineTools {
    VelkIntegrator* forward;
    VelkIntegrator* backward;
    Vec2f* positions;
    VelkCompute::LinePoint* points;
    int* samples;
    std::int64_t* sums;
    int lo, hi;  // records traced; the output records are lo + nFilter .. hi - nFilter
};

// VelkCompute::sample with `tools` instead of the engine's own integrators and
// buffers, the accumulation cells in the layout of `cellShift` (see
// cellLayout) and, with a zone, the additions outside it deferred (see
// LineSums). The engine is only read. False, with nothing done, when no line
// starts at seed.
bool sampleLine(const VelkCompute& engine, int cellShift, LineTools& tools, const Vec2f& seed,
                const CellZone* zone = nullptr, DeferredAdds* deferred = nullptr);

// What filling the records of a line needs from the engine, its cells in the
// layout of `cellShift`.
inline RecordFill recordFillOf(const VelkCompute& e, int cellShift) {
    const Texture texture = textureOf(e.input);
    return {{e.xScale, e.yScale, e.xMax, e.yMax, texture.periodX, texture.periodY,
             cellLayout(cellShift, e.width, e.height)},
            e.numSubPixels,
            e.nChannels,
            e.input,
            texture,
            e.getPixel,
            e.accum,
            e.cellStride};
}

// The convolution of the records tools.lo .. tools.hi of the line just traced.
inline LineSums lineSumsOf(const VelkCompute& e, const LineTools& tools, const CellZone* zone,
                           DeferredAdds* deferred) {
    return {tools.samples, tools.sums,  tools.points, e.accum,  e.cellStride,
            e.numSubCells, e.nChannels, e.nTotal,     tools.lo, tools.hi,
            e.nFilter,     zone,        deferred};
}

}  // namespace velk

#endif
