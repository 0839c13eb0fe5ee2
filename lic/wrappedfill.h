#ifndef VELK_LIC_WRAPPEDFILL_H
#define VELK_LIC_WRAPPEDFILL_H

#include "recordfill.h"

namespace velk {

// One axis of a domain that may be periodic.
struct AxisWrap {
    bool periodic;        // the nodes are one period, and the texture's pixels another
    float nodes;          // of the field along the axis: its period when periodic
    float max;            // largest valid field coordinate of a closed axis
    float scale;          // texture pixels per field unit
    int pixels;           // of the texture and the output along the axis
    float texturePeriod;  // pixels when periodic, pixels - 1 (the lookups' own) when closed
};

inline AxisWrap axisWrap(bool periodic, int nodes, float max, float scale, int pixels) {
    return {periodic, static_cast<float>(nodes),
            max,      scale,
            pixels,   static_cast<float>(periodic ? pixels : pixels - 1)};
}

// fillLine for a domain with periodic axes: positions on a periodic axis map
// onto the output and the texture modulo their periods (the texture's being
// its size, with the first pixel following the last); closed axes map as
// fillLine has them. A host's own lookup (kind kLookupPointer) gets the
// wrapped coordinates.
void fillWrapped(const RecordFill& f, const AxisWrap& ax, const AxisWrap& ay, LookupKind kind,
                 const Vec2f* positions, VelkCompute::LinePoint* points, int* samples, int lo,
                 int first, int last, int hi);

}  // namespace velk

#endif
