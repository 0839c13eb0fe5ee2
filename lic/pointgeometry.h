#ifndef VELK_LIC_POINTGEOMETRY_H
#define VELK_LIC_POINTGEOMETRY_H

#include "celllayout.h"
#include "lanes.h"

namespace velk {

// Where a traced point (x, y) in field coordinates lands: its texture position
// (x * xScale, y * yScale) and the accumulation cell of its output pixel. Written once for one
// record (F float, I int) and for four (Float4, Int4).
template <class F, class I>
struct PointGeometry {
    F xScale, yScale;
    F xMax, yMax;        // field width and height - 1.001
    F periodX, periodY;  // texture width and height - 1
    CellLayout<F, I> cells;

    // The usual case: inside the field and within the first texture period.
    // Neither position wraps, and the texel is the output pixel (trunc(xScale
    // * x) both times, below width - 1).
    VELK_ALWAYS_INLINE auto plain(F x, F y, F tx, F ty) const {
        const F zero{};
        return (x >= zero) & (x <= xMax) & (y >= zero) & (y <= yMax) & (tx < periodX) &
               (ty < periodY);
    }

    // One periodic correction only: points within the domain and just beyond
    // its border map onto the image; others stay outside.
    VELK_ALWAYS_INLINE static F wrapOnce(F v, F max) {
        const F zero{};
        return select(v < zero, v + max, select(v > max, v - max, v));
    }
    VELK_ALWAYS_INLINE auto inside(F xw, F yw) const {
        const F zero{};
        return (xw >= zero) & (xw <= xMax) & (yw >= zero) & (yw <= yMax);
    }

    // The output pixel of a position inside: xScale * xMax may round up to
    // width on a field much finer than the image.
    VELK_ALWAYS_INLINE I column(F xw) const {
        const I px = toInt(xScale * xw);
        return select(px >= cells.width, cells.width - 1, px);
    }
    VELK_ALWAYS_INLINE I row(F yw) const {
        const I py = toInt(yScale * yw);
        return select(py >= cells.height, cells.height - 1, py);
    }
    VELK_ALWAYS_INLINE I pixelOf(I px, I py) const { return cells.cellOf(px, py); }
};

}  // namespace velk

#endif
