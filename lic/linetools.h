#ifndef VELK_LIC_LINETOOLS_H
#define VELK_LIC_LINETOOLS_H

#include <cstdint>

#include <velk/VelkCompute.h>

class VelkIntegrator;

namespace velk {

struct CellZone;
struct DeferredAdds;

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

}  // namespace velk

#endif
